// SPDX-License-Identifier: GPL-3.0-or-later
#include "DropDown.h"

#include <QKeyEvent>
#include <QScreen>

DropDown::DropDown(QWidget* parent)
    : QFrame(parent, Qt::Popup)
{
    setFrameShape(QFrame::StyledPanel);
}

void DropDown::ShowAt(QWidget* anchor, QPoint at)
{
    if (const QScreen* screen = anchor->screen()) {
        const QRect area = screen->availableGeometry();
        if (at.y() + height() > area.bottom())
            at.setY(anchor->mapToGlobal(QPoint(0, 0)).y() - height());
        at.setX(qBound(area.left(), at.x(), qMax(area.left(), area.right() - width())));
    }
    move(at);
    show();
}

void DropDown::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape) {
        hide();
        event->accept();
        return;
    }
    QFrame::keyPressEvent(event);
}
