// SPDX-License-Identifier: GPL-3.0-or-later
// The table view of a measuring: one row per time step, the time at the left, one column per
// curve. It also produces the data for the clipboard and the CSV export.
#pragma once

#include "CurveGrid.h"

#include <QWidget>

#include <vector>

class DynamicGridModel;
class QScrollBar;
class QTableView;

class ctl_DynamicGrid : public QWidget, public CurveGrid
{
    Q_OBJECT
public:
    explicit ctl_DynamicGrid(QWidget* parent = nullptr);
    ~ctl_DynamicGrid() override;

    // Whether changes to the matrix list show at once; otherwise they wait for Update.
    bool AutoUpdate() const { return m_bAutoUpdate; }
    void SetAutoUpdate(bool autoUpdate) { m_bAutoUpdate = autoUpdate; }

    // First data row on the screen, from 0.
    qint32 FirstRow() const;
    // Matrices scrolled off to the left, behind the time column.
    qint32 FirstColumn() const;

    // Formats of the time column and of the values; a change shows at the next fill.
    QString DateFormat() const { return m_sDateFormat; }
    void SetDateFormat(const QString& format) { m_sDateFormat = format; }
    QString ValueFormat() const { return m_sValueFormat; }
    void SetValueFormat(const QString& format) { m_sValueFormat = format; }

    // Appends the matrix as the last column; a key already shown gives up its column.
    // A matrix without rows is ignored. The first matrix decides the rows and the times.
    void AddMatrix(const DataMatrixPtr& matrix, const QString& key) override;
    void RemoveMatrix(const QString& key) override;
    // Empties the list; the cells stay on the screen until matrices arrive again.
    void Clear();
    void Update() override { Update(false); }
    // Shows the matrix list; without force only when the number of rows or columns changed.
    void Update(bool force);

    // All: the whole data as text. Otherwise the selected cells, tab-separated; a selection
    // made in the header row copies the whole screen, header included.
    void CopyToClipboard(bool all);
    QString DataText() const;
    // CSV of all matrices, saved through SafeSave: 0 when written, -1 for an empty name, -2
    // when writing failed (the reason goes to the log).
    qint32 Export(const QString& fileName);

    QTableView* View() const;
    DynamicGridModel* Model() const { return m_model; }
    // The bar that moves the rows; the table's own vertical bar stays off.
    QScrollBar* VScroll() const { return m_vScroll; }
    // Scrolls so that the data row is the first on the screen, or as far as the data allows.
    void ScrollToRow(qint32 row);
    // Rows the screen holds at present.
    qint32 VisibleRows() const;

signals:
    // Mouse button released over the table; pos in this control's coordinates.
    void MouseUp(Qt::MouseButton button, Qt::KeyboardModifiers modifiers, const QPoint& pos);

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Entry
    {
        QString key;
        DataMatrixPtr matrix;
    };

    QList<DataMatrixPtr> ListedMatrices() const;
    void Fill();
    void ApplyWidths();
    void GrowTimeColumn();
    void UpdateCapacity();
    void UpdateVScroll();
    void LayoutChildren();
    void LayoutFrozenColumn();
    void HideFrozenDataColumns();
    void OnSectionResized(int logical, int newSize);
    QString SelectionText(bool withHeader) const;

    class GridView;
    GridView* m_grid = nullptr;
    QTableView* m_frozen = nullptr; // the time column, kept in place over the table's left edge
    QScrollBar* m_vScroll = nullptr;
    DynamicGridModel* m_model = nullptr;

    std::vector<Entry> m_entries;
    bool m_bAutoUpdate = true;
    QString m_sDateFormat;
    QString m_sValueFormat;
    int m_lTimeWidth = 0;
    bool m_bFilling = false;
    bool m_bHeaderSelection = false; // the selection was made by a click in the header row
};
