// SPDX-License-Identifier: GPL-3.0-or-later
// Periods, moving to the ends, zoom and its history, axis fitting, labels and ticks.

#include "Measuring.h"

#include "Calendar.h"
#include "ChannelTree.h"
#include "ChartAdapter.h"
#include "ChartAnnotation.h"
#include "CurveColors.h"
#include "Formatter.h"
#include "Logging.h"
#include "MeasuringHost.h"
#include "Numeric.h"
#include "ResStrings.h"
#include "Settings.h"
#include "SoranoFileHandler.h"
#include "TimeValueTransformator.h"
#include "ViewPeriods.h"
#include "ctl_DynamicGrid.h"
#include "ctl_NavBar.h"
#include "ctl_VertNavBar.h"
#include "frm_GraphicView.h"

#include <QCoreApplication>
#include <QTreeWidget>

#include <algorithm>
#include <cmath>

// --- periods and zoom

void Measuring::ShowPeriod(const QString& unit, qint32 count)
{
    if (!m_cGraph)
        return;
    ctl_NavBar& bar = *m_cGraph->nav_Navigate();
    double from = 0.0;
    double to = 0.0;
    if (unit.isEmpty()) {
        from = FirstDataDate();
        to = LastDataDate();
    } else {
        from = ViewPeriods::PeriodStart(unit, bar.DateFrom(), bar.DateTo());
        const auto parsed = Calendar::ParseUnit(unit);
        to = parsed ? Calendar::Add(*parsed, count, from) : from;
    }
    bar.SetDateFrom(from);
    bar.SetDateTo(to);
    RefreshData(from, to, nullptr, true);
}

void Measuring::MoveToFirst()
{
    if (!m_cGraph)
        return;
    ctl_NavBar& bar = *m_cGraph->nav_Navigate();
    const double first = FirstDataDate();
    const qint64 length = Calendar::Diff(Calendar::Unit::Second, bar.DateFrom(), bar.DateTo());
    bar.SetDateFrom(first);
    bar.SetDateTo(Calendar::Add(Calendar::Unit::Second, length, first));
    RefreshData(bar.DateFrom(), bar.DateTo(), nullptr, true);
}

void Measuring::MoveToLast()
{
    if (!m_cGraph)
        return;
    ctl_NavBar& bar = *m_cGraph->nav_Navigate();
    const double last = LastDataDate();
    const qint64 length = Calendar::Diff(Calendar::Unit::Second, bar.DateFrom(), bar.DateTo());
    bar.SetDateTo(last);
    bar.SetDateFrom(Calendar::Add(Calendar::Unit::Second, -length, last));
    RefreshData(bar.DateFrom(), bar.DateTo(), nullptr, true);
}

void Measuring::ZoomTo(int x1, int y1, int x2, int y2)
{
    ChartAdapter* chart = Chart();
    if (!chart || !m_cFirstBlock || m_cFirstBlock->Rows() == 0)
        return;
    double left = 0, top = 0, right = 0, bottom = 0;
    if (!chart->PixelToValue(QPointF(x1, y1), ChartAxis::Y1, left, top)
        || !chart->PixelToValue(QPointF(x2, y2), ChartAxis::Y1, right, bottom))
        return;
    qint64 first = std::llround(left) + 1;
    qint64 second = std::llround(right);
    if (first > second)
        std::swap(first, second);
    // Chart points count from 1; rows of the first channel from 0.
    const qint64 lastRow = m_cFirstBlock->Rows() - 1;
    const bool pastEnd = second - 1 > lastRow;
    first = std::clamp<qint64>(first - 1, 0, lastRow);
    second = std::clamp<qint64>(second - 1, 0, lastRow);
    ctl_NavBar& bar = *m_cGraph->nav_Navigate();
    const double from = m_cFirstBlock->At(first, 0);
    const double to = pastEnd ? bar.DateTo() : m_cFirstBlock->At(second, 0);
    const double y1Min = std::min(top, bottom);
    const double y1Max = std::max(top, bottom);
    double y2Min = 0, y2Max = 0;
    bool second2 = false;
    if (!chart->AxisTitle(ChartAxis::Y2).isEmpty()) {
        double ignored = 0, a = 0, b = 0;
        second2 = chart->PixelToValue(QPointF(x1, y1), ChartAxis::Y2, ignored, a)
            && chart->PixelToValue(QPointF(x2, y2), ChartAxis::Y2, ignored, b);
        y2Min = std::min(a, b);
        y2Max = std::max(a, b);
    }

    m_sZoomHistory = ViewPeriods::PushZoom(m_sZoomHistory,
        { bar.DateFrom(), bar.DateTo(), chart->AxisMin(ChartAxis::Y1), chart->AxisMax(ChartAxis::Y1),
            chart->AxisMin(ChartAxis::Y2), chart->AxisMax(ChartAxis::Y2) });
    if (Calendar::WholeSeconds(to) - Calendar::WholeSeconds(from) > 0) {
        bar.SetDateFrom(from);
        bar.SetDateTo(to);
        RefreshData(from, to, nullptr, false);
        if (y1Min < y1Max)
            chart->SetAxisRange(ChartAxis::Y1, y1Min, y1Max);
        if (second2 && y2Min < y2Max)
            chart->SetAxisRange(ChartAxis::Y2, y2Min, y2Max);
        RedrawCursors();
        chart->Replot();
    }
    m_cHost.UpdateToolStates();
}

