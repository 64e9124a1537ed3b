// SPDX-License-Identifier: GPL-3.0-or-later
#include "PostgresDataModule.h"

#include "Calendar.h"
#include "LoggerCatalog.h"
#include "ModuleSettings.h"
#include "RegistryKey.h"
#include "SqliteSchema.h"
#include "frm_PostgresConfig.h"

#include <QSet>

#include <cmath>
#include <cstdlib>

namespace {

const QString ConnectionValue = QStringLiteral("Connection");
const QString SchemaValue = QStringLiteral("Schema");
const QString TimeoutValue = QStringLiteral("Timeout");
const QString AggregateValue = QStringLiteral("Aggregate");
const QString OpenTitle = QStringLiteral("error connecting to database server");
const QString ReadTitle = QStringLiteral("error reading database server");

constexpr int MsPerDay = 86'400'000;

const char* const QueryNames[]
    = { "sorano_data", "sorano_aggregate", "sorano_first", "sorano_last", "sorano_exists", "sorano_category" };

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

QByteArray Number(double value)
{
    return QByteArray::number(value, 'g', 17);
}

// Fields of results in text form.
QString TextAt(const PGresult* result, int row, int column)
{
    return QString::fromUtf8(PQgetvalue(result, row, column), PQgetlength(result, row, column));
}

qint64 IntAt(const PGresult* result, int row, int column)
{
    return std::strtoll(PQgetvalue(result, row, column), nullptr, 10);
}

bool IsDouble(const PGresult* result, int row, int column)
{
    return !PQgetisnull(result, row, column) && PQgetlength(result, row, column) == 8;
}

} // namespace

PostgresDataModule::PostgresDataModule(const DataModuleRegistration& registration, QObject* parent)
    : QObject(parent)
    , m_registration(registration)
{ }

PostgresDataModule::~PostgresDataModule()
{
    Close();
}

void PostgresDataModule::SetMessageHandler(MessageHandlerInterface* handler)
{
    m_pMessageHandler = handler;
}

void PostgresDataModule::Log(const QString& title, const QString& text, const QString& source, qint16 level) const
{
    if (m_pMessageHandler)
        m_pMessageHandler->WriteLog(title, text, source, level);
}

PostgresDataModule::Settings PostgresDataModule::ConfiguredSettings() const
{
    Settings settings;
    settings.connection = ModuleSettings::Read(m_registration.name, ConnectionValue);
    const QString schema = ModuleSettings::Read(m_registration.name, SchemaValue);
    if (!schema.isEmpty())
        settings.schema = schema;
    settings.timeoutSeconds = ModuleSettings::ReadPositive(m_registration.name, TimeoutValue, settings.timeoutSeconds);
    settings.aggregate = ModuleSettings::ReadSwitch(m_registration.name, AggregateValue, settings.aggregate);
    return settings;
}

void PostgresDataModule::UseSettings(const Settings& settings)
{
    Close();
    m_settings = settings;
    m_bOwnSettings = m_bSettingsRead = true;
}

qint32 PostgresDataModule::SelfCheck(qint32& status)
{
    // The client library must be usable; the server is a matter of configuration.
    status = PQlibVersion() >= 100000 ? 1 : -1;
    return status;
}

qint32 PostgresDataModule::Initialize(const QString& param, qint32& status)
{
    m_settings = ConfiguredSettings();
    m_bSettingsRead = true;
    m_bOwnSettings = !param.trimmed().isEmpty();
    if (m_bOwnSettings)
        m_settings.connection = param.trimmed();
    status = Open("PostgresDataModule.Initialize");
    return status;
}

void PostgresDataModule::Close()
{
    m_connection.Close();
    m_bReady = false;
    m_cResolutions.Clear();
}

