// SPDX-License-Identifier: GPL-3.0-or-later
// The chart over real plot objects: values, styles, axes, conversions, hit tests and pictures.
#include "ChartAdapter.h"
#include "ChartAnnotation.h"

#include <QApplication>
#include <QPainter>
#include <QPicture>
#include <QTemporaryDir>
#include <qcustomplot.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <tuple>
#include <utility>
#include <vector>

namespace {

constexpr double Hidden = ChartAdapter::HiddenPoint;

// Mostly red, green or blue (0, 1, 2).
auto Primary(int i)
{
    return [i](const QColor& pixel) {
        const int rgb[] = { pixel.red(), pixel.green(), pixel.blue() };
        return rgb[i] > 150 && rgb[i] - std::max(rgb[(i + 1) % 3], rgb[(i + 2) % 3]) > 60;
    };
}

class ChartAdapterTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        chart.resize(800, 500);
        chart.show();
    }
    QCPGraph* Graph(int series) const { return chart.Plot()->graph(series); }
    void Show(double xMax, double yMax)
    {
        chart.SetAxisRange(ChartAxis::X, 1, xMax);
        chart.SetAxisRange(ChartAxis::Y1, 0, yMax);
        chart.Replot();
    }

    // True when a pixel within `radius` of `at` shows mostly the primary colour given (lines are antialiased).
    static bool HasColorNear(const QImage& image, QPointF at, Qt::GlobalColor color, int radius = 2)
    {
        const auto match = Primary(color == Qt::red ? 0 : color == Qt::green ? 1 : 2);
        for (int dy = -radius; dy <= radius; ++dy)
            for (int dx = -radius; dx <= radius; ++dx)
                if (match(image.pixelColor(int(at.x()) + dx, int(at.y()) + dy)))
                    return true;
        return false;
    }

    // Date-wide X labels over a day of minutes, with as many evenly spaced ticks as the room allows.
    static void DayAxis(ChartAdapter& target)
    {
        target.SetLabelHandler([](int axis, double, const QString& text) {
            return axis == ChartAxis::X ? QStringLiteral("31.12. 23:45") : text;
        });
        target.SetXTickHandler([](double lower, double upper, int most) {
            std::vector<double> at;
            const double step = std::ceil((upper - lower) / most);
            for (double p = std::ceil(lower); p <= upper; p += step)
                at.push_back(p);
            return at;
        });
        target.SetAxisRange(ChartAxis::X, 1, 1441);
        target.SetAxisRange(ChartAxis::Y1, 0, 100);
    }

    // Columns crossed by a vertical grid line: mostly the grid colour from top to bottom.
    static std::vector<int> GridColumns(const QImage& image)
    {
        std::vector<int> columns;
        for (int x = 0; x < image.width(); ++x) {
            int grid = 0;
            for (int y = 0; y < image.height(); ++y)
                grid += image.pixelColor(x, y) == QColor(200, 200, 200);
            if (grid > image.height() / 4)
                columns.push_back(x);
        }
        return columns;
    }

    ChartAdapter chart;
};

TEST_F(ChartAdapterTest, ValuesRoundTripInPlaceWithHiddenPointsAsGapsAndSurviveResizing)
{
    constexpr int n = 1000;
    chart.OpenData(1, n);
    const QCPGraphData* first = &*Graph(0)->data()->constBegin();
    std::vector<double> values(n);
    for (int i = 0; i < n; ++i)
        values[size_t(i)] = i * 0.5;
    values[10] = Hidden;
    chart.SetValues(0, values);
    EXPECT_EQ(&*Graph(0)->data()->constBegin(), first);
    EXPECT_TRUE(chart.Value(0, 999) == 499.5 && Graph(0)->data()->at(999)->key == 1000); // points count from 1
    EXPECT_TRUE(std::isnan(Graph(0)->data()->at(10)->value) && chart.Value(0, 10) == Hidden);
    chart.SetValues(0, std::vector<double> { -1, -2 }); // a shorter span rewrites its prefix only
    chart.SetValue(0, 3, 3.5);
    EXPECT_TRUE(chart.Value(0, 1) == -2.0 && chart.Value(0, 2) == 1.0 && chart.Value(0, 3) == 3.5);
    // Out of range: ignored, neutral answers.
    chart.SetValue(0, n, 1.0);
    chart.SetValue(7, 0, 1.0);
    EXPECT_TRUE(chart.Value(0, n) == 0.0 && chart.Value(-1, 0) == 0.0 && Graph(0)->data()->size() == n);

    chart.OpenData(3, n + 5); // new points start hidden
    ASSERT_EQ(chart.Plot()->graphCount(), 3);
    EXPECT_TRUE(chart.Value(0, 2) == 1.0 && chart.Value(0, n) == Hidden && chart.Value(2, 0) == Hidden);
    chart.OpenData(1, 2);
    EXPECT_TRUE(chart.Plot()->graphCount() == 1 && Graph(0)->data()->size() == 2 && chart.Value(0, 1) == -2.0);
}

