// SPDX-License-Identifier: GPL-3.0-or-later
#include "SeriesProperties.h"

#include "ChartAdapter.h"

void SeriesProperties::Apply(ChartAdapter* chart, qint32 series) const
{
    if (!chart || series < 0 || series >= chart->SeriesCount())
        return;
    const int gallery = Gallery != 0 ? Gallery : chart->Gallery();
    chart->SetSeriesGallery(series, gallery);
    chart->SetSeriesColor(series, CurveColors::ToColor(Color));
    chart->SetSeriesLineWidth(series, LineWidth);
    if (chart->SeriesGallery(series) != ChartGallery::Lines || LineStyle >= 0) {
        chart->SetSeriesLineStyle(series, LineStyle);
        chart->SetSeriesGallery(series, gallery);
    } else {
        // A line series without a line shows its points only.
        chart->SetSeriesLineStyle(series, ChartLineStyle::Solid);
        chart->SetSeriesGallery(series, ChartGallery::Marker);
    }
    chart->SetSeriesMarkerShape(series, Marker ? 8 : 0);
    chart->SetSeriesMarkerSize(series, 4);
}
