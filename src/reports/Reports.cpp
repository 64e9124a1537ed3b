// SPDX-License-Identifier: GPL-3.0-or-later
// The list of built-in reports, and the texts and settings they share.
#include "ChartReport.h"
#include "ChartSpecialReport.h"
#include "ReportInterface.h"
#include "TableReport.h"

#include "Formatter.h"
#include "Measuring.h"
#include "Numeric.h"
#include "Settings.h"

#include <QRegularExpression>
#include <QStringList>

#include <cmath>
#include <functional>
#include <new>

void LoadReports(ReportCollection& reports)
{
    const std::function<ReportPtr()> factories[] = {
        [] { return std::make_shared<ChartReport>(); },
        [] { return std::make_shared<TableReport>(); },
        [] { return std::make_shared<ChartSpecialReport>(); },
    };
    for (const auto& create : factories) {
        ReportPtr report;
        try {
            report = create();
        } catch (const std::bad_alloc&) {
            // A report that cannot be made is left out; the next one takes its number.
            continue;
        }
        report->SetID(QStringLiteral("REP_") + QString::number(reports.Count()));
        reports.Add(report);
    }
}

namespace BuiltInReports {

QString PeriodTitle(const Measuring& measuring)
{
    const Formatter formatter;
    return measuring.Name() + QStringLiteral(" (") + formatter.FormatDate(measuring.StartDate(), u"dd.mm.yyyy")
        + QStringLiteral(" - ") + formatter.FormatDate(measuring.EndDate(), u"dd.mm.yyyy") + QLatin1Char(')');
}

QString CompanyLine()
{
    const QString name = Settings::Value(Settings::Id::CompanyName);
    const QString address = Settings::Value(Settings::Id::CompanyAddress);
    QString text = name;
    if (!name.isEmpty() && !address.isEmpty())
        text += QLatin1Char('\n');
    text += address;
    static const QRegularExpression lineBreak(QStringLiteral("\r\n|\n|\r"));
    return text.split(lineBreak, Qt::SkipEmptyParts).join(QStringLiteral(" \u00B7 "));
}

void TableFont(QString& name, double& size)
{
    // Reading writes the default back when the stored value is empty or 0.
    name = Settings::Value(Settings::Id::TableFontName);
    size = LeadingNumber(Settings::Value(Settings::Id::TableFontSize));
}

int WholeTwips(double value)
{
    return static_cast<int>(std::nearbyint(value));
}

} // namespace BuiltInReports
