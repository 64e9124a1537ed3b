// SPDX-License-Identifier: GPL-3.0-or-later
// The built program started twice: the second start hands its view to the first window and
// ends. The starts of this test form a group of their own (SORANO_INSTANCE), so that test
// processes running side by side never hand views to each other.
#include "DemoFixture.h"
#include "SingleInstance.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QLocalServer>

namespace {

class InstanceTest : public DemoFixture
{
protected:
    void SetUp() override
    {
        DemoFixture::SetUp();
        // Info lines too: the window writes one for every view handed to it.
        roots.SetMachine(KeySettings, "LogMode", "1");
        group = QStringLiteral("instancetest-%1").arg(QCoreApplication::applicationPid());
        environment = QProcessEnvironment::systemEnvironment();
        for (const char* name : { "DISPLAY", "WAYLAND_DISPLAY", "SORANO_MODULE_PATH" })
            environment.remove(name);
        environment.insert("QT_QPA_PLATFORM", "offscreen");
        environment.insert("SORANO_INSTANCE", group);
        environment.insert("SORANO_MACHINE_SETTINGS", roots.MachineDir());
        environment.insert("XDG_CONFIG_HOME", roots.UserDir());
        environment.insert("XDG_DATA_HOME", roots.Path() + "/data");
        qputenv("SORANO_INSTANCE", group.toUtf8());
        name = SingleInstance::DefaultName();
        qunsetenv("SORANO_INSTANCE");
    }
    void TearDown() override
    {
        for (QProcess* process : { &first, &separate })
            if (process->state() != QProcess::NotRunning) {
                process->kill();
                process->waitForFinished(10'000);
            }
        // Killed, the window leaves its socket file behind.
        QLocalServer::removeServer(name);
        DemoFixture::TearDown();
    }
    void Start(QProcess& process, const QStringList& arguments)
    {
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(out.path());
        process.start(SORANO_PROGRAM, arguments);
    }
    // The lines of the shared log that hold the text.
    int LogLines(const QString& text) const
    {
        int count = 0;
        for (const QString& line : QString::fromUtf8(ReadAll(roots.Path() + "/Sorano.log")).split('\n'))
            count += line.contains(text) ? 1 : 0;
        return count;
    }
    bool WaitForLog(const QString& text, int count = 1) const
    {
        const QDeadlineTimer deadline(90'000);
        while (LogLines(text) < count && !deadline.hasExpired())
            QTest::qWait(100);
        return LogLines(text) >= count;
    }

    QString group;
    QString name;
    QProcessEnvironment environment;
    QProcess first;
    QProcess separate;
};

TEST_F(InstanceTest, ASecondStartHandsItsViewToTheRunningWindowAndEndsAtOnce)
{
    CopyMainView("Haupt.sor");
    ASSERT_TRUE(QFile::copy(Examples + "/Rechenzentrum-Tag.sor", out.filePath("Tag.sor")));
    const QString handed = QFileInfo(out.filePath("Tag.sor")).canonicalFilePath();

    Start(first, { out.filePath("Haupt.sor") });
    ASSERT_TRUE(first.waitForStarted(30'000));
    // The window answers once its event loop runs (an empty list only brings it to the front).
    const QDeadlineTimer deadline(120'000);
    while (SingleInstance::Send(name, {}) != SingleInstance::Handover::Delivered && !deadline.hasExpired()) {
        ASSERT_EQ(first.state(), QProcess::Running) << first.readAllStandardError().toStdString();
        QTest::qWait(200);
    }
    ASSERT_FALSE(deadline.hasExpired());

    // Named relative to its own folder, as a file manager or a shell starts it.
    QProcess second;
    QElapsedTimer clock;
    clock.start();
    Start(second, { "Tag.sor" });
    ASSERT_TRUE(second.waitForFinished(60'000));
    EXPECT_EQ(second.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(second.exitCode(), 0) << second.readAllStandardError().toStdString();
    // It ends without a window and without the program's start (modules, log, engine).
    EXPECT_LT(clock.elapsed(), 30'000);

    ASSERT_TRUE(WaitForLog(" Sub Main: open from another start - Opened " + handed + "."))
        << ReadAll(roots.Path() + "/Sorano.log").toStdString();
    EXPECT_EQ(first.state(), QProcess::Running);
    EXPECT_EQ(LogLines(": app start - "), 1);

    // A view that can't be opened is said in the log of the window, which goes on.
    QProcess third;
    Start(third, { "Fehlt.sor" });
    ASSERT_TRUE(third.waitForFinished(60'000));
    EXPECT_EQ(third.exitCode(), 0);
    ASSERT_TRUE(WaitForLog(" Sub Main: open from another start - Could not open "
        + QDir(QFileInfo(out.path()).canonicalFilePath()).filePath("Fehlt.sor") + "."));

    // --new-instance starts a program of its own, which does not take the name.
    Start(separate, { "--new-instance", "Tag.sor" });
    ASSERT_TRUE(WaitForLog(": app start - ", 2)) << ReadAll(roots.Path() + "/Sorano.log").toStdString();
    EXPECT_FALSE(separate.waitForFinished(1000));
    EXPECT_EQ(first.state(), QProcess::Running);
    EXPECT_EQ(SingleInstance::Send(name, {}), SingleInstance::Handover::Delivered);
    EXPECT_EQ(LogLines(" Sub Main: open from another start - Opened " + handed + "."), 1);
}

} // namespace