TEST_F(ChartAdapterTest, ValueRangeSpansTheShownValuesOfOneAxis)
{
    chart.OpenData(3, 4);
    chart.SetValues(0, std::vector<double> { Hidden, 2, -3, Hidden });
    chart.SetValues(1, std::vector<double> { 7, Hidden, 0.5, Hidden });
    chart.SetValues(2, std::vector<double> { 100, 200, 300, 400 });
    chart.SetSeriesAxis(2, ChartAxis::Y2);
    const auto range = [&](int axis, double min, double max) {
        const bool found = chart.ValueRange(axis, min, max);
        return std::tuple(found, min, max);
    };
    EXPECT_EQ(range(ChartAxis::Y1, 0, 0), std::tuple(true, -3.0, 7.0));
    EXPECT_EQ(range(ChartAxis::Y2, 0, 0), std::tuple(true, 100.0, 400.0));
    chart.SetValues(2, std::vector<double>(4, Hidden));
    EXPECT_EQ(range(ChartAxis::Y2, -1, 1), std::tuple(false, -1.0, 1.0)) << "only gaps: the bounds stay";
}

TEST_F(ChartAdapterTest, GalleriesAndStylesMapToGraphStylesAndTheLegendListsVisibleSeries)
{
    chart.OpenData(4, 10);
    chart.SetSeriesGallery(0, ChartGallery::Marker);
    EXPECT_TRUE(
        Graph(0)->lineStyle() == QCPGraph::lsNone && Graph(0)->scatterStyle().shape() != QCPScatterStyle::ssNone);

    chart.SetSeriesGallery(1, ChartGallery::Bar);
    EXPECT_TRUE(Graph(1)->lineStyle() == QCPGraph::lsStepCenter && Graph(1)->brush().style() != Qt::NoBrush);
    Show(100000, 10); // bars too dense to fill one by one
    EXPECT_EQ(Graph(1)->lineStyle(), QCPGraph::lsImpulse);
    Show(10, 10);
    EXPECT_EQ(Graph(1)->lineStyle(), QCPGraph::lsStepCenter);

    chart.SetSeriesGallery(2, ChartGallery::Lines);
    chart.SetGallery(ChartGallery::Step); // series 3 follows the chart
    EXPECT_TRUE(Graph(2)->lineStyle() == QCPGraph::lsLine && Graph(3)->lineStyle() == QCPGraph::lsStepLeft);
    chart.SetSeriesLineStyle(2, ChartLineStyle::DashDot);
    EXPECT_EQ(Graph(2)->pen().style(), Qt::DashDotLine);

    for (int series = 0; series < 4; ++series)
        chart.SetSeriesLegend(series, QStringLiteral("P%1").arg(series + 1));
    chart.SetSeriesVisible(1, false);
    chart.SetLegend(true);
    QCPLegend* legend = chart.Plot()->legend;
    EXPECT_EQ(legend->itemCount(), 3);
    EXPECT_TRUE(legend->hasItemWithPlottable(Graph(0)) && !legend->hasItemWithPlottable(Graph(1)));
    EXPECT_EQ(Graph(2)->name(), QStringLiteral("P3"));
}

