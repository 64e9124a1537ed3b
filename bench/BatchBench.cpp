// SPDX-License-Identifier: GPL-3.0-or-later
// Report batches and serial reports into PDF, as the batch window and --print-batch /
// --print-serial make them: a serial report of a year of one-minute values at one page per
// day, and a batch of three templates over ten loggers. The logger database is written once
// into a temporary folder; the stages of a run (opening and refreshing the views, the reports,
// the PDF) are counted apart.
#include "AllocationCounter.h"
#include "BatchHost.h"
#include "BatchRun.h"
#include "Measuring.h"
#include "MeasuringHost.h"
#include "ModuleBoxes.h"
#include "RegistryKey.h"
#include "ReportDocument.h"
#include "ReportInterface.h"
#include "ReportRun.h"
#include "SqliteDataModule.h"
#include "SqliteHandles.h"
#include "SqliteSchema.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <memory>
#include <numbers>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr double YearStart = 45658.0; // 2025-01-01
constexpr double YearEnd = 46023.0; // 2026-01-01
constexpr int FirstLogger = 11; // the ten batch loggers are 11 to 20
constexpr int LoggerCount = 10;
constexpr int MinuteLogger = 31; // one channel of one-minute values over 2025
constexpr int BatchDays = 59; // January and February at 15 minutes

// A day of load: a base with a working-hours hump, and a fixed-seed noise.
class Load
{
public:
    explicit Load(std::uint64_t seed)
        : m_engine(seed)
    { }
    double At(double time)
    {
        const double hour = (time - std::floor(time)) * 24.0;
        const double day = 0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * hour / 24.0);
        const double noise = static_cast<double>(m_engine() >> 11) * 0x1.0p-53 - 0.5;
        return std::round((40.0 + 60.0 * day * day + 8.0 * noise) * 100.0) / 100.0;
    }

private:
    std::mt19937_64 m_engine;
};

// The logger database: ten loggers of 15-minute active power (#1) and cos phi (#3), and one
// logger of a year of one-minute active power.
void WriteDatabase(const QString& path)
{
    sqlite3* raw = nullptr;
    sqlite3_open_v2(QFile::encodeName(path).constData(), &raw, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
    SqliteConnection db(raw);
    sqlite3_exec(raw, "PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF;", nullptr, nullptr, nullptr);
    sqlite3_exec(raw, std::string(SqliteSchema::CreateStatements).c_str(), nullptr, nullptr, nullptr);
    sqlite3_exec(raw, "BEGIN", nullptr, nullptr, nullptr);
    std::string structure = "INSERT INTO info VALUES ('schema_version', '1');"
                            "INSERT INTO info VALUES ('resolution', '900');"
                            "INSERT INTO categories VALUES (1, 'Standort', '', 0, 'FOLDER', 1);";
    for (int logger = FirstLogger; logger < FirstLogger + LoggerCount; ++logger) {
        const std::string id = std::to_string(logger);
        structure += "INSERT INTO categories VALUES (" + id + ", 'Zähler " + id + "', '15 min', 1, 'MEASURING', "
            + std::to_string(logger - FirstLogger + 2) + ");";
        structure += "INSERT INTO channels VALUES (" + id + "1, 'Wirkleistung', 'kW', 3, " + id + ", 0, 1);";
        structure += "INSERT INTO channels VALUES (" + id + "3, 'cos phi', '', 8, " + id + ", 0, 3);";
    }
    const std::string minute = std::to_string(MinuteLogger);
    structure += "INSERT INTO categories VALUES (" + minute + ", 'Rechenzentrum', '1 min', 1, 'MEASURING', 20);";
    structure += "INSERT INTO channels VALUES (" + minute + "1, 'Wirkleistung', 'kW', 3, " + minute + ", 0, 1);";
    structure += "INSERT INTO info VALUES ('resolution." + minute + "1', '60');";
    sqlite3_exec(raw, structure.c_str(), nullptr, nullptr, nullptr);

    int rc = SQLITE_OK;
    SqliteStatement insert = PrepareStatement(raw, "INSERT INTO samples VALUES (?1, ?2, ?3)", rc);
    const auto put = [&](int channel, double time, double value) {
        sqlite3_bind_int(insert.get(), 1, channel);
        sqlite3_bind_double(insert.get(), 2, time);
        sqlite3_bind_double(insert.get(), 3, value);
        sqlite3_step(insert.get());
        sqlite3_reset(insert.get());
    };
    for (int logger = FirstLogger; logger < FirstLogger + LoggerCount; ++logger) {
        Load load { std::uint64_t(logger) };
        for (int step = 0; step < BatchDays * 96; ++step) {
            const double time = YearStart + step / 96.0;
            const double power = load.At(time);
            put(logger * 10 + 1, time, power);
            put(logger * 10 + 3, time, std::round((0.85 + power / 1000.0) * 10000.0) / 10000.0);
        }
    }
    Load load { std::uint64_t(MinuteLogger) };
    const int minutes = int(YearEnd - YearStart) * 1440;
    for (int step = 0; step < minutes; ++step) {
        const double time = YearStart + step / 1440.0;
        put(MinuteLogger * 10 + 1, time, load.At(time));
    }
    insert.reset();
    sqlite3_exec(raw, "COMMIT", nullptr, nullptr, nullptr);
}

struct CurveLook
{
    const char* name;
    const char* unit;
    int channel; // the number behind the '#'
    int axis;
};

// A view file bound to logger 11 at module address 1, in the format the program saves.
QByteArray ViewFile(const char* name, const char* unit, int count, const std::vector<CurveLook>& curves)
{
    QByteArray text = R"(<?xml version="1.0"?>
<sorano-measuring>
  <name>)"
        + QByteArray(name) + R"(</name>
  <remark></remark>
  <autoscale>true</autoscale>
  <intervall-unit>)"
        + QByteArray(unit) + "</intervall-unit>\n  <intervall-count>" + QByteArray::number(count)
        + R"(</intervall-count>
  <showstatistics>true</showstatistics>
  <viewmode>chart</viewmode>
  <zoomhistory></zoomhistory>
  <startdate>2025-01-06 00:00:00</startdate>
  <enddate>2025-01-13 00:00:00</enddate>
  <annotation>
    <visible>false</visible>
    <position></position>
  </annotation>
  <modules>
    <module>1</module>
  </modules>
  <graph-properties>
    <gallery>lines</gallery>
    <legend>true</legend>
    <display-3d>false</display-3d>
    <grid1>true</grid1>
    <grid2>false</grid2>
    <title>%CUSTOMERNAME%</title>
  </graph-properties>
  <customer-address>
    <name></name>
    <contact></contact>
    <street></street>
    <zipcity></zipcity>
    <remark></remark>
  </customer-address>
  <curves>
)";
    for (const CurveLook& curve : curves)
        text += "    <curve>\n      <name>" + QByteArray(curve.name) + "</name>\n      <unit>" + QByteArray(curve.unit)
            + "</unit>\n      <visible>true</visible>\n      <y-axis>" + QByteArray::number(curve.axis)
            + "</y-axis>\n      <channels>\n        <channel>1$11#" + QByteArray::number(curve.channel) + R"(</channel>
      </channels>
      <series-properties>
        <gallery>lines</gallery>
        <color>255</color>
        <line-width>1</line-width>
        <line-style>solid</line-style>
        <marker>false</marker>
      </series-properties>
      <statistics>
          <statistic>
            <id>1</id>
            <visible>true</visible>
          </statistic>
          <statistic>
            <id>2</id>
            <visible>true</visible>
          </statistic>
      </statistics>
      <cursors>
      </cursors>
    </curve>
)";
    return text + "  </curves>\n</sorano-measuring>\n";
}

