// SPDX-License-Identifier: GPL-3.0-or-later
// The line reader on its own: times, numbers, headers, cells and the checks of data lines.
#include "CsvLineReader.h"
#include "CsvFolder.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

using namespace Csv;

namespace {

std::vector<std::string> Cells(std::string_view line, char separator)
{
    std::vector<std::string> cells;
    CellReader reader(line, separator);
    std::string_view cell;
    while (reader.Next(cell))
        cells.emplace_back(cell);
    return cells;
}

} // namespace

TEST(CsvLineReader, TimestampsInIsoAndGermanFormsReadToTheMillisecond)
{
    const struct
    {
        std::string text;
        double expected;
    } cases[] = {
        { "  2023-01-01   00:15\t", D(2023, 1, 1, 0, 15) },
        { "2023-01-01 00:15:30.25Z", D(2023, 1, 1, 0, 15, 30.25) },
        { "2023-01-01t00:15:30z", D(2023, 1, 1, 0, 15, 30) },
        { "2023-01-01T00:00:00.123456789", D(2023, 1, 1, 0, 0, 0.123) },
        { "2023/1/5 7:05", D(2023, 1, 5, 7, 5) },
        { "2023-06-30", D(2023, 6, 30) },
        { "1.2.2023 13:45:59", D(2023, 2, 1, 13, 45, 59) },
        { "31.12.2023 23:59:59,5", D(2023, 12, 31, 23, 59, 59.5) },
        { "29.02.2024", D(2024, 2, 29) },
        { "2023-12-31 24:00", D(2024, 1, 1) },
    };
    for (const auto& c : cases)
        EXPECT_EQ(ParseTimestamp(c.text), c.expected) << c.text;
    for (const char* bad :
        { "", "abc", "2023-13-01", "2023-02-29 00:00", "31.04.2023", "2023-01-01 25:00", "2023-01-01 24:00:01",
            "2023-01-01 12:60", "2023-01-01 12:00:60", "2023-01-01 12", "2023-01-01 12:5", "2023-01-01 00:15:00.",
            "2023-01-01 00:15+01:00", "2023-01-01x", "12023-01-01", "01.01.23", "01.01.2023 00:15Z" })
        EXPECT_EQ(ParseTimestamp(bad), std::nullopt) << bad;

    EXPECT_EQ(ParseTimestamp("01.02.2023", " 13:45 "), D(2023, 2, 1, 13, 45));
    EXPECT_EQ(ParseTimestamp("2023-02-01", "24:00"), D(2023, 2, 2));
    EXPECT_EQ(ParseTimestamp("01.02.2023 13:45", "13:45"), std::nullopt);
    EXPECT_EQ(ParseTimestamp("01.02.2023", ""), std::nullopt);
}

TEST(CsvLineReader, NumbersTakeDotOrCommaDecimalsAndTellEmptyCellsFromBadOnes)
{
    const struct
    {
        std::string cell;
        bool commaDecimal;
        double value;
    } cases[] = {
        { "1.5", false, 1.5 },
        { "1,5", true, 1.5 },
        { " -0,25\r", true, -0.25 },
        { "+7", false, 7 },
        { "1e3", false, 1000 },
        { "-1.5E-2", true, -0.015 },
        { "42", true, 42 },
    };
    for (const auto& c : cases) {
        double value = -99.0;
        EXPECT_EQ(ParseNumber(c.cell, c.commaDecimal, value), CellValue::Number) << c.cell;
        EXPECT_EQ(value, c.value) << c.cell;
    }
    double value = -99.0;
    EXPECT_EQ(ParseNumber("1,5", false, value), CellValue::Bad);
    // Blank cells are missing samples, the others no numbers whichever the decimal mark.
    for (const std::string& cell : std::initializer_list<std::string> { "", "  \t", "1.234,5", "1,2,3", "abc", "12kW",
             "nan", "inf", "1e999", "+", "+-1", "-", std::string(70, '1') + ",5" })
        for (const bool commaDecimal : { false, true }) {
            EXPECT_EQ(ParseNumber(cell, commaDecimal, value), Trim(cell).empty() ? CellValue::Empty : CellValue::Bad)
                << cell << " " << commaDecimal;
            EXPECT_EQ(value, -99.0) << cell;
        }
}

