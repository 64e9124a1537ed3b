// SPDX-License-Identifier: GPL-3.0-or-later
// The SQLite module on a healthy database: overview, structure, periods and GetData.
#include "SqliteDataModule.h"
#include "LoggerDatabase.h"
#include "TempSettings.h"

#include "Calendar.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

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
    // The overview gives one channel object per channel, without data, in place of what the
    // collection held.
    ChannelCollection overview;
    overview.AddText("left over from an earlier call");
    qint32 status = 0;
    EXPECT_EQ(module->GetChannelOverview(overview, status), 1);
    EXPECT_EQ(status, 1);
    QStringList shown;
    for (qsizetype i = 0; i < overview.Count(); ++i) {
        const DataMatrixPtr channel = overview.Channel(i);
        ASSERT_TRUE(channel);
        EXPECT_EQ(overview.Key(i), channel->ChannelID());
        EXPECT_EQ(channel->ModuleAddress(), 4);
        EXPECT_FALSE(channel->DataBlock());
        shown << QString("%1 %2 [%3] %4")
                     .arg(channel->ChannelID(), channel->ChannelName(), channel->Unit())
                     .arg(channel->DataType());
    }
    EXPECT_EQ(
        shown, QStringList({ "301 Leistung [kW] 3", "302 cos phi [] 8", "303 Phase L1 [kW] 3", "304 Leer [kWh] 2" }));

    // Parents come before their children. "$" inside a name would split it: it is written as
    // "_". A category without a kind has four fields and shows as a plain category.
    QStringList categories { "stale" }, channels { "stale" };
    EXPECT_EQ(module->GetChannelStructure(categories, channels, status), 1);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(categories,
        QStringList({ "10$Werk$$0$FOLDER", "40$Sonstiges$$0", "20$Halle _1$Nord$10$FOLDER",
            "30$Logger 7$Keller$20$MEASURING" }));
    EXPECT_EQ(channels,
        QStringList({ "301$Leistung$$30$0$1", "302$cos phi$$30$0$2", "304$Leer$$30$0$4", "303$Phase L1$$30$301$3" }));
}

TEST_F(SqliteDataModuleTest, FirstAndLastDateComeFromTheSamplesOrStayUntouched)
{
    constexpr double Untouched = -7.0;
    const struct
    {
        QString channel;
        double first, last;
    } cases[] = {
        { "301", Day, Day + (PowerSamples - 1) * Quarter },
        { " 302 ", Day, Day + (CosPhiSamples - 1) * Minute },
        { "304", Untouched, Untouched }, // a channel without samples
        { "999", Untouched, Untouched }, // no such channel
        { "Leistung", Untouched, Untouched },
        { "", Untouched, Untouched },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.channel.toStdString());
        double first = Untouched;
        double last = Untouched;
        module->GetFirstDate(c.channel, first);
        module->GetLastDate(c.channel, last);
        EXPECT_DOUBLE_EQ(first, c.first);
        EXPECT_DOUBLE_EQ(last, c.last);
    }
    EXPECT_EQ(handler.lines.size(), 0u);
}

TEST_F(SqliteDataModuleTest, GetDataReadsTheInclusiveWindowInTimeOrder)
{
    const struct
    {
        const char* name;
        double from, to;
        int firstIndex, rows;
    } cases[] = {
        { "whole period", Day, Day + (PowerSamples - 1) * Quarter, 0, PowerSamples },
        { "wider than the data", Day - 30, Day + 30, 0, PowerSamples },
        // The bounds as the program's calendar computes them: both ends belong to the window.
        { "calendar bounds", Calendar::FromParts(2025, 1, 1, 0, 15), Calendar::FromParts(2025, 1, 1, 1, 30), 1, 6 },
        // Bounds that miss a sample by microseconds still take it; by a second they do not.
        { "bounds microseconds off", Day + Quarter + 1e-10, Day + 6 * Quarter - 1e-10, 1, 6 },
        { "bounds a second inside", Day + Quarter + 1.0 / 86400, Day + 6 * Quarter - 1.0 / 86400, 2, 4 },
        { "one sample", Day + 2 * Quarter, Day + 2 * Quarter, 2, 1 },
        { "between samples", Day + 2.25 * Quarter, Day + 2.75 * Quarter, 0, 0 },
        { "after the data", Day + 1, Day + 2, 0, 0 },
        { "reversed window", Day + 1, Day, 0, 0 },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ChannelCollection channels = Request({ "301" });
        qint32 status = 0;
        module->GetData("301", channels, c.from, c.to, status);
        EXPECT_EQ(status, 1);
        const MatrixBlockPtr block = channels.Channel(0)->DataBlock();
        ASSERT_TRUE(block);
        ASSERT_EQ(block->Columns(), 2);
        ASSERT_EQ(block->Rows(), c.rows);
        for (int r = 0; r < c.rows; ++r) {
            const int k = c.firstIndex + r;
            EXPECT_NEAR(block->At(r, 0), Day + k * Quarter, 1e-9) << "row " << r;
            EXPECT_EQ(block->At(r, 1), k == NullSample ? -1e300 : 1.5 * k) << "row " << r;
        }
        EXPECT_EQ(block->NoValue(), -1e300);
    }
}

