// SPDX-License-Identifier: GPL-3.0-or-later
// Masks are parsed into item lists that point into the mask text and kept in a small
// per-thread cache, so a table column formatted cell by cell parses its mask once.
#include "Formatter.h"

#include "Calendar.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace {

// ---------------------------------------------------------------------------------------
// Cache of parsed masks. Items hold offsets into the mask, so the text passed in for
// formatting (equal to the cached key) is all a caller needs besides the items.

template<typename Parsed> class MaskCache
{
public:
    template<typename ParseFn> const Parsed& Get(QStringView mask, ParseFn parse)
    {
        for (int i = 0; i < m_used; ++i) {
            if (QStringView(m_entries[i].mask) == mask)
                return m_entries[i].parsed;
        }
        Entry& entry = m_entries[m_next];
        m_next = (m_next + 1) % kSize;
        m_used = std::min(m_used + 1, kSize);
        entry.mask = mask.toString();
        entry.parsed = parse(mask);
        return entry.parsed;
    }

private:
    static constexpr int kSize = 4;
    struct Entry
    {
        QString mask;
        Parsed parsed;
    };
    std::array<Entry, kSize> m_entries;
    int m_used = 0;
    int m_next = 0;
};

char16_t Lower(QChar c)
{
    const char16_t u = c.unicode();
    return (u >= u'A' && u <= u'Z') ? char16_t(u + (u'a' - u'A')) : u;
}

bool StartsWithNoCase(QStringView text, qsizetype at, QStringView word)
{
    if (text.size() - at < word.size())
        return false;
    for (qsizetype i = 0; i < word.size(); ++i) {
        if (Lower(text[at + i]) != word[i].unicode())
            return false;
    }
    return true;
}

// Index of the closing double quote of a literal opened at open, or the mask's end.
qsizetype ClosingQuote(QStringView mask, qsizetype open, qsizetype end)
{
    qsizetype i = open + 1;
    while (i < end && mask[i] != u'"')
        ++i;
    return i;
}

void AppendNumber(QString& out, int value, int minDigits)
{
    if (value < 0) {
        out += u'-';
        value = -value;
    }
    char16_t digits[12];
    int count = 0;
    do {
        digits[count++] = char16_t(u'0' + value % 10);
        value /= 10;
    } while (value > 0);
    for (int i = count; i < minDigits; ++i)
        out += u'0';
    while (count > 0)
        out += QChar(digits[--count]);
}

// ---------------------------------------------------------------------------------------
// Decimal digits of a magnitude

// A magnitude as decimal digits: digits[0] stands at 10^exponent, count == 0 is zero.
struct Decimal
{
    std::array<char, 24> digits {};
    int count = 0;
    int exponent = 0;

    int At(int position) const
    {
        const int index = exponent - position;
        return (index >= 0 && index < count) ? digits[size_t(index)] : 0;
    }

    void StripTrailingZeros()
    {
        while (count > 0 && digits[size_t(count - 1)] == 0)
            --count;
    }

    // Keeps `keep` leading digits, rounding half away from zero.
    void RoundTo(int keep)
    {
        if (keep >= count)
            return;
        if (keep < 0) {
            count = 0;
            return;
        }
        const bool up = digits[size_t(keep)] >= 5;
        count = keep;
        if (!up) {
            StripTrailingZeros();
            return;
        }
        int i = keep - 1;
        while (i >= 0 && digits[size_t(i)] == 9)
            --i;
        if (i < 0) {
            digits[0] = 1;
            count = 1;
            ++exponent;
        } else {
            ++digits[size_t(i)];
            count = i + 1;
        }
    }
};

// Reads "d.ddde+XX" as written by std::to_chars in scientific form.
Decimal ParseScientific(const char* first, const char* last)
{
    Decimal d;
    const char* p = first;
    for (; p != last && *p != 'e'; ++p) {
        if (*p >= '0' && *p <= '9' && d.count < int(d.digits.size()))
            d.digits[size_t(d.count++)] = char(*p - '0');
    }
    if (p != last) {
        ++p;
        const bool negative = (p != last && *p == '-');
        if (p != last && (*p == '-' || *p == '+'))
            ++p;
        std::from_chars(p, last, d.exponent);
        if (negative)
            d.exponent = -d.exponent;
    }
    d.StripTrailingZeros();
    if (d.count > 0 && d.digits[0] == 0)
        d.count = 0;
    return d;
}

