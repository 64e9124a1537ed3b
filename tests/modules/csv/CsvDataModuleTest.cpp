// SPDX-License-Identifier: GPL-3.0-or-later
// The CSV module through its interface: file forms, structure, windows, resolution, changes of
// a file, and damaged, empty and huge files, pipes, and files and folders that can't be read.
#include "../ChildProcess.h"
#include "Calendar.h"
#include "CsvFolder.h"
#include "TempSettings.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>
#include <QSet>

#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

#include <sys/stat.h>

namespace {

constexpr double NV = -1e300;

// Four rows at 15-minute steps from 2023-01-01 00:00, two channels, one empty cell in each.
struct Form
{
    const char* name;
    QByteArray header;
    const char* line; // "MM" stands for the minute, "A" and "B" for the values
    char decimal;
    QByteArray lineEnd = "\n";
    bool lastLineEnd = true;
};

QByteArray Content(const Form& form)
{
    const char* values[4][2] = { { "1.5", "3" }, { "-2.25", "4" }, { "", "5" }, { "1000", "" } };
    QByteArray text = form.header + form.lineEnd;
    for (int row = 0; row < 4; ++row)
        text += QByteArray(form.line)
                    .replace("MM", QByteArray::number(row * 15).rightJustified(2, '0'))
                    .replace("A", QByteArray(values[row][0]).replace('.', form.decimal))
                    .replace("B", QByteArray(values[row][1]).replace('.', form.decimal))
            + (row < 3 || form.lastLineEnd ? form.lineEnd : QByteArray());
    return text;
}

// count lines of the values 0, 1, ... every stepMinutes from start.
QByteArray Lines(const QByteArray& header, double start, int count, double stepMinutes)
{
    QByteArray text = header + "\n";
    for (int i = 0; i < count; ++i) {
        const Calendar::DateParts p = Calendar::Split(start + i * stepMinutes / 1440.0);
        text += QString::asprintf("%04d-%02d-%02d %02d:%02d:%02d.%03d;%d\n", p.year, p.month, p.day, p.hour, p.minute,
            p.second, p.millisecond, i)
                    .toLatin1();
    }
    return text;
}

QString Native(const QString& path)
{
    return QDir::toNativeSeparators(path);
}

class CsvDataModuleTest : public ::testing::Test
{
protected:
    TempSettings settings;
    CsvFolder folder;
};
using CsvFileProblems = CsvDataModuleTest;

} // namespace

TEST_F(CsvDataModuleTest, EveryFileFormGivesTheSameChannelsAndSamples)
{
    const Form forms[] = {
        { "ISO with T, comma separated", "timestamp,P [kW],Q", "2023-01-01T00:MM:00,A,B", '.' },
        { "German, decimal comma, CRLF", "Zeitstempel;P [kW];Q", "01.01.2023 00:MM;A;B", ',', "\r\n" },
        { "byte order mark, ISO without seconds", "\357\273\277Datum/Zeit;P [kW];Q", "2023-01-01 00:MM;A;B", '.' },
        { "fraction and Z, no line end at the end", "time,P [kW],Q", "2023-01-01 00:MM:00.000Z,A,B", '.', "\n", false },
        { "date and time in two columns", "Datum;Zeit;P [kW];Q", "01.01.2023;0:MM:00;A;B", ',' },
        { "quoted decimal commas, comma separated", "\"time\",\"P [kW]\",\"Q\"", "\"2023-01-01T00:MM:00\",\"A\",\"B\"",
            ',' },
        { "separator hint and an unknown time name", "sep=;\nLoggerzeit;P [kW];Q", "01.01.2023 00:MM;A;B", '.' },
        { "tabs", "Date\tP [kW]\tQ", "2023-01-01T00:MM:00\tA\tB", ',' },
    };
    const double t0 = D(2023, 1, 1), t1 = D(2023, 1, 1, 0, 15), t2 = D(2023, 1, 1, 0, 30), t3 = D(2023, 1, 1, 0, 45);
    const Samples expectedP = { { t0, 1.5 }, { t1, -2.25 }, { t2, NV }, { t3, 1000 } };
    const Samples expectedQ = { { t0, 3 }, { t1, 4 }, { t2, 5 }, { t3, NV } };
    for (const Form& form : forms) {
        SCOPED_TRACE(form.name);
        folder.Write(QString(form.name) + "/Logger.csv", Content(form));
        ModuleOn on(folder.Path(form.name));
        ASSERT_EQ(on.status, 1) << on.log.All();
        const QStringList overview = Overview(on.module);
        ASSERT_EQ(overview.size(), 2);
        EXPECT_EQ(overview[0].section(' ', 1) + ", " + overview[1].section(' ', 1), "P [kW] 3, Q [] 3");
        const QStringList ids { overview[0].section(' ', 0, 0), overview[1].section(' ', 0, 0) };
        const ChannelCollection data = Read(on.module, ids, t0, t0 + 1);
        ASSERT_EQ(data.Count(), 3);
        EXPECT_EQ(SamplesOf(data, 0), expectedP);
        EXPECT_EQ(SamplesOf(data, 1), expectedQ);
        EXPECT_EQ(data.Text(2), "CSV;900");
        EXPECT_TRUE(on.log.lines.empty()) << on.log.All();
    }
}

