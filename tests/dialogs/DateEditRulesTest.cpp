// SPDX-License-Identifier: GPL-3.0-or-later
// The date entry's rules called directly: text forms, parsing, limits, time lists, key steps.
#include "DateEditRules.h"
#include "Calendar.h"

#include <gtest/gtest.h>

#include <optional>

namespace {

using Field = DateEditRules::Field;

double At(int year, int month, int day, int hour = 0, int minute = 0, double second = 0)
{
    return Calendar::FromParts(year, month, day, hour, minute, second);
}

// Equal to the millisecond, the resolution of all date arithmetic.
void ExpectSameDate(std::optional<double> actual, double expected)
{
    ASSERT_TRUE(actual.has_value());
    EXPECT_EQ(Calendar::ToMilliseconds(*actual), Calendar::ToMilliseconds(expected));
}

DateEditRules WithSeconds(bool shown)
{
    DateEditRules rules;
    rules.SetSecondsShown(shown);
    return rules;
}

TEST(DateEditRulesText, showsTheValueInTheModesFormRoundedToTheShownUnit)
{
    const struct
    {
        double date;
        bool seconds;
        const char* text;
    } cases[] = {
        { At(2025, 3, 7, 9, 5, 4), false, "07.03.2025 09:05" },
        { At(2025, 3, 7, 9, 5, 4), true, "07.03.2025 09:05:04" },
        { At(2025, 3, 7, 10, 14, 59.9), false, "07.03.2025 10:15" },
        { At(2025, 3, 7, 10, 14, 29.9), false, "07.03.2025 10:14" },
        { At(2025, 12, 31, 23, 59, 30), false, "01.01.2026 00:00" },
        { At(2025, 12, 31, 23, 59, 59.5), true, "01.01.2026 00:00:00" },
        { At(2025, 12, 31, 23, 59, 59.4), true, "31.12.2025 23:59:59" },
    };
    for (const auto& c : cases)
        EXPECT_EQ(WithSeconds(c.seconds).Format(c.date), c.text) << c.text;
    EXPECT_EQ(WithSeconds(false).FormatTime(0.75), "18:00");
    EXPECT_EQ(WithSeconds(true).FormatTime(3725.0 / 86400), "01:02:05");
    // What is shown reads back as the same value.
    for (bool seconds : { false, true }) {
        const double date = At(1999, 2, 28, 23, 45, seconds ? 17 : 0);
        ExpectSameDate(DateEditRules::Parse(WithSeconds(seconds).Format(date)), date);
    }
}

TEST(DateEditRulesParse, readsTheEntrysFormTheProgramsOtherFormsAndTwoDigitYears)
{
    const struct
    {
        const char16_t* text;
        double date;
    } cases[] = {
        { u"07.03.2025 09:05:04", At(2025, 3, 7, 9, 5, 4) },
        { u"7.3.2025", At(2025, 3, 7) },
        { u"  2025-03-07 09:05:04 ", At(2025, 3, 7, 9, 5, 4) },
        { u"2025-03-07", At(2025, 3, 7) },
        { u"29.02.2024", At(2024, 2, 29) },
        { u"01.02.25 12:00", At(2025, 2, 1, 12) },
        { u"01.02.29", At(2029, 2, 1) },
        { u"01.02.30", At(1930, 2, 1) },
        { u"01.02.99", At(1999, 2, 1) },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(QString::fromUtf16(c.text).toStdString());
        ExpectSameDate(DateEditRules::Parse(c.text), c.date);
    }
}

TEST(DateEditRulesParse, refusesTextThatNamesNoDate)
{
    for (const char16_t* bad : { u"29.02.2025 10:00", u"abc", u"   ", u"07.13.2025", u"07.03.2025 24:00",
             u"07.03.2025 10:60", u"07.03.2025 10:00 x", u"07.03.", u"07032025" })
        EXPECT_FALSE(DateEditRules::Parse(bad).has_value()) << QString::fromUtf16(bad).toStdString();
}

TEST(DateEditRulesLimits, boundOnlyOnTheSideThatHasALimitAndTheLowerWinsWhenTheyCross)
{
    DateEditRules rules;
    EXPECT_EQ(rules.Clamp(-50000.0), -50000.0);
    rules.SetLimits(std::nullopt, At(2000, 1, 1));
    EXPECT_EQ(rules.Clamp(-50000.0), -50000.0);
    EXPECT_EQ(rules.Clamp(At(2001, 1, 1)), At(2000, 1, 1));
    rules.SetLimits(At(2000, 1, 1), std::nullopt);
    EXPECT_EQ(rules.Clamp(At(3000, 1, 1)), At(3000, 1, 1));
    EXPECT_EQ(rules.Clamp(At(1999, 1, 1)), At(2000, 1, 1));
    rules.SetLimits(At(2025, 2, 1), At(2025, 1, 1));
    EXPECT_EQ(rules.Clamp(At(2025, 1, 15)), At(2025, 2, 1));
    EXPECT_EQ(rules.Clamp(At(2026, 1, 1)), At(2025, 2, 1));
}

TEST(DateEditRulesTimes, endAnOddStepBeforeMidnightAndGiveMidnightAloneForADayOrMore)
{
    const QList<double> sevens = DateEditRules::TimesOfDay(7 * 60);
    ASSERT_EQ(sevens.size(), 206); // 205 * 7 min = 23:55, the next would pass midnight
    DateEditRules rules;
    EXPECT_EQ(rules.FormatTime(sevens.at(1)), "00:07");
    EXPECT_EQ(rules.FormatTime(sevens.back()), "23:55");

    const QList<double> odd = DateEditRules::TimesOfDay(45);
    rules.SetSecondsShown(DateEditRules::NeedsSeconds(45));
    ASSERT_EQ(odd.size(), 1920);
    EXPECT_EQ(rules.FormatTime(odd.at(3)), "00:02:15");

    EXPECT_EQ(DateEditRules::TimesOfDay(86400), QList<double> { 0.0 });
    EXPECT_EQ(DateEditRules::TimesOfDay(7 * 86400), QList<double> { 0.0 });
    EXPECT_EQ(DateEditRules::TimesOfDay(0).size(), 86400);
    for (int step : { 60, 900, 86400 })
        EXPECT_FALSE(DateEditRules::NeedsSeconds(step)) << step;
    for (int step : { 1, 90 })
        EXPECT_TRUE(DateEditRules::NeedsSeconds(step)) << step;
}

TEST(DateEditRulesTimes, replaceTheTimeOrTheDateAndKeepTheOtherPart)
{
    DateEditRules rules;
    const double value = At(2025, 3, 7, 9, 5, 4);
    ExpectSameDate(rules.WithTime(value, 0.75), At(2025, 3, 7, 18));
    ExpectSameDate(rules.WithTime(value, DateEditRules::TimesOfDay(900).at(41)), At(2025, 3, 7, 10, 15));
    ExpectSameDate(rules.WithDate(value, 2024, 2, 29), At(2024, 2, 29, 9, 5, 4));
    rules.SetLimits(std::nullopt, At(2025, 3, 7, 12));
    ExpectSameDate(rules.WithTime(value, 0.75), At(2025, 3, 7, 12));
    ExpectSameDate(rules.WithDate(value, 2026, 1, 1), At(2025, 3, 7, 12));
}

TEST(DateEditRulesKeys, findTheFieldUnderTheCursor)
{
    const struct
    {
        bool seconds; // "dd.mm.yyyy hh:nn" or "dd.mm.yyyy hh:nn:ss"
        int cursor;
        Field field;
    } cases[] = {
        { false, 0, Field::Day },
        { false, 2, Field::Day },
        { false, 3, Field::Month },
        { false, 7, Field::Year },
        { false, 12, Field::Hour },
        { false, 16, Field::Minute },
        { false, 19, Field::Minute },
        { true, 16, Field::Minute },
        { true, 17, Field::Second },
        { true, 19, Field::Second },
    };
    for (const auto& c : cases)
        EXPECT_EQ(WithSeconds(c.seconds).FieldAt(c.cursor), c.field) << c.seconds << " " << c.cursor;
}

TEST(DateEditRulesKeys, upAndDownStepTheFieldUnderTheCursor)
{
    DateEditRules rules;
    rules.SetSecondsShown(true);
    const double value = At(2025, 1, 31, 10, 30, 20);
    ExpectSameDate(rules.ValueForKey(value, Qt::Key_Up, 1), At(2025, 2, 1, 10, 30, 20));
    ExpectSameDate(rules.ValueForKey(value, Qt::Key_Up, 4), At(2025, 2, 28, 10, 30, 20));
    ExpectSameDate(rules.ValueForKey(value, Qt::Key_Down, 4), At(2024, 12, 31, 10, 30, 20));
    ExpectSameDate(rules.ValueForKey(value, Qt::Key_Down, 8), At(2024, 1, 31, 10, 30, 20));
    ExpectSameDate(rules.ValueForKey(value, Qt::Key_Up, 12), At(2025, 1, 31, 11, 30, 20));
    ExpectSameDate(rules.ValueForKey(value, Qt::Key_Down, 15), At(2025, 1, 31, 10, 29, 20));
    ExpectSameDate(rules.ValueForKey(value, Qt::Key_Up, 18), At(2025, 1, 31, 10, 30, 21));
}

TEST(DateEditRulesKeys, pageKeysMoveByTheViewsStepAndOtherKeysDoNothing)
{
    DateEditRules rules;
    rules.SetStepSeconds(900);
    const double value = At(2025, 1, 1, 0, 10);
    ExpectSameDate(rules.ValueForKey(value, Qt::Key_PageUp, 0), At(2025, 1, 1, 0, 25));
    ExpectSameDate(rules.ValueForKey(value, Qt::Key_PageDown, 0), At(2024, 12, 31, 23, 55));
    rules.SetStepSeconds(3600);
    ExpectSameDate(rules.StepByInterval(value, 3), At(2025, 1, 1, 3, 10));
    EXPECT_FALSE(rules.ValueForKey(value, Qt::Key_Left, 0).has_value());
    EXPECT_FALSE(rules.ValueForKey(value, Qt::Key_A, 0).has_value());
}

TEST(DateEditRulesKeys, stepsStopAtTheLimits)
{
    DateEditRules rules;
    rules.SetLimits(At(2025, 1, 1), At(2025, 1, 31));
    ExpectSameDate(rules.ValueForKey(At(2025, 1, 1, 0, 10), Qt::Key_PageDown, 0), At(2025, 1, 1));
    ExpectSameDate(rules.ValueForKey(At(2025, 1, 20), Qt::Key_Up, 4), At(2025, 1, 31));
    ExpectSameDate(rules.Step(At(2025, 1, 20), Field::Year, -1), At(2025, 1, 1));
}

} // namespace
