// SPDX-License-Identifier: GPL-3.0-or-later
// The print preview: its tools, zoom list, page turning, find, printing and saving as PDF
// around the page view.
#include "frm_Preview.h"

#include "PreviewPageView.h"
#include "ReportDocument.h"
#include "ResStrings.h"
#include "Settings.h"

#include <QAbstractScrollArea>
#include <QAction>
#include <QCloseEvent>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QIcon>
#include <QKeyEvent>
#include <QLayout>
#include <QLineEdit>
#include <QMessageBox>
#include <QPainter>
#include <QPixmap>
#include <QPrintDialog>
#include <QPrinter>
#include <QScreen>
#include <QScrollBar>
#include <QSpinBox>
#include <QStandardPaths>
#include <QToolBar>
#include <QToolButton>
#include <QToolTip>
#include <QWheelEvent>

#include <algorithm>
#include <array>
#include <cmath>

namespace {

// The fixed percentages of the zoom list, after its three fitting modes.
constexpr std::array<int, 5> Percentages = { 50, 75, 100, 150, 200 };
constexpr int FitEntries = 3;

} // namespace

frm_Preview::frm_Preview(QWidget* parent)
    : QMainWindow(parent)
{
    setObjectName(QStringLiteral("frm_Preview"));
    setWindowTitle(GetResString(468));

    m_picPage = new PreviewPageView(this);
    m_picPage->setObjectName(QStringLiteral("pic_Page"));
    setCentralWidget(m_picPage);
    m_picPage->m_turnPage = [this](int step) {
        const qsizetype before = m_lPage;
        ShowPage(m_lPage + step);
        return m_lPage != before;
    };
    m_picPage->m_zoomStep = [this](int step) { step > 0 ? ZoomIn() : ZoomOut(); };
    m_picPage->m_scaleChanged = [this] { UpdateZoomTools(); };

    m_tlbPreview = addToolBar(GetResString(468));
    m_tlbPreview->setObjectName(QStringLiteral("tlb_Preview"));
    m_tlbPreview->setMovable(false);
    m_tlbPreview->setFloatable(false);
    m_tlbPreview->setContextMenuPolicy(Qt::PreventContextMenu);

    // The program's own zoom pictures where they are, else the desktop's.
    const auto icon = [](const char* theme, const char* own = nullptr) {
        if (own) {
            const QString resource = QStringLiteral(":/icons/%1.svg").arg(QLatin1String(own));
            if (QFile::exists(resource))
                return QIcon(resource);
        }
        return QIcon::fromTheme(QLatin1String(theme));
    };
    const auto tool = [this](const QIcon& image, const QString& tip, const char* name) {
        QAction* action = m_tlbPreview->addAction(image, tip);
        action->setObjectName(QLatin1String(name));
        action->setToolTip(tip);
        return action;
    };

    m_tlbPrint = tool(icon("document-print"), GetResString(472), "tlb_Print");
    m_tlbSavePdf = tool(icon("document-save-as"), LocalText("Als PDF speichern", "Save as PDF"), "tlb_SavePdf");
    m_tlbPreview->addSeparator();

    // The find box stays out of the toolbar until the find tool or Ctrl+F calls it.
    m_tlbFind = tool(icon("edit-find"), GetResString(473), "tlb_Find");
    m_tlbFind->setShortcut(QKeySequence::Find);
    // Also the window's, so that Ctrl+F works when the tool is out of sight.
    addAction(m_tlbFind);
    m_txtFind = new QLineEdit(m_tlbPreview);
    m_txtFind->setObjectName(QStringLiteral("txt_Find"));
    m_txtFind->setPlaceholderText(GetResString(473));
    m_txtFind->setToolTip(GetResString(473));
    m_txtFind->setClearButtonEnabled(true);
    m_txtFind->setMaximumWidth(m_txtFind->fontMetrics().averageCharWidth() * 24);
    m_txtFind->installEventFilter(this);
    m_actFindBox = m_tlbPreview->addWidget(m_txtFind);
    m_actFindBox->setVisible(false);
    m_tlbPreview->addSeparator();
    // F3 and Shift+F3 search on wherever the focus is.
    auto* findNext = new QAction(this);
    findNext->setShortcut(QKeySequence::FindNext);
    auto* findPrevious = new QAction(this);
    findPrevious->setShortcut(QKeySequence::FindPrevious);
    addAction(findNext);
    addAction(findPrevious);
    connect(findNext, &QAction::triggered, this, [this] { FindFromKey(true); });
    connect(findPrevious, &QAction::triggered, this, [this] { FindFromKey(false); });

    m_tlbZoomOut = tool(icon("zoom-out", "ICO_ZOOMOUT"), GetResString(474), "tlb_ZoomOut");
    m_tlbZoomIn = tool(icon("zoom-in", "ICO_ZOOMIN"), GetResString(475), "tlb_ZoomIn");

    m_cboZoom = new QComboBox(m_tlbPreview);
    m_cboZoom->setObjectName(QStringLiteral("cbo_Zoom"));
    m_cboZoom->addItem(GetResString(471));
    m_cboZoom->addItem(GetResString(469));
    m_cboZoom->addItem(GetResString(470));
    for (const int percent : Percentages)
        m_cboZoom->addItem(QStringLiteral("%1 %").arg(percent));
    m_cboZoom->setFocusPolicy(Qt::ClickFocus);
    m_tlbPreview->addWidget(m_cboZoom);
    m_tlbPreview->addSeparator();

    m_tlbPrevious = tool(icon("go-previous"), GetResString(476), "tlb_Previous");
    m_txtPage = new QSpinBox(m_tlbPreview);
    m_txtPage->setObjectName(QStringLiteral("txt_Page"));
    m_txtPage->setKeyboardTracking(false);
    m_txtPage->setAlignment(Qt::AlignCenter);
    m_txtPage->setButtonSymbols(QAbstractSpinBox::NoButtons);
    m_tlbPreview->addWidget(m_txtPage);
    m_tlbNext = tool(icon("go-next"), GetResString(477), "tlb_Next");
    m_tlbPreview->addSeparator();

    // The close tool shows its caption: there is no common picture for it.
    m_tlbClose = tool(QIcon(), GetResString(273), "tlb_Close");
    m_tlbClose->setToolTip(QString(GetResString(273)).remove(QLatin1Char('&')));
    if (auto* button = qobject_cast<QToolButton*>(m_tlbPreview->widgetForAction(m_tlbClose)))
        button->setToolButtonStyle(Qt::ToolButtonTextOnly);

    connect(m_tlbPrint, &QAction::triggered, this, &frm_Preview::Print);
    connect(m_tlbSavePdf, &QAction::triggered, this, &frm_Preview::SavePdf);
    connect(m_tlbFind, &QAction::triggered, this, &frm_Preview::ShowFind);
    connect(m_txtFind, &QLineEdit::textEdited, this, [this] {
        m_bHitAgain = true;
        SetNotFound(false);
    });
    connect(m_tlbZoomOut, &QAction::triggered, this, &frm_Preview::ZoomOut);
    connect(m_tlbZoomIn, &QAction::triggered, this, &frm_Preview::ZoomIn);
    connect(m_cboZoom, &QComboBox::activated, this, &frm_Preview::SetZoomIndex);
    connect(m_tlbPrevious, &QAction::triggered, this, &frm_Preview::PreviousPage);
    connect(m_tlbNext, &QAction::triggered, this, &frm_Preview::NextPage);
    connect(m_txtPage, &QSpinBox::valueChanged, this, [this](int value) { ShowPage(value - 1); });
    connect(m_tlbClose, &QAction::triggered, this, &QWidget::close);

    // The zoom the user left the preview with last time.
    const QString stored = Settings::StoredValue(Settings::Id::PreviewZoom);
    const int zoom = int(Settings::Number(Settings::Id::PreviewZoom));
    m_iZoom = !stored.isEmpty() && zoom >= 0 && zoom < m_cboZoom->count() ? zoom : int(ZoomPageWidth);
    m_cboZoom->setCurrentIndex(m_iZoom);
    ApplyZoom();

    // A sheet of A4 in page width at a size that suits the screen.
    QSize size(900, 1000);
    if (const QScreen* screen = QGuiApplication::primaryScreen())
        size = size.boundedTo(screen->availableGeometry().size() * 0.9);
    resize(size);
    m_picPage->setFocus();
    UpdateTools();
}

