// SPDX-License-Identifier: GPL-3.0-or-later
#include "frm_CsvConfig.h"

#include <QDir>
#include <QFileDialog>

frm_CsvConfig::frm_CsvConfig(const QString& folder, bool english, QWidget* parent)
    : ModuleConfigDialog({ english ? tr("CSV files") : tr("CSV-Dateien"),
                             english ? tr("Folder with the CSV files of the loggers:")
                                     : tr("Ordner mit den CSV-Dateien der Logger:") },
        "txt_Folder", QDir::toNativeSeparators(folder), english, parent)
{
    setObjectName("frm_CsvConfig");
}

QString frm_CsvConfig::Folder() const
{
    return QDir::fromNativeSeparators(Path());
}

void frm_CsvConfig::Browse()
{
    const QString chosen = QFileDialog::getExistingDirectory(
        this, English() ? tr("Choose the folder of the CSV files") : tr("Ordner der CSV-Dateien auswählen"), Folder());
    if (!chosen.isEmpty())
        SetPath(QDir::toNativeSeparators(chosen));
}
