// SPDX-License-Identifier: GPL-3.0-or-later
#include "ChannelSelection.h"

#include "ChannelTree.h"
#include "Settings.h"

#include <QEvent>
#include <QKeyEvent>
#include <QTreeWidget>

namespace ChannelSelection {

namespace {

bool IsChannel(const QTreeWidgetItem* item)
{
    return item && ChannelTree::Key(item).contains(QLatin1String("CHAN"));
}

} // namespace

void ToggleChannelNode(QTreeWidget* tree, bool doubleClick, bool spaceKey)
{
    if (!tree)
        return;
    const bool extended = Settings::IsTrue(Settings::Id::ExtendedChannelSelection);
    bool allSiblings = false;
    if (!spaceKey && extended)
        allSiblings = doubleClick;
    else if (!doubleClick)
        return;
    QTreeWidgetItem* selected = tree->currentItem();
    if (!IsChannel(selected))
        return;
    if (allSiblings) {
        const QString image = ChannelTree::Image(selected);
        QTreeWidgetItem* parent = selected->parent();
        const int count = parent ? parent->childCount() : tree->topLevelItemCount();
        for (int i = 0; i < count; ++i)
            ChannelTree::SetImage(parent ? parent->child(i) : tree->topLevelItem(i), image);
        return;
    }
    const QString image = ChannelTree::Image(selected);
    if (image == QLatin1String(ChannelTree::ImageChecked))
        ChannelTree::SetImage(selected, QLatin1String(ChannelTree::ImageChannel));
    else if (image == QLatin1String(ChannelTree::ImageChannel))
        ChannelTree::SetImage(selected, QLatin1String(ChannelTree::ImageChecked));
}

void SetChecked(QTreeWidgetItem* item, bool checked)
{
    if (!item)
        return;
    const QString from = QLatin1String(checked ? ChannelTree::ImageChannel : ChannelTree::ImageChecked);
    if (ChannelTree::Image(item) == from)
        ChannelTree::SetImage(item, QLatin1String(checked ? ChannelTree::ImageChecked : ChannelTree::ImageChannel));
}

void SetCheckedBelow(QTreeWidgetItem* item, bool checked)
{
    if (!item)
        return;
    for (int i = 0; i < item->childCount(); ++i) {
        SetChecked(item->child(i), checked);
        SetCheckedBelow(item->child(i), checked);
    }
}

QTreeWidgetItem* CopyNodeTree(QTreeWidget* target, const QTreeWidgetItem* source, QTreeWidgetItem* parent)
{
    if (!target || !source)
        return nullptr;
    auto* copy = parent ? new QTreeWidgetItem(parent) : new QTreeWidgetItem(target);
    copy->setText(0, source->text(0));
    ChannelTree::SetKey(copy, ChannelTree::Key(source));
    ChannelTree::SetImage(copy, ChannelTree::Image(source));
    ChannelTree::SetTag(copy, ChannelTree::Tag(source));
    for (int i = 0; i < source->childCount(); ++i)
        CopyNodeTree(target, source->child(i), copy);
    return copy;
}

namespace {

void VisitBelow(QTreeWidgetItem* item, const std::function<void(QTreeWidgetItem*)>& visit)
{
    visit(item);
    for (int i = 0; i < item->childCount(); ++i)
        VisitBelow(item->child(i), visit);
}

} // namespace

void ForEachNode(QTreeWidget* tree, const std::function<void(QTreeWidgetItem*)>& visit)
{
    for (int i = 0; tree && i < tree->topLevelItemCount(); ++i)
        VisitBelow(tree->topLevelItem(i), visit);
}

SpaceKeyFilter::SpaceKeyFilter(QObject* parent, std::function<void()> onSpace)
    : QObject(parent)
    , m_onSpace(std::move(onSpace))
{ }

bool SpaceKeyFilter::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Space) {
        m_onSpace();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

} // namespace ChannelSelection
