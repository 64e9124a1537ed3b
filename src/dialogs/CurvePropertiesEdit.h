// SPDX-License-Identifier: GPL-3.0-or-later
// What the curve properties dialog edits, which combinations it allows and what OK writes.
#pragma once

#include "SeriesProperties.h"

#include <QString>

#include <vector>

class Curve;

// One statistic of the curve as the dialog lists it.
struct StatisticChoice
{
    QString id;
    QString name;
    bool used = false;
    bool shown = false;
    bool canShow = false; ///< only statistics drawn as a line can be shown in the chart
};

class CurvePropertiesEdit
{
public:
    // What writing changed in the curve.
    struct Result
    {
        bool changed = false;
        bool axisChanged = false;
        bool unitChanged = false; ///< the axis titles show the units
    };

    static CurvePropertiesEdit FromCurve(const Curve& curve);

    // False for a name that is empty or blanks only.
    bool IsValid() const;
    // An unused statistic can't be shown, so clearing "used" clears "shown" as well.
    void SetUsed(std::size_t row, bool used);
    // Only a used statistic drawn as a line takes "shown"; others stay as they are.
    void SetShown(std::size_t row, bool shown);
    // Writes the fields that differ from the curve; nothing when the edit isn't valid.
    Result ApplyTo(Curve& curve) const;

    QString name;
    QString unit;
    bool visible = false;
    std::vector<StatisticChoice> statistics;
    SeriesProperties look;
    qint16 yAxis = 0;
};
