// SPDX-License-Identifier: GPL-3.0-or-later
// The page setup: margins, head and foot heights in millimetres and the separator lines, the
// page layout of every report.
#pragma once

#include <QDialog>

#include <array>
#include <functional>

class QCheckBox;
class QKeyEvent;
class QLineEdit;
class QPushButton;

class frm_PageSetup : public QDialog
{
    Q_OBJECT
public:
    explicit frm_PageSetup(QWidget* parent = nullptr);

    // Shows the stored layout modally; true on OK, which stores it for the current user.
    bool ShowMe();
    // Called with the help context by the Help button and F1.
    void SetHelpHandler(std::function<void(int)> help) { m_help = std::move(help); }

    static constexpr int HelpContext = 1041;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Load();
    void Save();

    std::function<void(int)> m_help;
    std::array<QLineEdit*, 6> m_txtBorder {};
    QCheckBox* m_chkDrawLine = nullptr;
    QPushButton* m_cmdHelp = nullptr;
};
