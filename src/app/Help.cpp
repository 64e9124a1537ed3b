// SPDX-License-Identifier: GPL-3.0-or-later
#include "Help.h"

void ShowHelp(qint32 context, QWidget* parent)
{
    Q_UNUSED(context);
    Q_UNUSED(parent);
}
