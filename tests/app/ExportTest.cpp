// SPDX-License-Identifier: GPL-3.0-or-later
// The example views on the demo database: headless export checked against values computed
// straight from the database file, bad command lines, and the views as documents of the main window.
#include "ChartAdapter.h"
#include "CommandLine.h"
#include "DemoFixture.h"
#include "Measuring.h"
#include "MeasuringExport.h"
#include "Project.h"
#include "QtPrinters.h"
#include "frm_Main.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMessageBox>
#include <QMimeData>
#include <QPicture>
#include <QProcess>
#include <QTimer>

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <cmath>
#include <vector>

namespace {

constexpr double NoValue = -1e300;
const QString MainView = QStringLiteral(SORANO_EXAMPLES_DIR "/Hauptzaehler.sor");

struct Column
{
    int channel;
    QString header;
    bool powerFactor = false;
};

// One view as the table must show it: the grid from `from` in steps of `step` seconds.
struct Expected
{
    QString from;
    int rows;
    int step;
    std::vector<Column> columns;
};

// A step's value is the mean of its samples; a step with samples that are all NULL is a gap,
// and a step without any sample keeps the value before it (a gap before the first). Power factors
// are folded by the view when they arrive, before the grid.
std::vector<double> Reference(const Expected& view, const Column& column)
{
    const auto fold = [](double x) { return std::fabs(x) > 1 ? 1.1 : x > 0 ? 1 - x : -1 - x; };
    const QDateTime from = QDateTime::fromString(view.from, "yyyy-MM-dd hh:mm:ss");
    const qint64 fromMs = QDate(1899, 12, 30).daysTo(from.date()) * 86'400'000LL + from.time().msecsSinceStartOfDay();
    const qint64 stepMs = view.step * 1000LL;
    sqlite3* db = nullptr;
    sqlite3_open_v2(SORANO_DEMO_DATABASE, &db, SQLITE_OPEN_READONLY, nullptr);
    sqlite3_stmt* query = nullptr;
    sqlite3_prepare_v2(db, "SELECT time, value FROM samples WHERE channel = ? AND time >= ? AND time < ? ORDER BY time",
        -1, &query, nullptr);
    sqlite3_bind_int(query, 1, column.channel);
    sqlite3_bind_double(query, 2, double(fromMs - 1000) / 86'400'000.0);
    sqlite3_bind_double(query, 3, double(fromMs + view.rows * stepMs + 1000) / 86'400'000.0);
    std::vector<double> sum(size_t(view.rows), 0.0);
    std::vector<int> count(size_t(view.rows), 0), samples(size_t(view.rows), 0);
    while (sqlite3_step(query) == SQLITE_ROW) {
        const qint64 at = std::llround(sqlite3_column_double(query, 0) * 86'400'000.0) - fromMs;
        if (at < 0 || at >= view.rows * stepMs)
            continue;
        const size_t row = size_t(at / stepMs);
        ++samples[row];
        if (sqlite3_column_type(query, 1) == SQLITE_NULL)
            continue;
        const double value = sqlite3_column_double(query, 1);
        sum[row] += column.powerFactor ? fold(value) : value;
        ++count[row];
    }
    sqlite3_finalize(query);
    sqlite3_close(db);
    std::vector<double> values;
    double carry = NoValue;
    for (size_t row = 0; row < size_t(view.rows); ++row) {
        if (samples[row] > 0)
            carry = count[row] > 0 ? sum[row] / count[row] : NoValue;
        values.push_back(carry);
    }
    return values;
}

void CompareTable(const QString& csvFile, const Expected& view)
{
    QFile file(csvFile);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << csvFile.toStdString();
    QStringList lines = QString::fromUtf8(file.readAll()).split("\r\n");
    ASSERT_EQ(lines.takeLast(), "");
    QStringList header { "\"Zeitstempel\"" };
    for (const Column& column : view.columns)
        header << '"' + column.header + '"';
    EXPECT_EQ(lines.takeFirst(), header.join(','));
    ASSERT_EQ(lines.size(), view.rows);

    const QDateTime from = QDateTime::fromString(view.from, "yyyy-MM-dd hh:mm:ss");
    for (size_t c = 0; c < view.columns.size(); ++c) {
        const std::vector<double> expected = Reference(view, view.columns[c]);
        for (int row = 0; row < view.rows; ++row) {
            const QStringList cells = lines[row].split(',');
            ASSERT_EQ(cells.size(), qsizetype(view.columns.size() + 1)) << lines[row].toStdString();
            ASSERT_EQ(cells[0], from.addSecs(qint64(row) * view.step).toString("yyyy-MM-dd hh:mm:ss"));
            bool number = false;
            const double value = cells[qsizetype(c) + 1].toDouble(&number);
            ASSERT_TRUE(number) << lines[row].toStdString();
            const double reference = expected[size_t(row)];
            ASSERT_NEAR(value, reference, 1e-9 * std::max(1.0, std::fabs(reference)))
                << view.columns[c].header.toStdString() << " at " << cells[0].toStdString();
        }
    }
}

QByteArray ReadAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

class ExportTest : public DemoFixture
{
protected:
    int Export(const QStringList& arguments, QString& error)
    {
        const CommandLine command = ParseCommandLine(arguments);
        error = command.error;
        if (!command.error.isEmpty())
            return ExitCode::Usage;
        Project project;
        project.LoadDataModules();
        return RunExport(command.job, project, error);
    }
    void ExportOk(const QStringList& arguments, const QString& csv)
    {
        QString error;
        ASSERT_EQ(Export(QStringList { "--export-csv", csv } + arguments, error), ExitCode::Ok) << error.toStdString();
    }
};

TEST_F(ExportTest, ExampleViewsExportTheDatabaseValuesOnTheirGrid)
{
    const struct
    {
        QString file;
        Expected view;
    } examples[] = {
        { "Hauptzaehler.sor",
            { "2025-03-10 00:00:00", 7 * 96, 900, { { 113, "cos phi", true }, { 111, "Wirkleistung (kW)" } } } },
        { "Gebaeudevergleich.sor",
            { "2025-11-03 00:00:00", 28 * 24, 3600,
                { { 111, "Halle A (kW)" }, { 141, "Verwaltung (kW)" }, { 151, "Rechenzentrum (kW)" } } } },
        { "Rechenzentrum-Tag.sor",
            { "2025-10-02 00:00:00", 1440, 60, { { 151, "Wirkleistung (kW)" }, { 155, "Außentemperatur (°C)" } } } },
    };
    for (const auto& example : examples) {
        SCOPED_TRACE(example.file.toStdString());
        const QString csv = out.filePath(example.file + ".csv");
        ExportOk({ Examples + '/' + example.file }, csv);
        CompareTable(csv, example.view);
    }
    // The one-day view covers a failed sensor, so the gap rule is at work.
    const Expected day = examples[2].view;
    const std::vector<double> temperature = Reference(day, day.columns[1]);
    EXPECT_GT(std::count(temperature.begin(), temperature.end(), NoValue), 0);

    // Window and resolution from the command line; the date and time may come unquoted.
    const QString csv = out.filePath("day.csv");
    ExportOk({ "--from", "2025-03-12", "--to", "2025-03-14", "12:00:00", "--resolution", "1h", MainView }, csv);
    CompareTable(csv, { "2025-03-12 00:00:00", 60, 3600, examples[0].view.columns });
    // One bound alone keeps the view's week.
    ExportOk({ "--to=2025-03-24", MainView }, csv);
    CompareTable(csv, { "2025-03-17 00:00:00", 7 * 96, 900, examples[0].view.columns });
    // A window that starts before the data: its first day is a gap, never zeros.
    ExportOk({ "--from", "2023-12-31", "--to", "2024-01-01 12:00:00", "--resolution", "1h", MainView }, csv);
    CompareTable(csv, { "2023-12-31 00:00:00", 36, 3600, examples[0].view.columns });
    const std::vector<double> before = Reference({ "2023-12-31 00:00:00", 36, 3600, {} }, examples[0].view.columns[1]);
    EXPECT_EQ(std::count(before.begin(), before.end(), NoValue), 24);
}

TEST_F(ExportTest, BadInputEndsWithAMessageAndAnExitCode)
{
    // Copies of the main view with one text replaced.
    const QByteArray main = ReadAll(MainView);
    const auto variant = [&](const QString& name, const QList<std::pair<QByteArray, QByteArray>>& replacements) {
        QByteArray text = main;
        for (const auto& [from, to] : replacements) {
            EXPECT_TRUE(text.contains(from)) << from.toStdString();
            text.replace(from, to);
        }
        QFile copy(out.filePath(name));
        EXPECT_TRUE(copy.open(QIODevice::WriteOnly) && copy.write(text) == text.size());
        return copy.fileName();
    };
    const QByteArray start = "<startdate>2025-03-10 00:00:00</startdate>";
    const QString unknownModule = variant("unknown.sor", { { "<module>1</module>", "<module>7</module>" } });
    const QString badDates = variant("dates.sor",
        { { start, "<startdate>morgen</startdate>" },
            { "<enddate>2025-03-17 00:00:00</enddate>", "<enddate>10.03.2025 25:00</enddate>" } });
    const QString badDatesMessage = "the view file \"" + badDates
        + "\" has an unreadable startdate: \"morgen\", an unreadable enddate: \"10.03.2025 25:00\"";
    const QString reversed = variant("reversed.sor", { { start, "<startdate>2025-03-18 00:00:00</startdate>" } });
    // A sum curve whose second part the module doesn't have.
    const QString partial = variant(
        "partial.sor", { { "<channel>1$11#1</channel>", "<channel>1$11#1</channel><channel>1$99999</channel>" } });

    const QString target = out.filePath("x.csv");
    const struct
    {
        QStringList arguments;
        int exitCode;
        QString message;
    } cases[] = {
        { { "--export-csv", target, out.filePath("missing.sor") }, ExitCode::View, "does not exist" },
        { { "--export-csv", target, unknownModule }, ExitCode::View, "address 7" },
        { { "--export-csv", target, partial }, ExitCode::View, "the channel 1$99999 of the curve" },
        { { "--export-csv", target, badDates }, ExitCode::View, badDatesMessage },
        // The command line's window replaces the file's, yet the file is still broken.
        { { "--export-csv", target, "--from", "2025-03-10", "--to", "2025-03-11", badDates }, ExitCode::View,
            "unreadable startdate" },
        { { "--export-csv", target, reversed }, ExitCode::View,
            "the view file \"" + reversed + "\" has an empty time window" },
        { { "--export-csv", target, "--to", "2025-03-20", reversed }, ExitCode::View, "empty time window" },
        { { "--export-csv", out.filePath("none/x.csv"), MainView }, ExitCode::Write, "could not write" },
        { { "--export-csv", target, "--from", "2025-02-30", MainView }, ExitCode::Usage, "2025-02-30" },
        { { "--export-csv", target, "--resolution", "0h", MainView }, ExitCode::Usage, "0h" },
        { { "--export-png", target, MainView }, ExitCode::Usage, ".png" },
        { { "--export-csv", target, "--from", "2025-03-12", "--to", "2025-03-11", MainView }, ExitCode::Usage,
            "after --from" },
        { { "--export-csv", target, MainView, MainView }, ExitCode::Usage, "one view file only" },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments.join(' ').toStdString());
        QString error;
        EXPECT_EQ(Export(c.arguments, error), c.exitCode);
        EXPECT_TRUE(error.contains(c.message)) << error.toStdString();
    }
    EXPECT_FALSE(QFile::exists(target));

