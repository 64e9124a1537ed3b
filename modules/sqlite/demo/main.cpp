// SPDX-License-Identifier: GPL-3.0-or-later
// sorano-demodata: writes the demo logger database, by default into the user's data folder of
// the program, where it becomes the user's database of the data source "Demo".
#include "DemoDatabase.h"
#include "SqliteSettings.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>

#include <cstdio>

namespace {

// Makes the file the user's database of the data source Demo unless the user's settings name one
// already; says which. The exit code.
int Register(const QString& path)
{
    const QString source = SqliteSettings::DemoSource;
    const QString shown = QDir::toNativeSeparators(path);
    const QString current = SqliteSettings::UserDatabase(source);
    if (current.isEmpty()) {
        if (!SqliteSettings::StoreUserDatabase(source, shown)) {
            std::fprintf(
                stderr, "sorano-demodata: wrote %s, but could not store it in your settings.\n", qPrintable(shown));
            return 4;
        }
        std::printf("Wrote %s, registered as the database of data source %s.\n", qPrintable(shown), qPrintable(source));
    } else if (QFileInfo(current).absoluteFilePath() == QFileInfo(path).absoluteFilePath()) {
        std::printf(
            "Wrote %s, which is already the database of data source %s.\n", qPrintable(shown), qPrintable(source));
    } else {
        std::printf("Wrote %s and kept your setting: data source %s reads %s.\n", qPrintable(shown), qPrintable(source),
            qPrintable(current));
    }
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName("sorano-demodata");

    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Writes a demo logger database for the SQLite data module.\n"
        "Without an output file it writes sorano-demo.sqlite into the user's data folder of Sorano\n"
        "(~/.local/share/HARVOLD/Sorano) and, unless the user's settings already name a database\n"
        "for the data source Demo, registers it there, so that Demo shows the demo data.");
    parser.addHelpOption();
    parser.addPositionalArgument("output",
        "The database file to write; nothing is registered then. Default: the user's demo database.", "[output]");
    const QCommandLineOption force("force", "Overwrite the output file if it exists.");
    const QCommandLineOption days("days", "Write only the first <n> days of every logger.", "n");
    parser.addOption(force);
    parser.addOption(days);
    parser.process(app);

    const QStringList arguments = parser.positionalArguments();
    if (arguments.size() > 1) {
        std::fprintf(stderr, "sorano-demodata: at most one output file expected (see --help).\n");
        return 1;
    }
    DemoOptions options;
    if (parser.isSet(days)) {
        bool ok = false;
        options.days = parser.value(days).toInt(&ok);
        if (!ok || options.days < 1) {
            std::fprintf(stderr, "sorano-demodata: --days needs a whole number of at least 1.\n");
            return 1;
        }
    }
    // Without an output file: the program's data folder, which follows the application's
    // organisation and name. Set after parsing, so that the parser's messages name this tool.
    const bool userDemo = arguments.isEmpty();
    if (userDemo) {
        QCoreApplication::setOrganizationName("HARVOLD");
        QCoreApplication::setApplicationName("Sorano");
    }
    const QString output = userDemo ? SqliteSettings::UserDemoDatabase() : arguments.front();
    if (QFileInfo::exists(output) && !parser.isSet(force)) {
        std::fprintf(stderr, "sorano-demodata: %s exists; use --force to overwrite it.\n", qPrintable(output));
        return 2;
    }

    QElapsedTimer timer;
    timer.start();
    DemoSummary summary;
    const QString error = WriteDemoDatabase(output, options, &summary);
    if (!error.isEmpty()) {
        std::fprintf(stderr, "sorano-demodata: %s: %s\n", qPrintable(output), qPrintable(error));
        return 3;
    }
    std::printf("%s: %lld samples of %d channels in %.1f s\n", qPrintable(output),
        static_cast<long long>(summary.samples), summary.channels, timer.elapsed() / 1000.0);
    return userDemo ? Register(output) : 0;
}
