// SPDX-License-Identifier: GPL-3.0-or-later
#include "frm_SqliteConfig.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

frm_SqliteConfig::frm_SqliteConfig(const QString& database, bool english, QWidget* parent)
    : QDialog(parent)
    , m_bEnglish(english)
{
    setObjectName("frm_SqliteConfig");
    setWindowTitle(english ? tr("Logger database") : tr("Logger-Datenbank"));

    auto* label = new QLabel(english ? tr("Database file:") : tr("Datenbankdatei:"), this);
    m_txtDatabase = new QLineEdit(database, this);
    m_txtDatabase->setObjectName("txt_Database");
    m_txtDatabase->setMinimumWidth(360);
    label->setBuddy(m_txtDatabase);
    auto* browse = new QPushButton(english ? tr("Browse...") : tr("Durchsuchen..."), this);
    browse->setObjectName("cmd_Browse");
    connect(browse, &QPushButton::clicked, this, &frm_SqliteConfig::Browse);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setObjectName("cmd_OK");
    buttons->button(QDialogButtonBox::Cancel)->setObjectName("cmd_Cancel");
    buttons->button(QDialogButtonBox::Cancel)->setText(english ? tr("Cancel") : tr("Abbrechen"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* row = new QHBoxLayout;
    row->addWidget(m_txtDatabase, 1);
    row->addWidget(browse);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(label);
    layout->addLayout(row);
    layout->addStretch(1);
    layout->addWidget(buttons);
}

bool frm_SqliteConfig::ShowMe()
{
    return exec() == QDialog::Accepted;
}

QString frm_SqliteConfig::Database() const
{
    return m_txtDatabase->text().trimmed();
}

void frm_SqliteConfig::Browse()
{
    const QString start = Database().isEmpty() ? QString() : QFileInfo(Database()).absolutePath();
    const QString filter = m_bEnglish ? tr("Logger databases (*.sqlite *.sqlite3 *.db);;All files (*)")
                                      : tr("Logger-Datenbanken (*.sqlite *.sqlite3 *.db);;Alle Dateien (*)");
    const QString chosen = QFileDialog::getOpenFileName(
        this, m_bEnglish ? tr("Choose the database") : tr("Datenbank auswählen"), start, filter);
    if (!chosen.isEmpty())
        m_txtDatabase->setText(QDir::toNativeSeparators(chosen));
}
