// SPDX-License-Identifier: GPL-3.0-or-later
#include "frm_SeriesProperties.h"

#include "ResStrings.h"
#include "SeriesPropertiesEditor.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

frm_SeriesProperties::frm_SeriesProperties(QWidget* parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("frm_SeriesProperties"));
    setWindowTitle(GetResString(451));

    auto* description = new QLabel(GetResString(452), this);
    description->setObjectName(QStringLiteral("lbl_Description"));
    description->setWordWrap(true);
    m_editor = new SeriesPropertiesEditor(this);
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

bool frm_SeriesProperties::ShowMe(SeriesProperties& properties)
{
    m_editor->Load(properties);
    if (exec() != QDialog::Accepted)
        return false;
    m_editor->Save(properties);
    return true;
}
