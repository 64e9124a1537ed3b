// SPDX-License-Identifier: GPL-3.0-or-later
#include "PostgresLoad.h"

#include "PostgresConnection.h"
#include "SqliteHandles.h"

#include <QFile>
#include <QFileInfo>

#include <string>

namespace {

constexpr int ConnectTimeoutSeconds = 30;
constexpr size_t CopyChunk = 1 << 20;

// The server's counterpart of SqliteSchema::CreateStatements; %1 is the schema.
const char* const CreateSql = R"SQL(
CREATE TABLE %1.info (key text PRIMARY KEY NOT NULL, value text);
CREATE TABLE %1.categories (id bigint PRIMARY KEY, name text NOT NULL, remark text NOT NULL DEFAULT '',
    parent bigint NOT NULL DEFAULT 0, kind text NOT NULL DEFAULT '', path_id bigint NOT NULL DEFAULT 0);
CREATE TABLE %1.channels (id bigint PRIMARY KEY, name text NOT NULL, unit text NOT NULL DEFAULT '',
    data_type integer NOT NULL DEFAULT 0, category bigint NOT NULL, parent_channel bigint NOT NULL DEFAULT 0,
    path_id bigint NOT NULL DEFAULT 0);
CREATE TABLE %1.samples (channel bigint NOT NULL, time double precision NOT NULL, value double precision);
)SQL";

class Loader
{
public:
    Loader(PGconn* conn, sqlite3* db, QString& error)
        : m_conn(conn)
        , m_db(db)
        , m_error(error)
    { }

    bool Exec(const QByteArray& sql)
    {
        PgResult result(PQexec(m_conn, sql.constData()));
        const ExecStatusType status = PQresultStatus(result.get());
        if (status == PGRES_COMMAND_OK || status == PGRES_TUPLES_OK)
            return true;
        m_error = "the server refused a statement: " + QString::fromUtf8(PQerrorMessage(m_conn)).simplified();
        return false;
    }

