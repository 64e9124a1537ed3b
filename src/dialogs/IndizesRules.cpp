// SPDX-License-Identifier: GPL-3.0-or-later
#include "IndizesRules.h"

#include "Calendar.h"
#include "ResStrings.h"
#include "Settings.h"

const std::array<IndizesEntry, IndizesRules::EntryCount>& IndizesRules::Entries()
{
    static constexpr std::array<IndizesEntry, EntryCount> List { {
        { "Maximum", 350 },
        { "Average", 352 },
        { "Minimum", 351 },
        { "Streuung", 358 },
        { "Sum", 353 },
        { "Count", 354 },
        { "Selection", 355 },
    } };
    return List;
}

QString IndizesRules::DefaultNumberFormat(const QString& key)
{
    if (key == QLatin1String("Streuung"))
        return QStringLiteral("0.00 X²");
    // A count has no unit: it is a plain number of values.
    if (key == QLatin1String("Count"))
        return QStringLiteral("0 \"") + GetResString(356) + QLatin1Char('"');
    return QStringLiteral("0.00 X");
}

QString IndizesRules::DefaultDateFormat()
{
    return QStringLiteral("(dd.mm.yyyy hh:nn)");
}

IndizesFormat IndizesRules::Read(const QString& key)
{
    IndizesFormat format;
    format.show = Settings::IsTrue(Settings::Id::IndizesShow, key);
    format.formatNumber = Settings::StoredValue(Settings::Id::IndizesFormatNumber, key);
    if (format.formatNumber.isEmpty())
        format.formatNumber = DefaultNumberFormat(key);
    format.useDate = Settings::IsTrue(Settings::Id::IndizesUseDate, key);
    format.formatDate = Settings::StoredValue(Settings::Id::IndizesFormatDate, key);
    if (format.formatDate.isEmpty())
        format.formatDate = DefaultDateFormat();
    return format;
}

void IndizesRules::Write(const QString& key, const IndizesFormat& format)
{
    const auto flag = [](bool on) { return on ? QStringLiteral("1") : QStringLiteral("0"); };
    Settings::Write(Settings::Id::IndizesShow, flag(format.show), key);
    Settings::Write(Settings::Id::IndizesFormatNumber, format.formatNumber, key);
    Settings::Write(Settings::Id::IndizesUseDate, flag(format.useDate), key);
    Settings::Write(Settings::Id::IndizesFormatDate, format.formatDate, key);
}

QString IndizesRules::SampleUnit()
{
    return QStringLiteral("kW");
}

double IndizesRules::SampleDate()
{
    return Calendar::FromParts(2025, 6, 2, 14, 30);
}

QString IndizesRules::Sample(const QString& key, const IndizesFormat& format, const Formatter& formatter)
{
    QString mask = format.formatNumber.isEmpty() ? DefaultNumberFormat(key) : format.formatNumber;
    mask.replace(QLatin1Char('X'), QLatin1Char('"') + SampleUnit() + QLatin1Char('"'));
    QString text = formatter.FormatNumber(SampleValue, mask);
    if (format.useDate) {
        const QString dateMask = format.formatDate.isEmpty() ? DefaultDateFormat() : format.formatDate;
        text += QLatin1Char(' ') + formatter.FormatDate(SampleDate(), dateMask);
    }
    return text;
}
