// SPDX-License-Identifier: GPL-3.0-or-later
#include "frm_DataModules.h"

#include "ResStrings.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

frm_DataModules::frm_DataModules(QWidget* parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("frm_DataModules"));
    setWindowTitle(GetResString(307));

    auto* description = new QLabel(GetResString(308), this);
    description->setObjectName(QStringLiteral("lbl_Description"));
    description->setWordWrap(true);

    m_lstDataModules = new QListWidget(this);
    m_lstDataModules->setObjectName(QStringLiteral("lst_DataModules"));
    m_cmdConfig = new QPushButton(GetResString(272), this);
    m_cmdConfig->setObjectName(QStringLiteral("cmd_Config"));
    m_cmdConfig->setEnabled(false);
    m_cmdHelp = new QPushButton(GetResString(275), this);
    m_cmdHelp->setObjectName(QStringLiteral("cmd_Help"));
    m_cmdClose = new QPushButton(GetResString(273), this);
    m_cmdClose->setObjectName(QStringLiteral("cmd_Close"));

    auto* buttons = new QVBoxLayout;
    buttons->addWidget(m_cmdConfig);
    buttons->addWidget(m_cmdHelp);
    buttons->addStretch(1);
    buttons->addWidget(m_cmdClose);
    auto* body = new QHBoxLayout;
    body->addWidget(m_lstDataModules, 1);
    body->addLayout(buttons);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(description);
    layout->addLayout(body, 1);

    connect(m_lstDataModules, &QListWidget::currentRowChanged, this, &frm_DataModules::lst_DataModules_Click);
    connect(m_cmdConfig, &QPushButton::clicked, this, &frm_DataModules::cmd_Config_Click);
    connect(m_cmdHelp, &QPushButton::clicked, this, &frm_DataModules::cmd_Help_Click);
    connect(m_cmdClose, &QPushButton::clicked, this, &QDialog::accept);
}

void frm_DataModules::ShowMe(const ModuleBoxes& modules)
{
    m_modules = modules;
    m_lstDataModules->clear();
    for (const ModuleBoxPtr& box : m_modules)
        m_lstDataModules->addItem(box->Name());

    // One module needs no choice: its configuration opens right away, whatever HasConfig says.
    if (m_modules.Count() == 1) {
        cmd_Config_Click();
        return;
    }
    if (m_lstDataModules->count() > 0)
        m_lstDataModules->setCurrentRow(0);
    exec();
}

void frm_DataModules::lst_DataModules_Click()
{
    const ModuleBoxPtr box = m_modules.At(m_lstDataModules->currentRow());
    m_cmdConfig->setEnabled(box && box->HasConfig());
}

void frm_DataModules::cmd_Config_Click()
{
    const qsizetype row = m_modules.Count() == 1 ? 0 : m_lstDataModules->currentRow();
    if (const ModuleBoxPtr box = m_modules.At(row))
        box->ShowConfig();
}

void frm_DataModules::cmd_Help_Click()
{
    if (m_showHelp)
        m_showHelp();
}

void frm_DataModules::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_F1) {
        cmd_Help_Click();
        event->accept();
        return;
    }
    QDialog::keyPressEvent(event);
}
