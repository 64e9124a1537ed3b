// SPDX-License-Identifier: GPL-3.0-or-later
// Work without a window: a view opened as on screen, then exported or printed to PDF.
#include "CommandLine.h"

#include "BatchHost.h"
#include "BatchRun.h"
#include "BatchStore.h"
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

namespace {

// The job's reports (the chart report when it names none) with their orientations.
int ChooseReports(const ExportJob& job, Project& project, std::vector<ReportPtr>& reports,
    std::vector<qint32>& orientations, QString& error)
{
    project.LoadReports();
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
    return ExitCode::Ok;
}

// The reports over the views into one document with numbered pages, written as PDF.
int PrintViews(const ExportJob& job, std::vector<ReportPtr>& reports, const std::vector<qint32>& orientations,
    const std::vector<Measuring*>& measurings, QString& error)
{
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

// The channel the key names must be offered: a batch or serial report of a logger the
// modules don't know would print empty pages.
bool Offered(Project& project, const QString& key, QString& error)
{
    const QString address = key.section(u'$', 0, 0);
    const ModuleBoxPtr box = project.DataModules().Item(address);
    if (!box) {
        error = QStringLiteral("the channel key ") + key + QStringLiteral(" names the data module at address ")
            + address + QStringLiteral(", which is not registered or could not be loaded");
        return false;
    }
    if (box->Channels().isEmpty())
        box->GetChannelList(nullptr);
    if (!box->Channel(key.section(u'$', 1))) {
        error = QStringLiteral("the channel ") + key + QStringLiteral(" is not offered by its data module ")
            + box->Name();
        return false;
    }
    return true;
}

} // namespace

int RunBatchPrint(const ExportJob& job, Project& project, QString& error)
{
    std::vector<ReportPtr> reports;
    std::vector<qint32> orientations;
    if (const int code = ChooseReports(job, project, reports, orientations, error); code != ExitCode::Ok)
        return code;

    BatchRunSettings settings;
    settings.channels = job.batch.isEmpty() ? job.serial : QStringList { job.source };
    for (const QString& key : settings.channels)
        if (!Offered(project, key, error))
            return ExitCode::View;
    settings.name = job.batch.isEmpty() ? QStringLiteral("Serienreport") : job.batch;
    settings.start = job.from.value_or(0.0);
    settings.end = job.to.value_or(0.0);
    settings.intervalUnit = job.resolutionUnit;
    settings.intervalCount = job.resolutionUnit.isEmpty() ? 1 : job.resolutionCount;
    for (qsizetype i = 0; i < job.customer.size() && i < 5; ++i)
        settings.customer[size_t(i)] = job.customer[i].trimmed();

    BatchStore store(BatchStore::DefaultFolder());
    WindowlessTemplates host(project);
    std::vector<Measuring*> views;
    if (!job.batch.isEmpty()) {
        store.Load();
        const qsizetype index = store.IndexOf(job.batch);
        if (index < 0) {
            QStringList known;
            for (qsizetype i = 0; i < store.Count(); ++i)
                known << u'"' + store.Name(i) + u'"';
            error = QStringLiteral("there is no report batch \"") + job.batch + u'"'
                + (known.isEmpty() ? QStringLiteral(" (there are none in ") + store.Folder() + u')'
                                   : QStringLiteral("; there are ") + known.join(QStringLiteral(", ")));
            return ExitCode::Usage;
        }
        std::vector<BatchTemplate> templates;
        for (const BatchStore::Template& entry : store.Templates(index))
            templates.push_back({ store.TemplatePath(entry), entry.name });
        if (templates.empty()) {
            error = QStringLiteral("the report batch \"") + store.Name(index) + QStringLiteral("\" has no templates");
            return ExitCode::View;
        }
        views = BatchRun::PrepareBatch(host, templates, settings, nullptr);
    } else {
        SerialSettings serial;
        serial.perDay = job.perPage <= 0;
        serial.valuesPerPage = job.perPage;
        serial.manualAxes = !job.axes.empty();
        for (size_t i = 0; i < job.axes.size() && i < 2; ++i) {
            serial.borders[2 * i] = job.axes[i].first;
            serial.borders[2 * i + 1] = job.axes[i].second;
        }
        serial.showFixedLine = job.fixedLine.has_value();
        serial.fixedLineValue = job.fixedLine.value_or(0.0);
        const qsizetype channels = std::min<qsizetype>(job.serial.size(), 3);
        const QString path = BatchRun::SerialTemplate(store.Folder(), channels);
        if (path.isEmpty()) {
            error = QStringLiteral("the serial report's template LGA_%1.mtb is neither in %2 nor beside the program")
                        .arg(channels)
                        .arg(store.Folder());
            return ExitCode::View;
        }
        views = BatchRun::PrepareSerial(host, path, settings, serial, nullptr);
    }
    if (views.empty()) {
        error = QStringLiteral("no template could be opened for the logger of ") + settings.channels.value(0);
        return ExitCode::View;
    }
    // A failed read shows as gaps, which a printed page can't tell from missing measurements.
    for (Measuring* view : views)
        if (!view->FetchError().isEmpty()) {
            error = view->FetchError();
            BatchRun::Close(host, views);
            return ExitCode::View;
        }
    const int code = PrintViews(job, reports, orientations, views, error);
    BatchRun::Close(host, views);
    return code;
}

int RunPrint(const ExportJob& job, Project& project, QString& error)
{
    std::vector<ReportPtr> reports;
    std::vector<qint32> orientations;
    if (const int code = ChooseReports(job, project, reports, orientations, error); code != ExitCode::Ok)
        return code;

    std::vector<std::unique_ptr<Measuring>> views;
    std::vector<Measuring*> measurings;
    for (const QString& view : job.views) {
        views.push_back(std::make_unique<Measuring>(project));
        if (const int code = OpenHeadless(job, view, project, *views.back(), error); code != ExitCode::Ok)
            return code;
        measurings.push_back(views.back().get());
    }

    return PrintViews(job, reports, orientations, measurings, error);
}
