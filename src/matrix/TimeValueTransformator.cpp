// SPDX-License-Identifier: GPL-3.0-or-later
#include "TimeValueTransformator.h"

#include "FreshMemory.h"

#include <algorithm>
#include <span>

namespace {

constexpr double MaximumStart = -1e300;
constexpr double MinimumStart = 1e300;

// Pulls a date back to the start of its unit; weeks only drop the time of day.
double AlignDown(double date, Calendar::Unit unit)
{
    const Calendar::DateParts p = Calendar::Split(date);
    switch (unit) {
    case Calendar::Unit::Second:
        return date;
    case Calendar::Unit::Minute:
        return Calendar::FromParts(p.year, p.month, p.day, p.hour, p.minute);
    case Calendar::Unit::Hour:
        return Calendar::FromParts(p.year, p.month, p.day, p.hour);
    case Calendar::Unit::Day:
    case Calendar::Unit::Week:
        return Calendar::FromParts(p.year, p.month, p.day);
    case Calendar::Unit::Month:
        return Calendar::FromParts(p.year, p.month, 1);
    case Calendar::Unit::Year:
        return Calendar::FromParts(p.year, 1, 1);
    }
    return date;
}

// Aggregates one step's values; samples equal to noValue take no part.
double Aggregate(std::span<const double> values, qint32 aggregation, double noValue, double carry)
{
    switch (aggregation) {
    case 1:
    case 7: {
        double result = MaximumStart;
        for (const double value : values) {
            if (value != noValue && value > result)
                result = value;
        }
        return result;
    }
    case 2:
    case 4: {
        double sum = 0.0;
        for (const double value : values) {
            if (value != noValue)
                sum += value;
        }
        return sum;
    }
    case 3:
    case 5:
    case 8: {
        double sum = 0.0;
        qsizetype count = 0;
        for (const double value : values) {
            if (value != noValue) {
                sum += value;
                ++count;
            }
        }
        return count > 0 ? sum / static_cast<double>(count) : noValue;
    }
    case 6: {
        double result = MinimumStart;
        for (const double value : values) {
            if (value != noValue && value < result)
                result = value;
        }
        return result;
    }
    default:
        return carry;
    }
}

} // namespace

double TimeValueTransformator::AlignStart(double date, const QString& interval)
{
    return AlignDown(date, Calendar::ParseUnit(interval).value_or(Calendar::Unit::Second));
}

std::optional<TimeValueTransformator::FixedSteps> TimeValueTransformator::FixedStepsOf(
    double dateFrom, const QString& interval, qint32 intervalCount)
{
    const std::optional<Calendar::Unit> unit = Calendar::ParseUnit(interval);
    if (!unit || intervalCount < 1)
        return std::nullopt;
    qint64 seconds = 0;
    switch (*unit) {
    case Calendar::Unit::Second:
        seconds = 1;
        break;
    case Calendar::Unit::Minute:
        seconds = 60;
        break;
    case Calendar::Unit::Hour:
        seconds = 3600;
        break;
    case Calendar::Unit::Day:
        seconds = 86400;
        break;
    default:
        return std::nullopt;
    }
    const double start = AlignDown(dateFrom, *unit);
    if (!(start >= 0.0))
        return std::nullopt;
    return FixedSteps { start, seconds * intervalCount };
}

// Units / count rounded to the nearest whole number, ties to the even one, and at least 1.
std::int64_t TimeValueTransformator::RowsBetween(
    double dateFrom, double dateTo, const QString& interval, qint32 intervalCount, bool align)
{
    const Calendar::Unit unit = Calendar::ParseUnit(interval).value_or(Calendar::Unit::Second);
    if (align)
        dateFrom = AlignDown(dateFrom, unit);
    const std::int64_t count = std::max<qint32>(intervalCount, 1);
    const std::int64_t units = Calendar::Diff(unit, dateFrom, dateTo);
    if (units <= 0)
        return 1;
    std::int64_t steps = units / count;
    const std::int64_t twiceRest = 2 * (units % count);
    if (twiceRest > count || (twiceRest == count && steps % 2 != 0))
        ++steps;
    return std::max<std::int64_t>(steps, 1);
}

