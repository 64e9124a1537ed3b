// SPDX-License-Identifier: GPL-3.0-or-later
// Private side of the chart: the plotting widget, its custom items and the chart state.
// Only the chart's own sources include this header (it pulls in the plotting library).
#pragma once

#include "ChartAdapter.h"
#include "ChartAnnotation.h"

#include <qcustomplot.h>

#include <array>
#include <memory>
#include <vector>

// Layer names of the chart, bottom to top where they matter.
namespace ChartLayer {
inline const QString Depth = QStringLiteral("depth"); // above "background"
inline const QString Overlay = QStringLiteral("overlay"); // the library's top layer
// Annotations share the top layer with the cross hairs: each buffered layer is one more
// picture to clear and compose at every replot, and both change without the curves.
inline const QString Annotations = Overlay;
} // namespace ChartLayer

// The plotting widget; tells whether a single layer can be replotted on its own.
class PlotWidget : public QCustomPlot
{
public:
    using QCustomPlot::QCustomPlot;
    bool BuffersReady();
    // Lays the chart out once if it never was, so that the margins around the axis rect are
    // known before the first ticks are chosen.
    void LayOutOnce();
};

// Replots one buffered layer, or queues a full replot while the buffers are not set up (a
// single layer cannot be drawn then, and a full replot per setter call would be wasted).
void ReplotLayer(QCustomPlot* plot, const QString& layerName);

QPen ChartPen(const QColor& color, int width, int style);
Qt::PenStyle ChartPenStyle(int style);
// The pen scaled with the chart's drawing instead of keeping its device width: cosmetic pens
// (and width 0) become non-cosmetic ones of their width, at least one chart pixel.
QPen ScalingPen(QPen pen);
// The pen the chart's own items draw with: scaling when the painter records a picture that is
// scaled later (pmNonCosmetic), as given otherwise.
QPen ItemPen(const QCPPainter* painter, const QPen& pen);

// Draws one annotation object in widget pixels.
class AnnotationItem : public QCPAbstractItem
{
public:
    AnnotationItem(QCustomPlot* plot, ChartAnnotation* object);
    double selectTest(const QPointF&, bool, QVariant* = nullptr) const override { return -1.0; }

protected:
    void draw(QCPPainter* painter) override;

private:
    ChartAnnotation* m_object;
};

// Tick labels through the chart's label handler; X axis steps stay whole point numbers.
class LabelTicker : public QCPAxisTicker
{
public:
    LabelTicker(int axis, QCPAxis* owner, const ChartPrivate* chart)
        : m_axis(axis)
        , m_owner(owner)
        , m_chart(chart)
    { }
    void SetHandler(ChartAdapter::LabelHandler handler) { m_handler = std::move(handler); }
    void SetTickHandler(ChartAdapter::TickHandler handler) { m_tickHandler = std::move(handler); }

protected:
    double getTickStep(const QCPRange& range) override;
    QVector<double> createTickVector(double tickStep, const QCPRange& range) override;
    int getSubTickCount(double tickStep) override;
    QString getTickLabel(double tick, const QLocale& locale, QChar formatChar, int precision) override;

private:
    int m_axis;
    QCPAxis* m_owner; // the axis it labels, for its font
    const ChartPrivate* m_chart; // for the room the axis gets
    ChartAdapter::LabelHandler m_handler;
    ChartAdapter::TickHandler m_tickHandler;
};

// A chart title in a row or column around the axis rect; vertical at the sides. Without text
// or while hidden it takes no room.
class TitleElement : public QCPLayoutElement
{
public:
    TitleElement(QCustomPlot* plot, int position);
    void SetText(const QString& text) { m_text = text; }
    void SetShown(bool shown) { m_shown = shown; }
    bool Shown() const { return m_shown && !m_text.isEmpty(); }
    QSize minimumOuterSizeHint() const override;
    QSize maximumOuterSizeHint() const override;

protected:
    void draw(QCPPainter* painter) override;

private:
    int Thickness() const;
    int m_position;
    QString m_text;
    bool m_shown = false;
    QFont m_font;
};

