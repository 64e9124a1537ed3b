// SPDX-License-Identifier: GPL-3.0-or-later
#include "ctl_VertNavBar.h"

#include "ResStrings.h"

#include <QEvent>
#include <QPainter>
#include <QTimer>
#include <QToolButton>

namespace {

constexpr int BarWidth = 20;
constexpr QSize ButtonSize(18, 18);
constexpr int IconSize = 12;
constexpr int Spacing = 2;
constexpr int RepeatMs = 50;

// Glyphs in a 12 x 12 box. The limit buttons show the limit as a bar and the direction as a
// triangle, the shift buttons a double chevron, the fit button two bars with arrows out to them.
enum class Glyph { UpperUp, UpperDown, ShiftUp, LowerDown, LowerUp, ShiftDown, Fit, Fold, Unfold };

QIcon BarIcon(Glyph glyph, const QColor& colour, qreal ratio)
{
    QPixmap pixmap(QSize(IconSize, IconSize) * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    const auto limit = [&](double y) { painter.fillRect(QRectF(1.0, y, 10.0, 1.6), colour); };
    const auto triangle = [&](double tipY, double baseY) {
        const QPointF points[] = { { 6.0, tipY }, { 2.5, baseY }, { 9.5, baseY } };
        painter.setPen(Qt::NoPen);
        painter.setBrush(colour);
        painter.drawPolygon(points, 3);
    };
    const auto chevron = [&](double tipY, double armY) {
        painter.setPen(QPen(colour, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.setBrush(Qt::NoBrush);
        const QPointF points[] = { { 2.0, armY }, { 6.0, tipY }, { 10.0, armY } };
        painter.drawPolyline(points, 3);
    };
    switch (glyph) {
    case Glyph::UpperUp:
        limit(1.0);
        triangle(4.5, 10.0);
        break;
    case Glyph::UpperDown:
        limit(1.0);
        triangle(10.0, 4.5);
        break;
    case Glyph::LowerDown:
        limit(9.4);
        triangle(7.5, 2.0);
        break;
    case Glyph::LowerUp:
        limit(9.4);
        triangle(2.0, 7.5);
        break;
    case Glyph::ShiftUp:
        chevron(2.0, 6.0);
        chevron(6.0, 10.0);
        break;
    case Glyph::ShiftDown:
        chevron(6.0, 2.0);
        chevron(10.0, 6.0);
        break;
    case Glyph::Fit:
        limit(0.2);
        limit(10.2);
        painter.fillRect(QRectF(5.4, 4.5, 1.2, 3.0), colour);
        triangle(2.6, 5.0);
        triangle(9.4, 7.0);
        break;
    case Glyph::Fold:
        limit(1.0);
        chevron(4.5, 8.5);
        break;
    case Glyph::Unfold:
        chevron(8.5, 4.5);
        limit(9.9);
        break;
    }
    return QIcon(pixmap);
}

QToolButton* MakeButton(QWidget* parent, const QString& name, const QString& toolTip)
{
    auto* button = new QToolButton(parent);
    button->setObjectName(name);
    button->setAutoRaise(true);
    button->setFixedSize(ButtonSize);
    button->setIconSize(QSize(IconSize, IconSize));
    button->setFocusPolicy(Qt::TabFocus);
    button->setToolTip(toolTip);
    return button;
}

} // namespace

ctl_VertNavBar::ctl_VertNavBar(QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("ctl_VertNavBar"));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);

    m_pins[0] = MakeButton(this, QStringLiteral("img_Pin0"), GetResString(437));
    m_pins[1] = MakeButton(this, QStringLiteral("img_Pin1"), GetResString(436));
    m_pins[1]->hide();
    for (int i = 0; i < 2; ++i)
        connect(m_pins[static_cast<std::size_t>(i)], &QToolButton::clicked, this, [this, i] { PinClicked(i); });

    for (int i = 0; i < 6; ++i) {
        auto* button = MakeButton(this, QStringLiteral("img_Button%1").arg(i), ButtonToolTip(i));
        connect(button, &QToolButton::pressed, this, [this, i] { ButtonPressed(i); });
        connect(button, &QToolButton::released, this, &ctl_VertNavBar::ButtonReleased);
        m_buttons[static_cast<std::size_t>(i)] = button;
    }
    m_adjust = MakeButton(this, QStringLiteral("img_Adjust"), GetResString(444));
    connect(m_adjust, &QToolButton::clicked, this, &ctl_VertNavBar::Adjust);

    m_timer = new QTimer(this);
    m_timer->setObjectName(QStringLiteral("tim_Timer"));
    m_timer->setInterval(RepeatMs);
    connect(m_timer, &QTimer::timeout, this, &ctl_VertNavBar::TimerStep);

    UpdateIcons();
    resize(sizeHint());
    ApplyLayout();
}

bool ctl_VertNavBar::Minimized() const
{
    return !m_pins[1]->isHidden();
}

void ctl_VertNavBar::SetMinimized(bool minimized)
{
    PinClicked(minimized ? 0 : 1);
}

ctl_VertNavBar::MoveArgs ctl_VertNavBar::ButtonMove(int index)
{
    static constexpr MoveArgs Moves[] = {
        { true, false, 1 }, // raise the upper limit
        { true, false, -1 }, // lower the upper limit
        { true, true, 1 }, // shift the range up
        { false, true, -1 }, // lower the lower limit
        { false, true, 1 }, // raise the lower limit
        { true, true, -1 }, // shift the range down
    };
    return index >= 0 && index < 6 ? Moves[index] : MoveArgs {};
}

QString ctl_VertNavBar::ButtonToolTip(int index)
{
    static constexpr int Ids[] = { 438, 439, 442, 440, 441, 443 };
    return index >= 0 && index < 6 ? GetResString(Ids[index]) : QString();
}

ctl_VertNavBar::Layout ctl_VertNavBar::ComputeLayout(int width, int height, QSize pinSize, QSize buttonSize)
{
    Layout layout;
    layout.pin = QRect((width - pinSize.width()) / 2, 2, pinSize.width(), pinSize.height());
    if (height < 8 * pinSize.height() + 30)
        return layout;
    layout.buttonsVisible = true;
    const int x = (width - buttonSize.width()) / 2;
    const int step = buttonSize.height() + Spacing;
    const int groupHeight = 3 * buttonSize.height() + 2 * Spacing;
    // The upper group hangs under the pin, the lower one stands on the bottom edge, and the fit
    // button takes the middle of what is left between them.
    const int upperTop = layout.pin.bottom() + 1 + 6;
    const int lowerTop = height - Spacing - groupHeight;
    for (int i = 0; i < 3; ++i) {
        layout.buttons[static_cast<std::size_t>(i)] = QRect(QPoint(x, upperTop + i * step), buttonSize);
        layout.buttons[static_cast<std::size_t>(i + 3)] = QRect(QPoint(x, lowerTop + i * step), buttonSize);
    }
    const int upperEnd = upperTop + groupHeight;
    layout.adjust = QRect(QPoint(x, (upperEnd + lowerTop - buttonSize.height()) / 2), buttonSize);
    return layout;
}

QSize ctl_VertNavBar::sizeHint() const
{
    const int pin = m_pins[0]->height();
    return QSize(BarWidth, Minimized() ? pin + 4 : 8 * pin + 30);
}

QSize ctl_VertNavBar::minimumSizeHint() const
{
    return QSize(BarWidth, m_pins[0]->height() + 4);
}

void ctl_VertNavBar::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    ApplyLayout();
}

