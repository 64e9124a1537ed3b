// SPDX-License-Identifier: GPL-3.0-or-later
// The page view of the print preview: one recorded page at a time as a white sheet on grey,
// fitted or zoomed, with a found text marked on it. Used by the preview alone.
#pragma once

#include "ReportDocument.h"

#include <QAbstractScrollArea>
#include <QPainter>
#include <QPixmap>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <utility>

// A scroll area that shows one page as a white sheet with a shadow on grey. The page is
// rendered once per page and scale into a pixmap, so that scrolling only copies it.
class PreviewPageView : public QAbstractScrollArea
{
public:
    // Grey around the sheet, in pixels.
    static constexpr int Border = 16;
    // Room left of and right of the printed content when it fills the width.
    static constexpr int ContentGap = 8;
    // Empty room kept around the printed content, in twips (1 mm).
    static constexpr double ContentPadding = 56.7;
    // One notch of a mouse wheel.
    static constexpr int WheelNotch = 120;
    // Room kept between a found text and the viewport's edge when scrolling to it, in pixels.
    static constexpr int MarkMargin = 40;

    enum Fit { FitNone, FitContent, FitWidth, FitPage };

    explicit PreviewPageView(QWidget* parent)
        : QAbstractScrollArea(parent)
    {
        setFrameShape(QFrame::NoFrame);
        setFocusPolicy(Qt::StrongFocus);
        viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
        horizontalScrollBar()->setSingleStep(20);
        verticalScrollBar()->setSingleStep(20);
    }

    // Called when the wheel runs on past the page's end (+1) or start (-1); true when the
    // page was turned.
    std::function<bool(int)> m_turnPage;
    // Called with +1 or -1 by Ctrl and the wheel.
    std::function<void(int)> m_zoomStep;
    // Called when a fitting zoom gives a new scale, as after a resize.
    std::function<void()> m_scaleChanged;

    // Shows the page from its top, without a mark; null shows the grey only.
    void SetPage(const ReportPage* page)
    {
        m_pPage = page;
        m_cMark = QRectF();
        m_cCache = QPixmap();
        m_iWheel = 0;
        Relayout();
        verticalScrollBar()->setValue(0);
        viewport()->update();
    }

    void SetZoom(Fit fit, double percent)
    {
        m_eFit = fit;
        m_dPercent = percent;
        Relayout();
        viewport()->update();
    }

    // Marks a rectangle of the page (in twips) and scrolls it into sight; an empty one clears the mark.
    void SetMark(const QRectF& twips)
    {
        m_cMark = m_pPage ? twips : QRectF();
        if (!m_cMark.isEmpty()) {
            const auto reveal = [](QScrollBar* bar, double start, double end) {
                const int view = bar->pageStep();
                int value = bar->value();
                if (end - start + 2 * MarkMargin > view || start - MarkMargin < value)
                    value = int(std::floor(start)) - MarkMargin;
                else if (end + MarkMargin > value + view)
                    value = int(std::ceil(end)) + MarkMargin - view;
                bar->setValue(value);
            };
            reveal(horizontalScrollBar(), Border + m_cMark.left() * m_dScale, Border + m_cMark.right() * m_dScale);
            reveal(verticalScrollBar(), Border + m_cMark.top() * m_dScale, Border + m_cMark.bottom() * m_dScale);
        }
        viewport()->update();
    }
    const QRectF& Mark() const { return m_cMark; }

    void ScrollToEnd() { verticalScrollBar()->setValue(verticalScrollBar()->maximum()); }

    double Scale() const { return m_dScale; }
    double Percent() const { return m_dScale * 1440.0 / ScreenDpi() * 100.0; }

    QSize SheetSize() const
    {
        if (!m_pPage)
            return QSize();
        return QSize(qRound(m_pPage->Width() * m_dScale), qRound(m_pPage->Height() * m_dScale));
    }

    QRect SheetRect() const
    {
        if (!m_pPage)
            return QRect();
        const QSize sheet = SheetSize();
        const QSize view = viewport()->size();
        const auto start = [](int sheetLength, int viewLength, int scrolled) {
            return sheetLength + 2 * Border <= viewLength ? (viewLength - sheetLength) / 2 : Border - scrolled;
        };
        return QRect(QPoint(start(sheet.width(), view.width(), horizontalScrollBar()->value()),
                         start(sheet.height(), view.height(), verticalScrollBar()->value())),
            sheet);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(viewport());
        painter.fillRect(viewport()->rect(), QColor(0x80, 0x80, 0x80));
        if (!m_pPage)
            return;
        const QRect sheet = SheetRect();
        // A soft shadow below and right of the sheet.
        for (int i = 1; i <= 4; ++i)
            painter.fillRect(sheet.translated(i, i), QColor(0, 0, 0, 60 - 10 * i));
        const qreal ratio = viewport()->devicePixelRatioF();
        if (m_cCache.isNull() || m_cCache.devicePixelRatio() != ratio) {
            m_cCache = QPixmap(sheet.size() * ratio);
            m_cCache.setDevicePixelRatio(ratio);
            m_cCache.fill(Qt::white);
            QPainter page(&m_cCache);
            page.setRenderHint(QPainter::Antialiasing);
            page.setRenderHint(QPainter::TextAntialiasing);
            page.setRenderHint(QPainter::SmoothPixmapTransform);
            page.scale(m_dScale, m_dScale);
            m_pPage->Render(page);
        }
        painter.drawPixmap(sheet.topLeft(), m_cCache);
        if (!m_cMark.isEmpty()) {
            const QRectF mark(sheet.left() + m_cMark.left() * m_dScale, sheet.top() + m_cMark.top() * m_dScale,
                m_cMark.width() * m_dScale, m_cMark.height() * m_dScale);
            // Multiplied, like a highlighter: the paper turns yellow, the text stays dark.
            painter.setCompositionMode(QPainter::CompositionMode_Multiply);
            painter.fillRect(mark.adjusted(-2, -1, 2, 1), QColor(255, 220, 0, 140));
        }
    }

