// SPDX-License-Identifier: GPL-3.0-or-later
// The refresh: one fetch per module, the time grid, the curves, axes and cursors.

#include "Measuring.h"

#include "Calendar.h"
#include "ChannelTree.h"
#include "ChartAdapter.h"
#include "ChartAnnotation.h"
#include "CurveColors.h"
#include "Formatter.h"
#include "Logging.h"
#include "MeasuringHost.h"
#include "Numeric.h"
#include "ResStrings.h"
#include "Settings.h"
#include "SoranoFileHandler.h"
#include "TimeValueTransformator.h"
#include "ViewPeriods.h"
#include "ctl_DynamicGrid.h"
#include "ctl_NavBar.h"
#include "ctl_VertNavBar.h"
#include "frm_GraphicView.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QLocale>
#include <QPointer>
#include <QTimer>
#include <QTreeWidget>

#include <algorithm>
#include <cmath>
#include <utility>

// --- refresh

void Measuring::Log(int stringId, const QString& argument)
{
    QString text = GetResString(stringId);
    text.replace(QLatin1Char('@'), argument);
    m_cHost.SendMessage(QStringLiteral("LOG"), text);
}

void Measuring::Refresh(bool fetch)
{
    if (!m_cGraph)
        return;
    if (fetch) {
        RefreshData(StartDate(), EndDate(), nullptr, true);
        if (ViewMode() == frm_GraphicView::GridMode)
            m_cGraph->grid_View()->Update(false);
        return;
    }
    // Removed gaps come back: the curves write all their rows below, the grid's times label them.
    const bool gapsBack = ViewMode() == frm_GraphicView::ChartMode && ShowAllRows();
    m_cGraphProperties.Apply(Chart(), TitleValues { m_cAddress.Name, m_sName, StartDate(), EndDate(), 0 });
    if (ViewMode() == frm_GraphicView::GridMode)
        m_cGraph->grid_View()->SetDateFormat(GetDateFormat(false));
    for (const auto& curve : m_cCurves) {
        if (ViewMode() == frm_GraphicView::ChartMode)
            curve->UpdateChart(Chart(), m_bAutoScale);
        else if (ViewMode() == frm_GraphicView::GridMode)
            curve->UpdateGrid(m_cGraph->grid_View());
        curve->UpdateStatistic(m_cGraph->trv_Statistics());
    }
    if (gapsBack)
        Chart()->SetAxisRange(ChartAxis::X, 0.5, std::max(1.0, PointCount()) + 0.5);
    if (ViewMode() == frm_GraphicView::GridMode)
        m_cGraph->grid_View()->Update(false);
}

void Measuring::ApplyCosPhiAxes(Curve* single)
{
    const auto isCosPhi = [](const Curve& curve) {
        return !curve.Channels().empty() && curve.Channels().front().matrix->DataType() == DataMatrix::CosPhiType;
    };
    if (m_cCurves.size() < 2)
        return;
    const bool any = std::any_of(m_cCurves.begin(), m_cCurves.end(), [&](const auto& c) { return isCosPhi(*c); });
    for (const auto& curve : m_cCurves) {
        curve->SetFixedAxis(any);
        if (any)
            curve->SetYAxis(isCosPhi(*curve) ? 0 : 1);
    }
    if (any) {
        Chart()->SetAxisVisible(ChartAxis::Y2, true);
        if (single) {
            single->SetFixedAxis(true);
            single->SetYAxis(isCosPhi(*single) ? 0 : 1);
        }
    }
}

namespace {

// Views share their channel objects: while one view refreshes, another waits, and refreshes
// once all have ended.
int RunningRefreshes = 0;
std::vector<QPointer<Measuring>> WaitingViews;

} // namespace

