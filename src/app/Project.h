// SPDX-License-Identifier: GPL-3.0-or-later
// The application object: main window, message handling, start and orderly end.
#pragma once

#include "AddInInterface.h"
#include "Globals.h"
#include "MeasuringHost.h"
#include "MessageHandler.h"
#include "ModuleBoxes.h"
#include "Profile.h"
#include "ReportInterface.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

class AddIns;
class BatchHost;
class BatchReport;
class DriveProbe;
class RecentList;
class Measuring;
class QAction;
class QMenu;
class ToolRegistry;
class frm_Main;
class frm_Preview;

class Project : public QObject, public MeasuringHost, public AddInHost
{
    Q_OBJECT
public:
    Project();
    ~Project() override;

    // Creates and shows the main window; -1 when it cannot be created.
    qint32 Init();

    // Closes every document (asking as the settings say) and tears down; false when the
    // user refused and force is false.
    bool Terminate(bool force);

    frm_Main* MainWindow() const { return m_mainWindow.get(); }
    QString ApplicationName() const override { return m_sApplicationName; }
    QString HelpFile() const { return m_sHelpFile; }
    // Read from the settings on every call: the options dialog may have changed them.
    QString CompanyName() const;
    QString CompanyAddress() const;
    ::MessageHandler* MsgHandler() const { return m_cMsgHandler; }

    // The bound data modules, each under its address, in the order of the registry.
    const ModuleBoxes& DataModules() const { return m_colDataModules; }
    ModuleBoxes& DataModules() override { return m_colDataModules; }
    // Binds every module registered in the machine-wide settings; -1 when the key is missing.
    qint32 LoadDataModules();
    // Opens the configuration of the data modules as the edition wants it.
    void ConfigureDataModules();

    // --- what the views ask of the application
    // Through the message handler, so that data modules and views reach the same status line.
    void SendMessage(const QString& name, const QString& params) override;
    // The identity of this installation's measuring data: the logger part of the first
    // channel of the first module, "000" when it has none; kept once found.
    QString GetNewMeasuringID() override;
    // Enables the document tools when a view is active.
    void UpdateToolStates() override;
    // The menu bar and every command of the main window, off while a view refreshes.
    bool SetCommandsEnabled(bool enabled) override;
    // A message box, shown after the refresh or other work that asked for it.
    void ShowError(const QString& text) override;
    // Asks as "OnCloseMeasuring" says (0 save, 1 discard, else ask when changed) and closes
    // the view; false keeps it open. A temporary view closes without a question. A view that
    // is refreshing is closed (and asked about) once its refresh is over.
    bool CloseMeasuring(Measuring& measuring, bool force) override;

    // The stored profiles of new views, read at start.
    ProfileCollection& Profiles() { return m_colProfiles; }
    // Reads the profiles file the settings name (writing the default path back); the
    // collection stays as it was when the file can't be read. Always 0.
    qint32 LoadProfiles();
    // Shows the profile list; when a profile was made, edited or deleted, writes them all back
    // to the same file, and says so when that fails.
    void ManageProfiles();

    // --- the command surface (ProjectCommands.cpp)
    ToolRegistry* ActiveBar() const { return m_cBar; }
    // Makes every band and tool of the menus, toolbars and status bar anew.
    void BuildMenus();
    // What an add-in may add to the menus and toolbars.
    void AddBand(const QString& name, int type) override;
    void AddTool(const QString& band, const QString& name, int type, const QString& caption, const QString& category,
        const QString& shortcut, const QString& icon, const QString& band2, int index) override;
    bool English() const override { return g_lLangOffset >= 1000; }
    // The help page of a context number, over the main window.
    void ShowHelp(int contextId) override;
    // Shows the pop-up band of that name at the mouse position.
    void CallMenu(const QString& menu) override;
    // A tool was clicked: the add-ins see it first, then the program acts by its name.
    void ToolClick(const QString& name);
    // A drop-down list of the toolbar closed on a choice.
    void ComboClose(const QString& name);
    AddIns& AddInList() { return *m_cAddIns; }
    void EditMeasuringProperties(Measuring* measuring = nullptr);
    void EditCurveProperties(Measuring* measuring = nullptr);
    void ManageCurves(Measuring* measuring = nullptr);
    // Gives the first seven curves the basic colours by their series number.
    void ResetCurveColors(Measuring* measuring = nullptr);
    // 0 cascade, 1 one below the other, 2 side by side, 3 minimised windows in a row.
    void ArrangeWindows(int arrangement);

