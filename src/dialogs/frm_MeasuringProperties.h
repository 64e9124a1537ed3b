// SPDX-License-Identifier: GPL-3.0-or-later
// The view's properties dialog: period and resolution, the chart's look and the customer's data.
#pragma once

#include "MeasuringPropertiesRules.h"

#include <QDialog>

#include <array>

class DateEdit;
class Measuring;
class QCheckBox;
class QComboBox;
class QDialogButtonBox;
class QGroupBox;
class QKeyEvent;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;
class QTabWidget;

// Shows the view's properties as they are; OK writes what was edited and refreshes the view,
// Cancel writes nothing. While an entry has a problem it is marked and OK stays disabled.
class frm_MeasuringProperties : public QDialog
{
    Q_OBJECT

public:
    explicit frm_MeasuringProperties(Measuring& view, QWidget* parent = nullptr);

    // Shows the dialog modally: 1 when OK changed the view, 0 otherwise.
    qint32 ShowMe();

    // What the fields hold now.
    MeasuringPropertiesEntries Entries() const;

    QTabWidget* Pages() const { return m_pages; }
    DateEdit* StartEdit() const { return m_start; }
    DateEdit* EndEdit() const { return m_end; }
    QLabel* DurationLabel() const { return m_duration; }
    QRadioButton* FromDataOption() const { return m_fromData; }
    QRadioButton* NormalisedOption() const { return m_normalised; }
    QLineEdit* CountEdit() const { return m_count; }
    QComboBox* UnitBox() const { return m_unit; }
    QComboBox* GalleryBox() const { return m_gallery; }
    QCheckBox* AutoScaleCheck() const { return m_autoScale; }
    QCheckBox* GridCheck(int axis) const { return m_grid[axis]; }
    QCheckBox* View3DCheck() const { return m_view3D; }
    QCheckBox* LegendCheck() const { return m_legend; }
    QLineEdit* TitleEdit() const { return m_title; }
    QCheckBox* StatisticsCheck() const { return m_statistics; }
    QLineEdit* AxisMinEdit(int axis) const { return m_axisMin[axis]; }
    QLineEdit* AxisMaxEdit(int axis) const { return m_axisMax[axis]; }
    QLineEdit* CompanyEdit() const { return m_company; }
    QLineEdit* ContactEdit() const { return m_contact; }
    QLineEdit* StreetEdit() const { return m_street; }
    QLineEdit* PlaceEdit() const { return m_place; }
    QPlainTextEdit* MemoEdit() const { return m_memo; }
    QPushButton* OkButton() const;
    QPushButton* CancelButton() const;

    // The warning marks beside the fields; shown while the field's entry has a problem.
    QLabel* PeriodMark() const { return m_periodMark; }
    QLabel* CountMark() const { return m_countMark; }
    QLabel* AxisMark(int axis) const { return m_axisMark[axis]; }

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    QWidget* BuildPeriodPage();
    QWidget* BuildDisplayPage();
    QWidget* BuildCustomerPage();
    void Show(const MeasuringPropertiesEntries& entries);
    // Follows every edit: the duration, the marks and whether OK can be pressed.
    void UpdateState();
    void OnAccept();

    Measuring& m_view;
    MeasuringPropertiesEntries m_before;
    bool m_changed = false;
    QTabWidget* m_pages = nullptr;
    DateEdit* m_start = nullptr;
    DateEdit* m_end = nullptr;
    QLabel* m_duration = nullptr;
    QRadioButton* m_fromData = nullptr;
    QRadioButton* m_normalised = nullptr;
    QLineEdit* m_count = nullptr;
    QComboBox* m_unit = nullptr;
    QComboBox* m_gallery = nullptr;
    QCheckBox* m_autoScale = nullptr;
    std::array<QCheckBox*, 2> m_grid {};
    QCheckBox* m_view3D = nullptr;
    QCheckBox* m_legend = nullptr;
    QLineEdit* m_title = nullptr;
    QCheckBox* m_statistics = nullptr;
    std::array<QGroupBox*, 2> m_axisGroup {};
    std::array<QLineEdit*, 2> m_axisMin {};
    std::array<QLineEdit*, 2> m_axisMax {};
    QLineEdit* m_company = nullptr;
    QLineEdit* m_contact = nullptr;
    QLineEdit* m_street = nullptr;
    QLineEdit* m_place = nullptr;
    QPlainTextEdit* m_memo = nullptr;
    QDialogButtonBox* m_buttons = nullptr;
    QLabel* m_periodMark = nullptr;
    QLabel* m_countMark = nullptr;
    std::array<QLabel*, 2> m_axisMark {};
};
