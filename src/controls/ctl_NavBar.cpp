// SPDX-License-Identifier: GPL-3.0-or-later
#include "ctl_NavBar.h"

#include "Calendar.h"
#include "Numeric.h"
#include "ResStrings.h"

#include <QApplication>
#include <QEvent>
#include <QFontMetrics>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QToolButton>

#include <algorithm>
#include <cmath>

namespace {

constexpr int ButtonWidth = 16;
constexpr int ButtonHeight = 20;
constexpr int IconSize = 12;
constexpr int Spacing = 2;

// Date masks for the labels, longest first.
constexpr const char16_t* LabelMasks[] = { u"dd.mm.yy hh:nn:ss", u"dd.mm. hh:nn:ss", u"dd.mm. hh:nn", u"dd.mm." };

// Button glyphs in a 12 x 12 box, drawn for the left group and mirrored for the right one:
// 0 to the start (bar and triangle), 1 the medium step (two triangles), 2 the small step.
QIcon NavIcon(int index, const QColor& colour, qreal ratio)
{
    QPixmap pixmap(QSize(IconSize, IconSize) * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    if (index > 2) {
        painter.translate(IconSize, 0);
        painter.scale(-1, 1);
        index = 5 - index;
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    const auto triangle = [&painter](double tipX, double width) {
        const QPointF points[] = { { tipX, 6.0 }, { tipX + width, 2.0 }, { tipX + width, 10.0 } };
        painter.drawPolygon(points, 3);
    };
    switch (index) {
    case 0:
        painter.drawRect(QRectF(2.0, 2.0, 1.6, 8.0));
        triangle(4.0, 6.0);
        break;
    case 1:
        triangle(1.0, 5.0);
        triangle(6.0, 5.0);
        break;
    default:
        triangle(3.5, 5.5);
        break;
    }
    return QIcon(pixmap);
}

// Captions beside the track use a font a little smaller than the surrounding one, so that a
// full date and time fits between a button group and the track.
QFont CompactFont(const QFont& base)
{
    QFont font;
    if (base.pointSizeF() > 0)
        font.setPointSizeF(std::max(7.0, std::round(base.pointSizeF() * 5.0 / 6.0 * 2.0) / 2.0));
    else
        font.setPixelSize(std::max(9, base.pixelSize() * 5 / 6));
    return font;
}

} // namespace

// The track with the window marker. It paints from the bar's dates and hands mouse and keys
// to the bar, which keeps the drag state.
class ctl_NavBarTrack : public QWidget
{
public:
    explicit ctl_NavBarTrack(ctl_NavBar* bar)
        : QWidget(bar)
        , m_bar(bar)
    {
        setObjectName(QStringLiteral("pic_Nav"));
        setMouseTracking(true);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QPalette& pal = palette();
        const QRectF groove = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
        QPainterPath path;
        path.addRoundedRect(groove, 4.0, 4.0);
        QColor fill = pal.color(QPalette::Base);
        const QColor window = pal.color(QPalette::Window);
        fill.setRgbF((fill.redF() + window.redF()) / 2, (fill.greenF() + window.greenF()) / 2,
            (fill.blueF() + window.blueF()) / 2);
        painter.setPen(QPen(pal.color(QPalette::Mid), 1.0));
        painter.setBrush(fill);
        painter.drawPath(path);

        const QRect marker = m_bar->MarkerRect();
        if (marker.isNull())
            return;
        painter.setClipPath(path);
        QColor highlight = pal.color(QPalette::Highlight);
        QColor body = highlight;
        body.setAlpha(m_bar->Dragging() ? 170 : m_hover ? 130 : 95);
        painter.setPen(QPen(highlight, 1.0));
        painter.setBrush(body);
        painter.drawRoundedRect(QRectF(marker).adjusted(0.5, 1.5, -0.5, -1.5), 3.0, 3.0);
        // A grip in the middle of a marker wide enough to carry one.
        if (marker.width() >= 14) {
            QColor grip = pal.color(QPalette::HighlightedText);
            grip.setAlpha(200);
            painter.setPen(QPen(grip, 1.0));
            const double centre = marker.center().x() + 0.5;
            const double top = height() / 2.0 - 3.0;
            for (int i = -1; i <= 1; ++i)
                painter.drawLine(QPointF(centre + 2.5 * i, top), QPointF(centre + 2.5 * i, top + 6.0));
        }
    }

    void mousePressEvent(QMouseEvent* event) override
    {
        const double x = event->position().x();
        if (event->button() == Qt::LeftButton && m_bar->Enabled() && OnMarker(x)) {
            m_bar->StartDrag(x);
            // Escape cancels the drag wherever the keyboard focus is.
            qApp->installEventFilter(this);
            setCursor(Qt::ClosedHandCursor);
            update();
        }
        event->accept();
    }

    void mouseMoveEvent(QMouseEvent* event) override
    {
        const double x = event->position().x();
        if (m_bar->Dragging()) {
            if (event->buttons() & Qt::LeftButton)
                m_bar->MoveDrag(x);
            return;
        }
        const bool hover = OnMarker(x) && m_bar->Enabled();
        if (hover != m_hover) {
            m_hover = hover;
            setCursor(hover ? Qt::OpenHandCursor : Qt::ArrowCursor);
            update();
        }
    }

    void mouseReleaseEvent(QMouseEvent* event) override
    {
        if (event->button() == Qt::LeftButton && m_bar->Dragging())
            m_bar->EndDrag();
    }

    void mouseDoubleClickEvent(QMouseEvent* event) override
    {
        mousePressEvent(event);
        emit m_bar->DblClick(0);
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape
            && m_bar->Dragging()) {
            m_bar->CancelDrag();
            return true;
        }
        return QWidget::eventFilter(watched, event);
    }

    void leaveEvent(QEvent*) override
    {
        if (m_hover && !m_bar->Dragging()) {
            m_hover = false;
            unsetCursor();
            update();
        }
    }

public:
    // Ends the keyboard grab and the drag look; the bar calls it when a drag is over.
    void DragFinished()
    {
        qApp->removeEventFilter(this);
        setCursor(m_hover ? Qt::OpenHandCursor : Qt::ArrowCursor);
        update();
    }

private:
    bool OnMarker(double x) const
    {
        const QRect marker = m_bar->MarkerRect();
        return !marker.isNull() && x >= marker.left() && x < marker.left() + marker.width();
    }

    ctl_NavBar* m_bar;
    bool m_hover = false;
};

ctl_NavBar::ctl_NavBar(QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("ctl_NavBar"));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);

    for (int i = 0; i < 2; ++i) {
        auto* label = new QLabel(this);
        label->setObjectName(QStringLiteral("lbl_Label%1").arg(i));
        label->setAlignment((i == 0 ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignVCenter);
        label->setIndent(0);
        label->setMargin(0);
        m_labels[static_cast<std::size_t>(i)] = label;
    }
    // The track lies over the middle of the labels; their texts sit at the outer ends.
    m_track = new ctl_NavBarTrack(this);

    for (int i = 0; i < 6; ++i) {
        auto* button = new QToolButton(this);
        button->setObjectName(QStringLiteral("img_Button%1").arg(i));
        button->setAutoRaise(true);
        button->setFixedSize(ButtonWidth, ButtonHeight);
        button->setIconSize(QSize(IconSize, IconSize));
        button->setFocusPolicy(Qt::TabFocus);
        // Acting on the press, once per press: holding a button does not repeat the step.
        connect(button, &QToolButton::pressed, this, [this, i] { ButtonPressed(i); });
        m_buttons[static_cast<std::size_t>(i)] = button;
    }
    m_buttons[0]->setToolTip(GetResString(432));
    m_buttons[5]->setToolTip(GetResString(433));
    // Empty steps until the owner sets them; the step buttons get their tool tips then.
    m_steps = { QStringLiteral("-"), QStringLiteral("-"), QStringLiteral("-"), QString(), QString(), QString() };
    setFont(CompactFont(font()));
    UpdateIcons();
    resize(sizeHint());
    ApplyLayout();
}

