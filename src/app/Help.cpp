// SPDX-License-Identifier: GPL-3.0-or-later
// The help: which page a context number shows, the contents tree, the search over the pages,
// and the one help window that shows them.
#include "Help.h"

#include "Globals.h"
#include "HelpWindow.h"

#include <QFile>
#include <QHash>
#include <QRegularExpression>
#include <QTextDocument>
#include <QTextDocumentFragment>

#include <algorithm>

namespace {

// Context numbers and their pages: the windows and dialogs pass these numbers to ShowHelp, from
// F1 or their help button. Every page exists in every language under the same name.
struct ContextPage
{
    qint32 context;
    const char* file;
};

constexpr ContextPage ContextPages[] = {
    { 1002, "startup.html" }, // the start-up window (frm_Startup)
    { 1003, "index.html" }, // the contents, what a measuring view is: Hilfe > Inhalt
    { 1033, "viewproperties.html" }, // the view's properties (frm_MeasuringProperties)
    { 1034, "curves.html" }, // the curve list and sums of channels (frm_Curves)
    { 1035, "curveproperties.html" }, // one curve's properties (frm_CurveProperties)
    { 1036, "statisticformats.html" }, // the statistic formats (frm_Indizes)
    { 1037, "datasources.html" }, // the data-module list (frm_DataModules) and the modules' settings
    { 1038, "export.html" }, // export to files and the clipboard
    { 1039, "newview.html" }, // the new-view wizard of Datei > Neu, and the profiles
    { 1040, "options.html" }, // the options (frm_Options)
    { 1041, "print.html" }, // the print dialog, the preview and the page setup
    { 1042, "batch.html" }, // the batch window, its dialogs and the serial report
};

constexpr const char* ContentsPage = "index.html";

// The contents tree: headings (no file) with their German and English captions, pages with
// the caption of their <title>.
struct ContentsNode
{
    int level;
    const char* file;
    const char* german;
    const char* english;
};

constexpr ContentsNode ContentsNodes[] = {
    { 0, "index.html", nullptr, nullptr },
    { 0, nullptr, "Erste Schritte", "Getting started" },
    { 1, "startup.html", nullptr, nullptr },
    { 1, "newview.html", nullptr, nullptr },
    { 1, "datasources.html", nullptr, nullptr },
    { 0, nullptr, "Mit einer Messansicht arbeiten", "Working with a measurement view" },
    { 1, "navigation.html", nullptr, nullptr },
    { 1, "zoom.html", nullptr, nullptr },
    { 1, "cursors.html", nullptr, nullptr },
    { 1, "statistics.html", nullptr, nullptr },
    { 1, "table.html", nullptr, nullptr },
    { 1, "export.html", nullptr, nullptr },
    { 1, "print.html", nullptr, nullptr },
    { 1, "batch.html", nullptr, nullptr },
    { 0, nullptr, "Dialoge", "Dialogs" },
    { 1, "viewproperties.html", nullptr, nullptr },
    { 1, "curves.html", nullptr, nullptr },
    { 1, "curveproperties.html", nullptr, nullptr },
    { 1, "statisticformats.html", nullptr, nullptr },
    { 1, "options.html", nullptr, nullptr },
    { 0, nullptr, "Referenz", "Reference" },
    { 1, "keyboard.html", nullptr, nullptr },
    { 1, "commandline.html", nullptr, nullptr },
};

QString ReadPage(const QString& language, const QString& file)
{
    QFile page(HelpPagePath(language, file));
    if (!page.open(QIODevice::ReadOnly))
        return QString();
    return QString::fromUtf8(page.readAll());
}

QString PlainText(const QString& html)
{
    return QTextDocumentFragment::fromHtml(html).toPlainText().simplified();
}

QString TitleOf(const QString& html)
{
    static const QRegularExpression title(QStringLiteral("<title>(.*?)</title>"),
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpressionMatch match = title.match(html);
    return match.hasMatch() ? PlainText(match.captured(1)) : QString();
}

// What the search looks at of one page, case-folded.
struct PageText
{
    QString file;
    QString title;
    QStringList titleWords;
    QString foldedTitle;
    QString headings;
    QString body;
};

const QList<PageText>& PageTexts(const QString& language)
{
    static QHash<QString, QList<PageText>> cache;
    const auto known = cache.constFind(language);
    if (known != cache.constEnd())
        return *known;
    static const QRegularExpression heading(QStringLiteral("<h[1-4][^>]*>(.*?)</h[1-4]>"),
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::DotMatchesEverythingOption);
    QList<PageText> pages;
    for (const HelpContentsEntry& entry : HelpContents(language)) {
        if (entry.file.isEmpty())
            continue;
        const QString html = ReadPage(language, entry.file);
        PageText page;
        page.file = entry.file;
        page.title = TitleOf(html);
        page.titleWords = HelpQueryWords(page.title);
        page.foldedTitle = page.title.toCaseFolded();
        for (auto match = heading.globalMatch(html); match.hasNext();)
            page.headings += PlainText(match.next().captured(1)).toCaseFolded() + u'\n';
        QTextDocument document;
        document.setHtml(html);
        page.body = document.toPlainText().toCaseFolded();
        pages << page;
    }
    return *cache.insert(language, pages);
}

} // namespace

// --- pages and contexts

QString HelpLanguage()
{
    return g_lLangOffset >= 1000 ? QStringLiteral("en") : QStringLiteral("de");
}

QString HelpPageFor(qint32 context)
{
    for (const ContextPage& entry : ContextPages)
        if (entry.context == context)
            return QString::fromLatin1(entry.file);
    return QString::fromLatin1(ContentsPage);
}

QList<qint32> HelpContexts()
{
    QList<qint32> contexts;
    for (const ContextPage& entry : ContextPages)
        contexts << entry.context;
    return contexts;
}

QString HelpPagePath(const QString& language, const QString& file)
{
    return QStringLiteral(":/help/") + language + u'/' + file;
}

QString HelpPageTitle(const QString& language, const QString& file)
{
    return TitleOf(ReadPage(language, file));
}

QList<HelpContentsEntry> HelpContents(const QString& language)
{
    const bool english = language == QLatin1String("en");
    QList<HelpContentsEntry> entries;
    for (const ContentsNode& node : ContentsNodes) {
        HelpContentsEntry entry;
        entry.level = node.level;
        if (node.file) {
            entry.file = QString::fromLatin1(node.file);
            entry.caption = HelpPageTitle(language, entry.file);
        } else {
            entry.caption = QString::fromUtf8(english ? node.english : node.german);
        }
        entries << entry;
    }
    return entries;
}

// --- search

QStringList HelpQueryWords(const QString& query)
{
    static const QRegularExpression separators(QStringLiteral("[^\\p{L}\\p{N}]+"));
    QStringList words = query.toCaseFolded().split(separators, Qt::SkipEmptyParts);
    words.removeDuplicates();
    return words;
}

QList<HelpHit> SearchHelp(const QString& query, const QString& language)
{
    const QStringList words = HelpQueryWords(query);
    QList<HelpHit> hits;
    if (words.isEmpty())
        return hits;
    // A word in the title weighs most; one in a heading more than many in the text, whose
    // count is capped so that a long page does not win by its length alone.
    constexpr double TitleWeight = 100;
    constexpr double HeadingWeight = 20;
    constexpr qsizetype MostCounted = 20;
    constexpr double WholeTitleBonus = 50;
    constexpr double ExactTitleBonus = 1000;
    for (const PageText& page : PageTexts(language)) {
        double score = 0;
        bool allInTitle = true;
        bool found = true;
        for (const QString& word : words) {
            const qsizetype count = page.body.count(word);
            const bool inTitle = page.foldedTitle.contains(word);
            if (count == 0 && !inTitle) {
                found = false;
                break;
            }
            allInTitle = allInTitle && inTitle;
            score += (inTitle ? TitleWeight : 0) + (page.headings.contains(word) ? HeadingWeight : 0)
                + double(std::min(count, MostCounted));
        }
        if (!found)
            continue;
        if (allInTitle)
            score += WholeTitleBonus;
        if (page.titleWords == words)
            score += ExactTitleBonus;
        hits << HelpHit { page.file, page.title, score };
    }
    // Equal scores keep the order of the contents.
    std::stable_sort(hits.begin(), hits.end(), [](const HelpHit& a, const HelpHit& b) { return a.score > b.score; });
    return hits;
}

// --- the window

void ShowHelp(qint32 context, QWidget* parent)
{
    HelpWindow* window = HelpWindow::Instance();
    window->Attach(parent);
    window->ShowPage(HelpPageFor(context));
    window->Present();
}

void ShowHelpSearch(QWidget* parent)
{
    HelpWindow* window = HelpWindow::Instance();
    window->Attach(parent);
    if (window->CurrentPage().isEmpty())
        window->ShowPage(QString::fromLatin1(ContentsPage));
    window->Present();
    window->FocusSearch();
}
