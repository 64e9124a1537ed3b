// SPDX-License-Identifier: GPL-3.0-or-later
// The date entry as a real widget, driven with keys and clicks: text, steps, drop-downs, limits.
#include "DateEdit.h"
#include "Calendar.h"
#include "frm_Calendar.h"
#include "frm_List.h"

#include <QCalendarWidget>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableView>
#include <QTest>
#include <QToolButton>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

double At(int year, int month, int day, int hour = 0, int minute = 0, double second = 0)
{
    return Calendar::FromParts(year, month, day, hour, minute, second);
}

std::int64_t Ms(double date)
{
    return Calendar::ToMilliseconds(date);
}

class DateEditTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        edit.SetStepSeconds(900);
        edit.SetValue(start);
        edit.resize(220, 24);
        edit.show();
        changes.clear();
    }
    // Replaces the text as a user does: select all, type, and take it with Enter.
    void Type(const QString& text)
    {
        edit.Editor()->selectAll();
        QTest::keyClick(edit.Editor(), Qt::Key_Backspace);
        QTest::keyClicks(edit.Editor(), text);
        QTest::keyClick(edit.Editor(), Qt::Key_Return);
    }
    void KeyAt(int cursor, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        edit.Editor()->setCursorPosition(cursor);
        QTest::keyClick(edit.Editor(), key, modifiers);
    }
    QTableView* DayGrid() const { return edit.CalendarDropDown()->Grid()->findChild<QTableView*>(); }
    // Clicks the cell of the grid that shows day (within the page's month for days 15-22).
    void ClickDay(int day)
    {
        QTableView* view = DayGrid();
        const QAbstractItemModel* model = view->model();
        for (int row = 1; row < model->rowCount(); ++row)
            for (int column = 1; column < model->columnCount(); ++column) {
                const QModelIndex index = model->index(row, column);
                if (model->data(index).toInt() == day) {
                    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(index).center());
                    return;
                }
            }
        FAIL() << "day " << day << " is not on the page";
    }
    QListWidgetItem* TimeItem(const QString& text) const
    {
        const QList<QListWidgetItem*> found = edit.TimeDropDown()->List()->findItems(text, Qt::MatchExactly);
        return found.size() == 1 ? found.front() : nullptr;
    }

    const double start = At(2025, 3, 7, 9, 15);
    DateEdit edit;
    QSignalSpy changes { &edit, &DateEdit::ValueChanged };
};

TEST_F(DateEditTest, showsTheValueInTheViewsFormAndTakesATypedDateWithEnter)
{
    EXPECT_EQ(edit.Editor()->text(), "07.03.2025 09:15");
    Type("01.04.2025 10:30");
    EXPECT_EQ(Ms(edit.Value()), Ms(At(2025, 4, 1, 10, 30)));
    ASSERT_EQ(changes.size(), 1);
    EXPECT_EQ(Ms(changes.front().front().toDouble()), Ms(At(2025, 4, 1, 10, 30)));
    EXPECT_TRUE(edit.IsValid());

    // The program's other forms are taken and shown in the entry's form.
    Type("2025-04-02 11:45");
    EXPECT_EQ(Ms(edit.Value()), Ms(At(2025, 4, 2, 11, 45)));
    EXPECT_EQ(edit.Editor()->text(), "02.04.2025 11:45");
    Type("3.4.25");
    EXPECT_EQ(edit.Editor()->text(), "03.04.2025 00:00");
    EXPECT_EQ(changes.size(), 3);
}

TEST_F(DateEditTest, marksTextThatNamesNoDateAndKeepsTheLastGoodValue)
{
    for (const QString& bad : { QStringLiteral("31.02.2025 10:00"), QStringLiteral("abc"), QString() }) {
        Type(bad);
        EXPECT_FALSE(edit.IsValid()) << bad.toStdString();
        EXPECT_EQ(Ms(edit.Value()), Ms(start)) << bad.toStdString();
        EXPECT_EQ(edit.Editor()->text(), bad);
        EXPECT_TRUE(edit.Editor()->toolTip().contains(bad)) << edit.Editor()->toolTip().toStdString();
        EXPECT_FALSE(edit.Editor()->styleSheet().isEmpty());
    }
    EXPECT_TRUE(changes.isEmpty());

    Type("28.02.2025 10:00");
    EXPECT_TRUE(edit.IsValid());
    EXPECT_TRUE(edit.Editor()->toolTip().isEmpty());
    EXPECT_TRUE(edit.Editor()->styleSheet().isEmpty());
    EXPECT_EQ(Ms(edit.Value()), Ms(At(2025, 2, 28, 10)));
}

TEST_F(DateEditTest, marksBadTextWhileItIsTypedAndASetValueClearsTheMark)
{
    edit.Editor()->selectAll();
    QTest::keyClicks(edit.Editor(), "31.02.");
    EXPECT_FALSE(edit.IsValid());
    edit.SetValue(At(2025, 5, 5, 5, 5));
    EXPECT_TRUE(edit.IsValid());
    EXPECT_EQ(edit.Editor()->text(), "05.05.2025 05:05");
}

