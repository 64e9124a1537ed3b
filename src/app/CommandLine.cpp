// SPDX-License-Identifier: GPL-3.0-or-later
#include "CommandLine.h"

#include "Calendar.h"
#include "ChartAdapter.h"
#include "Measuring.h"
#include "MeasuringFile.h"
#include "Project.h"
#include "SoranoFileHandler.h"
#include "ctl_NavBar.h"
#include "frm_GraphicView.h"

#include <QDate>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTime>

namespace {

using MeasuringExport::Format;

struct ExportOption
{
    const char* name;
    Format format;
};

constexpr ExportOption ExportOptions[] = {
    { "--export-csv", Format::Csv },
    { "--export-png", Format::Png },
    { "--export-svg", Format::Svg },
};

const char* ExtensionOf(Format format)
{
    switch (format) {
    case Format::Csv:
        return "csv";
    case Format::Png:
        return "png";
    case Format::Svg:
        return "svg";
    default:
        return "";
    }
}

// "yyyy-mm-dd hh:nn:ss" as the view files write dates, or "yyyy-mm-dd" for midnight.
std::optional<double> ParseDate(const QString& text)
{
    static const QRegularExpression form(QStringLiteral(R"(^(\d{4})-(\d{2})-(\d{2})(?: (\d{2}):(\d{2}):(\d{2}))?$)"));
    const QRegularExpressionMatch match = form.match(text.trimmed());
    if (!match.hasMatch())
        return std::nullopt;
    const QDate date(match.captured(1).toInt(), match.captured(2).toInt(), match.captured(3).toInt());
    const QTime time = match.captured(4).isEmpty()
        ? QTime(0, 0)
        : QTime(match.captured(4).toInt(), match.captured(5).toInt(), match.captured(6).toInt());
    if (!date.isValid() || !time.isValid())
        return std::nullopt;
    return Calendar::FromParts(date.year(), date.month(), date.day(), time.hour(), time.minute(), time.second());
}

bool IsTimeOfDay(const QString& text)
{
    static const QRegularExpression form(QStringLiteral(R"(^\d{2}:\d{2}:\d{2}$)"));
    return form.match(text).hasMatch();
}

} // namespace

QString UsageText()
{
    return QStringLiteral(
        "Usage: sorano [VIEW.sor ...]\n"
        "       sorano --export-csv|--export-png|--export-svg OUT [--from DATE] [--to DATE]\n"
        "              [--resolution COUNTUNIT] VIEW.sor\n"
        "DATE is \"yyyy-mm-dd hh:nn:ss\" or \"yyyy-mm-dd\"; one bound alone moves the view's window.\n"
        "COUNTUNIT is a count and a unit: s, n (minutes), h, d, ww, m, yyyy; as 15n, 1h, 1d.\n");
}

