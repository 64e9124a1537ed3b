// SPDX-License-Identifier: GPL-3.0-or-later
#include "ServerConfigDialog.h"

#include <QApplication>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHash>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QTreeWidget>
#include <QWidget>

ServerConfigDialog::ServerConfigDialog(
    const Texts& texts, const QString& pathName, const QString& path, bool english, QWidget* parent)
    : ModuleConfigDialog(texts, pathName, path, english, parent)
{
    if (auto* browse = findChild<QPushButton*>("cmd_Browse"))
        browse->hide();

    auto* fields = new QWidget(this);
    m_form = new QFormLayout(fields);
    m_form->setContentsMargins(0, 0, 0, 0);
    AddBelow(fields);

    m_cmdTest = new QPushButton(english ? tr("Test connection") : tr("Verbindung testen"), this);
    m_cmdTest->setObjectName("cmd_Test");
    m_lblAnswer = new QLabel(this);
    m_lblAnswer->setObjectName("lbl_Answer");
    m_lblAnswer->setWordWrap(true);
    m_lblAnswer->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* testRow = new QWidget(this);
    auto* testLayout = new QHBoxLayout(testRow);
    testLayout->setContentsMargins(0, 0, 0, 0);
    testLayout->addWidget(m_cmdTest);
    testLayout->addWidget(m_lblAnswer, 1);
    AddBelow(testRow);
    connect(m_cmdTest, &QPushButton::clicked, this, &ServerConfigDialog::TestAndPreview);

    m_trvChannels = new QTreeWidget(this);
    m_trvChannels->setObjectName("trv_Channels");
    m_trvChannels->setHeaderLabels(
        english ? QStringList { tr("Channel"), tr("Id") } : QStringList { tr("Kanal"), tr("Kennung") });
    m_trvChannels->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_trvChannels->setMinimumHeight(260);
    m_lblPreview = new QLabel(this);
    m_lblPreview->setObjectName("lbl_Preview");
    AddBelow(m_trvChannels, 1);
    AddBelow(m_lblPreview);
    resize(760, 640);
}

void ServerConfigDialog::AddField(const QString& label, QWidget* field)
{
    m_form->addRow(label, field);
}

void ServerConfigDialog::TestAndPreview()
{
    // Both steps may wait for the server up to the entered timeout.
    QApplication::setOverrideCursor(Qt::WaitCursor);
    m_lblAnswer->setText(TestConnection());
    QStringList categories, channels;
    QString answer;
    if (ReadPreview(categories, channels, answer)) {
        ShowPreview(categories, channels);
    } else {
        m_trvChannels->clear();
        m_lblPreview->setText(answer);
    }
    QApplication::restoreOverrideCursor();
}

void ServerConfigDialog::ShowPreview(const QStringList& categories, const QStringList& channels)
{
    m_trvChannels->clear();
    // Parents come before their children, so every parent is placed when a child looks for it;
    // a parent that is missing leaves the child at the top level.
    QHash<QString, QTreeWidgetItem*> folders, items;
    const auto place = [this](QTreeWidgetItem* item, QTreeWidgetItem* owner) {
        if (owner)
            owner->addChild(item);
        else
            m_trvChannels->addTopLevelItem(item);
    };
    for (const QString& line : categories) {
        const QStringList fields = line.split(QLatin1Char('$'));
        auto* item = new QTreeWidgetItem(QStringList { fields.value(1), fields.value(0) });
        item->setIcon(0, style()->standardIcon(QStyle::SP_DirIcon));
        place(item, folders.value(fields.value(3)));
        folders.insert(fields.value(0), item);
    }
    for (const QString& line : channels) {
        const QStringList fields = line.split(QLatin1Char('$'));
        auto* item = new QTreeWidgetItem(QStringList { fields.value(1), fields.value(0) });
        item->setIcon(0, style()->standardIcon(QStyle::SP_FileIcon));
        QTreeWidgetItem* owner = items.value(fields.value(4));
        place(item, owner ? owner : folders.value(fields.value(3)));
        items.insert(fields.value(0), item);
    }
    m_trvChannels->expandAll();
    m_trvChannels->resizeColumnToContents(1);
    const qsizetype count = channels.size();
    m_lblPreview->setText(English() ? tr("%n channel(s) on the server.", nullptr, static_cast<int>(count))
                                    : QString("%1 Kanäle auf dem Server.").arg(count));
}
