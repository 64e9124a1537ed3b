// SPDX-License-Identifier: GPL-3.0-or-later
#include "HelpWindow.h"

#include "Help.h"
#include "ResStrings.h"
#include "Settings.h"

#include <QAction>
#include <QApplication>
#include <QFont>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QIcon>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QScreen>
#include <QSplitter>
#include <QStyle>
#include <QTabWidget>
#include <QTextBrowser>
#include <QTextDocument>
#include <QTimer>
#include <QToolBar>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

QPointer<HelpWindow>& TheWindow()
{
    static QPointer<HelpWindow> window;
    return window;
}

// Runs first in the application's destructor, while widgets may still be deleted.
void DeleteTheWindow()
{
    delete TheWindow().data();
}

// The few texts of the window that the string table does not hold.
QString Text(const QString& language, const char* german, const char* english)
{
    return QString::fromUtf8(language == QLatin1String("en") ? english : german);
}

constexpr int FileRole = Qt::UserRole;
const QColor MarkColour(255, 236, 120);

} // namespace

HelpWindow* HelpWindow::Instance()
{
    if (!TheWindow()) {
        static bool routineAdded = false;
        if (!routineAdded) {
            qAddPostRoutine(DeleteTheWindow);
            routineAdded = true;
        }
        TheWindow() = new HelpWindow;
    }
    return TheWindow();
}

HelpWindow* HelpWindow::Existing()
{
    return TheWindow();
}

HelpWindow::HelpWindow()
    : QWidget(nullptr, Qt::Window)
{
    setObjectName(QStringLiteral("frm_Help"));
    // An open help window does not keep the program running once the main window has closed.
    setAttribute(Qt::WA_QuitOnClose, false);

    auto* tools = new QToolBar(this);
    tools->setObjectName(QStringLiteral("tlb_Help"));
    tools->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_back = tools->addAction(style()->standardIcon(QStyle::SP_ArrowBack), QString());
    m_back->setObjectName(QStringLiteral("cmd_Back"));
    m_back->setShortcut(QKeySequence::Back);
    m_forward = tools->addAction(style()->standardIcon(QStyle::SP_ArrowForward), QString());
    m_forward->setObjectName(QStringLiteral("cmd_Forward"));
    m_forward->setShortcut(QKeySequence::Forward);
    m_home = tools->addAction(
        QIcon::fromTheme(QStringLiteral("go-home"), style()->standardIcon(QStyle::SP_DirHomeIcon)), QString());
    m_home->setObjectName(QStringLiteral("cmd_Home"));
    m_back->setEnabled(false);
    m_forward->setEnabled(false);

    m_contents = new QTreeWidget(this);
    m_contents->setObjectName(QStringLiteral("trv_Contents"));
    m_contents->setHeaderHidden(true);
    m_contents->setUniformRowHeights(true);

    auto* searchPage = new QWidget(this);
    m_searchField = new QLineEdit(searchPage);
    m_searchField->setObjectName(QStringLiteral("txt_Search"));
    m_searchField->setClearButtonEnabled(true);
    m_searchButton = new QPushButton(searchPage);
    m_searchButton->setObjectName(QStringLiteral("cmd_Search"));
    m_results = new QListWidget(searchPage);
    m_results->setObjectName(QStringLiteral("lst_Results"));
    m_resultCount = new QLabel(searchPage);
    m_resultCount->setObjectName(QStringLiteral("lbl_ResultCount"));
    m_resultCount->setWordWrap(true);
    auto* searchRow = new QHBoxLayout;
    searchRow->addWidget(m_searchField, 1);
    searchRow->addWidget(m_searchButton);
    auto* searchLayout = new QVBoxLayout(searchPage);
    searchLayout->addLayout(searchRow);
    searchLayout->addWidget(m_results, 1);
    searchLayout->addWidget(m_resultCount);

    m_tabs = new QTabWidget(this);
    m_tabs->setObjectName(QStringLiteral("tab_Navigation"));
    m_tabs->addTab(m_contents, QString());
    m_tabs->addTab(searchPage, QString());

    m_browser = new QTextBrowser(this);
    m_browser->setObjectName(QStringLiteral("txt_Page"));
    // Links to other pages stay in the window; those to the web open in the desktop's browser.
    m_browser->setOpenExternalLinks(true);

    m_splitter = new QSplitter(this);
    m_splitter->addWidget(m_tabs);
    m_splitter->addWidget(m_browser);
    m_splitter->setStretchFactor(0, 0);
    m_splitter->setStretchFactor(1, 1);
    m_splitter->setSizes({ 270, 730 });
    m_splitter->setChildrenCollapsible(false);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(tools);
    layout->addWidget(m_splitter, 1);

    connect(m_back, &QAction::triggered, m_browser, &QTextBrowser::backward);
    connect(m_forward, &QAction::triggered, m_browser, &QTextBrowser::forward);
    connect(m_home, &QAction::triggered, this, [this] { ShowPage(HelpPageFor(1003)); });
    connect(m_browser, &QTextBrowser::backwardAvailable, m_back, &QAction::setEnabled);
    connect(m_browser, &QTextBrowser::forwardAvailable, m_forward, &QAction::setEnabled);
    connect(m_browser, &QTextBrowser::sourceChanged, this, &HelpWindow::OnSourceChanged);
    connect(m_contents, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* item) {
        const QString file = item ? item->data(0, FileRole).toString() : QString();
        if (!file.isEmpty() && file != CurrentPage())
            ShowPage(file);
    });
    // A heading has no page of its own: a click opens or closes it.
    connect(m_contents, &QTreeWidget::itemClicked, this, [](QTreeWidgetItem* item) {
        if (item && item->data(0, FileRole).toString().isEmpty())
            item->setExpanded(!item->isExpanded());
    });
    connect(m_searchField, &QLineEdit::textChanged, this, &HelpWindow::Search);
    connect(m_searchField, &QLineEdit::returnPressed, this, [this] {
        Search(m_searchField->text());
        OpenHit(m_results->currentRow() >= 0 ? m_results->currentRow() : 0);
    });
    connect(m_searchButton, &QPushButton::clicked, this, [this] {
        Search(m_searchField->text());
        OpenHit(0);
    });
    connect(
        m_results, &QListWidget::itemClicked, this, [this](QListWidgetItem* item) { OpenHit(m_results->row(item)); });
    connect(
        m_results, &QListWidget::itemActivated, this, [this](QListWidgetItem* item) { OpenHit(m_results->row(item)); });

    LoadLanguage(HelpLanguage());
}

