// SPDX-License-Identifier: GPL-3.0-or-later
// The start window: five picture buttons that choose what the program does first.
#pragma once

#include <QDialog>

#include <array>

class QCheckBox;
class QLabel;
class QToolButton;

class frm_Startup : public QDialog
{
    Q_OBJECT
public:
    // What ShowMe returns; the buttons carry these numbers.
    enum Action {
        Leave = 0, ///< close the window and go on with the empty main window
        NewView = 1, ///< create a new view
        OpenView = 2, ///< open a saved view
        ManageData = 3, ///< configure the data modules
        OnlineVisualisation = 4 ///< the online visualisation of an add-in
    };
    static constexpr int ActionCount = 5;

    // The caption welcomes applicationName; empty takes the installation's "ApplicationName".
    explicit frm_Startup(const QString& applicationName = QString(), QWidget* parent = nullptr);

    // Shows the window modally; returns the chosen action, Leave for Esc or closing.
    int ShowMe();

    // Enables or disables the button of an action (all start enabled).
    void SetActionEnabled(int action, bool enabled);

    QToolButton* ActionButton(int action) const;
    QCheckBox* ShowCheck() const { return m_chkShow; }
    QLabel* HelpLabel() const { return m_lblHelp; }

    // Every way of closing ends here: the check box is written to "ShowStartupWindow".
    void done(int result) override;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    std::array<QToolButton*, ActionCount> m_buttons {};
    std::array<QString, ActionCount> m_hints;
    QLabel* m_picture = nullptr;
    QLabel* m_lblHelp = nullptr;
    QCheckBox* m_chkShow = nullptr;
    int m_action = Leave;
};
