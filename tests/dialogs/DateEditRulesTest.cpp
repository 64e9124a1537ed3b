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

TEST(DateEditRulesText, showsDayMonthYearHoursAndMinutesOrSecondsAsTheModeSays)
{
    const double date = At(2025, 3, 7, 9, 5, 4);
    EXPECT_EQ(WithSeconds(false).Format(date), "07.03.2025 09:05");
    EXPECT_EQ(WithSeconds(true).Format(date), "07.03.2025 09:05:04");
    EXPECT_EQ(WithSeconds(false).Format(At(2025, 12, 31)), "31.12.2025 00:00");
}

TEST(DateEditRulesText, roundsToTheShownUnitAcrossMidnightAndTheYearsEnd)
{
    EXPECT_EQ(WithSeconds(false).Format(At(2025, 3, 7, 10, 14, 59.9)), "07.03.2025 10:15");
    EXPECT_EQ(WithSeconds(false).Format(At(2025, 3, 7, 10, 14, 29.9)), "07.03.2025 10:14");
    EXPECT_EQ(WithSeconds(false).Format(At(2025, 12, 31, 23, 59, 30)), "01.01.2026 00:00");
    EXPECT_EQ(WithSeconds(true).Format(At(2025, 12, 31, 23, 59, 59.5)), "01.01.2026 00:00:00");
    EXPECT_EQ(WithSeconds(true).Format(At(2025, 12, 31, 23, 59, 59.4)), "31.12.2025 23:59:59");
}

TEST(DateEditRulesText, formatsTheTimeOfDayAloneFromAFraction)
{
    EXPECT_EQ(WithSeconds(false).FormatTime(0.0), "00:00");
    EXPECT_EQ(WithSeconds(false).FormatTime(0.75), "18:00");
    EXPECT_EQ(WithSeconds(true).FormatTime(3725.0 / 86400), "01:02:05");
}

TEST(DateEditRulesText, aFormattedValueParsesBackToItself)
{
    for (bool seconds : { false, true }) {
        const DateEditRules rules = WithSeconds(seconds);
        const double date = At(1999, 2, 28, 23, 45, seconds ? 17 : 0);
        ExpectSameDate(DateEditRules::Parse(rules.Format(date)), date);
    }
}

TEST(DateEditRulesParse, readsTheEntrysFormAndTheProgramsOtherDateForms)
{
    ExpectSameDate(DateEditRules::Parse(u"07.03.2025 09:05"), At(2025, 3, 7, 9, 5));
    ExpectSameDate(DateEditRules::Parse(u"07.03.2025 09:05:04"), At(2025, 3, 7, 9, 5, 4));
    ExpectSameDate(DateEditRules::Parse(u"7.3.2025"), At(2025, 3, 7));
    ExpectSameDate(DateEditRules::Parse(u"  2025-03-07 09:05:04 "), At(2025, 3, 7, 9, 5, 4));
    ExpectSameDate(DateEditRules::Parse(u"2025-03-07"), At(2025, 3, 7));
}

TEST(DateEditRulesParse, takesTwoDigitYearsBelowThirtyAsThisCenturyAndTheRestAsTheLast)
{
    ExpectSameDate(DateEditRules::Parse(u"01.02.25 12:00"), At(2025, 2, 1, 12));
    ExpectSameDate(DateEditRules::Parse(u"01.02.29"), At(2029, 2, 1));
    ExpectSameDate(DateEditRules::Parse(u"01.02.30"), At(1930, 2, 1));
    ExpectSameDate(DateEditRules::Parse(u"01.02.99"), At(1999, 2, 1));
}

TEST(DateEditRulesParse, refusesTextThatNamesNoDate)
{
    for (const char16_t* bad : { u"31.02.2025", u"29.02.2025 10:00", u"abc", u"", u"   ", u"07.13.2025",
             u"07.03.2025 24:00", u"07.03.2025 10:60", u"07.03.2025 10:00 x", u"07.03.", u"07032025" })
        EXPECT_FALSE(DateEditRules::Parse(bad).has_value()) << QString::fromUtf16(bad).toStdString();
    EXPECT_TRUE(DateEditRules::Parse(u"29.02.2024").has_value());
}

