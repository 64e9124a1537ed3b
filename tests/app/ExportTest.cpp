// SPDX-License-Identifier: GPL-3.0-or-later
// The example views on the demo database: headless export checked against values computed
// straight from the database file, bad command lines, and the ticks of the exported charts.
#include "ChartAdapter.h"
#include "DemoFixture.h"
#include "Measuring.h"
#include "MeasuringExport.h"
#include "QtPrinters.h"
#include "frm_GraphicView.h"

#include <QDateTime>
#include <QImage>

#include <sqlite3.h>

#include <cmath>
#include <cstdlib>

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
    QStringList lines = QString::fromUtf8(ReadAll(csvFile)).split("\r\n");
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

using ExportTest = DemoFixture;

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
        ExportCsv({ Examples + '/' + example.file }, csv);
        CompareTable(csv, example.view);
    }
    // The one-day view covers a failed sensor, so the gap rule is at work.
    const Expected day = examples[2].view;
    const std::vector<double> temperature = Reference(day, day.columns[1]);
    EXPECT_GT(std::count(temperature.begin(), temperature.end(), NoValue), 0);

    // Window and resolution from the command line; the date and time may come unquoted.
    const QString csv = out.filePath("day.csv");
    ExportCsv({ "--from", "2025-03-12", "--to", "2025-03-14", "12:00:00", "--resolution", "1h", MainView }, csv);
    CompareTable(csv, { "2025-03-12 00:00:00", 60, 3600, examples[0].view.columns });
    // One bound alone keeps the view's week.
    ExportCsv({ "--to=2025-03-24", MainView }, csv);
    CompareTable(csv, { "2025-03-17 00:00:00", 7 * 96, 900, examples[0].view.columns });
    // A window that starts before the data: its first day is a gap, never zeros.
    ExportCsv({ "--from", "2023-12-31", "--to", "2024-01-01 12:00:00", "--resolution", "1h", MainView }, csv);
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
        EXPECT_EQ(Headless(c.arguments, error), c.exitCode);
        EXPECT_TRUE(error.contains(c.message)) << error.toStdString();
    }

    // The program as built exports without a display.
    QString error;
    const QString png = out.filePath("main.png");
    EXPECT_EQ(RunProgram({ "--export-png", png, MainView }, error), 0) << error.toStdString();
    EXPECT_EQ(QImage(png).size(), MeasuringExport::OffscreenChartSize) << "a view never shown gets the fixed size";

    // A copy of the demo database whose samples can't be read while its channels still list.
    const QString broken = out.filePath("broken.sqlite");
    ASSERT_TRUE(QFile::copy(Demo, broken));
    qint64 root = 0;
    qint64 pageSize = 0;
    sqlite3* db = nullptr;
    sqlite3_stmt* query = nullptr;
    sqlite3_open_v2(broken.toUtf8().constData(), &db, SQLITE_OPEN_READONLY, nullptr);
    sqlite3_prepare_v2(db,
        "SELECT rootpage, (SELECT page_size FROM pragma_page_size) FROM sqlite_master WHERE name = 'samples'", -1,
        &query, nullptr);
    if (sqlite3_step(query) == SQLITE_ROW) {
        root = sqlite3_column_int64(query, 0);
        pageSize = sqlite3_column_int64(query, 1);
    }
    sqlite3_finalize(query);
    sqlite3_close(db);
    ASSERT_GT(root, 1);
    QFile file(broken);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.seek((root - 1) * pageSize));
    ASSERT_EQ(file.write(QByteArray(pageSize, '\xff')), pageSize);
    file.close();
    roots.SetMachine("Software\\HARVOLD\\ModuleSettings\\Demo", "Database", broken);
    EXPECT_EQ(Headless({ "--export-csv", target, MainView }, error), ExitCode::View);
    EXPECT_TRUE(error.contains("Demo")) << error.toStdString();
    EXPECT_FALSE(QFile::exists(target)) << "no file of gaps that look like missing measurements";

    // The program's failures reach stderr.
    EXPECT_EQ(RunProgram({ "--export-csv", target, MainView }, error), ExitCode::View);
    // The toolkit may warn before; the message is the last line.
    EXPECT_TRUE(error.trimmed().section('\n', -1).startsWith("sorano: ") && error.contains("Demo"))
        << error.toStdString();
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

