// SPDX-License-Identifier: GPL-3.0-or-later
// The common time grid: its steps, and raw blocks aggregated onto it.
#include "TimeValueTransformator.h"

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

constexpr double NoValue = MatrixBlock::DefaultNoValue;

double D(int year, int month, int day, int hour = 0, int minute = 0, double second = 0.0)
{
    return Calendar::FromParts(year, month, day, hour, minute, second);
}

// "yyyy-mm-dd hh:nn:ss.zzz", so that failures show readable dates.
std::string Text(double date)
{
    const Calendar::DateParts p = Calendar::Split(date);
    return QString::asprintf("%04d-%02d-%02d %02d:%02d:%02d.%03d", p.year, p.month, p.day, p.hour, p.minute,
                             p.second, p.millisecond)
        .toStdString();
}

std::vector<std::string> Texts(std::span<const double> dates)
{
    std::vector<std::string> texts;
    for (const double date : dates)
        texts.push_back(Text(date));
    return texts;
}

// A raw block: column 0 the time, column 1 the value.
MatrixBlock Source(const std::vector<std::pair<double, double>>& rows)
{
    MatrixBlock block(static_cast<qsizetype>(rows.size()), 2);
    for (qsizetype i = 0; i < block.Rows(); ++i) {
        block.At(i, 0) = rows[i].first;
        block.At(i, 1) = rows[i].second;
    }
    return block;
}

std::vector<double> Values(const MatrixBlockPtr& block)
{
    const auto column = block->Column(1);
    return {column.begin(), column.end()};
}

// A time base block whose column 0 holds dates.
MatrixBlockPtr TimeBase(const std::vector<double>& dates)
{
    auto block = MatrixBlock::Create(static_cast<qsizetype>(dates.size()), 2);
    for (qsizetype i = 0; i < block->Rows(); ++i) {
        block->At(i, 0) = dates[i];
        block->At(i, 1) = 99.0;
    }
    return block;
}

} // namespace

TEST(CalendarSeconds, WholeSecondsFloorTheMillisecondRoundedDateLikeSecondDiff)
{
    const double second = 1.0 / 86400.0;
    EXPECT_EQ(Calendar::WholeSeconds(0.0), 0);
    EXPECT_EQ(Calendar::WholeSeconds(1.0), 86400);
    EXPECT_EQ(Calendar::WholeSeconds(-1.25), -64800); // 1899-12-29 06:00
    EXPECT_EQ(Calendar::WholeSeconds(D(1899, 12, 30, 0, 0, 1.9994)), 1); // 1.999 s
    EXPECT_EQ(Calendar::WholeSeconds(D(1899, 12, 30, 0, 0, 1.9996)), 2); // rounds up to 2.000 s

    const double minute = D(2024, 5, 15, 13, 47);
    const std::vector<double> dates = {0.0,
                                       -1.25,
                                       -2.75 + 0.0004 * second,
                                       D(2024, 5, 15, 13, 47, 29.5),
                                       minute - 0.0004 * second,
                                       minute - 0.0006 * second,
                                       minute + 0.9996 * second};
    for (const double from : dates) {
        for (const double to : dates) {
            EXPECT_EQ(Calendar::WholeSeconds(to) - Calendar::WholeSeconds(from),
                      Calendar::Diff(Calendar::Unit::Second, from, to))
                << Text(from) << " to " << Text(to);
        }
    }
}

