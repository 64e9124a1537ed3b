// SPDX-License-Identifier: GPL-3.0-or-later
// Which database the SQLite module reads, how its configuration dialog changes it, and its preview.
#include "LoggerDatabase.h"
#include "RegistryKey.h"
#include "SqliteDataModule.h"
#include "TempSettings.h"
#include "frm_SqliteConfig.h"

#include <QLabel>
#include <QTemporaryDir>
#include <QTreeWidget>

#include <gtest/gtest.h>

namespace {

const QString ModuleKey = QStringLiteral("Software\\HARVOLD\\ModuleSettings\\Werk");

// Two databases told apart by their channels: 301... in the first, 901 in the second.
struct TwoDatabases
{
    TwoDatabases()
    {
        WriteDatabase(second,
            "INSERT INTO categories VALUES (1, 'Zweiter Standort', '', 0, 'FOLDER', 0);"
            "INSERT INTO channels VALUES (901, 'Zweiter', 'kW', 3, 1, 0, 0)");
    }
    QTemporaryDir dir;
    QString first = SiteFixture::Write(dir.filePath("first.sqlite"));
    QString second = dir.filePath("second.sqlite");
};

QString FirstChannel(DataModuleInterface& module)
{
    return Overview(module).value(0).section(' ', 0, 0);
}

TEST(SqliteConfig, TheDialogStoresTheUsersFileOverTheMachinesAndAParamWinsOverBoth)
{
    TempSettings settings;
    TwoDatabases files;
    settings.SetMachine(ModuleKey, "Database", files.first);
    RecordingHandler handler;
    SqliteDataModule module(DataModuleRegistration { "Werk", "4" });
    module.SetMessageHandler(&handler);
    qint32 status = 0;
    ASSERT_EQ(module.Initialize(QString(), status), 1);
    // One step after the other, each starting where the last one left the module: entry, button,
    // the file the dialog shows, the user's setting after it, messages sent and the first channel.
    const std::tuple<QString, const char*, QString, QString, size_t, QString> steps[] = {
        { files.second, "cmd_OK", files.first, files.second, 1, "1#901" },
        { files.first, "cmd_Cancel", files.second, files.second, 1, "1#901" },
        { files.second, "cmd_OK", files.second, files.second, 1, "1#901" },
        { "", "cmd_OK", files.second, "", 2, "30#1" }, // empty: the machine-wide file
    };
    for (const auto& [entry, button, shownBefore, user, messages, channel] : steps) {
        SCOPED_TRACE(::testing::PrintToString(entry) + " " + button);
        EXPECT_EQ(RunConfig(module, "txt_Database", entry, button), shownBefore);
        EXPECT_EQ(RegistryKey().ReadValue(Hive::CurrentUser, ModuleKey, "Database"), user);
        EXPECT_EQ(handler.messages.size(), messages);
        EXPECT_EQ(FirstChannel(module), channel);
    }
    EXPECT_EQ(module.Database(), files.first);
    for (const auto& message : handler.messages)
        EXPECT_EQ(message, std::make_pair(QString("CHANNELS_CHANGED"), QString("4")));

    // A param wins over the user's file and the machine-wide one.
    settings.SetUser(ModuleKey, "Database", files.first);
    EXPECT_EQ(module.Initialize(files.second, status), 1);
    EXPECT_EQ(FirstChannel(module), "1#901");
}

// The preview lists the file's categories and channels with their first and last sample.
TEST(SqliteConfigPreview, ShowsTheTreeOfTheChosenFile)
{
    TwoDatabases files;
    frm_SqliteConfig dialog(files.first, false);
    auto* tree = dialog.findChild<QTreeWidget*>("trv_Channels");
    ASSERT_NE(tree, nullptr);
    const QList<QTreeWidgetItem*> power = tree->findItems("Leistung", Qt::MatchExactly | Qt::MatchRecursive);
    ASSERT_EQ(power.size(), 1);
    QStringList branch;
    for (const QTreeWidgetItem* item = power.front(); item; item = item->parent())
        branch.prepend(item->text(0));
    EXPECT_EQ(branch, QStringList({ "Werk", "Halle $1", "Logger 7", "Leistung" }));
    EXPECT_EQ(power.front()->text(1) + " " + power.front()->text(2) + " - " + power.front()->text(3),
        "kW 01.01.2025 00:00 - 01.01.2025 02:15");

    // A file that is no logger database (the plug-in) empties the tree and says so.
    auto* path = dialog.findChild<QLineEdit*>("txt_Database");
    path->setText(SORANO_SQLITE_PLUGIN);
    emit path->editingFinished();
    EXPECT_EQ(tree->topLevelItemCount(), 0);
    EXPECT_TRUE(dialog.findChild<QLabel*>("lbl_Preview")->text().contains("nicht"));
}

} // namespace
