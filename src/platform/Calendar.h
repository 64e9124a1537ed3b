// SPDX-License-Identifier: GPL-3.0-or-later
// Calendar arithmetic on dates held as days since 1899-12-30 (fraction = time of day).
#pragma once

#include <QDateTime>
#include <QString>
#include <QStringView>

#include <cmath>
#include <cstdint>
#include <optional>

namespace Calendar {

enum class Unit {
    Second, ///< "s"
    Minute, ///< "n"
    Hour,   ///< "h"
    Day,    ///< "d"
    Week,   ///< "ww"
    Month,  ///< "m"
    Year    ///< "yyyy"
};

// "s", "n", "h", "d", "ww", "m", "yyyy"; anything else gives nothing.
std::optional<Unit> ParseUnit(QStringView code);
QString UnitCode(Unit unit);

struct DateParts {
    int year = 1899;
    int month = 12;
    int day = 30;
    int hour = 0;
    int minute = 0;
    int second = 0;
    int millisecond = 0;
};

// All functions work on whole milliseconds. Dates beyond about 27,000 years from 1900 are
// clamped to that range and NaN counts as day 0, so no input overflows.

// Splits a date into its calendar parts; the time is rounded to the millisecond.
DateParts Split(double date);

// Composes a date; every part may be out of range and rolls over, so that day 0 is the
// last day of the month before and month 13 is January of the next year.
double FromParts(int year, int month, int day, int hour = 0, int minute = 0, double second = 0.0);

// Adds count units. Months and years keep the day of the month where the target month
// has it and take the month's last day otherwise; the time of day is kept.
double Add(Unit unit, std::int64_t count, double date);

// Counts the unit boundaries between from and to (negative when to lies before from).
// Weeks are counted from Sunday.
std::int64_t Diff(Unit unit, double from, double to);

// Dates are clamped to about +-27,000 years around 1900. Within that range a date in
// milliseconds converts to a double and back without loss, and no product overflows,
// whatever a caller passes in (missing values such as -1e300 included).
constexpr std::int64_t MaxDays = 10'000'000;

// Half a millisecond in days. Times count to the millisecond, so a window over stored samples
// is widened by it on both sides: a bound computed a few microseconds off still takes its sample.
constexpr double HalfMillisecond = 0.5 / 86'400'000.0;

// The date as whole milliseconds since day 0, the base of all arithmetic here. Below day 0 the
// integer part counts days backwards while the fraction still counts the time forwards from
// midnight: -1.25 is 1899-12-29 06:00. Inline, because the time grid converts every sample.
inline std::int64_t ToMilliseconds(double date)
{
    constexpr std::int64_t MsPerDay = 86'400'000;
    if (!(date >= -static_cast<double>(MaxDays))) // NaN too
        date = std::isnan(date) ? 0.0 : -static_cast<double>(MaxDays);
    else if (date > static_cast<double>(MaxDays))
        date = static_cast<double>(MaxDays);
    const auto whole = static_cast<std::int64_t>(date);
    const double fraction = std::fabs(date - static_cast<double>(whole));
    return whole * MsPerDay + static_cast<std::int64_t>(fraction * MsPerDay + 0.5);
}

// Whole seconds since day 0, floored after rounding to the millisecond, so that
// Diff(Unit::Second, a, b) == WholeSeconds(b) - WholeSeconds(a).
std::int64_t WholeSeconds(double date);

// 1 = Sunday ... 7 = Saturday.
int Weekday(double date);

// ISO 8601 week of the year (1 to 53), the calendar week of German calendars.
int IsoWeek(double date);

// Lenient parser for dates stored as text: "yyyy-mm-dd[ hh:nn[:ss[.fff]]]" (also with "T"),
// "dd.mm.yyyy[ hh:nn[:ss[.fff]]]" and "dd.mm.yy" (00-29 in this century, 30-99 in the last);
// day, month and hour may have one digit; blanks around are ignored. Invalid
// calendar values (month 13, 31.02., hour 24) give nothing.
std::optional<double> ParseDate(QStringView text);

double FromDateTime(const QDateTime& dateTime); // local wall-clock time
QDateTime ToDateTime(double date);
double Now();

} // namespace Calendar