CommandLine ParseCommandLine(const QStringList& arguments)
{
    CommandLine command;
    const auto isOurs = [](const QString& argument) {
        const QString name = argument.section(QLatin1Char('='), 0, 0);
        if (name == QLatin1String("--from") || name == QLatin1String("--to") || name == QLatin1String("--resolution"))
            return true;
        for (const ExportOption& option : ExportOptions)
            if (name == QLatin1String(option.name))
                return true;
        return false;
    };
    command.exportMode = std::any_of(arguments.begin(), arguments.end(), isOurs);
    if (!command.exportMode) {
        for (const QString& argument : arguments)
            if (!argument.startsWith(QLatin1Char('-')) && argument.endsWith(QLatin1String(".sor"), Qt::CaseInsensitive))
                command.views << argument;
        return command;
    }

    ExportJob& job = command.job;
    const auto fail = [&command](const QString& message) {
        if (command.error.isEmpty())
            command.error = message;
    };
    QStringList views;
    for (qsizetype i = 0; i < arguments.size() && command.error.isEmpty(); ++i) {
        const QString& argument = arguments[i];
        if (!argument.startsWith(QLatin1String("--"))) {
            views << argument;
            continue;
        }
        // "--name value" and "--name=value" both work.
        const qsizetype equals = argument.indexOf(QLatin1Char('='));
        const QString name = equals < 0 ? argument : argument.left(equals);
        QString value;
        if (equals >= 0) {
            value = argument.mid(equals + 1);
        } else if (i + 1 < arguments.size()) {
            value = arguments[++i];
        } else {
            fail(name + QStringLiteral(" needs a value"));
            break;
        }

        if (name == QLatin1String("--from") || name == QLatin1String("--to")) {
            // An unquoted date and time arrive as two arguments.
            if (equals < 0 && i + 1 < arguments.size() && IsTimeOfDay(arguments[i + 1]))
                value += QLatin1Char(' ') + arguments[++i];
            const std::optional<double> date = ParseDate(value);
            if (!date)
                fail(name + QStringLiteral(": \"") + value
                    + QStringLiteral("\" is no date of the form yyyy-mm-dd or yyyy-mm-dd hh:nn:ss"));
            else
                (name == QLatin1String("--from") ? job.from : job.to) = date;
        } else if (name == QLatin1String("--resolution")) {
            static const QRegularExpression form(QStringLiteral(R"(^(\d+)([a-zA-Z]+)$)"));
            const QRegularExpressionMatch match = form.match(value);
            const auto unit = match.hasMatch() ? Calendar::ParseUnit(match.captured(2)) : std::nullopt;
            const qint64 count = match.hasMatch() ? match.captured(1).toLongLong() : 0;
            if (!unit || count < 1 || count > 1'000'000) {
                fail(QStringLiteral("--resolution: \"") + value
                    + QStringLiteral("\" is no count and unit (s, n, h, d, ww, m, yyyy) such as 15n, 1h or 1d"));
            } else {
                job.resolutionUnit = Calendar::UnitCode(*unit);
                job.resolutionCount = static_cast<qint32>(count);
            }
        } else {
            const auto option = std::find_if(std::begin(ExportOptions), std::end(ExportOptions),
                [&](const ExportOption& o) { return name == QLatin1String(o.name); });
            if (option == std::end(ExportOptions)) {
                fail(QStringLiteral("unknown option ") + name);
            } else if (job.format != Format::None) {
                fail(QStringLiteral("only one export option may be given"));
            } else if (MeasuringExport::FormatOf(value) != option->format) {
                fail(name + QStringLiteral(" needs a file name ending in .")
                    + QLatin1String(ExtensionOf(option->format)) + QStringLiteral(": \"") + value + u'"');
            } else {
                job.format = option->format;
                job.output = value;
            }
        }
    }
    if (command.error.isEmpty()) {
        if (job.format == Format::None)
            fail(QStringLiteral("--from, --to and --resolution need an export option"));
        else if (views.size() != 1)
            fail(views.isEmpty() ? QStringLiteral("no view file given") : QStringLiteral("give one view file only"));
        else if (job.from && job.to && *job.to <= *job.from)
            fail(QStringLiteral("--to must lie after --from"));
    }
    if (views.size() == 1)
        job.view = views.front();
    return command;
}

int RunExport(const ExportJob& job, Project& project, QString& error)
{
    if (!QFileInfo(job.view).isFile()) {
        error = QStringLiteral("the view file \"") + job.view + QStringLiteral("\" does not exist");
        return ExitCode::View;
    }
    MeasuringFile file;
    bool isView = false;
    SoranoFileHandler::Load(job.view, file, &isView);
    if (!isView) {
        error = QStringLiteral("\"") + job.view + QStringLiteral("\" is no view file");
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
    if (file.endDate <= file.startDate) {
        error = QStringLiteral("the time window of the export is empty");
        return ExitCode::Usage;
    }
    if (!job.resolutionUnit.isEmpty()) {
        file.intervalUnit = job.resolutionUnit;
        file.intervalCount = job.resolutionCount;
    }

    Measuring measuring(project);
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
    for (const MeasuringFile::Curve& curve : file.curves)
        if (!curve.channels.isEmpty() && !measuring.FindCurve(curve.channels.front())) {
            error = QStringLiteral("the channel ") + curve.channels.front() + QStringLiteral(" of the curve \"")
                + curve.name + QStringLiteral("\" is not offered by its data module");
            return ExitCode::View;
        }

    // What opening the view on screen does, without the window.
    measuring.ReloadSettings();
    ctl_NavBar& bar = *measuring.Window()->nav_Navigate();
    bar.SetDateFirst(measuring.FirstDataDate());
    bar.SetDateLast(measuring.LastDataDate());
    measuring.Refresh(true);
    measuring.UpdateAxisTitles();
    measuring.AdjustAxis(ChartAxis::Y1);
    measuring.AdjustAxis(ChartAxis::Y2);
    measuring.RedrawCursors();

    if (measuring.ExportTo(job.output) != 0) {
        error = QStringLiteral("could not write \"") + job.output + u'"';
        return ExitCode::Write;
    }
    return ExitCode::Ok;
}
