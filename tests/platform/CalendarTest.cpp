// SPDX-License-Identifier: GPL-3.0-or-later
// Calendar arithmetic, day numbers and the parser for stored date texts.
#include "Calendar.h"

#include <QDate>
#include <QRegularExpression>
#include <QTime>

#include <limits>
#include <string>

#include <gtest/gtest.h>

using namespace Calendar;

namespace {

// "yyyy-mm-dd hh:nn:ss.zzz" without trailing zero parts: short expectations, whole dates in failures.
std::string Text(const DateParts& p)
{
    static const QRegularExpression zeros(QStringLiteral("(( 00:00)?:00)?\\.000$"));
    return QString::asprintf("%04d-%02d-%02d %02d:%02d:%02d.%03d", p.year, p.month, p.day, p.hour, p.minute,
                             p.second, p.millisecond).remove(zeros).toStdString();
}

std::string TextOf(double date) { return Text(Split(date)); }

// Short for FromParts in the tables below. Their day numbers and weekdays come from an independent date library.
template<typename... Parts> double D(Parts... parts) { return FromParts(parts...); }

// QDate has no year 0: its year -1 is the year 0 counted here.
bool PartsAreValid(const DateParts& p)
{
    return QDate::isValid(p.year <= 0 ? p.year - 1 : p.year, p.month, p.day)
        && QTime::isValid(p.hour, p.minute, p.second, p.millisecond);
}

} // namespace

// Weekdays run from Sunday (1) to Saturday (7); ISO weeks follow their Thursday.
TEST(Calendar, EveryDayFrom1600To2400RoundTripsToTheMillisecondWithWeekdayAndIsoWeekAndOutOfRangePartsRollOver)
{
    const int times[] = {0, 1, 499, 500, 999, 43'200'000, 86'399'999, 45'296'789}; // in ms
    double expected = -109571.0; // 1600-01-01
    for (QDate day(1600, 1, 1); day.year() <= 2400; day = day.addDays(1), expected += 1.0) {
        ASSERT_EQ(FromParts(day.year(), day.month(), day.day()), expected) << day.toString().toStdString();
        const int ms = times[day.dayOfYear() % 8];
        const DateParts parts{day.year(), day.month(), day.day(), ms / 3'600'000, ms / 60'000 % 60, ms / 1000 % 60,
                              ms % 1000};
        const double at = FromParts(day.year(), day.month(), day.day(), 0, 0, ms / 1000.0);
        ASSERT_EQ(TextOf(at), Text(parts));
        ASSERT_EQ(Weekday(at), day.dayOfWeek() % 7 + 1) << Text(parts);
        ASSERT_EQ(IsoWeek(at), day.weekNumber()) << Text(parts);
    }
    EXPECT_EQ(expected, 182989.0); // 2401-01-01
    EXPECT_EQ(D(99, 1, 1), -657799.0); // not 1999
    EXPECT_EQ(D(1899, 12, 29, 6), -1.25);

    const struct { double date; const char* text; } cases[] = {
        {D(1900, 2, 29), "1900-03-01"}, {D(2024, -13, 1), "2022-11-01"},
        {D(2024, 3, 1, 0, 0, -1.005), "2024-02-29 23:59:58.995"}, {D(2024, 12, 31, 24, 60, 60.0), "2025-01-01 01:01"},
        {D(1899, 12, 30, -18), "1899-12-29 06:00"}, {-0.5, "1899-12-30 12:00"}, // above -1 is still day 0
        // The time is rounded to the millisecond, carrying into the next day.
        {45351.0 + (86400.0 - 0.0004) / 86400.0, "2024-03-01"}, {-1.0 - (86400.0 - 0.0004) / 86400.0, "1899-12-30"},
        {45351.5 + 0.0004 / 86400.0, "2024-02-29 12:00"}, {45351.5 + 0.0006 / 86400.0, "2024-02-29 12:00:00.001"}};
    for (const auto& c : cases)
        EXPECT_EQ(TextOf(c.date), c.text) << c.date;
}

TEST(Calendar, AddClampsToMonthEndsAndAddsFixedUnitsExactlyInBothDirections)
{
    const double jan31 = D(2024, 1, 31, 8, 15), leapDay = D(2024, 2, 29, 12), start = D(2024, 2, 28, 10, 0, 59.0);
    const struct { Unit unit; int count; double date; const char* text; } cases[] = {
        {Unit::Month, 1, jan31, "2024-02-29 08:15"}, {Unit::Month, -14, D(2024, 3, 31), "2023-01-31"},
        {Unit::Year, 1, leapDay, "2025-02-28 12:00"}, {Unit::Month, -1, 30.25, "1899-12-29 06:00"},
        {Unit::Minute, -61, start, "2024-02-28 08:59:59"}, {Unit::Hour, 14, start, "2024-02-29 00:00:59"},
        {Unit::Hour, 18, -1.25, "1899-12-30"}, {Unit::Minute, -1, 0.0, "1899-12-29 23:59"}};
    for (const auto& c : cases)
        EXPECT_EQ(TextOf(Add(c.unit, c.count, c.date)), c.text)
            << UnitCode(c.unit).toStdString() << ' ' << c.count << " from " << TextOf(c.date);
    EXPECT_EQ(Add(Unit::Month, 1, -1.25), 30.25); // 1899-12-29 06:00 to 1900-01-29 06:00

    double date = D(2023, 1, 1); // a year of quarter-hour steps does not drift
    for (int i = 0; i < 365 * 96; ++i)
        date = Add(Unit::Minute, 15, date);
    EXPECT_EQ(date, D(2024, 1, 1));
}

