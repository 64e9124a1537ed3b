// SPDX-License-Identifier: GPL-3.0-or-later
// A named rectangle of doubles: column 0 the time as a date, column 1 the values.
#pragma once

#include <QString>

#include <memory>
#include <span>
#include <stdexcept>
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
