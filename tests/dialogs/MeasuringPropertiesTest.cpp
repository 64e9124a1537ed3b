// SPDX-License-Identifier: GPL-3.0-or-later
// The view's properties dialog on a real view: what OK writes, when it fetches, what Cancel and bad input leave.
#include "DateEdit.h"
#include "MeasuringFixture.h"
#include "MeasuringPropertiesRules.h"
#include "Numeric.h"
#include "ResStrings.h"
#include "frm_MeasuringProperties.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTest>
#include <QTimer>

#include <functional>
#include <tuple>

namespace {

using measuring_fixture::D;

class MeasuringPropertiesTest : public measuring_fixture::MeasuringFixture
{
protected:
    void SetUp() override
    {
        MeasuringFixture::SetUp();
        Open(900);
        ASSERT_NE(Add("3$L#1"), nullptr);
        Day();
        fetchesBefore = generated->fetches;
    }
    // Runs the dialog modally: the work is done while it is up, then the button is clicked, and
    // should that not close the dialog (a disabled OK), it is closed as Cancel does.
    qint32 Run(const std::function<void(frm_MeasuringProperties&)>& work, bool ok = true)
    {
        frm_MeasuringProperties dialog(*measuring);
        QTimer::singleShot(0, &dialog, [&] {
            work(dialog);
            Click(ok ? dialog.OkButton() : dialog.CancelButton());
            if (dialog.isVisible())
                dialog.reject();
        });
        return dialog.ShowMe();
    }
    static void Type(QLineEdit* edit, const QString& text)
    {
        edit->setFocus();
        edit->selectAll();
        QTest::keyClick(edit, Qt::Key_Backspace);
        QTest::keyClicks(edit, text);
    }
    // A date typed and taken with Enter, as a user does.
    static void TypeDate(DateEdit* edit, const QString& text)
    {
        Type(edit->Editor(), text);
        QTest::keyClick(edit->Editor(), Qt::Key_Return);
    }
    // Clicks near the left edge: a check box or radio button spans its row, but only its mark
    // and text take the click.
    static void Click(QAbstractButton* button)
    {
        QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(6, button->height() / 2));
    }
    // Steps with the arrow keys, as the keyboard does on a closed list.
    static void Choose(QComboBox* box, const QVariant& data)
    {
        box->setFocus();
        const int wanted = box->findData(data);
        ASSERT_GE(wanted, 0);
        while (box->currentIndex() != wanted)
            QTest::keyClick(box, box->currentIndex() < wanted ? Qt::Key_Down : Qt::Key_Up);
    }

    int fetchesBefore = 0;
};

TEST_F(MeasuringPropertiesTest, CancelWritesNothingAndOkWritesANewPeriodAndResolutionAndFetchesAgain)
{
    const auto state = [&] {
        return std::tuple(measuring->StartDate(), measuring->EndDate(), measuring->IntervalUnit(),
            measuring->IntervalCount(), generated->fetches);
    };
    const auto before = state();
    QString duration;
    const auto edit = [&](frm_MeasuringProperties& dialog) {
        TypeDate(dialog.StartEdit(), "12.02.2009 00:00");
        TypeDate(dialog.EndEdit(), "13.02.2009 06:00");
        duration = dialog.DurationLabel()->text();
        Click(dialog.NormalisedOption());
        Type(dialog.CountEdit(), "2");
        Choose(dialog.UnitBox(), "h");
        EXPECT_EQ(std::pair(dialog.StartEdit()->StepSeconds(), dialog.EndEdit()->StepSeconds()), std::pair(7200, 7200));
    };
    EXPECT_EQ(Run(edit, false), 0);
    EXPECT_EQ(state(), before);
    EXPECT_EQ(Run(edit), 1);
    EXPECT_EQ(duration, "1 " + GetResString(365) + " 6 " + GetResString(364));
    EXPECT_EQ(
        std::tuple(measuring->StartDate(), measuring->EndDate(), measuring->IntervalUnit(), measuring->IntervalCount()),
        std::tuple(D(2009, 2, 12), D(2009, 2, 13, 6), QString("h"), 2));
    EXPECT_GT(generated->fetches, fetchesBefore);

    // Choosing the data's resolution again clears the normalisation and fetches anew.
    fetchesBefore = generated->fetches;
    EXPECT_EQ(Run([](frm_MeasuringProperties& dialog) {
        EXPECT_TRUE(dialog.NormalisedOption()->isChecked());
        EXPECT_EQ(dialog.CountEdit()->text() + dialog.UnitBox()->currentData().toString(), "2h");
        Click(dialog.FromDataOption());
        EXPECT_FALSE(dialog.CountEdit()->isEnabled());
    }),
        1);
    EXPECT_GT(generated->fetches, fetchesBefore);
    // The fetch settles an empty resolution by the module's time base of 15 minutes.
    EXPECT_EQ(std::pair(measuring->IntervalUnit(), measuring->IntervalCount()), std::pair(QString("n"), 15));
}

