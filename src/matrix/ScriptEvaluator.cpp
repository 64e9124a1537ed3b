// SPDX-License-Identifier: GPL-3.0-or-later
// Binding turns the syntax tree into a tree of matrix expressions with known shapes; scalar
// parts (numbers, 1x1 blocks, aggregates) are computed right away. A matrix expression is then
// pulled column by column in chunks of rows, each node filling one chunk-sized buffer, so that
// evaluation allocates per node and never per cell, and reads the blocks without copying.
//
// Semantics of missing samples: a cell equal to its block's NoValue is missing; element-wise
// operators give NoValue where an operand is missing or the result is not a finite number;
// aggregates skip missing cells. A block of two or more columns carries the time in column 0:
// element-wise operators pass it through from the left-most such operand, and aggregates
// only look at the value columns.
//
// This file is compiled twice: once for the baseline instruction set and once, as
// ScriptEvaluatorAvx2.cpp, with AVX2 in its own namespace. Evaluate picks the AVX2 build when
// the processor has it: the chunk loops then run on wider vectors, and no legacy SSE code
// runs into the false register dependencies some processors impose on it once the upper
// halves of the vector registers are in use.
#include "ScriptEvaluator.h"

#include "FreshMemory.h"

#include <QHash>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <vector>

#ifdef SORANO_EVALUATOR_AVX2
#define SORANO_EVALUATOR_NAMESPACE Avx2
#else
#define SORANO_EVALUATOR_NAMESPACE Baseline
#endif

namespace MatrixScript {

namespace SORANO_EVALUATOR_NAMESPACE {

void Evaluate(const Program& program, MatrixVariables& variables);

namespace {

constexpr double Missing = MatrixBlock::DefaultNoValue;
constexpr qsizetype ChunkRows = 512;

inline double Finite(double value)
{
    return std::isfinite(value) ? value : Missing;
}

// A matrix-valued expression with a known shape.
class Matrix
{
public:
    Matrix(qsizetype rows, qsizetype columns, bool timed) : m_rows(rows), m_columns(columns), m_timed(timed) {}
    virtual ~Matrix() = default;

    // Rows [row, row + count) of the column, count <= ChunkRows; missing cells are Missing.
    // The pointer stays valid until the next Fetch on this node.
    virtual const double* Fetch(qsizetype column, qsizetype row, qsizetype count) = 0;

    qsizetype Rows() const { return m_rows; }
    qsizetype Columns() const { return m_columns; }
    bool Timed() const { return m_timed; }
    qsizetype FirstValueColumn() const { return m_timed ? 1 : 0; }

protected:
    // Nodes that compute cells get their chunk buffer when they are built, so that Fetch
    // never allocates and cannot fail half way through a result.
    void ReserveBuffer() { m_buffer.resize(ChunkRows); }

    double* Buffer() { return m_buffer.data(); }

private:
    qsizetype m_rows;
    qsizetype m_columns;
    bool m_timed;
    std::vector<double> m_buffer;
};

// Either a scalar or a matrix expression.
struct Value
{
    double scalar = 0.0;
    std::unique_ptr<Matrix> matrix;

    bool IsScalar() const { return !matrix; }
};

class BlockMatrix final : public Matrix
{
public:
    explicit BlockMatrix(const MatrixBlock& block)
        : Matrix(block.Rows(), block.Columns(), block.Columns() >= 2), m_block(block), m_noValue(block.NoValue())
    {
        if (m_noValue != Missing)
            ReserveBuffer();
    }

    const double* Fetch(qsizetype column, qsizetype row, qsizetype count) override
    {
        const double* cells = m_block.Column(column).data() + row;
        if (m_noValue == Missing)
            return cells;
        double* out = Buffer();
        for (qsizetype i = 0; i < count; ++i)
            out[i] = cells[i] == m_noValue ? Missing : cells[i];
        return out;
    }

private:
    const MatrixBlock& m_block;
    double m_noValue;
};

class ColumnsMatrix final : public Matrix
{
public:
    ColumnsMatrix(std::unique_ptr<Matrix> source, qsizetype first, qsizetype last)
        : Matrix(source->Rows(), last - first + 1, source->Timed() && first == 0 && last >= 1),
          m_source(std::move(source)), m_first(first)
    {
    }