TEST_F(SqliteDataModuleTest, GetDataFillsEveryListedChannelAndEndsWithTheResolution)
{
    const struct
    {
        QString list;
        std::vector<int> rows; // per channel of the collection, in order
        QString last;
    } cases[] = {
        { "301", { PowerSamples }, "SQLITE;900" },
        // Channels of different resolutions: the finest one serves them all.
        { "301;302", { PowerSamples, CosPhiSamples }, "SQLITE;60" },
        { "302;301;303;304", { CosPhiSamples, PowerSamples, 0, 0 }, "SQLITE;60" },
        // Channels the database does not know get empty blocks and give no resolution.
        { "999;abc", { 0, 0 }, "SQLITE;0" },
        { "999;301", { 0, PowerSamples }, "SQLITE;900" },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.list.toStdString());
        const QStringList ids = c.list.split(';');
        ChannelCollection channels = Request(ids);
        qint32 status = 0;
        module->GetData(c.list, channels, Day - 1, Day + 1, status);
        EXPECT_EQ(status, 1);
        ASSERT_EQ(channels.Count(), ids.size() + 1);
        for (qsizetype i = 0; i < ids.size(); ++i) {
            const MatrixBlockPtr block = channels.Channel(i)->DataBlock();
            ASSERT_TRUE(block) << ids[i].toStdString();
            EXPECT_EQ(block->Columns(), 2) << ids[i].toStdString();
            EXPECT_EQ(block->Rows(), c.rows[i]) << ids[i].toStdString();
        }
        ASSERT_TRUE(channels.IsText(ids.size()));
        EXPECT_EQ(channels.Text(ids.size()), c.last);
    }
}

TEST_F(SqliteDataModuleTest, RepeatedCallsGiveEveryChannelANewBlockOfItsOwnSamples)
{
    // The module keeps its work buffers between calls; a shorter result must not carry rows of a
    // longer one, and a block handed out before stays as it was.
    ChannelCollection channels = Request({ "301", "302" });
    qint32 status = 0;
    module->GetData("301;302", channels, Day, Day + 1, status);
    const MatrixBlockPtr old = channels.Channel("301")->DataBlock();
    module->GetData("302;301", channels, Day, Day + 2 * Quarter, status);
    EXPECT_EQ(old->Rows(), PowerSamples);
    ASSERT_EQ(channels.Channel("301")->DataBlock()->Rows(), 3);
    EXPECT_EQ(channels.Channel("301")->DataBlock()->At(2, 1), 3.0);
    const MatrixBlockPtr cosPhi = channels.Channel("302")->DataBlock();
    ASSERT_EQ(cosPhi->Rows(), CosPhiSamples);
    for (int k = 0; k < CosPhiSamples; ++k) {
        EXPECT_NEAR(cosPhi->At(k, 0), Day + k * Minute, 1e-9);
        EXPECT_DOUBLE_EQ(cosPhi->At(k, 1), 0.05 - 0.02 * k);
    }

    // 302 is listed but not in the collection: nothing to fill, no failure, and only the
    // delivered channel decides the resolution.
    ChannelCollection one = Request({ "301" });
    module->GetData("302;301", one, Day + 1, Day + 2, status);
    EXPECT_EQ(status, 1);
    ASSERT_EQ(one.Count(), 2);
    EXPECT_EQ(one.Channel(0)->DataBlock()->Rows(), 0);
    EXPECT_EQ(one.Text(1), "SQLITE;900");
}

TEST_F(SqliteDataModuleTest, OddRowsNeitherHangNorLeakIntoTheValues)
{
    // Two categories that are each other's parent, one that is its own parent, an orphan, a
    // channel that is its own parent, values that are no numbers and an unreadable resolution.
    const QString odd = dir.filePath("odd.sqlite");
    WriteDatabase(odd,
        "INSERT INTO categories VALUES (1, 'A', '', 2, 'FOLDER', 0), (2, 'B', '', 1, 'FOLDER', 0),"
        " (3, 'C', '', 3, 'FOLDER', 0), (4, 'Waise', '', 77, 'MEASURING', 0);"
        "INSERT INTO channels VALUES (5, 'Zyklus', 'kW', 3, 4, 5, 0), (6, 'Kanal', 'kW', 3, 4, 0, 0);"
        "INSERT INTO samples VALUES (6, 1.0, 'kaputt'), (6, 2.0, 2.5), (6, 3.0, x'00ff');"
        "INSERT INTO info VALUES ('resolution', 'schnell')");
    Open(odd);
    // The unreadable resolution is reported and counts as unknown.
    EXPECT_EQ(handler.CountAtLeast(2), 1);

    QStringList categories, channels;
    qint32 status = 0;
    EXPECT_EQ(module->GetChannelStructure(categories, channels, status), 1);
    EXPECT_EQ(categories, QStringList({ "4$Waise$$77$MEASURING" }));
    EXPECT_EQ(channels, QStringList({ "6$Kanal$$4$0$0" }));

    ChannelCollection data = Request({ "6" });
    module->GetData("6", data, 0.0, 10.0, status);
    const MatrixBlockPtr block = data.Channel(0)->DataBlock();
    ASSERT_EQ(block->Rows(), 3);
    EXPECT_EQ(block->At(0, 1), -1e300);
    EXPECT_EQ(block->At(1, 1), 2.5);
    EXPECT_EQ(block->At(2, 1), -1e300);
    EXPECT_EQ(data.Text(1), "SQLITE;0");
}

} // namespace
