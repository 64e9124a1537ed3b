// SPDX-License-Identifier: GPL-3.0-or-later
// Recording, measuring and replaying report pages.
#include "ReportDocument.h"

#include "SafeSave.h"

#include <QBuffer>
#include <QFontMetricsF>
#include <QPageLayout>
#include <QPageSize>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QPdfWriter>

#include <cmath>

namespace {

// Measures as the fonts are drawn at one twip per device unit.
class DeviceTextMetrics : public TextMetrics
{
public:
    void Measure(const QFont& font, const QString& text, int& width, int& height) const override
    {
        const QFontMetricsF metrics(font);
        if (!text.contains(QLatin1Char('\n'))) {
            width = static_cast<int>(std::ceil(metrics.horizontalAdvance(text)));
            height = static_cast<int>(std::ceil(metrics.height()));
            return;
        }
        double widest = 0;
        const QStringList lines = text.split(QLatin1Char('\n'));
        for (const QString& line : lines)
            widest = std::max(widest, metrics.horizontalAdvance(line));
        width = static_cast<int>(std::ceil(widest));
        height = static_cast<int>(std::ceil(metrics.height() + metrics.lineSpacing() * double(lines.size() - 1)));
    }
};

Qt::Alignment AlignmentOf(int align)
{
    switch (align) {
    case ReportPage::AlignRight:
        return Qt::AlignRight | Qt::AlignTop;
    case ReportPage::AlignCenter:
        return Qt::AlignHCenter | Qt::AlignTop;
    default:
        return Qt::AlignLeft | Qt::AlignTop;
    }
}

QPen PenOf(const ReportPage::State& state)
{
    QPen pen(QColor::fromRgb(state.penColor));
    // Pen widths are in twips as the page sizes are; 0 and 1 both draw the thinnest line.
    pen.setWidthF(std::max(1, state.penWidth) * 15.0);
    pen.setStyle(state.penStyle == ReportPage::PenDot ? Qt::DotLine : Qt::SolidLine);
    pen.setCapStyle(Qt::FlatCap);
    pen.setJoinStyle(Qt::MiterJoin);
    return pen;
}

} // namespace

QFont ReportFont(const QString& name, double points, bool bold)
{
    QFont font(name);
    // Twenty twips make a point.
    font.setPixelSize(std::max(1, static_cast<int>(std::lround(points * 20.0))));
    font.setBold(bold);
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setStyleStrategy(QFont::PreferOutline);
    return font;
}

ReportPage::ReportPage(int widthTwips, int heightTwips, const TextMetrics& metrics)
    : m_iWidth(widthTwips)
    , m_iHeight(heightTwips)
    , m_cMetrics(metrics)
{
    SetFont(QStringLiteral("Arial"), 10.0, false);
}

void ReportPage::SetFont(const QString& name, double points, bool bold)
{
    if (m_cState.font >= 0 && name == m_sFontName && points == m_dFontSize && bold == m_bFontBold)
        return;
    m_sFontName = name;
    m_dFontSize = points;
    m_bFontBold = bold;
    m_cFont = ReportFont(name, points, bold);
    for (std::size_t i = 0; i < m_cFonts.size(); ++i)
        if (m_cFonts[i] == m_cFont) {
            m_cState.font = static_cast<int>(i);
            return;
        }
    m_cFonts.push_back(m_cFont);
    m_cState.font = static_cast<int>(m_cFonts.size() - 1);
}

void ReportPage::MeasureText(const QString& text, int& width, int& height) const
{
    m_cMetrics.Measure(m_cFont, text, width, height);
}

void ReportPage::DrawText(const QString& text, double left, double top, double width, double height)
{
    m_cOperations.push_back({ Operation::Text, m_cState, QRectF(left, top, width, height), text, nullptr });
}

void ReportPage::DrawLine(double x1, double y1, double x2, double y2)
{
    m_cOperations.push_back(
        { Operation::Line, m_cState, QRectF(QPointF(x1, y1), QPointF(x2, y2)), QString(), nullptr });
}

void ReportPage::DrawRect(double left, double top, double width, double height)
{
    m_cOperations.push_back({ Operation::Rect, m_cState, QRectF(left, top, width, height), QString(), nullptr });
}

void ReportPage::DrawPicture(const QPicture& picture, double left, double top, double width, double height)
{
    m_cOperations.push_back({ Operation::Picture, m_cState, QRectF(left, top, width, height), QString(),
        std::make_shared<const QPicture>(picture) });
}

void ReportPage::ReplaceText(const QString& token, const QString& text)
{
    for (Operation& operation : m_cOperations)
        if (operation.kind == Operation::Text)
            operation.text.replace(token, text);
}

