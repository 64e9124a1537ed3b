// SPDX-License-Identifier: GPL-3.0-or-later
// GetData of the SQLite module: one year of minute samples of one channel (525,600 rows) from
// a database written at start in a temporary folder, beside a plain read of the same rows with
// the bare library, which is the speed limit to compare with. The counter "allocs" gives the
// heap allocations per call; it must not grow with the number of rows.
#include "AllocationCounter.h"
#include "RegistryKey.h"
#include "SqliteDataModule.h"
#include "SqliteSchema.h"

#include <QFile>
#include <QTemporaryDir>


#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int MinutesPerYear = 525'600;
constexpr double Start = 44927.0; // 2023-01-01

// A logger database with two channels of a year of minute samples each, the wanted one
// between the other's rows in the file.
class BenchDatabase
{
public:
    BenchDatabase()
    {
        RegistryKey::SetRoots(m_dir.filePath("machine"), m_dir.filePath("user"));
        path = m_dir.filePath("bench.sqlite");
        sqlite3* db = nullptr;
        sqlite3_open_v2(QFile::encodeName(path).constData(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
        SqliteConnection connection(db);
        sqlite3_exec(db, "PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF;", nullptr, nullptr, nullptr);
        sqlite3_exec(db, std::string(SqliteSchema::CreateStatements).c_str(), nullptr, nullptr, nullptr);
        sqlite3_exec(db,
            "BEGIN; INSERT INTO categories VALUES (1, 'Logger', '', 0, 'MEASURING', 1);"
            "INSERT INTO channels VALUES (1, 'Wirkleistung', 'kW', 3, 1, 0, 1);"
            "INSERT INTO channels VALUES (2, 'Blindleistung', 'kvar', 3, 1, 0, 2);"
            "INSERT INTO info VALUES ('resolution', '60');",
            nullptr, nullptr, nullptr);
        int rc = SQLITE_OK;
        SqliteStatement insert = PrepareStatement(db, "INSERT INTO samples VALUES (?1, ?2, ?3)", rc);
        std::mt19937_64 random(1);
        for (int channel : { 2, 1 }) {
            sqlite3_bind_int(insert.get(), 1, channel);
            for (int m = 0; m < MinutesPerYear; ++m) {
                sqlite3_bind_double(insert.get(), 2, Start + m / 1440.0);
                if (m % 5000 == 17)
                    sqlite3_bind_null(insert.get(), 3);
                else
                    sqlite3_bind_double(insert.get(), 3, static_cast<double>(random() % 100'000) / 100.0);
                sqlite3_step(insert.get());
                sqlite3_reset(insert.get());
            }
        }
        insert.reset();
        sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr);
    }

    QString path;

private:
    QTemporaryDir m_dir;
};

const BenchDatabase& Database()
{
    static const BenchDatabase database;
    return database;
}

void BM_GetDataOneYearOfMinutes(benchmark::State& state)
{
    SqliteDataModule module(DataModuleRegistration { "Bench", "1" });
    qint32 status = 0;
    if (module.Initialize(Database().path, status) != 1) {
        state.SkipWithError("the benchmark database cannot be opened");
        return;
    }
    const double days = static_cast<double>(state.range(0));
    qsizetype rows = 0;
    std::int64_t allocations = 0;
    for (auto _ : state) {
        ChannelCollection channels;
        channels.Add(std::make_shared<DataMatrix>(), "1");
        const std::int64_t before = AllocationCount();
        module.GetData("1", channels, Start, Start + days - 1.0 / 1440.0, status);
        allocations += AllocationCount() - before;
        rows = channels.Channel(0)->DataBlock()->Rows();
        benchmark::DoNotOptimize(channels.Channel(0)->DataBlock()->At(rows - 1, 1));
    }
    if (rows != static_cast<qsizetype>(days * 1440))
        state.SkipWithError("wrong number of rows");
    state.SetItemsProcessed(state.iterations() * rows);
    state.counters["allocs"] = benchmark::Counter(static_cast<double>(allocations) / state.iterations());
}
BENCHMARK(BM_GetDataOneYearOfMinutes)->Arg(365)->Arg(7)->Unit(benchmark::kMillisecond);

// The same rows through the bare library into a reused buffer: what any reader must pay.
void BM_PlainSqliteRead(benchmark::State& state)
{
    sqlite3* raw = nullptr;
    sqlite3_open_v2(QFile::encodeName(Database().path).constData(), &raw, SQLITE_OPEN_READONLY, nullptr);
    SqliteConnection db(raw);
    int rc = SQLITE_OK;
    SqliteStatement query = PrepareStatement(
        raw, "SELECT time, value FROM samples WHERE channel = ?1 AND time >= ?2 AND time <= ?3 ORDER BY time", rc);
    std::vector<double> times, values;
    const double days = static_cast<double>(state.range(0));
    for (auto _ : state) {
        times.clear();
        values.clear();
        sqlite3_bind_int64(query.get(), 1, 1);
        sqlite3_bind_double(query.get(), 2, Start);
        sqlite3_bind_double(query.get(), 3, Start + days - 1.0 / 1440.0);
        while (sqlite3_step(query.get()) == SQLITE_ROW) {
            times.push_back(sqlite3_column_double(query.get(), 0));
            values.push_back(sqlite3_column_double(query.get(), 1));
        }
        sqlite3_reset(query.get());
        benchmark::DoNotOptimize(values.data());
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(values.size()));
}
BENCHMARK(BM_PlainSqliteRead)->Arg(365)->Arg(7)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
