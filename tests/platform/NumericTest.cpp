// SPDX-License-Identifier: GPL-3.0-or-later
// Numeric tests of texts, leading numbers and the cos phi fold.
#include "Numeric.h"

#include <QLocale>
#include <QString>

#include <cmath>
#include <limits>
#include <utility>

#include <gtest/gtest.h>

static std::string Quoted(const char16_t* text) { return '"' + QString::fromUtf16(text).toStdString() + '"'; }

constexpr double kInf = std::numeric_limits<double>::infinity();

TEST(Numeric, IsNumericAcceptsOneNumberWithBlanksAroundWhoseValueIsTheLeadingNumber)
{
    for (const char16_t* text :
         {u"0", u"\r\n42\t", u"-3.5", u"2.5E-3", u".5", u"5.", u"123456789012345678901234567890"}) {
        EXPECT_TRUE(IsNumeric(text)) << Quoted(text);
        EXPECT_EQ(LeadingNumber(text), QString::fromUtf16(text).trimmed().toDouble()) << Quoted(text);
    }
    for (const char16_t* text : {u" ", u"12abc", u"1.2.3", u"e5", u".", u"1e", u"1e3.5", u"1 2", u"- 1", u"+-1",
                                 u"\u0661\u0662", u"\u00a042"})
        EXPECT_FALSE(IsNumeric(text)) << Quoted(text);

    // The locale's decimal separator counts as the point, once.
    const struct Restore { QLocale saved; ~Restore() { QLocale::setDefault(saved); } } restore;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    for (auto [text, numeric] :
         {std::pair{u"-0,25e2", true}, {u"3.5", true}, {u"3,5,1", false}, {u"3,5.1", false}})
        EXPECT_EQ(IsNumeric(text), numeric) << Quoted(text);
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    EXPECT_FALSE(IsNumeric(u"3,5"));
}

TEST(Numeric, LeadingNumberReadsUpToTheFirstOtherCharacterSkippingBlanks)
{
    const struct { const char16_t* text; double value; } cases[] = {
        {u" -4.5kW", -4.5}, {u"1.2.3", 1.2}, {u"3,5", 3.0}, {u"123456789.987654321", 123456789.987654321},
        {u"\t1\t0 . 5 x", 10.5}, {u"2e - 2", 0.02}, {u"1e+", 1.0}, {u"1e3.5", 1000.0}, // exponent digits
        {u"- 4", -4.0}, {u"", 0.0}, {u"-.e5", 0.0}, {u"kW 12", 0.0}, {u"\u00a042", 0.0}, {u"-1e400", -kInf},
        {u"1e99999999999999999999999", kInf}, {u"1e-400", 0.0}, {u"0e99999999999999999999999", 0.0}};
    for (const auto& c : cases)
        EXPECT_EQ(LeadingNumber(c.text), c.value) << Quoted(c.text);

    // Whether a value out of range overflows or underflows depends on the digits and the exponent together.
    const auto zeros = [](int count) { return QString(count, u'0'); };
    for (const auto& [text, value] : {std::pair{"0." + zeros(500) + "1e500", 0.1}, {"1" + zeros(400) + "e-800", 0.0},
             {"1" + zeros(800) + "e-100", kInf}, {"0." + zeros(800) + "1e100", 0.0}, {"-1" + zeros(400), -kInf}})
        EXPECT_EQ(LeadingNumber(text), value) << text.left(3).toStdString() << "... of length " << text.size();

    // Both readers stop at the end of the view.
    const QString digits = QStringLiteral("12345"), exponent = QStringLiteral("1e5");
    EXPECT_EQ(LeadingNumber(QStringView(digits).first(2)), 12.0);
    EXPECT_EQ(LeadingNumber(QStringView(exponent).first(2)), 1.0);
    EXPECT_FALSE(IsNumeric(QStringView(exponent).first(2)));
}

TEST(Numeric, FoldingCosPhiMirrorsIntoTheOtherHalfAndBackAndMarksValuesOutOfRange)
{
    const struct { double x, folded; } cases[] = {{0.25, 0.75}, {-0.25, -0.75}, {1.0, 0.0}, {-1.0, 0.0}, {0.0, -1.0},
        {1.0000001, 1.1}, {-1e300, 1.1}, {-kInf, 1.1}}; // 1 and -1 both give 0
    for (const auto& c : cases)
        EXPECT_EQ(FoldCosPhi(c.x), c.folded) << c.x;
    for (int i = -1000; i < 1000; ++i)
        EXPECT_NEAR(FoldCosPhi(FoldCosPhi(i / 1000.0)), i / 1000.0, 1e-15) << i / 1000.0;
}

TEST(Numeric, ClampToIntKeepsTheWholePartWithinTheIntRange)
{
    constexpr int kMax = std::numeric_limits<int>::max(), kMin = std::numeric_limits<int>::min();
    for (auto [x, value] : {std::pair{12.9, 12}, {-12.9, -12}, {1e20, kMax}, {-1e20, kMin}, {kInf, kMax}, {NAN, 0}})
        EXPECT_EQ(ClampToInt(x), value) << x;
}
