// SPDX-License-Identifier: GPL-3.0-or-later
#include "Formatter.h"
#include "Calendar.h"

#include <QLocale>

#include <cfloat>
#include <initializer_list>
#include <limits>
#include <string>

#include <gtest/gtest.h>

namespace {

enum Loc { De, En };

const Formatter& Of(Loc locale)
{
    static const Formatter f[] = { Formatter(QLocale(u"de_DE")), Formatter(QLocale(u"en_US")) };
    return f[locale];
}

// One row of a table: a number or date formatted by a locale's mask.
struct Case
{
    Loc locale;
    double value;
    QStringView mask;
    const char* expected;
};

void Expect(bool dates, std::initializer_list<Case> cases)
{
    for (const Case& c : cases) {
        const Formatter& f = Of(c.locale);
        EXPECT_EQ((dates ? f.FormatDate(c.value, c.mask) : f.FormatNumber(c.value, c.mask)).toStdString(), c.expected)
            << (f.Locale().name() + u'|' + c.mask.toString() + u'|' + QString::number(c.value)).toStdString();
    }
}
const auto ExpectNumbers = [](std::initializer_list<Case> cases) { Expect(false, cases); };
const auto ExpectDates = [](std::initializer_list<Case> cases) { Expect(true, cases); };

const auto At
    = [](int y, int m, int d, int h = 0, int n = 0, int s = 0) { return Calendar::FromParts(y, m, d, h, n, s); };

// Tuesday, 3 February 2009, in ISO week 6.
const double kTue = At(2009, 2, 3, 14, 5, 7);

} // namespace

TEST(FormatterNumber, DigitsSeparatorsAndLiteralsFollowTheMaskAndRoundingGoesHalfAwayFromZeroAsTyped)
{
    ExpectNumbers({ { De, 1234567.891, u"#,##0.00", "1.234.567,89" }, { En, 1234567.891, u"#,##0.00", "1,234,567.89" },
        { De, 999.999, u"#,##0.00", "1.000,00" }, { De, 12, u"#000", "012" }, { De, 0, u"#", "" },
        { De, 1e20, u"0", "100000000000000000000" }, { De, 2, u"0.##", "2," }, { De, 0.5, u"#.##", ",5" },
        { De, 1234567, u"000-00", "12345-67" }, { De, 5, u"0 \"0#.,%\"", "5 0#.,%" }, { De, 5, u"0 EUR", "5 EUR" },
        { De, 5, u"\\00", "05" }, { De, 0.5, u"0\\%", "1%" }, { En, 5, u",0", ",5" } });
    // 2.345 is stored slightly below the typed half and must still round up.
    ExpectNumbers({ { De, -2.5, u"0", "-3" }, { De, 2.345, u"0.00", "2,35" }, { De, 2.3449, u"0.00", "2,34" } });
}

TEST(FormatterNumber, SectionsGoBySignAndRoundedValueCommasScalePercentMultipliesAndEPrintsAnExponent)
{
    const QStringView three = u"0.00;(0.00);\"null\"";
    ExpectNumbers({ { De, 1.5, three, "1,50" }, { De, -1.5, three, "(1,50)" }, { De, 0, three, "null" },
        { De, -0.004, three, "null" }, { De, -0.005, three, "(0,01)" }, { De, -3, u"0;(0);\"null\";\"Text\"", "(3)" },
        { De, 5, u"0\";\"", "5;" }, { De, -5, u"0\\;0", "-0;5" }, { De, -5, u"(0)", "-(5)" }, { De, -0.4, u"0", "-0" },
        { De, -0.4, u"0;(0)", "(0)" }, { De, -0.0, u"0", "0" }, { De, -1, u"0.0;;", "-1,0" } });
    ExpectNumbers({ { De, 1234567890, u"0,,", "1235" }, { De, 12345, u"0,.00", "12,35" },
        { De, 1234567, u"#,##0,", "1.235" }, { De, 0.125, u"0%", "13%" }, { De, 12345, u"0.00E+00", "1,23E+04" },
        { En, 0.000123, u"0.00E+00", "1.23E-04" }, { En, 12345, u"0.00E-00", "1.23E04" },
        { En, 0, u"0.0e+0", "0.0e+0" }, { En, 12345, u"00.0E+00", "12.3E+03" }, { En, 9.999, u"0.00E+00", "1.00E+01" },
        { En, 1e100, u"0.0E+0", "1.0E+100" } });
}