frm_Preview::~frm_Preview() = default;

QAbstractScrollArea* frm_Preview::pic_Page() const
{
    return m_picPage;
}

void frm_Preview::SetReport(std::shared_ptr<ReportDocument> document)
{
    m_pDocument = std::move(document);
    const QString title = m_pDocument ? m_pDocument->Title() : QString();
    setWindowTitle(title.isEmpty() ? GetResString(468) : GetResString(468) + QStringLiteral(" - ") + title);
    m_lPage = -1;
    m_lHitPage = -1;
    m_lHitOperation = -1;
    SetNotFound(false);
    ShowPage(0);
}

void frm_Preview::ShowPage(qsizetype index)
{
    const qsizetype count = m_pDocument ? m_pDocument->PageCount() : 0;
    index = count == 0 ? 0 : std::clamp(index, qsizetype(0), count - 1);
    const bool changed = index != m_lPage;
    m_lPage = index;
    if (changed)
        m_picPage->SetPage(count > 0 ? &m_pDocument->Page(index) : nullptr);
    UpdateTools();
}

void frm_Preview::SetZoomIndex(int index)
{
    if (index < 0 || index >= m_cboZoom->count())
        return;
    m_iZoom = index;
    ApplyZoom();
    UpdateTools();
}

void frm_Preview::ZoomOut()
{
    const double now = m_picPage->Percent();
    for (int index = m_cboZoom->count() - 1; index >= FitEntries; --index) {
        if (PercentAt(index) < now - 0.5) {
            SetZoomIndex(index);
            return;
        }
    }
}

