// SPDX-License-Identifier: GPL-3.0-or-later
// Owning handles for a SQLite connection and a prepared statement.
#pragma once

#include <sqlite3.h>

#include <memory>
#include <string_view>

struct SqliteCloser
{
    void operator()(sqlite3* db) const { sqlite3_close(db); }
};
struct SqliteFinalizer
{
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

using SqliteConnection = std::unique_ptr<sqlite3, SqliteCloser>;
using SqliteStatement = std::unique_ptr<sqlite3_stmt, SqliteFinalizer>;

// Prepares one statement for repeated use; on failure the result is empty and rc tells why.
inline SqliteStatement PrepareStatement(sqlite3* db, std::string_view sql, int& rc)
{
    sqlite3_stmt* statement = nullptr;
    rc = sqlite3_prepare_v3(
        db, sql.data(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    if (rc != SQLITE_OK) {
        sqlite3_finalize(statement);
        return nullptr;
    }
    return SqliteStatement(statement);
}
