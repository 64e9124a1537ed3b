// SPDX-License-Identifier: GPL-3.0-or-later
// The SQLite module on a healthy database (overview, structure, periods, GetData) and on files it
// cannot use (a status and a log line, and no write to the file).
#include "SqliteDataModule.h"
#include "../ChildProcess.h"
#include "LoggerDatabase.h"
#include "LoggerTree.h"
#include "TempSettings.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>
#include <tuple>

namespace {

using namespace SiteFixture;

class SqliteDataModuleTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        site = Write(dir.filePath("site.sqlite"));
        bytes = FileBytes(site);
        modified = QFileInfo(site).lastModified();
        Open(site);
    }

    // Reading leaves the file as it was, and leaves no journal or other file beside it.
    void TearDown() override
    {
        module.reset();
        EXPECT_EQ(FileBytes(site), bytes);
        EXPECT_EQ(QFileInfo(site).lastModified(), modified);
        EXPECT_EQ(QDir(dir.path()).entryList({ "*-*" }, QDir::Files), QStringList());
    }

    void Open(const QString& path)
    {
        module = std::make_unique<SqliteDataModule>(DataModuleRegistration { "Werk", "4" });
        module->SetMessageHandler(&handler);
        qint32 status = 0;
        ASSERT_EQ(module->Initialize(path, status), 1);
        ASSERT_EQ(status, 1);
    }

    TempSettings settings;
    QTemporaryDir dir;
    QString site;
    QByteArray bytes;
    QDateTime modified;
    RecordingHandler handler;
    std::unique_ptr<SqliteDataModule> module;
};

TEST_F(SqliteDataModuleTest, OverviewAndStructureListTheChannelsInTheirFormats)
{
    // One channel object per channel, without data, in place of what the collection held.
    ChannelCollection overview;
    overview.AddText("left over from an earlier call");
    qint32 status = 0;
    EXPECT_EQ(module->GetChannelOverview(overview, status), 1);
    EXPECT_EQ(status, 1);
    for (qsizetype i = 0; i < overview.Count(); ++i) {
        ASSERT_TRUE(overview.Channel(i));
        EXPECT_EQ(overview.Channel(i)->ModuleAddress(), 4);
        EXPECT_FALSE(overview.Channel(i)->DataBlock());
    }
    // "<logger>#<path id>", then the same channels under their row ids, as views knew them before.
    EXPECT_EQ(Overview(*module),
        QStringList({ "30#1 Leistung [kW] 3", "30#2 cos phi [] 8", "30#3 Phase L1 [kW] 3", "30#4 Leer [kWh] 2",
            "301 Leistung [kW] 3", "302 cos phi [] 8", "303 Phase L1 [kW] 3", "304 Leer [kWh] 2" }));

    // Parents first; "$" in a name is written as "_"; a category without a kind has four fields.
    QStringList categories { "stale" }, channels { "stale" };
    EXPECT_EQ(module->GetChannelStructure(categories, channels, status), 1);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(categories,
        QStringList({ "10$Werk$$0$FOLDER", "40$Sonstiges$$0", "20$Halle _1$Nord$10$FOLDER",
            "30$Logger 7$Keller$20$MEASURING" }));
    EXPECT_EQ(channels,
        QStringList(
            { "30#1$Leistung$$30$0$1", "30#2$cos phi$$30$0$2", "30#4$Leer$$30$0$4", "30#3$Phase L1$$30$30#1$3" }));
}

TEST_F(SqliteDataModuleTest, WindowsAndPeriodsComeFromTheSamplesOrLeaveTheDatesUntouched)
{
    CheckWindows(*module, "301", Day, Quarter, PowerSamples, [](int k) { return k == NullSample ? -1e300 : 1.5 * k; });
    // The logger's id and the row id alike, blanks around the parts allowed.
    EXPECT_EQ(Period(*module, "30#1"), Period(*module, "301"));
    for (const QString id : { " 302 ", " 30 # 2 " })
        EXPECT_EQ(Period(*module, id), std::make_pair(Day, Day + (CosPhiSamples - 1) * Minute)) << id.toStdString();
    // 304 has no samples; the others name no channel.
    for (const QString id : { "304", "30#4", "Leistung", "30#9", "#", "x#1", "30#", "30#1#1" })
        EXPECT_EQ(Period(*module, id), std::make_pair(-7.0, -7.0)) << id.toStdString();
    EXPECT_EQ(handler.lines.size(), 0u);
}

