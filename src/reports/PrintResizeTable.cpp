// SPDX-License-Identifier: GPL-3.0-or-later
// Layout and drawing of one table on one report page.
#include "PrintResizeTable.h"

#include "ReportDocument.h"

#include <algorithm>

namespace {

// The text whose height is the height of every row: it has the tallest letters and descenders.
const QString RowProbe = QStringLiteral("AABBCCddeeffgghhyyzzz");

} // namespace

void PrintResizeTable::SetTableFont(bool bold) const
{
    Page->SetFont(FontName, FontSize, bold);
}

int PrintResizeTable::MeasuredWidth(const QString& text) const
{
    int width = 0;
    int height = 0;
    Page->MeasureText(text, width, height);
    return width;
}

void PrintResizeTable::SetRows(qint32 rows)
{
    m_lRows = rows;
    FitRows();
}

void PrintResizeTable::AddRowLabel(const QString& text, qint32 row)
{
    m_cRowLabels.try_emplace(row, text);
}

void PrintResizeTable::AddColLabel(const QString& text, qint32 col)
{
    m_cColLabels.try_emplace(col, text);
}

void PrintResizeTable::AddValue(const QString& text, qint32 col, qint32 row, qint32 align, bool bold, bool italic)
{
    if (!m_cValueIndex.try_emplace({ row, col }, m_cValues.size()).second)
        return;
    m_cValues.push_back({ text, row, col, align, bold, italic });
}

QString PrintResizeTable::FitText(const QString& text, double maxWidth) const
{
    QString fitted = text;
    while (!fitted.isEmpty() && MeasuredWidth(fitted) > maxWidth)
        fitted.chop(1);
    return fitted;
}

void PrintResizeTable::FitRows()
{
    SetTableFont(true);
    int width = 0;
    int height = 0;
    Page->MeasureText(RowProbe, width, height);
    m_fHeaderHeight = static_cast<float>(height);
    m_fRowHeight = static_cast<float>(height);

    // Whole twips only; the rows are counted without the header's share of the label rows.
    const auto room = static_cast<qint32>(Height - m_fHeaderHeight);
    const auto rowHeight = static_cast<qint32>(m_fRowHeight);
    const qint32 fit = rowHeight != 0 ? room / rowHeight : 0;
    if (m_lRows > fit)
        m_lRows = fit - (LabelRows - 1);
    // The label rows below the first are body rows of the caller's, so they are taken off
    // here whether or not the rows were cut.
    Height = m_fRowHeight * static_cast<float>(m_lRows - (LabelRows - 1)) + m_fHeaderHeight;
}

void PrintResizeTable::FitColumns()
{
    m_cColWidths.assign(static_cast<std::size_t>(std::max(Cols, 0)), 0.0f);
    m_fFirstColWidth = 0;
    const auto widthWithMargins = [this](const QString& text) {
        return static_cast<float>(static_cast<qint32>(MeasuredWidth(text) + 2 * TwipsPerMm));
    };

    SetTableFont(true);
    for (qint32 row = 1; row <= m_lRows; ++row) {
        const auto label = m_cRowLabels.find(row);
        const float width = widthWithMargins(label != m_cRowLabels.end() ? label->second : QString());
        m_fFirstColWidth = std::max(m_fFirstColWidth, width);
    }

    // Only the cells decide a column's width; a column label that is wider gets cut.
    SetTableFont(false);
    for (qint32 col = 1; col <= Cols; ++col) {
        float& colWidth = m_cColWidths[static_cast<std::size_t>(col - 1)];
        for (qint32 row = 1; row <= m_lRows; ++row) {
            const auto value = m_cValueIndex.find({ row, col });
            colWidth = std::max(
                colWidth, widthWithMargins(value != m_cValueIndex.end() ? m_cValues[value->second].Text : QString()));
        }
    }

    float sum = 0;
    for (const float colWidth : m_cColWidths)
        sum += colWidth;
    // Columns that don't fit are lost from the right.
    while (Cols > 0 && m_fFirstColWidth + sum > Width) {
        sum -= m_cColWidths[static_cast<std::size_t>(Cols - 1)];
        --Cols;
    }
    // The table keeps its natural width; it is never stretched to the rectangle.
    Width = m_fFirstColWidth + sum;
}

void PrintResizeTable::CreateTable()
{
    m_fFirstColWidth = Width / 10;
    FitRows();
    FitColumns();
    DrawGrid();
    DrawTexts();
}

float PrintResizeTable::ColWidth(qint32 col) const
{
    if (col < 1 || col > static_cast<qint32>(m_cColWidths.size()))
        return 0;
    return m_cColWidths[static_cast<std::size_t>(col - 1)];
}

