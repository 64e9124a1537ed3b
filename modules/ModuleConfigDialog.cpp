// SPDX-License-Identifier: GPL-3.0-or-later
#include "ModuleConfigDialog.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

ModuleConfigDialog::ModuleConfigDialog(
    const Texts& texts, const QString& pathName, const QString& path, bool english, QWidget* parent)
    : QDialog(parent)
    , m_bEnglish(english)
{
    setWindowTitle(texts.title);
    auto* label = new QLabel(texts.label, this);
    m_txtPath = new QLineEdit(path, this);
    m_txtPath->setObjectName(pathName);
    m_txtPath->setMinimumWidth(360);
    label->setBuddy(m_txtPath);
    auto* browse = new QPushButton(english ? tr("Browse...") : tr("Durchsuchen..."), this);
    browse->setObjectName("cmd_Browse");
    connect(browse, &QPushButton::clicked, this, [this] { Browse(); });

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setObjectName("cmd_OK");
    buttons->button(QDialogButtonBox::Cancel)->setObjectName("cmd_Cancel");
    buttons->button(QDialogButtonBox::Cancel)->setText(english ? tr("Cancel") : tr("Abbrechen"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* row = new QHBoxLayout;
    row->addWidget(m_txtPath, 1);
    row->addWidget(browse);
    m_layout = new QVBoxLayout(this);
    m_layout->addWidget(label);
    m_layout->addLayout(row);
    m_layout->addStretch(1);
    m_layout->addWidget(buttons);
}

bool ModuleConfigDialog::ShowMe()
{
    return exec() == QDialog::Accepted;
}

QString ModuleConfigDialog::Path() const
{
    return m_txtPath->text().trimmed();
}

void ModuleConfigDialog::SetPath(const QString& path)
{
    m_txtPath->setText(path);
}

void ModuleConfigDialog::AddBelow(QWidget* widget, int stretch)
{
    // Above the buttons; a widget that stretches takes the room of the empty stretch.
    if (stretch > 0)
        for (int i = 0; i < m_layout->count(); ++i)
            if (m_layout->itemAt(i)->spacerItem()) {
                delete m_layout->takeAt(i);
                break;
            }
    m_layout->insertWidget(m_layout->count() - 1, widget, stretch);
}
