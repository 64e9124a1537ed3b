// SPDX-License-Identifier: GPL-3.0-or-later
// The full-page chart report: the chart stretched to the whole room between head and foot.
#include "FullPageChartReport.h"

#include "BuiltInReports.h"
#include "Calendar.h"
#include "Formatter.h"
#include "Globals.h"
#include "Measuring.h"
#include "ReportDocument.h"
#include "ReportPageBuilder.h"
#include "ResStrings.h"

#include <QPicture>

FullPageChartReport::FullPageChartReport()
    : ReportInterface(
        g_lLangOffset >= 1000 ? QStringLiteral("Full-page chart report") : QStringLiteral("Diagrammreport ganzseitig"),
        2)
{ }

void FullPageChartReport::Execute(Measuring* measuring, ReportDocument* document, qint32& status)
{
    BuiltInReports::Start run;
    if (!BuiltInReports::Begin(measuring, document, status, run))
        return;
    ReportPageBuilder& builder = run.builder;

    const Formatter formatter;
    document->SetTitle(GetResString(453) + QLatin1Char(' ') + BuiltInReports::PeriodTitle(*measuring));
    const QString head = GetResString(464) + QLatin1Char(' ') + measuring->Name() + QLatin1Char(' ')
        + formatter.GeneralDate(measuring->StartDate()) + QStringLiteral(" - ")
        + formatter.GeneralDate(measuring->EndDate());
    ReportPage* page
        = builder.AddPage(Orientation(), head, QString(), formatter.FormatDate(Calendar::Now(), u"Short Date"),
            BuiltInReports::CompanyLine(), QString(), QStringLiteral("%PAGE%"));
    if (!page) {
        status = -2;
        return;
    }

    // The chart is drawn in colour already: the view has no black-and-white output to switch.
    QPicture picture;
    if (measuring->GetDiagrammAsPicture(picture, Orientation() == 1 ? 1 : 0) != 0)
        return;

    const double left = builder.Left() * TwipsPerMm;
    const double top = (builder.Top() + builder.HeadHeight()) * TwipsPerMm;
    const double width = builder.PageWidth() - left - builder.Right() * TwipsPerMm;
    const double height = builder.PageHeight()
        - (builder.Top() + builder.Bottom() + builder.HeadHeight() + builder.FootHeight()) * TwipsPerMm;
    // Stretched to the rectangle, whatever the picture's own aspect.
    page->DrawPicture(picture, left, top, width, height);
    BuiltInReports::Frame(*page, left, top, width, height);
}
