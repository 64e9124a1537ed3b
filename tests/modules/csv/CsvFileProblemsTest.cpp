// SPDX-License-Identifier: GPL-3.0-or-later
// Damaged, empty and huge files and a missing folder: log lines, clean status, no crash.
#include "CsvFolder.h"
#include "TempSettings.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <gtest/gtest.h>

namespace {

constexpr double NV = -1e300;

QString Native(const QString& path)
{
    return QDir::toNativeSeparators(path);
}

class CsvFileProblems : public ::testing::Test
{
protected:
    TempSettings settings;
    CsvFolder folder;
};

} // namespace

TEST_F(CsvFileProblems, BadLinesAreSkippedWithALogLineNamingFileAndLine)
{
    const QString path = folder.Write("Halle/L.csv",
        "timestamp;P;Q\n" // 1
        "2023-01-01 00:00;1;2\n" // 2
        "2023-01-01 00:15;1\n" // 3 ragged
        "2023-01-01 00:30;1;2;3\n" // 4 ragged
        "2023-02-30 00:45;1;2\n" // 5 bad date
        "2023-01-01 01:00;x;2\n" // 6 bad number in P
        "\n" // 7 blank
        "2023-01-01 01:15;3;4\r\n" // 8
        "2023-01-01 01:30;;\n"); // 9
    ModuleOn on(folder.Root());
    const QString p = on.Id("L", "P"), q = on.Id("L", "Q");
    const double t0 = D(2023, 1, 1);
    for (int pass = 0; pass < 2; ++pass) {
        const ChannelCollection data = Read(on.module, { p, q }, t0, t0 + 1);
        EXPECT_EQ(
            SamplesOf(data, 0), (Samples { { t0, 1 }, { D(2023, 1, 1, 1, 15), 3 }, { D(2023, 1, 1, 1, 30), NV } }));
        EXPECT_EQ(SamplesOf(data, 1),
            (Samples {
                { t0, 2 }, { D(2023, 1, 1, 1), 2 }, { D(2023, 1, 1, 1, 15), 4 }, { D(2023, 1, 1, 1, 30), NV } }));
    }
    for (const QStringList& parts : { QStringList { "line 3:", "2 cells where the header has 3" },
             QStringList { "line 4:", "4 cells" }, QStringList { "line 5:", "no valid time", "\"2023-02-30 00:45\"" },
             QStringList { "line 6:", "no number for \"P\"", "\"x\"" } })
        EXPECT_EQ(on.log.Count(QStringList { Native(path) } + parts), 1) << parts.join(' ').toStdString();
    EXPECT_EQ(on.log.lines.size(), 4u) << on.log.All().toStdString();
    for (const auto& line : on.log.lines)
        EXPECT_EQ(line.level, 2);
}

TEST_F(CsvFileProblems, BadLinesBeyondTheLimitAreSkippedSilentlyAfterOneNotice)
{
    QByteArray text = "timestamp;P\n";
    for (int i = 0; i < 30; ++i)
        text += "kaputt;1\n";
    for (int i = 0; i < 30; ++i)
        text += QString::asprintf("2023-01-01 %02d:%02d;x\n", i / 4, i % 4 * 15).toLatin1();
    const QString path = folder.Write("L.csv", text);
    ModuleOn on(folder.Root());
    const QString id = on.Id("L", "P");
    for (int pass = 0; pass < 3; ++pass)
        EXPECT_TRUE(SamplesOf(Read(on.module, { id }, D(2023, 1, 1), D(2023, 1, 2)), 0).empty());
    EXPECT_EQ(on.log.Count({ Native(path), "no valid time" }), 20) << on.log.All().toStdString();
    EXPECT_EQ(on.log.Count({ "more than 20 bad lines" }), 1);
    EXPECT_EQ(on.log.Count({ "30 bad lines skipped in all" }), 1);
    EXPECT_EQ(on.log.Count({ "no number" }), 0);
    EXPECT_EQ(on.log.lines.size(), 22u);
}

TEST_F(CsvFileProblems, EmptyAndUselessFilesGiveLogLinesAndEmptyBlocks)
{
    const struct
    {
        const char* file;
        QByteArray content;
        int channels;
        QStringList log;
    } cases[] = {
        { "empty", "", 0, { "the file is empty" } },
        { "bom", "\xEF\xBB\xBF", 0, { "the file is empty" } },
        { "utf16", QByteArray("\xFF\xFEt\0i\0m\0e\0", 10), 0, { "UTF-16" } },
        { "binary", QByteArray(100, '\0'), 0, { "binary" } },
        { "nocolumns", "timestamp\n2023-01-01;1\n", 0, { "no separator" } },
        { "header", "timestamp;P\n", 1, { "no data lines" } },
        { "blank", "timestamp;P\n\n  \r\n;\n", 1, { "no data lines" } },
        { "bad", "timestamp;P\nfoo;1\n", 1, { "line 2:", "no data lines" } },
        { "zeros", QByteArray("timestamp;P\n") + QByteArray(64, '\0'), 1,
            { "line 2:", "binary zeros", "no data lines" } },
    };
    for (const auto& c : cases)
        folder.Write(QString(c.file) + ".csv", c.content);
    ModuleOn on(folder.Root());
    ASSERT_EQ(on.status, 1);
    QStringList categories, structure;
    qint32 status = 0;
    ASSERT_EQ(on.module.GetChannelStructure(categories, structure, status), 1);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        const QString id = categories.filter("$" + QString(c.file) + "$").value(0).section('$', 0, 0);
        ASSERT_FALSE(id.isEmpty());
        EXPECT_EQ(structure.filter(QRegularExpression("^" + id + "#")).size(), c.channels);
        const ChannelCollection data = Read(on.module, { id + "#1" }, 0, 1e6);
        ASSERT_EQ(data.Count(), 2);
        EXPECT_EQ(data.Channel(0)->DataBlock()->Rows(), 0);
        EXPECT_EQ(data.Text(1), "CSV;0");
        double date = 12345;
        on.module.GetFirstDate(id + "#1", date);
        on.module.GetLastDate(id + "#1", date);
        EXPECT_EQ(date, 12345);
        for (const QString& part : c.log)
            EXPECT_GE(on.log.Count({ Native(folder.Path(QString(c.file) + ".csv")), part }), 1)
                << part.toStdString() << "\n"
                << on.log.All().toStdString();
    }
}

