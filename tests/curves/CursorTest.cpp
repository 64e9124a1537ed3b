// SPDX-License-Identifier: GPL-3.0-or-later
// Cursors on the chart's annotation layer, their placing by a curve and the curve's statistic tree.
#include "Cursor.h"
#include "ChannelTree.h"
#include "ChartAdapter.h"
#include "ChartAnnotation.h"
#include "Curve.h"
#include "CurveFixture.h"

#include <QTreeWidget>

#include <cmath>

namespace {

class CursorTest : public CurveFixture
{
protected:
    void SetUp() override
    {
        CurveFixture::SetUp();
        chart.resize(800, 500);
        chart.OpenData(1, 100);
        chart.CloseData();
        chart.SetAxisRange(ChartAxis::X, 1, 100);
        chart.SetAxisRange(ChartAxis::Y1, 0, 100);
        chart.Replot();
        cursor.SetUnit("kW");
        cursor.Initialize(&chart, &chart.Annotations());
    }
    void At(double x, double y) { cursor.SetPoint(x, y, 0, 0, Start(), 0); }

    ChartAdapter chart;
    Cursor cursor;
};

TEST_F(CursorTest, DefaultPlaceCentresTheBoxAboveTheMark)
{
    At(49, 50.0);
    const QPointF mark = chart.PointToPixel(50, 50.0, ChartAxis::Y1);
    EXPECT_DOUBLE_EQ(cursor.Left(), mark.x() - 8);
    EXPECT_DOUBLE_EQ(cursor.Top(), mark.y());
    EXPECT_EQ(cursor.Width(), 16);
    EXPECT_DOUBLE_EQ(cursor.VerticalBar()->Top(), mark.y() - 8);

    const ChartAnnotation& box = *cursor.Box();
    EXPECT_EQ(box.Text(), "50.00 kW (03.02.2009 00:00)");
    EXPECT_DOUBLE_EQ(box.Top(), mark.y() - 25);
    EXPECT_DOUBLE_EQ(box.Left() + box.Width() / 2, mark.x());
    EXPECT_EQ(box.BackColor(), QColor(0xFF, 0xFF, 0xCF));
    const ChartAnnotation& line = *cursor.Connector();
    EXPECT_DOUBLE_EQ(line.Left() + line.Width(), box.Left() + box.Width() / 2);
    EXPECT_DOUBLE_EQ(line.Top() + line.Height(), box.Top() + box.Height() / 2);
    EXPECT_EQ(line.DashPattern(), "1,1");
    for (const ChartAnnotation* object : { cursor.HorizontalBar(), cursor.VerticalBar(), cursor.Connector() }) {
        EXPECT_EQ(object->Color(), QColor(0x50, 0x50, 0x50));
        EXPECT_EQ(object->AttachMode(), 0);
        EXPECT_FALSE(object->Changing());
    }
    EXPECT_EQ(cursor.Index(), 49);

    // Near the top the box moves down; the connector can be switched off.
    roots.SetUser("Software\\HARVOLD\\Sorano\\Settings", "CursorLine", "0");
    At(10, 100.0);
    ASSERT_LT(chart.PointToPixel(11, 100.0, ChartAxis::Y1).y() - 25, 10);
    EXPECT_EQ(cursor.Box()->Top(), 50);
    EXPECT_EQ(cursor.Connector()->Width(), 0);
    EXPECT_EQ(cursor.Connector()->Height(), 0);
}

TEST_F(CursorTest, StoredBoxPositionSurvivesSaveAndSetPoint)
{
    At(20, 30.0);
    ChartAnnotation& box = *cursor.Box();
    box.SetGeometry(std::round(box.Left()) + 40, std::round(box.Top()) - 30, 90, 22);
    const double dx = box.Left() - std::round(cursor.Left() + 8);
    const double dy = box.Top() - std::round(cursor.Top());
    cursor.SaveBoxPosition();
    EXPECT_EQ(cursor.BoxPosition(), QString("%1;%2;90;22").arg(dx).arg(dy));

    chart.SetAxisRange(ChartAxis::Y1, 0, 50); // the mark moves, the box keeps its offset
    chart.Replot();
    At(20, 30.0);
    const QPointF mark = chart.PointToPixel(21, 30.0, ChartAxis::Y1);
    EXPECT_EQ(QRectF(box.Left(), box.Top(), box.Width(), box.Height()), QRectF(mark.x() + dx, mark.y() + dy, 90, 22));

    cursor.SetBoxPosition("abc"); // one field: the default place
    At(20, 30.0);
    EXPECT_DOUBLE_EQ(box.Top(), mark.y() - 25);
}

TEST_F(CursorTest, TextsCustomAndDisplayed)
{
    At(5, 10.0);
    cursor.SetCustomText("peak");
    EXPECT_EQ(cursor.Text(), "peak");
    roots.SetUser("Software\\HARVOLD\\Sorano\\Indizes\\Selection", "FormatNumber", "0.0 X");
    cursor.UpdateFormat();
    EXPECT_EQ(cursor.Text(), "peak") << "a user's text is left alone";
    cursor.SetCustomText("");
    EXPECT_EQ(cursor.Text(), " ");
    cursor.UpdateFormat();
    EXPECT_EQ(cursor.Text(), "10.0 kW (03.02.2009 00:00)");

    // A display value shows in the box while the mark stays at y.
    cursor.SetPoint(5, 0.2, 0, 0, Start(), 0.8);
    EXPECT_TRUE(cursor.Text().startsWith("0.8 kW")) << cursor.Text().toStdString();
    EXPECT_DOUBLE_EQ(cursor.Top(), chart.PointToPixel(6, 0.2, 0).y());
}

TEST_F(CursorTest, HideParksAndTheVerticalLineFollowsTheMode)
{
    cursor.SetMode(Cursor::ModeMark | Cursor::ModeLine);
    At(30, 10.0);
    const int line = cursor.ConstantLine();
    ASSERT_GE(line, 0);
    EXPECT_EQ(chart.ConstantLineAxis(line), ChartAxis::X);
    EXPECT_EQ(chart.ConstantLineValue(line), 31);
    EXPECT_FALSE(chart.ConstantLineHidden(line));
    cursor.Hide();
    for (const ChartAnnotation* object :
        { cursor.HorizontalBar(), cursor.VerticalBar(), cursor.Connector(), cursor.Box() })
        EXPECT_TRUE(object->Parked());
    EXPECT_TRUE(chart.ConstantLineHidden(line));
}

TEST_F(CursorTest, TagIsCarriedByAllObjectsAndDestructionRemovesThem)
{
    ChartAnnotations& list = chart.Annotations();
    const int before = list.Count();
    {
        Cursor second;
        second.Initialize(&chart, &list);
        second.SetTag(201);
        EXPECT_EQ(list.Count(), before + 4);
        for (int i = before; i < list.Count(); ++i)
            EXPECT_EQ(list.Item(i)->Tag(), 201);
        second.DeleteBox();
        EXPECT_EQ(second.Text(), "");
    }
    EXPECT_EQ(list.Count(), before + 1) << "the box was handed over to the user's delete";
}

TEST_F(CursorTest, DifferenceTextsCountFromDaysDown)
{
    const struct
    {
        double seconds;
        double value;
        const char* text;
    } cases[] = { { 90, 12.34, "12.34 kW  (01m 30s)" }, { 3900, 12.34, "12.34 kW  (01h 05m 00s)" },
        { 86400, 1.0, "1.00 kW  (01d 00s)" }, { 90061, 1.0, "1.00 kW  (01d 01h 01m 01s)" },
        { 400 * 86400.0, 1.0, "1.00 kW  (34560000s)" } };
    for (const auto& c : cases) {
        Cursor first;
        Cursor second;
        first.SetUnit("kW");
        first.SetPoint(0, 5.0, 0, 0, Start(), 0);
        second.SetPoint(0, 5.0 - c.value, 0, 0, Start() + c.seconds / 86400.0, 0);
        EXPECT_EQ(first.BuildDifference(second), c.text);
        second.SetUnit("kW");
        EXPECT_EQ(second.BuildDifference(first), c.text) << "the difference has no direction";
    }
}

// A curve of 40 quarter hours with the values 0 to 39 on the chart, and its statistic tree.
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
        ASSERT_EQ(Compute(curve, 40), 0);
        curve.UpdateChart(&chart, true);
        chart.Replot();
    }

    QTreeWidgetItem* Node(const QString& suffix) { return ChannelTree::FindItem(&tree, "S_c1" + suffix); }
    QStringList Children()
    {
        QStringList keys;
        for (int i = 0; Node("") && i < Node("")->childCount(); ++i)
            keys << ChannelTree::Key(Node("")->child(i));
        return keys;
    }
    QList<qint32> Indexes()
    {
        QList<qint32> indexes;
        for (const auto& cursor : curve.Cursors())
            indexes << cursor->Index();
        return indexes;
    }
    Cursor* Set(qint32 row, qint16 number = 0) { return curve.SetCursor(row, &chart, &chart.Annotations(), number); }

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
    ASSERT_EQ(Compute(cosPhi, 4), 0);
    for (const char* id : { "1", "2", "3" })
        cosPhi.FindStatistic(id)->SetUsed(true);
    ASSERT_EQ(cosPhi.UpdateStatistic(&tree), 0);
    const char* expected[][2]
        = { { "S_c2_1", "Maximum = 0.90 " }, { "S_c2_3", "Minimum = -0.95 " }, { "S_c2_2", "Mittelwert = 0.97" } };
    for (const auto& [key, start] : expected) {
        const QTreeWidgetItem* node = ChannelTree::FindItem(&tree, key);
        EXPECT_TRUE(node && node->text(0).startsWith(start))
            << key << ": " << (node ? node->text(0) : QString()).toStdString();
    }
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
    Set(20, 2);
    EXPECT_EQ(Indexes(), QList<qint32>({ 10, 20 })) << "number 2 always moves the second";
    Set(15);
    EXPECT_EQ(Indexes(), QList<qint32>({ 15, 20 })) << "a tie goes to the first cursor";
    EXPECT_EQ(Node("_HP1")->text(0), "Cursor 1 = 15.00 kW (03.02.2009 03:45)");
    EXPECT_EQ(Node("_HP2")->checkState(0), Qt::Checked);
    EXPECT_EQ(curve.Cursors()[1]->Tag(), 200);
    Set(30, 1);
    EXPECT_EQ(Indexes(), QList<qint32>({ 30, 20 })) << "number 1 always moves the first";

    Set(15, 1);
    curve.Cursors()[0]->SetCustomText("note");
    EXPECT_EQ(Set(15), curve.Cursors()[0].get());
    EXPECT_EQ(curve.Cursors()[0]->CustomText(), "") << "placing again drops the user's text";
    Set(-1);
    EXPECT_EQ(Indexes(), QList<qint32>({ 15, 20 })) << "a negative row places nothing";

    // Removing renumbers and retags.
    curve.RemoveCursor(5);
    EXPECT_EQ(curve.Cursors().size(), 2u);
    curve.RemoveCursor(1);
    EXPECT_EQ(Indexes(), QList<qint32>({ 20 }));
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
