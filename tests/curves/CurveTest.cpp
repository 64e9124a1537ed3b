// SPDX-License-Identifier: GPL-3.0-or-later
// A curve's channels, its sum on the common grid and its statistics.
#include "Curve.h"
#include "ChartAdapter.h"
#include "CurveFixture.h"

namespace {

using CurveTest = CurveFixture;

QStringList Ids(const Curve& curve)
{
    QStringList ids;
    for (const auto& statistic : curve.Statistics())
        ids << statistic->ID();
    return ids;
}

TEST_F(CurveTest, SixDefaultStatisticsInTheirOrderWithFormats)
{
    roots.SetUser("Software\\HARVOLD\\Sorano\\Indizes\\Average", "FormatNumber", "0.0 X");
    Curve curve;
    EXPECT_EQ(Ids(curve), QStringList({ "1", "2", "3", "6", "4", "5" }));
    const QStringList names = { "Maximum", "Mittelwert", "Minimum", "Streuung", "Summe", "Anzahl" };
    const QStringList formats = { "0.00 X", "0.0 X", "0.00 X", "0.00 X\u00B2", "0.00 X", "0 \"Werte\"" };
    for (size_t i = 0; i < curve.Statistics().size(); ++i) {
        const Statistic& statistic = *curve.Statistics()[i];
        EXPECT_EQ(statistic.Name(), names[qsizetype(i)]);
        EXPECT_EQ(statistic.NumberFormat(), formats[qsizetype(i)]);
        EXPECT_FALSE(statistic.Used());
        EXPECT_EQ(statistic.Visible(), i < 3);
        EXPECT_EQ(statistic.DisplayType(), i < 3 ? 1 : 0);
    }
}

TEST_F(CurveTest, ReReadFormatsAreLookedUpUnderTheDisplayName)
{
    Curve curve;
    roots.SetUser("Software\\HARVOLD\\Sorano\\Indizes\\Maximum", "FormatNumber", "0 X");
    roots.SetUser("Software\\HARVOLD\\Sorano\\Indizes\\Sum", "FormatNumber", "0 X");
    curve.UpdateStatisticFormats();
    EXPECT_EQ(curve.FindStatistic("1")->NumberFormat(), "0 X");
    EXPECT_EQ(curve.FindStatistic("4")->NumberFormat(), "") << "\"Summe\" finds nothing under its name";
}

TEST_F(CurveTest, ChannelsAreSummedOnTheGrid)
{
    const std::vector<std::vector<double>> values = { { 1, 2, 3, 4 }, { 10, NoValue, 30, 40 }, { 100, 200, 300, 400 } };
    for (const int count : { 1, 3 }) {
        Curve curve;
        for (int c = 0; c < count; ++c)
            curve.AddMatrix(
                Channel(7, QString::number(c), "P" + QString::number(c), "kW", values[size_t(c)], c == 0 ? 3 : 5));
        InitGrid(4);
        ASSERT_EQ(curve.UpdateData(Start(), Start() + 1, grid), 0);
        ASSERT_TRUE(curve.Result());
        EXPECT_EQ(curve.Result()->DataType(), 3) << "the first channel's type";
        const MatrixBlock& result = *curve.Result()->DataBlock();
        ASSERT_EQ(result.Rows(), grid.Time()->Rows());
        for (qsizetype row = 0; row < 4; ++row) {
            EXPECT_EQ(result.At(row, 0), Start() + double(row) * Quarter);
            double sum = 0;
            bool missing = false;
            for (int c = 0; c < count; ++c) {
                missing |= values[size_t(c)][size_t(row)] == NoValue;
                sum += values[size_t(c)][size_t(row)];
            }
            EXPECT_EQ(result.At(row, 1), missing ? result.NoValue() : sum) << count << " channels, row " << row;
        }
        for (int c = 0; c < count; ++c)
            EXPECT_EQ(curve.Channels()[size_t(c)].matrix->DataBlock()->Name(), "CHANNEL_" + QString::number(c));
        EXPECT_EQ(curve.FindStatistic("1")->Value(), count == 1 ? 4 : 444);
        EXPECT_EQ(curve.FindStatistic("5")->Value(), count == 1 ? 4 : 3);
    }
}

TEST_F(CurveTest, CurveWithoutChannelsHasNoResultAndKeepsStatistics)
{
    Curve curve;
    curve.FindStatistic("1")->SetValue(9.0);
    InitGrid(4);
    EXPECT_NE(curve.UpdateData(Start(), Start() + 1, grid), 0);
    EXPECT_EQ(engine.Script(), "RESULT = ");
    EXPECT_FALSE(curve.Result());
    EXPECT_EQ(curve.FindStatistic("1")->Value(), 9.0);

    // The later steps of a refresh take a curve without result in their stride.
    ChartAdapter chart;
    QTreeWidget tree;
    curve.FindStatistic("1")->SetUsed(true);
    EXPECT_EQ(curve.UpdateChart(&chart, true), 0);
    EXPECT_EQ(chart.PointCount(), 0);
    EXPECT_EQ(curve.UpdateStatistic(&tree), 0);
    EXPECT_EQ(tree.topLevelItemCount(), 1);
    Cursor* cursor = curve.SetCursor(3, &chart, &chart.Annotations(), 0);
    ASSERT_TRUE(cursor);
    EXPECT_EQ(cursor->Index(), -1) << "no row to stand on";
}

TEST_F(CurveTest, FailingStatisticIsHidden)
{
    Curve curve;
    curve.AddMatrix(Channel(1, "1", "P", "kW", { 1, 2 }));
    curve.FindStatistic("2")->SetFormulaValue("RESULT = mean(");
    InitGrid(2);
    ASSERT_EQ(curve.UpdateData(Start(), Start() + 1, grid), 0);
    EXPECT_FALSE(curve.FindStatistic("2")->Visible());
    EXPECT_TRUE(curve.FindStatistic("1")->Visible());
}

TEST_F(CurveTest, AddingAChannelTwiceLogsAndKeepsOne)
{
    Curve curve;
    curve.SetName("Hall");
    curve.AddMatrix(nullptr);
    EXPECT_TRUE(curve.Channels().empty());
    curve.AddMatrix(Channel(3, "L1#2", "Feed A", "kW", { 1 }));
    curve.AddMatrix(Channel(3, "L1#5", "Feed B", "kVA", { 1 }));
    EXPECT_EQ(curve.Name(), "Feed B") << "every channel added names the curve";
    EXPECT_EQ(curve.Unit(), "kVA");
    EXPECT_TRUE(curve.Visible());
    curve.AddMatrix(Channel(3, "L1#2", "Feed A", "kW", { 1 }));
    ASSERT_EQ(curve.Channels().size(), 2u);
    EXPECT_EQ(curve.Channels()[0].key, "3$L1#2");
    EXPECT_EQ(curve.Name(), "Feed B");
    EXPECT_TRUE(log.Has("Curve.AddMatrix", "error adding matrix to curve",
        "The matrix from module 3 with the channel-id L1#2 (Feed A) caused an error This key is already "
        "associated with an element of this collection (457) when adding it to the curve Feed B."));

    curve.RemoveMatrix("");
    curve.RemoveMatrix("9$x");
    curve.RemoveMatrix("3$L1#2");
    ASSERT_EQ(curve.Channels().size(), 1u);
    EXPECT_EQ(curve.Channels()[0].key, "3$L1#5");
    curve.RemoveAll();
    EXPECT_TRUE(curve.Channels().empty());
}

TEST_F(CurveTest, YAxisTakesOnlyZeroAndOne)
{
    Curve curve;
    EXPECT_EQ(curve.YAxis(), -1);
    curve.SetYAxis(2);
    EXPECT_EQ(curve.YAxis(), -1);
    curve.SetYAxis(1);
    EXPECT_EQ(curve.YAxis(), 1);
    curve.SetYAxis(-1);
    EXPECT_EQ(curve.YAxis(), 1);
}

TEST_F(CurveTest, EditPropertiesGoesThroughTheHandler)
{
    Curve curve;
    EXPECT_FALSE(curve.EditProperties());
    Curve::SetEditPropertiesHandler([](Curve& edited) {
        edited.SetName("edited");
        return true;
    });
    EXPECT_TRUE(curve.EditProperties());
    EXPECT_EQ(curve.Name(), "edited");
    Curve::SetEditPropertiesHandler(nullptr);
}

} // namespace
