// SPDX-License-Identifier: GPL-3.0-or-later
// The help: a page for every context in both languages, links that lead somewhere, the search,
// and the one help window that shows what was asked for.
#include "Help.h"
#include "Globals.h"
#include "HelpWindow.h"
#include "QtPrinters.h"

#include <QCoreApplication>
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

QString ReadText(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
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

TEST(HelpPagesTest, EveryContextHasItsOwnPageAndEveryPageIsInTheContentsOfBothLanguages)
{
    const QList<qint32> contexts = HelpContexts();
    ASSERT_FALSE(contexts.isEmpty());
    QSet<QString> pages;
    for (const qint32 context : contexts) {
        pages << HelpPageFor(context);
        for (const QString& language : Languages)
            EXPECT_FALSE(HelpPageTitle(language, HelpPageFor(context)).trimmed().isEmpty())
                << context << " " << language.toStdString();
    }
    EXPECT_EQ(pages.size(), contexts.size()) << "two contexts share a page";
    EXPECT_EQ(HelpPageFor(999999), HelpPageFor(1003)) << "a number no window uses shows the contents";

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
        listed.sort();
        EXPECT_EQ(listed, german) << language.toStdString(); // each page once
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
            for (auto match = reference.globalMatch(ReadText(HelpPagePath(language, file))); match.hasNext();) {
                const QString target = match.next().captured(1);
                const QUrl url = base.resolved(QUrl(target));
                if (url.scheme() != QLatin1String("qrc"))
                    continue; // the web, which the desktop's browser opens
                ++internal;
                const QString path = u':' + url.path();
                const QString html = url.hasFragment() ? ReadText(path) : QString();
                if (!QFile::exists(path)
                    || (url.hasFragment() && !html.contains(QStringLiteral("id=\"%1\"").arg(url.fragment()))
                        && !html.contains(QStringLiteral("name=\"%1\"").arg(url.fragment()))))
                    broken << language + u'/' + file + QStringLiteral(" -> ") + target;
            }
        }
    }
    EXPECT_GT(internal, 100);
    EXPECT_TRUE(broken.isEmpty()) << broken.join(QStringLiteral("\n")).toStdString();
}

