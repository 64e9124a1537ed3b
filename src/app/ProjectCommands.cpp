// SPDX-License-Identifier: GPL-3.0-or-later
// The command surface of Project: the menu and toolbar tree, the click and drop-down
// handlers, the tool states after each command, and the window commands.
#include "Project.h"

#include "AddIns.h"
#include "BatchReport.h"
#include "ChartAdapter.h"
#include "CurveColors.h"
#include "Help.h"
#include "IconList.h"
#include "Measuring.h"
#include "ResStrings.h"
#include "ToolRegistry.h"
#include "frm_GraphicView.h"
#include "frm_Main.h"

#include <QAction>
#include <QComboBox>
#include <QTimer>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QProgressBar>
#include <QScopeGuard>

#include <array>
#include <exception>

namespace {

using T = ToolRegistry;

// The resolution list's positions and the units they stand for.
constexpr std::array<const char*, 8> ResolutionUnits { "", "s", "n", "h", "d", "ww", "m", "yyyy" };
// The chart-type list's entries: caption id and chart type number.
constexpr std::array<std::pair<int, int>, 3> Galleries { { { 403, 1 }, { 404, 2 }, { 405, 8 } } };

QString Text(int id)
{
    return GetResString(id);
}

} // namespace

void Project::BuildMenus()
{
    m_bBarBusy = true;
    const auto idle = qScopeGuard([this] { m_bBarBusy = false; });
    ToolRegistry& bar = *m_cBar;
    bar.Clear();

    bar.AddBand(QStringLiteral("mnuMain"), T::MenuBar, Text(201));
    bar.AddBand(QStringLiteral("tlbMain"), T::Toolbar, Text(202));
    bar.AddBand(QStringLiteral("tlbGraphic"), T::Toolbar, Text(203));
    const std::array<std::pair<const char*, int>, 3> viewMenus { { { "mnuFile", 204 }, { "mnuEdit", 215 },
        { "mnuView", 229 } } };
    for (const auto& [name, caption] : viewMenus)
        bar.AddBand(QLatin1String(name), T::Popup, Text(caption), QStringLiteral("mnuMain"));
    // The batch menu and toolbar stand between those of the views and the administration.
    InitBatch();
    const std::array<std::pair<const char*, int>, 3> menus { { { "mnuExtras", 246 }, { "mnuWindows", 251 },
        { "mnuHelp", 256 } } };
    for (const auto& [name, caption] : menus)
        bar.AddBand(QLatin1String(name), T::Popup, Text(caption), QStringLiteral("mnuMain"));
    bar.AddBand(QStringLiteral("stbMain"), T::StatusBar);
    bar.AddBand(QStringLiteral("CurveMenu"), T::Popup);
    bar.AddBand(QStringLiteral("SelectMenu"), T::Popup);

    const auto tool = [&bar](const char* band, const char* name, int type, const QString& caption, int category,
                          const char* shortcut = "", const char* icon = "", const char* band2 = "") {
        return bar.AddTool(QLatin1String(band), QLatin1String(name), type, caption,
            category ? Text(category) : QString(), QLatin1String(shortcut), QLatin1String(icon), QLatin1String(band2));
    };
    const auto separator = [&bar](const char* band, const char* name) {
        bar.AddTool(QLatin1String(band), QLatin1String(name), T::SeparatorTool, {}, {}, {}, {});
    };

    tool("mnuFile", "mnuFileNew", T::ButtonTool, Text(206), 205, "N", "ICO_NEW", "tlbMain");
    tool("mnuFile", "mnuFileOpen", T::ButtonTool, Text(207), 205, "O", "ICO_OPEN", "tlbMain");
    tool("mnuFile", "mnuFileClose", T::ButtonTool, Text(208), 205);
    separator("mnuFile", "mnuFileSep1");
    tool("mnuFile", "mnuFileSave", T::ButtonTool, Text(209), 205, "S", "ICO_SAVE", "tlbMain");
    tool("mnuFile", "mnuFileSaveAs", T::ButtonTool, Text(210), 205);
    separator("mnuFile", "mnuFileSep1");
    tool("mnuFile", "mnuFileExport", T::ButtonTool, Text(211), 205);
    separator("mnuFile", "mnuFileSep2");
    tool("mnuFile", "mnuFilePageSetup", T::ButtonTool, Text(213), 205);
    tool("mnuFile", "mnuFilePrint", T::ButtonTool, Text(212), 205, "", "ICO_PRINT", "tlbMain");
    separator("mnuFile", "mnuFileSep3");
    tool("mnuFile", "mnuExit", T::ButtonTool, Text(214), 205, "Q");
    separator("tlbMain", "tlbMainSep1");

    tool("mnuEdit", "mnuEditCut", T::ButtonTool, Text(217), 216, "X", "ICO_CUT", "tlbMain");
    tool("mnuEdit", "mnuEditCopy", T::ButtonTool, Text(218), 216, "C", "ICO_COPY", "tlbMain");
    tool("mnuEdit", "mnuEditCopyAll", T::ButtonTool,
        LocalText("kompletten Datensatz kopieren", "Copy the complete data set"), 216);
    tool("mnuEdit", "mnuEditPaste", T::ButtonTool, Text(221), 216, "V", "ICO_PASTE", "tlbMain");
    separator("mnuEdit", "mnuEditSep1");
    tool("mnuEdit", "mnuEditChannel", T::ButtonTool, Text(222), 216, "", "ICO_CHANNEL", "tlbMain");
    separator("mnuEdit", "mnuEditSep2");
    tool("mnuEdit", "mnuEditMeasuring", T::ButtonTool, Text(223), 216, "", "ICO_PROPERTIES", "tlbMain");
    tool("mnuEdit", "mnuEditCurve", T::ButtonTool, Text(225), 216, "", "ICO_CURVEPROPERTIES", "tlbMain");
    tool("mnuEdit", "mnuEditResetColors", T::ButtonTool, Text(228), 216);
    separator("mnuEdit", "mnuEditSep3");
    tool("mnuEdit", "mnuEditDeleteCursor", T::ButtonTool, Text(226), 216);
    tool("mnuEdit", "mnuEditDeleteAllCursors", T::ButtonTool, Text(227), 216);

    separator("mnuView", "mnuViewSep1");
    tool("mnuView", "mnuViewAll", T::ButtonTool, Text(236), 230);
    tool("mnuView", "mnuViewDay", T::ButtonTool, Text(233), 230);
    tool("mnuView", "mnuViewWeek", T::ButtonTool, Text(234), 230);
    tool("mnuView", "mnuViewMonth", T::ButtonTool, Text(235), 230);
    separator("mnuView", "mnuViewSep2");
    tool("mnuView", "mnuViewGotoFirst", T::ButtonTool, Text(237), 230);
    tool("mnuView", "mnuViewGotoLast", T::ButtonTool, Text(238), 230);
    tool("tlbGraphic", "mnuViewResolutionLabel", T::LabelTool, Text(359), 0);
    tool("tlbGraphic", "mnuViewResolution", T::ComboTool, Text(360), 0);
    tool("mnuView", "mnuViewCursorMode", T::ButtonTool, LocalText("Cursormodus", "Cursor mode"), 230, "", "ICO_CURSOR",
        "tlbGraphic");
    tool("mnuView", "mnuViewZoomIn", T::ButtonTool, Text(231), 230, "", "ICO_ZOOMIN", "tlbGraphic");
    tool("mnuView", "mnuViewZoomOut", T::ButtonTool, Text(232), 230, "", "ICO_ZOOMOUT", "tlbGraphic");
    separator("mnuView", "mnuViewSep3");
    separator("tlbGraphic", "tlbGraphicSep1");
    tool("tlbGraphic", "mnuViewGalleryLabel", T::LabelTool, Text(401), 0);
    tool("tlbGraphic", "mnuViewGallery", T::ComboTool, Text(400), 0);
    tool("mnuView", "mnuView3D", T::ButtonTool, Text(239), 230, "", "", "tlbGraphic");
    tool("mnuView", "mnuViewGrid1", T::ButtonTool, Text(240), 230, "", "ICO_GRID1", "tlbGraphic");
    tool("mnuView", "mnuViewGrid2", T::ButtonTool, Text(241), 230, "", "ICO_GRID2", "tlbGraphic");
    separator("mnuView", "mnuViewSep4");
    separator("tlbMain", "tlbMainSep2");
    tool("mnuView", "mnuViewStatistic", T::ButtonTool, Text(242), 230, "", "ICO_STATISTIC", "tlbMain");
    tool("mnuView", "mnuViewChart", T::ButtonTool, Text(243), 230, "", "ICO_MEASURING", "tlbMain");
    tool("mnuView", "mnuViewGrid", T::ButtonTool, Text(244), 230, "", "ICO_GRID", "tlbMain");
    tool("mnuView", "mnuViewAnnotation", T::ButtonTool, Text(245), 230, "", "ICO_ANNOTATION", "tlbMain");

    tool("mnuExtras", "mnuExtrasConfig", T::ButtonTool, Text(248), 247);
    tool("mnuExtras", "mnuExtrasProfiles", T::ButtonTool, Text(249), 247);
    separator("mnuExtras", "mnuExtrasSep1");
    tool("mnuExtras", "mnuExtrasOptions", T::ButtonTool, Text(250), 247);

    tool("mnuWindows", "mnuWindowHoriz", T::ButtonTool, Text(252), 0);
    tool("mnuWindows", "mnuWindowVert", T::ButtonTool, Text(253), 0);
    tool("mnuWindows", "mnuWindowCascade", T::ButtonTool, Text(254), 0);
    tool("mnuWindows", "mnuWindowArrange", T::ButtonTool, Text(255), 0);
    tool("mnuWindows", "mnuWindowList", T::WindowListTool, QString(), 0);

    tool("mnuHelp", "mnuHelpApp", T::ButtonTool, Text(258), 257, "F1");
    tool("mnuHelp", "mnuHelpSearch", T::ButtonTool, Text(259), 257);
    separator("mnuHelp", "mnuHelpSep1");
    tool("mnuHelp", "mnuHelpAbout", T::ButtonTool, Text(260).replace(QLatin1Char('@'), m_sApplicationName), 257);

    tool("stbMain", "lblStatus", T::LabelTool, Text(492), 0);
    tool("stbMain", "prgState", T::CustomTool, QString(), 0);

    for (const char* name : { "mnuEditCut", "mnuEditCopy", "mnuEditPaste" })
        tool("CurveMenu", name, T::ButtonTool, QString(), 0);
    separator("CurveMenu", "mnuCurveSep1");
    tool("CurveMenu", "mnuEditCurve", T::ButtonTool, QString(), 0);
    tool("SelectMenu", "mnuSelectCurve", T::ButtonTool, Text(262), 0);
    tool("SelectMenu", "mnuDeSelectCurve", T::ButtonTool, Text(263), 0);
    tool("SelectMenu", "mnuSelectAll", T::ButtonTool, Text(264), 0);
    tool("SelectMenu", "mnuDeSelectAll", T::ButtonTool, Text(265), 0);

    // Tools that show a state carry a check mark.
    for (const char* name : { "mnuViewCursorMode", "mnuViewZoomIn", "mnuView3D", "mnuViewGrid1", "mnuViewGrid2",
             "mnuViewStatistic", "mnuViewChart", "mnuViewGrid", "mnuViewAnnotation" })
        bar.Tool(QLatin1String(name))->setCheckable(true);

    // 1200 and 1400 twips wide at least, about 80 and 93 pixels.
    QComboBox* resolution = bar.Combo(QStringLiteral("mnuViewResolution"));
    for (int id = 361; id <= 368; ++id)
        resolution->addItem(Text(id));
    resolution->setMinimumWidth(80);
    QComboBox* gallery = bar.Combo(QStringLiteral("mnuViewGallery"));
    for (const auto& [caption, number] : Galleries)
        gallery->addItem(Text(caption), number);
    gallery->setMinimumWidth(93);

    m_mainWindow->ProgressBar()->setParent(nullptr);
    bar.SetCustomWidget(QStringLiteral("prgState"), m_mainWindow->ProgressBar());
    m_mainWindow->SetStatusLabel(bar.Label(QStringLiteral("lblStatus")));
}

