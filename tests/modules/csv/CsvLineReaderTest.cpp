// SPDX-License-Identifier: GPL-3.0-or-later
// The line reader on its own: times, numbers, headers, cells and data lines.
#include "CsvLineReader.h"
#include "CsvFolder.h"

#include <gtest/gtest.h>

#include <numeric>
#include <optional>
#include <string>
#include <tuple>

using namespace Csv;

TEST(CsvLineReader, TimestampsInIsoAndGermanFormsReadToTheMillisecond)
{
    const std::pair<std::string, double> cases[] = {
        { "  2023-01-01   00:15\t", D(2023, 1, 1, 0, 15) },
        { "2023-01-01 00:15:30.25Z", D(2023, 1, 1, 0, 15, 30.25) },
        { "2023-01-01t00:15:30z", D(2023, 1, 1, 0, 15, 30) },
        { "2023-01-01T00:00:00.123456789", D(2023, 1, 1, 0, 0, 0.123) },
        { "2023/1/5 7:05", D(2023, 1, 5, 7, 5) },
        { "2023-06-30", D(2023, 6, 30) },
        { "31.12.2023 23:59:59,5", D(2023, 12, 31, 23, 59, 59.5) },
        { "29.02.2024", D(2024, 2, 29) },
        { "2023-12-31 24:00", D(2024, 1, 1) },
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(ParseTimestamp(text), expected) << text;
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
    const std::tuple<std::string, bool, double> cases[] = {
        { " -0,25\r", true, -0.25 },
        { "+7", false, 7 },
        { "-1.5E-2", true, -0.015 },
    };
    for (const auto& [cell, commaDecimal, expected] : cases) {
        double value = -99.0;
        EXPECT_EQ(ParseNumber(cell, commaDecimal, value), CellValue::Number) << cell;
        EXPECT_EQ(value, expected) << cell;
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
        QStringList channels; // "name [unit] data type"
    } cases[] = {
        { "\n\nsep=,\nTime,a;b [x]\n", ',', 5, { "a;b [x] 3" } },
        { "TIME\t[V] U1\tI [A]\n", '\t', 2, { "[V] U1 [] 3", "I [A] 3" } },
        { "\"Zeit (UTC)\";\"P \"\"gesamt\"\" [kW]\";;\n", ';', 2, { "P \"gesamt\" [kW] 3" } },
        { "time;cos phi;Cos(Phi) L1 [-];cosφ;Cosinus;Leistungsfaktor;;x\n", ';', 2,
            { "cos phi [] 8", "Cos(Phi) L1 [-] 8", "cosφ [] 8", "Cosinus [] 3", "Leistungsfaktor [] 8", "6 [] 3",
                "x [] 3" } },
        { "Zeit;Z\xE4hler [kWh]\n", ';', 2, { "Z\u00e4hler [kWh] 3" } },
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
        EXPECT_EQ(layout.cellCount, 1 + static_cast<int>(c.channels.size()));
        QStringList channels;
        for (const ChannelHeader& channel : layout.channels)
            channels << channel.name + " [" + channel.unit + "] " + QString::number(channel.dataType);
        EXPECT_EQ(channels, c.channels);
    }
}

// Empty, binary and UTF-16 files are left to the module's tests.
TEST(CsvLineReader, HeadersThatCannotBeReadSayWhy)
{
    const std::tuple<std::string, bool, const char*> cases[] = {
        { "timestamp;\n", true, "no value column" },
        { "Datum;Zeit\n", true, "no value column" },
        { "Messung;P\nabc;1\n", true, "no time column" },
        { "2023-01-01 00:00;5\n2023-01-01 00:15;6\n", true, "no header line" },
        { "sep=;", true, "no header line" },
        { "timestamp;a;b", false, "longer than" },
    };
    for (const auto& [text, complete, problem] : cases) {
        const HeaderResult result = ReadHeader(text, complete);
        EXPECT_FALSE(result.layout) << ::testing::PrintToString(text);
        EXPECT_TRUE(result.problem.contains(problem))
            << ::testing::PrintToString(text) << ": " << result.problem.toStdString();
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
        char separator = ';';
    } cases[] = {
        { "a;;b;", { "a", "", "b", "" } },
        { "", { "" } },
        { "\"x;y\";2", { "x;y", "2" } },
        { " \"1,5\" ;\"say \"\"hi\"\"\";3", { "1,5", "say \"\"hi\"\"", "3" } },
        { "\"open;end", { "open;end" } },
        { "1;\"2\"x;3", { "1", "2", "3" } },
        // A tab that separates is no blank before a quote: the empty cell stays empty.
        { "1\t\t\"5\"", { "1", "", "5" }, '\t' },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        std::vector<std::string> cells;
        CellReader reader(c.line, c.separator);
        for (std::string_view cell; reader.Next(cell);)
            cells.emplace_back(cell);
        EXPECT_EQ(cells, c.cells);
        EXPECT_EQ(CountCells(c.line, c.separator), static_cast<int>(c.cells.size()));

        // The value reader, which walks on to the next "\n", finds the same cells; one more
        // cell is asked for than the line has.
        std::vector<int> wanted(c.cells.size() + 1);
        std::iota(wanted.begin(), wanted.end(), 0);
        std::vector<double> values(wanted.size(), -1.0);
        std::vector<CellValue> kinds(wanted.size(), CellValue::Bad);
        Layout layout;
        layout.separator = c.separator;
        ASSERT_EQ(ReadValues(c.line + "\n9;9;9;9;9", layout, wanted, values, kinds), c.cells.size());
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
    const std::tuple<const Layout*, std::string, LineCheck> cases[] = {
        { &layout, "2023-01-01 00:00;;", LineCheck::Ok },
        { &layout, "2023-01-01 00:00;1;2; ;", LineCheck::Ok },
        { &layout, "2023-01-01 00:00;\"1;5\";2", LineCheck::Ok },
        { &layout, "2023-01-01 00:00;\"1;2\"", LineCheck::Ragged },
        { &layout, ";1;2", LineCheck::BadTime },
        { &layout, " \t", LineCheck::Blank },
        { &layout, ";;", LineCheck::Blank },
        { &layout, std::string(MaxLineLength + 1, '1'), LineCheck::TooLong },
        { &split, "01.01.2023;00:15;4", LineCheck::Ok },
        { &split, "01.01.2023 00:15;;4", LineCheck::BadTime },
    };
    for (const auto& [header, line, check] : cases) {
        double time = -1.0;
        EXPECT_EQ(CheckLine(line, *header, time), check) << line.substr(0, 40);
        EXPECT_EQ(time, check != LineCheck::Ok ? -1.0 : D(2023, 1, 1, 0, header == &split ? 15 : 0))
            << line.substr(0, 40);
    }
}