void HelpWindow::LoadLanguage(const QString& language)
{
    m_language = language;
    QString application = Settings::Value(Settings::Id::ApplicationName);
    if (application.isEmpty())
        application = QStringLiteral("Sorano");
    setWindowTitle(application + QStringLiteral(" - ") + GetResString(257));
    m_back->setText(Text(language, "Zurück", "Back"));
    m_back->setToolTip(Text(language, "Zurück (Alt+Pfeil links)", "Back (Alt+Left)"));
    m_forward->setText(Text(language, "Vorwärts", "Forward"));
    m_forward->setToolTip(Text(language, "Vorwärts (Alt+Pfeil rechts)", "Forward (Alt+Right)"));
    m_home->setText(Text(language, "Übersicht", "Overview"));
    m_home->setToolTip(Text(language, "Zur Übersicht der Hilfe", "To the overview of the help"));
    m_tabs->setTabText(0, GetResString(258));
    m_tabs->setTabText(1, GetResString(473));
    m_searchButton->setText(GetResString(473));
    m_searchField->setPlaceholderText(Text(language, "Suchbegriffe", "Words to search for"));

    m_contents->clear();
    QList<QTreeWidgetItem*> parents;
    for (const HelpContentsEntry& entry : HelpContents(language)) {
        parents.resize(entry.level);
        auto* item = parents.isEmpty() ? new QTreeWidgetItem(m_contents) : new QTreeWidgetItem(parents.back());
        item->setText(0, entry.caption);
        item->setData(0, FileRole, entry.file);
        if (entry.file.isEmpty()) {
            QFont font = item->font(0);
            font.setBold(true);
            item->setFont(0, font);
        }
        parents << item;
    }
    m_contents->expandAll();

    m_results->clear();
    m_resultCount->clear();
    m_browser->clearHistory();
    m_marked.clear();
}

QString HelpWindow::CurrentPage() const
{
    return m_browser->source().fileName();
}

void HelpWindow::ShowPage(const QString& file)
{
    if (HelpLanguage() != m_language) {
        LoadLanguage(HelpLanguage());
        Search(m_searchField->text());
    }
    const QString name = file.section(u'#', 0, 0);
    const QString anchor = file.section(u'#', 1);
    QUrl url(QStringLiteral("qrc") + HelpPagePath(m_language, name));
    if (!anchor.isEmpty())
        url.setFragment(anchor);
    // Marks belong to the search that opened a page; a page opened otherwise shows none.
    Mark({});
    if (m_browser->source() != url)
        m_browser->setSource(url);
    SelectInContents();
}

void HelpWindow::OnSourceChanged()
{
    Mark({});
    SelectInContents();
}

void HelpWindow::SelectInContents()
{
    const QString file = CurrentPage();
    for (QTreeWidgetItemIterator it(m_contents); *it; ++it) {
        if ((*it)->data(0, FileRole).toString() != file)
            continue;
        if (m_contents->currentItem() != *it) {
            const QSignalBlocker quiet(m_contents);
            m_contents->setCurrentItem(*it);
        }
        m_contents->scrollToItem(*it);
        return;
    }
}