TEST_F(DateEditTest, upAndDownStepTheFieldUnderTheCursorAndPageKeysTheViewsStep)
{
    KeyAt(1, Qt::Key_Up);
    EXPECT_EQ(edit.Editor()->text(), "08.03.2025 09:15");
    EXPECT_EQ(edit.Editor()->cursorPosition(), 1);
    KeyAt(4, Qt::Key_Down);
    EXPECT_EQ(edit.Editor()->text(), "08.02.2025 09:15");
    KeyAt(8, Qt::Key_Up);
    EXPECT_EQ(edit.Editor()->text(), "08.02.2026 09:15");
    KeyAt(12, Qt::Key_Down);
    EXPECT_EQ(edit.Editor()->text(), "08.02.2026 08:15");
    KeyAt(15, Qt::Key_Up);
    EXPECT_EQ(edit.Editor()->text(), "08.02.2026 08:16");
    KeyAt(15, Qt::Key_PageUp);
    EXPECT_EQ(edit.Editor()->text(), "08.02.2026 08:31");
    KeyAt(0, Qt::Key_PageDown);
    KeyAt(0, Qt::Key_PageDown);
    EXPECT_EQ(edit.Editor()->text(), "08.02.2026 08:01");
    EXPECT_EQ(Ms(edit.Value()), Ms(At(2026, 2, 8, 8, 1)));
    EXPECT_EQ(changes.size(), 8);
}

TEST_F(DateEditTest, aTypedDateCountsBeforeItIsStepped)
{
    edit.Editor()->selectAll();
    QTest::keyClicks(edit.Editor(), "10.10.2024 10:10");
    KeyAt(0, Qt::Key_Up);
    EXPECT_EQ(Ms(edit.Value()), Ms(At(2024, 10, 11, 10, 10)));
}

TEST_F(DateEditTest, altDownOpensTheCalendarWhereArrowsAndEnterPickADayAndKeepTheTime)
{
    KeyAt(0, Qt::Key_Down, Qt::AltModifier);
    frm_Calendar* calendar = edit.CalendarDropDown();
    ASSERT_TRUE(calendar->isVisible());
    EXPECT_EQ(calendar->Grid()->selectedDate(), QDate(2025, 3, 7));
    EXPECT_TRUE(changes.isEmpty());
    QTest::keyClick(DayGrid(), Qt::Key_Right);
    QTest::keyClick(DayGrid(), Qt::Key_Down);
    QTest::keyClick(DayGrid(), Qt::Key_Return);
    EXPECT_FALSE(calendar->isVisible());
    EXPECT_EQ(Ms(edit.Value()), Ms(At(2025, 3, 15, 9, 15)));
    EXPECT_EQ(changes.size(), 1);
}

TEST_F(DateEditTest, escapeClosesADropDownAndChangesNothing)
{
    edit.ShowCalendar();
    ASSERT_TRUE(edit.CalendarDropDown()->isVisible());
    QTest::keyClick(DayGrid(), Qt::Key_Right);
    QTest::keyClick(DayGrid(), Qt::Key_Escape);
    EXPECT_FALSE(edit.CalendarDropDown()->isVisible());

    edit.ShowTimeList();
    ASSERT_TRUE(edit.TimeDropDown()->isVisible());
    QTest::keyClick(edit.TimeDropDown()->List(), Qt::Key_Down);
    QTest::keyClick(edit.TimeDropDown()->List(), Qt::Key_Escape);
    EXPECT_FALSE(edit.TimeDropDown()->isVisible());

    EXPECT_EQ(Ms(edit.Value()), Ms(start));
    EXPECT_TRUE(changes.isEmpty());
}

TEST_F(DateEditTest, theCalendarButtonDropsDownAGridWhereAClickPicksADay)
{
    QTest::mouseClick(edit.CalendarButton(), Qt::LeftButton);
    ASSERT_TRUE(edit.CalendarDropDown()->isVisible());
    EXPECT_EQ(edit.CalendarDropDown()->Grid()->verticalHeaderFormat(), QCalendarWidget::ISOWeekNumbers);
    ClickDay(20);
    EXPECT_FALSE(edit.CalendarDropDown()->isVisible());
    EXPECT_EQ(Ms(edit.Value()), Ms(At(2025, 3, 20, 9, 15)));
    EXPECT_EQ(changes.size(), 1);
}

TEST_F(DateEditTest, theTodayButtonPicksTodayWithTheTimeKept)
{
    edit.ShowCalendar();
    QTest::mouseClick(edit.CalendarDropDown()->TodayButton(), Qt::LeftButton);
    EXPECT_FALSE(edit.CalendarDropDown()->isVisible());
    const QDate today = QDate::currentDate();
    EXPECT_EQ(Ms(edit.Value()), Ms(At(today.year(), today.month(), today.day(), 9, 15)));
}

