// SPDX-License-Identifier: GPL-3.0-or-later
// Page layout, head and foot of the report pages.
#include "ReportPageBuilder.h"

#include "Numeric.h"
#include "ReportDocument.h"
#include "ResStrings.h"
#include "Settings.h"

#include <algorithm>

namespace {

// The leading number of a stored value, as the page setup shows it, or the default when
// nothing is stored.
double Stored(Settings::Id id, double fallback)
{
    const QString value = Settings::StoredValue(id);
    return value.trimmed().isEmpty() ? fallback : LeadingNumber(value);
}

// Head and foot texts are drawn a little smaller than the table font.
constexpr double HeadFootPoints = 9.0;

} // namespace

void ReportPageBuilder::LoadSettings()
{
    m_dLeft = std::max(0.0, Stored(Settings::Id::ReportLeft, DefaultLeft));
    m_dRight = std::max(0.0, Stored(Settings::Id::ReportRight, DefaultRight));
    m_dTop = std::max(0.0, Stored(Settings::Id::ReportTop, DefaultTop));
    m_dBottom = std::max(0.0, Stored(Settings::Id::ReportBottom, DefaultBottom));
    m_dHeadHeight = std::max(0.0, Stored(Settings::Id::ReportHeadHeight, DefaultHeadHeight));
    m_dFootHeight = std::max(0.0, Stored(Settings::Id::ReportFootHeight, DefaultFootHeight));
    m_bDrawLine = Stored(Settings::Id::ReportDrawLine, 1) != 0;
}

ReportPage* ReportPageBuilder::AddPage(qint32 orientation, const QString& headLeft, const QString& headCenter,
    const QString& headRight, const QString& footLeft, const QString& footCenter, const QString& footRight)
{
    if (!m_pDocument)
        return nullptr;
    ReportPage& page = m_pDocument->AddPage(orientation == 2);
    m_iPageWidth = page.Width();
    m_iPageHeight = page.Height();

    const double left = m_dLeft * TwipsPerMm;
    const double width = m_iPageWidth - (m_dLeft + m_dRight) * TwipsPerMm;
    const double headBottom = (m_dTop + m_dHeadHeight) * TwipsPerMm;
    const double footTop = m_iPageHeight - (m_dBottom + m_dFootHeight) * TwipsPerMm;
    const double gap = TwipsPerMm;

    QString fontName = Settings::StoredValue(Settings::Id::TableFontName);
    if (fontName.isEmpty())
        fontName = QStringLiteral("Arial");
    const auto row = [&](const QString& leftText, const QString& center, const QString& right, double top, bool head) {
        const QString texts[] = { leftText, center, right };
        const int aligns[] = { ReportPage::AlignLeft, ReportPage::AlignCenter, ReportPage::AlignRight };
        for (int i = 0; i < 3; ++i) {
            if (texts[i].isEmpty())
                continue;
            page.SetFont(fontName, HeadFootPoints, head && i == 0);
            int textWidth = 0;
            int textHeight = 0;
            page.MeasureText(texts[i], textWidth, textHeight);
            page.SetTextAlign(aligns[i]);
            // The head sits on its line, the foot hangs from its line.
            const double y = head ? top - textHeight : top;
            page.DrawText(texts[i], left, y, width, textHeight);
        }
    };
    row(headLeft, headCenter, headRight, headBottom - gap, true);
    row(footLeft, footCenter, footRight, footTop + gap, false);
    page.SetTextAlign(ReportPage::AlignLeft);
    if (m_bDrawLine) {
        page.SetPenStyle(ReportPage::PenSolid);
        page.SetPenWidth(1);
        page.DrawLine(left, headBottom, left + width, headBottom);
        page.DrawLine(left, footTop, left + width, footTop);
    }
    return &page;
}

void ReportPageBuilder::SetPageNumber(ReportPage& page, qsizetype number, qsizetype total)
{
    QString text = GetResString(462);
    text.replace(QLatin1String("%s1"), QString::number(number));
    text.replace(QLatin1String("%s2"), QString::number(total));
    page.ReplaceText(QStringLiteral("%PAGE%"), text);
}

void ReportPageBuilder::NumberPages(ReportDocument& document)
{
    const qsizetype total = document.PageCount();
    for (qsizetype i = 0; i < total; ++i)
        SetPageNumber(document.Page(i), i + 1, total);
}
