// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppPaths.h"

#include <QCoreApplication>
#include <QDir>
#include <QSettings>
#include <QStandardPaths>

namespace AppPaths {

QString ProgramFolder()
{
    return QCoreApplication::applicationDirPath();
}

QString DataFolder()
{
    QString folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    if (folder.isEmpty())
        folder = QDir::homePath() + QLatin1String("/.sorano");
    QDir().mkpath(folder);
    return folder;
}

void UseInstalledSettingsRoots()
{
    QString machine = qEnvironmentVariable("SORANO_MACHINE_SETTINGS");
    if (machine.isEmpty()) {
        const QString besideProgram = QDir::cleanPath(ProgramFolder() + QLatin1String("/../etc/xdg"));
        if (QDir(besideProgram).exists())
            machine = besideProgram;
    }
    if (!machine.isEmpty())
        QSettings::setPath(QSettings::IniFormat, QSettings::SystemScope, machine);
}

} // namespace AppPaths
