// SPDX-License-Identifier: GPL-3.0-or-later
#include "frm_Transparent.h"

#include <QFrame>
#include <QGuiApplication>
#include <QLabel>
#include <QRegion>

namespace {

// Platforms that ignore the opacity of a window; there only the frame form shows anything.
bool PlatformFadesWindows()
{
    const QString platform = QGuiApplication::platformName();
    for (const char* without : { "wayland", "eglfs", "linuxfb", "vnc", "minimal" })
        if (platform.startsWith(QLatin1String(without)))
            return false;
    return true;
}

void Colour(QWidget* widget, QPalette::ColorRole role, const QColor& color)
{
    QPalette palette = widget->palette();
    palette.setColor(role, color);
    widget->setPalette(palette);
}

} // namespace

frm_Transparent::frm_Transparent(QWidget* parent)
    : QWidget(parent,
        Qt::Tool | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint | Qt::WindowTransparentForInput
            | Qt::WindowDoesNotAcceptFocus)
{
    setObjectName(QStringLiteral("frm_Transparent"));
    setAttribute(Qt::WA_ShowWithoutActivating);
    setFocusPolicy(Qt::NoFocus);
    setMinimumSize(0, 0);
    setAutoFillBackground(true);

    auto* border = new QFrame(this);
    border->setObjectName(QStringLiteral("pic_Border"));
    border->setFrameShape(QFrame::Box);
    border->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_cBorder = border;

    for (QLabel** label : { &m_cXY1, &m_cXY2 }) {
        *label = new QLabel(this);
        (*label)->setAttribute(Qt::WA_TransparentForMouseEvents);
        (*label)->setAutoFillBackground(false);
    }
    m_cXY1->setObjectName(QStringLiteral("lbl_XY1"));
    m_cXY2->setObjectName(QStringLiteral("lbl_XY2"));
    m_cXY2->setAlignment(Qt::AlignRight | Qt::AlignBottom);
}

frm_Transparent::~frm_Transparent() = default;

void frm_Transparent::ShowMe(bool translucent, bool onTop)
{
    m_bTranslucent = translucent && PlatformFadesWindows();
    auto* border = static_cast<QFrame*>(m_cBorder);
    if (m_bTranslucent) {
        Colour(this, QPalette::Window, QColor(210, 225, 255));
        Colour(border, QPalette::WindowText, Qt::black);
        border->setLineWidth(1);
        for (QLabel* label : { m_cXY1, m_cXY2 })
            Colour(label, QPalette::WindowText, Qt::black);
        setWindowOpacity(Alpha / 255.0);
    } else {
        // Black is cut away by the mask: only the white frame and the labels stay.
        Colour(this, QPalette::Window, Qt::black);
        Colour(border, QPalette::WindowText, Qt::white);
        border->setLineWidth(FrameWidth);
        for (QLabel* label : { m_cXY1, m_cXY2 })
            Colour(label, QPalette::WindowText, Qt::white);
        setWindowOpacity(1.0);
    }
    setWindowFlag(Qt::WindowStaysOnTopHint, onTop);
    Arrange();
    show();
}

void frm_Transparent::SetLabels(const QString& x1, const QString& y1, const QString& x2, const QString& y2)
{
    m_cXY1->setText(x1 + QLatin1Char('\n') + y1);
    m_cXY2->setText(x2 + QLatin1Char('\n') + y2);
    m_cXY1->adjustSize();
    m_cXY2->adjustSize();
    Arrange();
}

void frm_Transparent::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    Arrange();
}

void frm_Transparent::Arrange()
{
    const QRect area = rect();
    m_cBorder->setGeometry(area);
    const int inset = FrameWidth + 1;
    m_cXY1->move(inset, inset);
    m_cXY2->move(area.width() - m_cXY2->width() - inset, area.height() - m_cXY2->height() - inset);
    if (m_bTranslucent || area.isEmpty()) {
        clearMask();
        return;
    }
    QRegion shown = QRegion(area).subtracted(QRegion(area.adjusted(FrameWidth, FrameWidth, -FrameWidth, -FrameWidth)));
    shown += m_cXY1->geometry().intersected(area);
    shown += m_cXY2->geometry().intersected(area);
    setMask(shown);
}
