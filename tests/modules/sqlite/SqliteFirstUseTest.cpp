// SPDX-License-Identifier: GPL-3.0-or-later
// The first use of the SQLite module without a configured database: the question for a file,
// asked once, never without a screen, and what a chosen or declined file does to the calls.
#include "LoggerDatabase.h"
#include "RegistryKey.h"
#include "SqliteDataModule.h"
#include "SqliteSettings.h"
#include "TempSettings.h"

#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

namespace {

const QString ModuleKey = QStringLiteral("Software\\HARVOLD\\ModuleSettings\\Werk");

QString UserDatabase()
{
    return RegistryKey().ReadValue(Hive::CurrentUser, ModuleKey, "Database");
}

// Every call that needs the database, each with its status; GetFirstDate has none and gives
// 1 when it found a date.
std::vector<qint32> CallEverything(SqliteDataModule& module)
{
    std::vector<qint32> statuses;
    qint32 status = 0;
    statuses.push_back(module.Initialize(QString(), status));
    Overview(module, &status);
    statuses.push_back(status);
    QStringList categories, channels;
    statuses.push_back(module.GetChannelStructure(categories, channels, status));
    Read(module, { "30#1" }, SiteFixture::Day - 1, SiteFixture::Day + 1, &status);
    statuses.push_back(status);
    double first = -3.0;
    module.GetFirstDate("30#1", first);
    statuses.push_back(first == SiteFixture::Day ? 1 : 0);
    return statuses;
}

// Runs work and names every modal dialog that came up meanwhile. A dialog runs an event loop of
// its own, in which a timer sees it and rejects it, so that no dialog can hold a test.
QStringList ModalDialogsDuring(const std::function<void()>& work)
{
    QStringList dialogs;
    QTimer watch;
    watch.setInterval(10);
    QObject::connect(&watch, &QTimer::timeout, [&] {
        if (QWidget* modal = QApplication::activeModalWidget()) {
            dialogs << modal->objectName();
            if (auto* dialog = qobject_cast<QDialog*>(modal))
                dialog->reject();
            else
                modal->close();
        }
    });
    watch.start();
    work();
    QApplication::processEvents();
    return dialogs;
}

class SqliteFirstUseTest : public ::testing::Test
{
protected:
    SqliteFirstUseTest()
    {
        module.SetMessageHandler(&handler);
        // A question that counts, records its suggestion and gives the answer of the test.
        module.SetDatabaseQuestion([this](const QString& suggestion) {
            ++asked;
            suggestions << suggestion;
            if (during)
                during();
            return answer;
        });
    }

