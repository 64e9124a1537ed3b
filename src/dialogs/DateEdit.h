// SPDX-License-Identifier: GPL-3.0-or-later
// The date and time entry of the view dialogs: typed text, a calendar and a list of times.
#pragma once

#include "DateEditRules.h"

#include <QWidget>

#include <optional>

class QLineEdit;
class QToolButton;
class frm_Calendar;
class frm_List;

// Holds a date as days since 1899-12-30 and shows it as "dd.mm.yyyy hh:nn" (or with ":ss").
// Typed text is taken with Enter or when the focus leaves; text that names no date is marked
// and leaves the value as it was. Up/Down step the field under the cursor, Page Up/Page Down
// the view's step, Alt+Down opens the calendar. Values outside the limits go to the nearest.
class DateEdit : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(double value READ Value WRITE SetValue NOTIFY ValueChanged)
    Q_PROPERTY(bool secondsShown READ SecondsShown WRITE SetSecondsShown)
    Q_PROPERTY(int stepSeconds READ StepSeconds WRITE SetStepSeconds)

public:
    explicit DateEdit(QWidget* parent = nullptr);
    // The text box may lose the focus while the widgets go: it is cut off first, so that its
    // signals don't reach a half-destroyed date box.
    ~DateEdit() override;

    double Value() const { return m_value; }
    // Puts a value outside the limits back to the nearest one; NaN and infinities are ignored.
    void SetValue(double value);

    // False while the typed text names no date.
    bool IsValid() const { return m_valid; }

    bool SecondsShown() const { return m_rules.SecondsShown(); }
    void SetSecondsShown(bool shown);

    // The view's step: the time list's spacing and the step of Page Up/Page Down. Also shows
    // seconds when the step is not a whole number of minutes, and hides them otherwise.
    int StepSeconds() const { return m_rules.StepSeconds(); }
    void SetStepSeconds(int seconds);

    std::optional<double> Lower() const { return m_rules.Lower(); }
    std::optional<double> Upper() const { return m_rules.Upper(); }
    // A limit left out does not bound; the value is put back within the new limits.
    void SetLimits(std::optional<double> lower, std::optional<double> upper);

    void ShowCalendar();
    void ShowTimeList();

    QLineEdit* Editor() const { return m_edit; }
    QToolButton* CalendarButton() const { return m_calendarButton; }
    QToolButton* TimeButton() const { return m_timeButton; }
    frm_Calendar* CalendarDropDown() const { return m_calendar; }
    frm_List* TimeDropDown() const { return m_times; }

signals:
    void ValueChanged(double value);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // Takes the typed text when it names a date, marks it otherwise; true when taken.
    bool TakeText();
    void Apply(double value);
    void ShowValue();
    void MarkValid(bool valid);
    // The list is filled when it opens, because a step of a second gives 86400 rows.
    void FillTimes();

    DateEditRules m_rules;
    double m_value = 0.0;
    bool m_valid = true;
    bool m_timesStale = true;
    QLineEdit* m_edit = nullptr;
    QToolButton* m_calendarButton = nullptr;
    QToolButton* m_timeButton = nullptr;
    frm_Calendar* m_calendar = nullptr;
    frm_List* m_times = nullptr;
};
