// SPDX-License-Identifier: GPL-3.0-or-later
// The program's options: start-up, company, chart behaviour, navigation steps and the
// display formats of the statistics, all kept in the per-user settings.
#pragma once

#include "Settings.h"

#include <QDialog>

#include <array>
#include <initializer_list>
#include <utility>
#include <vector>

class IndizesEditor;
class QButtonGroup;
class QCheckBox;
class QComboBox;
class QKeyEvent;
class QLineEdit;
class QTabWidget;

class frm_Options : public QDialog
{
    Q_OBJECT
public:
    explicit frm_Options(QWidget* parent = nullptr);

    // Shows the options as stored (or their defaults), modally. OK writes every value and
    // gives true; Cancel writes nothing and gives false.
    bool ShowMe();

    // True when the last OK changed the settings of a statistic, so open views must
    // reload their statistic formats.
    bool IndizesChanged() const { return m_bIndizesChanged; }

protected:
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // One navigation step: its count field and unit list.
    struct StepControls
    {
        QLineEdit* count = nullptr;
        QComboBox* unit = nullptr;
    };

    QWidget* BuildGeneralPage();
    QWidget* BuildViewPage();
    QWidget* BuildNavigationPage();
    QWidget* BuildStatisticsPage();
    QCheckBox* NewCheck(const char* name, int textId, Settings::Id id, QWidget* parent);
    QButtonGroup* NewOptions(const char* name, std::initializer_list<int> textIds, QWidget* parent);
    StepControls NewStep(const QString& name, QWidget* parent);

    void LoadValues();
    void SaveValues() const;
    void cmd_Help_Click();

    QTabWidget* m_tabStrip = nullptr;
    std::vector<std::pair<QCheckBox*, Settings::Id>> m_checks;
    std::array<QLineEdit*, 2> m_txtAddress {};
    QButtonGroup* m_optZoomMode = nullptr;
    QButtonGroup* m_optLoad = nullptr;
    QButtonGroup* m_optClose = nullptr;
    StepControls m_small;
    StepControls m_medium;
    StepControls m_big; // shown and edited alike, but not kept: the big step is not set here
    IndizesEditor* m_editor = nullptr;
    bool m_bIndizesChanged = false;
};