// Masks work on 15 significant digits, what a double reliably carries: 2.345 is stored as
// 2.34499999999999997..., and the 2.345 it was typed as is what rounds to "2.35".
Decimal ToDecimal15(double magnitude)
{
    char buffer[40];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, magnitude, std::chars_format::scientific, 14);
    return ParseScientific(buffer, result.ptr);
}

// The shortest digits that read back as the same double.
Decimal ToDecimalShortest(double magnitude)
{
    char buffer[40];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, magnitude, std::chars_format::scientific);
    return ParseScientific(buffer, result.ptr);
}

// ---------------------------------------------------------------------------------------
// Number masks

enum class NumKind : quint8 { Literal, IntDigit, Point, FracDigit, ExpMarker, ExpDigit };

struct NumItem
{
    NumKind kind;
    int start; // literal span or position of the "E"
    int length;
};

struct NumSection
{
    std::vector<NumItem> items;
    int intDigits = 0; // integer placeholders
    int minIntDigits = 0; // placeholders from the first "0" on
    int fracDigits = 0;
    int minFracDigits = 0; // up to the last "0"
    int expDigits = 0;
    int minExpDigits = 0;
    int scale = 0; // decimal exponent added by "%" and scaling commas
    bool grouping = false;
    bool exponent = false;
    bool empty = true;
};

struct NumMask
{
    std::array<NumSection, 3> sections;
    int count = 0;
};

void AddLiteral(std::vector<NumItem>& items, qsizetype start, qsizetype length)
{
    if (length <= 0)
        return;
    if (!items.empty() && items.back().kind == NumKind::Literal && items.back().start + items.back().length == start) {
        items.back().length += int(length);
        return;
    }
    items.push_back({ NumKind::Literal, int(start), int(length) });
}

bool IsDigitPlaceholder(QChar c)
{
    return c == u'0' || c == u'#';
}

NumSection ParseNumberSection(QStringView mask, qsizetype begin, qsizetype end)
{
    enum class Phase { Integer, Fraction, Exponent };
    NumSection s;
    s.empty = (begin == end);
    Phase phase = Phase::Integer;
    int pendingCommas = 0;
    int scaleCommas = 0;
    int percents = 0;
    int firstIntZero = -1;
    int firstExpZero = -1;

    const auto endInteger = [&] {
        scaleCommas += pendingCommas;
        pendingCommas = 0;
    };

    for (qsizetype i = begin; i < end;) {
        const QChar c = mask[i];
        if (c == u'"') {
            const qsizetype close = ClosingQuote(mask, i, end);
            AddLiteral(s.items, i + 1, close - i - 1);
            i = close + 1;
        } else if (c == u'\\') {
            if (i + 1 < end)
                AddLiteral(s.items, i + 1, 1);
            i += 2;
        } else if (IsDigitPlaceholder(c)) {
            const bool zero = (c == u'0');
            if (phase == Phase::Integer) {
                if (pendingCommas > 0)
                    s.grouping = true;
                pendingCommas = 0;
                if (zero && firstIntZero < 0)
                    firstIntZero = s.intDigits;
                ++s.intDigits;
                s.items.push_back({ NumKind::IntDigit, int(i), 1 });
            } else if (phase == Phase::Fraction) {
                ++s.fracDigits;
                if (zero)
                    s.minFracDigits = s.fracDigits;
                s.items.push_back({ NumKind::FracDigit, int(i), 1 });
            } else {
                if (zero && firstExpZero < 0)
                    firstExpZero = s.expDigits;
                ++s.expDigits;
                s.items.push_back({ NumKind::ExpDigit, int(i), 1 });
            }
            ++i;
        } else if (c == u'.' && phase == Phase::Integer) {
            endInteger();
            phase = Phase::Fraction;
            s.items.push_back({ NumKind::Point, int(i), 1 });
            ++i;
        } else if (c == u',' && phase == Phase::Integer && s.intDigits > 0) {
            ++pendingCommas;
            ++i;
        } else if ((c == u'E' || c == u'e') && phase != Phase::Exponent && i + 2 < end
            && (mask[i + 1] == u'+' || mask[i + 1] == u'-') && IsDigitPlaceholder(mask[i + 2])) {
            endInteger();
            phase = Phase::Exponent;
            s.exponent = true;
            s.items.push_back({ NumKind::ExpMarker, int(i), 2 });
            i += 2;
        } else {
            if (c == u'%')
                ++percents;
            AddLiteral(s.items, i, 1);
            ++i;
        }
    }
    endInteger();
    s.minIntDigits = firstIntZero < 0 ? 0 : s.intDigits - firstIntZero;
    s.minExpDigits = firstExpZero < 0 ? 0 : s.expDigits - firstExpZero;
    s.scale = 2 * percents - 3 * scaleCommas;
    return s;
}

