// SPDX-License-Identifier: GPL-3.0-or-later
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
#include <QTreeWidget>

#include <algorithm>
#include <cmath>

namespace {

constexpr double FarFuture = 146462.0; // 2300-01-01, above every data date

QString SettingOr(Settings::Id id, const char* fallback)
{
    const QString value = Settings::Value(id);
    return value.isEmpty() ? QString::fromLatin1(fallback) : value;
}

bool SettingOn(Settings::Id id)
{
    const QString value = Settings::Value(id);
    return value.isEmpty() || LeadingNumber(value) != 0.0;
}

} // namespace

Measuring::Measuring(MeasuringHost& host, QObject* parent)
    : QObject(parent)
    , m_cHost(host)
{ }

Measuring::~Measuring()
{
    Terminate();
}

qint32 Measuring::Init()
{
    m_cGraph = std::make_unique<frm_GraphicView>();
    frm_GraphicView& view = *m_cGraph;
    ChartAdapter* chart = view.chart_View();
    m_bAutoScale = true;
    m_bZoomEnabled = false;
    view.SetViewMode(frm_GraphicView::ChartMode);
    chart->SetLabelHandler(
        [this](int axis, double value, const QString& text) { return AxisLabel(axis, value, text); });
    chart->SetXTickHandler([this](double lower, double upper, int most) { return XTicks(lower, upper, most); });

    connect(view.nav_Navigate(), &ctl_NavBar::Navigate, this, &Measuring::OnNavigate);
    connect(view.nav_Navigate(), &ctl_NavBar::NavigateToFirst, this, [this] {
        if (!HasFirstLastInfo())
            return;
        MoveToFirst();
        SetChanged(true);
        m_cHost.UpdateToolStates();
    });
    connect(view.nav_Navigate(), &ctl_NavBar::NavigateToLast, this, [this] {
        if (!HasFirstLastInfo())
            return;
        MoveToLast();
        SetChanged(true);
        m_cHost.UpdateToolStates();
    });
    connect(view.nav_Vertical(), &ctl_VertNavBar::Move, this,
        [this](bool upper, bool lower, int direction) { OnVerticalMove(ChartAxis::Y1, upper, lower, direction); });
    connect(view.nav_Vertical2(), &ctl_VertNavBar::Move, this,
        [this](bool upper, bool lower, int direction) { OnVerticalMove(ChartAxis::Y2, upper, lower, direction); });
    connect(view.nav_Vertical(), &ctl_VertNavBar::Adjust, this, [this] {
        AdjustAxis(ChartAxis::Y1);
        RedrawCursors();
    });
    connect(view.nav_Vertical2(), &ctl_VertNavBar::Adjust, this, [this] {
        AdjustAxis(ChartAxis::Y2);
        RedrawCursors();
    });
    connect(&view, &frm_GraphicView::ShowStatistics, this, [this] { SetShowStatistics(true); });
    connect(&view, &frm_GraphicView::CloseStatistics, this, [this] { SetShowStatistics(false); });
    connect(view.trv_Statistics(), &QTreeWidget::itemClicked, this,
        [this](QTreeWidgetItem* item) { NodeClick(item ? ChannelTree::Tag(item) : QString()); });
    view.SetCloseHandler([this] { return m_cHost.CloseMeasuring(*this, false); });
    ConnectInteraction();
    ReloadSettings();
    return 0;
}

void Measuring::Terminate()
{
    m_cCurrentCurve = nullptr;
    m_cCurves.clear();
    m_cGraph.reset();
}

ChartAdapter* Measuring::Chart() const
{
    return m_cGraph ? m_cGraph->chart_View() : nullptr;
}

// --- properties

void Measuring::UpdateCaption()
{
    if (!m_cGraph)
        return;
    const QString file = m_sFileName.isEmpty() ? GetResString(303) : m_sFileName;
    m_cGraph->setWindowTitle(
        m_sName + QStringLiteral(" [") + file + QLatin1Char(']') + (m_bChanged ? QStringLiteral(" *") : QString()));
}

