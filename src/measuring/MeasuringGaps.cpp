// SPDX-License-Identifier: GPL-3.0-or-later
// Closing the gaps of the chart: points where no series has a value leave it, the points after
// them move down with their X labels. The curves keep their rows, so a refresh brings the gaps
// back.
#include "Measuring.h"

#include "Calendar.h"
#include "ChartAdapter.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

namespace {

// Events run after this many points: often enough to keep the windows painted, seldom enough
// that a million points move in a fraction of a second.
constexpr qsizetype EventInterval = 8192;

} // namespace

bool Measuring::ShowAllRows()
{
    if (!m_cGridTimes)
        return false;
    m_cFirstBlock = std::move(*m_cGridTimes);
    m_cGridTimes.reset();
    // Cursors go back to the rows of their times, as a refresh puts them.
    if (m_cFirstBlock && m_cFirstBlock->Columns() >= 1) {
        const std::span<const double> rows = m_cFirstBlock->Column(0);
        const auto earlier = [](double a, double b) { return Calendar::WholeSeconds(a) < Calendar::WholeSeconds(b); };
        for (const auto& curve : m_cCurves)
            for (const auto& cursor : curve->Cursors()) {
                const auto found = std::lower_bound(rows.begin(), rows.end(), cursor->DateTime(), earlier);
                const bool on = found != rows.end() && !earlier(cursor->DateTime(), *found);
                cursor->SetIndex(on ? static_cast<qint32>(found - rows.begin()) : -1);
            }
    }
    return true;
}

void Measuring::RemoveGaps()
{
    ChartAdapter* chart = Chart();
    if (!chart)
        return;
    RunAsRefresh([this, chart] {
        const int series = chart->SeriesCount();
        const qsizetype points = chart->PointCount();
        chart->OpenData(series, points);

        // The times the X labels show, made at the first gap: those of the first channel's rows,
        // or the window's share when there are none. A time is NaN where a point has left.
        MatrixBlockPtr times;
        const auto takeLabels = [&] {
            times = MatrixBlock::Create(points, 1);
            const bool fromRows = m_cFirstBlock && m_cFirstBlock->Columns() >= 1;
            for (qsizetype i = 0; i < points; ++i)
                times->At(i, 0) = !fromRows     ? DateOfPoint(double(i + 1))
                    : i < m_cFirstBlock->Rows() ? m_cFirstBlock->At(i, 0)
                                                : std::numeric_limits<double>::quiet_NaN();
            if (!m_cGridTimes)
                m_cGridTimes = m_cFirstBlock;
            m_cFirstBlock = times;
        };

        std::vector<qsizetype> gapPoints;
        for (qsizetype i = 0; i < points; ++i) {
            bool hasValue = false;
            for (int s = 0; s < series && !hasValue; ++s)
                hasValue = chart->Value(s, i) < ChartAdapter::HiddenPoint;
            if (!hasValue) {
                if (!times)
                    takeLabels();
                gapPoints.push_back(i);
            } else if (!gapPoints.empty()) {
                const qsizetype to = i - qsizetype(gapPoints.size());
                for (int s = 0; s < series; ++s) {
                    chart->SetValue(s, to, chart->Value(s, i));
                    chart->SetValue(s, i, ChartAdapter::HiddenPoint);
                }
                times->At(to, 0) = times->At(i, 0);
                times->At(i, 0) = std::numeric_limits<double>::quiet_NaN();
            }
            if ((i + 1) % EventInterval == 0)
                QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        }

        const auto gaps = qsizetype(gapPoints.size());
        if (gaps > 0) {
            const qsizetype remaining = points - gaps;
            chart->OpenData(series, remaining);
            times->SetRows(remaining);
            chart->SetAxisRange(ChartAxis::X, 0.5, std::max<double>(1.0, double(remaining)) + 0.5);
            // A cursor stays on its point; one on a point that left is put aside.
            for (const auto& curve : m_cCurves)
                for (const auto& cursor : curve->Cursors()) {
                    const qsizetype row = cursor->Index();
                    if (row < 0)
                        continue;
                    const auto before = std::lower_bound(gapPoints.begin(), gapPoints.end(), row);
                    if (before != gapPoints.end() && *before == row) {
                        cursor->SetIndex(-1);
                        cursor->Hide();
                    } else {
                        cursor->SetIndex(static_cast<qint32>(row - (before - gapPoints.begin())));
                    }
                }
            RedrawCursors();
            // The chart no longer shows what the curves hold: their next update writes it anew.
            for (const auto& curve : m_cCurves)
                if (curve->SeriesID() >= 0)
                    curve->SetSeriesID(curve->SeriesID());
        }
        chart->CloseData();
    });
}
