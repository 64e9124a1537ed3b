// SPDX-License-Identifier: GPL-3.0-or-later
// The chart as pictures: images, SVG files and vector drawings onto a caller's painter.
#include "ChartAdapter.h"

#include "ChartPrivate.h"
#include "SafeSave.h"

#include <QBuffer>
#include <QPicture>
#include <QSvgGenerator>

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

} // namespace

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
        QSvgGenerator generator;
        generator.setOutputDevice(&buffer);
        generator.setSize(QSize(width, height));
        generator.setViewBox(QRect(0, 0, width, height));
        QCPPainter painter;
        if (!painter.begin(&generator))
            return false;
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
    // over to the caller's painter.
    QPicture picture;
    {
        ExportScope scope(*d, width, height);
        QCPPainter recorder;
        if (!recorder.begin(&picture))
            return;
        d->plot->toPainter(&recorder, width, height);
        recorder.end();
    }
    painter.drawPicture(0, 0, picture);
}