    // Copies the rows of a query in the text format of COPY; columns whose kind is 'i' go as
    // integers, 't' as texts (NULL as the default of the column is not wanted: as '').
    bool CopyText(const QByteArray& table, const char* query, const char* kinds)
    {
        int rc = SQLITE_OK;
        SqliteStatement statement = PrepareStatement(m_db, query, rc);
        if (!statement)
            return SqliteFailed("reading " + QString::fromUtf8(query));
        if (!StartCopy("COPY " + table + " FROM STDIN"))
            return false;
        std::string buffer;
        const int columns = static_cast<int>(std::strlen(kinds));
        while ((rc = sqlite3_step(statement.get())) == SQLITE_ROW) {
            for (int column = 0; column < columns; ++column) {
                if (column > 0)
                    buffer += '\t';
                if (kinds[column] == 'i') {
                    buffer += std::to_string(sqlite3_column_int64(statement.get(), column));
                    continue;
                }
                if (kinds[column] == 'n' && sqlite3_column_type(statement.get(), column) == SQLITE_NULL) {
                    buffer += "\\N";
                    continue;
                }
                const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), column));
                for (const char* c = text ? text : ""; *c; ++c) {
                    switch (*c) {
                    case '\\':
                        buffer += "\\\\";
                        break;
                    case '\t':
                        buffer += "\\t";
                        break;
                    case '\n':
                        buffer += "\\n";
                        break;
                    case '\r':
                        buffer += "\\r";
                        break;
                    default:
                        buffer += *c;
                    }
                }
            }
            buffer += '\n';
            if (buffer.size() >= CopyChunk && !Put(buffer))
                return false;
        }
        if (rc != SQLITE_DONE) {
            EndCopy("source unreadable");
            return SqliteFailed("reading the source file");
        }
        return Put(buffer) && EndCopy(nullptr);
    }

    // The samples in the binary format of COPY, the rows in order of channel and time.
    bool CopySamples(const QByteArray& table, const std::function<void(int)>& progress)
    {
        int rc = SQLITE_OK;
        SqliteStatement count = PrepareStatement(m_db, "SELECT count(*) FROM samples", rc);
        if (!count || sqlite3_step(count.get()) != SQLITE_ROW)
            return SqliteFailed("counting the samples");
        const qint64 total = sqlite3_column_int64(count.get(), 0);
        SqliteStatement rows
            = PrepareStatement(m_db, "SELECT channel, time, value FROM samples ORDER BY channel, time", rc);
        if (!rows)
            return SqliteFailed("reading the samples");
        if (!StartCopy("COPY " + table + " FROM STDIN (FORMAT binary)"))
            return false;
        std::string buffer("PGCOPY\n\377\r\n\0", 11);
        AppendInt32(buffer, 0); // flags
        AppendInt32(buffer, 0); // no header extension
        qint64 done = 0;
        int reported = -1;
        while ((rc = sqlite3_step(rows.get())) == SQLITE_ROW) {
            sqlite3_stmt* row = rows.get();
            if (sqlite3_column_type(row, 1) == SQLITE_NULL)
                continue;
            buffer += '\0';
            buffer += '\3';
            AppendInt32(buffer, 8);
            AppendInt64(buffer, static_cast<quint64>(sqlite3_column_int64(row, 0)));
            AppendInt32(buffer, 8);
            AppendDouble(buffer, sqlite3_column_double(row, 1));
            const int type = sqlite3_column_type(row, 2);
            if (type == SQLITE_FLOAT || type == SQLITE_INTEGER) {
                AppendInt32(buffer, 8);
                AppendDouble(buffer, sqlite3_column_double(row, 2));
            } else {
                AppendInt32(buffer, 0xffffffffu); // NULL: a known gap, or no number
            }
            ++done;
            if (buffer.size() >= CopyChunk) {
                if (!Put(buffer))
                    return false;
                const int percent = total > 0 ? static_cast<int>(done * 99 / total) : 99;
                if (progress && percent != reported)
                    progress(reported = percent);
            }
        }
        if (rc != SQLITE_DONE) {
            EndCopy("source unreadable");
            return SqliteFailed("reading the samples");
        }
        buffer += '\xff';
        buffer += '\xff';
        return Put(buffer) && EndCopy(nullptr);
    }

private:
    static void AppendInt32(std::string& buffer, quint32 value)
    {
        for (int shift = 24; shift >= 0; shift -= 8)
            buffer += static_cast<char>((value >> shift) & 0xff);
    }
    static void AppendInt64(std::string& buffer, quint64 value)
    {
        for (int shift = 56; shift >= 0; shift -= 8)
            buffer += static_cast<char>((value >> shift) & 0xff);
    }
    static void AppendDouble(std::string& buffer, double value)
    {
        quint64 bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        AppendInt64(buffer, bits);
    }

    bool SqliteFailed(const QString& what)
    {
        m_error = what + " failed: " + QString::fromUtf8(sqlite3_errmsg(m_db));
        return false;
    }

    bool StartCopy(const QByteArray& sql)
    {
        PgResult result(PQexec(m_conn, sql.constData()));
        if (PQresultStatus(result.get()) == PGRES_COPY_IN)
            return true;
        m_error = "the server refused the copy: " + QString::fromUtf8(PQerrorMessage(m_conn)).simplified();
        return false;
    }

    bool Put(std::string& buffer)
    {
        if (!buffer.empty() && PQputCopyData(m_conn, buffer.data(), static_cast<int>(buffer.size())) != 1) {
            m_error = "sending rows failed: " + QString::fromUtf8(PQerrorMessage(m_conn)).simplified();
            return false;
        }
        buffer.clear();
        return true;
    }

    bool EndCopy(const char* failure)
    {
        if (PQputCopyEnd(m_conn, failure) != 1) {
            m_error = "ending the copy failed: " + QString::fromUtf8(PQerrorMessage(m_conn)).simplified();
            return false;
        }
        bool ok = true;
        while (PGresult* raw = PQgetResult(m_conn)) {
            PgResult result(raw);
            if (PQresultStatus(raw) != PGRES_COMMAND_OK) {
                if (ok && !failure)
                    m_error = "the copy failed: " + QString::fromUtf8(PQresultErrorMessage(raw)).simplified();
                ok = false;
            }
        }
        return ok && !failure;
    }

    PGconn* m_conn;
    sqlite3* m_db;
    QString& m_error;
};

} // namespace

