// SPDX-License-Identifier: GPL-3.0-or-later
#include "CsvLineReader.h"

#include "Calendar.h"

#include <QStringDecoder>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

namespace Csv {

namespace {

bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r';
}

bool IsDigit(char c)
{
    return static_cast<unsigned char>(c - '0') < 10;
}

int DaysInMonth(int year, int month)
{
    static constexpr int Days[12] = { 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31 };
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return month == 2 && leap ? 29 : Days[month - 1];
}

struct Cursor
{
    const char* p;
    const char* end;

    bool AtEnd() const { return p == end; }
    bool Peek(char c) const { return p != end && *p == c; }
    bool Take(char c)
    {
        if (!Peek(c))
            return false;
        ++p;
        return true;
    }
    // minDigits to maxDigits decimal digits.
    bool Number(int minDigits, int maxDigits, int& value)
    {
        int count = 0;
        int result = 0;
        while (p != end && count < maxDigits && IsDigit(*p)) {
            result = result * 10 + (*p - '0');
            ++p;
            ++count;
        }
        value = result;
        return count >= minDigits;
    }
};

struct DateTimeParts
{
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    double fraction = 0.0;
};

// "yyyy-mm-dd", "yyyy/mm/dd" or "dd.mm.yyyy"; sets iso for the first two.
bool ReadDate(Cursor& in, DateTimeParts& parts, bool& iso)
{
    const char* p = in.p;
    iso = in.end - p >= 5 && IsDigit(p[0]) && IsDigit(p[1]) && IsDigit(p[2]) && IsDigit(p[3])
        && (p[4] == '-' || p[4] == '/');
    if (iso) {
        const char separator = p[4];
        if (!in.Number(4, 4, parts.year) || !in.Take(separator) || !in.Number(1, 2, parts.month) || !in.Take(separator)
            || !in.Number(1, 2, parts.day))
            return false;
    } else if (!in.Number(1, 2, parts.day) || !in.Take('.') || !in.Number(1, 2, parts.month) || !in.Take('.')
        || !in.Number(4, 4, parts.year)) {
        return false;
    }
    return parts.month >= 1 && parts.month <= 12 && parts.day >= 1 && parts.day <= DaysInMonth(parts.year, parts.month);
}

// "hh:mm[:ss[.fffffffff]]" (also "," before the fraction).
bool ReadTime(Cursor& in, DateTimeParts& parts)
{
    if (!in.Number(1, 2, parts.hour) || !in.Take(':') || !in.Number(2, 2, parts.minute))
        return false;
    if (in.Take(':')) {
        if (!in.Number(2, 2, parts.second))
            return false;
        if (in.Take('.') || in.Take(',')) {
            int digits = 0;
            std::int64_t value = 0;
            while (!in.AtEnd() && IsDigit(*in.p) && digits < 9) {
                value = value * 10 + (*in.p - '0');
                ++in.p;
                ++digits;
            }
            if (digits == 0)
                return false;
            static constexpr double Scale[10] = { 1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9 };
            parts.fraction = static_cast<double>(value) / Scale[digits];
        }
    }
    if (parts.minute > 59 || parts.second > 59)
        return false;
    // 24:00 closes a day, as some loggers write the last interval of a day.
    return parts.hour < 24 || (parts.hour == 24 && parts.minute == 0 && parts.second == 0 && parts.fraction == 0.0);
}

double Compose(const DateTimeParts& parts)
{
    return Calendar::FromParts(
        parts.year, parts.month, parts.day, parts.hour, parts.minute, parts.second + parts.fraction);
}

Cursor CursorOn(std::string_view cell)
{
    cell = Trim(cell);
    return { cell.data(), cell.data() + cell.size() };
}

// Lower case without blanks and punctuation, and without a trailing "[...]" or "(...)", so
// that "Datum / Zeit", "date_time" and "Zeit (UTC)" compare with plain words.
QString NameKey(const QString& cell, bool dropSuffix)
{
    QString text = cell.trimmed();
    if (dropSuffix && (text.endsWith(']') || text.endsWith(')'))) {
        const qsizetype open = text.lastIndexOf(text.endsWith(']') ? '[' : '(');
        if (open > 0)
            text.truncate(open);
    }
    QString key;
    key.reserve(text.size());
    for (const QChar c : text)
        if (!c.isSpace() && c != '_' && c != '-' && c != '/' && c != '.' && c != '\\' && c != ':' && c != '('
            && c != ')')
            key.append(c.toLower());
    return key;
}

bool IsDateName(const QString& key)
{
    return key == u"datum" || key == u"date" || key == u"tag" || key == u"day";
}

bool IsTimeOfDayName(const QString& key)
{
    return key == u"zeit" || key == u"time" || key == u"uhrzeit" || key == u"timeofday";
}

bool IsValidUtf8(std::string_view text)
{
    QStringDecoder decoder(QStringDecoder::Utf8);
    // decode() is lazy: the conversion runs when its result becomes a string.
    const QString decoded = decoder.decode(QByteArrayView(text.data(), static_cast<qsizetype>(text.size())));
    return !decoder.hasError();
}

QString Decode(std::string_view cell, bool utf8, bool quoted)
{
    const QByteArrayView bytes(cell.data(), static_cast<qsizetype>(cell.size()));
    QString text = utf8 ? QString::fromUtf8(bytes) : QString::fromLatin1(bytes);
    if (quoted)
        text.replace(QLatin1String("\"\""), QLatin1String("\""));
    return text.trimmed();
}

bool IsBlankText(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return IsBlank(c) || c == '\n'; });
}

