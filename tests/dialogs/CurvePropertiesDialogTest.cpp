// SPDX-License-Identifier: GPL-3.0-or-later
// The curve properties dialog on a view: what OK writes into the curve, the chart and the
// statistic tree, and that Cancel writes nothing.
#include "MeasuringFixture.h"
#include "ResStrings.h"
#include "SeriesPropertiesEditor.h"
#include "frm_CurveProperties.h"

#include <QApplication>
#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <QTreeWidget>

#include <functional>

namespace {

using namespace measuring_fixture;

class CurvePropertiesDialogTest : public MeasuringFixture
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
    qint32 Drive(frm_CurveProperties& dialog, const std::function<void()>& steps, const char* button)
    {
        QTimer::singleShot(0, &dialog, [&dialog, steps, button] {
            steps();
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

    // Opens the display page and picks the colour through the colour button's dialog.
    static void PickColor(frm_CurveProperties& dialog, const QColor& color)
    {
        dialog.findChild<QTabWidget*>("tab_Pages")->setCurrentIndex(1);
        QTimer::singleShot(0, &dialog, [color] {
            auto* chooser = qobject_cast<QColorDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(chooser, nullptr);
            chooser->setCurrentColor(color);
            chooser->accept();
        });
        QTest::mouseClick(dialog.findChild<QToolButton*>("cmd_Color"), Qt::LeftButton);
    }

    // Toggles a check box of the statistic list with the space key.
    static void Toggle(frm_CurveProperties& dialog, const QString& id, int column)
    {
        dialog.findChild<QTabWidget*>("tab_Pages")->setCurrentIndex(0);
        auto* list = dialog.findChild<QTreeWidget*>("lst_Statistics");
        for (int row = 0; row < list->topLevelItemCount(); ++row) {
            QTreeWidgetItem* item = list->topLevelItem(row);
            if (item->data(frm_CurveProperties::ColumnUsed, Qt::UserRole).toString() == id) {
                list->setFocus();
                list->setCurrentItem(item, column);
                QTest::keyClick(list->viewport(), Qt::Key_Space);
                return;
            }
        }
        ADD_FAILURE() << "no statistic " << id.toStdString();
    }

    QStringList TreeCaptions() const
    {
        QTreeWidget& tree = *measuring->Window()->trv_Statistics();
        QStringList captions;
        for (int i = 0; i < tree.topLevelItemCount(); ++i) {
            captions << tree.topLevelItem(i)->text(0);
            for (int j = 0; j < tree.topLevelItem(i)->childCount(); ++j)
                captions << tree.topLevelItem(i)->child(j)->text(0);
        }
        return captions;
    }

    // "Mean": a statistic drawn as a line that the curve doesn't use yet.
    Statistic& Mean() const { return *curve->FindStatistic("2"); }

    Curve* curve = nullptr;
};

TEST_F(CurvePropertiesDialogTest, OkRenamesRecoloursAndShowsTheStatisticInTreeAndChart)
{
    ASSERT_FALSE(Mean().Used());
    ASSERT_EQ(Mean().DisplayType(), Statistic::DisplayLine);
    const QColor blue(0, 64, 255);
    const QString meanCaption = Mean().Name() + " = ";
    ASSERT_TRUE(TreeCaptions().filter(meanCaption).isEmpty());

    frm_CurveProperties dialog(*measuring, *curve);
    const qint32 result = Drive(
        dialog,
        [&] {
            Retype(dialog.findChild<QLineEdit*>("txt_Name"), "Hall A");
            PickColor(dialog, blue);
            Toggle(dialog, "2", frm_CurveProperties::ColumnUsed);
            Toggle(dialog, "2", frm_CurveProperties::ColumnShown);
        },
        "cmd_OK");

    EXPECT_EQ(result, 1);
    EXPECT_EQ(curve->Name(), "Hall A");
    EXPECT_EQ(curve->Properties().Color, CurveColors::FromColor(blue));
    EXPECT_EQ(Chart().SeriesColor(curve->SeriesID()), blue);
    EXPECT_TRUE(Chart().SeriesLegend(curve->SeriesID()).startsWith("Hall A"));
    EXPECT_TRUE(Mean().Used());
    EXPECT_TRUE(Mean().Visible());
    const QStringList captions = TreeCaptions();
    EXPECT_FALSE(captions.filter(meanCaption).isEmpty()) << captions.join('|').toStdString();
    EXPECT_FALSE(captions.filter("Hall A").isEmpty()) << captions.join('|').toStdString();
    ASSERT_GE(Mean().ConstantLine(), 0);
    EXPECT_FALSE(Chart().ConstantLineHidden(Mean().ConstantLine()));
    EXPECT_EQ(Chart().ConstantLineColor(Mean().ConstantLine()), blue);
}

TEST_F(CurvePropertiesDialogTest, CancelWritesNothing)
{
    const QString name = curve->Name();
    const qint32 color = curve->Properties().Color;
    const QColor seriesColor = Chart().SeriesColor(curve->SeriesID());
    const QStringList captions = TreeCaptions();

    frm_CurveProperties dialog(*measuring, *curve);
    const qint32 result = Drive(
        dialog,
        [&] {
            Retype(dialog.findChild<QLineEdit*>("txt_Name"), "Hall A");
            QTest::mouseClick(dialog.findChild<QCheckBox*>("chk_Visible"), Qt::LeftButton);
            PickColor(dialog, Qt::green);
            Toggle(dialog, "2", frm_CurveProperties::ColumnUsed);
            dialog.findChild<QComboBox*>("cbo_YAxis")->setCurrentIndex(1);
        },
        "cmd_Cancel");

    EXPECT_EQ(result, 0);
    EXPECT_EQ(curve->Name(), name);
    EXPECT_TRUE(curve->Visible());
    EXPECT_EQ(curve->Properties().Color, color);
    EXPECT_EQ(Chart().SeriesColor(curve->SeriesID()), seriesColor);
    EXPECT_FALSE(Mean().Used());
    EXPECT_EQ(curve->YAxis(), 0);
    EXPECT_EQ(TreeCaptions(), captions);
}

TEST_F(CurvePropertiesDialogTest, AnEmptyNameDisablesOkAndIsPutBackSoOkThenReportsNoChange)
{
    const QString name = curve->Name();
    ASSERT_FALSE(name.isEmpty());
    frm_CurveProperties dialog(*measuring, *curve);
    bool okWhileEmpty = true;
    bool okAfterwards = false;
    QString nameAfterwards;
    const qint32 result = Drive(
        dialog,
        [&] {
            // Focus moves only within the active window.
            dialog.activateWindow();
            ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
            auto* field = dialog.findChild<QLineEdit*>("txt_Name");
            Retype(field, "  ");
            okWhileEmpty = dialog.findChild<QPushButton*>("cmd_OK")->isEnabled();
            QTest::keyClick(field, Qt::Key_Tab);
            nameAfterwards = field->text();
            okAfterwards = dialog.findChild<QPushButton*>("cmd_OK")->isEnabled();
        },
        "cmd_OK");
    EXPECT_FALSE(okWhileEmpty);
    EXPECT_EQ(nameAfterwards, name);
    EXPECT_TRUE(okAfterwards);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(curve->Name(), name);
}

TEST_F(CurvePropertiesDialogTest, OkMovesTheCurveToTheSecondAxisWithItsNewUnit)
{
    ASSERT_TRUE(Chart().AxisVisible(ChartAxis::Y1));
    frm_CurveProperties dialog(*measuring, *curve);
    const qint32 result = Drive(
        dialog,
        [&] {
            Retype(dialog.findChild<QLineEdit*>("txt_Unit"), "MW");
            dialog.findChild<QTabWidget*>("tab_Pages")->setCurrentIndex(1);
            auto* axis = dialog.findChild<QComboBox*>("cbo_YAxis");
            axis->setFocus();
            QTest::keyClick(axis, Qt::Key_Down);
        },
        "cmd_OK");
    EXPECT_EQ(result, 1);
    EXPECT_EQ(curve->YAxis(), 1);
    EXPECT_EQ(Chart().SeriesAxis(curve->SeriesID()), ChartAxis::Y2);
    EXPECT_EQ(curve->Unit(), "MW");
    const QString title = Chart().AxisTitle(ChartAxis::Y2);
    EXPECT_TRUE(title.contains("MW") && !title.contains("kW")) << title.toStdString();
    EXPECT_TRUE(Chart().AxisVisible(ChartAxis::Y2));
    EXPECT_FALSE(Chart().AxisVisible(ChartAxis::Y1)) << "no curve is left on the first axis";
}

} // namespace
