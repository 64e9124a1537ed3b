// SPDX-License-Identifier: GPL-3.0-or-later
// Where the program finds itself, writes its data, and keeps its machine-wide settings.
#pragma once

#include <QString>
#include <QStringList>

namespace AppPaths {

// The folder of the executable.
QString ProgramFolder();

// Where plug-ins of a kind ("modules", "addins") are looked for: each folder of the environment
// variable (separated as PATH is on the platform), then the kind's folder beside the program,
// then "../lib/sorano/<kind>" from the program's folder.
QStringList PluginFolders(const char* variable, const QString& kind);

// The loadable libraries in the folders, in folder order and by name within a folder; a folder
// named twice is read once.
QStringList PluginFiles(const QStringList& folders);

// The per-user application data folder (log, profiles, batches, bar layout), created on
// demand. Settings that name a path override it.
QString DataFolder();

// The machine-wide settings of an installation or a build tree live in "../etc/xdg" beside
// the executable's folder when that folder exists; otherwise the system's default place.
// SORANO_MACHINE_SETTINGS names another folder. Call once at start, before any setting is read.
void UseInstalledSettingsRoots();

} // namespace AppPaths