    // The program as built runs without a display, and its failures reach stderr.
    QString error;
    const QString png = out.filePath("main.png");
    EXPECT_EQ(RunProgram({ "--export-png", png, MainView }, error), 0) << error.toStdString();
    EXPECT_EQ(QImage(png).size(), MeasuringExport::OffscreenChartSize) << "a view never shown gets the fixed size";
    EXPECT_EQ(RunProgram({ "--export-csv", target, badDates }, error), ExitCode::View);
    // The toolkit may warn before; the message is the last line.
    EXPECT_EQ(error.trimmed().section('\n', -1), "sorano: " + badDatesMessage);
}

TEST_F(ExportTest, AFailingDataSourceEndsTheExportWithItsName)
{
    // A copy of the demo database whose samples can't be read while its channels still list.
    const QString broken = out.filePath("broken.sqlite");
    ASSERT_TRUE(QFile::copy(Demo, broken));
    qint64 root = 0;
    qint64 pageSize = 0;
    {
        sqlite3* db = nullptr;
        ASSERT_EQ(sqlite3_open_v2(broken.toUtf8().constData(), &db, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
        sqlite3_stmt* query = nullptr;
        sqlite3_prepare_v2(db,
            "SELECT rootpage, (SELECT page_size FROM pragma_page_size) FROM sqlite_master WHERE name = 'samples'", -1,
            &query, nullptr);
        if (sqlite3_step(query) == SQLITE_ROW) {
            root = sqlite3_column_int64(query, 0);
            pageSize = sqlite3_column_int64(query, 1);
        }
        sqlite3_finalize(query);
        sqlite3_close(db);
    }
    ASSERT_GT(root, 1);
    QFile file(broken);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.seek((root - 1) * pageSize));
    ASSERT_EQ(file.write(QByteArray(pageSize, '\xff')), pageSize);
    file.close();
    roots.SetMachine("Software\\HARVOLD\\ModuleSettings\\Demo", "Database", broken);

    QString error;
    const QString target = out.filePath("x.csv");
    EXPECT_EQ(Export({ "--export-csv", target, MainView }, error), ExitCode::View);
    EXPECT_TRUE(error.contains("Demo")) << error.toStdString();
    EXPECT_FALSE(QFile::exists(target)) << "no file of gaps that look like missing measurements";
}

TEST(MeasuringExportTest, ChartExtensionIsAppendedUnlessTheNameEndsInItExactly)
{
    using MeasuringExport::WithChartExtension;
    EXPECT_EQ(WithChartExtension("bild", 1), "bild.svg");
    EXPECT_EQ(WithChartExtension("bild.svg", 1), "bild.svg");
    EXPECT_EQ(WithChartExtension("BILD.SVG", 1), "BILD.SVG.svg");
    EXPECT_EQ(WithChartExtension("bild.svg", 2), "bild.svg.bmp");
    EXPECT_EQ(MeasuringExport::FormatOf("Bild.PNG"), MeasuringExport::Format::Png);
}

TEST_F(ExportTest, FileMenuOpensSavesExportsAndClosesViews)
{
    CopyMainView("main.sor");
    Project project;
    ASSERT_EQ(project.Init(), 0);
    frm_Main& window = *project.MainWindow();
    Measuring* view = project.OpenMeasuring(out.filePath("main.sor"), false);
    ASSERT_TRUE(view);
    ASSERT_EQ(window.MdiArea()->subWindowList().size(), 1);
    EXPECT_TRUE(window.MdiArea()->subWindowList().first()->isMaximized()) << "the first view fills the area";
    EXPECT_EQ(project.GetActiveMeasuring(), view);
    EXPECT_EQ(project.OpenMeasuring(out.filePath("main.sor"), false), view) << "a file is open once";
    EXPECT_FALSE(project.OpenMeasuring(out.filePath("none.sor"), false));

    // The chart on screen is pictured in its own size, each format with its signature.
    ChartAdapter& chart = *view->Chart();
    const QSize shown = chart.size();
    const std::pair<const char*, QByteArray> formats[]
        = { { "c.svg", "<?xml" }, { "c.png", "\x89PNG" }, { "c.bmp", "BM" }, { "c.pdf", "%PDF-" },
              { "c.csv", "\"Zeitstempel\",\"cos phi\",\"Wirkleistung (kW)\"\r\n2025-03-10 00:00:00," } };
    for (const auto& [name, start] : formats) {
        ASSERT_EQ(view->ExportTo(out.filePath(name)), 0) << name;
        const QByteArray bytes = ReadAll(out.filePath(name));
        EXPECT_TRUE(bytes.startsWith(start)) << name << ": " << bytes.left(120).toStdString();
    }
    EXPECT_EQ(QImage(out.filePath("c.png")).size(), shown);
    EXPECT_EQ(view->ExportTo(out.filePath("c.txt")), -3);
    EXPECT_FALSE(QFile::exists(out.filePath("c.txt")));

    view->ExportClipboard(false);
    const QMimeData* clip = QGuiApplication::clipboard()->mimeData();
    EXPECT_TRUE(clip && clip->hasImage() && clip->data("image/svg+xml").contains("<svg"));

    // Report pictures: the page sizes by mode, the chart on screen as it was; none of a table.
    QPicture picture;
    ASSERT_EQ(view->GetDiagrammAsPicture(picture, 1), 0);
    EXPECT_EQ(picture.boundingRect().size(), QSize(700, 987));
    ASSERT_EQ(view->GetDiagrammAsPicture(picture, 2), 0);
    EXPECT_EQ(picture.boundingRect().size(), QSize(987, 700));
    EXPECT_EQ(chart.size(), shown);
    view->SetViewMode(2);
    EXPECT_EQ(view->GetDiagrammAsPicture(picture, 0), -1);

    view->SetName("Umbenannt");
    window.Tool("mnuFileSave")->trigger();
    EXPECT_FALSE(view->Changed());
    EXPECT_TRUE(ReadAll(out.filePath("main.sor")).contains("<name>Umbenannt</name>"));

    // Closed by its own frame, the view goes and takes the frame with it.
    ASSERT_TRUE(window.MdiArea()->currentSubWindow()->close());
    EXPECT_TRUE(project.Measurings().empty());
    Settle();
    EXPECT_TRUE(window.MdiArea()->subWindowList().isEmpty());
}

TEST_F(ExportTest, EndingSavesAndAsksEveryViewAndForceEndsRegardless)
{
    // Views are saved when closed; one of them lives in a folder that is gone by then.
    roots.SetUser(KeySettings, "OnCloseMeasuring", "0");
    ASSERT_TRUE(QDir(out.path()).mkpath("gone"));
    ASSERT_TRUE(QFile::copy(MainView, out.filePath("main.sor")));
    ASSERT_TRUE(QFile::copy(Examples + "/Rechenzentrum-Tag.sor", out.filePath("gone/day.sor")));
    Project project;
    ASSERT_EQ(project.Init(), 0);
    Measuring* day = project.OpenMeasuring(out.filePath("gone/day.sor"), false);
    Measuring* main = project.OpenMeasuring(out.filePath("main.sor"), false);
    ASSERT_TRUE(day && main);
    main->SetName("Gesichert");
    ASSERT_TRUE(QDir(out.filePath("gone")).removeRecursively());

    // The failed save is said in a message, which the probe reads and closes.
    QStringList messages;
    QTimer probe;
    probe.setInterval(10);
    QObject::connect(&probe, &QTimer::timeout, [&] {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            messages << box->text();
            box->accept();
        }
    });
    probe.start();

    EXPECT_FALSE(project.Terminate(false)) << "the view that can't be saved refuses";
    ASSERT_EQ(messages.size(), 1);
    EXPECT_TRUE(messages.front().contains("day.sor")) << messages.front().toStdString();
    ASSERT_EQ(project.Measurings().size(), 1u) << "the other view was asked and closed";
    EXPECT_EQ(project.Measurings().front().get(), day);
    EXPECT_TRUE(project.MainWindow()->isVisible()) << "the program goes on";
    EXPECT_TRUE(ReadAll(out.filePath("main.sor")).contains("<name>Gesichert</name>"));

    EXPECT_TRUE(project.Terminate(true));
    EXPECT_EQ(messages.size(), 2) << "asked once more, then ended regardless";
    EXPECT_TRUE(project.Measurings().empty());
    EXPECT_FALSE(project.MainWindow()->isVisible());
    EXPECT_TRUE(project.Terminate(false)) << "ended once";
}

} // namespace
