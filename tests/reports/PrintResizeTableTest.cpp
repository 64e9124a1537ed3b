// SPDX-License-Identifier: GPL-3.0-or-later
// The table layout on fixed font metrics: rows and columns that fit, cut texts, the grid.
#include "PrintResizeTable.h"
#include "ReportDocument.h"

#include "QtPrinters.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

#include <vector>

namespace {

// At 10 points: 100 twips a character, 120 in bold, 200 twips high.
class FixedMetrics : public TextMetrics
{
public:
    void Measure(const QFont& font, const QString& text, int& width, int& height) const override
    {
        const int perChar = font.bold() ? 120 : 100;
        width = static_cast<int>(text.size()) * perChar * font.pixelSize() / 200;
        height = font.pixelSize();
    }
};

// Numbers to a hundredth of a twip.
QString N(double value)
{
    return QString::number(value, 'f', 2);
}

class PrintResizeTableTest : public ::testing::Test
{
protected:
    PrintResizeTable Table(float width, float height, qint32 labelRows, qint32 cols)
    {
        PrintResizeTable table;
        table.Page = page;
        table.FontName = QStringLiteral("Arial");
        table.FontSize = 10;
        table.Left = 1000;
        table.Top = 2000;
        table.Width = width;
        table.Height = height;
        table.LabelRows = labelRows;
        table.Cols = cols;
        return table;
    }

    // "text left,top width x height align bold"
    QStringList Texts() const
    {
        QStringList texts;
        for (const ReportPage::Operation& op : page->Operations())
            if (op.kind == ReportPage::Operation::Text)
                texts << QStringLiteral("%1 %2,%3 %4x%5 %6 %7")
                             .arg(op.text, N(op.rect.left()), N(op.rect.top()), N(op.rect.width()), N(op.rect.height()))
                             .arg(op.state.align)
                             .arg(page->FontAt(op.state.font).bold() ? "bold" : "normal");
        return texts;
    }
    // "x1,y1-x2,y2 style width"
    QStringList Lines() const
    {
        QStringList lines;
        for (const ReportPage::Operation& op : page->Operations())
            if (op.kind == ReportPage::Operation::Line)
                lines << QStringLiteral("%1,%2-%3,%4 %5 %6")
                             .arg(op.rect.left())
                             .arg(op.rect.top())
                             .arg(op.rect.right())
                             .arg(op.rect.bottom())
                             .arg(op.state.penStyle == ReportPage::PenSolid    ? QStringLiteral("solid")
                                     : op.state.penStyle == ReportPage::PenDot ? QStringLiteral("dot")
                                                                               : QString::number(op.state.penStyle))
                             .arg(op.state.penWidth);
        return lines;
    }

    FixedMetrics metrics;
    ReportDocument document { metrics };
    ReportPage* page = &document.AddPage(false);
};

} // namespace

// Rows are 200 twips, the header one row: 1150.5 holds 950 / 200 = 4 body rows. A second label
// row is a body row of the caller's and takes one row off the height even when the rows fit;
// creating the table fits again on the shrunk height.
TEST_F(PrintResizeTableTest, RowsAreCutToTheHeightAndTheHeightToTheRows)
{
    struct Case
    {
        float height;
        qint32 labelRows, asked, rows;
        float fitted;
        qint32 createdRows = -1;
        float created = 0;
    };
    for (const Case& c :
        { Case { 1150.5f, 1, 10, 4, 1000 }, Case { 1150.5f, 1, 3, 3, 800, 3, 800 }, Case { 1150.5f, 1, 0, 0, 200 },
            Case { 1150.5f, 2, 0, 0, 0 }, Case { 2150, 2, 20, 8, 1600 }, Case { 2150, 2, 5, 5, 1000, 3, 600 } }) {
        SCOPED_TRACE(testing::Message() << c.height << " " << c.labelRows << " " << c.asked);
        PrintResizeTable table = Table(5000, c.height, c.labelRows, 0);
        table.SetRows(c.asked);
        EXPECT_EQ(table.Rows(), c.rows);
        EXPECT_FLOAT_EQ(table.Height, c.fitted);
        if (c.createdRows < 0)
            continue;
        table.CreateTable();
        EXPECT_EQ(table.Rows(), c.createdRows);
        EXPECT_FLOAT_EQ(table.Height, c.created);
    }
}

// Row labels in bold (120 a character), cells in normal weight (100), each with 2 mm margin
// truncated: labels 353 and 593, columns 613, 213 and 813, all together 2232.
TEST_F(PrintResizeTableTest, ColumnsAreLostFromTheRightAndTheTableIsNeverStretched)
{
    const auto fill = [](PrintResizeTable& table) {
        table.SetRows(3); // 700 holds two rows
        table.AddRowLabel(QStringLiteral("R1"), 1);
        table.AddRowLabel(QStringLiteral("Row2"), 2);
        table.AddColLabel(QStringLiteral("Leistungsfaktor Phase 1"), 2);
        table.AddValue(QStringLiteral("abc"), 1, 1, 0, false, false);
        table.AddValue(QStringLiteral("abcde"), 1, 2, 0, false, false);
        table.AddValue(QStringLiteral("x"), 2, 1, 0, false, false);
        table.AddValue(QStringLiteral("a row that did not fit"), 2, 3, 0, false, false);
        table.AddValue(QStringLiteral("1234567"), 3, 2, 0, false, false);
        table.CreateTable();
    };
    struct Case
    {
        float width;
        qint32 cols;
        float tableWidth;
    };
    for (const Case& c : { Case { 5000, 3, 2232 }, Case { 2231, 2, 1419 }, Case { 1419, 2, 1419 },
             Case { 1418.5f, 1, 1206 }, Case { 500, 0, 593 } }) {
        SCOPED_TRACE(c.width);
        PrintResizeTable table = Table(c.width, 700, 1, 3);
        fill(table);
        EXPECT_EQ(table.Rows(), 2);
        EXPECT_EQ(table.Cols, c.cols);
        EXPECT_FLOAT_EQ(table.Width, c.tableWidth);
        EXPECT_FLOAT_EQ(table.FirstColWidth(), 593);
        EXPECT_EQ(table.ColWidths(), (std::vector<float> { 613, 213, 813 }));
    }
}