void Measuring::SetChanged(bool changed)
{
    m_bChanged = changed;
    UpdateCaption();
}

void Measuring::SetName(const QString& name)
{
    m_sName = name;
    SetChanged(true);
}

double Measuring::StartDate() const
{
    return m_cGraph ? m_cGraph->nav_Navigate()->DateFrom() : 0.0;
}

void Measuring::SetStartDate(double date)
{
    if (m_cGraph)
        m_cGraph->nav_Navigate()->SetDateFrom(date);
    SetChanged(true);
    m_cHost.UpdateToolStates();
}

double Measuring::EndDate() const
{
    return m_cGraph ? m_cGraph->nav_Navigate()->DateTo() : 0.0;
}

void Measuring::SetEndDate(double date)
{
    if (m_cGraph)
        m_cGraph->nav_Navigate()->SetDateTo(date);
    SetChanged(true);
    m_cHost.UpdateToolStates();
}

void Measuring::SetRemark(const QString& remark)
{
    m_sRemark = remark;
    if (m_cNoteBox)
        m_cNoteBox->SetText(remark.isEmpty() ? QStringLiteral(" ") : remark);
}

void Measuring::SetIntervalUnit(const QString& unit)
{
    m_sIntervalUnit = unit;
    SetChanged(true);
}

void Measuring::SetIntervalCount(qint32 count)
{
    m_lIntervalCount = count;
    SetChanged(true);
}

Curve* Measuring::FindCurve(const QString& id) const
{
    for (const auto& curve : m_cCurves)
        if (curve->ID() == id)
            return curve.get();
    return nullptr;
}

void Measuring::SetCurrentCurve(Curve* curve)
{
    m_cCurrentCurve = curve;
    m_cHost.UpdateToolStates();
}

bool Measuring::ShowStatistics() const
{
    return m_cGraph && m_cGraph->StatisticVisible();
}

void Measuring::SetShowStatistics(bool show)
{
    if (m_cGraph)
        m_cGraph->SetStatisticVisible(show);
    SetChanged(true);
}

qint32 Measuring::ViewMode() const
{
    return m_cGraph ? m_cGraph->ViewMode() : 1;
}

void Measuring::SetViewMode(qint32 mode)
{
    if (m_cGraph)
        m_cGraph->SetViewMode(mode);
    SetChanged(true);
}

bool Measuring::CosPhiView(int axis) const
{
    if (axis != ChartAxis::Y1 && axis != ChartAxis::Y2)
        return false;
    for (const auto& curve : m_cCurves)
        if (curve->YAxis() == axis && !curve->Channels().empty()
            && curve->Channels().front().matrix->DataType() == DataMatrix::CosPhiType)
            return true;
    return false;
}

// --- curves and modules

Curve* Measuring::AddCurve(const QString& channelKey, bool loadData, const QString& usedStatistics,
    const QString& visibleStatistics, const SeriesProperties* properties)
{
    const QStringList parts = channelKey.split(QLatin1Char('$'));
    if (parts.size() != 2)
        return nullptr;
    if (FindCurve(channelKey)) {
        WriteLog(QStringLiteral("duplicate curve"),
            QStringLiteral("The channel ") + channelKey + QStringLiteral(" is already a curve of the measuring ")
                + m_sName + QStringLiteral("; it is not added twice."),
            QStringLiteral("Measuring.AddCurve"), LogLevel::Error);
        return nullptr;
    }
    const ModuleBoxPtr box = m_cDataModules.Item(parts[0]);
    if (!box)
        return nullptr;
    QString channelId = parts[1];
    if (m_bTemporary) {
        // Bound to whatever logger the module offers now: its logger, the requested channel.
        const DataMatrixPtr current = box->Channel(QString());
        if (current)
            channelId = current->ChannelID().section(QLatin1Char('#'), 0, 0) + QLatin1Char('#')
                + parts[1].section(QLatin1Char('#'), 1);
    }
    const DataMatrixPtr channel = box->Channel(channelId);
    if (!channel)
        return nullptr;

    auto curve = std::make_unique<Curve>();
    curve->SetID(channelKey);
    if (properties)
        curve->SetProperties(*properties);
    else
        curve->Properties().Color = NextFreeColor();
    curve->AddMatrix(channel);
    for (const auto& statistic : curve->Statistics()) {
        const QString marker = QLatin1Char('|') + statistic->ID() + QLatin1Char('|');
        statistic->SetUsed(usedStatistics.contains(marker));
        if (statistic->Used())
            statistic->SetVisible(visibleStatistics.contains(marker));
    }
    m_cCurves.push_back(std::move(curve));
    Curve* added = m_cCurves.back().get();
    if (loadData && m_cGraph)
        RefreshData(StartDate(), EndDate(), added, true);
    if (m_cGraph) {
        m_cGraph->nav_Navigate()->SetDateFirst(FirstDataDate());
        m_cGraph->nav_Navigate()->SetDateLast(LastDataDate());
    }
    return added;
}

