// SPDX-License-Identifier: GPL-3.0-or-later
// Reading the command line and running a headless export.
#include "CommandLine.h"

#include "Calendar.h"
#include "Version.h"

#include <QCommandLineParser>
#include <QDate>
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
        "Usage: sorano [--new-instance] [VIEW.sor ...]\n"
        "       sorano --export-csv|--export-png|--export-svg OUT [--from DATE] [--to DATE]\n"
        "              [--resolution COUNTUNIT] VIEW.sor\n"
        "       sorano --print-pdf OUT.pdf [--report REP_0,REP_1,...] [--orientation portrait|landscape]\n"
        "              [--from DATE] [--to DATE] [--resolution COUNTUNIT] VIEW.sor [VIEW.sor ...]\n"
        "       sorano --print-batch NAME --source CHANNEL_KEY --from DATE --to DATE\n"
        "              [--resolution COUNTUNIT] [--customer \"COMPANY;CONTACT;STREET;PLACE;REMARK\"]\n"
        "              [--report REP_0,...] --print-pdf OUT.pdf\n"
        "       sorano --print-serial CHANNEL_KEY[,CHANNEL_KEY[,CHANNEL_KEY]] --from DATE --to DATE\n"
        "              [--resolution COUNTUNIT] [--per-page N] [--axis MIN:MAX[,MIN:MAX]] [--fixed-line VALUE]\n"
        "              [--customer ...] [--report REP_0,...] --print-pdf OUT.pdf\n"
        "       sorano --help | --version\n"
        "When a window of the program runs already, the views open in it and this start ends;\n"
        "--new-instance opens a window of its own.\n"
        "DATE is \"yyyy-mm-dd hh:nn:ss\" or \"yyyy-mm-dd\"; one bound alone moves the view's window.\n"
        "COUNTUNIT is a count and a unit: s, n (minutes), h, d, ww, m, yyyy; as 15n, 1h, 1d.\n"
        "Reports: REP_0 chart (the default), REP_1 table, REP_2 full-page chart; each runs over\n"
        "every view in turn, all into one PDF with numbered pages.\n"
        "A batch prints the templates of a stored report batch for the logger of CHANNEL_KEY\n"
        "(\"<module address>$<logger>#<channel>\", as 1$12#1); a serial report prints one chart page\n"
        "per day, or per N values, of up to three channels of the first key's logger.\n"
        "Exit codes: 0 done, 2 arguments that can't be used, 3 a view file, module, channel or\n"
        "data source that fails, or nothing to print, 4 an output file that can't be written.\n");
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
    const QCommandLineOption printPdf(QStringLiteral("print-pdf"), QString(), QStringLiteral("OUT"));
    const QCommandLineOption report(QStringLiteral("report"), QString(), QStringLiteral("IDS"));
    const QCommandLineOption orientation(QStringLiteral("orientation"), QString(), QStringLiteral("ORIENTATION"));
    parser.addOptions({ help, version, from, to, resolution, printPdf, report, orientation });
    const QCommandLineOption newInstance(QStringLiteral("new-instance"));
    parser.addOption(newInstance);
    const QCommandLineOption printBatch(QStringLiteral("print-batch"), QString(), QStringLiteral("NAME"));
    const QCommandLineOption source(QStringLiteral("source"), QString(), QStringLiteral("CHANNEL_KEY"));
    const QCommandLineOption customer(QStringLiteral("customer"), QString(), QStringLiteral("FIELDS"));
    const QCommandLineOption printSerial(QStringLiteral("print-serial"), QString(), QStringLiteral("CHANNEL_KEYS"));
    const QCommandLineOption perPage(QStringLiteral("per-page"), QString(), QStringLiteral("N"));
    const QCommandLineOption axis(QStringLiteral("axis"), QString(), QStringLiteral("MIN:MAX"));
    const QCommandLineOption fixedLine(QStringLiteral("fixed-line"), QString(), QStringLiteral("VALUE"));
    parser.addOptions({ printBatch, source, customer, printSerial, perPage, axis, fixedLine });
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

    // Without a window it changes nothing.
    command.newInstance = parser.isSet(newInstance);
    const QStringList positional = parser.positionalArguments();
    const bool exportMode = parser.isSet(from) || parser.isSet(to) || parser.isSet(resolution) || parser.isSet(printPdf)
        || parser.isSet(report) || parser.isSet(orientation) || parser.isSet(printBatch) || parser.isSet(printSerial)
        || parser.isSet(source) || parser.isSet(customer) || parser.isSet(perPage) || parser.isSet(axis)
        || parser.isSet(fixedLine)
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
    if (parser.isSet(printPdf)) {
        const QStringList values = parser.values(printPdf);
        outputs += values.size();
        command.action = CommandLine::Action::Print;
        job.output = values.back();
        if (!job.output.endsWith(QLatin1String(".pdf"), Qt::CaseInsensitive))
            fail(QStringLiteral("--print-pdf needs a file name ending in .pdf: \"") + job.output + u'"');
    }
    if (outputs > 1)
        command.error = QStringLiteral("only one export option may be given");
    if ((parser.isSet(report) || parser.isSet(orientation)) && !parser.isSet(printPdf))
        fail(QStringLiteral("--report and --orientation need --print-pdf"));
    if (parser.isSet(report)) {
        for (const QString& id : parser.value(report).split(u',')) {
            if (!id.trimmed().isEmpty())
                job.reports << id.trimmed();
        }
        if (job.reports.isEmpty())
            fail(QStringLiteral("--report needs report IDs such as REP_0,REP_1"));
    }
    if (parser.isSet(orientation)) {
        const QString value = parser.value(orientation).toLower();
        if (value == QLatin1String("portrait"))
            job.orientation = 1;
        else if (value == QLatin1String("landscape"))
            job.orientation = 2;
        else
            fail(QStringLiteral("--orientation: \"") + parser.value(orientation)
                + QStringLiteral("\" is neither portrait nor landscape"));
    }

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

    const bool batchRun = parser.isSet(printBatch);
    const bool serialRun = parser.isSet(printSerial);
    if (batchRun && serialRun)
        fail(QStringLiteral("give either --print-batch or --print-serial"));
    if ((batchRun || serialRun) && !parser.isSet(printPdf))
        fail(QStringLiteral("--print-batch and --print-serial need --print-pdf"));
    if ((parser.isSet(source) || parser.isSet(customer)) && !batchRun && !serialRun)
        fail(QStringLiteral("--source and --customer need --print-batch or --print-serial"));
    if ((parser.isSet(perPage) || parser.isSet(axis) || parser.isSet(fixedLine)) && !serialRun)
        fail(QStringLiteral("--per-page, --axis and --fixed-line need --print-serial"));
    if (parser.isSet(customer)) {
        job.customer = parser.value(customer).split(u';');
        if (job.customer.size() > 5)
            fail(QStringLiteral("--customer takes five fields at most: company;contact;street;place;remark"));
    }
    if (batchRun || serialRun) {
        if (!job.from || !job.to)
            fail(QStringLiteral("a batch or serial report needs --from and --to"));
        else if (*job.to < *job.from)
            fail(QStringLiteral("--to must not lie before --from"));
        if (!positional.isEmpty())
            fail(QStringLiteral("a batch or serial report takes no view file: \"") + positional.front() + u'"');
    }
    // "<address>$<logger>#<channel>"
    static const QRegularExpression channelKey(QStringLiteral(R"(^[^$]+\$[^#]+#.+$)"));
    if (batchRun) {
        job.batch = parser.value(printBatch).trimmed();
        job.source = parser.value(source).trimmed();
        if (job.batch.isEmpty())
            fail(QStringLiteral("--print-batch needs the name of a batch"));
        if (!parser.isSet(source))
            fail(QStringLiteral("--print-batch needs --source with a channel key of the logger to print for"));
        else if (!channelKey.match(job.source).hasMatch())
            fail(QStringLiteral("--source: \"") + job.source
                + QStringLiteral("\" is no channel key of the form <address>$<logger>#<channel>, such as 1$12#1"));
    }
    if (serialRun) {
        for (const QString& key : parser.value(printSerial).split(u',')) {
            job.serial << key.trimmed();
            if (!channelKey.match(job.serial.back()).hasMatch())
                fail(QStringLiteral("--print-serial: \"") + job.serial.back()
                    + QStringLiteral("\" is no channel key of the form <address>$<logger>#<channel>, such as 1$12#1"));
        }
        if (job.serial.size() > 3)
            fail(QStringLiteral("--print-serial takes three channel keys at most"));
        if (parser.isSet(perPage)) {
            bool number = false;
            job.perPage = parser.value(perPage).toInt(&number);
            if (!number || job.perPage < 1)
                fail(QStringLiteral("--per-page: \"") + parser.value(perPage)
                    + QStringLiteral("\" is no count of values"));
        }
        if (parser.isSet(axis)) {
            for (const QString& range : parser.value(axis).split(u',')) {
                bool lowNumber = false;
                bool highNumber = false;
                const double low = range.section(u':', 0, 0).toDouble(&lowNumber);
                const double high = range.section(u':', 1).toDouble(&highNumber);
                if (!lowNumber || !highNumber || range.count(u':') != 1 || high <= low) {
                    fail(QStringLiteral("--axis: \"") + range
                        + QStringLiteral("\" is no range MIN:MAX with MIN below MAX, such as 0:500"));
                    break;
                }
                job.axes.emplace_back(low, high);
            }
            if (job.axes.size() > 2)
                fail(QStringLiteral("--axis takes the left and the right axis at most"));
        }
        if (parser.isSet(fixedLine)) {
            bool number = false;
            job.fixedLine = parser.value(fixedLine).toDouble(&number);
            if (!number)
                fail(QStringLiteral("--fixed-line: \"") + parser.value(fixedLine) + QStringLiteral("\" is no number"));
        }
    }
    if (command.action == CommandLine::Action::Print && (batchRun || serialRun))
        return command;

    if (command.action == CommandLine::Action::Print) {
        if (positional.isEmpty())
            fail(QStringLiteral("no view file given"));
        for (const QString& argument : positional) {
            if (!argument.endsWith(QLatin1String(".sor"), Qt::CaseInsensitive))
                fail(u'"' + argument + QStringLiteral("\" is no view file (.sor)"));
            job.views << argument;
        }
        if (job.from && job.to && *job.to <= *job.from)
            fail(QStringLiteral("--to must lie after --from"));
        return command;
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
