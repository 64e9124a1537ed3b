// SPDX-License-Identifier: GPL-3.0-or-later
#include "Curve.h"

#include "ChartAdapter.h"
#include "CurveGrid.h"
#include "Logging.h"
#include "MatrixScriptEngine.h"
#include "ResStrings.h"
#include "Settings.h"
#include "TimeValueTransformator.h"

#include <QStringList>
#include <QTreeWidget>

#include <algorithm>
#include <limits>

namespace {

std::function<bool(Curve&)>& EditHandler()
{
    static std::function<bool(Curve&)> handler;
    return handler;
}

struct DefaultStatistic
{
    const char* id;
    int nameId;
    bool visible;
    qint32 displayType;
    const char* formulaValue;
    const char* formulaTime;
    const char* format; // nullptr: the count format built from the string table
    const char* subKey;
};

const DefaultStatistic DefaultStatistics[] = {
    { "1", 350, true, 1, "RESULT = max(cols(DATA, 1, 1))", "RESULT = max_at(cols(DATA, 1, 1))", "0.00 X", "\\Maximum" },
    { "2", 352, true, 1, "RESULT = mean(cols(DATA, 1, 1))", "", "0.00 X", "\\Average" },
    { "3", 351, true, 1, "RESULT = min(cols(DATA, 1, 1))", "RESULT = min_at(cols(DATA, 1, 1))", "0.00 X", "\\Minimum" },
    { "6", 358, false, 0, "RESULT = sum((cols(DATA, 1, 1) - mean(cols(DATA, 1, 1)))^2) / count(cols(DATA, 1, 1))", "",
        "0.00 X\u00B2", "\\Streuung" },
    { "4", 353, false, 0, "RESULT = sum(cols(DATA, 1, 1))", "", "0.00 X", "\\Sum" },
    { "5", 354, false, 0, "RESULT = count(cols(DATA, 1, 1))", "", nullptr, "\\Count" },
};

QStringList TitleEntries(const QString& title)
{
    QStringList entries = title.split(QStringLiteral(" / "));
    for (QString& entry : entries)
        entry = entry.trimmed();
    return entries;
}

} // namespace

Curve::Curve()
{
    const QString indizes = QString::fromLatin1(Settings::KeyIndizes);
    for (const DefaultStatistic& definition : DefaultStatistics) {
        auto statistic = std::make_unique<Statistic>();
        statistic->SetID(QString::fromLatin1(definition.id));
        statistic->SetName(GetResString(definition.nameId));
        statistic->SetVisible(definition.visible);
        statistic->SetDisplayType(definition.displayType);
        statistic->SetFormulaValue(QString::fromLatin1(definition.formulaValue));
        statistic->SetFormulaTime(QString::fromLatin1(definition.formulaTime));
        const QString format = definition.format ? QString::fromUtf8(definition.format)
                                                 : QStringLiteral("0 \"") + GetResString(356) + QLatin1Char('"');
        statistic->ReadFromRegistry(Hive::CurrentUser, indizes + QString::fromLatin1(definition.subKey), format);
        m_cStatistics.push_back(std::move(statistic));
    }
    for (const auto& statistic : m_cStatistics)
        statistic->SetUsed(false);
}

Curve::~Curve() = default;

void Curve::SetUnit(const QString& unit)
{
    m_sUnit = unit;
    for (const auto& cursor : m_cCursors)
        cursor->SetUnit(unit);
}

void Curve::SetSeriesID(qint32 id)
{
    m_lSeriesID = id;
    m_bChartDirty = true;
    RetagCursors();
}

void Curve::RetagCursors()
{
    for (size_t i = 0; i < m_cCursors.size(); ++i)
        m_cCursors[i]->SetTag(static_cast<qint32>(i + 1) * 100 + m_lSeriesID);
}

qint16 Curve::YAxis() const
{
    if (m_cChart && m_lSeriesID >= 0 && m_lSeriesID < m_cChart->SeriesCount())
        return static_cast<qint16>(m_cChart->SeriesAxis(m_lSeriesID));
    return m_iRequestedAxis;
}

