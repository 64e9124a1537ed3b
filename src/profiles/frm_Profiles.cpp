// SPDX-License-Identifier: GPL-3.0-or-later
#include "frm_Profiles.h"

#include "ResStrings.h"
#include "frm_ProfileProperties.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

#include <memory>

namespace {

template<typename T> T* Named(T* widget, const char* name)
{
    widget->setObjectName(QLatin1String(name));
    return widget;
}

} // namespace

frm_Profiles::frm_Profiles(QWidget* parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("frm_Profiles"));
    setWindowTitle(GetResString(422));
    m_lblDescription = Named(new QLabel(GetResString(423), this), "lbl_Description");
    m_lblDescription->setWordWrap(true);
    m_lstProfiles = Named(new QListWidget(this), "lst_Profiles");
    m_cmdNew = Named(new QPushButton(GetResString(276), this), "cmd_New");
    m_cmdEdit = Named(new QPushButton(GetResString(277), this), "cmd_Edit");
    m_cmdDelete = Named(new QPushButton(GetResString(278), this), "cmd_Delete");
    m_cmdClose = Named(new QPushButton(GetResString(273), this), "cmd_Close");
    m_cmdHelp = Named(new QPushButton(GetResString(275), this), "cmd_Help");

    auto* buttons = new QVBoxLayout;
    for (QPushButton* button : { m_cmdNew, m_cmdEdit, m_cmdDelete })
        buttons->addWidget(button);
    buttons->addStretch(1);
    buttons->addWidget(m_cmdClose);
    buttons->addWidget(m_cmdHelp);
    auto* body = new QHBoxLayout;
    body->addWidget(m_lstProfiles, 1);
    body->addLayout(buttons);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_lblDescription);
    layout->addLayout(body, 1);

    connect(m_cmdNew, &QPushButton::clicked, this, &frm_Profiles::New);
    connect(m_cmdEdit, &QPushButton::clicked, this, &frm_Profiles::Edit);
    connect(m_cmdDelete, &QPushButton::clicked, this, &frm_Profiles::Delete);
    connect(m_cmdClose, &QPushButton::clicked, this, &QDialog::accept);
    connect(m_cmdHelp, &QPushButton::clicked, this, [this] {
        if (m_help)
            m_help(HelpContext);
    });
    connect(m_lstProfiles, &QListWidget::itemSelectionChanged, this, &frm_Profiles::UpdateButtons);
    connect(m_lstProfiles, &QListWidget::itemDoubleClicked, this, &frm_Profiles::Edit);
    resize(460, 320);
}

bool frm_Profiles::ShowMe()
{
    m_bChanged = false;
    Fill();
    exec();
    return m_bChanged;
}

void frm_Profiles::Fill()
{
    m_lstProfiles->clear();
    if (m_cProfiles)
        for (const ProfilePtr& profile : *m_cProfiles)
            m_lstProfiles->addItem(profile->Name);
    if (m_lstProfiles->count() > 0)
        m_lstProfiles->setCurrentRow(0);
    UpdateButtons();
}

void frm_Profiles::UpdateButtons()
{
    const bool selected = m_lstProfiles->currentItem() && m_lstProfiles->currentItem()->isSelected();
    m_cmdEdit->setEnabled(selected);
    m_cmdDelete->setEnabled(selected);
}

bool frm_Profiles::RunWizard(Profile& profile, const QString& ownKey)
{
    frm_ProfileProperties wizard(this);
    wizard.SetDataModules(m_cDataModules);
    wizard.SetNameAllowed(
        [this, ownKey](const QString& name) { return name == ownKey || !m_cProfiles || !m_cProfiles->Contains(name); });
    return wizard.ShowMe(profile);
}

void frm_Profiles::New()
{
    if (!m_cProfiles)
        return;
    auto profile = std::make_shared<Profile>();
    profile->Name = GetResString(430);
    if (!RunWizard(*profile, QString()))
        return;
    if (!m_cProfiles->Add(profile, profile->Name))
        return;
    m_lstProfiles->addItem(profile->Name);
    m_lstProfiles->setCurrentRow(m_lstProfiles->count() - 1);
    m_bChanged = true;
    UpdateButtons();
}

void frm_Profiles::Edit()
{
    QListWidgetItem* item = m_lstProfiles->currentItem();
    if (!m_cProfiles || !item || !item->isSelected())
        return;
    const QString key = item->text();
    const ProfilePtr profile = m_cProfiles->Item(key);
    if (!profile || !RunWizard(*profile, key))
        return;
    m_bChanged = true;
    m_cProfiles->Remove(key);
    m_cProfiles->Add(profile, profile->Name);
    item->setText(profile->Name);
}

void frm_Profiles::Delete()
{
    QListWidgetItem* item = m_lstProfiles->currentItem();
    if (!m_cProfiles || !item || !item->isSelected())
        return;
    const QString name = item->text();
    const auto answer = QMessageBox::question(this, GetResString(200),
        GetResString(490).replace(QStringLiteral("%s"), name), QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
    if (answer != QMessageBox::Yes)
        return;
    const int row = m_lstProfiles->row(item);
    delete m_lstProfiles->takeItem(row);
    m_cProfiles->Remove(name);
    if (m_lstProfiles->count() > 0)
        m_lstProfiles->setCurrentRow(std::min(row, m_lstProfiles->count() - 1));
    m_bChanged = true;
    UpdateButtons();
}