TEST(TimeGrid, AlignPullsDateFromBackToTheStartOfItsUnitButWeeksOnlyToTheDay)
{
    const double date = D(2024, 5, 15, 13, 47, 29.5); // a Wednesday
    const struct
    {
        const char* unit;
        bool align;
        std::string dateFrom;
    } cases[] = {
        {"s", true, "2024-05-15 13:47:29.500"},    {"n", true, "2024-05-15 13:47:00.000"},
        {"h", true, "2024-05-15 13:00:00.000"},    {"d", true, "2024-05-15 00:00:00.000"},
        {"ww", true, "2024-05-15 00:00:00.000"},   {"m", true, "2024-05-01 00:00:00.000"},
        {"yyyy", true, "2024-01-01 00:00:00.000"}, {"yyyy", false, "2024-05-15 13:47:29.500"},
    };
    for (const auto& c : cases) {
        TimeValueTransformator grid;
        grid.Init(date, date, QString::fromLatin1(c.unit), 1, c.align);
        ASSERT_EQ(grid.Time()->Rows(), 1) << c.unit;
        EXPECT_EQ(Text(grid.DateFrom()), c.dateFrom) << c.unit;
        EXPECT_EQ(Text(grid.Time()->At(0, 0)), c.dateFrom) << c.unit;
        EXPECT_EQ(grid.Interval(), QString::fromLatin1(c.unit));
    }
}

TEST(TimeGrid, QuarterHoursOfOneDayGiveNinetySixRowsEndingAtMidnight)
{
    TimeValueTransformator grid;
    grid.Init(D(2024, 3, 10), D(2024, 3, 11), QStringLiteral("n"), 15, true);
    const MatrixBlockPtr& time = grid.Time();
    ASSERT_EQ(time->Rows(), 96);
    EXPECT_EQ(time->Columns(), 1);
    EXPECT_EQ(Text(time->At(0, 0)), "2024-03-10 00:00:00.000");
    EXPECT_EQ(Text(time->At(1, 0)), "2024-03-10 00:15:00.000");
    EXPECT_EQ(Text(time->At(95, 0)), "2024-03-10 23:45:00.000");
    EXPECT_EQ(Text(grid.DateFrom()), "2024-03-10 00:00:00.000");
    EXPECT_EQ(Text(grid.DateTo()), "2024-03-11 00:00:00.000");
    EXPECT_EQ(grid.IntervalCount(), 15);
}

TEST(TimeGrid, StepCountRoundsHalfToEvenAndIsAtLeastOne)
{
    const struct
    {
        const char* unit;
        double dateFrom;
        double dateTo;
        qint32 count;
        qsizetype rows;
        std::string gridEnd;
    } cases[] = {
        {"h", D(2024, 1, 1), D(2024, 1, 1, 5), 2, 2, "2024-01-01 04:00:00.000"},   // 2.5
        {"h", D(2024, 1, 1), D(2024, 1, 1, 7), 2, 4, "2024-01-01 08:00:00.000"},   // 3.5
        {"h", D(2024, 1, 1), D(2024, 1, 1, 3), 2, 2, "2024-01-01 04:00:00.000"},   // 1.5
        {"h", D(2024, 1, 1), D(2024, 1, 1, 1), 2, 1, "2024-01-01 02:00:00.000"},   // 0.5 gives 0
        {"h", D(2024, 1, 1), D(2024, 1, 1, 5), 3, 2, "2024-01-01 06:00:00.000"},   // 1.67
        {"h", D(2024, 1, 1), D(2024, 1, 1, 4), 3, 1, "2024-01-01 03:00:00.000"},   // 1.33
        {"h", D(2024, 1, 1, 5), D(2024, 1, 1), 1, 1, "2024-01-01 06:00:00.000"},   // backwards
        {"h", D(2024, 1, 1, 5), D(2024, 1, 1, 5), 1, 1, "2024-01-01 06:00:00.000"}, // empty window
        // From Saturday to the Monday after next two Sundays are crossed.
        {"ww", D(2024, 6, 1), D(2024, 6, 10), 1, 2, "2024-06-15 00:00:00.000"},
        // Unknown unit counts as seconds, a count below 1 as 1.
        {"x", D(2024, 1, 1, 10), D(2024, 1, 1, 10, 0, 5), 0, 5, "2024-01-01 10:00:05.000"},
        {"s", D(2024, 1, 1, 10), D(2024, 1, 1, 10, 0, 5), -3, 5, "2024-01-01 10:00:05.000"},
    };
    for (const auto& c : cases) {
        TimeValueTransformator grid;
        grid.Init(c.dateFrom, c.dateTo, QString::fromLatin1(c.unit), c.count, false);
        EXPECT_EQ(grid.Time()->Rows(), c.rows) << c.unit << " " << Text(c.dateTo);
        EXPECT_EQ(Text(grid.DateTo()), c.gridEnd) << c.unit << " " << Text(c.dateTo);
        EXPECT_EQ(grid.IntervalCount(), c.count < 1 ? 1 : c.count);
    }
    TimeValueTransformator unknown;
    unknown.Init(D(2024, 1, 1), D(2024, 1, 1), QStringLiteral("x"), 1, true);
    EXPECT_EQ(unknown.Interval(), QStringLiteral("s"));
}

