// SPDX-License-Identifier: GPL-3.0-or-later
// Copies a logger database from an SQLite file into a database on a ClickHouse server.
#pragma once

#include <QString>

#include <functional>

namespace ClickHouseLoad {

// Whether the name can be a database: letters, digits and "_", not starting with a digit.
bool IsValidDatabaseName(const QString& name);

// Replaces the database on the server (dropped and created anew) by the info, categories,
// channels and samples tables of the file. Samples go in chunks of a million rows; the table is
// merged into one part at the end, so a channel's rows lie together. progress gets 0 to 100.
// False and error set (one line) on failure; the password, if any, comes from the user's .netrc.
bool CopyFromSqlite(const QString& sqliteFile, const QString& url, const QString& database, const QString& user,
    QString& error, const std::function<void(int percent)>& progress = {});

} // namespace ClickHouseLoad
