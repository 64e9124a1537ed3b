// SPDX-License-Identifier: GPL-3.0-or-later
// The command surface on the demo views: the tool states with and without a view, what each
// tool does to the active view, the drop-down lists, add-ins first, the recent files in the
// file menu, the memory card, the close question, the file menu's exports and the end of the
// program, also from inside a refresh.
#include "AddIns.h"
#include "AppPaths.h"
#include "ChartAdapter.h"
#include "DemoFixture.h"
#include "DriveProbe.h"
#include "Measuring.h"
#include "MessageHandler.h"
#include "ResStrings.h"
#include "ToolRegistry.h"
#include "frm_GraphicView.h"
#include "frm_Main.h"

#include <QAbstractButton>
#include <QAction>
#include <QClipboard>
#include <QComboBox>
#include <QFileDialog>
#include <QGuiApplication>
#include <QImage>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QPicture>
#include <QToolBar>

namespace {

class CommandsTest : public DemoFixture
{
protected:
    void SetUp() override
    {
        DemoFixture::SetUp();
        CopyMainView("main.sor");
        ASSERT_EQ(project.Init(), 0);
        project.MainWindow()->resize(1200, 800);
    }
    void TearDown() override
    {
        project.Terminate(true);
        DemoFixture::TearDown();
    }
    ToolRegistry& Bar() { return *project.ActiveBar(); }
    QAction* Tool(const char* name) { return Bar().Tool(QLatin1String(name)); }
    bool On(const char* name) { return Tool(name)->isEnabled(); }
    bool Checked(const char* name) { return Tool(name)->isChecked(); }
    Measuring* OpenMain()
    {
        Measuring* view = project.OpenMeasuring(out.filePath("main.sor"), false);
        Settle();
        return view;
    }

