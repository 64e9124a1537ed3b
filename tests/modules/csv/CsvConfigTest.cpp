// SPDX-License-Identifier: GPL-3.0-or-later
// The CSV module's folder, its configuration dialog and the plug-in that creates the module.
#include "CsvFolder.h"
#include "RegistryKey.h"
#include "TempSettings.h"
#include "frm_CsvConfig.h"

#include <QApplication>
#include <QDir>
#include <QJsonArray>
#include <QJsonObject>
#include <QLineEdit>
#include <QPluginLoader>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

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

    WithDialog(module, [&](frm_CsvConfig& dialog) {
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
    WithDialog(module, [&](frm_CsvConfig& dialog) { dialog.accept(); });
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