// Top 2000, header 200; text rows start half a millimetre below the header line. The table ends
// at 2600, and a text below that gets the height (Height - Top) - y.
TEST_F(PrintResizeTableTest, TextsAreCutToTheirColumnsAndPlacedInTheirRows)
{
    PrintResizeTable table = Table(10000, 700, 1, 2);
    table.SetRows(3);
    table.AddRowLabel(QStringLiteral("R1"), 1);
    table.AddRowLabel(QStringLiteral("XX"), 1);
    table.AddRowLabel(QStringLiteral("Row2"), 2);
    table.AddRowLabel(QStringLiteral("R3"), 3);
    table.AddColLabel(QStringLiteral("Wirkleistung"), 1);
    table.AddColLabel(QStringLiteral("cos"), 2);
    table.AddColLabel(QStringLiteral("dup"), 2);
    table.AddValue(QStringLiteral("abcdefgh"), 1, 1, 1, false, false);
    table.AddValue(QStringLiteral("other"), 1, 1, 0, true, false);
    table.AddValue(QStringLiteral("12"), 1, 2, 2, false, false);
    table.AddValue(QStringLiteral("xyzxyz"), 2, 1, 7, false, false);
    table.AddValue(QStringLiteral("hidden"), 2, 3, 0, false, false);
    table.AddValue(QString(), 2, 2, 1, false, false);
    // Row 0 lies in the label row and is not measured for the column's width.
    table.AddValue(QStringLiteral("abcdefghijklmn"), 1, 0, 0, false, false);
    table.CreateTable();

    ASSERT_EQ(table.Rows(), 2);
    ASSERT_EQ(table.Cols, 2);
    // Label column 593; columns 913 and 713.
    ASSERT_EQ(table.ColWidths(), (std::vector<float> { 913, 713 }));
    EXPECT_EQ(Texts(),
        (QStringList {
            "R1 1056.70,2228.00 240.00x200.00 0 bold",
            "Row2 1056.70,2428.00 480.00x-3828.00 0 bold",
            // 1440 is wider than 913: cut to 799.6, six letters, then the dot.
            "Wirkle. 1649.00,2056.70 840.00x200.00 0 bold",
            "cos 2562.00,2056.70 360.00x200.00 0 bold",
            "abcdefgh 1649.70,2228.35 913.00x200.00 1 normal",
            "12 1649.70,2428.35 913.00x-3828.00 2 normal",
            // An unknown alignment keeps the one before.
            "xyzxyz 2562.70,2228.35 713.00x200.00 2 normal",
            // Cut to the column's full width, without a dot.
            "abcdefghi 1649.70,2028.35 913.00x200.00 0 normal",
        }));
}

// No row labels: label column 113, columns 513 and 313, the table 939 wide and 800 high.
TEST_F(PrintResizeTableTest, GridFramesTheTableAndRulesRowsAndColumns)
{
    const auto make = [this](qint32 labelCols) {
        PrintResizeTable table = Table(10000, 1000, 1, 2);
        table.LabelCols = labelCols;
        table.SetRows(3);
        table.AddValue(QStringLiteral("abcd"), 1, 1, 0, false, false);
        table.AddValue(QStringLiteral("ab"), 2, 1, 0, false, false);
        table.CreateTable();
        return table;
    };
    make(1);
    const std::vector<ReportPage::Operation>& ops = page->Operations();
    ASSERT_FALSE(ops.empty());
    EXPECT_EQ(ops.front().kind, ReportPage::Operation::Rect);
    EXPECT_EQ(ops.front().rect, QRectF(1000, 2000, 939, 800));
    EXPECT_EQ(ops.front().state.penWidth, 2);
    // The first dotted column rule lies on the solid one; none is drawn on the right edge.
    EXPECT_EQ(Lines(),
        (QStringList { "1000,2200-1939,2200 solid 1", "1000,2400-1939,2400 dot 1", "1000,2600-1939,2600 dot 1",
            "1113,2000-1113,2800 solid 1", "1113,2000-1113,2800 dot 1", "1626,2000-1626,2800 dot 1" }));

    // With two label columns the solid rule moves behind the first value column.
    page = &document.AddPage(false);
    make(2);
    EXPECT_EQ(Lines().filter(QRegularExpression("^(\\d+),\\d+-\\1,")),
        (QStringList { "1626,2000-1626,2800 solid 1", "1626,2000-1626,2800 dot 1" }));
}
