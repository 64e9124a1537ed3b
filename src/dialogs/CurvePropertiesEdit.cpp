// SPDX-License-Identifier: GPL-3.0-or-later
#include "CurvePropertiesEdit.h"

#include "Curve.h"

namespace {

bool SameLook(const SeriesProperties& a, const SeriesProperties& b)
{
    return a.Color == b.Color && a.LineWidth == b.LineWidth && a.LineStyle == b.LineStyle && a.Marker == b.Marker
        && a.Gallery == b.Gallery;
}

} // namespace

CurvePropertiesEdit CurvePropertiesEdit::FromCurve(const Curve& curve)
{
    CurvePropertiesEdit edit;
    edit.name = curve.Name();
    edit.unit = curve.Unit();
    edit.visible = curve.Visible();
    for (const auto& statistic : curve.Statistics()) {
        StatisticChoice choice;
        choice.id = statistic->ID();
        choice.name = statistic->Name();
        choice.used = statistic->Used();
        choice.canShow = statistic->DisplayType() == Statistic::DisplayLine;
        choice.shown = choice.canShow && choice.used && statistic->Visible();
        edit.statistics.push_back(choice);
    }
    edit.look = curve.Properties();
    edit.yAxis = curve.YAxis() == 1 ? 1 : 0;
    return edit;
}

bool CurvePropertiesEdit::IsValid() const
{
    return !name.trimmed().isEmpty();
}

void CurvePropertiesEdit::SetUsed(std::size_t row, bool used)
{
    if (row >= statistics.size())
        return;
    statistics[row].used = used;
    if (!used)
        statistics[row].shown = false;
}

void CurvePropertiesEdit::SetShown(std::size_t row, bool shown)
{
    if (row >= statistics.size())
        return;
    StatisticChoice& choice = statistics[row];
    if (!shown || (choice.canShow && choice.used))
        choice.shown = shown;
}

CurvePropertiesEdit::Result CurvePropertiesEdit::ApplyTo(Curve& curve) const
{
    Result result;
    if (!IsValid())
        return result;
    const QString trimmedName = name.trimmed();
    if (trimmedName != curve.Name()) {
        curve.SetName(trimmedName);
        result.changed = true;
    }
    if (unit != curve.Unit()) {
        curve.SetUnit(unit);
        result.changed = result.unitChanged = true;
    }
    if (visible != curve.Visible()) {
        curve.SetVisible(visible);
        result.changed = true;
    }
    for (const StatisticChoice& choice : statistics) {
        Statistic* statistic = curve.FindStatistic(choice.id);
        if (!statistic)
            continue;
        // A statistic draws its line only while it is used; the flag an unused one keeps is
        // replaced when it is used again, so that a line doesn't show up unasked.
        const bool wasShown = statistic->Used() && statistic->Visible();
        const bool shown = choice.used && choice.shown;
        if (statistic->Used() != choice.used) {
            statistic->SetUsed(choice.used);
            statistic->SetVisible(shown);
            result.changed = true;
        } else if (wasShown != shown) {
            statistic->SetVisible(shown);
            result.changed = true;
        }
    }
    if (!SameLook(look, curve.Properties())) {
        curve.SetProperties(look);
        result.changed = true;
    }
    const qint16 currentAxis = curve.YAxis() == 1 ? 1 : 0;
    if (yAxis != currentAxis) {
        curve.SetYAxis(yAxis);
        result.changed = result.axisChanged = true;
    }
    return result;
}
