// SPDX-License-Identifier: GPL-3.0-or-later
// The logger database: tables, the columns the module relies on, and the keys of the info table.
// Shared by the module, the demo data generator and the tests, so that all three agree.
#pragma once

#include <array>
#include <string_view>

namespace SqliteSchema {

// Written into info as "schema_version" by the generator; the module does not insist on it.
constexpr int Version = 1;

// Creates the empty schema. Times are days since 1899-12-30 (the fraction being the time of
// day); a row whose value is NULL marks a known gap, a missing row a time without a sample.
constexpr std::string_view CreateStatements = R"SQL(
CREATE TABLE info (
    key   TEXT PRIMARY KEY NOT NULL,
    value TEXT
) WITHOUT ROWID;
CREATE TABLE categories (
    id      INTEGER PRIMARY KEY,
    name    TEXT NOT NULL,
    remark  TEXT NOT NULL DEFAULT '',
    parent  INTEGER NOT NULL DEFAULT 0,
    kind    TEXT NOT NULL DEFAULT '',
    path_id INTEGER NOT NULL DEFAULT 0
);
CREATE TABLE channels (
    id             INTEGER PRIMARY KEY,
    name           TEXT NOT NULL,
    unit           TEXT NOT NULL DEFAULT '',
    data_type      INTEGER NOT NULL DEFAULT 0,
    category       INTEGER NOT NULL,
    parent_channel INTEGER NOT NULL DEFAULT 0,
    path_id        INTEGER NOT NULL DEFAULT 0
);
CREATE TABLE samples (
    channel INTEGER NOT NULL,
    time    REAL NOT NULL,
    value   REAL,
    PRIMARY KEY (channel, time)
) WITHOUT ROWID;
)SQL";

struct Table
{
    std::string_view name;
    std::array<std::string_view, 7> columns; // empty entries are unused
};

// What a file must hold to count as a logger database. The info table is optional.
constexpr std::array<Table, 3> RequiredTables = { {
    { "categories", { "id", "name", "remark", "parent", "kind", "path_id", "" } },
    { "channels", { "id", "name", "unit", "data_type", "category", "parent_channel", "path_id" } },
    { "samples", { "channel", "time", "value", "", "", "", "" } },
} };

// Category kinds.
constexpr std::string_view KindFolder = "FOLDER";
constexpr std::string_view KindMeasuring = "MEASURING";

// Keys of the info table.
constexpr std::string_view KeyVersion = "schema_version";
// Native resolution in seconds of every channel without a key of its own.
constexpr std::string_view KeyResolution = "resolution";
// "resolution.<channel id>": the native resolution of one channel in seconds.
constexpr std::string_view KeyChannelResolutionPrefix = "resolution.";

} // namespace SqliteSchema