// The database bound as the module at address 1, the batch's three templates, and the
// template views opened hidden and temporary, as the program's runs open them.
class BenchHost : public MeasuringHost
{
public:
    BenchHost()
    {
        RegistryKey::SetRoots(dir.filePath("machine"), dir.filePath("user"));
        const QString database = dir.filePath("batch.sqlite");
        WriteDatabase(database);
        auto box = std::make_shared<ModuleBox>();
        box->SetName(QStringLiteral("Bench"));
        box->SetAddress(QStringLiteral("1"));
        box->SetParam(database);
        box->SetDataModule(std::make_unique<SqliteDataModule>(DataModuleRegistration { "Bench", "1" }));
        box->GetChannelList(nullptr);
        modules.Add(box);

        const std::vector<std::pair<QString, QByteArray>> files = {
            { QStringLiteral("Wirkleistung"), ViewFile("Wirkleistung", "n", 15, { { "Wirkleistung", "kW", 1, 0 } }) },
            { QStringLiteral("Leistung und cos phi"),
                ViewFile(
                    "Leistung und cos phi", "n", 15, { { "Wirkleistung", "kW", 1, 0 }, { "cos phi", "", 3, 1 } }) },
            { QStringLiteral("Tageswerte"), ViewFile("Tageswerte", "d", 1, { { "Wirkleistung", "kW", 1, 0 } }) },
        };
        for (const auto& [name, text] : files) {
            QFile file(dir.filePath(name + QStringLiteral(".sor")));
            if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
                std::fprintf(stderr, "the template %s could not be written\n", qPrintable(name));
            templates.push_back({ file.fileName(), name });
        }
        LoadReports(reports);
    }

    ModuleBoxes& DataModules() override { return modules; }
    void SendMessage(const QString&, const QString&) override { }

    QTemporaryDir dir;
    ModuleBoxes modules;
    std::vector<BatchTemplate> templates;
    ReportCollection reports;
    WindowlessTemplates templateViews { *this };
};

