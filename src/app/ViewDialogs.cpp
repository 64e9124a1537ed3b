// SPDX-License-Identifier: GPL-3.0-or-later
#include "ViewDialogs.h"

#include "Measuring.h"
#include "frm_CurveProperties.h"
#include "frm_Curves.h"
#include "frm_GraphicView.h"
#include "frm_MeasuringProperties.h"

void InstallViewDialogs()
{
    MeasuringDialogs dialogs;
    dialogs.properties
        = [](Measuring& measuring) { return frm_MeasuringProperties(measuring, measuring.Window()).ShowMe(); };
    dialogs.curves = [](Measuring& measuring) { return frm_Curves(measuring.Window()).ShowMe(measuring); };
    dialogs.curveProperties = [](Measuring& measuring, Curve& curve) {
        return frm_CurveProperties(measuring, curve, measuring.Window()).ShowMe();
    };
    Measuring::SetDialogs(std::move(dialogs));
}
