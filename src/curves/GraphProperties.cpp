// SPDX-License-Identifier: GPL-3.0-or-later
#include "GraphProperties.h"

#include "Calendar.h"
#include "ChartAdapter.h"
#include "Formatter.h"

namespace {

constexpr int DottedGrid = 2;
constexpr int TitleTop = 2;
constexpr qint32 TitleShown = 0x10C;

} // namespace

QString GraphProperties::ExpandTitle(const TitleValues& values) const
{
    const Formatter formatter;
    const double now = values.now != 0 ? values.now : Calendar::Now();
    QString title = Title;
    title.replace(QStringLiteral("%CUSTOMERNAME%"), values.customerName);
    title.replace(QStringLiteral("%NAME%"), values.name);
    title.replace(QStringLiteral("%START_DATE%"), formatter.FormatDate(values.startDate, u"Short Date"));
    title.replace(QStringLiteral("%START_TIME%"), formatter.FormatDate(values.startDate, u"Short Time"));
    title.replace(QStringLiteral("%END_DATE%"), formatter.FormatDate(values.endDate, u"Short Date"));
    title.replace(QStringLiteral("%END_TIME%"), formatter.FormatDate(values.endDate, u"Short Time"));
    title.replace(QStringLiteral("%NOW_DATE%"), formatter.FormatDate(now, u"Short Date"));
    title.replace(QStringLiteral("%NOW_TIME%"), formatter.FormatDate(now, u"Short Time"));
    return title;
}

void GraphProperties::Apply(ChartAdapter* chart, const TitleValues& values) const
{
    if (!chart)
        return;
    chart->SetView3D(View3D);
    chart->SetLegend(Legend);
    if (chart->Gallery() != Gallery)
        chart->SetGallery(Gallery);

    const struct
    {
        int axis;
        bool show;
        qint32 color;
    } grids[] = { { ChartAxis::X, ShowXGrid, GridColor1 }, { ChartAxis::Y1, ShowYGrid1, GridColor1 },
        { ChartAxis::Y2, ShowYGrid2, GridColor2 } };
    chart->SetAxisTicks(ChartAxis::X, true);
    for (const auto& grid : grids) {
        chart->SetAxisGrid(grid.axis, grid.show);
        chart->SetAxisGridColor(grid.axis, CurveColors::ToColor(grid.color));
        chart->SetAxisGridStyle(grid.axis, DottedGrid);
        chart->SetAxisGridWidth(grid.axis, 1);
    }

    chart->SetTitle(TitleTop, ExpandTitle(values));
    chart->SetTitleFlags(TitleTop, chart->TitleFlags(TitleTop) | TitleShown);
}
