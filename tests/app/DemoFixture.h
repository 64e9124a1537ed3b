// SPDX-License-Identifier: GPL-3.0-or-later
// Shared by the tests on the demo database: the SQLite module registered as "Demo" at address 1,
// the log in the test's folder, a script engine, a folder for what the test writes, and helpers
// to run the headless commands and to answer modal windows.
#pragma once

#include "CommandLine.h"
#include "Globals.h"
#include "MatrixScriptEngine.h"
#include "Project.h"
#include "TempSettings.h"

#include <QApplication>
#include <QDialog>
#include <QFile>
#include <QLineEdit>
#include <QPointer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>
#include <vector>

inline QByteArray ReadAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

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
    // The headless export or print of a command line in this process; its exit code.
    int Headless(const QStringList& arguments, QString& error)
    {
        const CommandLine command = ParseCommandLine(arguments);
        error = command.error;
        if (!error.isEmpty())
            return ExitCode::Usage;
        Project project;
        project.LoadDataModules();
        return command.action == CommandLine::Action::Print ? RunPrint(command.job, project, error)
                                                            : RunExport(command.job, project, error);
    }
    // The table export into `csv` of the command line's view, window and resolution.
    void ExportCsv(const QStringList& arguments, const QString& csv)
    {
        QString error;
        ASSERT_EQ(Headless(QStringList { "--export-csv", csv } + arguments, error), ExitCode::Ok)
            << error.toStdString();
    }
    // Answers the modal windows as they come up, each with the next step; a window beyond the
    // steps is a failure and is rejected, so that a test never hangs on it.
    void Answer(std::vector<std::function<void(QWidget*)>> steps)
    {
        pending = std::move(steps);
        lastAnswered = nullptr;
        QObject::disconnect(&probe, nullptr, nullptr, nullptr);
        QObject::connect(&probe, &QTimer::timeout, [this] {
            QWidget* modal = QApplication::activeModalWidget();
            if (!modal || modal == lastAnswered)
                return;
            lastAnswered = modal;
            if (pending.empty()) {
                ADD_FAILURE() << "unexpected window " << modal->objectName().toStdString();
                if (auto* dialog = qobject_cast<QDialog*>(modal))
                    dialog->reject();
                return;
            }
            auto step = pending.front();
            pending.erase(pending.begin());
            step(modal);
        });
        probe.start(20);
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
    QTimer probe;
    std::vector<std::function<void(QWidget*)>> pending;
    QPointer<QWidget> lastAnswered;
};
