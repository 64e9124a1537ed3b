// SPDX-License-Identifier: GPL-3.0-or-later
// The help: a page for every context in both languages, links that lead somewhere, the search,
// and the one help window that shows what was asked for.
#include "Help.h"
#include "Globals.h"
#include "HelpWindow.h"
#include "QtPrinters.h"

#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QListWidget>
#include <QRegularExpression>
#include <QSet>
#include <QTextBrowser>
#include <QTimer>
#include <QTreeWidget>
#include <QUrl>
#include <QWindow>

#include <gtest/gtest.h>

namespace {

const QStringList Languages { QStringLiteral("de"), QStringLiteral("en") };

QString PageHtml(const QString& language, const QString& file)
{
    QFile page(HelpPagePath(language, file));
    return page.open(QIODevice::ReadOnly) ? QString::fromUtf8(page.readAll()) : QString();
}

QStringList PageFiles(const QString& language)
{
    return QDir(QStringLiteral(":/help/") + language).entryList({ QStringLiteral("*.html") }, QDir::Files, QDir::Name);
}

QSet<QString> HitFiles(const QList<HelpHit>& hits)
{
    QSet<QString> files;
    for (const HelpHit& hit : hits)
        files << hit.file;
    return files;
}

int HelpWindowCount()
{
    int count = 0;
    for (QWidget* widget : QApplication::allWidgets())
        if (qobject_cast<HelpWindow*>(widget))
            ++count;
    return count;
}

// The program's language for the life of the object.
class LanguageScope
{
public:
    explicit LanguageScope(qint32 offset)
        : m_saved(g_lLangOffset)
    {
        g_lLangOffset = offset;
    }
    ~LanguageScope() { g_lLangOffset = m_saved; }

private:
    qint32 m_saved;
};

} // namespace

TEST(HelpPagesTest, EveryContextHasItsOwnPageWithATitleInBothLanguages)
{
    const QList<qint32> contexts = HelpContexts();
    ASSERT_FALSE(contexts.isEmpty());
    QSet<QString> pages;
    for (const qint32 context : contexts) {
        const QString file = HelpPageFor(context);
        pages << file;
        for (const QString& language : Languages) {
            EXPECT_TRUE(QFile::exists(HelpPagePath(language, file))) << context << " " << language.toStdString();
            EXPECT_FALSE(HelpPageTitle(language, file).trimmed().isEmpty())
                << context << " " << language.toStdString() << " " << file.toStdString();
        }
    }
    EXPECT_EQ(pages.size(), contexts.size()) << "two contexts share a page";
    // A number no window uses shows the contents.
    for (const qint32 unknown : { 0, -1, 1041, 999999 })
        EXPECT_EQ(HelpPageFor(unknown), HelpPageFor(1003)) << unknown;
}

TEST(HelpPagesTest, BothLanguagesHoldTheSamePagesAndTheContentsListsEachOnce)
{
    const QStringList german = PageFiles(QStringLiteral("de"));
    ASSERT_GE(german.size(), 12);
    EXPECT_EQ(PageFiles(QStringLiteral("en")), german);
    for (const QString& language : Languages) {
        QStringList listed;
        for (const HelpContentsEntry& entry : HelpContents(language)) {
            EXPECT_FALSE(entry.caption.trimmed().isEmpty()) << entry.file.toStdString();
            if (!entry.file.isEmpty())
                listed << entry.file;
        }
        EXPECT_EQ(listed.size(), QSet<QString>(listed.begin(), listed.end()).size()) << language.toStdString();
        listed.sort();
        EXPECT_EQ(listed, german) << language.toStdString();
    }
}

TEST(HelpPagesTest, EveryLinkLeadsToAnExistingPageAndAnchor)
{
    static const QRegularExpression reference(QStringLiteral("(?:href|src)=\"([^\"]*)\""));
    QStringList broken;
    int internal = 0;
    for (const QString& language : Languages) {
        for (const QString& file : PageFiles(language)) {
            const QUrl base(QStringLiteral("qrc") + HelpPagePath(language, file));
            for (auto match = reference.globalMatch(PageHtml(language, file)); match.hasNext();) {
                const QString target = match.next().captured(1);
                const QUrl url = base.resolved(QUrl(target));
                if (url.scheme() != QLatin1String("qrc"))
                    continue; // the web, which the desktop's browser opens
                ++internal;
                const QString path = u':' + url.path();
                const QString where = language + u'/' + file + QStringLiteral(" -> ") + target;
                if (!QFile::exists(path)) {
                    broken << where;
                    continue;
                }
                if (url.hasFragment()) {
                    QFile page(path);
                    page.open(QIODevice::ReadOnly);
                    const QString html = QString::fromUtf8(page.readAll());
                    const QString anchor = url.fragment();
                    if (!html.contains(QStringLiteral("id=\"%1\"").arg(anchor))
                        && !html.contains(QStringLiteral("name=\"%1\"").arg(anchor)))
                        broken << where;
                }
            }
        }
    }
    EXPECT_GT(internal, 100);
    EXPECT_TRUE(broken.isEmpty()) << broken.join(QStringLiteral("\n")).toStdString();
}

