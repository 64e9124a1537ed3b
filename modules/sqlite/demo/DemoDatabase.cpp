// SPDX-License-Identifier: GPL-3.0-or-later
#include "DemoDatabase.h"

#include "Calendar.h"
#include "SqliteHandles.h"
#include "SqliteSchema.h"

#include <QByteArray>
#include <QFile>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <numbers>
#include <random>
#include <string>
#include <unordered_set>
#include <vector>

namespace {

constexpr std::uint64_t SiteSeed = 0x536f72616e6f2031ULL;

// Uniform and normal numbers computed here from the raw engine output, so that the data does
// not depend on how a standard library implements its distributions.
class Random
{
public:
    explicit Random(std::uint64_t seed)
        : m_engine(seed)
    { }
    double Uniform() { return static_cast<double>(m_engine() >> 11) * 0x1.0p-53; }
    double Normal()
    {
        const double u1 = 1.0 - Uniform();
        const double u2 = Uniform();
        return std::sqrt(-2.0 * std::log(u1)) * std::cos(2.0 * std::numbers::pi * u2);
    }
    int Between(int low, int high) { return low + static_cast<int>(Uniform() * (high - low + 1)); }

private:
    std::mt19937_64 m_engine;
};

// The fold of power factors that the program applies to channels of data type 8, in which
// the generator moves a factor smoothly through unity; it is its own inverse.
double FoldCosPhi(double value)
{
    if (std::fabs(value) > 1.0)
        return 1.1;
    return value > 0.0 ? 1.0 - value : -(value + 1.0);
}

double Round(double value, double step)
{
    return std::round(value / step) * step;
}

double SmoothStep(double from, double to, double x)
{
    const double t = std::clamp((x - from) / (to - from), 0.0, 1.0);
    return t * t * (3.0 - 2.0 * t);
}

// 1 between begin and end hours, with ramps of the given width centred on both.
double Window(double begin, double end, double ramp, double hour)
{
    return SmoothStep(begin - ramp / 2, begin + ramp / 2, hour)
        * (1.0 - SmoothStep(end - ramp / 2, end + ramp / 2, hour));
}

double Bump(double centre, double width, double hour)
{
    const double x = (hour - centre) / width;
    return std::exp(-x * x);
}

std::int64_t DayNumber(int year, int month, int day)
{
    return std::llround(Calendar::FromParts(year, month, day));
}

// German public holidays observed in every state.
std::unordered_set<std::int64_t> Holidays(int firstYear, int lastYear)
{
    std::unordered_set<std::int64_t> days;
    for (int y = firstYear; y <= lastYear; ++y) {
        // Easter Sunday by the Gregorian computus.
        const int a = y % 19, b = y / 100, c = y % 100, d = b / 4, e = b % 4;
        const int f = (b + 8) / 25, g = (b - f + 1) / 3, h = (19 * a + b - d - g + 15) % 30;
        const int i = c / 4, k = c % 4, l = (32 + 2 * e + 2 * i - h - k) % 7, m = (a + 11 * h + 22 * l) / 451;
        const int month = (h + l - 7 * m + 114) / 31, day = (h + l - 7 * m + 114) % 31 + 1;
        const std::int64_t easter = DayNumber(y, month, day);
        for (int offset : { -2, 1, 39, 50 })
            days.insert(easter + offset);
        for (auto [mo, da] : { std::pair { 1, 1 }, { 5, 1 }, { 10, 3 }, { 12, 25 }, { 12, 26 } })
            days.insert(DayNumber(y, mo, da));
    }
    return days;
}

enum class DayKind { Workday, Saturday, Sunday, Bridge };

enum class Schedule {
    TwoShift, ///< production, two shifts on workdays, a morning shift on Saturdays
    Ventilation, ///< air handling units in the production hall
    Office, ///< office hours on workdays
    Continuous ///< server room: around the clock
};

struct Logger
{
    int id;
    const char* name;
    const char* remark;
    int building; // category id
    int pathId;
    int stepMinutes;
    int startYear, startMonth, startDay;
    int fullDays;
    Schedule schedule;
    double idleShare; // activity that never stops (compressed air leaks)
    double baseKw, peakKw;
    double heatingKwPerK; // below 15 °C
    double coolingKwPerK; // above 18 °C
    double cosPhiIdle, cosPhiWork; // signed: negative is capacitive
    double noise; // relative
    double sensorOffset; // °C
};

constexpr int SiteId = 1;
constexpr std::array<std::tuple<int, const char*, const char*, int>, 2> Buildings = { {
    { 2, "Halle A", "Fertigung", 1 },
    { 3, "Verwaltung", "Büro und Rechenzentrum", 2 },
} };

constexpr std::array<Logger, 5> Loggers = { {
    { 11, "Einspeisung Halle A", "Zähler 10471, 15 min", 2, 1, 15, 2024, 1, 1, 731, Schedule::TwoShift, 0.0, 95.0,
        460.0, 0.0, 0.0, -0.97, 0.91, 0.035, 0.4 },
    { 12, "Druckluftstation", "Zähler 10472, 15 min", 2, 2, 15, 2024, 1, 1, 731, Schedule::TwoShift, 0.22, 6.0, 84.0,
        0.0, 0.6, 0.80, 0.86, 0.06, -0.3 },
    { 13, "Lüftung Halle A", "Zähler 10473, 15 min", 2, 3, 15, 2024, 1, 1, 731, Schedule::Ventilation, 0.0, 7.5, 42.0,
        0.0, 2.2, 0.90, 0.88, 0.03, 0.9 },
    { 14, "Hauptverteilung Verwaltung", "Zähler 20311, 15 min", 3, 1, 15, 2024, 1, 1, 731, Schedule::Office, 0.0, 24.0,
        105.0, 2.4, 1.5, -0.96, 0.95, 0.04, 0.2 },
    { 15, "Rechenzentrum", "Zähler 20312, 1 min", 3, 2, 1, 2025, 10, 1, 92, Schedule::Continuous, 0.0, 31.0, 44.0, 0.0,
        0.9, -0.99, 0.985, 0.012, -0.5 },
} };

struct ChannelKind
{
    int number;
    const char* name;
    const char* unit;
    int dataType; // 3 average, 2 sum, 8 cos phi (average of folded values), 5 average
};
constexpr std::array<ChannelKind, 5> ChannelKinds = { {
    { 1, "Wirkleistung", "kW", 3 },
    { 2, "Blindleistung", "kvar", 3 },
    { 3, "cos phi", "", 8 },
    { 4, "Wirkarbeit", "kWh", 2 },
    { 5, "Außentemperatur", "°C", 5 },
} };

int ChannelId(const Logger& logger, const ChannelKind& kind)
{
    return logger.id * 10 + kind.number;
}

// Outside temperature of the site: season, day and a slow weather process in hourly steps,
// interpolated in between. Drawn once for the whole demo period, so that every logger sees
// the same weather and a shorter run sees the same values.
class Weather
{
public:
    explicit Weather(Random& random)
        : m_start(Calendar::FromParts(2024, 1, 1))
    {
        const int hours = (DayNumber(2026, 1, 2) - DayNumber(2024, 1, 1)) * 24 + 1;
        const double keep = std::exp(-1.0 / 72.0);
        const double spread = 3.5 * std::sqrt(1.0 - keep * keep);
        m_hourly.resize(static_cast<size_t>(hours));
        double w = 0.0;
        for (double& value : m_hourly) {
            value = w;
            w = w * keep + spread * random.Normal();
        }
    }

