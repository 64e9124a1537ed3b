// SPDX-License-Identifier: GPL-3.0-or-later
// The window of a view: layout of pane, splitter, chart and bars, the in-place editor, events.
#include "frm_GraphicView.h"

#include "ChartAdapter.h"
#include "CurveColors.h"
#include "ResStrings.h"
#include "ctl_DynamicGrid.h"
#include "ctl_NavBar.h"
#include "ctl_VertNavBar.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QStyle>
#include <QToolButton>
#include <QTreeWidget>

#include <cmath>

namespace {

constexpr int StripHeight = 22;

QToolButton* StripButton(QWidget* parent, QStyle::StandardPixmap icon, int textId)
{
    auto* button = new QToolButton(parent);
    button->setAutoRaise(true);
    button->setIcon(parent->style()->standardIcon(icon));
    button->setIconSize(QSize(12, 12));
    button->setToolTip(GetResString(textId));
    return button;
}

} // namespace

frm_GraphicView::frm_GraphicView(QWidget* parent)
    : QWidget(parent)
{
    setFocusPolicy(Qt::StrongFocus);

    m_cTree = new QTreeWidget(this);
    m_cTree->setHeaderHidden(true);
    m_cTree->setRootIsDecorated(true);
    m_cTree->setUniformRowHeights(true);

    m_cStrip = new QWidget(this);
    m_cStrip->setBackgroundRole(QPalette::Button);
    m_cStrip->setAutoFillBackground(true);
    auto* stripLayout = new QHBoxLayout(m_cStrip);
    stripLayout->setContentsMargins(4, 0, 0, 0);
    stripLayout->setSpacing(0);
    stripLayout->addStretch();
    m_cHideButton = StripButton(m_cStrip, QStyle::SP_ArrowLeft, 446);
    stripLayout->addWidget(m_cHideButton);
    connect(m_cHideButton, &QToolButton::clicked, this, &frm_GraphicView::CloseStatistics);

    // Shown in the view's bottom left corner while the pane is hidden.
    m_cShowButton = StripButton(this, QStyle::SP_ArrowRight, 445);
    m_cShowButton->setAutoRaise(false);
    m_cShowButton->hide();
    connect(m_cShowButton, &QToolButton::clicked, this, &frm_GraphicView::ShowStatistics);

    m_cSplitter = new QWidget(this);
    m_cSplitter->setCursor(Qt::SplitHCursor);
    m_cSplitter->setBackgroundRole(QPalette::Window);
    m_cSplitter->setAutoFillBackground(true);
    m_cSplitter->installEventFilter(this);

    m_cChartBox = new QWidget(this);
    m_cChart = new ChartAdapter(m_cChartBox);
    m_cNavigate = new ctl_NavBar(m_cChartBox);
    m_cVertical = new ctl_VertNavBar(m_cChartBox);
    m_cVertical2 = new ctl_VertNavBar(m_cChartBox);
    m_cCorner = new QWidget(m_cChartBox);
    m_cCorner2 = new QWidget(m_cChartBox);
    for (ctl_VertNavBar* bar : { m_cVertical, m_cVertical2 })
        connect(bar, &ctl_VertNavBar::UpdateSize, this, &frm_GraphicView::AlignChart);
    m_cChart->SetAxisVisible(ChartAxis::Y1, true);
    m_cChart->SetAxisGrid(ChartAxis::X, true);
    m_cChart->SetAxisGrid(ChartAxis::Y1, true);

    m_cGrid = new ctl_DynamicGrid(this);
    m_cGrid->hide();

    m_cEdit = new QPlainTextEdit(this);
    m_cEdit->setFrameShape(QFrame::Box);
    m_cEdit->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_cEdit->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_cEdit->hide();
    m_cEdit->installEventFilter(this);

    AlignControls();
}

frm_GraphicView::~frm_GraphicView() = default;

