// SPDX-License-Identifier: GPL-3.0-or-later
// The one formatter for the date and number masks that settings, files and views carry.
#pragma once

#include <QChar>
#include <QLocale>
#include <QString>
#include <QStringView>

#include <array>

namespace Calendar {
struct DateParts;
}

class Formatter
{
public:
    explicit Formatter(const QLocale& locale = QLocale());

    // Number masks: "0", "#", "," (grouping), "." (decimal point), "%", "E+"/"E-",
    // literals in double quotes or after a backslash, other characters as they stand,
    // up to three sections separated by ";" (positive; negative; zero; a fourth is ignored).
    // Values are taken to 15 significant digits and rounded half away from zero; the zero
    // section serves values that round to zero. An empty mask gives the general form.
    QString FormatNumber(double value, QStringView mask) const;

    // Date masks: "d", "dd", "m", "mm", "yy", "yyyy", "h", "hh", "n", "nn", "s", "ss", "ww",
    // "/" and ":" as the locale's separators, literals in double quotes or after a backslash,
    // the named forms "Short Date", "Short Time", "Long Time", "General Date".
    // An "m" or "mm" right after an hour means minutes. An empty mask gives the general form.
    // Also: "ddd"/"dddd" and "mmm"/"mmmm" for the locale's day and month names, "y" day of
    // the year, "w" weekday (1 = Sunday), "q" quarter, "AM/PM", "am/pm", "A/P", "a/p" and
    // "AMPM" (the locale's texts), which make "h" and "hh" count 12 hours.
    QString FormatDate(double date, QStringView mask) const;

    // The general forms: shortest round-trip number with the locale's decimal separator;
    // short date plus long time, the time left out at midnight and the date at day 0.
    QString GeneralNumber(double value) const;
    QString GeneralDate(double date) const;

    const QLocale& Locale() const { return m_locale; }

private:
    void AppendDate(QString& out, double date, const Calendar::DateParts& parts, QStringView mask) const;

    QLocale m_locale;
    QString m_shortDate; // locale short date mask in our mask language, four-digit year
    QString m_shortTime; // locale short time mask (hours and minutes)
    QString m_longTime; // locale long time mask (with seconds)
    QChar m_dateSeparator;
    QChar m_timeSeparator;
    QString m_decimalPoint;
    QString m_groupSeparator;
    QString m_amText;
    QString m_pmText;
    std::array<QString, 12> m_monthNames; // abbreviated, January first
    std::array<QString, 12> m_monthNamesLong;
    std::array<QString, 7> m_dayNames; // abbreviated, Sunday first
    std::array<QString, 7> m_dayNamesLong;
};
