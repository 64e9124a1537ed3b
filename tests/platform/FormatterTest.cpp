// SPDX-License-Identifier: GPL-3.0-or-later
#include "Formatter.h"
#include "Calendar.h"

#include <QLocale>

#include <cfloat>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

const Formatter& German()
{
    static const Formatter formatter(QLocale(QLocale::German, QLocale::Germany));
    return formatter;
}

const Formatter& English()
{
    static const Formatter formatter(QLocale(QLocale::English, QLocale::UnitedStates));
    return formatter;
}

const Formatter& British()
{
    static const Formatter formatter(QLocale(QLocale::English, QLocale::UnitedKingdom));
    return formatter;
}

// Results as std::string, so that a failing comparison prints readable text.
std::string Number(const Formatter& formatter, double value, QStringView mask)
{
    return formatter.FormatNumber(value, mask).toStdString();
}

std::string Date(const Formatter& formatter, double date, QStringView mask)
{
    return formatter.FormatDate(date, mask).toStdString();
}

// Tuesday, 3 February 2009, in ISO week 6.
const double kTuesday = Calendar::FromParts(2009, 2, 3, 14, 5, 7);

} // namespace

// ---------------------------------------------------------------------------------------
// Number masks

TEST(FormatterNumber, GroupingAndDecimalSeparatorFollowTheLocale)
{
    EXPECT_EQ(Number(German(), 1234567.891, u"#,##0.00"), "1.234.567,89");
    EXPECT_EQ(Number(English(), 1234567.891, u"#,##0.00"), "1,234,567.89");
    EXPECT_EQ(Number(German(), 999.999, u"#,##0.00"), "1.000,00"); // the carry opens a group
    EXPECT_EQ(Number(German(), 100, u"#,##0.00"), "100,00");
    EXPECT_EQ(Number(German(), 0.5, u"#,##0.00"), "0,50");
    EXPECT_EQ(Number(German(), -1234.5, u"#,##0.00"), "-1.234,50");
    EXPECT_EQ(Number(English(), 1e9, u"#,##0"), "1,000,000,000");
    EXPECT_EQ(Number(English(), 1234.5, u"0.00"), "1234.50"); // no comma, no grouping
}

TEST(FormatterNumber, LiteralsInQuotesAndOtherCharactersPrintAsWritten)
{
    EXPECT_EQ(Number(German(), 12.5, u"0.00 \"kW\""), "12,50 kW");
    EXPECT_EQ(Number(English(), 12.5, u"0.00 \"kW\""), "12.50 kW");
    EXPECT_EQ(Number(German(), 12.5, u"0.00 \"\""), "12,50 ");
    EXPECT_EQ(Number(German(), 3, u"0.00 X²"), "3,00 X²");
    EXPECT_EQ(Number(German(), 7, u"\"Max: \"0.0"), "Max: 7,0");
    EXPECT_EQ(Number(German(), 5, u"(0)"), "(5)");
    EXPECT_EQ(Number(German(), 5, u"+0"), "+5");
    EXPECT_EQ(Number(English(), 1234, u"$#,##0"), "$1,234");
    // Placeholders, points, commas and percent signs inside quotes are text.
    EXPECT_EQ(Number(German(), 5, u"0 \"0#.,%\""), "5 0#.,%");
    // An "E" without a sign and a placeholder after it is a letter like any other.
    EXPECT_EQ(Number(German(), 5, u"0 EUR"), "5 EUR");
}

TEST(FormatterNumber, BackslashMakesTheNextCharacterText)
{
    EXPECT_EQ(Number(German(), 3, u"00\\d "), "03d ");
    EXPECT_EQ(Number(German(), 7, u"00\\h "), "07h ");
    EXPECT_EQ(Number(German(), 45, u"00\\m "), "45m ");
    EXPECT_EQ(Number(German(), 125, u"00\\s"), "125s");
    EXPECT_EQ(Number(German(), 5, u"\\00"), "05");
    EXPECT_EQ(Number(German(), 0.5, u"0\\%"), "1%"); // an escaped percent does not scale

    // 3725 s is 1 h, 2 min and 5 s, built the way a time difference is.
    const QString text = German().FormatNumber(1, u"00\\h ") + German().FormatNumber(2, u"00\\m ")
        + German().FormatNumber(5, u"00\\s");
    EXPECT_EQ(text.toStdString(), "01h 02m 05s");
}