TEST(DateEditRulesLimits, putsAValueOutsideBackToTheNearestLimit)
{
    DateEditRules rules;
    const double lower = At(2025, 1, 1);
    const double upper = At(2025, 12, 31, 23, 45);
    rules.SetLimits(lower, upper);
    EXPECT_EQ(rules.Clamp(At(2024, 6, 1)), lower);
    EXPECT_EQ(rules.Clamp(At(2026, 1, 1)), upper);
    EXPECT_EQ(rules.Clamp(At(2025, 6, 1)), At(2025, 6, 1));
    EXPECT_EQ(rules.Clamp(lower), lower);
    EXPECT_EQ(rules.Clamp(upper), upper);
}

TEST(DateEditRulesLimits, boundsOnlyOnTheSideThatHasALimit)
{
    DateEditRules rules;
    EXPECT_EQ(rules.Clamp(-50000.0), -50000.0);
    rules.SetLimits(std::nullopt, At(2000, 1, 1));
    EXPECT_EQ(rules.Clamp(-50000.0), -50000.0);
    EXPECT_EQ(rules.Clamp(At(2001, 1, 1)), At(2000, 1, 1));
    rules.SetLimits(At(2000, 1, 1), std::nullopt);
    EXPECT_EQ(rules.Clamp(At(3000, 1, 1)), At(3000, 1, 1));
    EXPECT_EQ(rules.Clamp(At(1999, 1, 1)), At(2000, 1, 1));
}

TEST(DateEditRulesLimits, letTheLowerLimitWinWhenTheLimitsCross)
{
    DateEditRules rules;
    rules.SetLimits(At(2025, 2, 1), At(2025, 1, 1));
    EXPECT_EQ(rules.Clamp(At(2025, 1, 15)), At(2025, 2, 1));
    EXPECT_EQ(rules.Clamp(At(2026, 1, 1)), At(2025, 2, 1));
}

TEST(DateEditRulesTimes, listsTheDayInQuarterHoursAndHours)
{
    const QList<double> quarters = DateEditRules::TimesOfDay(900);
    ASSERT_EQ(quarters.size(), 96);
    DateEditRules rules;
    EXPECT_EQ(rules.FormatTime(quarters.front()), "00:00");
    EXPECT_EQ(rules.FormatTime(quarters.at(1)), "00:15");
    EXPECT_EQ(rules.FormatTime(quarters.at(41)), "10:15");
    EXPECT_EQ(rules.FormatTime(quarters.back()), "23:45");

    const QList<double> hours = DateEditRules::TimesOfDay(3600);
    ASSERT_EQ(hours.size(), 24);
    EXPECT_EQ(rules.FormatTime(hours.at(13)), "13:00");
    EXPECT_EQ(rules.FormatTime(hours.back()), "23:00");
}

TEST(DateEditRulesTimes, endsAnOddStepBeforeMidnightAndGivesMidnightAloneForADayOrMore)
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
}

TEST(DateEditRulesTimes, needSecondsOnlyForStepsThatAreNoWholeMinutes)
{
    EXPECT_FALSE(DateEditRules::NeedsSeconds(60));
    EXPECT_FALSE(DateEditRules::NeedsSeconds(900));
    EXPECT_FALSE(DateEditRules::NeedsSeconds(86400));
    EXPECT_TRUE(DateEditRules::NeedsSeconds(1));
    EXPECT_TRUE(DateEditRules::NeedsSeconds(90));
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
    DateEditRules rules; // "dd.mm.yyyy hh:nn"
    EXPECT_EQ(rules.FieldAt(0), Field::Day);
    EXPECT_EQ(rules.FieldAt(2), Field::Day);
    EXPECT_EQ(rules.FieldAt(3), Field::Month);
    EXPECT_EQ(rules.FieldAt(7), Field::Year);
    EXPECT_EQ(rules.FieldAt(12), Field::Hour);
    EXPECT_EQ(rules.FieldAt(16), Field::Minute);
    EXPECT_EQ(rules.FieldAt(19), Field::Minute);
    rules.SetSecondsShown(true); // "dd.mm.yyyy hh:nn:ss"
    EXPECT_EQ(rules.FieldAt(16), Field::Minute);
    EXPECT_EQ(rules.FieldAt(17), Field::Second);
    EXPECT_EQ(rules.FieldAt(19), Field::Second);
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
