// SPDX-License-Identifier: GPL-3.0-or-later
// The start and end steps of the process, and the command line as the entry routine reads it.
#include "SubMain.h"
#include "Calendar.h"
#include "CommandLine.h"
#include "Globals.h"
#include "MatrixScriptEngine.h"
#include "ResStrings.h"
#include "TempSettings.h"
#include "Version.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <gtest/gtest.h>

namespace {

const QString KeySettings = QStringLiteral("Software\\HARVOLD\\Sorano\\Settings");
const QString Version = QString("%1.%2.%3").arg(SoranoVersionMajor).arg(SoranoVersionMinor).arg(SoranoVersionRevision);

class SubMainTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        QDir().mkpath(roots.Path() + "/logs");
        roots.SetMachine(KeySettings, "LogPath", roots.Path() + "/logs");
    }
    void TearDown() override
    {
        EndProcess();
        g_lLangOffset = 0;
        g_sWhoAmI.clear();
    }
    QStringList LogLines()
    {
        QFile file(roots.Path() + "/logs/Sorano.log");
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts);
    }

    TempSettings roots;
};

TEST_F(SubMainTest, FreshLogStartsWithSeparatorAndVersionLineAndTheEngineLivesUntilTheEnd)
{
    StartProcess();
    const QStringList lines = LogLines();
    ASSERT_GE(lines.size(), 2);
    EXPECT_TRUE(QRegularExpression("^\\S.* : --------- - $").match(lines[0]).hasMatch()) << lines[0].toStdString();
    EXPECT_TRUE(lines[1].endsWith(" Sub Main: app start - starting version " + Version)) << lines[1].toStdString();

    ASSERT_NE(g_cScriptEngine, nullptr);
    EndProcess();
    EXPECT_EQ(g_cScriptEngine, nullptr);
    const QStringList all = LogLines();
    ASSERT_EQ(all.size(), 4);
    EXPECT_TRUE(all[3].endsWith(" --------: --------- - ----------------"));
}

// The language offset must be numeric as a whole and come from the machine; the edition tag must match exactly.
TEST_F(SubMainTest, LanguageOffsetAndEditionAreTakenOnlyWhenExact)
{
    const struct
    {
        const char* machine;
        const char* user;
        int offset;
        const char* file;
    } offsets[] = { { "1000", "", 1000, "&File" }, { "1000abc", "", 0, "&Datei" }, { "", "1000", 0, "&Datei" } };
    for (const auto& c : offsets) {
        roots.SetMachine(KeySettings, "LangOffset", c.machine);
        roots.SetUser(KeySettings, "LangOffset", c.user);
        StartProcess();
        EXPECT_EQ(g_lLangOffset, c.offset) << c.machine << "/" << c.user;
        EXPECT_EQ(GetResString(204), c.file) << c.machine << "/" << c.user;
        EndProcess();
    }
    for (const auto& [stored, tag] : std::vector<std::pair<QString, QString>> {
             { "sorano", "sorano" }, { "talven", "talven" }, { "Sorano", "" }, { "talven ", "" } }) {
        roots.SetMachine(KeySettings, "whoami", stored);
        StartProcess();
        EXPECT_EQ(g_sWhoAmI, tag) << stored.toStdString();
        EndProcess();
    }
}

// The entry routine with the given arguments and what it printed. Help, version and
// mistakes end before the application object would exist, so a running test can call it.
struct Printed
{
    int exitCode;
    std::string out;
    std::string err;
};

Printed RunSubMain(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), "sorano");
    std::vector<char*> argv;
    for (std::string& argument : arguments)
        argv.push_back(argument.data());
    argv.push_back(nullptr);
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    const int exitCode = SubMain(int(arguments.size()), argv.data());
    std::string out = ::testing::internal::GetCapturedStdout();
    return { exitCode, out, ::testing::internal::GetCapturedStderr() };
}