    double At(double date) const
    {
        const double hoursIn = (date - m_start) * 24.0;
        const auto index = std::clamp<std::int64_t>(
            static_cast<std::int64_t>(std::floor(hoursIn)), 0, static_cast<std::int64_t>(m_hourly.size()) - 2);
        const double t = std::clamp(hoursIn - static_cast<double>(index), 0.0, 1.0);
        const double weather = m_hourly[index] * (1.0 - t) + m_hourly[index + 1] * t;

        const double dayOfYear = date - std::floor(date / 365.2425) * 365.2425;
        const double hour = (date - std::floor(date)) * 24.0;
        const double season = -std::cos(2.0 * std::numbers::pi * (dayOfYear - 15.0) / 365.2425); // -1 winter
        const double dailySwing = 3.0 + 2.0 * (season + 1.0) / 2.0;
        return 9.8 + 9.0 * season + dailySwing * std::cos(2.0 * std::numbers::pi * (hour - 15.0) / 24.0) + weather;
    }

private:
    double m_start;
    std::vector<double> m_hourly;
};

double Activity(Schedule schedule, DayKind kind, double hour, int month, int day)
{
    switch (schedule) {
    case Schedule::TwoShift: {
        double a = 0.0;
        if (kind == DayKind::Workday)
            a = Window(6.0, 22.0, 1.0, hour) * (1.0 - 0.12 * Bump(12.25, 0.4, hour) - 0.08 * Bump(14.0, 0.3, hour));
        else if (kind == DayKind::Saturday)
            a = 0.55 * Window(6.0, 14.0, 1.0, hour);
        else if (kind == DayKind::Bridge)
            a = 0.15 * Window(7.0, 15.0, 1.0, hour);
        // Company holidays in August: one shift at half load.
        if (month == 8 && day >= 5 && day <= 23)
            a *= 0.5;
        return a;
    }
    case Schedule::Ventilation:
        if (kind == DayKind::Workday)
            return Window(5.5, 20.0, 1.0, hour);
        if (kind == DayKind::Saturday)
            return 0.4 * Window(6.0, 14.0, 1.0, hour);
        return 0.0;
    case Schedule::Office:
        if (kind == DayKind::Workday)
            return Window(7.5, 17.5, 2.0, hour) * (1.0 + 0.15 * Bump(12.0, 0.75, hour)) / 1.15;
        if (kind == DayKind::Bridge)
            return 0.3 * Window(8.0, 14.0, 2.0, hour);
        if (kind == DayKind::Saturday)
            return 0.05 * Window(8.0, 13.0, 2.0, hour);
        return 0.0;
    case Schedule::Continuous:
        return 0.5 + 0.1 * std::sin(2.0 * std::numbers::pi * (hour - 9.0) / 24.0);
    }
    return 0.0;
}

// A stretch of steps [begin, end) of one logger.
struct Gap
{
    std::int64_t begin;
    std::int64_t end;
    bool outage; // true: no rows at all; false: the temperature sensor failed (NULL values)
};

std::vector<Gap> GapsOf(const Logger& logger)
{
    const std::int64_t perDay = 1440 / logger.stepMinutes;
    const std::int64_t steps = perDay * logger.fullDays;
    const auto at = [&](int day, double hour) { return day * perDay + std::llround(hour * 60.0 / logger.stepMinutes); };
    std::vector<Gap> gaps;
    // One of each kind on the second day, so that even a short demo has them.
    switch (logger.id) {
    case 11:
        gaps.push_back({ at(1, 10.0), at(1, 12.0), true });
        break;
    case 13:
        gaps.push_back({ at(1, 6.0), at(1, 9.0), false });
        break;
    case 15:
        gaps.push_back({ at(1, 3.0), at(1, 3.0 + 20.0 / 60.0), true });
        gaps.push_back({ at(1, 14.0), at(1, 14.5), false });
        break;
    default:
        break;
    }
    Random random(SiteSeed ^ static_cast<std::uint64_t>(logger.id * 7919));
    for (int i = 0; i < 3; ++i) {
        const std::int64_t begin = static_cast<std::int64_t>(random.Uniform() * static_cast<double>(steps));
        gaps.push_back({ begin, begin + random.Between(1, 10) * 60 / logger.stepMinutes, true });
    }
    for (int i = 0; i < 2; ++i) {
        const std::int64_t begin = static_cast<std::int64_t>(random.Uniform() * static_cast<double>(steps));
        gaps.push_back({ begin, begin + random.Between(2, 48) * 60 / logger.stepMinutes, false });
    }
    return gaps;
}

class Writer
{
public:
    QString error;

