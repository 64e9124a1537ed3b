// SPDX-License-Identifier: GPL-3.0-or-later
// The chart as pictures: images, SVG files and vector drawings onto a caller's painter.
#include "ChartAdapter.h"

#include "ChartPrivate.h"
#include "SafeSave.h"

#include <QBuffer>
#include <QMetaProperty>
#include <QPicture>
#include <QSvgGenerator>

#include <algorithm>
#include <functional>
#include <vector>

namespace {

// Pictures show neither the cross hairs nor a stale layout; afterwards the widget's own
// layout comes back. Ticks and bars are chosen for the picture's size, as a replot of the
// widget in that size would choose them.
class ExportScope
{
public:
    ExportScope(ChartPrivate& d, int width, int height)
        : m_plot(d.plot)
        , m_crossHair(d.crossHair)
        , m_crossHairShown(d.crossHair->visible())
        , m_resized(d.plot->viewport().size() != QSize(width, height))
    {
        m_crossHair->setVisible(false);
        const QRect viewport = d.plot->viewport();
        d.plot->setViewport(QRect(0, 0, width, height));
        d.plot->LayOutOnce();
        d.UpdateBars();
        d.plot->setViewport(viewport);
    }
    ~ExportScope()
    {
        m_crossHair->setVisible(m_crossHairShown);
        if (m_resized)
            m_plot->replot(QCustomPlot::rpQueuedRefresh);
    }
    ExportScope(const ExportScope&) = delete;
    ExportScope& operator=(const ExportScope&) = delete;

private:
    QCustomPlot* m_plot;
    CrossHairItem* m_crossHair;
    bool m_crossHairShown;
    bool m_resized;
};

// Cosmetic pens keep their device width however a picture is scaled when it is played: a
// report printed at a fine resolution would show the curves, axes and grid as hairlines and
// their dots as solid lines. While a picture that is scaled later is recorded, every pen of
// the plot is one of chart pixels instead; afterwards each is exactly as it was.
class NonCosmeticScope
{
public:
    explicit NonCosmeticScope(QCustomPlot* plot)
    {
        for (int i = 0; i < plot->layerCount(); ++i)
            for (QCPLayerable* layerable : plot->layer(i)->children())
                Scale(layerable);
    }
    ~NonCosmeticScope()
    {
        for (auto restore = m_restore.rbegin(); restore != m_restore.rend(); ++restore)
            (*restore)();
    }
    NonCosmeticScope(const NonCosmeticScope&) = delete;
    NonCosmeticScope& operator=(const NonCosmeticScope&) = delete;

private:
    void Scale(QCPLayerable* layerable)
    {
        // Axes, grids, the legend, items and plottables hold their pens as properties.
        const QMetaObject* meta = layerable->metaObject();
        for (int i = 0; i < meta->propertyCount(); ++i) {
            const QMetaProperty property = meta->property(i);
            if (property.metaType() != QMetaType::fromType<QPen>() || !property.isWritable())
                continue;
            const QPen pen = property.read(layerable).value<QPen>();
            const QPen scaling = ScalingPen(pen);
            if (scaling == pen)
                continue;
            property.write(layerable, scaling);
            m_restore.push_back([layerable, property, pen] { property.write(layerable, pen); });
        }
        if (auto* plottable = qobject_cast<QCPAbstractPlottable*>(layerable))
            ScaleDecorator(plottable->selectionDecorator());
        if (auto* graph = qobject_cast<QCPGraph*>(layerable)) {
            const QCPScatterStyle style = graph->scatterStyle();
            if (style.isPenDefined() && ScalingPen(style.pen()) != style.pen()) {
                QCPScatterStyle scaling = style;
                scaling.setPen(ScalingPen(style.pen()));
                graph->setScatterStyle(scaling);
                m_restore.push_back([graph, style] { graph->setScatterStyle(style); });
            }
        }
    }
    void ScaleDecorator(QCPSelectionDecorator* decorator)
    {
        if (!decorator)
            return;
        const QPen pen = decorator->pen();
        const QCPScatterStyle style = decorator->scatterStyle();
        const QCPScatterStyle::ScatterProperties used = decorator->usedScatterProperties();
        if (ScalingPen(pen) == pen && ScalingPen(style.pen()) == style.pen())
            return;
        QCPScatterStyle scaling = style;
        scaling.setPen(ScalingPen(style.pen()));
        decorator->setPen(ScalingPen(pen));
        decorator->setScatterStyle(scaling, used);
        m_restore.push_back([decorator, pen, style, used] {
            decorator->setPen(pen);
            decorator->setScatterStyle(style, used);
        });
    }

    std::vector<std::function<void()>> m_restore;
};

} // namespace

QPen ScalingPen(QPen pen)
{
    if (pen.style() != Qt::NoPen && (pen.isCosmetic() || pen.widthF() <= 0.0)) {
        pen.setCosmetic(false);
        pen.setWidthF(std::max(1.0, pen.widthF()));
    }
    return pen;
}

QPen ItemPen(const QCPPainter* painter, const QPen& pen)
{
    return painter->modes().testFlag(QCPPainter::pmNonCosmetic) ? ScalingPen(pen) : pen;
}

QImage ChartAdapter::ToImage(int width, int height)
{
    d->SyncGeometry(rect());
    if (width <= 0 || height <= 0)
        return {};
    ExportScope scope(*d, width, height);
    return d->plot->toPixmap(width, height).toImage();
}

bool ChartAdapter::SaveSvg(const QString& fileName, int width, int height)
{
    d->SyncGeometry(rect());
    if (width <= 0 || height <= 0)
        return false;
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    {
        ExportScope scope(*d, width, height);
        NonCosmeticScope pens(d->plot);
        QSvgGenerator generator;
        generator.setOutputDevice(&buffer);
        generator.setSize(QSize(width, height));
        generator.setViewBox(QRect(0, 0, width, height));
        QCPPainter painter;
        if (!painter.begin(&generator))
            return false;
        painter.setMode(QCPPainter::pmNonCosmetic);
        d->plot->toPainter(&painter, width, height);
        painter.end();
    }
    SafeSave file(fileName);
    if (!file.open(QIODevice::WriteOnly) || file.write(buffer.data()) != buffer.data().size())
        return false;
    return file.commit();
}

void ChartAdapter::Draw(QPainter& painter, int width, int height)
{
    d->SyncGeometry(rect());
    if (width <= 0 || height <= 0)
        return;
    // The plot draws through its own painter class; a recorded picture carries the vectors
    // over to the caller's painter, which may scale them (reports print in twips).
    QPicture picture;
    {
        ExportScope scope(*d, width, height);
        NonCosmeticScope pens(d->plot);
        QCPPainter recorder;
        if (!recorder.begin(&picture))
            return;
        recorder.setMode(QCPPainter::pmNonCosmetic);
        d->plot->toPainter(&recorder, width, height);
        recorder.end();
    }
    painter.drawPicture(0, 0, picture);
}