void frm_GraphicView::SetViewMode(qint32 mode)
{
    m_lViewMode = mode;
    if (mode == ChartMode) {
        m_cChartBox->setEnabled(true);
        m_cChartBox->show();
        m_cGrid->hide();
    } else if (mode == GridMode) {
        m_cChartBox->setEnabled(false);
        m_cChartBox->hide();
        m_cGrid->show();
    }
}

void frm_GraphicView::SetStatisticVisible(bool visible)
{
    m_bStatisticVisible = visible;
    m_cTree->setVisible(visible);
    m_cStrip->setVisible(visible);
    AlignControls();
}

QWidget* frm_GraphicView::ActiveView() const
{
    return m_lViewMode == GridMode ? static_cast<QWidget*>(m_cGrid) : m_cChartBox;
}

void frm_GraphicView::AlignControls()
{
    const int w = width();
    const int h = height();
    const bool pane = m_bStatisticVisible;
    const int s = pane ? SplitterWidth : 0;
    const int paneWidth = pane ? static_cast<int>((w - s) * m_dLeftShare) : 0;
    const int viewWidth = pane ? static_cast<int>((w - s) * m_dRightShare) : w;
    if (paneWidth < 0 || viewWidth < 0)
        return;

    m_cStrip->setGeometry(0, 0, paneWidth, StripHeight);
    m_cTree->setGeometry(0, StripHeight, paneWidth, std::max(0, h - StripHeight));
    m_cSplitter->setGeometry(paneWidth, 0, SplitterWidth, h);
    m_cSplitter->setVisible(pane);
    const int left = paneWidth + s;
    m_cChartBox->setGeometry(left, 0, viewWidth, h);
    AlignChart();
    m_cGrid->setGeometry(m_cChartBox->geometry());

    // In the bottom left corner of the view, beside the time bar and below the left bar's pin.
    m_cShowButton->setGeometry(left + 1, std::max(0, h - BarHeight) + 1, BarHeight - 2, BarHeight - 2);
    m_cShowButton->setVisible(!pane);
    m_cShowButton->raise();
}

void frm_GraphicView::AlignChart()
{
    const int w = m_cChartBox->width();
    const int h = m_cChartBox->height();
    const int barWidth = m_cVertical->sizeHint().width();
    const bool first = m_cChart->AxisVisible(ChartAxis::Y1) && h > 18 && w > 25;
    const bool second = m_cChart->AxisVisible(ChartAxis::Y2) && h > 18 && w > 45;
    const int barHeight = std::max(0, h - BarHeight);

    // A bar folded to its pin keeps only the pin's box, over the chart's top corner: the chart
    // takes the bar's width. The corner below a bar stays while the bar is open or, on the
    // left, while it holds the pane's show button.
    const auto place = [&](ctl_VertNavBar* bar, QWidget* corner, bool shown, int x, bool keepCorner) {
        const bool open = shown && !bar->Minimized();
        bar->setVisible(shown);
        bar->setGeometry(x, 0, barWidth, open ? barHeight : std::min(barHeight, bar->sizeHint().height()));
        bar->raise();
        corner->setVisible(open || keepCorner);
        corner->setGeometry(x, barHeight, barWidth, BarHeight);
        return std::pair(open ? barWidth : 0, open || keepCorner ? barWidth : 0);
    };
    const auto [chartLeft, navLeft] = place(m_cVertical, m_cCorner, first, 0, !m_bStatisticVisible);
    const auto [chartRight, navRight] = place(m_cVertical2, m_cCorner2, second, w - barWidth, false);

    m_cChart->setGeometry(chartLeft, 0, std::max(0, w - chartLeft - chartRight), barHeight);
    m_cNavigate->setGeometry(navLeft, barHeight, std::max(0, w - navLeft - navRight), std::min(h, BarHeight));
}

