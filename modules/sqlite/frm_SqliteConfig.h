// SPDX-License-Identifier: GPL-3.0-or-later
// Configuration dialog of the SQLite module: which database file it reads, with a preview of
// the categories and channels in that file.
#pragma once

#include <QDialog>
#include <QString>

class QLabel;
class QLineEdit;
class QTreeWidget;

class frm_SqliteConfig : public QDialog
{
    Q_OBJECT

public:
    frm_SqliteConfig(const QString& database, bool english, QWidget* parent = nullptr);

    // Shows the dialog modally; true on OK.
    bool ShowMe();
    // The file as the dialog holds it, blanks around it removed.
    QString Database() const;

private:
    void Browse();
    // Fills the preview tree from the file in the text field; a file that is no logger
    // database leaves the tree empty and says so.
    void LoadPreview();

    QLineEdit* m_txtDatabase = nullptr;
    QTreeWidget* m_trvChannels = nullptr;
    QLabel* m_lblPreview = nullptr;
    bool m_bEnglish = false;
};
