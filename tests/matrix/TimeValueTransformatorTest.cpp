// SPDX-License-Identifier: GPL-3.0-or-later
// The common time grid: its steps, and raw blocks aggregated onto it.
#include "TimeValueTransformator.h"

#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

constexpr double NoValue = MatrixBlock::DefaultNoValue;
constexpr double Second = 1.0 / 86400.0;

double D(int year, int month, int day, int hour = 0, int minute = 0, double second = 0.0)
{
    return Calendar::FromParts(year, month, day, hour, minute, second);
}

// "yyyy-mm-dd hh:nn:ss.zzz", so that failures show readable dates.
std::string Text(double date)
{
    const Calendar::DateParts p = Calendar::Split(date);
    return QString::asprintf(
        "%04d-%02d-%02d %02d:%02d:%02d.%03d", p.year, p.month, p.day, p.hour, p.minute, p.second, p.millisecond)
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
MatrixBlockPtr Block(const std::vector<std::pair<double, double>>& rows)
{
    auto block = MatrixBlock::Create(static_cast<qsizetype>(rows.size()), 2);
    for (qsizetype i = 0; i < block->Rows(); ++i)
        std::tie(block->At(i, 0), block->At(i, 1)) = rows[i];
    return block;
}

// A time base: only its column 0 counts.
MatrixBlockPtr TimeBase(const std::vector<double>& dates)
{
    std::vector<std::pair<double, double>> rows;
    for (const double date : dates)
        rows.emplace_back(date, 99.0);
    return Block(rows);
}

std::vector<double> Values(const MatrixBlockPtr& block)
{
    const auto column = block->Column(1);
    return { column.begin(), column.end() };
}

} // namespace

TEST(CalendarSeconds, WholeSecondsFloorTheMillisecondRoundedDate)
{
    for (auto [date, seconds] :
        { std::pair { 1.0, 86400LL }, { -1.25, -64800LL }, { -2.75 + 0.0004 * Second, -108000LL },
            { D(1899, 12, 30, 0, 0, 1.9994), 1LL }, { D(1899, 12, 30, 0, 0, 1.9996), 2LL } })
        EXPECT_EQ(Calendar::WholeSeconds(date), seconds) << Text(date);
}

TEST(TimeGrid, AlignPullsDateFromBackToTheStartOfItsUnitButWeeksOnlyToTheDay)
{
    const double date = D(2024, 5, 15, 13, 47, 29.5); // a Wednesday
    const std::tuple<const char*, bool, std::string> cases[]
        = { { "s", true, "2024-05-15 13:47:29.500" }, { "n", true, "2024-05-15 13:47:00.000" },
              { "h", true, "2024-05-15 13:00:00.000" }, { "d", true, "2024-05-15 00:00:00.000" },
              { "ww", true, "2024-05-15 00:00:00.000" }, { "m", true, "2024-05-01 00:00:00.000" },
              { "yyyy", true, "2024-01-01 00:00:00.000" }, { "yyyy", false, "2024-05-15 13:47:29.500" } };
    for (const auto& [unit, align, dateFrom] : cases) {
        TimeValueTransformator grid;
        grid.Init(date, date, QString::fromLatin1(unit), 1, align);
        ASSERT_EQ(grid.Time()->Rows(), 1) << unit;
        EXPECT_EQ(Text(grid.DateFrom()) + " " + Text(grid.Time()->At(0, 0)), dateFrom + " " + dateFrom) << unit;
        EXPECT_EQ(grid.Interval(), QString::fromLatin1(unit));
    }
}

