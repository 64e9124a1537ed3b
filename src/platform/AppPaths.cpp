// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppPaths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLibrary>
#include <QSet>
#include <QSettings>
#include <QStandardPaths>

namespace AppPaths {

QString ProgramFolder()
{
    return QCoreApplication::applicationDirPath();
}

QStringList PluginFolders(const char* variable, const QString& kind)
{
    QStringList folders;
    for (const QString& folder : qEnvironmentVariable(variable).split(QDir::listSeparator(), Qt::SkipEmptyParts))
        folders << QDir::cleanPath(folder);
    const QString program = ProgramFolder();
    folders << QDir::cleanPath(program + QLatin1Char('/') + kind);
    folders << QDir::cleanPath(program + QLatin1String("/../lib/sorano/") + kind);
    return folders;
}

QStringList PluginFiles(const QStringList& folders)
{
    QStringList files;
    QSet<QString> seen;
    for (const QString& folder : folders) {
        const QFileInfo info(folder);
        if (!info.isDir() || seen.contains(info.canonicalFilePath()))
            continue;
        seen.insert(info.canonicalFilePath());
        for (const QFileInfo& file :
            QDir(folder).entryInfoList(QDir::Files | QDir::Readable, QDir::Name | QDir::IgnoreCase))
            if (QLibrary::isLibrary(file.absoluteFilePath()))
                files << file.absoluteFilePath();
    }
    return files;
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
