// SPDX-License-Identifier: GPL-3.0-or-later
#include "ChannelTree.h"

#include <QApplication>
#include <QStyle>
#include <QTreeWidget>
#include <QTreeWidgetItem>

namespace ChannelTree {

QString Key(const QTreeWidgetItem* item)
{
    return item ? item->data(0, KeyRole).toString() : QString();
}

QString Image(const QTreeWidgetItem* item)
{
    return item ? item->data(0, ImageRole).toString() : QString();
}

QString Tag(const QTreeWidgetItem* item)
{
    return item ? item->data(0, TagRole).toString() : QString();
}

void SetKey(QTreeWidgetItem* item, const QString& key)
{
    item->setData(0, KeyRole, key);
}

void SetImage(QTreeWidgetItem* item, const QString& imageKey)
{
    item->setData(0, ImageRole, imageKey);
    item->setIcon(0, Icon(imageKey));
}

void SetTag(QTreeWidgetItem* item, const QString& tag)
{
    item->setData(0, TagRole, tag);
}

QIcon Icon(const QString& imageKey)
{
    const QStyle* style = QApplication::style();
    if (!style)
        return QIcon();
    if (imageKey == QLatin1String(ImageDataModule))
        return style->standardIcon(QStyle::SP_DriveHDIcon);
    if (imageKey == QLatin1String(ImageFolder))
        return style->standardIcon(QStyle::SP_DirIcon);
    if (imageKey == QLatin1String(ImageMeasuring))
        return style->standardIcon(QStyle::SP_FileDialogDetailedView);
    if (imageKey == QLatin1String(ImageCategorie))
        return style->standardIcon(QStyle::SP_DirClosedIcon);
    if (imageKey == QLatin1String(ImageChannel))
        return style->standardIcon(QStyle::SP_FileIcon);
    if (imageKey == QLatin1String(ImageChecked))
        return style->standardIcon(QStyle::SP_DialogApplyButton);
    return QIcon();
}

QHash<QString, QTreeWidgetItem*> KeyIndex(QTreeWidget* tree)
{
    QHash<QString, QTreeWidgetItem*> index;
    if (!tree)
        return index;
    for (QTreeWidgetItemIterator it(tree); *it; ++it) {
        const QString key = Key(*it);
        if (!key.isEmpty() && !index.contains(key))
            index.insert(key, *it);
    }
    return index;
}

QTreeWidgetItem* FindItem(QTreeWidget* tree, const QString& key)
{
    if (!tree || key.isEmpty())
        return nullptr;
    for (QTreeWidgetItemIterator it(tree); *it; ++it)
        if (Key(*it) == key)
            return *it;
    return nullptr;
}

QString FullPath(const QTreeWidgetItem* item)
{
    QStringList texts;
    for (; item; item = item->parent())
        texts.prepend(item->text(0));
    return texts.join(QLatin1Char('\\'));
}

QString ChannelTagFromKey(const QString& key)
{
    const qsizetype module = key.indexOf(QLatin1String("DM_"));
    if (module < 0)
        return QString();
    const qsizetype addressStart = module + 3;
    const qsizetype addressEnd = key.indexOf(QLatin1Char('_'), addressStart);
    if (addressEnd < 0)
        return QString();
    const qsizetype channel = key.indexOf(QLatin1String("CHAN_"), addressEnd);
    if (channel < 0)
        return QString();
    return key.mid(addressStart, addressEnd - addressStart) + QLatin1Char('$') + key.mid(channel + 5);
}

} // namespace ChannelTree