TEST(HelpSearchTest, FindsThePagesHoldingEveryWordRegardlessOfCaseTitleFirst)
{
    // Words of a page's text, not of its title, in the language searched only.
    EXPECT_TRUE(HitFiles(SearchHelp(QStringLiteral("VARIANZ"), QStringLiteral("de"))).contains("statistics.html"));
    EXPECT_TRUE(HitFiles(SearchHelp(QStringLiteral("variance"), QStringLiteral("en"))).contains("statistics.html"));
    EXPECT_TRUE(SearchHelp(QStringLiteral("Varianz"), QStringLiteral("en")).isEmpty());
    for (const QString& nothing : { QStringLiteral("xqzjvwk"), QString(), QStringLiteral(" ;,- ") })
        EXPECT_TRUE(SearchHelp(nothing, QStringLiteral("de")).isEmpty()) << nothing.toStdString();

    const QSet<QString> one = HitFiles(SearchHelp(QStringLiteral("Cursor"), QStringLiteral("de")));
    ASSERT_GT(one.size(), 3);
    const QSet<QString> other = HitFiles(SearchHelp(QStringLiteral("Kalender"), QStringLiteral("de")));
    const QSet<QString> both = HitFiles(SearchHelp(QStringLiteral("Cursor Kalender"), QStringLiteral("de")));
    ASSERT_GT(one.size(), both.size());
    ASSERT_FALSE(both.isEmpty());
    EXPECT_EQ(both, QSet<QString>(one).intersect(other));

    // "Cursor" stands on many pages; the page about cursors comes first, as does every page
    // searched for by its own title.
    EXPECT_EQ(SearchHelp(QStringLiteral("cursor"), QStringLiteral("de")).front().file, "cursors.html");
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

// The window is one for the whole program, so these tests share it. Each starts in German and
// closes the window at the end, so that no later test's window competes with it for the keyboard.
class HelpWindowTest : public ::testing::Test
{
protected:
    void SetUp() override { g_lLangOffset = 0; }
    void TearDown() override
    {
        g_lLangOffset = 0;
        if (HelpWindow* window = HelpWindow::Existing())
            window->close();
    }
};

TEST_F(HelpWindowTest, ShowHelpReusesOneWindowAndShowsTheRequestedPage)
{
    ShowHelp(1034);
    HelpWindow* window = HelpWindow::Existing();
    ASSERT_NE(window, nullptr);
    ShowHelp(1035);
    EXPECT_EQ(HelpWindow::Existing(), window);
    EXPECT_EQ(window->CurrentPage(), HelpPageFor(1035));
    const QString title = HelpPageTitle(QStringLiteral("de"), HelpPageFor(1035));
    EXPECT_TRUE(window->Browser()->toPlainText().contains(title));
    // The contents mark the page shown.
    ASSERT_NE(window->ContentsTree()->currentItem(), nullptr);
    EXPECT_EQ(window->ContentsTree()->currentItem()->text(0), title);

    // A closed window comes back, still the same one, with the contents for an unknown number.
    window->close();
    ShowHelp(4711);
    EXPECT_EQ(HelpWindow::Existing(), window);
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(window->CurrentPage(), HelpPageFor(1003));

    // The next page shown follows the program's language.
    g_lLangOffset = 1000;
    ShowHelp(1040);
    EXPECT_TRUE(window->Browser()->source().path().startsWith(QStringLiteral("/help/en/")));
    g_lLangOffset = 0;
    ShowHelp(1040);
    EXPECT_TRUE(window->Browser()->source().path().startsWith(QStringLiteral("/help/de/")));
}

TEST_F(HelpWindowTest, SearchListsTheHitsAndMarksTheWordsInTheOpenedPage)
{
    ShowHelpSearch();
    HelpWindow* window = HelpWindow::Existing();
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(window->SearchField()->isVisibleTo(window));

    window->Search(QStringLiteral("delta ZEITLICHE"));
    const QList<HelpHit> hits = SearchHelp(QStringLiteral("delta ZEITLICHE"), QStringLiteral("de"));
    ASSERT_FALSE(hits.isEmpty());
    ASSERT_EQ(window->ResultList()->count(), hits.size());
    EXPECT_EQ(window->ResultList()->item(0)->text(), hits.front().title);

    window->OpenHit(0);
    EXPECT_EQ(window->CurrentPage(), hits.front().file);
    QSet<QString> marked;
    for (const QTextEdit::ExtraSelection& mark : window->Browser()->extraSelections())
        marked << mark.cursor.selectedText().toCaseFolded();
    EXPECT_EQ(marked, QSet<QString>({ QStringLiteral("delta"), QStringLiteral("zeitliche") }));

    // Another page, reached otherwise, shows no marks.
    window->ShowPage(HelpPageFor(1003));
    EXPECT_TRUE(window->Browser()->extraSelections().isEmpty());
    window->Search(QStringLiteral("xqzjvwk"));
    EXPECT_EQ(window->ResultList()->count(), 0);
}

// A modal dialog blocks every window but itself and those that stand above it.
TEST_F(HelpWindowTest, AskedForFromNestedModalDialogsTheWindowStaysUsableAndOutlivesThem)
{
    const auto above = [](const QWidget* dialog) {
        const HelpWindow* window = HelpWindow::Existing();
        return window && window->isVisible() && window->windowHandle() && dialog->windowHandle()
            && dialog->windowHandle()->isAncestorOf(window->windowHandle(), QWindow::IncludeTransients);
    };
    auto* outer = new QDialog;
    bool aboveOuter = false;
    bool aboveOuterOnceTheInnerClosed = false;
    QTimer::singleShot(0, outer, [&] {
        ShowHelp(1040, outer);
        aboveOuter = above(outer);
        {
            QDialog inner(outer);
            QTimer::singleShot(0, &inner, [&inner] {
                ShowHelp(1036, &inner);
                inner.accept();
            });
            inner.exec();
        }
        QCoreApplication::processEvents();
        aboveOuterOnceTheInnerClosed = above(outer);
        outer->accept();
    });
    outer->exec();
    delete outer;
    EXPECT_TRUE(aboveOuter);
    EXPECT_TRUE(aboveOuterOnceTheInnerClosed);

    HelpWindow* window = HelpWindow::Existing();
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(window->CurrentPage(), HelpPageFor(1036));
}

} // namespace
