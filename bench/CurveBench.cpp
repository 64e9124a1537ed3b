// SPDX-License-Identifier: GPL-3.0-or-later
// Curves into the chart: writing a year of 1-minute values and replotting a 1600 x 900 chart.
#include "ChartAdapter.h"
#include "Curve.h"
#include "MatrixScriptEngine.h"
#include "TimeValueTransformator.h"

#include <QApplication>

#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <vector>

namespace {

constexpr qsizetype YearOfMinutes = 525600;
constexpr double Start = 39814.0; // 2009-01-01
constexpr double Minute = 1.0 / 1440.0;

// A load profile: daily and weekly rhythm, some noise, a gap now and then.
DataMatrixPtr LoadChannel(int number)
{
    auto block = MatrixBlock::Create(YearOfMinutes, 2);
    std::uint32_t seed = 12345u + static_cast<std::uint32_t>(number);
    for (qsizetype i = 0; i < YearOfMinutes; ++i) {
        seed = seed * 1664525u + 1013904223u;
        const double day = static_cast<double>(i) / 1440.0;
        const double noise = static_cast<double>(seed >> 8) / 16777216.0 - 0.5;
        block->At(i, 0) = Start + static_cast<double>(i) * Minute;
        block->At(i, 1) = (i % 50000) < 30 ? block->NoValue()
                                           : 100.0 + 10.0 * number + 40.0 * std::sin(2 * M_PI * day)
                + 15.0 * std::sin(2 * M_PI * day / 7) + 8.0 * noise;
    }
    auto matrix = std::make_shared<DataMatrix>();
    matrix->SetModuleAddress(1);
    matrix->SetChannelID(QString::number(number));
    matrix->SetChannelName(QStringLiteral("Feeder %1").arg(number));
    matrix->SetUnit(QStringLiteral("kW"));
    matrix->SetDataType(3);
    matrix->SetDataBlock(block);
    return matrix;
}

struct Chart
{
    explicit Chart(int curves)
    {
        chart.resize(1600, 900);
        grid.Init(Start, Start + 365.0, QStringLiteral("n"), 1, true);
        for (int i = 0; i < curves; ++i) {
            auto curve = std::make_unique<Curve>();
            curve->AddMatrix(LoadChannel(i));
            curve->Properties().Color = CurveColors::PaletteColor(i);
            curve->UpdateData(Start, Start + 365.0, grid);
            this->curves.push_back(std::move(curve));
        }
        chart.SetAxisRange(ChartAxis::X, 1, static_cast<double>(YearOfMinutes));
    }
    ChartAdapter chart;
    TimeValueTransformator grid;
    std::vector<std::unique_ptr<Curve>> curves;
};

// The chart's series already exist, as on every refresh after the first.
void BM_UpdateChartAndReplot(benchmark::State& state)
{
    Chart view(static_cast<int>(state.range(0)));
    for (const auto& curve : view.curves)
        curve->UpdateChart(&view.chart, true);
    for (auto _ : state) {
        for (const auto& curve : view.curves) {
            curve->SetSeriesID(curve->SeriesID()); // marks the values as changed
            curve->UpdateChart(&view.chart, true);
        }
        view.chart.Replot();
    }
    state.SetItemsProcessed(state.iterations() * YearOfMinutes * state.range(0));
}
BENCHMARK(BM_UpdateChartAndReplot)->Arg(1)->Arg(10)->Unit(benchmark::kMillisecond)->UseRealTime();

// A view just opened: its window shows an empty chart, then the new series arrives and its
// points are allocated on the way.
void BM_FirstUpdateChartAndReplot(benchmark::State& state)
{
    for (auto _ : state) {
        state.PauseTiming();
        auto view = std::make_unique<Chart>(1);
        view->chart.Replot();
        state.ResumeTiming();
        view->curves.front()->UpdateChart(&view->chart, true);
        view->chart.Replot();
        state.PauseTiming();
        view.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_FirstUpdateChartAndReplot)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(40);

void BM_UpdateChart(benchmark::State& state)
{
    Chart view(static_cast<int>(state.range(0)));
    for (const auto& curve : view.curves)
        curve->UpdateChart(&view.chart, true);
    for (auto _ : state)
        for (const auto& curve : view.curves) {
            curve->SetSeriesID(curve->SeriesID());
            curve->UpdateChart(&view.chart, true);
        }
    state.SetItemsProcessed(state.iterations() * YearOfMinutes * state.range(0));
}
BENCHMARK(BM_UpdateChart)->Arg(1)->Arg(10)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_Replot(benchmark::State& state)
{
    Chart view(static_cast<int>(state.range(0)));
    for (const auto& curve : view.curves)
        curve->UpdateChart(&view.chart, true);
    for (auto _ : state)
        view.chart.Replot();
}
BENCHMARK(BM_Replot)->Arg(1)->Arg(10)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
