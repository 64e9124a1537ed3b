// SPDX-License-Identifier: GPL-3.0-or-later
// The chart's construction, shared drawing helpers, constant lines, titles and chart-wide settings.
#include "ChartAdapter.h"

#include "ChartAnnotation.h"
#include "ChartPrivate.h"

#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace {

// The flag of TitleFlags that shows a title.
constexpr qint32 TitleShown = 0x100;

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

void PlotWidget::LayOutOnce()
{
    if (axisRect()->outerRect().isEmpty())
        updateLayout();
}

// --- titles and the depth effect

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
    painter->setPen(ItemPen(painter, edge));
    painter->setBrush(QColor(238, 238, 238));
    painter->drawRect(rect.translated(offset));
    painter->setBrush(QColor(200, 200, 200));
    painter->drawPolygon(
        QPolygonF({ rect.bottomLeft(), rect.bottomRight(), rect.bottomRight() + offset, rect.bottomLeft() + offset }));
    painter->setBrush(QColor(220, 220, 220));
    painter->drawPolygon(
        QPolygonF({ rect.topLeft(), rect.topLeft() + offset, rect.bottomLeft() + offset, rect.bottomLeft() }));
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

void ChartPrivate::ApplyTitle(int position) const
{
    const size_t p = size_t(position);
    // Until the caller sets flags, a title with text shows.
    const bool shown = !titleFlagsSet[p] || (titleFlags[p] & TitleShown);
    titles[p]->SetText(titleText[p]);
    titles[p]->SetShown(shown);
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
        d->tickers[size_t(axis)] = QSharedPointer<LabelTicker>::create(axis, d->Axis(axis), d.get());
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
    connect(plot, &QCustomPlot::beforeReplot, this, [this] {
        d->plot->LayOutOnce();
        d->UpdateBars();
    });
    plot->installEventFilter(this);
    d->annotations = std::make_unique<ChartAnnotations>(this);

    // A new axis range shows without a call to Replot: a replot is asked for at the next
    // event-loop turn, and a Replot before then takes its place.
    d->pendingReplot = new QTimer(this);
    d->pendingReplot->setSingleShot(true);
    d->pendingReplot->setInterval(0);
    // While updates are held (a refresh fills the chart), the replot waits for the one that
    // ends the hold.
    connect(d->pendingReplot, &QTimer::timeout, this, [this] {
        if (updatesEnabled())
            Replot();
    });
    for (int axis = 0; axis < 3; ++axis)
        connect(d->Axis(axis), qOverload<const QCPRange&>(&QCPAxis::rangeChanged), this, &ChartAdapter::Repaint);
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
    d->pendingReplot->stop();
    d->SyncGeometry(rect());
    d->plot->replot();
}

void ChartAdapter::Repaint()
{
    if (!d->pendingReplot->isActive())
        d->pendingReplot->start();
}
