// SPDX-License-Identifier: GPL-3.0-or-later
#include "DynamicGridModel.h"

#include "Numeric.h"
#include "ResStrings.h"

#include <QIODevice>

#include <algorithm>
#include <limits>
#include <optional>

namespace {

constexpr qsizetype MaxRows = std::numeric_limits<qint32>::max();
constexpr qsizetype CsvChunk = 1 << 20;

qint32 RowsOf(const DataMatrixPtr& matrix)
{
    const MatrixBlockPtr& block = matrix ? matrix->DataBlock() : MatrixBlockPtr();
    return block ? static_cast<qint32>(std::min(block->Rows(), MaxRows)) : 0;
}

// The value of a data row, nothing when the block has no such row.
std::optional<double> RawValue(const DataMatrix& matrix, qsizetype row)
{
    const MatrixBlockPtr& block = matrix.DataBlock();
    if (!block || row >= block->Rows() || block->Columns() < 2)
        return std::nullopt;
    return block->At(row, 1);
}

} // namespace

DynamicGridModel::DynamicGridModel(QObject* parent)
    : QAbstractTableModel(parent)
    , m_sValueFormat(QStringLiteral("#,##0.00"))
    , m_sMissing(GetResString(369))
{
    m_headerFont.setBold(true);
}

int DynamicGridModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : WindowRows();
}

int DynamicGridModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() || m_matrices.isEmpty() ? 0 : static_cast<int>(m_matrices.size()) + 1;
}

QVariant DynamicGridModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    switch (role) {
    case Qt::DisplayRole: {
        const qint32 row = m_lFirstRow + index.row();
        return index.column() == 0 ? TimeText(row) : ValueText(row, index.column() - 1);
    }
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(Qt::AlignVCenter | (index.column() == 0 ? Qt::AlignLeft : Qt::AlignRight));
    default:
        return {};
    }
}

QVariant DynamicGridModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section > m_matrices.size())
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return section == 0 ? QString() : HeaderText(*m_matrices[section - 1]);
    case Qt::FontRole:
        return m_headerFont;
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(Qt::AlignVCenter | (section == 0 ? Qt::AlignLeft : Qt::AlignRight));
    default:
        return {};
    }
}

void DynamicGridModel::SetMatrices(const QList<DataMatrixPtr>& matrices)
{
    m_sMissing = GetResString(369); // the language may have changed since the last fill
    const qint32 rows = matrices.isEmpty() ? 0 : RowsOf(matrices.front());
    if (matrices == m_matrices && rows == m_lDataRows) {
        if (const int columns = columnCount(); columns > 0) {
            if (WindowRows() > 0)
                emit dataChanged(index(0, 0), index(WindowRows() - 1, columns - 1));
            emit headerDataChanged(Qt::Horizontal, 0, columns - 1);
        }
        return;
    }
    beginResetModel();
    m_matrices = matrices;
    m_lDataRows = rows;
    ClampFirstRow();
    endResetModel();
}

void DynamicGridModel::SetCapacity(qint32 rows)
{
    rows = std::max(rows, 1);
    if (rows == m_lCapacity)
        return;
    const qint32 before = WindowRows();
    const qint32 after = std::min(rows, m_lDataRows);
    if (after > before) {
        beginInsertRows(QModelIndex(), before, after - 1);
        m_lCapacity = rows;
        endInsertRows();
    } else if (after < before) {
        beginRemoveRows(QModelIndex(), after, before - 1);
        m_lCapacity = rows;
        endRemoveRows();
    } else {
        m_lCapacity = rows;
    }
    // A taller window at the end of the data starts further up.
    const qint32 first = m_lFirstRow;
    ClampFirstRow();
    if (first != m_lFirstRow && after > 0 && columnCount() > 0)
        emit dataChanged(index(0, 0), index(after - 1, columnCount() - 1));
}

void DynamicGridModel::SetFirstRow(qint32 row)
{
    const qint32 first = m_lFirstRow;
    m_lFirstRow = row;
    ClampFirstRow();
    if (first != m_lFirstRow && WindowRows() > 0 && columnCount() > 0)
        emit dataChanged(index(0, 0), index(WindowRows() - 1, columnCount() - 1), { Qt::DisplayRole });
}

void DynamicGridModel::ClampFirstRow()
{
    m_lFirstRow = std::clamp(m_lFirstRow, 0, std::max(MaxFirstRow(), 0));
}