void Project::ToolClick(const QString& clicked)
{
    // A layout or an add-in of the other edition names the configuration tool differently.
    const QString name = clicked == QLatin1String("mnuQUANDELConfig") ? QStringLiteral("mnuExtrasConfig") : clicked;
    m_cAddIns->ToolClick(name);
    if (m_cBatch) {
        // A batch run lets events through between its views; an end asked for meanwhile waits.
        m_bBatchBusy = true;
        const bool handled = m_cBatch->ToolClick(name);
        m_bBatchBusy = false;
        if (handled) {
            UpdateToolStates();
            QTimer::singleShot(0, this, &Project::RunWaitingCloses);
            return;
        }
    }
    // Looked up after the add-ins, which may have closed a view.
    Measuring* view = GetActiveMeasuring();

    const auto is = [&name](const char* tool) { return name == QLatin1String(tool); };
    if (is("mnuFileNew")) {
        NewMeasuring();
    } else if (is("mnuFileOpen")) {
        OpenMeasuring(QString(), false);
    } else if (is("mnuFileClose")) {
        CloseMeasuring(view);
    } else if (is("mnuFileSave")) {
        SaveMeasuring(false, view);
    } else if (is("mnuFileSaveAs")) {
        SaveMeasuring(true, view);
    } else if (is("mnuFileExport")) {
        ExportMeasuring(view);
    } else if (is("mnuFilePageSetup")) {
        ShowPageSetup();
    } else if (is("mnuFilePrint")) {
        PrintMeasuring(view);
    } else if (is("mnuExit")) {
        // The main window asks the project, which closes every view first.
        if (m_mainWindow)
            m_mainWindow->close();
        return;
    } else if (is("mnuEditChannel")) {
        ManageCurves(view);
    } else if (is("mnuEditMeasuring")) {
        EditMeasuringProperties(view);
    } else if (is("mnuEditCurve")) {
        EditCurveProperties(view);
    } else if (is("mnuEditResetColors")) {
        ResetCurveColors(view);
    } else if (is("mnuExtrasConfig")) {
        ConfigureDataModules();
    } else if (is("mnuExtrasProfiles")) {
        ManageProfiles();
    } else if (is("mnuExtrasOptions")) {
        ShowOptions();
    } else if (is("mnuWindowCascade")) {
        ArrangeWindows(0);
    } else if (is("mnuWindowHoriz")) {
        ArrangeWindows(1);
    } else if (is("mnuWindowVert")) {
        ArrangeWindows(2);
    } else if (is("mnuWindowArrange")) {
        ArrangeWindows(3);
    } else if (is("mnuHelpApp")) {
        ::ShowHelp(1003, m_mainWindow.get());
    } else if (is("mnuHelpSearch")) {
        ShowHelpSearch(m_mainWindow.get());
    } else if (is("mnuHelpAbout")) {
        ShowAbout();
    } else if (name.startsWith(QLatin1String("mnuRecent"))) {
        OpenRecent(name);
    } else if (view) {
        ViewCommand(*view, name);
    }
    UpdateToolStates();
}

