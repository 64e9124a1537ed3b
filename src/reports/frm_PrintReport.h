// SPDX-License-Identifier: GPL-3.0-or-later
// The print dialog: which reports to print, in which order and orientation, and whether for the
// active view or for all open views. The ticks of its list are remembered between runs.
#pragma once

#include "ReportInterface.h"

#include <QDialog>

#include <functional>
#include <vector>

class QGroupBox;
class QKeyEvent;
class QListWidget;
class QPushButton;
class QRadioButton;

class frm_PrintReport : public QDialog
{
    Q_OBJECT
public:
    explicit frm_PrintReport(QWidget* parent = nullptr);

    // Shows the dialog modally; singleOnly hides the choice between the active and all open
    // views. True on OK, and then reports holds the ticked reports in list order with their
    // orientation set, orientations the parallel values 1 (portrait) and 2 (landscape), and
    // allOpen whether all open views are to be printed.
    bool ShowMe(bool singleOnly, const ReportCollection& available, std::vector<ReportPtr>& reports,
        std::vector<qint32>& orientations, bool& allOpen);
    // Called with the help context by the Help button and F1.
    void SetHelpHandler(std::function<void(int)> help) { m_help = std::move(help); }

    static constexpr int HelpContext = 1041;

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void Fill(const ReportCollection& available);
    void MoveRow(int delta);
    void ShowRowOrientation();
    void UpdateButtons();
    void Harvest(
        const ReportCollection& available, std::vector<ReportPtr>& reports, std::vector<qint32>& orientations) const;
    void PageSetup();

    std::function<void(int)> m_help;

    QListWidget* m_lstReports = nullptr;
    QPushButton* m_cmdUp = nullptr;
    QPushButton* m_cmdDown = nullptr;
    QRadioButton* m_optPortrait = nullptr;
    QRadioButton* m_optLandscape = nullptr;
    QGroupBox* m_fraMulti = nullptr;
    QRadioButton* m_optSingle = nullptr;
    QRadioButton* m_optAll = nullptr;
    QPushButton* m_cmdSetup = nullptr;
    QPushButton* m_cmdOK = nullptr;
    QPushButton* m_cmdHelp = nullptr;
};
