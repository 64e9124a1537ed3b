// SPDX-License-Identifier: GPL-3.0-or-later
// The chart's series: their value buffers, styles, bars and legend entries.
#include "ChartAdapter.h"

#include "ChartPrivate.h"
#include "FreshMemory.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>

namespace {

constexpr double Nan = std::numeric_limits<double>::quiet_NaN();

// Hidden points are kept as NaN, which the graph draws as a gap.
double Stored(double value)
{
    return std::isfinite(value) && value < ChartAdapter::HiddenPoint ? value : Nan;
}

double Read(double stored)
{
    return std::isnan(stored) ? ChartAdapter::HiddenPoint : stored;
}

QColor DefaultColor(std::size_t series)
{
    static const QColor colors[] = { QColor(0, 0, 255), QColor(255, 0, 0), QColor(0, 128, 0), QColor(255, 128, 0),
        QColor(128, 0, 128), QColor(0, 128, 128), QColor(128, 128, 0), QColor(0, 0, 0) };
    return colors[series % std::size(colors)];
}

QCPScatterStyle::ScatterShape MarkerShape(int shape)
{
    switch (shape) {
    case 0:
        return QCPScatterStyle::ssNone;
    case 1:
        return QCPScatterStyle::ssSquare;
    case 2:
        return QCPScatterStyle::ssDiamond;
    case 3:
        return QCPScatterStyle::ssTriangle;
    case 4:
        return QCPScatterStyle::ssTriangleInverted;
    case 5:
        return QCPScatterStyle::ssCross;
    case 6:
        return QCPScatterStyle::ssPlus;
    case 7:
        return QCPScatterStyle::ssStar;
    case 8:
        return QCPScatterStyle::ssCircle;
    default:
        return QCPScatterStyle::ssDisc;
    }
}

// True when the graph holds exactly the keys 1..points, so values can be written in place.
bool HasShape(const QCPGraphDataContainer& data, qsizetype points)
{
    if (data.size() != points)
        return false;
    return points == 0 || (data.constBegin()->key == 1.0 && (data.constEnd() - 1)->key == double(points));
}

// Keys 1..points; values from `values` first, then those the graph had at the same key, else
// hidden.
QVector<QCPGraphData> BuildData(const QCPGraphDataContainer& old, qsizetype points, std::span<const double> values)
{
    QVector<QCPGraphData> data;
    data.reserve(points);
    FreshMemory::PrepareForWriting(data.constData(), size_t(points) * sizeof(QCPGraphData));
    for (qsizetype i = 0; i < points; ++i)
        data.append(QCPGraphData(double(i + 1), Nan));
    for (auto it = old.constBegin(); it != old.constEnd(); ++it) {
        const qsizetype index = qsizetype(std::llround(it->key)) - 1;
        if (index >= 0 && index < points && double(index + 1) == it->key)
            data[index].value = it->value;
    }
    const qsizetype n = std::min<qsizetype>(points, qsizetype(values.size()));
    for (qsizetype i = 0; i < n; ++i)
        data[i].value = Stored(values[size_t(i)]);
    return data;
}

} // namespace

// --- chart state of the series

void ChartPrivate::ApplyStyle(ChartSeries& s) const
{
    QCPGraph* graph = s.graph;
    const int kind = s.gallery != 0 ? s.gallery : gallery;
    graph->setPen(ChartPen(s.color, s.lineWidth, s.lineStyle));
    graph->setBrush(Qt::NoBrush);

    QPen markerPen(s.color, 1);
    markerPen.setCosmetic(true);
    const QCPScatterStyle::ScatterShape shape = MarkerShape(s.markerShape);
    QCPScatterStyle markers(shape, markerPen, QBrush(s.color), std::max(1, s.markerSize));

    if (kind & ChartGallery::Bar) {
        ApplyBar(s);
    } else if (kind & ChartGallery::Step) {
        graph->setLineStyle(QCPGraph::lsStepLeft);
    } else if ((kind & ChartGallery::Marker) && !(kind & ChartGallery::Lines)) {
        graph->setLineStyle(QCPGraph::lsNone);
        if (shape == QCPScatterStyle::ssNone)
            markers = QCPScatterStyle(QCPScatterStyle::ssDisc, markerPen, QBrush(s.color), 3);
    } else {
        graph->setLineStyle(QCPGraph::lsLine);
    }
    graph->setScatterStyle(markers);
    graph->setValueAxis(s.axis == ChartAxis::Y2 ? plot->yAxis2 : plot->yAxis);
    graph->setVisible(s.visible);
}