qint32 Measuring::NextFreeColor() const
{
    QList<qint32> used;
    for (const auto& curve : m_cCurves)
        used << curve->Properties().Color;
    return CurveColors::LeastUsed(used);
}

double Measuring::FirstDataDate() const
{
    double first = FarFuture;
    for (const auto& curve : m_cCurves)
        for (const CurveChannel& channel : curve->Channels()) {
            const ModuleBoxPtr box = m_cDataModules.Item(QString::number(channel.matrix->ModuleAddress()));
            const double date = box ? box->GetFirstDate(channel.matrix->ChannelID()) : 0.0;
            if (date == 0.0)
                return 0.0; // one channel without data leaves the whole view without a start
            first = std::min(first, date);
        }
    return first;
}

double Measuring::LastDataDate() const
{
    double last = 0.0;
    for (const auto& curve : m_cCurves)
        for (const CurveChannel& channel : curve->Channels()) {
            const ModuleBoxPtr box = m_cDataModules.Item(QString::number(channel.matrix->ModuleAddress()));
            const double date = box ? box->GetLastDate(channel.matrix->ChannelID()) : 0.0;
            if (date == 0.0)
                return 0.0;
            last = std::max(last, date);
        }
    return last;
}

bool Measuring::HasFirstLastInfo() const
{
    return FirstDataDate() != 0.0 && LastDataDate() != 0.0;
}

void Measuring::ReloadSettings()
{
    m_bCursorCrossHairs = SettingOn(Settings::Id::CursorCrossHairs);
    m_bCrossHairs = SettingOn(Settings::Id::CrossHairs);
    m_bToolTips = SettingOn(Settings::Id::ToolTips);
    if (!m_cGraph)
        return;
    m_cGraph->chart_View()->SetToolTips(m_bToolTips);
    ctl_NavBar* bar = m_cGraph->nav_Navigate();
    bar->SetSmallStep(SettingOr(Settings::Id::NavSmallStep, "1h"));
    bar->SetMediumStep(SettingOr(Settings::Id::NavMediumStep, "1d"));
    bar->SetBigStep(SettingOr(Settings::Id::NavBigStep, "1m"));
}

void Measuring::RemoveCursors(bool allCurves)
{
    for (const auto& curve : m_cCurves)
        if (allCurves || curve.get() == m_cCurrentCurve)
            curve->RemoveCursor(-1);
    SetChanged(true);
    m_cHost.UpdateToolStates();
}

void Measuring::NodeClick(const QString& tag)
{
    if (tag.isEmpty())
        return;
    Curve* curve = FindCurve(tag);
    if (!curve) {
        SetCurrentCurve(nullptr);
        return;
    }
    if (!m_cCurrentCurve || m_cCurrentCurve->ID() != curve->ID())
        SetCurrentCurve(curve);
}

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