TEST_F(CsvDataModuleTest, StructureListsFoldersAndFilesParentsFirstWithStableIds)
{
    folder.Write("Halle 1/Logger A.csv", "timestamp;P [kW];cos phi\n");
    folder.Write("Halle 1/Unter/Logger B.csv", "timestamp;Z$1 [kWh]\n");
    folder.Write("Logger C.CSV", "timestamp;U [V]\n");
    folder.Write("Halle 2/nur.txt", "nothing\n");
    folder.Write("leer/.keep.csv", "timestamp;X\n");
    folder.Write("notes.txt", "timestamp;X\n");
    ModuleOn on(folder.Root());

    QStringList categories, channels;
    qint32 status = 0;
    ASSERT_EQ(on.module.GetChannelStructure(categories, channels, status), 1);
    ASSERT_EQ(categories.size(), 5) << categories.join('\n').toStdString();
    QHash<QString, QString> idOf;
    QStringList order;
    for (const QString& category : categories) {
        const QStringList f = category.split('$');
        ASSERT_EQ(f.size(), 5) << category.toStdString();
        const QString parent = f[3] == "0" ? QString() : idOf.key(f[3], "?");
        ASSERT_NE(parent, "?") << "parent listed after its child: " << category.toStdString();
        idOf.insert(f[1], f[0]);
        order << f[1] + "<" + parent + ">" + f[4] + " " + f[2];
    }
    EXPECT_EQ(order,
        QStringList({ "Halle 1<>FOLDER Halle 1", "Unter<Halle 1>FOLDER Halle 1/Unter",
            "Logger B<Unter>MEASURING Halle 1/Unter/Logger B.csv", "Logger A<Halle 1>MEASURING Halle 1/Logger A.csv",
            "Logger C<>MEASURING Logger C.CSV" }));
    const QString a = idOf["Logger A"], b = idOf["Logger B"], c = idOf["Logger C"];
    EXPECT_EQ(channels,
        QStringList({ b + "#1$Z_1$kWh$" + b + "$0$1", a + "#1$P$kW$" + a + "$0$1", a + "#2$cos phi$$" + a + "$0$2",
            c + "#1$U$V$" + c + "$0$1" }));

    // The overview keeps a "$" in a name; it lists the channels in tree order.
    EXPECT_EQ(Overview(on.module),
        QStringList({ b + "#1 Z$1 [kWh] 3", a + "#1 P [kW] 3", a + "#2 cos phi [] 8", c + "#1 U [V] 3" }));

    // Another run gives the same ids, and other files coming and going leave them alone.
    folder.Write("Halle 0/Neu.csv", "timestamp;N\n");
    folder.Write("Halle 1/AA.csv", "timestamp;N\n");
    QFile::remove(folder.Path("Logger C.CSV"));
    const QStringList first = categories + channels;
    ModuleOn again(folder.Root());
    again.module.GetChannelStructure(categories, channels, status);
    const QStringList later = categories + channels;
    for (const QString& entry : first)
        EXPECT_EQ(later.contains(entry), entry.section('$', 0, 0).section('#', 0, 0) != c) << entry.toStdString();
    EXPECT_EQ(later.size(), first.size() - 2 + 5);
    QSet<QString> ids;
    for (const QString& entry : later)
        ids.insert(entry.section('$', 0, 0));
    EXPECT_EQ(ids.size(), later.size());
}

