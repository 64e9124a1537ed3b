// SPDX-License-Identifier: GPL-3.0-or-later
// The CSV module's folder, its configuration dialog and the plug-in that creates the module.
#include "CsvFolder.h"
#include "RegistryKey.h"
#include "TempSettings.h"
#include "frm_CsvConfig.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonObject>
#include <QPluginLoader>

#include <gtest/gtest.h>

#include <memory>
#include <tuple>

namespace {

const QString ModuleKey = QStringLiteral("Software\\HARVOLD\\ModuleSettings\\Werk");

// Two trees told apart by their only channel.
struct TwoTrees
{
    TwoTrees()
    {
        folder.Write("a/A.csv", "timestamp;Erster\n");
        folder.Write("b/B.csv", "timestamp;Zweiter\n");
    }
    CsvFolder folder;
    QString first = folder.Path("a"), second = folder.Path("b");
};

QString OnlyChannel(DataModuleInterface& module)
{
    const QStringList overview = Overview(module);
    return overview.size() == 1 ? overview[0].section(' ', 1, 1) : QString();
}

} // namespace

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
    EXPECT_EQ(OnlyChannel(module), "Erster");
    // Step after step: entry, button, the folder the dialog shows, the user's setting after it,
    // messages sent and the only channel. Blanks around an entry don't count; an empty one hands
    // the choice back to the machine-wide folder.
    const QString a = QDir::cleanPath(trees.first), b = QDir::cleanPath(trees.second);
    const std::tuple<QString, const char*, QString, QString, size_t, QString> steps[] = {
        { QDir::toNativeSeparators(b) + "  ", "cmd_OK", a, b, 1, "Zweiter" },
        { b, "cmd_OK", b, b, 1, "Zweiter" },
        { a, "cmd_Cancel", b, b, 1, "Zweiter" },
        { "  ", "cmd_OK", b, "", 2, "Erster" },
    };
    for (const auto& [entry, button, shownBefore, user, messages, channel] : steps) {
        SCOPED_TRACE(::testing::PrintToString(entry) + " " + button);
        EXPECT_EQ(QDir::fromNativeSeparators(RunConfig(module, "txt_Folder", entry, button)), shownBefore);
        EXPECT_EQ(RegistryKey().ReadValue(Hive::CurrentUser, ModuleKey, "Folder"), user);
        EXPECT_EQ(handler.messages.size(), messages);
        EXPECT_EQ(OnlyChannel(module), channel);
    }
    EXPECT_EQ(RegistryKey().ReadValue(Hive::LocalMachine, ModuleKey, "Folder"), trees.first);
    EXPECT_EQ(module.Folder(), a);
    for (const auto& message : handler.messages)
        EXPECT_EQ(message, std::make_pair(QString("CHANNELS_CHANGED"), QString("4")));

    // A param wins over the user's folder and the machine-wide one.
    settings.SetUser(ModuleKey, "Folder", trees.first);
    EXPECT_EQ(module.Initialize(trees.second, status), 1);
    EXPECT_EQ(OnlyChannel(module), "Zweiter");
}

// The built plug-in, loaded as the program loads it.
TEST(CsvPlugin, DeclaresItsProgIdAndCreatesWorkingModulesForItOnly)
{
    QPluginLoader loader(SORANO_CSV_PLUGIN);
    const QJsonArray progIds = loader.metaData().value("MetaData").toObject().value("ProgIDs").toArray();
    EXPECT_EQ(progIds, QJsonArray({ "Sorano.CSV" }));
    auto* factory = qobject_cast<DataModuleFactory*>(loader.instance());
    ASSERT_TRUE(factory) << loader.errorString().toStdString();
    EXPECT_EQ(factory->CreateModule("Sorano.SQLite", { "Werk", "4" }), nullptr);

    TempSettings settings;
    TwoTrees trees;
    settings.SetUser(ModuleKey, "Folder", trees.first);
    std::unique_ptr<QObject> object(factory->CreateModule("sorano.csv", { "Werk", "4" }));
    auto* module = qobject_cast<DataModuleInterface*>(object.get());
    ASSERT_TRUE(module);
    EXPECT_GE(object->metaObject()->indexOfMethod("ShowConfig()"), 0);
    qint32 status = 0;
    EXPECT_EQ(module->Initialize(QString(), status), 1);
    EXPECT_EQ(OnlyChannel(*module), "Erster");
}