bool PostgresLoad::CopyFromSqlite(const QString& sqliteFile, const QString& connection, const QString& schema,
    QString& error, const std::function<void(int percent)>& progress)
{
    error.clear();
    if (!QFileInfo(sqliteFile).isFile()) {
        error = "the file " + sqliteFile + " does not exist or is no file";
        return false;
    }
    sqlite3* raw = nullptr;
    const int rc = sqlite3_open_v2(QFile::encodeName(sqliteFile).constData(), &raw, SQLITE_OPEN_READONLY, nullptr);
    SqliteConnection db(raw);
    if (rc != SQLITE_OK) {
        error = "opening " + sqliteFile + " failed: " + QString::fromUtf8(sqlite3_errstr(rc));
        return false;
    }
    int prepared = SQLITE_OK;
    SqliteStatement info
        = PrepareStatement(db.get(), "SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = 'info'", prepared);
    const bool hasInfo = info && sqlite3_step(info.get()) == SQLITE_ROW;
    info.reset();

    PgConnection server;
    if (server.Connect(connection, ConnectTimeoutSeconds) != PgConnection::Outcome::Ok) {
        error = "connecting to " + server.Server() + " failed: " + server.Error();
        return false;
    }
    const QByteArray name = schema.trimmed().isEmpty() ? QByteArray("public") : schema.trimmed().toUtf8();
    char* escaped = PQescapeIdentifier(server.Handle(), name.constData(), name.size());
    if (!escaped) {
        error = "the schema name " + schema + " can't be used: " + QString::fromUtf8(PQerrorMessage(server.Handle()));
        return false;
    }
    const QByteArray quoted(escaped);
    PQfreemem(escaped);

    if (progress)
        progress(0);
    Loader loader(server.Handle(), db.get(), error);
    // One transaction: a load that fails leaves the schema as it was.
    const bool ok = loader.Exec("BEGIN; DROP SCHEMA IF EXISTS " + quoted + " CASCADE; CREATE SCHEMA " + quoted + ';'
                        + QByteArray(CreateSql).replace("%1", quoted))
        && (!hasInfo || loader.CopyText(quoted + ".info", "SELECT key, value FROM info", "tn"))
        && loader.CopyText(
            quoted + ".categories", "SELECT id, name, remark, parent, kind, path_id FROM categories", "ittiti")
        && loader.CopyText(quoted + ".channels",
            "SELECT id, name, unit, data_type, category, parent_channel, path_id FROM channels", "ittiiii")
        && loader.CopySamples(quoted + ".samples", progress)
        // The key holds the values too, so that a read scans the index alone; vacuuming marks the
        // pages all-visible, which such a scan needs, and gathers the planner's statistics.
        && loader.Exec("ALTER TABLE " + quoted + ".samples ADD PRIMARY KEY (channel, time) INCLUDE (value); ANALYZE "
            + quoted + ".info, " + quoted + ".categories, " + quoted + ".channels; COMMIT")
        && loader.Exec("VACUUM (ANALYZE) " + quoted + ".samples");
    if (!ok) {
        if (PQtransactionStatus(server.Handle()) != PQTRANS_IDLE)
            PgResult rollback(PQexec(server.Handle(), "ROLLBACK"));
        error += " (" + server.Server() + ")";
        return false;
    }
    if (progress)
        progress(100);
    return true;
}
