// SPDX-License-Identifier: GPL-3.0-or-later
// The table's CSV export: ten curves of a year of minute values (5.26 million values) written
// to a temp file, as readings with two decimals and as computed values that need all fifteen
// digits; bytes_per_second is the speed of the whole export, MB the file's size.
#include "Calendar.h"
#include "ctl_DynamicGrid.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <numbers>
#include <vector>

namespace {

constexpr qsizetype Rows = 525'600;
constexpr int Columns = 10;

// Ten channels over 2024 in minute steps: a daily load curve per channel with a little noise,
// one power factor, and a gap of a few hours in every channel.
std::vector<DataMatrixPtr> Matrices(bool rounded)
{
    std::vector<DataMatrixPtr> result;
    const double start = Calendar::FromParts(2024, 1, 1);
    std::uint64_t seed = 0x2545F4914F6CDD1DULL;
    for (int c = 0; c < Columns; ++c) {
        auto block = MatrixBlock::Create(Rows, 2);
        double* times = block->Column(0).data();
        double* values = block->Column(1).data();
        const bool powerFactor = c == Columns - 1;
        for (qsizetype i = 0; i < Rows; ++i) {
            seed ^= seed << 13;
            seed ^= seed >> 7;
            seed ^= seed << 17;
            const double noise = static_cast<double>(seed >> 11) * 0x1.0p-53;
            times[i] = start + static_cast<double>(i) / 1440.0;
            const double daily = std::sin(static_cast<double>(i % 1440) * (2 * std::numbers::pi / 1440.0));
            double value = powerFactor ? 0.85 + 0.1 * noise : 40.0 * (c + 1) * (1.2 + daily) + 5.0 * noise;
            if (rounded)
                value = std::round(value * (powerFactor ? 1000.0 : 100.0)) / (powerFactor ? 1000.0 : 100.0);
            const bool gap = i % 100'000 >= 99'700;
            values[i] = gap ? block->NoValue() : value;
        }
        auto matrix = std::make_shared<DataMatrix>();
        matrix->SetChannelName(QStringLiteral("Kanal %1").arg(c + 1));
        matrix->SetUnit(powerFactor ? QString() : QStringLiteral("kW"));
        matrix->SetDataType(powerFactor ? DataMatrix::CosPhiType : 3);
        matrix->SetDataBlock(block);
        result.push_back(matrix);
    }
    return result;
}

void Export(benchmark::State& state, bool rounded)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("export.csv"));
    ctl_DynamicGrid grid;
    grid.SetAutoUpdate(false);
    const std::vector<DataMatrixPtr> matrices = Matrices(rounded);
    for (int c = 0; c < Columns; ++c)
        grid.AddMatrix(matrices[static_cast<size_t>(c)], QString::number(c));
    qint64 bytes = 0;
    for (auto _ : state) {
        if (grid.Export(path) != 0) {
            state.SkipWithError("export failed");
            return;
        }
        bytes += QFileInfo(path).size();
    }
    state.SetBytesProcessed(bytes);
    state.counters["MB"] = static_cast<double>(QFileInfo(path).size()) / 1e6;
}

void BM_CsvExportReadings(benchmark::State& state)
{
    Export(state, true);
}
BENCHMARK(BM_CsvExportReadings)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_CsvExportComputedValues(benchmark::State& state)
{
    Export(state, false);
}
BENCHMARK(BM_CsvExportComputedValues)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
