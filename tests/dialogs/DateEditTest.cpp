// SPDX-License-Identifier: GPL-3.0-or-later
// The date entry: its rules called directly, then the widget driven with keys and clicks.
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

#include <limits>
#include <optional>
#include <tuple>

namespace {

using Opt = std::optional<double>;

double At(int year, int month, int day, int hour = 0, int minute = 0, double second = 0)
{
    return Calendar::FromParts(year, month, day, hour, minute, second);
}

// Dates compare to the millisecond, the resolution of all date arithmetic; -1 stands for none.
std::int64_t Ms(Opt date)
{
    return date ? Calendar::ToMilliseconds(*date) : -1;
}

DateEditRules Rules(bool seconds, Opt lower = {}, Opt upper = {})
{
    DateEditRules rules;
    rules.SetSecondsShown(seconds);
    rules.SetStepSeconds(900);
    rules.SetLimits(lower, upper);
    return rules;
}

TEST(DateEditRules, TextIsRoundedToTheShownUnitAndReadsBackAsTheSameValue)
{
    const std::tuple<double, bool, const char*> cases[] = { { At(2025, 3, 7, 9, 5, 4), true, "07.03.2025 09:05:04" },
        { At(2025, 3, 7, 10, 14, 59.9), false, "07.03.2025 10:15" },
        { At(2025, 3, 7, 10, 14, 29.9), false, "07.03.2025 10:14" },
        { At(2025, 12, 31, 23, 59, 30), false, "01.01.2026 00:00" },
        { At(2025, 12, 31, 23, 59, 59.5), true, "01.01.2026 00:00:00" },
        { At(2025, 12, 31, 23, 59, 59.4), true, "31.12.2025 23:59:59" } };
    for (const auto& [date, seconds, text] : cases)
        EXPECT_EQ(Rules(seconds).Format(date), text) << text;
    EXPECT_EQ(Rules(false).FormatTime(0.75), "18:00");
    EXPECT_EQ(Rules(true).FormatTime(3725.0 / 86400), "01:02:05");
    for (bool seconds : { false, true }) {
        const double date = At(1999, 2, 28, 23, 45, seconds ? 17 : 0);
        EXPECT_EQ(Ms(DateEditRules::Parse(Rules(seconds).Format(date))), Ms(date)) << seconds;
    }
}

TEST(DateEditRules, LimitsBoundTheirSideOnlyTheLowerWinsWhenTheyCrossAndTimeOrDateChangesStayWithin)
{
    const std::tuple<Opt, Opt, double, double> cases[] = { { {}, At(2000, 1, 1), -50000.0, -50000.0 },
        { {}, At(2000, 1, 1), At(2001, 1, 1), At(2000, 1, 1) }, { At(2000, 1, 1), {}, At(3000, 1, 1), At(3000, 1, 1) },
        { At(2000, 1, 1), {}, At(1999, 1, 1), At(2000, 1, 1) },
        { At(2025, 2, 1), At(2025, 1, 1), At(2025, 1, 15), At(2025, 2, 1) },
        { At(2025, 2, 1), At(2025, 1, 1), At(2026, 1, 1), At(2025, 2, 1) } };
    for (const auto& [lower, upper, value, clamped] : cases)
        EXPECT_EQ(Rules(false, lower, upper).Clamp(value), clamped) << Ms(value);

    // The widget tests pick times and days within no limits.
    const double value = At(2025, 3, 7, 9, 5, 4);
    const DateEditRules limited = Rules(false, {}, At(2025, 3, 7, 12));
    EXPECT_EQ(Ms(limited.WithTime(value, 0.75)), Ms(At(2025, 3, 7, 12)));
    EXPECT_EQ(Ms(limited.WithDate(value, 2026, 1, 1)), Ms(At(2025, 3, 7, 12)));
}

TEST(DateEditRules, TimeListsEndAnOddStepBeforeMidnightAndGiveMidnightAloneForADayOrMore)
{
    const QList<double> sevens = DateEditRules::TimesOfDay(7 * 60);
    ASSERT_EQ(sevens.size(), 206); // 205 * 7 min = 23:55, the next would pass midnight
    EXPECT_EQ(Rules(false).FormatTime(sevens.back()), "23:55");
    const QList<double> odd = DateEditRules::TimesOfDay(45);
    ASSERT_EQ(odd.size(), 1920);
    EXPECT_EQ(Rules(DateEditRules::NeedsSeconds(45)).FormatTime(odd.at(3)), "00:02:15");
    EXPECT_EQ(DateEditRules::TimesOfDay(86400), QList<double> { 0.0 });
    EXPECT_EQ(DateEditRules::TimesOfDay(0).size(), 86400);
}

// Up/Down step the field under the cursor (a separator belongs to the field before it),
// Page Up/Page Down the view's step of 15 minutes; other keys do nothing.
TEST(DateEditRules, KeysStepTheFieldUnderTheCursorOrTheViewsStepWithinTheLimits)
{
    const double value = At(2025, 1, 31, 10, 30, 20);
    const std::tuple<bool, int, int, const char*> cases[] = { { true, Qt::Key_Up, 0, "01.02.2025 10:30:20" },
        { true, Qt::Key_Up, 2, "01.02.2025 10:30:20" }, { true, Qt::Key_Up, 3, "28.02.2025 10:30:20" },
        { true, Qt::Key_Down, 4, "31.12.2024 10:30:20" }, { true, Qt::Key_Down, 10, "31.01.2024 10:30:20" },
        { true, Qt::Key_Up, 12, "31.01.2025 11:30:20" }, { true, Qt::Key_Down, 15, "31.01.2025 10:29:20" },
        { true, Qt::Key_Up, 16, "31.01.2025 10:31:20" }, { true, Qt::Key_Up, 17, "31.01.2025 10:30:21" },
        { false, Qt::Key_Up, 19, "31.01.2025 10:31:20" }, { false, Qt::Key_PageUp, 0, "31.01.2025 10:45:20" },
        { false, Qt::Key_PageDown, 17, "31.01.2025 10:15:20" }, { false, Qt::Key_Left, 0, "" } };
    for (const auto& [seconds, key, cursor, text] : cases) {
        const Opt stepped = Rules(seconds).ValueForKey(value, key, cursor);
        EXPECT_EQ(stepped ? Rules(true).Format(*stepped) : QString(), text) << key << " at " << cursor;
    }

    // The widget test steps a field against a limit; the view's step stops there as well.
    const DateEditRules january = Rules(false, At(2025, 1, 1), At(2025, 1, 31));
    EXPECT_EQ(Ms(january.ValueForKey(At(2025, 1, 1, 0, 10), Qt::Key_PageDown, 0)), Ms(At(2025, 1, 1)));
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
    QString Text() const { return edit.Editor()->text(); }
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

    const double start = At(2025, 3, 7, 9, 15);
    DateEdit edit;
    QSignalSpy changes { &edit, &DateEdit::ValueChanged };
};

TEST_F(DateEditTest, TakesATypedDateWithEnterAndMarksTextThatNamesNoneKeepingTheLastGoodValue)
{
    EXPECT_EQ(Text(), "07.03.2025 09:15");
    Type("2025-04-02 11:45"); // the program's other form, shown in the entry's
    EXPECT_EQ(Text(), "02.04.2025 11:45");
    ASSERT_EQ(changes.size(), 1);
    EXPECT_EQ(Ms(changes.front().front().toDouble()), Ms(At(2025, 4, 2, 11, 45)));

    for (const QString& bad : { QStringLiteral("31.02.2025 10:00"), QString() }) {
        Type(bad);
        EXPECT_FALSE(edit.IsValid()) << bad.toStdString();
        EXPECT_FALSE(edit.Editor()->styleSheet().isEmpty());
        EXPECT_EQ(Ms(edit.Value()), Ms(At(2025, 4, 2, 11, 45))) << bad.toStdString();
    }
    EXPECT_EQ(changes.size(), 1);
    Type("28.02.2025 10:00");
    EXPECT_TRUE(edit.IsValid() && edit.Editor()->styleSheet().isEmpty());
    EXPECT_EQ(Ms(edit.Value()), Ms(At(2025, 2, 28, 10)));

    // Marked while typed already, and a value set from outside clears the mark.
    edit.Editor()->selectAll();
    QTest::keyClicks(edit.Editor(), "31.02.");
    EXPECT_FALSE(edit.IsValid());
    edit.SetValue(At(2025, 5, 5, 5, 5));
    EXPECT_TRUE(edit.IsValid());
    EXPECT_EQ(Text(), "05.05.2025 05:05");
}

TEST_F(DateEditTest, UpAndDownStepTheFieldUnderTheCursorAndPageKeysTheViewsStep)
{
    KeyAt(1, Qt::Key_Up);
    EXPECT_EQ(Text(), "08.03.2025 09:15");
    EXPECT_EQ(edit.Editor()->cursorPosition(), 1);
    KeyAt(15, Qt::Key_PageUp);
    EXPECT_EQ(Text(), "08.03.2025 09:30");
    EXPECT_EQ(changes.size(), 2);

    // A typed date counts before it is stepped.
    edit.Editor()->selectAll();
    QTest::keyClicks(edit.Editor(), "10.10.2024 10:10");
    KeyAt(0, Qt::Key_Up);
    EXPECT_EQ(Ms(edit.Value()), Ms(At(2024, 10, 11, 10, 10)));
}

TEST_F(DateEditTest, TheCalendarOpensByKeyOrButtonAndPicksADayWithTheTimeKeptOrChangesNothingOnEscape)
{
    frm_Calendar* calendar = edit.CalendarDropDown();
    KeyAt(0, Qt::Key_Down, Qt::AltModifier);
    ASSERT_TRUE(calendar->isVisible());
    EXPECT_EQ(calendar->Grid()->selectedDate(), QDate(2025, 3, 7));
    EXPECT_EQ(calendar->Grid()->locale().language(), QLocale::German) << "the program's language names the months";
    QTest::keyClick(DayGrid(), Qt::Key_Right);
    QTest::keyClick(DayGrid(), Qt::Key_Escape);
    EXPECT_FALSE(calendar->isVisible());
    EXPECT_TRUE(changes.isEmpty());

    KeyAt(0, Qt::Key_Down, Qt::AltModifier);
    for (Qt::Key key : { Qt::Key_Right, Qt::Key_Down, Qt::Key_Return })
        QTest::keyClick(DayGrid(), key);
    EXPECT_FALSE(calendar->isVisible());
    EXPECT_EQ(Ms(edit.Value()), Ms(At(2025, 3, 15, 9, 15)));
    EXPECT_EQ(changes.size(), 1);

    QTest::mouseClick(edit.CalendarButton(), Qt::LeftButton);
    ASSERT_TRUE(calendar->isVisible());
    QTest::keyClick(DayGrid(), Qt::Key_Right); // moves without picking; a click on the day picks it
    QTest::mouseClick(
        DayGrid()->viewport(), Qt::LeftButton, {}, DayGrid()->visualRect(DayGrid()->currentIndex()).center());
    EXPECT_FALSE(calendar->isVisible());
    EXPECT_EQ(Ms(edit.Value()), Ms(At(2025, 3, 16, 9, 15)));
    edit.ShowCalendar();
    QTest::mouseClick(calendar->TodayButton(), Qt::LeftButton);
    const QDate today = QDate::currentDate();
    EXPECT_EQ(Ms(edit.Value()), Ms(At(today.year(), today.month(), today.day(), 9, 15)));
}

// Both drop-downs close alike on Escape, which the calendar test presses.
TEST_F(DateEditTest, TheTimeListOpensByKeyOrButtonHoldsTheDayInTheViewsStepAndTakesAClickOrTheKeyboard)
{
    QListWidget* list = edit.TimeDropDown()->List();
    KeyAt(0, Qt::Key_Up, Qt::AltModifier);
    ASSERT_TRUE(edit.TimeDropDown()->isVisible());
    ASSERT_EQ(list->count(), 96);
    EXPECT_EQ(list->currentItem()->text(), "09:15");
    QListWidgetItem* evening = list->item(71);
    ASSERT_EQ(evening->text(), "17:45");
    list->scrollToItem(evening);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(evening).center());
    EXPECT_FALSE(edit.TimeDropDown()->isVisible());
    EXPECT_EQ(Ms(edit.Value()), Ms(At(2025, 3, 7, 17, 45)));