TEST_F(CsvDataModuleTest, WindowsIncludeBothBoundsAndGiveNoRowsOutsideTheData)
{
    folder.Write("L.csv", Lines("timestamp;P", D(2023, 3, 1), 10, 15));
    ModuleOn on(folder.Root());
    CheckWindows(on.module, on.Id("L", "P"), D(2023, 3, 1), 15.0 / 1440.0, 10, [](int k) { return k; });
}

TEST_F(CsvDataModuleTest, ResolutionIsTheMostCommonStepAndTheFinestOfTheFilesRead)
{
    const double t0 = D(2023, 1, 1);
    // 15-minute steps with a gap of two hours and one odd step of 5 minutes.
    QByteArray quarter = "timestamp;P\n";
    for (const int minute : { 0, 15, 30, 45, 165, 180, 185, 200, 215 })
        quarter += QString::asprintf("2023-01-01 %02d:%02d;1\n", minute / 60, minute % 60).toLatin1();
    folder.Write("quarter.csv", quarter);
    folder.Write("half.csv", Lines("timestamp;P", t0, 30, 0.5 / 60));
    folder.Write("single.csv", Lines("timestamp;P", t0, 1, 1));
    ModuleOn on(folder.Root());
    const std::pair<QStringList, const char*> cases[] = {
        { { "quarter" }, "CSV;900" },
        { { "half" }, "CSV;0.5" },
        { { "quarter", "half" }, "CSV;0.5" },
        { { "single" }, "CSV;0" },
        { { "single", "quarter" }, "CSV;900" },
    };
    for (const auto& [files, text] : cases) {
        QStringList ids;
        for (const QString& file : files)
            ids << on.Id(file, "P");
        EXPECT_EQ(Read(on.module, ids, t0, t0 + 1).Text(ids.size()), text) << files.join(',').toStdString();
    }
}

TEST_F(CsvDataModuleTest, UnorderedTimesAreReadSortedWithOneLogLine)
{
    const QString path = folder.Write("L.csv",
        "timestamp;P\n"
        "2023-01-01 00:00;1\n"
        "2023-01-01 00:30;2\n"
        "2023-01-01 00:15;3\n"
        "2023-01-01 00:45;4\n"
        "2023-01-01 00:15;5\n");
    ModuleOn on(folder.Root());
    const QString id = on.Id("L", "P");
    const double t0 = D(2023, 1, 1), t15 = D(2023, 1, 1, 0, 15);
    // Stable: equal times keep the order of the file.
    const Samples sorted
        = { { t0, 1 }, { t15, 3 }, { t15, 5 }, { D(2023, 1, 1, 0, 30), 2 }, { D(2023, 1, 1, 0, 45), 4 } };
    for (int pass = 0; pass < 2; ++pass) {
        EXPECT_EQ(SamplesOf(Read(on.module, { id }, t0, t0 + 1), 0), sorted);
        EXPECT_EQ(SamplesOf(Read(on.module, { id }, t15, t15), 0), Samples(sorted.begin() + 1, sorted.begin() + 3));
    }
    EXPECT_EQ(on.log.Count({ Native(path), "line 4", "not in ascending order" }), 1) << on.log.All();
    EXPECT_EQ(on.log.lines.size(), 1u);
}

