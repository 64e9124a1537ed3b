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
        QDir().mkpath(logDir);
        Set("LogPath", logDir);
    }
    void Set(const char* name, const QString& value) { roots.SetMachine(KeySettings, name, value); }
    static QString Stamp() { return Formatter().GeneralDate(Calendar::Now()); }

    TempSettings roots;
    const QString logDir = roots.Path() + "/logs";
    const QString today = QDate::currentDate().toString("yyyyMMdd");
};

TEST_F(LoggingTest, LinesHaveTheFixedLayout)
{
    const QString before = Stamp();
    {
        Logging log;
        log.WriteLog("---------", "", "", 4);
        log.WriteLog("bind matrix-engine", "error 5 (Zugriff verweigert).", "Main", 3);
    }
    const QString after = Stamp();
    const QStringList lines = ReadLines(logDir + "/Sorano.log");
    const QString rests[] = {": --------- - ", "Main: bind matrix-engine - error 5 (Zugriff verweigert).",
                             "Logging.Class_Terminate: app stop  - Sorano terminated.",
                             "--------: --------- - ----------------"};
    ASSERT_EQ(lines.size(), 4);
    for (int i = 0; i < 4; ++i) // each line starts with the general date of a moment during the test
        EXPECT_TRUE(lines[i] == before + ' ' + rests[i] || lines[i] == after + ' ' + rests[i])
            << lines[i].toStdString() << "\nexpected: <date> " << rests[i].toStdString();
}

TEST_F(LoggingTest, LevelsBelowTheLogModeAreDroppedButLevelFourIsAlwaysWritten)
{
    Logging defaultLevel;
    for (int level = 1; level <= 3; ++level)
        defaultLevel.WriteLog("t", "m", "A.B", level);
    EXPECT_EQ(ReadLines(defaultLevel.FileName()).size(), 1);

    Set("LogMode", "5");
    QFile::remove(logDir + "/Sorano.log");
    Logging quiet;
    for (int level = 1; level <= 3; ++level)
        quiet.WriteLog("dropped", "m", "A.B", level);
    quiet.WriteLog("kept", "m", "A.B", 4);
    const QStringList lines = ReadLines(quiet.FileName());
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines[0].endsWith("A.B: kept - m"));

    for (auto [mode, level] : {std::pair{"1", 1}, {"5", 5}, {"2x", 3}}) {
        Set("LogMode", mode);
        EXPECT_EQ(Logging().Level(), level) << mode;
    }
}

TEST_F(LoggingTest, FileNameFollowsFolderAndDailySettings)
{
    const QString plain = logDir + "/Sorano.log", fallback = AppPaths::DataFolder() + "/Sorano.log";
    const struct { const char* name; QString value, file; } cases[] = {
        {"LogDaily", "1", logDir + "/Sorano-" + today + ".log"}, // only the exact text 1 selects daily files
        {"LogDaily", "0", plain}, {"LogDaily", "true", plain}, {"LogDaily", "1 ", plain}, {"LogDaily", "01", plain},
        {"LogPath", logDir + "/", plain}, {"LogPath", logDir + "\\", plain}, // the separator is not doubled
        {"LogPath", logDir + "/gibt-es-nicht", fallback}, {"LogPath", "", fallback}};
    for (const auto& c : cases) {
        Set(c.name, c.value);
        EXPECT_EQ(Logging().FileName(), c.file) << c.name << "=" << c.value.toStdString();
    }
}

TEST_F(LoggingTest, AppendKeepsOldContentAndZeroDeletesOnlyTheCurrentFile)
{
    WriteFile(logDir + "/Sorano.log", "old line\n");
    for (const char* append : {"", "1"}) {
        Set("LogAppend", append);
        Logging log;
        EXPECT_EQ(ReadLines(log.FileName()).value(0), "old line") << append;
    }
    Set("LogAppend", "0");
    Set("LogDaily", "1");
    WriteFile(logDir + "/Sorano-" + today + ".log", "today\n");
    WriteFile(logDir + "/Sorano-19991231.log", "long ago\n");
    {
        Logging log;
        EXPECT_FALSE(QFile::exists(log.FileName()));
    }
    EXPECT_EQ(ReadLines(logDir + "/Sorano-19991231.log").value(0), "long ago");
    EXPECT_EQ(ReadLines(logDir + "/Sorano.log").value(0), "old line");
}

TEST_F(LoggingTest, UnwritableFileLosesTheLineWithoutHarmAndFreeWriteLogNeedsALog)
{
    QDir().mkpath(logDir + "/Sorano.log"); // a folder where the file should be: every open fails
    Logging log;
    log.WriteLog("lost", "", "X.Y", 4);
    EXPECT_TRUE(QFileInfo(log.FileName()).isDir());
    QDir(logDir + "/Sorano.log").removeRecursively();

    ASSERT_EQ(g_cLogging, nullptr);
    WriteLog("nobody", "listens", "X.Y", 4);
    g_cLogging = &log;
    WriteLog("somebody", "listens", "X.Y", 4);
    g_cLogging = nullptr;
    const QStringList lines = ReadLines(log.FileName());
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines[0].endsWith("X.Y: somebody - listens"));
}

} // namespace
