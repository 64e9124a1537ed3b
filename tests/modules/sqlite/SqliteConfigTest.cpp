// SPDX-License-Identifier: GPL-3.0-or-later
// Which database the SQLite module reads, and how the configuration dialog changes it.
#include "LoggerDatabase.h"
#include "RegistryKey.h"
#include "SqliteDataModule.h"
#include "TempSettings.h"
#include "frm_SqliteConfig.h"

#include <QApplication>
#include <QDialog>
#include <QFile>
#include <QLabel>
#include <QTreeWidget>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>

namespace {

const QString ModuleKey = QStringLiteral("Software\\HARVOLD\\ModuleSettings\\Werk");

// Two databases told apart by their channels: 301... in the first, 901 in the second.
class TwoDatabases
{
public:
    TwoDatabases()
    {
        first = dir.filePath("first.sqlite");
        second = dir.filePath("second.sqlite");
        LoggerDatabase a(first);
        SiteFixture::Write(a);
        LoggerDatabase b(second);
        b.AddCategory(1, "Zweiter Standort", "", 0, "FOLDER");
        b.AddChannel(901, "Zweiter", "kW", 3, 1);
    }
    QTemporaryDir dir;
    QString first, second;
};

QString FirstChannel(SqliteDataModule& module)
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

    QString UserDatabase() { return RegistryKey().ReadValue(Hive::CurrentUser, ModuleKey, "Database"); }

    TempSettings settings;
    TwoDatabases files;
    RecordingHandler handler;
    SqliteDataModule module { DataModuleRegistration { "Werk", "4" } };
};

TEST_F(SqliteConfigTest, AnotherFileIsStoredForTheUserReadAtOnceAndAnnounced)
{
    ASSERT_EQ(FirstChannel(module), "301");
    module.ApplyDatabase(files.second);
    EXPECT_EQ(UserDatabase(), files.second);
    ASSERT_EQ(handler.messages.size(), 1u);
    EXPECT_EQ(handler.messages[0], std::make_pair(QString("CHANNELS_CHANGED"), QString("4")));
    EXPECT_EQ(FirstChannel(module), "901");

    // The same file again changes nothing the program would need to hear of.
    module.ApplyDatabase(files.second);
    EXPECT_EQ(handler.messages.size(), 1u);

    // An empty entry falls back to the machine-wide file.
    module.ApplyDatabase("");
    EXPECT_EQ(module.Database(), files.first);
    EXPECT_EQ(handler.messages.size(), 2u);
    EXPECT_EQ(FirstChannel(module), "301");
}

// Runs the module's dialog, doing to it what the step says once it is shown.
struct DialogSeen
{
    bool shown = false;
    QString title, initialText, cancelText;
};

DialogSeen RunDialog(SqliteDataModule& module, const std::function<void(QDialog&)>& step)
{
    DialogSeen seen;
    QTimer poll;
    int attempts = 0;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (!dialog) {
            if (++attempts > 200) // the dialog never came: end whatever is modal
                QApplication::closeAllWindows();
            return;
        }
        poll.stop();
        seen.shown = true;
        seen.title = dialog->windowTitle();
        if (auto* edit = dialog->findChild<QLineEdit*>("txt_Database"))
            seen.initialText = edit->text();
        if (auto* cancel = dialog->findChild<QPushButton*>("cmd_Cancel"))
            seen.cancelText = cancel->text();
        step(*dialog);
    });
    poll.start(10);
    QMetaObject::invokeMethod(&module, "ShowConfig"); // by name, as the program calls it
    return seen;
}

void Enter(QDialog& dialog, const QString& text, const char* button)
{
    dialog.findChild<QLineEdit*>("txt_Database")->setText(text);
    dialog.findChild<QPushButton*>(button)->click();
}

TEST_F(SqliteConfigTest, TheDialogStoresTheChosenFileOnlyOnOk)
{
    const struct
    {
        const char* name;
        QString langOffset;
        bool chooseSecond;
        const char* button;
        bool changes;
        QString title, cancel;
    } cases[] = {
        { "German, OK with another file", "0", true, "cmd_OK", true, "Logger-Datenbank", "Abbrechen" },
        { "English, OK with another file", "1000", true, "cmd_OK", true, "Logger database", "Cancel" },
        { "German, Cancel", "0", true, "cmd_Cancel", false, "Logger-Datenbank", "Abbrechen" },
        { "English, OK with the same file", "1000", false, "cmd_OK", false, "Logger database", "Cancel" },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        module.ApplyDatabase(files.first);
        handler.messages.clear();
        settings.SetMachine("Software\\HARVOLD\\Sorano\\Settings", "LangOffset", c.langOffset);
        const QString chosen = c.chooseSecond ? files.second : files.first;

        const DialogSeen seen = RunDialog(module, [&](QDialog& dialog) { Enter(dialog, chosen, c.button); });
        ASSERT_TRUE(seen.shown);
        EXPECT_EQ(seen.title, c.title);
        EXPECT_EQ(seen.cancelText, c.cancel);
        EXPECT_EQ(seen.initialText, files.first);
        EXPECT_EQ(handler.messages.size(), c.changes ? 1u : 0u);
        EXPECT_EQ(FirstChannel(module), c.changes ? "901" : "301");
        EXPECT_EQ(UserDatabase(), c.changes ? files.second : files.first);
    }
}

// The preview lists the file's categories and channels with their first and last sample, and
// says so when the file is no logger database.
TEST(SqliteConfigPreview, ShowsTheTreeOfTheChosenFile)
{
    QTemporaryDir dir;
    const QString good = dir.filePath("site.sqlite");
    {
        LoggerDatabase db(good);
        SiteFixture::Write(db);
    }
    const QString junk = dir.filePath("junk.sqlite");
    {
        QFile file(junk);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(4096, 'x'));
    }

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

    auto* path = dialog.findChild<QLineEdit*>("txt_Database");
    path->setText(junk);
    emit path->editingFinished();
    EXPECT_EQ(tree->topLevelItemCount(), 0);
    EXPECT_TRUE(dialog.findChild<QLabel*>("lbl_Preview")->text().contains("nicht"));
}

} // namespace