TEST(HelpSearchTest, FindsPagesByTheirWordsRegardlessOfCase)
{
    // Words of a page's text, not of its title.
    const QList<HelpHit> german = SearchHelp(QStringLiteral("VARIANZ"), QStringLiteral("de"));
    EXPECT_TRUE(HitFiles(german).contains(QStringLiteral("statistics.html")));
    const QList<HelpHit> english = SearchHelp(QStringLiteral("variance"), QStringLiteral("en"));
    EXPECT_TRUE(HitFiles(english).contains(QStringLiteral("statistics.html")));
    // Words of one language are not looked for in the other.
    EXPECT_TRUE(SearchHelp(QStringLiteral("Varianz"), QStringLiteral("en")).isEmpty());

    for (const QString& nothing : { QStringLiteral("xqzjvwk"), QString(), QStringLiteral(" ;,- ") })
        for (const QString& language : Languages)
            EXPECT_TRUE(SearchHelp(nothing, language).isEmpty()) << nothing.toStdString();
}

TEST(HelpSearchTest, FindsOnlyPagesHoldingEveryWord)
{
    for (const QString& language : Languages) {
        const QString first = language == QLatin1String("de") ? QStringLiteral("Cursor") : QStringLiteral("cursor");
        const QString second
            = language == QLatin1String("de") ? QStringLiteral("Kalender") : QStringLiteral("calendar");
        const QSet<QString> one = HitFiles(SearchHelp(first, language));
        const QSet<QString> other = HitFiles(SearchHelp(second, language));
        const QSet<QString> both = HitFiles(SearchHelp(first + u' ' + second, language));
        ASSERT_GT(one.size(), both.size()) << language.toStdString();
        ASSERT_FALSE(both.isEmpty()) << language.toStdString();
        EXPECT_EQ(both, QSet<QString>(one).intersect(other)) << language.toStdString();
    }
}

TEST(HelpSearchTest, RanksThePageWhoseTitleHoldsTheWordsFirst)
{
    // "Cursor" stands on many pages; the page about cursors comes first.
    const QList<HelpHit> cursor = SearchHelp(QStringLiteral("cursor"), QStringLiteral("de"));
    ASSERT_GT(cursor.size(), 3);
    EXPECT_EQ(cursor.front().file, QStringLiteral("cursors.html"));
    // So does every page searched for by its own title.
    for (const QString& language : Languages)
        for (const HelpContentsEntry& entry : HelpContents(language)) {
            if (entry.file.isEmpty())
                continue;
            const QList<HelpHit> hits = SearchHelp(entry.caption, language);
            ASSERT_FALSE(hits.isEmpty()) << entry.caption.toStdString();
            EXPECT_EQ(hits.front().file, entry.file) << entry.caption.toStdString();
            EXPECT_EQ(hits.front().title, entry.caption);
        }
}

TEST(HelpWindowTest, ShowHelpReusesOneWindowAndShowsTheRequestedPage)
{
    const LanguageScope german(0);
    ShowHelp(1034);
    HelpWindow* window = HelpWindow::Existing();
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(window->CurrentPage(), HelpPageFor(1034));

    ShowHelp(1035);
    EXPECT_EQ(HelpWindow::Existing(), window);
    EXPECT_EQ(HelpWindowCount(), 1);
    EXPECT_EQ(window->CurrentPage(), HelpPageFor(1035));
    const QString title = HelpPageTitle(QStringLiteral("de"), HelpPageFor(1035));
    EXPECT_TRUE(window->Browser()->toPlainText().contains(title));
    // The contents mark the page shown.
    ASSERT_NE(window->ContentsTree()->currentItem(), nullptr);
    EXPECT_EQ(window->ContentsTree()->currentItem()->text(0), title);

    // A closed window comes back, still the same one, with the contents for an unknown number.
    window->close();
    EXPECT_FALSE(window->isVisible());
    ShowHelp(4711);
    EXPECT_EQ(HelpWindow::Existing(), window);
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(window->CurrentPage(), HelpPageFor(1003));

    // Back returns to the page before.
    window->ShowPage(HelpPageFor(1038));
    window->Browser()->backward();
    EXPECT_EQ(window->CurrentPage(), HelpPageFor(1003));
}

