// SPDX-License-Identifier: GPL-3.0-or-later
// The list of times of the day that drops down below a date entry.
#include "frm_List.h"

#include <QListWidget>
#include <QVBoxLayout>

#include <algorithm>

frm_List::frm_List(QWidget* parent)
    : DropDown(parent)
{
    m_list = new QListWidget(this);
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_list);
    connect(m_list, &QListWidget::itemClicked, this, [this](QListWidgetItem* item) { Pick(m_list->row(item)); });
    connect(m_list, &QListWidget::itemActivated, this, [this](QListWidgetItem* item) { Pick(m_list->row(item)); });
}

void frm_List::SetTimes(const QList<double>& fractions, const QStringList& texts)
{
    m_fractions = fractions.mid(0, texts.size());
    m_list->clear();
    m_list->addItems(texts.mid(0, m_fractions.size()));
}

void frm_List::SetCurrent(double fraction)
{
    if (m_fractions.isEmpty())
        return;
    // The times are sorted: the one before the first that lies after fraction.
    const auto after = std::upper_bound(m_fractions.cbegin(), m_fractions.cend(), fraction + 1e-9);
    const int row = std::max(0, int(after - m_fractions.cbegin()) - 1);
    m_list->setCurrentRow(row);
    m_list->scrollToItem(m_list->item(row), QAbstractItemView::PositionAtCenter);
}

void frm_List::DropDownBelow(QWidget* anchor)
{
    const int rows = std::min(12, std::max(1, m_list->count()));
    resize(std::max(anchor->width() / 2, m_list->sizeHintForColumn(0) + 40),
        rows * std::max(1, m_list->sizeHintForRow(0)) + 2 * frameWidth() + 4);
    ShowAt(anchor, anchor->mapToGlobal(QPoint(anchor->width() - width(), anchor->height())));
    if (QListWidgetItem* item = m_list->currentItem())
        m_list->scrollToItem(item, QAbstractItemView::PositionAtCenter);
    m_list->setFocus(Qt::PopupFocusReason);
}

void frm_List::Pick(int row)
{
    // A click that also activates comes twice; only the first one, while open, counts.
    if (!isVisible() || row < 0 || row >= m_fractions.size())
        return;
    hide();
    emit TimePicked(m_fractions.at(row));
}