TEST_F(SqliteDataModuleTest, GetDataGivesEveryListedChannelANewBlockAndTheFinestResolution)
{
    // Ids that name no channel get empty blocks, give no resolution and no log line. A channel is
    // read by its logger's id and by its row id alike, each under the key it was asked by.
    const std::tuple<QStringList, std::vector<qsizetype>, QString> cases[] = {
        { { "301" }, { PowerSamples }, "SQLITE;900" },
        { { "302", "301", "303", "304" }, { CosPhiSamples, PowerSamples, 0, 0 }, "SQLITE;60" },
        { { "999", "abc", "#", "x#1", "30#", "30#1#1", "30#9", "31#1" }, { 0, 0, 0, 0, 0, 0, 0, 0 }, "SQLITE;0" },
        { { "999", "301" }, { 0, PowerSamples }, "SQLITE;900" },
        { { "30#1", "301", "30#2", "302" }, { PowerSamples, PowerSamples, CosPhiSamples, CosPhiSamples }, "SQLITE;60" },
    };
    for (const auto& [ids, rows, text] : cases) {
        SCOPED_TRACE(ids.join(';').toStdString());
        qint32 status = 0;
        const ChannelCollection data = Read(*module, ids, Day - 1, Day + 1, &status);
        EXPECT_EQ(status, 1);
        EXPECT_EQ(BlockRows(data), rows);
        EXPECT_EQ(data.Text(ids.size()), text);
    }
    EXPECT_EQ(handler.lines.size(), 0u);
    const ChannelCollection twice = Read(*module, { "30#1", "301", "30#2", "302" }, Day - 1, Day + 1);
    EXPECT_EQ(SamplesOf(twice, 0), SamplesOf(twice, 1));
    EXPECT_EQ(SamplesOf(twice, 2), SamplesOf(twice, 3));
    // Power factors come as stored, signed.
    Samples cosPhi;
    for (int k = 0; k < CosPhiSamples; ++k)
        cosPhi.emplace_back(Day + k * Minute, 0.05 - 0.02 * k);
    EXPECT_EQ(SamplesOf(Read(*module, { "302" }, Day, Day + 1), 0), cosPhi);

    // A shorter result carries no rows of a longer one; a block handed out before stays as it was.
    ChannelCollection channels = Request({ "301" });
    qint32 status = 0;
    module->GetData("301", channels, Day, Day + 1, status);
    const MatrixBlockPtr old = channels.Channel(0)->DataBlock();
    module->GetData("301", channels, Day, Day + 2 * Quarter, status);
    EXPECT_EQ(old->Rows(), PowerSamples);
    EXPECT_EQ(SamplesOf(channels, 0), (Samples { { Day, 0 }, { Day + Quarter, 1.5 }, { Day + 2 * Quarter, 3 } }));

    // 302 is listed but not in the collection: only the delivered channel gives the resolution.
    channels = Request({ "301" });
    module->GetData("302;301", channels, Day + 1, Day + 2, status);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(BlockRows(channels), std::vector<qsizetype> { 0 });
    EXPECT_EQ(channels.Text(1), "SQLITE;900");
}