void Project::ViewCommand(Measuring& view, const QString& name)
{
    const auto is = [&name](const char* tool) { return name == QLatin1String(tool); };
    GraphProperties& graph = view.Graph();
    if (is("mnuEditCopy")) {
        view.ExportClipboard(false);
    } else if (is("mnuEditCopyAll")) {
        view.ExportClipboard(true);
    } else if (is("mnuEditDeleteCursor")) {
        view.RemoveCursors(false);
    } else if (is("mnuEditDeleteAllCursors")) {
        view.RemoveCursors(true);
    } else if (is("mnuViewZoomIn")) {
        // Zoom and cursor mode exclude each other; a second click ends the mode.
        const bool on = !view.ZoomEnabled();
        view.SetZoomEnabled(on);
        if (on)
            view.SetCursorEnabled(false);
    } else if (is("mnuViewCursorMode")) {
        const bool on = !view.CursorEnabled();
        view.SetCursorEnabled(on);
        if (on)
            view.SetZoomEnabled(false);
    } else if (is("mnuViewZoomOut")) {
        view.ZoomBack();
    } else if (is("mnuViewAll")) {
        view.ShowPeriod(QString(), 0);
    } else if (is("mnuViewDay")) {
        view.ShowPeriod(QStringLiteral("d"), 1);
    } else if (is("mnuViewWeek")) {
        view.ShowPeriod(QStringLiteral("ww"), 1);
    } else if (is("mnuViewMonth")) {
        view.ShowPeriod(QStringLiteral("m"), 1);
    } else if (is("mnuViewGotoFirst")) {
        view.MoveToFirst();
    } else if (is("mnuViewGotoLast")) {
        view.MoveToLast();
    } else if (is("mnuView3D")) {
        graph.View3D = !graph.View3D;
        view.Refresh(false);
    } else if (is("mnuViewGrid1") || is("mnuViewGrid2")) {
        // The X grid stays while either Y axis has grid lines.
        const bool first = is("mnuViewGrid1");
        bool& mine = first ? graph.ShowYGrid1 : graph.ShowYGrid2;
        const bool other = first ? graph.ShowYGrid2 : graph.ShowYGrid1;
        mine = !mine;
        if (mine)
            graph.ShowXGrid = true;
        else if (!other)
            graph.ShowXGrid = false;
        view.Refresh(false);
    } else if (is("mnuViewStatistic")) {
        view.SetShowStatistics(!view.ShowStatistics());
    } else if (is("mnuViewAnnotation")) {
        view.SetShowAnnotation(!view.ShowAnnotation());
    } else if (is("mnuViewChart")) {
        view.SetViewMode(
            view.ViewMode() == frm_GraphicView::ChartMode ? frm_GraphicView::GridMode : frm_GraphicView::ChartMode);
        view.Refresh(false);
    } else if (is("mnuViewGrid")) {
        view.SetViewMode(
            view.ViewMode() == frm_GraphicView::GridMode ? frm_GraphicView::ChartMode : frm_GraphicView::GridMode);
        view.Refresh(false);
    } else if (is("mnuViewRemoveGaps")) {
        view.RemoveGaps();
    }
}

