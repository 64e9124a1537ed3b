// SPDX-License-Identifier: GPL-3.0-or-later
// The vertical navigation bar: held buttons, the fit button and folding to the pin.
#include "QtPrinters.h"
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
    EXPECT_EQ(bar.Button(2)->toolTip(), "Sichtbaren Bereich nach oben verschieben");

    // The column runs from under the pin to the bottom edge, the fit button between the groups.
    EXPECT_GT(bar.Button(0)->y(), bar.Pin(0)->geometry().bottom());
    EXPECT_LT(bar.Button(2)->geometry().bottom(), bar.AdjustButton()->y());
    EXPECT_LT(bar.AdjustButton()->geometry().bottom(), bar.Button(3)->y());
    EXPECT_EQ(bar.Button(5)->geometry().bottom(), 300 - 3);

    QSignalSpy adjust(&bar, &ctl_VertNavBar::Adjust);
    QTest::mouseClick(bar.AdjustButton(), Qt::LeftButton);
    EXPECT_EQ(adjust.count(), 1);
    EXPECT_EQ(moves.count(), 6);
}

TEST_F(VertNavBarTest, HeldButtonRepeatsEveryFiftyMillisecondsUntilReleased)
{
    QTest::mousePress(bar.Button(2), Qt::LeftButton);
    EXPECT_EQ(moves.count(), 1); // at once, before the first tick
    QTest::qWait(1000);
    QTest::mouseRelease(bar.Button(2), Qt::LeftButton);
    const qsizetype held = moves.count();
    EXPECT_GE(held, 15);
    EXPECT_LE(held, 23);
    for (const MoveArgs& args : Moves())
        EXPECT_EQ(args, MoveArgs(true, true, 1));
    QTest::qWait(200);
    EXPECT_EQ(moves.count(), held);
}

TEST_F(VertNavBarTest, ShortOrFoldedBarShowsOnlyThePin)
{
    const int pin = bar.Pin(0)->height();
    bar.resize(20, 8 * pin + 29);
    EXPECT_TRUE(bar.Pin(0)->isVisible());
    EXPECT_FALSE(bar.Button(2)->isVisible());
    EXPECT_FALSE(bar.AdjustButton()->isVisible());
    QTest::mousePress(&bar, Qt::LeftButton, {}, QPoint(10, 80));
    QTest::mousePress(bar.Button(2), Qt::LeftButton);
    QTest::qWait(120);
    QTest::mouseRelease(bar.Button(2), Qt::LeftButton);
    EXPECT_EQ(moves.count(), 0);
    bar.resize(20, 8 * pin + 30);
    EXPECT_TRUE(bar.Button(2)->isVisible());

    QSignalSpy updates(&bar, &ctl_VertNavBar::UpdateSize);
    bar.SetMinimized(true);
    EXPECT_TRUE(bar.Minimized());
    EXPECT_TRUE(bar.Pin(1)->isVisible());
    EXPECT_FALSE(bar.Pin(0)->isVisible());
    EXPECT_FALSE(bar.Button(0)->isVisible());
    EXPECT_LT(bar.sizeHint().height(), 8 * pin);
    QTest::mouseClick(bar.Pin(1), Qt::LeftButton);
    EXPECT_FALSE(bar.Minimized());
    EXPECT_TRUE(bar.Button(0)->isVisible());
    QTest::mouseClick(bar.Pin(0), Qt::LeftButton);
    EXPECT_TRUE(bar.Minimized());
    EXPECT_EQ(updates.count(), 3);
}

} // namespace