void frm_Preview::ZoomIn()
{
    const double now = m_picPage->Percent();
    for (int index = FitEntries; index < m_cboZoom->count(); ++index) {
        if (PercentAt(index) > now + 0.5) {
            SetZoomIndex(index);
            return;
        }
    }
}

bool frm_Preview::Find(bool forward)
{
    const QString wanted = m_txtFind->text();
    const qsizetype count = m_pDocument ? m_pDocument->PageCount() : 0;
    if (wanted.isEmpty() || count == 0)
        return false;
    // The first operation looked at on the page shown; one past either end leaves none there.
    const auto& shown = m_pDocument->Page(m_lPage).Operations();
    qsizetype start = forward ? 0 : qsizetype(shown.size()) - 1;
    if (m_lHitPage == m_lPage && m_lHitOperation >= 0 && m_lHitOperation < qsizetype(shown.size()))
        start = m_lHitOperation + (m_bHitAgain ? 0 : forward ? 1 : -1);
    // The page shown comes twice: from the start on first, and what lies before the start last.
    for (qsizetype step = 0; step <= count; ++step) {
        const qsizetype page = forward ? (m_lPage + step) % count : ((m_lPage - step) % count + count) % count;
        const auto& operations = m_pDocument->Page(page).Operations();
        const qsizetype size = qsizetype(operations.size());
        const auto found = [&](qsizetype index) {
            const ReportPage::Operation& operation = operations[std::size_t(index)];
            return operation.kind == ReportPage::Operation::Text
                && operation.text.contains(wanted, Qt::CaseInsensitive);
        };
        qsizetype hit = -1;
        if (forward) {
            const qsizetype end = step == count ? std::min(start, size) : size;
            for (qsizetype index = step == 0 ? start : 0; index < end && hit < 0; ++index)
                if (found(index))
                    hit = index;
        } else {
            const qsizetype end = step == count ? start : -1;
            for (qsizetype index = step == 0 ? std::min(start, size - 1) : size - 1; index > end && hit < 0; --index)
                if (found(index))
                    hit = index;
        }
        if (hit >= 0) {
            m_lHitPage = page;
            m_lHitOperation = hit;
            m_bHitAgain = false;
            SetNotFound(false);
            ShowPage(page);
            m_picPage->SetMark(operations[std::size_t(hit)].rect.normalized());
            return true;
        }
    }
    SetNotFound(true);
    return false;
}

