// SPDX-License-Identifier: GPL-3.0-or-later
#include "ctl_DynamicGrid.h"

#include "DynamicGridModel.h"
#include "Logging.h"
#include "Numeric.h"
#include "SafeSave.h"

#include <QApplication>
#include <QClipboard>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyle>
#include <QStyledItemDelegate>
#include <QTableView>
#include <QWheelEvent>

#include <algorithm>
#include <functional>
#include <limits>

namespace {

// Room around a text in a cell, as the measured column widths leave it.
constexpr int TextPadding = 8;
constexpr double MaxStoredWidth = 100000.0;

// A wheel turned mostly up or down moves the rows.
bool IsVerticalWheel(const QWheelEvent& event)
{
    const QPoint delta = event.angleDelta();
    return std::abs(delta.y()) >= std::abs(delta.x()) && delta.y() != 0;
}

// Draws a cell's text straight onto the painter: the style's item drawing lays out, elides
// and decorates every cell, several times the cost for texts that are known to fit.
class CellPainter final : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        const bool selected = option.state & QStyle::State_Selected;
        const QPalette::ColorGroup group = option.state & QStyle::State_Active ? QPalette::Active : QPalette::Inactive;
        if (selected)
            painter->fillRect(option.rect, option.palette.brush(group, QPalette::Highlight));
        painter->setPen(option.palette.color(group, selected ? QPalette::HighlightedText : QPalette::Text));
        // The cell leaves out the grid line, so the padding is a pixel short of the measured one.
        const QRect area = option.rect.adjusted(TextPadding / 2 - 1, 0, -(TextPadding / 2 - 1), 0);
        QString text = index.data().toString();
        // A column dragged narrower than its texts shows them shortened, never cut off.
        if (option.fontMetrics.horizontalAdvance(text) > area.width())
            text = option.fontMetrics.elidedText(text, Qt::ElideRight, area.width());
        const auto alignment = index.data(Qt::TextAlignmentRole).value<Qt::Alignment>();
        painter->drawText(area, static_cast<int>(alignment | Qt::TextSingleLine), text);
        if (option.state & QStyle::State_HasFocus) {
            QStyleOptionFocusRect focus;
            focus.QStyleOption::operator=(option);
            focus.backgroundColor = option.palette.color(group, selected ? QPalette::Highlight : QPalette::Base);
            const QWidget* widget = option.widget;
            (widget ? widget->style() : QApplication::style())
                ->drawPrimitive(QStyle::PE_FrameFocusRect, &focus, painter, widget);
        }
    }
};

} // namespace

// The table proper. Its rows are a window onto the data, so moving past the window's edge
// with the keyboard or the wheel scrolls the owner's bar instead of the table.
class ctl_DynamicGrid::GridView final : public QTableView
{
public:
    GridView(QScrollBar* rows, QWidget* parent)
        : QTableView(parent)
        , m_rows(rows)
    { }

    std::function<void()> onCopy;
    std::function<void()> onCursorKey;

protected:
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override
    {
        if (onCursorKey)
            onCursorKey();
        const QModelIndex current = currentIndex();
        const int rows = model() ? model()->rowCount() : 0;
        if (current.isValid() && rows > 0) {
            switch (action) {
            case MoveDown:
                if (current.row() == rows - 1 && Step(1))
                    return current;
                break;
            case MoveUp:
                if (current.row() == 0 && Step(-1))
                    return current;
                break;
            case MovePageDown:
                if (Step(std::max(rows - 1, 1)))
                    return current;
                break;
            case MovePageUp:
                if (Step(-std::max(rows - 1, 1)))
                    return current;
                break;
            case MoveHome:
            case MoveEnd:
                if (modifiers & Qt::ControlModifier) {
                    const bool end = action == MoveEnd;
                    m_rows->setValue(end ? m_rows->maximum() : m_rows->minimum());
                    return model()->index(end ? rows - 1 : 0, current.column());
                }
                break;
            default:
                break;
            }
        }
        return QTableView::moveCursor(action, modifiers);
    }

