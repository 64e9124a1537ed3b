// SPDX-License-Identifier: GPL-3.0-or-later
#include "ChartAdapter.h"

#include "ChartAnnotation.h"
#include "ChartPrivate.h"
#include "FreshMemory.h"

#include <QBuffer>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPicture>
#include <QSaveFile>
#include <QSvgGenerator>
#include <QToolTip>
#include <QVBoxLayout>

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>

namespace {

constexpr double Nan = std::numeric_limits<double>::quiet_NaN();
// Hit tests look this far around a pixel.
constexpr double HitRadius = 4.0;
// The flag of TitleFlags that shows a title.
constexpr qint32 TitleShown = 0x100;

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

// --- helpers shared with the annotation sources

Qt::PenStyle ChartPenStyle(int style)
{
    switch (style) {
    case ChartLineStyle::Dash:
        return Qt::DashLine;
    case ChartLineStyle::Dot:
        return Qt::DotLine;
    case ChartLineStyle::DashDot:
        return Qt::DashDotLine;
    case ChartLineStyle::DashDotDot:
        return Qt::DashDotDotLine;
    default:
        return Qt::SolidLine;
    }
}

// Cosmetic pens keep their pixel width at any transformation and draw far faster than
// scaled ones.
QPen ChartPen(const QColor& color, int width, int style)
{
    QPen pen(color, std::max(1, width), ChartPenStyle(style));
    pen.setCosmetic(true);
    return pen;
}

void ReplotLayer(QCustomPlot* plot, const QString& layerName)
{
    auto* widget = static_cast<PlotWidget*>(plot);
    QCPLayer* layer = plot->layer(layerName);
    if (layer && layer->mode() == QCPLayer::lmBuffered && widget->BuffersReady())
        layer->replot();
    else
        plot->replot(QCustomPlot::rpQueuedReplot);
}

bool PlotWidget::BuffersReady()
{
    return !mPaintBuffers.isEmpty() && !hasInvalidatedPaintBuffers();
}

// --- private drawing classes

double LabelTicker::getTickStep(const QCPRange& range)
{
    // Date labels on the X axis are wide: as many ticks as their texts fit side by side.
    if (m_axis == ChartAxis::X && m_handler && m_owner && m_owner->axisRect()) {
        const QString sample = m_handler(m_axis, std::round(range.center()), QString());
        const int width = QFontMetrics(m_owner->tickLabelFont()).horizontalAdvance(sample) + 24;
        if (!sample.isEmpty())
            setTickCount(std::clamp(m_owner->axisRect()->width() / width, 1, 10));
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

TitleElement::TitleElement(QCustomPlot* plot, int position)
    : QCPLayoutElement(plot)
    , m_position(position)
{
    setAutoMargins(QCP::msNone);
    setMargins(QMargins());
    m_font.setBold(true);
    if (m_position == 2)
        m_font.setPointSizeF(m_font.pointSizeF() * 1.2);
    setLayer(QStringLiteral("axes"));
}

int TitleElement::Thickness() const
{
    return QFontMetrics(m_font).height() + 8;
}

QSize TitleElement::minimumOuterSizeHint() const
{
    const bool horizontal = m_position >= 2;
    const int thickness = Shown() ? Thickness() : 0;
    return horizontal ? QSize(0, thickness) : QSize(thickness, 0);
}

QSize TitleElement::maximumOuterSizeHint() const
{
    const bool horizontal = m_position >= 2;
    const int thickness = Shown() ? Thickness() : 0;
    return horizontal ? QSize(QWIDGETSIZE_MAX, thickness) : QSize(thickness, QWIDGETSIZE_MAX);
}

void TitleElement::draw(QCPPainter* painter)
{
    if (!Shown() || mRect.isEmpty())
        return;
    painter->setFont(m_font);
    painter->setPen(Qt::black);
    const QRectF rect(mRect);
    if (m_position >= 2) {
        painter->drawText(rect, Qt::AlignCenter, m_text);
        return;
    }
    painter->save();
    painter->translate(rect.center());
    painter->rotate(m_position == 0 ? -90.0 : 90.0);
    painter->drawText(
        QRectF(-rect.height() / 2, -rect.width() / 2, rect.height(), rect.width()), Qt::AlignCenter, m_text);
    painter->restore();
}

DepthItem::DepthItem(QCustomPlot* plot)
    : QCPAbstractItem(plot)
{
    setClipToAxisRect(false);
    setSelectable(false);
    setLayer(ChartLayer::Depth);
}

void DepthItem::draw(QCPPainter* painter)
{
    const QRectF rect(parentPlot()->axisRect()->rect());
    const QPointF offset(Depth, -Depth);
    QPen edge(QColor(150, 150, 150), 1);
    edge.setCosmetic(true);
    painter->setPen(edge);
    painter->setBrush(QColor(238, 238, 238));
    painter->drawRect(rect.translated(offset));
    painter->setBrush(QColor(200, 200, 200));
    painter->drawPolygon(
        QPolygonF({ rect.bottomLeft(), rect.bottomRight(), rect.bottomRight() + offset, rect.bottomLeft() + offset }));
    painter->setBrush(QColor(220, 220, 220));
    painter->drawPolygon(
        QPolygonF({ rect.topLeft(), rect.topLeft() + offset, rect.bottomLeft() + offset, rect.bottomLeft() }));
}

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

// --- chart state

QCPAxis* ChartPrivate::Axis(int axis) const
{
    switch (axis) {
    case ChartAxis::Y1:
        return plot->yAxis;
    case ChartAxis::Y2:
        return plot->yAxis2;
    case ChartAxis::X:
        return plot->xAxis;
    default:
        return nullptr;
    }
}

QCPAxis* ChartPrivate::ValueAxis(int axis) const
{
    if (axis == ChartAxis::Y2)
        return plot->yAxis2;
    return axis == ChartAxis::Y1 || axis == ChartAxis::X ? plot->yAxis : nullptr;
}

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
    return points > 0 && plot->axisRect()->width() / points < 2.0;
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

void ChartPrivate::ApplyLine(ChartConstantLine& line) const
{
    QCPItemStraightLine* item = line.item;
    const bool vertical = line.axis == ChartAxis::X;
    QCPAxis* valueAxis = line.axis == ChartAxis::Y2 ? plot->yAxis2 : plot->yAxis;
    // Along the line the position is a fraction of the axis rect, so the line never
    // degenerates whatever the other axis' range.
    for (QCPItemPosition* position : { item->point1, item->point2 }) {
        position->setAxes(plot->xAxis, valueAxis);
        position->setAxisRect(plot->axisRect());
        position->setTypeX(vertical ? QCPItemPosition::ptPlotCoords : QCPItemPosition::ptAxisRectRatio);
        position->setTypeY(vertical ? QCPItemPosition::ptAxisRectRatio : QCPItemPosition::ptPlotCoords);
    }
    if (vertical) {
        item->point1->setCoords(line.value, 0.0);
        item->point2->setCoords(line.value, 1.0);
    } else {
        item->point1->setCoords(0.0, line.value);
        item->point2->setCoords(1.0, line.value);
    }
    item->setPen(ChartPen(line.color, line.width, line.style));
    item->setVisible(!line.hidden);
}

void ChartPrivate::ApplyGrid(int axis) const
{
    const ChartGridStyle& style = grids[size_t(axis)];
    QCPGrid* grid = Axis(axis)->grid();
    grid->setPen(ChartPen(style.color, style.width, style.style));
    grid->setZeroLinePen(Qt::NoPen);
}

void ChartPrivate::ApplyTitle(int position) const
{
    const size_t p = size_t(position);
    // Until the caller sets flags, a title with text shows.
    const bool shown = !titleFlagsSet[p] || (titleFlags[p] & TitleShown);
    titles[p]->SetText(titleText[p]);
    titles[p]->SetShown(shown);
}

void ChartPrivate::Reshape(QCPGraph* graph) const
{
    if (!HasShape(*graph->data(), points))
        graph->data()->set(BuildData(*graph->data(), points, {}), true);
}

void ChartPrivate::SyncGeometry(const QRect& rect) const
{
    // A hidden widget gets no resize events, so its plot would keep a stale viewport.
    if (plot->geometry() != rect)
        plot->setGeometry(rect);
    if (plot->viewport() != plot->rect())
        plot->setViewport(plot->rect());
}

// --- ChartAdapter

ChartAdapter::ChartAdapter(QWidget* parent)
    : QWidget(parent)
    , d(std::make_unique<ChartPrivate>())
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    d->plot = new PlotWidget(this);
    layout->addWidget(d->plot);
    QCustomPlot* plot = d->plot;

    // The application zooms and selects on its own.
    plot->setInteractions(QCP::Interactions());
    plot->setSelectionRectMode(QCP::srmNone);
    plot->setAutoAddPlottableToLegend(false);
    plot->setPlottingHint(QCP::phFastPolylines, true);
    plot->setMouseTracking(true);
    plot->setFocusPolicy(Qt::StrongFocus);
    setFocusPolicy(Qt::StrongFocus);
    setFocusProxy(plot);

    plot->addLayer(ChartLayer::Depth, plot->layer(QStringLiteral("background")), QCustomPlot::limAbove);
    plot->layer(ChartLayer::Overlay)->setMode(QCPLayer::lmBuffered);
    plot->setCurrentLayer(QStringLiteral("main"));

    // Titles sit in a 3 x 3 grid around the axis rect: top, bottom, left and right.
    QCPLayoutGrid* grid = plot->plotLayout();
    QCPAxisRect* rect = plot->axisRect();
    grid->take(rect);
    grid->simplify();
    grid->setRowSpacing(0);
    grid->setColumnSpacing(0);
    grid->addElement(1, 1, rect);
    static constexpr int cells[4][2] = { { 1, 0 }, { 1, 2 }, { 0, 1 }, { 2, 1 } };
    for (int p = 0; p < 4; ++p) {
        d->titles[size_t(p)] = new TitleElement(plot, p);
        grid->addElement(cells[p][0], cells[p][1], d->titles[size_t(p)]);
    }

    for (int axis = 0; axis < 3; ++axis) {
        d->tickers[size_t(axis)] = QSharedPointer<LabelTicker>::create(axis, d->Axis(axis));
        d->Axis(axis)->setTicker(d->tickers[size_t(axis)]);
        d->ApplyGrid(axis);
        d->Axis(axis)->grid()->setVisible(true);
    }
    plot->xAxis->setNumberFormat(QStringLiteral("f"));
    plot->xAxis->setNumberPrecision(0);
    plot->xAxis->setRange(1, 10);
    plot->yAxis2->setVisible(false);
    plot->xAxis2->setVisible(false);

    d->depth = new DepthItem(plot);
    d->depth->setVisible(false);
    d->crossHair = new CrossHairItem(plot);

    // Bar drawing follows the point density of the range about to be drawn.
    connect(plot, &QCustomPlot::beforeReplot, this, [this] { d->UpdateBars(); });
    plot->installEventFilter(this);
    d->annotations = std::make_unique<ChartAnnotations>(this);
}

ChartAdapter::~ChartAdapter()
{
    // The annotation items live in the plot: they go first, then the plot, while d is whole.
    d->plot->removeEventFilter(this);
    d->annotations.reset();
    delete d->plot;
    d->plot = nullptr;
}

QCustomPlot* ChartAdapter::Plot() const
{
    return d->plot;
}

ChartAnnotations& ChartAdapter::Annotations()
{
    return *d->annotations;
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

// --- axes

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

// --- constant lines

int ChartAdapter::ConstantLineCount() const
{
    return static_cast<int>(d->lines.size());
}

int ChartAdapter::AddConstantLine()
{
    ChartConstantLine line;
    line.item = new QCPItemStraightLine(d->plot);
    line.item->setSelectable(false);
    line.item->setLayer(QStringLiteral("main"));
    d->ApplyLine(line);
    d->lines.push_back(line);
    return ConstantLineCount() - 1;
}

double ChartAdapter::ConstantLineValue(int line) const
{
    return d->ValidLine(line) ? d->lines[size_t(line)].value : 0.0;
}

void ChartAdapter::SetConstantLineValue(int line, double value)
{
    if (!d->ValidLine(line))
        return;
    d->lines[size_t(line)].value = value;
    d->ApplyLine(d->lines[size_t(line)]);
}

int ChartAdapter::ConstantLineAxis(int line) const
{
    return d->ValidLine(line) ? d->lines[size_t(line)].axis : 0;
}

void ChartAdapter::SetConstantLineAxis(int line, int axis)
{
    if (!d->ValidLine(line) || !d->Axis(axis))
        return;
    d->lines[size_t(line)].axis = axis;
    d->ApplyLine(d->lines[size_t(line)]);
}

QColor ChartAdapter::ConstantLineColor(int line) const
{
    return d->ValidLine(line) ? d->lines[size_t(line)].color : QColor();
}

void ChartAdapter::SetConstantLineColor(int line, const QColor& color)
{
    if (!d->ValidLine(line))
        return;
    d->lines[size_t(line)].color = color;
    d->ApplyLine(d->lines[size_t(line)]);
}

int ChartAdapter::ConstantLineWidth(int line) const
{
    return d->ValidLine(line) ? d->lines[size_t(line)].width : 0;
}

void ChartAdapter::SetConstantLineWidth(int line, int width)
{
    if (!d->ValidLine(line))
        return;
    d->lines[size_t(line)].width = std::max(1, width);
    d->ApplyLine(d->lines[size_t(line)]);
}

int ChartAdapter::ConstantLineStyle(int line) const
{
    return d->ValidLine(line) ? d->lines[size_t(line)].style : 0;
}

void ChartAdapter::SetConstantLineStyle(int line, int style)
{
    if (!d->ValidLine(line))
        return;
    d->lines[size_t(line)].style = style;
    d->ApplyLine(d->lines[size_t(line)]);
}

bool ChartAdapter::ConstantLineHidden(int line) const
{
    return d->ValidLine(line) && d->lines[size_t(line)].hidden;
}

void ChartAdapter::SetConstantLineHidden(int line, bool hidden)
{
    if (!d->ValidLine(line))
        return;
    d->lines[size_t(line)].hidden = hidden;
    d->ApplyLine(d->lines[size_t(line)]);
}

// --- chart-wide

int ChartAdapter::Gallery() const
{
    return d->gallery;
}

void ChartAdapter::SetGallery(int gallery)
{
    d->gallery = gallery;
    for (ChartSeries& s : d->series)
        d->ApplyStyle(s);
}

bool ChartAdapter::View3D() const
{
    return d->view3D;
}

void ChartAdapter::SetView3D(bool on)
{
    d->view3D = on;
    d->depth->setVisible(on);
}

bool ChartAdapter::Legend() const
{
    return d->plot->legend->visible();
}

void ChartAdapter::SetLegend(bool on)
{
    d->plot->legend->setVisible(on);
}

QString ChartAdapter::Title(int position) const
{
    return position >= 0 && position < 4 ? d->titleText[size_t(position)] : QString();
}

void ChartAdapter::SetTitle(int position, const QString& text)
{
    if (position < 0 || position >= 4)
        return;
    d->titleText[size_t(position)] = text;
    d->ApplyTitle(position);
}

qint32 ChartAdapter::TitleFlags(int position) const
{
    return position >= 0 && position < 4 ? d->titleFlags[size_t(position)] : 0;
}

void ChartAdapter::SetTitleFlags(int position, qint32 flags)
{
    if (position < 0 || position >= 4)
        return;
    d->titleFlags[size_t(position)] = flags;
    d->titleFlagsSet[size_t(position)] = true;
    d->ApplyTitle(position);
}

void ChartAdapter::Replot()
{
    d->SyncGeometry(rect());
    d->plot->replot();
}

void ChartAdapter::Repaint()
{
    d->plot->replot(QCustomPlot::rpQueuedReplot);
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

// --- pictures

namespace {

// Pictures show neither the cross hairs nor a stale layout; afterwards the widget's own
// layout comes back.
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
        d.UpdateBars();
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
    QSaveFile file(fileName);
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