    edit.SetValue(start);
    edit.SetStepSeconds(3600);
    QTest::mouseClick(edit.TimeButton(), Qt::LeftButton);
    ASSERT_EQ(list->count(), 24);
    EXPECT_EQ(list->currentItem()->text(), "09:00"); // the slot that holds 09:15
    QTest::keyClick(list, Qt::Key_Down);
    QTest::keyClick(list, Qt::Key_Return);
    EXPECT_EQ(Ms(edit.Value()), Ms(At(2025, 3, 7, 10)));
}

TEST_F(DateEditTest, ShowsSecondsWhenTheStepNeedsThemAndHiddenSecondsStayInTheValue)
{
    edit.SetStepSeconds(30);
    EXPECT_EQ(Text(), "07.03.2025 09:15:00");
    Type("07.03.2025 09:15:42");
    KeyAt(18, Qt::Key_Up);
    EXPECT_EQ(Text(), "07.03.2025 09:15:43");

    // Taking the unchanged text does not drop the seconds it no longer shows.
    edit.setProperty("secondsShown", false);
    EXPECT_EQ(Text(), "07.03.2025 09:16");
    QTest::keyClick(edit.Editor(), Qt::Key_Return);
    EXPECT_EQ(Ms(edit.Value()), Ms(At(2025, 3, 7, 9, 15, 43)));
}

