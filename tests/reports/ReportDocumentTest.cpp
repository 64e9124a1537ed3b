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

// A4 in PostScript points.
constexpr double A4ShortPt = 595.28;
constexpr double A4LongPt = 841.89;

// The media boxes of the pages of a PDF file, in page order as written.
std::vector<QSizeF> PdfPageSizes(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QString pdf = QString::fromLatin1(file.readAll());
    static const QRegularExpression mediaBox(
        QStringLiteral(R"(/MediaBox\s*\[\s*([-\d.]+)\s+([-\d.]+)\s+([-\d.]+)\s+([-\d.]+)\s*\])"));
    std::vector<QSizeF> sizes;
    for (auto match = mediaBox.globalMatch(pdf); match.hasNext();) {
        const QRegularExpressionMatch box = match.next();
        sizes.emplace_back(box.captured(3).toDouble() - box.captured(1).toDouble(),
            box.captured(4).toDouble() - box.captured(2).toDouble());
    }
    // Every page object carries its box; a box on the page tree would be counted as a page.
    static const QRegularExpression pageObject(QStringLiteral(R"(/Type\s*/Page(?![a-zA-Z]))"));
    if (static_cast<std::size_t>(pdf.count(pageObject)) != sizes.size())
        return {};
    return sizes;
}

constexpr bool Landscapes[] = { false, true, false };

// Pages in the orientations above with a little of everything on them.
void Fill(ReportDocument& document)
{
    for (const bool landscape : Landscapes) {
        ReportPage& page = document.AddPage(landscape);
        page.SetFont(QStringLiteral("Arial"), 10, true);
        page.DrawText(QStringLiteral("Lastgang Halle 3"), 1417, 1000, 5000, 300);
        page.SetPenStyle(ReportPage::PenDot);
        page.DrawLine(1417, 1500, page.Width() - 567, 1500);
        page.DrawRect(1417, 2000, 3000, 2000);
    }
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

} // namespace

TEST(ReportDocument, PdfAndPrinterGetOneA4PagePerPageInItsOrientation)
{
    QTemporaryDir dir;
    ReportDocument document;
    document.SetTitle(QStringLiteral("Lastgang"));
    Fill(document);
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

    for (const QString& fileName : { saved, printed }) {
        SCOPED_TRACE(fileName.toStdString());
        const std::vector<QSizeF> sizes = PdfPageSizes(fileName);
        ASSERT_EQ(sizes.size(), std::size(Landscapes));
        for (std::size_t i = 0; i < sizes.size(); ++i) {
            EXPECT_NEAR(sizes[i].width(), Landscapes[i] ? A4LongPt : A4ShortPt, 1.0);
            EXPECT_NEAR(sizes[i].height(), Landscapes[i] ? A4ShortPt : A4LongPt, 1.0);
        }
    }
}

// Margins 20 / 10 / 15 / 10 mm, head 15 and foot 10 mm: the head line lies at 30 mm = 1701
// twips, the foot line at 16838 - 20 mm = 15704, both from 1134 to 11906 - 10 mm = 11339.
TEST(ReportPageBuilder, DrawsHeadAndFootTextsAndTheirLines)
{
    TempSettings roots;
    Settings::Write(Settings::Id::ReportLeft, QStringLiteral("20"));
    ReportDocument document;
    ReportPageBuilder builder;
    builder.LoadSettings();
    EXPECT_EQ(
        builder.AddPage(1, QStringLiteral("Kopf"), QString(), QString(), QString(), QString(), QString()), nullptr);
    builder.SetDocument(&document);
    ReportPage* page = builder.AddPage(1, QStringLiteral("Lastgang"), QStringLiteral("Mitte"), QString(),
        QStringLiteral("Firma"), QString(), QStringLiteral("%PAGE%"));
    ASSERT_NE(page, nullptr);
    EXPECT_FALSE(page->Landscape());

    const std::vector<DrawnText> texts = TextsOf(*page);
    ASSERT_EQ(texts.size(), 4u);
    const double width = 11906 - 30 * TwipsPerMm;
    // The head sits a millimetre above its line, the foot hangs a millimetre below its line;
    // the head's left text is bold.
    const struct
    {
        const char* text;
        int align;
        bool bold;
        bool head;
    } expected[]
        = { { "Lastgang", ReportPage::AlignLeft, true, true }, { "Mitte", ReportPage::AlignCenter, false, true },
              { "Firma", ReportPage::AlignLeft, false, false }, { "%PAGE%", ReportPage::AlignRight, false, false } };
    for (std::size_t i = 0; i < texts.size(); ++i) {
        SCOPED_TRACE(expected[i].text);
        EXPECT_EQ(texts[i].text, QString::fromUtf8(expected[i].text));
        EXPECT_EQ(texts[i].align, expected[i].align);
        EXPECT_EQ(texts[i].bold, expected[i].bold);
        EXPECT_NEAR(texts[i].rect.left(), 20 * TwipsPerMm, 0.01);
        EXPECT_NEAR(texts[i].rect.width(), width, 0.01);
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

    ReportPage* landscape
        = builder.AddPage(2, QStringLiteral("Quer"), QString(), QString(), QString(), QString(), QString());
    ASSERT_NE(landscape, nullptr);
    EXPECT_TRUE(landscape->Landscape());
    const std::vector<QLineF> landscapeLines = LinesOf(*landscape);
    ASSERT_EQ(landscapeLines.size(), 2u);
    EXPECT_NEAR(landscapeLines[1].x2(), A4LongTwips - 10 * TwipsPerMm, 0.01);
    EXPECT_NEAR(landscapeLines[1].y1(), A4ShortTwips - 20 * TwipsPerMm, 0.01);
}

TEST(ReportPageBuilder, NoLinesWhenTheSettingSaysSo)
{
    TempSettings roots;
    Settings::Write(Settings::Id::ReportDrawLine, QStringLiteral("0"));
    ReportDocument document;
    ReportPageBuilder builder;
    builder.LoadSettings();
    builder.SetDocument(&document);
    ReportPage* page
        = builder.AddPage(1, QStringLiteral("Kopf"), QString(), QString(), QStringLiteral("Fuß"), QString(), QString());
    ASSERT_NE(page, nullptr);
    EXPECT_EQ(TextsOf(*page).size(), 2u);
    EXPECT_TRUE(LinesOf(*page).empty());
}

TEST(ReportPageBuilder, PageNumbersReplaceTheToken)
{
    TempSettings roots;
    ReportDocument document;
    ReportPageBuilder builder;
    builder.SetDocument(&document);
    for (int i = 0; i < 3; ++i)
        builder.AddPage(
            1, QStringLiteral("Kopf"), QString(), QString(), QString(), QString(), QStringLiteral("Blatt: %PAGE%"));
    ReportPageBuilder::NumberPages(document);
    for (qsizetype i = 0; i < 3; ++i) {
        const std::vector<DrawnText> texts = TextsOf(document.Page(i));
        ASSERT_EQ(texts.size(), 2u);
        EXPECT_EQ(texts[1].text, QStringLiteral("Blatt: Seite %1 von 3").arg(i + 1));
    }

    ReportPage& single = document.AddPage(false);
    single.DrawText(QStringLiteral("%PAGE%"), 0, 0, 1000, 200);
    ReportPageBuilder::SetPageNumber(single, 2, 3);
    EXPECT_EQ(TextsOf(single).front().text, QStringLiteral("Seite 2 von 3"));
}