void Project::ComboClose(const QString& name)
{
    if (m_bBarBusy)
        return;
    m_cAddIns->ToolComboClose(name);
    Measuring* view = GetActiveMeasuring();
    if (view && name == QLatin1String("mnuViewResolution")) {
        const int position = m_cBar->Combo(name)->currentIndex();
        if (position >= 0 && position < int(ResolutionUnits.size())) {
            view->SetIntervalCount(1);
            view->SetIntervalUnit(QLatin1String(ResolutionUnits[size_t(position)]));
            view->Refresh(true);
        }
    } else if (view && name == QLatin1String("mnuViewGallery")) {
        const int number = m_cBar->Combo(name)->currentData().toInt();
        if (number != view->Graph().Gallery) {
            view->Graph().Gallery = number;
            view->Refresh(false);
        }
    }
    UpdateToolStates();
}

void Project::UpdateToolStates()
{
    if (!m_mainWindow || !m_cBar || m_bCommandsHeld)
        return;
    m_bBarBusy = true;
    const auto idle = qScopeGuard([this] { m_bBarBusy = false; });
    // The batch tools follow the active view too, whichever way this returns.
    const auto batchTools = qScopeGuard([this] {
        if (m_cBatch)
            m_cBatch->UpdateTools();
    });
    ToolRegistry& bar = *m_cBar;
    const auto set = [&bar](const QString& name, bool enabled) {
        if (QAction* action = bar.Tool(name))
            action->setEnabled(enabled);
    };
    const auto check = [&bar](const char* name, bool checked) {
        if (QAction* action = bar.Tool(QLatin1String(name)))
            action->setChecked(checked);
    };
    const auto enable = [&set](std::initializer_list<const char*> names, bool enabled) {
        for (const char* name : names)
            set(QLatin1String(name), enabled);
    };
    const std::initializer_list<const char*> windowTools { "mnuWindowHoriz", "mnuWindowVert", "mnuWindowCascade",
        "mnuWindowArrange" };

    Measuring* view = GetActiveMeasuring();
    if (!view) {
        enable({ "mnuFileNew", "mnuFileOpen", "mnuExit" }, true);
        enable({ "mnuFileClose", "mnuFileSave", "mnuFileSaveAs", "mnuFileExport", "mnuFilePrint" }, false);
        for (const QString& name : bar.ToolsOf(QStringLiteral("mnuEdit")) + bar.ToolsOf(QStringLiteral("mnuView")))
            set(name, false);
        enable({ "mnuViewResolution", "mnuViewGallery" }, false);
        enable(windowTools, false);
        for (const char* name : { "mnuViewCursorMode", "mnuViewZoomIn", "mnuView3D", "mnuViewGrid1", "mnuViewGrid2",
                 "mnuViewStatistic", "mnuViewGrid", "mnuViewAnnotation" })
            check(name, false);
        check("mnuViewChart", true);
        if (QAction* copy = bar.Tool(QStringLiteral("mnuEditCopy")))
            copy->setText(Text(218));
        return;
    }

    const bool chartMode = view->ViewMode() == frm_GraphicView::ChartMode;
    const GraphProperties& graph = view->Graph();
    enable({ "mnuFileNew", "mnuFileOpen", "mnuFileClose", "mnuFileSaveAs", "mnuFileExport", "mnuFilePrint", "mnuExit" },
        true);
    set(QStringLiteral("mnuFileSave"), view->Changed());
    enable({ "mnuEditChannel", "mnuEditMeasuring", "mnuEditCopy", "mnuEditCopyAll", "mnuEditResetColors" }, true);
    if (QAction* copy = bar.Tool(QStringLiteral("mnuEditCopy")))
        copy->setText(Text(chartMode ? 219 : 220));
    // These three are switched on here and only switched off again with no view at all.
    if (view->CurrentCurve())
        set(QStringLiteral("mnuEditCurve"), true);
    if (view->CurrentCurve() && !view->CurrentCurve()->Cursors().empty())
        set(QStringLiteral("mnuEditDeleteCursor"), true);
    for (const auto& curve : view->Curves())
        if (!curve->Cursors().empty())
            set(QStringLiteral("mnuEditDeleteAllCursors"), true);
    enable({ "mnuViewDay", "mnuViewWeek", "mnuViewMonth" }, true);
    enable({ "mnuViewAll", "mnuViewGotoFirst", "mnuViewGotoLast" }, view->HasFirstLastInfo());
    check("mnuViewCursorMode", view->CursorEnabled());
    set(QStringLiteral("mnuViewCursorMode"), chartMode);
    check("mnuViewZoomIn", view->ZoomEnabled());
    set(QStringLiteral("mnuViewZoomIn"), chartMode);
    set(QStringLiteral("mnuViewZoomOut"), view->ZoomBackPossible());
    check("mnuView3D", graph.View3D);
    set(QStringLiteral("mnuView3D"), chartMode);
    const ChartAdapter* chart = view->Chart();
    for (const auto& [name, axis, shown] : { std::tuple("mnuViewGrid1", ChartAxis::Y1, graph.ShowYGrid1),
             std::tuple("mnuViewGrid2", ChartAxis::Y2, graph.ShowYGrid2) }) {
        const bool visible = chart && chart->AxisVisible(axis);
        check(name, visible && shown);
        set(QLatin1String(name), visible && chartMode);
    }
    check("mnuViewAnnotation", view->ShowAnnotation());
    set(QStringLiteral("mnuViewAnnotation"), chartMode);
    set(QStringLiteral("mnuViewStatistic"), true);
    check("mnuViewStatistic", view->ShowStatistics());
    enable({ "mnuViewChart", "mnuViewGrid" }, true);
    // The add-in's tool works on the chart; without this rule it would stay off from the
    // pass without a view.
    set(QStringLiteral("mnuViewRemoveGaps"), chartMode);
    check("mnuViewChart", chartMode);
    check("mnuViewGrid", view->ViewMode() == frm_GraphicView::GridMode);

    if (QComboBox* gallery = bar.Combo(QStringLiteral("mnuViewGallery"))) {
        const int entry = gallery->findData(graph.Gallery);
        if (entry >= 0 && entry != gallery->currentIndex())
            gallery->setCurrentIndex(entry);
    }
    if (QComboBox* resolution = bar.Combo(QStringLiteral("mnuViewResolution"))) {
        const auto unit = std::find(ResolutionUnits.begin(), ResolutionUnits.end(), view->IntervalUnit());
        const int entry = unit == ResolutionUnits.end() ? -1 : int(unit - ResolutionUnits.begin());
        if (entry >= 0 && entry != resolution->currentIndex())
            resolution->setCurrentIndex(entry);
    }
    // Through their tools, so that a refresh holds the lists with every other command.
    set(QStringLiteral("mnuViewGallery"), chartMode);
    set(QStringLiteral("mnuViewResolution"), true);
    enable(windowTools, true);
}