// A line made of nothing but separators and blanks, as some exports pad their ends.
bool IsEmptyRow(std::string_view line, char separator)
{
    return std::all_of(line.begin(), line.end(), [separator](char c) { return IsBlank(c) || c == separator; });
}

} // namespace

std::string_view Trim(std::string_view cell)
{
    std::size_t begin = 0;
    std::size_t end = cell.size();
    while (begin < end && IsBlank(cell[begin]))
        ++begin;
    while (end > begin && IsBlank(cell[end - 1]))
        --end;
    return cell.substr(begin, end - begin);
}

bool NextLine(std::string_view text, std::size_t& pos, std::string_view& line)
{
    if (pos >= text.size())
        return false;
    const char* start = text.data() + pos;
    const std::size_t rest = text.size() - pos;
    const auto* newline = static_cast<const char*>(std::memchr(start, '\n', rest));
    std::size_t length = newline ? static_cast<std::size_t>(newline - start) : rest;
    pos += newline ? length + 1 : length;
    if (length > 0 && start[length - 1] == '\r')
        --length;
    line = std::string_view(start, length);
    return true;
}

bool CellReader::Next(std::string_view& cell)
{
    if (m_done)
        return false;
    const std::size_t size = m_line.size();
    std::size_t quote = m_pos;
    // Blanks before a quote are skipped, but a tab that separates the cells is no blank.
    while (quote < size && (m_line[quote] == ' ' || (m_line[quote] == '\t' && m_separator != '\t')))
        ++quote;
    m_quoted = quote < size && m_line[quote] == '"';
    if (m_quoted) {
        std::size_t close = quote + 1;
        while (
            (close = m_line.find('"', close)) != std::string_view::npos && close + 1 < size && m_line[close + 1] == '"')
            close += 2;
        if (close == std::string_view::npos) {
            // An unclosed quote runs to the end of the line.
            cell = m_line.substr(quote + 1);
            m_done = true;
            return true;
        }
        cell = m_line.substr(quote + 1, close - quote - 1);
        const std::size_t separator = m_line.find(m_separator, close + 1);
        if (separator == std::string_view::npos)
            m_done = true;
        else
            m_pos = separator + 1;
        return true;
    }
    const std::size_t separator = m_line.find(m_separator, m_pos);
    if (separator == std::string_view::npos) {
        cell = m_line.substr(m_pos);
        m_done = true;
    } else {
        cell = m_line.substr(m_pos, separator - m_pos);
        m_pos = separator + 1;
    }
    return true;
}

int CountCells(std::string_view line, char separator)
{
    if (line.find('"') == std::string_view::npos)
        return static_cast<int>(std::count(line.begin(), line.end(), separator)) + 1;
    CellReader reader(line, separator);
    std::string_view cell;
    int count = 0;
    while (reader.Next(cell))
        ++count;
    return count;
}

