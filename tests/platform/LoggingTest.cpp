// SPDX-License-Identifier: GPL-3.0-or-later
#include "Logging.h"
#include "AppPaths.h"
#include "Calendar.h"
#include "Formatter.h"
#include "TempSettings.h"

#include <QDate>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <chrono>
#include <fcntl.h>
#include <future>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const QString KeySettings = QStringLiteral("Software\\HARVOLD\\Sorano\\Settings");

QStringList ReadLines(const QString& path)
{
    QFile file(path); // log lines are never empty
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts)
                                          : QStringList();
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
    const QString rests[] = { ": --------- - ", "Main: bind matrix-engine - error 5 (Zugriff verweigert).",
        "Logging.Class_Terminate: app stop  - Sorano terminated.", "--------: --------- - ----------------" };
    ASSERT_EQ(lines.size(), 4);
    for (int i = 0; i < 4; ++i) // each line starts with the general date of a moment during the test
        EXPECT_TRUE(lines[i] == before + ' ' + rests[i] || lines[i] == after + ' ' + rests[i])
            << lines[i].toStdString() << "\nexpected: <date> " << rests[i].toStdString();
}

TEST_F(LoggingTest, LevelsBelowTheLogModeAreDroppedButLevelFourIsAlwaysWritten)
{
    Set("LogMode", "5");
    Logging quiet;
    for (int level = 1; level <= 4; ++level)
        quiet.WriteLog(level < 4 ? "dropped" : "kept", "m", "A.B", level);
    const QStringList lines = ReadLines(quiet.FileName());
    EXPECT_TRUE(lines.size() == 1 && lines[0].endsWith("A.B: kept - m")) << lines.join('\n').toStdString();

    Set("LogMode", "2x");
    EXPECT_EQ(Logging().Level(), 3) << "a mode that is no number is the default";
}

TEST_F(LoggingTest, FileNameFollowsFolderAndDailySettings)
{
    const QString plain = logDir + "/Sorano.log", fallback = AppPaths::DataFolder() + "/Sorano.log";
    const struct
    {
        const char* name;
        QString value, file;
    } cases[]
        = { { "LogDaily", "1", logDir + "/Sorano-" + today + ".log" }, // only the exact text 1 selects daily files
              { "LogDaily", "1 ", plain }, { "LogPath", logDir + "\\", plain },
              { "LogPath", logDir + "/gibt-es-nicht", fallback } };
    for (const auto& c : cases) {
        Set(c.name, c.value);
        EXPECT_EQ(Logging().FileName(), c.file) << c.name << "=" << c.value.toStdString();
    }
}

TEST_F(LoggingTest, AppendKeepsOldContentAndAFreshLogEmptiesOnlyTheCurrentFileKeepingALink)
{
    WriteFile(logDir + "/Sorano.log", "old line\n");
    EXPECT_EQ(ReadLines(Logging().FileName()).value(0), "old line");
    Set("LogAppend", "0");
    Set("LogDaily", "1");
    WriteFile(logDir + "/Sorano-" + today + ".log", "today\n");
    WriteFile(logDir + "/Sorano-19991231.log", "long ago\n");
    EXPECT_FALSE(QFile::exists(Logging().FileName()));
    EXPECT_EQ(ReadLines(logDir + "/Sorano-19991231.log").value(0), "long ago");

    // A link: the file it names is emptied, the link stays.
    Set("LogDaily", "0");
    WriteFile(logDir + "/real.log", "old line\n");
    ASSERT_TRUE(QFile::remove(logDir + "/Sorano.log") && QFile::link(logDir + "/real.log", logDir + "/Sorano.log"));
    Logging().WriteLog("new", "line", "X.Y", 4);
    EXPECT_TRUE(QFileInfo(logDir + "/Sorano.log").isSymLink());
    const QStringList lines = ReadLines(logDir + "/real.log");
    EXPECT_TRUE(!lines.isEmpty() && lines[0].endsWith("X.Y: new - line")) << lines.join('\n').toStdString();
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
    EXPECT_TRUE(lines.size() == 1 && lines[0].endsWith("X.Y: somebody - listens")) << lines.join('\n').toStdString();
}

TEST_F(LoggingTest, ControlCharactersInTextsAreEscapedSoTheLogStaysText)
{
    {
        Logging log;
        log.WriteLog(QString::fromUtf8("Kanal\0A", 7), QString::fromUtf8("Wert \x01\x1f\x7f\u0085 \r\nzwei\tZeilen"),
            QString("Csv\nLine"), 4);
    }
    const QStringList lines = ReadLines(logDir + "/Sorano.log");
    ASSERT_EQ(lines.size(), 3) << lines.join('\n').toStdString(); // the line and the two closing lines
    EXPECT_FALSE(lines[0].contains(QChar(0)));
    EXPECT_TRUE(lines[0].endsWith("Csv\\x0ALine: Kanal\\0A - Wert \\x01\\x1F\\x7F\\x85 \\x0D\\x0Azwei\tZeilen"))
        << lines[0].toStdString();
}

TEST_F(LoggingTest, PipeWithoutReaderIsSkippedWithOneLineOnStderr)
{
    const QString pipe = logDir + "/Sorano.log";
    const QByteArray name = QFile::encodeName(pipe);
    ASSERT_EQ(::mkfifo(name.constData(), 0600), 0);
    Set("LogAppend", "0"); // a fresh log leaves the pipe a pipe

    testing::internal::CaptureStderr();
    auto logged = std::async(std::launch::async, [] {
        Logging log;
        for (int i = 0; i < 3; ++i)
            log.WriteLog("line", QString::number(i), "X.Y", 4);
    });
    // Should the log wait for a reader after all, one comes, so that the test ends and fails.
    int reader = -1;
    if (logged.wait_for(std::chrono::seconds(30)) != std::future_status::ready) {
        reader = ::open(name.constData(), O_RDONLY | O_NONBLOCK);
        ADD_FAILURE() << "writing the log waited for a reader of the pipe";
    }
    logged.wait();
    const std::string said = testing::internal::GetCapturedStderr();
    if (reader >= 0)
        ::close(reader);

    EXPECT_EQ(QString::fromStdString(said).count('\n'), 1) << said;
    EXPECT_NE(said.find(pipe.toStdString()), std::string::npos) << said;
    EXPECT_NE(said.find("no program reads from the pipe"), std::string::npos) << said;
    const QFileInfo left(pipe);
    EXPECT_TRUE(left.exists() && !left.isFile() && !left.isSymLink()) << "still the pipe";
}

} // namespace
