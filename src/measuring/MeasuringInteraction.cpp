// SPDX-License-Identifier: GPL-3.0-or-later
// The view's side of the chart: mouse gestures become zooms, cursors and the context menu,
// tips tell values, texts are edited in place, cursor boxes and the note box follow the user.
#include "Measuring.h"

#include "Calendar.h"
#include "ChannelTree.h"
#include "ChartAdapter.h"
#include "ChartAnnotation.h"
#include "Formatter.h"
#include "MeasuringHost.h"
#include "Numeric.h"
#include "Settings.h"
#include "ctl_DynamicGrid.h"
#include "ctl_NavBar.h"
#include "frm_GraphicView.h"
#include "frm_Transparent.h"

#include <QTreeWidget>

#include <algorithm>
#include <cmath>

namespace {

// The strip at the top of the chart that belongs to the title.
constexpr int TitleStrip = 20;
// A cursor click takes the nearest point within this distance, looking this far to each side.
constexpr double CursorReach = 50.0;
constexpr int CursorSearch = 30;
// Editor ids of the note box and the title; cursor boxes use "C<curve id>_<n>".
constexpr int NoteBoxId = -1000;
constexpr int TitleId = -1001;
constexpr qint32 White = 0xFFFFFF;
constexpr double Parked = -1000.0;
constexpr double ParkedBelow = -499.0;

bool IsCosPhi(const Curve& curve)
{
    return !curve.Channels().empty() && curve.Channels().front().matrix->DataType() == DataMatrix::CosPhiType;
}

QString Number(double value)
{
    return Formatter().FormatNumber(value, u"0.00");
}

bool IsNumber(const QString& text, int expected)
{
    bool ok = false;
    return text.trimmed().toInt(&ok) == expected && ok;
}

} // namespace

void Measuring::ConnectInteraction()
{
    frm_GraphicView& view = *m_cGraph;
    ChartAdapter* chart = view.chart_View();
    ChartAnnotations* annotations = &chart->Annotations();
    connect(chart, &ChartAdapter::MousePressed, this, &Measuring::OnMousePressed);
    connect(chart, &ChartAdapter::MouseMoved, this,
        [this](Qt::MouseButtons, const QPointF& pixel) { OnMouseMoved(pixel); });
    connect(chart, &ChartAdapter::MouseReleased, this, &Measuring::OnMouseReleased);
    connect(chart, &ChartAdapter::DoubleClicked, this, &Measuring::OnDoubleClicked);
    connect(chart, &ChartAdapter::KeyPressed, this, &Measuring::OnKeyPressed);
    connect(&view, &frm_GraphicView::KeyPressed, this, &Measuring::OnKeyPressed);
    connect(chart, &ChartAdapter::ToolTipRequested, this, [this](const ChartHit& hit, const QPointF& pixel) {
        if (ChartAdapter* target = Chart())
            target->ShowToolTip(ToolTipText(hit, pixel));
    });
    connect(&view, &frm_GraphicView::EditFinished, this, &Measuring::OnEditFinished);
    connect(annotations, &ChartAnnotations::EndMoving, this, &Measuring::OnAnnotationMoved);
    connect(annotations, &ChartAnnotations::DoubleClicked, this, &Measuring::OnAnnotationDoubleClicked);
    connect(annotations, &ChartAnnotations::ObjectDeleted, this, &Measuring::OnAnnotationDeleted);
    connect(annotations, &ChartAnnotations::SelectionChanged, this, &Measuring::OnAnnotationSelected);
    connect(view.grid_View(), &ctl_DynamicGrid::MouseUp, this,
        [this](Qt::MouseButton button, Qt::KeyboardModifiers, const QPoint&) {
            if (button == Qt::RightButton)
                m_cHost.CallMenu(QStringLiteral("mnuView"));
        });
}

// --- mouse and keys

void Measuring::BeginPointing(bool placing)
{
    ChartAdapter* chart = Chart();
    if ((placing ? m_bCursorCrossHairs : m_bCrossHairs) && chart) {
        chart->SetCrossHairs(true);
        chart->SetToolTips(true);
    }
    m_bDragZoom = false;
    m_bPlacing = placing;
}

void Measuring::EndPointing()
{
    m_bDragZoom = false;
    m_bPlacing = false;
    if (ChartAdapter* chart = Chart()) {
        chart->SetCrossHairs(false);
        chart->SetToolTips(m_bToolTips);
    }
}

void Measuring::CloseZoomRectangle()
{
    // Deleted at once: a queued deletion would leave the rectangle on screen during the zoom.
    delete m_cTransparent.data();
    m_cTransparent = nullptr;
}

