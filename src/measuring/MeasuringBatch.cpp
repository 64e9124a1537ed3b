// SPDX-License-Identifier: GPL-3.0-or-later
// What report batches and serial reports do to a view opened from a template: its channels
// bound to another logger or to chosen channels, the page cut to a period, and cursors on
// the extremes.
#include "Measuring.h"

#include "ChartAdapter.h"
#include "ChartAnnotation.h"
#include "Cursor.h"
#include "Curve.h"
#include "Logging.h"
#include "ModuleBox.h"
#include "ctl_NavBar.h"
#include "frm_GraphicView.h"

namespace {

// What a curve showed before its channels were exchanged.
struct Look
{
    QString name;
    QString unit;
    bool visible = true;
};

// A curve that carried the name and unit of its first channel is named after its new one;
// a name or unit of its own stays.
void Rename(Curve& curve, const Look& look, const DataMatrix& before, const DataMatrix& after)
{
    curve.SetName(look.name != before.ChannelName() ? look.name : after.ChannelName());
    curve.SetUnit(look.unit != before.Unit() ? look.unit : after.Unit());
    curve.SetVisible(look.visible);
}

} // namespace

void Measuring::ChannelsChanged()
{
    if (!m_cGraph)
        return;
    m_cGraph->nav_Navigate()->SetDateFirst(FirstDataDate());
    m_cGraph->nav_Navigate()->SetDateLast(LastDataDate());
}

qsizetype Measuring::ExchangeLogger(const QString& logger)
{
    qsizetype bound = 0;
    std::vector<QString> emptied;
    for (const auto& curve : m_cCurves) {
        if (curve->Channels().empty())
            continue;
        const std::vector<CurveChannel> before = curve->Channels();
        const DataMatrixPtr first = before.front().matrix;
        const Look look { curve->Name(), curve->Unit(), curve->Visible() };
        std::vector<DataMatrixPtr> after;
        for (const CurveChannel& channel : before) {
            const QString address = QString::number(channel.matrix->ModuleAddress());
            const QString id = logger + QLatin1Char('#') + channel.matrix->ChannelID().section(QLatin1Char('#'), 1);
            const ModuleBoxPtr box = m_cDataModules.Item(address);
            const DataMatrixPtr other = box ? box->Channel(id) : nullptr;
            if (!other) {
                WriteLog(QStringLiteral("channel not offered"),
                    QStringLiteral("The logger %1 has no channel %2$%3: the view %4 shows it without that channel.")
                        .arg(logger, address, id, m_sName),
                    QStringLiteral("Measuring.ExchangeLogger"), LogLevel::Skipped);
                continue;
            }
            after.push_back(other);
        }
        curve->RemoveAll();
        for (const DataMatrixPtr& matrix : after)
            curve->AddMatrix(matrix);
        bound += qsizetype(after.size());
        if (after.empty())
            emptied.push_back(curve->ID());
        else
            Rename(*curve, look, *first, *after.front());
    }
    for (const QString& id : emptied)
        RemoveCurve(id);
    ChannelsChanged();
    return bound;
}

bool Measuring::BindCurve(Curve& curve, const QString& channelKey)
{
    const QString address = channelKey.section(QLatin1Char('$'), 0, 0);
    const ModuleBoxPtr box = OfferedModules().Item(address);
    const DataMatrixPtr channel = box ? box->Channel(channelKey.section(QLatin1Char('$'), 1)) : nullptr;
    if (!channel)
        return false;
    m_cDataModules.Add(box);
    const bool visible = curve.Visible();
    curve.RemoveAll();
    curve.AddMatrix(channel);
    curve.SetVisible(visible);
    ChannelsChanged();
    return true;
}

void Measuring::CutToPeriod(double from, double to)
{
    qsizetype blanked = 0;
    for (const auto& curve : m_cCurves)
        blanked += curve->BlankOutside(from, to);
    if (blanked > 0)
        Refresh(false);
}

void Measuring::MarkExtremes(bool minimum, bool maximum)
{
    ChartAdapter* chart = Chart();
    if (!chart || (!minimum && !maximum))
        return;
    struct Extreme
    {
        Curve* curve = nullptr;
        qsizetype row = -1;
        double value = 0.0;
    };
    Extreme greatest;
    Extreme smallest;
    for (const auto& curve : m_cCurves) {
        const MatrixBlockPtr block = curve->Result() ? curve->Result()->DataBlock() : nullptr;
        if (!block || block->Columns() < 2 || !curve->Visible())
            continue;
        for (qsizetype row = 0; row < block->Rows(); ++row) {
            const double value = block->At(row, 1);
            if (value == block->NoValue())
                continue;
            if (!greatest.curve || value > greatest.value)
                greatest = { curve.get(), row, value };
            if (!smallest.curve || value < smallest.value)
                smallest = { curve.get(), row, value };
        }
    }
    if (maximum && greatest.curve)
        greatest.curve->SetCursor(qint32(greatest.row), chart, &chart->Annotations(), 0);
    if (minimum && smallest.curve)
        smallest.curve->SetCursor(qint32(smallest.row), chart, &chart->Annotations(), 0);
    for (const auto& curve : m_cCurves)
        curve->UpdateStatistic(m_cGraph->trv_Statistics());
    RedrawCursors();
}
