// SPDX-License-Identifier: GPL-3.0-or-later
// A view's time window: period starts, date formats by window, the zoom history text.
#include "ViewPeriods.h"
#include "Calendar.h"
#include "QtPrinters.h"

#include <QLocale>

#include <gtest/gtest.h>

namespace {

using namespace ViewPeriods;

double D(int year, int month, int day, int hour = 0, int minute = 0, int second = 0)
{
    return Calendar::FromParts(year, month, day, hour, minute, second);
}

TEST(ViewPeriods, PeriodStartsAreCutOrComposed)
{
    const double from = D(2009, 2, 18, 14, 37, 12);
    const double end = D(2009, 3, 2, 9, 0);
    EXPECT_EQ(PeriodStart("n", from, end), D(2009, 2, 18, 14, 37));
    EXPECT_EQ(PeriodStart("h", from, end), D(2009, 2, 18, 14));
    EXPECT_EQ(PeriodStart("d", from, end), D(2009, 2, 18));
    EXPECT_EQ(PeriodStart("ww", from, end), D(2009, 2, 18));
    EXPECT_EQ(PeriodStart("m", from, end), D(2009, 2, 28)) << "day 0 of the window end's month";
    EXPECT_EQ(PeriodStart("yyyy", from, end), D(2008, 11, 30)) << "month 0, day 0 of the end's year";
    EXPECT_EQ(PeriodStart("s", from, end), from);
    EXPECT_EQ(PeriodStart("", from, end), from);
}

TEST(ViewPeriods, UnitFollowsSecondsPerPoint)
{
    EXPECT_EQ(UnitFromPoints(86400, 1440), "n");
    EXPECT_EQ(UnitFromPoints(86400, 24), "h");
    EXPECT_EQ(UnitFromPoints(86400, 96), "") << "15 minutes has no unit of its own";
    EXPECT_EQ(UnitFromPoints(365 * 86400.0, 12), "mm");
    EXPECT_EQ(UnitFromPoints(86400, 0), "");
    EXPECT_EQ(DateFormat(true, 365 * 86400, "", 12), "") << "the derived month unit has no format";
}

TEST(ViewPeriods, AxisFormatsFollowUnitAndWindowLength)
{
    const struct
    {
        const char* unit;
        qint64 seconds;
        const char* format;
    } cases[] = {
        { "s", 60, ":ss" },
        { "s", 61, ":nn:ss" },
        { "s", 86400, "hh:nn:ss" },
        { "s", 86401, "dd.mm. hh:nn:ss" },
        { "s", 31536001, "dd.mm.yy hh:nn:ss" },
        { "n", 3600, ":nn" },
        { "n", 3601, "hh:nn" },
        { "h", 3600, "hh:nn" },
        { "h", 86401, "dd.mm. hh:nn" },
        { "x", 31536001, "dd.mm.yy hh:nn" },
        { "d", 2592000, "dd." },
        { "d", 2592001, "dd.mm." },
        { "d", 31536001, "dd.mm.yy" },
        { "ww", 31536000, "\\K\\W ww" },
        { "ww", 31536001, "\\K\\W ww\\, yy" },
        { "m", 31536000, "mm" },
        { "m", 31536001, "mm.yy" },
        { "yyyy", 10, "yyyy" },
    };
    for (const auto& c : cases)
        EXPECT_EQ(DateFormat(true, c.seconds, c.unit, 100), c.format) << c.unit << " " << c.seconds;
    EXPECT_EQ(DateFormat(true, 3600, "", 60), ":nn") << "an empty unit comes from the points";
}

TEST(ViewPeriods, StandAloneFormatsFollowTheUnitOnly)
{
    const char* expected[][2]
        = { { "s", "dd.mm.yyyy hh:nn:ss" }, { "n", "dd.mm.yyyy hh:nn" }, { "h", "dd.mm.yyyy hh:nn" },
              { "d", "dd.mm.yyyy" }, { "ww", "\\K\\W ww" }, { "m", "mm.yyyy" }, { "yyyy", "yyyy" }, { "q", "" } };
    for (const auto& row : expected)
        EXPECT_EQ(DateFormat(false, 999999999, row[0], 1), row[1]) << row[0];
    EXPECT_EQ(DateFormat(false, 86400, "", 96), "dd.mm.yyyy hh:nn:ss");
}

TEST(ViewPeriods, ZoomHistoryStacksAndUnwinds)
{
    EXPECT_FALSE(LastZoom(""));
    const ZoomEntry first { D(2009, 2, 1), D(2009, 3, 1), 0, 250.5, 0.5, 1.0 };
    const ZoomEntry second { D(2009, 2, 10, 6, 15), D(2009, 2, 11), -3.25, 80, 0, 0 };
    QString history = PushZoom("", first);
    EXPECT_TRUE(history.startsWith('\t'));
    history = PushZoom(history, second);

    auto last = LastZoom(history);
    ASSERT_TRUE(last);
    EXPECT_EQ(last->from, second.from);
    EXPECT_EQ(last->to, second.to);
    EXPECT_EQ(last->y1Min, -3.25);
    history = PopZoom(history);
    last = LastZoom(history);
    ASSERT_TRUE(last);
    EXPECT_EQ(last->from, first.from);
    EXPECT_EQ(last->y1Max, 250.5);
    EXPECT_TRUE(last->hasY2);
    EXPECT_EQ(last->y2Min, 0.5);
    EXPECT_EQ(PopZoom(history), "");
    EXPECT_EQ(PopZoom("no tab"), "");
}

TEST(ViewPeriods, BadEntriesAreRefused)
{
    EXPECT_FALSE(LastZoom("\ta|b|1|2|3|4"));
    EXPECT_FALSE(LastZoom("\t01.02.2009|02.02.2009|1|2|3"));
    EXPECT_FALSE(LastZoom("\t01.02.2009|02.02.2009|x|2|3|4"));
    const auto partial = LastZoom("\t01.02.2009|02.02.2009 12:00|1|2||");
    ASSERT_TRUE(partial);
    EXPECT_FALSE(partial->hasY2);
    EXPECT_EQ(partial->to, D(2009, 2, 2, 12));

    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    const auto comma = LastZoom("\t01.02.2009|02.02.2009|1,5|2,25|0|1");
    QLocale::setDefault(QLocale::c());
    ASSERT_TRUE(comma);
    EXPECT_EQ(comma->y1Min, 1.5);
    EXPECT_EQ(comma->y1Max, 2.25);
}


// Times of `count` rows, one every `minutes` from `start`.
std::vector<double> Rows(double start, int count, int minutes)
{
    std::vector<double> times;
    for (int i = 0; i < count; ++i)
        times.push_back(Calendar::Add(Calendar::Unit::Minute, std::int64_t(i) * minutes, start));
    return times;
}

TEST(ViewPeriods, TicksFallOnRoundTimes)
{
    // A week of quarter hours from Monday: one tick per midnight.
    const std::vector<double> week = Rows(D(2025, 3, 10), 7 * 96, 15);
    EXPECT_EQ(RoundTimeRows(week, 0, qsizetype(week.size()) - 1, 8),
        std::vector<qsizetype>({ 0, 96, 192, 288, 384, 480, 576 }));
    // Fewer labels fit: every second midnight.
    EXPECT_EQ(RoundTimeRows(week, 0, qsizetype(week.size()) - 1, 4), std::vector<qsizetype>({ 0, 192, 384, 576 }));

    // Minutes from 00:07 for two hours, six labels: quarter hours from 00:15 on.
    const std::vector<double> minutes = Rows(D(2025, 3, 10, 0, 7), 120, 1);
    const std::vector<qsizetype> quarters = RoundTimeRows(minutes, 0, 119, 9);
    ASSERT_FALSE(quarters.empty());
    EXPECT_EQ(quarters.front(), 8);
    for (const qsizetype row : quarters)
        EXPECT_EQ(Calendar::Split(minutes[size_t(row)]).minute % 15, 0) << row;

    // Part of the rows shown: ticks only inside.
    const std::vector<qsizetype> inside = RoundTimeRows(week, 100, 300, 8);
    ASSERT_FALSE(inside.empty());
    EXPECT_GE(inside.front(), 100);
    EXPECT_LE(inside.back(), 300);
}

TEST(ViewPeriods, LongWindowsTickOnMondaysAndMonthStarts)
{
    // Five weeks of hours from a Wednesday: Mondays.
    const std::vector<double> weeks = Rows(D(2025, 3, 12), 35 * 24, 60);
    const std::vector<qsizetype> mondays = RoundTimeRows(weeks, 0, qsizetype(weeks.size()) - 1, 6);
    ASSERT_EQ(mondays.size(), 5u);
    for (const qsizetype row : mondays) {
        EXPECT_EQ(Calendar::Weekday(weeks[size_t(row)]), 2) << row;
        EXPECT_EQ(Calendar::Split(weeks[size_t(row)]).hour, 0) << row;
    }

    // A year of hours, seven labels: every second month from January.
    const std::vector<double> year = Rows(D(2023, 1, 1), 365 * 24, 60);
    const std::vector<qsizetype> months = RoundTimeRows(year, 0, qsizetype(year.size()) - 1, 7);
    std::vector<int> starts;
    for (const qsizetype row : months) {
        const Calendar::DateParts parts = Calendar::Split(year[size_t(row)]);
        EXPECT_EQ(parts.day, 1);
        starts.push_back(parts.month);
    }
    EXPECT_EQ(starts, std::vector<int>({ 1, 3, 5, 7, 9, 11 }));
    EXPECT_EQ(months.at(1), 59 * 24) << "1 March 2023 is the 59th day after 1 January";
}

TEST(ViewPeriods, TicksNeedTimeAndRoom)
{
    // Hourly rows over three hours, room for ten: each row once, though half hours would fit.
    const std::vector<double> hours = Rows(D(2025, 1, 1), 4, 60);
    EXPECT_EQ(RoundTimeRows(hours, 0, 3, 10), std::vector<qsizetype>({ 0, 1, 2, 3 }));
    EXPECT_TRUE(RoundTimeRows(hours, 2, 2, 10).empty()) << "a single row spans no time";
    EXPECT_TRUE(RoundTimeRows(hours, 0, 3, 0).empty());
    EXPECT_TRUE(RoundTimeRows({}, 0, 3, 5).empty());
    const std::vector<double> same(5, D(2025, 1, 1));
    EXPECT_TRUE(RoundTimeRows(same, 0, 4, 5).empty());
}

} // namespace
