// SPDX-License-Identifier: GPL-3.0-or-later
// Fixture helper: the process's log goes into a fresh file of the temporary settings folder
// for the life of the object, writing the lines of one level and above.
#pragma once

#include "Logging.h"
#include "TempSettings.h"

#include <QDir>
#include <QFile>
#include <QStringList>

#include <memory>

class LogCapture
{
public:
    explicit LogCapture(TempSettings& roots, int lowestLevel = 1)
    {
        const QString folder = roots.Path() + "/log" + QString::number(++s_count);
        QDir().mkpath(folder);
        roots.SetMachine("Software\\HARVOLD\\Sorano\\Settings", "LogPath", folder);
        roots.SetMachine("Software\\HARVOLD\\Sorano\\Settings", "LogMode", QString::number(lowestLevel));
        m_log = std::make_unique<Logging>();
        m_previous = g_cLogging;
        g_cLogging = m_log.get();
    }
    ~LogCapture() { g_cLogging = m_previous; }

    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    QStringList Lines() const
    {
        QFile file(m_log->FileName());
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts);
    }
    // How many lines read "<date> <source>: <title> - <text>".
    int Count(const QString& source, const QString& title, const QString& text) const
    {
        const QString tail = ' ' + source + ": " + title + " - " + text;
        int count = 0;
        for (const QString& line : Lines())
            count += line.endsWith(tail) ? 1 : 0;
        return count;
    }
    // "<title> - <text>" of every line of that source, in order.
    QStringList From(const QString& source) const
    {
        const QString marker = ' ' + source + ": ";
        QStringList found;
        for (const QString& line : Lines())
            if (const qsizetype at = line.indexOf(marker); at >= 0)
                found << line.mid(at + marker.size());
        return found;
    }
    bool Has(const QString& source, const QString& title, const QString& text) const
    {
        return Count(source, title, text) > 0;
    }
    std::string Dump() const { return Lines().join('\n').toStdString(); }

private:
    static inline int s_count = 0;
    std::unique_ptr<Logging> m_log;
    Logging* m_previous = nullptr;
};