TEST_F(
    MeasuringPropertiesTest, OkWithoutEditsWritesNothingCancelNeitherAndOkWritesLookCustomerAndAxisLimitsWithoutAFetch)
{
    measuring->SetChanged(false);
    measuring->CustomerAddress().Phone = "0123"; // not in the dialog
    const auto state = [&] {
        const GraphProperties& graph = measuring->Graph();
        const MeasuringFile::Address& address = measuring->CustomerAddress();
        return std::tuple(graph.Title, graph.Gallery, graph.Legend, graph.View3D, graph.ShowYGrid2,
            measuring->AutoScale(), measuring->ShowStatistics(), Chart().AxisMin(ChartAxis::Y1),
            Chart().AxisMax(ChartAxis::Y1), address.Name, address.Place, address.Memo, address.Phone,
            generated->fetches, measuring->Changed());
    };
    const auto before = state();
    const bool autoScale = measuring->AutoScale(), statistics = measuring->ShowStatistics();
    const auto edit = [](frm_MeasuringProperties& dialog) {
        dialog.Pages()->setCurrentIndex(1);
        Type(dialog.TitleEdit(), "Load %NAME%");
        Choose(dialog.GalleryBox(), 2);
        for (QAbstractButton* check : { dialog.AutoScaleCheck(), dialog.StatisticsCheck(), dialog.LegendCheck(),
                 dialog.View3DCheck(), dialog.GridCheck(1) })
            Click(check);
        Type(dialog.AxisMinEdit(0), "-5");
        Type(dialog.AxisMaxEdit(0), "42,5");
        dialog.Pages()->setCurrentIndex(2);
        Type(dialog.CompanyEdit(), "Works Ltd");
        Type(dialog.PlaceEdit(), "12345 Town");
        dialog.MemoEdit()->setFocus();
        QTest::keyClicks(dialog.MemoEdit(), "Meter replaced");
    };
    EXPECT_EQ(Run([](frm_MeasuringProperties&) {}), 0);
    EXPECT_EQ(state(), before);
    EXPECT_EQ(Run(edit, false), 0);
    EXPECT_EQ(state(), before);
    EXPECT_EQ(Run(edit), 1);
    EXPECT_EQ(state(),
        std::tuple(QString("Load %NAME%"), 2, true, true, true, !autoScale, !statistics, -5.0, 42.5,
            QString("Works Ltd"), QString("12345 Town"), QString("Meter replaced"), QString("0123"), fetchesBefore,
            true));
    EXPECT_TRUE(Chart().Legend()) << "the refresh put the look onto the chart";
}

// The power factor alone: its axis holds folded values, the dialog shows and takes measured
// ones; a longer period fetches anew, and the fetch scales the axes by the data first.
TEST_F(MeasuringPropertiesTest, APowerFactorAxisShowsAndTakesItsLimitsAsMeasuredAndTheyHoldAfterTheFetch)
{
    ASSERT_TRUE(measuring->RemoveCurve("3$L#1"));
    ASSERT_NE(Add("3$L#2"), nullptr);
    Day();
    ASSERT_FALSE(Chart().AxisVisible(ChartAxis::Y2));
    Chart().SetAxisRange(ChartAxis::Y1, FoldCosPhi(-0.95), FoldCosPhi(0.8));
    fetchesBefore = generated->fetches;
    const qint32 status = Run([](frm_MeasuringProperties& dialog) {
        dialog.Pages()->setCurrentIndex(1);
        EXPECT_FALSE(dialog.AxisMinEdit(1)->isEnabled() || dialog.AxisMaxEdit(1)->isEnabled()) << "a hidden axis";
        EXPECT_DOUBLE_EQ(dialog.AxisMinEdit(0)->text().toDouble(), -0.95);
        EXPECT_DOUBLE_EQ(dialog.AxisMaxEdit(0)->text().toDouble(), 0.8);
        Type(dialog.AxisMaxEdit(0), "1.5");
        EXPECT_FALSE(dialog.OkButton()->isEnabled()) << "no power factor";
        Type(dialog.AxisMaxEdit(0), "0.85");
        Type(dialog.AxisMinEdit(0), "-0.9");
        dialog.Pages()->setCurrentIndex(0);
        TypeDate(dialog.EndEdit(), "12.02.2009 00:00");
    });
    EXPECT_EQ(status, 1);
    EXPECT_GT(generated->fetches, fetchesBefore);
    EXPECT_NEAR(Chart().AxisMin(ChartAxis::Y1), FoldCosPhi(-0.9), 1e-12);
    EXPECT_NEAR(Chart().AxisMax(ChartAxis::Y1), FoldCosPhi(0.85), 1e-12);
    EXPECT_FALSE(Chart().AxisVisible(ChartAxis::Y2));
}