void Measuring::RefreshData(double dateFrom, double dateTo, Curve* curve, bool adjustAxes)
{
    if (!m_cGraph || m_bRefreshing)
        return;
    m_bRefreshing = true;
    frm_GraphicView& view = *m_cGraph;
    ChartAdapter& chart = *view.chart_View();
    ctl_NavBar& bar = *view.nav_Navigate();
    chart.setUpdatesEnabled(false);
    const bool barEnabled = bar.Enabled();
    bar.SetEnabled(false);
    Log(281);

    // One fetch per module, with all its channels of this refresh in one list.
    for (const ModuleBoxPtr& box : m_cDataModules) {
        QStringList ids;
        ChannelCollection collection;
        const qint32 address = box->Address().toInt();
        for (const auto& candidate : m_cCurves) {
            if (curve && candidate.get() != curve)
                continue;
            for (const CurveChannel& channel : candidate->Channels())
                if (channel.matrix->ModuleAddress() == address) {
                    ids << channel.matrix->ChannelID();
                    collection.Add(channel.matrix, channel.matrix->ChannelID());
                }
        }
        Log(282, box->Name());
        box->GetData(ids.join(QLatin1Char(';')), collection, dateFrom, dateTo);
        // Power factors are kept folded from here on, before the grid exists.
        const qsizetype channels = GetDataChannelCount(collection);
        for (qsizetype i = 0; i < channels; ++i) {
            const DataMatrixPtr channel = collection.Channel(i);
            if (!channel || channel->DataType() != DataMatrix::CosPhiType || !channel->DataBlock()
                || channel->DataBlock()->Columns() < 2)
                continue;
            for (double& value : channel->DataBlock()->Column(1))
                if (value != MatrixBlock::DefaultNoValue)
                    value = FoldCosPhi(value);
        }
        const qint64 base = std::llround(GetDataResolution(collection));
        if (m_sIntervalUnit.isEmpty() && base >= 1) {
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
    }

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
    }
    TimeValueTransformator grid;
    grid.Init(bar.DateFrom(), bar.DateTo(), unit, count, true, timeBase);

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
        for (size_t i = 0; i < m_cCurves.size(); ++i) {
            m_cHost.SendMessage(QStringLiteral("PROGRESS_UPDATE"),
                progress + QLatin1Char(';') + QString::number(double(i) / double(m_cCurves.size())));
            update(*m_cCurves[i]);
        }
        m_cFirstBlock.reset();
        if (!m_cCurves.empty() && !m_cCurves.front()->Channels().empty()
            && m_cCurves.front()->Channels().front().matrix->DataBlock())
            m_cFirstBlock = m_cCurves.front()->Channels().front().matrix->DataBlock()->Clone();
        m_cHost.SendMessage(QStringLiteral("PROGRESS_END"), progress);
    }

    bar.SetDateFrom(grid.DateFrom());
    bar.SetDateTo(grid.DateTo());
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
    m_cHost.SendMessage(QStringLiteral("LOG"), QString());
    chart.setUpdatesEnabled(true);
    chart.Replot();
    bar.SetEnabled(barEnabled);
    m_bRefreshing = false;
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
                    cursor->Axis(), cursor->DateTime(), cosPhi ? FoldCosPhi(cursor->Value()) : 0.0);
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

// --- periods and zoom

void Measuring::ShowPeriod(const QString& unit, qint32 count)
{
    if (!m_cGraph)
        return;
    ctl_NavBar& bar = *m_cGraph->nav_Navigate();
    double from = 0.0;
    double to = 0.0;
    if (unit.isEmpty()) {
        from = FirstDataDate();
        to = LastDataDate();
    } else {
        from = ViewPeriods::PeriodStart(unit, bar.DateFrom(), bar.DateTo());
        const auto parsed = Calendar::ParseUnit(unit);
        to = parsed ? Calendar::Add(*parsed, count, from) : from;
    }
    bar.SetDateFrom(from);
    bar.SetDateTo(to);
    RefreshData(from, to, nullptr, true);
}

