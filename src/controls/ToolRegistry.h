// SPDX-License-Identifier: GPL-3.0-or-later
// The command surface of the main window: named bands (menu bar, pop-up menus, toolbars, the
// status bar) and named tools shown in them. A tool is one QAction however many bands show it,
// so that its enabled and checked state, caption and icon are the same everywhere.
#pragma once

#include <QHash>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

class QAction;
class QComboBox;
class QIcon;
class QLabel;
class QMainWindow;
class QMenu;
class QToolBar;
class QWidget;

class ToolRegistry : public QObject
{
    Q_OBJECT
public:
    enum BandType { Toolbar = 0, MenuBar = 1, Popup = 2, StatusBar = 3 };
    enum ToolType {
        ButtonTool = 0,
        ComboTool = 2,
        LabelTool = 4,
        SeparatorTool = 5,
        CustomTool = 6,
        WindowListTool = 8
    };

    explicit ToolRegistry(QMainWindow& window);
    ~ToolRegistry() override;

    // Where tool icons come from: the image list's key ("ICO_NEW") to an icon; a missing
    // image gives a null icon, which is no error.
    void SetIconSource(std::function<QIcon(const QString&)> source) { m_iconSource = std::move(source); }

    // Deletes every band and tool.
    void Clear();

    // A pop-up band whose parent is the menu bar "mnuMain" becomes one of its menus, with the
    // caption; other pop-ups are shown by CallMenu. A toolbar band takes the caption as its
    // title. A second band of one name is ignored.
    void AddBand(const QString& name, int type, const QString& caption = QString(), const QString& parent = QString());

    // Creates the tool (or takes the existing one of that name) and shows it in band and in
    // band2 where these are not empty, at position index of the band (-1 appends). The
    // caption is also the tool tip. A one-character shortcut means Ctrl with it; a longer one
    // is read as it stands. Separators are made per band and may share a name.
    QAction* AddTool(const QString& band, const QString& name, int type, const QString& caption,
        const QString& category, const QString& shortcut, const QString& icon, const QString& band2 = QString(),
        int index = -1);
    // Takes the tool out of the band (every entry of that name); the tool lives on while another
    // band shows it.
    void RemoveTool(const QString& band, const QString& name);

    QAction* Tool(const QString& name) const;
    QComboBox* Combo(const QString& name) const;
    QLabel* Label(const QString& name) const;
    QMenu* Menu(const QString& band) const;
    QToolBar* ToolBar(const QString& band) const;
    bool HasBand(const QString& band) const;
    // The tool names of a band in their order, separators included.
    QStringList ToolsOf(const QString& band) const;
    // Every tool name of a band and of the bands whose parent it is.
    QStringList ToolsBelow(const QString& band) const;

    // Puts a widget into a custom tool (the progress bar into "prgState").
    void SetCustomWidget(const QString& name, QWidget* widget);
    // Shows the pop-up band at the mouse position; false for an unknown band.
    bool CallMenu(const QString& name);

    // The arrangement of toolbars and docks, written to and read from a file.
    bool SaveLayout(const QString& path) const;
    bool RestoreLayout(const QString& path);

signals:
    // A button or menu entry was chosen.
    void ToolClicked(const QString& name);
    // A drop-down list was closed on a choice.
    void ComboClosed(const QString& name);
    // The window-list tool's menu is about to show: the receiver fills the list after marker.
    void WindowListRequested(QMenu* menu, QAction* marker);

private:
    struct Band
    {
        int type = Popup;
        QPointer<QWidget> widget; // QMenu, QToolBar, QMenuBar or QStatusBar
        std::vector<std::pair<QString, QPointer<QAction>>> entries;
    };
    struct ToolEntry
    {
        int type = ButtonTool;
        QPointer<QAction> action;
        QPointer<QWidget> widget; // the combo box, label or custom widget
    };

    QAction* MakeTool(const QString& name, int type, const QString& caption, const QString& category,
        const QString& shortcut, const QString& icon);
    void Place(const QString& bandName, const QString& name, QAction* action, int type, int index);

    QMainWindow& m_window;
    QHash<QString, Band> m_bands;
    QStringList m_bandOrder;
    QHash<QString, QString> m_parents; // band -> parent band
    QHash<QString, ToolEntry> m_tools;
    std::function<QIcon(const QString&)> m_iconSource;
};