TEST(HelpWindowTest, FollowsTheLanguageOfTheProgram)
{
    {
        const LanguageScope english(1000);
        ShowHelp(1040);
        HelpWindow* window = HelpWindow::Existing();
        ASSERT_NE(window, nullptr);
        EXPECT_EQ(window->Language(), QStringLiteral("en"));
        EXPECT_TRUE(window->Browser()->source().path().startsWith(QStringLiteral("/help/en/")));
        EXPECT_TRUE(window->Browser()->toPlainText().contains(HelpPageTitle(QStringLiteral("en"), HelpPageFor(1040))));
    }
    ShowHelp(1040);
    EXPECT_EQ(HelpWindow::Existing()->Language(), QStringLiteral("de"));
    EXPECT_TRUE(HelpWindow::Existing()->Browser()->source().path().startsWith(QStringLiteral("/help/de/")));
    EXPECT_EQ(HelpWindowCount(), 1);
}

TEST(HelpWindowTest, SearchListsTheHitsAndMarksTheWordsInTheOpenedPage)
{
    const LanguageScope german(0);
    ShowHelpSearch();
    HelpWindow* window = HelpWindow::Existing();
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(window->SearchField()->isVisibleTo(window));

    const QString query = QStringLiteral("delta ZEITLICHE");
    window->Search(query);
    const QList<HelpHit> hits = SearchHelp(query, QStringLiteral("de"));
    ASSERT_FALSE(hits.isEmpty());
    ASSERT_EQ(window->ResultList()->count(), hits.size());
    EXPECT_EQ(window->ResultList()->item(0)->text(), hits.front().title);

    window->OpenHit(0);
    EXPECT_EQ(window->CurrentPage(), hits.front().file);
    const QList<QTextEdit::ExtraSelection> marks = window->Browser()->extraSelections();
    ASSERT_FALSE(marks.isEmpty());
    QSet<QString> marked;
    for (const QTextEdit::ExtraSelection& mark : marks)
        marked << mark.cursor.selectedText().toCaseFolded();
    EXPECT_EQ(marked, QSet<QString>({ QStringLiteral("delta"), QStringLiteral("zeitliche") }));

    // Another page, reached otherwise, shows no marks.
    window->ShowPage(HelpPageFor(1003));
    EXPECT_TRUE(window->Browser()->extraSelections().isEmpty());

    window->Search(QStringLiteral("xqzjvwk"));
    EXPECT_EQ(window->ResultList()->count(), 0);
}

TEST(HelpWindowTest, AWindowAskedForFromAModalDialogStaysUsableAndOutlivesTheDialog)
{
    const LanguageScope german(0);
    auto* dialog = new QDialog;
    bool shown = false;
    bool aboveDialog = false;
    QTimer::singleShot(0, dialog, [&] {
        ShowHelp(1040, dialog);
        const HelpWindow* window = HelpWindow::Existing();
        shown = window && window->isVisible();
        // The dialog blocks every window but itself and those that stand above it.
        aboveDialog = shown && window->windowHandle() && dialog->windowHandle()
            && dialog->windowHandle()->isAncestorOf(window->windowHandle(), QWindow::IncludeTransients);
        dialog->accept();
    });
    dialog->exec();
    delete dialog;
    EXPECT_TRUE(shown);
    EXPECT_TRUE(aboveDialog);

    HelpWindow* window = HelpWindow::Existing();
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(window->isVisible());
    EXPECT_TRUE(window->isWindow());
    EXPECT_EQ(window->CurrentPage(), HelpPageFor(1040));
    EXPECT_EQ(HelpWindowCount(), 1);
}

TEST(HelpWindowTest, StaysUsableBesideTheOuterDialogWhenANestedOneCloses)
{
    const LanguageScope german(0);
    QDialog outer;
    bool aboveOuter = false;
    QTimer::singleShot(0, &outer, [&] {
        {
            QDialog inner(&outer);
            QTimer::singleShot(0, &inner, [&inner] {
                ShowHelp(1036, &inner);
                inner.accept();
            });
            inner.exec();
        }
        QCoreApplication::processEvents();
        const HelpWindow* window = HelpWindow::Existing();
        aboveOuter = window && window->isVisible() && window->windowHandle() && outer.windowHandle()
            && outer.windowHandle()->isAncestorOf(window->windowHandle(), QWindow::IncludeTransients);
        outer.accept();
    });
    outer.exec();
    EXPECT_TRUE(aboveOuter);
    ASSERT_NE(HelpWindow::Existing(), nullptr);
    EXPECT_EQ(HelpWindow::Existing()->CurrentPage(), HelpPageFor(1036));
}