void Measuring::MoveToFirst()
{
    if (!m_cGraph)
        return;
    ctl_NavBar& bar = *m_cGraph->nav_Navigate();
    const double first = FirstDataDate();
    const qint64 length = Calendar::Diff(Calendar::Unit::Second, bar.DateFrom(), bar.DateTo());
    bar.SetDateFrom(first);
    bar.SetDateTo(Calendar::Add(Calendar::Unit::Second, length, first));
    RefreshData(bar.DateFrom(), bar.DateTo(), nullptr, true);
}

void Measuring::MoveToLast()
{
    if (!m_cGraph)
        return;
    ctl_NavBar& bar = *m_cGraph->nav_Navigate();
    const double last = LastDataDate();
    const qint64 length = Calendar::Diff(Calendar::Unit::Second, bar.DateFrom(), bar.DateTo());
    bar.SetDateTo(last);
    bar.SetDateFrom(Calendar::Add(Calendar::Unit::Second, -length, last));
    RefreshData(bar.DateFrom(), bar.DateTo(), nullptr, true);
}

void Measuring::ZoomTo(int x1, int y1, int x2, int y2)
{
    ChartAdapter* chart = Chart();
    if (!chart || !m_cFirstBlock || m_cFirstBlock->Rows() == 0)
        return;
    double left = 0, top = 0, right = 0, bottom = 0;
    if (!chart->PixelToValue(QPointF(x1, y1), ChartAxis::Y1, left, top)
        || !chart->PixelToValue(QPointF(x2, y2), ChartAxis::Y1, right, bottom))
        return;
    qint64 first = std::llround(left) + 1;
    qint64 second = std::llround(right);
    if (first > second)
        std::swap(first, second);
    // Chart points count from 1; rows of the first channel from 0.
    const qint64 lastRow = m_cFirstBlock->Rows() - 1;
    const bool pastEnd = second - 1 > lastRow;
    first = std::clamp<qint64>(first - 1, 0, lastRow);
    second = std::clamp<qint64>(second - 1, 0, lastRow);
    ctl_NavBar& bar = *m_cGraph->nav_Navigate();
    const double from = m_cFirstBlock->At(first, 0);
    const double to = pastEnd ? bar.DateTo() : m_cFirstBlock->At(second, 0);
    const double y1Min = std::min(top, bottom);
    const double y1Max = std::max(top, bottom);
    double y2Min = 0, y2Max = 0;
    bool second2 = false;
    if (!chart->AxisTitle(ChartAxis::Y2).isEmpty()) {
        double ignored = 0, a = 0, b = 0;
        second2 = chart->PixelToValue(QPointF(x1, y1), ChartAxis::Y2, ignored, a)
            && chart->PixelToValue(QPointF(x2, y2), ChartAxis::Y2, ignored, b);
        y2Min = std::min(a, b);
        y2Max = std::max(a, b);
    }

    m_sZoomHistory = ViewPeriods::PushZoom(m_sZoomHistory,
        { bar.DateFrom(), bar.DateTo(), chart->AxisMin(ChartAxis::Y1), chart->AxisMax(ChartAxis::Y1),
            chart->AxisMin(ChartAxis::Y2), chart->AxisMax(ChartAxis::Y2) });
    if (Calendar::WholeSeconds(to) - Calendar::WholeSeconds(from) > 0) {
        bar.SetDateFrom(from);
        bar.SetDateTo(to);
        RefreshData(from, to, nullptr, false);
        if (y1Min < y1Max)
            chart->SetAxisRange(ChartAxis::Y1, y1Min, y1Max);
        if (second2 && y2Min < y2Max)
            chart->SetAxisRange(ChartAxis::Y2, y2Min, y2Max);
        RedrawCursors();
        chart->Replot();
    }
    m_cHost.UpdateToolStates();
}

