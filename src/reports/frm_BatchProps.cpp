// SPDX-License-Identifier: GPL-3.0-or-later
// The name and memo of a report batch.
#include "frm_BatchProps.h"

#include "ResStrings.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

frm_BatchProps::frm_BatchProps(QWidget* parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("frm_BatchProps"));
    setWindowTitle(LocalText("Reportstapel Eigenschaften", "Report batch properties"));
    setModal(true);

    m_txtName = new QLineEdit(this);
    m_txtName->setObjectName(QStringLiteral("txt_Name"));
    m_txtMemo = new QPlainTextEdit(this);
    m_txtMemo->setObjectName(QStringLiteral("txt_Memo"));
    m_txtMemo->setTabChangesFocus(true);
    auto* fields = new QFormLayout;
    fields->addRow(LocalText("Name:", "Name:"), m_txtName);
    fields->addRow(LocalText("Beschreibung:", "Description:"), m_txtMemo);

    auto* buttons = new QDialogButtonBox(this);
    m_cmdOK = buttons->addButton(GetResString(266), QDialogButtonBox::AcceptRole);
    m_cmdOK->setObjectName(QStringLiteral("cmd_OK"));
    m_cmdOK->setDefault(true);
    m_cmdCancel = buttons->addButton(GetResString(267), QDialogButtonBox::RejectRole);
    m_cmdCancel->setObjectName(QStringLiteral("cmd_Cancel"));

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(fields, 1);
    layout->addWidget(buttons);

    connect(m_txtName, &QLineEdit::textChanged, this,
        [this](const QString& text) { m_cmdOK->setEnabled(!text.trimmed().isEmpty()); });
    connect(buttons, &QDialogButtonBox::accepted, this, &frm_BatchProps::OnOK);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    resize(sizeHint().expandedTo(QSize(380, 220)));
}

bool frm_BatchProps::ShowMe(QString& name, QString& memo)
{
    m_txtName->setText(name);
    m_cmdOK->setEnabled(!name.trimmed().isEmpty());
    m_txtMemo->setPlainText(memo);
    m_txtName->selectAll();
    m_txtName->setFocus();
    if (exec() != QDialog::Accepted)
        return false;
    name = m_txtName->text().trimmed();
    memo = m_txtMemo->toPlainText();
    return true;
}

void frm_BatchProps::OnOK()
{
    const QString name = m_txtName->text().trimmed();
    if (name.isEmpty())
        return; // Enter in the name box while OK is disabled
    const QString fault = m_validator ? m_validator(name) : QString();
    if (fault.isEmpty()) {
        accept();
        return;
    }
    if (m_message)
        m_message(windowTitle(), fault);
    else
        QMessageBox::warning(this, windowTitle(), fault);
    m_txtName->setFocus();
    m_txtName->selectAll();
}
