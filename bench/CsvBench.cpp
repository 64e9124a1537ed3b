// SPDX-License-Identifier: GPL-3.0-or-later
// Reading a logger CSV file through the CSV module: the first read of a year of minute
// samples in ten channels (tree, index and every sample), a later one-day window from the
// indexed file, and beside them a plain from_chars loop over the same bytes, the speed
// limit to compare the first read with. The file is generated once into a temporary folder.
#include "Calendar.h"
#include "CsvDataModule.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr int MinutesPerYear = 525'600;
constexpr int Channels = 10;

struct BenchFile
{
    QTemporaryDir dir;
    QString path;
    qint64 size = 0;
    QStringList ids;
};

// "timestamp,ch1,...,ch10", ISO times, "." decimals, load-like values, now and then an empty cell.
const BenchFile& File()
{
    static BenchFile file = [] {
        BenchFile f;
        QSettings::setPath(QSettings::IniFormat, QSettings::SystemScope, f.dir.filePath("machine"));
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, f.dir.filePath("user"));
        f.path = f.dir.filePath("data/site/logger.csv");
        QDir().mkpath(QFileInfo(f.path).absolutePath());
        std::string text = "timestamp";
        for (int c = 1; c <= Channels; ++c)
            text += ",ch" + std::to_string(c);
        text += '\n';
        text.reserve(50'000'000);
        std::uint64_t state = 0x9E3779B97F4A7C15ULL;
        char line[256];
        for (int i = 0; i < MinutesPerYear; ++i) {
            const Calendar::DateParts p = Calendar::Split(Calendar::FromParts(2023, 1, 1, 0, i));
            int n = std::snprintf(
                line, sizeof line, "%04d-%02d-%02dT%02d:%02d:00", p.year, p.month, p.day, p.hour, p.minute);
            const double day = (i % 1440) / 1440.0;
            for (int c = 0; c < Channels; ++c) {
                state = state * 6364136223846793005ULL + 1442695040888963407ULL;
                const double noise = static_cast<double>(state >> 40) / static_cast<double>(1 << 24);
                line[n++] = ',';
                if (i % 997 == c)
                    continue;
                n += std::snprintf(
                    line + n, sizeof line - n, "%.2f", 120.0 + 80.0 * std::sin(6.283185307 * day) + 10.0 * noise + c);
            }
            line[n++] = '\n';
            text.append(line, static_cast<std::size_t>(n));
        }
        QFile out(f.path);
        const auto bytes = static_cast<qint64>(text.size());
        if (!out.open(QIODevice::WriteOnly) || out.write(text.data(), bytes) != bytes)
            std::abort();
        f.size = static_cast<qint64>(text.size());
        return f;
    }();
    return file;
}

QString Root()
{
    return File().dir.filePath("data");
}

QStringList Ids(CsvDataModule& module)
{
    ChannelCollection overview;
    qint32 status = 0;
    module.GetChannelOverview(overview, status);
    QStringList ids;
    for (qsizetype i = 0; i < overview.Count(); ++i)
        ids << overview.Key(i);
    return ids;
}

qsizetype ReadAll(CsvDataModule& module, const QStringList& ids, double from, double to)
{
    ChannelCollection channels;
    for (const QString& id : ids) {
        auto channel = std::make_shared<DataMatrix>();
        channel->SetChannelID(id);
        channels.Add(channel, id);
    }
    qint32 status = 0;
    module.GetData(ids.join(';'), channels, from, to, status);
    qsizetype rows = 0;
    for (qsizetype i = 0; i + 1 < channels.Count(); ++i)
        rows += channels.Channel(i)->DataBlock()->Rows();
    return rows;
}

const double YearStart = Calendar::FromParts(2023, 1, 1);

// A new module each time: the tree, the index and every sample of the year.
void BM_CsvFirstRead(benchmark::State& state)
{
    const BenchFile& file = File();
    for (auto _ : state) {
        CsvDataModule module(DataModuleRegistration { "Bench", "1" });
        qint32 status = 0;
        module.Initialize(Root(), status);
        const QStringList ids = Ids(module);
        benchmark::DoNotOptimize(ReadAll(module, ids, YearStart, YearStart + 366));
    }
    state.SetBytesProcessed(state.iterations() * file.size);
}
BENCHMARK(BM_CsvFirstRead)->Unit(benchmark::kMillisecond)->MinTime(2);

// One day in the middle of the year from a file whose index is built.
void BM_CsvDayWindow(benchmark::State& state)
{
    File();
    CsvDataModule module(DataModuleRegistration { "Bench", "1" });
    qint32 status = 0;
    module.Initialize(Root(), status);
    const QStringList ids = Ids(module);
    ReadAll(module, ids, YearStart, YearStart + 366);
    const double from = YearStart + 180;
    qsizetype rows = 0;
    for (auto _ : state) {
        rows = ReadAll(module, ids, from, from + 1);
        benchmark::DoNotOptimize(rows);
    }
    state.counters["rows"] = static_cast<double>(rows);
}
BENCHMARK(BM_CsvDayWindow)->Unit(benchmark::kMicrosecond);

// Every number of the file through from_chars and nothing else: no times, no checks, no blocks.
void BM_PlainFromChars(benchmark::State& state)
{
    const BenchFile& file = File();
    QFile in(file.path);
    in.open(QIODevice::ReadOnly);
    const auto* data = reinterpret_cast<const char*>(in.map(0, file.size));
    const char* const end = data + file.size;
    std::vector<double> values(static_cast<std::size_t>(MinutesPerYear) * Channels);
    for (auto _ : state) {
        std::size_t n = 0;
        const char* p = static_cast<const char*>(std::memchr(data, '\n', file.size)) + 1;
        while (p < end) {
            while (*p != ',')
                ++p;
            while (*p != '\n') {
                ++p;
                double v = 0.0;
                const auto [next, error] = std::from_chars(p, end, v);
                if (error == std::errc() && n < values.size())
                    values[n++] = v;
                p = next;
            }
            ++p;
        }
        benchmark::DoNotOptimize(values.data());
    }
    state.SetBytesProcessed(state.iterations() * file.size);
}
BENCHMARK(BM_PlainFromChars)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
