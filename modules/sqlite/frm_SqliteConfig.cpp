// SPDX-License-Identifier: GPL-3.0-or-later
#include "frm_SqliteConfig.h"

#include "Calendar.h"
#include "SqliteHandles.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QHash>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QStyle>
#include <QTreeWidget>

frm_SqliteConfig::frm_SqliteConfig(const QString& database, bool english, QWidget* parent)
    : ModuleConfigDialog({ english ? tr("Logger database") : tr("Logger-Datenbank"),
                             english ? tr("Database file:") : tr("Datenbankdatei:") },
        "txt_Database", database, english, parent)
{
    setObjectName("frm_SqliteConfig");
    m_trvChannels = new QTreeWidget(this);
    m_trvChannels->setObjectName("trv_Channels");
    m_trvChannels->setHeaderLabels(english ? QStringList{tr("Channel"), tr("Unit"), tr("From"), tr("To")}
                                           : QStringList{tr("Kanal"), tr("Einheit"), tr("Von"), tr("Bis")});
    m_trvChannels->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_trvChannels->setMinimumHeight(260);
    m_lblPreview = new QLabel(this);
    m_lblPreview->setObjectName("lbl_Preview");
    AddBelow(m_trvChannels, 1);
    AddBelow(m_lblPreview);
    connect(PathField(), &QLineEdit::editingFinished, this, &frm_SqliteConfig::LoadPreview);
    resize(760, 640);
    LoadPreview();
}

QString frm_SqliteConfig::Database() const
{
    return Path();
}

void frm_SqliteConfig::Browse()
{
    const QString start = Database().isEmpty() ? QString() : QFileInfo(Database()).absolutePath();
    const QString filter = English() ? tr("Logger databases (*.sqlite *.sqlite3 *.db);;All files (*)")
                                     : tr("Logger-Datenbanken (*.sqlite *.sqlite3 *.db);;Alle Dateien (*)");
    const QString chosen = QFileDialog::getOpenFileName(
        this, English() ? tr("Choose the database") : tr("Datenbank auswählen"), start, filter);
    if (!chosen.isEmpty()) {
        SetPath(QDir::toNativeSeparators(chosen));
        LoadPreview();
    }
}

void frm_SqliteConfig::LoadPreview()
{
    m_trvChannels->clear();
    const QString path = Database();
    if (path.isEmpty()) {
        m_lblPreview->setText(English() ? tr("No database chosen.") : tr("Keine Datenbank gewählt."));
        return;
    }
    const QString notReadable = English() ? tr("The file cannot be read as a logger database.")
                                           : tr("Die Datei kann nicht als Logger-Datenbank gelesen werden.");
    sqlite3* raw = nullptr;
    const int opened = sqlite3_open_v2(QFile::encodeName(path).constData(), &raw, SQLITE_OPEN_READONLY, nullptr);
    SqliteConnection db(raw);
    int rc = opened;
    SqliteStatement categories, channels, range;
    if (rc == SQLITE_OK)
        categories = PrepareStatement(db.get(), "SELECT id, name, parent FROM categories ORDER BY id", rc);
    if (rc == SQLITE_OK)
        channels = PrepareStatement(db.get(), "SELECT id, name, unit, category FROM channels ORDER BY id", rc);
    if (rc == SQLITE_OK)
        range = PrepareStatement(db.get(), "SELECT min(time), max(time) FROM samples WHERE channel = ?", rc);
    if (rc != SQLITE_OK) {
        m_lblPreview->setText(notReadable);
        return;
    }

    auto text = [](sqlite3_stmt* statement, int column) {
        return QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(statement, column)));
    };
    // Categories come ordered by id; a parent with a higher id than its child is attached
    // after the loop, and one that does not exist leaves the child at the top level.
    QHash<qint64, QTreeWidgetItem*> items;
    QList<std::pair<QTreeWidgetItem*, qint64>> parents;
    while (sqlite3_step(categories.get()) == SQLITE_ROW) {
        auto* item = new QTreeWidgetItem(QStringList{text(categories.get(), 1)});
        item->setIcon(0, style()->standardIcon(QStyle::SP_DirIcon));
        items.insert(sqlite3_column_int64(categories.get(), 0), item);
        parents.append({item, sqlite3_column_int64(categories.get(), 2)});
    }
    for (const auto& [item, parent] : parents) {
        if (QTreeWidgetItem* owner = items.value(parent); owner && owner != item)
            owner->addChild(item);
        else
            m_trvChannels->addTopLevelItem(item);
    }
    int count = 0;
    auto date = [](double value) { return Calendar::ToDateTime(value).toString("dd.MM.yyyy hh:mm"); };
    while (sqlite3_step(channels.get()) == SQLITE_ROW) {
        const qint64 id = sqlite3_column_int64(channels.get(), 0);
        QStringList columns{text(channels.get(), 1), text(channels.get(), 2)};
        sqlite3_reset(range.get());
        sqlite3_bind_int64(range.get(), 1, id);
        if (sqlite3_step(range.get()) == SQLITE_ROW && sqlite3_column_type(range.get(), 0) != SQLITE_NULL)
            columns << date(sqlite3_column_double(range.get(), 0)) << date(sqlite3_column_double(range.get(), 1));
        auto* item = new QTreeWidgetItem(columns);
        item->setIcon(0, style()->standardIcon(QStyle::SP_FileIcon));
        if (QTreeWidgetItem* owner = items.value(sqlite3_column_int64(channels.get(), 3)))
            owner->addChild(item);
        else
            m_trvChannels->addTopLevelItem(item);
        ++count;
    }
    m_trvChannels->expandAll();
    for (int column = 1; column < m_trvChannels->columnCount(); ++column)
        m_trvChannels->resizeColumnToContents(column);
    m_lblPreview->setText(English() ? tr("%n channel(s) in the database.", nullptr, count)
                                     : QString("%1 Kanäle in der Datenbank.").arg(count));
}
