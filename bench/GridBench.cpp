// SPDX-License-Identifier: GPL-3.0-or-later
// The table on a very long measuring: ten columns of 100 million one-second rows in a
// 1600 x 900 table, opened, then scrolled to random rows and repainted. Opening and each
// scroll step must cost the same for any row count, and scrolling must not grow the memory:
// the counters rss_before_MB and rss_after_MB give the resident memory around the steps.
#include "Calendar.h"
#include "ctl_DynamicGrid.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QScrollBar>
#include <QTableView>
#include <QWindow>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace {

constexpr qsizetype Rows = 100'000'000;
constexpr int Columns = 10;

double ResidentMegabytes()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0.0;
    for (QByteArray line = status.readLine(); !line.isEmpty(); line = status.readLine())
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').front().toDouble() / 1024.0;
    return 0.0;
}

// One block of 1.6 GB that all ten columns share: the table reads, it never copies.
const std::vector<DataMatrixPtr>& Matrices()
{
    static const std::vector<DataMatrixPtr> matrices = [] {
        auto block = MatrixBlock::Create(Rows, 2);
        const double start = Calendar::FromParts(2020, 1, 1);
        double* times = block->Column(0).data();
        double* values = block->Column(1).data();
        for (qsizetype i = 0; i < Rows; ++i) {
            times[i] = start + static_cast<double>(i) / 86400.0;
            values[i] = i % 10007 == 0 ? block->NoValue() : static_cast<double>(i % 86400) * 0.0125 - 300.0;
        }
        std::vector<DataMatrixPtr> result;
        for (int c = 0; c < Columns; ++c) {
            auto matrix = std::make_shared<DataMatrix>();
            matrix->SetChannelName(QStringLiteral("Kanal %1").arg(c + 1));
            matrix->SetUnit(c % 3 == 2 ? QString() : QStringLiteral("kW"));
            matrix->SetDataType(c == Columns - 1 ? DataMatrix::CosPhiType : 3);
            matrix->SetDataBlock(block);
            result.push_back(matrix);
        }
        return result;
    }();
    return matrices;
}

std::unique_ptr<ctl_DynamicGrid> OpenTable()
{
    auto grid = std::make_unique<ctl_DynamicGrid>();
    grid->resize(1600, 900);
    grid->show();
    QElapsedTimer waited;
    waited.start();
    while (!(grid->windowHandle() && grid->windowHandle()->isExposed())) {
        if (waited.elapsed() > 5000)
            return nullptr;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    for (int c = 0; c < Columns; ++c)
        grid->AddMatrix(Matrices()[static_cast<size_t>(c)], QString::number(c));
    return grid;
}

// Counts the paint events that reach the table, to show that every step really paints.
class PaintCounter : public QObject
{
public:
    int paints = 0;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint)
            ++paints;
        return QObject::eventFilter(watched, event);
    }
};

void BM_OpenTable(benchmark::State& state)
{
    Matrices();
    for (auto _ : state) {
        auto grid = OpenTable();
        if (!grid) {
            state.SkipWithError("window not exposed");
            return;
        }
        benchmark::DoNotOptimize(grid->View()->model()->rowCount());
    }
}
BENCHMARK(BM_OpenTable)->Unit(benchmark::kMillisecond)->UseRealTime();

// Scroll to a random row and paint at once, as a thumb drag does; with grab the whole control
// is drawn into a new picture.
void ScrollSteps(benchmark::State& state, bool grab)
{
    auto grid = OpenTable();
    if (!grid) {
        state.SkipWithError("window not exposed");
        return;
    }
    // A scroll step changes the cells, the time column over the table's left edge and the bar.
    QWidget* cells = grid->View()->viewport();
    auto* timeColumn = grid->View()->findChild<QTableView*>(QStringLiteral("TimeColumn"));
    if (!timeColumn) {
        state.SkipWithError("no time column");
        return;
    }
    const auto repaint = [&] {
        cells->repaint();
        timeColumn->viewport()->repaint();
        grid->VScroll()->repaint();
    };
    PaintCounter counter;
    cells->installEventFilter(&counter);
    timeColumn->viewport()->installEventFilter(&counter);
    std::uint64_t seed = 0x9E3779B97F4A7C15ULL;
    const auto randomRow = [&seed] {
        seed = seed * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<qint32>((seed >> 20) % static_cast<std::uint64_t>(Rows));
    };
    // Warm up the caches of fonts and masks before the memory is taken.
    for (int i = 0; i < 50; ++i) {
        grid->ScrollToRow(randomRow());
        repaint();
    }
    const double before = ResidentMegabytes();
    counter.paints = 0;
    for (auto _ : state) {
        grid->ScrollToRow(randomRow());
        if (grab)
            benchmark::DoNotOptimize(grid->grab());
        else
            repaint();
    }
    state.counters["rss_before_MB"] = before;
    state.counters["rss_after_MB"] = ResidentMegabytes();
    state.counters["paints_per_step"]
        = benchmark::Counter(static_cast<double>(counter.paints), benchmark::Counter::kAvgIterations);
    state.counters["last_first_row"] = grid->FirstRow();
}

void BM_ScrollAndRepaint(benchmark::State& state)
{
    ScrollSteps(state, false);
}
BENCHMARK(BM_ScrollAndRepaint)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(3.0);

void BM_ScrollAndGrab(benchmark::State& state)
{
    ScrollSteps(state, true);
}
BENCHMARK(BM_ScrollAndGrab)->Unit(benchmark::kMillisecond)->UseRealTime()->MinTime(3.0);

} // namespace
