// SPDX-License-Identifier: GPL-3.0-or-later
// The server modules on big data: raw reads of a year of minute samples (beside the SQLite module
// on the same rows), a year of one-second samples on a 15-minute grid aggregated on the server and
// read raw, and a view of ten such channels opened and drawn. The servers run in folders of the
// build tree that are kept between runs, so that their data is generated only once.
#include "AllocationCounter.h"
#include "ChartAdapter.h"
#include "ClickHouseDataModule.h"
#include "ClickHouseHttp.h"
#include "Measuring.h"
#include "MeasuringHost.h"
#include "ModuleBoxes.h"
#include "ModuleSettings.h"
#include "PostgresConnection.h"
#include "PostgresDataModule.h"
#include "RegistryKey.h"
#include "SoranoFileHandler.h"
#include "SqliteDataModule.h"
#include "SqliteHandles.h"
#include "SqliteSchema.h"
#include "TimeValueTransformator.h"
#include "frm_GraphicView.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>
#include <QUrl>

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <numbers>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr double YearStart = 45658.0; // 2025-01-01
constexpr double YearEnd = 46023.0; // 2026-01-01
constexpr qint64 MinuteRows = 525'600;
constexpr qint64 SecondRows = 31'536'000;
constexpr qint64 StepSeconds = 900;

// The catalog: category 2 holds the minute channel (row 1, "2#1"), category 3 the second
// channels (rows 11.., "3#1".."3#10"). Their data types cycle through mean, maximum, minimum, sum.
constexpr int MinuteChannel = 1;
constexpr int FirstSecondChannel = 11;
constexpr qint32 SecondTypes[] = { 3, 1, 6, 2 };
const QString MinuteId = QStringLiteral("2#1");

enum class Kind { Postgres, ClickHouse, Sqlite };

const char* KindName(Kind kind)
{
    return kind == Kind::Postgres ? "postgres" : kind == Kind::ClickHouse ? "clickhouse" : "sqlite";
}

// A year of one-second data of ten channels is about 25 GB in PostgreSQL: it gets one.
int SecondChannels(Kind kind)
{
    return kind == Kind::ClickHouse ? 10 : 1;
}

QString SecondId(int index)
{
    return QStringLiteral("3#%1").arg(index + 1);
}

qint32 SecondType(int index)
{
    return SecondTypes[index % 4];
}

// What a server holds once its data is complete; written last, so that a load cut short is
// redone by the next run.
std::string DataMark(Kind kind)
{
    return "minute " + std::to_string(MinuteRows) + ", seconds " + std::to_string(SecondChannels(kind)) + " x "
        + std::to_string(SecondRows);
}

// The value of sample n of a channel with that many samples a day: a daily wave, a faster ripple,
// two decimals, and a gap every thousandth row. The servers compute the same in SQL.
bool HasValue(qint64 n)
{
    return n % 1000 != 999;
}
double Value(qint64 n, qint64 perDay, int channel)
{
    const double wave = 30.0 * std::sin(2.0 * std::numbers::pi * double(n % perDay) / double(perDay) + channel);
    return std::round((40.0 + wave + 3.0 * std::sin(double(n) * 0.37)) * 100.0) / 100.0;
}
// The same in SQL, from the sample's index within its day and its index, both as doubles.
std::string ValueSql(const std::string& inDay, const std::string& index, qint64 perDay, int channel)
{
    return "round((40 + 30 * sin(2 * pi() * " + inDay + " / " + std::to_string(perDay) + " + " + std::to_string(channel)
        + ") + 3 * sin(" + index + " * 0.37)) * 100) / 100";
}

// The settings of the module registrations live in a folder of their own.
QTemporaryDir& SettingsRoot()
{
    static QTemporaryDir dir = [] {
        QTemporaryDir made;
        RegistryKey::SetRoots(made.filePath("machine"), made.filePath("user"));
        return made;
    }();
    return dir;
}

