// SPDX-License-Identifier: GPL-3.0-or-later
// Reading the command line and running a headless export.
#include "CommandLine.h"

#include "Calendar.h"
#include "ChartAdapter.h"
#include "Measuring.h"
#include "MeasuringFile.h"
#include "Project.h"
#include "SoranoFileHandler.h"
#include "Version.h"
#include "ctl_NavBar.h"
#include "frm_GraphicView.h"

#include <QCommandLineParser>
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

// Options of the toolkit that the application object reads and removes from the arguments.
constexpr const char* ToolkitOptionsWithValue[]
    = { "style", "stylesheet", "platform", "platformpluginpath", "platformtheme", "plugin", "qwindowgeometry",
          "qwindowicon", "qwindowtitle", "session", "display", "geometry", "qmljsdebugger", "dialogs", "fontengine" };
constexpr const char* ToolkitFlags[] = { "widgetcount", "reverse" };

// An option's name without its dashes and without "=value".
QString OptionName(const QString& argument)
{
    if (!argument.startsWith(QLatin1Char('-')))
        return QString();
    const qsizetype dashes = argument.startsWith(QLatin1String("--")) ? 2 : 1;
    return argument.mid(dashes).section(QLatin1Char('='), 0, 0);
}

// An unquoted date and time arrive as two arguments: "--from 2025-03-12 12:00:00" and
// "--from=2025-03-12 12:00:00" give the option one value with both.
QStringList JoinDateAndTime(QStringList arguments)
{
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        if (arguments[i] == QLatin1String("--"))
            break;
        const QString name = OptionName(arguments[i]);
        if (name != QLatin1String("from") && name != QLatin1String("to"))
            continue;
        const qsizetype date = arguments[i].contains(QLatin1Char('=')) ? i : i + 1;
        if (date + 1 < arguments.size() && IsTimeOfDay(arguments[date + 1])) {
            arguments[date] += QLatin1Char(' ') + arguments[date + 1];
            arguments.removeAt(date + 1);
        }
        i = date;
    }
    return arguments;
}

// The unknown option as the user wrote it, for the message.
QString SpelledAsGiven(const QStringList& arguments, const QString& name)
{
    for (const QString& argument : arguments) {
        if (argument == QLatin1String("--"))
            break;
        if (OptionName(argument) == name)
            return argument.section(QLatin1Char('='), 0, 0);
    }
    return QStringLiteral("--") + name;
}

} // namespace

QString UsageText()
{
    return QStringLiteral(
        "Usage: sorano [VIEW.sor ...]\n"
        "       sorano --export-csv|--export-png|--export-svg OUT [--from DATE] [--to DATE]\n"
        "              [--resolution COUNTUNIT] VIEW.sor\n"
        "       sorano --help | --version\n"
        "DATE is \"yyyy-mm-dd hh:nn:ss\" or \"yyyy-mm-dd\"; one bound alone moves the view's window.\n"
        "COUNTUNIT is a count and a unit: s, n (minutes), h, d, ww, m, yyyy; as 15n, 1h, 1d.\n"
        "Exit codes: 0 done, 2 arguments that can't be used, 3 a view file, module, channel or\n"
        "data source that fails, 4 an export file that can't be written.\n");
}

QString VersionText()
{
    return QStringLiteral("sorano %1.%2.%3").arg(SoranoVersionMajor).arg(SoranoVersionMinor).arg(SoranoVersionRevision);
}

