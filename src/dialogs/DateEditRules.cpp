// SPDX-License-Identifier: GPL-3.0-or-later
// What the date entry decides: its text form, parsing, limits, time lists and key steps.
#include "DateEditRules.h"

#include "Calendar.h"

#include <qnamespace.h>

#include <algorithm>
#include <cmath>

namespace {

// The parts of value rounded to the whole second, or to the whole minute without seconds.
Calendar::DateParts RoundedParts(double value, bool toSeconds)
{
    const Calendar::DateParts p = Calendar::Split(value);
    double rounded = 0.0;
    if (toSeconds)
        rounded
            = Calendar::FromParts(p.year, p.month, p.day, p.hour, p.minute, p.second + (p.millisecond >= 500 ? 1 : 0));
    else
        rounded = Calendar::FromParts(
            p.year, p.month, p.day, p.hour, p.minute + (p.second * 1000 + p.millisecond >= 30000 ? 1 : 0));
    return Calendar::Split(rounded);
}

QString TwoDigits(int n)
{
    return QStringLiteral("%1").arg(n, 2, 10, QLatin1Char('0'));
}

QString TimeText(const Calendar::DateParts& p, bool withSeconds)
{
    QString text = TwoDigits(p.hour) + u':' + TwoDigits(p.minute);
    if (withSeconds)
        text += u':' + TwoDigits(p.second);
    return text;
}

} // namespace

void DateEditRules::SetStepSeconds(int seconds)
{
    m_stepSeconds = std::max(seconds, 1);
}

void DateEditRules::SetLimits(std::optional<double> lower, std::optional<double> upper)
{
    m_lower = lower;
    m_upper = upper;
}

double DateEditRules::Clamp(double value) const
{
    if (m_upper && value > *m_upper)
        value = *m_upper;
    if (m_lower && value < *m_lower)
        value = *m_lower;
    return value;
}

QString DateEditRules::Format(double value) const
{
    const Calendar::DateParts p = RoundedParts(value, m_secondsShown);
    return TwoDigits(p.day) + u'.' + TwoDigits(p.month) + u'.'
        + QStringLiteral("%1").arg(p.year, 4, 10, QLatin1Char('0')) + u' ' + TimeText(p, m_secondsShown);
}

QString DateEditRules::FormatTime(double fraction) const
{
    return TimeText(RoundedParts(fraction - std::floor(fraction), m_secondsShown), m_secondsShown);
}

std::optional<double> DateEditRules::Parse(QStringView text)
{
    return Calendar::ParseDate(text);
}

QList<double> DateEditRules::TimesOfDay(int stepSeconds)
{
    const int step = std::max(stepSeconds, 1);
    QList<double> times;
    times.reserve(SecondsPerDay / step + 1);
    for (int second = 0; second < SecondsPerDay; second += step)
        times.append(second / double(SecondsPerDay));
    return times;
}

double DateEditRules::WithTime(double value, double fraction) const
{
    const Calendar::DateParts p = Calendar::Split(value);
    const double ms = std::round((fraction - std::floor(fraction)) * SecondsPerDay * 1000.0);
    return Clamp(Calendar::FromParts(p.year, p.month, p.day, 0, 0, ms / 1000.0));
}

double DateEditRules::WithDate(double value, int year, int month, int day) const
{
    const Calendar::DateParts p = Calendar::Split(value);
    return Clamp(Calendar::FromParts(year, month, day, p.hour, p.minute, p.second + p.millisecond / 1000.0));
}

DateEditRules::Field DateEditRules::FieldAt(int cursorPosition) const
{
    // "dd.mm.yyyy hh:nn:ss": each field owns the positions up to and including its separator.
    if (cursorPosition <= 2)
        return Field::Day;
    if (cursorPosition <= 5)
        return Field::Month;
    if (cursorPosition <= 10)
        return Field::Year;
    if (cursorPosition <= 13)
        return Field::Hour;
    if (cursorPosition <= 16 || !m_secondsShown)
        return Field::Minute;
    return Field::Second;
}

double DateEditRules::Step(double value, Field field, int count) const
{
    Calendar::Unit unit = Calendar::Unit::Day;
    switch (field) {
    case Field::Day:
        unit = Calendar::Unit::Day;
        break;
    case Field::Month:
        unit = Calendar::Unit::Month;
        break;
    case Field::Year:
        unit = Calendar::Unit::Year;
        break;
    case Field::Hour:
        unit = Calendar::Unit::Hour;
        break;
    case Field::Minute:
        unit = Calendar::Unit::Minute;
        break;
    case Field::Second:
        unit = Calendar::Unit::Second;
        break;
    }
    return Clamp(Calendar::Add(unit, count, value));
}

double DateEditRules::StepByInterval(double value, int count) const
{
    return Clamp(Calendar::Add(Calendar::Unit::Second, std::int64_t(count) * m_stepSeconds, value));
}

std::optional<double> DateEditRules::ValueForKey(double value, int key, int cursorPosition) const
{
    switch (key) {
    case Qt::Key_Up:
        return Step(value, FieldAt(cursorPosition), 1);
    case Qt::Key_Down:
        return Step(value, FieldAt(cursorPosition), -1);
    case Qt::Key_PageUp:
        return StepByInterval(value, 1);
    case Qt::Key_PageDown:
        return StepByInterval(value, -1);
    default:
        return std::nullopt;
    }
}
