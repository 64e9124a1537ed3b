// SPDX-License-Identifier: GPL-3.0-or-later
#include "LoggerDatabase.h"

#include "SqliteSchema.h"

#include <QFile>

#include <sqlite3.h>

#include <gtest/gtest.h>

SqliteConnection OpenWriter(const QString& path, int flags)
{
    sqlite3* db = nullptr;
    EXPECT_EQ(sqlite3_open_v2(QFile::encodeName(path).constData(), &db, flags, nullptr), SQLITE_OK);
    return SqliteConnection(db);
}

void WriteDatabase(const QString& path, const QString& sql, bool schema)
{
    const SqliteConnection db = OpenWriter(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    QString script = "BEGIN;" + sql + ";COMMIT;";
    if (schema)
        script.prepend(QString::fromUtf8(
            SqliteSchema::CreateStatements.data(), static_cast<qsizetype>(SqliteSchema::CreateStatements.size())));
    char* error = nullptr;
    EXPECT_EQ(sqlite3_exec(db.get(), script.toUtf8().constData(), nullptr, nullptr, &error), SQLITE_OK)
        << (error ? error : "") << " in " << sql.toStdString();
    sqlite3_free(error);
}

QByteArray FileBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

ChannelCollection Request(const QStringList& ids)
{
    ChannelCollection channels;
    for (const QString& id : ids) {
        auto channel = std::make_shared<DataMatrix>();
        channel->SetChannelID(id);
        channels.Add(channel, id);
    }
    return channels;
}

QString SiteFixture::Sql()
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

QString SiteFixture::Write(const QString& path)
{
    WriteDatabase(path, Sql());
    return path;
}
