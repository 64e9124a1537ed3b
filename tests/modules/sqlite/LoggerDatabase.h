// SPDX-License-Identifier: GPL-3.0-or-later
// Fixtures of the SQLite module tests: logger databases and a small site.
#pragma once

#include "../ModuleTestKit.h"
#include "SqliteHandles.h"
#include "SqliteSchema.h"

#include <QByteArray>
#include <QFile>
#include <QString>

#include <sqlite3.h>

#include <gtest/gtest.h>

// A read-write connection to the file, as a logger process holds it.
inline SqliteConnection OpenWriter(const QString& path, int flags = SQLITE_OPEN_READWRITE)
{
    sqlite3* db = nullptr;
    EXPECT_EQ(sqlite3_open_v2(QFile::encodeName(path).constData(), &db, flags, nullptr), SQLITE_OK);
    return SqliteConnection(db);
}

// Creates the file, with the module's empty schema unless schema is false, and runs sql in it.
inline void WriteDatabase(const QString& path, const QString& sql, bool schema = true)
{
    const SqliteConnection db = OpenWriter(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    const QString script
        = (schema ? QString::fromUtf8(SqliteSchema::CreateStatements) : QString()) + "BEGIN;" + sql + ";COMMIT;";
    char* error = nullptr;
    EXPECT_EQ(sqlite3_exec(db.get(), script.toUtf8().constData(), nullptr, nullptr, &error), SQLITE_OK)
        << (error ? error : "") << " in " << sql.toStdString();
    sqlite3_free(error);
}

inline QByteArray FileBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// A small site: categories listed children first, a child channel, a channel without samples,
// a NULL sample, and channels of two resolutions.
namespace SiteFixture {
constexpr double Day = 45658.0; // 2025-01-01
constexpr double Quarter = 1.0 / 96.0;
constexpr double Minute = 1.0 / 1440.0;
constexpr int PowerSamples = 10; // channel 301, every 15 minutes from Day, value 1.5 * k
constexpr int NullSample = 4; // channel 301: NULL at Day + 4 quarters
constexpr int CosPhiSamples = 5; // channel 302, every minute from Day, value 0.05 - 0.02 * k

inline QString Sql()
{
    QString sql
        = "INSERT INTO categories VALUES (20, 'Halle $1', 'Nord', 10, 'FOLDER', 2),"
          " (30, 'Logger 7', 'Keller', 20, 'MEASURING', 3), (10, 'Werk', '', 0, 'FOLDER', 1),"
          " (40, 'Sonstiges', '', 0, '', 0);"
          "INSERT INTO channels VALUES (303, 'Phase L1', 'kW', 3, 30, 301, 3), (301, 'Leistung', 'kW', 3, 30, 0, 1),"
          " (302, 'cos phi', '', 8, 30, 0, 2), (304, 'Leer', 'kWh', 2, 30, 0, 4);"
          "INSERT INTO info VALUES ('resolution', '900'), ('resolution.302', '60');";
    const QString sample = "INSERT INTO samples VALUES (%1, %2, %3);";
    // Written from the last sample back, so that the order of the rows is the table's doing.
    for (int k = PowerSamples - 1; k >= 0; --k)
        sql += sample.arg(301)
                   .arg(Day + k * Quarter, 0, 'g', 17)
                   .arg(k == NullSample ? "NULL" : QString::number(1.5 * k));
    for (int k = 0; k < CosPhiSamples; ++k)
        sql += sample.arg(302).arg(Day + k * Minute, 0, 'g', 17).arg(0.05 - 0.02 * k, 0, 'g', 17);
    return sql;
}

// Writes the site to a new file; returns its path.
inline QString Write(const QString& path)
{
    WriteDatabase(path, Sql());
    return path;
}
} // namespace SiteFixture