void TimeValueTransformator::Init(double dateFrom, double dateTo, const QString& interval, qint32 intervalCount,
    bool align, const MatrixBlockPtr& timeBase)
{
    m_eUnit = Calendar::ParseUnit(interval).value_or(Calendar::Unit::Second);
    if (align)
        dateFrom = AlignDown(dateFrom, m_eUnit);
    m_lIntervalCount = std::max<qint32>(intervalCount, 1);

    std::int64_t rows = 0;
    std::span<const double> baseTimes;
    if (timeBase) {
        if (timeBase->Columns() > 0)
            baseTimes = timeBase->Column(0);
        rows = static_cast<std::int64_t>(baseTimes.size());
    } else {
        rows = std::min(RowsBetween(dateFrom, dateTo, interval, m_lIntervalCount, false), MaxRows);
    }

    auto cells = FreshMemory::Zeros<std::vector<double>>(static_cast<std::size_t>(rows));
    // The steps of the last grid are overwritten where they fit, as at every navigation step.
    if (m_steps.capacity() >= static_cast<std::size_t>(rows))
        m_steps.assign(static_cast<std::size_t>(rows), Step { 0, 0 });
    else
        m_steps = FreshMemory::Zeros<std::vector<Step>>(static_cast<std::size_t>(rows));
    // Each row is computed from the one before, so months of unequal length stay exact.
    double next = dateFrom;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        const double start = timeBase ? baseTimes[i] : next;
        next = Calendar::Add(m_eUnit, m_lIntervalCount, start);
        cells[i] = start;
        // Whole seconds, kept as milliseconds: a sample is at or past a bound when its time in
        // milliseconds reaches the bound's second, so Add needs no division per sample.
        m_steps[i] = Step { Calendar::WholeSeconds(start) * 1000, Calendar::WholeSeconds(next) * 1000 };
    }

    m_dDateFrom = rows > 0 ? cells.front() : dateFrom;
    m_dDateTo = rows > 0 ? next : Calendar::Add(m_eUnit, m_lIntervalCount, dateFrom);
    m_cTime = MatrixBlock::Create();
    m_cTime->SetArray(static_cast<qsizetype>(rows), 1, std::move(cells));
}

void TimeValueTransformator::Add(const MatrixBlock& source, const QString& name, qint32 aggregation)
{
    if (m_cData.contains(name))
        return;
    // The grid block is shared with callers; never walk past the steps computed for it.
    const qsizetype rows = std::min(m_cTime->Rows(), static_cast<qsizetype>(m_steps.size()));
    if (rows == 0)
        return;

    const double noValue = m_cTime->NoValue();
    const std::span<const double> gridTimes = m_cTime->Column(0);
    std::span<const double> times;
    std::span<const double> values;
    if (source.Columns() >= 2) {
        times = source.Column(0);
        values = source.Column(1);
    }
    const qsizetype sourceRows = static_cast<qsizetype>(times.size());

    auto cells = FreshMemory::Zeros<std::vector<double>>(static_cast<std::size_t>(2 * rows));
    // Rows before the first sample of the window are gaps: nothing was measured there.
    double carry = noValue;
    // The source index only moves forward; its time is converted once per row.
    qsizetype index = 0;
    std::int64_t indexTime = sourceRows > 0 ? Calendar::ToMilliseconds(times[0]) : 0;
    const auto advance = [&] {
        if (++index < sourceRows)
            indexTime = Calendar::ToMilliseconds(times[index]);
    };

    for (qsizetype i = 0; i < rows; ++i) {
        const Step& step = m_steps[static_cast<std::size_t>(i)];
        while (index < sourceRows && indexTime < step.start)
            advance();
        const qsizetype first = index;
        while (index < sourceRows && indexTime < step.end)
            advance();

        if (index > first)
            carry = Aggregate(values.subspan(first, index - first), aggregation, noValue, carry);
        cells[i] = gridTimes[i];
        cells[rows + i] = carry;
    }

    auto block = MatrixBlock::Create(0, 0, name);
    block->SetNoValue(noValue);
    block->SetArray(rows, 2, std::move(cells));
    m_cData.insert(name, block);
}

void TimeValueTransformator::Add(MatrixBlockPtr&& source, const QString& name, qint32 aggregation)
{
    if (!source)
        return;
    const qsizetype rows = std::min(m_cTime->Rows(), static_cast<qsizetype>(m_steps.size()));
    const double noValue = m_cTime->NoValue();
    // A block nobody else holds, with one sample in each step, becomes the grid block itself:
    // its values are aggregated one by one where they stand and its times become the steps'.
    bool inPlace = source.use_count() == 1 && !m_cData.contains(name) && rows > 0 && source->Rows() == rows
        && source->Columns() == 2 && source->NoValue() == noValue;
    if (inPlace) {
        const std::span<const double> times = source->Column(0);
        for (qsizetype i = 0; i < rows && inPlace; ++i) {
            const Step& step = m_steps[static_cast<std::size_t>(i)];
            const std::int64_t at = Calendar::ToMilliseconds(times[static_cast<std::size_t>(i)]);
            inPlace = at >= step.start && at < step.end;
        }
    }
    if (!inPlace) {
        Add(*source, name, aggregation);
        return;
    }
    const std::span<const double> gridTimes = m_cTime->Column(0);
    const std::span<double> times = source->Column(0);
    const std::span<double> values = source->Column(1);
    double carry = noValue;
    for (std::size_t i = 0; i < values.size(); ++i) {
        carry = Aggregate(values.subspan(i, 1), aggregation, noValue, carry);
        values[i] = carry;
        times[i] = gridTimes[i];
    }
    source->SetName(name);
    m_cData.insert(name, source);
    source.reset();
}

MatrixBlockPtr TimeValueTransformator::Data(const QString& name) const
{
    return m_cData.value(name);
}

void TimeValueTransformator::Clear()
{
    m_cData.clear();
}
