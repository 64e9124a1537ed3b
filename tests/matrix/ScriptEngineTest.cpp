// SPDX-License-Identifier: GPL-3.0-or-later
// The script engine through its public face: variables in, script, Execute, RESULT out.
#include "MatrixScriptEngine.h"

#include <array>
#include <cmath>
#include <tuple>

#include <gtest/gtest.h>

namespace {

constexpr double NV = -1e300;

// A grid block: column 0 the time (day 45000 plus the row in quarter hours), column 1 values.
MatrixBlockPtr Timed(std::initializer_list<double> values)
{
    auto block = MatrixBlock::Create(static_cast<qsizetype>(values.size()), 2);
    qsizetype row = 0;
    for (double value : values) {
        block->SetItem(row, 0, 45000.0 + row / 96.0);
        block->SetItem(row++, 1, value);
    }
    return block;
}

MatrixBlockPtr Scalar(double value)
{
    auto block = MatrixBlock::Create(1, 1);
    block->SetItem(0, 0, value);
    return block;
}

std::vector<double> ValueColumn(const MatrixBlock& block, qsizetype column = 1)
{
    const auto cells = block.Column(column);
    return { cells.begin(), cells.end() };
}

class ScriptEngine : public ::testing::Test
{
protected:
    void Set(const char* name, const MatrixBlockPtr& block) { engine.Variables().Add(block, QLatin1String(name)); }
    MatrixBlockPtr Result() { return engine.Variables().Find(QStringLiteral("RESULT")); }
    std::string Error() const { return engine.LastError().Description().toStdString(); }

    qint32 Run(const QString& script)
    {
        engine.SetScript(script);
        return engine.Execute();
    }

    double RunScalar(const QString& script)
    {
        const qint32 status = Run(script);
        EXPECT_EQ(status, 0) << script.toStdString() << ": " << Error();
        if (status != 0 || !Result() || Result()->Rows() != 1 || Result()->Columns() != 1)
            return std::nan("");
        return Result()->Item(0, 0);
    }

    MatrixScriptEngine engine;
};

} // namespace

TEST_F(ScriptEngine, ResultIsOverwrittenInPlaceOrCreatedAndMayBeReadByTheScript)
{
    Set("CHANNEL_0", Timed({ 5, NV }));
    Set("CHANNEL_1", Timed({ 10, 20 }));
    // The caller pre-creates RESULT: the engine must overwrite that very block.
    auto result = MatrixBlock::Create(7, 3, QStringLiteral("RESULT"));
    Set("RESULT", result);
    ASSERT_EQ(Run(QStringLiteral("RESULT = CHANNEL_0 + CHANNEL_1")), 0) << Error();
    EXPECT_EQ(Result(), result);
    EXPECT_EQ(ValueColumn(*result), (std::vector<double> { 15, NV }));
    EXPECT_EQ(result->NoValue(), NV);
    // Parsed once, the script is bound afresh at every run and sees the new contents of its own target.
    engine.SetScript(QStringLiteral("RESULT = RESULT + RESULT * 10"));
    ASSERT_TRUE(engine.Execute() == 0 && engine.Execute() == 0) << Error();
    EXPECT_EQ(ValueColumn(*result), (std::vector<double> { 1815, NV }));

    engine.Variables().Clear();
    Set("CHANNEL_0", Timed({ 5, NV }));
    ASSERT_EQ(Run(QStringLiteral("RESULT = CHANNEL_0")), 0);
    EXPECT_NE(Result(), result);
    EXPECT_EQ(ValueColumn(*Result()), (std::vector<double> { 5, NV }));
}

