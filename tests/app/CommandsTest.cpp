// SPDX-License-Identifier: GPL-3.0-or-later
// The command surface on the demo views: the tool states with and without a view, what each
// tool does to the active view, the drop-down lists, add-ins first, the recent files in the
// file menu, the memory card and the close question.
#include "AddIns.h"
#include "AppPaths.h"
#include "ChartAdapter.h"
#include "DemoFixture.h"
#include "DriveProbe.h"
#include "Measuring.h"
#include "Project.h"
#include "RecentList.h"
#include "ResStrings.h"
#include "ToolRegistry.h"
#include "frm_GraphicView.h"
#include "frm_Main.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMessageBox>
#include <QTest>
#include <QTimer>
#include <QToolBar>

#include <functional>

namespace {

QString ReadAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

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
    // Answers the next modal windows as they come up: each step gets the window.
    void Answer(std::vector<std::function<void(QWidget*)>> steps)
    {
        pending = std::move(steps);
        probe.setInterval(20);
        QObject::connect(&probe, &QTimer::timeout, [this] {
            QWidget* modal = QApplication::activeModalWidget();
            if (!modal || pending.empty() || modal == lastAnswered)
                return;
            lastAnswered = modal;
            auto step = pending.front();
            pending.erase(pending.begin());
            step(modal);
        });
        probe.start();
    }

    Project project;
    QTimer probe;
    std::vector<std::function<void(QWidget*)>> pending;
    QPointer<QWidget> lastAnswered;
};

TEST_F(CommandsTest, WithoutAViewOnlyNewOpenExitAndTheAlwaysOnMenusAreUsable)
{
    for (const char* name : { "mnuFileNew", "mnuFileOpen", "mnuExit", "mnuExtrasConfig", "mnuExtrasProfiles",
             "mnuExtrasOptions", "mnuHelpApp", "mnuHelpAbout", "mnuFilePageSetup" })
        EXPECT_TRUE(On(name)) << name;
    for (const char* name : { "mnuFileClose", "mnuFileSave", "mnuFileSaveAs", "mnuFileExport", "mnuFilePrint",
             "mnuEditCut", "mnuEditCopy", "mnuEditChannel", "mnuEditCurve", "mnuEditDeleteAllCursors", "mnuViewDay",
             "mnuViewAll", "mnuViewZoomIn", "mnuViewStatistic", "mnuViewGrid", "mnuWindowHoriz", "mnuWindowArrange" })
        EXPECT_FALSE(On(name)) << name;
    EXPECT_FALSE(Bar().Combo("mnuViewResolution")->isEnabled());
    EXPECT_FALSE(Bar().Combo("mnuViewGallery")->isEnabled());
    EXPECT_TRUE(Checked("mnuViewChart"));
    EXPECT_FALSE(Checked("mnuViewZoomIn") || Checked("mnuViewGrid") || Checked("mnuViewStatistic"));
    EXPECT_EQ(Tool("mnuEditCopy")->text(), GetResString(218));
}

TEST_F(CommandsTest, AViewSwitchesItsToolsByModeAndKeepsTheThreeThatOnlyNoViewSwitchesOff)
{
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

TEST_F(CommandsTest, ViewToolsActOnTheActiveView)
{
    Measuring* view = OpenMain();
    ASSERT_TRUE(view);
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
}

TEST_F(CommandsTest, CursorsAndDropDownListsOfTheToolbar)
{
    Measuring* view = OpenMain();
    ASSERT_TRUE(view && view->CurrentCurve());
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
    EXPECT_EQ(view->IntervalUnit(), "h");
    EXPECT_EQ(view->IntervalCount(), 1);
    ASSERT_TRUE(view->FirstBlock());
    EXPECT_NEAR(view->FirstBlock()->At(1, 0) - view->FirstBlock()->At(0, 0), 1.0 / 24, 1e-9);

    QComboBox* gallery = Bar().Combo("mnuViewGallery");
    gallery->setCurrentIndex(gallery->findData(8));
    emit gallery->activated(gallery->currentIndex());
    EXPECT_EQ(view->Graph().Gallery, 8);
}

TEST_F(CommandsTest, EditToolsOpenTheActiveViewsDialogs)
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
    EXPECT_EQ(shown, QStringList({ "curves", "properties", view->CurrentCurve()->Name() }));
    EXPECT_TRUE(messages.contains("SORANO_MEASURING_EDIT:" + view->ID())) << "a changed view is announced";
    Measuring::SetDialogs({});
}