TEST(TimeGrid, MonthlyStepsFromJanuaryThirtyFirstKeepTheShortenedDay)
{
    TimeValueTransformator grid;
    grid.Init(D(2024, 1, 31, 6, 30), D(2024, 5, 31), QStringLiteral("m"), 1, false);
    EXPECT_EQ(Texts(grid.Time()->Column(0)),
              (std::vector<std::string>{"2024-01-31 06:30:00.000", "2024-02-29 06:30:00.000",
                                        "2024-03-29 06:30:00.000", "2024-04-29 06:30:00.000"}));
    EXPECT_EQ(Text(grid.DateTo()), "2024-05-29 06:30:00.000");
}

TEST(TimeGrid, TimeBaseIsCopiedRowByRowAndSetsTheWindow)
{
    const auto base = TimeBase({D(2024, 2, 1, 8), D(2024, 2, 1, 9, 30), D(2024, 2, 1, 12)});
    TimeValueTransformator grid;
    grid.Init(D(2000, 1, 1, 5, 20), D(2000, 1, 2), QStringLiteral("h"), 2, true, base);
    EXPECT_NE(grid.Time(), base);
    EXPECT_EQ(grid.Time()->Columns(), 1);
    EXPECT_EQ(Texts(grid.Time()->Column(0)),
              (std::vector<std::string>{"2024-02-01 08:00:00.000", "2024-02-01 09:30:00.000",
                                        "2024-02-01 12:00:00.000"}));
    EXPECT_EQ(Text(grid.DateFrom()), "2024-02-01 08:00:00.000");
    EXPECT_EQ(Text(grid.DateTo()), "2024-02-01 14:00:00.000");

    // An empty time base leaves the aligned start and one step.
    grid.Init(D(2000, 1, 1, 5, 20), D(2000, 1, 2), QStringLiteral("h"), 2, true, TimeBase({}));
    EXPECT_EQ(grid.Time()->Rows(), 0);
    EXPECT_EQ(Text(grid.DateFrom()), "2000-01-01 05:00:00.000");
    EXPECT_EQ(Text(grid.DateTo()), "2000-01-01 07:00:00.000");
}

TEST(GridAdd, StepsAreHalfOpenOnWholeSecondsOfTheMillisecondRoundedTime)
{
    const double second = 1.0 / 86400.0;
    TimeValueTransformator grid;
    grid.Init(D(2024, 1, 1, 10), D(2024, 1, 1, 10, 3), QStringLiteral("n"), 1, false);
    grid.Add(Source({
                 {D(2024, 1, 1, 10) - 0.0006 * second, 64},   // 09:59:59.999: before the grid
                 {D(2024, 1, 1, 10), 1},                      // on the first start
                 {D(2024, 1, 1, 10, 1) - 0.4 * second, 2},    // 10:00:59.6
                 {D(2024, 1, 1, 10, 1), 4},                   // on the first end: next step
                 {D(2024, 1, 1, 10, 2) - 0.0004 * second, 8}, // rounds to 10:02:00.000
                 {D(2024, 1, 1, 10, 2, 59.5), 16},
                 {D(2024, 1, 1, 10, 3), 32}, // on DateTo: outside
             }),
             QStringLiteral("sum"), 2);
    const MatrixBlockPtr block = grid.Data(QStringLiteral("sum"));
    ASSERT_TRUE(block);
    EXPECT_EQ(block->Name(), QStringLiteral("sum"));
    EXPECT_EQ(Values(block), (std::vector<double>{3, 4, 24}));
}

