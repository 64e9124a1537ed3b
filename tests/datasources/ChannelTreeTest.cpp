// SPDX-License-Identifier: GPL-3.0-or-later
#include "ChannelTree.h"
#include "QtPrinters.h"

#include <QTreeWidget>
#include <QTreeWidgetItem>

#include <gtest/gtest.h>

namespace {

TEST(ChannelTree, NodeKeyGivesTheChannelTagOnlyForChannelKeys)
{
    const std::pair<const char*, const char*> cases[] = {
        { "DM_3_CHAN_1001", "3$1001" },
        { "DM_12_CHAN_7#2", "12$7#2" }, // logger and channel number stay together
        { "XY_DM_4_CHAN_9", "4$9" }, // "DM_" is searched, not required at the start
        { "DM_3_17_CHAN_5", "3$5" }, // the address ends at the first "_"
        { "DM_3_CHAN_", "3$" },
        { "DM_3_17", "" },
        { "DM_3", "" },
        { "CHAN_1001", "" },
        { "DM_CHAN_5", "" }, // "CHAN" is read as the address
        { "", "" },
    };
    for (const auto& [key, tag] : cases)
        EXPECT_EQ(ChannelTree::ChannelTagFromKey(key), tag) << key;
}

TEST(ChannelTree, ItemsAreFoundByKeyAndCarryImageIconAndFullPath)
{
    QTreeWidget tree;
    auto* top = new QTreeWidgetItem(&tree, QStringList { "Modul" });
    ChannelTree::SetKey(top, "DM_1");
    auto* child = new QTreeWidgetItem(top, QStringList { "Halle\\Nord" });
    ChannelTree::SetKey(child, "DM_1_2");
    ChannelTree::SetImage(child, ChannelTree::ImageFolder);

    EXPECT_EQ(ChannelTree::FindItem(&tree, "DM_1_2"), child);
    EXPECT_EQ(ChannelTree::FindItem(&tree, "DM_1_3"), nullptr);
    EXPECT_EQ(ChannelTree::KeyIndex(&tree).value("DM_1"), top);
    EXPECT_EQ(ChannelTree::FullPath(child), "Modul\\Halle\\Nord");
    EXPECT_EQ(ChannelTree::Image(child), "ICO_FOLDER");
    EXPECT_FALSE(child->icon(0).isNull());
    for (const char* image : { ChannelTree::ImageDataModule, ChannelTree::ImageMeasuring, ChannelTree::ImageCategorie,
             ChannelTree::ImageChannel, ChannelTree::ImageChecked })
        EXPECT_FALSE(ChannelTree::Icon(image).isNull()) << image;
    EXPECT_TRUE(ChannelTree::Icon("ICO_UNKNOWN").isNull());
}

} // namespace
