// SPDX-License-Identifier: GPL-3.0-or-later
// Which database the SQLite module reads, how the configuration dialog changes it, and the
// plug-in that creates the module.
#include "LoggerDatabase.h"
#include "RegistryKey.h"
#include "SqliteDataModule.h"
#include "TempSettings.h"
#include "frm_SqliteConfig.h"

#include <QApplication>
#include <QDialog>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QPluginLoader>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include <memory>

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
    ChannelCollection channels;
    qint32 status = 0;
    module.GetChannelOverview(channels, status);
    return channels.Count() > 0 ? channels.Key(0) : QString();
}

TEST(SqliteConfig, TheDatabaseComesFromParamThenUserThenMachineSettings)
{
    TwoDatabases files;
    const struct
    {
        const char* name;
        QString user, machine, param, expected;
    } cases[] = {
        { "user only", files.first, "", "", files.first },
        { "machine only", "", files.second, "", files.second },
        { "user before machine", files.second, files.first, "", files.second },
        { "param before both", files.first, files.first, files.second, files.second },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        TempSettings settings;
        if (!c.user.isEmpty())
            settings.SetUser(ModuleKey, "Database", c.user);
        if (!c.machine.isEmpty())
            settings.SetMachine(ModuleKey, "Database", c.machine);
        SqliteDataModule module(DataModuleRegistration { "Werk", "4" });
        qint32 status = 0;
        EXPECT_EQ(module.Initialize(c.param, status), 1);
        EXPECT_EQ(module.Database(), c.expected);
        EXPECT_EQ(FirstChannel(module), c.expected == files.first ? "301" : "901");
    }
}

class SqliteConfigTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        settings.SetMachine(ModuleKey, "Database", files.first);
        module.SetMessageHandler(&handler);
        qint32 status = 0;
        ASSERT_EQ(module.Initialize(QString(), status), 1);
    }

    TempSettings settings;
    TwoDatabases files;
    RecordingHandler handler;
    SqliteDataModule module { DataModuleRegistration { "Werk", "4" } };
};

TEST_F(SqliteConfigTest, TheDialogStoresTheFileForTheUserOnOkAndAnnouncesAChange)
{
    // One step after the other, each starting where the last one left the module.
    const struct
    {
        const char* name;
        bool english;
        QString entry;
        const char* button;
        QString shown, user;
        size_t messages;
        QString channel;
    } steps[] = {
        { "German, OK with another file", false, files.second, "cmd_OK", files.first, files.second, 1, "901" },
        { "English, Cancel", true, files.first, "cmd_Cancel", files.second, files.second, 1, "901" },
        { "English, OK with the same file", true, files.second, "cmd_OK", files.second, files.second, 1, "901" },
        { "empty entry: the machine-wide file", false, "", "cmd_OK", files.second, "", 2, "301" },
    };
    for (const auto& s : steps) {
        SCOPED_TRACE(s.name);
        settings.SetMachine("Software\\HARVOLD\\Sorano\\Settings", "LangOffset", s.english ? "1000" : "0");
        QString title, shown, cancel;
        QTimer::singleShot(0, [&] {
            auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            ASSERT_TRUE(dialog);
            title = dialog->windowTitle();
            cancel = dialog->findChild<QPushButton*>("cmd_Cancel")->text();
            auto* edit = dialog->findChild<QLineEdit*>("txt_Database");
            shown = edit->text();
            edit->setText(s.entry);
            dialog->findChild<QPushButton*>(s.button)->click();
        });
        QMetaObject::invokeMethod(&module, "ShowConfig"); // by name, as the program calls it
        EXPECT_EQ(title, s.english ? "Logger database" : "Logger-Datenbank");
        EXPECT_EQ(cancel, s.english ? "Cancel" : "Abbrechen");
        EXPECT_EQ(shown, s.shown);
        EXPECT_EQ(RegistryKey().ReadValue(Hive::CurrentUser, ModuleKey, "Database"), s.user);
        EXPECT_EQ(handler.messages.size(), s.messages);
        EXPECT_EQ(FirstChannel(module), s.channel);
    }
    EXPECT_EQ(module.Database(), files.first);
    for (const auto& message : handler.messages)
        EXPECT_EQ(message, std::make_pair(QString("CHANNELS_CHANGED"), QString("4")));
}