QRectF frm_Preview::FindMark() const
{
    return m_picPage->Mark();
}

void frm_Preview::ShowFind()
{
    SetFindBoxVisible(true);
    m_txtFind->setFocus(Qt::ShortcutFocusReason);
    m_txtFind->selectAll();
}

void frm_Preview::HideFind()
{
    SetFindBoxVisible(false);
    m_picPage->SetMark(QRectF());
    SetNotFound(false);
    m_picPage->setFocus();
}

void frm_Preview::SetFindBoxVisible(bool visible)
{
    m_actFindBox->setVisible(visible);
    // The toolbar shows and hides its widgets when it lays out, which would come later.
    m_tlbPreview->layout()->activate();
}

void frm_Preview::FindFromKey(bool forward)
{
    if (m_txtFind->text().isEmpty()) {
        ShowFind();
        return;
    }
    SetFindBoxVisible(true);
    Find(forward);
}

void frm_Preview::SetNotFound(bool notFound)
{
    if (m_txtFind->property("notFound").toBool() == notFound)
        return;
    m_txtFind->setProperty("notFound", notFound);
    m_txtFind->setStyleSheet(notFound ? QStringLiteral("QLineEdit { background: #ffc8c8; }") : QString());
    const QString tip = notFound ? LocalText("Nicht gefunden", "Not found") : GetResString(473);
    m_txtFind->setToolTip(tip);
    if (notFound && m_txtFind->isVisible())
        QToolTip::showText(m_txtFind->mapToGlobal(QPoint(0, m_txtFind->height())), tip, m_txtFind);
    else
        QToolTip::hideText();
}

double frm_Preview::Scale() const
{
    return m_picPage->Scale();
}

QRect frm_Preview::SheetRect() const
{
    return m_picPage->SheetRect();
}

double frm_Preview::PercentAt(int index) const
{
    return index >= FitEntries ? Percentages[std::size_t(index - FitEntries)] : 0.0;
}

void frm_Preview::ApplyZoom()
{
    static constexpr PreviewPageView::Fit Fits[FitEntries]
        = { PreviewPageView::FitContent, PreviewPageView::FitWidth, PreviewPageView::FitPage };
    if (m_iZoom < FitEntries)
        m_picPage->SetZoom(Fits[m_iZoom], 100.0);
    else
        m_picPage->SetZoom(PreviewPageView::FitNone, PercentAt(m_iZoom));
}

void frm_Preview::UpdateTools()
{
    const qsizetype count = m_pDocument ? m_pDocument->PageCount() : 0;
    m_tlbPrint->setEnabled(count > 0);
    m_tlbSavePdf->setEnabled(count > 0);
    m_tlbFind->setEnabled(count > 0);
    m_tlbPrevious->setEnabled(count > 0 && m_lPage > 0);
    m_tlbNext->setEnabled(count > 0 && m_lPage < count - 1);
    UpdateZoomTools();
    // "Seite x von n", the number in between being the one to edit.
    const QSignalBlocker blocker(m_txtPage);
    const QString pattern = GetResString(462);
    const qsizetype split = pattern.indexOf(QStringLiteral("%s1"));
    m_txtPage->setPrefix(split < 0 ? QString() : pattern.left(split));
    m_txtPage->setSuffix(
        split < 0 ? QString() : pattern.mid(split + 3).replace(QStringLiteral("%s2"), QString::number(count)));
    m_txtPage->setRange(count > 0 ? 1 : 0, int(std::max(count, qsizetype(0))));
    m_txtPage->setValue(count > 0 ? int(m_lPage + 1) : 0);
    m_txtPage->setEnabled(count > 1);
}

void frm_Preview::UpdateZoomTools()
{
    if (!m_tlbZoomIn)
        return;
    const bool page = m_pDocument && m_pDocument->PageCount() > 0;
    const double now = m_picPage->Percent();
    m_tlbZoomOut->setEnabled(page && now > Percentages.front() + 0.5);
    m_tlbZoomIn->setEnabled(page && now < Percentages.back() - 0.5);
    const QSignalBlocker blocker(m_cboZoom);
    m_cboZoom->setCurrentIndex(m_iZoom);
}