void Curve::SetYAxis(qint16 axis)
{
    if (axis != 0 && axis != 1)
        return;
    m_iRequestedAxis = axis;
    if (!m_cChart || m_lSeriesID < 0 || m_lSeriesID >= m_cChart->SeriesCount())
        return;
    const int current = m_cChart->SeriesAxis(m_lSeriesID);
    if (current == axis)
        return;
    // The unit leaves the title of the old axis and joins that of the new one.
    QStringList entries = m_cChart->AxisTitle(current).split(QStringLiteral(" / "));
    const qsizetype at = TitleEntries(m_cChart->AxisTitle(current)).indexOf(m_sUnit.trimmed());
    if (at >= 0)
        entries.removeAt(at);
    m_cChart->SetAxisTitle(current, entries.join(QStringLiteral(" / ")));
    const QString title = m_cChart->AxisTitle(axis);
    m_cChart->SetAxisTitle(axis, title.isEmpty() ? m_sUnit : title + QStringLiteral(" / ") + m_sUnit);
    m_cChart->SetSeriesAxis(m_lSeriesID, axis);
}

DataMatrixPtr Curve::Channel(const QString& key) const
{
    for (const CurveChannel& channel : m_cChannels)
        if (channel.key == key)
            return channel.matrix;
    return nullptr;
}

Statistic* Curve::FindStatistic(const QString& id) const
{
    for (const auto& statistic : m_cStatistics)
        if (statistic->ID() == id)
            return statistic.get();
    return nullptr;
}

void Curve::AddMatrix(const DataMatrixPtr& matrix)
{
    if (!matrix)
        return;
    const QString key = QString::number(matrix->ModuleAddress()) + QLatin1Char('$') + matrix->ChannelID();
    if (Channel(key)) {
        WriteLog(QStringLiteral("error adding matrix to curve"),
            QStringLiteral("The matrix from module ") + QString::number(matrix->ModuleAddress())
                + QStringLiteral(" with the channel-id ") + matrix->ChannelID() + QStringLiteral(" (")
                + matrix->ChannelName() + QStringLiteral(") caused an error ")
                + QStringLiteral("This key is already associated with an element of this collection (457)")
                + QStringLiteral(" when adding it to the curve ") + m_sName + QLatin1Char('.'),
            QStringLiteral("Curve.AddMatrix"), LogLevel::Error);
        return;
    }
    m_cChannels.push_back({ key, matrix });
    // Every channel added names the curve; callers set name and unit after the channels.
    m_sName = matrix->ChannelName();
    SetUnit(matrix->Unit());
    m_bVisible = true;
}

void Curve::RemoveMatrix(const QString& key)
{
    if (key.isEmpty())
        return;
    std::erase_if(m_cChannels, [&](const CurveChannel& channel) { return channel.key == key; });
}

void Curve::RemoveAll()
{
    m_cChannels.clear();
}

bool Curve::EditProperties()
{
    return EditHandler() ? EditHandler()(*this) : false;
}

void Curve::SetEditPropertiesHandler(std::function<bool(Curve&)> handler)
{
    EditHandler() = std::move(handler);
}