TEST(TimeGrid, StepCountRoundsHalfToEvenAndIsAtLeastOneWithRowsUpToTheEnd)
{
    // Unit, window, count, rows and the end of the grid.
    const std::tuple<const char*, double, double, qint32, qsizetype, std::string> cases[]
        = { { "h", D(2024, 1, 1), D(2024, 1, 1, 5), 2, 2, "2024-01-01 04:00:00.000" }, // 2.5
              { "h", D(2024, 1, 1), D(2024, 1, 1, 7), 2, 4, "2024-01-01 08:00:00.000" }, // 3.5
              { "h", D(2024, 1, 1), D(2024, 1, 1, 1), 2, 1, "2024-01-01 02:00:00.000" }, // 0.5 gives 0
              { "h", D(2024, 1, 1), D(2024, 1, 1, 4), 3, 1, "2024-01-01 03:00:00.000" }, // 1.33
              { "h", D(2024, 1, 1, 5), D(2024, 1, 1), 1, 1, "2024-01-01 06:00:00.000" }, // backwards
              { "h", D(2024, 1, 1, 5), D(2024, 1, 1, 5), 1, 1, "2024-01-01 06:00:00.000" }, // empty window
              { "n", D(2024, 3, 10), D(2024, 3, 11), 15, 96, "2024-03-11 00:00:00.000" }, // quarter hours of a day
              // From Saturday to the Monday after next two Sundays are crossed.
              { "ww", D(2024, 6, 1), D(2024, 6, 10), 1, 2, "2024-06-15 00:00:00.000" },
              // Unknown unit counts as seconds, a count below 1 as 1.
              { "x", D(2024, 1, 1, 10), D(2024, 1, 1, 10, 0, 5), 0, 5, "2024-01-01 10:00:05.000" },
              { "s", D(2024, 1, 1, 10), D(2024, 1, 1, 10, 0, 5), -3, 5, "2024-01-01 10:00:05.000" } };
    for (const auto& [unit, from, to, count, rows, end] : cases) {
        TimeValueTransformator grid;
        grid.Init(from, to, QString::fromLatin1(unit), count, false);
        EXPECT_EQ(grid.Time()->Rows(), rows) << unit << " " << Text(to);
        EXPECT_EQ(Text(grid.DateTo()), end) << unit << " " << Text(to);
        EXPECT_EQ(grid.IntervalCount(), count < 1 ? 1 : count);
        EXPECT_EQ(grid.Interval(), unit[0] == 'x' ? QStringLiteral("s") : QString::fromLatin1(unit));
    }
}

TEST(TimeGrid, MonthlyStepsFromJanuaryThirtyFirstKeepTheShortenedDay)
{
    TimeValueTransformator grid;
    grid.Init(D(2024, 1, 31, 6, 30), D(2024, 5, 31), QStringLiteral("m"), 1, false);
    EXPECT_EQ(Texts(grid.Time()->Column(0)),
        (std::vector<std::string> { "2024-01-31 06:30:00.000", "2024-02-29 06:30:00.000", "2024-03-29 06:30:00.000",
            "2024-04-29 06:30:00.000" }));
    EXPECT_EQ(Text(grid.DateTo()), "2024-05-29 06:30:00.000");
}

TEST(TimeGrid, TimeBaseIsCopiedRowByRowAndSetsTheWindow)
{
    const auto base = TimeBase({ D(2024, 2, 1, 8), D(2024, 2, 1, 9, 30), D(2024, 2, 1, 12) });
    TimeValueTransformator grid;
    grid.Init(D(2000, 1, 1, 5, 20), D(2000, 1, 2), QStringLiteral("h"), 2, true, base);
    EXPECT_NE(grid.Time(), base);
    EXPECT_EQ(Texts(grid.Time()->Column(0)),
        (std::vector<std::string> { "2024-02-01 08:00:00.000", "2024-02-01 09:30:00.000", "2024-02-01 12:00:00.000" }));
    EXPECT_EQ(Text(grid.DateFrom()) + " - " + Text(grid.DateTo()), "2024-02-01 08:00:00.000 - 2024-02-01 14:00:00.000");

    // An empty time base leaves the aligned start and one step.
    grid.Init(D(2000, 1, 1, 5, 20), D(2000, 1, 2), QStringLiteral("h"), 2, true, TimeBase({}));
    EXPECT_EQ(grid.Time()->Rows(), 0);
    EXPECT_EQ(Text(grid.DateFrom()) + " - " + Text(grid.DateTo()), "2000-01-01 05:00:00.000 - 2000-01-01 07:00:00.000");
}

