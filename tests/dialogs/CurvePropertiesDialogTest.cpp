// SPDX-License-Identifier: GPL-3.0-or-later
// The curve properties on a view: what the edit allows and writes, and what the dialog's OK writes
// into the curve, the chart and the statistic tree while Cancel writes nothing.
#include "MeasuringFixture.h"
#include "frm_CurveProperties.h"

#include <QApplication>
#include <QColorDialog>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>

#include <algorithm>
#include <functional>
#include <tuple>

namespace {

using namespace measuring_fixture;

class CurvePropertiesTest : public MeasuringFixture
{
protected:
    void SetUp() override
    {
        MeasuringFixture::SetUp();
        Open(900);
        curve = Add("3$L#1", "|1|");
        ASSERT_NE(curve, nullptr);
        Day();
    }
    // Shows the dialog, runs the steps once it is up and clicks the button; ShowMe's result.
    qint32 Drive(const std::function<void(frm_CurveProperties&)>& steps, const char* button)
    {
        frm_CurveProperties dialog(*measuring, *curve);
        QTimer::singleShot(0, &dialog, [&] {
            steps(dialog);
            QTest::mouseClick(dialog.findChild<QPushButton*>(button), Qt::LeftButton);
        });
        return dialog.ShowMe();
    }
    static void Retype(QLineEdit* field, const QString& text)
    {
        field->setFocus();
        QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(field, Qt::Key_Delete);
        QTest::keyClicks(field, text);
    }
    // Toggles a check box of the statistic list with the space key.
    static void Toggle(frm_CurveProperties& dialog, const QString& id, int column)
    {
        auto* list = dialog.findChild<QTreeWidget*>("lst_Statistics");
        for (int row = 0; row < list->topLevelItemCount(); ++row)
            if (list->topLevelItem(row)->data(frm_CurveProperties::ColumnUsed, Qt::UserRole).toString() == id) {
                list->setFocus();
                list->setCurrentItem(list->topLevelItem(row), column);
                return QTest::keyClick(list->viewport(), Qt::Key_Space);
            }
        ADD_FAILURE() << "no statistic " << id.toStdString();
    }
    QStringList TreeCaptions() const
    {
        QStringList captions;
        for (QTreeWidgetItemIterator it(measuring->Window()->trv_Statistics()); *it; ++it)
            captions << (*it)->text(0);
        return captions;
    }
    // "Mean": a statistic drawn as a line that the curve doesn't use yet.
    Statistic& Mean() const { return *curve->FindStatistic("2"); }