TEST_F(CsvDataModuleTest, ReadsFollowTheFileWhenItChanges)
{
    const QByteArray head = "timestamp;P\n2023-01-01 00:00;0\n";
    const QString path = folder.Write("L.csv", head + "2023-01-01 00:15;1\n2023-01-01 00:30;2\n");
    ModuleOn on(folder.Root());
    const QString id = on.Id("L", "P");
    const double t0 = D(2023, 1, 1);
    // Values, and the minute of every sample that is not on its quarter hour.
    const auto values = [&]() {
        std::vector<double> v;
        for (const auto& [time, value] : SamplesOf(Read(on.module, { id }, t0, t0 + 1), 0)) {
            v.push_back(value);
            const int minute = static_cast<int>(std::lround((time - t0) * 1440));
            if (minute % 15 != 0)
                v.push_back(-minute);
        }
        return v;
    };
    ASSERT_EQ(values(), (std::vector<double> { 0, 1, 2 }));

    // Appended lines: a new size.
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::Append) && file.write("2023-01-01 00:45;7\n2023-01-01 01:00;8\n") > 0);
    file.close();
    EXPECT_EQ(values(), (std::vector<double> { 0, 1, 2, 7, 8 }));
    EXPECT_EQ(Period(on.module, id).second, D(2023, 1, 1, 1));

    // The same size with other values: only the modification time tells.
    const QDateTime before = QFileInfo(path).lastModified();
    const qint64 size = QFileInfo(path).size();
    folder.Write("L.csv", head + "2023-01-01 00:20;6\n2023-01-01 00:30;2\n2023-01-01 00:45;7\n2023-01-01 01:00;8\n");
    ASSERT_EQ(QFileInfo(path).size(), size);
    ASSERT_TRUE(
        file.open(QIODevice::ReadWrite) && file.setFileTime(before.addSecs(10), QFileDevice::FileModificationTime));
    file.close();
    EXPECT_EQ(values(), (std::vector<double> { 0, 6, -20, 2, 7, 8 }));
    EXPECT_TRUE(on.log.lines.empty()) << on.log.All();
}

TEST_F(CsvDataModuleTest, EveryChannelOfTheCollectionIsFilledEvenWhenAskedForTwice)
{
    // Power factors are delivered signed, as written: the program folds them, not the module.
    folder.Write("A.csv", "time;P;cos phi;R\n2023-01-01 00:00;1;0.95;3\n2023-01-01 00:15;4;;-0.8\n");
    folder.Write("B.csv", "time;P\n2023-01-01 00:00;10\n");
    ModuleOn on(folder.Root());
    const QString cosPhi = on.Id("A", "cos phi"), ar = on.Id("A", "R"), bp = on.Id("B", "P");
    const double t0 = D(2023, 1, 1), t1 = D(2023, 1, 1, 0, 15);
    const ChannelCollection data = Read(on.module, { ar, bp, cosPhi, ar }, t0, t0 + 1);
    ASSERT_EQ(data.Count(), 5);
    EXPECT_EQ(SamplesOf(data, 0), (Samples { { t0, 3 }, { t1, -0.8 } }));
    EXPECT_EQ(SamplesOf(data, 1), (Samples { { t0, 10 } }));
    EXPECT_EQ(SamplesOf(data, 2), (Samples { { t0, 0.95 }, { t1, NV } }));
    EXPECT_EQ(SamplesOf(data, 3), SamplesOf(data, 0));
    EXPECT_NE(data.Channel(3)->DataBlock(), data.Channel(0)->DataBlock());
    EXPECT_EQ(data.Text(4), "CSV;900");
}

// Damaged, empty and huge files and a missing folder: log lines, clean status, no crash.
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
             QStringList { "line 5:", "no valid time", "\"2023-02-30 00:45\"" },
             QStringList { "line 6:", "no number for \"P\"", "\"x\"" } })
        EXPECT_EQ(on.log.Count(QStringList { Native(path) } + parts), 1) << parts.join(' ').toStdString();
    EXPECT_EQ(on.log.lines.size(), 4u) << on.log.All();
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
    EXPECT_EQ(on.log.Count({ Native(path), "no valid time" }), 20) << on.log.All();
    EXPECT_EQ(on.log.Count({ "more than 20 bad lines" }), 1);
    EXPECT_EQ(on.log.Count({ "30 bad lines skipped in all" }), 1);
    EXPECT_EQ(on.log.lines.size(), 22u);
}

