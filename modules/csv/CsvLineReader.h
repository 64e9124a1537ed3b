// SPDX-License-Identifier: GPL-3.0-or-later
// Reading logger CSV text from byte spans: the header with its time and channel columns, lines,
// cells, times and numbers. No file access and no allocation per line, so that the file index
// and the data reads run these functions directly over the bytes read from a file.
#pragma once

#include <QString>

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace Csv {

// A missing sample in the blocks the module delivers.
constexpr double NoValue = -1e300;
// Data type of a channel unless its header marks a power factor.
constexpr qint32 AverageType = 3;
constexpr qint32 CosPhiType = 8;
// Longer lines are taken as damaged rather than searched cell by cell.
constexpr std::size_t MaxLineLength = std::size_t(1) << 20;

// One value column of the header.
struct ChannelHeader
{
    QString name;
    QString unit;
    qint32 dataType = AverageType;
};

// What the header says about the lines below it.
struct Layout
{
    char separator = ';';
    // "," separates the cells, so "." is the only decimal point; otherwise "1,5" is read as 1.5.
    bool commaDecimal = true;
    // 1, or 2 when date and time of day stand in two columns ("Datum;Zeit;...").
    int timeCells = 1;
    // Cells of the header without trailing empty ones; a data line needs this many.
    int cellCount = 0;
    // The value columns in order: channel number n (from 1) is cell timeCells + n - 1.
    std::vector<ChannelHeader> channels;
    // Byte offset and line number (from 1) of the first line after the header.
    std::size_t dataOffset = 0;
    int dataLine = 2;
};

struct HeaderResult
{
    std::optional<Layout> layout;
    QString problem; // why there is no layout
};

// Reads the header from the first bytes of a file. complete tells whether text is the whole
// file, so that a header line cut off by the caller's buffer is told apart from a last line.
// Tolerates a UTF-8 byte order mark, CRLF line ends, a leading "sep=;" line and quoted cells;
// header text that is no valid UTF-8 is read as Latin-1.
HeaderResult ReadHeader(std::string_view text, bool complete);

// The separator of a header line: ";" when it holds one, else ",", else a tab; 0 for none.
char DetectSeparator(std::string_view line);

// Whether a header cell names a time column ("timestamp", "Zeitstempel", "Datum/Zeit", ...).
bool IsTimeColumnName(const QString& cell);

// Splits "Name [unit]" and recognises power-factor channels ("cos phi", "cosφ L1", ...).
ChannelHeader ChannelFromHeader(const QString& cell, int number);

// The line that starts at pos, without its "\n" and a trailing "\r"; pos moves behind the
// "\n". False when pos is at the end.
bool NextLine(std::string_view text, std::size_t& pos, std::string_view& line);

// Blanks, tabs and carriage returns cut from both ends.
std::string_view Trim(std::string_view cell);

// Walks the cells of one line. A cell in double quotes is given without them, and a
// separator inside the quotes belongs to the cell; doubled quotes inside stay as they are.
class CellReader
{
public:
    CellReader(std::string_view line, char separator)
        : m_line(line)
        , m_separator(separator)
    { }
    // The next cell, false behind the last one. "a;;b;" has the cells "a", "", "b", "".
    bool Next(std::string_view& cell);
    // Whether the cell last given stood in quotes.
    bool WasQuoted() const { return m_quoted; }

private:
    std::string_view m_line;
    std::size_t m_pos = 0;
    char m_separator;
    bool m_done = false;
    bool m_quoted = false;
};

// Number of cells of a line ("" has one).
int CountCells(std::string_view line, char separator);

// Times as days since 1899-12-30, rounded to the millisecond. Accepted: ISO dates
// "2023-01-01" (also with "/"), German dates "01.01.2023", each optionally followed by
// "T" or blanks and a time "hh:mm[:ss[.fff]]"; an ISO form may end in "Z", which is ignored
// (times are taken as written). Day, month and hour may have one digit. 24:00 is midnight
// of the next day. Invalid calendar values give nothing.
std::optional<double> ParseTimestamp(std::string_view cell);
// The same from a date cell and a time-of-day cell.
std::optional<double> ParseTimestamp(std::string_view dateCell, std::string_view timeCell);

enum class CellValue {
    Number, ///< a finite number
    Empty, ///< nothing but blanks: a missing sample
    Bad ///< anything else
};

// A number cell: optional sign, digits, one decimal point ("." always, "," when commaDecimal),
// optional exponent; blanks around are ignored. Infinite and NaN values count as bad.
CellValue ParseNumber(std::string_view cell, bool commaDecimal, double& value);

enum class LineCheck {
    Ok,
    Blank, ///< empty or only blanks: skipped without a word
    Ragged, ///< fewer cells than the header, or more that are not empty
    BadTime, ///< the time cell(s) hold no valid time
    TooLong ///< longer than MaxLineLength
};

// Checks a data line against the header and reads its time.
LineCheck CheckLine(std::string_view line, const Layout& layout, double& time);
// What is wrong with a line that CheckLine refused, for a log line.
QString DescribeProblem(LineCheck check, std::string_view line, const Layout& layout);
// The text of one cell of a line (from 0), cut short and quoted, for a log line.
QString QuoteCell(std::string_view line, char separator, int cell);

// Reads the wanted cells of a line. text starts at the line and may run on past it: reading
// stops at the first "\n". cells are cell indexes in ascending order without repeats; for each,
// values and kinds receive the number and its kind. Returns how many wanted cells the line
// had (cells behind the last one are left alone).
std::size_t ReadValues(std::string_view text, const Layout& layout, std::span<const int> cells,
    std::span<double> values, std::span<CellValue> kinds);

} // namespace Csv