TEST(FormatterNumber, RoundingGoesHalfAwayFromZero)
{
    // Halves that binary floating point holds exactly.
    EXPECT_EQ(Number(German(), 0.5, u"0"), "1");
    EXPECT_EQ(Number(German(), 1.5, u"0"), "2");
    EXPECT_EQ(Number(German(), 2.5, u"0"), "3");
    EXPECT_EQ(Number(German(), -2.5, u"0"), "-3");
    EXPECT_EQ(Number(German(), 0.25, u"0.0"), "0,3");
    EXPECT_EQ(Number(German(), -0.25, u"0.0"), "-0,3");
    EXPECT_EQ(Number(German(), 0.125, u"0.00"), "0,13");
    EXPECT_EQ(Number(German(), 0.124, u"0.00"), "0,12");
}

TEST(FormatterNumber, RoundingWorksOnTheDecimalValueNotItsBinaryApproximation)
{
    // 2.345 is stored as 2.34499999999999997..., 1.005 as 1.00499999999999989...,
    // 2.675 as 2.67499999999999982...; the values as typed end in 5 and round up.
    EXPECT_EQ(Number(German(), 2.345, u"0.00"), "2,35");
    EXPECT_EQ(Number(German(), 1.005, u"0.00"), "1,01");
    EXPECT_EQ(Number(German(), 2.675, u"0.00"), "2,68");
    EXPECT_EQ(Number(German(), -2.345, u"0.00"), "-2,35");
    EXPECT_EQ(Number(German(), 2.3449, u"0.00"), "2,34");
    EXPECT_EQ(Number(English(), 0.1 + 0.2, u"0.000000"), "0.300000");
}

TEST(FormatterNumber, WithoutDecimalPointTheValueIsRoundedAndAllIntegerDigitsShow)
{
    EXPECT_EQ(Number(German(), 1234.5, u"0"), "1235");
    EXPECT_EQ(Number(German(), 1234, u"00"), "1234");
    EXPECT_EQ(Number(German(), 12, u"0000"), "0012");
    EXPECT_EQ(Number(German(), 12, u"#000"), "012");
    EXPECT_EQ(Number(German(), 0, u"#"), "");
    EXPECT_EQ(Number(German(), 0.4, u"#"), "");
    EXPECT_EQ(Number(German(), 0, u"#0"), "0");
    EXPECT_EQ(Number(German(), 1e20, u"0"), "100000000000000000000");
}

TEST(FormatterNumber, OptionalDecimalsDropTrailingZerosButKeepThePoint)
{
    EXPECT_EQ(Number(German(), 1.5, u"0.##"), "1,5");
    EXPECT_EQ(Number(German(), 2, u"0.##"), "2,");
    EXPECT_EQ(Number(German(), 0.96, u"0.#"), "1,");
    EXPECT_EQ(Number(German(), 1.25, u"0.0#"), "1,25");
    EXPECT_EQ(Number(German(), 1.2, u"0.0#"), "1,2");
    EXPECT_EQ(Number(German(), 1, u"0.0#"), "1,0");
    EXPECT_EQ(Number(German(), 0.5, u"#.##"), ",5");
    EXPECT_EQ(Number(German(), 12.5, u".00"), "12,50"); // no integer placeholder
}

TEST(FormatterNumber, NegativeValueWithoutNegativeSectionGetsAMinusInFront)
{
    EXPECT_EQ(Number(German(), -1.5, u"0.00 \"kW\""), "-1,50 kW");
    EXPECT_EQ(Number(German(), -5, u"(0)"), "-(5)");
    EXPECT_EQ(Number(English(), -5, u"\"$\"0"), "-$5");
}

