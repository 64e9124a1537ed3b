// SPDX-License-Identifier: GPL-3.0-or-later
// Choosing channels in a channel tree: a chosen channel shows ICO_CHECKED, an unchosen one
// ICO_CHANNEL. The toggle of clicks and the space key, the choice over a whole branch, and the
// copy of a branch into another tree.
#pragma once

#include <QObject>

#include <functional>

class QTreeWidget;
class QTreeWidgetItem;

namespace ChannelSelection {

// The toggle of clicks and the space key. With the setting ExtendedChannelSelection a click
// toggles the selected channel and a double click gives its state to all its siblings; without
// it only a double click toggles. The space key counts as a double click that never spreads.
void ToggleChannelNode(QTreeWidget* tree, bool doubleClick, bool spaceKey);

// Chooses or unchooses one channel node; other images stay.
void SetChecked(QTreeWidgetItem* item, bool checked);
// The same for every node below the item, depth first.
void SetCheckedBelow(QTreeWidgetItem* item, bool checked);

// Copies key, text, image and tag of the node and all nodes below it, children in order, as a
// child of parent or, without one, at the root of the target tree. Returns the copy.
QTreeWidgetItem* CopyNodeTree(QTreeWidget* target, const QTreeWidgetItem* source, QTreeWidgetItem* parent);

// Calls every node of the tree, depth first, in the order shown.
void ForEachNode(QTreeWidget* tree, const std::function<void(QTreeWidgetItem*)>& visit);

// Space on a tree runs the action instead of the tree's own selection by key.
class SpaceKeyFilter : public QObject
{
public:
    SpaceKeyFilter(QObject* parent, std::function<void()> onSpace);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    std::function<void()> m_onSpace;
};

} // namespace ChannelSelection
