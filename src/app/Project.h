// SPDX-License-Identifier: GPL-3.0-or-later
// The application object: main window, message handling, start and orderly end.
#pragma once

#include "MessageHandler.h"
#include "ModuleBoxes.h"

#include <QObject>
#include <QString>

#include <memory>

class frm_Main;

class Project : public QObject
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
    QString ApplicationName() const { return m_sApplicationName; }
    QString HelpFile() const { return m_sHelpFile; }
    // Read from the settings on every call: the options dialog may have changed them.
    QString CompanyName() const;
    QString CompanyAddress() const;
    ::MessageHandler* MsgHandler() const { return m_cMsgHandler; }

    // The bound data modules, each under its address, in the order of the registry.
    const ModuleBoxes& DataModules() const { return m_colDataModules; }
    // Binds every module registered in the machine-wide settings; -1 when the key is missing.
    qint32 LoadDataModules();
    // Opens the configuration of the data modules as the edition wants it.
    void ConfigureDataModules();

private:
    void m_cMsgHandler_Message(const QString& name, const QString& params);
    void ShowStatus(const QString& text);

    bool m_bBarBusy = false;
    QString m_sApplicationName;
    std::unique_ptr<frm_Main> m_mainWindow;
    QString m_sHelpFile;
    ModuleBoxes m_colDataModules;
    QString m_sMeasuringFileID;
    ::MessageHandler* m_cMsgHandler = nullptr;
    bool m_bTerminated = false;
};

// The one application object, created by the entry routine.
extern Project* g_cProject;