void ctl_NavBar::SetDateFirst(double date)
{
    m_dateFirst = date;
    UpdateMarker();
}

void ctl_NavBar::SetDateLast(double date)
{
    m_dateLast = date;
    UpdateMarker();
}

void ctl_NavBar::SetDateFrom(double date)
{
    m_dateFrom = date;
    UpdateMarker();
    UpdateLabels();
}

void ctl_NavBar::SetDateTo(double date)
{
    m_dateTo = date;
    UpdateMarker();
    UpdateLabels();
}

void ctl_NavBar::SetEnabled(bool enabled)
{
    m_enabled = enabled;
}

void ctl_NavBar::SetSmallStep(const QString& step)
{
    m_steps[2] = u'-' + step;
    m_steps[3] = step;
    m_buttons[2]->setToolTip(StepToolTip(step, false));
    m_buttons[3]->setToolTip(StepToolTip(step, true));
}

void ctl_NavBar::SetMediumStep(const QString& step)
{
    m_steps[1] = u'-' + step;
    m_steps[4] = step;
    m_buttons[1]->setToolTip(StepToolTip(step, false));
    m_buttons[4]->setToolTip(StepToolTip(step, true));
}

void ctl_NavBar::SetBigStep(const QString& step)
{
    // Kept for the owner's settings only: buttons 0 and 5 go to the ends instead.
    m_steps[0] = u'-' + step;
    m_steps[5] = step;
}

