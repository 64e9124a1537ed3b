// SPDX-License-Identifier: GPL-3.0-or-later
// A view's refresh lets window events through: closing the view or the program from inside it
// waits for its end, and the commands and the pointer say that it is busy.
#include "DemoFixture.h"
#include "Measuring.h"
#include "MessageHandler.h"
#include "Project.h"
#include "ToolRegistry.h"
#include "frm_Main.h"

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QGuiApplication>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>

namespace {

using RefreshGuardTest = DemoFixture;

TEST_F(RefreshGuardTest, ClosingTheViewAndTheProgramFromInsideARefreshWaitsForItsEnd)
{
    CopyMainView("main.sor");
    Project project;
    ASSERT_EQ(project.Init(), 0);
    frm_Main& window = *project.MainWindow();
    Measuring* view = project.OpenMeasuring(out.filePath("main.sor"), false);
    ASSERT_TRUE(view);
    QMdiSubWindow* frame = window.MdiArea()->currentSubWindow();
    ASSERT_TRUE(frame);

    // While the progress bar moves: close the frame, choose Close, close the main window.
    bool busyMenus = false;
    bool busyPointer = false;
    bool closed = false;
    QObject::connect(project.MsgHandler(), &MessageHandler::Message, [&](const QString& name, const QString&) {
        if (name != QLatin1String("PROGRESS_UPDATE") || closed)
            return;
        closed = true;
        busyMenus = !window.menuBar()->isEnabled() && !window.Tool("mnuFileClose")->isEnabled()
            && !window.Tool("mnuFileOpen")->isEnabled()
            && !project.ActiveBar()->Combo("mnuViewResolution")->isEnabled()
            && window.StatusLabel()->isEnabled();
        busyPointer = QGuiApplication::overrideCursor() && QGuiApplication::overrideCursor()->shape() == Qt::WaitCursor;
        frame->close();
        project.CloseMeasuring(view);
        window.close();
        Settle();
    });
    view->Refresh(true);
    ASSERT_TRUE(closed);
    EXPECT_TRUE(busyMenus);
    EXPECT_TRUE(busyPointer);
    ASSERT_EQ(project.Measurings().size(), 1u) << "the view outlives its own refresh";
    EXPECT_TRUE(view->Chart() && view->Chart()->PointCount() > 0);

    Settle();
    EXPECT_TRUE(project.Measurings().empty()) << "closed once the refresh was over";
    EXPECT_FALSE(window.isVisible()) << "and then the program ended";
    EXPECT_FALSE(QGuiApplication::overrideCursor());
}

TEST_F(RefreshGuardTest, CommandsComeBackAsTheyWereAfterARefresh)
{
    CopyMainView("main.sor");
    Project project;
    ASSERT_EQ(project.Init(), 0);
    frm_Main& window = *project.MainWindow();
    Measuring* view = project.OpenMeasuring(out.filePath("main.sor"), false);
    ASSERT_TRUE(view);
    view->SetChanged(true);
    view->Refresh(true);
    EXPECT_TRUE(window.menuBar()->isEnabled() && window.Tool("mnuFileSave")->isEnabled());
    ASSERT_TRUE(project.CloseMeasuring(view));
    EXPECT_FALSE(window.Tool("mnuFileSave")->isEnabled()) << "no view, nothing to save";
    EXPECT_TRUE(window.Tool("mnuFileOpen")->isEnabled());
}

} // namespace
