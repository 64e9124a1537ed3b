// SPDX-License-Identifier: GPL-3.0-or-later
// The program's command line: view files to open, or a view to export without a window.
#pragma once

#include "MeasuringExport.h"

#include <QString>
#include <QStringList>

#include <optional>

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
};

struct CommandLine
{
    // An export option was given: the program runs without a window and ends.
    bool exportMode = false;
    ExportJob job;
    // View files to open in the main window.
    QStringList views;
    // Why the arguments can't be used; empty when they can.
    QString error;
};

// Exit codes of an export run.
namespace ExitCode {
constexpr int Ok = 0;
constexpr int Usage = 2; ///< arguments that can't be used
constexpr int View = 3; ///< the view file is missing or names modules or channels that aren't there
constexpr int Write = 4; ///< the export file could not be written
} // namespace ExitCode

// The arguments after the program name. Without an export option every argument ending in
// ".sor" is a view to open and all others are left to the toolkit; with one, each argument
// must be understood.
CommandLine ParseCommandLine(const QStringList& arguments);

QString UsageText();

// Opens the view with the project's data modules, puts the job's window and resolution on
// it, fetches and writes the export. An exit code; with a failure the reason is in error.
int RunExport(const ExportJob& job, Project& project, QString& error);
