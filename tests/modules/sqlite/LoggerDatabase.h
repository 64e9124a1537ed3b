// SPDX-License-Identifier: GPL-3.0-or-later
// Fixtures of the SQLite module tests: logger databases written with the module's schema, and a
// message handler that records what the module reports.
#pragma once

#include "DataModuleInterface.h"
#include "QtPrinters.h"
#include "SqliteHandles.h"

#include <QByteArray>
#include <QString>

#include <algorithm>
#include <vector>

// A read-write connection to the file, as a logger process holds it.
SqliteConnection OpenWriter(const QString& path, int flags = SQLITE_OPEN_READWRITE);
// Creates the file, with the module's empty schema unless schema is false, and runs sql in it.
void WriteDatabase(const QString& path, const QString& sql, bool schema = true);
QByteArray FileBytes(const QString& path);
// A collection as the program passes it: one channel object per id, keyed by the id.
ChannelCollection Request(const QStringList& ids);

// A small site: categories listed children first, a child channel, a channel without samples,
// a NULL sample, and channels of two resolutions.
namespace SiteFixture {
constexpr double Day = 45658.0; // 2025-01-01
constexpr double Quarter = 1.0 / 96.0;
constexpr double Minute = 1.0 / 1440.0;
constexpr int PowerSamples = 10; // channel 301, every 15 minutes from Day, value 1.5 * k
constexpr int NullSample = 4; // channel 301: NULL at Day + 4 quarters
constexpr int CosPhiSamples = 5; // channel 302, every minute from Day, value 0.05 - 0.02 * k
QString Sql();
// Writes the site to a new file; returns its path.
QString Write(const QString& path);
} // namespace SiteFixture

class RecordingHandler : public MessageHandlerInterface
{
public:
    struct LogLine
    {
        QString text, source;
        qint16 level;
    };

    void SendMessage(const QString& name, const QString& params, qint32& status) override
    {
        messages.emplace_back(name, params);
        status = 1;
    }
    void WriteLog(const QString&, const QString& text, const QString& source, qint16 level) override
    {
        lines.push_back({ text, source, level });
    }
    // Lines at the level or above.
    int CountAtLeast(qint16 level) const
    {
        return static_cast<int>(std::count_if(lines.begin(), lines.end(), [&](auto& l) { return l.level >= level; }));
    }

    std::vector<LogLine> lines;
    std::vector<std::pair<QString, QString>> messages;
};
