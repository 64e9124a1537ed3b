// SPDX-License-Identifier: GPL-3.0-or-later
// Rules of a view's time window: where a named period starts, which date format suits a
// window, and the text of the zoom history.
#pragma once

#include <QString>

#include <optional>
#include <span>
#include <vector>

namespace ViewPeriods {

// Start of a period of that unit for a window from..windowEnd: minutes, hours and days are
// cut to their start; "m" and "yyyy" are composed with 0 for the missing parts (the last day
// of the month before, 30 November of the year before), which the grid then aligns. Any
// other unit keeps from.
double PeriodStart(const QString& unit, double from, double windowEnd);

// The unit that the seconds per chart point suggest when the view has none ("mm" for about a
// month, which no format table knows); empty when nothing fits or there are no points.
QString UnitFromPoints(double windowSeconds, double pointCount);

// Date format for axis labels (forAxis) or for texts that stand alone, by the window's length
// in whole seconds and the view's grid unit; an empty unit is derived from the point count.
QString DateFormat(bool forAxis, qint64 windowSeconds, const QString& intervalUnit, double pointCount);

// Rows for the ticks of a time axis over the rows first..last of ascending times (dates):
// those at or just after round times (whole minutes, quarter hours, midnights, Mondays, firsts
// of the month, New Years ...), with the finest round step that gives at most `most` ticks.
// When no round time of that step falls within the rows, a finer step gives them, at most
// `most`, evenly picked. Each row comes once; empty when the rows span no time or no step fits.
std::vector<qsizetype> RoundTimeRows(std::span<const double> times, qsizetype first, qsizetype last, int most);

// One earlier window: its dates and the ranges of both Y axes.
struct ZoomEntry
{
    double from = 0;
    double to = 0;
    double y1Min = 0;
    double y1Max = 0;
    double y2Min = 0;
    double y2Max = 0;
    bool hasY2 = false; ///< read: the second axis fields were numeric
};

// The history with the entry pushed on: entries joined by a tab, the newest last, fields by
// "|". An empty history gains a leading tab.
QString PushZoom(const QString& history, const ZoomEntry& entry);
// The newest entry when it is valid: six fields, two dates, two numbers.
std::optional<ZoomEntry> LastZoom(const QString& history);
// The history without its newest entry and its tab; empty when no tab is left.
QString PopZoom(const QString& history);

} // namespace ViewPeriods