TEST_F(CsvFileProblems, AFileOfMoreThanTwoGigabytesIsReadUpToItsZeros)
{
    const qint64 size = 2'200'000'000;
    const struct
    {
        const char* name;
        QByteArray text; // the zeros follow it
        int rows;
    } cases[] = {
        { "after a line end", "timestamp;P\n2023-01-01 00:00;1\n2023-01-01 00:15;2\n", 2 },
        { "within a line", "timestamp;P\n2023-01-01 00:00;1\n2023-01-01 00:15;2", 1 },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const QString path = folder.Write("big.csv", c.text);
        {
            QFile file(path);
            ASSERT_TRUE(file.resize(size)); // sparse: no data written
            ASSERT_EQ(file.size(), size);
        }
        ModuleOn on(folder.Root());
        const QString id = on.Id("big", "P");
        ASSERT_FALSE(id.isEmpty()) << on.log.All().toStdString();
        const ChannelCollection data = Read(on.module, { id }, D(2023, 1, 1), D(2023, 1, 2));
        EXPECT_EQ(static_cast<int>(SamplesOf(data, 0).size()), c.rows);
        double last = 0;
        on.module.GetLastDate(id, last);
        EXPECT_EQ(last, D(2023, 1, 1, 0, c.rows == 2 ? 15 : 0));
        EXPECT_EQ(on.log.Count({ Native(path), "binary zeros", "the rest of the file is not read" }), 1)
            << on.log.All().toStdString();
        QFile::remove(path);
    }
}

TEST_F(CsvFileProblems, AMissingFolderOrFileGivesAStatusAndALogLine)
{
    const struct
    {
        const char* name;
        QString root;
        qint32 status;
        const char* log;
    } cases[] = {
        { "no folder configured", QString(), CsvDataModule::NoFolder, "No folder is configured" },
        { "folder missing", folder.Path("fehlt"), CsvDataModule::FolderMissing, "does not exist" },
        { "a file, not a folder", folder.Write("datei", "x"), CsvDataModule::FolderMissing, "does not exist" },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ModuleOn on(c.root);
        EXPECT_EQ(on.status, c.status);
        ChannelCollection overview;
        qint32 status = 0;
        EXPECT_EQ(on.module.GetChannelOverview(overview, status), c.status);
        EXPECT_EQ(overview.Count(), 0);
        const ChannelCollection data = Read(on.module, { "1#1" }, 0, 1e6);
        ASSERT_EQ(data.Count(), 2);
        EXPECT_EQ(data.Channel(0)->DataBlock()->Rows(), 0);
        EXPECT_EQ(data.Text(1), "CSV;0");
        EXPECT_GE(on.log.Count({ c.log }), 3);
        EXPECT_EQ(on.log.lines.front().level, 3);
    }

    // A file that vanished after the tree was read, and ids that name nothing.
    folder.Write("Logger/L.csv", "timestamp;P\n2023-01-01 00:00;1\n");
    folder.Write("Logger/M.csv", "timestamp;P\n2023-01-01 00:00;1\n");
    ModuleOn on(folder.Path("Logger"));
    const QString gone = on.Id("M", "P");
    const QString l = on.Id("L", "P").section('#', 0, 0);
    ASSERT_TRUE(QFile::remove(folder.Path("Logger/M.csv")));
    const ChannelCollection data = Read(on.module, { gone, "123#1", "x", l + "#2", l + "#1" }, 0, 1e6);
    ASSERT_EQ(data.Count(), 6);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(data.Channel(i)->DataBlock()->Rows(), 0) << i;
    EXPECT_EQ(data.Channel(4)->DataBlock()->Rows(), 1);
    EXPECT_EQ(on.log.Count({ Native(folder.Path("Logger/M.csv")), "does not exist" }), 1) << on.log.All().toStdString();
    EXPECT_EQ(on.log.Count({ "has no channel 123#1" }), 1);
    EXPECT_EQ(on.log.Count({ "has no channel x" }), 1);
    EXPECT_EQ(on.log.Count({ "has no value column 2" }), 1);
    EXPECT_EQ(on.log.lines.size(), 4u);
    // A file still missing is not tried, and logged, again at every refresh.
    EXPECT_EQ(Read(on.module, { gone }, 0, 1e6).Channel(0)->DataBlock()->Rows(), 0);
    EXPECT_EQ(on.log.lines.size(), 4u) << on.log.All().toStdString();
}