BenchHost& Host()
{
    static BenchHost host;
    return host;
}

// Seconds spent in each stage of the runs, summed over the iterations.
struct Stages
{
    double prepare = 0.0;
    double reports = 0.0;
    double pdf = 0.0;
    double close = 0.0;
    qsizetype pages = 0;
    qsizetype views = 0;

    void Report(benchmark::State& state) const
    {
        const double runs = double(state.iterations());
        state.counters["prepare_s"] = prepare / runs;
        state.counters["reports_s"] = reports / runs;
        state.counters["pdf_s"] = pdf / runs;
        state.counters["close_s"] = close / runs;
        state.counters["pages"] = double(pages);
        state.counters["views"] = double(views);
        state.counters["peak_MB"] = PeakMegabytes();
    }
};

// The chart report over the views into one PDF, then the views closed; false when a view
// could not read its values or no page came out.
bool PrintAndClose(std::vector<Measuring*>& views, const QString& pdf, Stages& stages, QElapsedTimer& clock)
{
    BenchHost& host = Host();
    for (Measuring* view : views)
        if (!view->FetchError().isEmpty())
            return false;
    stages.views += qsizetype(views.size());
    std::vector<ReportPtr> reports { host.reports.Item(QStringLiteral("REP_0")) };
    const std::vector<qint32> orientations { reports.front()->Orientation() };
    ReportDocument document;
    stages.prepare += double(clock.nsecsElapsed()) * 1e-9;
    clock.restart();
    RunReports(document, reports, orientations, views, true);
    stages.reports += double(clock.nsecsElapsed()) * 1e-9;
    clock.restart();
    const bool saved = document.SavePdf(pdf);
    stages.pdf += double(clock.nsecsElapsed()) * 1e-9;
    clock.restart();
    stages.pages += document.PageCount();
    BatchRun::Close(host.templateViews, views);
    stages.close += double(clock.nsecsElapsed()) * 1e-9;
    return saved && document.PageCount() > 0;
}

// A year of the one-minute channel at one page per day, in one-minute steps, into one PDF.
void BM_SerialYearPerDay(benchmark::State& state)
{
    BenchHost& host = Host();
    BatchRunSettings settings;
    settings.name = QStringLiteral("Serienreport");
    settings.channels = { QStringLiteral("1$%1#1").arg(MinuteLogger) };
    settings.start = YearStart;
    settings.end = YearEnd;
    settings.intervalUnit = QStringLiteral("n");
    settings.intervalCount = 1;
    settings.customer[0] = QStringLiteral("Standort");
    const SerialSettings serial;
    const QString pdf = host.dir.filePath("serial.pdf");
    Stages stages;
    for (auto _ : state) {
        stages.pages = 0;
        stages.views = 0;
        QElapsedTimer clock;
        clock.start();
        std::vector<Measuring*> views = BatchRun::PrepareSerial(
            host.templateViews, QStringLiteral(SORANO_LGA_TEMPLATE), settings, serial, nullptr);
        if (views.empty() || !PrintAndClose(views, pdf, stages, clock)) {
            state.SkipWithError("the serial report made no pages");
            return;
        }
    }
    stages.Report(state);
}
BENCHMARK(BM_SerialYearPerDay)->Unit(benchmark::kMillisecond)->Iterations(1);

// Batch runs of the three templates over January and February, each run for one logger into
// its own PDF: one run (one user's action), and one run for each of the ten loggers.
void BM_BatchThreeTemplates(benchmark::State& state)
{
    BenchHost& host = Host();
    const int loggers = int(state.range(0));
    Stages stages;
    for (auto _ : state) {
        stages.pages = 0;
        stages.views = 0;
        for (int logger = FirstLogger; logger < FirstLogger + loggers; ++logger) {
            BatchRunSettings settings;
            settings.name = QStringLiteral("Monatsbericht");
            settings.channels = { QStringLiteral("1$%1#1").arg(logger) };
            settings.start = YearStart;
            settings.end = YearStart + BatchDays;
            settings.customer[0] = QStringLiteral("Zähler %1").arg(logger);
            settings.minCursor = true;
            settings.maxCursor = true;
            QElapsedTimer clock;
            clock.start();
            std::vector<Measuring*> views
                = BatchRun::PrepareBatch(host.templateViews, host.templates, settings, nullptr);
            if (views.size() != host.templates.size()
                || !PrintAndClose(views, host.dir.filePath(QStringLiteral("batch%1.pdf").arg(logger)), stages, clock)) {
                state.SkipWithError("a batch run made no pages");
                return;
            }
        }
    }
    stages.Report(state);
}
BENCHMARK(BM_BatchThreeTemplates)->Arg(1)->Arg(10)->Unit(benchmark::kMillisecond)->Iterations(2);

} // namespace