void HelpWindow::Present()
{
    if (!m_placed) {
        PlaceOn(m_placeNear);
        m_placed = true;
    }
    if (isMinimized())
        showNormal();
    else
        show();
    raise();
    activateWindow();
}

void HelpWindow::PlaceOn(const QWidget* parent)
{
    const QScreen* screen
        = parent && parent->window()->screen() ? parent->window()->screen() : QGuiApplication::primaryScreen();
    const QRect room = screen ? screen->availableGeometry() : QRect(0, 0, 1280, 800);
    const QSize size(std::min(1000, room.width() * 4 / 5), std::min(720, room.height() * 4 / 5));
    setGeometry(QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, size, room));
}

void HelpWindow::FocusSearch()
{
    m_tabs->setCurrentIndex(1);
    m_searchField->setFocus(Qt::ShortcutFocusReason);
    m_searchField->selectAll();
}

void HelpWindow::Search(const QString& text)
{
    if (HelpLanguage() != m_language)
        LoadLanguage(HelpLanguage());
    if (m_searchField->text() != text) {
        const QSignalBlocker quiet(m_searchField);
        m_searchField->setText(text);
    }
    m_results->clear();
    const QList<HelpHit> hits = SearchHelp(text, m_language);
    for (const HelpHit& hit : hits) {
        auto* item = new QListWidgetItem(hit.title, m_results);
        item->setData(FileRole, hit.file);
    }
    if (!hits.isEmpty())
        m_results->setCurrentRow(0);
    if (HelpQueryWords(text).isEmpty())
        m_resultCount->clear();
    else if (hits.isEmpty())
        m_resultCount->setText(
            Text(m_language, "Keine Seite enthält alle Suchbegriffe.", "No page holds all of the words searched for."));
    else if (hits.size() == 1)
        m_resultCount->setText(Text(m_language, "1 Seite gefunden.", "1 page found."));
    else
        m_resultCount->setText(Text(m_language, "%1 Seiten gefunden.", "%1 pages found.").arg(hits.size()));
}

void HelpWindow::OpenHit(int row)
{
    const QListWidgetItem* item = m_results->item(row);
    if (!item)
        return;
    if (m_results->currentRow() != row)
        m_results->setCurrentRow(row);
    ShowPage(item->data(FileRole).toString());
    Mark(HelpQueryWords(m_searchField->text()));
}

void HelpWindow::Mark(const QStringList& words)
{
    m_marked.clear();
    QList<QTextEdit::ExtraSelection> selections;
    QTextCursor first;
    QTextDocument* document = m_browser->document();
    for (const QString& word : words) {
        for (QTextCursor found = document->find(word); !found.isNull(); found = document->find(word, found)) {
            QTextEdit::ExtraSelection selection;
            selection.cursor = found;
            selection.format.setBackground(MarkColour);
            selection.format.setForeground(Qt::black);
            selections << selection;
            if (first.isNull() || found.selectionStart() < first.selectionStart())
                first = found;
        }
        m_marked << word;
    }
    m_browser->setExtraSelections(selections);
    if (first.isNull())
        return;
    // The first mark is scrolled into sight; the cursor itself stays invisible in the page.
    first.setPosition(first.selectionStart());
    m_browser->setTextCursor(first);
    m_browser->ensureCursorVisible();
}

void HelpWindow::Attach(QWidget* parent)
{
    if (!m_placed && parent)
        m_placeNear = parent;
    QWidget* modal = QApplication::activeModalWidget();
    if (modal == this || (modal && isAncestorOf(modal)))
        modal = nullptr;
    if (modal != parentWidget())
        Reparent(modal);
}

void HelpWindow::Reparent(QWidget* owner)
{
    if (parentWidget())
        parentWidget()->removeEventFilter(this);
    const bool shown = isVisible();
    const QRect frame = geometry();
    setParent(owner, windowFlags() | Qt::Window);
    setGeometry(frame);
    if (owner)
        owner->installEventFilter(this);
    if (shown)
        show();
}

bool HelpWindow::eventFilter(QObject* watched, QEvent* event)
{
    // The dialog is going: the window stands on its own again before the dialog can take it
    // along. A dialog below that is still open takes it in once this one has gone.
    if (watched == parentWidget() && event->type() == QEvent::Hide) {
        Reparent(nullptr);
        QTimer::singleShot(0, this, [this] { Attach(nullptr); });
    }
    return QWidget::eventFilter(watched, event);
}

void HelpWindow::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Find)) {
        FocusSearch();
        return;
    }
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier) {
        close();
        return;
    }
    QWidget::keyPressEvent(event);
}
