// SPDX-License-Identifier: GPL-3.0-or-later
// Rules of a view's time window: period starts, date formats, rows for time ticks, zoom history.
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

namespace {

// A round step of time with its length in milliseconds (months and years at their shortest,
// so that no step yields more ticks than counted).
struct RoundStep
{
    Calendar::Unit unit;
    int count;
    std::int64_t ms;
};

constexpr std::int64_t S = 1000, N = 60 * S, H = 60 * N, D = 24 * H;
using U = Calendar::Unit;
// Steps that divide a day, then days, a week, months and years, finest first.
constexpr RoundStep RoundSteps[] = { { U::Second, 1, S }, { U::Second, 2, 2 * S }, { U::Second, 5, 5 * S },
    { U::Second, 10, 10 * S }, { U::Second, 15, 15 * S }, { U::Second, 30, 30 * S }, { U::Minute, 1, N },
    { U::Minute, 2, 2 * N }, { U::Minute, 5, 5 * N }, { U::Minute, 10, 10 * N }, { U::Minute, 15, 15 * N },
    { U::Minute, 30, 30 * N }, { U::Hour, 1, H }, { U::Hour, 2, 2 * H }, { U::Hour, 3, 3 * H }, { U::Hour, 6, 6 * H },
    { U::Hour, 12, 12 * H }, { U::Day, 1, D }, { U::Day, 2, 2 * D }, { U::Week, 1, 7 * D }, { U::Month, 1, 28 * D },
    { U::Month, 2, 59 * D }, { U::Month, 3, 89 * D }, { U::Month, 6, 181 * D }, { U::Year, 1, 365 * D },
    { U::Year, 2, 730 * D }, { U::Year, 5, 1826 * D }, { U::Year, 10, 3652 * D }, { U::Year, 20, 7305 * D },
    { U::Year, 50, 18262 * D }, { U::Year, 100, 36524 * D } };

// The rows first..last at or just after the round times of one step, each once, from at most
// `limit` + 2 round times.
std::vector<qsizetype> RowsAtStep(
    std::span<const double> times, qsizetype first, qsizetype last, const RoundStep& step, std::int64_t limit)
{
    const std::int64_t from = Calendar::ToMilliseconds(times[size_t(first)]);
    const std::int64_t to = Calendar::ToMilliseconds(times[size_t(last)]);

    // The first round time at or after the first row's.
    const Calendar::DateParts parts = Calendar::Split(times[size_t(first)]);
    double tick = 0;
    if (step.ms < D) {
        const std::int64_t aligned = (from + step.ms - 1) / step.ms * step.ms;
        tick = double(aligned / D) + double(aligned % D) / double(D);
    } else if (step.unit == U::Day || step.unit == U::Week) {
        double day = Calendar::FromParts(parts.year, parts.month, parts.day);
        if (Calendar::ToMilliseconds(day) < from)
            day += 1;
        // Weeks start on Monday (weekday 2, Sunday being 1).
        tick = step.unit == U::Week ? day + double((9 - Calendar::Weekday(day)) % 7) : day;
    } else {
        const int months = step.unit == U::Month ? step.count : 12 * step.count;
        // Months counted from January of year 0, so that quarters begin in January, April ...
        std::int64_t index = std::int64_t(parts.year) * 12 + parts.month - 1;
        if (Calendar::ToMilliseconds(Calendar::FromParts(parts.year, parts.month, 1)) < from)
            ++index;
        index = (index + months - 1) / months * months;
        tick = Calendar::FromParts(int(index / 12), int(index % 12) + 1, 1);
    }

    std::vector<qsizetype> rows;
    const auto begin = times.begin() + first;
    const auto end = times.begin() + last + 1;
    for (std::int64_t n = 0; n <= limit + 1; ++n) {
        const std::int64_t at = Calendar::ToMilliseconds(tick);
        if (at > to)
            break;
        // The first row at or after the round time, compared in whole milliseconds.
        const auto found
            = std::partition_point(begin, end, [at](double time) { return Calendar::ToMilliseconds(time) < at; });
        const qsizetype row = first + qsizetype(found - begin);
        if (row <= last && (rows.empty() || row > rows.back()))
            rows.push_back(row);
        tick = Calendar::Add(step.unit, step.count, tick);
    }
    return rows;
}

} // namespace

std::vector<qsizetype> RoundTimeRows(std::span<const double> times, qsizetype first, qsizetype last, int most)
{
    const auto count = static_cast<qsizetype>(times.size());
    first = std::max<qsizetype>(first, 0);
    last = std::min(last, count - 1);
    if (most < 1 || first >= last)
        return {};
    const std::int64_t from = Calendar::ToMilliseconds(times[size_t(first)]);
    const std::int64_t to = Calendar::ToMilliseconds(times[size_t(last)]);
    if (to <= from)
        return {};

    const auto fits = std::find_if(std::begin(RoundSteps), std::end(RoundSteps),
        [&](const RoundStep& step) { return (to - from) / step.ms + 1 <= most; });
    if (fits == std::end(RoundSteps))
        return {};
    std::vector<qsizetype> rows = RowsAtStep(times, first, last, *fits, most);
    // A step that fits may have no round time within the rows (a month that begins after
    // them): finer steps then give ticks, of which as many as fit are kept, evenly spread.
    for (auto finer = fits; rows.empty() && finer != std::begin(RoundSteps);) {
        --finer;
        rows = RowsAtStep(times, first, last, *finer, (to - from) / finer->ms + 1);
    }
    if (rows.size() > size_t(most)) {
        std::vector<qsizetype> spread;
        for (int i = 0; i < most; ++i)
            spread.push_back(rows[size_t(i) * rows.size() / size_t(most)]);
        rows = std::move(spread);
    }
    return rows;
}

} // namespace ViewPeriods