void Measuring::ZoomBack()
{
    if (m_sZoomHistory.isEmpty() || !m_cGraph)
        return;
    const auto entry = ViewPeriods::LastZoom(m_sZoomHistory);
    if (entry) {
        ChartAdapter& chart = *Chart();
        ctl_NavBar& bar = *m_cGraph->nav_Navigate();
        bar.SetDateFrom(entry->from);
        bar.SetDateTo(entry->to);
        RefreshData(entry->from, entry->to, nullptr, false);
        chart.SetAxisRange(ChartAxis::Y1, entry->y1Min, entry->y1Max);
        if (!chart.AxisTitle(ChartAxis::Y2).isEmpty() && entry->hasY2)
            chart.SetAxisRange(ChartAxis::Y2, entry->y2Min, entry->y2Max);
        RedrawCursors();
        chart.Replot();
    }
    m_sZoomHistory = ViewPeriods::PopZoom(m_sZoomHistory);
}

void Measuring::AdjustAxis(int axis)
{
    ChartAdapter* chart = Chart();
    double min = 0;
    double max = 0;
    if (!chart || !chart->ValueRange(axis, min, max))
        return;
    if (min == max) {
        // A flat line still gets a range to stand in.
        min -= 1;
        max += 1;
    }
    chart->SetAxisRange(axis, min, max);
}

void Measuring::OnNavigate(int index)
{
    Q_UNUSED(index);
    RefreshData(StartDate(), EndDate(), nullptr, true);
    SetChanged(true);
    m_cHost.UpdateToolStates();
}

void Measuring::OnVerticalMove(int axis, bool upper, bool lower, int direction)
{
    ChartAdapter* chart = Chart();
    if (!chart)
        return;
    double min = chart->AxisMin(axis);
    double max = chart->AxisMax(axis);
    double step = (max - min) / 20;
    if (step == 0)
        step = 1;
    if (direction < 0)
        step = -step;
    if (upper)
        max += step;
    if (lower)
        min += step;
    chart->SetAxisRange(axis, min, max);
    RedrawCursors();
    chart->Replot();
}

QString Measuring::GetDateFormat(bool forAxis) const
{
    const qint64 seconds = Calendar::Diff(Calendar::Unit::Second, StartDate(), EndDate());
    return ViewPeriods::DateFormat(forAxis, seconds, m_sIntervalUnit, PointCount());
}

QString Measuring::AxisLabel(int axis, double value, const QString& text) const
{
    if (axis == ChartAxis::X) {
        const qint64 point = std::llround(value);
        if (point < 1 || std::abs(value - double(point)) > 1e-9)
            return QString();
        double date = 0;
        if (m_cFirstBlock) {
            if (point - 1 >= m_cFirstBlock->Rows())
                return QString();
            date = m_cFirstBlock->At(point - 1, 0);
        } else {
            const qint64 seconds = Calendar::Diff(Calendar::Unit::Second, StartDate(), EndDate());
            const double points = std::max(1.0, PointCount());
            date = Calendar::Add(Calendar::Unit::Second, qint64(double(seconds) * double(point) / points), StartDate());
        }
        return Formatter().FormatDate(date, GetDateFormat(true));
    }
    if (!CosPhiView(axis))
        return text;
    const double v = FoldCosPhi(value);
    if (std::abs(v) > 1)
        return QString();
    QString mark;
    if (std::abs(v) != 1)
        mark = v > 0 || (v == 0 && value >= 0) ? QStringLiteral(" i ") : QStringLiteral(" c ");
    return mark + Formatter().FormatNumber(std::abs(v), u"0.00");
}

std::vector<double> Measuring::XTicks(double lower, double upper, int most) const
{
    std::vector<double> points;
    if (!m_cFirstBlock || m_cFirstBlock->Columns() < 1)
        return points;
    const auto first = static_cast<qsizetype>(std::ceil(lower)) - 1;
    const auto last = static_cast<qsizetype>(std::floor(upper)) - 1;
    for (const qsizetype row : ViewPeriods::RoundTimeRows(m_cFirstBlock->Column(0), first, last, most))
        points.push_back(double(row + 1));
    return points;
}

