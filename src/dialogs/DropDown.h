// SPDX-License-Identifier: GPL-3.0-or-later
// A frame that drops down below a field and closes on Escape, staying on the field's screen.
#pragma once

#include <QFrame>

class DropDown : public QFrame
{
    Q_OBJECT
public:
    explicit DropDown(QWidget* parent = nullptr);

protected:
    // Shows the frame with its top left at `at` (global), or above the anchor when there is
    // no room below it, and never past the sides of the anchor's screen.
    void ShowAt(QWidget* anchor, QPoint at);
    void keyPressEvent(QKeyEvent* event) override;
};