void Measuring::OnMousePressed(Qt::MouseButton button, const QPointF& pixel)
{
    ChartAdapter* chart = Chart();
    if (!chart)
        return;
    const QPoint at = pixel.toPoint();
    if (button == Qt::LeftButton && m_bZoomEnabled) {
        m_iDownX = at.x();
        m_iDownY = at.y();
        CloseZoomRectangle();
        auto* rectangle = new frm_Transparent(m_cGraph.get());
        rectangle->setGeometry(QRect(chart->mapToGlobal(at), QSize(0, 0)));
        rectangle->ShowMe(LeadingNumber(Settings::Value(Settings::Id::ZoomArea)) == 0.0, true);
        m_cTransparent = rectangle;
        // The rectangle takes no input; the chart keeps the keyboard so that Esc reaches it.
        chart->setFocus();
        m_bPlacing = false;
        m_bDragZoom = true;
        return;
    }
    if (at.y() <= TitleStrip)
        return;
    if (button == Qt::LeftButton)
        BeginPointing(m_bCursorEnabled);
    else if (button == Qt::RightButton && m_bCursorEnabled)
        BeginPointing(true);
}

void Measuring::OnMouseMoved(const QPointF& pixel)
{
    ChartAdapter* chart = Chart();
    auto* rectangle = qobject_cast<frm_Transparent*>(m_cTransparent.data());
    if (!chart || !rectangle || !m_bDragZoom || !chart->rect().contains(pixel.toPoint()))
        return;
    const QPoint at = pixel.toPoint();
    int left = m_iDownX;
    int top = m_iDownY;
    int dx = at.x() - m_iDownX;
    int dy = at.y() - m_iDownY;
    if (dx < 0) {
        left = at.x();
        dx = -dx;
    }
    if (dy < 0) {
        top = at.y();
        dy = -dy;
    }
    rectangle->setGeometry(QRect(chart->mapToGlobal(QPoint(left, top)), QSize(dx, dy)));

    const QPointF corners[2] = { QPointF(left, top), QPointF(left + dx, top + dy) };
    QString x[2];
    QString y[2];
    const bool second = !chart->AxisTitle(ChartAxis::Y2).isEmpty();
    const Formatter formatter;
    for (int i = 0; i < 2; ++i) {
        double point = 0, value = 0, ignored = 0, value2 = 0;
        if (!chart->PixelToValue(corners[i], ChartAxis::Y1, point, value)
            || (second && !chart->PixelToValue(corners[i], ChartAxis::Y2, ignored, value2))) {
            rectangle->SetLabels(QString(), QString(), QString(), QString());
            return;
        }
        const double date = DateOfPoint(point);
        x[i] = formatter.FormatDate(date, u"Short Date") + QLatin1Char(' ') + formatter.FormatDate(date, u"Short Time");
        y[i] = Number(value);
        if (second)
            y[i] += QStringLiteral(" / ") + Number(value2);
    }
    rectangle->SetLabels(x[0], y[0], x[1], y[1]);
}

void Measuring::OnMouseReleased(Qt::MouseButton button, const QPointF& pixel)
{
    const QPoint at = pixel.toPoint();
    if (button == Qt::RightButton) {
        if (!m_bPlacing) {
            m_cHost.CallMenu(QStringLiteral("mnuView"));
            return;
        }
        SetCursor(at.x(), at.y(), true, 2);
        EndPointing();
        return;
    }
    if (button != Qt::LeftButton)
        return;
    CloseZoomRectangle();
    if (m_bDragZoom) {
        if (std::abs(at.x() - m_iDownX) > 5 && std::abs(at.y() - m_iDownY) >= 6)
            ZoomTo(m_iDownX, m_iDownY, at.x(), at.y());
    } else if (m_bPlacing) {
        SetCursor(at.x(), at.y(), true, 1);
    }
    EndPointing();
}

void Measuring::OnDoubleClicked(const QPointF& pixel)
{
    ChartAdapter* chart = Chart();
    if (!chart || pixel.y() > TitleStrip)
        return;
    QFont font(QStringLiteral("Arial"), 12);
    font.setBold(true);
    m_cGraph->StartTextEdit(
        0, 0, chart->width(), TitleStrip, White, m_cGraphProperties.Title, QString::number(TitleId), &font, 2);
}

void Measuring::OnKeyPressed(int key)
{
    if (key != Qt::Key_Escape && key != 27)
        return;
    CloseZoomRectangle();
    m_bDragZoom = false;
}

