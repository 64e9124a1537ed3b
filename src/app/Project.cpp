// SPDX-License-Identifier: GPL-3.0-or-later
#include "Project.h"

#include "AddIns.h"
#include "AppPaths.h"
#include "BatchHost.h"
#include "BatchReport.h"
#include "DriveProbe.h"
#include "Globals.h"
#include "Help.h"
#include "IconList.h"
#include "Logging.h"
#include "Measuring.h"
#include "Numeric.h"
#include "ProfileFileHandler.h"
#include "RecentList.h"
#include "RegistryKey.h"
#include "ResStrings.h"
#include "Settings.h"
#include "ToolRegistry.h"
#include "ViewDialogs.h"
#include "frm_DataModules.h"
#include "frm_GraphicView.h"
#include "frm_Main.h"
#include "frm_Preview.h"

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
#include <QStyle>
#include <QTimer>
#include <QWidgetAction>

#include <algorithm>
#include <cmath>
#include <utility>

Project* g_cProject = nullptr;

Project::Project()
    : m_cAddIns(std::make_unique<AddIns>())
    , m_cRecentList(std::make_unique<RecentList>())
    , m_cDriveProbe(std::make_unique<DriveProbe>())
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
    InstallViewDialogs(*this);
    IconList::Init();
    m_mainWindow->SetCloseRequestHandler([this] { return Terminate(false); });
    m_cBar = new ToolRegistry(*m_mainWindow);
    m_cBar->SetIconSource(&IconList::Icon);
    connect(m_cBar, &ToolRegistry::ToolClicked, this, &Project::ToolClick);
    connect(m_cBar, &ToolRegistry::ComboClosed, this, &Project::ComboClose);
    connect(m_cBar, &ToolRegistry::WindowListRequested, this, &Project::FillWindowList);
    connect(m_mainWindow->MdiArea(), &QMdiArea::subWindowActivated, this, &Project::UpdateToolStates);

    m_sApplicationName = Settings::Value(Settings::Id::ApplicationName);
    m_mainWindow->setWindowTitle(m_sApplicationName);
    m_sHelpFile = AppPaths::ProgramFolder() + QLatin1Char('/') + m_sApplicationName + QLatin1String(".chm");

    LoadDataModules();
    LoadReports();
    LoadProfiles();
    BuildMenus();
    const qint32 addIns = m_cAddIns->Load(*this);
    PersistBarLayout(true);
    // A stored arrangement may hold the batch window in another state than the setting says,
    // and its caption with it: the setting decides, and the list is read again.
    if (m_cBatch) {
        m_cBatch->ShowWindow(Settings::Value(Settings::Id::ShowBatchWindow).trimmed() == QLatin1String("1"));
        m_cBatch->Reload();
    }
    m_cRecentList->Load();
    RebuildRecentMenu();

    ShowStatus(QString());
    m_mainWindow->ShowMe();
    UpdateToolStates();
    ShowStartWindows();
    return addIns;
}

