// SPDX-License-Identifier: GPL-3.0-or-later
// The editor of the statistics' display formats, for the statistic dialog and the options.
#pragma once

#include "IndizesRules.h"

#include <QWidget>

#include <array>

class QCheckBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QListWidgetItem;

class IndizesEditor : public QWidget
{
    Q_OBJECT
public:
    explicit IndizesEditor(QWidget* parent = nullptr);

    // Reads the seven statistics from the settings and selects the first.
    void Load();
    // Writes every value of all seven statistics, edited or not.
    void Save() const;
    // True when a value differs from what Load read.
    bool Changed() const;

private:
    void lst_Indizes_Click();
    void lst_Indizes_ItemCheck(QListWidgetItem* item);
    void txt_FormatNumber_Change(const QString& text);
    void chk_Date_Click(bool checked);
    void txt_FormatDate_Change(const QString& text);
    void ShowSelected();
    void ShowSample();
    IndizesFormat* Selected();

    QListWidget* m_lstIndizes = nullptr;
    QLineEdit* m_txtFormatNumber = nullptr;
    QCheckBox* m_chkDate = nullptr;
    QLineEdit* m_txtFormatDate = nullptr;
    QLabel* m_lblSample = nullptr;
    std::array<IndizesFormat, IndizesRules::EntryCount> m_formats;
    std::array<IndizesFormat, IndizesRules::EntryCount> m_loaded;
    bool m_bFilling = false; // the controls are being filled, not edited
};
