// SPDX-License-Identifier: GPL-3.0-or-later
// Where the program finds itself, writes its data, and keeps its machine-wide settings.
#pragma once

#include <QString>

namespace AppPaths {

// The folder of the executable.
QString ProgramFolder();

// The per-user application data folder (log, profiles, batches, bar layout), created on
// demand. Settings that name a path override it.
QString DataFolder();

// The machine-wide settings of an installation or a build tree live in "../etc/xdg" beside
// the executable's folder when that folder exists; otherwise the system's default place.
// SORANO_MACHINE_SETTINGS names another folder. Call once at start, before any setting is read.
void UseInstalledSettingsRoots();

} // namespace AppPaths
