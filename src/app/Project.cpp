// SPDX-License-Identifier: GPL-3.0-or-later
#include "Project.h"

#include "AppPaths.h"
#include "Globals.h"
#include "Logging.h"
#include "Measuring.h"
#include "Numeric.h"
#include "RegistryKey.h"
#include "ResStrings.h"
#include "Settings.h"
#include "ViewDialogs.h"
#include "frm_DataModules.h"
#include "frm_GraphicView.h"
#include "frm_Main.h"

#include <QAction>
#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QLocale>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QMessageBox>
#include <QProgressBar>
#include <QStatusBar>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <utility>

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
    InstallViewDialogs();
    m_mainWindow->SetCloseRequestHandler([this] { return Terminate(false); });
    connect(m_mainWindow->ToolExtrasConfig(), &QAction::triggered, this, &Project::ConfigureDataModules);
    const auto onTool = [this](const char* name, auto command) {
        if (QAction* tool = m_mainWindow->Tool(QLatin1String(name)))
            connect(tool, &QAction::triggered, this, command);
    };
    onTool("mnuFileOpen", [this] { OpenMeasuring(QString(), false); });
    onTool("mnuFileClose", [this] { CloseMeasuring(nullptr); });
    onTool("mnuFileSave", [this] { SaveMeasuring(false); });
    onTool("mnuFileSaveAs", [this] { SaveMeasuring(true); });
    onTool("mnuFileExport", [this] { ExportMeasuring(); });
    const auto onView = [&](const char* name, qint32 (Measuring::*command)()) {
        onTool(name, [this, command] {
            if (Measuring* view = GetActiveMeasuring())
                (view->*command)();
        });
    };
    onView("mnuEditChannel", &Measuring::ManageCurves);
    onView("mnuEditMeasuring", &Measuring::EditProperties);
    onView("mnuEditCurve", &Measuring::EditCurveProperties);
    connect(m_mainWindow->MdiArea(), &QMdiArea::subWindowActivated, this, &Project::UpdateToolStates);

    m_sApplicationName = Settings::Value(Settings::Id::ApplicationName);
    m_mainWindow->setWindowTitle(m_sApplicationName);
    m_sHelpFile = AppPaths::ProgramFolder() + QLatin1Char('/') + m_sApplicationName + QLatin1String(".chm");

    LoadDataModules();

    ShowStatus(QString());
    m_mainWindow->ShowMe();
    UpdateToolStates();
    return 0;
}

