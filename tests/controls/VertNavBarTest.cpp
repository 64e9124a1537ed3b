// SPDX-License-Identifier: GPL-3.0-or-later
// The vertical navigation bar: held buttons, the fit button and folding to the pin.
#include "ctl_VertNavBar.h"

#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

#include <gtest/gtest.h>

#include <tuple>

namespace {

using MoveArgs = std::tuple<bool, bool, int>;

class VertNavBarTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        bar.resize(20, 300);
        bar.show();
    }
    std::vector<MoveArgs> Moves() const
    {
        std::vector<MoveArgs> result;
        for (const QList<QVariant>& args : moves)
            result.emplace_back(args.at(0).toBool(), args.at(1).toBool(), args.at(2).toInt());
        return result;
    }

    ctl_VertNavBar bar;
    QSignalSpy moves { &bar, &ctl_VertNavBar::Move };
};

TEST_F(VertNavBarTest, EachButtonMovesItsLimitsInItsDirection)
{
    for (int i = 0; i < 6; ++i)
        QTest::mouseClick(bar.Button(i), Qt::LeftButton);
    const std::vector<MoveArgs> expected = { { true, false, 1 }, { true, false, -1 }, { true, true, 1 },
        { false, true, -1 }, { false, true, 1 }, { true, true, -1 } };
    EXPECT_EQ(Moves(), expected);
    QSignalSpy adjust(&bar, &ctl_VertNavBar::Adjust);
    QTest::mouseClick(bar.AdjustButton(), Qt::LeftButton);
    EXPECT_EQ(adjust.count(), 1);
    EXPECT_EQ(moves.count(), 6);
}

TEST_F(VertNavBarTest, HeldButtonRepeatsUntilReleased)
{
    QTest::mousePress(bar.Button(2), Qt::LeftButton);
    EXPECT_EQ(moves.count(), 1); // at once, before the first tick
    QTest::qWait(500);
    QTest::mouseRelease(bar.Button(2), Qt::LeftButton);
    const qsizetype held = moves.count();
    EXPECT_GE(held, 3);
    EXPECT_EQ(Moves(), std::vector<MoveArgs>(size_t(held), MoveArgs(true, true, 1)));
    QTest::qWait(200);
    EXPECT_EQ(moves.count(), held);
}

TEST_F(VertNavBarTest, FoldedBarShowsOnlyThePin)
{
    QSignalSpy updates(&bar, &ctl_VertNavBar::UpdateSize);
    bar.SetMinimized(true);
    EXPECT_TRUE(bar.Pin(1)->isVisible() && !bar.Pin(0)->isVisible() && !bar.Button(0)->isVisible());
    EXPECT_LT(bar.sizeHint().height(), 2 * bar.Pin(0)->height());
    QTest::mouseClick(bar.Pin(1), Qt::LeftButton);
    EXPECT_TRUE(bar.Button(0)->isVisible());
    QTest::mouseClick(bar.Pin(0), Qt::LeftButton);
    EXPECT_TRUE(bar.Minimized());
    EXPECT_EQ(updates.count(), 3);
}

} // namespace
