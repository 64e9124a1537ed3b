// SPDX-License-Identifier: GPL-3.0-or-later
// A named rectangle of doubles: column 0 the time as a date, column 1 the values.
// Header-only, so that a data module builds against the installed headers alone.
#pragma once

#include <QString>

#include <algorithm>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

// Raised by item access out of range; callers trap it or check Rows() first.
class MatrixRangeError : public std::out_of_range
{
public:
    using std::out_of_range::out_of_range;
};

class MatrixBlock;
using MatrixBlockPtr = std::shared_ptr<MatrixBlock>;

// Cells are stored column by column, so that a column (all times, all values) is one
// contiguous span: the grid, the sums and the statistics all walk single columns.
class MatrixBlock
{
public:
    // Stands for a missing sample in blocks that data modules deliver.
    static constexpr double DefaultNoValue = -1e300;

    MatrixBlock() = default;
    MatrixBlock(qsizetype rows, qsizetype columns, const QString& name = QString());

    static MatrixBlockPtr Create(qsizetype rows = 0, qsizetype columns = 0, const QString& name = QString());

    double NoValue() const { return m_dNoValue; }
    void SetNoValue(double value) { m_dNoValue = value; }

    const QString& Name() const { return m_sName; }
    void SetName(const QString& name) { m_sName = name; }

    qsizetype Rows() const { return m_lRows; }
    qsizetype Columns() const { return m_lColumns; }
    // Resizing keeps the cells that remain inside; new cells are 0. Negative sizes count as 0.
    void SetRows(qsizetype rows);
    void SetColumns(qsizetype columns);
    void Resize(qsizetype rows, qsizetype columns);
    // Gives the block a new shape without keeping its cells, reusing their memory; for writers
    // that fill every cell afterwards.
    void Reshape(qsizetype rows, qsizetype columns);

    // Throws MatrixRangeError outside the block.
    double Item(qsizetype row, qsizetype column) const;
    void SetItem(qsizetype row, qsizetype column, double value);

    // Unchecked access for loops that have checked the shape.
    double At(qsizetype row, qsizetype column) const { return m_cells[column * m_lRows + row]; }
    double& At(qsizetype row, qsizetype column) { return m_cells[column * m_lRows + row]; }

    // Bulk access: one column as a contiguous span (throws MatrixRangeError for a bad column).
    std::span<const double> Column(qsizetype column) const;
    std::span<double> Column(qsizetype column);

    // Bulk write: takes the cells column by column (column-major), rows * columns of them.
    // Throws std::invalid_argument when the count does not match.
    void SetArray(qsizetype rows, qsizetype columns, std::vector<double> columnMajorCells);
    // Bulk read and write as rows of cells, the first index being the row.
    std::vector<std::vector<double>> ToRowArray() const;
    void FromRowArray(const std::vector<std::vector<double>>& rows);

    // Independent copy with the same cells, name and NoValue.
    MatrixBlockPtr Clone() const;

private:
    void CheckColumn(qsizetype column) const;

    std::vector<double> m_cells;
    qsizetype m_lRows = 0;
    qsizetype m_lColumns = 0;
    double m_dNoValue = DefaultNoValue;
    QString m_sName;
};

inline MatrixBlock::MatrixBlock(qsizetype rows, qsizetype columns, const QString& name) : m_sName(name)
{
    Resize(rows, columns);
}

inline MatrixBlockPtr MatrixBlock::Create(qsizetype rows, qsizetype columns, const QString& name)
{
    return std::make_shared<MatrixBlock>(rows, columns, name);
}

inline void MatrixBlock::SetRows(qsizetype rows)
{
    Resize(rows, m_lColumns);
}

inline void MatrixBlock::SetColumns(qsizetype columns)
{
    Resize(m_lRows, columns);
}

