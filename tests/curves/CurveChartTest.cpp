// SPDX-License-Identifier: GPL-3.0-or-later
// How curves write themselves into the chart and the table, and the chart-wide properties.
#include "ChartAdapter.h"
#include "ChartAnnotation.h"
#include "Curve.h"
#include "CurveFixture.h"
#include "CurveGrid.h"
#include "GraphProperties.h"

#include <cmath>
#include <memory>

namespace {

class CurveChartTest : public CurveFixture
{
protected:
    void SetUp() override
    {
        CurveFixture::SetUp();
        chart.resize(800, 500);
    }

    std::unique_ptr<Curve> Computed(
        const QString& unit, const std::vector<double>& values, qint16 axis = -1, bool fixed = false)
    {
        auto curve = std::make_unique<Curve>();
        curve->AddMatrix(Channel(1, unit + QString::number(++m_channels), "Curve " + unit, unit, values));
        curve->SetYAxis(axis);
        curve->SetFixedAxis(fixed);
        EXPECT_EQ(Compute(*curve, static_cast<int>(values.size())), 0);
        return curve;
    }

    ChartAdapter chart;

private:
    int m_channels = 0;
};

TEST_F(CurveChartTest, ValuesGapsAndFittedRange)
{
    EXPECT_EQ(Curve().UpdateChart(nullptr, true), Curve::NoView);
    chart.SetAxisRange(ChartAxis::Y1, 0, 1);
    auto curve = Computed("kW", { 5, NoValue, 20, 7 });
    ASSERT_EQ(curve->UpdateChart(&chart, true), 0);
    EXPECT_EQ(curve->SeriesID(), 0);
    ASSERT_EQ(chart.SeriesCount(), 1);
    ASSERT_EQ(chart.PointCount(), 4);
    EXPECT_EQ(chart.Value(0, 0), 5);
    EXPECT_EQ(chart.Value(0, 1), ChartAdapter::HiddenPoint);
    EXPECT_EQ(chart.Value(0, 2), 20);
    EXPECT_EQ(chart.AxisMin(ChartAxis::Y1), 0);
    EXPECT_EQ(chart.AxisMax(ChartAxis::Y1), 20);
    EXPECT_EQ(chart.SeriesLegend(0), "Curve kW (kW)");
    EXPECT_TRUE(chart.SeriesVisible(0));

    auto empty = Computed("kW", { NoValue, NoValue, NoValue, NoValue });
    chart.SetAxisRange(ChartAxis::Y1, -3, 3);
    ASSERT_EQ(empty->UpdateChart(&chart, true), 0);
    EXPECT_EQ(empty->SeriesID(), 1);
    EXPECT_EQ(chart.Value(1, 3), ChartAdapter::HiddenPoint);
    EXPECT_EQ(chart.AxisMin(ChartAxis::Y1), -3) << "nothing to fit leaves the axis";
    EXPECT_EQ(chart.AxisMax(ChartAxis::Y1), 3);

    curve->SetVisible(false);
    curve->UpdateChart(nullptr, false);
    EXPECT_FALSE(chart.SeriesVisible(0)) << "the chart is remembered";
}

TEST_F(CurveChartTest, AxisTitlesCollectUnits)
{
    auto first = Computed("kW", { 1, 2 });
    auto second = Computed("kW", { 1, 2 }, 1);
    auto volts = Computed("V", { 1, 2 }, 1);
    auto cosPhi = Computed("cos", { 1, 2 }, 1, true);
    for (Curve* curve : { first.get(), second.get(), volts.get(), cosPhi.get() })
        curve->UpdateChart(&chart, false);
    EXPECT_EQ(first->YAxis(), 0);
    EXPECT_EQ(second->YAxis(), 0) << "a unit already on the first axis stays there";
    EXPECT_EQ(volts->YAxis(), 0) << "a new unit reaches the second axis only when fixed there";
    EXPECT_EQ(cosPhi->YAxis(), 1);
    EXPECT_EQ(chart.AxisTitle(ChartAxis::Y1), "kW / kW / V");
    EXPECT_EQ(chart.AxisTitle(ChartAxis::Y2), "cos");
    EXPECT_TRUE(chart.AxisVisible(ChartAxis::Y2));

    ChartAdapter other;
    auto only = Computed("kW", { 1, 2 }, 0);
    only->UpdateChart(&other, false);
    EXPECT_FALSE(other.AxisVisible(ChartAxis::Y2));
    only->SetYAxis(1);
    EXPECT_EQ(other.SeriesAxis(0), 1);
    EXPECT_EQ(other.AxisTitle(ChartAxis::Y1), "");
    EXPECT_EQ(other.AxisTitle(ChartAxis::Y2), "kW");
    only->SetYAxis(2);
    only->SetYAxis(-1);
    EXPECT_EQ(only->YAxis(), 1) << "only the axes 0 and 1 are taken";
}

TEST_F(CurveChartTest, ConstantLinesFollowUsedAndVisibleStatistics)
{
    auto curve = Computed("kW", { 4, 8, 6 });
    curve->Properties().Color = CurveColors::Rgb(0, 0, 255);
    curve->FindStatistic("1")->SetUsed(true);
    curve->FindStatistic("2")->SetUsed(true);
    curve->FindStatistic("4")->SetUsed(true); // text only: no line
    curve->UpdateChart(&chart, false);
    ASSERT_EQ(chart.ConstantLineCount(), 2);
    const int maxLine = curve->FindStatistic("1")->ConstantLine();
    const int meanLine = curve->FindStatistic("2")->ConstantLine();
    EXPECT_EQ(chart.ConstantLineValue(maxLine), 8);
    EXPECT_EQ(chart.ConstantLineValue(meanLine), 6);
    EXPECT_EQ(chart.ConstantLineColor(maxLine), QColor(Qt::blue));
    EXPECT_EQ(chart.ConstantLineAxis(maxLine), ChartAxis::Y1);
    EXPECT_FALSE(chart.ConstantLineHidden(maxLine));

    curve->FindStatistic("2")->SetVisible(false);
    curve->UpdateChart(nullptr, false);
    EXPECT_TRUE(chart.ConstantLineHidden(meanLine));
    curve->SetVisible(false);
    curve->UpdateChart(nullptr, false);
    EXPECT_TRUE(chart.ConstantLineHidden(maxLine));
    EXPECT_EQ(curve->FindStatistic("1")->Value(), 8);

    curve->SetVisible(true);
    curve->FindStatistic("1")->SetUsed(false);
    curve->UpdateChart(nullptr, false);
    EXPECT_TRUE(chart.ConstantLineHidden(maxLine));
    EXPECT_EQ(chart.ConstantLineCount(), 2) << "slots are kept for reuse";
}

TEST_F(CurveChartTest, SeriesAndGraphPropertiesMapToTheChart)
{
    chart.OpenData(1, 3);
    chart.SetGallery(ChartGallery::Step);
    SeriesProperties series;
    series.Apply(&chart, 0);
    EXPECT_EQ(chart.SeriesGallery(0), ChartGallery::Step) << "gallery 0 follows the chart";
    EXPECT_EQ(chart.SeriesColor(0), QColor(Qt::red));
    series = { .LineWidth = 2, .LineStyle = -1, .Marker = true, .Gallery = ChartGallery::Lines };
    series.Apply(&chart, 0);
    EXPECT_EQ(chart.SeriesGallery(0), ChartGallery::Marker);
    EXPECT_EQ(chart.SeriesLineStyle(0), ChartLineStyle::Solid);
    EXPECT_EQ(chart.SeriesMarkerShape(0), 8);
    EXPECT_EQ(chart.SeriesMarkerSize(0), 4);
    EXPECT_EQ(chart.SeriesLineWidth(0), 2);
    series.Gallery = ChartGallery::Bar;
    series.Apply(&chart, 0);
    EXPECT_EQ(chart.SeriesGallery(0), ChartGallery::Bar) << "only a line series loses its line";
    series.Apply(&chart, 5);
    series.Apply(nullptr, 0);

    const GraphProperties graph { .Legend = true,
        .ShowYGrid2 = true,
        .Title = "%NAME% / %CUSTOMERNAME%: %START_DATE% %START_TIME% - %END_DATE% (%NAME%)" };
    chart.SetTitleFlags(2, 0x1);
    graph.Apply(&chart,
        { .customerName = "Works",
            .name = "Main meter",
            .startDate = Calendar::FromParts(2009, 2, 3, 14, 15),
            .endDate = Calendar::FromParts(2009, 2, 4) });
    const QString title = chart.Title(2);
    EXPECT_TRUE(title.startsWith("Main meter / Works: ")) << title.toStdString();
    EXPECT_TRUE(title.endsWith(" (Main meter)"));
    EXPECT_FALSE(title.contains('%'));
    EXPECT_EQ(chart.TitleFlags(2), 0x10D);
    EXPECT_TRUE(chart.Legend());
    EXPECT_TRUE(chart.AxisGrid(ChartAxis::Y2));
    EXPECT_EQ(chart.AxisGridColor(ChartAxis::Y2), QColor(128, 128, 128));
    EXPECT_EQ(chart.AxisGridStyle(ChartAxis::X), ChartLineStyle::Dot);
}

class RecordingGrid : public CurveGrid
{
public:
    void AddMatrix(const DataMatrixPtr& matrix, const QString& key) override { added[key] = matrix; }
    void RemoveMatrix(const QString& key) override { added.erase(key); }
    void Update() override { ++updates; }
    std::map<QString, DataMatrixPtr> added;
    int updates = 0;
};

TEST_F(CurveChartTest, TableShowsTheResultUnderTheCurveId)
{
    RecordingGrid table;
    auto curve = Computed("kW", { 1, 2 });
    curve->SetID("7");
    curve->SetName("Hall");
    EXPECT_EQ(curve->UpdateGrid(nullptr), Curve::NoView);
    EXPECT_EQ(curve->UpdateGrid(&table), 0);
    ASSERT_EQ(table.added.count("7"), 1u);
    EXPECT_EQ(table.added["7"], curve->Result());
    EXPECT_EQ(curve->Result()->ChannelName(), "Hall");
    EXPECT_EQ(curve->Result()->Unit(), "kW");

    curve->RemoveFromView();
    EXPECT_TRUE(table.added.empty());
    EXPECT_EQ(table.updates, 1);
}

TEST_F(CurveChartTest, PictureShowsCurvesLinesAndCursors)
{
    // Two load curves in kW on the first axis, a power factor on the second.
    std::vector<double> load, base, cosPhi;
    for (int i = 0; i < 96; ++i) {
        load.push_back(60 + 40 * std::sin(i / 15.0));
        base.push_back(30 + 5 * std::cos(i / 7.0));
        cosPhi.push_back(i == 40 ? NoValue : 0.9 + 0.08 * std::sin(i / 10.0));
    }
    auto first = Computed("kW", load);
    auto second = Computed("kW", base);
    auto third = Computed("cos phi", cosPhi, 1, true);
    first->SetName("Main meter");
    second->SetName("Hall 2");
    third->SetName("Power factor");
    second->Properties().Color = CurveColors::Rgb(0, 128, 0);
    third->Properties().Color = CurveColors::Rgb(0, 0, 255);
    first->FindStatistic("1")->SetUsed(true);
    first->FindStatistic("3")->SetUsed(true);
    chart.resize(1000, 600);
    chart.SetAxisRange(ChartAxis::X, 1, 96);
    chart.SetAxisRange(ChartAxis::Y1, 0, 110);
    chart.SetAxisRange(ChartAxis::Y2, 0.7, 1.0);
    GraphProperties { .Legend = true, .Title = "%NAME%" }.Apply(
        &chart, { .customerName = {}, .name = "Works, 3 February 2009" });
    for (Curve* curve : { first.get(), second.get(), third.get() })
        curve->UpdateChart(&chart, false);
    chart.Replot();
    first->SetCursor(20, &chart, &chart.Annotations(), 0);
    first->SetCursor(70, &chart, &chart.Annotations(), 0)->SetBoxPosition("-60;-90;175;20");
    first->UpdateChart(nullptr, false); // puts the cursors back, the second box where it was left
    const QImage picture = chart.ToImage(1000, 600);
    if (const QString folder = qEnvironmentVariable("SORANO_TEST_PICTURES"); !folder.isEmpty())
        picture.save(folder + "/curves-chart.png");

    // Lines are smoothed, so a pixel counts when it lies near the wanted colour.
    const auto countColour = [&](QRgb wanted) {
        int count = 0;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x) {
                const QRgb p = picture.pixel(x, y);
                count += std::abs(qRed(p) - qRed(wanted)) + std::abs(qGreen(p) - qGreen(wanted))
                        + std::abs(qBlue(p) - qBlue(wanted))
                    < 90;
            }
        return count;
    };
    EXPECT_GT(countColour(qRgb(255, 0, 0)), 1000) << "curve, maximum and minimum lines";
    EXPECT_GT(countColour(qRgb(0, 128, 0)), 200);
    EXPECT_GT(countColour(qRgb(0, 0, 255)), 200);
    EXPECT_GT(countColour(qRgb(0xFF, 0xFF, 0xCF)), 2 * 200) << "two cursor boxes";
    const QPointF mark = chart.PointToPixel(21, load[20], ChartAxis::Y1);
    EXPECT_EQ(picture.pixelColor(mark.toPoint() + QPoint(5, 0)), QColor(0x50, 0x50, 0x50)) << "the cross of cursor 1";
    const Cursor& cursor2 = *first->Cursors()[1];
    EXPECT_DOUBLE_EQ(cursor2.Box()->Top(), cursor2.Top() - 90);
    EXPECT_LT(cursor2.Connector()->Height(), -60) << "the connector reaches up to the moved box";
}

} // namespace
