// SPDX-License-Identifier: GPL-3.0-or-later
#include "frm_Indizes.h"

#include "IndizesEditor.h"
#include "ResStrings.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

frm_Indizes::frm_Indizes(QWidget* parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("frm_Indizes"));
    setWindowTitle(GetResString(348));

    auto* description = new QLabel(GetResString(349), this);
    description->setObjectName(QStringLiteral("lbl_Description"));
    description->setWordWrap(true);
    m_editor = new IndizesEditor(this);
    auto* ok = new QPushButton(GetResString(266), this);
    ok->setObjectName(QStringLiteral("cmd_OK"));
    ok->setDefault(true);
    auto* cancel = new QPushButton(GetResString(267), this);
    cancel->setObjectName(QStringLiteral("cmd_Cancel"));

    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(description);
    layout->addWidget(m_editor, 1);
    layout->addLayout(buttons);

    connect(ok, &QPushButton::clicked, this, &QDialog::accept);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
}

bool frm_Indizes::ShowMe()
{
    m_editor->Load();
    if (exec() != QDialog::Accepted)
        return false;
    m_editor->Save();
    return true;
}
