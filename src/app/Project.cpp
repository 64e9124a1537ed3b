// SPDX-License-Identifier: GPL-3.0-or-later
#include "Project.h"

#include "AppPaths.h"
#include "Globals.h"
#include "Logging.h"
#include "Numeric.h"
#include "RegistryKey.h"
#include "ResStrings.h"
#include "Settings.h"
#include "frm_DataModules.h"
#include "frm_Main.h"

#include <QAction>
#include <QCoreApplication>
#include <QLabel>
#include <QLocale>
#include <QProgressBar>
#include <QStatusBar>

#include <algorithm>
#include <cmath>

Project* g_cProject = nullptr;

Project::Project()
{
    m_cMsgHandler = new ::MessageHandler(this);
    connect(m_cMsgHandler, &::MessageHandler::Message, this, &Project::m_cMsgHandler_Message);
}

Project::~Project()
{
    Terminate(false);
}

qint32 Project::Init()
{
    m_mainWindow = std::make_unique<frm_Main>();
    if (!m_mainWindow)
        return -1;
    m_mainWindow->SetCloseRequestHandler([this] { return Terminate(false); });
    connect(m_mainWindow->ToolExtrasConfig(), &QAction::triggered, this, &Project::ConfigureDataModules);

    m_sApplicationName = Settings::Value(Settings::Id::ApplicationName);
    m_mainWindow->setWindowTitle(m_sApplicationName);
    m_sHelpFile = AppPaths::ProgramFolder() + QLatin1Char('/') + m_sApplicationName + QLatin1String(".chm");

    LoadDataModules();

    ShowStatus(QString());
    m_mainWindow->ShowMe();
    return 0;
}

bool Project::Terminate(bool force)
{
    if (m_bTerminated)
        return true;
    const bool refused = false; // no document can refuse yet
    if (refused && !force)
        return false;

    if (m_mainWindow)
        m_mainWindow->Unload();
    QCoreApplication::processEvents();
    // The modules hold the message handler: they go before the project does.
    m_colDataModules.Clear();
    m_bTerminated = true;
    return true;
}

QString Project::CompanyName() const
{
    return Settings::Value(Settings::Id::CompanyName);
}

QString Project::CompanyAddress() const
{
    return Settings::Value(Settings::Id::CompanyAddress);
}

qint32 Project::LoadDataModules()
{
    const QString source = QStringLiteral("Project.LoadDataModules");
    RegistryKey key;
    if (key.OpenKey(Hive::LocalMachine, KeyRead, QLatin1String(Settings::KeyDataModules)) != RegistryStatus::Ok) {
        WriteLog(QStringLiteral("error loading data-modules"),
                 QStringLiteral("Error opening registry key Software\\HARVOLD\\DataModules."), source, LogLevel::Error);
        return -1;
    }
    for (QString name = key.GetFirstValue(); !name.isEmpty(); name = key.GetNextValue()) {
        const QString data = key.Value(name);
        WriteLog(QStringLiteral("read data-module entry"),
                 QStringLiteral("Configuration for data-module %1 = %2 read.").arg(name, data), source, LogLevel::Info);
        const QStringList parts = data.split(QLatin1Char(':'));
        if (parts.size() != 2) {
            WriteLog(QStringLiteral("invalid module-registration"),
                     QStringLiteral("Invalid Module Registration %1 = %2.").arg(name, data), source, LogLevel::Skipped);
            continue;
        }
        // Addresses are unique: a second registration of one is refused before it is bound.
        if (const ModuleBoxPtr holder = m_colDataModules.Item(parts.at(1))) {
            WriteLog(QStringLiteral("duplicate module-address"),
                     QStringLiteral("Data-module %1 = %2 skipped: address %3 is already used by %4.")
                         .arg(name, data, parts.at(1), holder->Name()),
                     source, LogLevel::Error);
            continue;
        }
        auto box = std::make_shared<ModuleBox>();
        box->SetName(name);
        box->SetObject(parts.at(0));
        box->SetAddress(parts.at(1));
        if (box->BindDMI() != 0)
            continue;
        try {
            box->DataModule()->SetMessageHandler(m_cMsgHandler);
        } catch (...) {
            // A module that can't take the handler still serves data.
        }
        m_colDataModules.Add(std::move(box));
    }
    key.CloseKey();
    return 0;
}

void Project::ConfigureDataModules()
{
    if (g_sWhoAmI == QLatin1String("sorano")) {
        if (m_colDataModules.Count() == 1) {
            m_colDataModules.At(0)->ShowConfig();
            return;
        }
        frm_DataModules dialog(m_mainWindow.get());
        dialog.ShowMe(m_colDataModules);
    } else if (g_sWhoAmI == QLatin1String("talven")) {
        // This edition has no list: only its own logger module is configured.
        for (const ModuleBoxPtr& box : m_colDataModules)
            if (box->Name() == QLatin1String("QUANDEL"))
                box->ShowConfig();
    }
}

void Project::ShowStatus(const QString& text)
{
    if (!m_mainWindow)
        return;
    // With no text the status line shows the product's notice.
    m_mainWindow->StatusLabel()->setText(text.isEmpty() ? GetResString(492) : text);
}

void Project::m_cMsgHandler_Message(const QString& name, const QString& params)
{
    if (name.isEmpty())
        return;
    if (name == QLatin1String("CHANNELS_CHANGED")) {
        if (const ModuleBoxPtr box = m_colDataModules.Item(params))
            box->ResetChannelList();
    }
    if (!m_mainWindow)
        return;
    QProgressBar* bar = m_mainWindow->ProgressBar();
    if (name == QLatin1String("LOG")) {
        ShowStatus(params);
        QCoreApplication::processEvents();
    } else if (name == QLatin1String("PROGRESS_START")) {
        bar->setRange(0, 100);
        bar->setValue(0);
        bar->setVisible(true);
    } else if (name == QLatin1String("PROGRESS_UPDATE")) {
        const QStringList parts = params.split(QLatin1Char(';'));
        if (parts.size() == 2) {
            // The fraction is written in the locale's decimal format.
            bool ok = false;
            double fraction = QLocale().toDouble(parts.at(1).trimmed(), &ok);
            if (!ok)
                fraction = QLocale::c().toDouble(parts.at(1).trimmed(), &ok);
            if (ok) {
                const int value = ClampToInt(std::clamp(fraction * 100.0, 0.0, 100.0));
                if (value != bar->value())
                    bar->setValue(value);
            }
            bar->repaint();
        }
    } else if (name == QLatin1String("PROGRESS_END")) {
        bar->setValue(0);
        bar->setVisible(false);
    }
    m_mainWindow->statusBar()->update();
}
