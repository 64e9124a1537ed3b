// SPDX-License-Identifier: GPL-3.0-or-later
// The statistic tree of a curve and the placing of its cursors.
#include "ChannelTree.h"
#include "ChartAdapter.h"
#include "ChartAnnotation.h"
#include "Curve.h"
#include "CurveFixture.h"

#include <QTreeWidget>

namespace {

class CurveTreeTest : public CurveFixture
{
protected:
    void SetUp() override
    {
        CurveFixture::SetUp();
        chart.resize(800, 500);
        std::vector<double> values;
        for (int i = 0; i < 40; ++i)
            values.push_back(i);
        curve.AddMatrix(Channel(1, "1", "Hall", "kW", values));
        curve.SetID("c1");
        InitGrid(40);
        ASSERT_EQ(curve.UpdateData(Start(), Start() + 1, grid), 0);
        curve.UpdateChart(&chart, true);
        chart.Replot();
    }

    QTreeWidgetItem* Node(const QString& suffix) { return ChannelTree::FindItem(&tree, "S_c1" + suffix); }
    QStringList Children()
    {
        QStringList keys;
        QTreeWidgetItem* node = Node("");
        for (int i = 0; node && i < node->childCount(); ++i)
            keys << ChannelTree::Key(node->child(i));
        return keys;
    }
    QList<qint32> Indexes()
    {
        QList<qint32> indexes;
        for (const auto& cursor : curve.Cursors())
            indexes << cursor->Index();
        return indexes;
    }
    Cursor* Set(qint32 row) { return curve.SetCursor(row, &chart, &chart.Annotations(), 0); }

