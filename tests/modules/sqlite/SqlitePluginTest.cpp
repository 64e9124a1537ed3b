// SPDX-License-Identifier: GPL-3.0-or-later
// The built plug-in, loaded as the program loads it: metadata, factory, a working module.
#include "LoggerDatabase.h"
#include "TempSettings.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QPluginLoader>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

namespace {

TEST(SqlitePlugin, DeclaresItsProgIdAndCreatesWorkingModulesForItOnly)
{
    QPluginLoader loader(SORANO_SQLITE_PLUGIN);
    const QJsonArray progIds = loader.metaData().value("MetaData").toObject().value("ProgIDs").toArray();
    EXPECT_EQ(progIds, QJsonArray({ "Sorano.SQLite" }));

    QObject* root = loader.instance();
    ASSERT_TRUE(root) << loader.errorString().toStdString();
    auto* factory = qobject_cast<DataModuleFactory*>(root);
    ASSERT_TRUE(factory);

    EXPECT_EQ(factory->CreateModule("Sorano.CSV", { "Werk", "4" }), nullptr);
    EXPECT_EQ(factory->CreateModule("", { "Werk", "4" }), nullptr);

    TempSettings settings;
    QTemporaryDir dir;
    const QString path = dir.filePath("site.sqlite");
    {
        LoggerDatabase db(path);
        SiteFixture::Write(db);
    }
    settings.SetUser("Software\\HARVOLD\\ModuleSettings\\Werk", "Database", path);

    for (const QString progId : { "Sorano.SQLite", "sorano.sqlite" }) {
        SCOPED_TRACE(progId.toStdString());
        std::unique_ptr<QObject> object(factory->CreateModule(progId, { "Werk", "4" }));
        ASSERT_TRUE(object);
        auto* module = qobject_cast<DataModuleInterface*>(object.get());
        ASSERT_TRUE(module);
        EXPECT_GE(object->metaObject()->indexOfMethod("ShowConfig()"), 0);
        EXPECT_TRUE(module->HasConfig());
        qint32 status = 0;
        EXPECT_EQ(module->SelfCheck(status), 1);
        EXPECT_EQ(module->Initialize(QString(), status), 1);
        ChannelCollection channels;
        EXPECT_EQ(module->GetChannelOverview(channels, status), 1);
        EXPECT_EQ(channels.Count(), 4);
    }
}

} // namespace