void frm_Preview::Print()
{
    if (!m_pDocument || m_pDocument->PageCount() == 0)
        return;
    QPrinter printer(QPrinter::HighResolution);
    printer.setResolution(1440);
    printer.setFullPage(true);
    printer.setDocName(m_pDocument->Title());
    QPrintDialog dialog(&printer, this);
    // The document goes to the printer as a whole.
    dialog.setOption(QAbstractPrintDialog::PrintPageRange, false);
    if (dialog.exec() != QDialog::Accepted)
        return;
    if (!m_pDocument->PrintTo(printer)) {
        QMessageBox::warning(this, windowTitle(),
            LocalText("Der Bericht konnte nicht gedruckt werden.", "The report could not be printed."));
        return;
    }
    if (Settings::IsTrue(Settings::Id::ClosePreviewAfterPrint))
        close();
}

void frm_Preview::SavePdf()
{
    if (!m_pDocument || m_pDocument->PageCount() == 0)
        return;
    // The title as file name, without the characters file systems refuse.
    QString name = m_pDocument->Title().trimmed();
    static const QString forbidden = QStringLiteral("\\/:*?\"<>|");
    for (QChar& character : name)
        if (forbidden.contains(character) || character.unicode() < 32)
            character = QLatin1Char('_');
    if (name.isEmpty())
        name = LocalText("Bericht", "Report");
    QString folder = Settings::Value(Settings::Id::LastFolder);
    if (folder.isEmpty() || !QFileInfo(folder).isDir())
        folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    QString fileName = QFileDialog::getSaveFileName(this, LocalText("Als PDF speichern", "Save as PDF"),
        QDir(folder).filePath(name + QStringLiteral(".pdf")), LocalText("PDF-Dateien (*.pdf)", "PDF files (*.pdf)"));
    if (fileName.isEmpty())
        return;
    if (!fileName.endsWith(QStringLiteral(".pdf"), Qt::CaseInsensitive))
        fileName += QStringLiteral(".pdf");
    Settings::Write(Settings::Id::LastFolder, QFileInfo(fileName).absolutePath());
    QString error;
    if (!m_pDocument->SavePdf(fileName, &error))
        QMessageBox::warning(this, windowTitle(),
            LocalText(
                "Die PDF-Datei %1 konnte nicht gespeichert werden:\n%2", "The PDF file %1 could not be saved:\n%2")
                .arg(QDir::toNativeSeparators(fileName), error));
}

void frm_Preview::closeEvent(QCloseEvent* event)
{
    Settings::Write(Settings::Id::PreviewZoom, QString::number(m_iZoom));
    // The document can be large: it goes back as soon as nobody looks at it.
    m_picPage->SetPage(nullptr);
    m_pDocument.reset();
    m_lPage = 0;
    m_lHitPage = -1;
    m_lHitOperation = -1;
    SetNotFound(false);
    UpdateTools();
    event->accept();
    emit ReportReleased();
}

bool frm_Preview::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_txtFind && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        switch (key->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
            Find(!(key->modifiers() & Qt::ShiftModifier));
            return true;
        case Qt::Key_Escape:
            // Leaves the find box rather than the preview.
            HideFind();
            return true;
        default:
            break;
        }
    }
    return QMainWindow::eventFilter(watched, event);
}

void frm_Preview::keyPressEvent(QKeyEvent* event)
{
    const qsizetype count = m_pDocument ? m_pDocument->PageCount() : 0;
    switch (event->key()) {
    case Qt::Key_PageUp:
        PreviousPage();
        break;
    case Qt::Key_PageDown:
        NextPage();
        break;
    case Qt::Key_Home:
        ShowPage(0);
        break;
    case Qt::Key_End:
        ShowPage(count - 1);
        break;
    case Qt::Key_F1:
        if (m_help)
            m_help(HelpContext);
        break;
    case Qt::Key_Escape:
        close();
        break;
    default:
        QMainWindow::keyPressEvent(event);
        return;
    }
    event->accept();
}