// Everything a refresh takes from the user while it runs, given back however it ends.
class Measuring::RefreshScope
{
public:
    explicit RefreshScope(Measuring& measuring)
        : m_cMeasuring(measuring)
        , m_cBar(*measuring.m_cGraph->nav_Navigate())
        , m_cChart(*measuring.m_cGraph->chart_View())
    {
        measuring.m_bRefreshing = true;
        ++RunningRefreshes;
        QGuiApplication::setOverrideCursor(Qt::WaitCursor);
        m_bCommands = measuring.m_cHost.SetCommandsEnabled(false);
        m_bBar = m_cBar.Enabled();
        m_cBar.SetEnabled(false);
        m_cChart.setUpdatesEnabled(false);
    }
    ~RefreshScope()
    {
        m_cChart.setUpdatesEnabled(true);
        // A chart nobody sees yet (a view being opened, a picture made without a window) is
        // drawn when it is shown or pictured, not now.
        if (m_cChart.isVisible())
            m_cChart.Replot();
        else
            m_cChart.Repaint();
        m_cBar.SetEnabled(m_bBar);
        m_cMeasuring.m_cHost.SetCommandsEnabled(m_bCommands);
        QGuiApplication::restoreOverrideCursor();
        m_cMeasuring.m_bRefreshing = false;
        if (--RunningRefreshes == 0)
            for (const QPointer<Measuring>& waiting : std::exchange(WaitingViews, {}))
                if (waiting)
                    QTimer::singleShot(0, waiting, [view = waiting] {
                        if (view)
                            view->Refresh(true);
                    });
        emit m_cMeasuring.RefreshEnded();
    }
    RefreshScope(const RefreshScope&) = delete;
    RefreshScope& operator=(const RefreshScope&) = delete;

private:
    Measuring& m_cMeasuring;
    ctl_NavBar& m_cBar;
    ChartAdapter& m_cChart;
    bool m_bCommands = true;
    bool m_bBar = true;
};

bool Measuring::RunAsRefresh(const std::function<void()>& work)
{
    if (!m_cGraph || m_bRefreshing)
        return false;
    RefreshScope scope(*this);
    work();
    return true;
}

std::size_t Measuring::GridBlocks(const Curve* curve) const
{
    // A curve of one channel shows its grid block; a sum has one per channel and its own.
    std::size_t blocks = 0;
    for (const auto& each : m_cCurves)
        if (!curve || each.get() == curve)
            blocks += each->Channels().size() + (each->Channels().size() > 1 ? 1 : 0);
    return blocks;
}

bool Measuring::WithinGridBudget(std::int64_t rows, std::size_t blocks)
{
    const std::int64_t values = rows * std::max<std::int64_t>(1, std::int64_t(blocks));
    if (values <= TimeValueTransformator::MaxRows)
        return true;
    const QLocale locale;
    QString text = GetResString(494);
    text.replace(QStringLiteral("%s1"), locale.toString(qlonglong(rows)))
        .replace(QStringLiteral("%s2"), QString::number(blocks))
        .replace(QStringLiteral("%v"), locale.toString(qlonglong(TimeValueTransformator::MaxRows)));
    WriteLog(QStringLiteral("time grid too large"),
        QStringLiteral("The measuring %1 would need %2 rows in %3 columns on its grid, more than %4 values; nothing "
                       "was fetched.")
            .arg(m_sName)
            .arg(rows)
            .arg(blocks)
            .arg(TimeValueTransformator::MaxRows),
        QStringLiteral("Measuring.RefreshData"), LogLevel::Error);
    m_sFetchError = text;
    m_cHost.ShowError(text);
    return false;
}

void Measuring::SettleResolution(const ChannelCollection& collection)
{
    const qint64 base = std::llround(GetDataResolution(collection));
    if (!m_sIntervalUnit.isEmpty() || base < 1)
        return;
    if (base < 60) {
        m_sIntervalUnit = QStringLiteral("s");
        m_lIntervalCount = static_cast<qint32>(base);
    } else if (base < 3600) {
        m_sIntervalUnit = QStringLiteral("n");
        m_lIntervalCount = static_cast<qint32>(std::llround(base / 60.0));
    } else {
        m_sIntervalUnit = QStringLiteral("h");
        m_lIntervalCount = static_cast<qint32>(std::llround(base / 3600.0));
    }
}