qint32 PostgresDataModule::Fail(
    PgConnection::Outcome outcome, const QString& title, const QString& what, const QString& source)
{
    qint32 status = QueryFailed;
    switch (outcome) {
    case PgConnection::Outcome::Invalid:
        status = NotConfigured;
        break;
    case PgConnection::Outcome::Unreachable:
    case PgConnection::Outcome::Lost:
        status = Unreachable;
        break;
    case PgConnection::Outcome::LoginRefused:
        status = LoginRefused;
        break;
    case PgConnection::Outcome::TimedOut:
        status = TimedOut;
        break;
    case PgConnection::Outcome::Failed:
    case PgConnection::Outcome::Ok:
        // A table or column gone since the connection checked them.
        if (m_connection.SqlState() == "42P01" || m_connection.SqlState() == "42703")
            status = ForeignSchema;
        break;
    }
    QString reason = m_connection.Error();
    if (outcome == PgConnection::Outcome::Lost)
        reason = "the connection to the server was lost: " + reason;
    const QString server = m_connection.Server();
    m_sFailure = LowerFirst(what) + " failed: " + reason + " (" + server + ")";
    Log(title, what + " of module " + m_registration.name + " (" + server + ") failed: " + reason, source, 3);
    if (!m_connection.IsOpen())
        Close();
    return status;
}

bool PostgresDataModule::EnsureOpen(const QString& source, qint32& status)
{
    if (m_bReady && !m_connection.StillUp()) {
        // The server went away since the last call (restarted, or the connection was dropped).
        Log(OpenTitle,
            "The connection of module " + m_registration.name + " to " + m_connection.Server()
                + " was lost; connecting again.",
            source, 2);
        Close();
    }
    if (!m_bReady)
        status = Open(source);
    return m_bReady;
}

qint32 PostgresDataModule::Open(const QString& source)
{
    Close();
    if (!m_bSettingsRead || !m_bOwnSettings) {
        m_settings = ConfiguredSettings();
        m_bSettingsRead = true;
    }
    if (m_settings.connection.isEmpty()) {
        m_sFailure = "no database server is configured for module " + m_registration.name;
        Log(OpenTitle, "No database server is configured for module " + m_registration.name + ".", source, 3);
        return NotConfigured;
    }
    bool passwordRemoved = false;
    const PgConnection::Outcome outcome
        = m_connection.Connect(m_settings.connection, m_settings.timeoutSeconds, &passwordRemoved);
    if (passwordRemoved)
        Log(OpenTitle,
            "The connection string of module " + m_registration.name
                + " holds a password, which is not used: passwords come from the password file or the service "
                  "file.",
            source, 2);
    if (outcome != PgConnection::Outcome::Ok)
        return Fail(outcome, OpenTitle, "Connecting to the server", source);

    const QByteArray schema = m_settings.schema.toUtf8();
    if (char* escaped = PQescapeIdentifier(m_connection.Handle(), schema.constData(), schema.size())) {
        m_cSchema = escaped;
        PQfreemem(escaped);
    } else {
        m_cSchema = "public";
    }
    // The reads are plain index scans: compiling them costs more than it saves. A server built
    // without JIT ignores the setting.
    if (const PgConnection::Outcome jit = m_connection.Execute("SET jit = off");
        jit == PgConnection::Outcome::Lost || jit == PgConnection::Outcome::TimedOut)
        return Fail(jit, OpenTitle, "Connecting to the server", source);
    qint32 status = CheckSchema(source);
    if (status == 1)
        status = LoadInfo(source);
    if (status == 1)
        status = PrepareQueries(source);
    if (status != 1) {
        Close();
        return status;
    }
    m_bReady = true;
    return 1;
}

QByteArray PostgresDataModule::Table(const char* name) const
{
    return m_cSchema + '.' + name;
}

