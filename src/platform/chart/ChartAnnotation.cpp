// SPDX-License-Identifier: GPL-3.0-or-later
#include "ChartAnnotation.h"

#include "ChartAdapter.h"
#include "ChartPrivate.h"

#include <QFontMetricsF>

#include <algorithm>
#include <cmath>

namespace {

// Room between the border of a text box and its text.
constexpr double TextMarginX = 3.0;
constexpr double TextMarginY = 2.0;

// "on,off[,on,off...]" in line widths; anything else gives a solid line.
QList<qreal> DashPattern(const QString& text)
{
    QList<qreal> pattern;
    const QStringList parts = text.split(QLatin1Char(','), Qt::SkipEmptyParts);
    for (const QString& part : parts) {
        bool ok = false;
        const double value = part.trimmed().toDouble(&ok);
        if (!ok || !(value > 0.0))
            return {};
        pattern.append(value);
    }
    if (pattern.size() % 2 != 0)
        return {};
    return pattern;
}

QRectF BoxRect(const ChartAnnotation& object)
{
    return QRectF(object.Left(), object.Top(), object.Width(), object.Height()).normalized();
}

} // namespace

// --- drawing

AnnotationItem::AnnotationItem(QCustomPlot* plot, ChartAnnotation* object)
    : QCPAbstractItem(plot)
    , m_object(object)
{
    setClipToAxisRect(false);
    setSelectable(false);
    setLayer(ChartLayer::Annotations);
}

void AnnotationItem::draw(QCPPainter* painter)
{
    const ChartAnnotation& object = *m_object;
    if (object.Parked())
        return;

    if (object.ObjectKind() == ChartAnnotation::Kind::Line) {
        QPen pen(object.Color(), std::max(1, object.LineWidth()));
        pen.setCosmetic(true);
        const QList<qreal> dashes = DashPattern(object.DashPattern());
        if (!dashes.isEmpty())
            pen.setDashPattern(dashes);
        painter->setPen(ItemPen(painter, pen));
        painter->drawLine(QPointF(object.Left(), object.Top()),
            QPointF(object.Left() + object.Width(), object.Top() + object.Height()));
        return;
    }

    const QRectF rect = BoxRect(object);
    QPen border(object.Color(), 1);
    border.setCosmetic(true);
    painter->setPen(object.Border() ? ItemPen(painter, border) : QPen(Qt::NoPen));
    painter->setBrush(object.BackColor().isValid() ? QBrush(object.BackColor()) : QBrush(Qt::NoBrush));
    painter->drawRect(rect);

    painter->setFont(object.Font());
    painter->setPen(object.Color());
    const int flags = Qt::AlignLeft | Qt::AlignVCenter | (object.WordWrap() ? Qt::TextWordWrap : 0);
    painter->drawText(rect.adjusted(TextMarginX, 0, -TextMarginX, 0), flags, object.Text());

    if (object.Selected()) {
        QPen frame(Qt::black, 1, Qt::DotLine);
        frame.setCosmetic(true);
        painter->setPen(ItemPen(painter, frame));
        painter->setBrush(Qt::NoBrush);
        painter->drawRect(rect.adjusted(-2, -2, 2, 2));
    }
}

// --- ChartAnnotation

ChartAnnotation::ChartAnnotation(ChartAnnotations* list, Kind kind)
    : QObject(list)
    , m_cList(list)
    , m_eKind(kind)
{ }

void ChartAnnotation::Changed()
{
    if (!m_bChanging && m_cList)
        m_cList->Repaint();
}

void ChartAnnotation::SetLeft(double left)
{
    SetGeometry(left, m_dTop, m_dWidth, m_dHeight);
}

void ChartAnnotation::SetTop(double top)
{
    SetGeometry(m_dLeft, top, m_dWidth, m_dHeight);
}

void ChartAnnotation::SetWidth(double width)
{
    SetGeometry(m_dLeft, m_dTop, width, m_dHeight);
}

void ChartAnnotation::SetHeight(double height)
{
    SetGeometry(m_dLeft, m_dTop, m_dWidth, height);
}

void ChartAnnotation::SetGeometry(double left, double top, double width, double height)
{
    if (left == m_dLeft && top == m_dTop && width == m_dWidth && height == m_dHeight)
        return;
    m_dLeft = left;
    m_dTop = top;
    m_dWidth = width;
    m_dHeight = height;
    Changed();
}

void ChartAnnotation::SetColor(const QColor& color)
{
    m_cColor = color;
    Changed();
}

void ChartAnnotation::SetLineWidth(int width)
{
    m_lLineWidth = std::max(1, width);
    Changed();
}

void ChartAnnotation::SetDashPattern(const QString& pattern)
{
    m_sDashPattern = pattern;
    Changed();
}

void ChartAnnotation::SetBackColor(const QColor& color)
{
    m_cBackColor = color;
    Changed();
}

void ChartAnnotation::SetBorder(bool border)
{
    m_bBorder = border;
    Changed();
}

void ChartAnnotation::SetWordWrap(bool wrap)
{
    m_bWordWrap = wrap;
    Changed();
}

void ChartAnnotation::SetText(const QString& text)
{
    m_sText = text;
    Changed();
}

void ChartAnnotation::SetFont(const QFont& font)
{
    m_cFont = font;
    Changed();
}

