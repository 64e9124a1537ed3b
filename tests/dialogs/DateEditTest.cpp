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

    // The program's other forms are taken and shown in the entry's form.
    Type("2025-04-02 11:45");
    EXPECT_EQ(edit.Editor()->text(), "02.04.2025 11:45");
    EXPECT_EQ(changes.size(), 2);
}

TEST_F(DateEditTest, marksTextThatNamesNoDateAndKeepsTheLastGoodValueUntilAGoodOneComes)
{
    for (const QString& bad : { QStringLiteral("31.02.2025 10:00"), QString() }) {
        Type(bad);
        EXPECT_FALSE(edit.IsValid()) << bad.toStdString();
        EXPECT_EQ(Ms(edit.Value()), Ms(start)) << bad.toStdString();
        EXPECT_TRUE(edit.Editor()->toolTip().contains(bad)) << edit.Editor()->toolTip().toStdString();
        EXPECT_FALSE(edit.Editor()->styleSheet().isEmpty());
    }
    EXPECT_TRUE(changes.isEmpty());
    Type("28.02.2025 10:00");
    EXPECT_TRUE(edit.IsValid());
    EXPECT_TRUE(edit.Editor()->styleSheet().isEmpty());
    EXPECT_EQ(Ms(edit.Value()), Ms(At(2025, 2, 28, 10)));

    // Marked while typed already, and a value set from outside clears the mark.
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
    KeyAt(15, Qt::Key_PageUp);
    EXPECT_EQ(Ms(edit.Value()), Ms(At(2025, 2, 8, 9, 30)));
    EXPECT_EQ(changes.size(), 3);

    // A typed date counts before it is stepped.
    edit.Editor()->selectAll();
    QTest::keyClicks(edit.Editor(), "10.10.2024 10:10");
    KeyAt(0, Qt::Key_Up);
    EXPECT_EQ(Ms(edit.Value()), Ms(At(2024, 10, 11, 10, 10)));
}

TEST_F(DateEditTest, theCalendarOpensByKeyOrButtonAndPicksADayWithTheTimeKeptOrChangesNothingOnEscape)
{
    KeyAt(0, Qt::Key_Down, Qt::AltModifier);
    frm_Calendar* calendar = edit.CalendarDropDown();
    ASSERT_TRUE(calendar->isVisible());
    EXPECT_EQ(calendar->Grid()->selectedDate(), QDate(2025, 3, 7));
    EXPECT_EQ(calendar->Grid()->locale().language(), QLocale::German) << "the program's language names the months";
    QTest::keyClick(DayGrid(), Qt::Key_Right);
    QTest::keyClick(DayGrid(), Qt::Key_Escape);
    EXPECT_FALSE(calendar->isVisible());
    EXPECT_TRUE(changes.isEmpty());

    KeyAt(0, Qt::Key_Down, Qt::AltModifier);
    ASSERT_TRUE(calendar->isVisible());
    QTest::keyClick(DayGrid(), Qt::Key_Right);
    QTest::keyClick(DayGrid(), Qt::Key_Down);
    QTest::keyClick(DayGrid(), Qt::Key_Return);
    EXPECT_FALSE(calendar->isVisible());
    EXPECT_EQ(Ms(edit.Value()), Ms(At(2025, 3, 15, 9, 15)));
    EXPECT_EQ(changes.size(), 1);

    // The button drops the grid down too, where a click picks a day or today.
    QTest::mouseClick(edit.CalendarButton(), Qt::LeftButton);
    ASSERT_TRUE(edit.CalendarDropDown()->isVisible());
    ClickDay(20);
    EXPECT_FALSE(edit.CalendarDropDown()->isVisible());
    EXPECT_EQ(Ms(edit.Value()), Ms(At(2025, 3, 20, 9, 15)));

    edit.ShowCalendar();
    QTest::mouseClick(edit.CalendarDropDown()->TodayButton(), Qt::LeftButton);
    EXPECT_FALSE(edit.CalendarDropDown()->isVisible());
    const QDate today = QDate::currentDate();
    EXPECT_EQ(Ms(edit.Value()), Ms(At(today.year(), today.month(), today.day(), 9, 15)));
}

TEST_F(DateEditTest, theTimeListHoldsTheDayInTheViewsStepAndTakesAClickOrTheKeyboard)
{
    KeyAt(0, Qt::Key_Up, Qt::AltModifier);
    ASSERT_TRUE(edit.TimeDropDown()->isVisible());
    QListWidget* list = edit.TimeDropDown()->List();
    QTest::keyClick(list, Qt::Key_Down);
    QTest::keyClick(list, Qt::Key_Escape);
    EXPECT_FALSE(edit.TimeDropDown()->isVisible());
    EXPECT_TRUE(changes.isEmpty());

    QTest::mouseClick(edit.TimeButton(), Qt::LeftButton);
    ASSERT_TRUE(edit.TimeDropDown()->isVisible());
    ASSERT_EQ(list->count(), 96);
    EXPECT_EQ(list->currentItem()->text(), "09:15");
    const QList<QListWidgetItem*> found = list->findItems("17:45", Qt::MatchExactly);
    ASSERT_EQ(found.size(), 1);
    list->scrollToItem(found.front());
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(found.front()).center());
    EXPECT_FALSE(edit.TimeDropDown()->isVisible());
    EXPECT_EQ(Ms(edit.Value()), Ms(At(2025, 3, 7, 17, 45)));
    EXPECT_EQ(changes.size(), 1);

    edit.SetValue(start);
    edit.SetStepSeconds(3600);
    edit.ShowTimeList();
    ASSERT_EQ(list->count(), 24);
    EXPECT_EQ(list->currentItem()->text(), "09:00"); // the slot that holds 09:15
    QTest::keyClick(list, Qt::Key_Down);
    QTest::keyClick(list, Qt::Key_Return);
    EXPECT_EQ(Ms(edit.Value()), Ms(At(2025, 3, 7, 10)));
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
    EXPECT_EQ(edit.Editor()->text(), "01.03.2025 00:00");
    KeyAt(0, Qt::Key_Down);
    EXPECT_EQ(Ms(edit.Value()), Ms(lower));

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
