// SPDX-License-Identifier: GPL-3.0-or-later
// Curves: their channels summed on the common grid, statistics, drawing into the chart, cursors
// and the statistic tree. Channels hold 15-minute samples from 2009-02-03 00:00.
#include "Curve.h"
#include "Calendar.h"
#include "ChannelTree.h"
#include "ChartAdapter.h"
#include "ChartAnnotation.h"
#include "Cursor.h"
#include "DataMatrix.h"
#include "GraphProperties.h"
#include "LogCapture.h"
#include "MatrixScriptEngine.h"
#include "QtPrinters.h"
#include "Statistic.h"
#include "TempSettings.h"
#include "TimeValueTransformator.h"

#include <QLocale>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numeric>
#include <tuple>
#include <vector>

namespace {

class CurveFixture : public ::testing::Test
{
protected:
    static constexpr double NoValue = MatrixBlock::DefaultNoValue;
    static constexpr double Quarter = 15.0 / 1440.0;

    void SetUp() override
    {
        QLocale::setDefault(QLocale::c());
        g_cScriptEngine = &engine;
    }
    void TearDown() override { g_cScriptEngine = nullptr; }

    static double Start() { return Calendar::FromParts(2009, 2, 3); }
    static DataMatrixPtr Channel(qint32 address, const QString& id, const QString& name, const QString& unit,
        const std::vector<double>& values, qint32 type = 3)
    {
        auto matrix = std::make_shared<DataMatrix>();
        matrix->SetModuleAddress(address);
        matrix->SetChannelID(id);
        matrix->SetChannelName(name);
        matrix->SetUnit(unit);
        matrix->SetDataType(type);
        auto block = MatrixBlock::Create(static_cast<qsizetype>(values.size()), 2);
        for (size_t i = 0; i < values.size(); ++i) {
            block->At(static_cast<qsizetype>(i), 0) = Start() + static_cast<double>(i) * Quarter;
            block->At(static_cast<qsizetype>(i), 1) = values[i];
        }
        matrix->SetDataBlock(block);
        return matrix;
    }

    static void Use(Curve& curve, std::initializer_list<const char*> ids, bool used = true)
    {
        for (const char* id : ids)
            curve.FindStatistic(id)->SetUsed(used);
    }

    // Puts the curve on a quarter-hour grid of that many rows.
    qint32 Compute(Curve& curve, int rows)
    {
        grid.Init(Start(), Start() + rows * Quarter, QStringLiteral("n"), 15, true);
        return curve.UpdateData(Start(), Start() + 1, grid);
    }

