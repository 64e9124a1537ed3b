// SPDX-License-Identifier: GPL-3.0-or-later
#include "ViewPeriods.h"

#include "Calendar.h"
#include "Formatter.h"
#include "Numeric.h"

#include <QLocale>
#include <QStringList>

namespace ViewPeriods {

double PeriodStart(const QString& unit, double from, double windowEnd)
{
    const Calendar::DateParts start = Calendar::Split(from);
    const Calendar::DateParts end = Calendar::Split(windowEnd);
    if (unit == u"n")
        return Calendar::FromParts(start.year, start.month, start.day, start.hour, start.minute);
    if (unit == u"h")
        return Calendar::FromParts(start.year, start.month, start.day, start.hour);
    if (unit == u"d" || unit == u"ww")
        return Calendar::FromParts(start.year, start.month, start.day);
    if (unit == u"m")
        return Calendar::FromParts(end.year, end.month, 0);
    if (unit == u"yyyy")
        return Calendar::FromParts(end.year, 0, 0);
    return from;
}

QString UnitFromPoints(double windowSeconds, double pointCount)
{
    if (pointCount < 1)
        return QString();
    const double s = windowSeconds / pointCount;
    const struct
    {
        double low;
        double high;
        const char* unit;
    } ranges[] = { { 0.9, 1.1, "s" }, { 59, 61, "n" }, { 3550, 3650, "h" }, { 86000, 87000, "d" },
        { 2419000, 2678500, "mm" }, { 31530000, 31623000, "yyyy" } };
    for (const auto& range : ranges)
        if (s >= range.low && s < range.high)
            return QString::fromLatin1(range.unit);
    return QString();
}

QString DateFormat(bool forAxis, qint64 windowSeconds, const QString& intervalUnit, double pointCount)
{
    const qint64 d = windowSeconds;
    const QString u = intervalUnit.isEmpty() ? UnitFromPoints(double(windowSeconds), pointCount) : intervalUnit;
    if (u == u"mm")
        return QString();
    if (!forAxis) {
        if (u == u"s" || u.isEmpty())
            return QStringLiteral("dd.mm.yyyy hh:nn:ss");
        if (u == u"n" || u == u"h")
            return QStringLiteral("dd.mm.yyyy hh:nn");
        if (u == u"d")
            return QStringLiteral("dd.mm.yyyy");
        if (u == u"ww")
            return QStringLiteral("\\K\\W ww");
        if (u == u"m")
            return QStringLiteral("mm.yyyy");
        if (u == u"yyyy")
            return QStringLiteral("yyyy");
        return QString();
    }
    constexpr qint64 Minute = 60, Hour = 3600, Day = 86400, Month = 2592000, Year = 31536000;
    if (u == u"s") {
        if (d <= Minute)
            return QStringLiteral(":ss");
        if (d <= Hour)
            return QStringLiteral(":nn:ss");
        if (d <= Day)
            return QStringLiteral("hh:nn:ss");
        return d <= Year ? QStringLiteral("dd.mm. hh:nn:ss") : QStringLiteral("dd.mm.yy hh:nn:ss");
    }
    if (u == u"d") {
        if (d <= Month)
            return QStringLiteral("dd.");
        return d <= Year ? QStringLiteral("dd.mm.") : QStringLiteral("dd.mm.yy");
    }
    if (u == u"ww")
        return d <= Year ? QStringLiteral("\\K\\W ww") : QStringLiteral("\\K\\W ww\\, yy");
    if (u == u"m")
        return d <= Year ? QStringLiteral("mm") : QStringLiteral("mm.yy");
    if (u == u"yyyy")
        return QStringLiteral("yyyy");
    // "n", "h", none and any other unit
    if (u == u"n" && d <= Hour)
        return QStringLiteral(":nn");
    if (d <= Day)
        return QStringLiteral("hh:nn");
    return d <= Year ? QStringLiteral("dd.mm. hh:nn") : QStringLiteral("dd.mm.yy hh:nn");
}

namespace {

// History texts are written the same way in every locale, so that a file read elsewhere
// can still zoom back; reading also takes the locale's decimal separator.
QString DateText(double date)
{
    return Formatter().FormatDate(date, u"dd.mm.yyyy hh:nn:ss");
}

QString NumberText(double value)
{
    return QString::number(value, 'g', 17);
}

std::optional<double> Number(const QString& text)
{
    if (!IsNumeric(text))
        return std::nullopt;
    QString plain = text;
    plain.replace(QLocale().decimalPoint(), QStringLiteral("."));
    return LeadingNumber(plain);
}

} // namespace

QString PushZoom(const QString& history, const ZoomEntry& entry)
{
    const QStringList fields = { DateText(entry.from), DateText(entry.to), NumberText(entry.y1Min),
        NumberText(entry.y1Max), NumberText(entry.y2Min), NumberText(entry.y2Max) };
    return history + QLatin1Char('\t') + fields.join(QLatin1Char('|'));
}

std::optional<ZoomEntry> LastZoom(const QString& history)
{
    if (history.isEmpty())
        return std::nullopt;
    const QStringList fields = history.mid(history.lastIndexOf(QLatin1Char('\t')) + 1).split(QLatin1Char('|'));
    if (fields.size() < 6)
        return std::nullopt;
    const auto from = Calendar::ParseDate(fields[0]);
    const auto to = Calendar::ParseDate(fields[1]);
    const auto y1Min = Number(fields[2]);
    const auto y1Max = Number(fields[3]);
    if (!from || !to || !y1Min || !y1Max)
        return std::nullopt;
    ZoomEntry entry { *from, *to, *y1Min, *y1Max };
    const auto y2Min = Number(fields[4]);
    const auto y2Max = Number(fields[5]);
    if (y2Min && y2Max) {
        entry.y2Min = *y2Min;
        entry.y2Max = *y2Max;
        entry.hasY2 = true;
    }
    return entry;
}

QString PopZoom(const QString& history)
{
    const qsizetype tab = history.lastIndexOf(QLatin1Char('\t'));
    return tab < 0 ? QString() : history.left(tab);
}

} // namespace ViewPeriods