    // The time column covers the left edge, so a cell is scrolled out from under it.
    void scrollTo(const QModelIndex& index, ScrollHint hint) override
    {
        if (index.isValid() && index.column() > 0) {
            const int hidden = columnWidth(0) - columnViewportPosition(index.column());
            if (hidden > 0) {
                horizontalScrollBar()->setValue(horizontalScrollBar()->value() - hidden);
                return;
            }
        }
        QTableView::scrollTo(index, hint);
    }

    void wheelEvent(QWheelEvent* event) override
    {
        if (IsVerticalWheel(*event))
            QCoreApplication::sendEvent(m_rows, event);
        else
            QTableView::wheelEvent(event);
    }

    void keyPressEvent(QKeyEvent* event) override
    {
        if (event->matches(QKeySequence::Copy) && onCopy) {
            onCopy();
            event->accept();
            return;
        }
        QTableView::keyPressEvent(event);
    }

private:
    bool Step(int rows)
    {
        const int before = m_rows->value();
        m_rows->setValue(before + rows);
        return m_rows->value() != before;
    }

    QScrollBar* m_rows;
};

ctl_DynamicGrid::ctl_DynamicGrid(QWidget* parent)
    : QWidget(parent)
    , m_sValueFormat(QStringLiteral("#,##0.00"))
{
    // The corner between the table and the bar shows the control's own face.
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::Button);

    m_model = new DynamicGridModel(this);
    m_vScroll = new QScrollBar(Qt::Vertical, this);
    m_vScroll->setObjectName(QStringLiteral("VScroll"));
    m_vScroll->setEnabled(false);

    m_grid = new GridView(m_vScroll, this);
    m_grid->setObjectName(QStringLiteral("grid"));
    m_grid->horizontalScrollBar()->setObjectName(QStringLiteral("HScroll"));
    m_frozen = new QTableView(m_grid);
    m_frozen->setObjectName(QStringLiteral("TimeColumn"));

    for (QTableView* view : { static_cast<QTableView*>(m_grid), m_frozen }) {
        view->setEditTriggers(QAbstractItemView::NoEditTriggers);
        view->setWordWrap(false);
        view->setFrameShape(QFrame::NoFrame);
        view->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        view->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
        // Fixed rows, so that no row is ever measured.
        QHeaderView* rows = view->verticalHeader();
        rows->hide();
        rows->setSectionResizeMode(QHeaderView::Fixed);
        rows->setMinimumSectionSize(1);
        rows->setDefaultSectionSize(view->fontMetrics().height() + 6);
        view->horizontalHeader()->setHighlightSections(false);
        view->horizontalHeader()->setTextElideMode(Qt::ElideRight);
        view->horizontalHeader()->setMinimumSectionSize(8);
        view->setModel(m_model);
        view->setItemDelegate(new CellPainter(view));
    }
    m_frozen->setFocusPolicy(Qt::NoFocus);
    m_frozen->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    QItemSelectionModel* own = m_frozen->selectionModel();
    m_frozen->setSelectionModel(m_grid->selectionModel());
    delete own;
    m_grid->viewport()->stackUnder(m_frozen);

    QFont headerFont = m_grid->horizontalHeader()->font();
    headerFont.setBold(true);
    m_model->SetHeaderFont(headerFont);
    m_model->SetFormats(m_sDateFormat, m_sValueFormat);

    connect(m_vScroll, &QScrollBar::valueChanged, this, [this](int value) {
        m_model->SetFirstRow(value);
        GrowTimeColumn();
    });
    connect(m_grid->horizontalHeader(), &QHeaderView::sectionResized, this,
        [this](int logical, int, int newSize) { OnSectionResized(logical, newSize); });
    connect(m_frozen->horizontalHeader(), &QHeaderView::sectionResized, this, [this](int logical, int, int newSize) {
        if (logical == 0 && newSize > 0)
            m_grid->setColumnWidth(0, newSize);
    });
    connect(m_model, &QAbstractItemModel::modelReset, this, &ctl_DynamicGrid::HideFrozenDataColumns);

    // A click in the header row selects whole columns; a copy then takes the whole screen.
    for (QTableView* view : { static_cast<QTableView*>(m_grid), m_frozen }) {
        connect(view->horizontalHeader(), &QHeaderView::sectionPressed, this, [this] { m_bHeaderSelection = true; });
        connect(view, &QAbstractItemView::pressed, this, [this] { m_bHeaderSelection = false; });
        for (QWidget* area : { view->viewport(), view->horizontalHeader()->viewport() })
            area->installEventFilter(this);
    }
    m_grid->onCursorKey = [this] { m_bHeaderSelection = false; };
    m_grid->onCopy = [this] { CopyToClipboard(false); };
    m_grid->horizontalScrollBar()->installEventFilter(this);

    LayoutChildren();
}

