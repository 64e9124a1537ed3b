// SPDX-License-Identifier: GPL-3.0-or-later
// The look dialogs of a curve and of the chart, and the curve properties dialog on a view, driven
// through their controls: what OK writes, that Cancel writes nothing, and the input they refuse.
#include "MeasuringFixture.h"
#include "SeriesPropertiesEditor.h"
#include "frm_CurveProperties.h"
#include "frm_GraphProperties.h"
#include "frm_SeriesProperties.h"

#include <QApplication>
#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
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

const SeriesProperties SomeLook {
    .Color = CurveColors::Rgb(255, 0, 0), .LineWidth = 3, .LineStyle = 0, .Marker = false, .Gallery = 1
};

// The list offers the chart's own type (gallery 0) first, and no line (style -1); a colour
// choice cancelled after another was taken leaves the one taken.
TEST(SeriesPropertiesDialog, OkWritesTheEditedFieldsAndKeepsTheOthersAndCancelWritesNothing)
{
    const QColor blue(0, 128, 255);
    const SeriesProperties edited {
        .Color = CurveColors::FromColor(blue), .LineWidth = 5, .LineStyle = -1, .Marker = true, .Gallery = 0
    };
    for (const char* button : { "cmd_Cancel", "cmd_OK" }) {
        SeriesProperties look = SomeLook;
        const bool accepted = Drive<frm_SeriesProperties>(
            look,
            [&](QDialog& dialog) {
                PickColor(dialog, blue);
                PickColor(dialog, Qt::green, false);
                ChooseByKeys(dialog.findChild<QComboBox*>("cbo_Gallery"), 0);
                ChooseByKeys(dialog.findChild<QComboBox*>("cbo_LineStyle"), -1);
                Retype(dialog.findChild<QSpinBox*>("spn_LineWidth"), "5");
                QTest::mouseClick(dialog.findChild<QCheckBox*>("chk_Marker"), Qt::LeftButton);
            },
            button);
        EXPECT_EQ(accepted, QByteArray(button) == "cmd_OK");
        EXPECT_EQ(Fields(look), Fields(accepted ? edited : SomeLook)) << button;
    }
    SeriesProperties step = SomeLook;
    Drive<frm_SeriesProperties>(
        step, [](QDialog& dialog) { ChooseByKeys(dialog.findChild<QComboBox*>("cbo_Gallery"), 8); });
    EXPECT_EQ(step.Gallery, 8);
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
    // A chart type the list lacks (4, markers only) is kept unless another is chosen.
    GraphProperties markers = SomeChart;
    markers.Gallery = 4;
    Drive<frm_GraphProperties>(markers,
        [](QDialog& dialog) { QTest::mouseClick(dialog.findChild<QCheckBox*>("chk_Legend"), Qt::LeftButton); });
    EXPECT_TRUE(markers.Gallery == 4 && markers.Legend);
}

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
    qint32 Show(const std::function<void(frm_CurveProperties&)>& steps, const char* button)
    {
        frm_CurveProperties dialog(*measuring, *curve);
        QTimer::singleShot(0, &dialog, [&] {
            steps(dialog);
            QTest::mouseClick(dialog.findChild<QPushButton*>(button), Qt::LeftButton);
        });
        return dialog.ShowMe();
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

TEST_F(CurvePropertiesTest, CancelWritesNothingAndOkWritesNameUnitColourStatisticAndAxisIntoTreeAndChart)
{
    const QColor blue(0, 64, 255);
    const auto edit = [&](frm_CurveProperties& dialog) {
        Retype(dialog.findChild<QLineEdit*>("txt_Name"), "  Hall A "); // written trimmed
        Retype(dialog.findChild<QLineEdit*>("txt_Unit"), "MW");
        Toggle(dialog, "2", frm_CurveProperties::ColumnUsed);
        Toggle(dialog, "2", frm_CurveProperties::ColumnShown);
        dialog.findChild<QTabWidget*>("tab_Pages")->setCurrentIndex(1);
        PickColor(dialog, blue);
        ChooseByKeys(dialog.findChild<QComboBox*>("cbo_YAxis"), 1);
    };
    const auto state = [&] {
        return std::tuple(curve->Name(), curve->Unit(), curve->Properties().Color, curve->YAxis(), Mean().Used(),
            Chart().SeriesColor(curve->SeriesID()), TreeCaptions());
    };
    const auto before = state();
    const QString meanCaption = Mean().Name() + " = ";
    ASSERT_TRUE(TreeCaptions().filter(meanCaption).isEmpty());
    EXPECT_EQ(Show(edit, "cmd_Cancel"), 0);
    EXPECT_EQ(state(), before);

    ASSERT_EQ(Show(edit, "cmd_OK"), 1);
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
    const qint32 result = Show(
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
