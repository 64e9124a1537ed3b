// SPDX-License-Identifier: GPL-3.0-or-later
// The rules of the edited curve list: adding, removing, moving, summing and splitting.
#include "CurveListEdit.h"

#include <gtest/gtest.h>

namespace {

using Entry = CurveListEdit::Entry;

QStringList Keys(const CurveListEdit& edit, qsizetype index)
{
    return edit.Entries().at(size_t(index)).keys;
}

QStringList FirstKeys(const CurveListEdit& edit)
{
    QStringList keys;
    for (const Entry& entry : edit.Entries())
        keys << entry.keys.value(0);
    return keys;
}

TEST(CurveListEditTest, AddAppendsANewCurveButNeverAChannelThatAlreadyNamesOne)
{
    CurveListEdit edit({ Entry { "3$L#1", { "3$L#1" } } });
    EXPECT_FALSE(edit.Changed());
    EXPECT_EQ(edit.Add("3$L#3"), 1);
    EXPECT_EQ(edit.Entries().back().origin, QString()) << "a new curve stands for no curve of the view";
    EXPECT_EQ(edit.Add("3$L#1"), -1);
    EXPECT_EQ(edit.Add("3$L#3"), -1);
    EXPECT_EQ(edit.Add(""), -1);
    EXPECT_EQ(FirstKeys(edit), QStringList({ "3$L#1", "3$L#3" }));
    EXPECT_TRUE(edit.Changed());
    EXPECT_EQ(edit.IndexOf("3$L#3"), 1);
    EXPECT_EQ(edit.IndexOf("3$L#2"), -1);
}

TEST(CurveListEditTest, RemoveTakesOutOneCurveAndRefusesIndicesOutsideTheList)
{
    CurveListEdit edit({ Entry { "a$1", { "a$1" } }, Entry { "a$2", { "a$2" } }, Entry { "a$3", { "a$3" } } });
    EXPECT_FALSE(edit.Remove(-1));
    EXPECT_FALSE(edit.Remove(3));
    EXPECT_TRUE(edit.Remove(1));
    EXPECT_EQ(FirstKeys(edit), QStringList({ "a$1", "a$3" }));
    EXPECT_EQ(edit.Add("a$2"), 2) << "a removed channel may come back as a new curve";
    EXPECT_TRUE(edit.Changed()) << "back, but as a new curve at another place";
}

TEST(CurveListEditTest, MoveShiftsACurveWithinTheListOnly)
{
    CurveListEdit edit({ Entry { "a$1", { "a$1" } }, Entry { "a$2", { "a$2", "a$9" } }, Entry { "a$3", { "a$3" } } });
    EXPECT_FALSE(edit.Move(0, -1));
    EXPECT_FALSE(edit.Move(2, 1));
    EXPECT_FALSE(edit.Move(1, 0));
    EXPECT_FALSE(edit.Move(5, -1));
    EXPECT_FALSE(edit.Changed());
    EXPECT_TRUE(edit.Move(1, -1));
    EXPECT_EQ(FirstKeys(edit), QStringList({ "a$2", "a$1", "a$3" }));
    EXPECT_EQ(Keys(edit, 0), QStringList({ "a$2", "a$9" })) << "a sum moves with its parts";
    EXPECT_TRUE(edit.Move(0, 2));
    EXPECT_EQ(FirstKeys(edit), QStringList({ "a$1", "a$3", "a$2" }));
    EXPECT_TRUE(edit.Move(2, -1));
    EXPECT_EQ(FirstKeys(edit), QStringList({ "a$1", "a$2", "a$3" }));
    EXPECT_FALSE(edit.Changed()) << "moved back to where it was";
}

TEST(CurveListEditTest, JoinAndSplitBuildASumAndTakeItApartAgain)
{
    CurveListEdit edit({ Entry { "3$L#1", { "3$L#1" } }, Entry { "3$L#3", { "3$L#3" } } });
    EXPECT_TRUE(edit.Join(0, "3$L#3")) << "a channel naming another curve may still be part of a sum";
    EXPECT_TRUE(edit.Join(0, "3$L#2"));
    EXPECT_FALSE(edit.Join(0, "3$L#2")) << "no channel twice in one sum";
    EXPECT_FALSE(edit.Join(0, "3$L#1"));
    EXPECT_FALSE(edit.Join(2, "3$L#2"));
    EXPECT_FALSE(edit.Join(1, ""));
    EXPECT_EQ(Keys(edit, 0), QStringList({ "3$L#1", "3$L#3", "3$L#2" }));
    EXPECT_EQ(edit.Count(), 2);

    EXPECT_FALSE(edit.Split(0, 0)) << "the first channel names the curve";
    EXPECT_FALSE(edit.Split(0, 3));
    EXPECT_FALSE(edit.Split(1, 1));
    EXPECT_TRUE(edit.Split(0, 1));
    EXPECT_EQ(Keys(edit, 0), QStringList({ "3$L#1", "3$L#2" }));
    EXPECT_TRUE(edit.Split(0, 1));
    EXPECT_EQ(Keys(edit, 0), QStringList({ "3$L#1" }));
    EXPECT_FALSE(edit.Changed()) << "joined and split again";
}

} // namespace