TEST(GridAdd, StepsAreHalfOpenOnWholeSecondsOfTheMillisecondRoundedTime)
{
    TimeValueTransformator grid;
    grid.Init(D(2024, 1, 1, 10), D(2024, 1, 1, 10, 3), QStringLiteral("n"), 1, false);
    grid.Add(*Block({ { D(2024, 1, 1, 10) - 0.0006 * Second, 64 }, // 09:59:59.999: before the grid
                 { D(2024, 1, 1, 10), 1 }, // on the first start
                 { D(2024, 1, 1, 10, 1) - 0.4 * Second, 2 }, // 10:00:59.6
                 { D(2024, 1, 1, 10, 1), 4 }, // on the first end: next step
                 { D(2024, 1, 1, 10, 2) - 0.0004 * Second, 8 }, // rounds to 10:02:00.000
                 { D(2024, 1, 1, 10, 2, 59.5), 16 }, { D(2024, 1, 1, 10, 3), 32 } }), // on DateTo: outside
        QStringLiteral("sum"), 2);
    const MatrixBlockPtr block = grid.Data(QStringLiteral("sum"));
    ASSERT_TRUE(block);
    EXPECT_EQ(block->Name(), QStringLiteral("sum")); // the script engine finds it by this name
    EXPECT_EQ(Values(block), (std::vector<double> { 3, 4, 24 }));
}

TEST(GridAdd, EachAggregationSkipsNoValueSamplesAndEmptyStepsRepeatTheLastResultButNeverInventOne)
{
    // Steps: no sample yet, some NoValue samples, only NoValue samples, no sample, two samples.
    // A step before the first sample is a gap: nothing was measured there.
    const auto source = Block({ { D(2024, 1, 1, 0, 10), 5 }, { D(2024, 1, 1, 0, 20), NoValue },
        { D(2024, 1, 1, 0, 30), -3 }, { D(2024, 1, 1, 0, 40), 10 }, { D(2024, 1, 1, 1, 10), NoValue },
        { D(2024, 1, 1, 1, 50), NoValue }, { D(2024, 1, 1, 3), 2 }, { D(2024, 1, 1, 3, 59, 59), 7 } });
    const std::pair<std::vector<qint32>, std::vector<double>> cases[]
        = { { { 1, 7 }, { NoValue, 10, -1e300, -1e300, 7 } }, { { 2, 4 }, { NoValue, 12, 0, 0, 9 } },
              { { 3, 5, 8 }, { NoValue, 4, NoValue, NoValue, 4.5 } }, { { 6 }, { NoValue, -3, 1e300, 1e300, 2 } },
              { { 0, 9 }, { NoValue, NoValue, NoValue, NoValue, NoValue } } };
    for (const auto& [aggregations, values] : cases)
        for (const qint32 aggregation : aggregations) {
            TimeValueTransformator grid;
            grid.Init(D(2023, 12, 31, 23), D(2024, 1, 1, 4), QStringLiteral("h"), 1, true);
            grid.Add(*source, QStringLiteral("c"), aggregation);
            const MatrixBlockPtr block = grid.Data(QStringLiteral("c"));
            ASSERT_TRUE(block && block->Columns() == 2) << aggregation;
            EXPECT_EQ(Values(block), values) << "aggregation " << aggregation;
            EXPECT_EQ(Texts(block->Column(0)), Texts(grid.Time()->Column(0)));
        }
}

