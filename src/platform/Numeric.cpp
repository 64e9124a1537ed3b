// SPDX-License-Identifier: GPL-3.0-or-later
// Number texts of settings and files: a strict test for a whole number and the lenient
// reading of a leading number.
#include "Numeric.h"

#include <QLocale>
#include <QString>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

namespace {

bool IsDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

bool IsBlank(QChar c)
{
    return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n';
}

} // namespace

bool IsNumeric(QStringView text)
{
    // The same blanks as LeadingNumber skips, so that a numeric text always has its value there.
    while (!text.isEmpty() && IsBlank(text.front()))
        text = text.sliced(1);
    while (!text.isEmpty() && IsBlank(text.back()))
        text.chop(1);
    const QString localePoint = QLocale().decimalPoint();
    const qsizetype size = text.size();
    qsizetype i = 0;
    if (i < size && (text[i] == u'+' || text[i] == u'-'))
        ++i;

    int digits = 0;
    bool hasPoint = false;
    while (i < size) {
        if (IsDigit(text[i])) {
            ++digits;
            ++i;
        } else if (!hasPoint && text[i] == u'.') {
            hasPoint = true;
            ++i;
        } else if (!hasPoint && !localePoint.isEmpty() && text.sliced(i).startsWith(localePoint)) {
            hasPoint = true;
            i += localePoint.size();
        } else {
            break;
        }
    }
    if (digits == 0)
        return false;

    if (i < size && (text[i] == u'e' || text[i] == u'E')) {
        ++i;
        if (i < size && (text[i] == u'+' || text[i] == u'-'))
            ++i;
        const qsizetype exponentStart = i;
        while (i < size && IsDigit(text[i]))
            ++i;
        if (i == exponentStart)
            return false;
    }
    return i == size;
}

double LeadingNumber(QStringView text)
{
    const qsizetype size = text.size();
    qsizetype i = 0;
    const auto skipBlanks = [&] {
        while (i < size && IsBlank(text[i]))
            ++i;
    };

    skipBlanks();
    bool negative = false;
    if (i < size && (text[i] == u'+' || text[i] == u'-')) {
        negative = text[i] == u'-';
        ++i;
    }

    // The mantissa is collected without blanks for the conversion; its order of magnitude is
    // kept to tell an overflow from an underflow when the value is out of range.
    std::string number;
    bool hasPoint = false;
    bool hasDigit = false;
    bool nonZeroSeen = false;
    std::int64_t integerDigits = 0; // significant digits before the point
    std::int64_t fractionZeros = 0; // zeros after the point before the first other digit
    for (;; ++i) {
        skipBlanks();
        if (i >= size)
            break;
        const QChar c = text[i];
        if (IsDigit(c)) {
            hasDigit = true;
            if (c != u'0')
                nonZeroSeen = true;
            if (!hasPoint && nonZeroSeen)
                ++integerDigits;
            else if (hasPoint && !nonZeroSeen)
                ++fractionZeros;
            number.push_back(static_cast<char>(c.unicode()));
        } else if (c == u'.' && !hasPoint) {
            hasPoint = true;
            number.push_back('.');
        } else {
            break;
        }
    }
    if (!hasDigit)
        return 0.0;

    // An exponent counts only with at least one digit; "1e" and "1e+" are 1.
    std::int64_t exponent = 0;
    if (i < size && (text[i] == u'e' || text[i] == u'E')) {
        qsizetype j = i + 1;
        const auto skipBlanksAt = [&] {
            while (j < size && IsBlank(text[j]))
                ++j;
        };
        skipBlanksAt();
        bool exponentNegative = false;
        if (j < size && (text[j] == u'+' || text[j] == u'-')) {
            exponentNegative = text[j] == u'-';
            ++j;
        }
        constexpr std::int64_t Saturation = 1'000'000'000;
        for (;; ++j) {
            skipBlanksAt();
            if (j >= size || !IsDigit(text[j]))
                break;
            exponent = std::min(exponent * 10 + (text[j].unicode() - u'0'), Saturation);
        }
        if (exponentNegative)
            exponent = -exponent;
    }
    if (exponent != 0)
        number += 'e' + std::to_string(exponent);

    double value = 0.0;
    const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
        const std::int64_t order = (integerDigits > 0 ? integerDigits : -fractionZeros) + exponent;
        value = order > 0 ? std::numeric_limits<double>::infinity() : 0.0;
    } else if (result.ec != std::errc()) {
        value = 0.0;
    }
    return negative ? -value : value;
}

double FoldCosPhi(double x)
{
    if (std::fabs(x) > 1.0)
        return 1.1;
    return x > 0.0 ? 1.0 - x : -1.0 - x;
}

double MeasuredCosPhi(double stored)
{
    return stored == 0.0 ? 1.0 : FoldCosPhi(stored);
}

int ClampToInt(double x)
{
    if (std::isnan(x))
        return 0;
    constexpr double Lowest = std::numeric_limits<int>::min();
    constexpr double Highest = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(x, Lowest, Highest));
}