void Measuring::ZoomBack()
{
    if (m_sZoomHistory.isEmpty() || !m_cGraph)
        return;
    const auto entry = ViewPeriods::LastZoom(m_sZoomHistory);
    if (entry) {
        ChartAdapter& chart = *Chart();
        ctl_NavBar& bar = *m_cGraph->nav_Navigate();
        bar.SetDateFrom(entry->from);
        bar.SetDateTo(entry->to);
        RefreshData(entry->from, entry->to, nullptr, false);
        chart.SetAxisRange(ChartAxis::Y1, entry->y1Min, entry->y1Max);
        if (!chart.AxisTitle(ChartAxis::Y2).isEmpty() && entry->hasY2)
            chart.SetAxisRange(ChartAxis::Y2, entry->y2Min, entry->y2Max);
        RedrawCursors();
        chart.Replot();
    }
    m_sZoomHistory = ViewPeriods::PopZoom(m_sZoomHistory);
}

void Measuring::AdjustAxis(int axis)
{
    ChartAdapter* chart = Chart();
    double min = 0;
    double max = 0;
    if (!chart || !chart->ValueRange(axis, min, max))
        return;
    if (min == max) {
        // A flat line still gets a range to stand in.
        min -= 1;
        max += 1;
    }
    chart->SetAxisRange(axis, min, max);
}

void Measuring::OnNavigate(int index)
{
    Q_UNUSED(index);
    RefreshData(StartDate(), EndDate(), nullptr, true);
    SetChanged(true);
    m_cHost.UpdateToolStates();
}

void Measuring::OnVerticalMove(int axis, bool upper, bool lower, int direction)
{
    ChartAdapter* chart = Chart();
    if (!chart)
        return;
    double min = chart->AxisMin(axis);
    double max = chart->AxisMax(axis);
    double step = (max - min) / 20;
    if (step == 0)
        step = 1;
    if (direction < 0)
        step = -step;
    if (upper)
        max += step;
    if (lower)
        min += step;
    chart->SetAxisRange(axis, min, max);
    RedrawCursors();
    chart->Replot();
}

QString Measuring::GetDateFormat(bool forAxis) const
{
    const qint64 seconds = Calendar::Diff(Calendar::Unit::Second, StartDate(), EndDate());
    return ViewPeriods::DateFormat(forAxis, seconds, m_sIntervalUnit, PointCount());
}

QString Measuring::AxisLabel(int axis, double value, const QString& text) const
{
    if (axis == ChartAxis::X) {
        const qint64 point = std::llround(value);
        if (point < 1 || std::abs(value - double(point)) > 1e-9)
            return QString();
        double date = 0;
        if (m_cFirstBlock) {
            if (point - 1 >= m_cFirstBlock->Rows())
                return QString();
            date = m_cFirstBlock->At(point - 1, 0);
            if (std::isnan(date))
                return QString(); // a place RemoveGaps has moved the point away from
        } else {
            const qint64 seconds = Calendar::Diff(Calendar::Unit::Second, StartDate(), EndDate());
            const double points = std::max(1.0, PointCount());
            date = Calendar::Add(Calendar::Unit::Second, qint64(double(seconds) * double(point) / points), StartDate());
        }
        return Formatter().FormatDate(date, GetDateFormat(true));
    }
    if (!CosPhiView(axis))
        return text;
    const double v = FoldCosPhi(value);
    if (std::abs(v) > 1)
        return QString();
    QString mark;
    if (std::abs(v) != 1)
        mark = v > 0 || (v == 0 && value >= 0) ? QStringLiteral(" i ") : QStringLiteral(" c ");
    return mark + Formatter().FormatNumber(std::abs(v), u"0.00");
}

std::vector<double> Measuring::XTicks(double lower, double upper, int most) const
{
    std::vector<double> points;
    if (!m_cFirstBlock || m_cFirstBlock->Columns() < 1)
        return points;
    const auto first = static_cast<qsizetype>(std::ceil(lower)) - 1;
    const auto last = static_cast<qsizetype>(std::floor(upper)) - 1;
    for (const qsizetype row : ViewPeriods::RoundTimeRows(m_cFirstBlock->Column(0), first, last, most))
        points.push_back(double(row + 1));
    return points;
}