    bool Open(const QString& path)
    {
        sqlite3* raw = nullptr;
        const int rc = sqlite3_open_v2(
            QFile::encodeName(path).constData(), &raw, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
        m_db.reset(raw);
        return Check(rc, "open");
    }

    // The file is written beside its destination and only renamed when complete, so a crash
    // leaves nothing half-written behind: no journal is needed.
    bool Exec(const std::string& sql)
    {
        return Check(sqlite3_exec(m_db.get(), sql.c_str(), nullptr, nullptr, nullptr), "execute");
    }

    SqliteStatement Prepare(std::string_view sql)
    {
        int rc = SQLITE_OK;
        SqliteStatement statement = PrepareStatement(m_db.get(), sql, rc);
        Check(rc, "prepare");
        return statement;
    }

    bool Step(sqlite3_stmt* statement)
    {
        const int rc = sqlite3_step(statement);
        sqlite3_reset(statement);
        return Check(rc == SQLITE_DONE ? SQLITE_OK : rc, "insert");
    }

    bool Check(int rc, const char* what)
    {
        if (rc == SQLITE_OK)
            return true;
        if (error.isEmpty())
            error = QString("could not %1: %2").arg(what, m_db ? sqlite3_errmsg(m_db.get()) : sqlite3_errstr(rc));
        return false;
    }

    void Close() { m_db.reset(); }

private:
    SqliteConnection m_db;
};

void BindText(sqlite3_stmt* statement, int index, const char* text)
{
    sqlite3_bind_text(statement, index, text, -1, SQLITE_TRANSIENT);
}

bool WriteStructure(Writer& db)
{
    SqliteStatement info = db.Prepare("INSERT INTO info (key, value) VALUES (?1, ?2)");
    SqliteStatement category = db.Prepare(
        "INSERT INTO categories (id, name, remark, parent, kind, path_id) VALUES (?1, ?2, ?3, ?4, ?5, ?6)");
    SqliteStatement channel = db.Prepare("INSERT INTO channels (id, name, unit, data_type, category, parent_channel, "
                                         "path_id) VALUES (?1, ?2, ?3, ?4, ?5, 0, ?6)");
    if (!info || !category || !channel)
        return false;

    const auto putInfo = [&](const std::string& key, const std::string& value) {
        BindText(info.get(), 1, key.c_str());
        BindText(info.get(), 2, value.c_str());
        return db.Step(info.get());
    };
    bool ok = putInfo(std::string(SqliteSchema::KeyVersion), std::to_string(SqliteSchema::Version))
        && putInfo(std::string(SqliteSchema::KeyResolution), "900");

    const auto putCategory
        = [&](int id, const char* name, const char* remark, int parent, std::string_view kind, int pathId) {
              sqlite3_bind_int(category.get(), 1, id);
              BindText(category.get(), 2, name);
              BindText(category.get(), 3, remark);
              sqlite3_bind_int(category.get(), 4, parent);
              BindText(category.get(), 5, std::string(kind).c_str());
              sqlite3_bind_int(category.get(), 6, pathId);
              return db.Step(category.get());
          };
    ok = ok && putCategory(SiteId, "Standort Lindenfeld", "Demo-Daten", 0, SqliteSchema::KindFolder, 1);
    for (const auto& [id, name, remark, pathId] : Buildings)
        ok = ok && putCategory(id, name, remark, SiteId, SqliteSchema::KindFolder, pathId);
    for (const Logger& logger : Loggers) {
        ok = ok
            && putCategory(
                logger.id, logger.name, logger.remark, logger.building, SqliteSchema::KindMeasuring, logger.pathId);
        for (const ChannelKind& kind : ChannelKinds) {
            sqlite3_bind_int(channel.get(), 1, ChannelId(logger, kind));
            BindText(channel.get(), 2, kind.name);
            BindText(channel.get(), 3, kind.unit);
            sqlite3_bind_int(channel.get(), 4, kind.dataType);
            sqlite3_bind_int(channel.get(), 5, logger.id);
            sqlite3_bind_int(channel.get(), 6, kind.number);
            ok = ok && db.Step(channel.get());
            if (logger.stepMinutes * 60 != 900)
                ok = ok
                    && putInfo(
                        std::string(SqliteSchema::KeyChannelResolutionPrefix) + std::to_string(ChannelId(logger, kind)),
                        std::to_string(logger.stepMinutes * 60));
        }
    }
    return ok;
}

// The five channels of one logger, step by step; NaN marks a NULL value.
struct Series
{
    std::vector<double> time, power, reactive, cosPhi, energy, temperature;
    std::vector<bool> present;
};

Series Compute(const Logger& logger, int days, const Weather& weather, const std::unordered_set<std::int64_t>& holidays)
{
    const std::int64_t perDay = 1440 / logger.stepMinutes;
    const std::int64_t steps = perDay * days;
    const std::vector<Gap> gaps = GapsOf(logger);
    Random random(SiteSeed + static_cast<std::uint64_t>(logger.id));
    const double foldIdle = FoldCosPhi(logger.cosPhiIdle);
    const double foldWork = FoldCosPhi(logger.cosPhiWork);
    const double hoursPerStep = logger.stepMinutes / 60.0;

    Series s;
    for (auto* v : { &s.time, &s.power, &s.reactive, &s.cosPhi, &s.energy, &s.temperature })
        v->resize(static_cast<size_t>(steps));
    s.present.assign(static_cast<size_t>(steps), true);

    double noise = 0.0;
    DayKind kind = DayKind::Workday;
    Calendar::DateParts parts;
    for (std::int64_t step = 0; step < steps; ++step) {
        const double time = Calendar::FromParts(
            logger.startYear, logger.startMonth, logger.startDay, 0, static_cast<int>(step * logger.stepMinutes));
        if (step % perDay == 0) {
            parts = Calendar::Split(time);
            const int weekday = Calendar::Weekday(time); // 1 Sunday ... 7 Saturday
            if (holidays.contains(std::llround(std::floor(time))) || weekday == 1)
                kind = DayKind::Sunday;
            else if (parts.month == 12 && parts.day >= 24)
                kind = DayKind::Bridge;
            else if (weekday == 7)
                kind = DayKind::Saturday;
            else
                kind = DayKind::Workday;
        }
        const double hour = (time - std::floor(time)) * 24.0;
        const double outside = weather.At(time);

        const double activity = logger.idleShare
            + (1.0 - logger.idleShare) * Activity(logger.schedule, kind, hour, parts.month, parts.day);
        noise = 0.8 * noise + 0.6 * logger.noise * random.Normal();
        double power = logger.baseKw + (logger.peakKw - logger.baseKw) * activity
            + logger.heatingKwPerK * std::max(0.0, 15.0 - outside)
            + logger.coolingKwPerK * std::max(0.0, outside - 18.0);
        power = Round(std::max(0.0, power * (1.0 + noise)), 0.01);

        // The power factor moves between its idle and its working value on the folded scale,
        // which passes smoothly through 1 where the signed value jumps from +1 to -1.
        const double load = std::clamp((power - logger.baseKw) / (logger.peakKw - logger.baseKw), 0.0, 1.0);
        const double folded = std::clamp(foldIdle + (foldWork - foldIdle) * load + 0.004 * random.Normal(), -0.5, 0.5);
        const double cosPhi = FoldCosPhi(folded);
        const double reactive
            = Round(power * std::tan(std::acos(std::fabs(cosPhi))) * (cosPhi >= 0.0 ? 1.0 : -1.0), 0.01);
        // As a meter does: the power factor of the interval from its active and reactive power.
        const double apparent = std::hypot(power, reactive);
        const double measured = apparent > 0.0 ? power / apparent : 1.0;

        const double sensor = Round(outside + logger.sensorOffset + 0.08 * random.Normal(), 0.1);

        s.time[step] = time;
        s.power[step] = power;
        s.reactive[step] = reactive;
        s.cosPhi[step] = Round(reactive < 0.0 ? -measured : measured, 0.0001);
        s.energy[step] = Round(power * hoursPerStep, 0.001);
        s.temperature[step] = sensor;
    }
    for (const Gap& gap : gaps)
        for (std::int64_t step = std::max<std::int64_t>(gap.begin, 0); step < std::min(gap.end, steps); ++step) {
            if (gap.outage)
                s.present[step] = false;
            else
                s.temperature[step] = std::nan("");
        }
    return s;
}

bool WriteSamples(Writer& db, sqlite3_stmt* insert, int channel, const Series& s, const std::vector<double>& values,
    std::int64_t& count)
{
    sqlite3_bind_int(insert, 1, channel);
    for (size_t i = 0; i < values.size(); ++i) {
        if (!s.present[i])
            continue;
        sqlite3_bind_double(insert, 2, s.time[i]);
        if (std::isnan(values[i]))
            sqlite3_bind_null(insert, 3);
        else
            sqlite3_bind_double(insert, 3, values[i]);
        if (!db.Step(insert))
            return false;
        ++count;
    }
    return true;
}

} // namespace

QString WriteDemoDatabase(const QString& path, const DemoOptions& options, DemoSummary* summary)
{
    const QString part = path + ".part";
    QFile::remove(part);
    DemoSummary written;
    Writer db;
    bool ok = db.Open(part) && db.Exec("PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF;")
        && db.Exec(std::string(SqliteSchema::CreateStatements)) && db.Exec("BEGIN") && WriteStructure(db);

    if (ok) {
        Random siteRandom(SiteSeed);
        const Weather weather(siteRandom);
        const auto holidays = Holidays(2023, 2026);
        SqliteStatement insert = db.Prepare("INSERT INTO samples (channel, time, value) VALUES (?1, ?2, ?3)");
        ok = insert != nullptr;
        for (const Logger& logger : Loggers) {
            if (!ok)
                break;
            const int days = options.days > 0 ? std::min(options.days, logger.fullDays) : logger.fullDays;
            const Series s = Compute(logger, days, weather, holidays);
            const std::array<const std::vector<double>*, 5> values
                = { &s.power, &s.reactive, &s.cosPhi, &s.energy, &s.temperature };
            for (size_t k = 0; k < ChannelKinds.size() && ok; ++k) {
                ok = WriteSamples(db, insert.get(), ChannelId(logger, ChannelKinds[k]), s, *values[k], written.samples);
                ++written.channels;
            }
        }
    }
    ok = ok && db.Exec("COMMIT");
    const QString error = db.error;
    db.Close();
    if (!ok) {
        QFile::remove(part);
        return error.isEmpty() ? QStringLiteral("could not write the database") : error;
    }
    // Replaces an existing file in one step; QFile::rename would refuse to.
    std::error_code failed;
    std::filesystem::rename(QFile::encodeName(part).toStdString(), QFile::encodeName(path).toStdString(), failed);
    if (failed) {
        QFile::remove(part);
        return QStringLiteral("could not rename %1 to %2").arg(part, path);
    }
    if (summary)
        *summary = written;
    return QString();
}
