// SPDX-License-Identifier: GPL-3.0-or-later
// The line reader on its own: times, numbers, headers, cells and the checks of data lines.
#include "CsvLineReader.h"
#include "CsvFolder.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

using namespace Csv;

namespace {

std::string Name(const std::string& text)
{
    std::string shown;
    for (const char c : text)
        shown += c == '\n' ? std::string("\\n") : c == '\r' ? std::string("\\r") : std::string(1, c);
    return shown;
}

std::vector<std::string> Cells(std::string_view line, char separator)
{
    std::vector<std::string> cells;
    CellReader reader(line, separator);
    std::string_view cell;
    while (reader.Next(cell))
        cells.emplace_back(cell);
    return cells;
}

Layout LayoutOf(const std::string& header)
{
    const HeaderResult result = ReadHeader(header, true);
    return result.layout.value_or(Layout());
}

} // namespace

TEST(CsvLineReader, TimestampsInIsoAndGermanFormsReadToTheMillisecond)
{
    const struct
    {
        std::string text;
        std::optional<double> expected;
    } cases[] = {
        { "2023-01-01T00:15:00", D(2023, 1, 1, 0, 15) },
        { "2023-01-01 00:15", D(2023, 1, 1, 0, 15) },
        { "  2023-01-01   00:15\t", D(2023, 1, 1, 0, 15) },
        { "2023-01-01 00:15:30.25Z", D(2023, 1, 1, 0, 15, 30.25) },
        { "2023-01-01t00:15:30z", D(2023, 1, 1, 0, 15, 30) },
        { "2023-01-01T00:00:00.123456789", D(2023, 1, 1, 0, 0, 0.123) },
        { "2023/1/5 7:05", D(2023, 1, 5, 7, 5) },
        { "2023-06-30", D(2023, 6, 30) },
        { "01.02.2023 13:45", D(2023, 2, 1, 13, 45) },
        { "1.2.2023 13:45:59", D(2023, 2, 1, 13, 45, 59) },
        { "31.12.2023 23:59:59,5", D(2023, 12, 31, 23, 59, 59.5) },
        { "29.02.2024", D(2024, 2, 29) },
        { "2023-12-31 24:00", D(2024, 1, 1) },
        { "", std::nullopt },
        { "abc", std::nullopt },
        { "2023-13-01", std::nullopt },
        { "2023-02-29 00:00", std::nullopt },
        { "31.04.2023", std::nullopt },
        { "2023-01-01 25:00", std::nullopt },
        { "2023-01-01 24:00:01", std::nullopt },
        { "2023-01-01 12:60", std::nullopt },
        { "2023-01-01 12:00:60", std::nullopt },
        { "2023-01-01 12", std::nullopt },
        { "2023-01-01 12:5", std::nullopt },
        { "2023-01-01 00:15:00.", std::nullopt },
        { "2023-01-01 00:15+01:00", std::nullopt },
        { "2023-01-01x", std::nullopt },
        { "12023-01-01", std::nullopt },
        { "01.01.23", std::nullopt },
        { "01.01.2023 00:15Z", std::nullopt },
    };
    for (const auto& c : cases)
        EXPECT_EQ(ParseTimestamp(c.text), c.expected) << c.text;

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
        CellValue kind;
        double value;
    } cases[] = {
        { "1.5", false, CellValue::Number, 1.5 },
        { "1,5", true, CellValue::Number, 1.5 },
        { " -0,25\r", true, CellValue::Number, -0.25 },
        { "+7", false, CellValue::Number, 7 },
        { "1e3", false, CellValue::Number, 1000 },
        { "-1.5E-2", true, CellValue::Number, -0.015 },
        { "42", true, CellValue::Number, 42 },
        { "", true, CellValue::Empty, 0 },
        { "  \t", false, CellValue::Empty, 0 },
        { "1,5", false, CellValue::Bad, 0 },
        { "1.234,5", true, CellValue::Bad, 0 },
        { "1,2,3", true, CellValue::Bad, 0 },
        { "abc", true, CellValue::Bad, 0 },
        { "12kW", true, CellValue::Bad, 0 },
        { "nan", false, CellValue::Bad, 0 },
        { "inf", false, CellValue::Bad, 0 },
        { "1e999", false, CellValue::Bad, 0 },
        { "+", false, CellValue::Bad, 0 },
        { "+-1", false, CellValue::Bad, 0 },
        { "-", false, CellValue::Bad, 0 },
        { std::string(70, '1') + ",5", true, CellValue::Bad, 0 },
    };
    for (const auto& c : cases) {
        double value = -99.0;
        EXPECT_EQ(ParseNumber(c.cell, c.commaDecimal, value), c.kind) << c.cell;
        EXPECT_EQ(value, c.kind == CellValue::Number ? c.value : -99.0) << c.cell;
    }
}

