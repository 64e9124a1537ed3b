// SPDX-License-Identifier: GPL-3.0-or-later
// The chart under the mouse: pixel conversions, hit tests, cross hairs, tool tips and the mouse and key events.
#include "ChartAdapter.h"

#include "ChartAnnotation.h"
#include "ChartPrivate.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QToolTip>

#include <algorithm>
#include <cmath>

namespace {

// Hit tests look this far around a pixel.
constexpr double HitRadius = 4.0;

} // namespace

CrossHairItem::CrossHairItem(QCustomPlot* plot)
    : QCPAbstractItem(plot)
{
    setSelectable(false);
    setLayer(ChartLayer::Overlay);
    setVisible(false);
}

void CrossHairItem::draw(QCPPainter* painter)
{
    const QRect area = parentPlot()->axisRect()->rect();
    if (!area.contains(m_pixel.toPoint()))
        return;
    QPen pen(QColor(80, 80, 80), 1, Qt::DotLine);
    pen.setCosmetic(true);
    painter->setPen(pen);
    painter->drawLine(QPointF(area.left(), m_pixel.y()), QPointF(area.right(), m_pixel.y()));
    painter->drawLine(QPointF(m_pixel.x(), area.top()), QPointF(m_pixel.x(), area.bottom()));
}

// --- conversions

QRect ChartAdapter::PlotArea() const
{
    return d->plot->axisRect()->rect();
}

QPointF ChartAdapter::PointToPixel(double x, double y, int axis) const
{
    const QCPAxis* valueAxis = d->ValueAxis(axis);
    if (!valueAxis)
        return {};
    return { d->plot->xAxis->coordToPixel(x), valueAxis->coordToPixel(y) };
}

bool ChartAdapter::PixelToValue(const QPointF& pixel, int axis, double& x, double& y) const
{
    const QCPAxis* valueAxis = d->ValueAxis(axis);
    if (!valueAxis || !QRectF(PlotArea()).contains(pixel))
        return false;
    x = d->plot->xAxis->pixelToCoord(pixel.x());
    y = valueAxis->pixelToCoord(pixel.y());
    return true;
}

ChartHit ChartAdapter::HitTest(const QPointF& pixel) const
{
    ChartHit hit;
    const QRectF area(PlotArea());
    if (!area.contains(pixel))
        return hit;
    hit.kind = ChartHit::PlotArea;

    const QCPAxis* xAxis = d->plot->xAxis;
    const double key1 = xAxis->pixelToCoord(pixel.x() - HitRadius);
    const double key2 = xAxis->pixelToCoord(pixel.x() + HitRadius);
    double best = HitRadius;
    // From the top series down, so that the one drawn above wins a tie.
    for (int series = SeriesCount() - 1; series >= 0; --series) {
        const ChartSeries& s = d->series[size_t(series)];
        if (!s.visible)
            continue;
        const QCPGraphDataContainer& data = *s.graph->data();
        const QCPAxis* valueAxis = s.graph->valueAxis();
        const auto begin = data.findBegin(std::min(key1, key2), false);
        const auto end = data.findEnd(std::max(key1, key2), false);
        for (auto it = begin; it < end; ++it) {
            if (std::isnan(it->value))
                continue;
            const QPointF at(xAxis->coordToPixel(it->key), valueAxis->coordToPixel(it->value));
            if (!area.contains(at))
                continue;
            const double distance = std::hypot(at.x() - pixel.x(), at.y() - pixel.y());
            if (distance < best || (distance == best && hit.kind != ChartHit::Point)) {
                best = distance;
                hit.kind = ChartHit::Point;
                hit.series = series;
                hit.point = it - data.constBegin();
            }
        }
    }
    return hit;
}

// --- mouse aids

bool ChartAdapter::CrossHairs() const
{
    return d->crossHairs;
}

void ChartAdapter::SetCrossHairs(bool on)
{
    d->crossHairs = on;
    if (!on && d->crossHair->visible()) {
        d->crossHair->setVisible(false);
        ReplotLayer(d->plot, ChartLayer::Overlay);
    }
}

bool ChartAdapter::ToolTips() const
{
    return d->toolTips;
}

void ChartAdapter::SetToolTips(bool on)
{
    d->toolTips = on;
    if (!on)
        QToolTip::hideText();
}

void ChartAdapter::ShowToolTip(const QString& text)
{
    if (text.isEmpty())
        QToolTip::hideText();
    else
        QToolTip::showText(d->plot->mapToGlobal(d->toolTipPixel.toPoint()), text, d->plot);
}

bool ChartAdapter::eventFilter(QObject* watched, QEvent* event)
{
    if (!d || watched != d->plot)
        return QWidget::eventFilter(watched, event);
    ChartAnnotations& annotations = *d->annotations;

    switch (event->type()) {
    case QEvent::MouseButtonPress: {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        if (annotations.MousePress(mouse->position(), mouse->button()))
            return true;
        emit MousePressed(mouse->button(), mouse->position());
        break;
    }
    case QEvent::MouseMove: {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        if (d->crossHairs) {
            d->crossHair->SetPosition(mouse->position());
            d->crossHair->setVisible(true);
            ReplotLayer(d->plot, ChartLayer::Overlay);
        }
        // A drag whose release went elsewhere (a dialog opened meanwhile) ends here.
        if (annotations.m_cDragged && !(mouse->buttons() & Qt::LeftButton))
            annotations.MouseRelease(mouse->position());
        if (annotations.MouseMove(mouse->position()))
            return true;
        emit MouseMoved(mouse->buttons(), mouse->position());
        break;
    }
    case QEvent::MouseButtonRelease: {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        if (mouse->button() == Qt::LeftButton && annotations.MouseRelease(mouse->position()))
            return true;
        emit MouseReleased(mouse->button(), mouse->position());
        break;
    }
    case QEvent::MouseButtonDblClick: {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        if (mouse->button() == Qt::LeftButton && annotations.MouseDoubleClick(mouse->position()))
            return true;
        emit DoubleClicked(mouse->position());
        break;
    }
    case QEvent::KeyPress: {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (annotations.KeyPress(key))
            return true;
        emit KeyPressed(key);
        break;
    }
    case QEvent::ToolTip: {
        if (d->toolTips) {
            d->toolTipPixel = static_cast<QHelpEvent*>(event)->pos();
            emit ToolTipRequested(HitTest(d->toolTipPixel), d->toolTipPixel);
        }
        return true;
    }
    case QEvent::Leave:
        if (d->crossHair->visible()) {
            d->crossHair->setVisible(false);
            ReplotLayer(d->plot, ChartLayer::Overlay);
        }
        break;
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}