bool Project::Terminate(bool force)
{
    if (m_bTerminated)
        return true;
    if (Busy()) {
        m_bTerminateWaiting = true;
        return false;
    }
    // The preview goes first, as a window of its own it would outlive the main window.
    if (m_cPreview) {
        m_cPreview->hide();
        m_cPreview.reset();
    }
    // The recent list is saved before anyone is asked and is gone after a refused end too.
    if (m_cRecentList && m_mainWindow) {
        m_cRecentList->Save();
        m_cRecentList.reset();
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
    m_colReports.Clear();
    if (m_mainWindow)
        PersistBarLayout(false);
    m_cAddIns->Terminate();
    TerminateBatch();
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

qint32 Project::LoadProfiles()
{
    ProfileCollection loaded;
    ProfileFileHandler handler;
    handler.SetProfiles(&loaded);
    if (handler.Load(Settings::Value(Settings::Id::Profiles)) == 0)
        m_colProfiles = std::move(loaded);
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
        dialog.SetHelpHandler([&dialog] { ::ShowHelp(1037, &dialog); });
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
    if (!m_mainWindow || !m_mainWindow->StatusLabel())
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
    const bool was = !m_bCommandsHeld;
    if (!m_mainWindow || enabled == was)
        return was;
    m_bCommandsHeld = !enabled;
    // The menu bar and every command with it, so that no shortcut gets through either; only
    // the commands that were on come back on.
    m_mainWindow->menuBar()->setEnabled(enabled);
    if (!enabled) {
        for (QAction* action : m_mainWindow->findChildren<QAction*>()) {
            // The status text stays readable while it reports the refresh.
            const auto* holder = qobject_cast<QWidgetAction*>(action);
            if (holder && qobject_cast<QLabel*>(holder->defaultWidget()))
                continue;
            if (!action->menu() && action->isEnabled()) {
                action->setEnabled(false);
                m_colHeldCommands.emplace_back(action);
            }
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
    if (!Busy())
        QTimer::singleShot(0, this, &Project::RunWaitingCloses);
}

bool Project::Busy() const
{
    return m_bPrinting || m_bBatchBusy || std::any_of(m_colMeasurings.begin(), m_colMeasurings.end(), [](const auto& measuring) {
        return measuring->Refreshing();
    });
}

void Project::RunWaitingCloses()
{
    if (Busy())
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

bool Project::CloseMeasuring(Measuring& measuring, bool force)
{
    Q_UNUSED(force);
    if (measuring.Refreshing() || m_bPrinting) {
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

Measuring* Project::NewMeasuring()
{
    auto measuring = std::make_unique<Measuring>(*this);
    if (measuring->Init() != 0)
        return nullptr;
    measuring->SetID(QString::number(m_colMeasurings.size())
        + QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMddhhmmss")));
    connect(measuring.get(), &Measuring::RefreshEnded, this, &Project::RunWaitingCloses, Qt::QueuedConnection);
    // In the list while the wizard and the first refresh run, so that an end of the program
    // waits for them.
    Measuring* created = measuring.get();
    m_colMeasurings.push_back(std::move(measuring));
    if (created->CreateFile() != 0) {
        DropMeasuring(*created);
        UpdateToolStates();
        return nullptr;
    }
    ShowInWindow(*created);
    SendMessage(QStringLiteral("SORANO_MEASURING_NEW"), created->ID());
    UpdateToolStates();
    return created;
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
        path = QFileDialog::getOpenFileName(
            m_mainWindow.get(), title, Settings::Value(Settings::Id::LastFolder), GetResString(304));
        if (path.isEmpty()) {
            UpdateToolStates();
            return nullptr;
        }
        Settings::Write(Settings::Id::LastFolder, QFileInfo(path).absolutePath());
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
    if (!temporary) {
        ShowInWindow(*opened);
        Remember(path);
    }
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
    if (fill) {
        frame->showMaximized();
    } else {
        // Cascading from the top left, always wholly inside the area, title bar included.
        const int step = frame->style()->pixelMetric(QStyle::PM_TitleBarHeight) + 4;
        const int offset = step * int(area->subWindowList().size() - 1);
        const int x = std::max(0, room.width() - frame->width());
        const int y = std::max(0, room.height() - frame->height());
        frame->move(x > 0 ? offset % (x + 1) : 0, y > 0 ? offset % (y + 1) : 0);
        frame->show();
    }
    view->show();
    area->setActiveSubWindow(frame);
}

QString Project::ProposedSaveName(const Measuring& measuring) const
{
    const QString file = measuring.Name() + QStringLiteral(".sor");
    if (!measuring.DefaultPath().isEmpty())
        return QDir(measuring.DefaultPath()).filePath(file);
    // The folder of the file opened or saved last, else the one chosen last in any dialog.
    if (m_cRecentList && m_cRecentList->Count() > 0)
        return QDir(QString(m_cRecentList->Item(m_cRecentList->Count())->Path()).replace(u'\\', u'/')).filePath(file);
    const QString last = Settings::Value(Settings::Id::LastFolder);
    return last.isEmpty() ? file : QDir(last).filePath(file);
}

void Project::SetDriveProbe(std::unique_ptr<DriveProbe> probe)
{
    m_cDriveProbe = std::move(probe);
}

bool Project::SaveMeasuring(bool saveAs, Measuring* measuring)
{
    if (!measuring)
        measuring = GetActiveMeasuring();
    bool saved = false;
    QString target;
    const QString before = measuring ? measuring->FileName() : QString();
    if (measuring && !measuring->FileName().isEmpty() && !saveAs) {
        target = measuring->FileName();
        saved = measuring->SaveFile(QString(), false) == 0;
    } else if (measuring) {
        QString title = GetResString(399);
        title.replace(QLatin1Char('@'), m_sApplicationName);
        QFileDialog dialog(m_mainWindow.get(), title, ProposedSaveName(*measuring), GetResString(304));
        dialog.setObjectName(QStringLiteral("dlg_SaveMeasuring"));
        dialog.setAcceptMode(QFileDialog::AcceptSave);
        dialog.setDefaultSuffix(QStringLiteral("sor"));
        QString chosen;
        // A logger's memory card is refused, and the dialog comes again.
        while (dialog.exec() == QDialog::Accepted && !dialog.selectedFiles().isEmpty()) {
            chosen = dialog.selectedFiles().front();
            if (!m_cDriveProbe->IsLoggerCard(chosen))
                break;
            const bool english = g_lLangOffset >= 1000;
            QMessageBox::warning(m_mainWindow.get(),
                english ? QStringLiteral("Save measuring file") : QStringLiteral("Messungsdatei speichern"),
                english ? QStringLiteral("The drive you selected is your logger's memory card. Views cannot be "
                                         "saved on this card. Please select another drive!")
                        : QStringLiteral("Bei dem von Ihnen ausgewählten Laufwerk handelt es sich um Ihre "
                                         "QRT9-Speicherkarte. Sie können auf dieser Karte keine Messungsansichten "
                                         "speichern. Bitte wählen Sie ein anderes Laufwerk aus!"));
            chosen.clear();
        }
        if (!chosen.isEmpty()) {
            target = chosen;
            Settings::Write(Settings::Id::LastFolder, QFileInfo(chosen).absolutePath());
            saved = measuring->SaveFile(target, false) == 0;
            if (saved)
                Remember(measuring->FileName());
        }
    }
    // A save that was tried and failed is said: the changes are not on disk.
    if (!saved && !target.isEmpty())
        QMessageBox::warning(m_mainWindow.get(), m_sApplicationName,
            GetResString(493).replace(QStringLiteral("%s"), QDir::toNativeSeparators(target)));
    UpdateToolStates();
    // A template of a batch saved under another name in the batch folder stays in its batch.
    if (saved && m_cBatch && !before.isEmpty() && before != measuring->FileName())
        m_cBatch->FileChanged(before, measuring->FileName());
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