TEST_F(SqliteDataModuleTest, ChannelNumbersAreUniqueWithinALoggerAndExchangingTheLoggerGivesItsChannel)
{
    // Two loggers numbered alike, and a plain category whose path ids are missing (31), shared
    // (32, 33), the row id of a channel without one (34 would be 31), or become so in turn (35
    // would be 34): those go by their row ids. 36 keeps its path id.
    const QString path = dir.filePath("numbers.sqlite");
    WriteDatabase(path,
        "INSERT INTO categories VALUES (1, 'A', '', 0, 'MEASURING', 1), (2, 'B', '', 0, 'MEASURING', 2),"
        " (3, 'Rest', '', 0, '', 0);"
        "INSERT INTO channels VALUES (11, 'P', 'kW', 3, 1, 0, 1), (12, 'Q', 'kvar', 3, 1, 0, 2),"
        " (21, 'P', 'kW', 3, 2, 0, 1), (22, 'Q', 'kvar', 3, 2, 0, 2), (31, 'a', '', 0, 3, 0, 0),"
        " (32, 'b', '', 0, 3, 0, 5), (33, 'c', '', 0, 3, 0, 5), (34, 'd', '', 0, 3, 0, 31),"
        " (35, 'e', '', 0, 3, 0, 34), (36, 'f', '', 0, 3, 0, 7);"
        "INSERT INTO samples VALUES (11, 1.0, 10), (12, 1.0, 11), (21, 1.0, 20), (22, 1.0, 21), (33, 1.0, 30),"
        " (36, 1.0, 31)");
    Open(path);
    ChannelCollection overview;
    qint32 status = 0;
    ASSERT_EQ(module->GetChannelOverview(overview, status), 1);
    QStringList ids;
    for (qsizetype i = 0; i < overview.Count() / 2; ++i)
        ids << overview.Key(i);
    EXPECT_EQ(ids, QStringList({ "1#1", "1#2", "2#1", "2#2", "3#31", "3#32", "3#33", "3#34", "3#35", "3#7" }));

    const auto valueOf = [&](const QString& id) {
        const Samples samples = SamplesOf(Read(*module, { id }, 0.0, 2.0), 0);
        return samples.size() == 1 ? samples.front().second : -1.0;
    };
    // The logger part exchanged: the same channel number of the other logger.
    for (const QString id : { "1#1", "1#2" })
        EXPECT_EQ(valueOf("2#" + id.section('#', 1)), valueOf(id) + 10) << id.toStdString();
    EXPECT_EQ(valueOf("3#33"), 30);
    EXPECT_EQ(valueOf("3#7"), 31);
}

TEST_F(SqliteDataModuleTest, OddRowsNeitherHangNorLeakIntoTheValues)
{
    // Parent cycles of categories and of a channel, an orphan, values that are no numbers and an
    // unreadable resolution, which is reported and counts as unknown.
    const QString odd = dir.filePath("odd.sqlite");
    WriteDatabase(odd,
        "INSERT INTO categories VALUES (1, 'A', '', 2, 'FOLDER', 0), (2, 'B', '', 1, 'FOLDER', 0),"
        " (3, 'C', '', 3, 'FOLDER', 0), (4, 'Waise', '', 77, 'MEASURING', 0);"
        "INSERT INTO channels VALUES (5, 'Zyklus', 'kW', 3, 4, 5, 0), (6, 'Kanal', 'kW', 3, 4, 0, 0);"
        "INSERT INTO samples VALUES (6, 1.0, 'kaputt'), (6, 2.0, 2.5), (6, 3.0, x'00ff');"
        "INSERT INTO info VALUES ('resolution', 'schnell')");
    Open(odd);
    EXPECT_EQ(handler.Count({}, 2), 1);

    QStringList categories, channels;
    qint32 status = 0;
    EXPECT_EQ(module->GetChannelStructure(categories, channels, status), 1);
    EXPECT_EQ(categories, QStringList({ "4$Waise$$77$MEASURING" }));
    EXPECT_EQ(channels, QStringList({ "4#6$Kanal$$4$0$0" })); // no path id: the row id

    const ChannelCollection data = Read(*module, { "6" }, 0.0, 10.0);
    EXPECT_EQ(SamplesOf(data, 0), (Samples { { 1.0, -1e300 }, { 2.0, 2.5 }, { 3.0, -1e300 } }));
    EXPECT_EQ(data.Text(1), "SQLITE;0");
}

const QString ModuleKey = QStringLiteral("Software\\HARVOLD\\ModuleSettings\\Werk");