TEST(CsvLineReader, HeaderFormsGiveSeparatorTimeColumnsAndChannels)
{
    const struct
    {
        std::string text;
        char separator;
        int dataLine;
        QStringList names, units;
        std::vector<qint32> types;
    } cases[] = {
        { "\n\nsep=,\nTime,a;b [x]\n", ',', 5, { "a;b" }, { "x" }, { 3 } },
        { "TIME\t[V] U1\tI [A]\n", '\t', 2, { "[V] U1", "I" }, { "", "A" }, { 3, 3 } },
        { "\"Zeit (UTC)\";\"P \"\"gesamt\"\" [kW]\";;\n", ';', 2, { "P \"gesamt\"" }, { "kW" }, { 3 } },
        { "Messung;P\n01.01.2023 00:00;1\n", ';', 2, { "P" }, { "" }, { 3 } },
        { "time;cos phi;Cos(Phi) L1 [-];cosφ;Cosinus;Leistungsfaktor;;x\n", ';', 2,
            { "cos phi", "Cos(Phi) L1", "cosφ", "Cosinus", "Leistungsfaktor", "6", "x" },
            { "", "-", "", "", "", "", "" }, { 8, 8, 8, 3, 8, 3, 3 } },
        { "Zeit;Z\xE4hler [kWh]\n", ';', 2, { "Z\u00e4hler" }, { "kWh" }, { 3 } },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::PrintToString(c.text));
        const HeaderResult result = ReadHeader(c.text, true);
        ASSERT_TRUE(result.layout) << result.problem.toStdString();
        const Layout& layout = *result.layout;
        EXPECT_EQ(layout.separator, c.separator);
        EXPECT_EQ(layout.commaDecimal, c.separator != ',');
        EXPECT_EQ(layout.timeCells, 1);
        EXPECT_EQ(layout.dataLine, c.dataLine);
        EXPECT_EQ(layout.cellCount, 1 + static_cast<int>(c.names.size()));
        QStringList names, units;
        std::vector<qint32> types;
        for (const ChannelHeader& channel : layout.channels) {
            names << channel.name;
            units << channel.unit;
            types.push_back(channel.dataType);
        }
        EXPECT_EQ(names, c.names);
        EXPECT_EQ(units, c.units);
        EXPECT_EQ(types, c.types);
        // The data start at the line after the header.
        std::size_t pos = layout.dataOffset;
        std::string_view line;
        const bool more = NextLine(c.text, pos, line);
        EXPECT_EQ(more, c.text.find("01.01.2023") != std::string::npos);
    }
}

TEST(CsvLineReader, HeadersThatCannotBeReadSayWhy)
{
    const struct
    {
        std::string text;
        bool complete;
        const char* problem;
    } cases[] = {
        { "\xEF\xBB\xBF\r\n \n", true, "empty" },
        { std::string("time;a\0b\n", 9), true, "binary" },
        { "timestamp;\n", true, "no value column" },
        { "Datum;Zeit\n", true, "no value column" },
        { "Messung;P\nabc;1\n", true, "no time column" },
        { "Messung;P\n", true, "no time column" },
        { "2023-01-01 00:00;5\n2023-01-01 00:15;6\n", true, "no header line" },
        { "timestamp;a;b", false, "longer than" },
        { "sep=;", true, "no header line" },
    };
    for (const auto& c : cases) {
        const HeaderResult result = ReadHeader(c.text, c.complete);
        EXPECT_FALSE(result.layout) << ::testing::PrintToString(c.text);
        EXPECT_TRUE(result.problem.contains(c.problem))
            << ::testing::PrintToString(c.text) << ": " << result.problem.toStdString();
    }
    // Without the cut the same text is a whole header.
    EXPECT_TRUE(ReadHeader("timestamp;a;b", true).layout);
}

