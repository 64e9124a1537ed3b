// SPDX-License-Identifier: GPL-3.0-or-later
// What Project does around the commands: the toolbar layout file, the recent files in the
// file menu, the splash and start-up window, the options and the about box, and the tools
// add-ins bring.
#include "Project.h"

#include "AppPaths.h"
#include "Curve.h"
#include "Help.h"
#include "Measuring.h"
#include "ProfileFileHandler.h"
#include "RecentList.h"
#include "ResStrings.h"
#include "Settings.h"
#include "ToolRegistry.h"
#include "frm_Info.h"
#include "frm_Main.h"
#include "frm_Options.h"
#include "frm_Profiles.h"
#include "frm_Splash.h"
#include "frm_Startup.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMessageBox>

void Project::AddBand(const QString& name, int type)
{
    if (m_cBar)
        m_cBar->AddBand(name, type);
}

void Project::AddTool(const QString& band, const QString& name, int type, const QString& caption,
    const QString& category, const QString& shortcut, const QString& icon, const QString& band2, int index)
{
    if (m_cBar)
        m_cBar->AddTool(band, name, type, caption, category, shortcut, icon, band2, index);
}

void Project::ShowHelp(int contextId)
{
    ::ShowHelp(contextId, m_mainWindow.get());
}

void Project::PersistBarLayout(bool restore)
{
    if (!m_cBar)
        return;
    // One arrangement per user name, in the program's data folder.
    const QString path = QDir(AppPaths::DataFolder()).filePath(Settings::Value(Settings::Id::LastUsername) + ".ab");
    if (restore)
        m_cBar->RestoreLayout(path);
    else
        m_cBar->SaveLayout(path);
}

void Project::Remember(const QString& path)
{
    if (!m_cRecentList)
        return;
    RecentFile file;
    file.SetFile(path, false);
    if (file.Name().isEmpty())
        return;
    m_cRecentList->AddFile(file, -1, 5);
    RebuildRecentMenu();
}

void Project::RebuildRecentMenu()
{
    if (!m_cBar || !m_cBar->HasBand(QStringLiteral("mnuFile")))
        return;
    const bool busy = std::exchange(m_bBarBusy, true);
    const QString band = QStringLiteral("mnuFile");
    for (const QString& name : m_cBar->ToolsOf(band))
        if (name.startsWith(QLatin1String("mnuRecent")) || name == QLatin1String("mnuExit")
            || name == QLatin1String("mnuFileSep99"))
            m_cBar->RemoveTool(band, name);
    const QString category = GetResString(205);
    // The newest file stands last in the list and first in the menu.
    const int count = m_cRecentList ? m_cRecentList->Count() : 0;
    for (int n = count; n >= 1; --n) {
        const QString name = QStringLiteral("mnuRecent") + QString::number(n);
        QAction* tool = m_cBar->Tool(name);
        const QString caption = m_cRecentList->Item(n)->GetShortName(30);
        if (tool)
            tool->setText(caption);
        tool = m_cBar->AddTool(band, name, ToolRegistry::ButtonTool, caption, category, {}, {});
        tool->setData(n);
        tool->setToolTip(QDir::toNativeSeparators(m_cRecentList->Item(n)->FullName()));
    }
    m_cBar->AddTool(band, QStringLiteral("mnuFileSep99"), ToolRegistry::SeparatorTool, {}, {}, {}, {});
    m_cBar->AddTool(band, QStringLiteral("mnuExit"), ToolRegistry::ButtonTool, GetResString(214), category,
        QStringLiteral("Q"), {});
    m_bBarBusy = busy;
}

void Project::OpenRecent(const QString& tool)
{
    const QAction* action = m_cBar ? m_cBar->Tool(tool) : nullptr;
    const int tag = action ? action->data().toInt() : 0;
    if (!m_cRecentList || tag <= 0 || tag > m_cRecentList->Count())
        return;
    // Lists written elsewhere may separate folders with "\\".
    const QString path = QString(m_cRecentList->Item(tag)->FullName()).replace(QLatin1Char('\\'), QLatin1Char('/'));
    if (!QFileInfo(path).isFile()) {
        // A file gone since it was listed is said and leaves the list.
        QMessageBox::warning(m_mainWindow.get(), m_sApplicationName,
            GetResString(487).replace(QStringLiteral("%s"), QDir::toNativeSeparators(path)));
        m_cRecentList->Remove(tag);
        RebuildRecentMenu();
        return;
    }
    OpenMeasuring(path, false);
}

void Project::ShowStartWindows()
{
    if (Settings::IsTrue(Settings::Id::ShowSplashScreen)) {
        frm_Splash splash(m_mainWindow.get());
        splash.ShowMe();
    }
    if (!Settings::IsTrue(Settings::Id::ShowStartupWindow))
        return;
    int action = 0;
    {
        frm_Startup startup(m_sApplicationName, m_mainWindow.get());
        // The online visualisation comes with an add-in.
        startup.SetActionEnabled(4, m_cBar && m_cBar->Tool(QStringLiteral("mnuOnlinePELTRIX")));
        action = startup.ShowMe();
    }
    switch (action) {
    case 1:
        NewMeasuring();
        break;
    case 2:
        OpenMeasuring(QString(), false);
        break;
    case 3:
        ConfigureDataModules();
        break;
    case 4:
        if (m_cBar && m_cBar->Tool(QStringLiteral("mnuOnlinePELTRIX")))
            ToolClick(QStringLiteral("mnuOnlinePELTRIX"));
        break;
    default:
        break;
    }
}

void Project::ShowOptions()
{
    frm_Options options(m_mainWindow.get());
    if (!options.ShowMe())
        return;
    // Open views take the new settings over, and the new statistic formats when they changed.
    for (const auto& measuring : m_colMeasurings) {
        measuring->ReloadSettings();
        if (!options.IndizesChanged())
            continue;
        for (const auto& curve : measuring->Curves()) {
            curve->UpdateStatisticFormats();
            curve->UpdateStatistic(nullptr);
        }
    }
}

void Project::ManageProfiles()
{
    frm_Profiles dialog(m_mainWindow.get());
    dialog.SetProfiles(&m_colProfiles);
    dialog.SetDataModules(m_colDataModules);
    dialog.SetHelpHandler([&dialog](int context) { ::ShowHelp(context, &dialog); });
    if (!dialog.ShowMe())
        return;
    ProfileFileHandler handler;
    handler.SetProfiles(&m_colProfiles);
    const QString path = Settings::Value(Settings::Id::Profiles);
    if (handler.Save(path) != ProfileFileHandler::Ok)
        QMessageBox::warning(m_mainWindow.get(), m_sApplicationName,
            GetResString(493).replace(QStringLiteral("%s"), QDir::toNativeSeparators(path)));
}

void Project::ShowAbout()
{
    frm_Info info(m_mainWindow.get());
    info.ShowMe(m_sApplicationName);
}