    TempSettings settings;
    QTemporaryDir dir;
    QString site = SiteFixture::Write(dir.filePath("site.sqlite"));
    RecordingHandler handler;
    SqliteDataModule module { DataModuleRegistration { "Werk", "4" } };
    int asked = 0;
    QStringList suggestions;
    QString answer;
    std::function<void()> during;
};

TEST_F(SqliteFirstUseTest, ADeclinedQuestionIsNotAskedAgainAndEveryCallFailsAsWithoutIt)
{
    for (int round = 0; round < 3; ++round) {
        SCOPED_TRACE(round);
        handler.lines.clear();
        EXPECT_EQ(CallEverything(module), std::vector<qint32>({ -1, -1, -1, -1, 0 }));
        EXPECT_EQ(asked, 1);
        // One line per call.
        EXPECT_EQ(handler.Count({ "No database file is configured for module Werk" }, 3), 5) << handler.All();
    }
    EXPECT_EQ(UserDatabase(), "");
    EXPECT_TRUE(handler.messages.empty());

    // The module's configuration still takes a file, and the calls go on with it.
    RunConfig(module, "txt_Database", site, "cmd_OK");
    EXPECT_EQ(UserDatabase(), site);
    EXPECT_EQ(CallEverything(module), std::vector<qint32>(5, 1));
    EXPECT_EQ(asked, 1);
}

TEST_F(SqliteFirstUseTest, AChosenFileIsStoredForTheUserAndTheCallGoesOnWithIt)
{
    // Each call that may come first: the question is asked in it, and it succeeds.
    const std::function<qint32(SqliteDataModule&)> firstCalls[] = {
        [](SqliteDataModule& m) {
            qint32 status = 0;
            return m.Initialize(QString(), status);
        },
        [](SqliteDataModule& m) {
            qint32 status = 0;
            return Overview(m, &status).contains("30#1 Leistung [kW] 3") ? status : -100;
        },
        [](SqliteDataModule& m) {
            qint32 status = 0;
            return SamplesOf(Read(m, { "30#1" }, SiteFixture::Day, SiteFixture::Day + 1, &status), 0).size()
                    == size_t(SiteFixture::PowerSamples)
                ? status
                : -100;
        },
    };
    answer = "  " + site + " ";
    for (const auto& call : firstCalls) {
        TempSettings fresh;
        asked = 0;
        handler.messages.clear();
        SqliteDataModule first(DataModuleRegistration { "Werk", "4" });
        first.SetMessageHandler(&handler);
        first.SetDatabaseQuestion([&](const QString&) {
            ++asked;
            return answer;
        });
        EXPECT_EQ(call(first), 1) << handler.All();
        EXPECT_EQ(asked, 1);
        EXPECT_EQ(UserDatabase(), site);
        EXPECT_EQ(first.Database(), site);
        // The program fetches the channels again.
        EXPECT_EQ(handler.messages, (std::vector<std::pair<QString, QString>> { { "CHANNELS_CHANGED", "4" } }));
        EXPECT_EQ(CallEverything(first), std::vector<qint32>(5, 1));

        // The next session reads the stored file without asking.
        SqliteDataModule next(DataModuleRegistration { "Werk", "4" });
        next.SetDatabaseQuestion([&](const QString&) {
            ++asked;
            return QString();
        });
        EXPECT_EQ(CallEverything(next), std::vector<qint32>(5, 1));
        EXPECT_EQ(asked, 1);
    }
}

TEST_F(SqliteFirstUseTest, ConfiguredFilesAndParamsAreNotQuestioned)
{
    qint32 status = 0;
    EXPECT_EQ(module.Initialize(site, status), 1);
    settings.SetMachine(ModuleKey, "Database", site);
    SqliteDataModule machine(DataModuleRegistration { "Werk", "4" });
    machine.SetDatabaseQuestion([&](const QString&) {
        ++asked;
        return QString();
    });
    EXPECT_EQ(CallEverything(machine), std::vector<qint32>(5, 1));
    // A configured file that is missing is reported, not questioned.
    settings.SetUser(ModuleKey, "Database", dir.filePath("gone.sqlite"));
    EXPECT_EQ(module.Initialize(QString(), status), SqliteDataModule::FileMissing);
    EXPECT_EQ(asked, 0);
}

// The question's dialog runs an event loop, in which the program may call the module again.
TEST_F(SqliteFirstUseTest, ACallDuringTheQuestionFailsCleanlyWithoutASecondQuestion)
{
    answer = site;
    std::vector<qint32> inner;
    QStringList configDialogs { "(not called)" };
    during = [&] {
        inner = CallEverything(module);
        // Neither does the configuration open a second dialog.
        configDialogs = ModalDialogsDuring([&] { QMetaObject::invokeMethod(&module, "ShowConfig"); });
    };
    qint32 status = 0;
    EXPECT_EQ(module.Initialize(QString(), status), 1) << handler.All();
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(inner, std::vector<qint32>({ -1, -1, -1, -1, 0 }));
    EXPECT_EQ(configDialogs, QStringList());
    EXPECT_EQ(UserDatabase(), site);
    EXPECT_EQ(CallEverything(module), std::vector<qint32>(5, 1));
}

TEST_F(SqliteFirstUseTest, TheQuestionAndTheDialogSuggestTheUsersDemoDatabaseWhenItExists)
{
    const QString demo = SqliteSettings::UserDemoDatabase();
    if (QFileInfo::exists(demo))
        GTEST_SKIP() << demo.toStdString() << " exists already; it is not touched.";
    SiteFixture::Write(demo);
    struct Remove
    {
        QString path;
        ~Remove() { QFile::remove(path); }
    } remove { demo };

    qint32 status = 0;
    EXPECT_EQ(module.Initialize(QString(), status), SqliteDataModule::NoDatabase);
    EXPECT_EQ(suggestions, QStringList { QDir::toNativeSeparators(demo) });
    EXPECT_EQ(SqliteDataModule::SuggestedDatabase(), QDir::toNativeSeparators(demo));
    // The configuration shows it when nothing is configured, and stores it on OK.
    EXPECT_EQ(RunConfig(module, "txt_Database", demo, "cmd_OK"), QDir::toNativeSeparators(demo));
    EXPECT_EQ(UserDatabase(), demo);

    QFile::remove(demo);
    EXPECT_EQ(SqliteDataModule::SuggestedDatabase(), "");
    SqliteDataModule other(DataModuleRegistration { "Anderes", "5" });
    QStringList otherSuggestions;
    other.SetDatabaseQuestion([&](const QString& suggestion) {
        otherSuggestions << suggestion;
        return QString();
    });
    EXPECT_EQ(other.Initialize(QString(), status), SqliteDataModule::NoDatabase);
    EXPECT_EQ(otherSuggestions, QStringList { "" });
}

// Without a screen (exports, tests) the default question shows nothing and declines.
TEST(SqliteFirstUse, WithoutAScreenNoDialogAppearsAndAFileConfiguredLaterIsRead)
{
    if (QGuiApplication::platformName() != "offscreen")
        GTEST_SKIP() << "needs the offscreen platform";
    TempSettings settings;
    QTemporaryDir dir;
    const QString site = SiteFixture::Write(dir.filePath("site.sqlite"));
    RecordingHandler handler;
    SqliteDataModule module(DataModuleRegistration { "Werk", "4" });
    module.SetMessageHandler(&handler);

    qint32 status = 0;
    const QStringList dialogs = ModalDialogsDuring([&] {
        EXPECT_EQ(module.Initialize(QString(), status), SqliteDataModule::NoDatabase);
        EXPECT_EQ(handler.Count({ "No database file is configured" }, 3), 1) << handler.All();
        QStringList categories, channels;
        EXPECT_EQ(module.GetChannelStructure(categories, channels, status), SqliteDataModule::NoDatabase);
    });
    EXPECT_EQ(dialogs, QStringList());
    for (QWidget* widget : QApplication::topLevelWidgets())
        EXPECT_FALSE(widget->isVisible()) << widget->objectName().toStdString();
    EXPECT_EQ(UserDatabase(), "");

    // A file the user configures meanwhile (another program, the demo generator) is read by the
    // next call.
    settings.SetUser(ModuleKey, "Database", site);
    EXPECT_TRUE(Overview(module, &status).contains("30#1 Leistung [kW] 3"));
    EXPECT_EQ(status, 1);
    EXPECT_EQ(module.Database(), site);
}

} // namespace