NumMask ParseNumberMask(QStringView mask)
{
    NumMask parsed;
    qsizetype begin = 0;
    for (qsizetype i = 0; i <= mask.size() && parsed.count < 3;) {
        if (i == mask.size() || mask[i] == u';') {
            parsed.sections[size_t(parsed.count++)] = ParseNumberSection(mask, begin, i);
            begin = ++i;
        } else if (mask[i] == u'"') {
            i = ClosingQuote(mask, i, mask.size()) + 1;
            i = std::min(i, mask.size());
        } else if (mask[i] == u'\\') {
            i = std::min(i + 2, mask.size());
        } else {
            ++i;
        }
    }
    return parsed;
}

// Rounds the magnitude for a section: fixed to the section's decimals, scientific to its
// significant digits. Returns the exponent to print (0 without an "E").
int PrepareDigits(Decimal& d, const NumSection& s)
{
    if (d.count == 0)
        return 0;
    d.exponent += s.scale;
    if (!s.exponent) {
        d.RoundTo(d.exponent + 1 + s.fracDigits);
        return 0;
    }
    const int leading = std::max(s.intDigits, 1);
    d.RoundTo(leading + s.fracDigits);
    if (d.count == 0)
        return 0;
    const int shown = d.exponent - (leading - 1);
    d.exponent -= shown;
    return shown;
}

// Writes `count` digits onto `places` placeholders aligned at the right; the leftmost
// placeholder takes every digit that has no placeholder of its own.
template<typename DigitAt, typename BeforeDigit>
void AppendAligned(QString& out, int place, int places, int count, DigitAt digitAt, BeforeDigit beforeDigit)
{
    const int last = count - (places - place);
    const int first = place == 0 ? 0 : last;
    for (int k = std::max(first, 0); k <= last; ++k) {
        beforeDigit(k);
        out += QChar(char16_t(u'0' + digitAt(k)));
    }
}

void RenderNumber(QString& out, QStringView mask, const NumSection& s, const Decimal& d, int shownExponent,
    const QString& decimalPoint, const QString& groupSeparator)
{
    const int intCount = std::max(d.count > 0 && d.exponent >= 0 ? d.exponent + 1 : 0, s.minIntDigits);
    const auto intDigitAt = [&](int k) { return d.At(intCount - 1 - k); };
    const auto group = [&](int k) {
        if (s.grouping && k > 0 && (intCount - k) % 3 == 0)
            out += groupSeparator;
    };
    const int lowest = d.exponent - (d.count - 1);
    const int fracShown = std::max(s.minFracDigits, d.count > 0 ? std::max(0, -lowest) : 0);

    const int expAbs = std::abs(shownExponent);
    int expCount = 1;
    for (int v = expAbs; v >= 10; v /= 10)
        ++expCount;
    expCount = std::max(expCount, s.minExpDigits);
    const auto expDigitAt = [&](int k) {
        int v = expAbs;
        for (int i = expCount - 1 - k; i > 0; --i)
            v /= 10;
        return v % 10;
    };

    int intPlace = 0;
    int fracPlace = 0;
    int expPlace = 0;
    for (const NumItem& item : s.items) {
        switch (item.kind) {
        case NumKind::Literal:
            out += mask.sliced(item.start, item.length);
            break;
        case NumKind::IntDigit:
            AppendAligned(out, intPlace++, s.intDigits, intCount, intDigitAt, group);
            break;
        case NumKind::Point:
            if (s.intDigits == 0)
                AppendAligned(out, 0, 1, intCount, intDigitAt, group);
            out += decimalPoint;
            break;
        case NumKind::FracDigit:
            if (fracPlace < fracShown)
                out += QChar(char16_t(u'0' + d.At(-1 - fracPlace)));
            ++fracPlace;
            break;
        case NumKind::ExpMarker:
            out += mask[item.start];
            if (shownExponent < 0)
                out += u'-';
            else if (mask[item.start + 1] == u'+')
                out += u'+';
            break;
        case NumKind::ExpDigit:
            AppendAligned(out, expPlace++, s.expDigits, expCount, expDigitAt, [](int) {});
            break;
        }
    }
}

