// SPDX-License-Identifier: GPL-3.0-or-later
// What the view's properties dialog decides: the fields read from a view, their checks and what OK writes.
#pragma once

#include <QString>

#include <array>
#include <optional>
#include <utility>
#include <vector>

class Measuring;

// The fields of the properties dialog. Numbers the user types stay text until they are checked.
struct MeasuringPropertiesEntries
{
    double start = 0.0;
    double end = 0.0;
    bool fromData = true; ///< the resolution of the data, no normalisation
    QString unit; ///< s, n, h, d, ww, m or yyyy while normalised
    QString count;
    qint32 gallery = 1;
    bool autoScale = true;
    std::array<bool, 2> grid { true, false };
    bool view3D = false;
    bool legend = false;
    QString title;
    bool statistics = true;
    std::array<bool, 2> axisVisible { true, false };
    // An axis of power factors shows its limits as measured (inductive positive, capacitive
    // negative), not as the folded values the chart holds.
    std::array<bool, 2> axisCosPhi { false, false };
    std::array<QString, 2> axisMin;
    std::array<QString, 2> axisMax;
    QString company;
    QString contact;
    QString street;
    QString place;
    QString memo;
};

// What is wrong with the entries; OK is possible only when nothing is.
struct MeasuringPropertiesProblems
{
    bool period = false; ///< the end is not after the start
    bool count = false; ///< no whole number of at least 1 while normalised
    std::array<bool, 2> axis { false, false }; ///< a visible axis without numbers, or its minimum not below its maximum

    bool Any() const { return period || count || axis[0] || axis[1]; }
};

class MeasuringPropertiesRules
{
public:
    // The resolution units with the string ids of their names, in the order the dialog lists them.
    static const std::vector<std::pair<QString, int>>& Units();
    // The chart types with the string ids of their names.
    static const std::vector<std::pair<qint32, int>>& Galleries();

    static MeasuringPropertiesEntries Read(Measuring& view);
    static MeasuringPropertiesProblems Check(const MeasuringPropertiesEntries& entries);
    // A number as typed, with a point or a comma for the decimals.
    static std::optional<double> ParseNumber(const QString& text);
    // A resolution count: a whole number of at least 1.
    static std::optional<qint32> ParseCount(const QString& text);
    // The step of the date entries for a resolution: one resolution step for seconds up to days,
    // a day for the longer units, nothing for a unit or count it does not know.
    static std::optional<int> StepSeconds(const QString& unit, qint32 count);
    // The span between two dates in days and hours, as the dialog shows it.
    static QString DurationText(double start, double end);

    // Writes what differs between the entries as read and as edited into the view and refreshes
    // it: with a new fetch only when the period or the resolution changed. The axis limits are
    // set after the refresh, and only for a visible axis whose limits were edited. Nothing is
    // written when the edited entries have a problem. True when something changed.
    static bool Apply(
        Measuring& view, const MeasuringPropertiesEntries& before, const MeasuringPropertiesEntries& after);
};