    Project project;
};

TEST_F(CommandsTest, ToolStatesFollowTheViewAndItsMode)
{
    // One tool of each group that the lack of a view switches on or off, and the menus always on.
    for (const char* name : { "mnuFileNew", "mnuExit", "mnuExtrasConfig", "mnuHelpApp", "mnuFilePageSetup" })
        EXPECT_TRUE(On(name)) << name;
    for (const char* name : { "mnuFileClose", "mnuFileSave", "mnuFilePrint", "mnuEditCopy", "mnuEditCurve",
             "mnuEditDeleteAllCursors", "mnuViewDay", "mnuViewZoomIn", "mnuWindowArrange" })
        EXPECT_FALSE(On(name)) << name;
    EXPECT_FALSE(Bar().Combo("mnuViewResolution")->isEnabled() || Bar().Combo("mnuViewGallery")->isEnabled());
    EXPECT_TRUE(Checked("mnuViewChart"));
    EXPECT_FALSE(Checked("mnuViewZoomIn") || Checked("mnuViewGrid") || Checked("mnuViewStatistic"));
    EXPECT_EQ(Tool("mnuEditCopy")->text(), GetResString(218));

    Measuring* view = OpenMain();
    ASSERT_TRUE(view && view->CurrentCurve());
    for (const char* name : { "mnuFileClose", "mnuFileSaveAs", "mnuFileExport", "mnuFilePrint", "mnuEditChannel",
             "mnuEditCurve", "mnuViewDay", "mnuViewAll", "mnuViewGotoLast", "mnuViewCursorMode", "mnuViewZoomIn",
             "mnuView3D", "mnuViewGrid1", "mnuViewStatistic", "mnuViewChart", "mnuViewGrid", "mnuWindowCascade" })
        EXPECT_TRUE(On(name)) << name;
    EXPECT_FALSE(On("mnuFileSave")) << "nothing changed yet";
    EXPECT_FALSE(On("mnuViewZoomOut")) << "no zoom to go back to";
    EXPECT_FALSE(On("mnuEditCut") || On("mnuEditPaste")) << "no action of their own";
    EXPECT_EQ(Tool("mnuEditCopy")->text(), GetResString(219));
    EXPECT_EQ(Bar().Combo("mnuViewResolution")->currentIndex(), 2) << "the view's minutes";
    EXPECT_EQ(Bar().Combo("mnuViewGallery")->currentData().toInt(), view->Graph().Gallery);

    Tool("mnuViewGrid")->trigger();
    EXPECT_EQ(view->ViewMode(), frm_GraphicView::GridMode);
    EXPECT_TRUE(Checked("mnuViewGrid") && !Checked("mnuViewChart"));
    for (const char* name : { "mnuViewCursorMode", "mnuViewZoomIn", "mnuView3D", "mnuViewAnnotation" })
        EXPECT_FALSE(On(name)) << name << " is for the chart";
    EXPECT_FALSE(Bar().Combo("mnuViewGallery")->isEnabled());
    EXPECT_TRUE(Bar().Combo("mnuViewResolution")->isEnabled());
    EXPECT_EQ(Tool("mnuEditCopy")->text(), GetResString(220));
    Tool("mnuViewGrid")->trigger();
    EXPECT_EQ(view->ViewMode(), frm_GraphicView::ChartMode) << "a second click goes back to the chart";
    Tool("mnuViewChart")->trigger();
    EXPECT_EQ(view->ViewMode(), frm_GraphicView::GridMode) << "the chart clicked while shown gives the table";
    Tool("mnuViewChart")->trigger();

    view->SetCurrentCurve(nullptr);
    project.UpdateToolStates();
    EXPECT_TRUE(On("mnuEditCurve")) << "never switched off while a view is active";
    Tool("mnuFileClose")->trigger();
    Settle();
    EXPECT_FALSE(On("mnuEditCurve"));
}

TEST_F(CommandsTest, ViewToolsAndDropDownListsActOnTheActiveView)
{
    Measuring* view = OpenMain();
    ASSERT_TRUE(view && view->CurrentCurve());
    GraphProperties& graph = view->Graph();
    const auto days = [&] { return view->EndDate() - view->StartDate(); };

    Tool("mnuViewZoomIn")->trigger();
    EXPECT_TRUE(view->ZoomEnabled() && Checked("mnuViewZoomIn"));
    Tool("mnuViewCursorMode")->trigger();
    EXPECT_TRUE(view->CursorEnabled() && !view->ZoomEnabled()) << "zoom and cursors exclude each other";
    EXPECT_TRUE(Checked("mnuViewCursorMode") && !Checked("mnuViewZoomIn"));
    Tool("mnuViewCursorMode")->trigger();
    EXPECT_FALSE(view->CursorEnabled() || Checked("mnuViewCursorMode"));

    for (const auto& [name, length] : { std::pair("mnuViewDay", 1.0), std::pair("mnuViewWeek", 7.0) }) {
        Tool(name)->trigger();
        EXPECT_DOUBLE_EQ(days(), length) << name;
    }
    Tool("mnuViewMonth")->trigger();
    EXPECT_GE(days(), 28.0);
    Tool("mnuViewDay")->trigger();
    const double day = view->StartDate();
    Tool("mnuViewGotoLast")->trigger();
    EXPECT_GT(view->StartDate(), day);
    Tool("mnuViewGotoFirst")->trigger();
    EXPECT_LT(view->StartDate(), day);
    Tool("mnuViewAll")->trigger();
    EXPECT_GT(days(), 300.0) << "the demo data spans years";

    Tool("mnuViewDay")->trigger();
    view->ZoomTo(300, 100, 600, 400);
    ASSERT_TRUE(On("mnuViewZoomOut"));
    Tool("mnuViewZoomOut")->trigger();
    EXPECT_DOUBLE_EQ(days(), 1.0);
    EXPECT_FALSE(On("mnuViewZoomOut"));

    const bool flat = graph.View3D;
    Tool("mnuView3D")->trigger();
    EXPECT_NE(graph.View3D, flat);
    EXPECT_EQ(Checked("mnuView3D"), graph.View3D);

    // The X grid goes only with the grid lines of both Y axes.
    graph.ShowYGrid1 = graph.ShowYGrid2 = graph.ShowXGrid = true;
    Tool("mnuViewGrid1")->trigger();
    EXPECT_TRUE(!graph.ShowYGrid1 && graph.ShowXGrid);
    graph.ShowYGrid2 = false;
    Tool("mnuViewGrid1")->trigger();
    Tool("mnuViewGrid1")->trigger();
    EXPECT_TRUE(!graph.ShowYGrid1 && !graph.ShowXGrid);

    const bool statistics = view->ShowStatistics();
    Tool("mnuViewStatistic")->trigger();
    EXPECT_NE(view->ShowStatistics(), statistics);
    const bool note = view->ShowAnnotation();
    Tool("mnuViewAnnotation")->trigger();
    EXPECT_NE(view->ShowAnnotation(), note);

    for (const auto& curve : view->Curves())
        curve->Properties().Color = 0x00123456;
    Tool("mnuEditResetColors")->trigger();
    for (const auto& curve : view->Curves())
        EXPECT_EQ(curve->Properties().Color, curve->SeriesID() == 0 ? 0x000000FF : 0x0000FF00);
    EXPECT_TRUE(view->Changed() && On("mnuFileSave"));

    QApplication::clipboard()->clear();
    Tool("mnuEditCopyAll")->trigger();
    EXPECT_TRUE(QApplication::clipboard()->text().contains('\t')) << "the data set as text";

    Curve& current = *view->CurrentCurve();
    current.SetCursor(10, view->Chart(), &view->Chart()->Annotations(), 0);
    current.SetCursor(40, view->Chart(), &view->Chart()->Annotations(), 0);
    project.UpdateToolStates();
    ASSERT_TRUE(On("mnuEditDeleteCursor") && On("mnuEditDeleteAllCursors"));
    Tool("mnuEditDeleteCursor")->trigger();
    EXPECT_TRUE(current.Cursors().empty());

    // Choosing hours refetches at one hour; the program setting the list raises nothing.
    QComboBox* resolution = Bar().Combo("mnuViewResolution");
    resolution->setCurrentIndex(3);
    emit resolution->activated(3);
    EXPECT_TRUE(view->IntervalUnit() == "h" && view->IntervalCount() == 1);
    ASSERT_TRUE(view->FirstBlock());
    EXPECT_NEAR(view->FirstBlock()->At(1, 0) - view->FirstBlock()->At(0, 0), 1.0 / 24, 1e-9);
    QComboBox* gallery = Bar().Combo("mnuViewGallery");
    gallery->setCurrentIndex(gallery->findData(8));
    emit gallery->activated(gallery->currentIndex());
    EXPECT_EQ(view->Graph().Gallery, 8);
}

// Records the clicks it sees with the view's 3D state at that moment.
class RecordingAddIn : public AddInInterface
{
public:
    explicit RecordingAddIn(std::function<QString()> state)
        : m_state(std::move(state))
    { }
    qint32 Init(AddInHost&) override { return 0; }
    void ToolClick(const QString& tool) override { seen << tool + ":" + m_state(); }
    void ToolComboClose(const QString&) override { }
    void Terminate() override { }
    inline static QStringList seen;

private:
    std::function<QString()> m_state;
};

TEST_F(CommandsTest, EditToolsOpenTheViewsDialogsAndAnAddInSeesAClickBeforeTheProgramActs)
{
    QStringList shown;
    Measuring::SetDialogs(
        { [&](Measuring&) { return shown << "properties", 1; }, [&](Measuring&) { return shown << "curves", 0; },
            [&](Measuring&, Curve& curve) { return shown << curve.Name(), 0; }, nullptr });
    QStringList messages;
    QObject::connect(project.MsgHandler(), &MessageHandler::Message,
        [&](const QString& name, const QString& params) { messages << name + ":" + params; });
    Measuring* view = OpenMain();
    ASSERT_TRUE(view && view->CurrentCurve());
    for (const char* name : { "mnuEditChannel", "mnuEditMeasuring", "mnuEditCurve" })
        Tool(name)->trigger();
    Measuring::SetDialogs({});
    EXPECT_EQ(shown, QStringList({ "curves", "properties", view->CurrentCurve()->Name() }));
    EXPECT_TRUE(messages.contains("SORANO_MEASURING_EDIT:" + view->ID())) << "a changed view is announced";

    RecordingAddIn::seen.clear();
    project.AddInList().Add(
        std::make_unique<RecordingAddIn>([view] { return view->Graph().View3D ? QString("3D") : QString("flat"); }));
    view->Graph().View3D = false;
    Tool("mnuView3D")->trigger();
    EXPECT_EQ(RecordingAddIn::seen, QStringList("mnuView3D:flat"));
    EXPECT_TRUE(view->Graph().View3D);
}

TEST_F(CommandsTest, RecentFilesShowNewestFirstKeepFiveAndComeBackAfterARestart)
{
    QStringList names;
    for (const char* name : { "a", "b", "c", "d", "e", "f" }) {
        names << out.filePath(QString(name) + ".sor");
        ASSERT_TRUE(QFile::copy(out.filePath("main.sor"), names.back()));
    }
    const auto recentMenu = [](Project& p) {
        QStringList shown;
        for (const QString& name : p.ActiveBar()->ToolsOf("mnuFile"))
            if (name.startsWith("mnuRecent"))
                shown << QFileInfo(p.ActiveBar()->Tool(name)->toolTip()).fileName();
        return shown;
    };
    const QStringList fileMenu = Bar().ToolsOf("mnuFile");
    EXPECT_EQ(fileMenu.mid(fileMenu.size() - 2), QStringList({ "mnuFileSep99", "mnuExit" }))
        << "with no recent file the menu still ends in the separator and Exit";
    for (const QString& name : names) {
        ASSERT_TRUE(project.OpenMeasuring(name, false));
        Settle();
    }
    const QStringList newest { "f.sor", "e.sor", "d.sor", "c.sor", "b.sor" };
    EXPECT_EQ(recentMenu(project), newest);
    EXPECT_EQ(Bar().ToolsOf("mnuFile").last(), "mnuExit");
    ASSERT_TRUE(project.OpenMeasuring(names[2], false)) << "open already: brought to the front";
    EXPECT_EQ(recentMenu(project).first(), "f.sor") << "an open file does not move in the list";
    // The toolbar arrangement is kept per user name; this user's file is the test's own.
    const QString user = "test-" + QFileInfo(out.path()).fileName();
    roots.SetUser("Identities\\", "Last Username", user);
    Bar().ToolBar("tlbGraphic")->hide();
    project.Terminate(true);

    Project restarted;
    ASSERT_EQ(restarted.Init(), 0);
    EXPECT_EQ(recentMenu(restarted), newest);
    EXPECT_TRUE(restarted.ActiveBar()->ToolBar("tlbGraphic")->isHidden()) << "the layout came back";
    EXPECT_FALSE(restarted.ActiveBar()->ToolBar("tlbMain")->isHidden());
    // The fifth entry opens the oldest file the menu shows.
    restarted.ActiveBar()->Tool("mnuRecent1")->trigger();
    Settle();
    ASSERT_EQ(restarted.Measurings().size(), 1u);
    EXPECT_EQ(QFileInfo(restarted.Measurings().front()->FileName()).fileName(), "b.sor");
    restarted.Terminate(true);
    QFile::remove(QDir(AppPaths::DataFolder()).filePath(user + ".ab"));
}

// A drive that holds the logger's files in one folder.
class CardProbe : public DriveProbe
{
public:
    explicit CardProbe(QString card)
        : m_card(std::move(card))
    { }
    bool IsRemovable(const QString& path) const override { return path.startsWith(m_card); }
    bool HasLoggerFiles(const QString& path) const override { return path.startsWith(m_card); }

private:
    QString m_card;
};

TEST_F(CommandsTest, SavingOnTheLoggersMemoryCardIsRefusedAndTheDialogComesAgain)
{
    Measuring* view = OpenMain();
    ASSERT_TRUE(view);
    project.SetDriveProbe(std::make_unique<CardProbe>(out.filePath("card")));
    ASSERT_TRUE(QDir(out.path()).mkpath("card"));
    // Typed as a user types it: the folder, then the name.
    const auto choose = [](const QString& path) {
        return [path](QWidget* modal) {
            auto* dialog = qobject_cast<QFileDialog*>(modal);
            ASSERT_TRUE(dialog);
            dialog->setDirectory(QFileInfo(path).absolutePath());
            auto* name = dialog->findChild<QLineEdit*>("fileNameEdit");
            ASSERT_TRUE(name);
            name->setText(QFileInfo(path).fileName());
            QMetaObject::invokeMethod(dialog, "accept");
        };
    };
    QString warning;
    Answer({ choose(out.filePath("card/view.sor")),
        [&](QWidget* modal) {
            warning = modal->windowTitle();
            static_cast<QDialog*>(modal)->accept();
        },
        [](QWidget* modal) { static_cast<QDialog*>(modal)->reject(); } });
    EXPECT_FALSE(project.SaveMeasuring(true, view));
    EXPECT_EQ(warning, "Messungsdatei speichern");
    EXPECT_FALSE(QFile::exists(out.filePath("card/view.sor")));
    EXPECT_TRUE(pending.empty()) << "the dialog came again and was cancelled";

    Answer({ choose(out.filePath("other.sor")) });
    EXPECT_TRUE(project.SaveMeasuring(true, view));
    EXPECT_TRUE(QFile::exists(out.filePath("other.sor"))) << view->FileName().toStdString();
    EXPECT_EQ(project.ProposedSaveName(*view), QDir(out.path()).filePath(view->Name() + ".sor"))
        << "the next save starts where the newest recent file lies";
}

TEST_F(CommandsTest, ClosingAChangedViewAsksOrNotAsTheSettingSays)
{
    struct Case
    {
        const char* setting;
        QMessageBox::StandardButton answer; // NoButton: no question expected
        bool closed;
    };
    for (const Case& c : { Case { "1", QMessageBox::NoButton, true }, Case { "2", QMessageBox::Cancel, false },
             Case { "2", QMessageBox::No, true } }) {
        SCOPED_TRACE(c.setting);
        roots.SetUser(KeySettings, "OnCloseMeasuring", c.setting);
        Measuring* view = OpenMain();
        ASSERT_TRUE(view);
        view->SetName("Geaendert");
        if (c.answer != QMessageBox::NoButton)
            Answer({ [&](QWidget* modal) {
                auto* box = qobject_cast<QMessageBox*>(modal);
                ASSERT_TRUE(box);
                box->button(c.answer)->click();
            } });
        else
            Answer({});
        EXPECT_EQ(project.CloseMeasuring(view), c.closed);
        EXPECT_TRUE(pending.empty()) << "asked";
        if (!c.closed) {
            roots.SetUser(KeySettings, "OnCloseMeasuring", "1");
            project.CloseMeasuring(view);
        }
        Settle();
        EXPECT_FALSE(ReadAll(out.filePath("main.sor")).contains("Geaendert")) << "nothing saved";
    }
}

TEST_F(CommandsTest, FileAndWindowCommandsOnTheViews)
{
    QMdiArea* area = project.MainWindow()->MdiArea();
    Measuring* view = OpenMain();
    ASSERT_TRUE(view);
    ASSERT_EQ(area->subWindowList().size(), 1);
    EXPECT_TRUE(area->subWindowList().first()->isMaximized()) << "the first view fills the area";
    EXPECT_EQ(project.GetActiveMeasuring(), view);
    EXPECT_EQ(project.OpenMeasuring(out.filePath("main.sor"), false), view) << "a file is open once";
    EXPECT_FALSE(project.OpenMeasuring(out.filePath("none.sor"), false));

    // The chart on screen is pictured in its own size, each format with its signature.
    ChartAdapter& chart = *view->Chart();
    const QSize shown = chart.size();
    const std::pair<const char*, QByteArray> formats[]
        = { { "c.svg", "<?xml" }, { "c.png", "\x89PNG" }, { "c.bmp", "BM" }, { "c.pdf", "%PDF-" },
              { "c.csv", "\"Zeitstempel\",\"cos phi\",\"Wirkleistung (kW)\"\r\n2025-03-10 00:00:00," } };
    for (const auto& [name, start] : formats) {
        ASSERT_EQ(view->ExportTo(out.filePath(name)), 0) << name;
        const QByteArray bytes = ReadAll(out.filePath(name));
        EXPECT_TRUE(bytes.startsWith(start)) << name << ": " << bytes.left(120).toStdString();
    }
    EXPECT_EQ(QImage(out.filePath("c.png")).size(), shown);
    EXPECT_EQ(view->ExportTo(out.filePath("c.txt")), -3);
    EXPECT_FALSE(QFile::exists(out.filePath("c.txt")));

    view->ExportClipboard(false);
    const QMimeData* clip = QGuiApplication::clipboard()->mimeData();
    EXPECT_TRUE(clip && clip->hasImage() && clip->data("image/svg+xml").contains("<svg"));

    // Report pictures: the page sizes by mode, the chart on screen as it was; none of a table.
    QPicture picture;
    ASSERT_EQ(view->GetDiagrammAsPicture(picture, 1), 0);
    EXPECT_EQ(picture.boundingRect().size(), QSize(700, 987));
    ASSERT_EQ(view->GetDiagrammAsPicture(picture, 2), 0);
    EXPECT_EQ(picture.boundingRect().size(), QSize(987, 700));
    EXPECT_EQ(chart.size(), shown);
    view->SetViewMode(2);
    EXPECT_EQ(view->GetDiagrammAsPicture(picture, 0), -1);

    view->SetName("Umbenannt");
    Tool("mnuFileSave")->trigger();
    EXPECT_FALSE(view->Changed());
    EXPECT_TRUE(ReadAll(out.filePath("main.sor")).contains("<name>Umbenannt</name>"));

    // A second view: the window commands arrange both inside the workspace.
    ASSERT_TRUE(QFile::copy(out.filePath("main.sor"), out.filePath("second.sor")));
    ASSERT_TRUE(project.OpenMeasuring(out.filePath("second.sor"), false));
    Settle();
    const QRect room = area->viewport()->rect();
    for (QMdiSubWindow* frame : area->subWindowList())
        EXPECT_TRUE(room.contains(frame->geometry())) << "a new view opens wholly inside";

    Tool("mnuWindowHoriz")->trigger();
    const QList<QMdiSubWindow*> windows = area->subWindowList();
    ASSERT_EQ(windows.size(), 2);
    EXPECT_EQ(windows[0]->width(), room.width());
    EXPECT_EQ(windows[0]->height() + windows[1]->height(), room.height());
    Tool("mnuWindowVert")->trigger();
    EXPECT_EQ(windows[0]->height(), room.height());
    EXPECT_EQ(windows[0]->width() + windows[1]->width(), room.width());

    // Ctrl+Tab and Ctrl+Shift+Tab step through the views in the menu's order.
    QMdiSubWindow* first = area->activeSubWindow();
    QTest::keyClick(project.MainWindow(), Qt::Key_Tab, Qt::ControlModifier);
    EXPECT_NE(area->activeSubWindow(), first);
    QTest::keyClick(project.MainWindow(), Qt::Key_Backtab, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(area->activeSubWindow(), first);

    QMenu* menu = Bar().Menu("mnuWindows");
    emit menu->aboutToShow();
    QStringList listed;
    for (QAction* action : menu->actions())
        if (action->property("windowEntry").toBool())
            listed << action->text();
    ASSERT_EQ(listed.size(), 2);
    EXPECT_TRUE(listed[0].startsWith("&1 ") && listed[1].startsWith("&2 "));

    // Closed by its own frame, a view goes and takes the frame with it.
    ASSERT_TRUE(area->currentSubWindow()->close());
    EXPECT_EQ(project.Measurings().size(), 1u);
    Settle();
    EXPECT_EQ(area->subWindowList().size(), 1);
}

TEST_F(CommandsTest, EndingSavesAndAsksEveryViewAndForceEndsRegardless)
{
    // Views are saved when closed; one of them lives in a folder that is gone by then.
    roots.SetUser(KeySettings, "OnCloseMeasuring", "0");
    ASSERT_TRUE(QDir(out.path()).mkpath("gone"));
    ASSERT_TRUE(QFile::copy(Examples + "/Rechenzentrum-Tag.sor", out.filePath("gone/day.sor")));
    Measuring* day = project.OpenMeasuring(out.filePath("gone/day.sor"), false);
    Measuring* main = project.OpenMeasuring(out.filePath("main.sor"), false);
    ASSERT_TRUE(day && main);
    main->SetName("Gesichert");
    ASSERT_TRUE(QDir(out.filePath("gone")).removeRecursively());

    // The failed save is said in a message, asked once more when ending regardless.
    QStringList messages;
    const auto read = [&](QWidget* modal) {
        auto* box = qobject_cast<QMessageBox*>(modal);
        ASSERT_TRUE(box);
        messages << box->text();
        box->accept();
    };
    Answer({ read, read });

    EXPECT_FALSE(project.Terminate(false)) << "the view that can't be saved refuses";
    ASSERT_EQ(messages.size(), 1);
    EXPECT_TRUE(messages.front().contains("day.sor")) << messages.front().toStdString();
    ASSERT_EQ(project.Measurings().size(), 1u) << "the other view was asked and closed";
    EXPECT_EQ(project.Measurings().front().get(), day);
    EXPECT_TRUE(project.MainWindow()->isVisible()) << "the program goes on";
    EXPECT_TRUE(ReadAll(out.filePath("main.sor")).contains("<name>Gesichert</name>"));

    EXPECT_TRUE(project.Terminate(true));
    EXPECT_EQ(messages.size(), 2) << "asked once more, then ended regardless";
    EXPECT_TRUE(project.Measurings().empty());
    EXPECT_FALSE(project.MainWindow()->isVisible());
    EXPECT_TRUE(project.Terminate(false)) << "ended once";
}

// A view's refresh lets window events through: closing the view or the program from inside it
// waits for its end, and the commands and the pointer say that it is busy.
TEST_F(CommandsTest, ClosingTheViewAndTheProgramFromInsideARefreshWaitsForItsEnd)
{
    frm_Main& window = *project.MainWindow();
    Measuring* view = OpenMain();
    ASSERT_TRUE(view);
    QMdiSubWindow* frame = window.MdiArea()->currentSubWindow();
    ASSERT_TRUE(frame);
    // The commands come back as they were after a refresh.
    view->SetChanged(true);
    view->Refresh(true);
    EXPECT_TRUE(window.menuBar()->isEnabled() && window.Tool("mnuFileSave")->isEnabled());

    // While the progress bar moves: close the frame, choose Close, close the main window.
    bool busyMenus = false;
    bool busyPointer = false;
    bool closed = false;
    QObject::connect(project.MsgHandler(), &MessageHandler::Message, [&](const QString& name, const QString&) {
        if (name != QLatin1String("PROGRESS_UPDATE") || closed)
            return;
        closed = true;
        busyMenus = !window.menuBar()->isEnabled() && !window.Tool("mnuFileClose")->isEnabled()
            && !window.Tool("mnuFileOpen")->isEnabled() && !project.ActiveBar()->Combo("mnuViewResolution")->isEnabled()
            && window.StatusLabel()->isEnabled();
        busyPointer = QGuiApplication::overrideCursor() && QGuiApplication::overrideCursor()->shape() == Qt::WaitCursor;
        view->SetChanged(false);
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

} // namespace