TEST_F(MeasuringPropertiesTest, BadInputIsMarkedAndKeepsOkDisabledUntilItIsPutRight)
{
    const auto span = Span();
    const qint32 status = Run(
        [](frm_MeasuringProperties& dialog) {
            QPushButton* ok = dialog.OkButton();
            ASSERT_TRUE(ok->isEnabled());
            // Types each bad text and then the good one, with the field's mark and OK following.
            const auto check = [&](const std::function<void(const QString&)>& type, QLabel* mark,
                                   const QStringList& bad, const QString& good) {
                for (const QString& text : bad) {
                    type(text);
                    EXPECT_FALSE(ok->isEnabled()) << text.toStdString();
                    EXPECT_TRUE(mark->isVisibleTo(&dialog)) << text.toStdString();
                }
                type(good);
                EXPECT_TRUE(ok->isEnabled() && !mark->isVisibleTo(&dialog)) << good.toStdString();
            };
            // A date that names none, then an end before the start.
            check([&](const QString& text) { TypeDate(dialog.EndEdit(), text); }, dialog.PeriodMark(),
                { "31.02.2009", "09.02.2009 00:00" }, "11.02.2009 00:00");
            Click(dialog.NormalisedOption());
            check([&](const QString& text) { Type(dialog.CountEdit(), text); }, dialog.CountMark(), { "0", "2x", "" },
                "4");
            // The count does not matter while the data's own resolution is chosen.
            Type(dialog.CountEdit(), "0");
            Click(dialog.FromDataOption());
            EXPECT_TRUE(ok->isEnabled());
            // Limits that are no numbers, a minimum above the maximum or equal to it.
            dialog.Pages()->setCurrentIndex(1);
            check([&](const QString& text) { Type(dialog.AxisMinEdit(0), text); }, dialog.AxisMark(0),
                { "x", "1e9", dialog.AxisMaxEdit(0)->text() }, "0");
        },
        false);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(Span(), span);
    EXPECT_EQ(generated->fetches, fetchesBefore);
}

// The rules without a dialog; what the dialog tests above already drive is not repeated.
TEST(MeasuringPropertiesRules, NumbersCountsAndStepsAreStrictAndAHiddenAxisIsNotChecked)
{
    EXPECT_EQ(MeasuringPropertiesRules::ParseNumber(" -3.25 "), -3.25);
    EXPECT_EQ(MeasuringPropertiesRules::ParseNumber("1e3"), 1000.0);
    for (const char* bad : { "1,2,3", "inf", "nan", "5 kW" })
        EXPECT_FALSE(MeasuringPropertiesRules::ParseNumber(bad)) << bad;
    EXPECT_EQ(MeasuringPropertiesRules::ParseCount(" 1 "), 1);

    for (const char* unit : { "d", "ww", "m", "yyyy" })
        EXPECT_EQ(MeasuringPropertiesRules::StepSeconds(unit, 3), 86400) << unit;
    EXPECT_FALSE(MeasuringPropertiesRules::StepSeconds("n", 0) || MeasuringPropertiesRules::StepSeconds("x", 5));

    MeasuringPropertiesEntries entries;
    entries.start = D(2009, 2, 1);
    entries.end = D(2009, 2, 2);
    entries.count = "1";
    entries.axisMin = { QString("0"), QString("x") };
    entries.axisMax = { QString("10"), QString() };
    entries.axisVisible = { true, false };
    EXPECT_FALSE(MeasuringPropertiesRules::Check(entries).Any());
    entries.axisVisible = { true, true };
    EXPECT_TRUE(MeasuringPropertiesRules::Check(entries).axis[1]);
}

} // namespace