// --- editing in place

void Measuring::OnEditFinished(const QString& id, const QString& text, bool cancelled)
{
    if (cancelled || id.isEmpty())
        return;
    if (IsNumber(id, NoteBoxId)) {
        SetRemark(text);
        SetChanged(true);
        return;
    }
    if (IsNumber(id, TitleId)) {
        m_cGraphProperties.Title = text;
        if (ChartAdapter* chart = Chart()) {
            chart->SetTitle(
                2, m_cGraphProperties.ExpandTitle(TitleValues { m_cAddress.Name, m_sName, StartDate(), EndDate(), 0 }));
            chart->Replot();
        }
        SetChanged(true);
        return;
    }
    // "C" & curve id & "_" & cursor number; the curve id may hold underscores itself.
    const qsizetype split = id.lastIndexOf(QLatin1Char('_'));
    if (!id.startsWith(QLatin1Char('C')) || split < 1)
        return;
    Curve* curve = FindCurve(id.mid(1, split - 1));
    bool ok = false;
    const qint32 number = id.mid(split + 1).toInt(&ok);
    if (!curve || !ok || number < 1 || number > static_cast<qint32>(curve->Cursors().size()))
        return;
    curve->Cursors()[size_t(number - 1)]->SetCustomText(text);
    curve->UpdateStatistic(nullptr);
    SetChanged(true);
}

// --- cursors

Curve* Measuring::CurveOfSeries(qint32 series) const
{
    if (series < 0)
        return nullptr;
    for (const auto& curve : m_cCurves)
        if (curve->SeriesID() == series)
            return curve.get();
    return nullptr;
}

Cursor* Measuring::CursorOfTag(qint32 tag, Curve** curve, qint32* position) const
{
    if (tag < 100)
        return nullptr;
    Curve* owner = CurveOfSeries(tag % 100);
    const qint32 number = tag / 100;
    if (!owner || number > static_cast<qint32>(owner->Cursors().size()))
        return nullptr;
    if (curve)
        *curve = owner;
    if (position)
        *position = number;
    return owner->Cursors()[size_t(number - 1)].get();
}

void Measuring::SelectCurveNode(const Curve& curve)
{
    if (!m_cGraph)
        return;
    QTreeWidget* tree = m_cGraph->trv_Statistics();
    if (QTreeWidgetItem* node = ChannelTree::FindItem(tree, curve.GetStatisticKey(nullptr)))
        tree->setCurrentItem(node);
    NodeClick(curve.ID());
}

void Measuring::SetCursor(int x, int y, bool onCurve, qint32 kind)
{
    ChartAdapter* chart = Chart();
    if (!chart)
        return;
    if (!onCurve) {
        double point = 0, value = 0;
        if (m_cCurrentCurve && chart->PixelToValue(QPointF(x, y), ChartAxis::Y1, point, value))
            m_cCurrentCurve->SetFreeCursor(point - 1, value, &chart->Annotations());
        return;
    }

    const qsizetype points = chart->PointCount();
    qsizetype bestPoint = -1;
    int bestSeries = -1;
    const ChartHit hit = chart->HitTest(QPointF(x, y));
    if (hit.kind == ChartHit::Point) {
        const int gallery = chart->SeriesGallery(hit.series) ? chart->SeriesGallery(hit.series) : chart->Gallery();
        if (gallery & ChartGallery::Bar) {
            bestPoint = hit.point;
            bestSeries = hit.series;
        }
    }
    if (bestSeries < 0 && points > 0) {
        // Point numbers run linearly over the X axis; the pixel of point 1 and the step
        // between two points turn a pixel into a point even outside the plot area.
        const double origin = chart->PointToPixel(1, 0, ChartAxis::Y1).x();
        const double step = chart->PointToPixel(2, 0, ChartAxis::Y1).x() - origin;
        if (step == 0)
            return;
        const auto toPoint = [&](double pixel) { return std::llround(1 + (pixel - origin) / step) - 1; };
        const qsizetype first = std::clamp<qsizetype>(toPoint(x - CursorSearch), 0, points - 1);
        const qsizetype last = std::clamp<qsizetype>(toPoint(x + CursorSearch), 0, points - 1);
        double best = 1e300;
        for (qsizetype point = std::min(first, last); point <= std::max(first, last); ++point)
            for (int series = 0; series < chart->SeriesCount(); ++series) {
                if (!chart->SeriesVisible(series))
                    continue;
                const double value = chart->Value(series, point);
                if (value == ChartAdapter::HiddenPoint)
                    continue;
                const QPointF at = chart->PointToPixel(double(point + 1), value, chart->SeriesAxis(series));
                const double distance = std::hypot(at.x() - x, at.y() - y);
                if (distance < best) {
                    best = distance;
                    bestPoint = point;
                    bestSeries = series;
                }
            }
        if (best >= CursorReach)
            return;
    }
    Curve* curve = CurveOfSeries(bestSeries);
    if (!curve)
        return;
    curve->SetCursor(static_cast<qint32>(bestPoint), chart, &chart->Annotations(), static_cast<qint16>(kind));
    SetChanged(true);
    if (curve != m_cCurrentCurve)
        SelectCurveNode(*curve);
    m_cHost.UpdateToolStates();
}