    Curve* curve = nullptr;
};

TEST_F(CurvePropertiesTest, ShownNeedsAUsedLineStatisticAndOneTakenIntoUseShowsNoLineUnlessAsked)
{
    ASSERT_TRUE(Mean().Visible() && !Mean().Used()); // a flag left over from before
    CurvePropertiesEdit edit = CurvePropertiesEdit::FromCurve(*curve);
    const auto row = [&](const char* id) {
        return std::size_t(std::find_if(edit.statistics.begin(), edit.statistics.end(),
                               [&](const StatisticChoice& choice) { return choice.id == id; })
            - edit.statistics.begin());
    };
    const std::size_t mean = row("2"), sum = row("4");
    ASSERT_LT(sum, edit.statistics.size());
    edit.SetShown(mean, true);
    EXPECT_FALSE(edit.statistics[mean].shown) << "an unused statistic can't be shown";
    edit.SetUsed(mean, true);
    edit.SetShown(mean, true);
    EXPECT_TRUE(edit.statistics[mean].shown);
    edit.SetUsed(mean, false);
    EXPECT_FALSE(edit.statistics[mean].shown) << "giving up a statistic takes its line away";
    edit.SetUsed(sum, true);
    edit.SetShown(sum, true);
    EXPECT_FALSE(edit.statistics[sum].shown) << "a text statistic has no line";

    edit.SetUsed(mean, true);
    edit.ApplyTo(*curve);
    EXPECT_TRUE(Mean().Used());
    EXPECT_FALSE(Mean().Visible());
}

// The dialog tests below drive the rest of what is written; these fields they do not reach.
TEST_F(CurvePropertiesTest, WritesTheNameTrimmedTheVisibilityAndTheLineWidth)
{
    CurvePropertiesEdit edit = CurvePropertiesEdit::FromCurve(*curve);
    edit.name = "  Hall A ";
    edit.visible = false;
    edit.look.LineWidth = 4;
    const auto result = edit.ApplyTo(*curve);
    EXPECT_TRUE(result.changed && !result.axisChanged && !result.unitChanged);
    EXPECT_EQ(std::tuple(curve->Name(), curve->Visible(), curve->Properties().LineWidth),
        std::tuple(QString("Hall A"), false, 4));
}

TEST_F(CurvePropertiesTest, CancelWritesNothingAndOkWritesNameUnitColourStatisticAndAxisIntoTreeAndChart)
{
    const QColor blue(0, 64, 255);
    const auto edit = [&](frm_CurveProperties& dialog) {
        Retype(dialog.findChild<QLineEdit*>("txt_Name"), "Hall A");
        Retype(dialog.findChild<QLineEdit*>("txt_Unit"), "MW");
        Toggle(dialog, "2", frm_CurveProperties::ColumnUsed);
        Toggle(dialog, "2", frm_CurveProperties::ColumnShown);
        dialog.findChild<QTabWidget*>("tab_Pages")->setCurrentIndex(1);
        QTimer::singleShot(0, &dialog, [blue] {
            auto* chooser = qobject_cast<QColorDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(chooser, nullptr);
            chooser->setCurrentColor(blue);
            chooser->accept();
        });
        QTest::mouseClick(dialog.findChild<QToolButton*>("cmd_Color"), Qt::LeftButton);
        auto* axis = dialog.findChild<QComboBox*>("cbo_YAxis");
        axis->setFocus();
        QTest::keyClick(axis, Qt::Key_Down);
    };
    const auto state = [&] {
        return std::tuple(curve->Name(), curve->Unit(), curve->Properties().Color, curve->YAxis(), Mean().Used(),
            Chart().SeriesColor(curve->SeriesID()), TreeCaptions());
    };
    const auto before = state();
    const QString meanCaption = Mean().Name() + " = ";
    ASSERT_TRUE(TreeCaptions().filter(meanCaption).isEmpty());
    EXPECT_EQ(Drive(edit, "cmd_Cancel"), 0);
    EXPECT_EQ(state(), before);

    ASSERT_EQ(Drive(edit, "cmd_OK"), 1);
    EXPECT_EQ(std::tuple(curve->Name(), curve->Unit(), curve->Properties().Color, curve->YAxis(), Mean().Used()),
        std::tuple(QString("Hall A"), QString("MW"), CurveColors::FromColor(blue), 1, true));
    EXPECT_TRUE(Mean().Visible());
    EXPECT_TRUE(Chart().SeriesLegend(curve->SeriesID()).startsWith("Hall A"));
    EXPECT_EQ(Chart().SeriesColor(curve->SeriesID()), blue);
    const QStringList after = TreeCaptions();
    EXPECT_FALSE(after.filter(meanCaption).isEmpty() || after.filter("Hall A").isEmpty())
        << after.join('|').toStdString();
    ASSERT_GE(Mean().ConstantLine(), 0);
    EXPECT_FALSE(Chart().ConstantLineHidden(Mean().ConstantLine()));
    EXPECT_EQ(Chart().ConstantLineColor(Mean().ConstantLine()), blue);
    EXPECT_EQ(Chart().SeriesAxis(curve->SeriesID()), ChartAxis::Y2);
    const QString title = Chart().AxisTitle(ChartAxis::Y2);
    EXPECT_TRUE(title.contains("MW") && !title.contains("kW")) << title.toStdString();
    EXPECT_TRUE(Chart().AxisVisible(ChartAxis::Y2));
    EXPECT_FALSE(Chart().AxisVisible(ChartAxis::Y1)) << "no curve is left on the first axis";
}

TEST_F(CurvePropertiesTest, AnEmptyNameDisablesOkAndIsPutBackSoOkThenReportsNoChange)
{
    const QString name = curve->Name();
    const qint32 result = Drive(
        [&](frm_CurveProperties& dialog) {
            // Focus moves only within the active window.
            dialog.activateWindow();
            ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
            auto* field = dialog.findChild<QLineEdit*>("txt_Name");
            auto* ok = dialog.findChild<QPushButton*>("cmd_OK");
            Retype(field, "  ");
            EXPECT_FALSE(ok->isEnabled());
            QTest::keyClick(field, Qt::Key_Tab);
            EXPECT_EQ(field->text(), name);
            EXPECT_TRUE(ok->isEnabled());
        },
        "cmd_OK");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(curve->Name(), name);
}

} // namespace
