// SPDX-License-Identifier: GPL-3.0-or-later
// The edit menu reaches the active view's dialogs, and is on only where there is something to edit.
#include "DemoFixture.h"
#include "Measuring.h"
#include "Project.h"
#include "frm_Main.h"

#include <QAction>

namespace {

using EditMenuTest = DemoFixture;

TEST_F(EditMenuTest, ReachesTheActiveViewsDialogsWhereThereIsSomethingToEdit)
{
    Project project;
    ASSERT_EQ(project.Init(), 0);
    frm_Main& window = *project.MainWindow();
    QStringList shown;
    Measuring::SetDialogs(
        { [&](Measuring&) { return shown << "properties", 0; }, [&](Measuring&) { return shown << "curves", 0; },
            [&](Measuring&, Curve& curve) { return shown << curve.Name(), 0; } });
    const QStringList tools { "mnuEditChannel", "mnuEditMeasuring", "mnuEditCurve" };
    for (const QString& tool : tools)
        EXPECT_FALSE(window.Tool(tool)->isEnabled()) << tool.toStdString() << ": no view";

    Measuring* view = project.OpenMeasuring(Examples + "/Hauptzaehler.sor", false);
    ASSERT_TRUE(view && view->CurrentCurve());
    for (const QString& tool : tools) {
        ASSERT_TRUE(window.Tool(tool)->isEnabled()) << tool.toStdString();
        window.Tool(tool)->trigger();
    }
    EXPECT_EQ(shown, QStringList({ "curves", "properties", view->CurrentCurve()->Name() }));
    view->SetCurrentCurve(nullptr);
    EXPECT_FALSE(window.Tool("mnuEditCurve")->isEnabled()) << "no current curve";
    Measuring::SetDialogs({});
}

} // namespace