qint32 PostgresDataModule::CheckSchema(const QString& source)
{
    PgResult result;
    const PgConnection::Outcome outcome = m_connection.Run(
        "SELECT table_name::text, column_name::text FROM information_schema.columns WHERE table_schema = $1", false,
        { m_settings.schema.toUtf8() }, false, result);
    if (outcome != PgConnection::Outcome::Ok)
        return Fail(outcome, OpenTitle, "Reading the schema", source);
    QHash<QString, QSet<QString>> present;
    for (int row = 0; row < PQntuples(result.get()); ++row)
        present[TextAt(result.get(), row, 0)].insert(TextAt(result.get(), row, 1));
    for (const SqliteSchema::Table& table : SqliteSchema::RequiredTables) {
        const QString name = ToQString(table.name);
        for (std::string_view column : table.columns) {
            if (column.empty() || present.value(name).contains(ToQString(column)))
                continue;
            const QString problem = present.contains(name) ? "table " + name + " has no column " + ToQString(column)
                                                           : "table " + name + " is missing";
            m_sFailure = "the schema " + m_settings.schema + " holds no logger tables: " + problem + " ("
                + m_connection.Server() + ")";
            Log(OpenTitle,
                "The schema " + m_settings.schema + " of module " + m_registration.name + " on " + m_connection.Server()
                    + " holds no logger tables: " + problem + ".",
                source, 3);
            return ForeignSchema;
        }
    }
    m_bHasInfo = present.value("info").contains("key") && present.value("info").contains("value");
    return 1;
}

qint32 PostgresDataModule::LoadInfo(const QString& source)
{
    if (!m_bHasInfo)
        return 1; // no info table: resolutions unknown
    PgResult result;
    const QByteArray sql
        = "SELECT key::text, value::text FROM " + Table("info") + " WHERE key = $1 OR left(key, length($2)) = $2";
    const PgConnection::Outcome outcome = m_connection.Run(sql.constData(), false,
        { QByteArray(SqliteSchema::KeyResolution.data(), SqliteSchema::KeyResolution.size()),
            QByteArray(
                SqliteSchema::KeyChannelResolutionPrefix.data(), SqliteSchema::KeyChannelResolutionPrefix.size()) },
        false, result);
    if (outcome != PgConnection::Outcome::Ok)
        return Fail(outcome, OpenTitle, "Reading the info table", source);
    for (int row = 0; row < PQntuples(result.get()); ++row) {
        const QString key = TextAt(result.get(), row, 0);
        if (!m_cResolutions.Take(key, TextAt(result.get(), row, 1)))
            Log("invalid resolution",
                "The resolution " + key + " on " + m_connection.Server()
                    + " is no positive number; it counts as unknown.",
                source, 2);
    }
    return 1;
}

qint32 PostgresDataModule::PrepareQueries(const QString& source)
{
    // Times and values are read as double precision whatever the columns hold; the window is
    // inclusive (widened by half a millisecond by the caller).
    const QByteArray samples = Table("samples");
    const QByteArray window
        = " FROM " + samples + " WHERE channel = $1::int8 AND time >= $2::float8 AND time <= $3::float8";
    // A sample's millisecond as Calendar::ToMilliseconds rounds it, and its step of the grid.
    const QByteArray ms = "trunc(time::float8)::int8 * " + QByteArray::number(MsPerDay)
        + " + floor((time::float8 - trunc(time::float8)) * " + QByteArray::number(MsPerDay) + "::float8 + 0.5)::int8";
    const QByteArray sql[] = {
        "SELECT time::float8, value::float8" + window + " ORDER BY time",
        // The sum adds the values one by one in order of time, as the grid does.
        "SELECT (ms - $4::int8) / $5::int8 AS step, sum(v ORDER BY t), count(v), max(v), min(v) FROM (SELECT "
        "time::float8 AS t, value::float8 AS v, "
            + ms + " AS ms" + window + ") s WHERE ms >= $4::int8 GROUP BY step ORDER BY step",
        "SELECT time::float8 FROM " + samples + " WHERE channel = $1::int8 ORDER BY time LIMIT 1",
        "SELECT time::float8 FROM " + samples + " WHERE channel = $1::int8 ORDER BY time DESC LIMIT 1",
        "SELECT 1 FROM " + Table("channels") + " WHERE id = $1::int8",
        "SELECT id::int8, path_id::int8 FROM " + Table("channels") + " WHERE category = $1::int8 ORDER BY id",
    };
    const int parameters[] = { 3, 5, 1, 1, 1, 1 };
    for (int i = 0; i < static_cast<int>(Query::Count); ++i) {
        const PgConnection::Outcome outcome = m_connection.Prepare(QueryNames[i], sql[i], parameters[i]);
        if (outcome != PgConnection::Outcome::Ok)
            return Fail(outcome, OpenTitle, "Preparing the queries", source);
    }
    return 1;
}