// Help and version print to standard output and end with 0; arguments that can't be used print
// the reason and the usage to standard error and end with 2.
TEST(SubMainCommandLineTest, HelpVersionAndUnusableArgumentsPrintAndEndWithTheirExitCode)
{
    const std::string usage = UsageText().toStdString();
    const std::string version = ("sorano " + Version + '\n').toStdString();
    const struct
    {
        std::vector<std::string> arguments;
        std::string out;
        const char* reason; // nullptr: help or version
    } cases[] = {
        { { "--help", "view.sor" }, usage, nullptr },
        { { "-h", "view.sor" }, usage, nullptr },
        { { "--version", "view.sor" }, version, nullptr },
        { { "-v", "view.sor" }, version, nullptr },
        { { "--bogus", "view.sor" }, "", "sorano: unknown option --bogus\n" },
        { { "view.sor", "-x=1" }, "", "sorano: unknown option -x\n" },
        { { "notes.txt" }, "", "sorano: \"notes.txt\" is no view file (.sor)\n" },
        { { "--export-csv" }, "", "sorano: " },
        { { "--to", "2025-03-10", "view.sor" }, "", "sorano: --from, --to and --resolution need an export option\n" },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments.front());
        const Printed run = RunSubMain(c.arguments);
        EXPECT_EQ(run.exitCode, c.reason ? ExitCode::Usage : 0) << run.err;
        EXPECT_EQ(run.out, c.out);
        if (!c.reason)
            EXPECT_EQ(run.err, "");
        else
            EXPECT_TRUE(run.err.rfind(c.reason, 0) == 0 && run.err.ends_with(usage)) << run.err;
    }
}

// What the parse gives, checked without running anything.
TEST(CommandLineTest, ToolkitOptionsAreLeftToTheToolkitAndOptionsTakeTheirValuesInEveryForm)
{
    const CommandLine window = ParseCommandLine({ "-platform", "offscreen", "-style", "fusion", "--stylesheet=look.qss",
        "-reverse", "a.sor", "-qwindowtitle", "Titel", "B.SOR" });
    EXPECT_EQ(window.error, "");
    EXPECT_EQ(window.action, CommandLine::Action::Window);
    EXPECT_EQ(window.views, QStringList({ "a.sor", "B.SOR" }));

    const double march12 = Calendar::FromParts(2025, 3, 12, 0, 0, 0);
    const double march14noon = Calendar::FromParts(2025, 3, 14, 12, 0, 0);
    const struct
    {
        QStringList arguments;
        std::optional<double> from;
        std::optional<double> to;
    } exports[] = {
        { { "--export-svg", "c.svg", "--from", "2025-03-12", "--to", "2025-03-14", "12:00:00", "v.sor" }, march12,
            march14noon },
        { { "-style", "fusion", "--export-svg=c.svg", "v.sor", "--from=2025-03-12", "00:00:00",
              "-to=2025-03-14 12:00:00" },
            march12, march14noon },
        { { "v.sor", "-export-svg", "c.svg", "-to", "2025-03-14", "12:00:00", "-platform", "offscreen" }, std::nullopt,
            march14noon },
    };
    for (const auto& c : exports) {
        SCOPED_TRACE(c.arguments.join(' ').toStdString());
        const CommandLine command = ParseCommandLine(c.arguments);
        EXPECT_EQ(command.error, "");
        EXPECT_TRUE(
            command.action == CommandLine::Action::Export && command.job.format == MeasuringExport::Format::Svg);
        EXPECT_TRUE(command.job.output == "c.svg" && command.job.view == "v.sor");
        EXPECT_TRUE(command.job.from == c.from && command.job.to == c.to);
    }

    const CommandLine twice = ParseCommandLine({ "--export-csv", "a.csv", "--export-svg", "b.svg", "v.sor" });
    EXPECT_EQ(twice.error, "only one export option may be given");
    const CommandLine resolution = ParseCommandLine({ "--resolution", "15n", "--export-csv", "a.csv", "v.sor" });
    EXPECT_TRUE(
        resolution.error.isEmpty() && resolution.job.resolutionUnit == "n" && resolution.job.resolutionCount == 15);
}

} // namespace
