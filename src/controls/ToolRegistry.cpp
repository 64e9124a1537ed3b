// SPDX-License-Identifier: GPL-3.0-or-later
#include "ToolRegistry.h"

#include <QAction>
#include <QComboBox>
#include <QCursor>
#include <QFile>
#include <QIcon>
#include <QLabel>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QSaveFile>
#include <QStatusBar>
#include <QToolBar>
#include <QWidgetAction>

namespace {

constexpr char MainMenuBand[] = "mnuMain";

// A caption without its accelerator marks, for tool tips.
QString PlainText(const QString& caption)
{
    QString text = caption;
    text.replace(QStringLiteral("&&"), QStringLiteral("\x01"));
    text.remove(QLatin1Char('&'));
    text.replace(QLatin1Char('\x01'), QLatin1Char('&'));
    return text;
}

QKeySequence ShortcutOf(const QString& shortcut)
{
    if (shortcut.isEmpty())
        return {};
    if (shortcut.size() == 1)
        return QKeySequence(QStringLiteral("Ctrl+") + shortcut.toUpper());
    return QKeySequence::fromString(shortcut);
}

} // namespace

ToolRegistry::ToolRegistry(QMainWindow& window)
    : QObject(&window)
    , m_window(window)
{ }

ToolRegistry::~ToolRegistry() = default;

void ToolRegistry::Clear()
{
    for (const QString& name : m_bandOrder) {
        Band& band = m_bands[name];
        if (band.type == Popup || band.type == Toolbar)
            delete band.widget.data();
        else if (band.type == MenuBar && band.widget)
            static_cast<QMenuBar*>(band.widget.data())->clear();
    }
    for (const ToolEntry& tool : std::as_const(m_tools)) {
        // A custom tool's widget belongs to whoever handed it in.
        if (tool.type != CustomTool)
            delete tool.widget.data();
        delete tool.action.data();
    }
    // Separators are made per band and are not among the tools.
    for (QAction* action : findChildren<QAction*>(QString(), Qt::FindDirectChildrenOnly))
        delete action;
    m_bands.clear();
    m_bandOrder.clear();
    m_parents.clear();
    m_tools.clear();
}

void ToolRegistry::AddBand(const QString& name, int type, const QString& caption, const QString& parent)
{
    if (m_bands.contains(name))
        return;
    Band band;
    band.type = type;
    switch (type) {
    case MenuBar:
        band.widget = m_window.menuBar();
        m_window.menuBar()->setObjectName(name);
        break;
    case StatusBar:
        band.widget = m_window.statusBar();
        m_window.statusBar()->setObjectName(name);
        break;
    case Toolbar: {
        auto* bar = new QToolBar(PlainText(caption), &m_window);
        bar->setObjectName(name); // the layout file finds the bar by its name
        bar->setIconSize(QSize(22, 22));
        m_window.addToolBar(bar);
        band.widget = bar;
        break;
    }
    default: {
        const Band* owner = m_bands.contains(parent) ? &m_bands[parent] : nullptr;
        auto* menu = new QMenu(caption, owner && owner->type == MenuBar ? owner->widget.data() : &m_window);
        menu->setObjectName(name);
        if (owner && owner->type == MenuBar)
            static_cast<QMenuBar*>(owner->widget.data())->addMenu(menu);
        band.widget = menu;
        break;
    }
    }
    m_bands.insert(name, band);
    m_bandOrder << name;
    if (!parent.isEmpty())
        m_parents.insert(name, parent);
}

QAction* ToolRegistry::MakeTool(const QString& name, int type, const QString& caption, const QString& category,
    const QString& shortcut, const QString& icon)
{
    ToolEntry tool;
    tool.type = type;
    switch (type) {
    case ComboTool: {
        auto* action = new QWidgetAction(this);
        auto* box = new QComboBox;
        box->setObjectName(name);
        box->setToolTip(PlainText(caption));
        box->setSizeAdjustPolicy(QComboBox::AdjustToContents);
        connect(box, &QComboBox::activated, this, [this, name] { emit ComboClosed(name); });
        action->setDefaultWidget(box);
        tool.action = action;
        tool.widget = box;
        break;
    }
    case CustomTool:
        // Holds the widget its owner gives it (SetCustomWidget).
        tool.action = new QWidgetAction(this);
        break;
    case LabelTool: {
        auto* action = new QWidgetAction(this);
        auto* label = new QLabel(caption);
        label->setObjectName(name);
        label->setContentsMargins(4, 0, 4, 0);
        action->setDefaultWidget(label);
        tool.action = action;
        tool.widget = label;
        break;
    }
    case WindowListTool:
        // A marker in its menu: the list of open windows is put behind it when the menu opens.
        tool.action = new QAction(this);
        tool.action->setSeparator(true);
        break;
    default: {
        auto* action = new QAction(caption, this);
        action->setToolTip(PlainText(caption));
        action->setShortcut(ShortcutOf(shortcut));
        if (!icon.isEmpty() && m_iconSource)
            action->setIcon(m_iconSource(icon));
        // Menus show their icons in the toolbar; the menu entry stays text.
        action->setIconVisibleInMenu(false);
        connect(action, &QAction::triggered, this, [this, name] { emit ToolClicked(name); });
        tool.action = action;
        break;
    }
    }
    tool.action->setObjectName(name);
    tool.action->setProperty("category", category);
    m_tools.insert(name, tool);
    return tool.action;
}