void Measuring::Fetch(ModuleBox& box, Curve* curve, double dateFrom, double dateTo,
    const std::optional<TimeValueTransformator::FixedSteps>& steps)
{
    QStringList ids;
    std::vector<DataMatrixPtr> wanted;
    ChannelCollection collection;
    const qint32 address = box.Address().toInt();
    for (const auto& candidate : m_cCurves) {
        if (curve && candidate.get() != curve)
            continue;
        for (const CurveChannel& channel : candidate->Channels())
            if (channel.matrix->ModuleAddress() == address && !collection.Channel(channel.matrix->ChannelID())) {
                ids << channel.matrix->ChannelID();
                wanted.push_back(channel.matrix);
                // Whatever the module doesn't fill counts as not read, never as the last window.
                channel.matrix->SetDataBlock(nullptr);
                collection.Add(channel.matrix, channel.matrix->ChannelID());
            }
    }
    Log(282, box.Name());
    // The grid aggregates each step's samples; a module that does so where they are stored sends
    // the same values, one row per step, instead of every sample.
    const qint32 status = steps && box.CanAggregate()
        ? box.GetAggregatedData(ids.join(QLatin1Char(';')), collection, dateFrom, dateTo, steps->start, steps->seconds)
        : box.GetData(ids.join(QLatin1Char(';')), collection, dateFrom, dateTo);
    bool failed = status != 1 && !ids.isEmpty();
    for (const DataMatrixPtr& channel : wanted) {
        // A channel that couldn't be read is a gap over the whole window, never a value.
        if (!channel->DataBlock()) {
            channel->SetDataBlock(MatrixBlock::Create(0, 2));
            failed = true;
            continue;
        }
        // Power factors are kept folded from here on, before the grid exists.
        if (channel->DataType() != DataMatrix::CosPhiType || channel->DataBlock()->Columns() < 2)
            continue;
        for (double& value : channel->DataBlock()->Column(1))
            if (value != MatrixBlock::DefaultNoValue)
                value = FoldCosPhi(value);
    }
    if (failed) {
        QString reason = GetDataError(collection);
        if (reason.isEmpty())
            reason = QStringLiteral("status %1").arg(status);
        QString text = GetResString(495);
        text.replace(QStringLiteral("%s1"), box.Name()).replace(QStringLiteral("%s2"), reason);
        m_sFetchError += (m_sFetchError.isEmpty() ? QString() : QStringLiteral("\n")) + text;
        WriteLog(QStringLiteral("data-module read failed"),
            QStringLiteral("The data-module %1 (%2) could not read the data of the measuring %3: %4")
                .arg(box.Name(), box.Address(), m_sName, reason),
            QStringLiteral("Measuring.RefreshData"), LogLevel::Error);
    }
    SettleResolution(collection);
}

