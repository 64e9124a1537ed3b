// SPDX-License-Identifier: GPL-3.0-or-later
// Configuration dialog of the CSV module: the root folder of the CSV file tree.
#pragma once

#include <QDialog>
#include <QString>

class QLineEdit;

class frm_CsvConfig : public QDialog
{
    Q_OBJECT

public:
    frm_CsvConfig(const QString& folder, bool english, QWidget* parent = nullptr);

    // Shows the dialog modally; true on OK.
    bool ShowMe();
    // The folder as the dialog holds it, blanks around it removed.
    QString Folder() const;

private:
    void Browse();

    QLineEdit* m_txtFolder = nullptr;
    bool m_bEnglish = false;
};