TEST(CsvLineReader, HeaderFormsGiveSeparatorTimeColumnsAndChannels)
{
    const struct
    {
        std::string text;
        char separator;
        int timeCells;
        int dataLine;
        QStringList names, units;
        std::vector<qint32> types;
    } cases[] = {
        { "timestamp,ch1,ch2 [kW]\n", ',', 1, 2, { "ch1", "ch2" }, { "", "kW" }, { 3, 3 } },
        { "Zeitstempel;P [kW];Q [kvar]\n", ';', 1, 2, { "P", "Q" }, { "kW", "kvar" }, { 3, 3 } },
        { "\xEF\xBB\xBF"
          "Datum/Zeit;P [kW]\r\n",
            ';', 1, 2, { "P" }, { "kW" }, { 3 } },
        { "Datum;Zeit;P [kW]\n", ';', 2, 2, { "P" }, { "kW" }, { 3 } },
        { "\n\nsep=,\nTime,a;b [x]\n", ',', 1, 5, { "a;b" }, { "x" }, { 3 } },
        { "TIME\t[V] U1\tI [A]\n", '\t', 1, 2, { "[V] U1", "I" }, { "", "A" }, { 3, 3 } },
        { "\"Zeit (UTC)\";\"P \"\"gesamt\"\" [kW]\";;\n", ';', 1, 2, { "P \"gesamt\"" }, { "kW" }, { 3 } },
        { "Messung;P\n01.01.2023 00:00;1\n", ';', 1, 2, { "P" }, { "" }, { 3 } },
        { "time;cos phi;Cos(Phi) L1 [-];cosφ;Cosinus;Leistungsfaktor;;x\n", ';', 1, 2,
            { "cos phi", "Cos(Phi) L1", "cosφ", "Cosinus", "Leistungsfaktor", "6", "x" },
            { "", "-", "", "", "", "", "" }, { 8, 8, 8, 3, 8, 3, 3 } },
        { "Zeit;Z\xE4hler [kWh]\n", ';', 1, 2, { "Z\u00e4hler" }, { "kWh" }, { 3 } },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(Name(c.text));
        const HeaderResult result = ReadHeader(c.text, true);
        ASSERT_TRUE(result.layout) << result.problem.toStdString();
        const Layout& layout = *result.layout;
        EXPECT_EQ(layout.separator, c.separator);
        EXPECT_EQ(layout.commaDecimal, c.separator != ',');
        EXPECT_EQ(layout.timeCells, c.timeCells);
        EXPECT_EQ(layout.dataLine, c.dataLine);
        EXPECT_EQ(layout.cellCount, c.timeCells + static_cast<int>(c.names.size()));
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
        { "", true, "empty" },
        { "\xEF\xBB\xBF\r\n \n", true, "empty" },
        { "\xFF\xFEt\0i\0", true, "UTF-16" },
        { std::string("time;a\0b\n", 9), true, "binary" },
        { "timestamp\n2023-01-01;1\n", true, "no separator" },
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
        EXPECT_FALSE(result.layout) << Name(c.text);
        EXPECT_TRUE(result.problem.contains(c.problem)) << Name(c.text) << ": " << result.problem.toStdString();
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
    const Layout layout = LayoutOf("time;a;b\n");
    const Layout split = LayoutOf("Datum;Zeit;a\n");
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
