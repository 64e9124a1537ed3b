// SPDX-License-Identifier: GPL-3.0-or-later
// Numeric tests of texts, leading numbers and the cos phi fold.
#include "Numeric.h"

#include <QLocale>
#include <QString>

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace {

std::string Quoted(const char16_t* text)
{
    return '"' + QString::fromUtf16(text).toStdString() + '"';
}

// Sets a default locale for one test and restores the previous one afterwards.
class NumericInLocale : public ::testing::Test
{
protected:
    void TearDown() override { QLocale::setDefault(m_saved); }

private:
    QLocale m_saved;
};

} // namespace

TEST(Numeric, WholeNumbersWithSignPointAndExponentAreNumeric)
{
    for (const char16_t* text : {u"0", u"42", u" 42 ", u"\t42\t", u"-3.5", u"+3.5", u"1e3", u"1E3",
                                 u"1e+3", u"2.5e-3", u".5", u"-.5", u"5.", u"007",
                                 u"123456789012345678901234567890"})
        EXPECT_TRUE(IsNumeric(text)) << Quoted(text);
}

TEST(Numeric, TextsWithAnythingBesidesOneNumberAreNotNumeric)
{
    for (const char16_t* text :
         {u"", u" ", u"\t", u"12abc", u"1000abc", u"abc", u"1.2.3", u"e5", u"-", u"+", u".", u"-.",
          u"1e", u"1e+", u"1e3.5", u"1 2", u"- 1", u"1-", u"--1", u"+-1", u"1e3e4", u"0x10",
          u"1,2,3", u"\u0661\u0662", u"1\u00a0000x", u"12 abc"})
        EXPECT_FALSE(IsNumeric(text)) << Quoted(text);
}

TEST_F(NumericInLocale, TheLocaleDecimalSeparatorCountsAsThePoint)
{
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    EXPECT_TRUE(IsNumeric(u"3,5"));
    EXPECT_TRUE(IsNumeric(u"-0,25e2"));
    EXPECT_TRUE(IsNumeric(u"3.5"));
    EXPECT_FALSE(IsNumeric(u"3,5,1"));
    EXPECT_FALSE(IsNumeric(u"3,5.1"));
    EXPECT_FALSE(IsNumeric(u","));

    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    EXPECT_FALSE(IsNumeric(u"3,5"));
    EXPECT_TRUE(IsNumeric(u"3.5"));
}

TEST(Numeric, LeadingNumberReadsUpToTheFirstOtherCharacter)
{
    EXPECT_EQ(LeadingNumber(u"12abc"), 12.0);
    EXPECT_EQ(LeadingNumber(u"1000abc"), 1000.0);
    EXPECT_EQ(LeadingNumber(u" -4.5kW"), -4.5);
    EXPECT_EQ(LeadingNumber(u"+7"), 7.0);
    EXPECT_EQ(LeadingNumber(u"1.2.3"), 1.2);
    EXPECT_EQ(LeadingNumber(u".5"), 0.5);
    EXPECT_EQ(LeadingNumber(u"3,5"), 3.0);
    EXPECT_EQ(LeadingNumber(u"0x10"), 0.0);
    EXPECT_EQ(LeadingNumber(u"12-3"), 12.0);
    EXPECT_EQ(LeadingNumber(u"1--"), 1.0);
    EXPECT_EQ(LeadingNumber(u"0.1"), 0.1);
    EXPECT_EQ(LeadingNumber(u"123456789.987654321"), 123456789.987654321);
}

TEST(Numeric, LeadingNumberSkipsBlanksInsideTheNumber)
{
    EXPECT_EQ(LeadingNumber(u"1 2 3"), 123.0);
    EXPECT_EQ(LeadingNumber(u"\t1\t0 . 5 x"), 10.5);
    EXPECT_EQ(LeadingNumber(u"- 4"), -4.0);
    EXPECT_EQ(LeadingNumber(u"1 e 3"), 1000.0);
    EXPECT_EQ(LeadingNumber(u"2e - 2"), 0.02);
    EXPECT_EQ(LeadingNumber(u"1\r\n2"), 12.0);
}

TEST(Numeric, LeadingNumberReadsAnExponentOnlyWithDigits)
{
    EXPECT_EQ(LeadingNumber(u"1e3"), 1000.0);
    EXPECT_EQ(LeadingNumber(u"1E-3"), 0.001);
    EXPECT_EQ(LeadingNumber(u"2.5e+2x"), 250.0);
    EXPECT_EQ(LeadingNumber(u"1e"), 1.0);
    EXPECT_EQ(LeadingNumber(u"1e+"), 1.0);
    EXPECT_EQ(LeadingNumber(u"1ex"), 1.0);
    EXPECT_EQ(LeadingNumber(u"1e3.5"), 1000.0);
    EXPECT_EQ(LeadingNumber(u"e3"), 0.0);
}

TEST(Numeric, LeadingNumberOfATextWithoutDigitsIsZero)
{
    for (const char16_t* text : {u"", u" ", u"abc", u"-", u"+", u".", u"-.e5", u"kW 12", u"\u0661"})
        EXPECT_EQ(LeadingNumber(text), 0.0) << Quoted(text);
}

