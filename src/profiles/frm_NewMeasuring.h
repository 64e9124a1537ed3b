// SPDX-License-Identifier: GPL-3.0-or-later
// The wizard that decides what a new view, a new document of a report batch (mode 1) or a
// serial report (mode 2) contains: name and remark, data modules, an optional profile, the
// channels, statistics, customer data, period, resolution and the serial report's chart. It
// creates nothing: the caller reads the result after ShowMe.
#pragma once

#include "ModuleBoxes.h"
#include "Profile.h"

#include <QDialog>
#include <QStringList>

#include <array>

class DateEdit;
class MeasuringHost;
class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QMenu;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;
class QStackedWidget;
class QTreeWidget;

class frm_NewMeasuring : public QDialog
{
    Q_OBJECT
public:
    // The host makes the scratch view that finds the period of the chosen channels.
    explicit frm_NewMeasuring(MeasuringHost& host, QWidget* parent = nullptr);
    ~frm_NewMeasuring() override;

    // --- set before ShowMe, in this order
    // 0 new view, 1 document of a report batch, 2 serial report; first, captions depend on it.
    void SetMode(qint16 mode);
    qint16 Mode() const { return m_iMode; }
    // Every module of the application.
    void SetDataModules(const ModuleBoxes& modules) { m_cDataModules = modules; }
    const ModuleBoxes& DataModules() const { return m_cDataModules; }
    // The modules checked on page 1; empty or a preset before ShowMe.
    ModuleBoxes& UsedModules() { return m_cUsedModules; }
    // "<address>$<channel id>" of the chosen channels; empty or a preset before ShowMe.
    QStringList& Channels() { return m_cChannels; }
    // The profiles of the application; none offers no profile page.
    void SetProfiles(const ProfileCollection* profiles) { m_cProfiles = profiles; }
    const QString& MeasuringName() const { return m_sMeasuringName; }
    void SetMeasuringName(const QString& name) { m_sMeasuringName = name; }

    // Runs the wizard modally: true when it was cancelled. The chosen modules, statistics and
    // whether they show in the chart are remembered only when it was finished.
    bool ShowMe();

    // --- read after ShowMe
    const QString& Remark() const { return m_sRemark; }
    // The profile chosen on page 2, or none.
    const ProfilePtr& Profile() const { return m_cProfile; }
    // "|id|id|...|", "|" for none.
    const QString& Indizes() const { return m_sIndizes; }
    bool IndizesInChart() const { return m_bIndizesInChart; }
    bool ShowFixedLine() const;
    // The value of the fixed line when its text is a number, else 0.
    double FixedLineValue() const;

    // The controls the batch callers read directly.
    DateEdit* dat_Start() const { return m_datStart; }
    DateEdit* dat_End() const { return m_datEnd; }
    QRadioButton* opt_Resolution(int index) const { return m_optResolution.at(index); }
    QLineEdit* txt_Count() const { return m_txtCount; }
    QComboBox* cbo_Unit() const { return m_cboUnit; }
    QLineEdit* txt_Customer(int index) const { return m_txtCustomer.at(index); }
    QCheckBox* chk_MinCursor() const { return m_chkMinCursor; }
    QCheckBox* chk_MaxCursor() const { return m_chkMaxCursor; }
    QRadioButton* opt_LGA_Axis(int index) const { return m_optLgaAxis.at(index); }
    QLineEdit* txt_Border(int index) const { return m_txtBorder.at(index); }
    QRadioButton* opt_SingleAxis(int index) const { return m_optSingleAxis.at(index); }
    QRadioButton* opt_LGADays(int index) const { return m_optLgaDays.at(index); }
    QLineEdit* txt_LGANumValues() const { return m_txtLgaNumValues; }
    QCheckBox* chk_FixedLine() const { return m_chkFixedLine; }
    QLineEdit* txt_FixedLine() const { return m_txtFixedLine; }
    QComboBox* cboGallery() const { return m_cboGallery; }

