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
#include <QGuiApplication>
#include <QSignalBlocker>
#include <QTreeWidget>

#include <algorithm>
#include <cmath>

namespace {

MeasuringDialogs& Dialogs()
{
    static MeasuringDialogs dialogs;
    return dialogs;
}

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
    connect(view.nav_Navigate(), &ctl_NavBar::DblClick, this, [this] { EditProperties(); });
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
    connect(view.trv_Statistics(), &QTreeWidget::itemChanged, this, &Measuring::OnNodeChanged);
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
    const bool flipped = changed != m_bChanged;
    m_bChanged = changed;
    UpdateCaption();
    // The save command follows whether there is something to save.
    if (flipped)
        m_cHost.UpdateToolStates();
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

ModuleBoxes& Measuring::OfferedModules()
{
    return m_cHost.DataModules();
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
    const DataMatrixPtr channel = ResolveChannel(channelKey);
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

DataMatrixPtr Measuring::ResolveChannel(const QString& channelKey) const
{
    const QStringList parts = channelKey.split(QLatin1Char('$'));
    if (parts.size() != 2)
        return nullptr;
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
    return box->Channel(channelId);
}

bool Measuring::AddChannel(Curve& curve, const QString& channelKey)
{
    const DataMatrixPtr channel = ResolveChannel(channelKey);
    if (!channel)
        return false;
    const qsizetype before = qsizetype(curve.Channels().size());
    // Adding a channel renames the curve after it; a sum keeps the name it had.
    const QString name = curve.Name();
    const QString unit = curve.Unit();
    curve.AddMatrix(channel);
    curve.SetName(name);
    curve.SetUnit(unit);
    return qsizetype(curve.Channels().size()) > before;
}

bool Measuring::RemoveCurve(const QString& id)
{
    const auto found = std::find_if(
        m_cCurves.begin(), m_cCurves.end(), [&id](const std::unique_ptr<Curve>& curve) { return curve->ID() == id; });
    if (found == m_cCurves.end())
        return false;
    Curve& curve = **found;
    curve.RemoveCursor(-1);
    curve.RemoveFromView();
    // Series are numbered in the chart; the later curves keep theirs and this one stays hidden.
    if (curve.Chart() && curve.SeriesID() >= 0 && curve.SeriesID() < curve.Chart()->SeriesCount())
        curve.Chart()->SetSeriesVisible(curve.SeriesID(), false);
    if (m_cCurrentCurve == &curve)
        SetCurrentCurve(nullptr);
    m_cCurves.erase(found);
    return true;
}

bool Measuring::MoveCurve(const QString& id, qsizetype index)
{
    const auto found = std::find_if(
        m_cCurves.begin(), m_cCurves.end(), [&id](const std::unique_ptr<Curve>& curve) { return curve->ID() == id; });
    if (found == m_cCurves.end())
        return false;
    const qsizetype from = found - m_cCurves.begin();
    const qsizetype to = std::clamp<qsizetype>(index, 0, qsizetype(m_cCurves.size()) - 1);
    if (from == to)
        return true;

    // The chart draws and lists its series by number: the curves in the chart share their
    // numbers out again in the new order, each taking its axis along.
    std::vector<std::pair<Curve*, qint16>> charted;
    std::vector<qint32> numbers;
    for (const auto& curve : m_cCurves)
        if (curve->SeriesID() >= 0) {
            charted.push_back({ curve.get(), curve->YAxis() });
            numbers.push_back(curve->SeriesID());
        }

    std::unique_ptr<Curve> moving = std::move(*found);
    m_cCurves.erase(found);
    m_cCurves.insert(m_cCurves.begin() + to, std::move(moving));

    std::sort(numbers.begin(), numbers.end());
    size_t next = 0;
    for (const auto& curve : m_cCurves) {
        const auto entry
            = std::find_if(charted.begin(), charted.end(), [&curve](const auto& c) { return c.first == curve.get(); });
        if (entry == charted.end())
            continue;
        const qint32 number = numbers[next++];
        if (curve->SeriesID() == number)
            continue;
        curve->SetSeriesID(number);
        if (ChartAdapter* chart = curve->Chart(); chart && number < chart->SeriesCount())
            chart->SetSeriesAxis(number, entry->second);
    }

    // The tree's curve nodes follow the list, each keeping whether it was open.
    if (QTreeWidget* tree = m_cGraph ? m_cGraph->trv_Statistics() : nullptr) {
        const QSignalBlocker quiet(tree);
        int row = 0;
        for (const auto& curve : m_cCurves) {
            QTreeWidgetItem* node = ChannelTree::FindItem(tree, curve->GetStatisticKey(nullptr));
            const int at = node ? tree->indexOfTopLevelItem(node) : -1;
            if (at < 0)
                continue;
            if (at != row) {
                const bool expanded = node->isExpanded();
                tree->insertTopLevelItem(row, tree->takeTopLevelItem(at));
                node->setExpanded(expanded);
            }
            ++row;
        }
    }
    // The table adds its columns in the order the curves are written into it.
    if (m_cGraph && m_cGraph->grid_View()) {
        for (const auto& curve : m_cCurves)
            curve->UpdateGrid(nullptr);
        if (ViewMode() == frm_GraphicView::GridMode)
            m_cGraph->grid_View()->Update(false);
    }
    SetChanged(true);
    return true;
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
    if (m_bWizardPeriod)
        return m_dWizardFirst;
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
    if (m_bWizardPeriod)
        return m_dWizardLast;
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

qint32 Measuring::CreateFile()
{
    if (!m_cGraph || !Dialogs().newMeasuring) {
        WriteLog(QStringLiteral("error creating wizzard dialog"),
            QStringLiteral("Error creating the wizzard dialog to create a new measuring."),
            QStringLiteral("Measuring.CreateFile"), LogLevel::Error);
        return -1;
    }
    const std::optional<NewMeasuringChoice> choice = Dialogs().newMeasuring(*this);
    QCoreApplication::processEvents();
    if (!choice)
        return 1;

    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    m_sFileName.clear();
    m_sName = choice->name;
    m_sRemark = choice->remark;
    m_cDataModules.Clear();
    for (const ModuleBoxPtr& box : choice->modules)
        m_cDataModules.Add(box);
    m_cCurrentCurve = nullptr;
    m_cCurves.clear();
    m_bWizardPeriod = true;
    m_dWizardFirst = choice->start;
    m_dWizardLast = choice->end;
    m_cGraphProperties = choice->graph.value_or(GraphProperties());

    for (const QString& key : choice->channels) {
        Curve* curve = AddCurve(key, false, choice->indizes, QString(), nullptr);
        if (!curve)
            continue;
        // Statistics drawn as lines show in the chart as the wizard says.
        for (const auto& statistic : curve->Statistics())
            if (statistic->DisplayType() == Statistic::DisplayLine)
                statistic->SetVisible(choice->indizesInChart);
        // A profile gives its look to the curves of its channel names.
        for (const auto& [name, look] : choice->looks)
            if (name == curve->Name())
                curve->SetProperties(look);
    }

    ChooseFirstWindow(true);
    UpdateCaption();
    ctl_NavBar& bar = *m_cGraph->nav_Navigate();
    bar.SetDateFirst(FirstDataDate());
    bar.SetDateLast(LastDataDate());
    UpdateAxisTitles();
    // The application puts the window where its documents stand and shows it.
    SelectedNodeClick();
    SetChanged(true);
    QGuiApplication::restoreOverrideCursor();
    return 0;
}

void Measuring::SetDialogs(MeasuringDialogs dialogs)
{
    Dialogs() = std::move(dialogs);
}

qint32 Measuring::EditProperties()
{
    const qint32 status = Dialogs().properties ? Dialogs().properties(*this) : -1;
    if (status > 0) {
        SetChanged(true);
        m_cHost.UpdateToolStates();
    }
    return status;
}

qint32 Measuring::ManageCurves()
{
    const qint32 status = Dialogs().curves ? Dialogs().curves(*this) : -1;
    if (status > 0) {
        SetChanged(true);
        m_cHost.UpdateToolStates();
    }
    return status;
}

qint32 Measuring::EditCurveProperties()
{
    if (!m_cCurrentCurve)
        return 0;
    const qint32 status = Dialogs().curveProperties ? Dialogs().curveProperties(*this, *m_cCurrentCurve) : -1;
    if (status > 0) {
        SetChanged(true);
        m_cHost.UpdateToolStates();
    }
    return status;
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

void Measuring::SelectedNodeClick()
{
    QTreeWidget* tree = m_cGraph ? m_cGraph->trv_Statistics() : nullptr;
    if (!tree)
        return;
    // The tree selects its first node once it has one, as a user finds it on opening.
    if (!tree->currentItem() && tree->topLevelItemCount() > 0)
        tree->setCurrentItem(tree->topLevelItem(0));
    if (QTreeWidgetItem* item = tree->currentItem())
        NodeClick(ChannelTree::Tag(item));
}

void Measuring::OnNodeChanged(QTreeWidgetItem* item)
{
    if (!item || !(item->flags() & Qt::ItemIsUserCheckable) || !item->data(0, Qt::CheckStateRole).isValid())
        return;
    Curve* curve = FindCurve(ChannelTree::Tag(item));
    if (!curve)
        return;
    const QString key = ChannelTree::Key(item);
    const bool checked = item->checkState(0) == Qt::Checked;
    // The tree writes its boxes from the model too: only a box that now differs from what it
    // shows is a click.
    const Statistic* statistic = curve->GetStatisticFromKey(key);
    if ((statistic ? statistic->Visible() : curve->Visible()) == checked)
        return;
    if (!curve->EnableElement(key, checked)) {
        QSignalBlocker quiet(item->treeWidget());
        item->setCheckState(0, checked ? Qt::Unchecked : Qt::Checked);
        return;
    }
    if (ChartAdapter* chart = Chart()) {
        curve->UpdateChart(chart, false);
        chart->Replot();
    }
    SetChanged(true);
    m_cHost.UpdateToolStates();
}
