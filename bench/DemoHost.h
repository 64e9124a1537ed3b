// SPDX-License-Identifier: GPL-3.0-or-later
// For the benchmarks that open views on the demo data: the demo database written into a
// temporary folder and bound as the module "Demo" at address 1, with settings of their own.
#pragma once

#include "MeasuringHost.h"
#include "ModuleBoxes.h"
#include "RegistryKey.h"
#include "SqliteDataModule.h"

#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>
#include <memory>

class DemoHost : public MeasuringHost
{
public:
    DemoHost()
    {
        RegistryKey::SetRoots(dir.filePath("machine"), dir.filePath("user"));
        const QString database = dir.filePath("demo.sqlite");
        if (QProcess::execute(QStringLiteral(SORANO_DEMODATA), { database }) != 0)
            std::fprintf(stderr, "the demo data could not be written\n");
        auto box = std::make_shared<ModuleBox>();
        box->SetName(QStringLiteral("Demo"));
        box->SetAddress(QStringLiteral("1"));
        box->SetParam(database);
        box->SetDataModule(std::make_unique<SqliteDataModule>(DataModuleRegistration { "Demo", "1" }));
        box->GetChannelList(nullptr);
        modules.Add(box);
    }
    ModuleBoxes& DataModules() override { return modules; }
    void SendMessage(const QString&, const QString&) override { }

    QTemporaryDir dir;
    ModuleBoxes modules;
};