    const double* Fetch(qsizetype column, qsizetype row, qsizetype count) override
    {
        return m_source->Fetch(m_first + column, row, count);
    }

private:
    std::unique_ptr<Matrix> m_source;
    qsizetype m_first;
};

double Apply(BinaryOp op, double a, double b)
{
    if (a == Missing || b == Missing)
        return Missing;
    switch (op) {
    case BinaryOp::Add:
        return Finite(a + b);
    case BinaryOp::Subtract:
        return Finite(a - b);
    case BinaryOp::Multiply:
        return Finite(a * b);
    case BinaryOp::Divide:
        return Finite(a / b);
    case BinaryOp::Power:
        return Finite(std::pow(a, b));
    }
    return Missing;
}

// Infinite or NaN.
inline bool Bad(double result)
{
    return !(std::fabs(result) <= std::numeric_limits<double>::max());
}

// The loops are instantiated per operator and written without branches, so that the compiler
// can vectorise them: every result is computed, then replaced where it must be missing.
template <typename Op>
void ApplyEach(const double* a, const double* b, double* out, qsizetype count, Op op)
{
    for (qsizetype i = 0; i < count; ++i) {
        const double result = op(a[i], b[i]);
        out[i] = ((a[i] == Missing) | (b[i] == Missing) | Bad(result)) ? Missing : result;
    }
}

template <typename Op>
void ApplyEachScalar(const double* a, double b, bool scalarLeft, double* out, qsizetype count, Op op)
{
    if (scalarLeft) {
        for (qsizetype i = 0; i < count; ++i) {
            const double result = op(b, a[i]);
            out[i] = ((a[i] == Missing) | Bad(result)) ? Missing : result;
        }
    } else {
        for (qsizetype i = 0; i < count; ++i) {
            const double result = op(a[i], b);
            out[i] = ((a[i] == Missing) | Bad(result)) ? Missing : result;
        }
    }
}

template <typename Visitor>
void WithOperator(BinaryOp op, Visitor&& visit)
{
    switch (op) {
    case BinaryOp::Add:
        return visit([](double x, double y) { return x + y; });
    case BinaryOp::Subtract:
        return visit([](double x, double y) { return x - y; });
    case BinaryOp::Multiply:
        return visit([](double x, double y) { return x * y; });
    case BinaryOp::Divide:
        return visit([](double x, double y) { return x / y; });
    case BinaryOp::Power:
        return visit([](double x, double y) { return std::pow(x, y); });
    }
}

class BinaryMatrix final : public Matrix
{
public:
    BinaryMatrix(BinaryOp op, std::unique_ptr<Matrix> left, std::unique_ptr<Matrix> right)
        : Matrix(left->Rows(), left->Columns(), left->Timed()), m_op(op), m_left(std::move(left)),
          m_right(std::move(right))
    {
        ReserveBuffer();
    }

    const double* Fetch(qsizetype column, qsizetype row, qsizetype count) override
    {
        const double* a = m_left->Fetch(column, row, count);
        if (Timed() && column == 0)
            return a;
        const double* b = m_right->Fetch(column, row, count);
        double* out = Buffer();
        WithOperator(m_op, [&](auto op) { ApplyEach(a, b, out, count, op); });
        return out;
    }

private:
    BinaryOp m_op;
    std::unique_ptr<Matrix> m_left;
    std::unique_ptr<Matrix> m_right;
};

class ScalarBinaryMatrix final : public Matrix
{
public:
    ScalarBinaryMatrix(BinaryOp op, std::unique_ptr<Matrix> matrix, double scalar, bool scalarLeft)
        : Matrix(matrix->Rows(), matrix->Columns(), matrix->Timed()), m_op(op), m_matrix(std::move(matrix)),
          m_scalar(scalar), m_scalarLeft(scalarLeft)
    {
        ReserveBuffer();
    }