void ChartAnnotation::SizeToFit()
{
    if (m_eKind != Kind::Text)
        return;
    const QFontMetricsF metrics(m_cFont);
    const QString text = m_sText.isEmpty() ? QStringLiteral(" ") : m_sText;
    const QRectF bounds = metrics.boundingRect(QRectF(0, 0, 1e6, 1e6), Qt::AlignLeft | Qt::AlignTop, text);
    SetGeometry(
        m_dLeft, m_dTop, std::ceil(bounds.width()) + 2 * TextMarginX + 2, std::ceil(bounds.height()) + 2 * TextMarginY);
}

void ChartAnnotation::SetChanging(bool changing)
{
    m_bChanging = changing;
    if (!changing)
        Changed();
}

bool ChartAnnotation::Selected() const
{
    return m_cList && m_cList->Selected() == this;
}

// --- ChartAnnotations

ChartAnnotations::ChartAnnotations(ChartAdapter* chart)
    : m_cChart(chart)
{ }

ChartAnnotations::~ChartAnnotations()
{
    for (ChartAnnotation* object : m_cObjects) {
        if (object->m_cItem)
            object->m_cItem->parentPlot()->removeItem(object->m_cItem);
        delete object;
    }
    m_cObjects.clear();
}

ChartAnnotation* ChartAnnotations::AddLine()
{
    return Add(ChartAnnotation::Kind::Line);
}

ChartAnnotation* ChartAnnotations::AddText()
{
    return Add(ChartAnnotation::Kind::Text);
}

ChartAnnotation* ChartAnnotations::Add(ChartAnnotation::Kind kind)
{
    auto* object = new ChartAnnotation(this, kind);
    if (m_cChart && m_cChart->Plot())
        object->m_cItem = new AnnotationItem(m_cChart->Plot(), object);
    m_cObjects.push_back(object);
    // New objects are parked: nothing to draw yet.
    return object;
}

void ChartAnnotations::Remove(ChartAnnotation* object)
{
    if (!object || std::find(m_cObjects.begin(), m_cObjects.end(), object) == m_cObjects.end())
        return;
    m_cObjects.erase(std::find(m_cObjects.begin(), m_cObjects.end(), object));
    const bool wasSelected = m_cSelected == object;
    if (object->m_cItem)
        object->m_cItem->parentPlot()->removeItem(object->m_cItem);
    delete object;
    Repaint();
    if (wasSelected)
        emit SelectionChanged(nullptr);
}

ChartAnnotation* ChartAnnotations::Item(int index) const
{
    return index >= 0 && index < Count() ? m_cObjects[size_t(index)] : nullptr;
}

ChartAnnotation* ChartAnnotations::TextAt(const QPointF& pixel) const
{
    for (auto it = m_cObjects.rbegin(); it != m_cObjects.rend(); ++it) {
        const ChartAnnotation* object = *it;
        if (object->ObjectKind() == ChartAnnotation::Kind::Text && !object->Parked()
            && BoxRect(*object).contains(pixel))
            return *it;
    }
    return nullptr;
}

void ChartAnnotations::Select(ChartAnnotation* object)
{
    if (object && std::find(m_cObjects.begin(), m_cObjects.end(), object) == m_cObjects.end())
        return;
    if (m_cSelected == object)
        return;
    m_cSelected = object;
    Repaint();
    emit SelectionChanged(object);
}

void ChartAnnotations::Repaint()
{
    if (m_cChart && m_cChart->Plot())
        ReplotLayer(m_cChart->Plot(), ChartLayer::Annotations);
}

bool ChartAnnotations::MousePress(const QPointF& pixel, Qt::MouseButton button)
{
    if (button != Qt::LeftButton)
        return false;
    const QPointer<ChartAnnotation> hit = TextAt(pixel);
    Select(hit);
    if (!hit)
        return false;
    m_cDragged = hit;
    m_cDragOffset = pixel - QPointF(hit->Left(), hit->Top());
    m_bMoved = false;
    return true;
}

bool ChartAnnotations::MouseMove(const QPointF& pixel)
{
    if (!m_cDragged)
        return false;
    const QPointF topLeft = pixel - m_cDragOffset;
    if (topLeft != QPointF(m_cDragged->Left(), m_cDragged->Top())) {
        m_bMoved = true;
        m_cDragged->SetGeometry(topLeft.x(), topLeft.y(), m_cDragged->Width(), m_cDragged->Height());
    }
    return true;
}

bool ChartAnnotations::MouseRelease(const QPointF&)
{
    if (!m_cDragged)
        return false;
    const QPointer<ChartAnnotation> object = m_cDragged;
    const bool moved = m_bMoved;
    m_cDragged = nullptr;
    m_bMoved = false;
    if (moved)
        emit EndMoving(object);
    return true;
}

bool ChartAnnotations::MouseDoubleClick(const QPointF& pixel)
{
    ChartAnnotation* hit = TextAt(pixel);
    if (!hit)
        return false;
    // The release that follows belongs to the box, like the one after a press.
    m_cDragged = hit;
    m_cDragOffset = pixel - QPointF(hit->Left(), hit->Top());
    m_bMoved = false;
    emit DoubleClicked(hit);
    return true;
}

bool ChartAnnotations::KeyPress(int key)
{
    if (key != Qt::Key_Delete || !m_cSelected)
        return false;
    const QPointer<ChartAnnotation> doomed = m_cSelected;
    emit ObjectDeleted(doomed);
    // A receiver may have removed it already.
    Remove(doomed);
    return true;
}