bool Project::Terminate(bool force)
{
    if (m_bTerminated)
        return true;
    if (AnyRefreshing()) {
        m_bTerminateWaiting = true;
        return false;
    }
    // Every view is asked, also after one refused; closing takes it out of the list.
    bool refused = false;
    std::vector<Measuring*> open;
    for (const auto& measuring : m_colMeasurings)
        open.push_back(measuring.get());
    for (Measuring* measuring : open)
        if (!CloseMeasuring(*measuring, false))
            refused = true;
    if (refused && !force)
        return false;

    m_colMeasurings.clear();
    DeleteDropped();
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
        bool numeric = false;
        if (parts.size() == 2)
            parts.at(1).trimmed().toInt(&numeric);
        if (!numeric) {
            WriteLog(QStringLiteral("invalid module-registration"),
                QStringLiteral("Invalid Module Registration %1 = %2.").arg(name, data), source, LogLevel::Skipped);
            continue;
        }
        // Addresses are numbers, unique as numbers ("1" and "01" are one address): a second
        // registration of one is refused before it is bound.
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
            // Views write the fraction with a point; a module may write a comma.
            QString text = parts.at(1).trimmed();
            if (!text.contains(QLatin1Char('.')))
                text.replace(QLatin1Char(','), QLatin1Char('.'));
            bool ok = false;
            const double fraction = QLocale::c().toDouble(text, &ok);
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

// --- what the views ask of the application

void Project::SendMessage(const QString& name, const QString& params)
{
    m_cMsgHandler->Send(name, params);
}

QString Project::GetNewMeasuringID()
{
    if (!m_sMeasuringFileID.isEmpty())
        return m_sMeasuringFileID;
    if (m_colDataModules.Count() == 0)
        return QString();
    ChannelCollection channels;
    qint32 status = 0;
    if (DataModuleInterface* module = m_colDataModules.At(0)->DataModule())
        module->GetChannelOverview(channels, status);
    const DataMatrixPtr first = channels.Count() > 0 ? channels.Channel(0) : DataMatrixPtr();
    m_sMeasuringFileID = first ? first->ChannelID().section(QLatin1Char('#'), 0, 0) : QStringLiteral("000");
    return m_sMeasuringFileID;
}

bool Project::SetCommandsEnabled(bool enabled)
{
    const bool was = !m_bBarBusy;
    if (!m_mainWindow || enabled == was)
        return was;
    m_bBarBusy = !enabled;
    // The menu bar and every command with it, so that no shortcut gets through either; only
    // the commands that were on come back on.
    m_mainWindow->menuBar()->setEnabled(enabled);
    if (!enabled) {
        for (QAction* action : m_mainWindow->findChildren<QAction*>())
            if (!action->menu() && action->isEnabled()) {
                action->setEnabled(false);
                m_colHeldCommands.emplace_back(action);
            }
    } else {
        for (const QPointer<QAction>& action : std::exchange(m_colHeldCommands, {}))
            if (action)
                action->setEnabled(true);
        UpdateToolStates();
    }
    return was;
}

void Project::ShowError(const QString& text)
{
    if (!m_mainWindow)
        return;
    // A refresh lets events through: the box waits until it has ended.
    m_colWaitingErrors << text;
    if (!AnyRefreshing())
        QTimer::singleShot(0, this, &Project::RunWaitingCloses);
}

bool Project::AnyRefreshing() const
{
    return std::any_of(
        m_colMeasurings.begin(), m_colMeasurings.end(), [](const auto& measuring) { return measuring->Refreshing(); });
}

void Project::RunWaitingCloses()
{
    if (AnyRefreshing())
        return;
    const std::vector<Measuring*> waiting = std::exchange(m_colWaitingCloses, {});
    for (Measuring* measuring : waiting) {
        const bool open = std::any_of(m_colMeasurings.begin(), m_colMeasurings.end(),
            [measuring](const auto& each) { return each.get() == measuring; });
        if (open)
            CloseMeasuring(*measuring, false);
    }
    for (const QString& text : std::exchange(m_colWaitingErrors, {}))
        if (m_mainWindow)
            QMessageBox::warning(m_mainWindow.get(), m_sApplicationName, text);
    if (std::exchange(m_bTerminateWaiting, false) && m_mainWindow)
        m_mainWindow->close();
}

void Project::UpdateToolStates()
{
    if (!m_mainWindow || m_bBarBusy)
        return;
    const Measuring* active = GetActiveMeasuring();
    const bool document = active != nullptr;
    for (const char* name : { "mnuFileClose", "mnuFileSave", "mnuFileSaveAs", "mnuFileExport", "mnuEditChannel",
             "mnuEditMeasuring" })
        if (QAction* tool = m_mainWindow->Tool(QLatin1String(name)))
            tool->setEnabled(document);
    if (QAction* tool = m_mainWindow->Tool(QStringLiteral("mnuEditCurve")))
        tool->setEnabled(active && active->CurrentCurve());
}

bool Project::CloseMeasuring(Measuring& measuring, bool force)
{
    Q_UNUSED(force);
    if (measuring.Refreshing()) {
        if (std::find(m_colWaitingCloses.begin(), m_colWaitingCloses.end(), &measuring) == m_colWaitingCloses.end())
            m_colWaitingCloses.push_back(&measuring);
        return false;
    }
    bool close = true;
    if (!measuring.Temporary()) {
        const double choice = Settings::Number(Settings::Id::OnCloseMeasuring);
        if (choice == 0) {
            close = SaveMeasuring(false, &measuring);
        } else if (choice != 1 && measuring.Changed()) {
            const auto answer = QMessageBox::warning(m_mainWindow.get(), m_sApplicationName, GetResString(489),
                QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
            if (answer == QMessageBox::Yes)
                close = SaveMeasuring(false, &measuring);
            else
                close = answer == QMessageBox::No;
        }
    }
    if (close)
        DropMeasuring(measuring);
    UpdateToolStates();
    return close;
}

// --- documents

Measuring* Project::GetActiveMeasuring() const
{
    if (!m_mainWindow)
        return nullptr;
    // The current window stays current while the main window is inactive, unlike the active one.
    const QMdiSubWindow* window = m_mainWindow->MdiArea()->currentSubWindow();
    if (!window)
        return nullptr;
    for (const auto& measuring : m_colMeasurings)
        if (measuring->Window() == window->widget())
            return measuring.get();
    return nullptr;
}

Measuring* Project::OpenMeasuring(const QString& fileName, bool temporary)
{
    auto measuring = std::make_unique<Measuring>(*this);
    if (measuring->Init() != 0) {
        UpdateToolStates();
        return nullptr;
    }
    measuring->SetID(QString::number(m_colMeasurings.size())
        + QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMddhhmmss")));
    QString path = fileName;
    if (path.isEmpty()) {
        QString title = GetResString(398);
        title.replace(QLatin1Char('@'), m_sApplicationName);
        path = QFileDialog::getOpenFileName(m_mainWindow.get(), title, QString(), GetResString(304));
        if (path.isEmpty()) {
            UpdateToolStates();
            return nullptr;
        }
    }
    // One spelling per file, so that a file is recognised as open whichever way it was named.
    path = QFileInfo(path).absoluteFilePath();
    if (!temporary) {
        for (const auto& open : m_colMeasurings) {
            if (open->FileName() != path)
                continue;
            if (auto* window = qobject_cast<QMdiSubWindow*>(open->Window()->parentWidget()))
                m_mainWindow->MdiArea()->setActiveSubWindow(window);
            UpdateToolStates();
            return open.get();
        }
    }
    if (!QFileInfo(path).isFile()) {
        WriteLog(QStringLiteral("open measuring"),
            QStringLiteral("The file ") + path + QStringLiteral(" does not exist."),
            QStringLiteral("Project.OpenMeasuring"), LogLevel::Error);
        UpdateToolStates();
        return nullptr;
    }
    measuring->SetTemporary(temporary);
    // Closes that came in during a refresh run once the code that refreshed has returned.
    connect(measuring.get(), &Measuring::RefreshEnded, this, &Project::RunWaitingCloses, Qt::QueuedConnection);
    // In the list while it loads, so that an end of the program waits for its refresh.
    Measuring* opened = measuring.get();
    m_colMeasurings.push_back(std::move(measuring));
    if (opened->OpenFile(path, true) != 0) {
        DropMeasuring(*opened);
        UpdateToolStates();
        return nullptr;
    }
    if (!temporary)
        ShowInWindow(*opened);
    UpdateToolStates();
    return opened;
}

void Project::ShowInWindow(Measuring& measuring)
{
    frm_GraphicView* view = measuring.Window();
    if (!m_mainWindow) {
        view->show();
        return;
    }
    // The view belongs to its Measuring: the frame must not delete it on close, and goes
    // when the view has gone.
    auto* frame = new QMdiSubWindow;
    frame->setAttribute(Qt::WA_DeleteOnClose, false);
    frame->setWidget(view);
    connect(view, &QObject::destroyed, frame, &QObject::deleteLater);
    QMdiArea* area = m_mainWindow->MdiArea();
    // The first view fills the document area, and so does one opened while the current one
    // fills it; others open at four fifths of the area, cascading.
    QMdiSubWindow* current = area->activeSubWindow();
    const bool fill = area->subWindowList().isEmpty() || (current && current->isMaximized());
    area->addSubWindow(frame);
    const QSize room = area->viewport()->size();
    if (room.width() > 200 && room.height() > 150)
        frame->resize(room.width() * 4 / 5, room.height() * 4 / 5);
    if (fill)
        frame->showMaximized();
    else
        frame->show();
    view->show();
    area->setActiveSubWindow(frame);
}

bool Project::SaveMeasuring(bool saveAs, Measuring* measuring)
{
    if (!measuring)
        measuring = GetActiveMeasuring();
    bool saved = false;
    QString target;
    if (measuring && !measuring->FileName().isEmpty() && !saveAs) {
        target = measuring->FileName();
        saved = measuring->SaveFile(QString(), false) == 0;
    } else if (measuring) {
        QString title = GetResString(399);
        title.replace(QLatin1Char('@'), m_sApplicationName);
        const QString proposal = (measuring->DefaultPath().isEmpty() ? QString() : measuring->DefaultPath() + u'/')
            + measuring->Name() + QStringLiteral(".sor");
        QFileDialog dialog(m_mainWindow.get(), title, proposal, GetResString(304));
        dialog.setAcceptMode(QFileDialog::AcceptSave);
        dialog.setDefaultSuffix(QStringLiteral("sor"));
        if (dialog.exec() == QDialog::Accepted && !dialog.selectedFiles().isEmpty()) {
            target = dialog.selectedFiles().front();
            saved = measuring->SaveFile(target, false) == 0;
        }
    }
    // A save that was tried and failed is said: the changes are not on disk.
    if (!saved && !target.isEmpty())
        QMessageBox::warning(m_mainWindow.get(), m_sApplicationName,
            GetResString(493).replace(QStringLiteral("%s"), QDir::toNativeSeparators(target)));
    UpdateToolStates();
    return saved;
}

void Project::ExportMeasuring(Measuring* measuring)
{
    if (!measuring)
        measuring = GetActiveMeasuring();
    if (measuring)
        measuring->ExportFile();
    UpdateToolStates();
}

bool Project::CloseMeasuring(Measuring* measuring)
{
    if (!measuring)
        measuring = GetActiveMeasuring();
    if (!measuring) {
        UpdateToolStates();
        return false;
    }
    return CloseMeasuring(*measuring, false);
}

void Project::DropMeasuring(Measuring& measuring)
{
    const auto found = std::find_if(
        m_colMeasurings.begin(), m_colMeasurings.end(), [&](const auto& open) { return open.get() == &measuring; });
    if (found == m_colMeasurings.end())
        return;
    if (auto* window = qobject_cast<QMdiSubWindow*>(measuring.Window()->parentWidget()))
        window->hide();
    m_colDropped.push_back(std::move(*found));
    m_colMeasurings.erase(found);
    QTimer::singleShot(0, this, &Project::DeleteDropped);
}

void Project::DeleteDropped()
{
    m_colDropped.clear();
}
