// SPDX-License-Identifier: GPL-3.0-or-later
// Work without a window: a view opened as on screen, then exported or printed to PDF.
#include "CommandLine.h"

#include "ChartAdapter.h"
#include "Measuring.h"
#include "MeasuringFile.h"
#include "Project.h"
#include "ReportDocument.h"
#include "ReportRun.h"
#include "SoranoFileHandler.h"
#include "ctl_NavBar.h"
#include "frm_GraphicView.h"

#include <QFileInfo>

int OpenHeadless(const ExportJob& job, const QString& view, Project& project, Measuring& measuring, QString& error)
{
    if (!QFileInfo(view).isFile()) {
        error = QStringLiteral("the view file \"") + view + QStringLiteral("\" does not exist");
        return ExitCode::View;
    }
    MeasuringFile file;
    bool isView = false;
    SoranoFileHandler::Load(view, file, &isView);
    if (!isView) {
        error = QStringLiteral("\"") + view + QStringLiteral("\" is no view file");
        return ExitCode::View;
    }
    // The reader puts defaults in place of what it can't read; an export of a window or grid
    // that nobody asked for would look right and be wrong, so it stops here.
    if (!file.unreadable.isEmpty()) {
        QStringList values;
        for (const MeasuringFile::Unreadable& value : file.unreadable)
            values << QStringLiteral("an unreadable ") + value.element + QStringLiteral(": \"") + value.text + u'"';
        error
            = QStringLiteral("the view file \"") + view + QStringLiteral("\" has ") + values.join(QStringLiteral(", "));
        return ExitCode::View;
    }
    for (const QString& address : file.modules)
        if (!address.isEmpty() && !project.DataModules().Item(address)) {
            error = QStringLiteral("the view uses the data module at address ") + address
                + QStringLiteral(", which is not registered or could not be loaded");
            return ExitCode::View;
        }

    if (job.from || job.to) {
        const double length = file.endDate - file.startDate;
        file.startDate = job.from.value_or(job.to.value_or(0.0) - length);
        file.endDate = job.to.value_or(file.startDate + length);
    }
    // --from and --to are checked against each other, so an empty window has the length of
    // the file's own.
    if (file.endDate <= file.startDate) {
        error = QStringLiteral("the view file \"") + view
            + QStringLiteral("\" has an empty time window: its enddate is not after its startdate");
        return ExitCode::View;
    }
    if (!job.resolutionUnit.isEmpty()) {
        file.intervalUnit = job.resolutionUnit;
        file.intervalCount = job.resolutionCount;
    }

    if (measuring.Init() != 0) {
        error = QStringLiteral("the view could not be set up");
        return ExitCode::View;
    }
    measuring.FromFile(file);
    for (const QString& address : file.modules)
        if (!address.isEmpty() && !measuring.DataModules().Item(address)) {
            error = QStringLiteral("the data module \"") + project.DataModules().Item(address)->Name()
                + QStringLiteral("\" (address ") + address + QStringLiteral(") could not list its channels");
            return ExitCode::View;
        }
    // Every channel of every curve, so that a sum is never exported without a part of it.
    for (const MeasuringFile::Curve& curve : file.curves) {
        if (curve.channels.isEmpty())
            continue;
        const Curve* made = measuring.FindCurve(curve.channels.front());
        for (const QString& key : curve.channels) {
            const QString address = key.section(u'$', 0, 0);
            const QString id = key.section(u'$', 1);
            const bool present = made
                && std::any_of(made->Channels().begin(), made->Channels().end(), [&](const CurveChannel& channel) {
                       return ModuleBoxes::SameAddress(QString::number(channel.matrix->ModuleAddress()), address)
                           && channel.matrix->ChannelID() == id;
                   });
            if (!present) {
                error = QStringLiteral("the channel ") + key
                    + (curve.name ? QStringLiteral(" of the curve \"") + *curve.name + u'"' : QString())
                    + QStringLiteral(" is not offered by its data module");
                return ExitCode::View;
            }
        }
    }

    // What opening the view on screen does, without the window.
    measuring.ReloadSettings();
    ctl_NavBar& bar = *measuring.Window()->nav_Navigate();
    bar.SetDateFirst(measuring.FirstDataDate());
    bar.SetDateLast(measuring.LastDataDate());
    measuring.Refresh(true);
    // A failed read shows as gaps, which an export file can't tell from missing measurements.
    if (!measuring.FetchError().isEmpty()) {
        error = measuring.FetchError();
        return ExitCode::View;
    }
    measuring.UpdateAxisTitles();
    measuring.AdjustAxis(ChartAxis::Y1);
    measuring.AdjustAxis(ChartAxis::Y2);
    measuring.RedrawCursors();
    return ExitCode::Ok;
}

int RunExport(const ExportJob& job, Project& project, QString& error)
{
    Measuring measuring(project);
    if (const int code = OpenHeadless(job, job.view, project, measuring, error); code != ExitCode::Ok)
        return code;
    if (measuring.ExportTo(job.output) != 0) {
        error = QStringLiteral("could not write \"") + job.output + u'"';
        return ExitCode::Write;
    }
    return ExitCode::Ok;
}

int RunPrint(const ExportJob& job, Project& project, QString& error)
{
    project.LoadReports();
    std::vector<ReportPtr> reports;
    std::vector<qint32> orientations;
    for (const QString& id : job.reports.isEmpty() ? QStringList { QStringLiteral("REP_0") } : job.reports) {
        const ReportPtr report = project.Reports().Item(id);
        if (!report) {
            QStringList known;
            for (const ReportPtr& offered : project.Reports())
                known << offered->ID() + QStringLiteral(" (") + offered->Name() + u')';
            error = QStringLiteral("there is no report ") + id + QStringLiteral("; there are ")
                + known.join(QStringLiteral(", "));
            return ExitCode::Usage;
        }
        reports.push_back(report);
        orientations.push_back(job.orientation != 0 ? job.orientation : report->Orientation());
    }

    std::vector<std::unique_ptr<Measuring>> views;
    std::vector<Measuring*> measurings;
    for (const QString& view : job.views) {
        views.push_back(std::make_unique<Measuring>(project));
        if (const int code = OpenHeadless(job, view, project, *views.back(), error); code != ExitCode::Ok)
            return code;
        measurings.push_back(views.back().get());
    }

    ReportDocument document;
    RunReports(document, reports, orientations, measurings, true);
    if (document.PageCount() == 0) {
        error = QStringLiteral("the reports made no page: the views have no values in their time window");
        return ExitCode::View;
    }
    QString reason;
    if (!document.SavePdf(job.output, &reason)) {
        error = QStringLiteral("could not write \"") + job.output + QStringLiteral("\": ") + reason;
        return ExitCode::Write;
    }
    return ExitCode::Ok;
}
