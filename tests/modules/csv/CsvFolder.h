// SPDX-License-Identifier: GPL-3.0-or-later
// Fixtures of the CSV module tests: a folder tree and a module reading it.
#pragma once

#include "../ModuleTestKit.h"
#include "Calendar.h"
#include "CsvDataModule.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

class CsvFolder
{
public:
    QString Root() const { return m_dir.path(); }
    QString Path(const QString& relative) const { return m_dir.filePath(relative); }
    // Writes the file, making its folders; returns its path.
    QString Write(const QString& relative, const QByteArray& content) const
    {
        QDir().mkpath(QFileInfo(Path(relative)).absolutePath());
        QFile file(Path(relative));
        const bool written
            = file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(content) == content.size();
        return written ? Path(relative) : QString();
    }

private:
    QTemporaryDir m_dir;
};

// A module reading a folder (given as Initialize's param), with its handler.
struct ModuleOn
{
    explicit ModuleOn(const QString& root)
    {
        module.SetMessageHandler(&log);
        module.Initialize(root, status);
    }
    // The id of the channel of that name in the file of that name (without ".csv").
    QString Id(const QString& file, const QString& channel)
    {
        QStringList categories, channels;
        qint32 structureStatus = 0;
        module.GetChannelStructure(categories, channels, structureStatus);
        const QString fileId = categories.filter("$" + file + "$").value(0).section('$', 0, 0);
        for (const QString& entry : channels)
            if (entry.section('$', 3, 3) == fileId && entry.section('$', 1, 1) == channel)
                return entry.section('$', 0, 0);
        return QString();
    }

    RecordingHandler log;
    CsvDataModule module { DataModuleRegistration { "Logger", "7" } };
    qint32 status = 0;
};

inline double D(int year, int month, int day, int hour = 0, int minute = 0, double second = 0.0)
{
    return Calendar::FromParts(year, month, day, hour, minute, second);
}
