// SPDX-License-Identifier: GPL-3.0-or-later
// Configuration dialog of the SQLite module: which database file it reads, with a preview of
// the categories and channels in that file.
#pragma once

#include "ModuleConfigDialog.h"

class QLabel;
class QTreeWidget;

class frm_SqliteConfig : public ModuleConfigDialog
{
    Q_OBJECT
public:
    frm_SqliteConfig(const QString& database, bool english, QWidget* parent = nullptr);
    // The file as the dialog holds it, blanks around it removed.
    QString Database() const;

private:
    void Browse() override;
    // Fills the preview tree from the file in the text field; a file that is no logger
    // database leaves the tree empty and says so.
    void LoadPreview();

    QTreeWidget* m_trvChannels = nullptr;
    QLabel* m_lblPreview = nullptr;
};