    const double* Fetch(qsizetype column, qsizetype row, qsizetype count) override
    {
        const double* a = m_matrix->Fetch(column, row, count);
        if (Timed() && column == 0)
            return a;
        double* out = Buffer();
        if (m_scalar == Missing)
            std::fill_n(out, count, Missing);
        else if (m_op == BinaryOp::Power && m_scalar == 2.0 && !m_scalarLeft)
            ApplyEachScalar(a, 2.0, false, out, count, [](double x, double) { return x * x; });
        else
            WithOperator(m_op, [&](auto op) { ApplyEachScalar(a, m_scalar, m_scalarLeft, out, count, op); });
        return out;
    }

private:
    BinaryOp m_op;
    std::unique_ptr<Matrix> m_matrix;
    double m_scalar;
    bool m_scalarLeft;
};

// Calls visit(pointer, firstRow, count) for every chunk of every value column.
template <typename Visitor>
void ForEachValueChunk(Matrix& matrix, Visitor&& visit)
{
    for (qsizetype column = matrix.FirstValueColumn(); column < matrix.Columns(); ++column)
        for (qsizetype row = 0; row < matrix.Rows(); row += ChunkRows) {
            const qsizetype count = std::min(ChunkRows, matrix.Rows() - row);
            visit(matrix.Fetch(column, row, count), row, count);
        }
}

struct ExtremeCell
{
    double value = Missing;
    double row = Missing;
};

// The largest (Better = greater) or smallest cell. Of equal extremes the first in reading
// order wins: column by column, row by row.
template <typename Better>
ExtremeCell Extreme(Matrix& matrix)
{
    const Better better;
    double best = 0.0;
    qsizetype bestRow = -1;
    ForEachValueChunk(matrix, [&](const double* cells, qsizetype first, qsizetype count) {
        qsizetype i = 0;
        if (bestRow < 0) {
            while (i < count && (cells[i] == Missing || std::isnan(cells[i])))
                ++i;
            if (i == count)
                return;
            best = cells[i];
            bestRow = first + i;
        }
        double chunkBest = best;
        qsizetype chunkRow = -1;
        for (; i < count; ++i) {
            const double v = cells[i];
            // A new extreme is rare: a predicted branch beats a conditional move, whose chain
            // through chunkBest would cost every cell.
            if (__builtin_expect(better(v, chunkBest) && v != Missing, 0)) {
                chunkBest = v;
                chunkRow = i;
            }
        }
        if (chunkRow >= 0) {
            best = chunkBest;
            bestRow = first + chunkRow;
        }
    });
    if (bestRow < 0)
        return {};
    return {best, static_cast<double>(bestRow)};
}

struct Totals
{
    double sum = 0.0;
    qsizetype count = 0;
};

// Sum and number of the present cells; the running values stay in locals per chunk, since
// captured by reference they could alias the cells and would be reloaded for every cell.
Totals SumAndCount(Matrix& matrix)
{
    Totals totals;
    ForEachValueChunk(matrix, [&](const double* cells, qsizetype, qsizetype n) {
        double chunkSum = 0.0;
        qsizetype chunkCount = 0;
        for (qsizetype i = 0; i < n; ++i) {
            const double v = cells[i];
            if (v != Missing) {
                chunkSum += v;
                ++chunkCount;
            }
        }
        totals.sum += chunkSum;
        totals.count += chunkCount;
    });
    return totals;
}

double FromTotals(Function function, const Totals& totals)
{
    if (function == Function::Count)
        return static_cast<double>(totals.count);
    if (function == Function::Sum)
        return Finite(totals.sum);
    return totals.count == 0 ? Missing : Finite(totals.sum / static_cast<double>(totals.count));
}

bool UsesTotals(Function function)
{
    return function == Function::Mean || function == Function::Sum || function == Function::Count;
}

double Extreme(Function function, Matrix& matrix)
{
    switch (function) {
    case Function::Max:
        return Extreme<std::greater<>>(matrix).value;
    case Function::Min:
        return Extreme<std::less<>>(matrix).value;
    case Function::MaxAt:
        return Extreme<std::greater<>>(matrix).row;
    case Function::MinAt:
        return Extreme<std::less<>>(matrix).row;
    default:
        break;
    }
    return Missing;
}

double AggregateScalar(Function function, double value)
{
    const bool missing = value == Missing;
    switch (function) {
    case Function::Max:
    case Function::Min:
    case Function::Mean:
        return value;
    case Function::MaxAt:
    case Function::MinAt:
        return missing ? Missing : 0.0;
    case Function::Sum:
        return missing ? 0.0 : value;
    case Function::Count:
        return missing ? 0.0 : 1.0;
    case Function::Cols:
        break;
    }
    return Missing;
}

QString ShapeText(const Value& value)
{
    if (value.IsScalar())
        return QStringLiteral("1x1");
    return QStringLiteral("%1x%2").arg(value.matrix->Rows()).arg(value.matrix->Columns());
}

class Binder
{
public:
    Binder(const MatrixVariables& variables, const MatrixBlock* target) : m_variables(variables), m_target(target) {}

