// SPDX-License-Identifier: GPL-3.0-or-later
// The CSV module through its interface: file forms, structure and ids, time windows,
// resolution, sorting and following changes of a file.
#include "Calendar.h"
#include "CsvFolder.h"
#include "TempSettings.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>

#include <gtest/gtest.h>

#include <cmath>

namespace {

constexpr double NV = -1e300;

// Four rows at 15-minute steps from 2023-01-01 00:00, two channels, one empty cell in each.
struct Form
{
    const char* name;
    QByteArray header;
    const char* time; // "MM" stands for the minute
    char separator;
    char decimal;
    QByteArray lineEnd = "\n";
    bool quoted = false;
    bool lastLineEnd = true;
};

QByteArray Content(const Form& form)
{
    const char* values[4][2] = { { "1.5", "3" }, { "-2.25", "4" }, { "", "5" }, { "1000", "" } };
    QByteArray text = form.header + form.lineEnd;
    for (int row = 0; row < 4; ++row) {
        QByteArray line = QByteArray(form.time).replace("MM", QByteArray::number(row * 15).rightJustified(2, '0'));
        if (form.quoted)
            line = '"' + line + '"';
        for (const char* value : values[row]) {
            QByteArray cell(value);
            cell.replace('.', form.decimal);
            line += form.separator + (form.quoted ? '"' + cell + '"' : cell);
        }
        text += line + (row < 3 || form.lastLineEnd ? form.lineEnd : QByteArray());
    }
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

class CsvDataModuleTest : public ::testing::Test
{
protected:
    TempSettings settings;
    CsvFolder folder;
};

} // namespace

TEST_F(CsvDataModuleTest, EveryFileFormGivesTheSameChannelsAndSamples)
{
    const char *Iso = "2023-01-01T00:MM:00", *IsoShort = "2023-01-01 00:MM", *German = "01.01.2023 00:MM";
    const Form forms[] = {
        { "ISO with T, comma separated", "timestamp,P [kW],Q", Iso, ',', '.' },
        { "German, decimal comma, CRLF", "Zeitstempel;P [kW];Q", German, ';', ',', "\r\n" },
        { "byte order mark, ISO without seconds",
            "\xEF\xBB\xBF"
            "Datum/Zeit;P [kW];Q",
            IsoShort, ';', '.' },
        { "fraction and Z, no line end at the end", "time,P [kW],Q", "2023-01-01 00:MM:00.000Z", ',', '.', "\n", false,
            false },
        { "date and time in two columns", "Datum;Zeit;P [kW];Q", "01.01.2023;0:MM:00", ';', ',' },
        { "quoted cells", "\"Zeit\";\"P [kW]\";\"Q\"", IsoShort, ';', ',', "\n", true },
        { "quoted decimal commas, comma separated", "\"time\",\"P [kW]\",\"Q\"", Iso, ',', ',', "\n", true },
        { "separator hint and an unknown time name", "sep=;\nLoggerzeit;P [kW];Q", German, ';', '.' },
        { "tabs", "Date\tP [kW]\tQ", Iso, '\t', ',' },
    };
    const double t0 = D(2023, 1, 1), t1 = D(2023, 1, 1, 0, 15), t2 = D(2023, 1, 1, 0, 30), t3 = D(2023, 1, 1, 0, 45);
    const Samples expectedP = { { t0, 1.5 }, { t1, -2.25 }, { t2, NV }, { t3, 1000 } };
    const Samples expectedQ = { { t0, 3 }, { t1, 4 }, { t2, 5 }, { t3, NV } };
    for (const Form& form : forms) {
        SCOPED_TRACE(form.name);
        folder.Write(QString(form.name) + "/Logger.csv", Content(form));
        ModuleOn on(folder.Path(form.name));
        ASSERT_EQ(on.status, 1) << on.log.All().toStdString();

        ChannelCollection overview;
        qint32 status = 0;
        ASSERT_EQ(on.module.GetChannelOverview(overview, status), 1);
        ASSERT_EQ(overview.Count(), 2);
        EXPECT_EQ(overview.Channel(0)->ChannelName() + " [" + overview.Channel(0)->Unit() + "]", "P [kW]");
        EXPECT_EQ(overview.Channel(1)->ChannelName() + " [" + overview.Channel(1)->Unit() + "]", "Q []");

        const ChannelCollection data = Read(on.module, { overview.Key(0), overview.Key(1) }, t0, t0 + 1);
        ASSERT_EQ(data.Count(), 3);
        EXPECT_EQ(SamplesOf(data, 0), expectedP);
        EXPECT_EQ(SamplesOf(data, 1), expectedQ);
        EXPECT_EQ(data.Channel(0)->DataBlock()->NoValue(), NV);
        EXPECT_EQ(data.Text(2), "CSV;900");
        EXPECT_TRUE(on.log.lines.empty()) << on.log.All().toStdString();
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

    ChannelCollection overview;
    ASSERT_EQ(on.module.GetChannelOverview(overview, status), 1);
    QStringList overviewText;
    for (qsizetype i = 0; i < overview.Count(); ++i) {
        const DataMatrix& ch = *overview.Channel(i);
        EXPECT_EQ(overview.Key(i), ch.ChannelID());
        EXPECT_FALSE(ch.DataBlock());
        overviewText << ch.ChannelID() + " " + ch.ChannelName() + " [" + ch.Unit() + "] "
                + QString::number(ch.DataType());
    }
    EXPECT_EQ(overviewText,
        QStringList({ b + "#1 Z$1 [kWh] 3", a + "#1 P [kW] 3", a + "#2 cos phi [] 8", c + "#1 U [V] 3" }));

    // Another run gives the same ids, and other files coming and going leave them alone.
    const auto structure = [&]() {
        ModuleOn again(folder.Root());
        QStringList categories, channels;
        again.module.GetChannelStructure(categories, channels, again.status);
        return categories + channels;
    };
    const QStringList first = categories + channels;
    EXPECT_EQ(structure(), first);
    folder.Write("Halle 0/Neu.csv", "timestamp;N\n");
    folder.Write("Halle 1/AA.csv", "timestamp;N\n");
    QFile::remove(folder.Path("Logger C.CSV"));
    const QStringList later = structure();
    for (const QString& entry : first)
        EXPECT_EQ(later.contains(entry), entry.section('$', 0, 0).section('#', 0, 0) != c) << entry.toStdString();
    EXPECT_EQ(later.size(), first.size() - 2 + 5);
    QStringList ids;
    for (const QString& entry : later)
        ids << entry.section('$', 0, 0);
    ids.removeDuplicates();
    EXPECT_EQ(ids.size(), later.size());
}

TEST_F(CsvDataModuleTest, WindowsIncludeBothBoundsAndGiveNoRowsOutsideTheData)
{
    const double t0 = D(2023, 3, 1);
    const double step = 15.0 / 1440.0;
    folder.Write("L.csv", Lines("timestamp;P", t0, 10, 15));
    ModuleOn on(folder.Root());
    const QString id = on.Id("L", "P");
    ASSERT_FALSE(id.isEmpty());
    const double eps = 0.5 / 86400.0;
    const struct
    {
        const char* name;
        double from, to;
        int first, count;
    } cases[] = {
        { "bounds on samples", t0 + 2 * step, t0 + 5 * step, 2, 4 },
        { "bounds just inside", t0 + 2 * step + eps, t0 + 5 * step - eps, 3, 2 },
        { "all", t0 - 1, t0 + 1, 0, 10 },
        { "one point", t0 + 9 * step, t0 + 9 * step, 9, 1 },
        { "between two samples", t0 + 2 * step + eps, t0 + 3 * step - eps, 0, 0 },
        { "from after to", t0 + 5 * step, t0 + 2 * step, 0, 0 },
        { "after the data", t0 + 10 * step, t0 + 30, 0, 0 },
        { "before the data", t0 - 30, t0 - eps, 0, 0 },
        { "not a number", std::nan(""), t0 + 1, 0, 0 },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const ChannelCollection data = Read(on.module, { id }, c.from, c.to);
        const Samples got = SamplesOf(data, 0);
        ASSERT_EQ(got.size(), static_cast<size_t>(c.count));
        for (int i = 0; i < c.count; ++i) {
            EXPECT_NEAR(got[i].first, t0 + (c.first + i) * step, 1e-9) << i;
            EXPECT_EQ(got[i].second, c.first + i) << i;
        }
        EXPECT_EQ(data.Text(1), "CSV;900");
    }
    double first = -1, last = -1;
    on.module.GetFirstDate(id, first);
    on.module.GetLastDate(id, last);
    EXPECT_NEAR(first, t0, 1e-9);
    EXPECT_NEAR(last, t0 + 9 * step, 1e-9);
}

TEST_F(CsvDataModuleTest, ResolutionIsTheMostCommonStepAndTheFinestOfTheFilesRead)
{
    const double t0 = D(2023, 1, 1);
    // 15-minute steps with a gap of two hours and one odd step of 5 minutes.
    QByteArray quarter = "timestamp;P\n";
    for (const int minute : { 0, 15, 30, 45, 165, 180, 185, 200, 215 })
        quarter += QString::asprintf("2023-01-01 %02d:%02d;1\n", minute / 60, minute % 60).toLatin1();
    folder.Write("quarter.csv", quarter);
    folder.Write("minute.csv", Lines("timestamp;P", t0, 30, 1));
    folder.Write("half.csv", Lines("timestamp;P", t0, 30, 0.5 / 60));
    folder.Write("single.csv", Lines("timestamp;P", t0, 1, 1));
    ModuleOn on(folder.Root());
    const struct
    {
        QStringList files;
        const char* text;
    } cases[] = {
        { { "quarter" }, "CSV;900" },
        { { "minute" }, "CSV;60" },
        { { "half" }, "CSV;0.5" },
        { { "quarter", "minute" }, "CSV;60" },
        { { "single" }, "CSV;0" },
        { { "single", "quarter" }, "CSV;900" },
    };
    for (const auto& c : cases) {
        QStringList ids;
        for (const QString& file : c.files)
            ids << on.Id(file, "P");
        const ChannelCollection data = Read(on.module, ids, t0, t0 + 1);
        EXPECT_EQ(data.Count(), ids.size() + 1);
        EXPECT_EQ(data.Text(ids.size()), c.text) << c.files.join(',').toStdString();
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
    EXPECT_EQ(on.log.Count({ QDir::toNativeSeparators(path), "line 4", "not in ascending order" }), 1)
        << on.log.All().toStdString();
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
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::Append));
        file.write("2023-01-01 00:45;7\n2023-01-01 01:00;8\n");
    }
    EXPECT_EQ(values(), (std::vector<double> { 0, 1, 2, 7, 8 }));
    double last = 0;
    on.module.GetLastDate(id, last);
    EXPECT_EQ(last, D(2023, 1, 1, 1));

    // The same size with other values: only the modification time tells.
    const QDateTime before = QFileInfo(path).lastModified();
    const qint64 size = QFileInfo(path).size();
    folder.Write("L.csv", head + "2023-01-01 00:20;6\n2023-01-01 00:30;2\n2023-01-01 00:45;7\n2023-01-01 01:00;8\n");
    ASSERT_EQ(QFileInfo(path).size(), size);
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        ASSERT_TRUE(file.setFileTime(before.addSecs(10), QFileDevice::FileModificationTime));
    }
    EXPECT_EQ(values(), (std::vector<double> { 0, 6, -20, 2, 7, 8 }));

    // Cut short.
    folder.Write("L.csv", head);
    EXPECT_EQ(values(), (std::vector<double> { 0 }));
    EXPECT_TRUE(on.log.lines.empty()) << on.log.All().toStdString();
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
