// SPDX-License-Identifier: GPL-3.0-or-later
// Text boxes handled with the mouse and the keyboard on a real chart widget.
#include "ChartAnnotation.h"
#include "ChartAdapter.h"

#include <QPointer>
#include <QTest>
#include <qcustomplot.h>

#include <gtest/gtest.h>

#include <vector>

namespace {

using Boxes = std::vector<ChartAnnotation*>;

class ChartAnnotationTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        chart.resize(800, 500);
        chart.show();
        box = chart.Annotations().AddText();
        box->SetText(QStringLiteral("note"));
        box->SetGeometry(100, 100, 120, 30);
        chart.Replot();
        QObject::connect(&chart.Annotations(), &ChartAnnotations::EndMoving,
            [this](ChartAnnotation* object) { endMoving.push_back(object); });
        QObject::connect(&chart.Annotations(), &ChartAnnotations::SelectionChanged,
            [this](ChartAnnotation* object) { selections.push_back(object); });
        QObject::connect(&chart, &ChartAdapter::MousePressed, [this] { ++chartPresses; });
    }
    QWidget* Plot() { return chart.Plot(); }

    ChartAdapter chart;
    QPointer<ChartAnnotation> box;
    Boxes endMoving, selections;
    int chartPresses = 0;
};

TEST_F(ChartAnnotationTest, DragMovesBoxAndReplotsOnlyItsLayerAndClickElsewhereClears)
{
    int fullReplots = 0;
    QObject::connect(chart.Plot(), &QCustomPlot::beforeReplot, [&] { ++fullReplots; });
    QTest::mousePress(Plot(), Qt::LeftButton, {}, QPoint(110, 110));
    EXPECT_TRUE(box->Selected() && selections == Boxes { box.data() });
    QTest::mouseMove(Plot(), QPoint(130, 120));
    QTest::mouseMove(Plot(), QPoint(150, 140));
    EXPECT_TRUE(box->Left() == 140 && box->Top() == 130 && box->Width() == 120) << box->Left() << ' ' << box->Top();
    EXPECT_TRUE(endMoving.empty());
    QTest::mouseRelease(Plot(), Qt::LeftButton, {}, QPoint(150, 140));
    EXPECT_EQ(endMoving, Boxes { box.data() });
    EXPECT_TRUE(fullReplots == 0 && chartPresses == 0) << fullReplots << ' ' << chartPresses; // the box took the press

    QTest::mouseClick(Plot(), Qt::LeftButton, {}, QPoint(400, 300));
    EXPECT_TRUE(!box->Selected() && selections == (Boxes { box.data(), nullptr }) && chartPresses == 1);
}

TEST_F(ChartAnnotationTest, DeleteKeyRemovesTheSelectedBoxAndRemovalByTheProgramIsSilent)
{
    int keys = 0, deleted = 0;
    QObject::connect(&chart, &ChartAdapter::KeyPressed, [&](int key) { keys += key == Qt::Key_Delete ? 1 : 0; });
    QObject::connect(&chart.Annotations(), &ChartAnnotations::ObjectDeleted, [&] { ++deleted; });
    chart.Annotations().Remove(chart.Annotations().AddLine());
    EXPECT_TRUE(deleted == 0 && chart.Annotations().Count() == 1) << "removal by the program is not the user's delete";
    QTest::keyClick(Plot(), Qt::Key_Delete); // nothing selected: the chart's own key
    ASSERT_TRUE(box);
    chart.Annotations().Select(box);
    QTest::keyClick(Plot(), Qt::Key_Delete);
    EXPECT_TRUE(box.isNull() && deleted == 1 && keys == 1 && chart.Annotations().Count() == 0)
        << deleted << ' ' << keys;
}

TEST_F(ChartAnnotationTest, ClickSelectsWithoutMovingAndDoubleClickGoesToTheBoxOrTheChart)
{
    Boxes boxClicks;
    int chartClicks = 0;
    QObject::connect(&chart.Annotations(), &ChartAnnotations::DoubleClicked,
        [&](ChartAnnotation* object) { boxClicks.push_back(object); });
    QObject::connect(&chart, &ChartAdapter::DoubleClicked, [&] { ++chartClicks; });

    QTest::mouseClick(Plot(), Qt::LeftButton, {}, QPoint(110, 110));
    EXPECT_TRUE(box->Selected() && endMoving.empty());
    QTest::mouseDClick(Plot(), Qt::LeftButton, {}, QPoint(115, 112));
    QTest::mouseRelease(Plot(), Qt::LeftButton, {}, QPoint(115, 112));
    EXPECT_TRUE(boxClicks == Boxes { box.data() } && chartClicks == 0 && box->Left() == 100);
    QTest::mouseDClick(Plot(), Qt::LeftButton, {}, QPoint(500, 300));
    QTest::mouseRelease(Plot(), Qt::LeftButton, {}, QPoint(500, 300));
    EXPECT_TRUE(chartClicks == 1 && boxClicks.size() == 1u) << chartClicks << ' ' << boxClicks.size();
}

} // namespace
