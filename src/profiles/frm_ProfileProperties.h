// SPDX-License-Identifier: GPL-3.0-or-later
// The wizard that defines one profile on four pages: its name, its data module, the level of
// the module's tree at which views choose their entry point, and the channels below that level
// with their look and the chart's look. It works on copies; the profile changes only on Finish.
#pragma once

#include "ModuleBoxes.h"
#include "Profile.h"

#include <QDialog>
#include <QHash>
#include <QStringList>

#include <functional>

class QLabel;
class QLineEdit;
class QListWidget;
class QListWidgetItem;
class QPushButton;
class QStackedWidget;
class QTreeWidget;
class QTreeWidgetItem;

// The colour (0x00BBGGRR) a newly chosen channel of a profile takes, by its position from 1:
// 2 green, 3 blue, 4 yellow, 5 magenta, 6 cyan, 7 black, every other one red.
qint32 ProfileDefaultColor(int index);

class frm_ProfileProperties : public QDialog
{
    Q_OBJECT
public:
    enum Page { PageName = 0, PageModule, PageLevel, PageChannels };

    explicit frm_ProfileProperties(QWidget* parent = nullptr);
    ~frm_ProfileProperties() override;

    void SetDataModules(const ModuleBoxes& modules) { m_cDataModules = modules; }
    const ModuleBoxes& DataModules() const { return m_cDataModules; }
    // Asked when the name page is left forward: false refuses the name with a message and
    // keeps the page, so that no profile is given the name of another one.
    void SetNameAllowed(std::function<bool(const QString&)> allowed) { m_nameAllowed = std::move(allowed); }

    // Runs the wizard modally on copies of the profile: true when it was finished, which is
    // the only way the profile is changed.
    bool ShowMe(Profile& profile);

    // --- the pages, as the buttons drive them
    int CurrentPage() const { return m_iPage; }
    void Forward();
    void Back();
    void Cancel();
    QPushButton* cmd_Forward() const { return m_cmdForward; }
    QPushButton* cmd_Back() const { return m_cmdBack; }
    QPushButton* cmd_Cancel() const { return m_cmdCancel; }
    QPushButton* cmd_Help() const { return m_cmdHelp; }
    QPushButton* cmd_ChartProps() const { return m_cmdChartProps; }
    QPushButton* cmd_CurvProps() const { return m_cmdCurvProps; }
    QLineEdit* txt_Name() const { return m_txtName; }
    QLabel* lbl_Caption() const { return m_lblCaption; }
    QLabel* lbl_Description() const { return m_lblDescription; }
    QLabel* lbl_Failure() const { return m_lblFailure; }
    QListWidget* lvw_Modules() const { return m_lvwModules; }
    QTreeWidget* trv_Categories() const { return m_trvCategories; }
    QTreeWidget* trv_Channels() const { return m_trvChannels; }

    // The working copies.
    const QString& SourceAddress() const { return m_sSourceAddress; }
    qint32 EntryLevel() const { return m_iEntryLevel; }
    const QStringList& WorkingNames() const { return m_colNames; }
    // The look of a chosen channel by its name; none for a name not chosen.
    SeriesProperties* WorkingSeries(const QString& name);
    GraphProperties& WorkingGraph() { return m_cGraph; }

    // Escape and the window's close button cancel.
    void reject() override;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void BuildPages();
    void GotoPage(int target);
    bool LeavePage(int page, bool forward);
    void EnterPage(int page);
    void EnterModules();
    void EnterLevel();
    void EnterChannels();
    void HarvestChannels();
    void OnModuleChanged(QListWidgetItem* item);
    void ToggleChannel(QTreeWidgetItem* item);
    void UpdateCaption();
    void UpdateButtons();
    bool LoadTree(QTreeWidget* tree, bool withChannels);
    QTreeWidgetItem* EntryNode() const;
    ModuleBoxPtr SourceModule() const;

    ModuleBoxes m_cDataModules;
    std::function<bool(const QString&)> m_nameAllowed;
    QString m_sSourceAddress;
    qint32 m_iEntryLevel = 0;
    GraphProperties m_cGraph;
    QStringList m_colNames;
    QHash<QString, SeriesProperties> m_colSeries;
    int m_iPage = 0;
    bool m_bFinished = false;
    bool m_bFilling = false;
    bool m_bTreeFailed = false;

    QStackedWidget* m_pages = nullptr;
    QLabel* m_lblCaption = nullptr;
    QLabel* m_lblDescription = nullptr;
    QLabel* m_lblFailure = nullptr;
    QLineEdit* m_txtName = nullptr;
    QListWidget* m_lvwModules = nullptr;
    QTreeWidget* m_trvCategories = nullptr;
    QTreeWidget* m_trvChannels = nullptr;
    QPushButton* m_cmdChartProps = nullptr;
    QPushButton* m_cmdCurvProps = nullptr;
    QPushButton* m_cmdCancel = nullptr;
    QPushButton* m_cmdBack = nullptr;
    QPushButton* m_cmdForward = nullptr;
    QPushButton* m_cmdHelp = nullptr;
};
