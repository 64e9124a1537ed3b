// SPDX-License-Identifier: GPL-3.0-or-later
// The list of times of the day that drops down below a date entry.
#pragma once

#include "DropDown.h"

#include <QList>
#include <QStringList>

class QListWidget;

class frm_List : public DropDown
{
    Q_OBJECT
public:
    explicit frm_List(QWidget* parent = nullptr);

    // The times as fractions of a day and the text each is shown with.
    void SetTimes(const QList<double>& fractions, const QStringList& texts);
    // Marks the last time at or before fraction (the first when all lie after it).
    void SetCurrent(double fraction);

    // Opens below anchor, as wide as it, with the keyboard in the list.
    void DropDownBelow(QWidget* anchor);

    QListWidget* List() const { return m_list; }

signals:
    // A time clicked or taken with Enter; the list has closed.
    void TimePicked(double fraction);

private:
    void Pick(int row);

    QListWidget* m_list = nullptr;
    QList<double> m_fractions;
};