Cursor* Measuring::AddCursor(double dateTime, Curve& curve)
{
    ChartAdapter* chart = Chart();
    if (!chart)
        return nullptr;
    Cursor* cursor = curve.SetCursor(-1, chart, &chart->Annotations(), 0);
    cursor->SetDateTime(dateTime);
    cursor->SetIndex(-1);
    // With data on screen the cursor goes to its row now; otherwise the next refresh finds it.
    const MatrixBlockPtr block = curve.Result() ? curve.Result()->DataBlock() : nullptr;
    if (!block || block->Columns() < 2 || curve.SeriesID() < 0)
        return cursor;
    const qint64 second = Calendar::WholeSeconds(dateTime);
    for (qsizetype row = 0; row < block->Rows(); ++row) {
        if (Calendar::WholeSeconds(block->At(row, 0)) != second)
            continue;
        const double value = block->At(row, 1);
        if (value == block->NoValue())
            break;
        cursor->SetPoint(double(row), value, static_cast<qint16>(curve.SeriesID()), curve.YAxis(), block->At(row, 0),
            IsCosPhi(curve) ? MeasuredCosPhi(value) : 0.0);
        break;
    }
    return cursor;
}

// --- tips

double Measuring::DateOfPoint(double point) const
{
    const qint64 number = std::llround(point);
    if (m_cFirstBlock && m_cFirstBlock->Rows() > 0)
        return m_cFirstBlock->At(std::clamp<qint64>(number - 1, 0, m_cFirstBlock->Rows() - 1), 0);
    const qint64 seconds = Calendar::Diff(Calendar::Unit::Second, StartDate(), EndDate());
    const double points = std::max(1.0, PointCount());
    return Calendar::Add(Calendar::Unit::Second, qint64(double(seconds) * double(number) / points), StartDate());
}

QString Measuring::ToolTipText(const ChartHit& hit, const QPointF& pixel) const
{
    ChartAdapter* chart = Chart();
    if (!chart)
        return QString();
    const Formatter formatter;
    if (hit.kind == ChartHit::Point) {
        const Curve* curve = CurveOfSeries(hit.series);
        if (!curve)
            return QString();
        double value = chart->Value(hit.series, hit.point);
        // Power factors are drawn folded; the tip tells the factor itself.
        if (IsCosPhi(*curve))
            value = MeasuredCosPhi(value);
        return curve->Name() + QLatin1Char('\n') + Number(value) + QLatin1Char(' ') + curve->Unit() + QLatin1Char('\n')
            + formatter.FormatDate(DateOfPoint(double(hit.point + 1)), GetDateFormat(false));
    }
    if (hit.kind == ChartHit::PlotArea) {
        double point = 0, left = 0, right = 0;
        if (!chart->PixelToValue(pixel, ChartAxis::Y1, point, left)
            || !chart->PixelToValue(pixel, ChartAxis::Y2, point, right))
            return QString();
        // The values of both axes; the prefixes tell them apart only where both axes show.
        const bool both = chart->AxisVisible(ChartAxis::Y1) && chart->AxisVisible(ChartAxis::Y2);
        const QString values = (both ? QStringLiteral("L: ") : QString()) + Number(left) + QLatin1Char('\n')
            + (both ? QStringLiteral("R: ") : QString()) + Number(right);
        return values + QLatin1Char('\n') + formatter.FormatDate(DateOfPoint(point), GetDateFormat(false));
    }
    return QString();
}

// --- annotations

