// SPDX-License-Identifier: GPL-3.0-or-later
// Places raw blocks of any time base on one common time grid, row by row.
#pragma once

#include "Calendar.h"
#include "MatrixBlock.h"

#include <QHash>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

class TimeValueTransformator
{
public:
    // The most rows a grid takes, over all its blocks together: a refresh checks rows times
    // curves against it before it fetches anything, and Init never makes more rows.
    static constexpr std::int64_t MaxRows = 50'000'000;

    // The first row's time of a grid aligned on that unit: the start of the date's minute,
    // hour, day, month or year; a second stays, a week only loses its time of day.
    static double AlignStart(double date, const QString& interval);
    // The rows Init would make for that window without a time base, not capped.
    static std::int64_t RowsBetween(
        double dateFrom, double dateTo, const QString& interval, qint32 intervalCount, bool align);

    // A grid whose steps all have the same whole number of seconds: units of seconds, minutes,
    // hours and days (weeks, months and years are not, or not aligned so).
    struct FixedSteps
    {
        double start; // the first step's start
        qint64 seconds; // the length of every step
    };
    // The steps Init would make with align for that unit and count, when they are fixed; nothing
    // for other units, a count below 1 or a start before day 0.
    static std::optional<FixedSteps> FixedStepsOf(double dateFrom, const QString& interval, qint32 intervalCount);

    // Sets the grid up. With a time base the grid takes its column 0 row by row and the
    // dates only serve alignment; without one, steps of intervalCount units run from
    // dateFrom to dateTo. An unknown unit counts as "s", a count below 1 as 1.
    void Init(double dateFrom, double dateTo, const QString& interval, qint32 intervalCount, bool align,
        const MatrixBlockPtr& timeBase = nullptr);

    // Builds the grid block of a raw block (column 0 time, column 1 values, ascending) and
    // keeps it under name. aggregation is the channel's DataType. A name already in use keeps
    // its first block; an empty grid adds nothing.
    void Add(const MatrixBlock& source, const QString& name, qint32 aggregation);
    // The same; a block that nobody else holds and that has exactly one sample in each step
    // becomes the grid block itself instead of being copied, and source is then empty.
    // Otherwise source is left as it was.
    void Add(MatrixBlockPtr&& source, const QString& name, qint32 aggregation);

    // The grid block added under name; nothing when unknown.
    MatrixBlockPtr Data(const QString& name) const;

    // Drops all grid blocks, not the grid.
    void Clear();

    double DateFrom() const { return m_dDateFrom; }
    double DateTo() const { return m_dDateTo; }
    QString Interval() const { return Calendar::UnitCode(m_eUnit); }
    qint32 IntervalCount() const { return m_lIntervalCount; }
    const MatrixBlockPtr& Time() const { return m_cTime; }

private:
    // One grid step as whole seconds in milliseconds: samples from start up to, not including, end.
    struct Step
    {
        std::int64_t start;
        std::int64_t end;
    };

    double m_dDateFrom = 0.0;
    double m_dDateTo = 0.0;
    Calendar::Unit m_eUnit = Calendar::Unit::Second;
    qint32 m_lIntervalCount = 1;
    MatrixBlockPtr m_cTime = MatrixBlock::Create(0, 1);
    QHash<QString, MatrixBlockPtr> m_cData;
    std::vector<Step> m_steps; // one per row of m_cTime, shared by every Add
};