// scripts/server.sh, run through the shell; its last line of output.
bool ServerScript(const std::string& arguments, std::string& answer)
{
    const std::string command = std::string(SORANO_SOURCE_DIR) + "/scripts/server.sh " + arguments;
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe)
        return false;
    char line[256];
    answer.clear();
    while (std::fgets(line, sizeof line, pipe))
        answer = line;
    while (!answer.empty() && (answer.back() == '\n' || answer.back() == '\r'))
        answer.pop_back();
    return pclose(pipe) == 0;
}

// A server in its folder under the build tree, started on first use and stopped when the
// program ends; its data stays.
class Server
{
public:
    explicit Server(Kind kind)
        : m_kind(kind)
        , m_dir(std::string(SORANO_SERVER_DIR) + "/" + KindName(kind))
    {
        std::string answer;
        if (ServerScript(std::string("start ") + KindName(kind) + " '" + m_dir + "'", answer))
            m_port = std::atoi(answer.c_str());
        if (m_port <= 0)
            std::fprintf(stderr, "%s did not start in %s\n", KindName(kind), m_dir.c_str());
    }
    ~Server()
    {
        std::string answer;
        if (m_port > 0)
            ServerScript(std::string("stop ") + KindName(m_kind) + " '" + m_dir + "'", answer);
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    int Port() const { return m_port; }
    QString ConnInfo() const { return QStringLiteral("host=127.0.0.1 port=%1 user=sorano dbname=sorano").arg(m_port); }
    QString Url() const { return QStringLiteral("http://127.0.0.1:%1/").arg(m_port); }

    // Whether the data is in place, generated now if it was not; failure says why not.
    bool ready = false;
    QString failure;

private:
    Kind m_kind;
    std::string m_dir;
    int m_port = 0;
};

// ---------------------------------------------------------------- PostgreSQL

bool GeneratePostgres(const Server& server, QString& failure)
{
    PgConnection db;
    if (db.Connect(server.ConnInfo(), 7200) != PgConnection::Outcome::Ok) {
        failure = "PostgreSQL: " + db.Error();
        return false;
    }
    PgResult mark;
    if (db.Run("SELECT value FROM bench.info WHERE key = 'bench_data'", false, {}, false, mark)
            == PgConnection::Outcome::Ok
        && PQntuples(mark.get()) == 1 && PQgetvalue(mark.get(), 0, 0) == DataMark(Kind::Postgres))
        return true;

    std::fprintf(stderr, "PostgreSQL: generating the data (about a minute)...\n");
    QElapsedTimer timer;
    timer.start();
    std::string sql = R"SQL(
SET client_min_messages = warning;
DROP SCHEMA IF EXISTS bench CASCADE;
CREATE SCHEMA bench;
CREATE TABLE bench.info (key text PRIMARY KEY, value text);
CREATE TABLE bench.categories (id bigint PRIMARY KEY, name text NOT NULL, remark text NOT NULL DEFAULT '',
    parent bigint NOT NULL DEFAULT 0, kind text NOT NULL DEFAULT '', path_id bigint NOT NULL DEFAULT 0);
CREATE TABLE bench.channels (id bigint PRIMARY KEY, name text NOT NULL, unit text NOT NULL DEFAULT '',
    data_type integer NOT NULL DEFAULT 0, category bigint NOT NULL, parent_channel bigint NOT NULL DEFAULT 0,
    path_id bigint NOT NULL DEFAULT 0);
CREATE TABLE bench.samples (channel bigint NOT NULL, time double precision NOT NULL, value double precision);
INSERT INTO bench.info VALUES ('schema_version', '1'), ('resolution', '1'), ('resolution.1', '60');
INSERT INTO bench.categories VALUES (1, 'Standort', '', 0, 'FOLDER', 1),
    (2, 'Minutenwerte', '', 1, 'MEASURING', 2), (3, 'Sekundenwerte', '', 1, 'MEASURING', 3);
INSERT INTO bench.channels VALUES (1, 'Wirkleistung', 'kW', 3, 2, 0, 1);
)SQL";
    for (int index = 0; index < SecondChannels(Kind::Postgres); ++index)
        sql += "INSERT INTO bench.channels VALUES (" + std::to_string(FirstSecondChannel + index) + ", 'Leistung "
            + std::to_string(index + 1) + "', 'kW', " + std::to_string(SecondType(index)) + ", 3, 0, "
            + std::to_string(index + 1) + ");\n";
    const auto samples = [](int channel, qint64 rows, qint64 perDay) {
        return "INSERT INTO bench.samples SELECT " + std::to_string(channel) + ", " + std::to_string(YearStart)
            + " + n::float8 / " + std::to_string(perDay) + ", CASE WHEN n % 1000 = 999 THEN NULL ELSE "
            + ValueSql("(n % " + std::to_string(perDay) + ")::float8", "n::float8", perDay, channel)
            + " END FROM generate_series(0::bigint, " + std::to_string(rows - 1) + ") AS n;\n";
    };
    sql += samples(MinuteChannel, MinuteRows, 1440);
    for (int index = 0; index < SecondChannels(Kind::Postgres); ++index)
        sql += samples(FirstSecondChannel + index, SecondRows, 86400);
    // The key after the load: building it once is much faster than keeping it up row by row.
    sql += "ALTER TABLE bench.samples ADD PRIMARY KEY (channel, time);\n";
    if (db.Execute(QByteArray::fromStdString(sql)) != PgConnection::Outcome::Ok
        || db.Execute("VACUUM ANALYZE bench.samples") != PgConnection::Outcome::Ok
        || db.Execute(QByteArray::fromStdString(
               "INSERT INTO bench.info VALUES ('bench_data', '" + DataMark(Kind::Postgres) + "')"))
            != PgConnection::Outcome::Ok) {
        failure = "PostgreSQL: generating the data failed: " + db.Error();
        return false;
    }
    std::fprintf(stderr, "PostgreSQL: generated in %.0f s\n", timer.elapsed() / 1000.0);
    return true;
}

