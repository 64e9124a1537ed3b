// SPDX-License-Identifier: GPL-3.0-or-later
// The built plug-in, loaded as the program loads it: metadata, factory, a working module.
#include "CsvFolder.h"
#include "TempSettings.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QPluginLoader>

#include <gtest/gtest.h>

#include <memory>

TEST(CsvPlugin, DeclaresItsProgIdAndCreatesWorkingModulesForItOnly)
{
    QPluginLoader loader(SORANO_CSV_PLUGIN);
    const QJsonArray progIds = loader.metaData().value("MetaData").toObject().value("ProgIDs").toArray();
    EXPECT_EQ(progIds, QJsonArray({ "Sorano.CSV" }));

    QObject* root = loader.instance();
    ASSERT_TRUE(root) << loader.errorString().toStdString();
    auto* factory = qobject_cast<DataModuleFactory*>(root);
    ASSERT_TRUE(factory);
    EXPECT_EQ(factory->CreateModule("Sorano.SQLite", { "Werk", "4" }), nullptr);
    EXPECT_EQ(factory->CreateModule("", { "Werk", "4" }), nullptr);

    TempSettings settings;
    CsvFolder folder;
    folder.Write("L.csv", "timestamp;P [kW];Q\n2023-01-01 00:00;1;2\n");
    settings.SetUser("Software\\HARVOLD\\ModuleSettings\\Werk", "Folder", folder.Root());
    for (const QString progId : { "Sorano.CSV", "sorano.csv" }) {
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
        EXPECT_EQ(channels.Count(), 2);
        const ChannelCollection data = Read(*module, { channels.Key(1) }, D(2023, 1, 1), D(2023, 1, 2));
        EXPECT_EQ(SamplesOf(data, 0), (Samples { { D(2023, 1, 1), 2 } }));
    }
}