void ReportPage::Render(QPainter& painter) const
{
    painter.save();
    int font = -1;
    for (const Operation& operation : m_cOperations) {
        const State& state = operation.state;
        switch (operation.kind) {
        case Operation::Text:
            if (state.font != font) {
                font = state.font;
                painter.setFont(m_cFonts[static_cast<std::size_t>(font)]);
            }
            painter.setPen(Qt::black);
            // Texts are not clipped to their rectangle, and a table may hand its last row a
            // height below zero: the text still stands where its top is.
            painter.drawText(QRectF(operation.rect.topLeft(),
                                 QSizeF(operation.rect.width(), std::max(0.0, operation.rect.height()))),
                static_cast<int>(AlignmentOf(state.align)) | Qt::TextDontClip, operation.text);
            break;
        case Operation::Line:
            painter.setPen(PenOf(state));
            painter.drawLine(operation.rect.topLeft(), operation.rect.bottomRight());
            break;
        case Operation::Rect:
            painter.setPen(PenOf(state));
            painter.setBrush(state.fillStyle == 0 ? QBrush(Qt::NoBrush) : QBrush(QColor::fromRgb(state.penColor)));
            painter.drawRect(operation.rect);
            painter.setBrush(Qt::NoBrush);
            break;
        case Operation::Picture: {
            const QRect bounds = operation.picture->boundingRect();
            if (bounds.isEmpty())
                break;
            // A picture plays itself larger on a device of a finer resolution than its own,
            // which the scale takes back: the rectangle alone decides its size.
            const QPaintDevice* device = painter.device();
            const double dpiX = double(operation.picture->logicalDpiX()) / device->logicalDpiX();
            const double dpiY = double(operation.picture->logicalDpiY()) / device->logicalDpiY();
            painter.save();
            painter.translate(operation.rect.topLeft());
            painter.scale(
                operation.rect.width() / bounds.width() * dpiX, operation.rect.height() / bounds.height() * dpiY);
            painter.translate(-bounds.left() / dpiX, -bounds.top() / dpiY);
            painter.drawPicture(0, 0, *operation.picture);
            painter.restore();
            break;
        }
        }
    }
    painter.restore();
}

ReportDocument::ReportDocument()
    : m_pOwnMetrics(std::make_unique<DeviceTextMetrics>())
    , m_pMetrics(m_pOwnMetrics.get())
{ }

ReportDocument::ReportDocument(const TextMetrics& metrics)
    : m_pMetrics(&metrics)
{ }

ReportDocument::~ReportDocument() = default;

ReportPage& ReportDocument::AddPage(bool landscape)
{
    m_cPages.push_back(std::make_unique<ReportPage>(
        landscape ? A4LongTwips : A4ShortTwips, landscape ? A4ShortTwips : A4LongTwips, *m_pMetrics));
    return *m_cPages.back();
}

bool ReportDocument::PrintTo(QPagedPaintDevice& device) const
{
    const auto layoutOf = [](const ReportPage& page) {
        return QPageLayout(QPageSize(QPageSize::A4), page.Landscape() ? QPageLayout::Landscape : QPageLayout::Portrait,
            QMarginsF(0, 0, 0, 0));
    };
    if (!m_cPages.empty())
        device.setPageLayout(layoutOf(*m_cPages.front()));
    QPainter painter;
    if (!painter.begin(&device))
        return false;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    for (std::size_t i = 0; i < m_cPages.size(); ++i) {
        const ReportPage& page = *m_cPages[i];
        if (i > 0) {
            device.setPageLayout(layoutOf(page));
            if (!device.newPage()) {
                painter.end();
                return false;
            }
        }
        // One painter unit is one twip whatever the device's resolution, from the paper's
        // corner even where a printer keeps margins it can't print on.
        painter.resetTransform();
        const QPageLayout layout = device.pageLayout();
        if (layout.mode() == QPageLayout::StandardMode) {
            const QMarginsF margins = layout.marginsPoints();
            painter.translate(
                -margins.left() * device.logicalDpiX() / 72.0, -margins.top() * device.logicalDpiY() / 72.0);
        }
        painter.scale(device.logicalDpiX() / 1440.0, device.logicalDpiY() / 1440.0);
        page.Render(painter);
    }
    return painter.end();
}

bool ReportDocument::SavePdf(const QString& fileName, QString* error) const
{
    // The PDF writer seeks, so the document is made in memory and written in one piece.
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    {
        QPdfWriter writer(&buffer);
        writer.setResolution(1440);
        writer.setTitle(m_sTitle);
        writer.setCreator(QStringLiteral("Sorano"));
        if (!PrintTo(writer)) {
            if (error)
                *error = QStringLiteral("the PDF could not be drawn");
            return false;
        }
    }
    SafeSave file(fileName);
    if (file.open(QIODevice::WriteOnly) && file.write(buffer.data()) == buffer.data().size() && file.commit())
        return true;
    if (error)
        *error = file.errorString();
    return false;
}