// ---------------------------------------------------------------- ClickHouse

bool GenerateClickHouse(const Server& server, QString& failure)
{
    ClickHouse::Connection http;
    http.Configure(QUrl(server.Url()), QStringLiteral("default"), QStringLiteral("default"), 7200 * 1000);
    const auto run = [&](const std::string& sql) {
        if (http.Run(sql) == ClickHouse::Outcome::Ok)
            return true;
        failure = "ClickHouse: " + http.Error();
        return false;
    };
    if (http.Run("SELECT value FROM bench.info WHERE key = 'bench_data' FORMAT TabSeparatedRaw")
            == ClickHouse::Outcome::Ok
        && std::string(http.Body().begin(), http.Body().end()) == DataMark(Kind::ClickHouse) + "\n")
        return true;

    std::fprintf(stderr, "ClickHouse: generating the data (a few minutes)...\n");
    QElapsedTimer timer;
    timer.start();
    std::vector<std::string> statements = {
        "DROP DATABASE IF EXISTS bench",
        "CREATE DATABASE bench",
        "CREATE TABLE bench.info (key String, value String) ENGINE = MergeTree ORDER BY key",
        "CREATE TABLE bench.categories (id Int64, name String, remark String, parent Int64, kind String, "
        "path_id Int64) ENGINE = MergeTree ORDER BY id",
        "CREATE TABLE bench.channels (id Int64, name String, unit String, data_type Int32, category Int64, "
        "parent_channel Int64, path_id Int64) ENGINE = MergeTree ORDER BY id",
        "CREATE TABLE bench.samples (channel Int64, time Float64, value Nullable(Float64)) "
        "ENGINE = MergeTree ORDER BY (channel, time)",
        "INSERT INTO bench.info VALUES ('schema_version', '1'), ('resolution', '1'), ('resolution.1', '60')",
        "INSERT INTO bench.categories VALUES (1, 'Standort', '', 0, 'FOLDER', 1), "
        "(2, 'Minutenwerte', '', 1, 'MEASURING', 2), (3, 'Sekundenwerte', '', 1, 'MEASURING', 3)",
        "INSERT INTO bench.channels VALUES (1, 'Wirkleistung', 'kW', 3, 2, 0, 1)",
    };
    for (int index = 0; index < SecondChannels(Kind::ClickHouse); ++index)
        statements.push_back("INSERT INTO bench.channels VALUES (" + std::to_string(FirstSecondChannel + index)
            + ", 'Leistung " + std::to_string(index + 1) + "', 'kW', " + std::to_string(SecondType(index)) + ", 3, 0, "
            + std::to_string(index + 1) + ")");
    // ClickHouse divides integers into Float64.
    const auto samples = [](int channel, qint64 rows, qint64 perDay) {
        const std::string value = ValueSql("(number % " + std::to_string(perDay) + ")", "number", perDay, channel);
        return "INSERT INTO bench.samples SELECT " + std::to_string(channel) + ", " + std::to_string(YearStart)
            + " + number / " + std::to_string(perDay) + ", if(number % 1000 = 999, NULL, " + value + ") FROM numbers("
            + std::to_string(rows) + ")";
    };
    statements.push_back(samples(MinuteChannel, MinuteRows, 1440));
    for (int index = 0; index < SecondChannels(Kind::ClickHouse); ++index)
        statements.push_back(samples(FirstSecondChannel + index, SecondRows, 86400));
    for (const std::string& sql : statements)
        if (!run(sql))
            return false;
    // Merged into one part, so that a channel's rows lie together. OPTIMIZE does nothing while
    // background merges hold the parts: wait for them, and repeat until one part is left.
    const auto count = [&](const std::string& sql) {
        return run(sql + " FORMAT TabSeparatedRaw")
            ? std::atoll(std::string(http.Body().begin(), http.Body().end()).c_str())
            : -1LL;
    };
    for (int attempt = 0; attempt < 5; ++attempt) {
        while (count("SELECT count() FROM system.merges WHERE database = 'bench'") > 0)
            QThread::sleep(1);
        if (!run("OPTIMIZE TABLE bench.samples FINAL"))
            return false;
        if (count("SELECT count() FROM system.parts WHERE database = 'bench' AND table = 'samples' AND active") == 1)
            break;
    }
    if (!run("INSERT INTO bench.info VALUES ('bench_data', '" + DataMark(Kind::ClickHouse) + "')"))
        return false;
    std::fprintf(stderr, "ClickHouse: generated in %.0f s\n", timer.elapsed() / 1000.0);
    return true;
}