ctl_DynamicGrid::~ctl_DynamicGrid()
{
    // The time column shares the table's selection model, which the table owns.
    delete m_frozen;
    delete m_grid;
}

qint32 ctl_DynamicGrid::FirstRow() const
{
    return m_model->FirstRow();
}

qint32 ctl_DynamicGrid::FirstColumn() const
{
    if (m_model->columnCount() <= 1)
        return 0;
    return std::max(m_grid->columnAt(m_grid->columnWidth(0)) - 1, 0);
}

QTableView* ctl_DynamicGrid::View() const
{
    return m_grid;
}

qint32 ctl_DynamicGrid::VisibleRows() const
{
    return m_model->rowCount();
}

void ctl_DynamicGrid::ScrollToRow(qint32 row)
{
    m_vScroll->setValue(row);
}

void ctl_DynamicGrid::AddMatrix(const DataMatrixPtr& matrix, const QString& key)
{
    if (!matrix || !matrix->DataBlock() || matrix->DataBlock()->Rows() == 0)
        return;
    std::erase_if(m_entries, [&key](const Entry& entry) { return entry.key == key; });
    m_entries.push_back({ key, matrix });
    if (m_bAutoUpdate)
        Fill();
}

void ctl_DynamicGrid::RemoveMatrix(const QString& key)
{
    std::erase_if(m_entries, [&key](const Entry& entry) { return entry.key == key; });
    if (m_bAutoUpdate)
        Fill();
}

void ctl_DynamicGrid::Clear()
{
    m_entries.clear();
    if (m_bAutoUpdate)
        Fill();
}

void ctl_DynamicGrid::Update(bool force)
{
    if (m_entries.empty())
        return;
    const DataMatrixPtr& first = m_entries.front().matrix;
    const qsizetype rows = first->DataBlock() ? first->DataBlock()->Rows() : 0;
    const bool changed = m_model->columnCount() != static_cast<int>(m_entries.size()) + 1
        || m_model->DataRows() != std::min<qsizetype>(rows, std::numeric_limits<qint32>::max());
    if (changed || force)
        Fill();
}

QList<DataMatrixPtr> ctl_DynamicGrid::ListedMatrices() const
{
    QList<DataMatrixPtr> matrices;
    matrices.reserve(static_cast<qsizetype>(m_entries.size()));
    for (const Entry& entry : m_entries)
        matrices.append(entry.matrix);
    return matrices;
}

// Shows the matrix list. An empty list leaves the screen as it is, so that a view being
// rebuilt keeps its old cells until the new matrices arrive.
void ctl_DynamicGrid::Fill()
{
    if (m_entries.empty())
        return;
    m_bFilling = true;
    m_model->SetFormats(m_sDateFormat, m_sValueFormat);
    m_model->SetMatrices(ListedMatrices());
    UpdateCapacity();
    UpdateVScroll();
    ApplyWidths();
    m_bFilling = false;
    LayoutFrozenColumn();
}

// A matrix keeps its column width in DisplayWidth. Without a usable one the width is taken
// from the bold header and the cells on the screen and written back.
void ctl_DynamicGrid::ApplyWidths()
{
    GrowTimeColumn();
    const QFontMetrics cellMetrics(m_grid->font());
    const QFontMetrics headerMetrics(m_model->HeaderFont());
    const QList<DataMatrixPtr>& matrices = m_model->Matrices();
    const int rows = m_model->rowCount();
    for (qsizetype i = 0; i < matrices.size(); ++i) {
        DataMatrix& matrix = *matrices[i];
        const double stored = LeadingNumber(QStringLiteral("0") + matrix.DisplayWidth());
        int width = 0;
        if (stored > 0) {
            width = std::max(qRound(std::min(stored, MaxStoredWidth)), 1);
        } else {
            width = headerMetrics.horizontalAdvance(DynamicGridModel::HeaderText(matrix)) + TextPadding;
            for (int r = 0; r < rows; ++r)
                width = std::max(
                    width, cellMetrics.horizontalAdvance(m_model->ValueText(m_model->FirstRow() + r, i)) + TextPadding);
            matrix.SetDisplayWidth(QString::number(width));
        }
        m_grid->setColumnWidth(static_cast<int>(i) + 1, width);
    }
}