TEST_F(ScriptEngine, AggregatesSkipMissingSamplesAndOfNoSamplesAreMissingOrZero)
{
    Set("DATA", Timed({ 3, NV, 7, -2, 7, NV, 5 }));
    Set("NONE", Timed({ NV, NV }));
    Set("EMPTY", Timed({}));
    const double mean = (3 + 7 - 2 + 7 + 5) / 5.0;
    const double spread
        = (std::pow(3 - mean, 2) + 2 * std::pow(7 - mean, 2) + std::pow(-2 - mean, 2) + std::pow(5 - mean, 2)) / 5.0;
    const QString variance = "sum((cols(%1, 1, 1) - mean(cols(%1, 1, 1)))^2) / count(cols(%1, 1, 1))";
    const std::pair<QString, std::array<double, 3>> cases[] = { // of DATA, NONE and EMPTY
        { "max(cols(%1, 1, 1))", { 7, NV, NV } },
        { "max_at(cols(%1, 1, 1))", { 2, NV, NV } }, // the first of equal maxima
        { "min(cols(%1, 1, 1))", { -2, NV, NV } }, { "min_at(cols(%1, 1, 1))", { 3, NV, NV } },
        { "mean(cols(%1, 1, 1))", { mean, NV, NV } }, { "sum(cols(%1, 1, 1))", { 20, 0, 0 } },
        { "count(cols(%1, 1, 1))", { 5, 0, 0 } }, { variance, { spread, NV, NV } }, // not a division by zero
        { "max(%1)", { 7, NV, NV } }, { "max(cols(%1, 0, 0))", { 45000 + 6 / 96.0, 45000 + 1 / 96.0, NV } }
    };
    for (const auto& [script, expected] : cases)
        for (int i = 0; i < 3; ++i) {
            const QString name = QStringList { "DATA", "NONE", "EMPTY" }[i];
            EXPECT_DOUBLE_EQ(RunScalar("RESULT = " + script.arg(name)), expected[i]) << script.arg(name).toStdString();
        }

    // A block's own no-value marks its missing samples.
    auto block = Timed({ 4, -999, 6 });
    block->SetNoValue(-999);
    Set("DATA", block);
    EXPECT_EQ(RunScalar(QStringLiteral("RESULT = min(cols(DATA, 1, 1))")), 4);
    EXPECT_EQ(RunScalar(QStringLiteral("RESULT = count(cols(DATA, 1, 1))")), 2);
    ASSERT_EQ(Run(QStringLiteral("RESULT = DATA * 2")), 0);
    EXPECT_EQ(ValueColumn(*Result()), (std::vector<double> { 8, NV, 12 }));
}

TEST_F(ScriptEngine, ScalarArithmeticFollowsTheUsualPrecedence)
{
    Set("A", Scalar(6));
    Set("B", Scalar(4));
    Set("MISSING", Scalar(NV));
    const std::pair<const char*, double> cases[]
        = { { "RESULT = 1 + 2 * 3", 7 }, { "RESULT = (1 + 2) * 3", 9 }, { "RESULT = 7 - 2 - 1", 4 },
              { "RESULT = 2 ^ 3 ^ 2", 512 }, { "RESULT = -2 ^ 2", -4 }, { "RESULT = +3 - -3", 6 },
              { "RESULT = 1.5e1 + .5", 15.5 }, { "RESULT=A/B", 1.5 }, { "RESULT = max(A) + count(B)", 7 },
              { "RESULT = MISSING + 1", NV }, { "RESULT = -MISSING", NV }, { "RESULT = sum(MISSING)", 0 },
              { "RESULT = 1 / 0", NV }, { "RESULT = (0 - 8) ^ 0.5", NV }, { "RESULT = 1e200 * 1e200", NV } };
    for (const auto& [script, expected] : cases)
        EXPECT_EQ(RunScalar(QString::fromLatin1(script)), expected) << script;
}

TEST_F(ScriptEngine, ElementWiseOperatorsWorkOnEveryValueCellAndKeepTheTime)
{
    Set("DATA", Timed({ 1, NV, 3, 0 }));
    Set("OTHER", Timed({ 2, 2, NV, 4 }));
    Set("M", Scalar(2));
    Set("NV", Scalar(NV));
    const std::pair<const char*, std::vector<double>> cases[] = { { "DATA - M", { -1, NV, 1, -2 } },
        { "DATA ^ 2", { 1, NV, 9, 0 } }, { "DATA * 10 + 1", { 11, NV, 31, 1 } }, { "6 / DATA", { 6, NV, 2, NV } },
        { "-DATA", { -1, NV, -3, 0 } }, { "DATA - OTHER", { -1, NV, NV, -4 } }, { "DATA / OTHER", { 0.5, NV, NV, 0 } },
        { "OTHER ^ DATA", { 2, NV, NV, 1 } }, { "DATA + NV", { NV, NV, NV, NV } } };
    for (const auto& [script, values] : cases) {
        ASSERT_TRUE(Run(QStringLiteral("RESULT = ") + QLatin1String(script)) == 0 && Result()->Columns() == 2)
            << script << ": " << Error();
        EXPECT_EQ(ValueColumn(*Result()), values) << script;
        EXPECT_EQ(ValueColumn(*Result(), 0), ValueColumn(*engine.Variables().Find(QStringLiteral("DATA")), 0))
            << script;
    }
    // Without a time column, every column is a value column.
    ASSERT_EQ(Run(QStringLiteral("RESULT = cols(DATA, 1, 1) * 2")), 0);
    ASSERT_EQ(Result()->Columns(), 1);
    EXPECT_EQ(ValueColumn(*Result(), 0), (std::vector<double> { 2, NV, 6, 0 }));
}