void PrintResizeTable::DrawGrid()
{
    Page->SetPenWidth(2);
    Page->SetPenStyle(ReportPage::PenSolid);
    Page->DrawRect(Left, Top, Width, Height);

    Page->SetPenWidth(1);
    Page->SetPenStyle(ReportPage::PenSolid);
    Page->SetFillStyle(0);
    const double labelBottom = Top + static_cast<double>(LabelRows) * m_fHeaderHeight;
    Page->DrawLine(Left, labelBottom, Left + Width, labelBottom);

    Page->SetPenStyle(ReportPage::PenDot);
    for (qint32 row = LabelRows; row <= m_lRows - 1; ++row) {
        const double y = Top + m_fHeaderHeight + m_fRowHeight * static_cast<double>(row);
        Page->DrawLine(Left, y, Left + Width, y);
    }

    double s = 0;
    for (qint32 col = 1; col <= LabelCols - 1; ++col)
        s += ColWidth(col);
    Page->SetPenStyle(ReportPage::PenSolid);
    Page->DrawLine(Left + m_fFirstColWidth + s, Top, Left + m_fFirstColWidth + s, Top + Height);

    // The first dotted line lies on the solid one.
    Page->SetPenStyle(ReportPage::PenDot);
    for (qint32 col = LabelCols; col <= Cols + 1; ++col) {
        const double x = Left + m_fFirstColWidth + s;
        if (Left + Width > x + 1)
            Page->DrawLine(x, Top, x, Top + Height);
        if (col <= Cols)
            s += ColWidth(col);
    }
}

void PrintResizeTable::DrawTexts()
{
    int width = 0;
    int height = 0;
    const double bottom = Top + Height;
    // A text running over the table's bottom gets the room below it counted from the page's top
    // rather than the table's; the pages have always been laid out so, and it stays.
    const auto cutHeight = [this, bottom](double y, int& textHeight) {
        if (y + textHeight > bottom)
            textHeight = static_cast<int>(Height - Top - y);
    };

    SetTableFont(true);
    double y = static_cast<qint32>(Top + m_fHeaderHeight + 0.5 * TwipsPerMm);
    for (qint32 row = 1; row <= m_lRows; ++row) {
        const auto label = m_cRowLabels.find(row);
        if (label != m_cRowLabels.end() && !label->second.isEmpty()) {
            QString text = label->second;
            Page->MeasureText(text, width, height);
            if (width > m_fFirstColWidth) {
                text = FitText(text, m_fFirstColWidth - TwipsPerMm) + QLatin1Char('.');
                Page->MeasureText(text, width, height);
            }
            cutHeight(y, height);
            Page->DrawText(text, Left + TwipsPerMm, y, width, height);
        }
        y += m_fRowHeight;
    }

    double x = static_cast<qint32>(Left + m_fFirstColWidth + TwipsPerMm);
    for (qint32 col = 1; col <= Cols; ++col) {
        const auto label = m_cColLabels.find(col);
        if (label != m_cColLabels.end() && !label->second.isEmpty()) {
            QString text = label->second;
            Page->MeasureText(text, width, height);
            if (width > ColWidth(col)) {
                text = FitText(text, ColWidth(col) - 2 * TwipsPerMm) + QLatin1Char('.');
                Page->MeasureText(text, width, height);
            }
            Page->DrawText(text, x, Top + TwipsPerMm, width, height);
        }
        x += ColWidth(col);
    }

    SetTableFont(false);
    for (const TableValue& value : m_cValues) {
        // A cell outside the table, left of its first column included, is not drawn.
        if (value.Row > m_lRows || value.Col > Cols || value.Col < 1 || value.Text.isEmpty())
            continue;
        const float colWidth = ColWidth(value.Col);
        QString text = value.Text;
        Page->MeasureText(text, width, height);
        if (width > colWidth) {
            text = FitText(text, colWidth);
            Page->MeasureText(text, width, height);
        }
        double cellX = Left + m_fFirstColWidth + TwipsPerMm;
        for (qint32 col = 1; col < value.Col; ++col)
            cellX += ColWidth(col);
        const double cellY
            = Top + m_fHeaderHeight + 0.5 * TwipsPerMm + m_fRowHeight * static_cast<double>(value.Row - 1);
        cutHeight(cellY, height);
        if (value.Align >= ReportPage::AlignLeft && value.Align <= ReportPage::AlignCenter)
            Page->SetTextAlign(value.Align);
        Page->DrawText(text, cellX, cellY, colWidth, height);
    }
}