ctl_NavBar::Step ctl_NavBar::ParseStep(const QString& text)
{
    for (qsizetype i = text.size() - 1; i >= 0; --i) {
        const QChar c = text.at(i);
        if (c >= u'0' && c <= u'9')
            return { LeadingNumber(QStringView(text).left(i + 1)), text.mid(i + 1) };
    }
    return {};
}

QString ctl_NavBar::UnitName(const QString& unit)
{
    const std::optional<Calendar::Unit> parsed = Calendar::ParseUnit(unit);
    if (!parsed)
        return QString();
    return GetResString(362 + static_cast<int>(*parsed));
}

QString ctl_NavBar::StepToolTip(const QString& step, bool forward)
{
    const Step parsed = ParseStep(step);
    const QString amount = Formatter().GeneralNumber(parsed.count) + u' ' + UnitName(parsed.unit);
    return GetResString(forward ? 435 : 434).replace(u'@', amount);
}

QString ctl_NavBar::FitDateText(double date, int width, const QFontMetrics& metrics, const Formatter& formatter)
{
    for (const char16_t* mask : LabelMasks) {
        QString text = formatter.FormatDate(date, mask);
        if (metrics.horizontalAdvance(text) <= width)
            return text;
    }
    return QString();
}

QRectF ctl_NavBar::Scale::MarkerPixels(int trackHeight) const
{
    if (!visible || pixel <= 0)
        return QRectF();
    return QRectF(ToPixel(markerLeft), 0.0, markerWidth / pixel, trackHeight);
}

double ctl_NavBar::Scale::DragLeft(double left0, double dxPixels) const
{
    double left = std::round(left0 + dxPixels * pixel);
    if (left < 0)
        left = 0;
    const double limit = DragLimit();
    if (left > limit)
        left = limit;
    return left;
}

ctl_NavBar::Scale ctl_NavBar::ComputeScale(double first, double last, double from, double to, int trackPixels)
{
    const auto period = static_cast<double>(Calendar::Diff(Calendar::Unit::Second, first, last));
    const auto window = static_cast<double>(Calendar::Diff(Calendar::Unit::Second, from, to));
    Scale scale;
    if (period <= 0 || window <= 0 || trackPixels <= 0)
        return scale;
    // Periods from MaxScaleSeconds on are not drawn to scale: the marker keeps its position in
    // seconds and may run past the track's end.
    scale.visible = true;
    scale.width = std::min(period, MaxScaleSeconds);
    scale.pixel = scale.width / trackPixels;
    scale.markerLeft = static_cast<double>(Calendar::Diff(Calendar::Unit::Second, first, from));
    scale.markerWidth = std::max(window + 2.0 * scale.pixel, MinMarkerPixels * scale.pixel);
    return scale;
}

ctl_NavBar::Layout ctl_NavBar::ComputeLayout(int width, int height, int buttonWidth)
{
    Layout layout;
    const int group = 3 * buttonWidth + 3 * Spacing;
    layout.labelWidth = std::max(5, (width - 2 * group) / 2);
    for (int i = 0; i < 3; ++i)
        layout.buttonLeft[static_cast<std::size_t>(i)] = i * (buttonWidth + Spacing);
    layout.labelLeft[0] = group;
    layout.labelLeft[1] = layout.labelLeft[0] + layout.labelWidth;
    int left = layout.labelLeft[1] + layout.labelWidth + Spacing;
    for (int i = 3; i < 6; ++i) {
        layout.buttonLeft[static_cast<std::size_t>(i)] = left;
        left += buttonWidth + Spacing;
    }
    layout.trackVisible = width >= 350 && height >= 6;
    layout.track = QRect(150, 4, width - 300, height - 6);
    return layout;
}

QWidget* ctl_NavBar::Track() const
{
    return m_track;
}

QString ctl_NavBar::LabelText(int index) const
{
    return Label(index)->text();
}

QRect ctl_NavBar::TrackRect() const
{
    return m_track->isHidden() ? QRect() : m_track->geometry();
}

QRect ctl_NavBar::MarkerRect() const
{
    if (m_track->isHidden())
        return QRect();
    const QRectF marker = CurrentScale().MarkerPixels(m_track->height());
    if (marker.isNull())
        return QRect();
    return QRect(static_cast<int>(std::lround(marker.left())), 0,
        std::max(1, static_cast<int>(std::lround(marker.width()))), m_track->height());
}

ctl_NavBar::Scale ctl_NavBar::CurrentScale() const
{
    return ComputeScale(m_dateFirst, m_dateLast, m_dateFrom, m_dateTo, m_track->width());
}

QSize ctl_NavBar::sizeHint() const
{
    return QSize(640, ButtonHeight + 4);
}

QSize ctl_NavBar::minimumSizeHint() const
{
    return QSize(6 * (ButtonWidth + Spacing) + 10, ButtonHeight);
}

void ctl_NavBar::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    ApplyLayout();
}