void Project::ResetCurveColors(Measuring* view)
{
    if (!view)
        view = GetActiveMeasuring();
    if (!view)
        return;
    // The first seven series take the program's basic colours again.
    constexpr std::array<qint32, 7> colors { 0x000000FF, 0x0000FF00, 0x00FF0000, 0x00FF00FF, 0x00FFFF00, 0x00000000,
        0x0000FFFF };
    for (const auto& curve : view->Curves())
        if (curve->SeriesID() >= 0 && curve->SeriesID() < qint32(colors.size()))
            curve->Properties().Color = colors[size_t(curve->SeriesID())];
    view->Refresh(false);
    // Assigning the name marks the view changed.
    view->SetName(view->Name());
}

void Project::EditMeasuringProperties(Measuring* view)
{
    if (!view)
        view = GetActiveMeasuring();
    if (view && view->EditProperties() > 0)
        SendMessage(QStringLiteral("SORANO_MEASURING_EDIT"), view->ID());
    UpdateToolStates();
}

void Project::EditCurveProperties(Measuring* view)
{
    if (!view)
        view = GetActiveMeasuring();
    if (view && view->CurrentCurve())
        view->EditCurveProperties();
}

void Project::ManageCurves(Measuring* view)
{
    if (!view)
        view = GetActiveMeasuring();
    if (view)
        view->ManageCurves();
    UpdateToolStates();
}

