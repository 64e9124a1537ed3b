// SPDX-License-Identifier: GPL-3.0-or-later
// Feeds arbitrary bytes as UTF-8 text to the date parser and the number readers and checks
// that whatever they accept is a valid date or a plain number.
#include "Calendar.h"
#include "Numeric.h"

#include <QString>

#include <cmath>
#include <cstddef>
#include <cstdint>

namespace {

void Check(bool condition)
{
    if (!condition)
        __builtin_trap();
}

bool IsLeapYear(int year)
{
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int LengthOfMonth(int year, int month)
{
    static constexpr int Lengths[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && IsLeapYear(year) ? 29 : Lengths[month - 1];
}

void CheckParts(const Calendar::DateParts& p)
{
    Check(p.month >= 1 && p.month <= 12);
    Check(p.day >= 1 && p.day <= LengthOfMonth(p.year, p.month));
    Check(p.hour >= 0 && p.hour < 24);
    Check(p.minute >= 0 && p.minute < 60);
    Check(p.second >= 0 && p.second < 60);
    Check(p.millisecond >= 0 && p.millisecond < 1000);
}

void CheckDate(const QString& text)
{
    const std::optional<double> date = Calendar::ParseDate(text);
    if (!date)
        return;
    Check(std::isfinite(*date));
    const Calendar::DateParts parts = Calendar::Split(*date);
    CheckParts(parts);
    // Every accepted text has a four- or two-digit year, so the date lies within 0 to 9999
    // (plus the one millisecond that may round into the year 10000).
    Check(parts.year >= 0 && parts.year <= 10000);
    if (parts.year > 9999)
        return;

    // The parts written in the stored form read back as the same date.
    const QString written = QString::asprintf("%04d-%02d-%02dT%02d:%02d:%02d.%03d", parts.year, parts.month,
                                              parts.day, parts.hour, parts.minute, parts.second,
                                              parts.millisecond);
    const std::optional<double> again = Calendar::ParseDate(written);
    Check(again.has_value() && *again == *date);
    Check(Calendar::FromParts(parts.year, parts.month, parts.day, parts.hour, parts.minute,
                              parts.second + parts.millisecond / 1000.0)
          == *date);

    const int weekday = Calendar::Weekday(*date);
    Check(weekday >= 1 && weekday <= 7);
    const int week = Calendar::IsoWeek(*date);
    Check(week >= 1 && week <= 53);
}

void CheckNumber(const QString& text)
{
    const double leading = LeadingNumber(text);
    Check(!std::isnan(leading));
    if (!IsNumeric(text))
        return;
    // A numeric text that also reads as a plain C number has exactly that value as its
    // leading number (both conversions round correctly).
    bool ok = false;
    const double plain = text.toDouble(&ok);
    if (ok)
        Check(leading == plain);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    CheckDate(text);
    CheckNumber(text);
    return 0;
}
