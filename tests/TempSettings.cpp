// SPDX-License-Identifier: GPL-3.0-or-later
#include "TempSettings.h"

#include <QSettings>

TempSettings::TempSettings()
{
    QSettings::setPath(QSettings::IniFormat, QSettings::SystemScope, MachineDir());
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, UserDir());
}

TempSettings::~TempSettings() = default;

static void WriteInto(QSettings::Scope scope, const QString& key, const QString& name, const QString& value)
{
    QSettings s(QSettings::IniFormat, scope, "HARVOLD", "Sorano");
    QString group = key;
    group.replace('\\', '/');
    s.setValue(group + "/" + name, value);
    s.sync();
}

void TempSettings::SetMachine(const QString& key, const QString& name, const QString& value)
{
    WriteInto(QSettings::SystemScope, key, name, value);
}

void TempSettings::SetUser(const QString& key, const QString& name, const QString& value)
{
    WriteInto(QSettings::UserScope, key, name, value);
}