bool ChartPrivate::DenseBars() const
{
    const double points = plot->xAxis->range().size();
    return points > 0 && PlotWidth() / points < 2.0;
}

void ChartPrivate::ApplyBar(ChartSeries& s) const
{
    QCPGraph* graph = s.graph;
    if (DenseBars()) {
        // Bars narrower than two pixels: one line per sampled point from the zero line looks
        // the same and draws about three times faster than a fill of thousands of steps.
        graph->setLineStyle(QCPGraph::lsImpulse);
        graph->setPen(ChartPen(s.color, 1, ChartLineStyle::Solid));
        graph->setBrush(Qt::NoBrush);
    } else {
        // Each value holds for its point on both sides; the brush fills down to the zero line.
        graph->setLineStyle(QCPGraph::lsStepCenter);
        graph->setPen(ChartPen(s.color, s.lineWidth, s.lineStyle));
        graph->setBrush(QBrush(s.color));
    }
}

void ChartPrivate::UpdateBars()
{
    for (ChartSeries& s : series)
        if ((s.gallery != 0 ? s.gallery : gallery) & ChartGallery::Bar)
            ApplyBar(s);
}

void ChartPrivate::UpdateLegend() const
{
    // Rebuilt as a whole so that the entries keep the series order.
    plot->legend->clearItems();
    for (const ChartSeries& each : series)
        if (each.visible && !each.legend.isEmpty())
            each.graph->addToLegend(plot->legend);
}

void ChartPrivate::Reshape(QCPGraph* graph) const
{
    if (!HasShape(*graph->data(), points))
        graph->data()->set(BuildData(*graph->data(), points, {}), true);
}

// --- series and values

int ChartAdapter::SeriesCount() const
{
    return static_cast<int>(d->series.size());
}

qsizetype ChartAdapter::PointCount() const
{
    return d->points;
}

void ChartAdapter::OpenData(int seriesCount, qsizetype points)
{
    seriesCount = std::max(0, seriesCount);
    const bool removed = seriesCount < SeriesCount();
    // The graph's container counts in int.
    d->points = std::clamp<qsizetype>(points, 0, INT_MAX - 1);
    while (static_cast<int>(d->series.size()) > seriesCount) {
        d->plot->removeGraph(d->series.back().graph);
        d->series.pop_back();
    }
    bool added = false;
    while (static_cast<int>(d->series.size()) < seriesCount) {
        ChartSeries s;
        s.graph = d->plot->addGraph(d->plot->xAxis, d->plot->yAxis);
        s.graph->setAdaptiveSampling(true);
        s.color = DefaultColor(d->series.size());
        d->ApplyStyle(s);
        d->series.push_back(s);
        added = true;
    }
    for (ChartSeries& s : d->series)
        d->Reshape(s.graph);
    if (added || removed)
        d->UpdateLegend();
}

void ChartAdapter::CloseData()
{
    Repaint();
}

void ChartAdapter::SetValue(int series, qsizetype point, double value)
{
    if (!d->ValidSeries(series) || point < 0 || point >= d->points)
        return;
    QCPGraph* graph = d->series[size_t(series)].graph;
    d->Reshape(graph);
    (graph->data()->begin() + point)->value = Stored(value);
}

double ChartAdapter::Value(int series, qsizetype point) const
{
    if (!d->ValidSeries(series) || point < 0 || point >= d->points)
        return 0.0;
    const QCPGraphDataContainer& data = *d->series[size_t(series)].graph->data();
    if (point >= data.size())
        return 0.0;
    return Read((data.constBegin() + point)->value);
}

bool ChartAdapter::ValueRange(int axis, double& min, double& max) const
{
    // Gaps are NaN, which fails both comparisons: the loop needs no test for them and no branch.
    double low = std::numeric_limits<double>::infinity();
    double high = -low;
    for (const ChartSeries& s : d->series) {
        if (s.axis != axis)
            continue;
        const QCPGraphDataContainer& data = *s.graph->data();
        for (auto it = data.constBegin(); it != data.constEnd(); ++it) {
            const double value = it->value;
            low = value < low ? value : low;
            high = value > high ? value : high;
        }
    }
    if (!(low <= high))
        return false;
    min = low;
    max = high;
    return true;
}