// The samples table's size on disk in MB, with its key.
double SamplesMegabytes(Kind kind, const Server& server)
{
    std::string answer;
    if (kind == Kind::Postgres) {
        PgConnection db;
        PgResult size;
        if (db.Connect(server.ConnInfo(), 60) == PgConnection::Outcome::Ok
            && db.Run("SELECT pg_total_relation_size('bench.samples')", false, {}, false, size)
                == PgConnection::Outcome::Ok)
            answer = PQgetvalue(size.get(), 0, 0);
    } else {
        ClickHouse::Connection http;
        http.Configure(QUrl(server.Url()), QStringLiteral("default"), QStringLiteral("default"), 60 * 1000);
        if (http.Run("SELECT sum(bytes_on_disk) FROM system.parts WHERE database = 'bench' AND table = 'samples' "
                     "AND active FORMAT TabSeparatedRaw")
            == ClickHouse::Outcome::Ok)
            answer.assign(http.Body().begin(), http.Body().end());
    }
    return std::atof(answer.c_str()) / 1e6;
}

// ---------------------------------------------------------------- SQLite

// The minute channel in a logger file, as the SQLite module reads it.
class SqliteFile
{
public:
    SqliteFile()
    {
        path = m_dir.filePath("bench.sqlite");
        sqlite3* raw = nullptr;
        sqlite3_open_v2(QFile::encodeName(path).constData(), &raw, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
        SqliteConnection db(raw);
        sqlite3_exec(raw, "PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF;", nullptr, nullptr, nullptr);
        sqlite3_exec(raw, std::string(SqliteSchema::CreateStatements).c_str(), nullptr, nullptr, nullptr);
        sqlite3_exec(raw,
            "BEGIN; INSERT INTO info VALUES ('resolution', '60');"
            "INSERT INTO categories VALUES (1, 'Standort', '', 0, 'FOLDER', 1);"
            "INSERT INTO categories VALUES (2, 'Minutenwerte', '', 1, 'MEASURING', 2);"
            "INSERT INTO channels VALUES (1, 'Wirkleistung', 'kW', 3, 2, 0, 1);",
            nullptr, nullptr, nullptr);
        int rc = SQLITE_OK;
        SqliteStatement insert = PrepareStatement(raw, "INSERT INTO samples VALUES (?1, ?2, ?3)", rc);
        sqlite3_bind_int(insert.get(), 1, MinuteChannel);
        for (qint64 n = 0; n < MinuteRows; ++n) {
            sqlite3_bind_double(insert.get(), 2, YearStart + double(n) / 1440.0);
            if (HasValue(n))
                sqlite3_bind_double(insert.get(), 3, Value(n, 1440, MinuteChannel));
            else
                sqlite3_bind_null(insert.get(), 3);
            sqlite3_step(insert.get());
            sqlite3_reset(insert.get());
        }
        insert.reset();
        sqlite3_exec(raw, "COMMIT", nullptr, nullptr, nullptr);
    }

    QString path;

private:
    QTemporaryDir m_dir;
};

// ---------------------------------------------------------------- modules

// The server of that kind with its data in place, or nothing; the reason goes to failure.
Server* ReadyServer(Kind kind, QString& failure)
{
    static Server postgres(Kind::Postgres);
    static Server clickhouse(Kind::ClickHouse);
    static bool generated[2] = { false, false };
    Server& server = kind == Kind::Postgres ? postgres : clickhouse;
    bool& tried = generated[kind == Kind::Postgres ? 0 : 1];
    if (!tried) {
        tried = true;
        if (server.Port() <= 0)
            server.failure = QStringLiteral("%1 did not start").arg(KindName(kind));
        else
            server.ready = kind == Kind::Postgres ? GeneratePostgres(server, server.failure)
                                                  : GenerateClickHouse(server, server.failure);
    }
    failure = server.failure;
    return server.ready ? &server : nullptr;
}

// Writes the settings of a registration as the user's, as the configuration dialogs store them.
void WriteSettings(const QString& registration, const std::vector<std::pair<QString, QString>>& values)
{
    SettingsRoot();
    RegistryKey key;
    for (const auto& [name, text] : values)
        key.WriteValue(Hive::CurrentUser, ModuleSettings::Key(registration), name, text);
}

// A module object of that kind on the benchmark data, created as the program creates it from its
// registration; the first reads of a year take long, so the timeout is generous.
std::unique_ptr<QObject> CreateModule(Kind kind, const QString& registration, QString& param, QString& failure)
{
    SettingsRoot();
    const DataModuleRegistration where { registration, QStringLiteral("1") };
    if (kind == Kind::Sqlite) {
        static SqliteFile file;
        param = file.path;
        return std::make_unique<SqliteDataModule>(where);
    }
    const Server* server = ReadyServer(kind, failure);
    if (!server)
        return nullptr;
    param.clear();
    if (kind == Kind::Postgres) {
        WriteSettings(registration,
            { { "Connection", server->ConnInfo() }, { "Schema", "bench" }, { "Timeout", "600" },
                { "Aggregate", "1" } });
        return std::make_unique<PostgresDataModule>(where);
    }
    WriteSettings(registration,
        { { "URL", server->Url() }, { "Database", "bench" }, { "Timeout", "600" }, { "Aggregate", "1" } });
    return std::make_unique<ClickHouseDataModule>(where);
}

// A module ready to read, for the benchmarks that call it directly.
struct OpenModule
{
    OpenModule(Kind kind, benchmark::State& state)
    {
        QString param, failure;
        object = CreateModule(kind, QStringLiteral("Bench%1").arg(KindName(kind)), param, failure);
        data = qobject_cast<DataModuleInterface*>(object.get());
        aggregation = qobject_cast<DataAggregationInterface*>(object.get());
        qint32 status = 0;
        if (!data || data->Initialize(param, status) != 1)
            state.SkipWithError(qPrintable(failure.isEmpty() ? QStringLiteral("the module did not open") : failure));
    }
    bool Ok() const { return data != nullptr; }

