// SPDX-License-Identifier: GPL-3.0-or-later
// Entry of the benchmarks that draw: a Qt application on the offscreen platform and the
// program's script engine, as the views expect them.
#include "MatrixScriptEngine.h"

#include <QApplication>

#include <benchmark/benchmark.h>

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    MatrixScriptEngine engine;
    g_cScriptEngine = &engine;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    g_cScriptEngine = nullptr;
    return 0;
}