bool frm_GraphicView::SplitterEvent(QEvent* event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        if (m_bDragging)
            return true;
        m_bDragging = true;
        m_lDragStart = static_cast<QMouseEvent*>(event)->position().toPoint().x();
        m_cSplitter->setPalette(QPalette(Qt::white));
        ActiveView()->hide(); // the view is laid out again when the drag ends
        return true;
    case QEvent::MouseMove: {
        if (!m_bDragging)
            return true;
        const int offset = static_cast<QMouseEvent*>(event)->position().toPoint().x() - m_lDragStart;
        const double newLeft = m_cTree->width() + offset;
        const double share = newLeft / double(width() - SplitterWidth);
        if (share >= 0 && share < 1) {
            m_dLeftShare = share;
            m_dRightShare = 1 - share;
            AlignControls();
        }
        return true;
    }
    case QEvent::MouseButtonRelease:
        m_bDragging = false;
        m_cSplitter->setPalette(palette());
        ActiveView()->show();
        return true;
    default:
        return false;
    }
}

void frm_GraphicView::StartTextEdit(int x, int y, int width, int height, qint32 backColor, const QString& text,
    const QString& id, const QFont* font, int alignment)
{
    emit EditFinished(m_sEditId, m_cEdit->toPlainText(), false);

    if (font) {
        QFont chosen(font->family(), font->pointSize());
        chosen.setBold(font->bold());
        m_cEdit->setFont(chosen);
    } else {
        m_cEdit->setFont(QFont(QStringLiteral("MS Sans Serif"), 8));
    }
    // At least one line of that font fits between the frame and the document's margins, so
    // that no letter is cut off below.
    const QMargins frame = m_cEdit->contentsMargins();
    const int margin = static_cast<int>(std::ceil(m_cEdit->document()->documentMargin()));
    const int lineHeight = QFontMetrics(m_cEdit->font()).lineSpacing() + 2 * margin + frame.top() + frame.bottom();
    const QPoint origin = m_cChart->mapTo(this, QPoint(0, 0));
    m_cEdit->setGeometry(origin.x() + x, origin.y() + y, width, std::max(height, lineHeight));
    QPalette palette = m_cEdit->palette();
    palette.setColor(QPalette::Base, CurveColors::ToColor(backColor));
    m_cEdit->setPalette(palette);
    m_sEditId = id;
    m_cEdit->setPlainText(text);
    QTextOption option = m_cEdit->document()->defaultTextOption();
    option.setAlignment(alignment == 1 ? Qt::AlignRight : alignment == 2 ? Qt::AlignHCenter : Qt::AlignLeft);
    m_cEdit->document()->setDefaultTextOption(option);
    m_cEdit->selectAll();
    m_cEdit->show();
    m_cEdit->raise();
    m_cEdit->setFocus();
}

bool frm_GraphicView::Editing() const
{
    return m_cEdit->isVisible();
}

void frm_GraphicView::FinishEdit(const QString& text, bool cancelled)
{
    const QString id = m_sEditId;
    m_sEditId.clear();
    m_cEdit->hide();
    emit EditFinished(id, text, cancelled);
}

void frm_GraphicView::EndTextEdit(bool cancelled)
{
    FinishEdit(cancelled ? QString() : m_cEdit->toPlainText(), cancelled);
}

bool frm_GraphicView::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_cSplitter)
        return SplitterEvent(event);
    if (watched == m_cEdit && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if ((key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) && !(key->modifiers() & Qt::ShiftModifier)) {
            FinishEdit(m_cEdit->toPlainText(), false);
            return true;
        }
        if (key->key() == Qt::Key_Escape) {
            FinishEdit(QString(), true);
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void frm_GraphicView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    AlignControls();
}

void frm_GraphicView::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_F1) {
        emit HelpRequested(m_lHelpId);
        return;
    }
    emit KeyPressed(event->key());
    QWidget::keyPressEvent(event);
}

void frm_GraphicView::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow()) {
        emit Activated();
        AlignControls();
    }
}

void frm_GraphicView::CloseFromCode()
{
    m_bClosingFromCode = true;
    close();
    m_bClosingFromCode = false;
}

void frm_GraphicView::closeEvent(QCloseEvent* event)
{
    if (!m_bClosingFromCode && m_fCloseHandler && !m_fCloseHandler()) {
        event->ignore();
        return;
    }
    event->accept();
}
