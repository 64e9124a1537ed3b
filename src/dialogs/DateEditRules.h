// SPDX-License-Identifier: GPL-3.0-or-later
// What the date entry decides: its text form, parsing, limits, time lists and key steps.
#pragma once

#include <QList>
#include <QString>
#include <QStringView>

#include <optional>

// Dates are days since 1899-12-30. The entry shows "dd.mm.yyyy hh:nn", with ":ss" when the
// view's step is not a whole number of minutes. The widget only forwards to these rules.
class DateEditRules
{
public:
    // The part of the text a cursor position lies in.
    enum class Field { Day, Month, Year, Hour, Minute, Second };

    static constexpr int SecondsPerDay = 86400;

    bool SecondsShown() const { return m_secondsShown; }
    void SetSecondsShown(bool shown) { m_secondsShown = shown; }

    // The view's step in seconds; values below one second count as one second.
    int StepSeconds() const { return m_stepSeconds; }
    void SetStepSeconds(int seconds);

    // Seconds are needed when the step is not a whole number of minutes.
    static bool NeedsSeconds(int stepSeconds) { return stepSeconds % 60 != 0; }

    // Limits; a limit left out does not bound. A lower limit above the upper one wins.
    std::optional<double> Lower() const { return m_lower; }
    std::optional<double> Upper() const { return m_upper; }
    void SetLimits(std::optional<double> lower, std::optional<double> upper);
    double Clamp(double value) const;

    // The entry's text; the value is rounded to the shown second or minute first, so
    // 10:14:59.9 reads 10:15 and not 10:14.
    QString Format(double value) const;
    // The time of day alone ("hh:nn" or "hh:nn:ss") for a fraction of a day.
    QString FormatTime(double fraction) const;

    // Typed text in the entry's form or the program's other date forms ("yyyy-mm-dd[ hh:nn[:ss]]",
    // "dd.mm.yy", a date without a time is midnight); nothing for text that names no date.
    static std::optional<double> Parse(QStringView text);

    // The times of a day, as fractions of a day, from midnight in the step; a step of a day
    // or more gives midnight alone, a step that does not divide the day ends before midnight.
    static QList<double> TimesOfDay(int stepSeconds);

    // The date of value with its time of day replaced by fraction, within the limits.
    double WithTime(double value, double fraction) const;
    // The time of day of value with its date replaced by the calendar date year-month-day.
    double WithDate(double value, int year, int month, int day) const;

    // The field of the entry's text at a cursor position (a separator belongs to the field
    // before it; the end of the text to the last field).
    Field FieldAt(int cursorPosition) const;

    // One unit of field count times (negative: backwards), within the limits. Months and
    // years keep the day where the target month has it and take its last day otherwise.
    double Step(double value, Field field, int count) const;
    // count steps of the view's step, within the limits.
    double StepByInterval(double value, int count) const;

    // The value after a navigation key at a cursor position: Up/Down step the field under
    // the cursor, Page Up/Page Down the view's step. Nothing for other keys.
    std::optional<double> ValueForKey(double value, int key, int cursorPosition) const;

private:
    bool m_secondsShown = false;
    int m_stepSeconds = 900;
    std::optional<double> m_lower;
    std::optional<double> m_upper;
};
