// SPDX-License-Identifier: GPL-3.0-or-later
// sorano-demodata: writes the demo logger database that the run script registers.
#include "DemoDatabase.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>

#include <cstdio>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName("sorano-demodata");

    QCommandLineParser parser;
    parser.setApplicationDescription("Writes a demo logger database for the SQLite data module.");
    parser.addHelpOption();
    parser.addPositionalArgument("output", "The database file to write.");
    const QCommandLineOption force("force", "Overwrite the output file if it exists.");
    const QCommandLineOption days("days", "Write only the first <n> days of every logger.", "n");
    parser.addOption(force);
    parser.addOption(days);
    parser.process(app);

    const QStringList arguments = parser.positionalArguments();
    if (arguments.size() != 1) {
        std::fprintf(stderr, "sorano-demodata: exactly one output file expected (see --help).\n");
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
    const QString output = arguments.front();
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
    return 0;
}