class SqliteFailureTest : public ::testing::Test
{
protected:
    std::unique_ptr<SqliteDataModule> MakeModule(const QString& database)
    {
        settings.SetUser(ModuleKey, "Database", database);
        auto module = std::make_unique<SqliteDataModule>(DataModuleRegistration { "Werk", "4" });
        module->SetMessageHandler(&handler);
        return module;
    }

    // The site with 20000 more samples, so that the file spans many pages.
    QString WriteBigSite(const QString& name)
    {
        const QString path = dir.filePath(name);
        WriteDatabase(path,
            Sql()
                + QString("WITH RECURSIVE k(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM k WHERE n < 20000) "
                          "INSERT INTO samples SELECT 305, %1 + n / 1440.0, n * 0.5 FROM k")
                      .arg(Day + 1));
        return path;
    }

    QString WriteFile(const QString& name, const QByteArray& bytes)
    {
        QFile file(dir.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bytes);
        return file.fileName();
    }

    TempSettings settings;
    QTemporaryDir dir;
    RecordingHandler handler;
};

TEST_F(SqliteFailureTest, UnusableFilesGiveAStatusAndALogLine)
{
    const QByteArray whole = FileBytes(WriteBigSite("whole.sqlite"));
    WriteDatabase(dir.filePath("old.sqlite"),
        "CREATE TABLE categories (id, name, remark, parent, kind, path_id);"
        "CREATE TABLE channels (id, name, unit, data_type, category, parent_channel, path_id);"
        "CREATE TABLE samples (channel, time)",
        false);
    // File, status, and the start of the reason that GetData gives after the resolution.
    const std::tuple<QString, qint32, QString> cases[] = {
        { QString(), SqliteDataModule::NoDatabase, "no database file is configured for module Werk" },
        { dir.path(), SqliteDataModule::FileMissing, "the database file does not exist or is no file" },
        { WriteFile("export.sqlite", QByteArray("01.01.2025 00:15;12,5\n").repeated(3000)), SqliteDataModule::Corrupt,
            "reading the schema failed: file is not a database" },
        { WriteFile("truncated.sqlite", whole.left(whole.size() / 3)), SqliteDataModule::Corrupt,
            "reading the schema failed: " },
        { WriteFile("empty.sqlite", QByteArray()), SqliteDataModule::ForeignSchema,
            "the file is no logger database: table categories is missing" },
        { dir.filePath("old.sqlite"), SqliteDataModule::ForeignSchema,
            "the file is no logger database: table samples has no column value" },
    };
    for (const auto& [database, expected, reason] : cases) {
        SCOPED_TRACE(database.toStdString());
        handler.lines.clear();
        const QByteArray before = FileBytes(database);
        auto module = MakeModule(database);
        qint32 status = 0;
        // The self-check does not need the database.
        EXPECT_EQ(module->SelfCheck(status), 1);
        EXPECT_TRUE(handler.lines.empty());
        EXPECT_EQ(module->Initialize(QString(), status), expected);
        EXPECT_EQ(status, expected);
        ASSERT_GE(handler.Count({}, 3), 1);
        EXPECT_EQ(handler.lines.front().level, 3);
        EXPECT_TRUE(handler.lines.front().text.contains(database)) << handler.lines.front().text.toStdString();
        // Every other call fails alike; GetData's text names the file.
        CheckUnusable(*module, expected, "SQLITE", reason);
        if (!database.isEmpty()) {
            const QString text = Read(*module, { "301" }, Day - 1, Day + 1).Text(1);
            EXPECT_TRUE(text.endsWith(" (" + QDir::toNativeSeparators(database) + ")")) << text.toStdString();
        }
        EXPECT_EQ(FileBytes(database), before);
    }
}

