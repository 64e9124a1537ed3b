// SPDX-License-Identifier: GPL-3.0-or-later
// The program's help: pages by context number in a help window.
#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QtGlobal>

class QWidget;

// Shows the help page of the context number (1003 the contents) in the one help window,
// which is created on first use and raised on every later one. An unknown number shows the
// contents. Asked for from a modal dialog, the window stays usable beside the dialog.
void ShowHelp(qint32 context, QWidget* parent = nullptr);

// Shows the help window with its search field ready for typing ("Hilfe > Suchen").
void ShowHelpSearch(QWidget* parent = nullptr);

// The language of the pages: "en" when the English texts are in use, else "de".
QString HelpLanguage();

// The page file of a context number ("cursors.html"); the contents page for an unknown one.
QString HelpPageFor(qint32 context);

// Every context number that has a page of its own.
QList<qint32> HelpContexts();

// The resource path of a page of a language (":/help/de/cursors.html").
QString HelpPagePath(const QString& language, const QString& file);

// The title of a page, from its <title>; empty for a page that does not exist.
QString HelpPageTitle(const QString& language, const QString& file);

// One node of the contents tree: a page, or a heading (empty file) over the pages that follow
// it at a deeper level.
struct HelpContentsEntry
{
    QString file;
    QString caption;
    int level = 0;
};

// The contents tree of a language, in reading order, flattened with levels.
QList<HelpContentsEntry> HelpContents(const QString& language);

// The words of a search text: split at anything but letters and digits, case-folded.
QStringList HelpQueryWords(const QString& query);

// A page the search found.
struct HelpHit
{
    QString file;
    QString title;
    double score = 0;
};

// The pages of a language that hold every word of the query, case-insensitively, best first:
// words in a page's title count most, then words in its headings, then how often they occur.
// Nothing for a query without words.
QList<HelpHit> SearchHelp(const QString& query, const QString& language);
