// SPDX-License-Identifier: GPL-3.0-or-later
// The help window: the contents tree and the search on the left, the page on the right, and
// back, forward and home above. There is one, made on first use and kept until the end.
#pragma once

#include <QPointer>
#include <QString>
#include <QStringList>
#include <QWidget>

class QAction;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QSplitter;
class QTabWidget;
class QTextBrowser;
class QTreeWidget;
class QTreeWidgetItem;

class HelpWindow : public QWidget
{
    Q_OBJECT
public:
    // The one help window, made on the first call; it goes when the application ends.
    static HelpWindow* Instance();
    // The help window if there is one.
    static HelpWindow* Existing();

    // Shows a page of the current language ("cursors.html", also with "#anchor") and marks
    // it in the contents. The window follows a change of the program's language here.
    void ShowPage(const QString& file);
    // Shows the window (restored when minimised), raises and activates it.
    void Present();
    // The search tab, with the keyboard in its field.
    void FocusSearch();
    // Lists the pages that hold every word of the text, best first.
    void Search(const QString& text);
    // Shows the page of a row of the result list with the searched words marked.
    void OpenHit(int row);

    // While a modal dialog is open the window becomes a window of that dialog, since the
    // dialog would block it otherwise; when the dialog goes, it stands on its own again.
    // A first showing is placed on the screen of the parent.
    void Attach(QWidget* parent);

    QString Language() const { return m_language; }
    // The file of the page shown, without an anchor; empty before the first page.
    QString CurrentPage() const;
    // The words marked in the page shown, empty when none are.
    QStringList MarkedWords() const { return m_marked; }

    QTextBrowser* Browser() const { return m_browser; }
    QTreeWidget* ContentsTree() const { return m_contents; }
    QLineEdit* SearchField() const { return m_searchField; }
    QListWidget* ResultList() const { return m_results; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    HelpWindow();

    void LoadLanguage(const QString& language);
    void Reparent(QWidget* owner);
    void PlaceOn(const QWidget* parent);
    void OnSourceChanged();
    void SelectInContents();
    void Mark(const QStringList& words);

    QString m_language;
    QStringList m_marked;
    bool m_placed = false;
    QPointer<QWidget> m_placeNear; // the widget whose screen a first showing goes to

    QAction* m_back = nullptr;
    QAction* m_forward = nullptr;
    QAction* m_home = nullptr;
    QSplitter* m_splitter = nullptr;
    QTabWidget* m_tabs = nullptr;
    QTreeWidget* m_contents = nullptr;
    QLineEdit* m_searchField = nullptr;
    QPushButton* m_searchButton = nullptr;
    QListWidget* m_results = nullptr;
    QLabel* m_resultCount = nullptr;
    QTextBrowser* m_browser = nullptr;
};