    TempSettings roots;
    LogCapture log { roots };
    MatrixScriptEngine engine;
    TimeValueTransformator grid;
};

using CurveTest = CurveFixture;
const QString MaximumKey = "Software\\HARVOLD\\Sorano\\Indizes\\Maximum";

TEST_F(CurveTest, ChannelsAreSummedOnTheGridAndStatisticsTaken)
{
    roots.SetUser("Software\\HARVOLD\\Sorano\\Indizes\\Average", "FormatNumber", "0.0 X");
    Curve curve;
    EXPECT_EQ(curve.FindStatistic("2")->NumberFormat(), "0.0 X") << "formats come from the settings";
    curve.AddMatrix(Channel(7, "0", "P", "kW", { 1, 2, 3, 4 }));
    curve.AddMatrix(Channel(7, "1", "P", "kW", { 10, NoValue, 30, 40 }, 5));
    curve.AddMatrix(Channel(7, "2", "P", "kW", { 100, 200, 300, 400 }, 5));
    curve.FindStatistic("2")->SetFormulaValue("RESULT = mean(");
    Use(curve, { "1", "2", "5" });
    ASSERT_EQ(Compute(curve, 4), 0);
    ASSERT_TRUE(curve.Result());
    EXPECT_EQ(curve.Result()->DataType(), 3) << "the first channel's type";
    const MatrixBlock& result = *curve.Result()->DataBlock();
    ASSERT_EQ(result.Rows(), 4);
    const double sums[] = { 111, result.NoValue(), 333, 444 };
    for (qsizetype row = 0; row < 4; ++row) {
        EXPECT_EQ(result.At(row, 0), Start() + double(row) * Quarter);
        EXPECT_EQ(result.At(row, 1), sums[row]) << row;
    }
    EXPECT_EQ(curve.Channels()[2].matrix->DataBlock()->Name(), "CHANNEL_2");
    EXPECT_EQ(curve.FindStatistic("1")->Value(), 444);
    EXPECT_EQ(curve.FindStatistic("5")->Value(), 3) << "rows with a gap are not counted";
    EXPECT_FALSE(curve.FindStatistic("2")->Visible()) << "a failing statistic is hidden";
    EXPECT_TRUE(curve.FindStatistic("1")->Visible());
    EXPECT_TRUE(curve.FindStatistic("4")->Stale()) << "a statistic nobody shows waits until it is asked for";
    curve.RefreshStatistic(*curve.FindStatistic("4"));
    EXPECT_EQ(curve.FindStatistic("4")->Value(), 111 + 333 + 444);
}

TEST_F(CurveTest, CurveWithoutChannelsHasNoResultAndKeepsStatistics)
{
    Curve curve;
    curve.FindStatistic("1")->SetValue(9.0);
    EXPECT_NE(Compute(curve, 4), 0);
    EXPECT_FALSE(curve.Result());
    EXPECT_EQ(curve.FindStatistic("1")->Value(), 9.0);

    // The later steps of a refresh take a curve without result in their stride.
    ChartAdapter chart;
    QTreeWidget tree;
    EXPECT_EQ(curve.UpdateChart(&chart, true), 0);
    EXPECT_EQ(curve.UpdateStatistic(&tree), 0);
    EXPECT_EQ(tree.topLevelItemCount(), 1);
    EXPECT_EQ(curve.SetCursor(3, &chart, &chart.Annotations(), 0)->Index(), -1) << "no row to stand on";
}

TEST_F(CurveTest, AddingAChannelTwiceLogsAndKeepsOne)
{
    Curve curve;
    curve.AddMatrix(Channel(3, "L1#2", "Feed A", "kW", { 1 }));
    curve.AddMatrix(Channel(3, "L1#5", "Feed B", "kVA", { 1 }));
    EXPECT_EQ(curve.Name(), "Feed B") << "every channel added names the curve";
    curve.AddMatrix(Channel(3, "L1#2", "Feed A", "kW", { 1 }));
    ASSERT_EQ(curve.Channels().size(), 2u);
    EXPECT_TRUE(log.Has("Curve.AddMatrix", "error adding matrix to curve",
        "The matrix from module 3 with the channel-id L1#2 (Feed A) caused an error This key is already "
        "associated with an element of this collection (457) when adding it to the curve Feed B."));
}

class StatisticTest : public CurveFixture
{
protected:
    Statistic Maximum()
    {
        Statistic statistic;
        statistic.SetFormulaValue("RESULT = max(cols(DATA, 1, 1))");
        statistic.SetFormulaTime("RESULT = max_at(cols(DATA, 1, 1))");
        statistic.ReadFromRegistry(Hive::CurrentUser, MaximumKey, "0.00 X");
        return statistic;
    }
};

TEST_F(StatisticTest, MaximumFindsValueRowAndTimeWithFormatsFromTheSettings)
{
    Statistic statistic = Maximum();
    statistic.SetValueTime(Start());
    EXPECT_EQ(statistic.Update(MatrixBlock::Create(0, 2)), StatisticStatus::Ok);
    EXPECT_EQ(statistic.FormatedValue("kW"), "0.00 kW") << "an empty grid: no value, no time, no date";

    const auto data = Channel(1, "1", "P", "kW", { 3.0, 12.5, NoValue, 7.0 })->DataBlock();
    ASSERT_EQ(statistic.Update(data), StatisticStatus::Ok);
    EXPECT_EQ(statistic.ValueRow(), 1);
    EXPECT_EQ(statistic.FormatedValue("kW"), "12.50 kW (03.02.2009 00:15)");

    roots.SetUser(MaximumKey, "FormatNumber", "0.000");
    roots.SetUser(MaximumKey, "FormatDate", "dd.mm.");
    statistic.ReadFromRegistry(Hive::CurrentUser, MaximumKey, "0 X");
    EXPECT_EQ(statistic.FormatedValue("kW"), "12.500 03.02.");
    roots.SetUser(MaximumKey, "UseDate", "0");
    statistic.ReadFromRegistry(Hive::CurrentUser, MaximumKey, "0 X");
    EXPECT_EQ(statistic.FormatedValue("kW"), "12.500");
}

TEST_F(StatisticTest, FailuresGiveTheirStatusAndLogLine)
{
    Statistic statistic = Maximum();
    EXPECT_EQ(statistic.Update(nullptr), StatisticStatus::NoData);
    EXPECT_TRUE(log.Has("Statistic.Update", "invalid data-matrix", "There was an invalid reference to a data-matrix."));

    const auto data = Channel(1, "1", "P", "kW", { 1.0, 2.0 })->DataBlock();
    ASSERT_EQ(statistic.Update(data), StatisticStatus::Ok);
    const double time = statistic.ValueTime();
    statistic.SetFormulaTime("RESULT = nosuch(DATA)");
    EXPECT_EQ(statistic.Update(data), StatisticStatus::ScriptFailed);
    EXPECT_EQ(statistic.ValueTime(), time) << "a failed time script keeps the time";
    EXPECT_TRUE(log.From("Statistic.Update").last().startsWith("Error executing statistic script (time). - "));

    statistic.SetFormulaValue("");
    statistic.SetValue(5.0);
    EXPECT_EQ(statistic.Update(data), StatisticStatus::ScriptFailed) << "the time script still fails";
    EXPECT_EQ(statistic.Value(), 0.0);
    statistic.SetFormulaTime("");
    EXPECT_EQ(statistic.Update(data), StatisticStatus::NoScript);
}

TEST_F(StatisticTest, FormatReplacesEveryXByTheQuotedUnit)
{
    Statistic statistic;
    statistic.SetValue(1234.5);
    // Plain text substitution, also inside quoted literals.
    for (const auto& [format, unit, text] : { std::tuple("0.00 X", "", "1234.50 "),
             std::tuple("0 X (X)", "V", "1235 V (V)"), std::tuple("0 \"MAX\"", "kW", "1235 MAkW") }) {
        statistic.SetNumberFormat(format);
        EXPECT_EQ(statistic.FormatedValue(unit), text) << format;
    }
    statistic.SetNumberFormat("0.00");
    EXPECT_EQ(statistic.FormatedValue("", 2.0), "2.00") << "a value argument other than 0 shows instead";
    statistic.SetValue(1e308);
    EXPECT_EQ(statistic.FormatedValue(""), "0.00");
    EXPECT_EQ(statistic.Value(), 0.0) << "a hidden-point value is reset";
}

class CurveChartTest : public CurveFixture
{
protected:
    std::unique_ptr<Curve> Computed(
        const QString& unit, const std::vector<double>& values, qint16 axis = -1, bool fixed = false)
    {
        auto curve = std::make_unique<Curve>();
        curve->AddMatrix(Channel(1, unit + QString::number(++channels), "Curve " + unit, unit, values));
        curve->SetYAxis(axis);
        curve->SetFixedAxis(fixed);
        EXPECT_EQ(Compute(*curve, static_cast<int>(values.size())), 0);
        return curve;
    }