    // Whether the expression reads the block that receives the result.
    bool ReadsTarget() const { return m_readsTarget; }

    Value Bind(const Node& node)
    {
        switch (node.kind) {
        case Node::Kind::Number:
            return Scalar(node.number);
        case Node::Kind::Variable:
            return Variable(node);
        case Node::Kind::Negate: {
            // -x is 0 - x: one element-wise path for every operator.
            Value operand = Bind(*node.children.front());
            if (operand.IsScalar())
                return Scalar(Apply(BinaryOp::Subtract, 0.0, operand.scalar));
            return Value{0.0, std::make_unique<ScalarBinaryMatrix>(BinaryOp::Subtract, std::move(operand.matrix), 0.0, true)};
        }
        case Node::Kind::Binary:
            return Binary(node, Bind(*node.children[0]), Bind(*node.children[1]));
        case Node::Kind::Call:
            return Call(node);
        }
        return Scalar(Missing);
    }

private:
    static Value Scalar(double value) { return Value{value, nullptr}; }

    // A 1x1 matrix is a scalar from here on.
    static Value FromMatrix(std::unique_ptr<Matrix> matrix)
    {
        if (matrix->Rows() == 1 && matrix->Columns() == 1)
            return Scalar(matrix->Fetch(0, 0, 1)[0]);
        return Value{0.0, std::move(matrix)};
    }

    Value Variable(const Node& node)
    {
        const MatrixBlockPtr block = m_variables.Find(node.name);
        if (!block)
            throw ScriptError(Status::UnknownName, node.position,
                              QStringLiteral("unknown variable \"%1\"").arg(node.name));
        m_readsTarget = m_readsTarget || block.get() == m_target;
        return FromMatrix(std::make_unique<BlockMatrix>(*block));
    }

    static Value Binary(const Node& node, Value left, Value right)
    {
        if (left.IsScalar() && right.IsScalar())
            return Scalar(Apply(node.op, left.scalar, right.scalar));
        if (left.IsScalar())
            return Value{0.0, std::make_unique<ScalarBinaryMatrix>(node.op, std::move(right.matrix), left.scalar, true)};
        if (right.IsScalar())
            return Value{0.0, std::make_unique<ScalarBinaryMatrix>(node.op, std::move(left.matrix), right.scalar, false)};
        const Matrix& a = *left.matrix;
        const Matrix& b = *right.matrix;
        if (a.Rows() != b.Rows() || a.Columns() != b.Columns() || a.Timed() != b.Timed())
            throw ScriptError(Status::Shape, node.position,
                              QStringLiteral("the shapes %1 and %2 do not fit together for \"%3\"")
                                  .arg(ShapeText(left), ShapeText(right), QLatin1String(OperatorText(node.op))));
        return Value{0.0, std::make_unique<BinaryMatrix>(node.op, std::move(left.matrix), std::move(right.matrix))};
    }

    Value Call(const Node& node)
    {
        // The variance script takes the mean and the count of the same column: one pass
        // serves both.
        const bool totals = UsesTotals(node.function);
        if (totals) {
            if (const auto known = m_totals.constFind(node.argumentText); known != m_totals.cend())
                return Scalar(FromTotals(node.function, *known));
        }
        Value argument = Bind(*node.children.front());
        if (node.function == Function::Cols)
            return Columns(node, std::move(argument));
        if (argument.IsScalar())
            return Scalar(AggregateScalar(node.function, argument.scalar));
        if (!totals)
            return Scalar(Extreme(node.function, *argument.matrix));
        const Totals result = SumAndCount(*argument.matrix);
        m_totals.insert(node.argumentText, result);
        return Scalar(FromTotals(node.function, result));
    }