// The preview lists the file's categories and channels with their first and last sample.
TEST(SqliteConfigPreview, ShowsTheTreeOfTheChosenFile)
{
    QTemporaryDir dir;
    const QString good = SiteFixture::Write(dir.filePath("site.sqlite"));
    frm_SqliteConfig dialog(good, false);
    auto* tree = dialog.findChild<QTreeWidget*>("trv_Channels");
    ASSERT_NE(tree, nullptr);
    const QList<QTreeWidgetItem*> power = tree->findItems("Leistung", Qt::MatchExactly | Qt::MatchRecursive);
    ASSERT_EQ(power.size(), 1);
    ASSERT_NE(power.front()->parent(), nullptr);
    EXPECT_EQ(power.front()->parent()->text(0), "Logger 7");
    EXPECT_EQ(power.front()->parent()->parent()->text(0), "Halle $1");
    EXPECT_EQ(power.front()->text(1), "kW");
    EXPECT_EQ(power.front()->text(2), "01.01.2025 00:00");
    EXPECT_EQ(power.front()->text(3), "01.01.2025 02:15");
    const QList<QTreeWidgetItem*> empty = tree->findItems("Leer", Qt::MatchExactly | Qt::MatchRecursive);
    ASSERT_EQ(empty.size(), 1);
    EXPECT_TRUE(empty.front()->text(2).isEmpty());
    EXPECT_TRUE(dialog.findChild<QLabel*>("lbl_Preview")->text().startsWith("4 "));

    // A file that is no logger database empties the tree and says so.
    const QString junk = dir.filePath("junk.sqlite");
    QFile file(junk);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(4096, 'x'));
    file.close();
    auto* path = dialog.findChild<QLineEdit*>("txt_Database");
    path->setText(junk);
    emit path->editingFinished();
    EXPECT_EQ(tree->topLevelItemCount(), 0);
    EXPECT_TRUE(dialog.findChild<QLabel*>("lbl_Preview")->text().contains("nicht"));
}

// The built plug-in, loaded as the program loads it, declares its ProgID and creates working
// modules for it only, in any case.
TEST(SqlitePlugin, DeclaresItsProgIdAndCreatesWorkingModulesForItOnly)
{
    QPluginLoader loader(SORANO_SQLITE_PLUGIN);
    const QJsonArray progIds = loader.metaData().value("MetaData").toObject().value("ProgIDs").toArray();
    EXPECT_EQ(progIds, QJsonArray({ "Sorano.SQLite" }));
    auto* factory = qobject_cast<DataModuleFactory*>(loader.instance());
    ASSERT_TRUE(factory) << loader.errorString().toStdString();
    EXPECT_EQ(factory->CreateModule("Sorano.CSV", { "Werk", "4" }), nullptr);
    EXPECT_EQ(factory->CreateModule("", { "Werk", "4" }), nullptr);

    TempSettings settings;
    TwoDatabases files;
    settings.SetUser(ModuleKey, "Database", files.first);
    for (const QString progId : { "Sorano.SQLite", "sorano.sqlite" }) {
        SCOPED_TRACE(progId.toStdString());
        std::unique_ptr<QObject> object(factory->CreateModule(progId, { "Werk", "4" }));
        auto* module = qobject_cast<DataModuleInterface*>(object.get());
        ASSERT_TRUE(module);
        EXPECT_GE(object->metaObject()->indexOfMethod("ShowConfig()"), 0);
        qint32 status = 0;
        EXPECT_EQ(module->Initialize(QString(), status), 1);
        EXPECT_EQ(FirstChannel(*module), "301");
    }
}

} // namespace