TEST_F(CommandsTest, TheShippedProfilesLoadAndNameChannelsOfTheDemoLoggers)
{
    roots.SetMachine(KeySettings, "Profiles", Examples + "/Profiles.dat");
    project.LoadProfiles();
    ASSERT_EQ(project.Profiles().Count(), 2);
    QStringList demoChannels;
    ASSERT_EQ(project.DataModules().At(0)->GetChannelList(nullptr), 1);
    for (const DataMatrixPtr& channel : project.DataModules().At(0)->Channels())
        demoChannels << channel->ChannelName();
    for (const ProfilePtr& profile : project.Profiles()) {
        EXPECT_EQ(profile->DataSourceID, 1) << profile->Name.toStdString();
        for (qint32 j = 1; j <= profile->ChannelCount(); ++j)
            EXPECT_TRUE(demoChannels.contains(profile->ChannelName(j))) << profile->ChannelName(j).toStdString();
    }
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
    void ToolComboClose(const QString& tool) override { seen << tool; }
    void Terminate() override { }
    inline static QStringList seen;

private:
    std::function<QString()> m_state;
};

TEST_F(CommandsTest, AnAddInSeesAClickBeforeTheProgramActs)
{
    Measuring* view = OpenMain();
    ASSERT_TRUE(view);
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
    EXPECT_EQ(project.ActiveBar()->ToolsOf("mnuFile").mid(project.ActiveBar()->ToolsOf("mnuFile").size() - 2),
        QStringList({ "mnuFileSep99", "mnuExit" }))
        << "with no recent file the menu still ends in the separator and Exit";
    for (const QString& name : names) {
        ASSERT_TRUE(project.OpenMeasuring(name, false));
        Settle();
    }
    EXPECT_EQ(recentMenu(project), QStringList({ "f.sor", "e.sor", "d.sor", "c.sor", "b.sor" }));
    EXPECT_EQ(project.ActiveBar()->ToolsOf("mnuFile").last(), "mnuExit");

    ASSERT_TRUE(project.OpenMeasuring(names[2], false)) << "open already: brought to the front";
    EXPECT_EQ(recentMenu(project).first(), "f.sor") << "an open file does not move in the list";
    // The toolbar arrangement is kept per user name; this user's file is the test's own.
    const QString user = "test-" + QFileInfo(out.path()).fileName();
    roots.SetUser("Identities\\", "Last Username", user);
    project.ActiveBar()->ToolBar("tlbGraphic")->hide();
    project.Terminate(true);

    Project restarted;
    ASSERT_EQ(restarted.Init(), 0);
    EXPECT_EQ(recentMenu(restarted), QStringList({ "f.sor", "e.sor", "d.sor", "c.sor", "b.sor" }));
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
    const auto choose = [](const QString& path) {
        return [path](QWidget* modal) {
            auto* dialog = qobject_cast<QFileDialog*>(modal);
            ASSERT_TRUE(dialog);
            // Typed as a user types it: the folder, then the name.
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
            auto* box = qobject_cast<QMessageBox*>(modal);
            ASSERT_TRUE(box);
            warning = box->windowTitle();
            box->accept();
        },
        [](QWidget* modal) { static_cast<QDialog*>(modal)->reject(); } });
    EXPECT_FALSE(project.SaveMeasuring(true, view));
    EXPECT_EQ(warning, "Messungsdatei speichern");
    EXPECT_FALSE(QFile::exists(out.filePath("card/view.sor")));
    EXPECT_TRUE(pending.empty()) << "the dialog came again and was cancelled";

    lastAnswered = nullptr;
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
        roots.SetUser(KeySettings, "OnCloseMeasuring", c.setting);
        Measuring* view = OpenMain();
        ASSERT_TRUE(view);
        view->SetName("Geaendert");
        bool asked = false;
        lastAnswered = nullptr;
        Answer({ [&](QWidget* modal) {
            asked = true;
            auto* box = qobject_cast<QMessageBox*>(modal);
            ASSERT_TRUE(box);
            box->button(c.answer == QMessageBox::NoButton ? QMessageBox::Cancel : c.answer)->click();
        } });
        EXPECT_EQ(project.CloseMeasuring(view), c.closed) << c.setting;
        EXPECT_EQ(asked, c.answer != QMessageBox::NoButton) << c.setting;
        probe.stop();
        QObject::disconnect(&probe, nullptr, nullptr, nullptr);
        if (!c.closed) {
            roots.SetUser(KeySettings, "OnCloseMeasuring", "1");
            project.CloseMeasuring(view);
        }
        Settle();
        EXPECT_FALSE(ReadAll(out.filePath("main.sor")).contains("Geaendert")) << "nothing saved";
    }
}

TEST_F(CommandsTest, WindowCommandsArrangeTheViewsInsideTheWorkspace)
{
    ASSERT_TRUE(QFile::copy(out.filePath("main.sor"), out.filePath("second.sor")));
    ASSERT_TRUE(OpenMain());
    ASSERT_TRUE(project.OpenMeasuring(out.filePath("second.sor"), false));
    Settle();
    QMdiArea* area = project.MainWindow()->MdiArea();
    const QRect room = area->viewport()->rect();
    for (QMdiSubWindow* window : area->subWindowList())
        EXPECT_TRUE(room.contains(window->geometry())) << "a new view opens wholly inside";

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
}

} // namespace
