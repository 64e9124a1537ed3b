// SPDX-License-Identifier: GPL-3.0-or-later
// Configuration dialog of the CSV module: the root folder of the CSV file tree.
#pragma once

#include "ModuleConfigDialog.h"

class frm_CsvConfig : public ModuleConfigDialog
{
    Q_OBJECT
public:
    frm_CsvConfig(const QString& folder, bool english, QWidget* parent = nullptr);
    // The folder as the dialog holds it, blanks around it removed.
    QString Folder() const;

private:
    void Browse() override;
};