void Project::CallMenu(const QString& menu)
{
    if (m_cBar)
        m_cBar->CallMenu(menu);
}

void Project::ArrangeWindows(int arrangement)
{
    if (!m_mainWindow)
        return;
    QMdiArea* area = m_mainWindow->MdiArea();
    QList<QMdiSubWindow*> windows;
    for (QMdiSubWindow* window : area->subWindowList())
        if (window->isVisible() && !window->isMinimized())
            windows << window;
    if (arrangement == 0) {
        area->cascadeSubWindows();
        return;
    }
    if (arrangement == 3) {
        // Minimised windows line up along the bottom edge.
        int x = 0;
        for (QMdiSubWindow* window : area->subWindowList())
            if (window->isMinimized()) {
                window->move(x, area->viewport()->height() - window->height());
                x += window->width();
            }
        return;
    }
    if (windows.isEmpty())
        return;
    // One below the other (1) or side by side (2), each the full other dimension.
    const QRect room = area->viewport()->rect();
    const int n = int(windows.size());
    for (int i = 0; i < n; ++i) {
        QMdiSubWindow* window = windows[i];
        window->showNormal();
        if (arrangement == 1)
            window->setGeometry(
                0, room.height() * i / n, room.width(), room.height() * (i + 1) / n - room.height() * i / n);
        else
            window->setGeometry(
                room.width() * i / n, 0, room.width() * (i + 1) / n - room.width() * i / n, room.height());
    }
}

void Project::FillWindowList(QMenu* menu, QAction* marker)
{
    // The entries after the marker are the open views, the current one checked.
    const QList<QAction*> actions = menu->actions();
    const qsizetype from = actions.indexOf(marker);
    for (qsizetype i = from + 1; i < actions.size(); ++i)
        if (actions[i]->property("windowEntry").toBool())
            delete actions[i];
    QMdiArea* area = m_mainWindow->MdiArea();
    int number = 0;
    for (QMdiSubWindow* window : area->subWindowList()) {
        if (!window->isVisible() && !window->isMinimized())
            continue;
        ++number;
        QString title = window->windowTitle();
        title.replace(QStringLiteral("[*]"), window->isWindowModified() ? QStringLiteral("*") : QString());
        auto* entry = new QAction(
            (number < 10 ? QLatin1Char('&') + QString::number(number) : QString::number(number)) + u' ' + title, menu);
        entry->setProperty("windowEntry", true);
        entry->setCheckable(true);
        entry->setChecked(window == area->activeSubWindow());
        connect(entry, &QAction::triggered, this, [area, window] { area->setActiveSubWindow(window); });
        menu->addAction(entry);
    }
    marker->setVisible(number > 0);
}
