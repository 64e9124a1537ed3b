// SPDX-License-Identifier: GPL-3.0-or-later
// The dialogs of a curve's look and of the chart-wide look, driven through their controls.
#include "CurveColors.h"
#include "SeriesPropertiesEditor.h"
#include "frm_GraphProperties.h"
#include "frm_SeriesProperties.h"

#include <QApplication>
#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTest>
#include <QTimer>
#include <QToolButton>

#include <functional>

#include <gtest/gtest.h>

namespace {

// Shows the dialog modally through show, runs the steps on it once it is up, then clicks
// the named button; the result of show comes back.
template<typename Show> auto Drive(QDialog& dialog, const std::function<void()>& steps, const char* button, Show show)
{
    QTimer::singleShot(0, &dialog, [&dialog, steps, button] {
        steps();
        QTest::mouseClick(dialog.findChild<QPushButton*>(button), Qt::LeftButton);
    });
    return show();
}

// Clicks the colour button and picks the colour in the colour dialog it opens; with accept
// false the colour dialog is cancelled after the pick.
void PickColor(QWidget& parent, const QColor& color, bool accept = true)
{
    QTimer::singleShot(0, &parent, [color, accept] {
        auto* dialog = qobject_cast<QColorDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        dialog->setCurrentColor(color);
        if (accept)
            dialog->accept();
        else
            dialog->reject();
    });
    QTest::mouseClick(parent.findChild<QToolButton*>("cmd_Color"), Qt::LeftButton);
}

// Moves the combo box's selection to the entry with the value by keys.
void ChooseByKeys(QComboBox* box, int value)
{
    const int target = box->findData(value);
    ASSERT_GE(target, 0);
    box->setFocus();
    if (box->currentIndex() < 0)
        QTest::keyClick(box, Qt::Key_Down);
    while (box->currentIndex() < target)
        QTest::keyClick(box, Qt::Key_Down);
    while (box->currentIndex() > target)
        QTest::keyClick(box, Qt::Key_Up);
}

void Retype(QWidget* field, const QString& text)
{
    field->setFocus();
    QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(field, Qt::Key_Delete);
    QTest::keyClicks(field, text);
}

bool Same(const SeriesProperties& a, const SeriesProperties& b)
{
    return a.Color == b.Color && a.LineWidth == b.LineWidth && a.LineStyle == b.LineStyle && a.Marker == b.Marker
        && a.Gallery == b.Gallery;
}

SeriesProperties SomeLook()
{
    SeriesProperties look;
    look.Color = CurveColors::Rgb(255, 0, 0);
    look.LineWidth = 3;
    look.LineStyle = 0;
    look.Marker = false;
    look.Gallery = 0; // the chart's type, which the list doesn't offer
    return look;
}

TEST(SeriesPropertiesDialog, OkWritesTheEditedFieldsAndKeepsTheOthersAndCancelWritesNothing)
{
    for (const char* button : { "cmd_OK", "cmd_Cancel" }) {
        frm_SeriesProperties dialog;
        SeriesProperties look = SomeLook();
        const QColor blue(0, 128, 255);
        const bool accepted = Drive(
            dialog,
            [&] {
                PickColor(dialog, blue);
                ChooseByKeys(dialog.findChild<QComboBox*>("cbo_LineStyle"), 2);
                Retype(dialog.findChild<QSpinBox*>("spn_LineWidth"), "5");
                QTest::mouseClick(dialog.findChild<QCheckBox*>("chk_Marker"), Qt::LeftButton);
            },
            button, [&] { return dialog.ShowMe(look); });
        if (!accepted) {
            EXPECT_STREQ(button, "cmd_Cancel");
            EXPECT_TRUE(Same(look, SomeLook()));
            continue;
        }
        EXPECT_STREQ(button, "cmd_OK");
        EXPECT_EQ(look.Color, CurveColors::FromColor(blue));
        EXPECT_EQ(look.LineStyle, 2);
        EXPECT_EQ(look.LineWidth, 5);
        EXPECT_TRUE(look.Marker);
        EXPECT_EQ(look.Gallery, 0) << "the chart type was not touched and stays the chart's";
    }
}

TEST(SeriesPropertiesDialog, ChartTypeAndNoLineAreOfferedAndACancelledColourChoiceKeepsTheColour)
{
    frm_SeriesProperties dialog;
    SeriesProperties look = SomeLook();
    look.Gallery = 1;
    Drive(
        dialog,
        [&] {
            PickColor(dialog, Qt::green, false);
            ChooseByKeys(dialog.findChild<QComboBox*>("cbo_Gallery"), 8);
            ChooseByKeys(dialog.findChild<QComboBox*>("cbo_LineStyle"), -1);
        },
        "cmd_OK", [&] { return dialog.ShowMe(look); });
    EXPECT_EQ(look.Gallery, 8);
    EXPECT_EQ(look.LineStyle, -1);
    EXPECT_EQ(look.Color, SomeLook().Color);
    EXPECT_EQ(look.LineWidth, SomeLook().LineWidth);

    Drive(
        dialog, [&] { ChooseByKeys(dialog.findChild<QComboBox*>("cbo_Gallery"), 0); }, "cmd_OK",
        [&] { return dialog.ShowMe(look); });
    EXPECT_EQ(look.Gallery, 0) << "back to the chart's type";
}

TEST(SeriesPropertiesDialog, LineWidthTakesNoLettersAndNothingOutsideItsRange)
{
    SeriesPropertiesEditor editor;
    editor.Load(SomeLook());
    auto* width = editor.findChild<QSpinBox*>("spn_LineWidth");

    const struct
    {
        const char* typed;
        int width;
    } cases[] = { { "ab", SomeLook().LineWidth }, { "0", SomeLook().LineWidth }, { "12", 12 } };
    for (const auto& c : cases) {
        Retype(width, c.typed);
        QTest::keyClick(width, Qt::Key_Return);
        EXPECT_EQ(editor.Values().LineWidth, c.width) << c.typed;
    }
    Retype(width, "99");
    QTest::keyClick(width, Qt::Key_Return);
    EXPECT_LE(editor.Values().LineWidth, SeriesPropertiesEditor::MaxLineWidth);
}

TEST(SeriesPropertiesDialog, AWidthOutsideTheRangeIsKeptUntilEdited)
{
    SeriesPropertiesEditor editor;
    SeriesProperties look = SomeLook();
    look.LineWidth = 0;
    editor.Load(look);
    EXPECT_FALSE(editor.Edited());
    QTest::mouseClick(editor.findChild<QCheckBox*>("chk_Marker"), Qt::LeftButton);
    EXPECT_TRUE(editor.Edited());
    EXPECT_EQ(editor.Values().LineWidth, 0);
}

GraphProperties SomeChart()
{
    GraphProperties chart;
    chart.Gallery = 1;
    chart.Legend = false;
    chart.View3D = false;
    chart.ShowXGrid = false;
    chart.ShowYGrid1 = true;
    chart.ShowYGrid2 = false;
    chart.GridColor1 = CurveColors::Rgb(1, 2, 3);
    chart.GridColor2 = CurveColors::Rgb(4, 5, 6);
    chart.Title = "%NAME%";
    return chart;
}

bool Same(const GraphProperties& a, const GraphProperties& b)
{
    return a.Gallery == b.Gallery && a.Legend == b.Legend && a.View3D == b.View3D && a.ShowXGrid == b.ShowXGrid
        && a.ShowYGrid1 == b.ShowYGrid1 && a.ShowYGrid2 == b.ShowYGrid2 && a.GridColor1 == b.GridColor1
        && a.GridColor2 == b.GridColor2 && a.Title == b.Title;
}

void EditChart(frm_GraphProperties& dialog)
{
    ChooseByKeys(dialog.findChild<QComboBox*>("cbo_Gallery"), 2);
    QTest::mouseClick(dialog.findChild<QCheckBox*>("chk_Legend"), Qt::LeftButton);
    QTest::mouseClick(dialog.findChild<QCheckBox*>("chk_View3D"), Qt::LeftButton);
    QTest::mouseClick(dialog.findChild<QCheckBox*>("chk_YGrid1"), Qt::LeftButton);
    QTest::mouseClick(dialog.findChild<QCheckBox*>("chk_YGrid2"), Qt::LeftButton);
    Retype(dialog.findChild<QLineEdit*>("txt_Title"), "Load %START_DATE%");
}

TEST(GraphPropertiesDialog, OkWritesTheEditedFieldsAndKeepsTheOthersAndCancelWritesNothing)
{
    for (const char* button : { "cmd_OK", "cmd_Cancel" }) {
        frm_GraphProperties dialog;
        GraphProperties chart = SomeChart();
        const bool accepted = Drive(
            dialog, [&] { EditChart(dialog); }, button, [&] { return dialog.ShowMe(chart); });
        if (!accepted) {
            EXPECT_STREQ(button, "cmd_Cancel");
            EXPECT_TRUE(Same(chart, SomeChart()));
            continue;
        }
        EXPECT_STREQ(button, "cmd_OK");
        EXPECT_EQ(chart.Gallery, 2);
        EXPECT_TRUE(chart.Legend && chart.View3D && chart.ShowYGrid2);
        EXPECT_FALSE(chart.ShowYGrid1);
        EXPECT_EQ(chart.Title, "Load %START_DATE%");
        // Not in the dialog: untouched.
        EXPECT_FALSE(chart.ShowXGrid);
        EXPECT_EQ(chart.GridColor1, SomeChart().GridColor1);
        EXPECT_EQ(chart.GridColor2, SomeChart().GridColor2);
    }
}

TEST(GraphPropertiesDialog, AChartTypeTheListLacksIsKeptUnlessOneIsChosen)
{
    frm_GraphProperties dialog;
    GraphProperties chart = SomeChart();
    chart.Gallery = 4; // markers only
    Drive(
        dialog, [&] { QTest::mouseClick(dialog.findChild<QCheckBox*>("chk_Legend"), Qt::LeftButton); }, "cmd_OK",
        [&] { return dialog.ShowMe(chart); });
    EXPECT_EQ(chart.Gallery, 4);
    EXPECT_TRUE(chart.Legend);
}

} // namespace
