// SPDX-License-Identifier: GPL-3.0-or-later
// What the curve properties dialog allows and writes, checked on a curve directly.
#include "CurvePropertiesEdit.h"
#include "Curve.h"
#include "TempSettings.h"

#include <gtest/gtest.h>

namespace {

class CurvePropertiesEditTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        curve.SetName("Power");
        curve.SetUnit("kW");
        curve.SetVisible(true);
        curve.FindStatistic("1")->SetUsed(true);
        curve.FindStatistic("1")->SetVisible(true);
    }
    // The row of the first statistic drawn as a line and of the first shown as text only.
    std::size_t Row(const CurvePropertiesEdit& edit, bool line, bool used) const
    {
        for (std::size_t row = 0; row < edit.statistics.size(); ++row)
            if (edit.statistics[row].canShow == line && edit.statistics[row].used == used)
                return row;
        ADD_FAILURE() << "no such statistic";
        return 0;
    }

    TempSettings roots;
    Curve curve;
};

TEST_F(CurvePropertiesEditTest, ShownNeedsAUsedLineStatistic)
{
    CurvePropertiesEdit edit = CurvePropertiesEdit::FromCurve(curve);
    const std::size_t unusedLine = Row(edit, true, false);
    edit.SetShown(unusedLine, true);
    EXPECT_FALSE(edit.statistics[unusedLine].shown) << "an unused statistic can't be shown";
    edit.SetUsed(unusedLine, true);
    edit.SetShown(unusedLine, true);
    EXPECT_TRUE(edit.statistics[unusedLine].shown);
    edit.SetUsed(unusedLine, false);
    EXPECT_FALSE(edit.statistics[unusedLine].shown) << "giving up a statistic takes its line away";

    const std::size_t text = Row(edit, false, false);
    edit.SetUsed(text, true);
    edit.SetShown(text, true);
    EXPECT_TRUE(edit.statistics[text].used);
    EXPECT_FALSE(edit.statistics[text].shown) << "a text statistic has no line";
}

// The curve dialog test drives the rest of what is written; these fields it does not reach.
TEST_F(CurvePropertiesEditTest, WritesTheTrimmedNameTheVisibilityAndTheLineWidth)
{
    CurvePropertiesEdit edit = CurvePropertiesEdit::FromCurve(curve);
    edit.name = "  Hall A ";
    edit.visible = false;
    edit.look.LineWidth = 4;
    const auto result = edit.ApplyTo(curve);
    EXPECT_TRUE(result.changed);
    EXPECT_FALSE(result.axisChanged);
    EXPECT_FALSE(result.unitChanged);
    EXPECT_EQ(curve.Name(), "Hall A");
    EXPECT_FALSE(curve.Visible());
    EXPECT_EQ(curve.Properties().LineWidth, 4);
}

TEST_F(CurvePropertiesEditTest, AStatisticTakenIntoUseShowsNoLineUnlessAsked)
{
    CurvePropertiesEdit edit = CurvePropertiesEdit::FromCurve(curve);
    const std::size_t line = Row(edit, true, false);
    const QString lineId = edit.statistics[line].id;
    curve.FindStatistic(lineId)->SetVisible(true); // a flag left over from before
    edit.SetUsed(line, true);
    edit.ApplyTo(curve);
    EXPECT_TRUE(curve.FindStatistic(lineId)->Used());
    EXPECT_FALSE(curve.FindStatistic(lineId)->Visible());
}

TEST_F(CurvePropertiesEditTest, ABlankNameWritesNothingAtAll)
{
    const qint16 axis = curve.YAxis();
    for (const QString& name : { QString(), QString("   ") }) {
        CurvePropertiesEdit edit = CurvePropertiesEdit::FromCurve(curve);
        edit.name = name;
        edit.unit = "MW";
        edit.yAxis = 1;
        EXPECT_FALSE(edit.IsValid());
        EXPECT_FALSE(edit.ApplyTo(curve).changed);
        EXPECT_EQ(curve.Name(), "Power");
        EXPECT_EQ(curve.Unit(), "kW");
        EXPECT_EQ(curve.YAxis(), axis);
    }
}

} // namespace
