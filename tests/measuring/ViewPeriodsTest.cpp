// SPDX-License-Identifier: GPL-3.0-or-later
// A view's time window: period starts, date formats by window, axis ticks, the zoom history text.
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

TEST(ViewPeriods, DateFormatsFollowUnitAndWindowLength)
{
    EXPECT_EQ(UnitFromPoints(86400, 1440), "n");
    EXPECT_EQ(UnitFromPoints(86400, 24), "h");
    EXPECT_EQ(UnitFromPoints(86400, 96), "") << "15 minutes has no unit of its own";
    EXPECT_EQ(UnitFromPoints(365 * 86400.0, 12), "mm");
    EXPECT_EQ(UnitFromPoints(86400, 0), "");
    EXPECT_EQ(DateFormat(true, 365 * 86400, "", 12), "") << "the derived month unit has no format";
    EXPECT_EQ(DateFormat(true, 3600, "", 60), ":nn") << "an empty unit comes from the points";

    const struct
    {
        const char* unit;
        qint64 seconds;
        const char* format;
    } axis[] = { { "s", 60, ":ss" }, { "s", 61, ":nn:ss" }, { "s", 86400, "hh:nn:ss" },
        { "s", 86401, "dd.mm. hh:nn:ss" }, { "s", 31536001, "dd.mm.yy hh:nn:ss" }, { "n", 3600, ":nn" },
        { "n", 3601, "hh:nn" }, { "h", 3600, "hh:nn" }, { "h", 86401, "dd.mm. hh:nn" },
        { "x", 31536001, "dd.mm.yy hh:nn" }, { "d", 2592000, "dd." }, { "d", 2592001, "dd.mm." },
        { "d", 31536001, "dd.mm.yy" }, { "ww", 31536000, "\\K\\W ww" }, { "ww", 31536001, "\\K\\W ww\\, yy" },
        { "m", 31536000, "mm" }, { "m", 31536001, "mm.yy" }, { "yyyy", 10, "yyyy" } };
    for (const auto& c : axis)
        EXPECT_EQ(DateFormat(true, c.seconds, c.unit, 100), c.format) << c.unit << " " << c.seconds;

    // Texts that stand alone follow the unit only.
    const char* alone[][2] = { { "s", "dd.mm.yyyy hh:nn:ss" }, { "n", "dd.mm.yyyy hh:nn" }, { "h", "dd.mm.yyyy hh:nn" },
        { "d", "dd.mm.yyyy" }, { "ww", "\\K\\W ww" }, { "m", "mm.yyyy" }, { "yyyy", "yyyy" }, { "q", "" } };
    for (const auto& [unit, format] : alone)
        EXPECT_EQ(DateFormat(false, 999999999, unit, 1), format) << unit;
    EXPECT_EQ(DateFormat(false, 86400, "", 96), "dd.mm.yyyy hh:nn:ss");
}

