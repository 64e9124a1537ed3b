// SPDX-License-Identifier: GPL-3.0-or-later
// The batch window.
#include "frm_Batch.h"

#include "ResStrings.h"

#include <QComboBox>
#include <QListWidget>
#include <QVBoxLayout>

namespace {

// The name an item had before its last edit, so that an empty edit can be undone.
constexpr int ShownNameRole = Qt::UserRole + 1;

} // namespace

frm_Batch::frm_Batch(QWidget* parent)
    : QDockWidget(LocalText("Reportstapel", "Report batches"), parent)
{
    setObjectName(QStringLiteral("BatchDock"));
    auto* content = new QWidget(this);
    content->setObjectName(QStringLiteral("BatchContent"));
    m_cboBatches = new QComboBox(content);
    m_cboBatches->setObjectName(QStringLiteral("cbo_Batches"));
    m_lvwReports = new QListWidget(content);
    m_lvwReports->setObjectName(QStringLiteral("lvw_Reports"));
    m_lvwReports->setSelectionMode(QAbstractItemView::SingleSelection);
    // A double click opens the template; a click on the selected item, F2 or editItem renames it.
    m_lvwReports->setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::SelectedClicked);

    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->addWidget(m_cboBatches);
    layout->addWidget(m_lvwReports, 1);
    setWidget(content);

    for (QWidget* widget : { static_cast<QWidget*>(content), static_cast<QWidget*>(m_lvwReports) }) {
        widget->setContextMenuPolicy(Qt::CustomContextMenu);
        connect(widget, &QWidget::customContextMenuRequested, this, &frm_Batch::MenuRequested);
    }
    connect(m_cboBatches, &QComboBox::currentIndexChanged, this, &frm_Batch::BatchChosen);
    connect(m_lvwReports, &QListWidget::itemChanged, this, &frm_Batch::OnItemChanged);
    connect(m_lvwReports, &QListWidget::itemSelectionChanged, this, &frm_Batch::ReportSelectionChanged);
    connect(m_lvwReports, &QListWidget::itemDoubleClicked, this,
        [this](QListWidgetItem* item) { emit ReportOpened(item->data(Qt::UserRole).toString()); });
}

void frm_Batch::SetIconSource(std::function<QIcon(const QString&)> source)
{
    m_iconSource = std::move(source);
    const QIcon icon = ReportIcon();
    const QSignalBlocker quiet(m_lvwReports);
    for (int i = 0; i < m_lvwReports->count(); ++i)
        m_lvwReports->item(i)->setIcon(icon);
}

QIcon frm_Batch::ReportIcon() const
{
    const QIcon icon = m_iconSource ? m_iconSource(QStringLiteral("ICO_REPORT")) : QIcon();
    return icon.isNull() ? QIcon::fromTheme(QStringLiteral("x-office-document")) : icon;
}

void frm_Batch::ClearReports()
{
    const QSignalBlocker quiet(m_lvwReports);
    m_lvwReports->clear();
    emit ReportSelectionChanged();
}

QListWidgetItem* frm_Batch::AddReport(const QString& key, const QString& name)
{
    const QSignalBlocker quiet(m_lvwReports);
    auto* item = new QListWidgetItem(ReportIcon(), name);
    item->setData(Qt::UserRole, key);
    item->setData(ShownNameRole, name);
    item->setFlags(item->flags() | Qt::ItemIsEditable);
    m_lvwReports->addItem(item);
    return item;
}

void frm_Batch::SetReportName(const QString& key, const QString& name)
{
    const QSignalBlocker quiet(m_lvwReports);
    for (int row = 0; row < m_lvwReports->count(); ++row) {
        QListWidgetItem* item = m_lvwReports->item(row);
        if (item->data(Qt::UserRole).toString() == key) {
            item->setText(name);
            item->setData(ShownNameRole, name);
        }
    }
}

QString frm_Batch::SelectedKey() const
{
    const QList<QListWidgetItem*> selected = m_lvwReports->selectedItems();
    return selected.isEmpty() ? QString() : selected.front()->data(Qt::UserRole).toString();
}

void frm_Batch::OnItemChanged(QListWidgetItem* item)
{
    const QString before = item->data(ShownNameRole).toString();
    const QString text = item->text();
    if (text == before)
        return; // another role changed
    const QSignalBlocker quiet(m_lvwReports);
    if (text.trimmed().isEmpty()) {
        item->setText(before);
        return;
    }
    item->setData(ShownNameRole, text);
    emit ReportRenamed(item->data(Qt::UserRole).toString(), text);
}
