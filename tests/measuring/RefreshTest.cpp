// SPDX-License-Identifier: GPL-3.0-or-later
// What a refresh shows and refuses: never a value that wasn't measured, failed reads as gaps
// with their reason, grids too large for memory, the progress, power-factor statistics.
#include "Formatter.h"
#include "MeasuringFixture.h"
#include "Numeric.h"
#include "ResStrings.h"

#include <QCoreApplication>
#include <QTreeWidget>

namespace {

using RefreshTest = measuring_fixture::MeasuringFixture;
using measuring_fixture::D;

constexpr double NoValue = -1e300;

TEST_F(RefreshTest, RowsBeforeTheFirstSampleAreGapsLeftOutOfTheStatistics)
{
    Open(60);
    Curve* curve = Add("3$L#1", "|1|2|3|");
    measuring->SetIntervalCount(1);
    measuring->SetIntervalUnit("h");
    Window(D(2009, 1, 31, 20), D(2009, 2, 1, 4));
    measuring->Refresh(true);
    ASSERT_EQ(Chart().PointCount(), 8);
    const MatrixBlockPtr result = curve->Result()->DataBlock();
    for (qsizetype row = 0; row < 4; ++row) {
        EXPECT_EQ(result->At(row, 1), NoValue) << row;
        EXPECT_EQ(Chart().Value(curve->SeriesID(), row), ChartAdapter::HiddenPoint) << row;
    }
    EXPECT_EQ(result->At(5, 1), 1.0);
    EXPECT_DOUBLE_EQ(curve->FindStatistic("2")->Value(), 1.5) << "the mean of 0, 1, 2, 3 alone";
    EXPECT_EQ(curve->FindStatistic("3")->Value(), 0.0);
}

TEST_F(RefreshTest, AFailedReadIsAGapWithItsReasonInTheStatusLine)
{
    Open(900);
    Curve* curve = Add("3$L#1", "|1|");
    Day();
    ASSERT_EQ(Chart().Value(curve->SeriesID(), 40), 10.0);
    generated->failure = "database disk image is malformed (/data/site.sqlite)";
    measuring->Refresh(true);
    EXPECT_TRUE(measuring->FetchError().contains("malformed") && measuring->FetchError().contains("Logger"))
        << "the reason and the data source: " << measuring->FetchError().toStdString();
    EXPECT_TRUE(host.messages.last().startsWith("LOG:") && host.messages.last().contains("malformed"));
    for (qsizetype row : { 0, 40, 95 })
        EXPECT_EQ(Chart().Value(curve->SeriesID(), row), ChartAdapter::HiddenPoint) << "no value, not an old one";

    generated->failure.clear();
    measuring->Refresh(true);
    EXPECT_TRUE(measuring->FetchError().isEmpty());
    EXPECT_EQ(host.messages.last(), "LOG:");
    EXPECT_EQ(Chart().Value(curve->SeriesID(), 40), 10.0);
}

TEST_F(RefreshTest, AGridTooLargeForMemoryIsRefusedBeforeAnythingIsFetched)
{
    Open(1);
    Add("3$L#1");
    Add("3$L#3");
    measuring->SetIntervalUnit("s");
    measuring->SetIntervalCount(1);
    // Two curves at one second over a year: 63 million values.
    Window(D(2008, 6, 1), D(2009, 6, 1));
    measuring->Refresh(true);
    EXPECT_EQ(generated->fetches, 0);
    ASSERT_EQ(host.errors.size(), 1);
    QString digits = host.errors.front();
    digits.remove('.').remove(',').remove(QChar(0xA0));
    EXPECT_TRUE(digits.contains("50000000")) << "names the limit: " << host.errors.front().toStdString();
    EXPECT_EQ(measuring->FetchError(), host.errors.front());
    EXPECT_LE(Chart().PointCount(), 1);
    EXPECT_EQ(Span(), std::pair(D(2008, 6, 1), D(2009, 6, 1))) << "the window stays for a coarser resolution";

    // A day of it is fine.
    host.errors.clear();
    Window(D(2009, 2, 10), D(2009, 2, 11));
    measuring->Refresh(true);
    EXPECT_TRUE(host.errors.isEmpty());
    EXPECT_EQ(Chart().PointCount(), 86400);
}

TEST_F(RefreshTest, AViewAskedToRefreshDuringAnothersRefreshWaitsForItsEnd)
{
    Open(900);
    Add("3$L#1");
    Window(D(2009, 2, 10), D(2009, 2, 11));
    // A second view of the same channel object, asked to refresh from inside the first's events.
    Measuring second(host);
    ASSERT_EQ(second.Init(), 0);
    second.DataModules().Add(host.modules.Item("3"));
    Curve* other = second.AddCurve("3$L#1", false, "", "", nullptr);
    ASSERT_TRUE(other);
    second.Window()->nav_Navigate()->SetDateFrom(D(2009, 2, 12));
    second.Window()->nav_Navigate()->SetDateTo(D(2009, 2, 13));
    int fetchesInside = -1;
    host.onMessage = [&](const QString& name) {
        if (name != "PROGRESS_UPDATE" || fetchesInside >= 0)
            return;
        second.Refresh(true);
        fetchesInside = generated->fetches;
    };
    measuring->Refresh(true);
    host.onMessage = nullptr;
    EXPECT_EQ(fetchesInside, 1) << "the second view did not fetch inside the first's refresh";
    EXPECT_EQ(Chart().Value(0, 40), 10.0);
    QCoreApplication::processEvents();
    EXPECT_EQ(generated->fetches, 2) << "and refreshed once it was over";
    EXPECT_EQ(second.Chart()->PointCount(), 96);
    EXPECT_EQ(second.Chart()->Value(other->SeriesID(), 40), 10.0);
}

TEST_F(RefreshTest, CommandsAreOffWhileItRunsAndTheProgressReachesItsEnd)
{
    Open(900);
    Add("3$L#1");
    Add("3$L#3");
    Day();
    EXPECT_TRUE(host.commands) << "given back";
    EXPECT_EQ(host.messagesWhileBusy, host.messages.size()) << "every message of the refresh came while busy";
    const QStringList updates = host.messages.filter("PROGRESS_UPDATE:");
    ASSERT_EQ(updates.size(), 2);
    EXPECT_TRUE(updates.first().endsWith(";0.5")) << "written with a point: " << updates.first().toStdString();
    EXPECT_TRUE(updates.last().endsWith(";1")) << updates.last().toStdString();
}

TEST_F(RefreshTest, PowerFactorScatterSumAndCountShowAsComputedOnTheStoredValues)
{
    Open(900);
    // A power factor of 0.9 throughout, stored folded as 0.1: the variance is 0, the count 96.
    Add("3$L#2", "|6|4|5|");
    Day();
    QTreeWidget& tree = *measuring->Window()->trv_Statistics();
    QStringList captions;
    for (int i = 0; i < tree.topLevelItem(0)->childCount(); ++i)
        captions << tree.topLevelItem(0)->child(i)->text(0);
    const auto caption = [&](int nameId) {
        const QStringList found = captions.filter(GetResString(nameId) + " = ");
        return found.isEmpty() ? QString() : found.front();
    };
    const Formatter format;
    EXPECT_TRUE(caption(358).contains(format.FormatNumber(0, u"0.00"))) << caption(358).toStdString();
    EXPECT_TRUE(caption(353).contains(format.FormatNumber(96 * FoldCosPhi(0.9), u"0.00")))
        << "the sum of the stored values: " << caption(353).toStdString();
    EXPECT_TRUE(caption(354).contains("96")) << caption(354).toStdString();
}

} // namespace