TEST_F(CsvFileProblems, EmptyAndUselessFilesGiveLogLinesAndEmptyBlocks)
{
    const struct
    {
        const char* file;
        QByteArray content;
        int channels;
        const char* log;
    } cases[] = {
        { "empty", "", 0, "the file is empty" },
        { "bom", "\xEF\xBB\xBF\r\n \n", 0, "the file is empty" },
        { "utf16", QByteArray("\xFF\xFEt\0i\0m\0e\0", 10), 0, "UTF-16" },
        { "binary", QByteArray(100, '\0'), 0, "binary" },
        { "nocolumns", "timestamp\n2023-01-01;1\n", 0, "no separator" },
        { "header", "timestamp;P\n", 1, "no data lines" },
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
        EXPECT_EQ(BlockRows(data), std::vector<qsizetype> { 0 });
        EXPECT_EQ(data.Text(1), "CSV;0");
        EXPECT_EQ(Period(on.module, id + "#1"), std::make_pair(-7.0, -7.0));
        EXPECT_GE(on.log.Count({ Native(folder.Path(QString(c.file) + ".csv")), c.log }), 1) << on.log.All();
    }
}

// A pre-allocated file: zeros follow the last line, which has no line end.
TEST_F(CsvFileProblems, AFileOfMoreThanTwoGigabytesIsReadUpToItsZeros)
{
    const QString path = folder.Write("big.csv", "timestamp;P\n2023-01-01 00:00;1\n2023-01-01 00:15;2");
    {
        QFile file(path);
        ASSERT_TRUE(file.resize(2'200'000'000)); // sparse: no data written
    }
    ModuleOn on(folder.Root());
    const QString id = on.Id("big", "P");
    ASSERT_FALSE(id.isEmpty()) << on.log.All();
    EXPECT_EQ(SamplesOf(Read(on.module, { id }, D(2023, 1, 1), D(2023, 1, 2)), 0), (Samples { { D(2023, 1, 1), 1 } }));
    EXPECT_EQ(Period(on.module, id), std::make_pair(D(2023, 1, 1), D(2023, 1, 1)));
    EXPECT_EQ(on.log.Count({ Native(path), "binary zeros", "the rest of the file is not read" }), 1) << on.log.All();
}

TEST_F(CsvFileProblems, AMissingFolderOrFileGivesNoBlockAStatusAndTheReason)
{
    // A channel that could not be read has no block; the text after the resolution says why.
    const std::tuple<QString, qint32, const char*, QString> cases[] = {
        { QString(), CsvDataModule::NoFolder, "No folder is configured",
            "no folder is configured for the data module Logger" },
        { folder.Path("fehlt"), CsvDataModule::FolderMissing, "does not exist",
            "the folder " + Native(folder.Path("fehlt")) + " does not exist" },
    };
    for (const auto& [root, expected, log, reason] : cases) {
        SCOPED_TRACE(root.toStdString());
        ModuleOn on(root);
        EXPECT_EQ(on.status, expected);
        CheckUnusable(on.module, expected, "CSV", "reading the samples failed: " + reason);
        EXPECT_EQ(Read(on.module, { "1#1" }, 0, 1e6).Text(1), "CSV;0;reading the samples failed: " + reason);
        EXPECT_GE(on.log.Count({ log }), 3);
        EXPECT_EQ(on.log.lines.front().level, 3);
    }

    // A file gone after the scan, and ids that name nothing (read, with no samples).
    folder.Write("Logger/L.csv", "timestamp;P\n2023-01-01 00:00;1\n");
    folder.Write("Logger/M.csv", "timestamp;P\n2023-01-01 00:00;1\n");
    ModuleOn on(folder.Path("Logger"));
    const QString gone = on.Id("M", "P");
    const QString l = on.Id("L", "P").section('#', 0, 0);
    ASSERT_TRUE(QFile::remove(folder.Path("Logger/M.csv")));
    qint32 status = 1;
    const ChannelCollection data = Read(on.module, { gone, "123#1", "x", l + "#2", l + "#1" }, 0, 1e6, &status);
    EXPECT_EQ(status, CsvDataModule::ReadFailed);
    EXPECT_EQ(BlockRows(data), (std::vector<qsizetype> { -1, 0, 0, 0, 1 }));
    const QString reason = "reading the samples of channel " + gone + " failed: the file does not exist ("
        + Native(folder.Path("Logger/M.csv")) + ")";
    EXPECT_EQ(data.Text(5), "CSV;0;" + reason);
    EXPECT_EQ(on.log.Count({ Native(folder.Path("Logger/M.csv")), "does not exist" }), 1) << on.log.All();
    EXPECT_EQ(on.log.Count({ "has no channel 123#1" }), 1);
    EXPECT_EQ(on.log.Count({ "has no value column 2" }), 1);
    EXPECT_EQ(on.log.lines.size(), 4u);
    // A file still missing is not tried, and logged, again at every refresh; the reason stays.
    const ChannelCollection again = Read(on.module, { gone }, 0, 1e6, &status);
    EXPECT_EQ(status, CsvDataModule::ReadFailed);
    EXPECT_EQ(BlockRows(again), std::vector<qsizetype> { -1 });
    EXPECT_EQ(again.Text(1), "CSV;0;" + reason);
    EXPECT_EQ(on.log.lines.size(), 4u) << on.log.All();
    // Read without a failure, the text is the resolution alone.
    EXPECT_EQ(Read(on.module, { l + "#1" }, 0, 1e6, &status).Text(1), "CSV;0");
    EXPECT_EQ(status, 1);
}

TEST_F(CsvFileProblems, PipesAndLinksToThemAreNeitherListedNorOpened)
{
    // Opening or reading a pipe can block; each part runs in a child, so that a hang fails.
    folder.Write("Logger/A.csv", "timestamp;P\n2023-01-01 00:00;1\n");
    const QString pipe = folder.Path("Logger/pipe");
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    ASSERT_TRUE(QFile::link(pipe, folder.Path("Logger/B.csv")));
    ASSERT_EQ(::mkfifo(QFile::encodeName(folder.Path("Logger/C.csv")).constData(), 0600), 0);
    const auto scan = [&] {
        ModuleOn on(folder.Path("Logger"));
        ASSERT_EQ(on.status, 1);
        const QStringList overview = Overview(on.module);
        ASSERT_EQ(overview.size(), 1);
        EXPECT_EQ(overview[0].section(' ', 0, 0), on.Id("A", "P"));
        QStringList categories, channels;
        qint32 status = 0;
        EXPECT_EQ(on.module.GetChannelStructure(categories, channels, status), 1);
        EXPECT_EQ(categories.size(), 1); // the files that are no regular files are no loggers either
        EXPECT_EQ(SamplesOf(Read(on.module, { on.Id("A", "P") }, D(2023, 1, 1), D(2023, 1, 2)), 0),
            (Samples { { D(2023, 1, 1), 1 } }));
        EXPECT_EQ(on.log.Count({ Native(folder.Path("Logger/B.csv")), "no regular file" }), 1) << on.log.All();
    };
    EXPECT_TRUE(RunsInChild(scan));

    // A file that turns into a link to a pipe after the scan: no block, and the reason.
    const auto readAfterTheChange = [&] {
        ModuleOn on(folder.Path("Logger"));
        const QString id = on.Id("A", "P");
        ASSERT_TRUE(QFile::remove(folder.Path("Logger/A.csv")));
        ASSERT_TRUE(QFile::link(pipe, folder.Path("Logger/A.csv")));
        qint32 status = 1;
        const ChannelCollection data = Read(on.module, { id }, 0, 1e6, &status);
        EXPECT_EQ(status, CsvDataModule::ReadFailed);
        EXPECT_FALSE(data.Channel(0)->DataBlock());
        EXPECT_EQ(data.Text(1),
            "CSV;0;reading the samples of channel " + id + " failed: the file is no regular file ("
                + Native(folder.Path("Logger/A.csv")) + ")");
    };
    EXPECT_TRUE(RunsInChild(readAfterTheChange));
}
