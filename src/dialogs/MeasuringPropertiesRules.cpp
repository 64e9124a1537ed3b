// SPDX-License-Identifier: GPL-3.0-or-later
// What the view's properties dialog decides: the fields read from a view, their checks and what OK writes.
#include "MeasuringPropertiesRules.h"

#include "ChartAdapter.h"
#include "Measuring.h"
#include "Numeric.h"
#include "ResStrings.h"

#include <cmath>

namespace {

// A typed axis limit as the chart holds it: a power factor between -1 and 1 is folded.
std::optional<double> AxisValue(const MeasuringPropertiesEntries& entries, int axis, const QString& text)
{
    const std::optional<double> value = MeasuringPropertiesRules::ParseNumber(text);
    if (!value || !entries.axisCosPhi[static_cast<std::size_t>(axis)])
        return value;
    if (std::abs(*value) > 1.0)
        return std::nullopt;
    return FoldCosPhi(*value);
}

// Enough digits that an axis limit read and written back unchanged stays the same number.
QString NumberText(double value)
{
    return QString::number(value, 'g', 15);
}

} // namespace

const std::vector<std::pair<QString, int>>& MeasuringPropertiesRules::Units()
{
    static const std::vector<std::pair<QString, int>> units { { QStringLiteral("s"), 362 },
        { QStringLiteral("n"), 363 }, { QStringLiteral("h"), 364 }, { QStringLiteral("d"), 365 },
        { QStringLiteral("ww"), 366 }, { QStringLiteral("m"), 367 }, { QStringLiteral("yyyy"), 368 } };
    return units;
}

const std::vector<std::pair<qint32, int>>& MeasuringPropertiesRules::Galleries()
{
    static const std::vector<std::pair<qint32, int>> galleries { { 1, 403 }, { 2, 404 }, { 8, 405 } };
    return galleries;
}

MeasuringPropertiesEntries MeasuringPropertiesRules::Read(Measuring& view)
{
    MeasuringPropertiesEntries entries;
    entries.start = view.StartDate();
    entries.end = view.EndDate();
    entries.fromData = view.IntervalUnit().isEmpty();
    entries.unit = entries.fromData ? Units().front().first : view.IntervalUnit();
    entries.count = QString::number(entries.fromData ? 1 : view.IntervalCount());
    const GraphProperties& graph = view.Graph();
    entries.gallery = graph.Gallery;
    entries.autoScale = view.AutoScale();
    entries.grid = { graph.ShowYGrid1, graph.ShowYGrid2 };
    entries.view3D = graph.View3D;
    entries.legend = graph.Legend;
    entries.title = graph.Title;
    entries.statistics = view.ShowStatistics();
    if (const ChartAdapter* chart = view.Chart()) {
        for (int axis : { ChartAxis::Y1, ChartAxis::Y2 }) {
            entries.axisVisible[axis] = chart->AxisVisible(axis);
            entries.axisCosPhi[axis] = view.CosPhiView(axis);
            const auto shown = [&](double value) { return entries.axisCosPhi[axis] ? MeasuredCosPhi(value) : value; };
            entries.axisMin[axis] = NumberText(shown(chart->AxisMin(axis)));
            entries.axisMax[axis] = NumberText(shown(chart->AxisMax(axis)));
        }
    } else {
        entries.axisVisible = { false, false };
    }
    const MeasuringFile::Address& address = view.CustomerAddress();
    entries.company = address.Name;
    entries.contact = address.FirstName;
    entries.street = address.Street;
    entries.place = address.Place;
    entries.memo = address.Memo;
    return entries;
}