void ctl_VertNavBar::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange)
        UpdateIcons();
}

void ctl_VertNavBar::ButtonPressed(int index)
{
    if (!m_buttonsShown)
        return;
    m_pressed = index;
    m_timer->start();
    TimerStep();
}

void ctl_VertNavBar::ButtonReleased()
{
    m_timer->stop();
    m_pressed = -1;
}

void ctl_VertNavBar::TimerStep()
{
    if (m_pressed < 0 || !m_buttonsShown) {
        ButtonReleased();
        return;
    }
    const MoveArgs args = ButtonMove(m_pressed);
    emit Move(args.upper, args.lower, args.direction);
}

void ctl_VertNavBar::PinClicked(int index)
{
    m_pins[static_cast<std::size_t>(index)]->hide();
    m_pins[index == 0 ? 1 : 0]->show();
    ApplyLayout();
    updateGeometry();
    emit UpdateSize();
}

void ctl_VertNavBar::ApplyLayout()
{
    const Layout layout = ComputeLayout(width(), height(), m_pins[0]->size(), ButtonSize);
    for (QToolButton* pin : m_pins)
        pin->setGeometry(layout.pin);
    // Folded, the bar is only its pin whatever room it has.
    m_buttonsShown = layout.buttonsVisible && !Minimized();
    for (std::size_t i = 0; i < 6; ++i) {
        m_buttons[i]->setGeometry(layout.buttons[i]);
        m_buttons[i]->setVisible(m_buttonsShown);
    }
    m_adjust->setGeometry(layout.adjust);
    m_adjust->setVisible(m_buttonsShown);
    if (!m_buttonsShown)
        ButtonReleased();
}

void ctl_VertNavBar::UpdateIcons()
{
    const QColor colour = palette().color(QPalette::ButtonText);
    const qreal ratio = devicePixelRatioF();
    static constexpr Glyph Glyphs[]
        = { Glyph::UpperUp, Glyph::UpperDown, Glyph::ShiftUp, Glyph::LowerDown, Glyph::LowerUp, Glyph::ShiftDown };
    for (std::size_t i = 0; i < 6; ++i)
        m_buttons[i]->setIcon(BarIcon(Glyphs[i], colour, ratio));
    m_adjust->setIcon(BarIcon(Glyph::Fit, colour, ratio));
    m_pins[0]->setIcon(BarIcon(Glyph::Fold, colour, ratio));
    m_pins[1]->setIcon(BarIcon(Glyph::Unfold, colour, ratio));
}