char DetectSeparator(std::string_view line)
{
    for (const char candidate : { ';', ',', '\t' })
        if (line.find(candidate) != std::string_view::npos)
            return candidate;
    return 0;
}

bool IsTimeColumnName(const QString& cell)
{
    static const QStringList Names
        = { "timestamp", "zeitstempel", "datumzeit", "datumuhrzeit", "datumundzeit", "datetime", "dateandtime", "datum",
              "date", "zeit", "time", "uhrzeit", "zeitpunkt", "messzeitpunkt", "localtime", "lokalzeit", "utc", "ts" };
    return Names.contains(NameKey(cell, true));
}

ChannelHeader ChannelFromHeader(const QString& cell, int number)
{
    ChannelHeader channel;
    QString name = cell.trimmed();
    if (name.endsWith(']')) {
        const qsizetype open = name.lastIndexOf('[');
        if (open >= 0) {
            channel.unit = name.mid(open + 1, name.size() - open - 2).trimmed();
            name = name.left(open).trimmed();
        }
    }
    channel.name = name.isEmpty() ? QString::number(number) : name;
    // Power factors are delivered as written; the program folds channels of this type itself.
    const QString key = NameKey(channel.name, false);
    if (key == u"cos" || key.startsWith(u"cosphi") || key.startsWith(u"cos\u03C6") || key.startsWith(u"cos\u03D5")
        || key.startsWith(u"leistungsfaktor") || key.startsWith(u"powerfactor"))
        channel.dataType = CosPhiType;
    return channel;
}

HeaderResult ReadHeader(std::string_view text, bool complete)
{
    HeaderResult result;
    std::size_t pos = 0;
    if (text.starts_with("\xEF\xBB\xBF")) {
        pos = 3;
    } else if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF")) {
        result.problem = QStringLiteral("the file is UTF-16 text; only UTF-8 and Latin-1 are read");
        return result;
    }
    if (IsBlankText(text.substr(pos))) {
        result.problem = QStringLiteral("the file is empty");
        return result;
    }

    std::string_view line;
    int lineNumber = 0;
    const auto takeLine = [&]() {
        const bool taken = NextLine(text, pos, line);
        lineNumber += taken ? 1 : 0;
        return taken;
    };
    while (takeLine() && IsBlankText(line)) { }
    if (line.find('\0') != std::string_view::npos) {
        result.problem = QStringLiteral("the file holds binary data, not text");
        return result;
    }
    char separator = 0;
    const std::string_view trimmed = Trim(line);
    if (trimmed.size() == 5 && (trimmed.starts_with("sep=") || trimmed.starts_with("SEP="))) {
        // A spreadsheet's hint line names the separator; the header follows it.
        separator = trimmed[4];
        if (!takeLine()) {
            result.problem = QStringLiteral("there is no header line");
            return result;
        }
    }
    if (!complete && pos == text.size() && !text.ends_with('\n')) {
        result.problem = QStringLiteral("the header line is longer than %1 bytes").arg(text.size());
        return result;
    }
    const std::string_view header = line;
    const int headerLine = lineNumber;
    const std::size_t dataOffset = pos;
    if (separator == 0)
        separator = DetectSeparator(header);
    if (separator == 0 || separator == '\n' || separator == '"') {
        result.problem = QStringLiteral("the header line has no separator (\";\", \",\" or tab)");
        return result;
    }

    const bool utf8 = IsValidUtf8(header);
    QStringList cells;
    CellReader reader(header, separator);
    std::string_view cell;
    while (reader.Next(cell))
        cells.append(Decode(cell, utf8, reader.WasQuoted()));
    while (!cells.isEmpty() && cells.last().isEmpty())
        cells.removeLast();

    Layout layout;
    layout.separator = separator;
    layout.commaDecimal = separator != ',';
    layout.cellCount = static_cast<int>(cells.size());
    layout.dataOffset = dataOffset;
    layout.dataLine = headerLine + 1;

    if (CellReader first(header, separator); first.Next(cell) && ParseTimestamp(cell)) {
        result.problem = QStringLiteral("there is no header line: line %1 starts with a time").arg(headerLine);
        return result;
    }
    if (cells.size() >= 2 && IsDateName(NameKey(cells[0], true)) && IsTimeOfDayName(NameKey(cells[1], true))) {
        layout.timeCells = 2;
    } else if (cells.isEmpty() || !IsTimeColumnName(cells[0])) {
        // An unknown name will do when the first data line starts with a time.
        std::string_view sample;
        std::size_t samplePos = pos;
        while (NextLine(text, samplePos, sample) && IsBlankText(sample)) { }
        CellReader sampleCells(sample, separator);
        if (cells.isEmpty() || !sampleCells.Next(cell) || !ParseTimestamp(cell)) {
            result.problem = QStringLiteral("the first column %1 is no time column")
                                 .arg(cells.isEmpty() ? QStringLiteral("\"\"") : '"' + cells[0] + '"');
            return result;
        }
    }
    for (qsizetype i = layout.timeCells; i < cells.size(); ++i)
        layout.channels.push_back(ChannelFromHeader(cells[i], static_cast<int>(i - layout.timeCells + 1)));
    if (layout.channels.empty()) {
        result.problem = QStringLiteral("the header names no value column");
        return result;
    }
    result.layout = std::move(layout);
    return result;
}

