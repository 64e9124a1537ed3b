// SPDX-License-Identifier: GPL-3.0-or-later
// One line of a view: the sum of its channels on the common time grid, with its statistics,
// cursors and look, and how it keeps the chart, the table and the statistic tree in step.
#pragma once

#include "ChartAdapter.h"
#include "Cursor.h"
#include "DataMatrix.h"
#include "SeriesProperties.h"
#include "Statistic.h"

#include <QPointer>
#include <QString>
#include <QTreeWidget>

#include <functional>
#include <memory>
#include <vector>

class ChartAnnotations;
class CurveGrid;
class TimeValueTransformator;

struct CurveChannel
{
    QString key; ///< channel tag: module address, "$", channel id
    DataMatrixPtr matrix;
};

class Curve
{
public:
    // Statuses of the view updates.
    static constexpr qint32 NoView = -1;
    // Highest cursor node the statistic tree keeps.
    static constexpr int MaxCursorNodes = 10;

    Curve();
    ~Curve();
    Curve(const Curve&) = delete;
    Curve& operator=(const Curve&) = delete;

    // True keeps the curve on its requested axis when the axis titles are shared out.
    void SetFixedAxis(bool fixed) { m_bFixedAxis = fixed; }
    const QString& ID() const { return m_sID; }
    void SetID(const QString& id) { m_sID = id; }
    const QString& Name() const { return m_sName; }
    void SetName(const QString& name) { m_sName = name; }
    const QString& Unit() const { return m_sUnit; }
    void SetUnit(const QString& unit); // also the unit of every cursor
    bool Visible() const { return m_bVisible; }
    void SetVisible(bool visible) { m_bVisible = visible; }
    // Index of the series in the chart; -1 before the curve is in a chart.
    qint32 SeriesID() const { return m_lSeriesID; }
    void SetSeriesID(qint32 id);
    SeriesProperties& Properties() { return m_cSeriesProperties; }
    const SeriesProperties& Properties() const { return m_cSeriesProperties; }
    void SetProperties(const SeriesProperties& properties) { m_cSeriesProperties = properties; }
    // The Y axis of the series, or the requested one before the chart exists. Only 0 and 1
    // are taken; with a chart the unit moves along to the new axis title.
    qint16 YAxis() const;
    void SetYAxis(qint16 axis);

    const std::vector<CurveChannel>& Channels() const { return m_cChannels; }
    DataMatrixPtr Channel(const QString& key) const;
    const std::vector<std::unique_ptr<Statistic>>& Statistics() const { return m_cStatistics; }
    Statistic* FindStatistic(const QString& id) const;
    // Nothing until UpdateData succeeded, and again after a failed one.
    const DataMatrixPtr& Result() const { return m_cResult; }
    const std::vector<std::unique_ptr<Cursor>>& Cursors() const { return m_cCursors; }

    void AddMatrix(const DataMatrixPtr& matrix);
    void RemoveMatrix(const QString& key);
    void RemoveAll();
    // Shows the curve's property dialog; true when the user confirmed it.
    bool EditProperties();
    static void SetEditPropertiesHandler(std::function<bool(Curve&)> handler);

    // Puts the channels (fresh blocks from their modules) on the transformator's grid, sums
    // them into Result and recomputes the statistics. Returns 0 or the script's status.
    qint32 UpdateData(double dateFrom, double dateTo, TimeValueTransformator& transformator);
    // Makes the values of Result stamped before from, or at to and later, gaps: the statistics
    // and the chart then show only what lies inside. The number of values taken out.
    qsizetype BlankOutside(double from, double to);

    // Writes the curve into the chart: values when they changed, look, constant lines of the
    // statistics and the cursors. The chart is remembered at the first call.
    qint32 UpdateChart(ChartAdapter* chart, bool fitRange);
    // Shows Result as a column of the table, under the curve's ID.
    qint32 UpdateGrid(CurveGrid* grid);
    // Rewrites the curve's node, statistic nodes and cursor nodes of the tree.
    qint32 UpdateStatistic(QTreeWidget* tree = nullptr);
    // Takes the curve out of the tree and the table; the chart series stays.
    void RemoveFromView();
    // Re-reads the statistic formats from the settings under their display names.
    void UpdateStatisticFormats();

    // The check box of a tree node was clicked; false when that node cannot be checked.
    bool EnableElement(const QString& key, bool enabled);
    // Places a cursor on a row of Result: reuses the one standing there, else creates the first
    // two, else moves the nearer one (number 0), the first (1) or the second (any other).
    Cursor* SetCursor(qint32 row, ChartAdapter* chart, ChartAnnotations* annotations, qint16 number);
    // Places cursor 1 at a position that is no sample.
    void SetFreeCursor(double x, double y, ChartAnnotations* annotations);
    // Removes cursor number (from 1), or all with -1.
    void RemoveCursor(qint32 number);

    // Tree keys: the curve's own for nothing, else the statistic's.
    QString GetStatisticKey(const Statistic* statistic) const;
    // The statistic (or cursor statistic) a tree key names; nothing for any other key.
    Statistic* GetStatisticFromKey(const QString& key) const;

    ChartAdapter* Chart() const { return m_cChart; }
    QTreeWidget* Tree() const { return m_cTree; }
    CurveGrid* Grid() const { return m_cGrid; }

    // Computes a statistic on the current result when it hasn't been since the data changed.
    void RefreshStatistic(Statistic& statistic);

private:
    int DistributeAxisTitle();
    void RetagCursors();
    Cursor* NewCursor(ChartAdapter* chart, ChartAnnotations* annotations);
    QTreeWidgetItem* CurveNode();
    void UpdateCursorNodes(QTreeWidgetItem* curveNode, bool checkAll);
    QString CursorCaption(int position) const;

    QString m_sID;
    QString m_sName;
    QString m_sUnit;
    bool m_bVisible = false;
    qint32 m_lSeriesID = -1;
    qint16 m_iRequestedAxis = -1;
    std::vector<CurveChannel> m_cChannels;
    DataMatrixPtr m_cResult;
    std::vector<std::unique_ptr<Statistic>> m_cStatistics;
    bool m_bChartDirty = false;
    std::vector<std::unique_ptr<Cursor>> m_cCursors;
    SeriesProperties m_cSeriesProperties;
    QPointer<ChartAdapter> m_cChart;
    CurveGrid* m_cGrid = nullptr; // not owned; the view outlives its curves
    QPointer<QTreeWidget> m_cTree;
    bool m_bFixedAxis = false;
};