    // --- documents
    // No view refreshes, no report or batch runs, the commands are on and the program is not
    // ending: a view may be opened from outside the menus now.
    bool Idle() const { return !Busy() && !m_bCommandsHeld && !m_bTerminated; }
    // The open views in the order they were opened.
    const std::vector<std::unique_ptr<Measuring>>& Measurings() const { return m_colMeasurings; }
    // The view of the document area's current window; nothing when there is none.
    Measuring* GetActiveMeasuring() const;
    // Makes a new view through the wizard and shows it; nothing when the user cancels.
    Measuring* NewMeasuring();
    // Opens a view file (asking for one when the name is empty) into a window of the document
    // area. A file already open is brought to the front instead, unless temporary; a
    // temporary view stays hidden. Nothing when the file can't be opened or the user cancels.
    Measuring* OpenMeasuring(const QString& fileName, bool temporary);
    // Saves the view (the active one when none is given) under its name, or asks for one with
    // saveAs or when it has none. True when written.
    bool SaveMeasuring(bool saveAs, Measuring* measuring = nullptr);
    // Where the save dialog starts: the view's folder, else that of the newest recent file,
    // else the folder chosen last.
    QString ProposedSaveName(const Measuring& measuring) const;
    // Tests hand in a drive that looks like a logger's memory card.
    void SetDriveProbe(std::unique_ptr<DriveProbe> probe);
    // The recent files; nothing after an end the user refused, until the next start.
    RecentList* Recent() const { return m_cRecentList.get(); }
    // Rewrites the file menu's end: the recent files, newest first, then the separator and "Beenden".
    void RebuildRecentMenu();
    void ExportMeasuring(Measuring* measuring = nullptr);
    // Closes the view (the active one when none is given); false when it stays open.
    bool CloseMeasuring(Measuring* measuring = nullptr);

    // --- printing (ProjectPrint.cpp)
    // The reports the print dialog offers, keyed "REP_0", "REP_1", ...
    ReportCollection& Reports() { return m_colReports; }
    // Makes the built-in reports. Always 0.
    qint32 LoadReports();
    // Runs reports over the view (the active one when none is given) into the preview. Without
    // a report the print dialog asks which; when it asks for all open views, or in a batch,
    // the reports run over every view of the list (all open views when it is empty).
    void PrintMeasuring(Measuring* measuring = nullptr, const ReportPtr& report = nullptr,
        const std::vector<Measuring*>& measurings = {}, bool batchMode = false);
    // Runs the reports over every view of the list (all open views when it is empty) into one
    // preview; reports on the whole set run once and are taken out of the list.
    void BatchPrintMeasuring(std::vector<ReportPtr>& reports, const std::vector<Measuring*>& measurings,
        const std::vector<qint32>& orientations);
    // The page layout of all reports; true on OK.
    bool ShowPageSetup();
    // The preview, made on first use.
    frm_Preview* PreviewWindow();

    // --- report batches (ProjectBatch.cpp)
    // The batch object with its menu, window and runs; made with the menus, gone at the end.
    BatchReport* Batch() const { return m_cBatch.get(); }

private:
    // Makes the batch object on the first call and adds its menu and toolbar.
    void InitBatch();
    // Remembers the batch window's state and lets go of the batch object.
    void TerminateBatch();
    void ViewCommand(Measuring& view, const QString& name);
    void FillWindowList(QMenu* menu, QAction* marker);
    void OpenRecent(const QString& tool);
    void ShowOptions();
    // Puts a file at the end of the recent list and into the menu.
    void Remember(const QString& path);
    // Reads or writes the arrangement of the toolbars.
    void PersistBarLayout(bool restore);
    // The splash and the start-up window, as the settings ask for them.
    void ShowStartWindows();
    void ShowAbout();
    void m_cMsgHandler_Message(const QString& name, const QString& params);
    void ShowStatus(const QString& text);
    void ShowInWindow(Measuring& measuring);
    void DropMeasuring(Measuring& measuring);
    void DeleteDropped();
    // Runs the closes and the end that came in while views were refreshing.
    void RunWaitingCloses();
    // A view refreshes, reports or a batch command run: they let events through, and a view
    // closed or the program ended meanwhile waits until they are over.
    bool Busy() const;
    void RunIntoPreview(std::vector<ReportPtr>& reports, const std::vector<qint32>& orientations,
        const std::vector<Measuring*>& measurings, bool batch);

    bool m_bBarBusy = false; // the program itself changes tools: their events are not the user's
    bool m_bCommandsHeld = false; // commands are off for a refresh
    bool m_bPrinting = false; // reports run over the views
    bool m_bBatchBusy = false; // a batch command runs, opening and closing views of its own
    ToolRegistry* m_cBar = nullptr; // owned by the main window
    std::unique_ptr<AddIns> m_cAddIns;
    std::unique_ptr<RecentList> m_cRecentList;
    std::unique_ptr<DriveProbe> m_cDriveProbe;
    std::vector<Measuring*> m_colWaitingCloses;
    QStringList m_colWaitingErrors;
    std::vector<QPointer<QAction>> m_colHeldCommands; // commands a refresh turned off
    bool m_bTerminateWaiting = false;
    QString m_sApplicationName;
    std::unique_ptr<frm_Main> m_mainWindow;
    QString m_sHelpFile;
    ModuleBoxes m_colDataModules;
    ProfileCollection m_colProfiles;
    ReportCollection m_colReports;
    // A window of its own, without a parent; its pages are copies and outlive the views.
    std::unique_ptr<frm_Preview> m_cPreview;
    // The batch object's window is a dock of the main window, declared before them.
    std::unique_ptr<BatchHost> m_cBatchHost;
    std::unique_ptr<BatchReport> m_cBatch;
    QString m_sMeasuringFileID;
    ::MessageHandler* m_cMsgHandler = nullptr;
    bool m_bTerminated = false;
    // Declared after the main window so that the views go before the window they stand in.
    std::vector<std::unique_ptr<Measuring>> m_colMeasurings;
    // Closed views wait here for the next event-loop turn: a view may be closing itself.
    std::vector<std::unique_ptr<Measuring>> m_colDropped;
};

// The one application object, created by the entry routine.
extern Project* g_cProject;
