// SPDX-License-Identifier: GPL-3.0-or-later
// Settings of the shipped data modules: one key per registration, a per-user value taking
// precedence over the machine-wide one, and the program's language choice.
#pragma once

#include "Numeric.h"
#include "RegistryKey.h"

#include <QString>

namespace ModuleSettings {

// The settings key of one registration, by its name.
inline QString Key(const QString& registrationName)
{
    return QStringLiteral("Software\\HARVOLD\\ModuleSettings\\") + registrationName;
}

// The user's value, or the machine-wide one when the user has none; blanks around removed.
inline QString Read(const QString& registrationName, const QString& valueName)
{
    RegistryKey key;
    const QString user = key.ReadValue(Hive::CurrentUser, Key(registrationName), valueName).trimmed();
    if (!user.isEmpty())
        return user;
    return key.ReadValue(Hive::LocalMachine, Key(registrationName), valueName).trimmed();
}

// A switch: off for "0", "false", "no" or "off" in any case, else (also when unset) as fallback
// for an empty value and on for anything else.
inline bool ReadSwitch(const QString& registrationName, const QString& valueName, bool fallback)
{
    const QString text = Read(registrationName, valueName).toLower();
    if (text.isEmpty())
        return fallback;
    return !(text == QLatin1String("0") || text == QLatin1String("false") || text == QLatin1String("no")
        || text == QLatin1String("off"));
}

// A whole number above 0, or fallback for anything else.
inline int ReadPositive(const QString& registrationName, const QString& valueName, int fallback)
{
    bool ok = false;
    const int number = Read(registrationName, valueName).toInt(&ok);
    return ok && number > 0 ? number : fallback;
}

// Whether the program runs with its English texts (language offset 1000).
inline bool UseEnglish()
{
    RegistryKey key;
    return LeadingNumber(key.ReadValue(Hive::LocalMachine, "Software\\HARVOLD\\Sorano\\Settings", "LangOffset"))
        == 1000.0;
}

} // namespace ModuleSettings