    ChartAdapter chart;
    QTreeWidget tree;
    Curve curve;
};

TEST_F(CurveTreeTest, StatisticNodesFollowUsedAndDisplayType)
{
    EXPECT_EQ(curve.UpdateStatistic(), Curve::NoView);
    curve.FindStatistic("1")->SetUsed(true);
    curve.FindStatistic("4")->SetUsed(true);
    curve.FindStatistic("2")->SetVisible(false);
    ASSERT_EQ(curve.UpdateStatistic(&tree), 0);
    QTreeWidgetItem* node = Node("");
    ASSERT_TRUE(node);
    EXPECT_EQ(node->text(0), "Hall (kW)");
    EXPECT_EQ(node->foreground(0).color(), QColor(Qt::red));
    EXPECT_EQ(node->checkState(0), Qt::Checked);
    EXPECT_EQ(ChannelTree::Tag(node), "c1");
    EXPECT_EQ(Children(), QStringList({ "S_c1_1", "S_c1_4" }));
    EXPECT_TRUE(Node("_1")->text(0).startsWith("Maximum = 39.00 kW ("));
    EXPECT_EQ(Node("_1")->checkState(0), Qt::Checked);
    EXPECT_EQ(Node("_4")->text(0), "Summe = 780.00 kW");
    EXPECT_FALSE(Node("_4")->data(0, Qt::CheckStateRole).isValid()) << "text-only values have no check box";

    // A statistic turned on later takes its place behind the used one before it.
    curve.FindStatistic("2")->SetUsed(true);
    curve.FindStatistic("1")->SetUsed(false);
    curve.SetUnit("");
    curve.UpdateStatistic();
    EXPECT_EQ(Children(), QStringList({ "S_c1_2", "S_c1_4" }));
    EXPECT_EQ(Node("_2")->checkState(0), Qt::Unchecked);
    EXPECT_EQ(node->text(0), "Hall");
}

TEST_F(CurveTreeTest, PowerFactorStatisticsShowMeasuredValues)
{
    // Stored folded: 0.04 is 0.96 inductive, 0.10 is 0.90 inductive, -0.05 is 0.95 capacitive.
    Curve cosPhi;
    cosPhi.SetID("c2");
    cosPhi.AddMatrix(Channel(1, "2", "cos phi", "", { 0.04, 0.10, -0.05, 0.04 }, DataMatrix::CosPhiType));
    InitGrid(4);
    ASSERT_EQ(cosPhi.UpdateData(Start(), Start() + 1, grid), 0);
    for (const char* id : { "1", "2", "3" })
        cosPhi.FindStatistic(id)->SetUsed(true);
    ASSERT_EQ(cosPhi.UpdateStatistic(&tree), 0);
    const auto text = [this](const char* key) {
        QTreeWidgetItem* node = ChannelTree::FindItem(&tree, key);
        return node ? node->text(0) : QString();
    };
    EXPECT_TRUE(text("S_c2_1").startsWith("Maximum = 0.90 ")) << text("S_c2_1").toStdString();
    EXPECT_TRUE(text("S_c2_3").startsWith("Minimum = -0.95 ")) << text("S_c2_3").toStdString();
    EXPECT_TRUE(text("S_c2_2").startsWith("Mittelwert = 0.97")) << text("S_c2_2").toStdString();
}

TEST_F(CurveTreeTest, ClicksSetTwoCursorsThenMoveTheNearer)
{
    curve.UpdateStatistic(&tree);
    Set(10);
    EXPECT_EQ(Indexes(), QList<qint32>({ 10 }));
    EXPECT_FALSE(Node("_DIFFHP"));
    Set(20);
    EXPECT_EQ(Indexes(), QList<qint32>({ 10, 20 }));
    ASSERT_TRUE(Node("_DIFFHP"));
    EXPECT_EQ(Node("_DIFFHP")->text(0), "Delta = 10.00 kW  (02h 30m 00s)");
    Set(18);
    EXPECT_EQ(Indexes(), QList<qint32>({ 10, 18 }));
    curve.SetCursor(20, &chart, &chart.Annotations(), 2);
    EXPECT_EQ(Indexes(), QList<qint32>({ 10, 20 })) << "number 2 always moves the second";
    Set(15);
    EXPECT_EQ(Indexes(), QList<qint32>({ 15, 20 })) << "a tie goes to the first cursor";
    EXPECT_EQ(Node("_HP1")->text(0), "Cursor 1 = 15.00 kW (03.02.2009 03:45)");
    EXPECT_EQ(Node("_HP2")->checkState(0), Qt::Checked);
    EXPECT_EQ(curve.Cursors()[1]->Tag(), 200);

    curve.SetCursor(30, &chart, &chart.Annotations(), 1);
    EXPECT_EQ(Indexes(), QList<qint32>({ 30, 20 })) << "number 1 always moves the first";
    curve.SetCursor(15, &chart, &chart.Annotations(), 1);

    curve.Cursors()[0]->SetCustomText("note");
    Cursor* same = Set(15);
    EXPECT_EQ(same, curve.Cursors()[0].get());
    EXPECT_EQ(same->CustomText(), "");
    EXPECT_EQ(Indexes(), QList<qint32>({ 15, 20 }));

    Set(-1);
    EXPECT_EQ(Indexes(), QList<qint32>({ 15, 20 })) << "a negative row places nothing";
}

TEST_F(CurveTreeTest, RemovingCursorsRenumbersAndRetags)
{
    curve.UpdateStatistic(&tree);
    Set(5);
    Set(25);
    curve.RemoveCursor(5);
    EXPECT_EQ(curve.Cursors().size(), 2u);
    curve.RemoveCursor(1);
    ASSERT_EQ(curve.Cursors().size(), 1u);
    EXPECT_EQ(curve.Cursors()[0]->Index(), 25);
    EXPECT_EQ(curve.Cursors()[0]->Tag(), 100);
    EXPECT_TRUE(Node("_HP1"));
    EXPECT_FALSE(Node("_HP2"));
    EXPECT_FALSE(Node("_DIFFHP"));

    curve.SetSeriesID(3);
    EXPECT_EQ(curve.Cursors()[0]->Tag(), 103);
    curve.RemoveCursor(-1);
    EXPECT_TRUE(curve.Cursors().empty());
    EXPECT_FALSE(Node("_HP1"));
}

TEST_F(CurveTreeTest, KeysMapToStatisticsAndCheckBoxes)
{
    Set(3);
    EXPECT_EQ(curve.GetStatisticFromKey("S_c1_1"), curve.FindStatistic("1"));
    EXPECT_EQ(curve.GetStatisticFromKey("S_c1_HP1"), &curve.Cursors()[0]->CursorStatistic());
    for (const char* key : { "S_c1", "S_c1_HP2", "S_c1_HP0", "S_c1_DIFFHP", "X_c1_1", "S_c1_1_2", "S_c1_9" })
        EXPECT_EQ(curve.GetStatisticFromKey(key), nullptr) << key;
    EXPECT_EQ(curve.GetStatisticKey(curve.FindStatistic("6")), "S_c1_6");

    EXPECT_TRUE(curve.EnableElement("S_c1_1", false));
    EXPECT_FALSE(curve.FindStatistic("1")->Visible());
    EXPECT_FALSE(curve.EnableElement("S_c1_4", true));
    EXPECT_FALSE(curve.FindStatistic("4")->Visible());
    EXPECT_TRUE(curve.EnableElement("S_c1_HP1", false));
    EXPECT_FALSE(curve.Cursors()[0]->CursorStatistic().Visible());
    EXPECT_TRUE(curve.EnableElement("S_c1", false));
    EXPECT_FALSE(curve.Visible());

    curve.UpdateChart(nullptr, false);
    EXPECT_TRUE(curve.Cursors()[0]->HorizontalBar()->Parked()) << "a hidden curve hides its cursors";
}

TEST_F(CurveTreeTest, FreeCursorTakesAPositionBetweenSamples)
{
    curve.SetFreeCursor(4.4, 17.0, &chart.Annotations());
    ASSERT_EQ(curve.Cursors().size(), 1u);
    const Cursor& cursor = *curve.Cursors()[0];
    EXPECT_EQ(cursor.Value(), 17.0);
    EXPECT_EQ(cursor.Index(), 4);
    EXPECT_EQ(cursor.DateTime(), Start() + 4 * Quarter);
    EXPECT_DOUBLE_EQ(cursor.VerticalBar()->Left(), chart.PointToPixel(5.4, 17.0, 0).x());
}

} // namespace
