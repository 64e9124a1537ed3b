// SPDX-License-Identifier: GPL-3.0-or-later
// The dialogs of a curve's look and of the chart-wide look, driven through their controls.
#include "CurveColors.h"
#include "QtPrinters.h"
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
#include <tuple>

#include <gtest/gtest.h>

namespace {

// Shows the properties in a new dialog, runs the steps on it once it is up, then clicks the
// named button; ShowMe's result comes back.
template<typename Dialog, typename Properties>
bool Drive(Properties& properties, const std::function<void(Dialog&)>& steps, const char* button = "cmd_OK")
{
    Dialog dialog;
    QTimer::singleShot(0, &dialog, [&] {
        steps(dialog);
        QTest::mouseClick(dialog.template findChild<QPushButton*>(button), Qt::LeftButton);
    });
    return dialog.ShowMe(properties);
}

// Clicks the colour button and picks the colour in the colour dialog it opens; with accept
// false the colour dialog is cancelled after the pick.
void PickColor(QWidget& parent, const QColor& color, bool accept = true)
{
    QTimer::singleShot(0, &parent, [color, accept] {
        auto* dialog = qobject_cast<QColorDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        dialog->setCurrentColor(color);
        accept ? dialog->accept() : dialog->reject();
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
    while (box->currentIndex() != target)
        QTest::keyClick(box, box->currentIndex() < target ? Qt::Key_Down : Qt::Key_Up);
}

void Retype(QWidget* field, const QString& text)
{
    field->setFocus();
    QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(field, Qt::Key_Delete);
    QTest::keyClicks(field, text);
}

auto Fields(const SeriesProperties& p)
{
    return std::tuple(p.Color, p.LineWidth, p.LineStyle, p.Marker, p.Gallery);
}

auto Fields(const GraphProperties& g)
{
    return std::tuple(
        g.Gallery, g.Legend, g.View3D, g.ShowXGrid, g.ShowYGrid1, g.ShowYGrid2, g.GridColor1, g.GridColor2, g.Title);
}

// Gallery 0 is the chart's own type, which the list offers as its first entry.
const SeriesProperties SomeLook {
    .Color = CurveColors::Rgb(255, 0, 0), .LineWidth = 3, .LineStyle = 0, .Marker = false, .Gallery = 0
};

TEST(SeriesPropertiesDialog, OkWritesTheEditedFieldsAndKeepsTheOthersAndCancelWritesNothing)
{
    const QColor blue(0, 128, 255);
    const SeriesProperties edited {
        .Color = CurveColors::FromColor(blue), .LineWidth = 5, .LineStyle = 2, .Marker = true, .Gallery = 0
    }; // the chart type was not touched and stays the chart's
    for (const char* button : { "cmd_Cancel", "cmd_OK" }) {
        SeriesProperties look = SomeLook;
        const bool accepted = Drive<frm_SeriesProperties>(
            look,
            [&](QDialog& dialog) {
                PickColor(dialog, blue);
                ChooseByKeys(dialog.findChild<QComboBox*>("cbo_LineStyle"), 2);
                Retype(dialog.findChild<QSpinBox*>("spn_LineWidth"), "5");
                QTest::mouseClick(dialog.findChild<QCheckBox*>("chk_Marker"), Qt::LeftButton);
            },
            button);
        EXPECT_EQ(accepted, QByteArray(button) == "cmd_OK");
        EXPECT_EQ(Fields(look), Fields(accepted ? edited : SomeLook)) << button;
    }
}

TEST(SeriesPropertiesDialog, ChartTypeAndNoLineAreOfferedAndACancelledColourChoiceKeepsTheColour)
{
    SeriesProperties look = SomeLook;
    look.Gallery = 1;
    Drive<frm_SeriesProperties>(look, [](QDialog& dialog) {
        PickColor(dialog, Qt::green, false);
        ChooseByKeys(dialog.findChild<QComboBox*>("cbo_Gallery"), 8);
        ChooseByKeys(dialog.findChild<QComboBox*>("cbo_LineStyle"), -1);
    });
    EXPECT_EQ(Fields(look),
        Fields(SeriesProperties {
            .Color = SomeLook.Color, .LineWidth = 3, .LineStyle = -1, .Marker = false, .Gallery = 8 }));
    Drive<frm_SeriesProperties>(
        look, [](QDialog& dialog) { ChooseByKeys(dialog.findChild<QComboBox*>("cbo_Gallery"), 0); });
    EXPECT_EQ(look.Gallery, 0) << "back to the chart's type";
}

TEST(SeriesPropertiesDialog, LineWidthTakesNoLettersNorWidthsOutsideItsRangeButKeepsALoadedOneUntilEdited)
{
    SeriesPropertiesEditor editor;
    editor.Load(SomeLook);
    auto* width = editor.findChild<QSpinBox*>("spn_LineWidth");
    for (const auto& [typed, expected] : { std::pair("ab", 3), std::pair("0", 3), std::pair("12", 12) }) {
        Retype(width, typed);
        QTest::keyClick(width, Qt::Key_Return);
        EXPECT_EQ(editor.Values().LineWidth, expected) << typed;
    }
    Retype(width, "99");
    QTest::keyClick(width, Qt::Key_Return);
    EXPECT_LE(editor.Values().LineWidth, SeriesPropertiesEditor::MaxLineWidth);

    SeriesProperties thin = SomeLook;
    thin.LineWidth = 0;
    editor.Load(thin);
    EXPECT_FALSE(editor.Edited());
    QTest::mouseClick(editor.findChild<QCheckBox*>("chk_Marker"), Qt::LeftButton);
    EXPECT_TRUE(editor.Edited());
    EXPECT_EQ(editor.Values().LineWidth, 0);
}

// The X grid and the grid colours are not in the dialog.
// View3D, Legend, ShowXGrid, ShowYGrid1, ShowYGrid2, GridColor1, GridColor2, Title, Gallery
const GraphProperties SomeChart { false, false, false, true, false, CurveColors::Rgb(1, 2, 3),
    CurveColors::Rgb(4, 5, 6), "%NAME%", 1 };

TEST(GraphPropertiesDialog, OkWritesTheEditedFieldsAndKeepsTheOthersAndCancelWritesNothing)
{
    GraphProperties edited = SomeChart;
    edited.View3D = edited.Legend = edited.ShowYGrid2 = true;
    edited.ShowYGrid1 = false;
    edited.Title = "Load %START_DATE%";
    edited.Gallery = 2;
    for (const char* button : { "cmd_Cancel", "cmd_OK" }) {
        GraphProperties chart = SomeChart;
        const bool accepted = Drive<frm_GraphProperties>(
            chart,
            [](QDialog& dialog) {
                ChooseByKeys(dialog.findChild<QComboBox*>("cbo_Gallery"), 2);
                for (const char* box : { "chk_Legend", "chk_View3D", "chk_YGrid1", "chk_YGrid2" })
                    QTest::mouseClick(dialog.findChild<QCheckBox*>(box), Qt::LeftButton);
                Retype(dialog.findChild<QLineEdit*>("txt_Title"), "Load %START_DATE%");
            },
            button);
        EXPECT_EQ(accepted, QByteArray(button) == "cmd_OK");
        EXPECT_EQ(Fields(chart), Fields(accepted ? edited : SomeChart)) << button;
    }
}

TEST(GraphPropertiesDialog, AChartTypeTheListLacksIsKeptUnlessOneIsChosen)
{
    GraphProperties chart = SomeChart;
    chart.Gallery = 4; // markers only
    Drive<frm_GraphProperties>(
        chart, [](QDialog& dialog) { QTest::mouseClick(dialog.findChild<QCheckBox*>("chk_Legend"), Qt::LeftButton); });
    EXPECT_EQ(chart.Gallery, 4);
    EXPECT_TRUE(chart.Legend);
}

} // namespace