TEST(FormatterNumber, SectionsAreChosenBySignAndByTheRoundedValue)
{
    const QStringView mask = u"0.00;(0.00);\"null\"";
    EXPECT_EQ(Number(German(), 1.5, mask), "1,50");
    EXPECT_EQ(Number(German(), -1.5, mask), "(1,50)");
    EXPECT_EQ(Number(German(), 0, mask), "null");
    EXPECT_EQ(Number(German(), 0.004, mask), "null");
    EXPECT_EQ(Number(German(), -0.004, mask), "null");
    EXPECT_EQ(Number(German(), 0.005, mask), "0,01");
    EXPECT_EQ(Number(German(), -0.005, mask), "(0,01)");

    // A fourth section is ignored; a quoted or escaped semicolon does not split.
    EXPECT_EQ(Number(German(), -3, u"0;(0);\"null\";\"Text\""), "(3)");
    EXPECT_EQ(Number(German(), 0, u"0;(0);\"null\";\"Text\""), "null");
    EXPECT_EQ(Number(German(), 5, u"0\";\""), "5;");
    EXPECT_EQ(Number(German(), -5, u"0\\;0"), "-0;5"); // one section, two placeholders
}

TEST(FormatterNumber, NegativeValueThatRoundsToZeroKeepsItsSign)
{
    EXPECT_EQ(Number(German(), -0.4, u"0"), "-0");
    EXPECT_EQ(Number(German(), -0.04, u"0.0"), "-0,0");
    EXPECT_EQ(Number(German(), -0.4, u"0;(0)"), "(0)");
    EXPECT_EQ(Number(German(), -0.0, u"0"), "0");
}

TEST(FormatterNumber, EmptySectionsFallBackToThePositiveOne)
{
    EXPECT_EQ(Number(German(), -1, u"0.0;;"), "-1,0");
    EXPECT_EQ(Number(German(), 0, u"0.0;;"), "0,0");
    EXPECT_EQ(Number(German(), -1, u"0.0;"), "-1,0");
}

TEST(FormatterNumber, CommasAtTheEndOfTheIntegerPartDivideByThousand)
{
    EXPECT_EQ(Number(German(), 1234567, u"0,"), "1235");
    EXPECT_EQ(Number(German(), 1234567890, u"0,,"), "1235");
    EXPECT_EQ(Number(German(), 12345, u"0,.00"), "12,35");
    EXPECT_EQ(Number(German(), 1234567, u"#,##0,"), "1.235");
    EXPECT_EQ(Number(English(), 1500, u"0, \"k\""), "2 k");
    // A leading comma has no placeholder to its left and stays text.
    EXPECT_EQ(Number(English(), 5, u",0"), ",5");
}

TEST(FormatterNumber, PercentMultipliesByHundred)
{
    EXPECT_EQ(Number(German(), 0.5, u"0%"), "50%");
    EXPECT_EQ(Number(German(), 0.125, u"0%"), "13%");
    EXPECT_EQ(Number(German(), 0.0123, u"0.0%"), "1,2%");
    EXPECT_EQ(Number(German(), 1, u"0.00 %"), "100,00 %");
}

TEST(FormatterNumber, ScientificMasksPrintMantissaAndExponent)
{
    EXPECT_EQ(Number(English(), 12345, u"0.00E+00"), "1.23E+04");
    EXPECT_EQ(Number(German(), 12345, u"0.00E+00"), "1,23E+04");
    EXPECT_EQ(Number(English(), 0.000123, u"0.00E+00"), "1.23E-04");
    EXPECT_EQ(Number(English(), 12345, u"0.00E-00"), "1.23E04");
    EXPECT_EQ(Number(English(), 0.000123, u"0.00E-00"), "1.23E-04");
    EXPECT_EQ(Number(English(), -12345, u"0.00E+00"), "-1.23E+04");
    EXPECT_EQ(Number(English(), 0, u"0.0e+0"), "0.0e+0");
    EXPECT_EQ(Number(English(), 12345, u"00.0E+00"), "12.3E+03");
    EXPECT_EQ(Number(English(), 9.999, u"0.00E+00"), "1.00E+01"); // rounding moves the exponent
    EXPECT_EQ(Number(English(), 1e100, u"0.0E+0"), "1.0E+100");
}