    // --- the pages, as the buttons drive them
    int CurrentPage() const { return m_iPage; }
    void Forward();
    void Back();
    void Cancel();
    QPushButton* cmd_Forward() const { return m_cmdForward; }
    QPushButton* cmd_Back() const { return m_cmdBack; }
    QLineEdit* txt_MeasuringName() const { return m_txtMeasuringName; }
    QPlainTextEdit* txt_MeasuringRemark() const { return m_txtMeasuringRemark; }
    QListWidget* lvw_DataModules() const { return m_lvwDataModules; }
    QListWidget* lvw_Profiles() const { return m_lvwProfiles; }
    QTreeWidget* trv_Channels() const { return m_trvChannels; }
    QListWidget* lst_Indizes() const { return m_lstIndizes; }
    QCheckBox* chk_ShowIndizes() const { return m_chkShowIndizes; }
    QLabel* lbl_Help() const { return m_lblHelp; }
    QMenu* SelectMenu() const { return m_mnuSelect; }
    int HelpContext() const { return m_iHelpContext; }

protected:
    void closeEvent(QCloseEvent* event) override;
    void reject() override;

private:
    void BuildPages();
    void UpdateCaptions();
    void GotoPage(int target);
    void LeavePage(int page);
    void EnterPage(int page);
    void EnterModules();
    void EnterProfiles();
    void EnterChannels();
    void EnterPeriod();
    void EnterChart();
    void HarvestChannels();
    void TakeUsedModules();
    void TakeProfile();
    void InitResolution();
    void UpdateButtons();
    void OnNodeClick(bool doubleClick);
    void OnSpaceKey();
    void ShowSelectMenu(const QPoint& position);
    void OnResolutionOption();
    void OnAxisOption();
    void OnDateChanged();
    QString HelpText(int page) const;
    bool HasCheckedNode() const;

    MeasuringHost& m_cHost;
    qint16 m_iMode = 0;
    QString m_sMeasuringName;
    QString m_sRemark;
    ModuleBoxes m_cDataModules;
    ModuleBoxes m_cUsedModules;
    QStringList m_cChannels;
    const ProfileCollection* m_cProfiles = nullptr;
    ProfilePtr m_cProfile;
    QString m_sIndizes;
    bool m_bIndizesInChart = false;
    int m_iPage = 0;
    bool m_bCancelled = false;
    bool m_bSpaceKey = false;
    bool m_bResolutionInit = false;
    bool m_bFilling = false;
    double m_dFirstAllowed = 0.0;
    double m_dLastAllowed = 0.0;
    int m_iHelpContext = 1033;

    QStackedWidget* m_pages = nullptr;
    QLabel* m_lblHelp = nullptr;
    QLabel* m_lblFailure = nullptr;
    QPushButton* m_cmdCancel = nullptr;
    QPushButton* m_cmdBack = nullptr;
    QPushButton* m_cmdForward = nullptr;
    QPushButton* m_cmdHelp = nullptr;
    QLabel* m_lblName = nullptr;
    QLabel* m_lblRemark = nullptr;
    QLineEdit* m_txtMeasuringName = nullptr;
    QPlainTextEdit* m_txtMeasuringRemark = nullptr;
    QListWidget* m_lvwDataModules = nullptr;
    QListWidget* m_lvwProfiles = nullptr;
    QTreeWidget* m_trvChannels = nullptr;
    QTreeWidget* m_trvProfileChannels = nullptr;
    QMenu* m_mnuSelect = nullptr;
    QListWidget* m_lstIndizes = nullptr;
    QCheckBox* m_chkShowIndizes = nullptr;
    std::array<QLineEdit*, 5> m_txtCustomer {};
    QCheckBox* m_chkMinCursor = nullptr;
    QCheckBox* m_chkMaxCursor = nullptr;
    DateEdit* m_datStart = nullptr;
    DateEdit* m_datEnd = nullptr;
    QGroupBox* m_fraResolution = nullptr;
    std::array<QRadioButton*, 2> m_optResolution {};
    QLineEdit* m_txtCount = nullptr;
    QComboBox* m_cboUnit = nullptr;
    std::array<QRadioButton*, 2> m_optLgaAxis {};
    QGroupBox* m_fraYAxis1 = nullptr;
    QGroupBox* m_fraYAxis2 = nullptr;
    std::array<QLineEdit*, 4> m_txtBorder {};
    std::array<QRadioButton*, 2> m_optSingleAxis {};
    std::array<QRadioButton*, 2> m_optLgaDays {};
    QLineEdit* m_txtLgaNumValues = nullptr;
    QCheckBox* m_chkFixedLine = nullptr;
    QLineEdit* m_txtFixedLine = nullptr;
    QComboBox* m_cboGallery = nullptr;
};