void Measuring::OnAnnotationMoved(ChartAnnotation* object)
{
    if (!object || object == m_cNoteBox)
        return;
    Curve* curve = nullptr;
    Cursor* cursor = CursorOfTag(object->Tag(), &curve, nullptr);
    if (!cursor || cursor->Box() != object)
        return;
    cursor->SaveBoxPosition();
    cursor->SetPoint(cursor->Index(), cursor->Value(), static_cast<qint16>(curve->SeriesID()), cursor->Axis(),
        cursor->DateTime(), IsCosPhi(*curve) ? MeasuredCosPhi(cursor->Value()) : 0.0);
    SetChanged(true);
}

void Measuring::OnAnnotationDoubleClicked(ChartAnnotation* object)
{
    if (!object || !m_cGraph)
        return;
    const auto edit = [&](const QString& text, const QString& id) {
        const QFont font = object->Font();
        m_cGraph->StartTextEdit(int(std::lround(object->Left())), int(std::lround(object->Top())),
            int(std::lround(object->Width())), int(std::lround(object->Height())), White, text, id, &font, 0);
    };
    if (object == m_cNoteBox) {
        edit(m_sRemark, QString::number(NoteBoxId));
        return;
    }
    Curve* curve = nullptr;
    qint32 position = 0;
    Cursor* cursor = CursorOfTag(object->Tag(), &curve, &position);
    if (cursor && cursor->Box() == object)
        edit(object->Text(), QLatin1Char('C') + curve->ID() + QLatin1Char('_') + QString::number(position));
}

void Measuring::OnAnnotationDeleted(ChartAnnotation* object)
{
    if (!object || object == m_cNoteBox)
        return;
    Curve* curve = nullptr;
    qint32 position = 0;
    Cursor* cursor = CursorOfTag(object->Tag(), &curve, &position);
    if (!cursor || cursor->Box() != object)
        return;
    cursor->DeleteBox();
    curve->RemoveCursor(position);
    SetChanged(true);
    m_cHost.UpdateToolStates();
}

void Measuring::OnAnnotationSelected(ChartAnnotation* object)
{
    if (m_cGraph && !m_cGraph->EditId().isEmpty())
        m_cGraph->EndTextEdit(false);
    if (!object)
        return;
    Curve* curve = nullptr;
    if (CursorOfTag(object->Tag(), &curve, nullptr) && curve)
        SelectCurveNode(*curve);
}

// --- the note box

bool Measuring::ShowAnnotation() const
{
    return m_cNoteBox && m_cNoteBox->Left() >= ParkedBelow;
}

void Measuring::SetShowAnnotation(bool show)
{
    // A box the user moved keeps its place when it is hidden and shown again.
    if (ShowAnnotation())
        m_sAnnotationPosition = AnnotationPosition();
    RebuildNoteBox(show);
    SetChanged(true);
}

QString Measuring::AnnotationPosition() const
{
    if (!ShowAnnotation())
        return m_sAnnotationPosition;
    const ChartAnnotation& box = *m_cNoteBox;
    return QStringLiteral("%1;%2;%3;%4")
        .arg(std::lround(box.Left()))
        .arg(std::lround(box.Top()))
        .arg(std::lround(box.Left() + box.Width()))
        .arg(std::lround(box.Top() + box.Height()));
}

void Measuring::SetAnnotationPosition(const QString& position)
{
    m_sAnnotationPosition = position;
    RebuildNoteBox(ShowAnnotation());
}

void Measuring::RebuildNoteBox(bool show)
{
    ChartAdapter* chart = Chart();
    if (!chart)
        return;
    ChartAnnotations& annotations = chart->Annotations();
    annotations.Remove(m_cNoteBox);
    ChartAnnotation* box = annotations.AddText();
    m_cNoteBox = box;
    box->SetChanging(true);
    box->SetTag(NoteBoxId);
    box->SetBorder(true);
    box->SetBackColor(Qt::white);
    box->SetColor(Qt::black);
    box->SetText(m_sRemark.isEmpty() ? QStringLiteral(" ") : m_sRemark);
    box->SizeToFit();
    const QStringList fields = m_sAnnotationPosition.split(QLatin1Char(';'));
    bool valid = fields.size() == 4;
    double edges[4] = {};
    for (int i = 0; valid && i < 4; ++i)
        edges[i] = fields[i].trimmed().toDouble(&valid);
    if (!show)
        box->SetGeometry(Parked, Parked, box->Width(), box->Height());
    else if (valid && edges[2] > edges[0] && edges[3] > edges[1])
        box->SetGeometry(edges[0], edges[1], edges[2] - edges[0], edges[3] - edges[1]);
    else
        box->SetGeometry(chart->PlotArea().left() + 10, chart->PlotArea().top() + 10, box->Width(), box->Height());
    box->SetChanging(false);
}
