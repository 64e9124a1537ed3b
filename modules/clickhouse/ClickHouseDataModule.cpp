// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClickHouseDataModule.h"

#include "Calendar.h"
#include "LoggerCatalog.h"
#include "LoggerChannelIds.h"
#include "ModuleSettings.h"
#include "RegistryKey.h"
#include "SqliteSchema.h"
#include "frm_ClickHouseConfig.h"

#include <QSet>

#include <algorithm>
#include <cmath>
#include <numeric>

using ClickHouse::ExternalTable;
using ClickHouse::Outcome;
using ClickHouse::Reader;

namespace {

const QString UrlValue = QStringLiteral("URL");
const QString DatabaseValue = QStringLiteral("Database");
const QString UserValue = QStringLiteral("User");
const QString TimeoutValue = QStringLiteral("Timeout");
const QString AggregateValue = QStringLiteral("Aggregate");
const QString OpenTitle = QStringLiteral("error opening database");
const QString ReadTitle = QStringLiteral("error reading database");

// Every value a query needs (channel ids, window bounds, the database name) comes in tables sent
// with it, never in its text. The scalar subqueries become constants before the table is read,
// so the key (channel, time) still narrows what is read.
constexpr std::string_view ColumnsSql
    = "SELECT table, name FROM system.columns WHERE database = (SELECT name FROM target) "
      "AND table IN ('info', 'categories', 'channels', 'samples') FORMAT RowBinary";
constexpr std::string_view InfoSql = "SELECT toString(key), toString(value) FROM info "
                                     "WHERE key = 'resolution' OR startsWith(key, 'resolution.') FORMAT RowBinary";
constexpr std::string_view KeysSql
    = "SELECT toInt64(id), toInt64(category), toInt64(path_id) FROM channels ORDER BY id FORMAT RowBinary";
constexpr std::string_view OverviewSql
    = "SELECT toInt64(id), toString(name), toString(unit), toInt32(data_type), toInt64(category), toInt64(path_id) "
      "FROM channels ORDER BY id FORMAT RowBinary";
constexpr std::string_view CategoriesSql = "SELECT toInt64(id), toString(name), toString(remark), toInt64(parent), "
                                           "toString(kind) FROM categories FORMAT RowBinary";
constexpr std::string_view ChannelsSql = "SELECT toInt64(id), toString(name), toInt64(category), "
                                         "toInt64(parent_channel), toInt64(path_id) FROM channels FORMAT RowBinary";
constexpr std::string_view PeriodSql
    = "SELECT count(), min(time), max(time) FROM samples WHERE channel = (SELECT ch FROM ids) FORMAT RowBinary";
// The samples of the listed channels in the window. Read on one thread they come in the order of
// the table's key (channel, time) from each part; sorting on the server would cost twice the
// read, so ReadRaw checks the order and sorts only what came otherwise (several parts).
constexpr std::string_view SamplesSql
    = "SELECT toInt64(channel), toFloat64(time), CAST(value AS Nullable(Float64)) FROM samples "
      "WHERE channel IN (SELECT ch FROM ids) AND time >= (SELECT lo FROM win) AND time <= (SELECT hi FROM win) "
      "SETTINGS max_threads = 1 FORMAT RowBinary";
// The samples of the listed channels in the window, with the millisecond of each time computed as
// Calendar::ToMilliseconds does, and a value equal to the program's NoValue counted as missing, as
// on the program's grid.
#define SORANO_CH_STEP_ROWS                                                                                            \
    "FROM (SELECT toInt64(channel) AS channel, toFloat64(time) AS time, "                                              \
    "nullIf(CAST(value AS Nullable(Float64)), -1e300) AS v, toInt64(time) AS w, "                                      \
    "w * 86400000 + toInt64(abs(time - w) * 86400000 + 0.5) AS ms, _part_index AS part FROM samples "                  \
    "WHERE channel IN (SELECT ch FROM ids) AND time >= (SELECT lo FROM win) AND time <= (SELECT hi FROM win)) "        \
    "WHERE ms >= (SELECT g0 FROM win) "
// One row per channel and step: the step number, the non-missing values, their largest and
// smallest, their sum, and whether all of them lie in one part of the table. Read on one thread,
// the rows of one part come in order of time, so that the plain sum adds the values one by one in
// that order, as the grid does (a missing value adds 0.0, which leaves a sum that starts at +0.0 as
// it was). A step whose samples lie in several parts is summed again by RedoStepsSql.
constexpr std::string_view StepsSql
    = "SELECT channel, intDiv(ms - (SELECT g0 FROM win), (SELECT st FROM win)) AS k, count(v), max(v), min(v), "
      "sum(ifNull(v, 0.)), min(part) = max(part) " SORANO_CH_STEP_ROWS
      "GROUP BY channel, k ORDER BY channel, k SETTINGS max_threads = 1 FORMAT RowBinary";
// The listed steps again, their values summed in order of time whatever the parts (arrayCumSum runs
// sequentially over the values sorted by time). Costly: for the few steps that need it.
constexpr std::string_view RedoStepsSql
    = "SELECT channel, intDiv(ms - (SELECT g0 FROM win), (SELECT st FROM win)) AS k, count(v), max(v), min(v), "
      "arrayElement(arrayCumSum(arraySort((x, t) -> t, groupArray(ifNull(v, 0.)), groupArray(time))), -1), "
      "1 " SORANO_CH_STEP_ROWS "AND (channel, k) IN (SELECT ch, k FROM redo) "
      "GROUP BY channel, k ORDER BY channel, k FORMAT RowBinary";
#undef SORANO_CH_STEP_ROWS
constexpr std::string_view VersionSql = "SELECT version() FORMAT TabSeparated";

constexpr std::int64_t MsPerDay = 86'400'000;
constexpr std::chrono::seconds PeriodLifetime { 10 };

QString ToQString(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QString LowerFirst(QString text)
{
    if (!text.isEmpty())
        text[0] = text[0].toLower();
    return text;
}

ExternalTable IdTable(const std::vector<qint64>& ids)
{
    ExternalTable table { "ids", "ch Int64", {} };
    for (const qint64 id : ids)
        ClickHouse::Put(table.rows, static_cast<std::int64_t>(id));
    return table;
}

ExternalTable WindowTable(double from, double to, qint64 gridStartMs = 0, qint64 stepMs = 1)
{
    ExternalTable table { "win", "lo Float64, hi Float64, g0 Int64, st Int64", {} };
    ClickHouse::Put(table.rows, from - Calendar::HalfMillisecond);
    ClickHouse::Put(table.rows, to + Calendar::HalfMillisecond);
    ClickHouse::Put(table.rows, static_cast<std::int64_t>(gridStartMs));
    ClickHouse::Put(table.rows, static_cast<std::int64_t>(stepMs));
    return table;
}

// Data types the server aggregates: largest, sum, mean, smallest.
bool Aggregates(qint32 dataType)
{
    return dataType >= 1 && dataType <= 7;
}

void ConfigureConnection(ClickHouse::Connection& http, const ClickHouseDataModule::Settings& settings)
{
    http.Configure(QUrl(settings.url), settings.database, settings.user, settings.timeoutSeconds * 1000);
}

} // namespace

ClickHouseDataModule::ClickHouseDataModule(const DataModuleRegistration& registration, QObject* parent)
    : QObject(parent)
    , m_registration(registration)
{ }

ClickHouseDataModule::~ClickHouseDataModule() = default;

void ClickHouseDataModule::SetMessageHandler(MessageHandlerInterface* handler)
{
    m_pMessageHandler = handler;
}

void ClickHouseDataModule::Log(const QString& title, const QString& text, const QString& source, qint16 level) const
{
    if (m_pMessageHandler)
        m_pMessageHandler->WriteLog(title, text, source, level);
}

ClickHouseDataModule::Settings ClickHouseDataModule::ConfiguredSettings() const
{
    Settings settings;
    const auto read = [&](const QString& value, QString& target) {
        const QString text = ModuleSettings::Read(m_registration.name, value);
        if (!text.isEmpty())
            target = text;
    };
    read(UrlValue, settings.url);
    read(DatabaseValue, settings.database);
    read(UserValue, settings.user);
    settings.timeoutSeconds = ModuleSettings::ReadPositive(m_registration.name, TimeoutValue, settings.timeoutSeconds);
    settings.aggregate = ModuleSettings::ReadSwitch(m_registration.name, AggregateValue, settings.aggregate);
    return settings;
}

qint32 ClickHouseDataModule::SelfCheck(qint32& status)
{
    // The HTTP library must be usable; the server is a matter of configuration.
    status = ClickHouse::Connection::Available() ? 1 : -1;
    return status;
}

qint32 ClickHouseDataModule::Initialize(const QString& param, qint32& status)
{
    m_settings = ConfiguredSettings();
    if (!param.trimmed().isEmpty())
        m_settings.url = param.trimmed();
    m_bConfigured = true;
    m_bReady = false;
    status = 1;
    EnsureReady("ClickHouseDataModule.Initialize", status);
    return status;
}

qint32 ClickHouseDataModule::Fail(qint32 status, const QString& what, const QString& reason, const QString& source)
{
    // A connection that failed is checked again at the next call, so a server that is back works.
    if (status == Unreachable || status == TimedOut || status == LoginRefused)
        m_bReady = false;
    m_sFailure = LowerFirst(what) + " failed: " + reason + " (" + Server() + ")";
    Log(m_bReady ? ReadTitle : OpenTitle,
        what + " of module " + m_registration.name + " (" + Server() + ") failed: " + reason + ".", source, 3);
    return status;
}

qint32 ClickHouseDataModule::Query(
    std::string_view sql, const std::vector<ExternalTable>& tables, const QString& what, const QString& source)
{
    return Status(m_http.Run(sql, tables), m_http, what, source);
}

qint32 ClickHouseDataModule::Status(
    Outcome outcome, const ClickHouse::Connection& http, const QString& what, const QString& source)
{
    switch (outcome) {
    case Outcome::Ok:
        return 1;
    case Outcome::Unreachable:
        return Fail(Unreachable, what, http.Error(), source);
    case Outcome::TimedOut:
        return Fail(TimedOut, what, "no answer within " + QString::number(m_settings.timeoutSeconds) + " s", source);
    case Outcome::LoginRefused:
        return Fail(LoginRefused, what, "the server refused the login: " + http.Error(), source);
    case Outcome::ServerError:
        // The database named in the settings does not exist: no logger tables there.
        if (http.Error().startsWith(QLatin1String("Code: 81,")))
            return Fail(ForeignSchema, what, "the database " + m_settings.database + " does not exist", source);
        return Fail(QueryFailed, what, http.Error(), source);
    }
    return QueryFailed;
}

bool ClickHouseDataModule::EnsureReady(const QString& source, qint32& status)
{
    if (m_bReady)
        return true;
    if (!m_bConfigured) {
        m_settings = ConfiguredSettings();
        m_bConfigured = true;
    }
    ConfigureConnection(m_http, m_settings);
    m_cResolutions.Clear();
    m_cPeriods.clear();
    const QUrl url(m_settings.url);
    if (!url.isValid() || (url.scheme() != "http" && url.scheme() != "https") || url.host().isEmpty()) {
        m_sFailure
            = "no valid server URL is configured for module " + m_registration.name + " (" + m_settings.url + ")";
        Log(OpenTitle,
            "No valid server URL is configured for module " + m_registration.name + " (" + m_settings.url + ").",
            source, 3);
        status = NotConfigured;
        return false;
    }
    status = CheckSchema(source);
    if (status == 1)
        status = LoadInfo(source);
    m_bReady = status == 1;
    return m_bReady;
}

qint32 ClickHouseDataModule::CheckSchema(const QString& source)
{
    ExternalTable target { "target", "name String", {} };
    ClickHouse::Put(target.rows, std::string_view(m_settings.database.toUtf8().toStdString()));
    if (const qint32 status = Query(ColumnsSql, { target }, "Reading the schema", source); status != 1)
        return status;
    QHash<QString, QSet<QString>> present;
    Reader reader(m_http.Body());
    while (!reader.AtEnd() && !reader.Failed()) {
        const QString table = reader.String();
        const QString column = reader.String();
        present[table].insert(column.toLower());
    }
    if (reader.Failed())
        return Fail(QueryFailed, "Reading the schema", "the answer is cut short", source);
    for (const SqliteSchema::Table& table : SqliteSchema::RequiredTables) {
        const QSet<QString> columns = present.value(ToQString(table.name));
        for (std::string_view column : table.columns) {
            if (column.empty() || columns.contains(ToQString(column)))
                continue;
            const QString problem = columns.isEmpty()
                ? "table " + ToQString(table.name) + " is missing"
                : "table " + ToQString(table.name) + " has no column " + ToQString(column);
            m_sFailure
                = "the database " + m_settings.database + " holds no logger tables: " + problem + " (" + Server() + ")";
            Log(OpenTitle,
                "The database " + m_settings.database + " of module " + m_registration.name + " (" + Server()
                    + ") holds no logger tables: " + problem + ".",
                source, 3);
            return ForeignSchema;
        }
    }
    // Without an info table the resolutions are unknown.
    const QSet<QString> info = present.value("info");
    m_bHasInfo = info.contains("key") && info.contains("value");
    return 1;
}

qint32 ClickHouseDataModule::LoadInfo(const QString& source)
{
    if (!m_bHasInfo)
        return 1;
    if (const qint32 status = Query(InfoSql, {}, "Reading the info table", source); status != 1)
        return status;
    Reader reader(m_http.Body());
    while (!reader.AtEnd() && !reader.Failed()) {
        const QString key = reader.String();
        const QString value = reader.String();
        if (reader.Failed())
            break;
        if (!m_cResolutions.Take(key, value))
            Log("invalid resolution",
                "The resolution " + key + " in " + Server() + " is no positive number; it counts as unknown.", source,
                2);
    }
    if (reader.Failed())
        return Fail(QueryFailed, "Reading the info table", "the answer is cut short", source);
    return 1;
}

qint32 ClickHouseDataModule::ReadChannelKeys(const QString& source)
{
    m_cChannelKeys.clear();
    if (const qint32 status = Query(KeysSql, {}, "Reading the channels", source); status != 1)
        return status;
    Reader reader(m_http.Body());
    while (!reader.AtEnd()) {
        ChannelKey key;
        key.id = reader.Int64();
        key.category = reader.Int64();
        key.pathId = reader.Int64();
        if (reader.Failed())
            return Fail(QueryFailed, "Reading the channels", "the answer is cut short", source);
        m_cChannelKeys.push_back(key);
    }
    return 1;
}

bool ClickHouseDataModule::ResolveChannel(const QString& channelId, qint64& id, Numbering& numbering) const
{
    const LoggerChannelIds::Parsed parsed = LoggerChannelIds::Parse(channelId);
    if (parsed.form == LoggerChannelIds::Parsed::Form::RowId) {
        id = parsed.id;
        return true;
    }
    if (parsed.form != LoggerChannelIds::Parsed::Form::Numbered)
        return false;
    auto category = numbering.constFind(parsed.category);
    if (category == numbering.constEnd()) {
        std::vector<std::pair<qint64, qint64>> rows;
        for (const ChannelKey& key : m_cChannelKeys)
            if (key.category == parsed.category)
                rows.emplace_back(key.id, key.pathId);
        category = numbering.insert(parsed.category, LoggerCatalog::NumberMap(parsed.category, rows));
    }
    const auto found = category->constFind(parsed.number);
    if (found == category->constEnd())
        return false;
    id = *found;
    return true;
}

qint32 ClickHouseDataModule::ReadBoundary(const QString& channelId, bool last, double& date, const QString& source)
{
    qint32 status = 1;
    if (!EnsureReady(source, status))
        return status;
    qint64 id = 0;
    Numbering numbering;
    if (LoggerChannelIds::Parse(channelId).form == LoggerChannelIds::Parsed::Form::Numbered
        && (status = ReadChannelKeys(source)) != 1)
        return status;
    if (!ResolveChannel(channelId, id, numbering))
        return 1;
    // The program asks for both ends of every channel of a view at each refresh and each update
    // of its menus, and the server reads all of a channel's times to answer: an answer serves
    // both ends for a few seconds.
    const auto now = std::chrono::steady_clock::now();
    auto cached = m_cPeriods.find(id);
    if (cached == m_cPeriods.end() || now - cached->read > PeriodLifetime) {
        if ((status
                = Query(PeriodSql, { IdTable({ id }) }, "Reading the period of channel " + channelId.trimmed(), source))
            != 1)
            return status;
        Reader reader(m_http.Body());
        Period period;
        period.count = reader.Fixed<std::uint64_t>();
        period.first = reader.Float64();
        period.last = reader.Float64();
        period.read = now;
        if (reader.Failed())
            return Fail(
                QueryFailed, "Reading the period of channel " + channelId.trimmed(), "the answer is cut short", source);
        cached = m_cPeriods.insert(id, period);
    }
    if (cached->count > 0)
        date = last ? cached->last : cached->first;
    return 1;
}

void ClickHouseDataModule::GetFirstDate(const QString& channelId, double& date)
{
    ReadBoundary(channelId, false, date, QStringLiteral("ClickHouseDataModule.GetFirstDate"));
}

void ClickHouseDataModule::GetLastDate(const QString& channelId, double& date)
{
    ReadBoundary(channelId, true, date, QStringLiteral("ClickHouseDataModule.GetLastDate"));
}

qint32 ClickHouseDataModule::GetChannelOverview(ChannelCollection& channels, qint32& status)
{
    const QString source = QStringLiteral("ClickHouseDataModule.GetChannelOverview");
    channels.Clear();
    status = 1;
    if (!EnsureReady(source, status))
        return status;
    if ((status = Query(OverviewSql, {}, "Reading the channels", source)) != 1)
        return status;
    std::vector<LoggerCatalog::ChannelRow> rows;
    Reader reader(m_http.Body());
    while (!reader.AtEnd()) {
        LoggerCatalog::ChannelRow row;
        row.id = reader.Int64();
        row.name = reader.String();
        row.unit = reader.String();
        row.dataType = reader.Fixed<qint32>();
        row.category = reader.Int64();
        row.pathId = reader.Int64();
        if (reader.Failed())
            return status = Fail(QueryFailed, "Reading the channels", "the answer is cut short", source);
        rows.push_back(std::move(row));
    }
    LoggerCatalog::FillOverview(rows, m_registration.address.toInt(), channels);
    return status;
}

qint32 ClickHouseDataModule::GetChannelStructure(QStringList& categories, QStringList& channels, qint32& status)
{
    const QString source = QStringLiteral("ClickHouseDataModule.GetChannelStructure");
    categories.clear();
    channels.clear();
    status = 1;
    if (!EnsureReady(source, status))
        return status;

    // The rows as they stand, put in order afterwards: cycles of parents can't make a query loop.
    std::vector<LoggerCatalog::CategoryRow> categoryRows;
    if ((status = Query(CategoriesSql, {}, "Reading the categories", source)) != 1)
        return status;
    Reader categoryReader(m_http.Body());
    while (!categoryReader.AtEnd()) {
        LoggerCatalog::CategoryRow row;
        row.id = categoryReader.Int64();
        row.name = categoryReader.String();
        row.remark = categoryReader.String();
        row.parent = categoryReader.Int64();
        row.kind = categoryReader.String();
        if (categoryReader.Failed())
            return status = Fail(QueryFailed, "Reading the categories", "the answer is cut short", source);
        categoryRows.push_back(std::move(row));
    }

    std::vector<LoggerCatalog::ChannelRow> channelRows;
    if ((status = Query(ChannelsSql, {}, "Reading the channels", source)) != 1)
        return status;
    Reader channelReader(m_http.Body());
    while (!channelReader.AtEnd()) {
        LoggerCatalog::ChannelRow row;
        row.id = channelReader.Int64();
        row.name = channelReader.String();
        row.category = channelReader.Int64();
        row.parent = channelReader.Int64();
        row.pathId = channelReader.Int64();
        if (channelReader.Failed())
            return status = Fail(QueryFailed, "Reading the channels", "the answer is cut short", source);
        channelRows.push_back(std::move(row));
    }

    LoggerCatalog::Structure structure = LoggerCatalog::BuildStructure(
        categoryRows, channelRows, "module " + m_registration.name + " (" + Server() + ")");
    for (const QString& problem : std::as_const(structure.problems))
        Log(ReadTitle, problem, source, 3);
    categories = std::move(structure.categories);
    channels = std::move(structure.channels);
    return status;
}

void ClickHouseDataModule::Rows::SortByChannelAndTime()
{
    const auto before = [this](size_t a, size_t b) {
        return channels[a] < channels[b] || (channels[a] == channels[b] && times[a] < times[b]);
    };
    size_t index = 1;
    while (index < times.size() && !before(index, index - 1))
        ++index;
    if (index >= times.size())
        return;
    std::vector<size_t> order(times.size());
    std::iota(order.begin(), order.end(), size_t { 0 });
    std::stable_sort(order.begin(), order.end(), before);
    const auto reorder = [&order](auto& column) {
        std::remove_reference_t<decltype(column)> sorted(column.size());
        for (size_t row = 0; row < order.size(); ++row)
            sorted[row] = column[order[row]];
        column.swap(sorted);
    };
    reorder(channels);
    reorder(times);
    reorder(values);
}

qint32 ClickHouseDataModule::ReadRaw(const std::vector<qint64>& ids, double from, double to, const QString& source)
{
    m_cRaw.clear();
    if (ids.empty())
        return 1;
    if (const qint32 status = Query(SamplesSql, { IdTable(ids), WindowTable(from, to) }, "Reading the samples", source);
        status != 1)
        return status;
    const std::vector<char>& body = m_http.Body();
    // At least 17 bytes a row: a guess that saves the vectors most of their growing.
    const size_t guess = body.size() / 25;
    m_cRaw.channels.reserve(guess);
    m_cRaw.times.reserve(guess);
    m_cRaw.values.reserve(guess);
    Reader reader(body);
    while (!reader.AtEnd()) {
        const qint64 channel = reader.Int64();
        const double time = reader.Float64();
        double value = MatrixBlock::DefaultNoValue;
        reader.NullableFloat64(value);
        if (reader.Failed())
            return Fail(QueryFailed, "Reading the samples", "the answer is cut short", source);
        m_cRaw.channels.push_back(channel);
        m_cRaw.times.push_back(time);
        m_cRaw.values.push_back(value);
    }
    m_cRaw.SortByChannelAndTime();
    return 1;
}

qint32 ClickHouseDataModule::ReadSteps(
    const std::vector<qint64>& ids, double from, double to, qint64 gridStartMs, qint64 stepMs, const QString& source)
{
    m_cSteps.clear();
    if (ids.empty())
        return 1;
    const QString what = QStringLiteral("Reading the aggregated samples");
    // Rows of channel, step, count, largest, smallest, sum, and whether the sum is in order of time.
    const auto read = [&](const std::vector<char>& body, std::vector<StepRow>& rows, std::vector<size_t>* unordered) {
        Reader reader(body);
        while (!reader.AtEnd()) {
            StepRow row;
            row.channel = reader.Int64();
            row.step = reader.Int64();
            row.count = reader.Fixed<std::uint64_t>();
            row.largest = row.smallest = MatrixBlock::DefaultNoValue;
            reader.NullableFloat64(row.largest);
            reader.NullableFloat64(row.smallest);
            row.sum = reader.Float64();
            const bool ordered = reader.Fixed<std::uint8_t>() != 0;
            if (reader.Failed())
                return false;
            if (!ordered && unordered)
                unordered->push_back(rows.size());
            rows.push_back(row);
        }
        return true;
    };
    const ExternalTable window = WindowTable(from, to, gridStartMs, stepMs);
    // Each query sums on one thread: several channels are split over two queries that the
    // server runs side by side. The first half's ids are the smaller, so the rows stay ordered.
    std::vector<size_t> unordered;
    if (ids.size() == 1) {
        if (const qint32 status = Query(StepsSql, { IdTable(ids), window }, what, source); status != 1)
            return status;
        if (!read(m_http.Body(), m_cSteps, &unordered))
            return Fail(QueryFailed, what, "the answer is cut short", source);
    } else {
        ConfigureConnection(m_httpSide, m_settings);
        const auto half = ids.begin() + static_cast<std::ptrdiff_t>(ids.size() / 2);
        const std::vector<Outcome> outcomes = ClickHouse::Connection::RunTogether({
            { &m_http, StepsSql, { IdTable({ ids.begin(), half }), window } },
            { &m_httpSide, StepsSql, { IdTable({ half, ids.end() }), window } },
        });
        if (const qint32 status = Status(outcomes[0], m_http, what, source); status != 1)
            return status;
        if (const qint32 status = Status(outcomes[1], m_httpSide, what, source); status != 1)
            return status;
        if (!read(m_http.Body(), m_cSteps, &unordered) || !read(m_httpSide.Body(), m_cSteps, &unordered))
            return Fail(QueryFailed, what, "the answer is cut short", source);
    }
    if (unordered.empty())
        return 1;

    ExternalTable redo { "redo", "ch Int64, k Int64", {} };
    for (const size_t index : unordered) {
        ClickHouse::Put(redo.rows, static_cast<std::int64_t>(m_cSteps[index].channel));
        ClickHouse::Put(redo.rows, static_cast<std::int64_t>(m_cSteps[index].step));
    }
    if (const qint32 status = Query(RedoStepsSql, { IdTable(ids), window, redo }, what, source); status != 1)
        return status;
    std::vector<StepRow> again;
    if (!read(m_http.Body(), again, nullptr) || again.size() != unordered.size())
        return Fail(QueryFailed, what, "the answer is cut short", source);
    // Both answers are ordered by channel and step; samples written in between change the steps.
    for (size_t i = 0; i < unordered.size(); ++i) {
        StepRow& row = m_cSteps[unordered[i]];
        if (again[i].channel != row.channel || again[i].step != row.step)
            return Fail(QueryFailed, what, "the samples changed while they were read", source);
        row = again[i];
    }
    return 1;
}

qint32 ClickHouseDataModule::Read(const QString& channelList, ChannelCollection& channels, double from, double to,
    bool aggregate, double gridStart, qint64 stepSeconds, const QString& source)
{
    qint32 status = 1;
    struct Wanted
    {
        DataMatrixPtr channel;
        QString key;
        qint64 id = -1; // -1: names no channel
        bool known = false; // the id is a row of the channels table
        bool steps = false; // aggregated on the server
    };
    std::vector<Wanted> wanted;
    for (const QString& entry : channelList.split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
        const QString key = entry.trimmed();
        const DataMatrixPtr channel = channels.Channel(key);
        if (!channel)
            continue;
        // Every listed channel gets a fresh block or none: no data of an earlier window stays.
        channel->SetDataBlock(nullptr);
        wanted.push_back({ channel, key });
    }

    bool readable = EnsureReady(source, status) && (wanted.empty() || (status = ReadChannelKeys(source)) == 1);
    double resolution = 0.0;
    if (readable) {
        aggregate = aggregate && m_settings.aggregate && stepSeconds > 0;
        const qint64 gridStartMs = Calendar::WholeSeconds(gridStart) * 1000;
        const qint64 stepMs = stepSeconds * 1000;
        Numbering numbering;
        QSet<qint64> known;
        for (const ChannelKey& key : m_cChannelKeys)
            known.insert(key.id);
        std::vector<qint64> rawIds, stepIds;
        for (Wanted& item : wanted) {
            qint64 id = 0;
            if (!ResolveChannel(item.key, id, numbering))
                continue; // no such channel: an empty block
            item.id = id;
            item.known = known.contains(id);
            item.steps = aggregate && Aggregates(item.channel->DataType());
            (item.steps ? stepIds : rawIds).push_back(id);
        }
        const auto unique = [](auto& list) {
            std::sort(list.begin(), list.end());
            list.erase(std::unique(list.begin(), list.end()), list.end());
        };
        unique(rawIds);
        unique(stepIds);

        status = ReadRaw(rawIds, from, to, source);
        if (status == 1)
            status = ReadSteps(stepIds, from, to, gridStartMs, stepMs, source);
        readable = status == 1;

        if (readable) {
            // Rows come ordered by channel: each channel's rows are one range.
            const auto ranges = [](const std::vector<qint64>& ids) {
                QHash<qint64, std::pair<size_t, size_t>> result;
                for (size_t i = 0; i < ids.size();) {
                    size_t j = i;
                    while (j < ids.size() && ids[j] == ids[i])
                        ++j;
                    result.insert(ids[i], { i, j });
                    i = j;
                }
                return result;
            };
            const auto rawRanges = ranges(m_cRaw.channels);
            std::vector<qint64> stepChannels;
            stepChannels.reserve(m_cSteps.size());
            for (const StepRow& row : m_cSteps)
                stepChannels.push_back(row.channel);
            const auto stepRanges = ranges(stepChannels);

            for (const Wanted& item : wanted) {
                std::vector<double> cells;
                size_t rows = 0;
                if (item.id >= 0 && !item.steps) {
                    const auto [first, last] = rawRanges.value(item.id, { 0, 0 });
                    rows = last - first;
                    cells.reserve(2 * rows);
                    cells.insert(cells.end(), m_cRaw.times.begin() + first, m_cRaw.times.begin() + last);
                    cells.insert(cells.end(), m_cRaw.values.begin() + first, m_cRaw.values.begin() + last);
                } else if (item.id >= 0) {
                    const auto [first, last] = stepRanges.value(item.id, { 0, 0 });
                    rows = last - first;
                    cells.resize(2 * rows);
                    for (size_t r = 0; r < rows; ++r) {
                        const StepRow& row = m_cSteps[first + r];
                        cells[r] = static_cast<double>(gridStartMs + row.step * stepMs) / MsPerDay;
                        cells[rows + r] = LoggerCatalog::StepValue(
                            item.channel->DataType(), row.largest, row.smallest, row.sum, row.count);
                    }
                }
                auto block = MatrixBlock::Create(0, 2);
                block->SetArray(static_cast<qsizetype>(rows), 2, std::move(cells));
                item.channel->SetDataBlock(block);
                if (item.known) {
                    // Channels of different loggers may be mixed: the finest resolution serves all.
                    const double seconds = m_cResolutions.Of(item.id);
                    if (seconds > 0.0 && (resolution == 0.0 || seconds < resolution))
                        resolution = seconds;
                }
            }
        }
    }

    channels.AddText(
        LoggerCatalog::DataText(QStringLiteral("CLICKHOUSE"), resolution, status != 1 ? m_sFailure : QString()));
    return status;
}

qint32 ClickHouseDataModule::GetData(
    const QString& channelList, ChannelCollection& channels, double from, double to, qint32& status)
{
    status = Read(channelList, channels, from, to, false, 0.0, 0, QStringLiteral("ClickHouseDataModule.GetData"));
    return status;
}

qint32 ClickHouseDataModule::GetAggregatedData(const QString& channelList, ChannelCollection& channels, double from,
    double to, double gridStart, qint64 stepSeconds, qint32& status)
{
    status = Read(channelList, channels, from, to, true, gridStart, stepSeconds,
        QStringLiteral("ClickHouseDataModule.GetAggregatedData"));
    return status;
}

bool ClickHouseDataModule::ServerVersion(const Settings& settings, QString& answer)
{
    ClickHouse::Connection http;
    ConfigureConnection(http, settings);
    if (http.Run(VersionSql) != Outcome::Ok) {
        answer = http.Error();
        return false;
    }
    answer = QString::fromUtf8(http.Body().data(), static_cast<qsizetype>(http.Body().size())).trimmed();
    return true;
}

void ClickHouseDataModule::ShowConfig()
{
    if (!m_bConfigured) {
        m_settings = ConfiguredSettings();
        m_bConfigured = true;
    }
    frm_ClickHouseConfig dialog(m_settings, ModuleSettings::UseEnglish());
    if (dialog.ShowMe())
        ApplySettings(dialog.Values());
}

void ClickHouseDataModule::UseSettings(const Settings& settings)
{
    m_settings = settings;
    m_bConfigured = true;
    m_bReady = false;
}

void ClickHouseDataModule::ApplySettings(const Settings& settings)
{
    if (!m_bConfigured)
        m_settings = ConfiguredSettings();
    const Settings before = m_settings;
    RegistryKey key;
    const QString name = ModuleSettings::Key(m_registration.name);
    const std::pair<QString, QString> values[] = {
        { UrlValue, settings.url.trimmed() },
        { DatabaseValue, settings.database.trimmed() },
        { UserValue, settings.user.trimmed() },
        { TimeoutValue, QString::number(settings.timeoutSeconds) },
        { AggregateValue, settings.aggregate ? "1" : "0" },
    };
    for (const auto& [value, text] : values)
        if (key.WriteValue(Hive::CurrentUser, name, value, text) != RegistryStatus::Ok)
            Log("error storing settings",
                "The setting " + value + " of module " + m_registration.name
                    + " could not be stored in the user's settings.",
                "ClickHouseDataModule.ApplySettings", 3);
    m_settings = ConfiguredSettings();
    m_bConfigured = true;
    if (before.url == m_settings.url && before.database == m_settings.database && before.user == m_settings.user
        && before.timeoutSeconds == m_settings.timeoutSeconds && before.aggregate == m_settings.aggregate)
        return;
    m_bReady = false;
    if (m_pMessageHandler) {
        qint32 status = 0;
        m_pMessageHandler->SendMessage("CHANNELS_CHANGED", m_registration.address, status);
    }
}