TEST(Numeric, LeadingNumberSaturatesOutOfRangeValues)
{
    const double inf = std::numeric_limits<double>::infinity();
    EXPECT_EQ(LeadingNumber(u"1e400"), inf);
    EXPECT_EQ(LeadingNumber(u"-1e400"), -inf);
    EXPECT_EQ(LeadingNumber(u"1e99999999999999999999999"), inf);
    EXPECT_EQ(LeadingNumber(u"1e-400"), 0.0);
    EXPECT_EQ(LeadingNumber(u"-1e-99999999999999999999999"), 0.0);
    EXPECT_EQ(LeadingNumber(u"0e99999999999999999999999"), 0.0);
    EXPECT_EQ(LeadingNumber(u"1.7e308"), 1.7e308);

    // Whether an out-of-range value overflows or underflows depends on the digits and the
    // exponent together.
    const auto zeros = [](int count) { return QString(count, u'0'); };
    EXPECT_DOUBLE_EQ(LeadingNumber(QStringLiteral("0.") + zeros(500) + QStringLiteral("1e500")), 0.1);
    EXPECT_EQ(LeadingNumber(QStringLiteral("1") + zeros(400) + QStringLiteral("e-800")), 0.0);
    EXPECT_EQ(LeadingNumber(QStringLiteral("1") + zeros(800) + QStringLiteral("e-100")), inf);
    EXPECT_EQ(LeadingNumber(QStringLiteral("0.") + zeros(800) + QStringLiteral("1e100")), 0.0);
    EXPECT_EQ(LeadingNumber(QStringLiteral("-1") + zeros(400)), -inf);
}

TEST(Numeric, LeadingNumberStopsAtTheEndOfTheView)
{
    const QString text = QStringLiteral("12345");
    EXPECT_EQ(LeadingNumber(QStringView(text).first(2)), 12.0);
    EXPECT_EQ(LeadingNumber(QStringView(text).sliced(3)), 45.0);
    EXPECT_EQ(LeadingNumber(QStringView()), 0.0);
    const QString exponent = QStringLiteral("1e5");
    EXPECT_EQ(LeadingNumber(QStringView(exponent).first(2)), 1.0);
    EXPECT_FALSE(IsNumeric(QStringView(exponent).first(2)));
}

TEST(Numeric, NumericTextsHaveTheirValueAsLeadingNumber)
{
    for (const char16_t* text : {u"42", u" -3.5 ", u"\r\n42\t", u"1e3", u".5", u"+0.125E1"}) {
        ASSERT_TRUE(IsNumeric(text)) << Quoted(text);
        EXPECT_EQ(LeadingNumber(text), QString::fromUtf16(text).trimmed().toDouble()) << Quoted(text);
    }
    // A no-break space is no blank to either, so the text is neither numeric nor has it a value.
    EXPECT_FALSE(IsNumeric(u"\u00a042"));
    EXPECT_EQ(LeadingNumber(u"\u00a042"), 0.0);
}

TEST(Numeric, FoldingCosPhiMirrorsTheValueIntoTheOtherHalf)
{
    EXPECT_NEAR(FoldCosPhi(0.95), 0.05, 1e-15);
    EXPECT_NEAR(FoldCosPhi(-0.95), -0.05, 1e-15);
    EXPECT_EQ(FoldCosPhi(0.25), 0.75);
    EXPECT_EQ(FoldCosPhi(-0.25), -0.75);
}

TEST(Numeric, FoldingCosPhiTwiceGivesTheValueBackFromMinusOneToBelowOne)
{
    for (int i = -1000; i < 1000; ++i) {
        const double x = i / 1000.0;
        EXPECT_NEAR(FoldCosPhi(FoldCosPhi(x)), x, 1e-15) << x;
    }
}

TEST(Numeric, FoldingCosPhiStoresBothOnesAsZeroWhichReadsBackAsMinusOne)
{
    EXPECT_EQ(FoldCosPhi(1.0), 0.0);
    EXPECT_EQ(FoldCosPhi(-1.0), 0.0);
    EXPECT_EQ(FoldCosPhi(0.0), -1.0);
}

TEST(Numeric, FoldingCosPhiOutsideTheRangeGivesOnePointOne)
{
    for (double x : {1.0000001, 1.1, 2.0, 1e300, -1.0000001, -1.1, -5.0, -1e300,
                     std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()})
        EXPECT_EQ(FoldCosPhi(x), 1.1) << x;
}

TEST(NumericClamp, WholePartStaysWithinTheIntRange)
{
    EXPECT_EQ(ClampToInt(12.9), 12);
    EXPECT_EQ(ClampToInt(-12.9), -12);
    EXPECT_EQ(ClampToInt(1e20), std::numeric_limits<int>::max());
    EXPECT_EQ(ClampToInt(-1e20), std::numeric_limits<int>::min());
    EXPECT_EQ(ClampToInt(LeadingNumber(u"1e400")), std::numeric_limits<int>::max());
    EXPECT_EQ(ClampToInt(std::nan("")), 0);
}