// Columns crossed by a vertical grid line: grey (neither white nor black) over a good part of
// the height, which no curve and no horizontal line gives.
std::vector<int> GridColumns(const QImage& image)
{
    std::vector<int> columns;
    for (int x = 0; x < image.width(); ++x) {
        int grey = 0;
        for (int y = 0; y < image.height(); ++y) {
            const QColor pixel = image.pixelColor(x, y);
            grey += pixel.red() == pixel.green() && pixel.green() == pixel.blue() && pixel.red() > 0
                && pixel.red() < 255;
        }
        if (grey > image.height() / 4)
            columns.push_back(x);
    }
    return columns;
}

// The first and last columns of each label in a strip: dark columns joined where only a few apart.
// Text is smoothed differently on screen and in pictures, so the spans are compared, not the pixels.
std::vector<QPair<int, int>> TextSpans(const QImage& strip)
{
    std::vector<QPair<int, int>> spans;
    for (int x = 0; x < strip.width(); ++x) {
        bool ink = false;
        for (int y = 0; y < strip.height() && !ink; ++y)
            ink = qGray(strip.pixel(x, y)) < 128;
        if (!ink)
            continue;
        if (!spans.empty() && x - spans.back().second <= 12)
            spans.back().second = x;
        else
            spans.emplace_back(x, x);
    }
    return spans;
}

// The example views exported without a window carry the ticks and labels that the window shows
// in the same size.
TEST_F(ExportTest, ExportedChartsHaveTheTicksOfTheWindowInTheirSize)
{
    for (const QString name : { "Hauptzaehler.sor", "Gebaeudevergleich.sor", "Rechenzentrum-Tag.sor" }) {
        SCOPED_TRACE(name.toStdString());
        const QString view = Examples + '/' + name;
        const QString png = out.filePath(name + ".png");
        Project project;
        project.LoadDataModules();
        QString error;
        ASSERT_EQ(RunExport(ParseCommandLine({ "--export-png", png, view }).job, project, error), ExitCode::Ok)
            << error.toStdString();
        const QImage headless = QImage(png).convertToFormat(QImage::Format_RGB32);
        ASSERT_EQ(headless.size(), MeasuringExport::OffscreenChartSize);

        // The same view in a window, sized so that its chart has the picture's size.
        Measuring window(project);
        ASSERT_EQ(window.Init(), 0);
        ASSERT_EQ(window.OpenFile(view, true), 0);
        window.SetShowStatistics(false);
        frm_GraphicView& frame = *window.Window();
        ChartAdapter& chart = *window.Chart();
        frame.show();
        for (int turn = 0; turn < 3 && chart.size() != headless.size(); ++turn) {
            frame.resize(frame.size() + headless.size() - chart.size());
            QCoreApplication::processEvents();
        }
        ASSERT_EQ(chart.size(), headless.size());
        const QImage shown = chart.grab().toImage().convertToFormat(QImage::Format_RGB32);

        // Grid lines at the same columns, and those are the window's ticks.
        const std::vector<int> columns = GridColumns(shown);
        EXPECT_EQ(GridColumns(headless), columns);
        std::vector<int> ticks;
        for (const double tick : chart.AxisTickValues(ChartAxis::X))
            ticks.push_back(qRound(chart.PointToPixel(tick, 0, ChartAxis::Y1).x()));
        EXPECT_EQ(ticks, columns);
        EXPECT_GE(ticks.size(), 4u);
        // At round times, and labelled alike: the texts under the plot area lie at the same places.
        for (const QString& label : chart.AxisTickLabels(ChartAxis::X))
            EXPECT_TRUE(label.endsWith(":00")) << label.toStdString();
        const QRect labels(
            0, chart.PlotArea().bottom() + 2, shown.width(), shown.height() - chart.PlotArea().bottom() - 2);
        const std::vector<QPair<int, int>> texts = TextSpans(shown.copy(labels));
        const std::vector<QPair<int, int>> exported = TextSpans(headless.copy(labels));
        ASSERT_EQ(exported.size(), texts.size());
        EXPECT_EQ(texts.size(), ticks.size());
        for (size_t i = 0; i < texts.size(); ++i)
            EXPECT_TRUE(std::abs(exported[i].first - texts[i].first) <= 1
                && std::abs(exported[i].second - texts[i].second) <= 1)
                << "label " << i << " from " << exported[i].first << " to " << exported[i].second
                << ", in the window from " << texts[i].first << " to " << texts[i].second;
    }
}

} // namespace
