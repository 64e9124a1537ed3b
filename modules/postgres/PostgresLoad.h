// SPDX-License-Identifier: GPL-3.0-or-later
// Copies a logger database file into a schema on a PostgreSQL server, replacing what it held.
#pragma once

#include <QString>

#include <functional>

namespace PostgresLoad {

// Drops the schema with everything in it, creates it with the logger tables and copies the
// rows of the file's info, categories, channels and samples into them; the key of the samples
// and the planner's statistics come after the rows. progress gets 0 to 100 as samples arrive.
// False with error set (one English line) when anything fails; all of it runs in one transaction,
// so that the schema then stays as it was.
bool CopyFromSqlite(const QString& sqliteFile, const QString& connection, const QString& schema, QString& error,
    const std::function<void(int percent)>& progress = {});

} // namespace PostgresLoad
