// SPDX-License-Identifier: GPL-3.0-or-later
// sorano-storeload: copies a logger database file (the SQLite module's schema) into a PostgreSQL
// schema or a ClickHouse database, replacing what the target held, so that the server modules read
// the same loggers.
#include "ClickHouseLoad.h"
#include "PostgresLoad.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>

#include <cstdio>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName("sorano-storeload");

    QCommandLineParser parser;
    parser.setApplicationDescription("Copies a logger database file into a PostgreSQL or ClickHouse store.\n"
                                     "  sorano-storeload postgres CONNECTION SCHEMA FILE\n"
                                     "  sorano-storeload clickhouse URL DATABASE FILE [--user USER]");
    parser.addHelpOption();
    parser.addPositionalArgument("server", "postgres or clickhouse");
    parser.addPositionalArgument("target", "libpq connection string, or the ClickHouse HTTP URL");
    parser.addPositionalArgument("namespace", "PostgreSQL schema, or ClickHouse database");
    parser.addPositionalArgument("file", "the logger database file to copy");
    const QCommandLineOption user("user", "ClickHouse user (default: default).", "user", "default");
    const QCommandLineOption quiet("quiet", "No progress on stderr.");
    parser.addOptions({ user, quiet });
    parser.process(app);

    const QStringList arguments = parser.positionalArguments();
    if (arguments.size() != 4 || (arguments[0] != "postgres" && arguments[0] != "clickhouse")) {
        std::fprintf(stderr, "sorano-storeload: expected postgres|clickhouse TARGET NAMESPACE FILE (see --help).\n");
        return 2;
    }
    const QString& file = arguments[3];
    if (!QFileInfo(file).isFile()) {
        std::fprintf(stderr, "sorano-storeload: %s is no file.\n", qPrintable(file));
        return 2;
    }

    int shown = -1;
    const auto progress = [&](int percent) {
        if (parser.isSet(quiet) || percent / 10 == shown / 10)
            return;
        shown = percent;
        std::fprintf(stderr, "\r%3d %%", percent);
        std::fflush(stderr);
    };
    QElapsedTimer timer;
    timer.start();
    QString error;
    const bool done = arguments[0] == "postgres"
        ? PostgresLoad::CopyFromSqlite(file, arguments[1], arguments[2], error, progress)
        : ClickHouseLoad::CopyFromSqlite(file, arguments[1], arguments[2], parser.value(user), error, progress);
    if (shown >= 0)
        std::fprintf(stderr, "\n");
    if (!done) {
        std::fprintf(stderr, "sorano-storeload: %s\n", qPrintable(error));
        return 3;
    }
    std::printf("%s copied into %s %s in %.1f s\n", qPrintable(file), qPrintable(arguments[0]),
        qPrintable(arguments[2]), timer.elapsed() / 1000.0);
    return 0;
}
