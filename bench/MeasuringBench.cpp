// SPDX-License-Identifier: GPL-3.0-or-later
// A view of ten demo channels over a year of 15-minute data: opening it from its file to a
// drawn chart, and one navigation step (refetch, regrid, recompute, redraw).
#include "ChartAdapter.h"
#include "DemoHost.h"
#include "MatrixScriptEngine.h"
#include "Measuring.h"
#include "SoranoFileHandler.h"
#include "frm_GraphicView.h"

#include <QApplication>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <memory>

namespace {

struct DemoView
{
    DemoView()
    {
        // Active and reactive power and energy of the four 15-minute loggers, less one.
        MeasuringFile file;
        file.name = QStringLiteral("Zehn Kanäle");
        file.intervalUnit = QStringLiteral("n");
        file.intervalCount = 15;
        file.startDate = 45292.0; // 2024-01-01
        file.endDate = 45658.0; // 2025-01-01
        file.modules = { QStringLiteral("1") };
        file.graph.Gallery = 1;
        file.hasCurves = true;
        for (const int channel : { 111, 112, 114, 121, 122, 124, 131, 132, 141, 142 }) {
            MeasuringFile::Curve curve;
            curve.channels = { QStringLiteral("1$%1#%2").arg(channel / 10).arg(channel % 10) };
            file.curves.append(curve);
        }
        path = host.dir.filePath("view.sor");
        SoranoFileHandler::Save(path, file);
    }

    DemoHost host;
    QString path;
};

DemoView& View()
{
    static DemoView view;
    return view;
}

void BM_OpenView(benchmark::State& state)
{
    DemoView& view = View();
    qsizetype points = 0;
    for (auto _ : state) {
        Measuring measuring(view.host);
        measuring.Init();
        measuring.Window()->resize(1600, 900);
        measuring.Window()->AlignControls();
        // The refresh ends by drawing the chart into its buffers.
        measuring.OpenFile(view.path, true);
        points = measuring.Chart()->PointCount() * measuring.Chart()->SeriesCount();
    }
    state.counters["points"] = double(points);
}
BENCHMARK(BM_OpenView)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_NavigationStep(benchmark::State& state)
{
    DemoView& view = View();
    Measuring measuring(view.host);
    measuring.Init();
    measuring.Window()->resize(1600, 900);
    measuring.Window()->AlignControls();
    measuring.OpenFile(view.path, true);
    const double length = measuring.EndDate() - measuring.StartDate();
    double shift = 1;
    for (auto _ : state) {
        // A day forward, then back again: the window stays within the data.
        const double from = measuring.StartDate() + shift;
        measuring.RefreshData(from, from + length, nullptr, true);
        shift = -shift;
    }
}
BENCHMARK(BM_NavigationStep)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
