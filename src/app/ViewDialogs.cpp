// SPDX-License-Identifier: GPL-3.0-or-later
#include "ViewDialogs.h"

#include "Help.h"
#include "Measuring.h"
#include "frm_CurveProperties.h"
#include "frm_Curves.h"
#include "frm_GraphicView.h"
#include "frm_MeasuringProperties.h"

#include <QShortcut>

namespace {

// F1 in the dialog shows its help page.
template<typename Dialog> Dialog& WithHelp(Dialog& dialog, qint32 context)
{
    auto* key = new QShortcut(QKeySequence::HelpContents, &dialog);
    QObject::connect(key, &QShortcut::activated, &dialog, [&dialog, context] { ShowHelp(context, &dialog); });
    return dialog;
}

} // namespace

void InstallViewDialogs()
{
    MeasuringDialogs dialogs;
    dialogs.properties = [](Measuring& measuring) {
        frm_MeasuringProperties dialog(measuring, measuring.Window());
        return WithHelp(dialog, 1033).ShowMe();
    };
    dialogs.curves = [](Measuring& measuring) {
        frm_Curves dialog(measuring.Window());
        return WithHelp(dialog, 1034).ShowMe(measuring);
    };
    dialogs.curveProperties = [](Measuring& measuring, Curve& curve) {
        frm_CurveProperties dialog(measuring, curve, measuring.Window());
        return WithHelp(dialog, 1035).ShowMe();
    };
    Measuring::SetDialogs(std::move(dialogs));
}