TEST(CsvLineReader, CellsSplitAtSeparatorsOutsideQuotesAndValuesAreReadFromTheSameCells)
{
    const struct
    {
        std::string line;
        std::vector<std::string> cells;
    } cases[] = {
        { "a;b;c", { "a", "b", "c" } },
        { "a;;b;", { "a", "", "b", "" } },
        { "", { "" } },
        { "\"x;y\";2", { "x;y", "2" } },
        { " \"1,5\" ;\"say \"\"hi\"\"\";3", { "1,5", "say \"\"hi\"\"", "3" } },
        { "\"open;end", { "open;end" } },
        { "1;\"2\"x;3", { "1", "2", "3" } },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        EXPECT_EQ(Cells(c.line, ';'), c.cells);
        EXPECT_EQ(CountCells(c.line, ';'), static_cast<int>(c.cells.size()));

        // The value reader, which walks on to the next "\n", finds the same cells.
        Layout layout;
        const std::string text = c.line + "\n9;9;9;9;9";
        std::vector<int> wanted;
        for (int i = 0; i < static_cast<int>(c.cells.size()); ++i)
            wanted.push_back(i);
        wanted.push_back(static_cast<int>(c.cells.size())); // one behind the line's end
        std::vector<double> values(wanted.size(), -1.0);
        std::vector<CellValue> kinds(wanted.size(), CellValue::Bad);
        ASSERT_EQ(ReadValues(text, layout, wanted, values, kinds), c.cells.size());
        for (std::size_t i = 0; i < c.cells.size(); ++i) {
            double expected = 0.0;
            EXPECT_EQ(kinds[i], ParseNumber(c.cells[i], true, expected)) << i;
            if (kinds[i] == CellValue::Number) {
                EXPECT_EQ(values[i], expected) << i;
            }
        }
    }
}

TEST(CsvLineReader, LinesAreCheckedAgainstTheHeader)
{
    const Layout layout = ReadHeader("time;a;b\n", true).layout.value_or(Layout());
    const Layout split = ReadHeader("Datum;Zeit;a\n", true).layout.value_or(Layout());
    const struct
    {
        const Layout& layout;
        std::string line;
        LineCheck check;
    } cases[] = {
        { layout, "2023-01-01 00:00;1;2", LineCheck::Ok },
        { layout, "2023-01-01 00:00;;", LineCheck::Ok },
        { layout, "2023-01-01 00:00;1;2;", LineCheck::Ok },
        { layout, "2023-01-01 00:00;1;2; ;", LineCheck::Ok },
        { layout, "2023-01-01 00:00;\"1;5\";2", LineCheck::Ok },
        { layout, "2023-01-01 00:00;1", LineCheck::Ragged },
        { layout, "2023-01-01 00:00;1;2;3", LineCheck::Ragged },
        { layout, "2023-01-01 00:00;\"1;2\"", LineCheck::Ragged },
        { layout, "2023-02-30 00:00;1;2", LineCheck::BadTime },
        { layout, ";1;2", LineCheck::BadTime },
        { layout, "", LineCheck::Blank },
        { layout, " \t", LineCheck::Blank },
        { layout, ";;", LineCheck::Blank },
        { layout, ";;;;", LineCheck::Blank },
        { layout, std::string(MaxLineLength + 1, '1'), LineCheck::TooLong },
        { split, "01.01.2023;00:15;4", LineCheck::Ok },
        { split, "01.01.2023 00:15;;4", LineCheck::BadTime },
    };
    for (const auto& c : cases) {
        double time = -1.0;
        EXPECT_EQ(CheckLine(c.line, c.layout, time), c.check) << c.line.substr(0, 40);
        if (c.check == LineCheck::Ok)
            EXPECT_EQ(time, D(2023, 1, 1, 0, c.layout.timeCells == 2 ? 15 : 0)) << c.line;
        else
            EXPECT_EQ(time, -1.0) << c.line.substr(0, 40);
    }
    EXPECT_TRUE(DescribeProblem(LineCheck::Ragged, "2023-01-01 00:00;1", layout).contains("2 cells"));
    EXPECT_TRUE(DescribeProblem(LineCheck::BadTime, "2023-02-30 00:00;1;2", layout).contains("\"2023-02-30 00:00\""));
}

TEST(CsvLineReader, NextLineDropsLineEndsOfBothKinds)
{
    const std::string text = "a\r\nb\n\nc\r\rd";
    std::vector<std::string> lines;
    std::size_t pos = 0;
    std::string_view line;
    while (NextLine(text, pos, line))
        lines.emplace_back(line);
    EXPECT_EQ(lines, (std::vector<std::string> { "a", "b", "", "c\r\rd" }));
    EXPECT_EQ(pos, text.size());
}
