// SPDX-License-Identifier: GPL-3.0-or-later
// The program's help: pages by context number in a help window.
#pragma once

#include <QtGlobal>

class QWidget;

// Shows the help page of the context number (1003 the contents).
void ShowHelp(qint32 context, QWidget* parent = nullptr);