TEST(FormatterNumber, LiteralsBetweenPlaceholdersSplitTheDigits)
{
    EXPECT_EQ(Number(German(), 12345, u"000-00"), "123-45");
    EXPECT_EQ(Number(German(), 1234567, u"000-00"), "12345-67");
    EXPECT_EQ(Number(German(), 42, u"000-00"), "000-42");
}

TEST(FormatterNumber, EmptyMaskGivesTheGeneralForm)
{
    EXPECT_EQ(Number(German(), 1.5, u""), "1,5");
    EXPECT_EQ(Number(English(), 1e20, u""), "1E+20");
}

TEST(FormatterNumber, RepeatedAndAlternatingMasksGiveStableResults)
{
    // More masks than a small cache holds, in turn, twice.
    const std::vector<std::pair<QStringView, std::string>> cases = {
        { u"0.00", "1234,50" },
        { u"#,##0", "1.235" },
        { u"0.0%", "123450,0%" },
        { u"0.00E+00", "1,23E+03" },
        { u"0;(0)", "1235" },
        { u"00000\\s", "01235s" },
    };
    for (int round = 0; round < 2; ++round) {
        for (const auto& [mask, expected] : cases)
            EXPECT_EQ(Number(German(), 1234.5, mask), expected) << "round " << round;
    }
}

// ---------------------------------------------------------------------------------------
// General number form

TEST(FormatterGeneralNumber, ShowsTheShortestDigitsInFixedNotation)
{
    EXPECT_EQ(German().GeneralNumber(0.1).toStdString(), "0,1");
    EXPECT_EQ(German().GeneralNumber(0.1 + 0.2).toStdString(), "0,30000000000000004");
    EXPECT_EQ(German().GeneralNumber(1234567).toStdString(), "1234567");
    EXPECT_EQ(German().GeneralNumber(100).toStdString(), "100");
    EXPECT_EQ(German().GeneralNumber(-2.5).toStdString(), "-2,5");
    EXPECT_EQ(German().GeneralNumber(0).toStdString(), "0");
    EXPECT_EQ(German().GeneralNumber(-0.0).toStdString(), "0");
    EXPECT_EQ(German().GeneralNumber(0.0001).toStdString(), "0,0001");
    EXPECT_EQ(English().GeneralNumber(123456789012345.0).toStdString(), "123456789012345");
    EXPECT_EQ(English().GeneralNumber(1234.5678).toStdString(), "1234.5678");
}

TEST(FormatterGeneralNumber, UsesExponentFormOnlyForVeryLargeAndSmallMagnitudes)
{
    EXPECT_EQ(English().GeneralNumber(1e20).toStdString(), "1E+20");
    EXPECT_EQ(English().GeneralNumber(1e15).toStdString(), "1E+15");
    EXPECT_EQ(English().GeneralNumber(1.5e-7).toStdString(), "1.5E-07");
    EXPECT_EQ(German().GeneralNumber(-2.5e-5).toStdString(), "-2,5E-05");
    EXPECT_EQ(English().GeneralNumber(1e300).toStdString(), "1E+300");
}

TEST(FormatterGeneralNumber, ReadsBackToTheSameDouble)
{
    const double values[] = { 1.0 / 3, 2.0 / 3, 0.1 + 0.2, 1e-5 / 3, 123456.789, 1e15 + 0.5, DBL_MAX, DBL_MIN,
        std::numeric_limits<double>::denorm_min(), -987.654321, 4.35, 5e-5 };
    for (const double value : values) {
        bool ok = false;
        const QString text = English().GeneralNumber(value);
        EXPECT_EQ(text.toDouble(&ok), value) << text.toStdString();
        EXPECT_TRUE(ok) << text.toStdString();
    }
}