void ChartAdapter::SetValues(int series, std::span<const double> values)
{
    if (!d->ValidSeries(series))
        return;
    QCPGraphDataContainer& data = *d->series[size_t(series)].graph->data();
    if (HasShape(data, d->points)) {
        const qsizetype n = std::min<qsizetype>(d->points, qsizetype(values.size()));
        auto it = data.begin();
        for (qsizetype i = 0; i < n; ++i, ++it)
            it->value = Stored(values[size_t(i)]);
    } else {
        data.set(BuildData(data, d->points, values), true);
    }
}

int ChartAdapter::SeriesAxis(int series) const
{
    return d->ValidSeries(series) ? d->series[size_t(series)].axis : 0;
}

void ChartAdapter::SetSeriesAxis(int series, int axis)
{
    if (!d->ValidSeries(series) || (axis != ChartAxis::Y1 && axis != ChartAxis::Y2))
        return;
    d->series[size_t(series)].axis = axis;
    d->ApplyStyle(d->series[size_t(series)]);
    d->Axis(axis)->setVisible(true);
}

bool ChartAdapter::SeriesVisible(int series) const
{
    return d->ValidSeries(series) && d->series[size_t(series)].visible;
}

void ChartAdapter::SetSeriesVisible(int series, bool visible)
{
    if (!d->ValidSeries(series))
        return;
    ChartSeries& s = d->series[size_t(series)];
    s.visible = visible;
    s.graph->setVisible(visible);
    d->UpdateLegend();
}

QString ChartAdapter::SeriesLegend(int series) const
{
    return d->ValidSeries(series) ? d->series[size_t(series)].legend : QString();
}

void ChartAdapter::SetSeriesLegend(int series, const QString& text)
{
    if (!d->ValidSeries(series))
        return;
    d->series[size_t(series)].legend = text;
    d->series[size_t(series)].graph->setName(text);
    d->UpdateLegend();
}

int ChartAdapter::SeriesGallery(int series) const
{
    return d->ValidSeries(series) ? d->series[size_t(series)].gallery : 0;
}

void ChartAdapter::SetSeriesGallery(int series, int gallery)
{
    if (!d->ValidSeries(series))
        return;
    d->series[size_t(series)].gallery = gallery;
    d->ApplyStyle(d->series[size_t(series)]);
}

QColor ChartAdapter::SeriesColor(int series) const
{
    return d->ValidSeries(series) ? d->series[size_t(series)].color : QColor();
}

void ChartAdapter::SetSeriesColor(int series, const QColor& color)
{
    if (!d->ValidSeries(series))
        return;
    d->series[size_t(series)].color = color;
    d->ApplyStyle(d->series[size_t(series)]);
}

int ChartAdapter::SeriesLineWidth(int series) const
{
    return d->ValidSeries(series) ? d->series[size_t(series)].lineWidth : 0;
}

void ChartAdapter::SetSeriesLineWidth(int series, int width)
{
    if (!d->ValidSeries(series))
        return;
    d->series[size_t(series)].lineWidth = std::max(1, width);
    d->ApplyStyle(d->series[size_t(series)]);
}

int ChartAdapter::SeriesLineStyle(int series) const
{
    return d->ValidSeries(series) ? d->series[size_t(series)].lineStyle : 0;
}

void ChartAdapter::SetSeriesLineStyle(int series, int style)
{
    if (!d->ValidSeries(series))
        return;
    d->series[size_t(series)].lineStyle = style;
    d->ApplyStyle(d->series[size_t(series)]);
}

int ChartAdapter::SeriesMarkerShape(int series) const
{
    return d->ValidSeries(series) ? d->series[size_t(series)].markerShape : 0;
}

void ChartAdapter::SetSeriesMarkerShape(int series, int shape)
{
    if (!d->ValidSeries(series))
        return;
    d->series[size_t(series)].markerShape = std::max(0, shape);
    d->ApplyStyle(d->series[size_t(series)]);
}

int ChartAdapter::SeriesMarkerSize(int series) const
{
    return d->ValidSeries(series) ? d->series[size_t(series)].markerSize : 0;
}

void ChartAdapter::SetSeriesMarkerSize(int series, int size)
{
    if (!d->ValidSeries(series))
        return;
    d->series[size_t(series)].markerSize = std::max(1, size);
    d->ApplyStyle(d->series[size_t(series)]);
}
