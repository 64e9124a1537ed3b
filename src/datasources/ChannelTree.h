// SPDX-License-Identifier: GPL-3.0-or-later
// Channel trees: what a tree node carries besides its text (key, image key, tag), and the
// rule that turns a node key into a channel tag.
#pragma once

#include <QHash>
#include <QIcon>
#include <QString>
#include <qnamespace.h>

class QTreeWidget;
class QTreeWidgetItem;

namespace ChannelTree {

// Data roles of column 0 of every node of a channel tree.
enum Role {
    KeyRole = Qt::UserRole + 1, ///< the node's key, unique within its tree ("DM_3_17")
    ImageRole,            ///< the image key ("ICO_CHANNEL"); the icon follows from it
    TagRole               ///< free text: the address for categories, the channel tag for channels
};

// Image keys of the nodes.
inline constexpr char ImageDataModule[] = "ICO_DATAMODULE";
inline constexpr char ImageFolder[] = "ICO_FOLDER";
inline constexpr char ImageMeasuring[] = "ICO_MEASURING";
inline constexpr char ImageCategorie[] = "ICO_CATEGORIE";
inline constexpr char ImageChannel[] = "ICO_CHANNEL";
inline constexpr char ImageChecked[] = "ICO_CHECKED";

QString Key(const QTreeWidgetItem* item);
QString Image(const QTreeWidgetItem* item);
QString Tag(const QTreeWidgetItem* item);
void SetKey(QTreeWidgetItem* item, const QString& key);
// Sets the image key and the icon that belongs to it.
void SetImage(QTreeWidgetItem* item, const QString& imageKey);
void SetTag(QTreeWidgetItem* item, const QString& tag);

// The icon shown for an image key; a null icon for an unknown key.
QIcon Icon(const QString& imageKey);

// Every node of the tree by its key. Walks the whole tree, so callers that add many nodes
// build it once and keep it up to date themselves.
QHash<QString, QTreeWidgetItem*> KeyIndex(QTreeWidget* tree);
// The node with that key, or nothing.
QTreeWidgetItem* FindItem(QTreeWidget* tree, const QString& key);

// The texts from the top-level node down to this one, joined by "\".
QString FullPath(const QTreeWidgetItem* item);

// "DM_<address>_..._CHAN_<id>" gives "<address>$<id>"; a key without "DM_" or without a
// "CHAN_" behind the address is no channel and gives "".
QString ChannelTagFromKey(const QString& key);

} // namespace ChannelTree