// --- file

MeasuringFile Measuring::ToFile() const
{
    MeasuringFile file;
    file.name = m_sName;
    file.remark = m_sRemark;
    file.autoScale = m_bAutoScale;
    file.intervalUnit = m_sIntervalUnit;
    file.intervalCount = m_lIntervalCount;
    file.showStatistics = ShowStatistics();
    file.viewMode = ViewMode();
    file.zoomHistory = m_sZoomHistory;
    file.startDate = StartDate();
    file.endDate = EndDate();
    file.annotationVisible = ShowAnnotation();
    file.annotationPosition = AnnotationPosition();
    for (const ModuleBoxPtr& box : m_cDataModules)
        file.modules << box->Address();
    file.graph = m_cGraphProperties;
    file.address = m_cAddress;
    file.hasCurves = true;
    for (const auto& curve : m_cCurves) {
        MeasuringFile::Curve entry;
        entry.name = curve->Name();
        entry.unit = curve->Unit();
        entry.visible = curve->Visible();
        entry.yAxis = curve->YAxis();
        for (const CurveChannel& channel : curve->Channels())
            entry.channels << channel.key;
        entry.series = curve->Properties();
        for (const auto& statistic : curve->Statistics())
            if (statistic->Used())
                entry.statistics.append({ statistic->ID(), statistic->Visible() });
        for (const auto& cursor : curve->Cursors())
            entry.cursors.append({ cursor->DateTime(), cursor->CustomText(), cursor->BoxPosition(),
                cursor->CursorStatistic().Visible() });
        file.curves.append(entry);
    }
    return file;
}

void Measuring::FromFile(const MeasuringFile& file)
{
    SetName(file.name);
    SetRemark(file.remark);
    m_bAutoScale = file.autoScale;
    SetIntervalUnit(file.intervalUnit);
    SetIntervalCount(file.intervalCount);
    SetShowStatistics(file.showStatistics);
    SetViewMode(file.viewMode);
    m_sZoomHistory = file.zoomHistory;
    SetStartDate(file.startDate);
    SetEndDate(file.endDate);
    SetAnnotationPosition(file.annotationPosition);
    SetShowAnnotation(file.annotationVisible);
    for (const QString& address : file.modules) {
        if (address.isEmpty())
            continue;
        const ModuleBoxPtr box = m_cHost.DataModules().Item(address);
        if (!box)
            continue;
        if (box->GetChannelList(nullptr) == 1) {
            m_cDataModules.Add(box);
        } else {
            WriteLog(QStringLiteral("module-init fault"),
                QStringLiteral("Could not initialize channel-liste for the module ") + box->Name()
                    + QStringLiteral(" (") + box->Address()
                    + QStringLiteral("). The module will not be available for the measuring ") + m_sName
                    + QLatin1Char('.'),
                QStringLiteral("SoranoFileHandler.AddModule"), LogLevel::Error);
        }
    }
    m_cGraphProperties = file.graph;
    m_cAddress = file.address;
    for (const MeasuringFile::Curve& entry : file.curves) {
        if (entry.channels.isEmpty())
            continue;
        const QString key = SoranoFileHandler::ConvertOldChannelKey(
            entry.channels.front(), [this] { return m_cHost.GetNewMeasuringID(); });
        if (key != entry.channels.front())
            m_bChangedID = true;
        Curve* curve = AddCurve(key, false, QString(), QString(), nullptr);
        if (!curve) {
            WriteLog(QStringLiteral("invalid channel in file"),
                QStringLiteral("The channel ") + key + QStringLiteral(" could not be added to the measuring ") + m_sName
                    + QLatin1Char('.'),
                QStringLiteral("SoranoFileHandler.AddChannel"), LogLevel::Error);
            continue;
        }
        curve->SetName(entry.name);
        curve->SetUnit(entry.unit);
        curve->SetVisible(entry.visible);
        curve->SetYAxis(static_cast<qint16>(entry.yAxis));
        curve->SetProperties(entry.series);
        for (const MeasuringFile::Statistic& statistic : entry.statistics)
            if (Statistic* found = curve->FindStatistic(statistic.id)) {
                found->SetUsed(true);
                found->SetVisible(statistic.visible);
            }
        for (const MeasuringFile::Cursor& stored : entry.cursors) {
            Cursor* cursor = AddCursor(stored.dateTime, *curve);
            cursor->SetCustomText(stored.customText);
            cursor->SetBoxPosition(stored.position);
            cursor->CursorStatistic().SetVisible(stored.visible);
        }
    }
}

