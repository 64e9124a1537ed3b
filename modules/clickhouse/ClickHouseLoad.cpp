// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClickHouseLoad.h"

#include "ClickHouseHttp.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QUrl>

#include <sqlite3.h>

#include <memory>
#include <string>

namespace ClickHouseLoad {

namespace {

constexpr qint64 ChunkRows = 1'000'000;
// Loading and merging a large store takes longer than a read may.
constexpr int LoadTimeoutMs = 30 * 60 * 1000;

struct CloseDatabase
{
    void operator()(sqlite3* db) const { sqlite3_close_v2(db); }
};
struct FinalizeStatement
{
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Database = std::unique_ptr<sqlite3, CloseDatabase>;
using Statement = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

std::string_view Text(sqlite3_stmt* statement, int column)
{
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    return text ? std::string_view(text, static_cast<size_t>(sqlite3_column_bytes(statement, column)))
                : std::string_view();
}

class Loader
{
public:
    Loader(const QString& url, const QString& database, const QString& user, QString& error)
        : m_quoted("`" + database.toStdString() + "`")
        , m_error(error)
    {
        // Statements name the database themselves: it is dropped and made anew.
        m_http.Configure(QUrl(url), QString(), user, LoadTimeoutMs);
    }

    bool Run(const std::string& sql, std::string_view body = {})
    {
        if (m_http.Run(sql, {}, body) == ClickHouse::Outcome::Ok)
            return true;
        m_error = m_http.Error() + " (" + m_http.Server() + ")";
        return false;
    }

    // Statement that reads the table; false with the file's error when it can't.
    bool Prepare(sqlite3* db, const char* sql, Statement& statement)
    {
        sqlite3_stmt* raw = nullptr;
        if (sqlite3_prepare_v2(db, sql, -1, &raw, nullptr) != SQLITE_OK) {
            m_error = "reading the file failed: " + QString::fromUtf8(sqlite3_errmsg(db));
            return false;
        }
        statement.reset(raw);
        return true;
    }

    bool Finish(sqlite3* db, int rc)
    {
        if (rc == SQLITE_DONE)
            return true;
        m_error = "reading the file failed: " + QString::fromUtf8(sqlite3_errmsg(db));
        return false;
    }

    // Copies a small table row by row; write appends one row of the statement in RowBinary.
    bool CopyTable(sqlite3* db, const char* select, const std::string& table,
        const std::function<void(sqlite3_stmt*, std::string&)>& write)
    {
        Statement statement;
        if (!Prepare(db, select, statement))
            return false;
        std::string rows;
        int rc = SQLITE_OK;
        while ((rc = sqlite3_step(statement.get())) == SQLITE_ROW)
            write(statement.get(), rows);
        if (!Finish(db, rc))
            return false;
        return rows.empty() || Run("INSERT INTO " + Name(table) + " FORMAT RowBinary", rows);
    }