TEST(FormatterNumber, MoreAlternatingMasksThanTheCacheHoldsGiveStableResults)
{
    const std::initializer_list<Case> cases = { { De, 1234.5, u"0.00", "1234,50" }, { De, 1234.5, u"#,##0", "1.235" },
        { De, 1234.5, u"0.0%", "123450,0%" }, { De, 1234.5, u"0.00E+00", "1,23E+03" }, { De, 1234.5, u"0;(0)", "1235" },
        { De, 1234.5, u"00000\\s", "01235s" } };
    for (int round = 0; round < 3; ++round)
        ExpectNumbers(cases);
}

TEST(FormatterGeneralNumber, ShowsShortestDigitsThatReadBackAndExponentsOnlyAtExtremeMagnitudes)
{
    ExpectNumbers({ { De, 0.1 + 0.2, u"", "0,30000000000000004" }, { De, -0.0, u"", "0" },
        { De, 0.0001, u"", "0,0001" }, { En, 123456789012345.0, u"", "123456789012345" }, { En, 1e15, u"", "1E+15" },
        { En, 1.5e-7, u"", "1.5E-07" } });
    for (const double value :
        { 1.0 / 3, 1e-5 / 3, 1e15 + 0.5, DBL_MAX, DBL_MIN, std::numeric_limits<double>::denorm_min(), 4.35, 5e-5 }) {
        const QString text = Of(En).GeneralNumber(value); // none is 0, what a failed parse gives
        EXPECT_EQ(text.toDouble(), value) << text.toStdString();
    }
}

TEST(FormatterDate, TokensSeparatorsAndLiteralsFollowTheMaskAndLocale)
{
    ExpectDates({ { De, kTue, u"d.m.yy", "3.2.09" }, { De, kTue, u"DD.MM.YYYY", "03.02.2009" },
        { De, At(2008, 12, 31), u"y", "366" }, { De, kTue, u"h:n:s", "14:5:7" },
        { En, kTue, u"dddd, mmmm d, yyyy", "Tuesday, February 3, 2009" }, { En, kTue, u"ddd mmm", "Tue Feb" },
        { De, kTue, u"dd/mm/yyyy", "03.02.2009" }, { De, kTue, u"dd\\/mm", "03/02" }, { De, At(2009, 2, 8), u"w", "1" },
        { De, At(2009, 12, 31), u"\\Qq", "Q4" }, { En, At(2009, 2, 3, 0, 30), u"h:nn AM/PM", "12:30 AM" },
        { En, At(2009, 2, 3, 12), u"h:nn AM/PM", "12:00 PM" }, { En, At(2009, 2, 3, 9, 5), u"hh:nn am/pm", "09:05 am" },
        { En, kTue, u"h A/P", "2 P" }, { En, kTue, u"h AMPM", "2 PM" } });
    // m right after an hour means minutes; the ISO week crosses year ends.
    ExpectDates(
        { { De, kTue, u"yyyy-mm-dd hh:mm:ss", "2009-02-03 14:05:07" }, { De, kTue, u"h \\U\\h\\r mm", "14 Uhr 05" },
            { De, kTue, u"hh dd mm", "14 03 02" }, { De, kTue, u"hh:mm mm", "14:05 02" } });
    const QStringView week = u"\\K\\W ww\\, yy";
    ExpectDates({ { De, kTue, week, "KW 6, 09" }, { De, At(2010, 1, 3), week, "KW 53, 10" },
        { De, At(2008, 12, 29), week, "KW 1, 08" } });
}

TEST(FormatterDate, NamedFormsAndTheGeneralDateFollowTheLocale)
{
    // Short time counts 24 hours in every locale; the general form drops midnight and day zero.
    ExpectDates({ { De, kTue, u"Short Date", "03.02.2009" }, { En, kTue, u"Short Date", "2/3/2009" },
        { En, kTue, u"short time", "14:05" }, { En, kTue, u"Long Time", "2:05:07 PM" },
        { En, kTue, u"general date", "2/3/2009 2:05:07 PM" }, { De, kTue, u"", "03.02.2009 14:05:07" },
        { De, At(2009, 2, 3), u"", "03.02.2009" }, { De, At(1899, 12, 30, 14, 5, 7), u"", "14:05:07" } });
    // Only the whole mask names a form.
    EXPECT_EQ(Of(De).FormatDate(kTue, u"(Short Date)").toStdString().find("03.02.2009"), std::string::npos);
}
