// SPDX-License-Identifier: GPL-3.0-or-later
// Feeds random blocks and a random script to the engine, and the same blocks to the time grid.
// Checks that nothing throws out of Execute, that failures come with a text, that a result has a
// sane shape, and that a grid block always has one row per grid step.
#include "MatrixScriptEngine.h"
#include "TimeValueTransformator.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <QString>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace {

void Check(bool condition)
{
    if (!condition)
        __builtin_trap();
}

double Cell(FuzzedDataProvider& input)
{
    switch (input.ConsumeIntegralInRange(0, 9)) {
    case 0:
        return MatrixBlock::DefaultNoValue;
    case 1:
        return std::numeric_limits<double>::quiet_NaN();
    case 2:
        return std::numeric_limits<double>::infinity();
    case 3:
        return input.ConsumeFloatingPoint<double>();
    default:
        return input.ConsumeIntegralInRange(-1000, 1000) / 4.0;
    }
}

MatrixBlockPtr Block(FuzzedDataProvider& input, const QString& name)
{
    const qsizetype rows = input.ConsumeIntegralInRange(0, 1100);
    const qsizetype columns = input.ConsumeIntegralInRange(0, 3);
    auto block = MatrixBlock::Create(rows, columns, name);
    if (input.ConsumeBool())
        block->SetNoValue(Cell(input));
    // Times ascend mostly, as modules deliver them; the values are anything.
    double time = 45000.0 + input.ConsumeIntegralInRange(-100, 100) / 96.0;
    for (qsizetype r = 0; r < rows && columns > 0; ++r) {
        time += input.ConsumeIntegralInRange(-2, 40) / 1440.0;
        block->At(r, 0) = time;
    }
    for (qsizetype c = 1; c < columns; ++c)
        for (qsizetype r = 0; r < rows; ++r)
            block->At(r, c) = input.remaining_bytes() > 0 ? Cell(input) : r;
    return block;
}

MatrixScriptEngine& Engine()
{
    static MatrixScriptEngine engine;
    return engine;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider input(data, size);
    const auto a = Block(input, QStringLiteral("A"));
    const auto b = Block(input, QStringLiteral("DATA"));
    const bool preset = input.ConsumeBool();
    const bool prefix = input.ConsumeBool();
    const std::string text = input.ConsumeRemainingBytesAsString();

    MatrixScriptEngine& engine = Engine();
    engine.Variables().Clear();
    engine.Variables().Add(a);
    engine.Variables().Add(b);
    engine.Variables().Add(a, QStringLiteral("CHANNEL_0"));
    engine.Variables().Add(b, QStringLiteral("CHANNEL_1"));
    if (preset)
        engine.Variables().Add(MatrixBlock::Create(3, 3), QStringLiteral("RESULT"));
    // Half of the inputs start as real scripts do, so that the fuzzer reaches the evaluator early.
    const QString script = (prefix ? QStringLiteral("RESULT = ") : QString()) + QString::fromUtf8(text);
    engine.SetScript(script);
    const qint32 status = engine.Execute();
    if (status != 0) {
        Check(!engine.LastError().Description().isEmpty());
    } else {
        const MatrixBlockPtr target = engine.Variables().Find(script.section(u'=', 0, 0).trimmed());
        Check(target != nullptr);
        Check(target->Rows() >= 0 && target->Columns() >= 0);
        Check(target->Rows() <= 1100 && target->Columns() <= 3);
    }

    TimeValueTransformator grid;
    grid.Init(45000.0, 45000.0 + (a->Rows() % 7), QStringLiteral("h"), 1 + static_cast<int>(b->Rows() % 5),
              a->Rows() % 2 == 0, a->Rows() % 3 == 0 ? b : nullptr);
    for (qint32 aggregation : {0, 1, 2, 3, 6, 8}) {
        grid.Clear();
        grid.Add(*a, QStringLiteral("A"), aggregation);
        if (const auto block = grid.Data(QStringLiteral("A"))) {
            Check(block->Rows() == grid.Time()->Rows());
            Check(block->Columns() == 2);
        }
    }
    return 0;
}
