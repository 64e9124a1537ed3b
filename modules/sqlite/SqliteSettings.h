// SPDX-License-Identifier: GPL-3.0-or-later
// The settings of the SQLite module that the module and the demo data generator share: which
// database file a registration reads, per user, and where a user's demo database lives.
#pragma once

// Named from here: the demo data generator builds with this folder only.
#include "../ModuleSettings.h"
#include "AppPaths.h"
#include "RegistryKey.h"

#include <QString>

namespace SqliteSettings {

inline const QString DatabaseValue = QStringLiteral("Database");
inline const QString BusyTimeoutValue = QStringLiteral("BusyTimeout");

// The registration that the installation's machine-wide settings name for the demo data.
inline const QString DemoSource = QStringLiteral("Demo");
inline const QString DemoFileName = QStringLiteral("sorano-demo.sqlite");

// The user's own database file of a registration, without the machine-wide fallback.
inline QString UserDatabase(const QString& registrationName)
{
    RegistryKey key;
    return key.ReadValue(Hive::CurrentUser, ModuleSettings::Key(registrationName), DatabaseValue).trimmed();
}

// Stores the file as the user's database of a registration; an empty path hands the choice
// back to the machine-wide value. False when the user's settings could not be written.
inline bool StoreUserDatabase(const QString& registrationName, const QString& path)
{
    RegistryKey key;
    return key.WriteValue(Hive::CurrentUser, ModuleSettings::Key(registrationName), DatabaseValue, path.trimmed())
        == RegistryStatus::Ok;
}

// The demo database in the user's data folder of the program (created on demand). The folder
// follows the application's organisation and name, which the program and sorano-demodata both
// set to HARVOLD and Sorano.
inline QString UserDemoDatabase()
{
    return AppPaths::DataFolder() + QLatin1Char('/') + DemoFileName;
}

} // namespace SqliteSettings