TEST(GridAdd, SourceIndexNeverMovesBackSoRowsOutOfOrderMissTheirStep)
{
    // The late row lands in the step the index has reached.
    TimeValueTransformator grid;
    grid.Init(D(2024, 1, 1, 10), D(2024, 1, 1, 10, 2), QStringLiteral("n"), 1, false);
    grid.Add(
        *Block({ { D(2024, 1, 1, 10, 0, 10), 1 }, { D(2024, 1, 1, 10, 1, 10), 2 }, { D(2024, 1, 1, 10, 0, 20), 4 } }),
        QStringLiteral("late"), 2);
    EXPECT_EQ(Values(grid.Data(QStringLiteral("late"))), (std::vector<double> { 1, 6 }));

    // Between steps of a time base with a gap, the index passes it for good.
    grid.Init(0, 0, QStringLiteral("n"), 1, false, TimeBase({ D(2024, 1, 1, 10), D(2024, 1, 1, 10, 5) }));
    grid.Add(*Block({ { D(2024, 1, 1, 10, 0, 10), 1 }, { D(2024, 1, 1, 10, 3), 2 }, { D(2024, 1, 1, 10, 0, 30), 4 },
                 { D(2024, 1, 1, 10, 5, 10), 8 } }),
        QStringLiteral("lost"), 2);
    EXPECT_EQ(Values(grid.Data(QStringLiteral("lost"))), (std::vector<double> { 1, 8 }));
}

TEST(GridBlocks, NamesKeepTheirFirstBlockEmptyGridsAddNothingAndClearKeepsTheGrid)
{
    TimeValueTransformator grid;
    grid.Init(D(2024, 1, 1), D(2024, 1, 2), QStringLiteral("d"), 1, true, TimeBase({}));
    grid.Add(*Block({ { D(2024, 1, 1), 1 } }), QStringLiteral("a"), 2);
    EXPECT_EQ(grid.Data(QStringLiteral("a")), nullptr);

    grid.Init(D(2024, 1, 1), D(2024, 1, 1, 2), QStringLiteral("h"), 1, true);
    grid.Add(*Block({ { D(2024, 1, 1, 1), 3 } }), QStringLiteral("a"), 2);
    const MatrixBlockPtr first = grid.Data(QStringLiteral("a"));
    grid.Add(*Block({ { D(2024, 1, 1), 5 } }), QStringLiteral("a"), 2);
    EXPECT_EQ(grid.Data(QStringLiteral("a")), first);
    // A source without a value column gives gaps only.
    MatrixBlock oneColumn(1, 1);
    oneColumn.At(0, 0) = D(2024, 1, 1, 0, 30);
    grid.Add(oneColumn, QStringLiteral("one"), 2);
    EXPECT_EQ(Values(grid.Data(QStringLiteral("one"))), (std::vector<double> { NoValue, NoValue }));

    // Init makes a new grid and keeps the blocks; Clear drops them and keeps the grid.
    const MatrixBlockPtr oldTime = grid.Time();
    grid.Init(D(2024, 1, 1), D(2024, 1, 1, 3), QStringLiteral("h"), 1, true);
    const MatrixBlockPtr time = grid.Time();
    EXPECT_TRUE(time != oldTime && grid.Data(QStringLiteral("a")) == first);
    EXPECT_EQ(Values(first), (std::vector<double> { NoValue, 3 }));
    grid.Clear();
    EXPECT_TRUE(grid.Data(QStringLiteral("a")) == nullptr && grid.Time() == time);
    grid.Add(*Block({ { D(2024, 1, 1, 2), 5 } }), QStringLiteral("a"), 2);
    EXPECT_EQ(Values(grid.Data(QStringLiteral("a"))), (std::vector<double> { NoValue, NoValue, 5 }));
}