qint32 Curve::UpdateData(double dateFrom, double dateTo, TimeValueTransformator& transformator)
{
    Q_UNUSED(dateFrom);
    Q_UNUSED(dateTo);
    if (!m_cResult)
        m_cResult = std::make_shared<DataMatrix>();

    // Each channel goes onto the grid; its raw block is gone from here on.
    transformator.Clear();
    for (size_t n = 0; n < m_cChannels.size(); ++n) {
        DataMatrix& channel = *m_cChannels[n].matrix;
        const QString name = QString::number(n);
        MatrixBlockPtr raw = channel.DataBlock();
        if (!raw)
            continue;
        // Let go, so that the grid may take the block over; it is left alone when it doesn't.
        channel.SetDataBlock(nullptr);
        transformator.Add(std::move(raw), name, channel.DataType());
        const MatrixBlockPtr grid = transformator.Data(name);
        channel.SetDataBlock(grid ? grid : raw);
    }

    MatrixScriptEngine* engine = g_cScriptEngine;
    qint32 status = -1;
    const MatrixBlockPtr single = m_cChannels.size() == 1 ? m_cChannels.front().matrix->DataBlock() : nullptr;
    if (engine && single && single->Columns() >= 2) {
        // One channel is its own sum: the result is its grid block, not a copy of it.
        m_cResult->SetDataBlock(single);
        status = 0;
    } else if (engine) {
        if (!m_cResult->DataBlock() || m_cResult->DataBlock() == single)
            m_cResult->SetDataBlock(MatrixBlock::Create());
        engine->Variables().Clear();
        m_cResult->DataBlock()->SetName(QStringLiteral("RESULT"));
        engine->Variables().Add(m_cResult->DataBlock());
        QString script = QStringLiteral("RESULT = ");
        for (size_t n = 0; n < m_cChannels.size(); ++n) {
            const QString name = QStringLiteral("CHANNEL_") + QString::number(n);
            if (const MatrixBlockPtr& block = m_cChannels[n].matrix->DataBlock()) {
                block->SetName(name);
                engine->Variables().Add(block);
            }
            script += (n > 0 ? QStringLiteral(" + ") : QString()) + name;
        }
        engine->SetScript(script);
        status = engine->Execute();
    }
    if (status != 0) {
        m_cResult.reset();
        return status;
    }

    const MatrixBlockPtr& result = m_cResult->DataBlock();
    result->SetName(QStringLiteral("RESULT"));
    if (!m_cChannels.empty())
        m_cResult->SetDataType(m_cChannels.front().matrix->DataType());
    // Statistics nobody shows are computed when they are first asked for.
    for (const auto& statistic : m_cStatistics) {
        statistic->MarkStale();
        if (statistic->Used())
            RefreshStatistic(*statistic);
    }
    m_bChartDirty = true;
    return 0;
}

qsizetype Curve::BlankOutside(double from, double to)
{
    const MatrixBlockPtr block = m_cResult ? m_cResult->DataBlock() : nullptr;
    if (!block || block->Columns() < 2)
        return 0;
    qsizetype blanked = 0;
    for (qsizetype row = 0; row < block->Rows(); ++row) {
        const double time = block->At(row, 0);
        if (time >= from && time < to)
            continue;
        for (qsizetype column = 1; column < block->Columns(); ++column) {
            double& value = block->At(row, column);
            if (value != block->NoValue()) {
                value = block->NoValue();
                ++blanked;
            }
        }
    }
    if (blanked == 0)
        return 0;
    for (const auto& statistic : m_cStatistics) {
        statistic->MarkStale();
        if (statistic->Used())
            RefreshStatistic(*statistic);
    }
    m_bChartDirty = true;
    return blanked;
}

void Curve::RefreshStatistic(Statistic& statistic)
{
    if (!statistic.Stale() || !m_cResult || !m_cResult->DataBlock())
        return;
    if (statistic.Update(m_cResult->DataBlock()) != StatisticStatus::Ok)
        statistic.SetVisible(false);
}

int Curve::DistributeAxisTitle()
{
    const auto append = [&](int axis) {
        const QString title = m_cChart->AxisTitle(axis);
        m_cChart->SetAxisTitle(axis, title.isEmpty() ? m_sUnit : title + QStringLiteral(" / ") + m_sUnit);
        return axis;
    };
    if (m_bFixedAxis)
        return append(m_iRequestedAxis == 1 ? 1 : 0);
    if (m_cChart->AxisTitle(ChartAxis::Y1).isEmpty() || m_iRequestedAxis == -1)
        return append(0);
    const QString unit = m_sUnit.trimmed();
    if (TitleEntries(m_cChart->AxisTitle(ChartAxis::Y1)).contains(unit) || m_iRequestedAxis == 0)
        return append(0);
    if (m_iRequestedAxis == 1 && TitleEntries(m_cChart->AxisTitle(ChartAxis::Y2)).contains(unit))
        return append(1);
    return append(0);
}