    ChartAdapter chart;
    int channels = 0;
};

TEST_F(CurveChartTest, ValuesGapsAndFittedRange)
{
    EXPECT_EQ(Curve().UpdateChart(nullptr, true), Curve::NoView);
    chart.SetAxisRange(ChartAxis::Y1, 0, 1);
    auto curve = Computed("kW", { 5, NoValue, 20, 7 });
    ASSERT_EQ(curve->UpdateChart(&chart, true), 0);
    ASSERT_EQ(chart.PointCount(), 4);
    EXPECT_EQ(chart.Value(0, 1), ChartAdapter::HiddenPoint);
    EXPECT_EQ(chart.Value(0, 2), 20);
    EXPECT_EQ(std::pair(chart.AxisMin(ChartAxis::Y1), chart.AxisMax(ChartAxis::Y1)), std::pair(0.0, 20.0));
    EXPECT_EQ(chart.SeriesLegend(0), "Curve kW (kW)");
    curve->SetVisible(false);
    curve->UpdateChart(nullptr, false);
    EXPECT_FALSE(chart.SeriesVisible(0)) << "the chart is remembered";

    auto empty = Computed("kW", { NoValue, NoValue, NoValue, NoValue });
    chart.SetAxisRange(ChartAxis::Y1, -3, 3);
    ASSERT_EQ(empty->UpdateChart(&chart, true), 0);
    EXPECT_EQ(std::pair(chart.AxisMin(ChartAxis::Y1), chart.AxisMax(ChartAxis::Y1)), std::pair(-3.0, 3.0))
        << "nothing to fit leaves the axis";
}

TEST_F(CurveChartTest, AxisTitlesCollectUnits)
{
    auto first = Computed("kW", { 1, 2 });
    auto second = Computed("kW", { 1, 2 }, 1);
    auto volts = Computed("V", { 1, 2 }, 1);
    auto cosPhi = Computed("cos", { 1, 2 }, 1, true);
    for (Curve* curve : { first.get(), second.get(), volts.get(), cosPhi.get() })
        curve->UpdateChart(&chart, false);
    EXPECT_EQ(second->YAxis(), 0) << "a unit already on the first axis stays there";
    EXPECT_EQ(volts->YAxis(), 0) << "a new unit reaches the second axis only when fixed there";
    EXPECT_EQ(cosPhi->YAxis(), 1);
    EXPECT_EQ(chart.AxisTitle(ChartAxis::Y1), "kW / kW / V");
    EXPECT_EQ(chart.AxisTitle(ChartAxis::Y2), "cos");

    ChartAdapter other;
    auto only = Computed("kW", { 1, 2 }, 0);
    only->UpdateChart(&other, false);
    only->SetYAxis(1);
    EXPECT_EQ(other.AxisTitle(ChartAxis::Y1) + "|" + other.AxisTitle(ChartAxis::Y2), "|kW") << "moved with its unit";
    only->SetYAxis(2);
    only->SetYAxis(-1);
    EXPECT_EQ(only->YAxis(), 1) << "only the axes 0 and 1 are taken";
}

TEST_F(CurveChartTest, ConstantLinesFollowUsedAndVisibleStatistics)
{
    auto curve = Computed("kW", { 4, 8, 6 });
    curve->Properties().Color = CurveColors::Rgb(0, 0, 255);
    Use(*curve, { "1", "2", "4" }); // 4 is text only: no line
    curve->UpdateChart(&chart, false);
    ASSERT_EQ(chart.ConstantLineCount(), 2);
    const int maxLine = curve->FindStatistic("1")->ConstantLine();
    const int meanLine = curve->FindStatistic("2")->ConstantLine();
    EXPECT_EQ(chart.ConstantLineValue(meanLine), 6);
    EXPECT_EQ(chart.ConstantLineColor(maxLine), QColor(Qt::blue)) << "in the curve's colour";
    EXPECT_FALSE(chart.ConstantLineHidden(maxLine) || chart.ConstantLineHidden(meanLine));

    curve->FindStatistic("2")->SetVisible(false);
    curve->UpdateChart(nullptr, false);
    EXPECT_TRUE(chart.ConstantLineHidden(meanLine));
    curve->SetVisible(false);
    curve->UpdateChart(nullptr, false);
    EXPECT_TRUE(chart.ConstantLineHidden(maxLine));

    curve->SetVisible(true);
    curve->FindStatistic("1")->SetUsed(false);
    curve->UpdateChart(nullptr, false);
    EXPECT_TRUE(chart.ConstantLineHidden(maxLine));
    EXPECT_EQ(chart.ConstantLineCount(), 2) << "slots are kept for reuse";
}

TEST_F(CurveChartTest, GraphTitleFillsItsPlaceholders)
{
    const GraphProperties graph { .Title = "%NAME% / %CUSTOMERNAME%: %START_DATE% %START_TIME% - %END_DATE% (%NAME%)" };
    graph.Apply(&chart,
        { .customerName = "Works",
            .name = "Main meter",
            .startDate = Calendar::FromParts(2009, 2, 3, 14, 15),
            .endDate = Calendar::FromParts(2009, 2, 4) });
    const QString title = chart.Title(2);
    EXPECT_TRUE(title.startsWith("Main meter / Works: ") && title.endsWith(" (Main meter)") && !title.contains('%'))
        << title.toStdString();
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
    second->Properties().Color = CurveColors::Rgb(0, 128, 0);
    third->Properties().Color = CurveColors::Rgb(0, 0, 255);
    Use(*first, { "1", "3" });
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
    EXPECT_GT(countColour(qRgb(0, 0, 255)), 200) << "the curve on the second axis";
    EXPECT_GT(countColour(qRgb(0xFF, 0xFF, 0xCF)), 2 * 200) << "two cursor boxes";
    const QPointF mark = chart.PointToPixel(21, load[20], ChartAxis::Y1);
    EXPECT_EQ(picture.pixelColor(mark.toPoint() + QPoint(5, 0)), QColor(0x50, 0x50, 0x50)) << "the cross of cursor 1";
    const Cursor& cursor2 = *first->Cursors()[1];
    EXPECT_DOUBLE_EQ(cursor2.Box()->Top(), cursor2.Top() - 90);
    EXPECT_LT(cursor2.Connector()->Height(), -60) << "the connector reaches up to the moved box";
}

class CursorTest : public CurveFixture
{
protected:
    void SetUp() override
    {
        CurveFixture::SetUp();
        chart.resize(800, 500);
        chart.OpenData(1, 100);
        chart.CloseData();
        chart.SetAxisRange(ChartAxis::X, 1, 100);
        chart.SetAxisRange(ChartAxis::Y1, 0, 100);
        chart.Replot();
        cursor.SetUnit("kW");
        cursor.Initialize(&chart, &chart.Annotations());
    }
    void At(double x, double y) { cursor.SetPoint(x, y, 0, 0, Start(), 0); }