TEST_F(SqliteFailureTest, ALockedDatabaseFailsWithinTheBusyTimeoutAndRecovers)
{
    const QString path = Write(dir.filePath("site.sqlite"));
    settings.SetUser(ModuleKey, "BusyTimeout", "50");
    auto module = MakeModule(path);

    const SqliteConnection writer = OpenWriter(path);
    const auto exec = [&](const char* sql) { return sqlite3_exec(writer.get(), sql, nullptr, nullptr, nullptr); };

    // Locked while the module opens the file.
    ASSERT_EQ(exec("BEGIN EXCLUSIVE"), SQLITE_OK);
    qint32 status = 0;
    EXPECT_EQ(module->Initialize(QString(), status), SqliteDataModule::Locked);
    ASSERT_EQ(handler.Count({}, 3), 1);
    EXPECT_TRUE(handler.lines.back().text.contains("locked")) << handler.lines.back().text.toStdString();
    ASSERT_EQ(exec("ROLLBACK"), SQLITE_OK);
    EXPECT_EQ(module->Initialize(QString(), status), 1);

    // The module holds no lock between calls; a read inside the writer's transaction fails.
    ASSERT_EQ(exec("BEGIN EXCLUSIVE"), SQLITE_OK);
    ChannelCollection data = Read(*module, { "301", "302" }, Day - 1, Day + 1, &status);
    EXPECT_EQ(status, SqliteDataModule::Locked);
    EXPECT_EQ(BlockRows(data), (std::vector<qsizetype> { -1, -1 }));
    EXPECT_EQ(data.Text(2),
        "SQLITE;0;reading the samples of channel 301 failed: database is locked (" + QDir::toNativeSeparators(path)
            + ")");
    EXPECT_EQ(handler.Count({}, 3), 2); // one line for the call, not one per channel
    ASSERT_EQ(exec("ROLLBACK"), SQLITE_OK);

    data = Read(*module, { "301", "302" }, Day - 1, Day + 1, &status);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(BlockRows(data), (std::vector<qsizetype> { PowerSamples, CosPhiSamples }));
    EXPECT_EQ(data.Text(2), "SQLITE;60");
}

TEST_F(SqliteFailureTest, AnInterruptedWriteIsLeftForTheWriterToUndo)
{
    // A hot journal left by a crashed writer: rolling it back would write, so the file is refused.
    const QString original = WriteBigSite("site.sqlite");
    SqliteConnection writer = OpenWriter(original);
    ASSERT_EQ(sqlite3_exec(writer.get(), "PRAGMA cache_size = 10; BEGIN; UPDATE samples SET value = -value;", nullptr,
                  nullptr, nullptr),
        SQLITE_OK);
    ASSERT_TRUE(QFile::exists(original + "-journal"));
    QDir(dir.path()).mkdir("crashed");
    const QString path = dir.filePath("crashed/site.sqlite");
    ASSERT_TRUE(QFile::copy(original + "-journal", path + "-journal"));
    ASSERT_TRUE(QFile::copy(original, path));
    sqlite3_exec(writer.get(), "ROLLBACK", nullptr, nullptr, nullptr);
    writer.reset();

    const QByteArray database = FileBytes(path);
    const QByteArray journal = FileBytes(path + "-journal");
    auto module = MakeModule(path);
    qint32 status = 0;
    EXPECT_EQ(module->Initialize(QString(), status), SqliteDataModule::CannotOpen);
    ASSERT_EQ(handler.Count({}, 3), 1);
    EXPECT_TRUE(handler.lines.back().text.contains("interrupted")) << handler.lines.back().text.toStdString();
    EXPECT_EQ(FileBytes(path), database);
    EXPECT_EQ(FileBytes(path + "-journal"), journal);
}

TEST_F(SqliteFailureTest, DamagedPagesCostTheChannelsOnThemTheirBlocksAndAreSaid)
{
    // Garbage over the pages of channel 305: its read fails, the channels around it are read.
    const QString path = WriteBigSite("damaged.sqlite");
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        const qint64 middle = file.size() / 2 / 4096 * 4096;
        ASSERT_TRUE(file.seek(middle));
        ASSERT_EQ(file.write(QByteArray(4 * 4096, '\xA5')), 4 * 4096);
    }
    auto module = MakeModule(path);
    qint32 status = 0;
    ASSERT_EQ(module->Initialize(QString(), status), 1);
    const ChannelCollection data = Read(*module, { "301", "305", "302", "999" }, Day - 1, Day + 30, &status);
    EXPECT_EQ(status, SqliteDataModule::Corrupt);
    // A channel the database does not know was read, and has no samples.
    EXPECT_EQ(BlockRows(data), (std::vector<qsizetype> { PowerSamples, -1, CosPhiSamples, 0 }));
    EXPECT_EQ(data.Text(4),
        "SQLITE;60;reading the samples of channel 305 failed: database disk image is malformed ("
            + QDir::toNativeSeparators(path) + ")");
    EXPECT_EQ(handler.Count({}, 3), 1);
}