TEST_F(DateEditTest, theTimeListHoldsTheDayInTheViewsStepAndAClickSetsTheTime)
{
    QTest::mouseClick(edit.TimeButton(), Qt::LeftButton);
    QListWidget* list = edit.TimeDropDown()->List();
    ASSERT_TRUE(edit.TimeDropDown()->isVisible());
    ASSERT_EQ(list->count(), 96);
    EXPECT_EQ(list->currentItem()->text(), "09:15");
    QListWidgetItem* item = TimeItem("17:45");
    ASSERT_NE(item, nullptr);
    list->scrollToItem(item);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(item).center());
    EXPECT_FALSE(edit.TimeDropDown()->isVisible());
    EXPECT_EQ(Ms(edit.Value()), Ms(At(2025, 3, 7, 17, 45)));
    EXPECT_EQ(changes.size(), 1);
}

TEST_F(DateEditTest, theTimeListFollowsTheStepAndIsUsedWithTheKeyboard)
{
    edit.SetStepSeconds(3600);
    edit.ShowTimeList();
    QListWidget* list = edit.TimeDropDown()->List();
    ASSERT_EQ(list->count(), 24);
    EXPECT_EQ(list->currentItem()->text(), "09:00"); // the slot that holds 09:15
    QTest::keyClick(list, Qt::Key_Down);
    QTest::keyClick(list, Qt::Key_Return);
    EXPECT_EQ(Ms(edit.Value()), Ms(At(2025, 3, 7, 10)));

    edit.SetStepSeconds(90);
    edit.ShowTimeList();
    EXPECT_EQ(list->count(), 960);
    EXPECT_NE(TimeItem("00:01:30"), nullptr);
    EXPECT_EQ(list->currentItem()->text(), "10:00:00");
}

TEST_F(DateEditTest, showsSecondsWhenTheStepNeedsThemOrWhenAskedTo)
{
    EXPECT_FALSE(edit.SecondsShown());
    edit.SetStepSeconds(30);
    EXPECT_TRUE(edit.SecondsShown());
    EXPECT_EQ(edit.Editor()->text(), "07.03.2025 09:15:00");
    Type("07.03.2025 09:15:42");
    EXPECT_EQ(Ms(edit.Value()), Ms(At(2025, 3, 7, 9, 15, 42)));
    KeyAt(18, Qt::Key_Up);
    EXPECT_EQ(edit.Editor()->text(), "07.03.2025 09:15:43");

    // Hidden seconds stay in the value: taking the unchanged text does not drop them.
    edit.setProperty("secondsShown", false);
    EXPECT_EQ(edit.Editor()->text(), "07.03.2025 09:16");
    QTest::keyClick(edit.Editor(), Qt::Key_Return);
    EXPECT_EQ(Ms(edit.Value()), Ms(At(2025, 3, 7, 9, 15, 43)));
}

TEST_F(DateEditTest, limitsPutValuesBackToTheNearestLimit)
{
    const double lower = At(2025, 3, 1);
    const double upper = At(2025, 3, 31, 23, 45);
    edit.SetValue(At(2025, 4, 10));
    edit.SetLimits(lower, upper);
    EXPECT_EQ(Ms(edit.Value()), Ms(upper));
    EXPECT_EQ(edit.Editor()->text(), "31.03.2025 23:45");

    Type("01.01.2020 00:00");
    EXPECT_EQ(Ms(edit.Value()), Ms(lower));
    EXPECT_EQ(edit.Editor()->text(), "01.03.2025 00:00");
    KeyAt(0, Qt::Key_Down);
    EXPECT_EQ(Ms(edit.Value()), Ms(lower));

    edit.SetValue(At(2099, 1, 1));
    EXPECT_EQ(Ms(edit.Value()), Ms(upper));
    KeyAt(0, Qt::Key_PageUp);
    EXPECT_EQ(Ms(edit.Value()), Ms(upper));

    edit.ShowCalendar();
    EXPECT_EQ(edit.CalendarDropDown()->Grid()->minimumDate(), QDate(2025, 3, 1));
    EXPECT_EQ(edit.CalendarDropDown()->Grid()->maximumDate(), QDate(2025, 3, 31));
    edit.CalendarDropDown()->hide();

    edit.SetLimits(std::nullopt, std::nullopt);
    Type("01.01.2020 00:00");
    EXPECT_EQ(Ms(edit.Value()), Ms(At(2020, 1, 1)));
}

TEST_F(DateEditTest, ignoresValuesThatAreNoNumbers)
{
    edit.SetValue(std::numeric_limits<double>::quiet_NaN());
    edit.SetValue(std::numeric_limits<double>::infinity());
    EXPECT_EQ(Ms(edit.Value()), Ms(start));
    EXPECT_TRUE(changes.isEmpty());
}

} // namespace