std::optional<double> ParseTimestamp(std::string_view cell)
{
    Cursor in = CursorOn(cell);
    DateTimeParts parts;
    bool iso = false;
    if (!ReadDate(in, parts, iso))
        return std::nullopt;
    if (!in.AtEnd()) {
        if (!in.Take('T') && !in.Take('t')) {
            if (!in.Peek(' ') && !in.Peek('\t'))
                return std::nullopt;
            while (in.Take(' ') || in.Take('\t')) { }
        }
        if (!ReadTime(in, parts))
            return std::nullopt;
        if (iso && !in.Take('Z'))
            in.Take('z');
    }
    if (!in.AtEnd())
        return std::nullopt;
    return Compose(parts);
}

std::optional<double> ParseTimestamp(std::string_view dateCell, std::string_view timeCell)
{
    Cursor date = CursorOn(dateCell);
    Cursor time = CursorOn(timeCell);
    DateTimeParts parts;
    bool iso = false;
    if (!ReadDate(date, parts, iso) || !date.AtEnd() || !ReadTime(time, parts))
        return std::nullopt;
    if (iso && !time.Take('Z'))
        time.Take('z');
    if (!time.AtEnd())
        return std::nullopt;
    return Compose(parts);
}

CellValue ParseNumber(std::string_view cell, bool commaDecimal, double& value)
{
    const char* begin = cell.data();
    const char* end = begin + cell.size();
    double number = 0.0;
    // Most cells are a plain number with nothing around it.
    if (begin != end) {
        const auto [stop, error] = std::from_chars(begin, end, number);
        if (error == std::errc() && stop == end && std::isfinite(number)) {
            value = number;
            return CellValue::Number;
        }
    }
    while (begin < end && IsBlank(*begin))
        ++begin;
    while (end > begin && IsBlank(end[-1]))
        --end;
    if (begin == end)
        return CellValue::Empty;
    // from_chars takes no "+".
    if (*begin == '+' && (++begin == end || *begin == '-' || *begin == '+'))
        return CellValue::Bad;
    char buffer[64];
    if (commaDecimal) {
        if (const auto* comma = static_cast<const char*>(std::memchr(begin, ',', end - begin))) {
            const auto length = static_cast<std::size_t>(end - begin);
            if (length > sizeof buffer)
                return CellValue::Bad;
            std::memcpy(buffer, begin, length);
            buffer[comma - begin] = '.';
            begin = buffer;
            end = buffer + length;
        }
    }
    const auto [stop, error] = std::from_chars(begin, end, number);
    if (error != std::errc() || stop != end || !std::isfinite(number))
        return CellValue::Bad;
    value = number;
    return CellValue::Number;
}