// ---------------------------------------------------------------------------------------
// Date masks

enum class DateKind : quint8 {
    Literal,
    Day,
    Day2,
    DayName,
    DayNameLong,
    Month,
    Month2,
    MonthName,
    MonthNameLong,
    Minute,
    Minute2,
    DayOfYear,
    Year2,
    Year4,
    Hour,
    Hour2,
    Second,
    Second2,
    Weekday,
    IsoWeek,
    Quarter,
    DateSeparator,
    TimeSeparator,
    AmPm, // "AM/PM" or "A/P" as written in the mask
    AmPmLocale // "AMPM"
};

struct DateItem
{
    DateKind kind;
    int start;
    int length;
};

struct DateMask
{
    std::vector<DateItem> items;
    bool twelveHour = false;
};

DateMask ParseDateMask(QStringView mask)
{
    DateMask parsed;
    auto& items = parsed.items;
    const auto literal = [&items](qsizetype start, qsizetype length) {
        if (length <= 0)
            return;
        if (!items.empty() && items.back().kind == DateKind::Literal
            && items.back().start + items.back().length == start) {
            items.back().length += int(length);
            return;
        }
        items.push_back({ DateKind::Literal, int(start), int(length) });
    };
    const auto token = [&items](DateKind kind, qsizetype start, qsizetype length) {
        items.push_back({ kind, int(start), int(length) });
    };

    // An "m" right after an hour is a minute; literals may stand between, tokens may not.
    bool afterHour = false;
    const qsizetype size = mask.size();
    for (qsizetype i = 0; i < size;) {
        const char16_t c = Lower(mask[i]);
        if (c == u'"') {
            const qsizetype close = ClosingQuote(mask, i, size);
            literal(i + 1, close - i - 1);
            i = close + 1;
            continue;
        }
        if (c == u'\\') {
            if (i + 1 < size)
                literal(i + 1, 1);
            i += 2;
            continue;
        }
        if (c == u'/' || c == u':') {
            token(c == u'/' ? DateKind::DateSeparator : DateKind::TimeSeparator, i, 1);
            ++i;
            continue;
        }
        if (c == u'a') {
            const qsizetype length = StartsWithNoCase(mask, i, u"am/pm") ? 5
                : StartsWithNoCase(mask, i, u"a/p")                      ? 3
                : StartsWithNoCase(mask, i, u"ampm")                     ? 4
                                                                         : 0;
            if (length > 0) {
                token(length == 4 ? DateKind::AmPmLocale : DateKind::AmPm, i, length);
                parsed.twelveHour = true;
                afterHour = false;
                i += length;
                continue;
            }
        }
        if (c != u'd' && c != u'm' && c != u'y' && c != u'h' && c != u'n' && c != u's' && c != u'w' && c != u'q') {
            literal(i, 1);
            ++i;
            continue;
        }

        qsizetype run = 1;
        while (i + run < size && Lower(mask[i + run]) == c)
            ++run;
        DateKind kind = DateKind::Literal;
        switch (c) {
        case u'd':
            kind = run == 1 ? DateKind::Day
                : run == 2  ? DateKind::Day2
                : run == 3  ? DateKind::DayName
                            : DateKind::DayNameLong;
            break;
        case u'm':
            if (run <= 2 && afterHour)
                kind = run == 1 ? DateKind::Minute : DateKind::Minute2;
            else
                kind = run == 1 ? DateKind::Month
                    : run == 2  ? DateKind::Month2
                    : run == 3  ? DateKind::MonthName
                                : DateKind::MonthNameLong;
            break;
        case u'y':
            kind = run == 1 ? DateKind::DayOfYear : run < 4 ? DateKind::Year2 : DateKind::Year4;
            break;
        case u'h':
            kind = run == 1 ? DateKind::Hour : DateKind::Hour2;
            break;
        case u'n':
            kind = run == 1 ? DateKind::Minute : DateKind::Minute2;
            break;
        case u's':
            kind = run == 1 ? DateKind::Second : DateKind::Second2;
            break;
        case u'w':
            kind = run == 1 ? DateKind::Weekday : DateKind::IsoWeek;
            break;
        default: // 'q': every letter is one quarter
            kind = DateKind::Quarter;
            run = 1;
            break;
        }
        token(kind, i, run);
        afterHour = (c == u'h');
        i += run;
    }
    return parsed;
}