PgConnection::Outcome PostgresDataModule::Run(Query query, const std::vector<QByteArray>& parameters, PgResult& result)
{
    return m_connection.Run(QueryNames[static_cast<int>(query)], true, parameters, true, result);
}

bool PostgresDataModule::ResolveChannel(
    const QString& channelId, qint64& id, PgConnection::Outcome& outcome, Numbering& numbering)
{
    outcome = PgConnection::Outcome::Ok;
    const LoggerChannelIds::Parsed parsed = LoggerChannelIds::Parse(channelId);
    if (parsed.form == LoggerChannelIds::Parsed::Form::RowId) {
        id = parsed.id;
        return true;
    }
    if (parsed.form != LoggerChannelIds::Parsed::Form::Numbered)
        return false;
    auto category = numbering.constFind(parsed.category);
    if (category == numbering.constEnd()) {
        // Numbers depend on every channel of the category: read them all, once per call.
        PgResult result;
        outcome = Run(Query::Category, { QByteArray::number(parsed.category) }, result);
        if (outcome != PgConnection::Outcome::Ok)
            return false;
        std::vector<std::pair<qint64, qint64>> rows;
        for (int row = 0; row < PQntuples(result.get()); ++row)
            rows.emplace_back(PgInt64(PQgetvalue(result.get(), row, 0)), PgInt64(PQgetvalue(result.get(), row, 1)));
        category = numbering.insert(parsed.category, LoggerCatalog::NumberMap(parsed.category, rows));
    }
    const auto found = category->constFind(parsed.number);
    if (found == category->constEnd())
        return false;
    id = *found;
    return true;
}

void PostgresDataModule::ReadBoundary(Query query, const QString& channelId, double& date, const QString& source)
{
    qint32 status = 1;
    if (!EnsureOpen(source, status))
        return;
    qint64 id = 0;
    PgConnection::Outcome outcome = PgConnection::Outcome::Ok;
    Numbering numbering;
    if (!ResolveChannel(channelId, id, outcome, numbering)) {
        if (outcome != PgConnection::Outcome::Ok)
            Fail(outcome, ReadTitle, "Reading the channels of channel " + channelId.trimmed(), source);
        return;
    }
    PgResult result;
    outcome = Run(query, { QByteArray::number(id) }, result);
    if (outcome != PgConnection::Outcome::Ok)
        Fail(outcome, ReadTitle, "Reading the period of channel " + QString::number(id), source);
    else if (PQntuples(result.get()) == 1 && IsDouble(result.get(), 0, 0))
        date = PgDouble(PQgetvalue(result.get(), 0, 0));
}

void PostgresDataModule::GetFirstDate(const QString& channelId, double& date)
{
    ReadBoundary(Query::First, channelId, date, QStringLiteral("PostgresDataModule.GetFirstDate"));
}

void PostgresDataModule::GetLastDate(const QString& channelId, double& date)
{
    ReadBoundary(Query::Last, channelId, date, QStringLiteral("PostgresDataModule.GetLastDate"));
}

