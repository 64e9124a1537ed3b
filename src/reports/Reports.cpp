// SPDX-License-Identifier: GPL-3.0-or-later
// The list of built-in reports, and the texts and settings they share.
#include "BuiltInReports.h"
#include "ChartReport.h"
#include "FullPageChartReport.h"
#include "ReportInterface.h"
#include "TableReport.h"

#include "Formatter.h"
#include "Measuring.h"
#include "Numeric.h"
#include "ReportDocument.h"
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
        [] { return std::make_shared<FullPageChartReport>(); },
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

bool Begin(Measuring* measuring, ReportDocument* document, qint32& status, Start& start)
{
    if (!measuring || !document) {
        status = -1;
        return false;
    }
    status = 0;
    start.builder.LoadSettings();
    start.builder.SetDocument(document);
    // Reading writes the default back when the stored value is empty or 0.
    start.fontName = Settings::Value(Settings::Id::TableFontName);
    start.fontSize = LeadingNumber(Settings::Value(Settings::Id::TableFontSize));
    return true;
}

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

int WholeTwips(double value)
{
    return static_cast<int>(std::nearbyint(value));
}

void Frame(ReportPage& page, double left, double top, double width, double height)
{
    page.SetPenStyle(ReportPage::PenSolid);
    page.SetPenWidth(1);
    page.DrawLine(left, top, left + width, top);
    page.DrawLine(left + width, top, left + width, top + height);
    page.DrawLine(left + width, top + height, left, top + height);
    page.DrawLine(left, top + height, left, top);
}

} // namespace BuiltInReports