TEST_F(DateEditTest, LimitsPutValuesBackToTheNearestAndValuesThatAreNoNumbersAreIgnored)
{
    edit.SetValue(At(2025, 4, 10));
    edit.SetLimits(At(2025, 3, 1), At(2025, 3, 31, 23, 45));
    EXPECT_EQ(Text(), "31.03.2025 23:45");
    Type("01.01.2020 00:00");
    EXPECT_EQ(Text(), "01.03.2025 00:00");
    KeyAt(0, Qt::Key_Down);
    changes.clear();
    edit.SetValue(std::numeric_limits<double>::quiet_NaN());
    edit.SetValue(std::numeric_limits<double>::infinity());
    EXPECT_TRUE(changes.isEmpty());
    EXPECT_EQ(Ms(edit.Value()), Ms(At(2025, 3, 1)));
    edit.ShowCalendar();
    EXPECT_EQ(edit.CalendarDropDown()->Grid()->minimumDate(), QDate(2025, 3, 1));
    EXPECT_EQ(edit.CalendarDropDown()->Grid()->maximumDate(), QDate(2025, 3, 31));
    edit.CalendarDropDown()->hide();

    edit.SetLimits(std::nullopt, std::nullopt);
    Type("01.01.2020 00:00");
    EXPECT_EQ(Ms(edit.Value()), Ms(At(2020, 1, 1)));
}

} // namespace