std::optional<double> MeasuringPropertiesRules::ParseNumber(const QString& text)
{
    QString plain = text.trimmed();
    plain.replace(QLatin1Char(','), QLatin1Char('.'));
    bool ok = false;
    const double value = plain.toDouble(&ok);
    if (!ok || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::optional<qint32> MeasuringPropertiesRules::ParseCount(const QString& text)
{
    bool ok = false;
    const qint32 count = text.trimmed().toInt(&ok);
    if (!ok || count < 1)
        return std::nullopt;
    return count;
}

MeasuringPropertiesProblems MeasuringPropertiesRules::Check(const MeasuringPropertiesEntries& entries)
{
    MeasuringPropertiesProblems problems;
    problems.period = !(entries.end > entries.start);
    problems.count = !entries.fromData && !ParseCount(entries.count);
    for (int axis : { ChartAxis::Y1, ChartAxis::Y2 }) {
        if (!entries.axisVisible[axis])
            continue;
        const auto min = AxisValue(entries, axis, entries.axisMin[axis]);
        const auto max = AxisValue(entries, axis, entries.axisMax[axis]);
        problems.axis[axis] = !min || !max || !(*min < *max);
    }
    return problems;
}

std::optional<int> MeasuringPropertiesRules::StepSeconds(const QString& unit, qint32 count)
{
    static const std::vector<std::pair<QString, int>> fixed { { QStringLiteral("s"), 1 }, { QStringLiteral("n"), 60 },
        { QStringLiteral("h"), 3600 }, { QStringLiteral("d"), 86400 } };
    if (count < 1)
        return std::nullopt;
    for (const auto& [code, seconds] : fixed)
        if (code == unit)
            return static_cast<int>(std::min<qint64>(qint64(seconds) * count, 86400));
    // Weeks, months and years have no time of day worth stepping through.
    if (unit == QLatin1String("ww") || unit == QLatin1String("m") || unit == QLatin1String("yyyy"))
        return 86400;
    return std::nullopt;
}

QString MeasuringPropertiesRules::DurationText(double start, double end)
{
    const double span = std::max(0.0, end - start);
    // Rounded to the minute first, so that 23:59:59.9 shows as a whole day.
    const qint64 minutes = std::llround(span * 24.0 * 60.0);
    const qint64 days = minutes / (24 * 60);
    const double hours = double(minutes % (24 * 60)) / 60.0;
    return QStringLiteral("%1 %2 %3 %4")
        .arg(days)
        .arg(GetResString(365))
        .arg(QString::number(hours, 'g', 4))
        .arg(GetResString(364));
}

bool MeasuringPropertiesRules::Apply(
    Measuring& view, const MeasuringPropertiesEntries& before, const MeasuringPropertiesEntries& after)
{
    if (Check(after).Any())
        return false;
    const bool period = before.start != after.start || before.end != after.end;
    const qint32 count = after.fromData ? 0 : *ParseCount(after.count);
    const bool resolution = before.fromData != after.fromData
        || (!after.fromData && (before.unit != after.unit || ParseCount(before.count) != count));
    const bool graph = before.gallery != after.gallery || before.grid != after.grid || before.view3D != after.view3D
        || before.legend != after.legend || before.title != after.title;
    const bool address = before.company != after.company || before.contact != after.contact
        || before.street != after.street || before.place != after.place || before.memo != after.memo;
    const bool autoScale = before.autoScale != after.autoScale;
    const bool statistics = before.statistics != after.statistics;
    std::array<bool, 2> axes {};
    for (int axis : { ChartAxis::Y1, ChartAxis::Y2 })
        axes[axis] = after.axisVisible[axis]
            && (ParseNumber(before.axisMin[axis]) != ParseNumber(after.axisMin[axis])
                || ParseNumber(before.axisMax[axis]) != ParseNumber(after.axisMax[axis]));
    if (!(period || resolution || graph || address || autoScale || statistics || axes[0] || axes[1]))
        return false;

    if (period) {
        view.SetStartDate(after.start);
        view.SetEndDate(after.end);
    }
    if (resolution) {
        view.SetIntervalUnit(after.fromData ? QString() : after.unit);
        view.SetIntervalCount(count);
    }
    if (graph) {
        GraphProperties& properties = view.Graph();
        properties.Gallery = after.gallery;
        properties.ShowYGrid1 = after.grid[0];
        properties.ShowYGrid2 = after.grid[1];
        properties.View3D = after.view3D;
        properties.Legend = after.legend;
        properties.Title = after.title;
    }
    if (address) {
        MeasuringFile::Address& customer = view.CustomerAddress();
        customer.Name = after.company;
        customer.FirstName = after.contact;
        customer.Street = after.street;
        customer.Place = after.place;
        customer.Memo = after.memo;
    }
    if (autoScale)
        view.SetAutoScale(after.autoScale);
    if (statistics)
        view.SetShowStatistics(after.statistics);
    view.Refresh(period || resolution);
    // The refresh scales the axes by the data; limits the user typed go on top of that.
    if (ChartAdapter* chart = view.Chart()) {
        for (int axis : { ChartAxis::Y1, ChartAxis::Y2 })
            if (axes[axis])
                chart->SetAxisRange(
                    axis, *AxisValue(after, axis, after.axisMin[axis]), *AxisValue(after, axis, after.axisMax[axis]));
    }
    return true;
}
