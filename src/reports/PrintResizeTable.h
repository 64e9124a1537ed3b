// SPDX-License-Identifier: GPL-3.0-or-later
// One table on one report page: it decides how many rows and columns fit in its rectangle,
// how wide each column is, and cuts texts that don't fit. The caller reads back what it took.
#pragma once

#include <QString>

#include <map>
#include <vector>

class ReportPage;

struct TableValue
{
    QString Text;
    qint32 Row = 0;
    qint32 Col = 0;
    qint32 Align = 0; ///< 0 left, 1 right, 2 centre
    bool Bold = false; ///< kept, not drawn
    bool Italic = false; ///< kept, not drawn
};

class PrintResizeTable
{
public:
    // Lengths in twips. Calling order: Page, font, rectangle, LabelRows, LabelCols, Cols,
    // then Rows, then labels and values, then CreateTable, then read Rows and Cols back.
    ReportPage* Page = nullptr;
    float Left = 0;
    float Top = 0;
    float Width = 0;
    float Height = 0;
    QString FontName;
    double FontSize = 0;
    qint32 LabelRows = 1;
    qint32 LabelCols = 1;
    qint32 Cols = 0;

    qint32 Rows() const { return m_lRows; }
    // Takes as many of the rows as fit and shrinks Height to them.
    void SetRows(qint32 rows);

    // A second label or value at one position is dropped.
    void AddRowLabel(const QString& text, qint32 row);
    void AddColLabel(const QString& text, qint32 col);
    void AddValue(const QString& text, qint32 col, qint32 row, qint32 align, bool bold, bool italic);

    // Measures, draws the grid and the texts.
    void CreateTable();

    // Drops characters from the end until the text is no wider than maxWidth.
    QString FitText(const QString& text, double maxWidth) const;

    // Inner sizes, after CreateTable.
    float RowHeight() const { return m_fRowHeight; }
    float HeaderHeight() const { return m_fHeaderHeight; }
    float FirstColWidth() const { return m_fFirstColWidth; }
    // Widths of every column asked for, from column 1 at index 0; the first Cols are in the table.
    const std::vector<float>& ColWidths() const { return m_cColWidths; }

private:
    void SetTableFont(bool bold) const;
    int MeasuredWidth(const QString& text) const;
    // The width of column col counted from 1; 0 outside the columns measured.
    float ColWidth(qint32 col) const;
    void FitRows();
    void FitColumns();
    void DrawGrid();
    void DrawTexts();

    qint32 m_lRows = 0;
    float m_fRowHeight = 0;
    float m_fHeaderHeight = 0;
    float m_fFirstColWidth = 0;
    std::vector<float> m_cColWidths;
    std::map<qint32, QString> m_cRowLabels;
    std::map<qint32, QString> m_cColLabels;
    std::vector<TableValue> m_cValues; ///< in the order they were added
    std::map<std::pair<qint32, qint32>, std::size_t> m_cValueIndex;
};