inline void MatrixBlock::Resize(qsizetype rows, qsizetype columns)
{
    rows = std::max<qsizetype>(rows, 0);
    columns = std::max<qsizetype>(columns, 0);
    if (rows == m_lRows && columns == m_lColumns)
        return;
    if (rows == m_lRows) {
        // Columns are contiguous, so adding or dropping whole columns keeps the others in place.
        m_cells.resize(static_cast<size_t>(rows * columns), 0.0);
    } else {
        std::vector<double> cells(static_cast<size_t>(rows * columns), 0.0);
        const qsizetype keepRows = std::min(rows, m_lRows);
        const qsizetype keepColumns = std::min(columns, m_lColumns);
        for (qsizetype c = 0; c < keepColumns; ++c)
            std::copy_n(m_cells.begin() + c * m_lRows, keepRows, cells.begin() + c * rows);
        m_cells = std::move(cells);
    }
    m_lRows = rows;
    m_lColumns = columns;
}

inline void MatrixBlock::Reshape(qsizetype rows, qsizetype columns)
{
    rows = std::max<qsizetype>(rows, 0);
    columns = std::max<qsizetype>(columns, 0);
    m_cells.resize(static_cast<size_t>(rows * columns));
    m_lRows = rows;
    m_lColumns = columns;
}

inline double MatrixBlock::Item(qsizetype row, qsizetype column) const
{
    if (row < 0 || row >= m_lRows || column < 0 || column >= m_lColumns)
        throw MatrixRangeError("cell (" + std::to_string(row) + ", " + std::to_string(column)
                               + ") outside a block of " + std::to_string(m_lRows) + " x "
                               + std::to_string(m_lColumns));
    return At(row, column);
}

inline void MatrixBlock::SetItem(qsizetype row, qsizetype column, double value)
{
    (void)Item(row, column);
    At(row, column) = value;
}

inline void MatrixBlock::CheckColumn(qsizetype column) const
{
    if (column < 0 || column >= m_lColumns)
        throw MatrixRangeError("column " + std::to_string(column) + " outside a block of "
                               + std::to_string(m_lColumns) + " columns");
}

inline std::span<const double> MatrixBlock::Column(qsizetype column) const
{
    CheckColumn(column);
    return {m_cells.data() + column * m_lRows, static_cast<size_t>(m_lRows)};
}

inline std::span<double> MatrixBlock::Column(qsizetype column)
{
    CheckColumn(column);
    return {m_cells.data() + column * m_lRows, static_cast<size_t>(m_lRows)};
}

inline void MatrixBlock::SetArray(qsizetype rows, qsizetype columns, std::vector<double> columnMajorCells)
{
    if (rows < 0 || columns < 0 || static_cast<qsizetype>(columnMajorCells.size()) != rows * columns)
        throw std::invalid_argument("cell count does not match the shape of the block");
    m_cells = std::move(columnMajorCells);
    m_lRows = rows;
    m_lColumns = columns;
}

inline std::vector<std::vector<double>> MatrixBlock::ToRowArray() const
{
    std::vector<std::vector<double>> rows(static_cast<size_t>(m_lRows), std::vector<double>(m_lColumns));
    for (qsizetype c = 0; c < m_lColumns; ++c)
        for (qsizetype r = 0; r < m_lRows; ++r)
            rows[r][c] = At(r, c);
    return rows;
}

inline void MatrixBlock::FromRowArray(const std::vector<std::vector<double>>& rows)
{
    size_t columns = 0;
    for (const auto& row : rows)
        columns = std::max(columns, row.size());
    // Short rows are filled with 0, as resizing does.
    std::vector<double> cells(rows.size() * columns, 0.0);
    for (size_t r = 0; r < rows.size(); ++r)
        for (size_t c = 0; c < rows[r].size(); ++c)
            cells[c * rows.size() + r] = rows[r][c];
    SetArray(static_cast<qsizetype>(rows.size()), static_cast<qsizetype>(columns), std::move(cells));
}

inline MatrixBlockPtr MatrixBlock::Clone() const
{
    return std::make_shared<MatrixBlock>(*this);
}
