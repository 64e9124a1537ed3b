// SPDX-License-Identifier: GPL-3.0-or-later
#include "LoggerDatabase.h"

#include "SqliteSchema.h"

#include <QFile>

#include <sqlite3.h>

#include <gtest/gtest.h>

#include <string>
#include <variant>

LoggerDatabase::LoggerDatabase(const QString& path, bool schema)
    : m_path(path)
{
    EXPECT_EQ(sqlite3_open_v2(
                  QFile::encodeName(path).constData(), &m_db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr),
        SQLITE_OK);
    if (schema)
        Exec(QString::fromUtf8(
            SqliteSchema::CreateStatements.data(), static_cast<qsizetype>(SqliteSchema::CreateStatements.size())));
}

LoggerDatabase::~LoggerDatabase()
{
    Close();
}

void LoggerDatabase::Close()
{
    if (m_db)
        sqlite3_close(m_db);
    m_db = nullptr;
}

void LoggerDatabase::Exec(const QString& sql)
{
    char* error = nullptr;
    const int rc = sqlite3_exec(m_db, sql.toUtf8().constData(), nullptr, nullptr, &error);
    EXPECT_EQ(rc, SQLITE_OK) << (error ? error : "") << " in " << sql.toStdString();
    sqlite3_free(error);
}

namespace {

// Runs one statement with bound values; a value without content binds NULL.
void Run(sqlite3* db, const char* sql, const std::vector<std::optional<std::variant<qint64, double, QString>>>& args)
{
    sqlite3_stmt* statement = nullptr;
    ASSERT_EQ(sqlite3_prepare_v2(db, sql, -1, &statement, nullptr), SQLITE_OK) << sqlite3_errmsg(db);
    for (size_t i = 0; i < args.size(); ++i) {
        const int index = static_cast<int>(i) + 1;
        if (!args[i])
            sqlite3_bind_null(statement, index);
        else if (const auto* n = std::get_if<qint64>(&*args[i]))
            sqlite3_bind_int64(statement, index, *n);
        else if (const auto* d = std::get_if<double>(&*args[i]))
            sqlite3_bind_double(statement, index, *d);
        else
            sqlite3_bind_text(statement, index, std::get<QString>(*args[i]).toUtf8().constData(), -1, SQLITE_TRANSIENT);
    }
    EXPECT_EQ(sqlite3_step(statement), SQLITE_DONE) << sqlite3_errmsg(db);
    sqlite3_finalize(statement);
}

} // namespace

void LoggerDatabase::AddCategory(
    qint64 id, const QString& name, const QString& remark, qint64 parent, const QString& kind, qint64 pathId)
{
    Run(m_db, "INSERT INTO categories (id, name, remark, parent, kind, path_id) VALUES (?, ?, ?, ?, ?, ?)",
        { id, name, remark, parent, kind, pathId });
}

void LoggerDatabase::AddChannel(qint64 id, const QString& name, const QString& unit, int dataType, qint64 category,
    qint64 parentChannel, qint64 pathId)
{
    Run(m_db,
        "INSERT INTO channels (id, name, unit, data_type, category, parent_channel, path_id) "
        "VALUES (?, ?, ?, ?, ?, ?, ?)",
        { id, name, unit, qint64(dataType), category, parentChannel, pathId });
}

void LoggerDatabase::AddSample(qint64 channel, double time, std::optional<double> value)
{
    std::optional<std::variant<qint64, double, QString>> v;
    if (value)
        v = *value;
    Run(m_db, "INSERT INTO samples (channel, time, value) VALUES (?, ?, ?)", { channel, time, v });
}

void LoggerDatabase::SetInfo(const QString& key, const QString& value)
{
    Run(m_db, "INSERT OR REPLACE INTO info (key, value) VALUES (?, ?)", { key, value });
}

void SiteFixture::Write(LoggerDatabase& db)
{
    db.Exec("BEGIN");
    db.AddCategory(20, "Halle $1", "Nord", 10, "FOLDER", 2);
    db.AddCategory(30, "Logger 7", "Keller", 20, "MEASURING", 3);
    db.AddCategory(10, "Werk", "", 0, "FOLDER", 1);
    db.AddCategory(40, "Sonstiges", "", 0, "", 0);
    db.AddChannel(303, "Phase L1", "kW", 3, 30, 301, 3);
    db.AddChannel(301, "Leistung", "kW", 3, 30, 0, 1);
    db.AddChannel(302, "cos phi", "", 8, 30, 0, 2);
    db.AddChannel(304, "Leer", "kWh", 2, 30, 0, 4);
    // Written from the last sample back, so that the order of the rows is the table's doing.
    for (int k = PowerSamples - 1; k >= 0; --k)
        db.AddSample(301, Day + k * Quarter, k == NullSample ? std::nullopt : std::optional<double>(1.5 * k));
    for (int k = 0; k < CosPhiSamples; ++k)
        db.AddSample(302, Day + k * Minute, 0.05 - 0.02 * k);
    db.SetInfo("resolution", "900");
    db.SetInfo("resolution.302", "60");
    db.Exec("COMMIT");
}

void RecordingHandler::SendMessage(const QString& name, const QString& params, qint32& status)
{
    messages.emplace_back(name, params);
    status = 1;
}

void RecordingHandler::WriteLog(const QString& title, const QString& text, const QString& source, qint16 level)
{
    lines.push_back({ title, text, source, level });
}

int RecordingHandler::CountAtLeast(qint16 level) const
{
    int count = 0;
    for (const LogLine& line : lines)
        count += line.level >= level ? 1 : 0;
    return count;
}

QByteArray FileBytes(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QByteArray();
    return file.readAll();
}
