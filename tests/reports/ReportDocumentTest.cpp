// SPDX-License-Identifier: GPL-3.0-or-later
// The report document with the real font metrics: PDF pages, printing, the page layout and numbers.
#include "ReportDocument.h"
#include "ReportPageBuilder.h"
#include "Settings.h"

#include "QtPrinters.h"
#include "TempSettings.h"

#include <QFile>
#include <QLineF>
#include <QPrinter>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <vector>

namespace {

// The media boxes of the pages of a PDF file, in page order as written; empty when a box is
// not on a page object (a box on the page tree would be counted as a page).
std::vector<QSizeF> PdfPageSizes(const QString& fileName)
{
    QFile file(fileName);
    const QString pdf = file.open(QIODevice::ReadOnly) ? QString::fromLatin1(file.readAll()) : QString();
    static const QRegularExpression mediaBox(
        QStringLiteral(R"(/MediaBox\s*\[\s*([-\d.]+)\s+([-\d.]+)\s+([-\d.]+)\s+([-\d.]+)\s*\])"));
    std::vector<QSizeF> sizes;
    for (auto match = mediaBox.globalMatch(pdf); match.hasNext();) {
        const QRegularExpressionMatch box = match.next();
        sizes.emplace_back(box.captured(3).toDouble() - box.captured(1).toDouble(),
            box.captured(4).toDouble() - box.captured(2).toDouble());
    }
    static const QRegularExpression pageObject(QStringLiteral(R"(/Type\s*/Page(?![a-zA-Z]))"));
    return std::size_t(pdf.count(pageObject)) == sizes.size() ? sizes : std::vector<QSizeF> {};
}

struct DrawnText
{
    QString text;
    QRectF rect;
    int align;
    bool bold;
};

std::vector<DrawnText> TextsOf(const ReportPage& page)
{
    std::vector<DrawnText> texts;
    for (const ReportPage::Operation& op : page.Operations())
        if (op.kind == ReportPage::Operation::Text)
            texts.push_back({ op.text, op.rect, op.state.align, page.FontAt(op.state.font).bold() });
    return texts;
}

std::vector<QLineF> LinesOf(const ReportPage& page)
{
    std::vector<QLineF> lines;
    for (const ReportPage::Operation& op : page.Operations())
        if (op.kind == ReportPage::Operation::Line)
            lines.emplace_back(op.rect.topLeft(), op.rect.bottomRight());
    return lines;
}

ReportPage* AddPage(ReportPageBuilder& builder, qint32 orientation, const QString& headLeft,
    const QString& headCenter = {}, const QString& footLeft = {}, const QString& footRight = {})
{
    return builder.AddPage(orientation, headLeft, headCenter, QString(), footLeft, QString(), footRight);
}

} // namespace

TEST(ReportDocument, PdfAndPrinterGetOneA4PagePerPageInItsOrientation)
{
    constexpr bool landscapes[] = { false, true, false };
    QTemporaryDir dir;
    ReportDocument document;
    document.SetTitle(QStringLiteral("Lastgang"));
    for (const bool landscape : landscapes) {
        ReportPage& page = document.AddPage(landscape);
        page.SetFont(QStringLiteral("Arial"), 10, true);
        page.DrawText(QStringLiteral("Lastgang Halle 3"), 1417, 1000, 5000, 300);
        page.SetPenStyle(ReportPage::PenDot);
        page.DrawLine(1417, 1500, page.Width() - 567, 1500);
        page.DrawRect(1417, 2000, 3000, 2000);
    }
    const QString saved = dir.filePath(QStringLiteral("saved.pdf"));
    QString error;
    ASSERT_TRUE(document.SavePdf(saved, &error)) << error.toStdString();
    const QString printed = dir.filePath(QStringLiteral("printed.pdf"));
    {
        QPrinter printer(QPrinter::HighResolution);
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(printed);
        ASSERT_TRUE(document.PrintTo(printer));
    }
    // A4 in PostScript points.
    constexpr double shortPt = 595.28, longPt = 841.89;
    for (const QString& fileName : { saved, printed }) {
        SCOPED_TRACE(fileName.toStdString());
        const std::vector<QSizeF> sizes = PdfPageSizes(fileName);
        ASSERT_EQ(sizes.size(), std::size(landscapes));
        for (std::size_t i = 0; i < sizes.size(); ++i) {
            EXPECT_NEAR(sizes[i].width(), landscapes[i] ? longPt : shortPt, 1.0);
            EXPECT_NEAR(sizes[i].height(), landscapes[i] ? shortPt : longPt, 1.0);
        }
    }
}