void DynamicGridModel::SetFormats(const QString& dateFormat, const QString& valueFormat)
{
    m_sDateFormat = dateFormat;
    m_sValueFormat = valueFormat;
}

QString DynamicGridModel::TimeText(qint32 row) const
{
    if (m_matrices.isEmpty())
        return {};
    const MatrixBlockPtr& block = m_matrices.front()->DataBlock();
    if (!block || row < 0 || row >= block->Rows() || block->Columns() < 1)
        return {};
    return m_format.FormatDate(block->At(row, 0), m_sDateFormat);
}

QString DynamicGridModel::ValueText(qint32 row, qsizetype column) const
{
    if (column < 0 || column >= m_matrices.size() || row < 0)
        return {};
    const DataMatrix& matrix = *m_matrices[column];
    const std::optional<double> value = RawValue(matrix, row);
    if (!value || *value == matrix.DataBlock()->NoValue())
        return m_sMissing;
    // Cos phi is stored folded so that it sorts and sums; the grid shows the reading.
    const double shown = matrix.DataType() == DataMatrix::CosPhiType ? FoldCosPhi(*value) : *value;
    return m_format.FormatNumber(shown, m_sValueFormat);
}

QString DynamicGridModel::HeaderText(const DataMatrix& matrix)
{
    return matrix.Unit().isEmpty() ? matrix.ChannelName()
                                   : matrix.ChannelName() + QStringLiteral(" (") + matrix.Unit() + u')';
}

QString DynamicGridModel::DataText(
    const QList<DataMatrixPtr>& matrices, const QString& dateFormat, const QString& valueFormat) const
{
    if (matrices.isEmpty())
        return {};
    const MatrixBlockPtr first = matrices.front()->DataBlock();
    const qsizetype rows = first ? first->Rows() : 0;

    // The first line stays empty; the header line has no cell for the time column and
    // always shows the unit's brackets, so its titles sit one cell left of their values.
    QString text = QStringLiteral("\r\n");
    for (const DataMatrixPtr& matrix : matrices)
        text += matrix->ChannelName() + QStringLiteral(" (") + matrix->Unit() + QStringLiteral(")\t");
    text += QStringLiteral("\r\n");
    // Room for a usual measuring at once; a very long one grows the text as it goes.
    constexpr qsizetype MaxReserve = qsizetype(1) << 26;
    text.reserve(text.size() + std::min(rows * (24 + 16 * matrices.size()), MaxReserve));

    for (qsizetype row = 0; row < rows; ++row) {
        text += m_format.FormatDate(first->At(row, 0), dateFormat);
        text += u'\t';
        // A line ends at its first missing value; a row beyond a shorter matrix counts as one.
        // Values are the stored ones, cos phi unfolded.
        for (const DataMatrixPtr& matrix : matrices) {
            const std::optional<double> value = RawValue(*matrix, row);
            if (!value || *value == first->NoValue())
                break;
            text += m_format.FormatNumber(*value, valueFormat);
            text += u'\t';
        }
        text += QStringLiteral("\r\n");
    }
    return text;
}

bool DynamicGridModel::WriteCsv(QIODevice& device, const QList<DataMatrixPtr>& matrices) const
{
    QString line = QStringLiteral("\"Zeitstempel\"");
    for (const DataMatrixPtr& matrix : matrices)
        line += QStringLiteral(",\"") + HeaderText(*matrix) + u'"';
    line += QStringLiteral("\r\n");
    QByteArray buffer = line.toUtf8();

    const MatrixBlockPtr first = matrices.isEmpty() ? MatrixBlockPtr() : matrices.front()->DataBlock();
    const qsizetype rows = first ? first->Rows() : 0;
    const QString decimalPoint = m_format.Locale().decimalPoint();
    // Raw values in their shortest exact form, whatever the locale: a missing value is
    // written as its number, a row beyond a shorter matrix as an empty field.
    for (qsizetype row = 0; row < rows; ++row) {
        line = m_format.FormatDate(first->At(row, 0), u"yyyy-mm-dd hh:mm:ss");
        for (const DataMatrixPtr& matrix : matrices) {
            line += u',';
            if (const std::optional<double> value = RawValue(*matrix, row))
                line += m_format.GeneralNumber(*value).replace(decimalPoint, QStringLiteral("."));
        }
        line += QStringLiteral("\r\n");
        buffer += line.toUtf8();
        if (buffer.size() >= CsvChunk) {
            if (device.write(buffer) != buffer.size())
                return false;
            buffer.resize(0);
        }
    }
    return device.write(buffer) == buffer.size();
}