// The time column grows to the widest time on the screen and never shrinks by itself.
void ctl_DynamicGrid::GrowTimeColumn()
{
    if (m_model->columnCount() == 0)
        return;
    const QFontMetrics metrics(m_grid->font());
    int width = m_lTimeWidth;
    const int rows = m_model->rowCount();
    for (int r = 0; r < rows; ++r)
        width = std::max(width, metrics.horizontalAdvance(m_model->TimeText(m_model->FirstRow() + r)) + TextPadding);
    m_lTimeWidth = width;
    if (m_grid->columnWidth(0) != width)
        m_grid->setColumnWidth(0, width);
    if (m_frozen->columnWidth(0) != width)
        m_frozen->setColumnWidth(0, width);
}

void ctl_DynamicGrid::OnSectionResized(int logical, int newSize)
{
    if (logical == 0) {
        if (newSize > 0 && !m_bFilling) {
            m_lTimeWidth = newSize;
            m_frozen->setColumnWidth(0, newSize);
        }
        LayoutFrozenColumn();
        return;
    }
    // A width the user drags is kept with the matrix.
    const QList<DataMatrixPtr>& matrices = m_model->Matrices();
    if (!m_bFilling && newSize > 0 && logical <= matrices.size())
        matrices[logical - 1]->SetDisplayWidth(QString::number(newSize));
}

// As many rows as fit wholly on the screen; the rest of the height stays empty.
void ctl_DynamicGrid::UpdateCapacity()
{
    const int rowHeight = std::max(m_grid->verticalHeader()->defaultSectionSize(), 1);
    const int capacity = std::max(m_grid->viewport()->height() / rowHeight, 1);
    if (capacity == m_model->Capacity())
        return;
    m_model->SetCapacity(capacity);
    UpdateVScroll();
    GrowTimeColumn();
}

void ctl_DynamicGrid::UpdateVScroll()
{
    const int maximum = std::max(m_model->MaxFirstRow(), 0);
    m_vScroll->setRange(0, maximum);
    m_vScroll->setSingleStep(1);
    m_vScroll->setPageStep(std::max(m_model->rowCount(), 1));
    m_vScroll->setValue(m_model->FirstRow());
    m_vScroll->setEnabled(maximum > 0);
}

void ctl_DynamicGrid::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    LayoutChildren();
}

void ctl_DynamicGrid::LayoutChildren()
{
    const int bar = style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, m_vScroll);
    const int width = std::max(this->width() - bar, 10);
    const int height = std::max(this->height(), 10);
    m_grid->setGeometry(0, 0, width, height);
    // The bar ends where the table's horizontal bar begins, as a table's own would.
    const QScrollBar* across = m_grid->horizontalScrollBar();
    const int below = across->isVisibleTo(m_grid) ? across->height() : 0;
    m_vScroll->setGeometry(width, 0, bar, std::max(height - below, 10));
}

void ctl_DynamicGrid::LayoutFrozenColumn()
{
    if (m_model->columnCount() == 0) {
        m_frozen->hide();
        return;
    }
    const int frame = m_grid->frameWidth();
    m_frozen->horizontalHeader()->setFixedHeight(m_grid->horizontalHeader()->height());
    m_frozen->setGeometry(
        frame, frame, m_grid->columnWidth(0), m_grid->viewport()->height() + m_grid->horizontalHeader()->height());
    m_frozen->show();
}