TEST_F(ScriptEngine, LongBlocksAreEvaluatedAcrossChunkBoundaries)
{
    // More rows than one evaluation chunk, with the extremes near the end.
    auto big = MatrixBlock::Create(2000, 2);
    double sum = 0;
    qsizetype count = 0;
    for (qsizetype r = 0; r < big->Rows(); ++r) {
        const double value = r == 1999 ? 500 : r == 1777 ? -5 : r % 7 == 0 ? NV : static_cast<double>(r % 100);
        big->SetItem(r, 0, r);
        big->SetItem(r, 1, value);
        sum += value != NV ? value : 0;
        count += value != NV ? 1 : 0;
    }
    Set("DATA", big);
    EXPECT_EQ(RunScalar(QStringLiteral("RESULT = max_at(cols(DATA, 1, 1))")), 1999);
    EXPECT_EQ(RunScalar(QStringLiteral("RESULT = min_at(cols(DATA, 1, 1))")), 1777);
    EXPECT_EQ(RunScalar(QStringLiteral("RESULT = count(cols(DATA, 1, 1))")), count);
    EXPECT_DOUBLE_EQ(RunScalar(QStringLiteral("RESULT = sum(DATA)")), sum);
    ASSERT_EQ(Run(QStringLiteral("RESULT = DATA + DATA")), 0);
    for (qsizetype r : { 0, 511, 512, 1023, 1024, 1999 })
        EXPECT_EQ(Result()->Item(r, 1), big->Item(r, 1) == NV ? NV : 2 * big->Item(r, 1)) << r;
}

TEST_F(ScriptEngine, FailuresGiveTheirStatusAndATextWithThePositionAndLeaveTheTarget)
{
    Set("A", Timed({ 1, 2, 3 }));
    Set("B", Timed({ 1, 2, 3, 4 }));
    Set("RESULT", Timed({ 9 }));
    const std::tuple<const char*, qint32, const char*> cases[]
        = { { "RESULT = A + B", 3, "the shapes 3x2 and 4x2 do not fit together for \"+\" at position 12" },
              { "RESULT = cols(A, 1, 2)", 3, "cols: a column must be a whole number from 0 to 1 at position 21" },
              { "RESULT = cols(A, 1, 0)", 3, "cols: the first column 1 lies behind the last column 0 at position 10" },
              { "RESULT = A + CHANNEL_9", 2, "unknown variable \"CHANNEL_9\" at position 14" },
              { "RESULT = ", 1, "expected an expression at the end of the script at position 10" },
              { "", 1, "expected the name of the result variable at position 1" },
              { "RESULT = max(A]", 1, "expected \")\", found \"]\" at position 15" },
              { "RESULT = max(A, 1)", 1, "max takes 1 argument(s), not 2 at position 10" },
              { "RESULT = 1e999", 1, "invalid number \"1e999\" at position 10" },
              { "RESULT = A 2", 1, "unexpected \"2\" at position 12" } };
    for (const auto& [script, status, error] : cases) {
        EXPECT_EQ(Run(QString::fromLatin1(script)), status) << script;
        EXPECT_EQ(Error(), error) << script;
    }
    EXPECT_EQ(ValueColumn(*Result()), (std::vector<double> { 9 }));
}

TEST_F(ScriptEngine, PathologicalScriptsFailInsteadOfCrashing)
{
    Set("A", Scalar(1));
    EXPECT_EQ(Run(QStringLiteral("RESULT = ") + QString(100000, u'(') + u'A' + QString(100000, u')')), 1);
    EXPECT_EQ(Error().rfind("expression nested too deeply at position ", 0), 0u) << Error();
    EXPECT_EQ(Run(QStringLiteral("RESULT = A") + QStringLiteral(" + A").repeated(100000)), 1);
    EXPECT_NE(Error().find("too long"), std::string::npos) << Error();
    EXPECT_EQ(Run(QStringLiteral("RESULT = ") + QString(100000, u'-') + u'A'), 1);
    // The engine goes on working after the failures, and a success keeps the last error.
    EXPECT_EQ(RunScalar(QStringLiteral("RESULT = A + 1")), 2);
    EXPECT_NE(Error().find("nested too deeply"), std::string::npos);
}
