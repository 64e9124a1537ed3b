// SPDX-License-Identifier: GPL-3.0-or-later
// A curve's channels, its sum on the common grid and its statistics.
#include "Curve.h"
#include "ChartAdapter.h"
#include "CurveFixture.h"
#include "Statistic.h"

namespace {

using CurveTest = CurveFixture;
const QString MaximumKey = "Software\\HARVOLD\\Sorano\\Indizes\\Maximum";

TEST_F(CurveTest, SixDefaultStatisticsInTheirOrderWithFormats)
{
    roots.SetUser("Software\\HARVOLD\\Sorano\\Indizes\\Average", "FormatNumber", "0.0 X");
    Curve curve;
    const QStringList ids = { "1", "2", "3", "6", "4", "5" };
    const QStringList names = { "Maximum", "Mittelwert", "Minimum", "Streuung", "Summe", "Anzahl" };
    const QStringList formats = { "0.00 X", "0.0 X", "0.00 X", "0.00 X\u00B2", "0.00 X", "0 \"Werte\"" };
    ASSERT_EQ(curve.Statistics().size(), 6u);
    for (qsizetype i = 0; i < 6; ++i) {
        const Statistic& statistic = *curve.Statistics()[size_t(i)];
        EXPECT_EQ(statistic.ID(), ids[i]);
        EXPECT_EQ(statistic.Name(), names[i]);
        EXPECT_EQ(statistic.NumberFormat(), formats[i]);
        EXPECT_FALSE(statistic.Used());
        EXPECT_EQ(statistic.Visible(), i < 3);
        EXPECT_EQ(statistic.DisplayType(), i < 3 ? 1 : 0);
    }

    // Formats read again are looked up under the display name.
    roots.SetUser(MaximumKey, "FormatNumber", "0 X");
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
            curve.AddMatrix(Channel(7, QString::number(c), "P", "kW", values[size_t(c)], c == 0 ? 3 : 5));
        ASSERT_EQ(Compute(curve, 4), 0);
        ASSERT_TRUE(curve.Result());
        EXPECT_EQ(curve.Result()->DataType(), 3) << "the first channel's type";
        const MatrixBlock& result = *curve.Result()->DataBlock();
        ASSERT_EQ(result.Rows(), 4);
        const std::vector<double> sums = count == 1 ? values[0] : std::vector<double> { 111, NoValue, 333, 444 };
        for (qsizetype row = 0; row < 4; ++row) {
            EXPECT_EQ(result.At(row, 0), Start() + double(row) * Quarter);
            const double sum = sums[size_t(row)];
            EXPECT_EQ(result.At(row, 1), sum == NoValue ? result.NoValue() : sum) << count << " channels, row " << row;
        }
        for (int c = 0; c < count; ++c)
            EXPECT_EQ(curve.Channels()[size_t(c)].matrix->DataBlock()->Name(), "CHANNEL_" + QString::number(c));
        EXPECT_EQ(curve.FindStatistic("1")->Value(), count == 1 ? 4 : 444);
        EXPECT_EQ(curve.FindStatistic("5")->Value(), count == 1 ? 4 : 3) << "rows with a gap are not counted";
    }
}

TEST_F(CurveTest, CurveWithoutChannelsHasNoResultAndKeepsStatistics)
{
    Curve curve;
    curve.FindStatistic("1")->SetValue(9.0);
    EXPECT_NE(Compute(curve, 4), 0);
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
    ASSERT_EQ(Compute(curve, 2), 0);
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
    EXPECT_EQ(statistic.Value(), 0.0) << "an empty grid";
    EXPECT_EQ(statistic.ValueTime(), 0.0);
    EXPECT_EQ(statistic.FormatedValue("kW"), "0.00 kW") << "no time, no date";

    const auto data = Channel(1, "1", "P", "kW", { 3.0, 12.5, NoValue, 7.0 })->DataBlock();
    ASSERT_EQ(statistic.Update(data), StatisticStatus::Ok);
    EXPECT_EQ(statistic.Value(), 12.5);
    EXPECT_EQ(statistic.ValueRow(), 1);
    EXPECT_EQ(statistic.ValueTime(), Start() + Quarter);
    EXPECT_EQ(statistic.FormatedValue("kW"), "12.50 kW (03.02.2009 00:15)");
    EXPECT_EQ(data->Name(), "DATA");

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
    const QStringList lines = log.From("Statistic.Update");
    ASSERT_EQ(lines.size(), 2);
    EXPECT_TRUE(lines[1].startsWith("Error executing statistic script (time). - There was an error "));
    EXPECT_TRUE(lines[1].endsWith(" when executing the script 'RESULT = nosuch(DATA)'."));

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
    const struct
    {
        const char* format;
        const char* unit;
        const char* text;
    } cases[] = {
        { "0.00 X", "kW", "1234.50 kW" }, { "0.0", "kW", "1234.5" }, { "0 X (X)", "V", "1235 V (V)" },
        { "0.00 X", "", "1234.50 " },
        { "0 \"MAX\"", "kW", "1235 MAkW" }, // plain text substitution, also inside literals
    };
    for (const auto& c : cases) {
        statistic.SetNumberFormat(c.format);
        EXPECT_EQ(statistic.FormatedValue(c.unit), c.text) << c.format;
    }
    statistic.SetNumberFormat("0.00");
    EXPECT_EQ(statistic.FormatedValue("", 2.0), "2.00") << "a value argument other than 0 shows instead";
    statistic.SetValue(1e308);
    EXPECT_EQ(statistic.FormatedValue(""), "0.00");
    EXPECT_EQ(statistic.Value(), 0.0) << "a hidden-point value is reset";
}

} // namespace
