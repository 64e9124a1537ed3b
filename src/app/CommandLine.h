// SPDX-License-Identifier: GPL-3.0-or-later
// The program's command line: view files to open, or a view to export without a window.
#pragma once

#include "MeasuringExport.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <utility>
#include <vector>

class Measuring;
class Project;

struct ExportJob
{
    MeasuringExport::Format format = MeasuringExport::Format::None;
    QString output;
    QString view;
    // Days since 1899-12-30. One bound alone moves the view's window and keeps its length.
    std::optional<double> from;
    std::optional<double> to;
    // Grid step, as "15n": a unit code and its count; empty keeps the view's own.
    QString resolutionUnit;
    qint32 resolutionCount = 0;
    // A printed PDF: its views (in place of view), the report IDs to run (empty: the chart
    // report), and the orientation all of them take (0: each report's own, 1 portrait, 2 landscape).
    QStringList views;
    QStringList reports;
    qint32 orientation = 0;
    // A stored batch run for the logger of the channel key source, in place of views.
    QString batch;
    QString source;
    // A serial report of up to three channel keys, in place of views.
    QStringList serial;
    qint32 perPage = 0; // values per page; 0 prints a page per day
    std::vector<std::pair<double, double>> axes; // minimum and maximum of the left, then the right axis
    std::optional<double> fixedLine;
    // Company, contact, street, place, remark of a batch or serial report.
    QStringList customer;
};

struct CommandLine
{
    enum class Action {
        Window, ///< start the main window and open the views
        Export, ///< run without a window, write the job's export and end
        Print, ///< run without a window, print the job's views into a PDF and end
        Help, ///< print the usage and end
        Version, ///< print the version and end
    };
    Action action = Action::Window;
    ExportJob job;
    // View files to open in the main window.
    QStringList views;
    // A window of its own, even when the user's window runs already (--new-instance).
    bool newInstance = false;
    // Why the arguments can't be used; empty when they can. Whatever the action, a command
    // line with an error does nothing but say so.
    QString error;
};

// Exit codes of the program when it ends without running the window.
namespace ExitCode {
constexpr int Ok = 0;
constexpr int Usage = 2; ///< arguments that can't be used
constexpr int View = 3; ///< the view file is missing, unreadable, or its modules, channels or data fail
constexpr int Write = 4; ///< the export file could not be written
} // namespace ExitCode

// The arguments after the program name, read before the application object exists. Options
// are taken as "--name value" and "--name=value" (one dash works as well); the toolkit's own
// options (-platform, -style, ...) are accepted and left to it. Every other argument is a
// view file, which must end in ".sor"; an export takes exactly one, a printed PDF one or more.
CommandLine ParseCommandLine(const QStringList& arguments);

QString UsageText();
// "sorano <major>.<minor>.<revision>".
QString VersionText();

// Opens the view with the project's data modules, puts the job's window and resolution on
// it, fetches and writes the export. An exit code; with a failure the reason is in error.
int RunExport(const ExportJob& job, Project& project, QString& error);

// Opens the views as RunExport does, runs the job's reports over each of them into one
// document, numbers its pages and writes the PDF. An exit code, with the reason in error.
int RunPrint(const ExportJob& job, Project& project, QString& error);

// Runs the stored batch (job.batch) for the logger of job.source, or the serial report of
// job.serial, over the job's period as the menu does, and writes the PDF. An exit code, with
// the reason in error.
int RunBatchPrint(const ExportJob& job, Project& project, QString& error);

// Opens one view file with the project's data modules as the window would, with the job's
// window and resolution, and fetches its data. An exit code, with the reason in error.
int OpenHeadless(const ExportJob& job, const QString& view, Project& project, Measuring& measuring, QString& error);