void Measuring::ChooseFirstWindow(bool fromCreate)
{
    ctl_NavBar& bar = *m_cGraph->nav_Navigate();
    const double first = FirstDataDate();
    const double last = LastDataDate();
    if (first == 0.0 || last == 0.0) {
        bar.SetDateFrom(Calendar::Now());
        ShowPeriod(QStringLiteral("d"), 1);
        return;
    }
    QString setting = Settings::Value(Settings::Id::OnNewMeasuring);
    if (setting.isEmpty() && fromCreate)
        setting = QStringLiteral("2");
    const double choice = LeadingNumber(setting);
    if (choice == 2) {
        ShowPeriod(QString(), 0);
        return;
    }
    bar.SetDateFrom(std::floor(choice == 1 ? last : first));
    ShowPeriod(QStringLiteral("d"), 1);
}

qint32 Measuring::OpenFile(const QString& path, bool hidden)
{
    if (!m_cGraph)
        return -1;
    m_sFileName = path;
    m_cDataModules.Clear();
    m_cCurrentCurve = nullptr;
    m_cCurves.clear();
    m_cGraphProperties = GraphProperties();
    MeasuringFile file;
    bool isViewFile = false;
    if (SoranoFileHandler::Load(path, file, &isViewFile) != 0)
        return -1;
    // Another kind of file opens as an empty view.
    if (isViewFile)
        FromFile(file);
    ReloadSettings();
    ctl_NavBar& bar = *m_cGraph->nav_Navigate();
    bar.SetDateFirst(FirstDataDate());
    bar.SetDateLast(LastDataDate());
    if (bar.DateFrom() != 0.0 && bar.DateTo() != 0.0)
        RefreshData(bar.DateFrom(), bar.DateTo(), nullptr, true);
    else
        ChooseFirstWindow(false);
    UpdateAxisTitles();
    AdjustAxis(ChartAxis::Y1);
    AdjustAxis(ChartAxis::Y2);
    if (!hidden)
        m_cGraph->show();
    RedrawCursors();
    for (const auto& curve : m_cCurves)
        curve->UpdateStatistic(m_cGraph->trv_Statistics());
    if (m_bChangedID)
        SaveFile(QString(), false);
    SetChanged(false);
    return 0;
}

qint32 Measuring::SaveFile(const QString& path, bool keepName)
{
    qint32 result = 0;
    if (path.isEmpty()) {
        if (m_sFileName.isEmpty())
            return -1;
        result = SoranoFileHandler::Save(m_sFileName, ToFile());
    } else {
        if (path != m_sFileName && !keepName) {
            QString name = path;
            if (const qsizetype dot = name.lastIndexOf(QLatin1Char('.')); dot >= 0)
                name = name.left(dot);
            const qsizetype slash = std::max(name.lastIndexOf(QLatin1Char('\\')), name.lastIndexOf(QLatin1Char('/')));
            name = slash >= 0 ? name.mid(slash + 1) : name.mid(name.lastIndexOf(QLatin1Char(':')) + 1);
            m_sName = name;
        }
        result = SoranoFileHandler::Save(path, ToFile());
    }
    if (result == 0) {
        if (!path.isEmpty())
            m_sFileName = path;
        SetChanged(false);
    }
    return result;
}
