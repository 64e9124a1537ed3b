// SPDX-License-Identifier: GPL-3.0-or-later
// Everything a view file (.sor) holds, as plain values: the view without its data.
#pragma once

#include "GraphProperties.h"
#include "SeriesProperties.h"

#include <QList>
#include <QString>
#include <QStringList>

// The member initialisers are what reading gives for an element that is missing from the
// file. Texts and numbers without such a default keep the initialiser shown here.
struct MeasuringFile
{
    // A customer's address; the file stores Name, FirstName, Street, Place and Memo.
    struct Address
    {
        QString ID;
        QString FirstName;
        QString Name;
        QString Street;
        QString ZIP;
        QString Place;
        QString Phone;
        QString Mobile;
        QString Fax;
        QString EMail;
        QString Homepage;
        QString Memo;

        friend bool operator==(const Address&, const Address&) = default;
    };

    // One statistic shown for a curve; the file only lists the ones in use.
    struct Statistic
    {
        QString id; // kept as text: whether the curve knows it is decided when it is applied
        bool visible = false;

        friend bool operator==(const Statistic&, const Statistic&) = default;
    };

    struct Cursor
    {
        double dateTime = 0; // days since 1899-12-30; reading skips a cursor without a date
        QString customText;
        QString position;
        bool visible = true; // whether the cursor's value box is shown

        friend bool operator==(const Cursor&, const Cursor&) = default;
    };

    struct Curve
    {
        QString name;
        QString unit;
        bool visible = true;
        qint32 yAxis = 0;
        // Channel keys "<module address>$<channel id>". Reading takes only the first channel
        // element, and only when its text is not empty, so that a curve read back has one
        // channel or none.
        QStringList channels;
        SeriesProperties series;
        QList<Statistic> statistics;
        QList<Cursor> cursors;

        friend bool operator==(const Curve& a, const Curve& b)
        {
            return a.name == b.name && a.unit == b.unit && a.visible == b.visible && a.yAxis == b.yAxis
                && a.channels == b.channels && a.series.Color == b.series.Color
                && a.series.LineWidth == b.series.LineWidth && a.series.LineStyle == b.series.LineStyle
                && a.series.Marker == b.series.Marker && a.series.Gallery == b.series.Gallery
                && a.statistics == b.statistics && a.cursors == b.cursors;
        }
    };

    QString name;
    QString remark;
    bool autoScale = true;
    QString intervalUnit;
    qint32 intervalCount = 0;
    bool showStatistics = true;
    qint32 viewMode = 1; // 1 chart, 2 grid
    QString zoomHistory;
    double startDate = 0; // days since 1899-12-30; reading gives the present moment when
    double endDate = 0; // the element is missing or holds no date
    bool annotationVisible = false;
    QString annotationPosition;
    QStringList modules; // module addresses as text, in file order
    GraphProperties graph = BarChart();
    Address address;
    // False when the file has no curves group at all. Writing always writes the group.
    bool hasCurves = false;
    QList<Curve> curves;

    // Every member compared, the chart properties with their fields the file doesn't store.
    friend bool operator==(const MeasuringFile& a, const MeasuringFile& b)
    {
        const GraphProperties& g = a.graph;
        const GraphProperties& h = b.graph;
        return a.name == b.name && a.remark == b.remark && a.autoScale == b.autoScale
            && a.intervalUnit == b.intervalUnit && a.intervalCount == b.intervalCount
            && a.showStatistics == b.showStatistics && a.viewMode == b.viewMode && a.zoomHistory == b.zoomHistory
            && a.startDate == b.startDate && a.endDate == b.endDate && a.annotationVisible == b.annotationVisible
            && a.annotationPosition == b.annotationPosition && a.modules == b.modules && g.View3D == h.View3D
            && g.Legend == h.Legend && g.ShowXGrid == h.ShowXGrid && g.ShowYGrid1 == h.ShowYGrid1
            && g.ShowYGrid2 == h.ShowYGrid2 && g.GridColor1 == h.GridColor1 && g.GridColor2 == h.GridColor2
            && g.Title == h.Title && g.Gallery == h.Gallery && a.address == b.address && a.hasCurves == b.hasCurves
            && a.curves == b.curves;
    }

private:
    // A file without a gallery element shows bars, unlike a new view.
    static GraphProperties BarChart()
    {
        GraphProperties graph;
        graph.Gallery = 2;
        return graph;
    }
};
