// SPDX-License-Identifier: GPL-3.0-or-later
// Configuration dialog of the SQLite module: which database file it reads.
#pragma once

#include <QDialog>
#include <QString>

class QLineEdit;

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

    QLineEdit* m_txtDatabase = nullptr;
    bool m_bEnglish = false;
};