LineCheck CheckLine(std::string_view line, const Layout& layout, double& time)
{
    if (line.size() > MaxLineLength)
        return LineCheck::TooLong;
    const char separator = layout.separator;
    const int cells = CountCells(line, separator);
    if (cells != layout.cellCount) {
        bool ragged = cells < layout.cellCount;
        if (!ragged) {
            // Cells behind the header's last one are allowed when empty (a trailing separator).
            CellReader reader(line, separator);
            std::string_view cell;
            for (int i = 0; reader.Next(cell); ++i)
                if (i >= layout.cellCount && !Trim(cell).empty())
                    ragged = true;
        }
        if (ragged)
            return IsEmptyRow(line, separator) ? LineCheck::Blank : LineCheck::Ragged;
    }
    CellReader reader(line, separator);
    std::string_view first;
    std::string_view second;
    reader.Next(first);
    const std::optional<double> parsed = layout.timeCells == 2
        ? (reader.Next(second) ? ParseTimestamp(first, second) : std::nullopt)
        : ParseTimestamp(first);
    if (!parsed)
        return IsEmptyRow(line, separator) ? LineCheck::Blank : LineCheck::BadTime;
    time = *parsed;
    return LineCheck::Ok;
}

std::size_t ReadValues(std::string_view text, const Layout& layout, std::span<const int> cells,
    std::span<double> values, std::span<CellValue> kinds)
{
    const char separator = layout.separator;
    const char* p = text.data();
    const char* const end = p + text.size();
    const std::size_t count = std::min({ cells.size(), values.size(), kinds.size() });
    std::size_t found = 0;
    for (int cell = 0; found < count; ++cell) {
        if (cell == cells[found] && p < end && *p != '"') {
            // A plain number directly followed by the separator needs no second pass over the cell.
            double number = 0.0;
            const auto [stop, error] = std::from_chars(p, end, number);
            if (error == std::errc() && stop != p && (stop == end || *stop == separator || *stop == '\n')
                && std::isfinite(number)) {
                values[found] = number;
                kinds[found] = CellValue::Number;
                ++found;
                p = stop;
                if (p == end || *p == '\n')
                    break;
                ++p;
                continue;
            }
        }
        const char* cellBegin = p;
        const char* cellEnd = nullptr;
        const char* quote = p;
        while (quote < end && (*quote == ' ' || (*quote == '\t' && separator != '\t')))
            ++quote;
        const bool quoted = quote < end && *quote == '"';
        if (quoted) {
            cellBegin = quote + 1;
            const char* close = cellBegin;
            for (;;) {
                while (close < end && *close != '"' && *close != '\n')
                    ++close;
                if (close + 1 < end && close[0] == '"' && close[1] == '"') {
                    close += 2;
                    continue;
                }
                break;
            }
            cellEnd = close;
            p = close < end && *close == '"' ? close + 1 : close;
            while (p < end && *p != separator && *p != '\n')
                ++p;
        } else {
            while (p < end && *p != separator && *p != '\n')
                ++p;
            cellEnd = p;
        }
        if (cell == cells[found]) {
            kinds[found] = ParseNumber(std::string_view(cellBegin, static_cast<std::size_t>(cellEnd - cellBegin)),
                layout.commaDecimal || quoted, values[found]);
            ++found;
        }
        if (p == end || *p == '\n')
            break;
        ++p;
    }
    return found;
}

QString QuoteCell(std::string_view line, char separator, int cell)
{
    CellReader reader(line, separator);
    std::string_view text;
    for (int i = 0; i <= cell; ++i)
        if (!reader.Next(text))
            return QStringLiteral("\"\"");
    text = Trim(text);
    return '"' + QString::fromUtf8(text.data(), static_cast<qsizetype>(std::min<std::size_t>(text.size(), 40))) + '"';
}

QString DescribeProblem(LineCheck check, std::string_view line, const Layout& layout)
{
    switch (check) {
    case LineCheck::Ragged:
        return QStringLiteral("%1 cells where the header has %2")
            .arg(CountCells(line, layout.separator))
            .arg(layout.cellCount);
    case LineCheck::BadTime:
        if (layout.timeCells == 2)
            return QStringLiteral("no valid time in %1 %2")
                .arg(QuoteCell(line, layout.separator, 0), QuoteCell(line, layout.separator, 1));
        return QStringLiteral("no valid time in %1").arg(QuoteCell(line, layout.separator, 0));
    case LineCheck::TooLong:
        return QStringLiteral("the line is longer than %1 bytes").arg(MaxLineLength);
    case LineCheck::Ok:
    case LineCheck::Blank:
        break;
    }
    return QString();
}

} // namespace Csv
