// SPDX-License-Identifier: GPL-3.0-or-later
// Shared by the tests on the demo database: the SQLite module registered as "Demo" at address 1,
// the log in the test's folder, a script engine, and a folder for what the test writes.
#pragma once

#include "Globals.h"
#include "MatrixScriptEngine.h"
#include "TempSettings.h"

#include <QCoreApplication>
#include <QFile>
#include <QLineEdit>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

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
        // An installation lists its add-ins; one that is not there is skipped without a word.
        roots.SetMachine("Software\\HARVOLD\\Sorano\\AddIns", "Missing", "Sorano.NoSuchAddIn");
        g_cScriptEngine = &engine;
    }
    void TearDown() override { g_cScriptEngine = nullptr; }

    // The main example view copied into the test's folder as `name`; views close without asking.
    void CopyMainView(const QString& name)
    {
        roots.SetUser(KeySettings, "OnCloseMeasuring", "1");
        ASSERT_TRUE(QFile::copy(Examples + "/Hauptzaehler.sor", out.filePath(name)));
    }
    // Replaces the text of a box as a user types it.
    static void Type(QLineEdit* edit, const QString& text)
    {
        ASSERT_NE(edit, nullptr);
        edit->setFocus();
        edit->selectAll();
        QTest::keyClick(edit, Qt::Key_Backspace);
        QTest::keyClicks(edit, text);
    }
    // The built program, with the test's settings, without any display to fall back on.
    int RunProgram(const QStringList& arguments, QString& error)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* name : { "QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY", "SORANO_MODULE_PATH" })
            environment.remove(name);
        environment.insert("SORANO_MACHINE_SETTINGS", roots.MachineDir());
        environment.insert("XDG_CONFIG_HOME", roots.UserDir());
        environment.insert("XDG_DATA_HOME", roots.Path() + "/data");
        QProcess program;
        program.setProcessEnvironment(environment);
        program.start(SORANO_PROGRAM, arguments);
        const bool finished = program.waitForFinished(120'000);
        error = QString::fromLocal8Bit(program.readAllStandardError());
        return finished && program.exitStatus() == QProcess::NormalExit ? program.exitCode() : -1;
    }
    // Lets posted events and deferred deletes run.
    static void Settle()
    {
        for (int turn = 0; turn < 5; ++turn) {
            QCoreApplication::processEvents();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
    }

    TempSettings roots;
    QTemporaryDir out;
    MatrixScriptEngine engine;
};
