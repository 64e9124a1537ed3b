// SPDX-License-Identifier: GPL-3.0-or-later
// How one curve is drawn: colour, line width and style, markers and chart type.
#pragma once

#include "CurveColors.h"

#include <memory>

class ChartAdapter;

class SeriesProperties
{
public:
    qint32 Color = CurveColors::Rgb(255, 0, 0); ///< 0x00BBGGRR
    qint32 LineWidth = 1;
    qint32 LineStyle = 0; ///< below 0 on a line series: markers only
    bool Marker = false;
    qint32 Gallery = 0; ///< 0: the chart's type

    // Writes the properties into the series of the chart; nothing for no chart or no series.
    void Apply(ChartAdapter* chart, qint32 series) const;
    std::unique_ptr<SeriesProperties> Clone() const { return std::make_unique<SeriesProperties>(*this); }
};