    ChartAdapter chart;
    Cursor cursor;
};

TEST_F(CursorTest, DefaultPlaceCentresTheBoxAboveTheMark)
{
    At(49, 50.0);
    const QPointF mark = chart.PointToPixel(50, 50.0, ChartAxis::Y1);
    EXPECT_EQ(QPointF(cursor.Left(), cursor.Top()), mark - QPointF(8, 0));
    const ChartAnnotation& box = *cursor.Box();
    EXPECT_EQ(box.Text(), "50.00 kW (03.02.2009 00:00)");
    EXPECT_EQ(QPointF(box.Left() + box.Width() / 2, box.Top()), mark - QPointF(0, 25));

    // Near the top the box moves down; the connector can be switched off.
    roots.SetUser("Software\\HARVOLD\\Sorano\\Settings", "CursorLine", "0");
    At(10, 100.0);
    ASSERT_LT(chart.PointToPixel(11, 100.0, ChartAxis::Y1).y() - 25, 10);
    EXPECT_EQ(cursor.Box()->Top(), 50);
    EXPECT_EQ(cursor.Connector()->Width() + cursor.Connector()->Height(), 0);
    cursor.Box()->SetGeometry(0, 0, 90, 22);
    cursor.SaveBoxPosition();
    cursor.SetBoxPosition(cursor.BoxPosition().section(';', 0, 0)); // one field: the default place
    At(10, 100.0);
    EXPECT_EQ(cursor.Box()->Top(), 50);

    // A user's text is left alone by a new format; without it the value shows.
    cursor.SetCustomText("peak");
    roots.SetUser("Software\\HARVOLD\\Sorano\\Indizes\\Selection", "FormatNumber", "0.0 X");
    cursor.UpdateFormat();
    EXPECT_EQ(cursor.Text(), "peak");
    cursor.SetCustomText("");
    EXPECT_EQ(cursor.Text(), " ");
    cursor.UpdateFormat();
    EXPECT_EQ(cursor.Text(), "100.0 kW (03.02.2009 00:00)");
    cursor.SetPoint(5, 0.2, 0, 0, Start(), 0.8);
    EXPECT_TRUE(cursor.Text().startsWith("0.8 kW")) << "a display value shows, the mark stays at y";
    EXPECT_DOUBLE_EQ(cursor.Top(), chart.PointToPixel(6, 0.2, 0).y());
}

TEST_F(CursorTest, HideParksTagsTravelAndDestructionRemoves)
{
    cursor.SetMode(Cursor::ModeMark | Cursor::ModeLine);
    At(30, 10.0);
    const int line = cursor.ConstantLine();
    ASSERT_GE(line, 0);
    EXPECT_EQ(chart.ConstantLineValue(line), 31) << "the vertical line follows the mode";
    cursor.Hide();
    for (const ChartAnnotation* object :
        { cursor.HorizontalBar(), cursor.VerticalBar(), cursor.Connector(), cursor.Box() })
        EXPECT_TRUE(object->Parked());
    EXPECT_TRUE(chart.ConstantLineHidden(line));

    ChartAnnotations& list = chart.Annotations();
    const int before = list.Count();
    {
        Cursor second;
        second.Initialize(&chart, &list);
        second.SetTag(201);
        ASSERT_EQ(list.Count(), before + 4);
        for (int i = before; i < list.Count(); ++i)
            EXPECT_EQ(list.Item(i)->Tag(), 201);
        second.DeleteBox();
    }
    EXPECT_EQ(list.Count(), before + 1) << "the box was handed over to the user's delete";
}

TEST_F(CursorTest, DifferenceTextsCountFromDaysDown)
{
    for (const auto& [seconds, value, text] : { std::tuple(90.0, 12.34, "12.34 kW  (01m 30s)"),
             std::tuple(86400.0, 1.0, "1.00 kW  (01d 00s)"), std::tuple(90061.0, 1.0, "1.00 kW  (01d 01h 01m 01s)"),
             std::tuple(400 * 86400.0, 1.0, "1.00 kW  (34560000s)") }) {
        Cursor first;
        Cursor second;
        first.SetUnit("kW");
        first.SetPoint(0, 5.0, 0, 0, Start(), 0);
        second.SetPoint(0, 5.0 - value, 0, 0, Start() + seconds / 86400.0, 0);
        EXPECT_EQ(first.BuildDifference(second), text);
        second.SetUnit("kW");
        EXPECT_EQ(second.BuildDifference(first), text) << "the difference has no direction";
    }
}

// A curve of 40 quarter hours with the values 0 to 39 on the chart, and its statistic tree.
class CurveTreeTest : public CurveFixture
{
protected:
    void SetUp() override
    {
        CurveFixture::SetUp();
        chart.resize(800, 500);
        std::vector<double> values(40);
        std::iota(values.begin(), values.end(), 0.0);
        curve.AddMatrix(Channel(1, "1", "Hall", "kW", values));
        curve.SetID("c1");
        ASSERT_EQ(Compute(curve, 40), 0);
        curve.UpdateChart(&chart, true);
        chart.Replot();
    }

