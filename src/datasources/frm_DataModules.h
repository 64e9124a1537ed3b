// SPDX-License-Identifier: GPL-3.0-or-later
// The list of the installed data modules, from which the user opens a module's configuration.
#pragma once

#include "ModuleBoxes.h"

#include <QDialog>

#include <functional>

class QListWidget;
class QPushButton;

class frm_DataModules : public QDialog
{
    Q_OBJECT
public:
    explicit frm_DataModules(QWidget* parent = nullptr);

    // Called for F1 and cmd_Help; without one the help keys do nothing.
    void SetHelpHandler(std::function<void()> handler) { m_showHelp = std::move(handler); }

    // Lists the modules and shows the dialog modally. With exactly one module its
    // configuration opens at once and the list is not shown.
    void ShowMe(const ModuleBoxes& modules);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void lst_DataModules_Click();
    void cmd_Config_Click();
    void cmd_Help_Click();

    QListWidget* m_lstDataModules = nullptr;
    QPushButton* m_cmdConfig = nullptr;
    QPushButton* m_cmdHelp = nullptr;
    QPushButton* m_cmdClose = nullptr;
    ModuleBoxes m_modules;
    std::function<void()> m_showHelp;
};