TEST(GridAdd, ABlockWithOneSampleInEachStepBecomesTheGridBlockWithTheSameValuesAsACopy)
{
    // Samples a little off the steps' starts, one of them missing.
    const std::vector<std::pair<double, double>> rows
        = { { D(2024, 1, 1, 0, 0, 1), 4 }, { D(2024, 1, 1, 1, 0, 30), NoValue }, { D(2024, 1, 1, 2, 59, 59), -2 } };
    for (const qint32 aggregation : { 1, 2, 3, 6, 8, 0 }) {
        TimeValueTransformator grid;
        grid.Init(D(2024, 1, 1), D(2024, 1, 1, 3), QStringLiteral("h"), 1, true);
        grid.Add(*Block(rows), QStringLiteral("copy"), aggregation);
        MatrixBlockPtr owned = Block(rows);
        const MatrixBlock* taken = owned.get();
        grid.Add(std::move(owned), QStringLiteral("owned"), aggregation);
        EXPECT_FALSE(owned) << "taken over";
        ASSERT_EQ(grid.Data(QStringLiteral("owned")).get(), taken);
        EXPECT_EQ(Values(grid.Data(QStringLiteral("owned"))), Values(grid.Data(QStringLiteral("copy"))))
            << "aggregation " << aggregation;
        EXPECT_EQ(Texts(taken->Column(0)), Texts(grid.Time()->Column(0)));
    }

    // Held elsewhere, or with a step of two samples: copied, and the source left alone.
    TimeValueTransformator grid;
    grid.Init(D(2024, 1, 1), D(2024, 1, 1, 3), QStringLiteral("h"), 1, true);
    MatrixBlockPtr shared = Block(rows);
    const MatrixBlockPtr other = shared;
    grid.Add(std::move(shared), QStringLiteral("shared"), 2);
    EXPECT_TRUE(shared && grid.Data(QStringLiteral("shared")) != other);
    EXPECT_EQ(other->At(1, 1), NoValue);
    MatrixBlockPtr crowded
        = Block({ { D(2024, 1, 1, 0, 10), 1 }, { D(2024, 1, 1, 0, 20), 2 }, { D(2024, 1, 1, 2), 3 } });
    const MatrixBlock* crowdedPtr = crowded.get();
    grid.Add(std::move(crowded), QStringLiteral("crowded"), 2);
    EXPECT_TRUE(crowded && grid.Data(QStringLiteral("crowded")).get() != crowdedPtr);
    EXPECT_EQ(Values(grid.Data(QStringLiteral("crowded"))), (std::vector<double> { 3, 3, 3 }));
}

TEST(TimeGrid, FixedStepsAreThoseInitMakesForSecondsToDaysAndNothingForLongerOrUnevenUnits)
{
    // A module that aggregates where it stores the samples counts steps from the start on; every
    // step Init makes must be exactly there, over a leap day and a year's end.
    const double from = D(2023, 12, 30, 17, 44, 12.0);
    const std::tuple<const char*, qint32, qint64> fixed[]
        = { { "s", 10, 10 }, { "n", 15, 900 }, { "h", 2, 7200 }, { "d", 1, 86400 }, { "d", 3, 259200 } };
    for (const auto& [unit, count, seconds] : fixed) {
        const auto steps = TimeValueTransformator::FixedStepsOf(from, QString::fromLatin1(unit), count);
        ASSERT_TRUE(steps) << unit;
        EXPECT_EQ(steps->seconds, seconds) << unit;
        TimeValueTransformator grid;
        grid.Init(from, from + 400.0, QString::fromLatin1(unit), count, true);
        const auto times = grid.Time()->Column(0);
        ASSERT_GT(times.size(), 100u);
        const std::int64_t startMs = Calendar::WholeSeconds(steps->start) * 1000;
        for (std::size_t k = 0; k < times.size(); k += 97)
            ASSERT_EQ(Calendar::ToMilliseconds(times[k]), startMs + std::int64_t(k) * seconds * 1000)
                << unit << " row " << k;
    }
    EXPECT_FALSE(TimeValueTransformator::FixedStepsOf(from, "ww", 1));
    EXPECT_FALSE(TimeValueTransformator::FixedStepsOf(from, "m", 1));
    EXPECT_FALSE(TimeValueTransformator::FixedStepsOf(from, "yyyy", 1));
    EXPECT_FALSE(TimeValueTransformator::FixedStepsOf(from, "h", 0));
    EXPECT_FALSE(TimeValueTransformator::FixedStepsOf(-3.5, "h", 1));
}