CommandLine ParseCommandLine(const QStringList& arguments)
{
    CommandLine command;
    QCommandLineParser parser;
    // "-from" reads as "--from", and the toolkit's options below are whole words.
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    const QCommandLineOption help(QStringList { QStringLiteral("h"), QStringLiteral("help") });
    const QCommandLineOption version(QStringList { QStringLiteral("v"), QStringLiteral("version") });
    const QCommandLineOption from(QStringLiteral("from"), QString(), QStringLiteral("DATE"));
    const QCommandLineOption to(QStringLiteral("to"), QString(), QStringLiteral("DATE"));
    const QCommandLineOption resolution(QStringLiteral("resolution"), QString(), QStringLiteral("COUNTUNIT"));
    parser.addOptions({ help, version, from, to, resolution });
    QList<QCommandLineOption> exports;
    for (const ExportOption& option : ExportOptions) {
        exports.append(QCommandLineOption(QLatin1String(option.name).mid(2), QString(), QStringLiteral("OUT")));
        parser.addOption(exports.back());
    }
    // The application object takes these out of the arguments itself, later; here they
    // must only not count as unknown, nor their values as view files.
    for (const char* name : ToolkitOptionsWithValue)
        parser.addOption(QCommandLineOption(QLatin1String(name), QString(), QStringLiteral("VALUE")));
    for (const char* name : ToolkitFlags)
        parser.addOption(QCommandLineOption(QLatin1String(name)));

    if (!parser.parse(QStringList { QStringLiteral("sorano") } + JoinDateAndTime(arguments))) {
        const QStringList unknown = parser.unknownOptionNames();
        command.error = unknown.isEmpty()
            ? parser.errorText()
            : QStringLiteral("unknown option ") + SpelledAsGiven(arguments, unknown.front());
        return command;
    }
    if (parser.isSet(help)) {
        command.action = CommandLine::Action::Help;
        return command;
    }
    if (parser.isSet(version)) {
        command.action = CommandLine::Action::Version;
        return command;
    }

    const QStringList positional = parser.positionalArguments();
    const bool exportMode = parser.isSet(from) || parser.isSet(to) || parser.isSet(resolution)
        || std::any_of(exports.begin(), exports.end(), [&](const QCommandLineOption& o) { return parser.isSet(o); });
    if (!exportMode) {
        for (const QString& argument : positional) {
            if (!argument.endsWith(QLatin1String(".sor"), Qt::CaseInsensitive)) {
                command.error = u'"' + argument + QStringLiteral("\" is no view file (.sor)");
                return command;
            }
            command.views << argument;
        }
        return command;
    }

    command.action = CommandLine::Action::Export;
    ExportJob& job = command.job;
    const auto fail = [&command](const QString& message) {
        if (command.error.isEmpty())
            command.error = message;
    };
    qsizetype outputs = 0;
    for (qsizetype i = 0; i < exports.size(); ++i) {
        const QStringList values = parser.values(exports[i]);
        outputs += values.size();
        if (values.isEmpty())
            continue;
        const ExportOption& option = ExportOptions[i];
        job.format = option.format;
        job.output = values.back();
        if (MeasuringExport::FormatOf(job.output) != option.format)
            fail(QLatin1String(option.name) + QStringLiteral(" needs a file name ending in .")
                + QLatin1String(ExtensionOf(option.format)) + QStringLiteral(": \"") + job.output + u'"');
    }
    if (outputs > 1)
        command.error = QStringLiteral("only one export option may be given");

    for (const auto& [option, bound] : { std::pair { &from, &job.from }, std::pair { &to, &job.to } }) {
        if (!parser.isSet(*option))
            continue;
        const QString value = parser.value(*option);
        *bound = ParseDate(value);
        if (!*bound)
            fail(QStringLiteral("--") + option->names().front() + QStringLiteral(": \"") + value
                + QStringLiteral("\" is no date of the form yyyy-mm-dd or yyyy-mm-dd hh:nn:ss"));
    }
    if (parser.isSet(resolution)) {
        static const QRegularExpression form(QStringLiteral(R"(^(\d+)([a-zA-Z]+)$)"));
        const QString value = parser.value(resolution);
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
    }

    if (job.format == Format::None)
        fail(QStringLiteral("--from, --to and --resolution need an export option"));
    else if (positional.size() != 1)
        fail(positional.isEmpty() ? QStringLiteral("no view file given") : QStringLiteral("give one view file only"));
    else if (job.from && job.to && *job.to <= *job.from)
        fail(QStringLiteral("--to must lie after --from"));
    if (positional.size() == 1)
        job.view = positional.front();
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
    // The reader puts defaults in place of what it can't read; an export of a window or grid
    // that nobody asked for would look right and be wrong, so it stops here.
    if (!file.unreadable.isEmpty()) {
        QStringList values;
        for (const MeasuringFile::Unreadable& value : file.unreadable)
            values << QStringLiteral("an unreadable ") + value.element + QStringLiteral(": \"") + value.text + u'"';
        error = QStringLiteral("the view file \"") + job.view + QStringLiteral("\" has ")
            + values.join(QStringLiteral(", "));
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
        error = QStringLiteral("the view file \"") + job.view
            + QStringLiteral("\" has an empty time window: its enddate is not after its startdate");
        return ExitCode::View;
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

    if (measuring.ExportTo(job.output) != 0) {
        error = QStringLiteral("could not write \"") + job.output + u'"';
        return ExitCode::Write;
    }
    return ExitCode::Ok;
}