    QTreeWidgetItem* Node(const QString& suffix) { return ChannelTree::FindItem(&tree, "S_c1" + suffix); }
    QStringList Children()
    {
        QStringList keys;
        for (int i = 0; Node("") && i < Node("")->childCount(); ++i)
            keys << ChannelTree::Key(Node("")->child(i));
        return keys;
    }
    QList<qint32> Indexes()
    {
        QList<qint32> indexes;
        for (const auto& cursor : curve.Cursors())
            indexes << cursor->Index();
        return indexes;
    }
    Cursor* Set(qint32 row, qint16 number = 0) { return curve.SetCursor(row, &chart, &chart.Annotations(), number); }

    ChartAdapter chart;
    QTreeWidget tree;
    Curve curve;
};

TEST_F(CurveTreeTest, StatisticNodesFollowUsedAndDisplayType)
{
    EXPECT_EQ(curve.UpdateStatistic(), Curve::NoView);
    Use(curve, { "1", "4" });
    curve.FindStatistic("2")->SetVisible(false);
    ASSERT_EQ(curve.UpdateStatistic(&tree), 0);
    QTreeWidgetItem* node = Node("");
    ASSERT_TRUE(node);
    EXPECT_EQ(node->text(0), "Hall (kW)");
    EXPECT_EQ(Children(), QStringList({ "S_c1_1", "S_c1_4" }));
    EXPECT_TRUE(Node("_1")->text(0).startsWith("Maximum = 39.00 kW (")) << Node("_1")->text(0).toStdString();
    EXPECT_EQ(Node("_4")->text(0), "Summe = 780.00 kW");
    EXPECT_FALSE(Node("_4")->data(0, Qt::CheckStateRole).isValid()) << "text-only values have no check box";

    // A statistic turned on later takes its place behind the used one before it.
    Use(curve, { "2" });
    Use(curve, { "1" }, false);
    curve.UpdateStatistic();
    EXPECT_EQ(Children(), QStringList({ "S_c1_2", "S_c1_4" }));
    EXPECT_EQ(Node("_2")->checkState(0), Qt::Unchecked);
}

TEST_F(CurveTreeTest, PowerFactorStatisticsShowMeasuredValues)
{
    // Stored folded: 0.04 is 0.96 inductive, 0.10 is 0.90 inductive, -0.05 is 0.95 capacitive.
    Curve cosPhi;
    cosPhi.SetID("c2");
    cosPhi.AddMatrix(Channel(1, "2", "cos phi", "", { 0.04, 0.10, -0.05, 0.04 }, DataMatrix::CosPhiType));
    ASSERT_EQ(Compute(cosPhi, 4), 0);
    Use(cosPhi, { "1", "2", "3" });
    ASSERT_EQ(cosPhi.UpdateStatistic(&tree), 0);
    QStringList texts;
    for (int i = 0; i < 3; ++i)
        texts << tree.topLevelItem(0)->child(i)->text(0).section(" (", 0, 0).trimmed();
    EXPECT_EQ(texts, QStringList({ "Maximum = 0.90", "Mittelwert = 0.97", "Minimum = -0.95" }));
}

TEST_F(CurveTreeTest, ClicksSetTwoCursorsThenMoveTheNearer)
{
    curve.UpdateStatistic(&tree);
    Set(10);
    EXPECT_FALSE(Node("_DIFFHP"));
    Set(20);
    EXPECT_EQ(Indexes(), QList<qint32>({ 10, 20 }));
    ASSERT_TRUE(Node("_DIFFHP"));
    EXPECT_EQ(Node("_DIFFHP")->text(0), "Delta = 10.00 kW  (02h 30m 00s)");
    // The nearer one moves, a tie goes to the first; numbers 2 and 1 always move their own.
    for (const auto& [row, number, first, second] : { std::tuple(18, 0, 10, 18), std::tuple(20, 2, 10, 20),
             std::tuple(15, 0, 15, 20), std::tuple(30, 1, 30, 20) }) {
        Set(row, qint16(number));
        EXPECT_EQ(Indexes(), QList<qint32>({ first, second })) << row << " " << number;
    }
    EXPECT_EQ(Node("_HP1")->text(0), "Cursor 1 = 30.00 kW (03.02.2009 07:30)");
    EXPECT_EQ(curve.Cursors()[1]->Tag(), 200);

    curve.Cursors()[0]->SetCustomText("note");
    EXPECT_EQ(Set(31), curve.Cursors()[0].get());
    EXPECT_EQ(curve.Cursors()[0]->CustomText(), "") << "placing again drops the user's text";
    Set(-1);
    EXPECT_EQ(Indexes(), QList<qint32>({ 31, 20 })) << "a negative row places nothing";

    // Removing renumbers and retags.
    curve.RemoveCursor(1);
    EXPECT_EQ(Indexes(), QList<qint32>({ 20 }));
    EXPECT_EQ(curve.Cursors()[0]->Tag(), 100);
    EXPECT_TRUE(Node("_HP1") && !Node("_HP2") && !Node("_DIFFHP"));
    curve.RemoveCursor(-1);
    EXPECT_TRUE(curve.Cursors().empty());
    EXPECT_FALSE(Node("_HP1"));
}

TEST_F(CurveTreeTest, FreeCursorTakesAPositionBetweenSamples)
{
    curve.SetFreeCursor(4.4, 17.0, &chart.Annotations());
    ASSERT_EQ(curve.Cursors().size(), 1u);
    const Cursor& cursor = *curve.Cursors()[0];
    EXPECT_EQ(cursor.Value(), 17.0);
    EXPECT_EQ(cursor.Index(), 4);
    EXPECT_EQ(cursor.DateTime(), Start() + 4 * Quarter);
    EXPECT_DOUBLE_EQ(cursor.VerticalBar()->Left(), chart.PointToPixel(5.4, 17.0, 0).x());
    curve.SetVisible(false);
    curve.UpdateChart(nullptr, false);
    EXPECT_TRUE(cursor.HorizontalBar()->Parked()) << "a hidden curve hides its cursors";
}

} // namespace