TEST_F(SqliteFailureTest, TreesOfDuplicateIdsCyclesAndEndlessChainsAreListedAsFarAsTheyGo)
{
    // A file whose tables have no keys: an id on two rows, the second its own parent; a cycle
    // of parents with a category below it; a category that is its own parent; a chain of 100
    // levels; the same among channels. Run in a child, so that a hang fails the test.
    const QString path = dir.filePath("hostile.sqlite");
    QString sql
        = "CREATE TABLE categories (id, name, remark, parent, kind, path_id);"
          "CREATE TABLE channels (id, name, unit, data_type, category, parent_channel, path_id);"
          "CREATE TABLE samples (channel, time, value);"
          "INSERT INTO categories VALUES (1, 'Werk', '', 0, 'FOLDER', 1), (1, 'Werk doppelt', '', 1, 'FOLDER', 0),"
          " (2, 'Halle', '', 1, 'FOLDER', 2), (3, 'Zyklus A', '', 4, '', 0), (4, 'Zyklus B', '', 3, '', 0),"
          " (5, 'Unter Zyklus', '', 3, '', 0), (6, 'Selbst', '', 6, '', 0);"
          "INSERT INTO channels VALUES (10, 'P', 'kW', 3, 2, 0, 1), (10, 'P doppelt', 'kW', 3, 2, 10, 2),"
          " (11, 'Q', '', 3, 2, 10, 2), (12, 'Kreis', '', 3, 2, 12, 3);";
    for (int k = 0; k < 100; ++k)
        sql += QString("INSERT INTO categories VALUES (%1, 'Ebene %2', '', %3, '', 0);")
                   .arg(100 + k)
                   .arg(k)
                   .arg(k == 0 ? 0 : 99 + k);
    WriteDatabase(path, sql, false);

    const auto readStructure = [&] {
        auto module = MakeModule(path);
        QStringList categories, channels;
        qint32 status = 0;
        ASSERT_EQ(module->GetChannelStructure(categories, channels, status), 1);
        QStringList expected = { "1$Werk$$0$FOLDER", "100$Ebene 0$$0", "2$Halle$$1$FOLDER", "101$Ebene 1$$100" };
        for (int k = 2; k < LoggerTree::MaxDepth; ++k)
            expected << QString("%1$Ebene %2$$%3").arg(100 + k).arg(k).arg(99 + k);
        EXPECT_EQ(categories, expected);
        EXPECT_EQ(channels, QStringList({ "2#1$P$$2$0$1", "2#2$Q$$2$2#1$2" }));
        QStringList logged;
        for (const RecordingHandler::Line& line : handler.lines)
            if (line.level == 3)
                logged << QString(line.text).remove(" (" + path + ")");
        EXPECT_EQ(logged,
            QStringList({ "Rows of the categories of module Werk repeat the id of an earlier row and are left out: 1.",
                "Categories of module Werk that are their own parents or lie in or below a cycle of parents are left "
                "out: 3, 4, 5, 6.",
                "Categories of module Werk more than 64 levels deep are left out: 164, 165, 166, 167, 168, 169, 170, "
                "171, 172, 173 and 26 more.",
                "Rows of the channels of module Werk repeat the id of an earlier row and are left out: 10.",
                "Channels of module Werk that are their own parents or lie in or below a cycle of parents are left "
                "out: 12." }));
    };
    EXPECT_TRUE(RunsInChild(readStructure));
}

} // namespace