    void resizeEvent(QResizeEvent*) override { Relayout(); }

    void scrollContentsBy(int, int) override { viewport()->update(); }

    void keyPressEvent(QKeyEvent* event) override
    {
        // Turning pages is the window's; the arrows scroll as usual.
        switch (event->key()) {
        case Qt::Key_PageUp:
        case Qt::Key_PageDown:
        case Qt::Key_Home:
        case Qt::Key_End:
            event->ignore();
            return;
        default:
            QAbstractScrollArea::keyPressEvent(event);
        }
    }

    void wheelEvent(QWheelEvent* event) override
    {
        const int delta = event->angleDelta().y();
        if (event->modifiers() & Qt::ControlModifier) {
            if (delta != 0 && m_zoomStep)
                m_zoomStep(delta > 0 ? 1 : -1);
            event->accept();
            return;
        }
        QScrollBar* bar = verticalScrollBar();
        const bool atEnd = delta < 0 && bar->value() >= bar->maximum();
        const bool atStart = delta > 0 && bar->value() <= bar->minimum();
        if (!atEnd && !atStart) {
            m_iWheel = 0;
            QAbstractScrollArea::wheelEvent(event);
            return;
        }
        // A whole notch past the edge turns the page; touch pads send smaller steps.
        if ((m_iWheel < 0) != (delta < 0))
            m_iWheel = 0;
        m_iWheel += delta;
        event->accept();
        if (std::abs(m_iWheel) < WheelNotch)
            return;
        const int step = m_iWheel < 0 ? 1 : -1;
        m_iWheel = 0;
        if (m_turnPage && m_turnPage(step) && step < 0)
            ScrollToEnd();
    }

private:
    double ScreenDpi() const { return logicalDpiX() > 0 ? logicalDpiX() : 96.0; }

    // Finds the scale and the scroll ranges for the viewport size. The scroll bars take
    // room of their own, so a fit that needs one is computed again without its room.
    void Relayout()
    {
        const double old = m_dScale;
        const QSize full = maximumViewportSize();
        QSize view = full;
        double content = 0.0;
        for (int pass = 0; pass < 3 && m_pPage; ++pass) {
            m_dScale = FitScale(view, content);
            const QSize doc = SheetSize() + QSize(2 * Border, 2 * Border);
            QSize next = full;
            const bool wide = doc.width() > full.width();
            const bool tall = doc.height() > full.height() - (wide ? horizontalScrollBar()->sizeHint().height() : 0);
            if (tall)
                next.rwidth() -= verticalScrollBar()->sizeHint().width();
            if (doc.width() > next.width())
                next.rheight() -= horizontalScrollBar()->sizeHint().height();
            if (next == view)
                break;
            view = next;
        }
        m_dScale = m_pPage ? FitScale(view, content) : 0.0;
        if (m_dScale != old)
            m_cCache = QPixmap();
        const QSize doc = m_pPage ? SheetSize() + QSize(2 * Border, 2 * Border) : QSize();
        QScrollBar* horizontal = horizontalScrollBar();
        QScrollBar* vertical = verticalScrollBar();
        horizontal->setRange(0, std::max(0, doc.width() - view.width()));
        horizontal->setPageStep(std::max(1, view.width()));
        vertical->setRange(0, std::max(0, doc.height() - view.height()));
        vertical->setPageStep(std::max(1, view.height()));
        // The printed content fills the width from its left edge.
        if (m_eFit == FitContent && m_pPage)
            horizontal->setValue(qRound(Border + content * m_dScale - ContentGap));
        if (m_dScale != old && m_scaleChanged)
            m_scaleChanged();
    }

    // The scale for the viewport size; content gets the left edge of the printed content.
    double FitScale(const QSize& view, double& content) const
    {
        const double width = std::max(1, view.width() - 2 * Border);
        const double height = std::max(1, view.height() - 2 * Border);
        switch (m_eFit) {
        case FitContent: {
            const auto [left, right] = ContentExtent(*m_pPage);
            content = left;
            return std::max(1, view.width() - 2 * ContentGap) / (right - left);
        }
        case FitWidth:
            return width / m_pPage->Width();
        case FitPage:
            return std::min(width / m_pPage->Width(), height / m_pPage->Height());
        case FitNone:
            break;
        }
        return m_dPercent / 100.0 * ScreenDpi() / 1440.0;
    }

    const ReportPage* m_pPage = nullptr;
    Fit m_eFit = FitWidth;
    double m_dPercent = 100.0;
    double m_dScale = 0.0;
    int m_iWheel = 0;
    QRectF m_cMark;
    mutable QPixmap m_cCache;

    // The horizontal extent of everything drawn on the page with a little room around it; the
    // whole width for an empty page.
    static std::pair<double, double> ContentExtent(const ReportPage& page)
    {
        double left = page.Width();
        double right = 0.0;
        for (const ReportPage::Operation& operation : page.Operations()) {
            const QRectF rect = operation.rect.normalized();
            left = std::min(left, rect.left());
            right = std::max(right, rect.right());
        }
        if (right <= left)
            return { 0.0, double(page.Width()) };
        return { std::max(0.0, left - ContentPadding), std::min(double(page.Width()), right + ContentPadding) };
    }
};