TEST(ViewPeriods, ZoomHistoryStacksAndRefusesBadEntries)
{
    const auto fields = [](const ZoomEntry& e) {
        return std::vector { e.from, e.to, e.y1Min, e.y1Max, e.y2Min, e.y2Max };
    };
    const ZoomEntry first { D(2009, 2, 1), D(2009, 3, 1), 0, 250.5, 0.5, 1.0 };
    const ZoomEntry second { D(2009, 2, 10, 6, 15), D(2009, 2, 11), -3.25, 80, 0, 0 };
    const QString history = PushZoom(PushZoom("", first), second);
    EXPECT_TRUE(history.startsWith('\t'));
    const auto newest = LastZoom(history);
    ASSERT_TRUE(newest);
    EXPECT_EQ(fields(*newest), fields(second));
    const auto older = LastZoom(PopZoom(history));
    ASSERT_TRUE(older);
    EXPECT_EQ(fields(*older), fields(first));
    EXPECT_TRUE(older->hasY2);
    EXPECT_EQ(PopZoom(PopZoom(history)), "");
    EXPECT_EQ(PopZoom("no tab"), "");
    EXPECT_FALSE(LastZoom(""));

    for (const char* bad : { "\ta|b|1|2|3|4", "\t01.02.2009|02.02.2009|1|2|3", "\t01.02.2009|02.02.2009|x|2|3|4" })
        EXPECT_FALSE(LastZoom(bad)) << bad;
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

// Rows for ticks over all of `count` times, one every `minutes` from `start`.
std::vector<qsizetype> Ticks(double start, int count, int minutes, int most, std::vector<double>* times = nullptr)
{
    std::vector<double> rows;
    for (int i = 0; i < count; ++i)
        rows.push_back(Calendar::Add(Calendar::Unit::Minute, std::int64_t(i) * minutes, start));
    if (times)
        *times = rows;
    return RoundTimeRows(rows, 0, count - 1, most);
}

TEST(ViewPeriods, TicksFallOnRoundTimes)
{
    // A week of quarter hours from Monday: one tick per midnight, or every second one.
    std::vector<double> week;
    EXPECT_EQ(Ticks(D(2025, 3, 10), 7 * 96, 15, 8, &week), std::vector<qsizetype>({ 0, 96, 192, 288, 384, 480, 576 }));
    EXPECT_EQ(Ticks(D(2025, 3, 10), 7 * 96, 15, 4), std::vector<qsizetype>({ 0, 192, 384, 576 }));
    const std::vector<qsizetype> inside = RoundTimeRows(week, 100, 300, 8);
    ASSERT_FALSE(inside.empty());
    EXPECT_GE(inside.front(), 100);
    EXPECT_LE(inside.back(), 300);

    // Minutes from 00:07 for two hours, six labels: quarter hours from 00:15 on.
    std::vector<double> minutes;
    const std::vector<qsizetype> quarters = Ticks(D(2025, 3, 10, 0, 7), 120, 1, 9, &minutes);
    ASSERT_FALSE(quarters.empty());
    EXPECT_EQ(quarters.front(), 8);
    for (const qsizetype row : quarters)
        EXPECT_EQ(Calendar::Split(minutes[size_t(row)]).minute % 15, 0) << row;

    // Five weeks of hours from a Wednesday: Mondays.
    std::vector<double> weeks;
    const std::vector<qsizetype> mondays = Ticks(D(2025, 3, 12), 35 * 24, 60, 6, &weeks);
    ASSERT_EQ(mondays.size(), 5u);
    for (const qsizetype row : mondays) {
        EXPECT_EQ(Calendar::Weekday(weeks[size_t(row)]), 2) << row;
        EXPECT_EQ(Calendar::Split(weeks[size_t(row)]).hour, 0) << row;
    }

    // A year of hours, seven labels: every second month from January.
    std::vector<double> year;
    const std::vector<qsizetype> months = Ticks(D(2023, 1, 1), 365 * 24, 60, 7, &year);
    std::vector<int> starts;
    for (const qsizetype row : months) {
        EXPECT_EQ(Calendar::Split(year[size_t(row)]).day, 1);
        starts.push_back(Calendar::Split(year[size_t(row)]).month);
    }
    EXPECT_EQ(starts, std::vector<int>({ 1, 3, 5, 7, 9, 11 }));
    EXPECT_EQ(months.at(1), 59 * 24) << "1 March 2023 is the 59th day after 1 January";
}

TEST(ViewPeriods, TicksNeedTimeAndRoom)
{
    std::vector<double> hours;
    EXPECT_EQ(Ticks(D(2025, 1, 1), 4, 60, 10, &hours), std::vector<qsizetype>({ 0, 1, 2, 3 }))
        << "hourly rows: each once, though half hours would fit";
    EXPECT_TRUE(RoundTimeRows(hours, 2, 2, 10).empty()) << "a single row spans no time";
    EXPECT_TRUE(RoundTimeRows(hours, 0, 3, 0).empty());
    EXPECT_TRUE(RoundTimeRows({}, 0, 3, 5).empty());
    EXPECT_TRUE(Ticks(D(2025, 1, 1), 5, 0, 5).empty()) << "rows all at one time";
}

} // namespace