TEST(GridAdd, EachAggregationSkipsNoValueSamplesAndEmptyStepsRepeatTheLastResult)
{
    // Steps: some NoValue samples, only NoValue samples, no sample, two samples.
    const MatrixBlock source = Source({
        {D(2024, 1, 1, 0, 10), 5},
        {D(2024, 1, 1, 0, 20), NoValue},
        {D(2024, 1, 1, 0, 30), -3},
        {D(2024, 1, 1, 0, 40), 10},
        {D(2024, 1, 1, 1, 10), NoValue},
        {D(2024, 1, 1, 1, 50), NoValue},
        {D(2024, 1, 1, 3), 2},
        {D(2024, 1, 1, 3, 59, 59), 7},
    });
    const struct
    {
        qint32 aggregation;
        std::vector<double> values;
    } cases[] = {
        {1, {10, -1e300, -1e300, 7}},   {7, {10, -1e300, -1e300, 7}},    {2, {12, 0, 0, 9}},
        {4, {12, 0, 0, 9}},             {3, {4, NoValue, NoValue, 4.5}}, {5, {4, NoValue, NoValue, 4.5}},
        {8, {4, NoValue, NoValue, 4.5}}, {6, {-3, 1e300, 1e300, 2}},      {0, {0, 0, 0, 0}},
        {9, {0, 0, 0, 0}},
    };
    for (const auto& c : cases) {
        TimeValueTransformator grid;
        grid.Init(D(2024, 1, 1), D(2024, 1, 1, 4), QStringLiteral("h"), 1, true);
        grid.Add(source, QStringLiteral("c"), c.aggregation);
        const MatrixBlockPtr block = grid.Data(QStringLiteral("c"));
        ASSERT_TRUE(block) << c.aggregation;
        ASSERT_EQ(block->Columns(), 2);
        EXPECT_EQ(Values(block), c.values) << "aggregation " << c.aggregation;
        EXPECT_EQ(Texts(block->Column(0)), Texts(grid.Time()->Column(0)));
    }
}

TEST(GridAdd, StepsBeforeTheFirstSampleGetZeroAndGapsRepeatThePreviousValue)
{
    const MatrixBlock source = Source({{D(2024, 1, 1, 2, 30), -4}, {D(2024, 1, 1, 4, 30), 6}});
    for (const qint32 aggregation : {1, 2, 3, 6}) {
        TimeValueTransformator grid;
        grid.Init(D(2024, 1, 1), D(2024, 1, 1, 6), QStringLiteral("h"), 1, true);
        grid.Add(source, QStringLiteral("c"), aggregation);
        EXPECT_EQ(Values(grid.Data(QStringLiteral("c"))), (std::vector<double>{0, 0, -4, -4, 6, 6}))
            << "aggregation " << aggregation;
    }
}

TEST(GridAdd, SourceIndexNeverMovesBackSoRowsOutOfOrderMissTheirStep)
{
    // The late row lands in the step the index has reached.
    TimeValueTransformator grid;
    grid.Init(D(2024, 1, 1, 10), D(2024, 1, 1, 10, 2), QStringLiteral("n"), 1, false);
    grid.Add(Source({{D(2024, 1, 1, 10, 0, 10), 1}, {D(2024, 1, 1, 10, 1, 10), 2}, {D(2024, 1, 1, 10, 0, 20), 4}}),
             QStringLiteral("late"), 2);
    EXPECT_EQ(Values(grid.Data(QStringLiteral("late"))), (std::vector<double>{1, 6}));

    // Between steps of a time base with a gap, the index passes it for good.
    grid.Init(0, 0, QStringLiteral("n"), 1, false, TimeBase({D(2024, 1, 1, 10), D(2024, 1, 1, 10, 5)}));
    grid.Add(Source({{D(2024, 1, 1, 10, 0, 10), 1},
                     {D(2024, 1, 1, 10, 3), 2},
                     {D(2024, 1, 1, 10, 0, 30), 4},
                     {D(2024, 1, 1, 10, 5, 10), 8}}),
             QStringLiteral("lost"), 2);
    EXPECT_EQ(Values(grid.Data(QStringLiteral("lost"))), (std::vector<double>{1, 8}));
}