// The depth effect behind the axis rect: a back wall shifted up and right, joined to the
// plot area by a floor and a side wall.
class DepthItem : public QCPAbstractItem
{
public:
    static constexpr int Depth = 8;
    explicit DepthItem(QCustomPlot* plot);
    double selectTest(const QPointF&, bool, QVariant* = nullptr) const override { return -1.0; }

protected:
    void draw(QCPPainter* painter) override;
};

// Two dotted lines through the mouse position, clipped to the axis rect.
class CrossHairItem : public QCPAbstractItem
{
public:
    explicit CrossHairItem(QCustomPlot* plot);
    double selectTest(const QPointF&, bool, QVariant* = nullptr) const override { return -1.0; }
    void SetPosition(const QPointF& pixel) { m_pixel = pixel; }

protected:
    void draw(QCPPainter* painter) override;

private:
    QPointF m_pixel;
};

struct ChartSeries
{
    QCPGraph* graph = nullptr;
    int axis = ChartAxis::Y1;
    bool visible = true;
    QString legend;
    int gallery = 0;
    QColor color;
    int lineWidth = 1;
    int lineStyle = ChartLineStyle::Solid;
    int markerShape = 0;
    int markerSize = 5;
};

struct ChartConstantLine
{
    QCPItemStraightLine* item = nullptr;
    double value = 0.0;
    int axis = ChartAxis::Y1;
    QColor color = Qt::black;
    int width = 1;
    int style = ChartLineStyle::Solid;
    bool hidden = true;
};

struct ChartGridStyle
{
    QColor color = QColor(200, 200, 200);
    int style = ChartLineStyle::Dot;
    int width = 1;
};

struct ChartPrivate
{
    PlotWidget* plot = nullptr;
    std::vector<ChartSeries> series;
    qsizetype points = 0;
    std::vector<ChartConstantLine> lines;
    std::array<QSharedPointer<LabelTicker>, 3> tickers;
    std::array<ChartGridStyle, 3> grids;
    int gallery = ChartGallery::Lines;
    bool view3D = false;
    DepthItem* depth = nullptr;
    std::array<TitleElement*, 4> titles {};
    std::array<QString, 4> titleText;
    std::array<qint32, 4> titleFlags {};
    std::array<bool, 4> titleFlagsSet {};
    CrossHairItem* crossHair = nullptr;
    bool crossHairs = false;
    bool toolTips = false;
    QPointF toolTipPixel;
    std::unique_ptr<ChartAnnotations> annotations;
    QTimer* pendingReplot = nullptr; // runs while a replot is asked for

    // Axis by ChartAxis index, or null.
    QCPAxis* Axis(int axis) const;
    // The Y axis of a ChartAxis index: Y2 for Y2, Y1 for Y1 and X; null out of range.
    QCPAxis* ValueAxis(int axis) const;
    bool ValidSeries(int series) const { return series >= 0 && series < static_cast<int>(this->series.size()); }
    bool ValidLine(int line) const { return line >= 0 && line < static_cast<int>(lines.size()); }
    void ApplyStyle(ChartSeries& s) const;
    // Bars as filled steps, or as lines from the zero line where they are too dense to tell
    // apart.
    bool DenseBars() const;
    void ApplyBar(ChartSeries& s) const;
    void UpdateBars();
    void ApplyLine(ChartConstantLine& line) const;
    void ApplyGrid(int axis) const;
    void ApplyTitle(int position) const;
    void UpdateLegend() const;
    // Gives the graph keys 1..points, keeping the values it has and hiding new points.
    void Reshape(QCPGraph* graph) const;
    void SyncGeometry(const QRect& rect) const;
    // The width the axis rect takes in a layout of the present viewport. Ticks and bars are
    // chosen before the layout places the axis rect, whose width is then still that of the
    // last layout (of another size after a resize, or of the widget while a picture is drawn).
    int PlotWidth() const;
};