// ---------------------------------------------------------------------------------------
// Date masks

TEST(FormatterDate, DayMonthAndYearTokens)
{
    EXPECT_EQ(Date(German(), kTuesday, u"d.m.yy"), "3.2.09");
    EXPECT_EQ(Date(German(), kTuesday, u"dd.mm.yyyy"), "03.02.2009");
    EXPECT_EQ(Date(German(), kTuesday, u"DD.MM.YYYY"), "03.02.2009");
    EXPECT_EQ(Date(German(), Calendar::FromParts(1999, 12, 31), u"yy yyyy"), "99 1999");
    EXPECT_EQ(Date(German(), Calendar::FromParts(2010, 11, 9), u"d.m."), "9.11.");
    // "y" alone counts the day of the year; 2008 is a leap year.
    EXPECT_EQ(Date(German(), kTuesday, u"y"), "34");
    EXPECT_EQ(Date(German(), Calendar::FromParts(2008, 12, 31), u"y"), "366");
}

TEST(FormatterDate, TimeTokens)
{
    EXPECT_EQ(Date(German(), kTuesday, u"h:n:s"), "14:5:7");
    EXPECT_EQ(Date(German(), kTuesday, u"hh:nn:ss"), "14:05:07");
    const double morning = Calendar::FromParts(2009, 2, 3, 9, 5, 7);
    EXPECT_EQ(Date(German(), morning, u"h"), "9");
    EXPECT_EQ(Date(German(), morning, u"hh"), "09");
}

TEST(FormatterDate, MAfterAnHourMeansMinutes)
{
    EXPECT_EQ(Date(German(), kTuesday, u"hh:mm"), "14:05");
    EXPECT_EQ(Date(German(), kTuesday, u"yyyy-mm-dd hh:mm:ss"), "2009-02-03 14:05:07");
    EXPECT_EQ(Date(German(), kTuesday, u"h \\U\\h\\r mm"), "14 Uhr 05");
    EXPECT_EQ(Date(German(), kTuesday, u"mm"), "02");
    EXPECT_EQ(Date(German(), kTuesday, u"mm hh"), "02 14");
    // Another token in between, or a minute already taken, leaves "mm" the month.
    EXPECT_EQ(Date(German(), kTuesday, u"hh dd mm"), "14 03 02");
    EXPECT_EQ(Date(German(), kTuesday, u"hh:mm mm"), "14:05 02");
}

TEST(FormatterDate, DayAndMonthNamesComeFromTheLocale)
{
    EXPECT_EQ(Date(English(), kTuesday, u"dddd, mmmm d, yyyy"), "Tuesday, February 3, 2009");
    EXPECT_EQ(Date(English(), kTuesday, u"ddd mmm"), "Tue Feb");
    EXPECT_EQ(Date(German(), kTuesday, u"dddd, d. mmmm yyyy"), "Dienstag, 3. Februar 2009");
    const QLocale german(QLocale::German, QLocale::Germany);
    const QString abbreviated
        = german.dayName(2, QLocale::ShortFormat) + u' ' + german.monthName(2, QLocale::ShortFormat);
    EXPECT_EQ(Date(German(), kTuesday, u"ddd mmm"), abbreviated.toStdString());
    EXPECT_EQ(Date(German(), Calendar::FromParts(2009, 2, 8), u"dddd"), "Sonntag");
}