qint32 PostgresDataModule::GetChannelOverview(ChannelCollection& channels, qint32& status)
{
    const QString source = QStringLiteral("PostgresDataModule.GetChannelOverview");
    channels.Clear();
    status = 1;
    if (!EnsureOpen(source, status))
        return status;
    PgResult result;
    const QByteArray sql
        = "SELECT id, name, unit, data_type, category, path_id FROM " + Table("channels") + " ORDER BY id";
    const PgConnection::Outcome outcome = m_connection.Run(sql.constData(), false, {}, false, result);
    if (outcome != PgConnection::Outcome::Ok)
        return status = Fail(outcome, ReadTitle, "Reading the channels", source);
    std::vector<LoggerCatalog::ChannelRow> rows;
    const PGresult* r = result.get();
    for (int row = 0; row < PQntuples(r); ++row)
        rows.push_back({ IntAt(r, row, 0), TextAt(r, row, 1), TextAt(r, row, 2), static_cast<qint32>(IntAt(r, row, 3)),
            IntAt(r, row, 4), 0, IntAt(r, row, 5) });
    LoggerCatalog::FillOverview(rows, m_registration.address.toInt(), channels);
    return status;
}

qint32 PostgresDataModule::GetChannelStructure(QStringList& categories, QStringList& channels, qint32& status)
{
    const QString source = QStringLiteral("PostgresDataModule.GetChannelStructure");
    categories.clear();
    channels.clear();
    status = 1;
    if (!EnsureOpen(source, status))
        return status;

    PgResult result;
    QByteArray sql = "SELECT id, name, remark, parent, kind FROM " + Table("categories");
    PgConnection::Outcome outcome = m_connection.Run(sql.constData(), false, {}, false, result);
    if (outcome != PgConnection::Outcome::Ok)
        return status = Fail(outcome, ReadTitle, "Reading the categories", source);
    std::vector<LoggerCatalog::CategoryRow> categoryRows;
    const PGresult* r = result.get();
    for (int row = 0; row < PQntuples(r); ++row)
        categoryRows.push_back(
            { IntAt(r, row, 0), TextAt(r, row, 1), TextAt(r, row, 2), IntAt(r, row, 3), TextAt(r, row, 4) });

    sql = "SELECT id, name, category, parent_channel, path_id FROM " + Table("channels");
    outcome = m_connection.Run(sql.constData(), false, {}, false, result);
    if (outcome != PgConnection::Outcome::Ok)
        return status = Fail(outcome, ReadTitle, "Reading the channels", source);
    std::vector<LoggerCatalog::ChannelRow> channelRows;
    r = result.get();
    for (int row = 0; row < PQntuples(r); ++row)
        channelRows.push_back({ IntAt(r, row, 0), TextAt(r, row, 1), QString(), 0, IntAt(r, row, 2), IntAt(r, row, 3),
            IntAt(r, row, 4) });

    LoggerCatalog::Structure structure = LoggerCatalog::BuildStructure(
        categoryRows, channelRows, "module " + m_registration.name + " (" + m_connection.Server() + ")");
    for (const QString& problem : std::as_const(structure.problems))
        Log(ReadTitle, problem, source, 3);
    categories = std::move(structure.categories);
    channels = std::move(structure.channels);
    return status;
}

MatrixBlockPtr PostgresDataModule::RawBlock(const PGresult* result)
{
    // Column by column, as the block stores its cells, decoded straight from the result.
    const int rows = PQntuples(result);
    m_cTimes.resize(static_cast<size_t>(rows));
    m_cValues.resize(static_cast<size_t>(rows));
    size_t kept = 0;
    for (int row = 0; row < rows; ++row) {
        if (!IsDouble(result, row, 0))
            continue;
        m_cTimes[kept] = PgDouble(PQgetvalue(result, row, 0));
        m_cValues[kept] = IsDouble(result, row, 1) ? PgDouble(PQgetvalue(result, row, 1)) : MatrixBlock::DefaultNoValue;
        ++kept;
    }
    std::vector<double> cells(2 * kept);
    std::copy_n(m_cTimes.begin(), kept, cells.begin());
    std::copy_n(m_cValues.begin(), kept, cells.begin() + static_cast<std::ptrdiff_t>(kept));
    auto block = MatrixBlock::Create(0, 2);
    block->SetArray(static_cast<qsizetype>(kept), 2, std::move(cells));
    return block;
}

