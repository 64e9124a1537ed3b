// SPDX-License-Identifier: GPL-3.0-or-later
// Calendar arithmetic on whole milliseconds with integer civil-date conversions; only the
// conversions to and from QDateTime touch Qt's date classes.
#include "Calendar.h"

#include <QDate>
#include <QTime>

#include <algorithm>
#include <cmath>

namespace Calendar {

namespace {

constexpr std::int64_t MsPerSecond = 1000;
constexpr std::int64_t MsPerMinute = 60 * MsPerSecond;
constexpr std::int64_t MsPerHour = 60 * MsPerMinute;
constexpr std::int64_t MsPerDay = 24 * MsPerHour;
constexpr std::int64_t MsPerWeek = 7 * MsPerDay;

constexpr std::int64_t MaxMs = MaxDays * MsPerDay;

// Days from 0000-03-01 to 1899-12-30 in the proleptic Gregorian calendar.
constexpr std::int64_t EpochShift = 693'899;
constexpr std::int64_t DaysPerEra = 146'097; // 400 years

constexpr std::int64_t FloorDiv(std::int64_t a, std::int64_t b)
{
    const std::int64_t q = a / b;
    return (a % b != 0 && (a < 0) != (b < 0)) ? q - 1 : q;
}

constexpr std::int64_t FloorMod(std::int64_t a, std::int64_t b)
{
    return a - FloorDiv(a, b) * b;
}

bool IsLeapYear(std::int64_t year)
{
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int DaysInMonth(std::int64_t year, int month)
{
    static constexpr int Days[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && IsLeapYear(year) ? 29 : Days[month - 1];
}

// Day number (0 = 1899-12-30) of a valid civil date. The year is shifted to start in March,
// so that the leap day is the last day of its year.
std::int64_t DaysFromCivil(std::int64_t year, int month, int day)
{
    year -= month <= 2 ? 1 : 0;
    const std::int64_t era = FloorDiv(year, 400);
    const std::int64_t yearOfEra = year - era * 400;
    const std::int64_t dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
    const std::int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * DaysPerEra + dayOfEra - EpochShift;
}

struct CivilDate
{
    std::int64_t year;
    int month;
    int day;
};

CivilDate CivilFromDays(std::int64_t days)
{
    days += EpochShift;
    const std::int64_t era = FloorDiv(days, DaysPerEra);
    const std::int64_t dayOfEra = days - era * DaysPerEra;
    const std::int64_t yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::int64_t shiftedMonth = (5 * dayOfYear + 2) / 153;
    const int day = static_cast<int>(dayOfYear - (153 * shiftedMonth + 2) / 5 + 1);
    const int month = static_cast<int>(shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9);
    return {yearOfEra + era * 400 + (month <= 2 ? 1 : 0), month, day};
}

std::int64_t ToMs(double date)
{
    return ToMilliseconds(date);
}

double FromMs(std::int64_t ms)
{
    ms = std::clamp(ms, -MaxMs, MaxMs);
    const std::int64_t days = FloorDiv(ms, MsPerDay);
    const double fraction = static_cast<double>(ms - days * MsPerDay) / MsPerDay;
    return days >= 0 ? static_cast<double>(days) + fraction : static_cast<double>(days) - fraction;
}

// Length of the units of fixed length; 0 for months and years.
std::int64_t UnitMs(Unit unit)
{
    switch (unit) {
    case Unit::Second:
        return MsPerSecond;
    case Unit::Minute:
        return MsPerMinute;
    case Unit::Hour:
        return MsPerHour;
    case Unit::Day:
        return MsPerDay;
    case Unit::Week:
        return MsPerWeek;
    case Unit::Month:
    case Unit::Year:
        break;
    }
    return 0;
}

// Week number counted from Sundays; day 1 (1899-12-31) was a Sunday.
std::int64_t SundayWeek(std::int64_t days)
{
    return FloorDiv(days - 1, 7);
}

// Scanner over the text of a date; every read checks the end first.
class Scanner
{
public:
    explicit Scanner(QStringView text) : m_text(text) {}

    bool AtEnd() const { return m_pos >= m_text.size(); }

    bool Skip(char16_t c)
    {
        if (AtEnd() || m_text[m_pos] != c)
            return false;
        ++m_pos;
        return true;
    }

    bool SkipBlanks()
    {
        const qsizetype start = m_pos;
        while (!AtEnd() && (m_text[m_pos] == u' ' || m_text[m_pos] == u'\t'))
            ++m_pos;
        return m_pos > start;
    }

    // Reads at most maxCount ASCII digits; count receives how many were read.
    int CountedDigits(int maxCount, int& count)
    {
        int value = 0;
        count = 0;
        while (count < maxCount && !AtEnd() && IsDigit(m_text[m_pos])) {
            value = value * 10 + (m_text[m_pos].unicode() - u'0');
            ++m_pos;
            ++count;
        }
        return value;
    }

    std::optional<int> Digits(int minCount, int maxCount)
    {
        int count = 0;
        const int value = CountedDigits(maxCount, count);
        if (count < minCount)
            return std::nullopt;
        return value;
    }

    // The value of a run of fraction digits of any length; digits past the ninth only have to
    // be digits.
    std::optional<double> Fraction()
    {
        int count = 0;
        const int value = CountedDigits(9, count);
        if (count == 0)
            return std::nullopt;
        while (!AtEnd() && IsDigit(m_text[m_pos]))
            ++m_pos;
        return value / std::pow(10.0, count);
    }

    bool NextIsDigit() const { return !AtEnd() && IsDigit(m_text[m_pos]); }

private:
    static bool IsDigit(QChar c) { return c >= u'0' && c <= u'9'; }

    QStringView m_text;
    qsizetype m_pos = 0;
};

struct ParsedTime
{
    int hour = 0;
    int minute = 0;
    double second = 0.0;
};

// "h[h]:nn[:ss[.f...]]" up to the end of the text.
std::optional<ParsedTime> ParseTime(Scanner& in)
{
    ParsedTime time;
    const auto hour = in.Digits(1, 2);
    if (!hour || !in.Skip(u':'))
        return std::nullopt;
    const auto minute = in.Digits(2, 2);
    if (!minute)
        return std::nullopt;
    time.hour = *hour;
    time.minute = *minute;
    if (in.Skip(u':')) {
        const auto second = in.Digits(2, 2);
        if (!second)
            return std::nullopt;
        time.second = *second;
        if (in.Skip(u'.')) {
            const auto fraction = in.Fraction();
            if (!fraction)
                return std::nullopt;
            time.second += *fraction;
        }
    }
    if (!in.AtEnd() || time.hour > 23 || time.minute > 59 || time.second >= 60.0)
        return std::nullopt;
    return time;
}

} // namespace

std::optional<Unit> ParseUnit(QStringView code)
{
    static constexpr struct
    {
        const char16_t* code;
        Unit unit;
    } Codes[] = {{u"s", Unit::Second}, {u"n", Unit::Minute}, {u"h", Unit::Hour},
                 {u"d", Unit::Day},    {u"ww", Unit::Week},  {u"m", Unit::Month},
                 {u"yyyy", Unit::Year}};
    for (const auto& entry : Codes) {
        if (code.compare(QStringView(entry.code), Qt::CaseInsensitive) == 0)
            return entry.unit;
    }
    return std::nullopt;
}

QString UnitCode(Unit unit)
{
    switch (unit) {
    case Unit::Second:
        return QStringLiteral("s");
    case Unit::Minute:
        return QStringLiteral("n");
    case Unit::Hour:
        return QStringLiteral("h");
    case Unit::Day:
        return QStringLiteral("d");
    case Unit::Week:
        return QStringLiteral("ww");
    case Unit::Month:
        return QStringLiteral("m");
    case Unit::Year:
        return QStringLiteral("yyyy");
    }
    return QString();
}

DateParts Split(double date)
{
    const std::int64_t ms = ToMs(date);
    const std::int64_t days = FloorDiv(ms, MsPerDay);
    const std::int64_t time = ms - days * MsPerDay;
    const CivilDate civil = CivilFromDays(days);
    DateParts parts;
    parts.year = static_cast<int>(civil.year);
    parts.month = civil.month;
    parts.day = civil.day;
    parts.hour = static_cast<int>(time / MsPerHour);
    parts.minute = static_cast<int>(time % MsPerHour / MsPerMinute);
    parts.second = static_cast<int>(time % MsPerMinute / MsPerSecond);
    parts.millisecond = static_cast<int>(time % MsPerSecond);
    return parts;
}

double FromParts(int year, int month, int day, int hour, int minute, double second)
{
    const std::int64_t monthIndex = std::int64_t(year) * 12 + (std::int64_t(month) - 1);
    const std::int64_t y = FloorDiv(monthIndex, 12);
    const int m = static_cast<int>(FloorMod(monthIndex, 12)) + 1;
    std::int64_t days = DaysFromCivil(y, m, 1) + (std::int64_t(day) - 1);
    days = std::clamp(days, -2 * MaxDays, 2 * MaxDays);

    double secondMs = std::isnan(second) ? 0.0 : second * MsPerSecond;
    secondMs = std::clamp(secondMs, -2.0 * MaxMs, 2.0 * MaxMs);

    return FromMs(days * MsPerDay + std::int64_t(hour) * MsPerHour + std::int64_t(minute) * MsPerMinute
                  + std::llround(secondMs));
}

double Add(Unit unit, std::int64_t count, double date)
{
    const std::int64_t ms = ToMs(date);
    const std::int64_t step = UnitMs(unit);
    if (step == 0) {
        // A count beyond the whole date range ends up clamped anyway; limiting it first
        // keeps the month index from overflowing.
        constexpr std::int64_t MaxYears = 2 * MaxDays / 365;
        const std::int64_t months = unit == Unit::Year ? std::clamp(count, -MaxYears, MaxYears) * 12
                                                       : std::clamp(count, -MaxYears * 12, MaxYears * 12);
        const std::int64_t days = FloorDiv(ms, MsPerDay);
        const std::int64_t time = ms - days * MsPerDay;
        const CivilDate civil = CivilFromDays(days);
        const std::int64_t monthIndex = civil.year * 12 + (civil.month - 1) + months;
        const std::int64_t year = FloorDiv(monthIndex, 12);
        const int month = static_cast<int>(FloorMod(monthIndex, 12)) + 1;
        const int day = std::min(civil.day, DaysInMonth(year, month));
        return FromMs(DaysFromCivil(year, month, day) * MsPerDay + time);
    }
    const std::int64_t maxCount = 2 * MaxMs / step + 1;
    return FromMs(ms + std::clamp(count, -maxCount, maxCount) * step);
}

std::int64_t Diff(Unit unit, double from, double to)
{
    const std::int64_t a = ToMs(from);
    const std::int64_t b = ToMs(to);
    switch (unit) {
    case Unit::Second:
    case Unit::Minute:
    case Unit::Hour:
    case Unit::Day: {
        const std::int64_t step = UnitMs(unit);
        return FloorDiv(b, step) - FloorDiv(a, step);
    }
    case Unit::Week:
        return SundayWeek(FloorDiv(b, MsPerDay)) - SundayWeek(FloorDiv(a, MsPerDay));
    case Unit::Month:
    case Unit::Year:
        break;
    }
    const CivilDate first = CivilFromDays(FloorDiv(a, MsPerDay));
    const CivilDate second = CivilFromDays(FloorDiv(b, MsPerDay));
    if (unit == Unit::Year)
        return second.year - first.year;
    return (second.year * 12 + second.month) - (first.year * 12 + first.month);
}

std::int64_t WholeSeconds(double date)
{
    return FloorDiv(ToMs(date), MsPerSecond);
}

int Weekday(double date)
{
    // Day 0 was a Saturday.
    return static_cast<int>(FloorMod(FloorDiv(ToMs(date), MsPerDay) + 6, 7)) + 1;
}

int IsoWeek(double date)
{
    const std::int64_t days = FloorDiv(ToMs(date), MsPerDay);
    const std::int64_t isoWeekday = FloorMod(days + 5, 7) + 1; // Monday 1 ... Sunday 7
    const std::int64_t thursday = days - isoWeekday + 4;
    const std::int64_t january1 = DaysFromCivil(CivilFromDays(thursday).year, 1, 1);
    return static_cast<int>((thursday - january1) / 7 + 1);
}

std::optional<double> ParseDate(QStringView text)
{
    Scanner in(text.trimmed());
    int year = 0;
    int month = 0;
    int day = 0;
    bool isoForm = false;

    int firstCount = 0;
    const int first = in.CountedDigits(4, firstCount);
    if (firstCount == 4 && in.Skip(u'-')) {
        isoForm = true;
        year = first;
        const auto m = in.Digits(1, 2);
        if (!m || !in.Skip(u'-'))
            return std::nullopt;
        const auto d = in.Digits(1, 2);
        if (!d)
            return std::nullopt;
        month = *m;
        day = *d;
    } else if (firstCount >= 1 && firstCount <= 2 && in.Skip(u'.')) {
        day = first;
        const auto m = in.Digits(1, 2);
        if (!m || !in.Skip(u'.'))
            return std::nullopt;
        month = *m;
        int yearCount = 0;
        year = in.CountedDigits(4, yearCount);
        if (yearCount == 2)
            year += year < 30 ? 2000 : 1900;
        else if (yearCount != 4)
            return std::nullopt;
    } else {
        return std::nullopt;
    }
    if (in.NextIsDigit() || month < 1 || month > 12 || day < 1 || day > DaysInMonth(year, month))
        return std::nullopt;

    ParsedTime time;
    if (!in.AtEnd()) {
        const bool separated = in.SkipBlanks() || (isoForm && in.Skip(u'T'));
        if (!separated)
            return std::nullopt;
        const auto parsed = ParseTime(in);
        if (!parsed)
            return std::nullopt;
        time = *parsed;
    }
    return FromParts(year, month, day, time.hour, time.minute, time.second);
}

double FromDateTime(const QDateTime& dateTime)
{
    if (!dateTime.isValid())
        return 0.0;
    const QDateTime local = dateTime.toLocalTime();
    const QDate date = local.date();
    const QTime time = local.time();
    // QDate has no year 0: its year -1 is the year 0 of the proleptic calendar used here.
    const int year = date.year() < 0 ? date.year() + 1 : date.year();
    return FromParts(year, date.month(), date.day(), time.hour(), time.minute(),
                     time.second() + time.msec() / 1000.0);
}

QDateTime ToDateTime(double date)
{
    const DateParts parts = Split(date);
    const int year = parts.year <= 0 ? parts.year - 1 : parts.year;
    return QDateTime(QDate(year, parts.month, parts.day),
                     QTime(parts.hour, parts.minute, parts.second, parts.millisecond));
}

double Now()
{
    return FromDateTime(QDateTime::currentDateTime());
}

} // namespace Calendar