qint32 Curve::UpdateChart(ChartAdapter* chart, bool fitRange)
{
    if (!m_cChart)
        m_cChart = chart;
    if (!m_cChart)
        return NoView;
    ChartAdapter& target = *m_cChart;

    const bool isNew = m_lSeriesID == -1;
    if (isNew) {
        m_lSeriesID = target.SeriesCount();
        RetagCursors();
    }

    const MatrixBlockPtr block = m_cResult ? m_cResult->DataBlock() : nullptr;
    if (m_bChartDirty && block && block->Columns() >= 2) {
        const qsizetype rows = block->Rows();
        target.OpenData(std::max(target.SeriesCount(), m_lSeriesID + 1), rows);
        const bool secondAxisShown = target.AxisVisible(ChartAxis::Y2);
        if (isNew) {
            const int axis = DistributeAxisTitle();
            target.SetSeriesAxis(m_lSeriesID, axis);
        }
        const int axis = target.SeriesAxis(m_lSeriesID);
        if (!secondAxisShown && axis != ChartAxis::Y2)
            target.SetAxisVisible(ChartAxis::Y2, false);

        double min = target.AxisMin(axis);
        double max = target.AxisMax(axis);
        // One scratch buffer serves all curves: the chart copies the values.
        static thread_local std::vector<double> values;
        values.resize(static_cast<size_t>(rows));
        const std::span<const double> column = block->Column(1);
        const double noValue = block->NoValue();
        for (qsizetype i = 0; i < rows; ++i) {
            const double value = column[static_cast<size_t>(i)];
            if (value == noValue) {
                values[static_cast<size_t>(i)] = ChartAdapter::HiddenPoint;
                continue;
            }
            values[static_cast<size_t>(i)] = value;
            if (fitRange) {
                min = std::min(min, value);
                max = std::max(max, value);
            }
        }
        target.SetValues(m_lSeriesID, values);
        if (fitRange)
            target.SetAxisRange(axis, min, max);
        target.CloseData();
        m_bChartDirty = false;
    }

    target.SetSeriesVisible(m_lSeriesID, m_bVisible);
    target.SetSeriesLegend(
        m_lSeriesID, m_sUnit.isEmpty() ? m_sName : m_sName + QStringLiteral(" (") + m_sUnit + QLatin1Char(')'));
    m_cSeriesProperties.Apply(&target, m_lSeriesID);

    const QColor color = CurveColors::ToColor(m_cSeriesProperties.Color);
    const int axis = target.SeriesAxis(m_lSeriesID);
    for (const auto& statistic : m_cStatistics) {
        if (statistic->Used())
            RefreshStatistic(*statistic);
        if (statistic->Used() && statistic->DisplayType() == Statistic::DisplayLine) {
            if (statistic->ConstantLine() == -1) {
                const int line = target.AddConstantLine();
                target.SetConstantLineColor(line, color);
                target.SetConstantLineWidth(line, 1);
                statistic->SetConstantLine(line);
            }
            const int line = statistic->ConstantLine();
            if (statistic->Visible() && m_bVisible) {
                target.SetConstantLineValue(line, statistic->Value());
                target.SetConstantLineAxis(line, axis);
                target.SetConstantLineColor(line, color);
                target.SetConstantLineHidden(line, false);
            } else {
                target.SetConstantLineHidden(line, true);
            }
        } else if (!statistic->Used() && statistic->ConstantLine() != -1) {
            target.SetConstantLineHidden(statistic->ConstantLine(), true);
        }
    }

    for (const auto& cursor : m_cCursors) {
        if (cursor->CursorStatistic().Visible() && m_bVisible)
            cursor->SetPoint(cursor->Index(), cursor->Value(), static_cast<qint16>(m_lSeriesID), cursor->Axis(),
                cursor->DateTime(), 0);
        else
            cursor->Hide();
    }
    return 0;
}

qint32 Curve::UpdateGrid(CurveGrid* grid)
{
    if (grid)
        m_cGrid = grid;
    if (!m_cGrid)
        return NoView;
    if (m_cResult) {
        m_cResult->SetChannelName(m_sName);
        m_cResult->SetUnit(m_sUnit);
        m_cGrid->AddMatrix(m_cResult, m_sID);
    }
    return 0;
}

void Curve::UpdateStatisticFormats()
{
    const QString indizes = QString::fromLatin1(Settings::KeyIndizes) + QLatin1Char('\\');
    // Looked up under the display name, which for some statistics differs from the key the
    // constructor reads; those find no value and keep an empty format.
    for (const auto& statistic : m_cStatistics)
        statistic->ReadFromRegistry(Hive::CurrentUser, indizes + statistic->Name(), QString());
    for (const auto& cursor : m_cCursors)
        cursor->UpdateFormat();
}