    std::string Name(const std::string& table) const { return m_quoted + "." + table; }
    const std::string& Quoted() const { return m_quoted; }

private:
    ClickHouse::Connection m_http;
    std::string m_quoted;
    QString& m_error;
};

bool HasTable(sqlite3* db, const char* table)
{
    sqlite3_stmt* raw = nullptr;
    if (sqlite3_prepare_v2(db, "SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = ?1", -1, &raw, nullptr)
        != SQLITE_OK)
        return false;
    Statement statement(raw);
    sqlite3_bind_text(raw, 1, table, -1, SQLITE_STATIC);
    return sqlite3_step(raw) == SQLITE_ROW;
}

} // namespace

bool IsValidDatabaseName(const QString& name)
{
    static const QRegularExpression identifier(QStringLiteral("^[A-Za-z_][A-Za-z0-9_]*$"));
    return identifier.match(name).hasMatch();
}

bool CopyFromSqlite(const QString& sqliteFile, const QString& url, const QString& database, const QString& user,
    QString& error, const std::function<void(int percent)>& progress)
{
    error.clear();
    if (!IsValidDatabaseName(database)) {
        error = "the database name \"" + database
            + "\" is not allowed: letters, digits and _ only, not starting with a digit";
        return false;
    }
    if (!QFileInfo(sqliteFile).isFile()) {
        error = "the file " + sqliteFile + " does not exist or is no file";
        return false;
    }
    sqlite3* raw = nullptr;
    const int opened = sqlite3_open_v2(QFile::encodeName(sqliteFile).constData(), &raw, SQLITE_OPEN_READONLY, nullptr);
    Database db(raw);
    if (opened != SQLITE_OK) {
        error = "opening the file failed: " + QString::fromUtf8(db ? sqlite3_errmsg(db.get()) : sqlite3_errstr(opened));
        return false;
    }
    for (const char* table : { "categories", "channels", "samples" })
        if (!HasTable(db.get(), table)) {
            error = QString("the file is no logger database: table %1 is missing").arg(table);
            return false;
        }

    Loader load(url, database, user, error);
    const auto report = [&](int percent) {
        if (progress)
            progress(percent);
    };
    report(0);
    if (!load.Run("DROP DATABASE IF EXISTS " + load.Quoted()) || !load.Run("CREATE DATABASE " + load.Quoted())
        || !load.Run(
            "CREATE TABLE " + load.Name("info") + " (key String, value String) ENGINE = MergeTree ORDER BY key")
        || !load.Run("CREATE TABLE " + load.Name("categories")
            + " (id Int64, name String, remark String, parent Int64, kind String, path_id Int64)"
              " ENGINE = MergeTree ORDER BY id")
        || !load.Run("CREATE TABLE " + load.Name("channels")
            + " (id Int64, name String, unit String, data_type Int32, category Int64, parent_channel Int64,"
              " path_id Int64) ENGINE = MergeTree ORDER BY id")
        || !load.Run("CREATE TABLE " + load.Name("samples")
            + " (channel Int64, time Float64, value Nullable(Float64)) ENGINE = MergeTree ORDER BY (channel, time)"))
        return false;

    if (HasTable(db.get(), "info")
        && !load.CopyTable(db.get(), "SELECT key, value FROM info", "info", [](sqlite3_stmt* row, std::string& out) {
               ClickHouse::Put(out, Text(row, 0));
               ClickHouse::Put(out, Text(row, 1));
           }))
        return false;
    if (!load.CopyTable(db.get(), "SELECT id, name, remark, parent, kind, path_id FROM categories", "categories",
            [](sqlite3_stmt* row, std::string& out) {
                ClickHouse::Put(out, static_cast<std::int64_t>(sqlite3_column_int64(row, 0)));
                ClickHouse::Put(out, Text(row, 1));
                ClickHouse::Put(out, Text(row, 2));
                ClickHouse::Put(out, static_cast<std::int64_t>(sqlite3_column_int64(row, 3)));
                ClickHouse::Put(out, Text(row, 4));
                ClickHouse::Put(out, static_cast<std::int64_t>(sqlite3_column_int64(row, 5)));
            }))
        return false;
    if (!load.CopyTable(db.get(), "SELECT id, name, unit, data_type, category, parent_channel, path_id FROM channels",
            "channels", [](sqlite3_stmt* row, std::string& out) {
                ClickHouse::Put(out, static_cast<std::int64_t>(sqlite3_column_int64(row, 0)));
                ClickHouse::Put(out, Text(row, 1));
                ClickHouse::Put(out, Text(row, 2));
                ClickHouse::Put(out, static_cast<std::int32_t>(sqlite3_column_int(row, 3)));
                ClickHouse::Put(out, static_cast<std::int64_t>(sqlite3_column_int64(row, 4)));
                ClickHouse::Put(out, static_cast<std::int64_t>(sqlite3_column_int64(row, 5)));
                ClickHouse::Put(out, static_cast<std::int64_t>(sqlite3_column_int64(row, 6)));
            }))
        return false;
    report(2);

    Statement count, samples;
    if (!load.Prepare(db.get(), "SELECT count(*) FROM samples", count)
        || !load.Prepare(db.get(), "SELECT channel, time, value FROM samples", samples))
        return false;
    const qint64 total = sqlite3_step(count.get()) == SQLITE_ROW ? sqlite3_column_int64(count.get(), 0) : 0;
    const std::string insert = "INSERT INTO " + load.Name("samples") + " FORMAT RowBinary";
    std::string chunk;
    chunk.reserve(static_cast<size_t>(ChunkRows) * 25);
    qint64 rows = 0, done = 0;
    int rc = SQLITE_OK;
    while ((rc = sqlite3_step(samples.get())) == SQLITE_ROW) {
        ClickHouse::Put(chunk, static_cast<std::int64_t>(sqlite3_column_int64(samples.get(), 0)));
        ClickHouse::Put(chunk, sqlite3_column_double(samples.get(), 1));
        // Values that are no numbers count as missing, as the modules read them.
        const int type = sqlite3_column_type(samples.get(), 2);
        ClickHouse::PutNullable(
            chunk, type == SQLITE_FLOAT || type == SQLITE_INTEGER, sqlite3_column_double(samples.get(), 2));
        if (++rows == ChunkRows) {
            if (!load.Run(insert, chunk))
                return false;
            done += rows;
            rows = 0;
            chunk.clear();
            report(total > 0 ? static_cast<int>(2 + 90 * done / total) : 92);
        }
    }
    if (!load.Finish(db.get(), rc) || (rows > 0 && !load.Run(insert, chunk)))
        return false;
    report(92);
    if (!load.Run("OPTIMIZE TABLE " + load.Name("samples") + " FINAL"))
        return false;
    report(100);
    return true;
}

} // namespace ClickHouseLoad