bool IsNamed(QStringView mask, QStringView name)
{
    return mask.size() == name.size() && mask.compare(name, Qt::CaseInsensitive) == 0;
}

// Converts a Qt date or time format into the mask language: "M" month, "m" minute,
// quoted text becomes escaped characters, milliseconds and the time zone are left out.
QString MaskFromQtFormat(QStringView format, bool fourDigitYear, bool dropAmPm)
{
    QString mask;
    const auto escaped = [&mask](QChar c) {
        if (c.isLetter() || c == u'/' || c == u':' || c == u'"' || c == u'\\')
            mask += u'\\';
        mask += c;
    };
    const qsizetype size = format.size();
    for (qsizetype i = 0; i < size;) {
        const QChar c = format[i];
        if (c == u'\'') {
            if (i + 1 < size && format[i + 1] == u'\'') {
                escaped(c);
                i += 2;
                continue;
            }
            for (++i; i < size; ++i) {
                if (format[i] == u'\'') {
                    if (i + 1 < size && format[i + 1] == u'\'') {
                        escaped(format[i]);
                        ++i;
                        continue;
                    }
                    break;
                }
                escaped(format[i]);
            }
            ++i;
            continue;
        }
        qsizetype run = 1;
        while (i + run < size && format[i + run] == c)
            ++run;
        switch (c.unicode()) {
        case u'd':
            mask += QString(std::min<qsizetype>(run, 4), u'd');
            break;
        case u'M':
            mask += QString(std::min<qsizetype>(run, 4), u'm');
            break;
        case u'y':
            mask += (fourDigitYear || run >= 4) ? QStringView(u"yyyy") : QStringView(u"yy");
            break;
        case u'h':
        case u'H':
            mask += run == 1 ? QStringView(u"h") : QStringView(u"hh");
            break;
        case u'm':
            mask += run == 1 ? QStringView(u"n") : QStringView(u"nn");
            break;
        case u's':
            mask += run == 1 ? QStringView(u"s") : QStringView(u"ss");
            break;
        case u'z':
        case u't':
            break;
        case u'A':
        case u'a':
            run = 1;
            if (i + 1 < size && (format[i + 1] == u'P' || format[i + 1] == u'p'))
                run = 2;
            if (!dropAmPm)
                mask += QStringView(u"AMPM");
            break;
        default:
            for (qsizetype k = 0; k < run; ++k)
                escaped(c);
            break;
        }
        i += run;
    }
    return mask.trimmed();
}

// The first separator character of a Qt format, outside quotes.
QChar SeparatorOf(QStringView format, QChar fallback)
{
    bool quoted = false;
    for (const QChar c : format) {
        if (c == u'\'')
            quoted = !quoted;
        else if (!quoted && !c.isLetterOrNumber() && !c.isSpace())
            return c;
    }
    return fallback;
}

} // namespace

