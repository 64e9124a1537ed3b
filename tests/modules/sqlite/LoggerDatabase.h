// SPDX-License-Identifier: GPL-3.0-or-later
// Fixtures of the SQLite module tests: logger databases written with the module's schema, and a
// message handler that records what the module reports.
#pragma once

#include "DataModuleInterface.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <ostream>
#include <vector>

struct sqlite3;

class LoggerDatabase
{
public:
    // Creates the file with the empty schema (or, with schema false, an empty database).
    explicit LoggerDatabase(const QString& path, bool schema = true);
    ~LoggerDatabase();
    LoggerDatabase(const LoggerDatabase&) = delete;
    LoggerDatabase& operator=(const LoggerDatabase&) = delete;

    void Exec(const QString& sql);
    void AddCategory(
        qint64 id, const QString& name, const QString& remark, qint64 parent, const QString& kind, qint64 pathId = 0);
    void AddChannel(qint64 id, const QString& name, const QString& unit, int dataType, qint64 category,
        qint64 parentChannel = 0, qint64 pathId = 0);
    // No value stores NULL: a known gap.
    void AddSample(qint64 channel, double time, std::optional<double> value);
    void SetInfo(const QString& key, const QString& value);
    void Close();

    const QString& Path() const { return m_path; }
    sqlite3* Handle() const { return m_db; }

private:
    QString m_path;
    sqlite3* m_db = nullptr;
};

// A small site: categories listed children first, a child channel, a channel without samples,
// a NULL sample, and channels of two resolutions (see LoggerDatabase.cpp).
namespace SiteFixture {
constexpr double Day = 45658.0; // 2025-01-01
constexpr double Quarter = 1.0 / 96.0;
constexpr double Minute = 1.0 / 1440.0;
constexpr int PowerSamples = 10; // channel 301, every 15 minutes from Day, value 1.5 * k
constexpr int NullSample = 4; // channel 301: NULL at Day + 4 quarters
constexpr int CosPhiSamples = 5; // channel 302, every minute from Day
void Write(LoggerDatabase& db);
} // namespace SiteFixture

class RecordingHandler : public MessageHandlerInterface
{
public:
    struct LogLine
    {
        QString title, text, source;
        qint16 level;
    };

    void SendMessage(const QString& name, const QString& params, qint32& status) override;
    void WriteLog(const QString& title, const QString& text, const QString& source, qint16 level) override;

    // Lines at the level or above.
    int CountAtLeast(qint16 level) const;

    std::vector<LogLine> lines;
    std::vector<std::pair<QString, QString>> messages;
};

QByteArray FileBytes(const QString& path);

// Readable failure messages for texts.
inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}
