// SPDX-License-Identifier: GPL-3.0-or-later
// The report document: pages of drawing operations recorded in twips, replayed on the
// preview, on a printer and into PDF. Text is measured with the metrics those devices use.
#pragma once

#include <QColor>
#include <QFont>
#include <QPicture>
#include <QRectF>
#include <QString>

#include <memory>
#include <vector>

class QPainter;
class QPagedPaintDevice;
class QPrinter;

// Twips per millimetre; 1440 twips make an inch.
inline constexpr double TwipsPerMm = 56.7;
// A4 in twips.
inline constexpr int A4ShortTwips = 11906;
inline constexpr int A4LongTwips = 16838;

// How a page surface measures text. The document's default measures with the fonts as they
// are drawn at 1440 dots per inch; tests put in fixed metrics.
class TextMetrics
{
public:
    virtual ~TextMetrics() = default;
    // Width and height of the text in twips; lines are separated by "\n".
    virtual void Measure(const QFont& font, const QString& text, int& width, int& height) const = 0;
};

// The font of the page surfaces at one twip per device unit, without hinting, so that the
// same text takes the same room on screen, paper and in PDF.
QFont ReportFont(const QString& name, double points, bool bold);

// One page: a surface with the drawing state and operations of the report engine.
class ReportPage
{
public:
    // Text alignment within the rectangle given to DrawText.
    enum Align { AlignLeft = 0, AlignRight = 1, AlignCenter = 2 };
    // Pen styles.
    enum PenStyle { PenSolid = 1, PenDot = 3 };

    ReportPage(int widthTwips, int heightTwips, const TextMetrics& metrics);

    int Width() const { return m_iWidth; }
    int Height() const { return m_iHeight; }
    bool Landscape() const { return m_iWidth > m_iHeight; }

    // Drawing state; it applies to the operations that follow.
    void SetFont(const QString& name, double points, bool bold);
    void SetPenWidth(int width) { m_cState.penWidth = width; }
    void SetPenStyle(int style) { m_cState.penStyle = style; }
    // The colour of lines; texts are black.
    void SetPenColor(const QColor& color) { m_cState.penColor = color.rgb(); }
    // 0 transparent, 1 solid in the pen colour.
    void SetFillStyle(int style) { m_cState.fillStyle = style; }
    void SetTextAlign(int align) { m_cState.align = align; }

    // The size of the text in the current font, in twips.
    void MeasureText(const QString& text, int& width, int& height) const;
    void DrawText(const QString& text, double left, double top, double width, double height);
    void DrawLine(double x1, double y1, double x2, double y2);
    void DrawRect(double left, double top, double width, double height);
    // The picture is stretched to the rectangle.
    void DrawPicture(const QPicture& picture, double left, double top, double width, double height);

    // Replaces a token in every text drawn on the page.
    void ReplaceText(const QString& token, const QString& text);

    // What was drawn, in order; for replay and for tests.
    struct State
    {
        int penWidth = 1;
        int penStyle = PenSolid;
        QRgb penColor = 0xff000000;
        int fillStyle = 0;
        int align = AlignLeft;
        int font = -1; ///< index into the page's fonts
    };
    struct Operation
    {
        enum Kind { Text, Line, Rect, Picture };
        Kind kind;
        State state;
        QRectF rect; ///< a line runs from the top left to the bottom right corner
        QString text;
        std::shared_ptr<const QPicture> picture;
    };
    const std::vector<Operation>& Operations() const { return m_cOperations; }
    const QFont& FontAt(int index) const { return m_cFonts[static_cast<std::size_t>(index)]; }

    // Draws the page with one painter unit as one twip.
    void Render(QPainter& painter) const;

private:
    int m_iWidth;
    int m_iHeight;
    const TextMetrics& m_cMetrics;
    QString m_sFontName;
    double m_dFontSize = 10.0;
    bool m_bFontBold = false;
    QFont m_cFont;
    State m_cState;
    std::vector<QFont> m_cFonts;
    std::vector<Operation> m_cOperations;
};

class ReportDocument
{
public:
    ReportDocument();
    // With metrics of the caller's, which must outlive the document.
    explicit ReportDocument(const TextMetrics& metrics);
    ~ReportDocument();

    const QString& Title() const { return m_sTitle; }
    void SetTitle(const QString& title) { m_sTitle = title; }

    qsizetype PageCount() const { return static_cast<qsizetype>(m_cPages.size()); }
    ReportPage& Page(qsizetype index) { return *m_cPages[static_cast<std::size_t>(index)]; }
    const ReportPage& Page(qsizetype index) const { return *m_cPages[static_cast<std::size_t>(index)]; }
    // A new empty A4 page at the end.
    ReportPage& AddPage(bool landscape);

    // Every page onto a paged device (a printer or a PDF writer), each in its orientation.
    // False when the device could not be painted on.
    bool PrintTo(QPagedPaintDevice& device) const;
    // Writes the document as PDF, atomically. False with the reason in error.
    bool SavePdf(const QString& fileName, QString* error = nullptr) const;

private:
    std::unique_ptr<TextMetrics> m_pOwnMetrics;
    const TextMetrics* m_pMetrics;
    QString m_sTitle;
    std::vector<std::unique_ptr<ReportPage>> m_cPages;
};
