// SPDX-License-Identifier: GPL-3.0-or-later
// The calendar that drops down below a date entry: a month grid with week numbers and "today".
#include "frm_Calendar.h"

#include "ResStrings.h"

#include <QCalendarWidget>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

frm_Calendar::frm_Calendar(QWidget* parent)
    : DropDown(parent)
{
    m_grid = new QCalendarWidget(this);
    // Month and day names in the program's language, not the desktop's.
    m_grid->setLocale(LanguageLocale());
    m_grid->setFirstDayOfWeek(Qt::Monday);
    m_grid->setVerticalHeaderFormat(QCalendarWidget::ISOWeekNumbers);
    m_grid->setGridVisible(true);
    m_today = new QPushButton(GetResString(496), this);
    m_today->setAutoDefault(false);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_today);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->addWidget(m_grid);
    layout->addLayout(buttons);

    // A single click takes a day as well as Enter does: a drop-down is closed by its choice.
    connect(m_grid, &QCalendarWidget::clicked, this, &frm_Calendar::Pick);
    connect(m_grid, &QCalendarWidget::activated, this, &frm_Calendar::Pick);
    connect(m_today, &QPushButton::clicked, this, [this] { Pick(QDate::currentDate()); });
}

void frm_Calendar::SetDate(QDate date)
{
    m_grid->setSelectedDate(date);
    m_grid->setCurrentPage(date.year(), date.month());
}

void frm_Calendar::SetRange(QDate first, QDate last)
{
    m_grid->setDateRange(first, last);
}

void frm_Calendar::DropDownBelow(QWidget* anchor)
{
    adjustSize();
    ShowAt(anchor, anchor->mapToGlobal(QPoint(0, anchor->height())));
    m_grid->setFocus(Qt::PopupFocusReason);
}

void frm_Calendar::Pick(QDate date)
{
    // A click that also activates comes twice; only the first one, while open, counts.
    if (!isVisible() || !date.isValid())
        return;
    hide();
    emit DatePicked(date);
}
