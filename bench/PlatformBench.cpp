// SPDX-License-Identifier: GPL-3.0-or-later
// Calendar steps and cell formatting: the work a table page or a time grid repeats per row.
#include "Calendar.h"
#include "Formatter.h"

#include <QLocale>

#include <benchmark/benchmark.h>

namespace {

const double Start = Calendar::FromParts(2023, 1, 1);

// One year of quarter hours, each row computed from the start as a grid does.
void BM_CalendarAddQuarterHours(benchmark::State& state)
{
    for (auto _ : state) {
        double last = 0;
        for (int i = 0; i < 35040; ++i)
            last = Calendar::Add(Calendar::Unit::Minute, 15LL * i, Start);
        benchmark::DoNotOptimize(last);
    }
    state.SetItemsProcessed(state.iterations() * 35040);
}
BENCHMARK(BM_CalendarAddQuarterHours);

void BM_CalendarAddMonths(benchmark::State& state)
{
    for (auto _ : state) {
        double last = 0;
        for (int i = 0; i < 1200; ++i)
            last = Calendar::Add(Calendar::Unit::Month, i, Start + 30.5);
        benchmark::DoNotOptimize(last);
    }
    state.SetItemsProcessed(state.iterations() * 1200);
}
BENCHMARK(BM_CalendarAddMonths);

void BM_FormatNumberGrouped(benchmark::State& state)
{
    const Formatter formatter(QLocale(QLocale::German, QLocale::Germany));
    double value = 1234.5678;
    for (auto _ : state) {
        benchmark::DoNotOptimize(formatter.FormatNumber(value, u"#,##0.00"));
        value += 0.731;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_FormatNumberGrouped);

void BM_FormatDateMask(benchmark::State& state)
{
    const Formatter formatter(QLocale(QLocale::German, QLocale::Germany));
    double date = Start;
    for (auto _ : state) {
        benchmark::DoNotOptimize(formatter.FormatDate(date, u"dd.mm.yyyy hh:nn"));
        date += 1.0 / 96.0;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_FormatDateMask);

void BM_ParseDate(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(Calendar::ParseDate(u"2023-06-14 13:45:00"));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ParseDate);

} // namespace

BENCHMARK_MAIN();
