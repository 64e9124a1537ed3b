// SPDX-License-Identifier: GPL-3.0-or-later
// The work of every refresh: one year of minute samples onto a grid, the curve sum of ten
// channels and the statistic scripts, each beside a plain hand-written loop doing the same
// over the same arrays, which is the speed limit to compare with. The counter "allocs" gives
// the heap allocations per iteration; it must not grow with the number of rows.
#include "AllocationCounter.h"
#include "Calendar.h"
#include "MatrixScriptEngine.h"
#include "TimeValueTransformator.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace {

constexpr double NV = MatrixBlock::DefaultNoValue;
constexpr qsizetype MinutesPerYear = 525'600;
const double YearStart = Calendar::FromParts(2023, 1, 1);

// A load profile in kW: daily and weekly rhythm plus noise, one gap of missing samples a day.
MatrixBlockPtr MinuteChannel(unsigned seed)
{
    auto block = MatrixBlock::Create(MinutesPerYear, 2);
    std::uint64_t state = 0x9E3779B97F4A7C15ULL * (seed + 1);
    for (qsizetype i = 0; i < MinutesPerYear; ++i) {
        state = state * 6364136223846793005ULL + 1442695040888963407ULL;
        const double noise = static_cast<double>(state >> 40) / static_cast<double>(1 << 24);
        const double day = static_cast<double>(i % 1440) / 1440.0;
        block->At(i, 0) = YearStart + static_cast<double>(i) / 1440.0;
        block->At(i, 1) = (i % 1440) < 3 ? NV : 120.0 + 80.0 * std::sin(6.283185307 * day) + 10.0 * noise + seed;
    }
    return block;
}

const MatrixBlockPtr& Source()
{
    static const MatrixBlockPtr block = MinuteChannel(0);
    return block;
}

// (a) One channel of a year onto a grid of 15 minutes (state.range(0) = 15) or of 1 minute,
// averaged as a power channel is.
void BM_GridAdd(benchmark::State& state)
{
    TimeValueTransformator grid;
    grid.Init(YearStart, Calendar::Add(Calendar::Unit::Year, 1, YearStart), QStringLiteral("n"),
              static_cast<qint32>(state.range(0)), true);
    const MatrixBlock& source = *Source();
    AllocationCounter allocations(state);
    for (auto _ : state) {
        grid.Clear();
        grid.Add(source, QStringLiteral("CHANNEL_0"), 3);
        benchmark::DoNotOptimize(grid.Data(QStringLiteral("CHANNEL_0")).get());
    }
    state.SetItemsProcessed(state.iterations() * MinutesPerYear);
}
BENCHMARK(BM_GridAdd)->Arg(15)->Arg(1)->Unit(benchmark::kMillisecond);

// (d) The same average as one loop that knows the steps are fixed: seconds from the start
// divided by the step length.
void BM_PlainGridAverage(benchmark::State& state)
{
    const std::int64_t stepSeconds = state.range(0) * 60;
    const auto times = Source()->Column(0);
    const auto values = Source()->Column(1);
    const auto steps = static_cast<size_t>(MinutesPerYear * 60 / stepSeconds);
    std::vector<double> sum(steps), out(2 * steps);
    std::vector<std::int64_t> count(steps);
    const double origin = times[0];
    for (auto _ : state) {
        std::fill(sum.begin(), sum.end(), 0.0);
        std::fill(count.begin(), count.end(), 0);
        for (size_t i = 0; i < times.size(); ++i) {
            const auto step = static_cast<size_t>(std::llround((times[i] - origin) * 86400.0) / stepSeconds);
            if (step < steps && values[i] != NV) {
                sum[step] += values[i];
                ++count[step];
            }
        }
        double carry = 0.0;
        for (size_t s = 0; s < steps; ++s) {
            out[s] = origin + static_cast<double>(s * stepSeconds) / 86400.0;
            if (count[s] > 0)
                carry = sum[s] / static_cast<double>(count[s]);
            out[steps + s] = carry;
        }
        benchmark::DoNotOptimize(out.data());
    }
    state.SetItemsProcessed(state.iterations() * MinutesPerYear);
}
BENCHMARK(BM_PlainGridAverage)->Arg(15)->Arg(1)->Unit(benchmark::kMillisecond);

// Ten grid blocks of a year: 35,040 quarter hours (range 15) or 525,600 minutes (range 1).
const std::vector<MatrixBlockPtr>& GridChannels(int minutes)
{
    static std::vector<MatrixBlockPtr> blocks[2];
    auto& set = blocks[minutes == 1 ? 1 : 0];
    if (set.empty()) {
        TimeValueTransformator grid;
        grid.Init(YearStart, Calendar::Add(Calendar::Unit::Year, 1, YearStart), QStringLiteral("n"), minutes, true);
        for (unsigned c = 0; c < 10; ++c) {
            const QString name = QStringLiteral("CHANNEL_%1").arg(c);
            grid.Add(*MinuteChannel(c), name, 3);
            set.push_back(grid.Data(name));
        }
    }
    return set;
}