TEST_F(ChartAdapterTest, PixelConversionsRoundTripOnBothAxesAndTheSecondAxisAppearsWithItsFirstSeries)
{
    chart.OpenData(2, 10);
    EXPECT_FALSE(chart.AxisVisible(ChartAxis::Y2));
    chart.SetSeriesAxis(1, ChartAxis::Y2);
    EXPECT_TRUE(chart.AxisVisible(ChartAxis::Y2) && Graph(1)->valueAxis() == chart.Plot()->yAxis2);
    chart.SetAxisRange(ChartAxis::Y2, -50, 50);
    Show(101, 10);
    double x = 0, y = 0;
    for (int axis : { ChartAxis::Y1, ChartAxis::Y2 }) {
        const QPointF pixel = chart.PointToPixel(20, 5, axis);
        ASSERT_TRUE(chart.PlotArea().contains(pixel.toPoint()));
        ASSERT_TRUE(chart.PixelToValue(pixel, axis, x, y));
        EXPECT_TRUE(std::abs(x - 20) < 1e-9 && std::abs(y - 5) < 1e-9) << axis << ": " << x << ' ' << y;
    }
    EXPECT_NE(chart.PointToPixel(20, 5, ChartAxis::Y1).y(), chart.PointToPixel(20, 5, ChartAxis::Y2).y());
    EXPECT_FALSE(chart.PixelToValue(QPointF(1, 1), ChartAxis::Y1, x, y));
}

TEST_F(ChartAdapterTest, HitTestFindsNearestVisiblePoint)
{
    chart.OpenData(2, 100);
    std::vector<double> rising(100), flat(100, 80.0);
    std::iota(rising.begin(), rising.end(), 0.0);
    chart.SetValues(0, rising);
    chart.SetValues(1, flat);
    Show(100, 100);
    const QPointF near30 = chart.PointToPixel(31, 30, ChartAxis::Y1) + QPointF(2, -1);
    const ChartHit hit = chart.HitTest(near30);
    EXPECT_TRUE(hit.kind == ChartHit::Point && hit.series == 0 && hit.point == 30) << hit.series << ' ' << hit.point;
    chart.SetValue(0, 30, Hidden);
    EXPECT_EQ(chart.HitTest(near30).kind, ChartHit::PlotArea);
    chart.SetValue(0, 30, 30);
    chart.SetSeriesVisible(0, false);
    EXPECT_EQ(chart.HitTest(near30).kind, ChartHit::PlotArea);
    const ChartHit flatHit = chart.HitTest(chart.PointToPixel(61, 80, ChartAxis::Y1));
    EXPECT_TRUE(flatHit.series == 1 && flatHit.point == 60) << flatHit.series << ' ' << flatHit.point;
    EXPECT_EQ(chart.HitTest(QPointF(1, 1)).kind, ChartHit::None);
}

TEST_F(ChartAdapterTest, LabelAndTickHandlersShapeTheAxes)
{
    // Wide X labels get fewer ticks, so that they stand side by side; the handler sees point numbers.
    const QString wide = QStringLiteral("31.12.2009 23:45");
    chart.SetLabelHandler([&](int axis, double value, const QString& text) {
        EXPECT_TRUE(axis != ChartAxis::X || value == std::round(value)) << value;
        return axis == ChartAxis::X ? wide : QStringLiteral("<%1>").arg(text);
    });
    chart.SetAxisRange(ChartAxis::X, 1, 10000);
    chart.resize(500, 300);
    chart.Replot();
    chart.Replot(); // the second pass lays out with the first pass's labels
    QCPAxis& x = *chart.Plot()->xAxis;
    ASSERT_FALSE(x.tickVectorLabels().isEmpty());
    EXPECT_EQ(x.tickVectorLabels().first(), wide);
    EXPECT_TRUE(chart.Plot()->yAxis->tickVectorLabels().first().startsWith(QLatin1Char('<')));
    const int labelWidth = QFontMetrics(x.tickLabelFont()).horizontalAdvance(wide);
    const int ticks = static_cast<int>(x.tickVector().size());
    EXPECT_LE(ticks * labelWidth, x.axisRect()->width()) << ticks << " labels";

    // A tick handler places the X ticks, within the room the labels leave.
    int room = 0;
    chart.SetXTickHandler([&](double lower, double upper, int most) {
        room = most;
        std::vector<double> at;
        for (double p = std::ceil(lower); p <= upper; p += 96)
            at.push_back(p + 3);
        return at;
    });
    chart.SetAxisRange(ChartAxis::X, 1, 500);
    chart.Replot();
    EXPECT_GE(room, 1);
    EXPECT_LE(room * labelWidth, x.axisRect()->width());
    EXPECT_EQ(x.tickVector(), QVector<double>({ 4, 100, 196, 292, 388, 484 }));
    // A handler with no ticks leaves the chart's own.
    chart.SetXTickHandler([](double, double, int) { return std::vector<double>(); });
    chart.Replot();
    EXPECT_FALSE(x.tickVector().isEmpty());
    EXPECT_NE(x.tickVector().first(), 4);
}