void ctl_DynamicGrid::HideFrozenDataColumns()
{
    for (int c = 1; c < m_model->columnCount(); ++c)
        m_frozen->setColumnHidden(c, true);
    m_frozen->setColumnWidth(0, m_lTimeWidth > 0 ? m_lTimeWidth : m_grid->columnWidth(0));
}

bool ctl_DynamicGrid::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::Resize:
        if (watched == m_grid->viewport()) {
            UpdateCapacity();
            LayoutFrozenColumn();
        }
        break;
    case QEvent::Show:
    case QEvent::Hide:
        if (watched == m_grid->horizontalScrollBar())
            LayoutChildren();
        break;
    case QEvent::Wheel:
        if (watched == m_frozen->viewport()) {
            auto* wheel = static_cast<QWheelEvent*>(event);
            QCoreApplication::sendEvent(IsVerticalWheel(*wheel) ? m_vScroll : m_grid->horizontalScrollBar(), wheel);
            return true;
        }
        break;
    case QEvent::MouseButtonRelease: {
        auto* mouse = static_cast<QMouseEvent*>(event);
        emit MouseUp(mouse->button(), mouse->modifiers(),
            static_cast<QWidget*>(watched)->mapTo(this, mouse->position().toPoint()));
        break;
    }
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}

void ctl_DynamicGrid::CopyToClipboard(bool all)
{
    QClipboard* clipboard = QGuiApplication::clipboard();
    if (all) {
        clipboard->clear();
        clipboard->setText(DataText());
        return;
    }
    if (SelectionText(false).isEmpty())
        return;
    const bool wholeScreen = m_bHeaderSelection;
    if (wholeScreen)
        m_grid->selectAll();
    const QString text = SelectionText(wholeScreen);
    clipboard->clear();
    clipboard->setText(text);
    if (wholeScreen) {
        m_grid->setCurrentIndex(m_model->index(0, 0));
        m_bHeaderSelection = false;
    }
}

// The selected cells as the screen shows them: the rectangle around the selection, cells
// joined by tabs, rows by CR LF, cells outside the selection empty.
QString ctl_DynamicGrid::SelectionText(bool withHeader) const
{
    const QModelIndexList selected = m_grid->selectionModel()->selectedIndexes();
    if (selected.isEmpty())
        return {};
    int top = selected.front().row(), bottom = top;
    int left = selected.front().column(), right = left;
    for (const QModelIndex& index : selected) {
        top = std::min(top, index.row());
        bottom = std::max(bottom, index.row());
        left = std::min(left, index.column());
        right = std::max(right, index.column());
    }
    const int columns = right - left + 1;
    std::vector<bool> chosen(static_cast<size_t>((bottom - top + 1) * columns));
    for (const QModelIndex& index : selected)
        chosen[static_cast<size_t>((index.row() - top) * columns + index.column() - left)] = true;

    QStringList lines;
    QStringList cells;
    if (withHeader) {
        for (int c = left; c <= right; ++c)
            cells.append(m_model->headerData(c, Qt::Horizontal).toString());
        lines.append(cells.join(u'\t'));
    }
    for (int r = top; r <= bottom; ++r) {
        cells.clear();
        for (int c = left; c <= right; ++c)
            cells.append(chosen[static_cast<size_t>((r - top) * columns + c - left)]
                    ? m_model->index(r, c).data().toString()
                    : QString());
        lines.append(cells.join(u'\t'));
    }
    return lines.join(QStringLiteral("\r\n"));
}

QString ctl_DynamicGrid::DataText() const
{
    return m_model->DataText(ListedMatrices(), m_sDateFormat, m_sValueFormat);
}

qint32 ctl_DynamicGrid::Export(const QString& fileName)
{
    if (fileName.isEmpty())
        return -1;
    // A failed export leaves the old file; a link, a pipe or a device stays what it is.
    SafeSave file(fileName);
    if (file.open(QIODevice::WriteOnly) && m_model->WriteCsv(file, ListedMatrices()) && file.commit())
        return 0;
    WriteLog(QStringLiteral("export"),
        QStringLiteral("Cannot write ") + fileName + QStringLiteral(": ") + file.errorString(),
        QStringLiteral("ctl_DynamicGrid.Export"), LogLevel::Error);
    return -2;
}