MatrixBlockPtr PostgresDataModule::AggregatedBlock(
    const PGresult* result, qint32 dataType, qint64 gridStartMs, qint64 stepMs)
{
    // Rows: step, sum in order of time, count of values, largest, smallest.
    const int rows = PQntuples(result);
    std::vector<double> cells(2 * static_cast<size_t>(rows));
    for (int row = 0; row < rows; ++row) {
        const qint64 step = PgInt64(PQgetvalue(result, row, 0));
        const qint64 count = PQgetisnull(result, row, 2) ? 0 : PgInt64(PQgetvalue(result, row, 2));
        const auto at = [&](int column) {
            return IsDouble(result, row, column) ? PgDouble(PQgetvalue(result, row, column))
                                                 : MatrixBlock::DefaultNoValue;
        };
        cells[static_cast<size_t>(row)] = static_cast<double>(gridStartMs + step * stepMs) / MsPerDay;
        cells[static_cast<size_t>(rows + row)] = LoggerCatalog::StepValue(dataType, at(3), at(4), at(1), count);
    }
    auto block = MatrixBlock::Create(0, 2);
    block->SetArray(rows, 2, std::move(cells));
    return block;
}

qint32 PostgresDataModule::Read(const QString& channelList, ChannelCollection& channels, double from, double to,
    std::optional<std::pair<double, qint64>> grid, const QString& source)
{
    qint32 status = 1;
    bool readable = EnsureOpen(source, status);
    // Why samples could not be read: the first failure of the call. A channel that was not read
    // gets no block, so that it can't be taken for one without samples in the window.
    QString failure = readable ? QString() : m_sFailure;
    double resolution = 0.0;
    Numbering numbering;
    // One log line for the call. A statement the server refuses costs its channel only; a
    // connection that broke or timed out ends the reading.
    const auto readFailed = [&](PgConnection::Outcome outcome, const QString& what) {
        if (failure.isEmpty()) {
            status = Fail(outcome, ReadTitle, what, source);
            failure = m_sFailure;
        } else if (!m_connection.IsOpen()) {
            Close();
        }
        if (outcome != PgConnection::Outcome::Failed || !m_bReady)
            readable = false;
    };
    const QByteArray lower = Number(from - Calendar::HalfMillisecond);
    const QByteArray upper = Number(to + Calendar::HalfMillisecond);
    const qint64 gridStartMs = grid ? Calendar::WholeSeconds(grid->first) * 1000 : 0;
    const qint64 stepMs = grid ? grid->second * 1000 : 0;

    for (const QString& entry : channelList.split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
        const QString key = entry.trimmed();
        const DataMatrixPtr channel = channels.Channel(key);
        if (!channel)
            continue;
        channel->SetDataBlock(nullptr);
        if (!readable)
            continue;
        qint64 id = 0;
        PgConnection::Outcome outcome = PgConnection::Outcome::Ok;
        if (!ResolveChannel(key, id, outcome, numbering)) {
            if (outcome != PgConnection::Outcome::Ok)
                readFailed(outcome, "Reading the channels of channel " + key);
            else
                channel->SetDataBlock(MatrixBlock::Create(0, 2)); // no such channel: nothing to read
            continue;
        }
        const qint32 type = channel->DataType();
        const bool aggregated = grid && type >= 1 && type <= 7;
        PgResult result;
        if (aggregated)
            outcome = Run(Query::Aggregate,
                { QByteArray::number(id), lower, upper, QByteArray::number(gridStartMs), QByteArray::number(stepMs) },
                result);
        else
            outcome = Run(Query::Data, { QByteArray::number(id), lower, upper }, result);
        if (outcome != PgConnection::Outcome::Ok) {
            readFailed(outcome, "Reading the samples of channel " + key);
            continue;
        }
        channel->SetDataBlock(
            aggregated ? AggregatedBlock(result.get(), type, gridStartMs, stepMs) : RawBlock(result.get()));

        outcome = Run(Query::Exists, { QByteArray::number(id) }, result);
        if (outcome != PgConnection::Outcome::Ok) {
            readFailed(outcome, "Reading the channels of channel " + key);
            continue;
        }
        if (PQntuples(result.get()) > 0) {
            // Channels of different loggers may be mixed: the finest resolution serves them all.
            const double seconds = m_cResolutions.Of(id);
            if (seconds > 0.0 && (resolution == 0.0 || seconds < resolution))
                resolution = seconds;
        }
    }

    channels.AddText(LoggerCatalog::DataText(QStringLiteral("POSTGRES"), resolution, failure));
    return status;
}

