// SPDX-License-Identifier: GPL-3.0-or-later
#include "DriveProbe.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>

namespace {

// The nearest folder of the path that exists: the file itself usually does not yet.
QString ExistingFolder(const QString& path)
{
    QFileInfo info(path);
    QDir folder = info.isDir() ? QDir(path) : info.absoluteDir();
    while (!folder.exists() && folder.cdUp()) { }
    return folder.absolutePath();
}

} // namespace

bool DriveProbe::IsRemovable(const QString& path) const
{
    const QStorageInfo storage(ExistingFolder(path));
    if (!storage.isValid())
        return false;
    // "/dev/sdb1" -> the block device "sdb", whose "removable" flag the kernel keeps.
    QString device = QFileInfo(QString::fromLocal8Bit(storage.device())).canonicalFilePath();
    if (!device.startsWith(QLatin1String("/dev/")))
        return false;
    QString name = device.mid(5);
    QFile flag;
    for (;;) {
        flag.setFileName(QStringLiteral("/sys/block/") + name + QStringLiteral("/removable"));
        if (flag.exists() || name.isEmpty())
            break;
        name.chop(1); // a partition number, and the "p" of "mmcblk0p1"
        if (name.endsWith(QLatin1Char('p')) && name.size() > 1 && name.at(name.size() - 2).isDigit())
            name.chop(1);
    }
    if (!flag.open(QIODevice::ReadOnly))
        return false;
    return flag.readAll().trimmed() == "1";
}

bool DriveProbe::HasLoggerFiles(const QString& path) const
{
    const QStorageInfo storage(ExistingFolder(path));
    if (!storage.isValid())
        return false;
    const QDir root(storage.rootPath());
    // Name filters match regardless of case: "*.DAT" finds "log.dat" too.
    return !root.entryList({ QStringLiteral("*.DAT") }, QDir::Files, QDir::NoSort).isEmpty();
}
