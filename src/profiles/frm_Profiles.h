// SPDX-License-Identifier: GPL-3.0-or-later
// The list of all profiles of the installation, where they are made, edited and deleted.
#pragma once

#include "ModuleBoxes.h"
#include "Profile.h"

#include <QDialog>

#include <functional>

class QLabel;
class QListWidget;
class QPushButton;

class frm_Profiles : public QDialog
{
    Q_OBJECT
public:
    explicit frm_Profiles(QWidget* parent = nullptr);

    // The collection the dialog edits in place; set before ShowMe.
    void SetProfiles(ProfileCollection* profiles) { m_cProfiles = profiles; }
    // Offered to the profile wizard.
    void SetDataModules(const ModuleBoxes& modules) { m_cDataModules = modules; }
    // Called with the help context by the Help button.
    void SetHelpHandler(std::function<void(int)> help) { m_help = std::move(help); }

    // Shows the list modally: true when a profile was made, edited or deleted.
    bool ShowMe();
    bool Changed() const { return m_bChanged; }

    // The buttons' work, each running its dialogs modally.
    void New();
    void Edit();
    void Delete();

    QListWidget* lst_Profiles() const { return m_lstProfiles; }
    QLabel* lbl_Description() const { return m_lblDescription; }
    QPushButton* cmd_New() const { return m_cmdNew; }
    QPushButton* cmd_Edit() const { return m_cmdEdit; }
    QPushButton* cmd_Delete() const { return m_cmdDelete; }
    QPushButton* cmd_Close() const { return m_cmdClose; }
    QPushButton* cmd_Help() const { return m_cmdHelp; }

    static constexpr int HelpContext = 1039;

private:
    void Fill();
    void UpdateButtons();
    // Runs the wizard on the profile; the name may be that of the profile under ownKey only.
    bool RunWizard(Profile& profile, const QString& ownKey);

    ProfileCollection* m_cProfiles = nullptr;
    ModuleBoxes m_cDataModules;
    std::function<void(int)> m_help;
    bool m_bChanged = false;

    QLabel* m_lblDescription = nullptr;
    QListWidget* m_lstProfiles = nullptr;
    QPushButton* m_cmdNew = nullptr;
    QPushButton* m_cmdEdit = nullptr;
    QPushButton* m_cmdDelete = nullptr;
    QPushButton* m_cmdClose = nullptr;
    QPushButton* m_cmdHelp = nullptr;
};