void Measuring::RefreshData(double dateFrom, double dateTo, Curve* curve, bool adjustAxes)
{
    if (!m_cGraph || m_bRefreshing)
        return;
    if (RunningRefreshes > 0) {
        // Another view's refresh let the events through that asked for this one.
        if (std::find(WaitingViews.begin(), WaitingViews.end(), this) == WaitingViews.end())
            WaitingViews.emplace_back(this);
        return;
    }
    RefreshScope scope(*this);
    frm_GraphicView& view = *m_cGraph;
    ChartAdapter& chart = *view.chart_View();
    ctl_NavBar& bar = *view.nav_Navigate();
    m_sFetchError.clear();
    // Removed gaps come back: a curve refreshed alone leaves the others to write all their rows.
    if (ShowAllRows() && curve)
        for (const auto& each : m_cCurves)
            if (each.get() != curve)
                each->UpdateChart(&chart, false);
    Log(281);

    // With a known resolution the window is fetched from the start of its first step, so that
    // the first row holds what was measured in it; and a window too fine to hold is refused
    // before anything is fetched.
    const std::size_t blocks = GridBlocks(curve);
    bool refused = false;
    if (!m_sIntervalUnit.isEmpty()) {
        const std::int64_t rows
            = TimeValueTransformator::RowsBetween(dateFrom, dateTo, m_sIntervalUnit, m_lIntervalCount, true);
        refused = !WithinGridBudget(rows, blocks);
        dateFrom = TimeValueTransformator::AlignStart(dateFrom, m_sIntervalUnit);
        // The last step may end after the window when the window isn't a whole number of steps.
        if (const auto unit = Calendar::ParseUnit(m_sIntervalUnit); unit && !refused)
            dateTo = std::max(
                dateTo, Calendar::Add(*unit, qint64(rows) * std::max<qint32>(1, m_lIntervalCount), dateFrom));
    }
    // One fetch per module, with all its channels of this refresh in one list. The grid's steps
    // are known before the fetch only when the resolution is.
    const auto steps = m_sIntervalUnit.isEmpty()
        ? std::nullopt
        : TimeValueTransformator::FixedStepsOf(bar.DateFrom(), m_sIntervalUnit, m_lIntervalCount);
    if (!refused)
        for (const ModuleBoxPtr& box : m_cDataModules)
            Fetch(*box, curve, dateFrom, dateTo, steps);

    Log(283);
    QString unit = m_sIntervalUnit;
    qint32 count = m_lIntervalCount;
    MatrixBlockPtr timeBase;
    if (unit.isEmpty()) {
        const DataMatrixPtr first = m_cCurves.empty() || m_cCurves.front()->Channels().empty()
            ? nullptr
            : m_cCurves.front()->Channels().front().matrix;
        const MatrixBlockPtr block = first ? first->DataBlock() : nullptr;
        if (!first) {
            unit = QStringLiteral("n");
            count = 1;
        } else if (block && block->Rows() >= 2 && block->Columns() >= 1) {
            unit = QStringLiteral("s");
            count = static_cast<qint32>(
                Calendar::WholeSeconds(block->At(1, 0)) - Calendar::WholeSeconds(block->At(0, 0)));
            bar.SetDateFrom(block->At(0, 0));
            timeBase = block;
        } else {
            unit = QStringLiteral("s");
            count = static_cast<qint32>(Calendar::Diff(Calendar::Unit::Second, bar.DateFrom(), bar.DateTo()));
        }
    } else if (!refused) {
        // The resolution may have been settled by the modules only now.
        refused = !WithinGridBudget(
            TimeValueTransformator::RowsBetween(bar.DateFrom(), bar.DateTo(), unit, count, true), blocks);
    }
    TimeValueTransformator grid;
    if (refused) {
        // Nothing fetched: the curves are shown empty over the window.
        for (const auto& each : m_cCurves)
            for (const CurveChannel& channel : each->Channels())
                channel.matrix->SetDataBlock(MatrixBlock::Create(0, 2));
        grid.Init(bar.DateFrom(), bar.DateFrom(), unit, count, true, nullptr);
    } else {
        grid.Init(bar.DateFrom(), bar.DateTo(), unit, count, true, timeBase);
    }

    Log(284);
    m_cGraphProperties.Apply(&chart, TitleValues { m_cAddress.Name, m_sName, bar.DateFrom(), bar.DateTo(), 0 });
    if (!curve && !ZoomBackPossible() && m_bAutoScale) {
        // Turned inside out, so that the first data widens the range from both sides.
        chart.SetAxisRange(ChartAxis::Y1, 1000000, -1000000);
        if (!chart.AxisTitle(ChartAxis::Y2).isEmpty())
            chart.SetAxisRange(ChartAxis::Y2, 1000000, -1000000);
    }
    for (const auto& each : m_cCurves)
        for (const auto& cursor : each->Cursors())
            cursor->Hide();
    ApplyCosPhiAxes(curve);

    const auto update = [&](Curve& target) {
        Log(285, target.Name());
        if (target.UpdateData(dateFrom, dateTo, grid) != 0)
            return;
        target.UpdateChart(&chart, m_bAutoScale);
        target.UpdateGrid(view.grid_View());
        target.UpdateStatistic(view.trv_Statistics());
    };
    if (curve) {
        update(*curve);
    } else {
        const QString progress = QStringLiteral("UM") + m_sID;
        m_cHost.SendMessage(QStringLiteral("PROGRESS_START"), progress);
        // Curves count from 1, so that the last update fills the bar. The fraction is
        // written with a point, whatever the locale.
        for (size_t i = 0; i < m_cCurves.size(); ++i) {
            update(*m_cCurves[i]);
            m_cHost.SendMessage(QStringLiteral("PROGRESS_UPDATE"),
                progress + QLatin1Char(';') + QString::number(double(i + 1) / double(m_cCurves.size())));
        }
        // The times of the first channel's grid rows are the grid's own: shared, not copied.
        m_cFirstBlock.reset();
        if (!m_cCurves.empty() && !m_cCurves.front()->Channels().empty()
            && m_cCurves.front()->Channels().front().matrix->DataBlock())
            m_cFirstBlock = grid.Time();
        m_cHost.SendMessage(QStringLiteral("PROGRESS_END"), progress);
    }

    // A refused window stays as the user chose it, so that a coarser resolution can follow.
    if (!refused) {
        bar.SetDateFrom(grid.DateFrom());
        bar.SetDateTo(grid.DateTo());
    }
    Log(286);
    chart.SetAxisRange(ChartAxis::X, 0.5, std::max(1.0, PointCount()) + 0.5);
    // With AutoScale both axes are fitted once more after the cursors; fitting them here too
    // would only be done twice.
    if (adjustAxes && !m_bAutoScale) {
        AdjustAxis(ChartAxis::Y1);
        if (!chart.AxisTitle(ChartAxis::Y2).isEmpty())
            AdjustAxis(ChartAxis::Y2);
    }

    Log(287);
    PutCursorsBack(grid);
    view.grid_View()->SetDateFormat(GetDateFormat(false));
    view.grid_View()->Update(true);
    if (m_bAutoScale) {
        AdjustAxis(ChartAxis::Y1);
        AdjustAxis(ChartAxis::Y2);
        RedrawCursors(); // they were placed on the scale before
    }
    // A failed read stays in the status line until the next refresh.
    m_cHost.SendMessage(QStringLiteral("LOG"), m_sFetchError.section(QLatin1Char('\n'), 0, 0));
}