void ctl_NavBar::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    switch (event->type()) {
    case QEvent::FontChange:
        UpdateLabels();
        break;
    case QEvent::PaletteChange:
    case QEvent::StyleChange:
        UpdateIcons();
        break;
    default:
        break;
    }
}

void ctl_NavBar::mouseDoubleClickEvent(QMouseEvent* event)
{
    // Labels pass their mouse events on; buttons and the track handle theirs themselves.
    const QWidget* child = childAt(event->position().toPoint());
    emit DblClick(child == m_labels[0] ? -1 : child == m_labels[1] ? 1 : 0);
}

void ctl_NavBar::ButtonPressed(int index)
{
    if (!m_enabled)
        return;
    if (index == 0) {
        emit NavigateToFirst();
        return;
    }
    if (index == 5) {
        emit NavigateToLast();
        return;
    }
    const Step step = ParseStep(m_steps[static_cast<std::size_t>(index)]);
    const std::optional<Calendar::Unit> unit = Calendar::ParseUnit(step.unit);
    if (!unit)
        return; // a step without a valid unit cannot move the window
    const auto count = static_cast<std::int64_t>(std::llround(step.count));
    m_dateFrom = Calendar::Add(*unit, count, m_dateFrom);
    m_dateTo = Calendar::Add(*unit, count, m_dateTo);
    UpdateMarker();
    UpdateLabels();
    emit Navigate(index);
}

void ctl_NavBar::ApplyLayout()
{
    const int h = height();
    const Layout layout = ComputeLayout(width(), h, m_buttons[0]->width());
    m_labelWidth = layout.labelWidth;
    for (std::size_t i = 0; i < 2; ++i)
        m_labels[i]->setGeometry(layout.labelLeft[i], 0, layout.labelWidth, h);
    for (std::size_t i = 0; i < 6; ++i)
        m_buttons[i]->move(layout.buttonLeft[i], (h - m_buttons[i]->height()) / 2);
    m_track->setVisible(layout.trackVisible);
    if (layout.trackVisible)
        m_track->setGeometry(layout.track);
    UpdateLabels();
    UpdateMarker();
}

void ctl_NavBar::UpdateLabels()
{
    const QFontMetrics metrics(font());
    const double dates[] = { m_dateFrom, m_dateTo };
    for (std::size_t i = 0; i < 2; ++i) {
        m_labels[i]->setText(FitDateText(dates[i], m_labelWidth, metrics, m_formatter));
        m_labels[i]->setToolTip(m_formatter.FormatDate(dates[i], u"dd.mm.yyyy hh:nn:ss"));
    }
}

void ctl_NavBar::UpdateIcons()
{
    const QColor colour = palette().color(QPalette::ButtonText);
    for (int i = 0; i < 6; ++i)
        m_buttons[static_cast<std::size_t>(i)]->setIcon(NavIcon(i, colour, devicePixelRatioF()));
}

void ctl_NavBar::UpdateMarker()
{
    m_track->update();
}

void ctl_NavBar::StartDrag(double x)
{
    m_dragging = true;
    m_grabX = x;
    m_grabLeft = CurrentScale().markerLeft;
    m_savedFrom = m_dateFrom;
    m_savedTo = m_dateTo;
}

void ctl_NavBar::MoveDrag(double x)
{
    const Scale scale = CurrentScale();
    if (!scale.visible)
        return;
    const double left = scale.DragLeft(m_grabLeft, x - m_grabX);
    const std::int64_t window = Calendar::Diff(Calendar::Unit::Second, m_dateFrom, m_dateTo);
    // The limit may fall between two seconds; the window then stops at the whole second before.
    const auto seconds = static_cast<std::int64_t>(std::floor(left + 1e-6));
    m_dateFrom = Calendar::Add(Calendar::Unit::Second, seconds, m_dateFirst);
    if (m_dateFrom < m_dateFirst)
        m_dateFrom = m_dateFirst;
    m_dateTo = Calendar::Add(Calendar::Unit::Second, window, m_dateFrom);
    UpdateLabels();
    UpdateMarker();
}

void ctl_NavBar::EndDrag()
{
    if (!m_dragging)
        return;
    const bool moved = std::abs(Calendar::ToMilliseconds(m_dateFrom) - Calendar::ToMilliseconds(m_savedFrom)) >= 1000;
    m_dragging = false;
    m_savedFrom = m_savedTo = 0;
    m_track->DragFinished();
    if (moved && m_enabled)
        emit Navigate(-1);
}

void ctl_NavBar::CancelDrag()
{
    if (!m_dragging)
        return;
    m_dateFrom = m_savedFrom;
    m_dateTo = m_savedTo;
    m_dragging = false;
    m_savedFrom = m_savedTo = 0;
    m_track->DragFinished();
    UpdateLabels();
    UpdateMarker();
}