TEST_F(ChartAdapterTest, XTicksNeverGetFewerWhenTheChartGetsWider)
{
    // Widths in a mixed order: each is drawn by the replot its resize brings, right after another size.
    DayAxis(chart);
    std::map<int, qsizetype> ticks;
    for (const int width : { 1600, 600, 2000, 900, 1200, 300, 1400 }) {
        chart.resize(width, 400);
        QApplication::processEvents();
        ASSERT_EQ(chart.Plot()->viewport().width(), width);
        ticks[width] = qsizetype(chart.AxisTickValues(ChartAxis::X).size());
    }
    qsizetype fewer = 0;
    for (const auto& [width, count] : ticks) {
        EXPECT_GE(count, fewer) << width << " pixels";
        fewer = count;
    }
    EXPECT_GT(ticks[2000], ticks[300]);
}

TEST_F(ChartAdapterTest, PicturesTakeTheTicksTheWidgetHasInTheirSize)
{
    DayAxis(chart);
    chart.resize(1200, 500);
    QApplication::processEvents();
    chart.Replot();
    const std::vector<int> shown = GridColumns(chart.grab().toImage());
    ASSERT_GE(shown.size(), 5u);

    // A chart never shown, and one shown in another size.
    ChartAdapter headless;
    DayAxis(headless);
    EXPECT_EQ(GridColumns(headless.ToImage(1200, 500)), shown);
    chart.resize(500, 300);
    QApplication::processEvents();
    EXPECT_EQ(GridColumns(chart.ToImage(1200, 500)), shown);
}

TEST_F(ChartAdapterTest, NewAxisRangeIsDrawnOnceAtTheNextEventLoopTurn)
{
    chart.OpenData(1, 100);
    std::vector<double> ramp(100);
    std::iota(ramp.begin(), ramp.end(), 0.0);
    chart.SetValues(0, ramp);
    Show(100, 200);
    QApplication::processEvents();
    int replots = 0;
    QObject::connect(chart.Plot(), &QCustomPlot::afterReplot, [&] { ++replots; });
    const QImage before = chart.grab().toImage();

    chart.SetAxisRange(ChartAxis::Y1, 0, 100);
    chart.SetAxisMax(ChartAxis::Y2, 7);
    QApplication::processEvents();
    EXPECT_EQ(replots, 1);
    EXPECT_TRUE(chart.grab().toImage() != before) << "the new range is drawn";

    // A replot right after the change is the only one.
    chart.SetAxisRange(ChartAxis::Y1, 0, 50);
    chart.Replot();
    QApplication::processEvents();
    EXPECT_EQ(replots, 2);
}

TEST_F(ChartAdapterTest, ValueTicksKeepTheDecimalsOfTheirNeighbours)
{
    // About 0.027 a tick would round to 0.025, whose labels need a third decimal.
    chart.SetAxisRange(ChartAxis::Y1, -0.03, 0.105);
    chart.SetAxisRange(ChartAxis::Y2, 0, 135);
    chart.Replot();
    const QVector<double> low = chart.Plot()->yAxis->tickVector(), high = chart.Plot()->yAxis2->tickVector();
    ASSERT_TRUE(low.size() >= 4 && high.size() >= 2) << low.size() << ' ' << high.size();
    for (const double tick : low)
        EXPECT_NEAR(tick * 100, std::round(tick * 100), 1e-6) << tick;
    EXPECT_NEAR(low[1] - low[0], 0.02, 1e-12);
    EXPECT_NEAR(high[1] - high[0], 20, 1e-9);
}

TEST_F(ChartAdapterTest, PicturesAndSvgShowOnlyShownConstantLinesAndTheAnnotations)
{
    chart.OpenData(1, 100);
    const int line = chart.AddConstantLine();
    chart.SetConstantLineAxis(line, ChartAxis::X);
    chart.SetConstantLineValue(line, 80);
    chart.SetConstantLineColor(line, Qt::green);
    ChartAnnotation* box = chart.Annotations().AddText();
    box->SetText(QStringLiteral("Peak load"));
    box->SetGeometry(100, 100, 80, 30);
    Show(100, 10);
    const QPointF onLine = chart.PointToPixel(80, 8, ChartAxis::Y1);
    EXPECT_FALSE(HasColorNear(chart.ToImage(800, 500), onLine, Qt::green)) << "a new line starts hidden";
    chart.SetConstantLineHidden(line, false);
    chart.Replot();
    EXPECT_TRUE(HasColorNear(chart.ToImage(800, 500), onLine, Qt::green));
    QTemporaryDir dir;
    ASSERT_TRUE(chart.SaveSvg(dir.filePath(QStringLiteral("chart.svg")), 640, 400));
    QFile svg(dir.filePath(QStringLiteral("chart.svg")));
    EXPECT_TRUE(svg.open(QIODevice::ReadOnly) && svg.readAll().contains("Peak load"));
}

