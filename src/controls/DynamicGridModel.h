// SPDX-License-Identifier: GPL-3.0-or-later
// The table behind ctl_DynamicGrid: column 0 the time of the first matrix, one column per
// matrix after it, every cell read from the matrices when the view asks for it.
#pragma once

#include "DataMatrix.h"
#include "Formatter.h"

#include <QAbstractTableModel>
#include <QFont>
#include <QList>

#include <algorithm>

class QIODevice;

// A measuring may hold hundreds of millions of rows, more than an item view can lay out: its
// header keeps a record per row and counts pixels in an int. So the model shows a window of
// rows, as many as fit on the screen, starting at FirstRow; the owner moves the window with
// its own scroll bar. Moving it costs the same for any row count, as nothing is copied.
class DynamicGridModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    explicit DynamicGridModel(QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    // Takes the matrices to show, the first one giving the rows and the times. The same
    // matrices again refresh the cells in place; anything else resets the model.
    void SetMatrices(const QList<DataMatrixPtr>& matrices);
    const QList<DataMatrixPtr>& Matrices() const { return m_matrices; }
    // Rows of the first matrix, limited to what an int counts.
    qint32 DataRows() const { return m_lDataRows; }

    // The window: how many rows fit on the screen, and the data row at its top. The first
    // row is kept so that the window stays within the data.
    void SetCapacity(qint32 rows);
    qint32 Capacity() const { return m_lCapacity; }
    void SetFirstRow(qint32 row);
    qint32 FirstRow() const { return m_lFirstRow; }
    // Last first row that still fills the window.
    qint32 MaxFirstRow() const { return m_lDataRows - WindowRows(); }

    void SetFormats(const QString& dateFormat, const QString& valueFormat);
    void SetHeaderFont(const QFont& font) { m_headerFont = font; }
    const QFont& HeaderFont() const { return m_headerFont; }

    // Texts as the grid shows them, by data row; column is a matrix index from 0.
    QString TimeText(qint32 row) const;
    QString ValueText(qint32 row, qsizetype column) const;
    static QString HeaderText(const DataMatrix& matrix);

    // The whole data as tab-separated text for the clipboard, from the given matrices.
    QString DataText(const QList<DataMatrixPtr>& matrices, const QString& dateFormat, const QString& valueFormat) const;
    // The matrices as CSV: a quoted header line, then per row the time as "yyyy-mm-dd hh:mm:ss"
    // and the raw values in the general form with at most 15 significant digits and "." as the
    // decimal point, lines ended by CR LF; false when writing failed.
    bool WriteCsv(QIODevice& device, const QList<DataMatrixPtr>& matrices) const;

private:
    qint32 WindowRows() const { return std::min(m_lCapacity, m_lDataRows); }
    void ClampFirstRow();

    QList<DataMatrixPtr> m_matrices;
    qint32 m_lDataRows = 0;
    qint32 m_lCapacity = 1;
    qint32 m_lFirstRow = 0;
    QString m_sDateFormat;
    QString m_sValueFormat;
    QString m_sMissing; // shown for a missing value and beyond the end of a shorter matrix
    QFont m_headerFont;
    Formatter m_format; // built once: construction reads the locale
};
