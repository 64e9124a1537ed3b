// SPDX-License-Identifier: GPL-3.0-or-later
// The time navigation bar driven with the mouse and the keyboard on a real widget.
#include "Calendar.h"
#include "Formatter.h"
#include "QtPrinters.h"
#include "ctl_NavBar.h"

#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

#include <gtest/gtest.h>

#include <utility>

namespace {

double Seconds(double date, std::int64_t seconds)
{
    return Calendar::Add(Calendar::Unit::Second, seconds, date);
}

QString Long(double date)
{
    return Formatter().FormatDate(date, u"dd.mm.yy hh:nn:ss");
}

class NavBarTest : public ::testing::Test
{
protected:
    // A 900 px bar has a 600 px track; a period of 100000 s makes one pixel 1000/6 s.
    void SetUp() override
    {
        bar.resize(900, 24);
        bar.show();
        bar.SetDateFirst(first);
        bar.SetDateLast(Seconds(first, 100000));
        SetWindow(50000, 20000);
    }
    void SetWindow(std::int64_t offset, std::int64_t length)
    {
        bar.SetDateFrom(Seconds(first, offset));
        bar.SetDateTo(Seconds(first, offset + length));
    }
    // Presses on the marker's centre and moves by dx; returns the press point.
    QPoint Drag(int dx)
    {
        const QPoint at = bar.MarkerRect().center();
        QTest::mousePress(bar.Track(), Qt::LeftButton, {}, at);
        QTest::mouseMove(bar.Track(), at + QPoint(dx, 0));
        return at;
    }
    std::pair<double, double> Window() const { return { bar.DateFrom(), bar.DateTo() }; }
    void Release(QPoint at) { QTest::mouseRelease(bar.Track(), Qt::LeftButton, {}, at); }
    void PressButton(int index) { QTest::mouseClick(bar.Button(index), Qt::LeftButton); }
    QList<int> Navigations() const
    {
        QList<int> indexes;
        for (const QList<QVariant>& args : navigate)
            indexes << args.at(0).toInt();
        return indexes;
    }

    const double first = Calendar::FromParts(2024, 1, 1, 8);
    ctl_NavBar bar;
    QSignalSpy navigate { &bar, &ctl_NavBar::Navigate };
};

TEST_F(NavBarTest, MarkerMapsSecondsToTrackPixelsWithAMinimumWidthAndACappedScale)
{
    EXPECT_EQ(bar.MarkerRect(), QRect(299, 0, 122, 18)); // 300 px in, 120 px wide, plus a pixel each side
    SetWindow(0, 60);
    EXPECT_EQ(bar.MarkerRect(), QRect(-1, 0, 10, 18));
    bar.SetDateLast(Seconds(first, 1000000)); // from 500000 s on, a later window is out of proportion
    SetWindow(250000, 50000);
    EXPECT_EQ(bar.MarkerRect(), QRect(299, 0, 62, 18));
    SetWindow(50000, 0);
    EXPECT_TRUE(bar.MarkerRect().isNull());
}

TEST_F(NavBarTest, DragMovesTheWindowWithinThePeriodAndReportsOnlyOnRelease)
{
    const QPoint start = Drag(60);
    EXPECT_EQ(Window(), std::pair(Seconds(first, 60000), Seconds(first, 80000)));
    EXPECT_EQ(navigate.count(), 0);

    QTest::mouseMove(bar.Track(), start + QPoint(5000, 0)); // the window stops at the period's end
    EXPECT_EQ(Window(), std::pair(Seconds(first, 80000), bar.DateLast()));
    Release(start + QPoint(5000, 0));
    EXPECT_EQ(Navigations(), QList<int>({ -1 }));

    Release(Drag(-5000) - QPoint(5000, 0));
    EXPECT_EQ(bar.DateFrom(), first);
    EXPECT_EQ(navigate.count(), 2);

    // With a minimum-width marker the end stops 8 px short of the track's width.
    SetWindow(0, 60);
    Drag(5000);
    EXPECT_EQ(bar.DateFrom(), Seconds(first, 98666));
}

TEST_F(NavBarTest, ClickEscapeAndDisabledBarLeaveTheWindowAlone)
{
    const auto window = Window();
    Release(Drag(0));
    EXPECT_FALSE(bar.Dragging());

    const QPoint start = Drag(100);
    EXPECT_NE(Window(), window);
    QTest::keyClick(bar.Track(), Qt::Key_Escape);
    EXPECT_FALSE(bar.Dragging());
    EXPECT_EQ(Window(), window);
    EXPECT_EQ(bar.LabelText(0), Long(window.first));
    Release(start + QPoint(100, 0));

    bar.SetEnabled(false);
    Release(Drag(100) + QPoint(100, 0));
    QSignalSpy ends(&bar, &ctl_NavBar::NavigateToLast);
    for (int i = 0; i < 6; ++i)
        PressButton(i);
    EXPECT_EQ(Window(), window);
    EXPECT_EQ(ends.count(), 0);
    EXPECT_EQ(navigate.count(), 0);
}

TEST(NavBarStepTest, ParsingSplitsAtTheLastDigit)
{
    const struct
    {
        QString text;
        double count;
        QString unit;
    } cases[] = { { "15n", 15, "n" }, { "-1d", -1, "d" }, { "1", 1, "" }, { "2ww", 2, "ww" }, { "1.5h", 1.5, "h" },
        { "h", 0, "" }, { "", 0, "" }, { "-", 0, "" } };
    for (const auto& c : cases) {
        const ctl_NavBar::Step step = ctl_NavBar::ParseStep(c.text);
        EXPECT_EQ(step.count, c.count) << c.text.toStdString();
        EXPECT_EQ(step.unit, c.unit) << c.text.toStdString();
    }
}

TEST_F(NavBarTest, ButtonsStepByCalendarAndOnlyOncePerPress)
{
    bar.SetSmallStep("15n");
    bar.SetMediumStep("1m");
    bar.SetDateFrom(Calendar::FromParts(2023, 1, 31, 10));
    bar.SetDateTo(Calendar::FromParts(2023, 3, 15, 10));
    PressButton(4);
    EXPECT_EQ(Window(), std::pair(Calendar::FromParts(2023, 2, 28, 10), Calendar::FromParts(2023, 4, 15, 10)));
    PressButton(1);
    EXPECT_EQ(bar.DateFrom(), Calendar::FromParts(2023, 1, 28, 10));
    PressButton(2);
    EXPECT_EQ(bar.DateFrom(), Calendar::FromParts(2023, 1, 28, 9, 45));

    // Holding a button acts once.
    QTest::mousePress(bar.Button(3), Qt::LeftButton);
    QTest::qWait(900);
    QTest::mouseRelease(bar.Button(3), Qt::LeftButton);
    EXPECT_EQ(bar.DateFrom(), Calendar::FromParts(2023, 1, 28, 10));
    EXPECT_EQ(Navigations(), QList<int>({ 4, 1, 2, 3 }));

    QSignalSpy toFirst(&bar, &ctl_NavBar::NavigateToFirst);
    QSignalSpy toLast(&bar, &ctl_NavBar::NavigateToLast);
    PressButton(0);
    PressButton(5);
    EXPECT_EQ(toFirst.count(), 1);
    EXPECT_EQ(toLast.count(), 1);
    EXPECT_EQ(navigate.count(), 4);

    bar.SetSmallStep("1"); // no unit: the window stays where it is
    PressButton(3);
    EXPECT_EQ(bar.DateFrom(), Calendar::FromParts(2023, 1, 28, 10));
}

} // namespace
