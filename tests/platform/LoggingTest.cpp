// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppPaths.h"
#include "Calendar.h"
#include "Formatter.h"
#include "Logging.h"
#include "TempSettings.h"

#include <QDate>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

namespace {

const QString KeySettings = QStringLiteral("Software\\HARVOLD\\Sorano\\Settings");

QStringList ReadLines(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QStringList lines = QString::fromUtf8(file.readAll()).split('\n');
    if (!lines.isEmpty() && lines.last().isEmpty())
        lines.removeLast();
    return lines;
}

void WriteFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
}

class LoggingTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        logDir = roots.Path() + "/logs";
        QDir().mkpath(logDir);
        roots.SetMachine(KeySettings, "LogPath", logDir);
    }

    // The line must start with the general date of a moment during the test.
    void ExpectLine(const QString& line, const QString& rest, const QString& before, const QString& after)
    {
        const bool datedBefore = line.startsWith(before + ' ') && line.mid(before.size() + 1) == rest;
        const bool datedAfter = line.startsWith(after + ' ') && line.mid(after.size() + 1) == rest;
        EXPECT_TRUE(datedBefore || datedAfter) << line.toStdString() << "\nexpected: <date> " << rest.toStdString();
    }

    static QString Stamp() { return Formatter().GeneralDate(Calendar::Now()); }

    TempSettings roots;
    QString logDir;
};

TEST_F(LoggingTest, LinesHaveTheFixedLayout)
{
    const QString before = Stamp();
    {
        Logging log;
        EXPECT_EQ(log.FileName(), logDir + "/Sorano.log");
        log.WriteLog("---------", "", "", 4);
        log.WriteLog("bind matrix-engine", "error 5 (Zugriff verweigert).", "Main", 3);
    }
    const QString after = Stamp();
    const QStringList lines = ReadLines(logDir + "/Sorano.log");
    ASSERT_EQ(lines.size(), 4);
    ExpectLine(lines[0], ": --------- - ", before, after);
    ExpectLine(lines[1], "Main: bind matrix-engine - error 5 (Zugriff verweigert).", before, after);
    ExpectLine(lines[2], "Logging.Class_Terminate: app stop  - Sorano terminated.", before, after);
    ExpectLine(lines[3], "--------: --------- - ----------------", before, after);
}

TEST_F(LoggingTest, LevelsBelowTheLogModeAreDroppedButLevelFourIsAlwaysWritten)
{
    Logging defaultLevel;
    defaultLevel.WriteLog("t1", "m", "A.B", 1);
    defaultLevel.WriteLog("t2", "m", "A.B", 2);
    defaultLevel.WriteLog("t3", "m", "A.B", 3);
    EXPECT_EQ(ReadLines(defaultLevel.FileName()).size(), 1);

    roots.SetMachine(KeySettings, "LogMode", "5");
    QFile::remove(logDir + "/Sorano.log");
    Logging quiet;
    EXPECT_EQ(quiet.Level(), 5);
    for (int level = 1; level <= 3; ++level)
        quiet.WriteLog("dropped", "m", "A.B", level);
    quiet.WriteLog("kept", "m", "A.B", 4);
    const QStringList lines = ReadLines(quiet.FileName());
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines[0].endsWith("A.B: kept - m"));

    roots.SetMachine(KeySettings, "LogMode", "1");
    EXPECT_EQ(Logging().Level(), 1);
    roots.SetMachine(KeySettings, "LogMode", "2x");
    EXPECT_EQ(Logging().Level(), 3);
}

TEST_F(LoggingTest, OnlyTheExactTextOneSelectsDailyFiles)
{
    const QString today = QDate::currentDate().toString("yyyyMMdd");
    roots.SetMachine(KeySettings, "LogDaily", "1");
    EXPECT_EQ(Logging().FileName(), logDir + "/Sorano-" + today + ".log");
    for (const char* other : {"0", "true", "1 ", "01"}) {
        roots.SetMachine(KeySettings, "LogDaily", other);
        EXPECT_EQ(Logging().FileName(), logDir + "/Sorano.log") << other;
    }
}

TEST_F(LoggingTest, TrailingSeparatorOfTheFolderIsNotDoubled)
{
    roots.SetMachine(KeySettings, "LogPath", logDir + "/");
    EXPECT_EQ(Logging().FileName(), logDir + "/Sorano.log");
    roots.SetMachine(KeySettings, "LogPath", logDir + "\\");
    EXPECT_EQ(Logging().FileName(), logDir + "/Sorano.log");
}

TEST_F(LoggingTest, MissingFolderFallsBackToTheDataFolder)
{
    roots.SetMachine(KeySettings, "LogPath", logDir + "/gibt-es-nicht");
    EXPECT_EQ(Logging().FileName(), AppPaths::DataFolder() + "/Sorano.log");
    roots.SetMachine(KeySettings, "LogPath", "");
    EXPECT_EQ(Logging().FileName(), AppPaths::DataFolder() + "/Sorano.log");
}

TEST_F(LoggingTest, AppendKeepsOldContentAndZeroDeletesOnlyTheCurrentFile)
{
    const QString today = QDate::currentDate().toString("yyyyMMdd");
    WriteFile(logDir + "/Sorano.log", "old line\n");
    {
        Logging log;
        EXPECT_EQ(ReadLines(log.FileName()).value(0), "old line");
    }
    roots.SetMachine(KeySettings, "LogAppend", "1");
    {
        Logging log;
        EXPECT_EQ(ReadLines(log.FileName()).value(0), "old line");
    }

    roots.SetMachine(KeySettings, "LogAppend", "0");
    roots.SetMachine(KeySettings, "LogDaily", "1");
    WriteFile(logDir + "/Sorano-" + today + ".log", "today\n");
    WriteFile(logDir + "/Sorano-19991231.log", "long ago\n");
    {
        Logging log;
        EXPECT_FALSE(QFile::exists(log.FileName()));
        log.WriteLog("fresh", "", "X.Y", 4);
        EXPECT_EQ(ReadLines(log.FileName()).size(), 1);
    }
    EXPECT_EQ(ReadLines(logDir + "/Sorano-19991231.log").value(0), "long ago");
    EXPECT_EQ(ReadLines(logDir + "/Sorano.log").value(0), "old line");
}

TEST_F(LoggingTest, UnwritableFileLosesTheLineWithoutHarm)
{
    // A folder where the file should be: every open fails.
    QDir().mkpath(logDir + "/Sorano.log");
    Logging log;
    log.WriteLog("lost", "", "X.Y", 4);
    EXPECT_TRUE(QFileInfo(log.FileName()).isDir());
    QDir(logDir + "/Sorano.log").removeRecursively();
    log.WriteLog("found", "", "X.Y", 4);
    EXPECT_EQ(ReadLines(log.FileName()).size(), 1);
}

TEST_F(LoggingTest, FreeWriteLogIsSilentWithoutALog)
{
    ASSERT_EQ(g_cLogging, nullptr);
    WriteLog("nobody", "listens", "X.Y", 4);
    Logging log;
    g_cLogging = &log;
    WriteLog("somebody", "listens", "X.Y", 4);
    g_cLogging = nullptr;
    EXPECT_EQ(ReadLines(log.FileName()).size(), 1);
}

} // namespace
