// SPDX-License-Identifier: GPL-3.0-or-later
// A cursor on the chart's annotation layer: where its mark, box and connector go, and its texts.
#include "Cursor.h"
#include "ChartAdapter.h"
#include "ChartAnnotation.h"
#include "CurveFixture.h"

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

    ChartAdapter chart;
    Cursor cursor;
};

TEST_F(CursorTest, DefaultPlaceCentresTheBoxAboveTheMark)
{
    cursor.SetPoint(49, 50.0, 0, 0, Start(), 0);
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
    EXPECT_EQ(cursor.Value(), 50.0);
}

TEST_F(CursorTest, BoxNearTheTopMovesDownAndTheConnectorCanBeOff)
{
    roots.SetUser("Software\\HARVOLD\\Sorano\\Settings", "CursorLine", "0");
    cursor.SetPoint(10, 100.0, 0, 0, Start(), 0);
    const QPointF mark = chart.PointToPixel(11, 100.0, ChartAxis::Y1);
    ASSERT_LT(mark.y() - 25, 10);
    EXPECT_EQ(cursor.Box()->Top(), 50);
    EXPECT_EQ(cursor.Connector()->Width(), 0);
    EXPECT_EQ(cursor.Connector()->Height(), 0);
}

TEST_F(CursorTest, StoredBoxPositionSurvivesSaveAndSetPoint)
{
    cursor.SetPoint(20, 30.0, 0, 0, Start(), 0);
    ChartAnnotation& box = *cursor.Box();
    box.SetGeometry(std::round(box.Left()) + 40, std::round(box.Top()) - 30, 90, 22);
    const double dx = box.Left() - std::round(cursor.Left() + 8);
    const double dy = box.Top() - std::round(cursor.Top());
    cursor.SaveBoxPosition();
    EXPECT_EQ(cursor.BoxPosition(), QString("%1;%2;90;22").arg(dx).arg(dy));

    chart.SetAxisRange(ChartAxis::Y1, 0, 50); // the mark moves, the box keeps its offset
    chart.Replot();
    cursor.SetPoint(20, 30.0, 0, 0, Start(), 0);
    const QPointF mark = chart.PointToPixel(21, 30.0, ChartAxis::Y1);
    EXPECT_DOUBLE_EQ(box.Left(), mark.x() + dx);
    EXPECT_DOUBLE_EQ(box.Top(), mark.y() + dy);
    EXPECT_EQ(box.Width(), 90);
    EXPECT_EQ(box.Height(), 22);

    cursor.SetBoxPosition("abc"); // one field: the default place
    cursor.SetPoint(20, 30.0, 0, 0, Start(), 0);
    EXPECT_DOUBLE_EQ(box.Top(), mark.y() - 25);
}

TEST_F(CursorTest, CustomTextReplacesTheValueUntilTheNextPoint)
{
    cursor.SetPoint(5, 10.0, 0, 0, Start(), 0);
    cursor.SetCustomText("peak");
    EXPECT_EQ(cursor.Text(), "peak");
    roots.SetUser("Software\\HARVOLD\\Sorano\\Indizes\\Selection", "FormatNumber", "0.0 X");
    cursor.UpdateFormat();
    EXPECT_EQ(cursor.Text(), "peak") << "a user's text is left alone";

    cursor.SetCustomText("");
    EXPECT_EQ(cursor.Text(), " ");
    cursor.UpdateFormat();
    EXPECT_EQ(cursor.Text(), "10.0 kW (03.02.2009 00:00)");
}

TEST_F(CursorTest, DisplayValueIsShownWhileTheMarkStaysAtY)
{
    cursor.SetPoint(5, 0.2, 0, 0, Start(), 0.8);
    EXPECT_TRUE(cursor.Text().startsWith("0.80 kW"));
    EXPECT_DOUBLE_EQ(cursor.Top(), chart.PointToPixel(6, 0.2, 0).y());
}

TEST_F(CursorTest, HideParksAndTheVerticalLineFollowsTheMode)
{
    cursor.SetMode(Cursor::ModeMark | Cursor::ModeLine);
    cursor.SetPoint(30, 10.0, 0, 0, Start(), 0);
    ASSERT_GE(cursor.ConstantLine(), 0);
    EXPECT_EQ(chart.ConstantLineAxis(cursor.ConstantLine()), ChartAxis::X);
    EXPECT_EQ(chart.ConstantLineValue(cursor.ConstantLine()), 31);
    EXPECT_FALSE(chart.ConstantLineHidden(cursor.ConstantLine()));

    cursor.Hide();
    for (const ChartAnnotation* object :
        { cursor.HorizontalBar(), cursor.VerticalBar(), cursor.Connector(), cursor.Box() })
        EXPECT_TRUE(object->Parked());
    EXPECT_TRUE(chart.ConstantLineHidden(cursor.ConstantLine()));
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
    } cases[] = {
        { 90, 12.34, "12.34 kW  (01m 30s)" },
        { 3900, 12.34, "12.34 kW  (01h 05m 00s)" },
        { 86400, 1.0, "1.00 kW  (01d 00s)" },
        { 90061, 1.0, "1.00 kW  (01d 01h 01m 01s)" },
        { 400 * 86400.0, 1.0, "1.00 kW  (34560000s)" },
    };
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

} // namespace