Formatter::Formatter(const QLocale& locale)
    : m_locale(locale)
    , m_decimalPoint(locale.decimalPoint())
    , m_groupSeparator(locale.groupSeparator())
    , m_amText(locale.amText())
    , m_pmText(locale.pmText())
{
    const QString shortDate = locale.dateFormat(QLocale::ShortFormat);
    const QString shortTime = locale.timeFormat(QLocale::ShortFormat);
    m_shortDate = MaskFromQtFormat(shortDate, true, false);
    // Short time is always counted in 24 hours, so the AM/PM marker goes.
    m_shortTime = MaskFromQtFormat(shortTime, false, true);
    m_longTime = MaskFromQtFormat(locale.timeFormat(QLocale::LongFormat), false, false);
    if (m_shortDate.isEmpty())
        m_shortDate = QStringLiteral("dd/mm/yyyy");
    if (m_shortTime.isEmpty())
        m_shortTime = QStringLiteral("hh:nn");
    if (m_longTime.isEmpty())
        m_longTime = QStringLiteral("hh:nn:ss");
    m_dateSeparator = SeparatorOf(shortDate, u'/');
    m_timeSeparator = SeparatorOf(shortTime, u':');
    for (int i = 0; i < 12; ++i) {
        m_monthNames[size_t(i)] = locale.monthName(i + 1, QLocale::ShortFormat);
        m_monthNamesLong[size_t(i)] = locale.monthName(i + 1, QLocale::LongFormat);
    }
    // QLocale counts Monday as 1 and Sunday as 7.
    for (int i = 0; i < 7; ++i) {
        const int qtDay = i == 0 ? 7 : i;
        m_dayNames[size_t(i)] = locale.dayName(qtDay, QLocale::ShortFormat);
        m_dayNamesLong[size_t(i)] = locale.dayName(qtDay, QLocale::LongFormat);
    }
}

QString Formatter::FormatNumber(double value, QStringView mask) const
{
    if (mask.isEmpty() || !std::isfinite(value))
        return GeneralNumber(value);

    thread_local MaskCache<NumMask> cache;
    const NumMask& parsed = cache.Get(mask, ParseNumberMask);
    const NumSection& positive = parsed.sections[0];
    const NumSection* negative = parsed.count >= 2 && !parsed.sections[1].empty ? &parsed.sections[1] : nullptr;
    const NumSection* zero = parsed.count >= 3 && !parsed.sections[2].empty ? &parsed.sections[2] : nullptr;

    const bool isNegative = value < 0;
    const NumSection* section = isNegative && negative ? negative : &positive;
    // Without a negative section the minus goes in front, also where the value rounds
    // to zero: "-0" tells a small negative reading from a small positive one.
    bool minus = isNegative && !negative;
    Decimal d = ToDecimal15(std::fabs(value));
    int shownExponent = PrepareDigits(d, *section);
    if (d.count == 0 && zero) {
        section = zero;
        minus = false;
        d = Decimal();
        shownExponent = 0;
    }

    QString out;
    out.reserve(mask.size() + 24);
    if (minus)
        out += u'-';
    RenderNumber(out, mask, *section, d, shownExponent, m_decimalPoint, m_groupSeparator);
    return out;
}

QString Formatter::GeneralNumber(double value) const
{
    if (!std::isfinite(value))
        return m_locale.toString(value);
    if (value == 0)
        return QStringLiteral("0");

    const Decimal d = ToDecimalShortest(std::fabs(value));
    QString out;
    out.reserve(d.count + 8);
    if (value < 0)
        out += u'-';
    const auto digit = [&d](int index) { return QChar(char16_t(u'0' + d.digits[size_t(index)])); };

    // Fixed notation from 0.0001 up to fifteen integer digits, what a double holds exactly.
    if (d.exponent >= -4 && d.exponent < 15) {
        if (d.exponent < 0) {
            out += u'0';
            out += m_decimalPoint;
            for (int i = -1; i > d.exponent; --i)
                out += u'0';
            for (int i = 0; i < d.count; ++i)
                out += digit(i);
            return out;
        }
        for (int i = 0; i <= d.exponent; ++i)
            out += i < d.count ? digit(i) : QChar(u'0');
        if (d.count > d.exponent + 1) {
            out += m_decimalPoint;
            for (int i = d.exponent + 1; i < d.count; ++i)
                out += digit(i);
        }
        return out;
    }

    out += digit(0);
    if (d.count > 1) {
        out += m_decimalPoint;
        for (int i = 1; i < d.count; ++i)
            out += digit(i);
    }
    out += u'E';
    out += d.exponent < 0 ? u'-' : u'+';
    AppendNumber(out, std::abs(d.exponent), 2);
    return out;
}

QString Formatter::FormatDate(double date, QStringView mask) const
{
    if (!std::isfinite(date))
        return QString();
    if (mask.isEmpty() || IsNamed(mask, u"General Date"))
        return GeneralDate(date);
    if (IsNamed(mask, u"Short Date"))
        mask = m_shortDate;
    else if (IsNamed(mask, u"Short Time"))
        mask = m_shortTime;
    else if (IsNamed(mask, u"Long Time"))
        mask = m_longTime;

    QString out;
    out.reserve(mask.size() + 16);
    AppendDate(out, date, Calendar::Split(date), mask);
    return out;
}