double Measuring::PointCount() const
{
    return Chart() ? double(Chart()->PointCount()) : 0.0;
}

void Measuring::PutCursorsBack(const TimeValueTransformator& grid)
{
    const MatrixBlockPtr& time = grid.Time();
    std::vector<Cursor*> open;
    for (const auto& curve : m_cCurves)
        for (const auto& cursor : curve->Cursors()) {
            cursor->SetIndex(-1);
            open.push_back(cursor.get());
        }
    for (qsizetype row = 0; time && row < time->Rows() && !open.empty(); ++row) {
        const qint64 second = Calendar::WholeSeconds(time->At(row, 0));
        std::erase_if(open, [&](Cursor* cursor) {
            if (Calendar::WholeSeconds(cursor->DateTime()) != second)
                return false;
            cursor->SetIndex(static_cast<qint32>(row));
            return true;
        });
    }
    ChartAdapter* chart = Chart();
    for (const auto& curve : m_cCurves) {
        for (qint32 position = static_cast<qint32>(curve->Cursors().size()); position >= 1; --position) {
            Cursor& cursor = *curve->Cursors()[size_t(position - 1)];
            if (cursor.Index() < 0 || !cursor.CursorStatistic().Visible()) {
                cursor.Hide();
                curve->RemoveCursor(position);
                continue;
            }
            const double value = chart->Value(curve->SeriesID(), cursor.Index());
            cursor.SetPoint(
                cursor.Index(), value, static_cast<qint16>(curve->SeriesID()), curve->YAxis(), cursor.DateTime(), 0);
        }
    }
}

void Measuring::RedrawCursors()
{
    for (const auto& curve : m_cCurves) {
        const bool cosPhi = curve->Result() && curve->Result()->DataType() == DataMatrix::CosPhiType;
        for (const auto& cursor : curve->Cursors())
            if (cursor->Index() >= 0 && cursor->CursorStatistic().Visible())
                cursor->SetPoint(cursor->Index(), cursor->Value(), static_cast<qint16>(curve->SeriesID()),
                    cursor->Axis(), cursor->DateTime(), cosPhi ? MeasuredCosPhi(cursor->Value()) : 0.0);
    }
}

void Measuring::UpdateAxisTitles()
{
    ChartAdapter* chart = Chart();
    if (!chart)
        return;
    QStringList units[2];
    for (const auto& curve : m_cCurves) {
        const int axis = curve->YAxis() < 0 ? 0 : curve->YAxis();
        if (axis > 1)
            continue;
        const bool cosPhi
            = !curve->Channels().empty() && curve->Channels().front().matrix->DataType() == DataMatrix::CosPhiType;
        const QString unit = cosPhi ? QStringLiteral("cosphi") : curve->Unit();
        if (!units[axis].contains(unit))
            units[axis] << unit;
    }
    for (int axis : { ChartAxis::Y1, ChartAxis::Y2 }) {
        QString title;
        for (const QString& unit : units[axis])
            title += (title.isEmpty() ? QString() : QStringLiteral("/ ")) + unit + QLatin1Char(' ');
        const bool wasVisible = chart->AxisVisible(axis);
        chart->SetAxisTitle(axis, title);
        chart->SetAxisVisible(axis, !title.isEmpty());
        if (!title.isEmpty() && !wasVisible)
            AdjustAxis(axis);
    }
    m_cGraphProperties.ShowYGrid1 = m_cGraphProperties.ShowYGrid1 && chart->AxisVisible(ChartAxis::Y1);
    m_cGraphProperties.ShowYGrid2 = m_cGraphProperties.ShowYGrid2 && chart->AxisVisible(ChartAxis::Y2);
    m_cGraphProperties.ShowXGrid = m_cGraphProperties.ShowYGrid1 || m_cGraphProperties.ShowYGrid2;
    m_cGraphProperties.Apply(chart, TitleValues { m_cAddress.Name, m_sName, StartDate(), EndDate(), 0 });
    m_cGraph->AlignControls();
}