TEST(FormatterDate, SlashAndColonAreTheLocaleSeparators)
{
    EXPECT_EQ(Date(German(), kTuesday, u"dd/mm/yyyy"), "03.02.2009");
    EXPECT_EQ(Date(English(), kTuesday, u"dd/mm/yyyy"), "03/02/2009");
    EXPECT_EQ(Date(German(), kTuesday, u"hh:nn"), "14:05");
    EXPECT_EQ(Date(English(), kTuesday, u"hh:nn"), "14:05");
    // Quoted or escaped they are plain characters.
    EXPECT_EQ(Date(German(), kTuesday, u"dd\"/\"mm"), "03/02");
    EXPECT_EQ(Date(German(), kTuesday, u"dd\\/mm"), "03/02");
}

TEST(FormatterDate, LiteralsInQuotesAndAfterBackslash)
{
    const double week7 = Calendar::FromParts(2009, 2, 10);
    EXPECT_EQ(Date(German(), kTuesday, u"\\K\\W ww\\, yy"), "KW 6, 09");
    EXPECT_EQ(Date(German(), week7, u"\\K\\W ww"), "KW 7");
    EXPECT_EQ(Date(German(), week7, u"\"KW\" ww"), "KW 7");
    EXPECT_EQ(Date(German(), kTuesday, u"yyyy-mm-ddThh:nn"), "2009-02-03T14:05");
}

TEST(FormatterDate, WeekWeekdayAndQuarter)
{
    EXPECT_EQ(Date(German(), Calendar::FromParts(2010, 1, 3), u"ww"), "53");
    EXPECT_EQ(Date(German(), Calendar::FromParts(2008, 12, 29), u"ww"), "1");
    EXPECT_EQ(Date(German(), kTuesday, u"w"), "3");
    EXPECT_EQ(Date(German(), Calendar::FromParts(2009, 2, 8), u"w"), "1");
    EXPECT_EQ(Date(German(), kTuesday, u"\\Qq"), "Q1");
    EXPECT_EQ(Date(German(), Calendar::FromParts(2009, 11, 30), u"\\Qq"), "Q4");
    EXPECT_EQ(Date(German(), Calendar::FromParts(2009, 7, 1), u"\\Qq"), "Q3");
}

TEST(FormatterDate, AmPmMarkersCountTwelveHours)
{
    EXPECT_EQ(Date(English(), kTuesday, u"h:nn AM/PM"), "2:05 PM");
    EXPECT_EQ(Date(English(), Calendar::FromParts(2009, 2, 3, 0, 30), u"h:nn AM/PM"), "12:30 AM");
    EXPECT_EQ(Date(English(), Calendar::FromParts(2009, 2, 3, 12, 0), u"h:nn AM/PM"), "12:00 PM");
    EXPECT_EQ(Date(English(), Calendar::FromParts(2009, 2, 3, 9, 5), u"hh:nn am/pm"), "09:05 am");
    EXPECT_EQ(Date(English(), kTuesday, u"h A/P"), "2 P");
    EXPECT_EQ(Date(English(), Calendar::FromParts(2009, 2, 3, 9, 5), u"h a/p"), "9 a");
    EXPECT_EQ(Date(English(), kTuesday, u"h AMPM"), "2 PM");
    EXPECT_EQ(Date(English(), kTuesday, u"h"), "14");
}

TEST(FormatterDate, ChartAxisMasks)
{
    const double date = Calendar::FromParts(2009, 2, 3, 14, 15, 30);
    EXPECT_EQ(Date(German(), date, u":ss"), ":30");
    EXPECT_EQ(Date(German(), date, u":nn:ss"), ":15:30");
    EXPECT_EQ(Date(German(), date, u":nn"), ":15");
    EXPECT_EQ(Date(German(), date, u"hh:nn:ss"), "14:15:30");
    EXPECT_EQ(Date(German(), date, u"dd.mm. hh:nn:ss"), "03.02. 14:15:30");
    EXPECT_EQ(Date(German(), date, u"dd.mm. hh:nn"), "03.02. 14:15");
    EXPECT_EQ(Date(German(), date, u"dd.mm.yy hh:nn"), "03.02.09 14:15");
    EXPECT_EQ(Date(German(), date, u"dd."), "03.");
    EXPECT_EQ(Date(German(), date, u"mm.yy"), "02.09");
    EXPECT_EQ(Date(German(), date, u"mm.yyyy"), "02.2009");
    EXPECT_EQ(Date(German(), date, u"yyyy"), "2009");
}

