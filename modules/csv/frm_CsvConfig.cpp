// SPDX-License-Identifier: GPL-3.0-or-later
#include "frm_CsvConfig.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

frm_CsvConfig::frm_CsvConfig(const QString& folder, bool english, QWidget* parent)
    : QDialog(parent)
    , m_bEnglish(english)
{
    setObjectName("frm_CsvConfig");
    setWindowTitle(english ? tr("CSV files") : tr("CSV-Dateien"));

    auto* label = new QLabel(
        english ? tr("Folder with the CSV files of the loggers:") : tr("Ordner mit den CSV-Dateien der Logger:"), this);
    m_txtFolder = new QLineEdit(QDir::toNativeSeparators(folder), this);
    m_txtFolder->setObjectName("txt_Folder");
    m_txtFolder->setMinimumWidth(360);
    label->setBuddy(m_txtFolder);
    auto* browse = new QPushButton(english ? tr("Browse...") : tr("Durchsuchen..."), this);
    browse->setObjectName("cmd_Browse");
    connect(browse, &QPushButton::clicked, this, &frm_CsvConfig::Browse);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setObjectName("cmd_OK");
    buttons->button(QDialogButtonBox::Cancel)->setObjectName("cmd_Cancel");
    buttons->button(QDialogButtonBox::Cancel)->setText(english ? tr("Cancel") : tr("Abbrechen"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* row = new QHBoxLayout;
    row->addWidget(m_txtFolder, 1);
    row->addWidget(browse);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(label);
    layout->addLayout(row);
    layout->addStretch(1);
    layout->addWidget(buttons);
}

bool frm_CsvConfig::ShowMe()
{
    return exec() == QDialog::Accepted;
}

QString frm_CsvConfig::Folder() const
{
    return QDir::fromNativeSeparators(m_txtFolder->text().trimmed());
}

void frm_CsvConfig::Browse()
{
    const QString chosen = QFileDialog::getExistingDirectory(
        this, m_bEnglish ? tr("Choose the folder of the CSV files") : tr("Ordner der CSV-Dateien auswählen"), Folder());
    if (!chosen.isEmpty())
        m_txtFolder->setText(QDir::toNativeSeparators(chosen));
}
