// SPDX-License-Identifier: GPL-3.0-or-later
// The view document: curves from modules, the refresh rules, periods, zoom history, its file;
// and the rules of a time window: period starts, date formats, axis ticks, the zoom history text.
#include "MeasuringFixture.h"
#include "Numeric.h"
#include "ViewPeriods.h"

#include <QLocale>
#include <QTemporaryDir>

namespace {

using MeasuringTest = measuring_fixture::MeasuringFixture;
using measuring_fixture::D;

TEST_F(MeasuringTest, TheModulesTimeBaseSettlesTheResolution)
{
    for (const auto& [base, unit, count] :
        { std::tuple(900.0, "n", 15), std::tuple(59.0, "s", 59), std::tuple(5400.0, "h", 2) }) {
        Open(base);
        ASSERT_TRUE(Add("3$L#1", "|1|"));
        Day();
        EXPECT_EQ(measuring->IntervalUnit(), unit) << base;
        EXPECT_EQ(measuring->IntervalCount(), count) << base;
    }
}

TEST_F(MeasuringTest, RefreshPutsTheChannelOnTheGridAndDraws)
{
    Open(900);
    Curve* curve = Add("3$L#1", "|1|3|");
    ASSERT_TRUE(curve);
    Window(D(2009, 2, 10, 0, 7) + 30 / 86400.0, D(2009, 2, 11));
    measuring->Refresh(true);
    ASSERT_EQ(Chart().PointCount(), 96);
    EXPECT_DOUBLE_EQ(Bar().DateFrom(), D(2009, 2, 10, 0, 7)) << "the window starts on a whole unit";
    EXPECT_EQ(Chart().Value(0, 0), 0.0) << "the first row holds the sample of its time, no gap";
    EXPECT_EQ(Chart().Value(0, 40), 10.0) << "10:00 is hour 10";
    EXPECT_EQ(generated->fetches, 1);

    // A cursor at a known time finds its row now and again after the window moved.
    Day();
    Cursor* cursor = measuring->AddCursor(D(2009, 2, 10, 5), *curve);
    ASSERT_TRUE(cursor && cursor->Index() == 20);
    Window(D(2009, 2, 10, 4), D(2009, 2, 10, 8));
    measuring->Refresh(true);
    ASSERT_EQ(curve->Cursors().size(), 1u);
    EXPECT_EQ(curve->Cursors()[0]->Index(), 4);
    EXPECT_EQ(curve->Cursors()[0]->Value(), 5.0);
}

TEST_F(MeasuringTest, ViewWithoutCurvesRunsThrough)
{
    Open(900);
    measuring->DataModules().Clear();
    Window(D(2009, 2, 10, 10, 0) + 30 / 86400.0, D(2009, 2, 10, 10, 5));
    measuring->Refresh(true);
    EXPECT_EQ(measuring->IntervalUnit(), "") << "no module, nothing settled";
    EXPECT_EQ(Bar().DateFrom(), D(2009, 2, 10, 10, 0)) << "a grid of whole minutes";
    EXPECT_EQ(host.messages.last(), "LOG:");
}

TEST_F(MeasuringTest, PowerFactorMovesAxesOnlyBesideAnotherCurve)
{
    Open(900);
    Curve* cosPhi = Add("3$L#2");
    Day();
    EXPECT_FALSE(Chart().AxisVisible(ChartAxis::Y2)) << "alone, nothing moves";
    EXPECT_NEAR(Chart().Value(cosPhi->SeriesID(), 0), FoldCosPhi(0.9), 1e-12) << "stored folded";

    Curve* power = Add("3$L#1");
    measuring->Refresh(true);
    EXPECT_TRUE(cosPhi->YAxis() == 0 && power->YAxis() == 1 && Chart().AxisVisible(ChartAxis::Y2));
    EXPECT_TRUE(measuring->CosPhiView(0) && !measuring->CosPhiView(1));
}

TEST_F(MeasuringTest, PeriodsPullBackAndMove)
{
    Open(900);
    Add("3$L#1");
    Window(D(2009, 2, 10, 13, 20), D(2009, 2, 10, 15));
    measuring->ShowPeriod("d", 1);
    EXPECT_EQ(Span(), std::pair(D(2009, 2, 10), D(2009, 2, 11)));
    measuring->MoveToLast();
    EXPECT_EQ(Span(), std::pair(D(2009, 2, 28), D(2009, 3, 1)));
    measuring->ShowPeriod("", 0);
    EXPECT_EQ(Span(), std::pair(D(2009, 2, 1), D(2009, 3, 1)));
}

TEST_F(MeasuringTest, TwoZoomsAndTwoBacksRestoreWindowsAndRanges)
{
    Open(900);
    Add("3$L#1");
    Add("3$L#2");
    Window(D(2009, 2, 10), D(2009, 2, 12));
    measuring->Refresh(true);
    ChartAdapter& chart = Chart();
    chart.Replot();
    const auto state = [&] {
        return std::vector<double> { Bar().DateFrom(), Bar().DateTo(), chart.AxisMin(0), chart.AxisMax(0),
            chart.AxisMin(1), chart.AxisMax(1) };
    };
    const auto first = state();
    EXPECT_FALSE(measuring->ZoomBackPossible());
    const QRect area = chart.PlotArea();
    measuring->ZoomTo(area.left() + 100, area.top() + 50, area.left() + 500, area.bottom() - 50);
    EXPECT_GT(Bar().DateFrom(), first[0]);
    chart.Replot();
    const auto second = state();
    measuring->ZoomTo(area.left() + 50, area.top() + 10, area.left() + 300, area.top() + 200);
    EXPECT_NE(state(), second);

    // The history travels with the file.
    MeasuringFile file = measuring->ToFile();
    EXPECT_EQ(file.zoomHistory.count('\t'), 2);
    measuring->SetZoomHistory(file.zoomHistory);

    measuring->ZoomBack();
    EXPECT_EQ(state(), second);
    measuring->ZoomBack();
    EXPECT_EQ(state(), first);
    EXPECT_FALSE(measuring->ZoomBackPossible());

    const int fetches = generated->fetches;
    measuring->SetZoomHistory("\ta|b|1|2|3|4");
    measuring->ZoomBack();
    EXPECT_EQ(generated->fetches, fetches) << "a bad entry is cut without a refresh";
    EXPECT_FALSE(measuring->ZoomBackPossible());
}

TEST_F(MeasuringTest, FileRoundTripKeepsCurvesStatisticsAndCursors)
{
    Open(900);
    Curve* curve = measuring->AddCurve("3$L#1", false, "|1|2|", "|2|", nullptr);
    Day();
    curve->SetCursor(20, &Chart(), &Chart().Annotations(), 0)->SetCustomText("peak");
    QTemporaryDir dir;
    EXPECT_EQ(measuring->SaveFile("", false), -1) << "never saved, no path";
    const QString path = dir.filePath("Main meter.sor");
    ASSERT_EQ(measuring->SaveFile(path, false), 0);
    EXPECT_EQ(measuring->Name(), "Main meter");
    EXPECT_FALSE(measuring->Changed());

    Measuring reopened(host);
    ASSERT_EQ(reopened.Init(), 0);
    ASSERT_EQ(reopened.OpenFile(path, true), 0);
    ASSERT_EQ(reopened.Curves().size(), 1u);
    const Curve& back = *reopened.Curves().front();
    EXPECT_TRUE(back.FindStatistic("1")->Used() && !back.FindStatistic("1")->Visible());
    EXPECT_TRUE(back.FindStatistic("2")->Visible() && !back.FindStatistic("3")->Used());
    ASSERT_EQ(back.Cursors().size(), 1u);
    EXPECT_EQ(back.Cursors().front()->Index(), 20) << "the cursor found its row again";
    EXPECT_EQ(back.Cursors().front()->CustomText(), "peak");
    EXPECT_EQ(reopened.StartDate(), D(2009, 2, 10));
}

TEST_F(MeasuringTest, AMovedCurveTakesItsValuesAxisAndCursorToItsNewPlace)
{
    Open(900);
    Add("3$L#1");
    Curve* factor = Add("3$L#2");
    Curve* reserve = Add("3$L#3");
    Day();
    reserve->SetCursor(20, &Chart(), &Chart().Annotations(), 0);
    const qint16 factorAxis = factor->YAxis();
    const qint16 reserveAxis = reserve->YAxis();

    ASSERT_TRUE(measuring->MoveCurve("3$L#3", 0));
    EXPECT_FALSE(measuring->MoveCurve("3$L#9", 0));
    EXPECT_TRUE(measuring->MoveCurve("3$L#2", 99)) << "a place past the end is the last";
    measuring->Refresh(false);
    Chart().Replot();

    QStringList ids, legends, nodes;
    for (const auto& curve : measuring->Curves())
        ids << curve->ID();
    for (int series = 0; series < Chart().SeriesCount(); ++series)
        legends << Chart().SeriesLegend(series).section(' ', 0, 0);
    QTreeWidget* tree = measuring->Window()->trv_Statistics();
    for (int node = 0; node < tree->topLevelItemCount(); ++node)
        nodes << tree->topLevelItem(node)->text(0).section(' ', 0, 0);
    EXPECT_EQ(ids, QStringList({ "3$L#3", "3$L#1", "3$L#2" }));
    EXPECT_EQ(legends, QStringList({ "Reserve", "Power", "Power" })) << "the legend follows";
    EXPECT_EQ(nodes, QStringList({ "Reserve", "Power", "Power" })) << "the tree follows";
    EXPECT_EQ(Chart().Value(0, 5), 100.0) << "the series shows the moved curve's values";
    EXPECT_EQ(Chart().Value(1, 5), 1.0);
    EXPECT_EQ(factor->YAxis(), factorAxis);
    EXPECT_EQ(reserve->YAxis(), reserveAxis);
    ASSERT_EQ(reserve->Cursors().size(), 1u);
    EXPECT_EQ(reserve->Cursors().front()->Tag() % 100, reserve->SeriesID()) << "the cursor follows its series";
    EXPECT_TRUE(measuring->Changed());
}

TEST_F(MeasuringTest, NewCurvesTakeTheLeastUsedColour)
{
    Open(900);
    Curve* power = Add("3$L#1");
    Curve* factor = Add("3$L#2");
    ASSERT_TRUE(power && factor);
    EXPECT_EQ(factor->Properties().Color, CurveColors::PaletteColor(1));
    EXPECT_EQ(measuring->NextFreeColor(), CurveColors::PaletteColor(2));
    power->Properties().Color = factor->Properties().Color = CurveColors::PaletteColor(2);
    EXPECT_EQ(measuring->NextFreeColor(), CurveColors::PaletteColor(0)) << "a tie goes to the first";

    for (const char* key : { "3$L#1", "9$L#1", "3$X", "3" })
        EXPECT_FALSE(Add(key)) << key << ": shown already, unknown module or channel, or no key";
    EXPECT_EQ(measuring->Curves().size(), 2u);
}

using namespace ViewPeriods;

TEST(ViewPeriods, PeriodStartsAreCutOrComposed)
{
    const double from = D(2009, 2, 18, 14, 37, 12);
    const double end = D(2009, 3, 2, 9, 0);
    // Month and year count back from the window's end: day 0 of its month, month 0 of its year.
    const std::pair<const char*, double> starts[]
        = { { "n", D(2009, 2, 18, 14, 37) }, { "h", D(2009, 2, 18, 14) }, { "d", D(2009, 2, 18) },
              { "ww", D(2009, 2, 18) }, { "m", D(2009, 2, 28) }, { "yyyy", D(2008, 11, 30) }, { "", from } };
    for (const auto& [unit, start] : starts)
        EXPECT_EQ(PeriodStart(unit, from, end), start) << unit;
}

TEST(ViewPeriods, DateFormatsFollowUnitAndWindowLength)
{
    EXPECT_EQ(UnitFromPoints(86400, 0), "");
    EXPECT_EQ(DateFormat(true, 365 * 86400, "", 12), "") << "the derived month unit has no format";
    EXPECT_EQ(DateFormat(true, 3600, "", 60), ":nn") << "an empty unit comes from the points";

    // Each unit at the window lengths where its axis format changes.
    const std::tuple<const char*, qint64, const char*> axis[] = { { "s", 60, ":ss" }, { "s", 61, ":nn:ss" },
        { "s", 86401, "dd.mm. hh:nn:ss" }, { "s", 31536001, "dd.mm.yy hh:nn:ss" }, { "n", 3600, ":nn" },
        { "n", 3601, "hh:nn" }, { "h", 86401, "dd.mm. hh:nn" }, { "x", 31536001, "dd.mm.yy hh:nn" },
        { "d", 2592000, "dd." }, { "d", 2592001, "dd.mm." }, { "ww", 31536001, "\\K\\W ww\\, yy" },
        { "m", 31536000, "mm" }, { "yyyy", 10, "yyyy" } };
    for (const auto& [unit, seconds, format] : axis)
        EXPECT_EQ(DateFormat(true, seconds, unit, 100), format) << unit << " " << seconds;

    // Texts that stand alone follow the unit only; 15 minutes has no unit of its own.
    const char* alone[][2] = { { "h", "dd.mm.yyyy hh:nn" }, { "d", "dd.mm.yyyy" }, { "m", "mm.yyyy" }, { "q", "" } };
    for (const auto& [unit, format] : alone)
        EXPECT_EQ(DateFormat(false, 999999999, unit, 1), format) << unit;
    EXPECT_EQ(DateFormat(false, 86400, "", 96), "dd.mm.yyyy hh:nn:ss");
}

TEST(ViewPeriods, ZoomHistoryStacksAndRefusesBadEntries)
{
    const QString history = PushZoom(PushZoom("", { D(2009, 2, 1), D(2009, 3, 1), 0, 250.5, 0.5, 1.0 }), {});
    EXPECT_TRUE(history.startsWith('\t'));
    const auto older = LastZoom(PopZoom(history));
    ASSERT_TRUE(older);
    EXPECT_TRUE(older->hasY2 && older->y1Max == 250.5 && older->from == D(2009, 2, 1));
    EXPECT_EQ(PopZoom(PopZoom(history)), "");
    EXPECT_EQ(PopZoom("no tab"), "");
    EXPECT_FALSE(LastZoom(""));
    for (const char* bad : { "\t01.02.2009|02.02.2009|1|2|3", "\t01.02.2009|02.02.2009|x|2|3|4" })
        EXPECT_FALSE(LastZoom(bad)) << bad;
    const auto partial = LastZoom("\t01.02.2009|02.02.2009 12:00|1|2||");
    ASSERT_TRUE(partial);
    EXPECT_FALSE(partial->hasY2);
    EXPECT_EQ(partial->to, D(2009, 2, 2, 12));

    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    const auto comma = LastZoom("\t01.02.2009|02.02.2009|1,5|2,25|0|1");
    QLocale::setDefault(QLocale::c());
    ASSERT_TRUE(comma);
    EXPECT_EQ(comma->y1Max, 2.25);
}

// Rows for ticks over all of `count` times, one every `minutes` from `start`.
std::vector<qsizetype> Ticks(double start, int count, int minutes, int most, std::vector<double>* times = nullptr)
{
    std::vector<double> rows;
    for (int i = 0; i < count; ++i)
        rows.push_back(Calendar::Add(Calendar::Unit::Minute, std::int64_t(i) * minutes, start));
    if (times)
        *times = rows;
    return RoundTimeRows(rows, 0, count - 1, most);
}

TEST(ViewPeriods, TicksFallOnRoundTimesAndNeverGetFewerWithMoreRoom)
{
    // A week of quarter hours from Monday: one tick per midnight, or every second one.
    std::vector<double> times;
    EXPECT_EQ(Ticks(D(2025, 3, 10), 7 * 96, 15, 8, &times), std::vector<qsizetype>({ 0, 96, 192, 288, 384, 480, 576 }));
    EXPECT_EQ(Ticks(D(2025, 3, 10), 7 * 96, 15, 4), std::vector<qsizetype>({ 0, 192, 384, 576 }));
    const std::vector<qsizetype> inside = RoundTimeRows(times, 100, 300, 8);
    EXPECT_TRUE(!inside.empty() && inside.front() >= 100 && inside.back() <= 300);

    // Minutes from 00:07 for two hours: quarter hours from 00:15 on, and never fewer with more room.
    size_t fewer = 0;
    for (int most = 1; most <= 40; ++most) {
        const std::vector<qsizetype> rows = Ticks(D(2025, 3, 10, 0, 7), 120, 1, most, &times);
        EXPECT_GE(rows.size(), fewer) << most;
        fewer = rows.size();
        if (most == 9) {
            ASSERT_FALSE(rows.empty());
            EXPECT_EQ(rows.front(), 8);
            for (const qsizetype row : rows)
                EXPECT_EQ(Calendar::Split(times[size_t(row)]).minute % 15, 0) << row;
        }
    }

    // Weeks of hours from a Wednesday: Mondays at midnight, also where a month would fit but none begins.
    for (const auto& [start, days, most, count] :
        { std::tuple(D(2025, 3, 12), 35, 6, 5), std::tuple(D(2025, 2, 5), 23, 2, 2) }) {
        const std::vector<qsizetype> mondays = Ticks(start, days * 24, 60, most, &times);
        ASSERT_EQ(mondays.size(), size_t(count)) << days;
        for (const qsizetype row : mondays)
            EXPECT_TRUE(Calendar::Weekday(times[size_t(row)]) == 2 && Calendar::Split(times[size_t(row)]).hour == 0)
                << days << ": " << row;
    }

    // A year of hours, seven labels: the first of every second month from January.
    std::vector<int> starts;
    for (const qsizetype row : Ticks(D(2023, 1, 1), 365 * 24, 60, 7, &times))
        starts.push_back(Calendar::Split(times[size_t(row)]).month * 100 + Calendar::Split(times[size_t(row)]).day);
    EXPECT_EQ(starts, std::vector<int>({ 101, 301, 501, 701, 901, 1101 }));

    // Ticks need time and room.
    EXPECT_EQ(Ticks(D(2025, 1, 1), 4, 60, 10, &times), std::vector<qsizetype>({ 0, 1, 2, 3 }))
        << "hourly rows: each once, though half hours would fit";
    EXPECT_TRUE(RoundTimeRows(times, 2, 2, 10).empty()) << "a single row spans no time";
    EXPECT_TRUE(RoundTimeRows(times, 0, 3, 0).empty());
    EXPECT_TRUE(Ticks(D(2025, 1, 1), 5, 0, 5).empty()) << "rows all at one time";
}

} // namespace
