// SPDX-License-Identifier: GPL-3.0-or-later
#include "ViewDialogs.h"

#include "DateEdit.h"
#include "Help.h"
#include "Measuring.h"
#include "Project.h"
#include "ResStrings.h"
#include "frm_CurveProperties.h"
#include "frm_Curves.h"
#include "frm_GraphicView.h"
#include "frm_Main.h"
#include "frm_MeasuringProperties.h"
#include "frm_NewMeasuring.h"

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

void InstallViewDialogs(Project& project)
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
    dialogs.newMeasuring = [&project](Measuring&) -> std::optional<NewMeasuringChoice> {
        frm_NewMeasuring wizard(project, project.MainWindow());
        WithHelp(wizard, 1039);
        wizard.SetMode(0);
        wizard.SetDataModules(project.DataModules());
        wizard.SetProfiles(&project.Profiles());
        wizard.SetMeasuringName(GetResString(302));
        if (wizard.ShowMe())
            return std::nullopt;
        NewMeasuringChoice choice;
        choice.name = wizard.MeasuringName();
        choice.remark = wizard.Remark();
        for (const ModuleBoxPtr& box : wizard.UsedModules())
            choice.modules.push_back(box);
        choice.channels = wizard.Channels();
        choice.start = wizard.dat_Start()->Value();
        choice.end = wizard.dat_End()->Value();
        if (const ProfilePtr& profile = wizard.Profile()) {
            choice.graph = profile->GraphProperties;
            for (qint32 j = 1; j <= profile->ChannelCount(); ++j)
                if (const SeriesProperties* look = profile->SeriesProperties(j))
                    choice.looks.emplace_back(profile->ChannelName(j), *look);
        }
        choice.indizes = wizard.Indizes();
        choice.indizesInChart = wizard.IndizesInChart();
        return choice;
    };
    Measuring::SetDialogs(std::move(dialogs));
}
