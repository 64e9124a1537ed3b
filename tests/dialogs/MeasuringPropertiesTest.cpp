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
    // Runs the dialog modally; the work is done while it is up, then it is closed with Cancel
    // should the work not have closed it.
    qint32 Run(const std::function<void(frm_MeasuringProperties&)>& work)
    {
        frm_MeasuringProperties dialog(*measuring);
        QTimer::singleShot(0, &dialog, [&] {
            work(dialog);
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
    static void Choose(QComboBox* box, const QVariant& data)
    {
        box->setFocus();
        const int wanted = box->findData(data);
        ASSERT_GE(wanted, 0);
        // Steps with the arrow keys, as the keyboard does on a closed list.
        while (box->currentIndex() != wanted)
            QTest::keyClick(box, box->currentIndex() < wanted ? Qt::Key_Down : Qt::Key_Up);
    }

    int fetchesBefore = 0;
};

TEST_F(MeasuringPropertiesTest, NewPeriodAndResolutionAreWrittenAndFetchedAgainAsIsTheDataResolutionChosenBack)
{
    QString duration;
    qint32 status = Run([&](frm_MeasuringProperties& dialog) {
        TypeDate(dialog.StartEdit(), "12.02.2009 00:00");
        TypeDate(dialog.EndEdit(), "13.02.2009 06:00");
        duration = dialog.DurationLabel()->text();
        Click(dialog.NormalisedOption());
        Type(dialog.CountEdit(), "2");
        Choose(dialog.UnitBox(), "h");
        EXPECT_EQ(dialog.StartEdit()->StepSeconds(), 7200);
        EXPECT_EQ(dialog.EndEdit()->StepSeconds(), 7200);
        EXPECT_TRUE(dialog.OkButton()->isEnabled());
        Click(dialog.OkButton());
    });
    EXPECT_EQ(status, 1);
    EXPECT_EQ(duration, "1 " + GetResString(365) + " 6 " + GetResString(364));
    EXPECT_DOUBLE_EQ(measuring->StartDate(), D(2009, 2, 12));
    EXPECT_DOUBLE_EQ(measuring->EndDate(), D(2009, 2, 13, 6));
    EXPECT_EQ(measuring->IntervalUnit(), "h");
    EXPECT_EQ(measuring->IntervalCount(), 2);
    EXPECT_GT(generated->fetches, fetchesBefore);

    // Choosing the data's resolution again clears the normalisation and fetches anew.
    fetchesBefore = generated->fetches;
    status = Run([](frm_MeasuringProperties& dialog) {
        EXPECT_TRUE(dialog.NormalisedOption()->isChecked());
        EXPECT_EQ(dialog.CountEdit()->text(), "2");
        EXPECT_EQ(dialog.UnitBox()->currentData().toString(), "h");
        Click(dialog.FromDataOption());
        EXPECT_FALSE(dialog.CountEdit()->isEnabled());
        Click(dialog.OkButton());
    });
    EXPECT_EQ(status, 1);
    EXPECT_GT(generated->fetches, fetchesBefore);
    // The fetch settles an empty resolution by the module's time base of 15 minutes.
    EXPECT_EQ(measuring->IntervalUnit(), "n");
    EXPECT_EQ(measuring->IntervalCount(), 15);
}

TEST_F(MeasuringPropertiesTest, LookAndCustomerChangesAreAppliedWithoutANewFetch)
{
    const bool statistics = measuring->ShowStatistics();
    const bool autoScale = measuring->AutoScale();
    const double start = measuring->StartDate();
    measuring->CustomerAddress().Phone = "0123";
    const qint32 status = Run([](frm_MeasuringProperties& dialog) {
        dialog.Pages()->setCurrentIndex(1);
        Type(dialog.TitleEdit(), "Load %NAME%");
        Choose(dialog.GalleryBox(), 2);
        Click(dialog.AutoScaleCheck());
        Click(dialog.StatisticsCheck());
        Click(dialog.LegendCheck());
        Click(dialog.View3DCheck());
        Click(dialog.GridCheck(1));
        dialog.Pages()->setCurrentIndex(2);
        Type(dialog.CompanyEdit(), "Works Ltd");
        Type(dialog.PlaceEdit(), "12345 Town");
        dialog.MemoEdit()->setFocus();
        QTest::keyClicks(dialog.MemoEdit(), "Meter replaced");
        Click(dialog.OkButton());
    });
    EXPECT_EQ(status, 1);
    EXPECT_EQ(generated->fetches, fetchesBefore);
    EXPECT_DOUBLE_EQ(measuring->StartDate(), start);
    const GraphProperties& graph = measuring->Graph();
    EXPECT_EQ(graph.Title, "Load %NAME%");
    EXPECT_EQ(graph.Gallery, 2);
    EXPECT_TRUE(graph.Legend);
    EXPECT_TRUE(graph.View3D);
    EXPECT_TRUE(graph.ShowYGrid2);
    EXPECT_EQ(measuring->AutoScale(), !autoScale);
    EXPECT_EQ(measuring->ShowStatistics(), !statistics);
    EXPECT_TRUE(Chart().Legend()) << "the refresh put the look onto the chart";
    const MeasuringFile::Address& address = measuring->CustomerAddress();
    EXPECT_EQ(address.Name, "Works Ltd");
    EXPECT_EQ(address.Place, "12345 Town");
    EXPECT_EQ(address.Memo, "Meter replaced");
    EXPECT_EQ(address.Phone, "0123"); // fields the dialog does not show stay
}

TEST_F(MeasuringPropertiesTest, TypedAxisLimitsHoldAfterTheRefreshAndHiddenAxesAreNotOffered)
{
    ASSERT_TRUE(Chart().AxisVisible(ChartAxis::Y1));
    ASSERT_FALSE(Chart().AxisVisible(ChartAxis::Y2));
    const qint32 status = Run([](frm_MeasuringProperties& dialog) {
        dialog.Pages()->setCurrentIndex(1);
        EXPECT_FALSE(dialog.AxisMinEdit(1)->isEnabled());
        EXPECT_FALSE(dialog.AxisMaxEdit(1)->isEnabled());
        Type(dialog.AxisMinEdit(0), "-5");
        Type(dialog.AxisMaxEdit(0), "42,5");
        // A longer period fetches anew, and the fetch scales the axes by the data.
        dialog.Pages()->setCurrentIndex(0);
        TypeDate(dialog.EndEdit(), "12.02.2009 00:00");
        Click(dialog.OkButton());
    });
    EXPECT_EQ(status, 1);
    EXPECT_GT(generated->fetches, fetchesBefore);
    EXPECT_DOUBLE_EQ(Chart().AxisMin(ChartAxis::Y1), -5.0);
    EXPECT_DOUBLE_EQ(Chart().AxisMax(ChartAxis::Y1), 42.5);
    EXPECT_FALSE(Chart().AxisVisible(ChartAxis::Y2));
}

TEST_F(MeasuringPropertiesTest, APowerFactorAxisShowsAndTakesItsLimitsAsMeasured)
{
    // The power factor alone: its axis holds folded values, the dialog shows measured ones.
    ASSERT_TRUE(measuring->RemoveCurve("3$L#1"));
    ASSERT_NE(Add("3$L#2"), nullptr);
    Day();
    Chart().SetAxisRange(ChartAxis::Y1, FoldCosPhi(-0.95), FoldCosPhi(0.8));
    const qint32 status = Run([](frm_MeasuringProperties& dialog) {
        dialog.Pages()->setCurrentIndex(1);
        EXPECT_DOUBLE_EQ(dialog.AxisMinEdit(0)->text().toDouble(), -0.95);
        EXPECT_DOUBLE_EQ(dialog.AxisMaxEdit(0)->text().toDouble(), 0.8);
        Type(dialog.AxisMaxEdit(0), "1.5");
        EXPECT_FALSE(dialog.OkButton()->isEnabled()) << "no power factor";
        Type(dialog.AxisMaxEdit(0), "0.85");
        Type(dialog.AxisMinEdit(0), "-0.9");
        Click(dialog.OkButton());
    });
    EXPECT_EQ(status, 1);
    EXPECT_NEAR(Chart().AxisMin(ChartAxis::Y1), FoldCosPhi(-0.9), 1e-12);
    EXPECT_NEAR(Chart().AxisMax(ChartAxis::Y1), FoldCosPhi(0.85), 1e-12);
}

TEST_F(MeasuringPropertiesTest, OkWithoutEditsAndCancelAfterEditsWriteNothing)
{
    const auto [start, end] = Span();
    const QString unit = measuring->IntervalUnit();
    const qint32 count = measuring->IntervalCount();
    const double max = Chart().AxisMax(ChartAxis::Y1);
    measuring->SetChanged(false);
    EXPECT_EQ(Run([](frm_MeasuringProperties& dialog) { Click(dialog.OkButton()); }), 0);
    const qint32 status = Run([](frm_MeasuringProperties& dialog) {
        TypeDate(dialog.StartEdit(), "05.02.2009 00:00");
        Click(dialog.NormalisedOption());
        Type(dialog.CountEdit(), "3");
        dialog.Pages()->setCurrentIndex(1);
        Type(dialog.TitleEdit(), "Never");
        Click(dialog.LegendCheck());
        Type(dialog.AxisMaxEdit(0), "1000");
        dialog.Pages()->setCurrentIndex(2);
        Type(dialog.CompanyEdit(), "Never Ltd");
        Click(dialog.CancelButton());
    });
    EXPECT_EQ(status, 0);
    EXPECT_DOUBLE_EQ(measuring->StartDate(), start);
    EXPECT_DOUBLE_EQ(measuring->EndDate(), end);
    EXPECT_EQ(measuring->IntervalUnit(), unit);
    EXPECT_EQ(measuring->IntervalCount(), count);
    EXPECT_TRUE(measuring->Graph().Title.isEmpty());
    EXPECT_FALSE(measuring->Graph().Legend);
    EXPECT_TRUE(measuring->CustomerAddress().Name.isEmpty());
    EXPECT_DOUBLE_EQ(Chart().AxisMax(ChartAxis::Y1), max);
    EXPECT_EQ(generated->fetches, fetchesBefore);
    EXPECT_FALSE(measuring->Changed());
}

TEST_F(MeasuringPropertiesTest, BadInputIsMarkedAndKeepsOkDisabled)
{
    const auto [start, end] = Span();
    const qint32 status = Run([](frm_MeasuringProperties& dialog) {
        QPushButton* ok = dialog.OkButton();
        ASSERT_TRUE(ok->isEnabled());

        TypeDate(dialog.EndEdit(), "09.02.2009 00:00"); // before the start
        EXPECT_FALSE(ok->isEnabled());
        EXPECT_TRUE(dialog.PeriodMark()->isVisibleTo(&dialog));
        Click(ok);
        EXPECT_TRUE(dialog.isVisible());
        TypeDate(dialog.EndEdit(), "11.02.2009 00:00");
        EXPECT_TRUE(ok->isEnabled());
        EXPECT_FALSE(dialog.PeriodMark()->isVisibleTo(&dialog));

        Click(dialog.NormalisedOption());
        for (const char* count : { "0", "2x", "" }) {
            Type(dialog.CountEdit(), count);
            EXPECT_FALSE(ok->isEnabled()) << count;
            EXPECT_TRUE(dialog.CountMark()->isVisibleTo(&dialog)) << count;
        }
        // The count does not matter while the data's own resolution is chosen.
        Click(dialog.FromDataOption());
        EXPECT_TRUE(ok->isEnabled());
        Click(dialog.NormalisedOption());
        Type(dialog.CountEdit(), "4");
        EXPECT_TRUE(ok->isEnabled());

        dialog.Pages()->setCurrentIndex(1);
        const QString max = dialog.AxisMaxEdit(0)->text();
        for (const char* min : { "1e9", "x" }) {
            Type(dialog.AxisMinEdit(0), min);
            EXPECT_FALSE(ok->isEnabled()) << min;
            EXPECT_TRUE(dialog.AxisMark(0)->isVisibleTo(&dialog)) << min;
        }
        Type(dialog.AxisMinEdit(0), max); // equal limits span nothing
        EXPECT_FALSE(ok->isEnabled());
        Type(dialog.AxisMinEdit(0), "0");
        EXPECT_TRUE(ok->isEnabled());
        EXPECT_FALSE(dialog.AxisMark(0)->isVisibleTo(&dialog));
    });
    EXPECT_EQ(status, 0);
    EXPECT_EQ(Span(), std::make_pair(start, end));
    EXPECT_EQ(generated->fetches, fetchesBefore);
}

// The rules without a dialog; what the dialog tests above already drive is not repeated.
TEST(MeasuringPropertiesRules, NumbersAndCountsAreParsedStrictly)
{
    EXPECT_EQ(MeasuringPropertiesRules::ParseNumber(" -3.25 "), -3.25);
    EXPECT_EQ(MeasuringPropertiesRules::ParseNumber("1e3"), 1000.0);
    for (const char* bad : { "1,2,3", "inf", "nan", "5 kW" })
        EXPECT_FALSE(MeasuringPropertiesRules::ParseNumber(bad)) << bad;
    EXPECT_EQ(MeasuringPropertiesRules::ParseCount(" 1 "), 1);
    for (const char* bad : { "-1", "1.5" })
        EXPECT_FALSE(MeasuringPropertiesRules::ParseCount(bad)) << bad;
}

TEST(MeasuringPropertiesRules, AHiddenAxisIsNotChecked)
{
    MeasuringPropertiesEntries entries;
    entries.start = D(2009, 2, 1);
    entries.end = D(2009, 2, 2);
    entries.count = "1";
    entries.axisVisible = { true, false };
    entries.axisMin = { QString("0"), QString("x") };
    entries.axisMax = { QString("10"), QString("") };
    EXPECT_FALSE(MeasuringPropertiesRules::Check(entries).Any());
    entries.axisVisible = { true, true };
    EXPECT_TRUE(MeasuringPropertiesRules::Check(entries).axis[1]);
}

TEST(MeasuringPropertiesRules, DateStepsFollowTheResolutionUpToADay)
{
    EXPECT_EQ(MeasuringPropertiesRules::StepSeconds("n", 15), 900);
    for (const char* unit : { "d", "ww", "m", "yyyy" })
        EXPECT_EQ(MeasuringPropertiesRules::StepSeconds(unit, 3), 86400) << unit;
    EXPECT_FALSE(MeasuringPropertiesRules::StepSeconds("n", 0));
    EXPECT_FALSE(MeasuringPropertiesRules::StepSeconds("x", 5));
}

} // namespace
