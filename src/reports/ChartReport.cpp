// SPDX-License-Identifier: GPL-3.0-or-later
// The chart report: facts of the view at the top (portrait) or left (landscape), the chart
// as a picture with a frame, and a legend line per curve.
#include "ChartReport.h"

#include "BuiltInReports.h"

#include "Calendar.h"
#include "Curve.h"
#include "CurveColors.h"
#include "Formatter.h"
#include "Measuring.h"
#include "ReportDocument.h"
#include "ReportPageBuilder.h"
#include "ResStrings.h"

#include <QPicture>

#include <algorithm>

using BuiltInReports::WholeTwips;

ChartReport::ChartReport()
    : ReportInterface(GetResString(460), 1)
{ }

void ChartReport::Execute(Measuring* measuring, ReportDocument* document, qint32& status)
{
    BuiltInReports::Start run;
    if (!BuiltInReports::Begin(measuring, document, status, run))
        return;
    ReportPageBuilder& builder = run.builder;
    const QString& fontName = run.fontName;
    const double fontSize = run.fontSize;

    const Formatter formatter;
    document->SetTitle(GetResString(453) + QLatin1Char(' ') + BuiltInReports::PeriodTitle(*measuring));
    ReportPage* page = builder.AddPage(Orientation(), GetResString(460), QString(),
        formatter.FormatDate(Calendar::Now(), u"Short Date"), BuiltInReports::CompanyLine(), QString(),
        QStringLiteral("%PAGE%"));
    if (!page) {
        status = -2;
        return;
    }

    // The chart is drawn 987 x 700 pixels, whatever the size of its window, so that its
    // texts keep a readable size on the page and every print of a view looks the same.
    QPicture picture;
    if (measuring->GetDiagrammAsPicture(picture, 2) != 0)
        return;
    const QSize pictureSize = picture.boundingRect().size();
    if (pictureSize.width() <= 0 || pictureSize.height() <= 0)
        return;

    const int x0 = WholeTwips(builder.Left() * TwipsPerMm);
    const int top = WholeTwips((builder.Top() + builder.HeadHeight()) * TwipsPerMm);
    const int width = WholeTwips(builder.PageWidth() - x0 - builder.Right() * TwipsPerMm);
    int y = top;

    // The value column starts right after the widest label as it measures in normal weight;
    // the labels are drawn bold, so a long one may touch its value.
    page->SetFont(fontName, fontSize, false);
    const QString projectLabel = GetResString(464);
    const QString customerLabel = GetResString(454);
    const QString periodLabel = GetResString(466);
    const QString channelsLabel = GetResString(465);
    int labelWidth = 0;
    for (const QString& label : { projectLabel, customerLabel, periodLabel, channelsLabel }) {
        int w = 0;
        int h = 0;
        page->MeasureText(label, w, h);
        labelWidth = std::max(labelWidth, w);
    }
    const int x1 = x0 + labelWidth;

    // Draws a text at x with its measured height and gives that height.
    const auto draw = [&](const QString& text, int x, bool bold) {
        page->SetFont(fontName, fontSize, bold);
        int w = 0;
        int h = 0;
        page->MeasureText(text, w, h);
        page->DrawText(text, x, y, width, h);
        page->SetFont(fontName, fontSize, false);
        return h;
    };
    const auto lineHeight = [&](const QString& text) {
        int w = 0;
        int h = 0;
        page->MeasureText(text, w, h);
        return h;
    };

    draw(projectLabel, x0, true);
    y += draw(measuring->Name(), x1, false);

    const MeasuringFile::Address& address = measuring->CustomerAddress();
    if (!address.Name.isEmpty()) {
        draw(customerLabel, x0, true);
        y += draw(address.Name, x1, false);
        QString lines;
        for (const QString* part : { &address.FirstName, &address.Street, &address.Place })
            if (!part->isEmpty())
                lines += *part + QLatin1Char('\n');
        // The blank gives a text that ends in a line break its last, empty line.
        const int linesHeight = lineHeight(lines + QLatin1Char(' '));
        if (!lines.isEmpty())
            page->DrawText(lines, x1, y, width, linesHeight);
        y += linesHeight;
        y += lineHeight(QStringLiteral("abc"));
    }

    const QString start = formatter.GeneralDate(measuring->StartDate());
    const QString end = formatter.GeneralDate(measuring->EndDate());
    draw(periodLabel, x0, true);
    int periodHeight = 0;
    if (Orientation() == 2) {
        y += draw(start, x1, false);
        periodHeight = draw(QStringLiteral("- ") + end, x1, false);
    } else {
        periodHeight = draw(start + QStringLiteral(" - ") + end, x1, false);
    }
    y += 2 * periodHeight;

    // The picture keeps its own aspect. In landscape it takes the right two thirds from the
    // top of the text block, which keeps the left third.
    int px = x0;
    int py = y;
    int pw = width;
    if (Orientation() == 2) {
        px = WholeTwips(x0 + width / 3.0);
        py = top;
        pw = WholeTwips(2.0 * width / 3.0);
    }
    const int ph = WholeTwips(double(pw) * pictureSize.height() / pictureSize.width());
    if (Orientation() != 2)
        y += ph;
    page->DrawPicture(picture, px, py, pw, ph);
    BuiltInReports::Frame(*page, px, py, pw, ph);

    // The legend may run over the foot: the report is always one page.
    draw(channelsLabel, x0, true);
    for (const auto& curve : measuring->Curves()) {
        QString text = curve->Name();
        if (!curve->Unit().isEmpty())
            text += QStringLiteral(" [") + curve->Unit() + QLatin1Char(']');
        const int h = lineHeight(text);
        page->SetPenWidth(3);
        page->SetPenStyle(ReportPage::PenSolid);
        page->SetPenColor(CurveColors::ToColor(curve->Properties().Color));
        page->DrawLine(x1, y + h / 2.0, x1 + 125, y + h / 2.0);
        page->SetPenWidth(1);
        y += draw(text, x1 + 175, false);
    }
}
