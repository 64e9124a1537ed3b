// SPDX-License-Identifier: GPL-3.0-or-later
// The view document: curves from modules, the refresh rules, periods, zoom history, its file.
#include "MeasuringFixture.h"
#include "Numeric.h"

#include <QTemporaryDir>

namespace {

using MeasuringTest = measuring_fixture::MeasuringFixture;
using measuring_fixture::D;

TEST_F(MeasuringTest, TheModulesTimeBaseSettlesTheResolution)
{
    const struct
    {
        double base;
        const char* unit;
        qint32 count;
    } cases[] = { { 900, "n", 15 }, { 59, "s", 59 }, { 5400, "h", 2 } };
    for (const auto& c : cases) {
        Open(c.base);
        ASSERT_TRUE(Add("3$L#1", "|1|"));
        Day();
        EXPECT_EQ(measuring->IntervalUnit(), c.unit) << c.base;
        EXPECT_EQ(measuring->IntervalCount(), c.count) << c.base;
        EXPECT_EQ(measuring->ToFile().intervalUnit, c.unit) << "the file keeps what the data settled";
    }
}

TEST_F(MeasuringTest, RefreshPutsTheChannelOnTheGridAndDraws)
{
    Open(900);
    Curve* curve = Add("3$L#1", "|1|3|");
    ASSERT_TRUE(curve);
    Window(D(2009, 2, 10, 0, 7) + 30 / 86400.0, D(2009, 2, 11));
    measuring->Refresh(true);
    ASSERT_TRUE(curve->Result());
    ASSERT_EQ(Chart().PointCount(), 96);
    EXPECT_DOUBLE_EQ(Bar().DateFrom(), D(2009, 2, 10, 0, 7)) << "the window starts on a whole unit";
    EXPECT_EQ(Chart().Value(0, 40), 10.0) << "10:00 is hour 10";
    EXPECT_EQ(curve->FindStatistic("1")->Value(), 23.0);
    EXPECT_TRUE(measuring->FirstBlock());
    EXPECT_EQ(generated->fetches, 1);
    EXPECT_TRUE(host.messages.contains("LOG:Daten von Logger abholen")) << host.messages.join(" | ").toStdString();
    EXPECT_TRUE(host.messages.contains("PROGRESS_END:UM"));
    EXPECT_EQ(host.messages.last(), "LOG:");

    // A cursor at a known time finds its row now and again after the window moved.
    Day();
    Cursor* cursor = measuring->AddCursor(D(2009, 2, 10, 5), *curve);
    ASSERT_TRUE(cursor);
    EXPECT_EQ(cursor->Index(), 20);
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
    EXPECT_EQ(cosPhi->YAxis(), 0);
    EXPECT_FALSE(Chart().AxisVisible(ChartAxis::Y2)) << "alone, nothing moves";
    EXPECT_NEAR(Chart().Value(cosPhi->SeriesID(), 0), FoldCosPhi(0.9), 1e-12) << "stored folded";

    Curve* power = Add("3$L#1");
    measuring->Refresh(true);
    EXPECT_EQ(cosPhi->YAxis(), 0);
    EXPECT_EQ(power->YAxis(), 1);
    EXPECT_TRUE(Chart().AxisVisible(ChartAxis::Y2));
    EXPECT_TRUE(measuring->CosPhiView(0));
    EXPECT_FALSE(measuring->CosPhiView(1));
}

TEST_F(MeasuringTest, PeriodsPullBackAndMove)
{
    Open(900);
    Add("3$L#1");
    Window(D(2009, 2, 10, 13, 20), D(2009, 2, 10, 15));
    measuring->ShowPeriod("d", 1);
    EXPECT_EQ(Bar().DateFrom(), D(2009, 2, 10));
    EXPECT_EQ(Bar().DateTo(), D(2009, 2, 11));
    measuring->MoveToLast();
    EXPECT_EQ(Bar().DateTo(), D(2009, 3, 1));
    EXPECT_EQ(Bar().DateFrom(), D(2009, 2, 28));
    measuring->ShowPeriod("", 0);
    EXPECT_EQ(Bar().DateFrom(), D(2009, 2, 1));
    EXPECT_EQ(Bar().DateTo(), D(2009, 3, 1));
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
    EXPECT_TRUE(measuring->ZoomBackPossible());
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
    EXPECT_TRUE(back.FindStatistic("1")->Used());
    EXPECT_FALSE(back.FindStatistic("1")->Visible());
    EXPECT_TRUE(back.FindStatistic("2")->Visible());
    EXPECT_FALSE(back.FindStatistic("3")->Used());
    ASSERT_EQ(back.Cursors().size(), 1u);
    EXPECT_EQ(back.Cursors().front()->Index(), 20) << "the cursor found its row again";
    EXPECT_EQ(back.Cursors().front()->CustomText(), "peak");
    EXPECT_EQ(reopened.StartDate(), D(2009, 2, 10));
    EXPECT_FALSE(reopened.Changed());
}

TEST_F(MeasuringTest, NewCurvesTakeTheLeastUsedColour)
{
    Open(900);
    Curve* power = Add("3$L#1");
    Curve* factor = Add("3$L#2");
    ASSERT_TRUE(power && factor);
    EXPECT_EQ(power->Properties().Color, CurveColors::PaletteColor(0));
    EXPECT_EQ(factor->Properties().Color, CurveColors::PaletteColor(1));
    EXPECT_EQ(measuring->NextFreeColor(), CurveColors::PaletteColor(2));
    power->Properties().Color = factor->Properties().Color = CurveColors::PaletteColor(2);
    EXPECT_EQ(measuring->NextFreeColor(), CurveColors::PaletteColor(0)) << "a tie goes to the first";

    for (const char* key : { "3$L#1", "9$L#1", "3$X", "3" })
        EXPECT_FALSE(Add(key)) << key << ": shown already, unknown module or channel, or no key";
    EXPECT_EQ(measuring->Curves().size(), 2u);
}

} // namespace