// Margins 20 / 10 / 15 / 10 mm, head 15 and foot 10 mm: the head line lies at 30 mm = 1701
// twips, the foot line at 16838 - 20 mm = 15704, both from 1134 to 11906 - 10 mm = 11339.
TEST(ReportPageBuilder, DrawsHeadAndFootTextsTheirLinesUnlessTheSettingSaysNoAndPageNumbers)
{
    TempSettings roots;
    Settings::Write(Settings::Id::ReportLeft, QStringLiteral("20"));
    ReportDocument document;
    ReportPageBuilder builder;
    builder.LoadSettings();
    EXPECT_EQ(AddPage(builder, 1, QStringLiteral("Kopf")), nullptr) << "no document";
    builder.SetDocument(&document);
    ReportPage* page = AddPage(builder, 1, QStringLiteral("Lastgang"), QStringLiteral("Mitte"), QStringLiteral("Firma"),
        QStringLiteral("%PAGE%"));
    ASSERT_NE(page, nullptr);
    EXPECT_FALSE(page->Landscape());

    // The head sits a millimetre above its line, the foot hangs a millimetre below its line;
    // the head's left text is bold.
    const struct
    {
        const char* text;
        int align;
        bool bold, head;
    } expected[]
        = { { "Lastgang", ReportPage::AlignLeft, true, true }, { "Mitte", ReportPage::AlignCenter, false, true },
              { "Firma", ReportPage::AlignLeft, false, false }, { "%PAGE%", ReportPage::AlignRight, false, false } };
    const std::vector<DrawnText> texts = TextsOf(*page);
    ASSERT_EQ(texts.size(), std::size(expected));
    for (std::size_t i = 0; i < texts.size(); ++i) {
        SCOPED_TRACE(expected[i].text);
        EXPECT_EQ(texts[i].text, QString::fromUtf8(expected[i].text));
        EXPECT_EQ(texts[i].align, expected[i].align);
        EXPECT_EQ(texts[i].bold, expected[i].bold);
        EXPECT_NEAR(texts[i].rect.left(), 20 * TwipsPerMm, 0.01);
        EXPECT_NEAR(texts[i].rect.width(), 11906 - 30 * TwipsPerMm, 0.01);
        if (expected[i].head)
            EXPECT_NEAR(texts[i].rect.bottom(), 1701 - TwipsPerMm, 0.01);
        else
            EXPECT_NEAR(texts[i].rect.top(), 15704 + TwipsPerMm, 0.01);
    }
    const std::vector<QLineF> lines = LinesOf(*page);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_NEAR(lines[0].x1(), 1134, 0.01);
    EXPECT_NEAR(lines[0].x2(), 11339, 0.01);
    EXPECT_NEAR(lines[0].y2(), 1701, 0.01);
    EXPECT_NEAR(lines[1].y1(), 15704, 0.01);

    ReportPage* landscape = AddPage(builder, 2, QStringLiteral("Quer"));
    ASSERT_NE(landscape, nullptr);
    EXPECT_TRUE(landscape->Landscape());
    const std::vector<QLineF> landscapeLines = LinesOf(*landscape);
    ASSERT_EQ(landscapeLines.size(), 2u);
    EXPECT_NEAR(landscapeLines[1].x2(), A4LongTwips - 10 * TwipsPerMm, 0.01);
    EXPECT_NEAR(landscapeLines[1].y1(), A4ShortTwips - 20 * TwipsPerMm, 0.01);

    Settings::Write(Settings::Id::ReportDrawLine, QStringLiteral("0"));
    builder.LoadSettings();
    page = AddPage(builder, 1, QStringLiteral("Kopf"), QString(), QStringLiteral("Fuß"));
    ASSERT_NE(page, nullptr);
    EXPECT_EQ(TextsOf(*page).size(), 2u);
    EXPECT_TRUE(LinesOf(*page).empty());

    // Page numbers in a document of their own.
    ReportDocument numbered;
    builder.SetDocument(&numbered);
    for (int i = 0; i < 3; ++i)
        AddPage(builder, 1, QStringLiteral("Kopf"), QString(), QString(), QStringLiteral("Blatt: %PAGE%"));
    ReportPageBuilder::NumberPages(numbered);
    for (qsizetype i = 0; i < 3; ++i) {
        const std::vector<DrawnText> texts = TextsOf(numbered.Page(i));
        ASSERT_EQ(texts.size(), 2u);
        EXPECT_EQ(texts[1].text, QStringLiteral("Blatt: Seite %1 von 3").arg(i + 1));
    }
    ReportPage& single = numbered.AddPage(false);
    single.DrawText(QStringLiteral("%PAGE%"), 0, 0, 1000, 200);
    ReportPageBuilder::SetPageNumber(single, 2, 3);
    EXPECT_EQ(TextsOf(single).front().text, QStringLiteral("Seite 2 von 3"));
}