    Value Columns(const Node& node, Value source)
    {
        const qsizetype columns = source.IsScalar() ? 1 : source.matrix->Columns();
        const qsizetype first = ColumnArgument(*node.children[1], columns);
        const qsizetype last = ColumnArgument(*node.children[2], columns);
        if (first > last)
            throw ScriptError(Status::Shape, node.position,
                              QStringLiteral("cols: the first column %1 lies behind the last column %2")
                                  .arg(first)
                                  .arg(last));
        if (source.IsScalar())
            return source;
        return FromMatrix(std::make_unique<ColumnsMatrix>(std::move(source.matrix), first, last));
    }

    qsizetype ColumnArgument(const Node& node, qsizetype columns)
    {
        const Value value = Bind(node);
        if (!value.IsScalar() || value.scalar != std::floor(value.scalar) || value.scalar < 0
            || value.scalar >= static_cast<double>(columns))
            throw ScriptError(Status::Shape, node.position,
                              QStringLiteral("cols: a column must be a whole number from 0 to %1").arg(columns - 1));
        return static_cast<qsizetype>(value.scalar);
    }

    const MatrixVariables& m_variables;
    const MatrixBlock* m_target;
    bool m_readsTarget = false;
    QHash<QString, Totals> m_totals; // by the argument as written
};

} // namespace

void Evaluate(const Program& program, MatrixVariables& variables)
{
    MatrixBlockPtr target = variables.Find(program.target);
    Binder binder(variables, target.get());
    Value value = binder.Bind(*program.expression);
    if (!target) {
        target = MatrixBlock::Create(0, 0, program.target);
        variables.Add(target, program.target);
    }
    target->SetNoValue(Missing);
    if (value.IsScalar()) {
        target->SetArray(1, 1, {value.scalar});
        return;
    }

    Matrix& matrix = *value.matrix;
    const qsizetype rows = matrix.Rows();
    const qsizetype columns = matrix.Columns();
    // The result goes straight into the target's cells, reusing their memory, unless the
    // script reads the target itself; then it is built aside and swapped in at the end.
    std::vector<double> aside;
    double* cells = nullptr;
    const auto count = static_cast<size_t>(rows * columns);
    if (binder.ReadsTarget()) {
        aside = FreshMemory::Zeros<std::vector<double>>(count);
        cells = aside.data();
    } else {
        // A target that grows gets fresh memory rather than a copy of its old cells.
        if (static_cast<size_t>(target->Rows() * target->Columns()) < count)
            target->SetArray(rows, columns, FreshMemory::Zeros<std::vector<double>>(count));
        target->Reshape(rows, columns);
        cells = columns > 0 && rows > 0 ? target->Column(0).data() : nullptr;
    }
    for (qsizetype column = 0; column < columns; ++column)
        for (qsizetype row = 0; row < rows; row += ChunkRows) {
            const qsizetype count = std::min(ChunkRows, rows - row);
            std::copy_n(matrix.Fetch(column, row, count), count, cells + column * rows + row);
        }
    if (binder.ReadsTarget())
        target->SetArray(rows, columns, std::move(aside));
}

} // namespace SORANO_EVALUATOR_NAMESPACE

#ifndef SORANO_EVALUATOR_AVX2
#ifdef SORANO_HAVE_AVX2_EVALUATOR
namespace Avx2 {
void Evaluate(const Program& program, MatrixVariables& variables);
}
#endif

void Evaluate(const Program& program, MatrixVariables& variables)
{
#ifdef SORANO_HAVE_AVX2_EVALUATOR
    static const bool avx2 = __builtin_cpu_supports("avx2");
    if (avx2)
        return Avx2::Evaluate(program, variables);
#endif
    Baseline::Evaluate(program, variables);
}
#endif

} // namespace MatrixScript