qint32 PostgresDataModule::GetData(
    const QString& channelList, ChannelCollection& channels, double from, double to, qint32& status)
{
    status = Read(channelList, channels, from, to, std::nullopt, QStringLiteral("PostgresDataModule.GetData"));
    return status;
}

qint32 PostgresDataModule::GetAggregatedData(const QString& channelList, ChannelCollection& channels, double from,
    double to, double gridStart, qint64 stepSeconds, qint32& status)
{
    const bool aggregate = m_bOwnSettings ? m_settings.aggregate : ConfiguredSettings().aggregate;
    std::optional<std::pair<double, qint64>> grid;
    if (aggregate && stepSeconds >= 1 && gridStart >= 0.0)
        grid = std::make_pair(gridStart, stepSeconds);
    status = Read(channelList, channels, from, to, grid, QStringLiteral("PostgresDataModule.GetAggregatedData"));
    return status;
}

QString PostgresDataModule::ServerVersion(const Settings& settings, bool* ok)
{
    if (ok)
        *ok = false;
    PgConnection connection;
    if (settings.connection.trimmed().isEmpty())
        return ModuleSettings::UseEnglish() ? QStringLiteral("No connection string entered.")
                                            : QStringLiteral("Keine Verbindungszeichenfolge eingegeben.");
    PgConnection::Outcome outcome = connection.Connect(settings.connection, settings.timeoutSeconds);
    PgResult result;
    if (outcome == PgConnection::Outcome::Ok)
        outcome = connection.Run("SELECT version()", false, {}, false, result);
    if (outcome != PgConnection::Outcome::Ok || PQntuples(result.get()) != 1)
        return connection.Error() + " (" + connection.Server() + ")";
    if (ok)
        *ok = true;
    return TextAt(result.get(), 0, 0);
}

void PostgresDataModule::ShowConfig()
{
    frm_PostgresConfig dialog(m_bSettingsRead ? m_settings : ConfiguredSettings(), ModuleSettings::UseEnglish());
    if (dialog.ShowMe())
        ApplySettings(dialog.Values());
}

void PostgresDataModule::ApplySettings(const Settings& settings)
{
    const Settings before = m_bSettingsRead ? m_settings : ConfiguredSettings();
    RegistryKey key;
    const QString settingsKey = ModuleSettings::Key(m_registration.name);
    const std::pair<QString, QString> values[] = {
        { ConnectionValue, settings.connection.trimmed() },
        { SchemaValue, settings.schema.trimmed() },
        { TimeoutValue, QString::number(settings.timeoutSeconds) },
        { AggregateValue, settings.aggregate ? QStringLiteral("1") : QStringLiteral("0") },
    };
    for (const auto& [name, value] : values)
        if (key.WriteValue(Hive::CurrentUser, settingsKey, name, value) != RegistryStatus::Ok)
            Log("error storing settings",
                "The value " + name + " of module " + m_registration.name
                    + " could not be stored in the user's settings.",
                "PostgresDataModule.ApplySettings", 3);
    // Empty entries hand the choice back to the machine-wide settings.
    const Settings after = ConfiguredSettings();
    m_bOwnSettings = false;
    m_bSettingsRead = true;
    m_settings = after;
    if (after.connection == before.connection && after.schema == before.schema) {
        if (after.timeoutSeconds != before.timeoutSeconds)
            Close(); // the next call connects with the new timeout
        return;
    }
    Close();
    if (m_pMessageHandler) {
        qint32 status = 0;
        m_pMessageHandler->SendMessage("CHANNELS_CHANGED", m_registration.address, status);
    }
}