void Formatter::AppendDate(QString& out, double date, const Calendar::DateParts& parts, QStringView mask) const
{
    thread_local MaskCache<DateMask> cache;
    const DateMask& parsed = cache.Get(mask, ParseDateMask);
    int weekday = 0; // computed on first use
    const auto sunday1 = [&] {
        if (weekday == 0)
            weekday = Calendar::Weekday(date);
        return weekday;
    };
    const int hour12 = parts.hour % 12 == 0 ? 12 : parts.hour % 12;
    const int hour = parsed.twelveHour ? hour12 : parts.hour;

    for (const DateItem& item : parsed.items) {
        switch (item.kind) {
        case DateKind::Literal:
            out += mask.sliced(item.start, item.length);
            break;
        case DateKind::Day:
        case DateKind::Day2:
            AppendNumber(out, parts.day, item.kind == DateKind::Day2 ? 2 : 1);
            break;
        case DateKind::DayName:
            out += m_dayNames[size_t(sunday1() - 1)];
            break;
        case DateKind::DayNameLong:
            out += m_dayNamesLong[size_t(sunday1() - 1)];
            break;
        case DateKind::Month:
        case DateKind::Month2:
            AppendNumber(out, parts.month, item.kind == DateKind::Month2 ? 2 : 1);
            break;
        case DateKind::MonthName:
            out += m_monthNames[size_t(parts.month - 1)];
            break;
        case DateKind::MonthNameLong:
            out += m_monthNamesLong[size_t(parts.month - 1)];
            break;
        case DateKind::Minute:
        case DateKind::Minute2:
            AppendNumber(out, parts.minute, item.kind == DateKind::Minute2 ? 2 : 1);
            break;
        case DateKind::DayOfYear:
            AppendNumber(out,
                int(Calendar::FromParts(parts.year, parts.month, parts.day) - Calendar::FromParts(parts.year, 1, 1))
                    + 1,
                1);
            break;
        case DateKind::Year2:
            AppendNumber(out, std::abs(parts.year) % 100, 2);
            break;
        case DateKind::Year4:
            AppendNumber(out, parts.year, 1);
            break;
        case DateKind::Hour:
        case DateKind::Hour2:
            AppendNumber(out, hour, item.kind == DateKind::Hour2 ? 2 : 1);
            break;
        case DateKind::Second:
        case DateKind::Second2:
            AppendNumber(out, parts.second, item.kind == DateKind::Second2 ? 2 : 1);
            break;
        case DateKind::Weekday:
            AppendNumber(out, sunday1(), 1);
            break;
        case DateKind::IsoWeek:
            AppendNumber(out, Calendar::IsoWeek(date), 1);
            break;
        case DateKind::Quarter:
            AppendNumber(out, (parts.month - 1) / 3 + 1, 1);
            break;
        case DateKind::DateSeparator:
            out += m_dateSeparator;
            break;
        case DateKind::TimeSeparator:
            out += m_timeSeparator;
            break;
        case DateKind::AmPm: {
            // "AM/PM" or "A/P": the part before the slash in the morning, as written.
            const int half = item.length / 2;
            out += parts.hour < 12 ? mask.sliced(item.start, half) : mask.sliced(item.start + half + 1, half);
            break;
        }
        case DateKind::AmPmLocale:
            out += parts.hour < 12 ? m_amText : m_pmText;
            break;
        }
    }
}

QString Formatter::GeneralDate(double date) const
{
    if (!std::isfinite(date))
        return QString();
    const Calendar::DateParts parts = Calendar::Split(date);
    QString out;
    out.reserve(24);
    if (std::trunc(date) == 0) {
        AppendDate(out, date, parts, m_longTime);
        return out;
    }
    AppendDate(out, date, parts, m_shortDate);
    if (parts.hour != 0 || parts.minute != 0 || parts.second != 0 || parts.millisecond != 0) {
        out += u' ';
        AppendDate(out, date, parts, m_longTime);
    }
    return out;
}
