// SPDX-License-Identifier: GPL-3.0-or-later
#include "MatrixBlock.h"

#include <algorithm>
#include <string>

MatrixBlock::MatrixBlock(qsizetype rows, qsizetype columns, const QString& name) : m_sName(name)
{
    Resize(rows, columns);
}

MatrixBlockPtr MatrixBlock::Create(qsizetype rows, qsizetype columns, const QString& name)
{
    return std::make_shared<MatrixBlock>(rows, columns, name);
}

void MatrixBlock::SetRows(qsizetype rows)
{
    Resize(rows, m_lColumns);
}

void MatrixBlock::SetColumns(qsizetype columns)
{
    Resize(m_lRows, columns);
}

void MatrixBlock::Resize(qsizetype rows, qsizetype columns)
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

void MatrixBlock::Reshape(qsizetype rows, qsizetype columns)
{
    rows = std::max<qsizetype>(rows, 0);
    columns = std::max<qsizetype>(columns, 0);
    m_cells.resize(static_cast<size_t>(rows * columns));
    m_lRows = rows;
    m_lColumns = columns;
}

double MatrixBlock::Item(qsizetype row, qsizetype column) const
{
    if (row < 0 || row >= m_lRows || column < 0 || column >= m_lColumns)
        throw MatrixRangeError("cell (" + std::to_string(row) + ", " + std::to_string(column)
                               + ") outside a block of " + std::to_string(m_lRows) + " x "
                               + std::to_string(m_lColumns));
    return At(row, column);
}

void MatrixBlock::SetItem(qsizetype row, qsizetype column, double value)
{
    (void)Item(row, column);
    At(row, column) = value;
}

void MatrixBlock::CheckColumn(qsizetype column) const
{
    if (column < 0 || column >= m_lColumns)
        throw MatrixRangeError("column " + std::to_string(column) + " outside a block of "
                               + std::to_string(m_lColumns) + " columns");
}

std::span<const double> MatrixBlock::Column(qsizetype column) const
{
    CheckColumn(column);
    return {m_cells.data() + column * m_lRows, static_cast<size_t>(m_lRows)};
}

std::span<double> MatrixBlock::Column(qsizetype column)
{
    CheckColumn(column);
    return {m_cells.data() + column * m_lRows, static_cast<size_t>(m_lRows)};
}

void MatrixBlock::SetArray(qsizetype rows, qsizetype columns, std::vector<double> columnMajorCells)
{
    if (rows < 0 || columns < 0 || static_cast<qsizetype>(columnMajorCells.size()) != rows * columns)
        throw std::invalid_argument("cell count does not match the shape of the block");
    m_cells = std::move(columnMajorCells);
    m_lRows = rows;
    m_lColumns = columns;
}

std::vector<std::vector<double>> MatrixBlock::ToRowArray() const
{
    std::vector<std::vector<double>> rows(static_cast<size_t>(m_lRows), std::vector<double>(m_lColumns));
    for (qsizetype c = 0; c < m_lColumns; ++c)
        for (qsizetype r = 0; r < m_lRows; ++r)
            rows[r][c] = At(r, c);
    return rows;
}

void MatrixBlock::FromRowArray(const std::vector<std::vector<double>>& rows)
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

MatrixBlockPtr MatrixBlock::Clone() const
{
    return std::make_shared<MatrixBlock>(*this);
}