TEST(Calendar, DiffCountsUnitBoundariesWithWeeksFromSundayAndUndoesAddForEveryUnitCode)
{
    const double sat = D(2024, 3, 2, 23), sun = D(2024, 3, 3), nextSat = D(2024, 3, 9, 23), nextSun = D(2024, 3, 10);
    const struct { Unit unit; double from, to; std::int64_t count; } cases[] = {
        {Unit::Minute, D(2024, 2, 28, 10), D(2024, 2, 28, 10, 0, 59.999), 0},
        {Unit::Hour, D(2024, 2, 28, 9, 59, 59.0), D(2024, 2, 28, 10), 1}, {Unit::Day, sat, sun, 1},
        {Unit::Day, D(2024, 3, 1), D(2024, 2, 1, 23), -29}, {Unit::Month, D(2024, 1, 31), D(2024, 2, 1), 1},
        {Unit::Year, D(2024, 1, 1), D(2024, 12, 31), 0}, {Unit::Year, D(2023, 12, 31, 23, 59), D(2024, 1, 1), 1},
        // 1899-12-29 06:00 to 1899-12-30 00:00 is 18 hours, not the 1.25 days between the numbers.
        {Unit::Hour, -1.25, 0.0, 18}, {Unit::Day, -1.25, 0.25, 1}, {Unit::Day, -0.5, 0.5, 0},
        {Unit::Week, sat, sun, 1}, {Unit::Week, sun, nextSat, 0}, {Unit::Week, nextSun, sat, -2},
        {Unit::Week, -6.0, 0.0, 0}};
    for (const auto& c : cases)
        EXPECT_EQ(Diff(c.unit, c.from, c.to), c.count)
            << UnitCode(c.unit).toStdString() << " from " << TextOf(c.from) << " to " << TextOf(c.to);

    for (Unit unit : {Unit::Second, Unit::Minute, Unit::Hour, Unit::Day, Unit::Week, Unit::Month, Unit::Year}) {
        EXPECT_EQ(ParseUnit(UnitCode(unit)), unit);
        for (double start : {D(2024, 1, 31, 7, 30), -1.25, D(2023, 12, 31, 23, 59, 59.999)})
            for (std::int64_t n : {-400, -13, -1, 0, 1, 59, 400})
                EXPECT_EQ(Diff(unit, start, Add(unit, n, start)), n)
                    << UnitCode(unit).toStdString() << ' ' << n << " from " << TextOf(start);
    }
    for (const char16_t* code : {u"", u"w", u"mm", u"yy", u"d "})
        EXPECT_FALSE(ParseUnit(code)) << QString::fromUtf16(code).toStdString();
}

TEST(Calendar, ParseDateReadsTheStoredFormsAndNothingElse)
{
    const struct { const char16_t* text; const char* parts; } cases[] = {{u"  2024-12-31 \t", "2024-12-31"},
        {u"2024-02-29T23:59:59.125", "2024-02-29 23:59:59.125"},
        {u"2024-2-9 8:05", "2024-02-09 08:05"}, {u"2024-02-29 00:00:00.123456", "2024-02-29 00:00:00.123"},
        {u"29.02.2024 17:45:30.5", "2024-02-29 17:45:30.500"}, {u"01.02.29", "2029-02-01"},
        {u"01.02.30", "1930-02-01"}, {u"29.12.1899 06:00", "1899-12-29 06:00"}};
    for (const auto& c : cases) // a rejected text shows as day 0, 1899-12-30
        EXPECT_EQ(TextOf(ParseDate(c.text).value_or(0.0)), c.parts) << QString::fromUtf16(c.text).toStdString();

    for (const char16_t* text : {u"", u"2024-02", u"2024-02-29x", u"2024-13-01", u"1900-02-29", u"31.04.2024",
             u"2024-02-29 24:00", u"2024-02-29 8:5", u"2024-02-29 23:59:60", u"2024-02-29 08:", u"2024-02-29T",
             u"01.02.202", u"2024/02/29", u"\u0662\u0660\u0662\u0664-01-01", u"-2024-01-01"})
        EXPECT_FALSE(ParseDate(text)) << QString::fromUtf16(text).toStdString();

    // The view ends in the middle of a longer text; what follows must not be read.
    const QString text = QStringLiteral("2024-02-29 08:05:09");
    EXPECT_EQ(TextOf(ParseDate(QStringView(text).first(10)).value_or(0.0)), "2024-02-29");
    EXPECT_FALSE(ParseDate(QStringView(text).first(12)));
}

TEST(Calendar, ExtremeInputsGiveValidPartsInsteadOfOverflowing)
{
    const double inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
    const int low = std::numeric_limits<int>::min();
    const std::int64_t big = std::numeric_limits<std::int64_t>::max();
    for (double date : {-1e300, 1e300, inf, -inf, nan, D(std::numeric_limits<int>::max(), 1, 1),
                        D(2024, 1, 1, 0, 0, nan), D(2024, low, low, low, low, -inf), Add(Unit::Month, big, 0.0),
                        Add(Unit::Year, big, 0.0), Add(Unit::Second, big, 0.0), Add(Unit::Week, big, 0.0)})
        EXPECT_TRUE(PartsAreValid(Split(date)) && PartsAreValid(Split(Add(Unit::Month, 1, date))) && Weekday(date) >= 1
                    && Weekday(date) <= 7 && IsoWeek(date) >= 1 && IsoWeek(date) <= 53) << date;
    for (Unit unit : {Unit::Second, Unit::Week, Unit::Month, Unit::Year})
        EXPECT_TRUE(Add(unit, big, 0.0) > 1e6 && Add(unit, -big, 0.0) < -1e6) << UnitCode(unit).toStdString();
    EXPECT_GT(Diff(Unit::Second, -1e300, 1e300), 0);
}
