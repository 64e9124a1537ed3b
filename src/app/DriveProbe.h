// SPDX-License-Identifier: GPL-3.0-or-later
// What the save dialog asks about the drive a file would land on: a data logger's memory card
// is a removable drive with the logger's "*.DAT" files, and no view may be saved there.
#pragma once

#include <QString>

class DriveProbe
{
public:
    virtual ~DriveProbe() = default;
    // True when the file system holding the path sits on a removable device.
    virtual bool IsRemovable(const QString& path) const;
    // True when the root of the file system holding the path has a "*.DAT" file.
    virtual bool HasLoggerFiles(const QString& path) const;

    // Both signs together: the drive is the logger's memory card.
    bool IsLoggerCard(const QString& path) const { return IsRemovable(path) && HasLoggerFiles(path); }
};