// (b) The curve sum of ten channels through the engine, into a pre-created RESULT.
void BM_CurveSum(benchmark::State& state)
{
    const auto& channels = GridChannels(static_cast<int>(state.range(0)));
    MatrixScriptEngine engine;
    QString script = QStringLiteral("RESULT = ");
    for (int c = 0; c < 10; ++c)
        script += (c ? QStringLiteral(" + CHANNEL_%1") : QStringLiteral("CHANNEL_%1")).arg(c);
    const auto result = MatrixBlock::Create(0, 2, QStringLiteral("RESULT"));
    AllocationCounter allocations(state);
    for (auto _ : state) {
        // As a curve does it: clear, add the blocks, set the script, execute.
        engine.Variables().Clear();
        engine.Variables().Add(result, QStringLiteral("RESULT"));
        for (int c = 0; c < 10; ++c)
            engine.Variables().Add(channels[c], QStringLiteral("CHANNEL_%1").arg(c));
        engine.SetScript(script);
        if (engine.Execute() != 0)
            state.SkipWithError("script failed");
        benchmark::DoNotOptimize(result->Column(1).data());
    }
    state.SetItemsProcessed(state.iterations() * channels[0]->Rows() * 10);
}
BENCHMARK(BM_CurveSum)->Arg(15)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_PlainCurveSum(benchmark::State& state)
{
    const auto& channels = GridChannels(static_cast<int>(state.range(0)));
    const qsizetype rows = channels[0]->Rows();
    std::vector<const double*> values;
    for (const auto& channel : channels)
        values.push_back(channel->Column(1).data());
    const double* times = channels[0]->Column(0).data();
    std::vector<double> out(static_cast<size_t>(2 * rows));
    for (auto _ : state) {
        for (qsizetype r = 0; r < rows; ++r) {
            double sum = 0.0;
            for (const double* channel : values) {
                const double v = channel[r];
                sum = (sum == NV || v == NV) ? NV : sum + v;
            }
            out[r] = times[r];
            out[rows + r] = sum;
        }
        benchmark::DoNotOptimize(out.data());
    }
    state.SetItemsProcessed(state.iterations() * rows * 10);
}
BENCHMARK(BM_PlainCurveSum)->Arg(15)->Arg(1)->Unit(benchmark::kMillisecond);

// (c) The statistic scripts of a curve on a block of a year of minutes.
const char* const StatisticScripts[] = {
    "RESULT = max(cols(DATA, 1, 1))",
    "RESULT = max_at(cols(DATA, 1, 1))",
    "RESULT = mean(cols(DATA, 1, 1))",
    "RESULT = min(cols(DATA, 1, 1))",
    "RESULT = min_at(cols(DATA, 1, 1))",
    "RESULT = sum((cols(DATA, 1, 1) - mean(cols(DATA, 1, 1)))^2) / count(cols(DATA, 1, 1))",
    "RESULT = sum(cols(DATA, 1, 1))",
    "RESULT = count(cols(DATA, 1, 1))",
};
constexpr int ScriptCount = static_cast<int>(std::size(StatisticScripts));

void BM_StatisticScript(benchmark::State& state)
{
    const int first = state.range(0) < 0 ? 0 : static_cast<int>(state.range(0));
    const int last = state.range(0) < 0 ? ScriptCount - 1 : first;
    state.SetLabel(state.range(0) < 0 ? "all" : StatisticScripts[first]);
    MatrixScriptEngine engine;
    AllocationCounter allocations(state);
    for (auto _ : state) {
        for (int s = first; s <= last; ++s) {
            engine.Variables().Clear();
            engine.Variables().Add(MatrixBlock::Create(0, 0), QStringLiteral("RESULT"));
            engine.Variables().Add(Source(), QStringLiteral("DATA"));
            engine.SetScript(QString::fromLatin1(StatisticScripts[s]));
            if (engine.Execute() != 0)
                state.SkipWithError("script failed");
        }
    }
    state.SetItemsProcessed(state.iterations() * MinutesPerYear * (last - first + 1));
}
BENCHMARK(BM_StatisticScript)->DenseRange(-1, ScriptCount - 1)->Unit(benchmark::kMicrosecond);

// The same statistics, each as its own plain loop (range -1: all of them in turn).
double PlainStatistic(int which, const double* v, size_t n)
{
    double best = which == 3 || which == 4 ? std::numeric_limits<double>::infinity()
                                           : -std::numeric_limits<double>::infinity();
    size_t at = 0;
    double sum = 0.0;
    size_t count = 0;
    switch (which) {
    case 0:
    case 1:
        for (size_t i = 0; i < n; ++i)
            if (v[i] != NV && v[i] > best) {
                best = v[i];
                at = i;
            }
        return which == 0 ? best : static_cast<double>(at);
    case 3:
    case 4:
        for (size_t i = 0; i < n; ++i)
            if (v[i] != NV && v[i] < best) {
                best = v[i];
                at = i;
            }
        return which == 3 ? best : static_cast<double>(at);
    case 5: {
        for (size_t i = 0; i < n; ++i)
            if (v[i] != NV) {
                sum += v[i];
                ++count;
            }
        const double mean = sum / static_cast<double>(count);
        double squares = 0.0;
        for (size_t i = 0; i < n; ++i)
            if (v[i] != NV)
                squares += (v[i] - mean) * (v[i] - mean);
        return squares / static_cast<double>(count);
    }
    default:
        for (size_t i = 0; i < n; ++i)
            if (v[i] != NV) {
                sum += v[i];
                ++count;
            }
        return which == 2 ? sum / static_cast<double>(count) : which == 6 ? sum : static_cast<double>(count);
    }
}

void BM_PlainStatistic(benchmark::State& state)
{
    const int first = state.range(0) < 0 ? 0 : static_cast<int>(state.range(0));
    const int last = state.range(0) < 0 ? ScriptCount - 1 : first;
    state.SetLabel(state.range(0) < 0 ? "all" : StatisticScripts[first]);
    const auto values = Source()->Column(1);
    for (auto _ : state)
        for (int s = first; s <= last; ++s)
            benchmark::DoNotOptimize(PlainStatistic(s, values.data(), values.size()));
    state.SetItemsProcessed(state.iterations() * MinutesPerYear * (last - first + 1));
}
BENCHMARK(BM_PlainStatistic)->DenseRange(-1, ScriptCount - 1)->Unit(benchmark::kMicrosecond);

} // namespace
BENCHMARK_MAIN();