    std::unique_ptr<QObject> object;
    DataModuleInterface* data = nullptr;
    DataAggregationInterface* aggregation = nullptr;
};

// Channels of the given ids and data types, each with a fresh channel object.
ChannelCollection Channels(const std::vector<std::pair<QString, qint32>>& wanted)
{
    ChannelCollection channels;
    for (const auto& [id, type] : wanted) {
        auto channel = std::make_shared<DataMatrix>();
        channel->SetDataType(type);
        channels.Add(channel, id);
    }
    return channels;
}

QString IdList(const std::vector<std::pair<QString, qint32>>& wanted)
{
    QStringList ids;
    for (const auto& item : wanted)
        ids.append(item.first);
    return ids.join(QLatin1Char(';'));
}

std::vector<std::pair<QString, qint32>> SecondChannelList(int count)
{
    std::vector<std::pair<QString, qint32>> wanted;
    for (int index = 0; index < count; ++index)
        wanted.emplace_back(SecondId(index), SecondType(index));
    return wanted;
}

// The rows of the blocks the call gave; -1 when a channel got none.
qint64 RowsOf(const ChannelCollection& channels, qsizetype count)
{
    qint64 rows = 0;
    for (qsizetype index = 0; index < count; ++index) {
        const DataMatrixPtr channel = channels.Channel(index);
        if (!channel || !channel->DataBlock())
            return -1;
        rows += channel->DataBlock()->Rows();
    }
    return rows;
}

// The program's 15-minute grid over 2025 with every channel's block placed on it.
TimeValueTransformator Grid(const ChannelCollection& channels, const std::vector<std::pair<QString, qint32>>& wanted)
{
    TimeValueTransformator grid;
    grid.Init(YearStart, YearEnd, QStringLiteral("n"), 15, true);
    for (qsizetype index = 0; index < qsizetype(wanted.size()); ++index)
        grid.Add(*channels.Channel(index)->DataBlock(), wanted[size_t(index)].first, wanted[size_t(index)].second);
    return grid;
}

// The reason the module gave in its text item, for a failed call.
QString ReasonOf(const ChannelCollection& channels)
{
    for (qsizetype index = 0; index < channels.Count(); ++index)
        if (channels.IsText(index))
            return channels.Text(index);
    return QString();
}

bool SameBlocks(const MatrixBlockPtr& a, const MatrixBlockPtr& b)
{
    if (!a || !b || a->Rows() != b->Rows() || a->Columns() != b->Columns())
        return false;
    for (qsizetype column = 0; column < a->Columns(); ++column)
        for (qsizetype row = 0; row < a->Rows(); ++row)
            if (a->At(row, column) != b->At(row, column))
                return false;
    return true;
}

// ---------------------------------------------------------------- benchmarks

// The minute channel over the whole year: 525,600 samples per call.
void BM_RawRead(benchmark::State& state, Kind kind)
{
    OpenModule module(kind, state);
    if (!module.Ok())
        return;
    qint64 rows = 0;
    qint32 status = 0;
    for (auto _ : state) {
        ChannelCollection channels = Channels({ { MinuteId, 3 } });
        module.data->GetData(MinuteId, channels, YearStart, YearEnd, status);
        rows = RowsOf(channels, 1);
        if (rows != MinuteRows) {
            state.SkipWithError(qPrintable(QStringLiteral("%1 rows: ").arg(rows) + ReasonOf(channels)));
            break;
        }
    }
    state.counters["samples"]
        = benchmark::Counter(double(rows) * double(state.iterations()), benchmark::Counter::kIsRate);
    state.counters["peak_MB"] = PeakMegabytes();
}
BENCHMARK_CAPTURE(BM_RawRead, sqlite, Kind::Sqlite)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(BM_RawRead, postgres, Kind::Postgres)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(BM_RawRead, clickhouse, Kind::ClickHouse)->Unit(benchmark::kMillisecond)->UseRealTime();

// Every one-second channel of the server over 2025 aggregated on the server into 900 s steps, then
// placed on the program's grid. "samples" counts the raw samples the steps cover.
void BM_YearAt15MinutesAggregated(benchmark::State& state, Kind kind)
{
    OpenModule module(kind, state);
    if (!module.Ok())
        return;
    if (!module.aggregation) {
        state.SkipWithError("the module does not aggregate");
        return;
    }
    QString failure;
    state.counters["disk_MB"] = SamplesMegabytes(kind, *ReadyServer(kind, failure));
    const auto wanted = SecondChannelList(SecondChannels(kind));
    qint64 rows = 0;
    double gridSeconds = 0.0;
    qint32 status = 0;
    for (auto _ : state) {
        ChannelCollection channels = Channels(wanted);
        module.aggregation->GetAggregatedData(
            IdList(wanted), channels, YearStart, YearEnd, YearStart, StepSeconds, status);
        rows = RowsOf(channels, qsizetype(wanted.size()));
        if (rows < 0) {
            state.SkipWithError(qPrintable(QStringLiteral("no data: ") + ReasonOf(channels)));
            break;
        }
        QElapsedTimer timer;
        timer.start();
        const TimeValueTransformator grid = Grid(channels, wanted);
        benchmark::DoNotOptimize(grid.Data(wanted.front().first));
        gridSeconds += double(timer.nsecsElapsed()) / 1e9;
    }
    if (state.error_occurred())
        return;
    if (rows != qint64(wanted.size()) * SecondRows / StepSeconds) {
        state.SkipWithError(qPrintable(QStringLiteral("wrong number of rows: %1").arg(rows)));
        return;
    }
    const double iterations = double(state.iterations());
    state.counters["rows"] = double(rows);
    state.counters["samples"]
        = benchmark::Counter(double(wanted.size()) * double(SecondRows) * iterations, benchmark::Counter::kIsRate);
    state.counters["grid_ms"] = gridSeconds * 1000.0 / iterations;
    state.counters["peak_MB"] = PeakMegabytes();
}
BENCHMARK_CAPTURE(BM_YearAt15MinutesAggregated, postgres, Kind::Postgres)
    ->Name("BM_YearAt15Minutes/postgres/aggregated")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(2);
BENCHMARK_CAPTURE(BM_YearAt15MinutesAggregated, clickhouse, Kind::ClickHouse)
    ->Name("BM_YearAt15Minutes/clickhouse/aggregated")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(3);

// One one-second channel over 2025 read raw (31.5 million samples), then placed on the grid: what
// a module without aggregation costs. Afterwards the grid is compared with the aggregated one.
void BM_YearAt15MinutesRaw(benchmark::State& state, Kind kind)
{
    OpenModule module(kind, state);
    if (!module.Ok())
        return;
    const auto wanted = SecondChannelList(1);
    qint64 rows = 0;
    double gridSeconds = 0.0;
    qint32 status = 0;
    MatrixBlockPtr raw;
    for (auto _ : state) {
        ChannelCollection channels = Channels(wanted);
        module.data->GetData(IdList(wanted), channels, YearStart, YearEnd, status);
        rows = RowsOf(channels, 1);
        if (rows < 0) {
            state.SkipWithError(qPrintable(QStringLiteral("no data: ") + ReasonOf(channels)));
            break;
        }
        QElapsedTimer timer;
        timer.start();
        const TimeValueTransformator grid = Grid(channels, wanted);
        raw = grid.Data(wanted.front().first);
        gridSeconds += double(timer.nsecsElapsed()) / 1e9;
    }
    if (state.error_occurred())
        return;
    if (rows != SecondRows) {
        state.SkipWithError(qPrintable(QStringLiteral("wrong number of rows: %1").arg(rows)));
        return;
    }
    const double iterations = double(state.iterations());
    state.counters["samples"] = benchmark::Counter(double(rows) * iterations, benchmark::Counter::kIsRate);
    state.counters["grid_ms"] = gridSeconds * 1000.0 / iterations;
    state.counters["peak_MB"] = PeakMegabytes();
    if (module.aggregation) {
        ChannelCollection channels = Channels(wanted);
        module.aggregation->GetAggregatedData(
            IdList(wanted), channels, YearStart, YearEnd, YearStart, StepSeconds, status);
        state.counters["same_grid"]
            = RowsOf(channels, 1) > 0 && SameBlocks(raw, Grid(channels, wanted).Data(wanted.front().first)) ? 1.0 : 0.0;
    }
}
BENCHMARK_CAPTURE(BM_YearAt15MinutesRaw, postgres, Kind::Postgres)
    ->Name("BM_YearAt15Minutes/postgres/raw")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(1);
BENCHMARK_CAPTURE(BM_YearAt15MinutesRaw, clickhouse, Kind::ClickHouse)
    ->Name("BM_YearAt15Minutes/clickhouse/raw")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(1);

// The server module bound at address 1, as the program binds a registration.
class ServerHost : public MeasuringHost
{
public:
    ServerHost(Kind kind, benchmark::State& state)
    {
        QString param, failure;
        const QString name = QStringLiteral("View%1").arg(KindName(kind));
        std::unique_ptr<QObject> module = CreateModule(kind, name, param, failure);
        if (!module) {
            state.SkipWithError(qPrintable(failure));
            return;
        }
        auto box = std::make_shared<ModuleBox>();
        box->SetName(name);
        box->SetAddress(QStringLiteral("1"));
        box->SetParam(param);
        box->SetDataModule(std::move(module));
        box->GetChannelList(nullptr);
        modules.Add(box);
        ok = true;
    }
    ModuleBoxes& DataModules() override { return modules; }
    void SendMessage(const QString&, const QString&) override { }

