// SPDX-License-Identifier: GPL-3.0-or-later
// Calendar arithmetic, day numbers and the parser for stored date texts.
#include "Calendar.h"

#include <QDate>
#include <QTime>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using namespace Calendar;

namespace {

// Parts as "yyyy-mm-dd hh:nn:ss.zzz", so that a failed comparison shows the whole date.
std::string Text(const DateParts& p)
{
    return QString::asprintf("%04d-%02d-%02d %02d:%02d:%02d.%03d", p.year, p.month, p.day, p.hour,
                             p.minute, p.second, p.millisecond)
        .toStdString();
}

std::string TextOf(double date)
{
    return Text(Split(date));
}

bool IsGregorianLeapYear(int year)
{
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int LengthOfMonth(int year, int month)
{
    const int lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && IsGregorianLeapYear(year) ? 29 : lengths[month - 1];
}

bool PartsAreValid(const DateParts& p)
{
    return p.month >= 1 && p.month <= 12 && p.day >= 1 && p.day <= LengthOfMonth(p.year, p.month)
        && p.hour >= 0 && p.hour < 24 && p.minute >= 0 && p.minute < 60 && p.second >= 0
        && p.second < 60 && p.millisecond >= 0 && p.millisecond < 1000;
}

} // namespace

// Day numbers and weekdays below were taken from an independent date library.

TEST(Calendar, FromPartsGivesTheKnownDayNumbers)
{
    EXPECT_EQ(FromParts(1899, 12, 30), 0.0);
    EXPECT_EQ(FromParts(1899, 12, 31), 1.0);
    EXPECT_EQ(FromParts(1900, 1, 1), 2.0);
    EXPECT_EQ(FromParts(2000, 1, 1), 36526.0);
    EXPECT_EQ(FromParts(2024, 2, 29), 45351.0);
    EXPECT_EQ(FromParts(9999, 12, 31), 2958465.0);
    EXPECT_EQ(FromParts(100, 1, 1), -657434.0);
    EXPECT_EQ(FromParts(2000, 1, 1, 12), 36526.5);
    EXPECT_EQ(FromParts(2000, 1, 1, 18, 0, 0.0), 36526.75);
}

TEST(Calendar, EveryDayFrom1600To2400HasTheNextDayNumber)
{
    double expected = -109571.0; // 1600-01-01
    for (int year = 1600; year <= 2400; ++year) {
        for (int month = 1; month <= 12; ++month) {
            for (int day = 1; day <= LengthOfMonth(year, month); ++day) {
                ASSERT_EQ(FromParts(year, month, day), expected) << year << '-' << month << '-' << day;
                const DateParts parts = Split(expected);
                ASSERT_EQ(parts.year, year);
                ASSERT_EQ(parts.month, month);
                ASSERT_EQ(parts.day, day);
                expected += 1.0;
            }
        }
    }
    EXPECT_EQ(expected, 182989.0); // 2401-01-01
}

TEST(Calendar, LeapDaysFollowTheGregorianRule)
{
    EXPECT_EQ(TextOf(FromParts(2000, 3, 0)), "2000-02-29 00:00:00.000");
    EXPECT_EQ(TextOf(FromParts(2024, 3, 0)), "2024-02-29 00:00:00.000");
    EXPECT_EQ(TextOf(FromParts(1900, 3, 0)), "1900-02-28 00:00:00.000");
    EXPECT_EQ(TextOf(FromParts(2100, 3, 0)), "2100-02-28 00:00:00.000");
    EXPECT_EQ(TextOf(FromParts(2023, 3, 0)), "2023-02-28 00:00:00.000");
    EXPECT_EQ(TextOf(FromParts(1900, 2, 29)), "1900-03-01 00:00:00.000");
}

TEST(Calendar, DatesBeforeDayZeroCountDaysBackwardsAndTheTimeForwards)
{
    EXPECT_EQ(TextOf(-1.25), "1899-12-29 06:00:00.000");
    EXPECT_EQ(TextOf(-1.0), "1899-12-29 00:00:00.000");
    EXPECT_EQ(TextOf(-2.75), "1899-12-28 18:00:00.000");
    // A negative number above -1 is still day 0: only the time counts.
    EXPECT_EQ(TextOf(-0.5), "1899-12-30 12:00:00.000");
    EXPECT_EQ(FromParts(1899, 12, 29, 6), -1.25);
    EXPECT_EQ(FromParts(1800, 1, 1, 18), -36522.75);
    EXPECT_EQ(TextOf(-657799.0), "0099-01-01 00:00:00.000");
}

TEST(Calendar, FromPartsRollsEveryPartOver)
{
    EXPECT_EQ(TextOf(FromParts(2023, 13, 1)), "2024-01-01 00:00:00.000");
    EXPECT_EQ(TextOf(FromParts(2024, 0, 15)), "2023-12-15 00:00:00.000");
    EXPECT_EQ(TextOf(FromParts(2024, -13, 1)), "2022-11-01 00:00:00.000");
    EXPECT_EQ(TextOf(FromParts(2024, 25, 1)), "2026-01-01 00:00:00.000");
    EXPECT_EQ(TextOf(FromParts(2024, 5, 0)), "2024-04-30 00:00:00.000");
    EXPECT_EQ(TextOf(FromParts(2024, 1, 0)), "2023-12-31 00:00:00.000");
    EXPECT_EQ(TextOf(FromParts(2024, 1, -30)), "2023-12-01 00:00:00.000");
    EXPECT_EQ(TextOf(FromParts(2024, 2, 30)), "2024-03-01 00:00:00.000");
    EXPECT_EQ(TextOf(FromParts(2024, 3, 1, -1)), "2024-02-29 23:00:00.000");
    EXPECT_EQ(TextOf(FromParts(2024, 3, 1, 0, -1)), "2024-02-29 23:59:00.000");
    EXPECT_EQ(TextOf(FromParts(2024, 3, 1, 0, 0, -1.0)), "2024-02-29 23:59:59.000");
    EXPECT_EQ(TextOf(FromParts(2024, 12, 31, 24, 60, 60.0)), "2025-01-01 01:01:00.000");
    EXPECT_EQ(TextOf(FromParts(1899, 12, 30, -18)), "1899-12-29 06:00:00.000");
}

TEST(Calendar, FromPartsTakesTwoDigitYearsAsTheyAre)
{
    EXPECT_EQ(Split(FromParts(99, 1, 1)).year, 99);
    EXPECT_EQ(FromParts(99, 1, 1), -657799.0);
    EXPECT_EQ(Split(FromParts(5, 6, 7)).year, 5);
}

TEST(Calendar, SplitGivesBackThePartsFromParts)
{
    for (int year : {1, 99, 1600, 1899, 1900, 1970, 2024, 2100, 9999}) {
        for (int month = 1; month <= 12; ++month) {
            for (int day : {1, 15, LengthOfMonth(year, month)}) {
                for (int ms : {0, 1, 499, 500, 999, 43'200'000, 86'399'999}) {
                    const int hour = ms / 3'600'000;
                    const int minute = ms / 60'000 % 60;
                    const int second = ms / 1000 % 60;
                    const DateParts parts =
                        Split(FromParts(year, month, day, hour, minute, second + (ms % 1000) / 1000.0));
                    DateParts expected{year, month, day, hour, minute, second, ms % 1000};
                    ASSERT_EQ(Text(parts), Text(expected));
                }
            }
        }
    }
}

TEST(Calendar, SplitRoundsTheTimeToTheMillisecond)
{
    const double almostMidnight = 45351.0 + (86400.0 - 0.0004) / 86400.0;
    EXPECT_EQ(TextOf(almostMidnight), "2024-03-01 00:00:00.000");
    EXPECT_EQ(TextOf(45351.5 + 0.0004 / 86400.0), "2024-02-29 12:00:00.000");
    EXPECT_EQ(TextOf(45351.5 + 0.0006 / 86400.0), "2024-02-29 12:00:00.001");
    EXPECT_EQ(TextOf(-1.0 - (86400.0 - 0.0004) / 86400.0), "1899-12-30 00:00:00.000");
}

TEST(Calendar, AddingMonthsKeepsTheDayOrTakesTheLastDayOfTheMonth)
{
    const double jan31 = FromParts(2024, 1, 31, 8, 15);
    EXPECT_EQ(TextOf(Add(Unit::Month, 1, jan31)), "2024-02-29 08:15:00.000");
    EXPECT_EQ(TextOf(Add(Unit::Month, 2, jan31)), "2024-03-31 08:15:00.000");
    EXPECT_EQ(TextOf(Add(Unit::Month, 3, jan31)), "2024-04-30 08:15:00.000");
    EXPECT_EQ(TextOf(Add(Unit::Month, 13, jan31)), "2025-02-28 08:15:00.000");
    EXPECT_EQ(TextOf(Add(Unit::Month, 1, FromParts(2023, 1, 31))), "2023-02-28 00:00:00.000");
    EXPECT_EQ(TextOf(Add(Unit::Month, 1, FromParts(2024, 8, 31))), "2024-09-30 00:00:00.000");
    EXPECT_EQ(TextOf(Add(Unit::Month, 4, FromParts(2024, 10, 31))), "2025-02-28 00:00:00.000");
    EXPECT_EQ(TextOf(Add(Unit::Month, 0, jan31)), TextOf(jan31));
}

TEST(Calendar, AddingNegativeMonthsAndYearsClampsTheSameWay)
{
    EXPECT_EQ(TextOf(Add(Unit::Month, -1, FromParts(2024, 3, 31))), "2024-02-29 00:00:00.000");
    EXPECT_EQ(TextOf(Add(Unit::Month, -1, FromParts(2024, 1, 15))), "2023-12-15 00:00:00.000");
    EXPECT_EQ(TextOf(Add(Unit::Month, -14, FromParts(2024, 3, 31))), "2023-01-31 00:00:00.000");
    EXPECT_EQ(TextOf(Add(Unit::Year, -1, FromParts(2024, 2, 29, 23, 59, 59.5))),
              "2023-02-28 23:59:59.500");
}

TEST(Calendar, AddingYearsToALeapDayKeepsItOnlyInLeapYears)
{
    const double leapDay = FromParts(2024, 2, 29, 12);
    EXPECT_EQ(TextOf(Add(Unit::Year, 1, leapDay)), "2025-02-28 12:00:00.000");
    EXPECT_EQ(TextOf(Add(Unit::Year, 4, leapDay)), "2028-02-29 12:00:00.000");
    EXPECT_EQ(TextOf(Add(Unit::Year, 76, leapDay)), "2100-02-28 12:00:00.000");
    EXPECT_EQ(TextOf(Add(Unit::Year, -24, leapDay)), "2000-02-29 12:00:00.000");
}

TEST(Calendar, AddingMonthsWorksBeforeDayZero)
{
    EXPECT_EQ(Add(Unit::Month, 1, -1.25), 30.25); // 1899-12-29 06:00 to 1900-01-29 06:00
    EXPECT_EQ(TextOf(Add(Unit::Month, -1, 30.25)), "1899-12-29 06:00:00.000");
}

TEST(Calendar, AddingFixedUnitsAddsExactTime)
{
    const double start = FromParts(2024, 2, 28, 10, 0, 59.0);
    EXPECT_EQ(TextOf(Add(Unit::Second, 1, start)), "2024-02-28 10:01:00.000");
    EXPECT_EQ(TextOf(Add(Unit::Minute, -61, start)), "2024-02-28 08:59:59.000");
    EXPECT_EQ(TextOf(Add(Unit::Hour, 14, start)), "2024-02-29 00:00:59.000");
    EXPECT_EQ(TextOf(Add(Unit::Day, 2, start)), "2024-03-01 10:00:59.000");
    EXPECT_EQ(TextOf(Add(Unit::Day, -59, start)), "2023-12-31 10:00:59.000");
    EXPECT_EQ(TextOf(Add(Unit::Week, 1, start)), "2024-03-06 10:00:59.000");
    EXPECT_EQ(TextOf(Add(Unit::Week, -1, start)), "2024-02-21 10:00:59.000");
}

TEST(Calendar, AddingTimeCrossesDayZeroWithoutLosingTheTimeOfDay)
{
    EXPECT_EQ(TextOf(Add(Unit::Hour, -25, FromParts(1899, 12, 30, 12))), "1899-12-29 11:00:00.000");
    EXPECT_EQ(TextOf(Add(Unit::Hour, 18, -1.25)), "1899-12-30 00:00:00.000");
    EXPECT_EQ(TextOf(Add(Unit::Minute, -1, 0.0)), "1899-12-29 23:59:00.000");
    EXPECT_EQ(TextOf(Add(Unit::Day, -1, 0.25)), "1899-12-29 06:00:00.000");
}

TEST(Calendar, NinetySixQuarterHoursAreExactlyOneDay)
{
    const double start = FromParts(2024, 3, 30);
    double date = start;
    for (int i = 0; i < 96; ++i)
        date = Add(Unit::Minute, 15, date);
    EXPECT_EQ(TextOf(date), "2024-03-31 00:00:00.000");
    EXPECT_EQ(date, FromParts(2024, 3, 31));
}

TEST(Calendar, AYearOfQuarterHourStepsDoesNotDrift)
{
    double date = FromParts(2023, 1, 1);
    for (int i = 0; i < 365 * 96; ++i)
        date = Add(Unit::Minute, 15, date);
    EXPECT_EQ(date, FromParts(2024, 1, 1));
    for (int i = 0; i < 4 * 96; ++i)
        date = Add(Unit::Minute, -15, date);
    EXPECT_EQ(TextOf(date), "2023-12-28 00:00:00.000");
}

TEST(Calendar, DiffCountsUnitBoundariesNotElapsedTime)
{
    const auto at = [](int h, int n, double s) { return FromParts(2024, 2, 28, h, n, s); };
    EXPECT_EQ(Diff(Unit::Minute, at(10, 0, 59), at(10, 1, 0)), 1);
    EXPECT_EQ(Diff(Unit::Minute, at(10, 0, 0), at(10, 0, 59.999)), 0);
    EXPECT_EQ(Diff(Unit::Second, at(10, 0, 0.999), at(10, 0, 1.0)), 1);
    EXPECT_EQ(Diff(Unit::Hour, at(9, 59, 59), at(10, 0, 0)), 1);
    EXPECT_EQ(Diff(Unit::Hour, at(10, 0, 0), at(10, 59, 59)), 0);
    EXPECT_EQ(Diff(Unit::Day, at(23, 59, 59), FromParts(2024, 2, 29)), 1);
    EXPECT_EQ(Diff(Unit::Day, at(0, 0, 0), at(23, 59, 59)), 0);
    EXPECT_EQ(Diff(Unit::Month, FromParts(2024, 1, 31), FromParts(2024, 2, 1)), 1);
    EXPECT_EQ(Diff(Unit::Month, FromParts(2024, 1, 1), FromParts(2024, 1, 31)), 0);
    EXPECT_EQ(Diff(Unit::Month, FromParts(2023, 11, 15), FromParts(2025, 2, 1)), 15);
    EXPECT_EQ(Diff(Unit::Year, FromParts(2023, 12, 31, 23, 59), FromParts(2024, 1, 1)), 1);
    EXPECT_EQ(Diff(Unit::Year, FromParts(2024, 1, 1), FromParts(2024, 12, 31)), 0);
}

TEST(Calendar, DiffIsNegativeWhenTheSecondDateLiesBefore)
{
    EXPECT_EQ(Diff(Unit::Minute, FromParts(2024, 1, 1, 10, 1), FromParts(2024, 1, 1, 10, 0, 59.0)), -1);
    EXPECT_EQ(Diff(Unit::Day, FromParts(2024, 3, 1), FromParts(2024, 2, 1, 23)), -29);
    EXPECT_EQ(Diff(Unit::Month, FromParts(2024, 2, 1), FromParts(2024, 1, 31)), -1);
    EXPECT_EQ(Diff(Unit::Year, FromParts(2024, 1, 1), FromParts(2023, 12, 31)), -1);
}

TEST(Calendar, DiffWorksAcrossDayZero)
{
    // 1899-12-29 06:00 to 1899-12-30 00:00 is 18 hours, not the 1.25 days between the numbers.
    EXPECT_EQ(Diff(Unit::Hour, -1.25, 0.0), 18);
    EXPECT_EQ(Diff(Unit::Day, -1.25, 0.25), 1);
    EXPECT_EQ(Diff(Unit::Day, -0.5, 0.5), 0);
    EXPECT_EQ(Diff(Unit::Minute, 0.0, -1.0 - 1439.0 / 1440.0), -1);
}

TEST(Calendar, WeeksAreCountedFromSunday)
{
    const double saturday = FromParts(2024, 3, 2, 23);
    const double sunday = FromParts(2024, 3, 3);
    const double nextSaturday = FromParts(2024, 3, 9, 23, 59, 59.0);
    const double nextSunday = FromParts(2024, 3, 10);
    EXPECT_EQ(Diff(Unit::Week, saturday, sunday), 1);
    EXPECT_EQ(Diff(Unit::Week, sunday, nextSaturday), 0);
    EXPECT_EQ(Diff(Unit::Week, sunday, nextSunday), 1);
    EXPECT_EQ(Diff(Unit::Week, saturday, nextSunday), 2);
    EXPECT_EQ(Diff(Unit::Week, nextSunday, saturday), -2);
    EXPECT_EQ(Diff(Unit::Week, nextSaturday, sunday), 0);
    // Day 0 was a Saturday, day 1 a Sunday.
    EXPECT_EQ(Diff(Unit::Week, 0.0, 1.0), 1);
    EXPECT_EQ(Diff(Unit::Week, -6.0, 0.0), 0);
}

TEST(Calendar, DiffUndoesAdd)
{
    const std::vector<double> starts = {FromParts(2024, 1, 31, 7, 30), FromParts(1899, 12, 29, 6),
                                        FromParts(2023, 12, 31, 23, 59, 59.999)};
    for (const double start : starts) {
        for (std::int64_t n : {-400, -13, -1, 0, 1, 2, 12, 59, 400}) {
            for (Unit unit : {Unit::Second, Unit::Minute, Unit::Hour, Unit::Day, Unit::Week,
                              Unit::Month, Unit::Year}) {
                EXPECT_EQ(Diff(unit, start, Add(unit, n, start)), n)
                    << UnitCode(unit).toStdString() << ' ' << n << " from " << TextOf(start);
            }
        }
    }
}

TEST(Calendar, WeekdayRunsFromSundayToSaturday)
{
    EXPECT_EQ(Weekday(FromParts(2024, 3, 3)), 1);
    EXPECT_EQ(Weekday(FromParts(2024, 3, 4, 12)), 2);
    EXPECT_EQ(Weekday(FromParts(2024, 3, 2, 23, 59)), 7);
    EXPECT_EQ(Weekday(FromParts(1900, 1, 1)), 2);
    EXPECT_EQ(Weekday(0.0), 7);
    EXPECT_EQ(Weekday(1.0), 1);
    EXPECT_EQ(Weekday(-1.25), 6);
    EXPECT_EQ(Weekday(FromParts(1600, 1, 1)), 7);
    for (int i = 0; i < 14; ++i)
        EXPECT_EQ(Weekday(FromParts(2024, 3, 3 + i)), i % 7 + 1);
}

TEST(Calendar, IsoWeekBelongsToTheYearOfItsThursday)
{
    EXPECT_EQ(IsoWeek(FromParts(2020, 12, 31)), 53);
    EXPECT_EQ(IsoWeek(FromParts(2021, 1, 3, 23, 59)), 53);
    EXPECT_EQ(IsoWeek(FromParts(2021, 1, 4)), 1);
    EXPECT_EQ(IsoWeek(FromParts(2024, 1, 1)), 1);
    EXPECT_EQ(IsoWeek(FromParts(2024, 12, 30)), 1);
    EXPECT_EQ(IsoWeek(FromParts(2024, 2, 29)), 9);
    EXPECT_EQ(IsoWeek(FromParts(2023, 1, 1)), 52);
    EXPECT_EQ(IsoWeek(FromParts(2026, 12, 31)), 53);
    EXPECT_EQ(IsoWeek(FromParts(2027, 1, 1)), 53);
    EXPECT_EQ(IsoWeek(FromParts(2016, 1, 3)), 53);
    EXPECT_EQ(IsoWeek(FromParts(2000, 1, 1)), 52);
    EXPECT_EQ(IsoWeek(-1.0), 52);
    EXPECT_EQ(IsoWeek(FromParts(1900, 1, 1)), 1);
}

TEST(Calendar, UnitCodesReadBackAsTheirUnits)
{
    for (Unit unit : {Unit::Second, Unit::Minute, Unit::Hour, Unit::Day, Unit::Week, Unit::Month,
                      Unit::Year})
        EXPECT_EQ(ParseUnit(UnitCode(unit)), unit);
    EXPECT_EQ(ParseUnit(u"n"), Unit::Minute);
    EXPECT_EQ(ParseUnit(u"m"), Unit::Month);
    EXPECT_EQ(ParseUnit(u"ww"), Unit::Week);
    EXPECT_EQ(ParseUnit(u"yyyy"), Unit::Year);
    EXPECT_FALSE(ParseUnit(u""));
    EXPECT_FALSE(ParseUnit(u"w"));
    EXPECT_FALSE(ParseUnit(u"mm"));
    EXPECT_FALSE(ParseUnit(u"yy"));
    EXPECT_FALSE(ParseUnit(u"d "));
}

TEST(Calendar, ParseDateReadsTheStoredForms)
{
    const struct
    {
        const char16_t* text;
        const char* parts;
    } cases[] = {
        {u"2024-02-29", "2024-02-29 00:00:00.000"},
        {u"2024-02-29 08:05", "2024-02-29 08:05:00.000"},
        {u"2024-02-29 08:05:09", "2024-02-29 08:05:09.000"},
        {u"2024-02-29T23:59:59.125", "2024-02-29 23:59:59.125"},
        {u"2024-02-29 23:59:59.5", "2024-02-29 23:59:59.500"},
        {u"2024-02-29 00:00:00.123456", "2024-02-29 00:00:00.123"},
        {u"2024-2-9 8:05", "2024-02-09 08:05:00.000"},
        {u"  2024-12-31 \t", "2024-12-31 00:00:00.000"},
        {u"29.02.2024", "2024-02-29 00:00:00.000"},
        {u"29.02.2024 17:45", "2024-02-29 17:45:00.000"},
        {u"29.02.2024 17:45:30", "2024-02-29 17:45:30.000"},
        {u"29.02.2024 17:45:30.5", "2024-02-29 17:45:30.500"},
        {u"1.2.2024 8:05", "2024-02-01 08:05:00.000"},
        {u"01.02.24", "2024-02-01 00:00:00.000"},
        {u"01.02.29", "2029-02-01 00:00:00.000"},
        {u"01.02.30", "1930-02-01 00:00:00.000"},
        {u"31.12.99 23:00", "1999-12-31 23:00:00.000"},
        {u"01.01.00", "2000-01-01 00:00:00.000"},
        {u"29.12.1899 06:00", "1899-12-29 06:00:00.000"},
        {u" 1.1.1900 ", "1900-01-01 00:00:00.000"},
    };
    for (const auto& c : cases) {
        const std::optional<double> date = ParseDate(c.text);
        ASSERT_TRUE(date) << QString::fromUtf16(c.text).toStdString();
        EXPECT_EQ(TextOf(*date), c.parts) << QString::fromUtf16(c.text).toStdString();
    }
    EXPECT_EQ(ParseDate(u"2024-02-29"), 45351.0);
    EXPECT_EQ(ParseDate(u"29.12.1899 06:00"), -1.25);
}

TEST(Calendar, ParseDateRejectsEverythingElse)
{
    const char16_t* const texts[] = {
        u"",
        u"   ",
        u"2024",
        u"2024-02",
        u"2024-02-29x",
        u"2024-02-29 08:05 Uhr",
        u"2024-13-01",
        u"2024-00-10",
        u"2024-02-00",
        u"2023-02-29",
        u"1900-02-29",
        u"31.02.2024",
        u"31.04.2024",
        u"32.01.2024",
        u"2024-02-29 24:00",
        u"2024-02-29 23:60",
        u"2024-02-29 23:59:60",
        u"2024-02-29 8:5",
        u"2024-02-29 123:00",
        u"2024-02-29 08",
        u"2024-02-29 08:",
        u"2024-02-29 08:00:",
        u"2024-02-29 08:00:00.",
        u"2024-02-29 08:00.5",
        u"2024-02-29T",
        u"2024-02-29T 08:00",
        u"2024-02-29 T08:00",
        u"29.02.2024T08:00",
        u"29.02.2024 08:00 x",
        u"1.2.3",
        u"01.02.202",
        u"01.02.20245",
        u"001.02.2024",
        u"24-02-29",
        u"20245-02-29",
        u"2024-002-29",
        u"2024/02/29",
        u"29/02/2024",
        u"2024-02-29\n08:00:00garbage",
        u"\u0662\u0660\u0662\u0664-01-01", // digits of another script
        u"-2024-01-01",
        u"+29.02.2024",
    };
    for (const char16_t* text : texts)
        EXPECT_FALSE(ParseDate(text)) << QString::fromUtf16(text).toStdString();
}

TEST(Calendar, ParseDateStopsAtTheEndOfTheView)
{
    // The view ends in the middle of a longer text; what follows must not be read.
    const QString text = QStringLiteral("2024-02-29 08:05:09");
    EXPECT_EQ(TextOf(*ParseDate(QStringView(text).first(10))), "2024-02-29 00:00:00.000");
    EXPECT_FALSE(ParseDate(QStringView(text).first(12)));
    EXPECT_FALSE(ParseDate(QStringView(text).first(8)));
    EXPECT_FALSE(ParseDate(QStringView()));
}

TEST(Calendar, ExtremeInputsGiveValidPartsInsteadOfOverflowing)
{
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (double date : {-1e300, 1e300, inf, -inf, nan, 1e308, -1e18}) {
        EXPECT_TRUE(PartsAreValid(Split(date))) << date;
        EXPECT_TRUE(PartsAreValid(Split(Add(Unit::Month, 1, date)))) << date;
        EXPECT_GE(Weekday(date), 1);
        EXPECT_LE(Weekday(date), 7);
        EXPECT_GE(IsoWeek(date), 1);
        EXPECT_LE(IsoWeek(date), 53);
    }
    const std::int64_t big = std::numeric_limits<std::int64_t>::max();
    for (Unit unit : {Unit::Second, Unit::Week, Unit::Month, Unit::Year}) {
        EXPECT_GT(Add(unit, big, 0.0), 1e6);
        EXPECT_LT(Add(unit, -big, 0.0), -1e6);
        EXPECT_TRUE(PartsAreValid(Split(Add(unit, big, 0.0))));
    }
    EXPECT_GT(Diff(Unit::Second, -1e300, 1e300), 0);
    EXPECT_TRUE(PartsAreValid(Split(FromParts(std::numeric_limits<int>::max(), 1, 1))));
    EXPECT_TRUE(PartsAreValid(Split(FromParts(2024, 1, 1, 0, 0, nan))));
    EXPECT_TRUE(PartsAreValid(Split(FromParts(2024, std::numeric_limits<int>::min(),
                                              std::numeric_limits<int>::min(),
                                              std::numeric_limits<int>::min(),
                                              std::numeric_limits<int>::min(), -inf))));
}

TEST(Calendar, DateTimeConversionsUseLocalWallClockTime)
{
    const double date = FromParts(2024, 7, 1, 13, 45, 30.25);
    const QDateTime local(QDate(2024, 7, 1), QTime(13, 45, 30, 250));
    EXPECT_EQ(ToDateTime(date), local);
    EXPECT_EQ(ToDateTime(date).timeSpec(), Qt::LocalTime);
    EXPECT_EQ(FromDateTime(local), date);

    const QDateTime utc(QDate(2024, 1, 15), QTime(6, 30), Qt::UTC);
    const QDateTime sameInstantLocal = utc.toLocalTime();
    EXPECT_EQ(TextOf(FromDateTime(utc)),
              sameInstantLocal.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz")).toStdString());

    EXPECT_EQ(ToDateTime(-1.25), QDateTime(QDate(1899, 12, 29), QTime(6, 0)));
    EXPECT_EQ(FromDateTime(QDateTime()), 0.0);
}

TEST(Calendar, NowLiesBetweenTwoClockReadings)
{
    const double before = FromDateTime(QDateTime::currentDateTime());
    const double now = Now();
    const double after = FromDateTime(QDateTime::currentDateTime());
    EXPECT_LE(before, now);
    EXPECT_LE(now, after);
    EXPECT_LT(after - before, 1.0 / 1440.0);
}
