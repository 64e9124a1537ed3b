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
    std::vector<ChartAnnotation*> endMoving;
    std::vector<ChartAnnotation*> selections;
    int chartPresses = 0;
};

TEST_F(ChartAnnotationTest, DragMovesBoxAndReplotsOnlyItsLayerAndClickElsewhereClears)
{
    int fullReplots = 0;
    QObject::connect(chart.Plot(), &QCustomPlot::beforeReplot, [&] { ++fullReplots; });
    QTest::mousePress(Plot(), Qt::LeftButton, {}, QPoint(110, 110));
    EXPECT_TRUE(box->Selected());
    EXPECT_EQ(selections, std::vector<ChartAnnotation*> { box.data() });
    QTest::mouseMove(Plot(), QPoint(130, 120));
    QTest::mouseMove(Plot(), QPoint(150, 140));
    EXPECT_TRUE(box->Left() == 140 && box->Top() == 130 && box->Width() == 120) << box->Left() << ' ' << box->Top();
    EXPECT_TRUE(endMoving.empty());
    QTest::mouseRelease(Plot(), Qt::LeftButton, {}, QPoint(150, 140));
    EXPECT_EQ(endMoving, std::vector<ChartAnnotation*> { box.data() });
    EXPECT_EQ(fullReplots, 0);
    EXPECT_EQ(chartPresses, 0); // the box took the press
    EXPECT_EQ(chart.Annotations().TextAt(QPointF(145, 135)), box.data());

    QTest::mouseClick(Plot(), Qt::LeftButton, {}, QPoint(400, 300));
    EXPECT_FALSE(box->Selected());
    EXPECT_EQ(selections, (std::vector<ChartAnnotation*> { box.data(), nullptr }));
    EXPECT_EQ(chartPresses, 1);
}

TEST_F(ChartAnnotationTest, DeleteKeyRemovesTheSelectedBoxAndRemovalByTheProgramIsSilent)
{
    std::vector<int> keys;
    QObject::connect(&chart, &ChartAdapter::KeyPressed, [&](int key) { keys.push_back(key); });
    std::vector<QString> deleted;
    QObject::connect(&chart.Annotations(), &ChartAnnotations::ObjectDeleted,
        [&](ChartAnnotation* object) { deleted.push_back(object->Text()); });
    chart.Annotations().Remove(chart.Annotations().AddLine());
    chart.Annotations().Remove(nullptr);
    EXPECT_TRUE(deleted.empty()) << "removal by the program is not the user's delete";
    EXPECT_EQ(chart.Annotations().Count(), 1);
    EXPECT_EQ(chart.Annotations().Item(0), box.data());
    EXPECT_EQ(chart.Annotations().Item(1), nullptr);

    QTest::keyClick(Plot(), Qt::Key_Delete); // nothing selected: the chart's own key
    EXPECT_EQ(keys, std::vector<int> { Qt::Key_Delete });
    ASSERT_TRUE(box);
    chart.Annotations().Select(box);
    QTest::keyClick(Plot(), Qt::Key_Delete);
    EXPECT_EQ(deleted, std::vector<QString> { QStringLiteral("note") });
    EXPECT_TRUE(box.isNull());
    EXPECT_EQ(chart.Annotations().Count(), 0);
    EXPECT_EQ(keys.size(), 1u);
}

TEST_F(ChartAnnotationTest, ClicksSelectWithoutMovingAndDoubleClickGoesToTheBoxOrTheChart)
{
    std::vector<ChartAnnotation*> boxClicks;
    int chartClicks = 0;
    QObject::connect(&chart.Annotations(), &ChartAnnotations::DoubleClicked,
        [&](ChartAnnotation* object) { boxClicks.push_back(object); });
    QObject::connect(&chart, &ChartAdapter::DoubleClicked, [&] { ++chartClicks; });

    QTest::mouseClick(Plot(), Qt::LeftButton, {}, QPoint(110, 110));
    EXPECT_TRUE(box->Selected() && endMoving.empty()); // a click selects without moving
    QTest::mouseDClick(Plot(), Qt::LeftButton, {}, QPoint(115, 112));
    QTest::mouseRelease(Plot(), Qt::LeftButton, {}, QPoint(115, 112));
    EXPECT_EQ(boxClicks, std::vector<ChartAnnotation*> { box.data() });
    EXPECT_EQ(chartClicks, 0);
    EXPECT_EQ(box->Left(), 100);

    QTest::mouseDClick(Plot(), Qt::LeftButton, {}, QPoint(500, 300));
    QTest::mouseRelease(Plot(), Qt::LeftButton, {}, QPoint(500, 300));
    EXPECT_EQ(chartClicks, 1);
    EXPECT_EQ(boxClicks.size(), 1u);
}

TEST_F(ChartAnnotationTest, SizeToFitKeepsTheCorner)
{
    box->SetText(QStringLiteral("a much longer note than before"));
    box->SizeToFit();
    EXPECT_GT(box->Width(), QFontMetrics(box->Font()).horizontalAdvance(box->Text()));
    EXPECT_TRUE(box->Left() == 100 && box->Top() == 100) << box->Left() << ' ' << box->Top();
}

} // namespace
