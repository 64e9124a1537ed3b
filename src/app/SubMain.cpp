// SPDX-License-Identifier: GPL-3.0-or-later
#include "SubMain.h"

#include "AppPaths.h"
#include "CommandLine.h"
#include "Globals.h"
#include "HandedViews.h"
#include "Logging.h"
#include "MatrixScriptEngine.h"
#include "Numeric.h"
#include "Project.h"
#include "QtTranslations.h"
#include "Settings.h"
#include "SingleInstance.h"
#include "Version.h"

#include <QApplication>
#include <QFileInfo>
#include <QIcon>

#include <cstdio>
#include <memory>

void StartProcess()
{
    g_cLogging = new Logging;
    g_cLogging->WriteLog(QStringLiteral("---------"), QString(), QString(), LogLevel::Always);
    g_cLogging->WriteLog(QStringLiteral("app start"),
        QStringLiteral("starting version %1.%2.%3")
            .arg(SoranoVersionMajor)
            .arg(SoranoVersionMinor)
            .arg(SoranoVersionRevision),
        QStringLiteral("Sub Main"), LogLevel::Always);

    // The offset must be numeric as a whole: "1000abc" selects German.
    const auto offset = Settings::StrictNumber(Settings::Id::LangOffset);
    g_lLangOffset = offset ? ClampToInt(*offset) : 0;

    const QString whoAmI = Settings::Value(Settings::Id::WhoAmI);
    g_sWhoAmI = (whoAmI == QLatin1String("sorano") || whoAmI == QLatin1String("talven")) ? whoAmI : QString();

    // Without an engine the program still runs; curves then fail where they evaluate.
    try {
        g_cScriptEngine = new MatrixScriptEngine;
    } catch (const std::exception& error) {
        g_cLogging->WriteLog(QStringLiteral("bind matrix-engine"),
            QStringLiteral("error %1 (%2) binding the matrix-engine.")
                .arg(-1)
                .arg(QString::fromLocal8Bit(error.what())),
            QStringLiteral("Main"), LogLevel::Error);
    }
}

void EndProcess()
{
    delete g_cScriptEngine;
    g_cScriptEngine = nullptr;
    delete g_cLogging;
    g_cLogging = nullptr;
}

namespace {

void PrintError(const QString& message, bool withUsage)
{
    std::fprintf(stderr, "sorano: %s\n", message.toLocal8Bit().constData());
    if (withUsage)
        std::fputs(UsageText().toLocal8Bit().constData(), stderr);
    std::fflush(stderr);
}

} // namespace

int SubMain(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    // Read before the application object exists: help, version and mistakes need no screen,
    // and a script that calls the program with a typo gets an answer instead of a window.
    const CommandLine command = ParseCommandLine(arguments);
    if (!command.error.isEmpty()) {
        PrintError(command.error, true);
        return ExitCode::Usage;
    }
    if (command.action == CommandLine::Action::Help || command.action == CommandLine::Action::Version) {
        const QString text
            = command.action == CommandLine::Action::Help ? UsageText() : VersionText() + QLatin1Char('\n');
        std::fputs(text.toLocal8Bit().constData(), stdout);
        std::fflush(stdout);
        return ExitCode::Ok;
    }
    const bool exportMode
        = command.action == CommandLine::Action::Export || command.action == CommandLine::Action::Print;
    // An export needs no screen; the platform must be chosen before the application exists.
    if (exportMode)
        qputenv("QT_QPA_PLATFORM", "offscreen");

    QApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("HARVOLD"));
    QCoreApplication::setApplicationName(QStringLiteral("Sorano"));
    QCoreApplication::setApplicationVersion(
        QStringLiteral("%1.%2.%3").arg(SoranoVersionMajor).arg(SoranoVersionMinor).arg(SoranoVersionRevision));
    AppPaths::UseInstalledSettingsRoots();
    // The windows carry the program's icon, and the desktop matches them to its menu entry.
    QGuiApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/ICO_APP.svg")));
    QGuiApplication::setDesktopFileName(QStringLiteral("sorano"));

    // A window start goes to the user's window when one runs: it takes the views (named from
    // this start's folder) and comes to the front, and this process ends without a window.
    std::unique_ptr<SingleInstance> instance;
    SingleInstance::Role role = SingleInstance::Role::Alone;
    if (!exportMode) {
        QStringList files;
        for (const QString& view : command.views)
            files << QFileInfo(view).absoluteFilePath();
        instance = std::make_unique<SingleInstance>(SingleInstance::DefaultName());
        role = instance->Start(files, command.newInstance);
        if (role == SingleInstance::Role::HandedOver)
            return ExitCode::Ok;
    }

    StartProcess();
    if (instance && role == SingleInstance::Role::Alone && !command.newInstance)
        WriteLog(QStringLiteral("single instance"),
            QStringLiteral("Neither listening as %1 nor handing over to the window that holds it worked; this start "
                           "runs on its own.")
                .arg(SingleInstance::DefaultName()),
            QStringLiteral("Sub Main"), LogLevel::Info);
    // The toolkit's dialogs speak the program's language.
    QtTranslations::Install(g_lLangOffset < 1000);

    int exitCode = 0;
    if (exportMode) {
        g_cProject = new Project;
        g_cProject->LoadDataModules();
        QString error;
        const ExportJob& job = command.job;
        if (command.action == CommandLine::Action::Export)
            exitCode = RunExport(job, *g_cProject, error);
        else if (!job.batch.isEmpty() || !job.serial.isEmpty())
            exitCode = RunBatchPrint(job, *g_cProject, error);
        else
            exitCode = RunPrint(job, *g_cProject, error);
        if (exitCode != ExitCode::Ok)
            PrintError(error, false);
        delete g_cProject;
        g_cProject = nullptr;
    } else {
        g_cProject = new Project;
        // Hand-overs that come during the start wait until the command line's views are open.
        HandedViews handed;
        QObject::connect(
            instance.get(), &SingleInstance::FilesReceived, [&handed](const QStringList& files) { handed.Add(files); });
        g_cProject->Init();
        // With no main window there is nothing to wait for.
        if (g_cProject->MainWindow()) {
            for (const QString& view : command.views)
                g_cProject->OpenMeasuring(view, false);
            handed.SetReady(true);
            exitCode = app.exec();
        }
        handed.SetReady(false);
        instance.reset();
        delete g_cProject;
        g_cProject = nullptr;
    }

    EndProcess();
    return exitCode;
}
