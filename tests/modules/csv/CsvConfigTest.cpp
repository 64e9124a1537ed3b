// SPDX-License-Identifier: GPL-3.0-or-later
// Which folder the CSV module reads, and how its configuration dialog changes it.
#include "CsvFolder.h"
#include "RegistryKey.h"
#include "TempSettings.h"
#include "frm_CsvConfig.h"

#include <QApplication>
#include <QDir>
#include <QLineEdit>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>

namespace {

const QString ModuleKey = QStringLiteral("Software\\HARVOLD\\ModuleSettings\\Werk");

// Two trees told apart by their only channel.
struct TwoTrees
{
    TwoTrees()
    {
        folder.Write("a/A.csv", "timestamp;Erster\n");
        folder.Write("b/B.csv", "timestamp;Zweiter\n");
        first = folder.Path("a");
        second = folder.Path("b");
    }
    CsvFolder folder;
    QString first, second;
};

QString OnlyChannel(CsvDataModule& module)
{
    ChannelCollection channels;
    qint32 status = 0;
    module.GetChannelOverview(channels, status);
    return channels.Count() == 1 ? channels.Channel(0)->ChannelName() : QString();
}

// Runs the module's dialog, handing it to the given function as soon as it shows.
void WithDialog(CsvDataModule& module, const std::function<void(frm_CsvConfig&)>& act)
{
    bool seen = false;
    QTimer::singleShot(0, [&]() {
        auto* dialog = qobject_cast<frm_CsvConfig*>(QApplication::activeModalWidget());
        seen = dialog != nullptr;
        if (dialog)
            act(*dialog);
        else if (QApplication::activeModalWidget())
            QApplication::activeModalWidget()->close();
    });
    module.ShowConfig();
    EXPECT_TRUE(seen);
}

} // namespace

TEST(CsvConfig, TheFolderComesFromParamThenUserThenMachineSettings)
{
    TwoTrees trees;
    const struct
    {
        const char* name;
        QString user, machine, param, expected;
    } cases[] = {
        { "user only", trees.first, "", "", trees.first },
        { "machine only", "", trees.second, "", trees.second },
        { "user before machine", trees.second, trees.first, "", trees.second },
        { "param before both", trees.first, trees.first, trees.second, trees.second },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        TempSettings settings;
        if (!c.user.isEmpty())
            settings.SetUser(ModuleKey, "Folder", c.user);
        if (!c.machine.isEmpty())
            settings.SetMachine(ModuleKey, "Folder", c.machine);
        CsvDataModule module(DataModuleRegistration { "Werk", "4" });
        qint32 status = 0;
        EXPECT_EQ(module.Initialize(c.param, status), 1);
        EXPECT_EQ(module.Folder(), QDir::cleanPath(c.expected));
        EXPECT_EQ(OnlyChannel(module), c.expected == trees.first ? "Erster" : "Zweiter");
    }
}

TEST(CsvConfig, TheDialogStoresTheUsersFolderAndAnnouncesAChangeOnce)
{
    TwoTrees trees;
    TempSettings settings;
    settings.SetMachine(ModuleKey, "Folder", trees.first);
    RecordingHandler handler;
    CsvDataModule module(DataModuleRegistration { "Werk", "4" });
    module.SetMessageHandler(&handler);
    qint32 status = 0;
    ASSERT_EQ(module.Initialize(QString(), status), 1);
    EXPECT_TRUE(module.HasConfig());
    EXPECT_EQ(OnlyChannel(module), "Erster");

    WithDialog(module, [&](frm_CsvConfig& dialog) {
        EXPECT_EQ(dialog.windowTitle(), "CSV-Dateien");
        auto* edit = dialog.findChild<QLineEdit*>("txt_Folder");
        ASSERT_TRUE(edit);
        EXPECT_EQ(QDir::fromNativeSeparators(edit->text()), QDir::cleanPath(trees.first));
        edit->setText(QDir::toNativeSeparators(trees.second) + "  ");
        dialog.accept();
    });
    RegistryKey key;
    EXPECT_EQ(key.ReadValue(Hive::CurrentUser, ModuleKey, "Folder"), QDir::cleanPath(trees.second));
    EXPECT_EQ(key.ReadValue(Hive::LocalMachine, ModuleKey, "Folder"), trees.first);
    ASSERT_EQ(handler.messages.size(), 1u);
    EXPECT_EQ(handler.messages[0], std::make_pair(QString("CHANNELS_CHANGED"), QString("4")));
    EXPECT_EQ(OnlyChannel(module), "Zweiter");

    // OK on the same folder, and a cancelled change: no message, no change.
    WithDialog(module, [](frm_CsvConfig& dialog) { dialog.accept(); });
    WithDialog(module, [&](frm_CsvConfig& dialog) {
        dialog.findChild<QLineEdit*>("txt_Folder")->setText(trees.first);
        dialog.reject();
    });
    EXPECT_EQ(handler.messages.size(), 1u);
    EXPECT_EQ(module.Folder(), QDir::cleanPath(trees.second));

    // An empty entry hands the choice back to the machine-wide folder.
    EXPECT_TRUE(module.ApplyFolder("  "));
    EXPECT_EQ(module.Folder(), QDir::cleanPath(trees.first));
    EXPECT_EQ(OnlyChannel(module), "Erster");
    EXPECT_EQ(handler.messages.size(), 2u);
}

TEST(CsvConfig, TheDialogSpeaksEnglishWhenTheLanguageOffsetIs1000)
{
    for (const auto& [offset, title] :
        { std::pair<QString, QString> { "1000", "CSV files" }, { "0", "CSV-Dateien" }, { "", "CSV-Dateien" } }) {
        TempSettings settings;
        if (!offset.isEmpty())
            settings.SetMachine("Software\\HARVOLD\\Sorano\\Settings", "LangOffset", offset);
        CsvDataModule module(DataModuleRegistration { "Werk", "4" });
        QString seen;
        WithDialog(module, [&](frm_CsvConfig& dialog) {
            seen = dialog.windowTitle();
            dialog.reject();
        });
        EXPECT_EQ(seen, title) << offset.toStdString();
    }
}
