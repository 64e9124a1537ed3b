// SPDX-License-Identifier: GPL-3.0-or-later
// A statistic: its scripts over a curve's data, its formats and its text.
#include "Statistic.h"
#include "CurveFixture.h"

namespace {

class StatisticTest : public CurveFixture
{
protected:
    Statistic Maximum()
    {
        Statistic statistic;
        statistic.SetFormulaValue("RESULT = max(cols(DATA, 1, 1))");
        statistic.SetFormulaTime("RESULT = max_at(cols(DATA, 1, 1))");
        statistic.ReadFromRegistry(Hive::CurrentUser, "Software\\HARVOLD\\Sorano\\Indizes\\Maximum", "0.00 X");
        return statistic;
    }
};

TEST_F(StatisticTest, MaximumFindsValueRowAndTime)
{
    Statistic statistic = Maximum();
    const auto data = Channel(1, "1", "P", "kW", { 3.0, 12.5, NoValue, 7.0 })->DataBlock();
    ASSERT_EQ(statistic.Update(data), StatisticStatus::Ok);
    EXPECT_EQ(statistic.Value(), 12.5);
    EXPECT_EQ(statistic.ValueRow(), 1);
    EXPECT_EQ(statistic.ValueTime(), Start() + Quarter);
    EXPECT_EQ(statistic.FormatedValue("kW"), "12.50 kW (03.02.2009 00:15)");
    EXPECT_EQ(data->Name(), "DATA");
}

TEST_F(StatisticTest, EmptyGridGivesZeroWithoutDate)
{
    Statistic statistic = Maximum();
    statistic.SetValueTime(Start());
    EXPECT_EQ(statistic.Update(MatrixBlock::Create(0, 2)), StatisticStatus::Ok);
    EXPECT_EQ(statistic.Value(), 0.0);
    EXPECT_EQ(statistic.ValueTime(), 0.0);
    EXPECT_EQ(statistic.FormatedValue("kW"), "0.00 kW");
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

TEST_F(StatisticTest, FormatsComeFromTheSettingsWithDefaults)
{
    const QString key = "Software\\HARVOLD\\Sorano\\Indizes\\Maximum";
    Statistic statistic;
    statistic.ReadFromRegistry(Hive::CurrentUser, key, "0 X");
    EXPECT_EQ(statistic.NumberFormat(), "0 X");
    EXPECT_EQ(statistic.DateFormat(), "(dd.mm.yyyy hh:nn)");

    roots.SetUser(key, "FormatNumber", "0.000");
    roots.SetUser(key, "FormatDate", "dd.mm.");
    statistic.ReadFromRegistry(Hive::CurrentUser, key, "0 X");
    EXPECT_EQ(statistic.NumberFormat(), "0.000");
    EXPECT_EQ(statistic.DateFormat(), "dd.mm.");

    roots.SetUser(key, "UseDate", "0");
    statistic.ReadFromRegistry(Hive::CurrentUser, key, "0 X");
    EXPECT_EQ(statistic.DateFormat(), "");
}

} // namespace