TEST(GridAdd, SourceWithoutValueColumnGivesCarryOnly)
{
    MatrixBlock oneColumn(2, 1);
    oneColumn.At(0, 0) = D(2024, 1, 1, 0, 30);
    oneColumn.At(1, 0) = D(2024, 1, 1, 1, 30);
    TimeValueTransformator grid;
    grid.Init(D(2024, 1, 1), D(2024, 1, 1, 2), QStringLiteral("h"), 1, true);
    grid.Add(oneColumn, QStringLiteral("one"), 2);
    grid.Add(MatrixBlock(), QStringLiteral("none"), 2);
    EXPECT_EQ(Values(grid.Data(QStringLiteral("one"))), (std::vector<double>{0, 0}));
    EXPECT_EQ(Values(grid.Data(QStringLiteral("none"))), (std::vector<double>{0, 0}));
}

TEST(GridBlocks, EmptyGridAddsNothingAndAUsedNameKeepsItsFirstBlock)
{
    TimeValueTransformator unset;
    unset.Add(Source({{D(2024, 1, 1), 1}}), QStringLiteral("a"), 2);
    EXPECT_EQ(unset.Data(QStringLiteral("a")), nullptr);

    TimeValueTransformator grid;
    grid.Init(D(2024, 1, 1), D(2024, 1, 2), QStringLiteral("d"), 1, true, TimeBase({}));
    grid.Add(Source({{D(2024, 1, 1), 1}}), QStringLiteral("a"), 2);
    EXPECT_EQ(grid.Data(QStringLiteral("a")), nullptr);

    grid.Init(D(2024, 1, 1), D(2024, 1, 2), QStringLiteral("d"), 1, true);
    grid.Add(Source({{D(2024, 1, 1), 1}}), QStringLiteral("a"), 2);
    const MatrixBlockPtr first = grid.Data(QStringLiteral("a"));
    ASSERT_TRUE(first);
    grid.Add(Source({{D(2024, 1, 1), 5}}), QStringLiteral("a"), 2);
    EXPECT_EQ(grid.Data(QStringLiteral("a")), first);
    EXPECT_EQ(Values(first), (std::vector<double>{1}));
    EXPECT_EQ(grid.Data(QStringLiteral("b")), nullptr);
}

TEST(GridBlocks, ClearDropsBlocksButKeepsTheGridAndInitKeepsBlocks)
{
    TimeValueTransformator grid;
    grid.Init(D(2024, 1, 1), D(2024, 1, 1, 2), QStringLiteral("h"), 1, true);
    grid.Add(Source({{D(2024, 1, 1, 1), 3}}), QStringLiteral("a"), 2);
    const MatrixBlockPtr oldTime = grid.Time();

    grid.Init(D(2024, 1, 1), D(2024, 1, 1, 3), QStringLiteral("h"), 1, true);
    EXPECT_NE(grid.Time(), oldTime);
    EXPECT_EQ(grid.Time()->Rows(), 3);
    ASSERT_TRUE(grid.Data(QStringLiteral("a")));
    EXPECT_EQ(Values(grid.Data(QStringLiteral("a"))), (std::vector<double>{0, 3}));

    const MatrixBlockPtr time = grid.Time();
    grid.Clear();
    EXPECT_EQ(grid.Data(QStringLiteral("a")), nullptr);
    EXPECT_EQ(grid.Time(), time);
    EXPECT_EQ(grid.Time()->Rows(), 3);

    grid.Add(Source({{D(2024, 1, 1, 2), 5}}), QStringLiteral("a"), 2);
    EXPECT_EQ(Values(grid.Data(QStringLiteral("a"))), (std::vector<double>{0, 0, 5}));
}
