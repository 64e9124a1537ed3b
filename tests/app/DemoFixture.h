// SPDX-License-Identifier: GPL-3.0-or-later
// Shared by the tests on the demo database: the SQLite module registered as "Demo" at address 1,
// the log in the test's folder, a script engine, and a folder for what the test writes.
#pragma once

#include "Globals.h"
#include "MatrixScriptEngine.h"
#include "TempSettings.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

class DemoFixture : public ::testing::Test
{
protected:
    static inline const QString Demo = QStringLiteral(SORANO_DEMO_DATABASE);
    static inline const QString Examples = QStringLiteral(SORANO_EXAMPLES_DIR);
    static inline const QString KeySettings = QStringLiteral("Software\\HARVOLD\\Sorano\\Settings");

    void SetUp() override
    {
        ASSERT_TRUE(QFile::exists(Demo));
        qputenv("SORANO_MODULE_PATH", SORANO_SQLITE_PLUGIN_DIR);
        roots.SetMachine("Software\\HARVOLD\\DataModules", "Demo", "Sorano.SQLite:1");
        roots.SetMachine("Software\\HARVOLD\\ModuleSettings\\Demo", "Database", Demo);
        roots.SetMachine(KeySettings, "LogPath", roots.Path());
        g_cScriptEngine = &engine;
    }
    void TearDown() override { g_cScriptEngine = nullptr; }

    TempSettings roots;
    QTemporaryDir out;
    MatrixScriptEngine engine;
};
