// SPDX-License-Identifier: GPL-3.0-or-later
// A profile's channel lists and the keyed collection of profiles.
#include "Profile.h"
#include "QtPrinters.h"

#include <gtest/gtest.h>

namespace {

TEST(ProfileTest, ChannelListsStartAtOneAndGrowOnWriting)
{
    Profile profile;
    profile.SetChannelName(3, "Wirkleistung");
    profile.SetChannelName(0, "ignored");
    SeriesProperties look;
    look.LineWidth = 3;
    profile.SetSeriesProperties(5, look);
    EXPECT_EQ(profile.ChannelCount(), 3) << "the looks do not lengthen the channel list";
    for (const qint32 index : { -1, 0, 1, 4 })
        EXPECT_EQ(profile.ChannelName(index), QString()) << index;
    EXPECT_EQ(profile.ChannelName(3), "Wirkleistung");
    for (const qint32 index : { 0, 3, 6 })
        EXPECT_EQ(profile.SeriesProperties(index), nullptr) << index;
    ASSERT_NE(profile.SeriesProperties(5), nullptr);
    EXPECT_EQ(profile.SeriesProperties(5)->LineWidth, 3);

    profile.Name = "Trafo";
    profile.GraphProperties.Legend = true;
    profile.Init();
    EXPECT_EQ(profile.ChannelCount(), 0);
    EXPECT_EQ(profile.SeriesProperties(5), nullptr);
    EXPECT_FALSE(profile.GraphProperties.Legend);
    EXPECT_EQ(profile.Name, "Trafo");
}

TEST(ProfileTest, CollectionKeepsOrderAndTakesEachKeyOnce)
{
    ProfileCollection profiles;
    auto renamed = std::make_shared<Profile>();
    renamed->Name = "A";
    EXPECT_TRUE(profiles.Add(std::make_shared<Profile>(), "B"));
    EXPECT_TRUE(profiles.Add(renamed));
    EXPECT_FALSE(profiles.Add(std::make_shared<Profile>(), "A"));
    EXPECT_TRUE(profiles.Add(std::make_shared<Profile>(), "a")) << "keys are compared exactly";

    // A renamed profile keeps its key until it is added again under the new one.
    renamed->Name = "Z";
    EXPECT_EQ(profiles.Item("A"), renamed);
    EXPECT_TRUE(profiles.Remove("A"));
    EXPECT_TRUE(profiles.Add(renamed));
    QStringList keys;
    for (qsizetype i = 0; i < profiles.Count(); ++i)
        keys << profiles.KeyAt(i);
    EXPECT_EQ(keys, QStringList({ "B", "a", "Z" }));
    EXPECT_EQ(profiles.At(2), renamed);
}

} // namespace