// The lengths of the runs of pixels in a row or column for which `match` holds.
template<typename Match> std::vector<int> Runs(const QImage& image, int at, Qt::Orientation along, Match match)
{
    const int length = along == Qt::Horizontal ? image.width() : image.height();
    std::vector<int> runs;
    for (int i = 0, run = 0; i <= length; ++i) {
        const bool in
            = i < length && match(along == Qt::Horizontal ? image.pixelColor(i, at) : image.pixelColor(at, i));
        if (in)
            ++run;
        else if (run > 0)
            runs.push_back(std::exchange(run, 0));
    }
    return runs;
}

int LongestRun(const std::vector<int>& runs)
{
    return runs.empty() ? 0 : *std::max_element(runs.begin(), runs.end());
}

TEST_F(ChartAdapterTest, DrawnPicturesScaleTheirLinesWithTheChartAndTheScreenPensStay)
{
    chart.OpenData(1, 100);
    chart.SetValues(0, std::vector<double>(100, 5.0));
    chart.SetSeriesColor(0, Qt::red);
    chart.SetSeriesLineWidth(0, 2);
    const int line = chart.AddConstantLine();
    chart.SetConstantLineAxis(line, ChartAxis::X);
    chart.SetConstantLineValue(line, 80);
    chart.SetConstantLineColor(line, Qt::green);
    chart.SetConstantLineWidth(line, 2);
    chart.SetConstantLineHidden(line, false);
    ChartAnnotation* stroke = chart.Annotations().AddLine();
    stroke->SetColor(Qt::blue);
    stroke->SetLineWidth(2);
    stroke->SetGeometry(20, 40, 100, 0);
    chart.SetAxisGridStyle(ChartAxis::X, ChartLineStyle::Dot);
    Show(100, 10);
    const QPen curvePen = Graph(0)->pen(), gridPen = chart.Plot()->xAxis->grid()->pen();
    ASSERT_TRUE(curvePen.isCosmetic() && gridPen.isCosmetic());

    // Played ten times its size, as a report plays it onto a fine printer.
    QPicture picture;
    QPainter recorder(&picture);
    chart.Draw(recorder, 400, 250);
    recorder.end();
    QImage image(4000, 2500, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter player(&image);
    player.scale(10, 10);
    player.drawPicture(0, 0, picture);
    player.end();

    const int curve = LongestRun(Runs(image, 2000, Qt::Vertical, Primary(0)));
    const int constant = LongestRun(Runs(image, 750, Qt::Horizontal, Primary(1)));
    const int annotation = LongestRun(Runs(image, 700, Qt::Vertical, Primary(2)));
    for (const int thickness : { curve, constant, annotation })
        EXPECT_TRUE(thickness >= 16 && thickness <= 24) << curve << ' ' << constant << ' ' << annotation;

    // The X grid stays dotted: dots of the scaled pen width, never one line.
    int gridColumn = 0, most = 0;
    for (int x = 0; x < image.width(); ++x) {
        int grid = 0;
        for (int y = 0; y < image.height(); ++y)
            grid += image.pixelColor(x, y) == QColor(200, 200, 200);
        if (grid > most)
            std::tie(gridColumn, most) = std::pair(x, grid);
    }
    const std::vector<int> dots
        = Runs(image, gridColumn, Qt::Vertical, [](const QColor& c) { return c == QColor(200, 200, 200); });
    const auto scaled = std::count_if(dots.begin(), dots.end(), [](int dot) { return dot >= 15 && dot <= 25; });
    EXPECT_GT(scaled, 30) << dots.size() << " dots at " << gridColumn << ", the longest " << LongestRun(dots);

    EXPECT_EQ(Graph(0)->pen(), curvePen);
    EXPECT_TRUE(Graph(0)->pen().isCosmetic());
    EXPECT_EQ(chart.Plot()->xAxis->grid()->pen(), gridPen);
}

} // namespace