TEST(FormatterDate, StatisticLineOfValueAndTime)
{
    const double date = Calendar::FromParts(2009, 2, 3, 14, 15);
    const auto line = [date](const Formatter& formatter) {
        return (formatter.FormatNumber(12.5, u"0.00 \"kW\"") + u' ' + formatter.FormatDate(date, u"(dd.mm.yyyy hh:nn)"))
            .toStdString();
    };
    EXPECT_EQ(line(English()), "12.50 kW (03.02.2009 14:15)");
    EXPECT_EQ(line(German()), "12,50 kW (03.02.2009 14:15)");
}

TEST(FormatterDate, QuarterHourStepsShowWholeMinutes)
{
    // Adding 1/96 day 96 times collects rounding error; the clock must not show it.
    double date = Calendar::FromParts(2009, 2, 3);
    for (int step = 1; step <= 96; ++step) {
        date += 1.0 / 96;
        const int minutes = step * 15;
        const QString expected = QStringLiteral("%1:%2:00")
                                     .arg(minutes / 60 % 24, 2, 10, QLatin1Char('0'))
                                     .arg(minutes % 60, 2, 10, QLatin1Char('0'));
        ASSERT_EQ(Date(German(), date, u"hh:nn:ss"), expected.toStdString()) << "step " << step;
    }
    EXPECT_EQ(Date(German(), date, u"dd.mm.yyyy"), "04.02.2009");
}

TEST(FormatterDate, NamedFormsFollowTheLocale)
{
    EXPECT_EQ(Date(German(), kTuesday, u"Short Date"), "03.02.2009");
    EXPECT_EQ(Date(English(), kTuesday, u"Short Date"), "2/3/2009");
    EXPECT_EQ(Date(British(), kTuesday, u"Short Date"), "03/02/2009");
    EXPECT_EQ(Date(German(), kTuesday, u"short date"), "03.02.2009");
    EXPECT_EQ(Date(German(), kTuesday, u"SHORT DATE"), "03.02.2009");

    // Short time counts 24 hours in every locale.
    EXPECT_EQ(Date(German(), kTuesday, u"Short Time"), "14:05");
    EXPECT_EQ(Date(English(), kTuesday, u"Short Time"), "14:05");
    EXPECT_EQ(Date(British(), kTuesday, u"short time"), "14:05");

    EXPECT_EQ(Date(German(), kTuesday, u"Long Time"), "14:05:07");
    EXPECT_EQ(Date(English(), kTuesday, u"Long Time"), "2:05:07 PM");

    EXPECT_EQ(Date(German(), kTuesday, u"General Date"), "03.02.2009 14:05:07");
    EXPECT_EQ(Date(English(), kTuesday, u"general date"), "2/3/2009 2:05:07 PM");
    // Only the whole mask names a form.
    EXPECT_EQ(Date(German(), kTuesday, u"(Short Date)").find("03.02.2009"), std::string::npos);
}

TEST(FormatterGeneralDate, LeavesOutMidnightAndDayZero)
{
    EXPECT_EQ(German().GeneralDate(kTuesday).toStdString(), "03.02.2009 14:05:07");
    EXPECT_EQ(English().GeneralDate(kTuesday).toStdString(), "2/3/2009 2:05:07 PM");
    EXPECT_EQ(German().GeneralDate(Calendar::FromParts(2009, 2, 3)).toStdString(), "03.02.2009");
    EXPECT_EQ(German().GeneralDate(Calendar::FromParts(1899, 12, 30, 14, 5, 7)).toStdString(), "14:05:07");
    EXPECT_EQ(German().GeneralDate(0).toStdString(), "00:00:00");
    EXPECT_EQ(Date(German(), kTuesday, u""), "03.02.2009 14:05:07");
}
