// SPDX-License-Identifier: GPL-3.0-or-later
// Chart-wide look of a view: chart type, 3D, legend, grids and the title template.
#pragma once

#include "CurveColors.h"

#include <QString>

#include <memory>

class ChartAdapter;

// What the title placeholders stand for.
struct TitleValues
{
    QString customerName; ///< %CUSTOMERNAME%
    QString name; ///< %NAME%
    double startDate = 0; ///< %START_DATE%, %START_TIME%
    double endDate = 0; ///< %END_DATE%, %END_TIME%
    double now = 0; ///< %NOW_DATE%, %NOW_TIME%; 0 takes the clock
};

class GraphProperties
{
public:
    bool View3D = false;
    bool Legend = false;
    bool ShowXGrid = true;
    bool ShowYGrid1 = true;
    bool ShowYGrid2 = false;
    qint32 GridColor1 = CurveColors::Rgb(192, 192, 192); ///< X and first Y axis
    qint32 GridColor2 = CurveColors::Rgb(128, 128, 128); ///< second Y axis
    QString Title; ///< template with placeholders
    qint32 Gallery = 1;

    void Apply(ChartAdapter* chart, const TitleValues& values) const;
    // The title with every placeholder replaced.
    QString ExpandTitle(const TitleValues& values) const;
    std::unique_ptr<GraphProperties> Clone() const { return std::make_unique<GraphProperties>(*this); }
};
