// SPDX-License-Identifier: GPL-3.0-or-later
// The calendar that drops down below a date entry: a month grid with week numbers and "today".
#pragma once

#include "DropDown.h"
#include <QDate>

class QCalendarWidget;
class QPushButton;

class frm_Calendar : public DropDown
{
    Q_OBJECT
public:
    explicit frm_Calendar(QWidget* parent = nullptr);

    // Shows the month of date with date selected; days outside first..last can't be chosen.
    void SetDate(QDate date);
    void SetRange(QDate first, QDate last);

    // Opens below anchor with the keyboard in the grid.
    void DropDownBelow(QWidget* anchor);

    QCalendarWidget* Grid() const { return m_grid; }
    QPushButton* TodayButton() const { return m_today; }

signals:
    // A day clicked, or taken with Enter, or today's date; the calendar has closed.
    void DatePicked(QDate date);

private:
    void Pick(QDate date);

    QCalendarWidget* m_grid = nullptr;
    QPushButton* m_today = nullptr;
};
