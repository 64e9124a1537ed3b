// SPDX-License-Identifier: GPL-3.0-or-later
#include "Project.h"

#include "AppPaths.h"
#include "Numeric.h"
#include "ResStrings.h"
#include "Settings.h"
#include "frm_Main.h"

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

    m_sApplicationName = Settings::Value(Settings::Id::ApplicationName);
    m_mainWindow->setWindowTitle(m_sApplicationName);
    m_sHelpFile = AppPaths::ProgramFolder() + QLatin1Char('/') + m_sApplicationName + QLatin1String(".chm");

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

void Project::ShowStatus(const QString& text)
{
    if (!m_mainWindow)
        return;
    // With no text the status line shows the product's notice.
    m_mainWindow->StatusLabel()->setText(text.isEmpty() ? GetResString(492) : text);
}

void Project::m_cMsgHandler_Message(const QString& name, const QString& params)
{
    if (name.isEmpty() || !m_mainWindow)
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