    ModuleBoxes modules;
    bool ok = false;
};

// A saved view of the server's one-second channels at 15 minutes over 2025, opened from its file
// to a drawn chart: the fetch (aggregated on the server), the grid, statistics and the chart.
void BM_OpenView(benchmark::State& state, Kind kind)
{
    ServerHost host(kind, state);
    if (!host.ok)
        return;
    MeasuringFile file;
    file.name = QStringLiteral("Ein Jahr Sekundenwerte");
    file.intervalUnit = QStringLiteral("n");
    file.intervalCount = 15;
    file.startDate = YearStart;
    file.endDate = YearEnd;
    file.modules = { QStringLiteral("1") };
    file.graph.Gallery = 1;
    file.hasCurves = true;
    for (int index = 0; index < SecondChannels(kind); ++index) {
        MeasuringFile::Curve curve;
        curve.channels = { QStringLiteral("1$") + SecondId(index) };
        file.curves.append(curve);
    }
    const QString path = SettingsRoot().filePath(QStringLiteral("view-%1.sor").arg(KindName(kind)));
    SoranoFileHandler::Save(path, file);

    qsizetype points = 0;
    for (auto _ : state) {
        Measuring measuring(host);
        measuring.Init();
        measuring.Window()->resize(1600, 900);
        measuring.Window()->AlignControls();
        // The refresh ends by drawing the chart into its buffers.
        measuring.OpenFile(path, true);
        points = measuring.Chart()->PointCount() * measuring.Chart()->SeriesCount();
    }
    if (points != qsizetype(SecondChannels(kind)) * SecondRows / StepSeconds)
        state.SkipWithError(qPrintable(QStringLiteral("wrong number of points: %1").arg(points)));
    state.counters["points"] = double(points);
    state.counters["peak_MB"] = PeakMegabytes();
}
BENCHMARK_CAPTURE(BM_OpenView, postgres, Kind::Postgres)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);
BENCHMARK_CAPTURE(BM_OpenView, clickhouse, Kind::ClickHouse)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(1);

} // namespace
