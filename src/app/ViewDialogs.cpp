// SPDX-License-Identifier: GPL-3.0-or-later
#include "ViewDialogs.h"

#include "Measuring.h"

void InstallViewDialogs()
{
    MeasuringDialogs dialogs;
    Measuring::SetDialogs(std::move(dialogs));
}