QAction* ToolRegistry::AddTool(const QString& band, const QString& name, int type, const QString& caption,
    const QString& category, const QString& shortcut, const QString& icon, const QString& band2, int index)
{
    QAction* action = nullptr;
    if (type == SeparatorTool) {
        action = new QAction(this);
        action->setSeparator(true);
        action->setObjectName(name);
    } else if (m_tools.contains(name)) {
        action = m_tools[name].action;
    } else {
        action = MakeTool(name, type, caption, category, shortcut, icon);
    }
    if (!band.isEmpty())
        Place(band, name, action, type, index);
    if (!band2.isEmpty() && band2 != band) {
        QAction* second = action;
        if (type == SeparatorTool) {
            second = new QAction(this);
            second->setSeparator(true);
            second->setObjectName(name);
        }
        Place(band2, name, second, type, index);
    }
    return action;
}

void ToolRegistry::Place(const QString& bandName, const QString& name, QAction* action, int type, int index)
{
    if (!m_bands.contains(bandName))
        return;
    Band& band = m_bands[bandName];
    if (!band.widget)
        return;
    const int count = int(band.entries.size());
    const int at = index < 0 || index > count ? count : index;
    QAction* before = at < count ? band.entries[size_t(at)].second.data() : nullptr;
    band.entries.insert(band.entries.begin() + at, { name, action });

    if (band.type == StatusBar) {
        // The status text takes the room; a custom control stands at the right once it is given.
        const ToolEntry tool = m_tools.value(name);
        if (tool.widget && type == CustomTool)
            m_window.statusBar()->addPermanentWidget(tool.widget);
        else if (tool.widget)
            m_window.statusBar()->addWidget(tool.widget, 1);
        // A widget action hides the widget it holds until a toolbar shows it.
        if (tool.widget)
            tool.widget->show();
        return;
    }
    band.widget->insertAction(before, action);
    if (type == WindowListTool && band.type == Popup) {
        auto* menu = static_cast<QMenu*>(band.widget.data());
        connect(menu, &QMenu::aboutToShow, this, [this, menu, action] { emit WindowListRequested(menu, action); });
    }
}

void ToolRegistry::RemoveTool(const QString& bandName, const QString& name)
{
    if (!m_bands.contains(bandName))
        return;
    Band& band = m_bands[bandName];
    for (auto it = band.entries.begin(); it != band.entries.end();) {
        if (it->first != name) {
            ++it;
            continue;
        }
        if (band.widget && it->second)
            band.widget->removeAction(it->second);
        // A separator belongs to its band alone.
        if (it->second && it->second->isSeparator() && !m_tools.contains(name))
            delete it->second.data();
        it = band.entries.erase(it);
    }
}

QAction* ToolRegistry::Tool(const QString& name) const
{
    return m_tools.value(name).action;
}

QComboBox* ToolRegistry::Combo(const QString& name) const
{
    const auto found = m_tools.constFind(name);
    return found != m_tools.cend() && found->type == ComboTool ? static_cast<QComboBox*>(found->widget.data())
                                                               : nullptr;
}

QLabel* ToolRegistry::Label(const QString& name) const
{
    const auto found = m_tools.constFind(name);
    return found != m_tools.cend() ? qobject_cast<QLabel*>(found->widget.data()) : nullptr;
}

QMenu* ToolRegistry::Menu(const QString& band) const
{
    const auto found = m_bands.constFind(band);
    return found != m_bands.cend() && found->type == Popup ? static_cast<QMenu*>(found->widget.data()) : nullptr;
}

QToolBar* ToolRegistry::ToolBar(const QString& band) const
{
    const auto found = m_bands.constFind(band);
    return found != m_bands.cend() && found->type == Toolbar ? static_cast<QToolBar*>(found->widget.data()) : nullptr;
}

bool ToolRegistry::HasBand(const QString& band) const
{
    return m_bands.contains(band);
}

QStringList ToolRegistry::ToolsOf(const QString& band) const
{
    QStringList names;
    const auto found = m_bands.constFind(band);
    if (found != m_bands.cend())
        for (const auto& entry : found->entries)
            names << entry.first;
    return names;
}

QStringList ToolRegistry::ToolsBelow(const QString& band) const
{
    QStringList names = ToolsOf(band);
    for (auto it = m_parents.cbegin(); it != m_parents.cend(); ++it)
        if (it.value() == band)
            names << ToolsBelow(it.key());
    return names;
}

void ToolRegistry::SetCustomWidget(const QString& name, QWidget* widget)
{
    const auto found = m_tools.find(name);
    if (found == m_tools.end() || found->type != CustomTool || !widget || found->widget)
        return;
    found->widget = widget;
    for (const Band& band : std::as_const(m_bands))
        if (band.type == StatusBar)
            for (const auto& entry : band.entries)
                if (entry.first == name)
                    m_window.statusBar()->addPermanentWidget(widget);
}

bool ToolRegistry::CallMenu(const QString& name)
{
    QMenu* menu = Menu(name);
    if (!menu)
        return false;
    menu->popup(QCursor::pos());
    return true;
}

bool ToolRegistry::SaveLayout(const QString& path) const
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(m_window.saveState());
    return file.commit();
}

bool ToolRegistry::RestoreLayout(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    return m_window.restoreState(file.readAll());
}
