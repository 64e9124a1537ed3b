// SPDX-License-Identifier: GPL-3.0-or-later
// The chart's axes: ranges, titles, grids, and the ticks and labels along them.
#include "ChartAdapter.h"

#include "ChartPrivate.h"

#include <algorithm>
#include <cmath>

// --- ticks and labels

int ChartPrivate::PlotWidth() const
{
    // The axis rect's own margins (tick labels, axis titles) as last laid out, and the side
    // titles as they are now.
    const QCPAxisRect* rect = plot->axisRect();
    int margins = rect->outerRect().width() - rect->width();
    for (const int position : { 0, 1 })
        margins += titles[size_t(position)]->minimumOuterSizeHint().width();
    return std::max(0, plot->viewport().width() - margins);
}

double LabelTicker::getTickStep(const QCPRange& range)
{
    // Date labels on the X axis are wide: as many ticks as their texts fit side by side. Ticks
    // are made before the layout places the axis rect, so its width is that of the viewport
    // being drawn, not the present one (of another size after a resize or in a picture).
    if (m_axis == ChartAxis::X && m_handler) {
        QString sample;
        for (const double point : { std::round(range.center()), std::ceil(range.lower), std::floor(range.upper) })
            if (sample.isEmpty())
                sample = m_handler(m_axis, point, QString());
        const int width
            = sample.isEmpty() ? 100 : QFontMetrics(m_owner->tickLabelFont()).horizontalAdvance(sample) + 24;
        setTickCount(std::clamp(m_chart->PlotWidth() / width, 1, 10));
    }
    const double step = QCPAxisTicker::getTickStep(range);
    if (m_axis == ChartAxis::X)
        return std::max(1.0, std::round(step));
    // Steps of 2.5 in a decade need one decimal more than the labels next to them show
    // (0.925 printed as "0.93"); steps of 2 keep every label exact.
    const double decade = std::pow(10.0, std::floor(std::log10(step)));
    return std::abs(step / decade - 2.5) < 1e-9 ? 2 * decade : step;
}

QVector<double> LabelTicker::createTickVector(double tickStep, const QCPRange& range)
{
    if (m_axis == ChartAxis::X && m_tickHandler) {
        const std::vector<double> ticks = m_tickHandler(range.lower, range.upper, tickCount());
        if (!ticks.empty())
            return QVector<double>(ticks.begin(), ticks.end());
    }
    return QCPAxisTicker::createTickVector(tickStep, range);
}

int LabelTicker::getSubTickCount(double tickStep)
{
    // Ticks chosen by the handler are not evenly spaced: sub ticks between them would be.
    return m_axis == ChartAxis::X && m_tickHandler ? 0 : QCPAxisTicker::getSubTickCount(tickStep);
}

QString LabelTicker::getTickLabel(double tick, const QLocale& locale, QChar formatChar, int precision)
{
    const QString text = QCPAxisTicker::getTickLabel(tick, locale, formatChar, precision);
    return m_handler ? m_handler(m_axis, tick, text) : text;
}

// --- axes

void ChartPrivate::ApplyGrid(int axis) const
{
    const ChartGridStyle& style = grids[size_t(axis)];
    QCPGrid* grid = Axis(axis)->grid();
    grid->setPen(ChartPen(style.color, style.width, style.style));
    grid->setZeroLinePen(Qt::NoPen);
}

double ChartAdapter::AxisMin(int axis) const
{
    const QCPAxis* a = d->Axis(axis);
    return a ? a->range().lower : 0.0;
}

double ChartAdapter::AxisMax(int axis) const
{
    const QCPAxis* a = d->Axis(axis);
    return a ? a->range().upper : 0.0;
}

void ChartAdapter::SetAxisMin(int axis, double value)
{
    if (QCPAxis* a = d->Axis(axis))
        a->setRangeLower(value);
}

void ChartAdapter::SetAxisMax(int axis, double value)
{
    if (QCPAxis* a = d->Axis(axis))
        a->setRangeUpper(value);
}

void ChartAdapter::SetAxisRange(int axis, double min, double max)
{
    if (QCPAxis* a = d->Axis(axis))
        a->setRange(min, max);
}

QString ChartAdapter::AxisTitle(int axis) const
{
    const QCPAxis* a = d->Axis(axis);
    return a ? a->label() : QString();
}

void ChartAdapter::SetAxisTitle(int axis, const QString& title)
{
    if (QCPAxis* a = d->Axis(axis))
        a->setLabel(title);
}

bool ChartAdapter::AxisVisible(int axis) const
{
    const QCPAxis* a = d->Axis(axis);
    return a && a->visible();
}

void ChartAdapter::SetAxisVisible(int axis, bool visible)
{
    if (QCPAxis* a = d->Axis(axis))
        a->setVisible(visible);
}

bool ChartAdapter::AxisTicks(int axis) const
{
    const QCPAxis* a = d->Axis(axis);
    return a && a->ticks();
}

void ChartAdapter::SetAxisTicks(int axis, bool on)
{
    if (QCPAxis* a = d->Axis(axis)) {
        a->setTicks(on);
        a->setSubTicks(on);
    }
}

bool ChartAdapter::AxisGrid(int axis) const
{
    const QCPAxis* a = d->Axis(axis);
    return a && a->grid()->visible();
}

void ChartAdapter::SetAxisGrid(int axis, bool on)
{
    if (QCPAxis* a = d->Axis(axis))
        a->grid()->setVisible(on);
}

QColor ChartAdapter::AxisGridColor(int axis) const
{
    return d->Axis(axis) ? d->grids[size_t(axis)].color : QColor();
}

void ChartAdapter::SetAxisGridColor(int axis, const QColor& color)
{
    if (!d->Axis(axis))
        return;
    d->grids[size_t(axis)].color = color;
    d->ApplyGrid(axis);
}

int ChartAdapter::AxisGridStyle(int axis) const
{
    return d->Axis(axis) ? d->grids[size_t(axis)].style : 0;
}

void ChartAdapter::SetAxisGridStyle(int axis, int style)
{
    if (!d->Axis(axis))
        return;
    d->grids[size_t(axis)].style = style;
    d->ApplyGrid(axis);
}

int ChartAdapter::AxisGridWidth(int axis) const
{
    return d->Axis(axis) ? d->grids[size_t(axis)].width : 0;
}

void ChartAdapter::SetAxisGridWidth(int axis, int width)
{
    if (!d->Axis(axis))
        return;
    d->grids[size_t(axis)].width = std::max(1, width);
    d->ApplyGrid(axis);
}

void ChartAdapter::SetLabelHandler(LabelHandler handler)
{
    for (const auto& ticker : d->tickers)
        ticker->SetHandler(handler);
}

void ChartAdapter::SetXTickHandler(TickHandler handler)
{
    d->tickers[ChartAxis::X]->SetTickHandler(std::move(handler));
}

std::vector<double> ChartAdapter::AxisTickValues(int axis) const
{
    const QCPAxis* a = d->Axis(axis);
    if (!a)
        return {};
    const QVector<double> ticks = a->tickVector();
    return std::vector<double>(ticks.begin(), ticks.end());
}

QStringList ChartAdapter::AxisTickLabels(int axis) const
{
    const QCPAxis* a = d->Axis(axis);
    return a ? QStringList(a->tickVectorLabels()) : QStringList();
}
