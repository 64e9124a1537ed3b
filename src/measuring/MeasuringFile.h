// SPDX-License-Identifier: GPL-3.0-or-later
// Everything a view file (.sor) holds, as plain values: the view without its data.
#pragma once

#include "GraphProperties.h"
#include "SeriesProperties.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

// Reading starts from the values of the view that is being filled: an element that is
// missing and has no reading default keeps that value, and a missing group keeps all of its
// own. A missing element with a reading default (a Boolean, a date) takes that default when
// its group is there.
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

    // How a curve looks. Colour and width have no reading default: a file without them keeps
    // what the new curve was given (its palette colour).
    struct Series
    {
        qint32 gallery = 0;
        std::optional<qint32> color;
        std::optional<qint32> lineWidth;
        qint32 lineStyle = 0;
        bool marker = false;

        friend bool operator==(const Series&, const Series&) = default;
    };

    // Without a value the curve keeps what it was made with from its channel.
    struct Curve
    {
        std::optional<QString> name;
        std::optional<QString> unit;
        bool visible = true;
        std::optional<qint32> yAxis;
        // Channel keys "<module address>$<channel id>", in file order; a curve of several
        // channels is their sum. Empty channel elements are not read.
        QStringList channels;
        std::optional<Series> series; ///< nothing when the file has no series group
        QList<Statistic> statistics;
        QList<Cursor> cursors;

        friend bool operator==(const Curve&, const Curve&) = default;
    };

    // A value that was in the file but could not be read, and was replaced by its default.
    struct Unreadable
    {
        QString element;
        QString text;

        friend bool operator==(const Unreadable&, const Unreadable&) = default;
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
    GraphProperties graph;
    Address address;
    // False when the file has no curves group at all. Writing always writes the group.
    bool hasCurves = false;
    QList<Curve> curves;
    // Filled by reading: start and end dates that are no dates, a resolution unit that isn't
    // one. Not written.
    QList<Unreadable> unreadable;

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
};
