// SPDX-License-Identifier: GPL-3.0-or-later
// The frame the small editing dialogs share: caption, a line of explanation, the fields, and
// OK and Cancel in the program's own texts.
#pragma once

#include <QString>

class QDialog;
class QLayout;
class QPushButton;
class QWidget;

namespace DialogFrame {

// Lays the dialog out around its body (a widget or a layout) and wires OK to accept and
// Cancel to reject; returns the OK button, which is the default one.
QPushButton* Build(QDialog& dialog, const QString& name, int captionId, int descriptionId, QWidget* body);
QPushButton* Build(QDialog& dialog, const QString& name, int captionId, int descriptionId, QLayout* body);

} // namespace DialogFrame
