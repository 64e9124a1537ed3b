// SPDX-License-Identifier: GPL-3.0-or-later
// The page layout shared by all reports: margins, head and foot from the settings, A4 pages
// with their head and foot texts drawn, and the page numbers once all pages exist.
#pragma once

#include <QString>

class ReportDocument;
class ReportPage;

class ReportPageBuilder
{
public:
    // Reads the layout of the "Reports" section, the user's values before the machine's.
    void LoadSettings();

    ReportDocument* Document() const { return m_pDocument; }
    void SetDocument(ReportDocument* document) { m_pDocument = document; }

    // A new page (orientation 2 is landscape) with its head and foot drawn; nullptr without
    // a document. "%PAGE%" in a text is filled by SetPageNumber.
    ReportPage* AddPage(qint32 orientation, const QString& headLeft, const QString& headCenter,
        const QString& headRight, const QString& footLeft, const QString& footCenter, const QString& footRight);

    // Layout in millimetres.
    double Left() const { return m_dLeft; }
    double Right() const { return m_dRight; }
    double Top() const { return m_dTop; }
    double Bottom() const { return m_dBottom; }
    double HeadHeight() const { return m_dHeadHeight; }
    double FootHeight() const { return m_dFootHeight; }
    bool DrawLine() const { return m_bDrawLine; }
    // The size in twips of A4 in the orientation of the last page made (portrait before).
    int PageWidth() const { return m_iPageWidth; }
    int PageHeight() const { return m_iPageHeight; }

    // Puts "Seite <number> von <total>" in place of "%PAGE%" on the page.
    static void SetPageNumber(ReportPage& page, qsizetype number, qsizetype total);
    // Numbers every page of the document.
    static void NumberPages(ReportDocument& document);

    // The layout a page setup starts from when nothing is stored.
    static constexpr double DefaultLeft = 25;
    static constexpr double DefaultRight = 10;
    static constexpr double DefaultTop = 15;
    static constexpr double DefaultBottom = 10;
    static constexpr double DefaultHeadHeight = 15;
    static constexpr double DefaultFootHeight = 10;

private:
    ReportDocument* m_pDocument = nullptr;
    double m_dLeft = DefaultLeft;
    double m_dRight = DefaultRight;
    double m_dTop = DefaultTop;
    double m_dBottom = DefaultBottom;
    double m_dHeadHeight = DefaultHeadHeight;
    double m_dFootHeight = DefaultFootHeight;
    bool m_bDrawLine = true;
    int m_iPageWidth = 11906;
    int m_iPageHeight = 16838;
};
