// SPDX-License-Identifier: GPL-3.0-or-later
#include "SqliteDataModule.h"

#include "Calendar.h"
#include "LoggerCatalog.h"
#include "ModuleSettings.h"
#include "RegistryKey.h"
#include "SqliteSchema.h"
#include "SqliteSettings.h"
#include "frm_SqliteConfig.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QScreen>
#include <QSet>
#include <QThread>

#include <algorithm>
#include <cmath>

namespace {

using SqliteSettings::BusyTimeoutValue;
using SqliteSettings::DatabaseValue;
const QString OpenTitle = QStringLiteral("error opening database");
const QString ReadTitle = QStringLiteral("error reading database");

// Window bounds are inclusive, widened by half a millisecond (see Calendar::HalfMillisecond).
constexpr std::string_view DataSql
    = "SELECT time, value FROM samples WHERE channel = ?1 AND time >= ?2 AND time <= ?3 ORDER BY time";
constexpr std::string_view FirstSql = "SELECT time FROM samples WHERE channel = ?1 ORDER BY time LIMIT 1";
constexpr std::string_view LastSql = "SELECT time FROM samples WHERE channel = ?1 ORDER BY time DESC LIMIT 1";
constexpr std::string_view ExistsSql = "SELECT 1 FROM channels WHERE id = ?1";
constexpr std::string_view CategorySql = "SELECT id, path_id FROM channels WHERE category = ?1 ORDER BY id";

constexpr std::string_view CategoriesSql = "SELECT id, name, remark, parent, kind FROM categories";
constexpr std::string_view ChannelsSql = "SELECT id, name, category, parent_channel, path_id FROM channels";
constexpr std::string_view OverviewSql
    = "SELECT id, name, unit, data_type, category, path_id FROM channels ORDER BY id";

QString ColumnText(sqlite3_stmt* statement, int column)
{
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    return text ? QString::fromUtf8(text, sqlite3_column_bytes(statement, column)) : QString();
}

QString ToQString(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

bool SamePath(const QString& a, const QString& b)
{
    if (a.trimmed().isEmpty() || b.trimmed().isEmpty())
        return a.trimmed().isEmpty() == b.trimmed().isEmpty();
    return QFileInfo(a.trimmed()).absoluteFilePath() == QFileInfo(b.trimmed()).absoluteFilePath();
}

// Whether a dialog can be shown: a widget application on a real screen, called on its own
// thread. Exports without a screen run on the offscreen platform, tests too.
bool InteractiveSession()
{
    const auto* app = qobject_cast<QApplication*>(QCoreApplication::instance());
    if (!app || QThread::currentThread() != app->thread())
        return false;
    const QString platform = QGuiApplication::platformName();
    if (platform.isEmpty() || platform == QLatin1String("offscreen") || platform == QLatin1String("minimal"))
        return false;
    return QGuiApplication::primaryScreen() != nullptr;
}

// The text of a log line ("Reading the samples ...") as the start of a reason ("reading ...").
QString LowerFirst(QString text)
{
    if (!text.isEmpty())
        text[0] = text[0].toLower();
    return text;
}

} // namespace

SqliteDataModule::SqliteDataModule(const DataModuleRegistration& registration, QObject* parent)
    : QObject(parent)
    , m_registration(registration)
{ }

SqliteDataModule::~SqliteDataModule()
{
    Close();
}

void SqliteDataModule::SetMessageHandler(MessageHandlerInterface* handler)
{
    m_pMessageHandler = handler;
}

void SqliteDataModule::Log(const QString& title, const QString& text, const QString& source, qint16 level) const
{
    if (m_pMessageHandler)
        m_pMessageHandler->WriteLog(title, text, source, level);
}

QString SqliteDataModule::SettingsKey() const
{
    return ModuleSettings::Key(m_registration.name);
}

QString SqliteDataModule::ConfiguredDatabase() const
{
    return ModuleSettings::Read(m_registration.name, DatabaseValue);
}

bool SqliteDataModule::UseEnglish() const
{
    return ModuleSettings::UseEnglish();
}

qint32 SqliteDataModule::SelfCheck(qint32& status)
{
    // The library must be able to create, write and read a database; the configured file is
    // not looked at, since a missing file is a matter of configuration, not of the module.
    status = -1;
    sqlite3* raw = nullptr;
    const int rc = sqlite3_open_v2(":memory:", &raw, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
    SqliteConnection db(raw);
    if (rc != SQLITE_OK)
        return status;
    if (sqlite3_exec(db.get(), "CREATE TABLE t (x REAL); INSERT INTO t VALUES (0.25);", nullptr, nullptr, nullptr)
        != SQLITE_OK)
        return status;
    int prepared = SQLITE_OK;
    SqliteStatement query = PrepareStatement(db.get(), "SELECT x FROM t", prepared);
    if (query && sqlite3_step(query.get()) == SQLITE_ROW && sqlite3_column_double(query.get(), 0) == 0.25)
        status = 1;
    return status;
}

qint32 SqliteDataModule::Initialize(const QString& param, qint32& status)
{
    m_sDatabase = param.trimmed().isEmpty() ? ConfiguredDatabase() : param.trimmed();
    status = Open("SqliteDataModule.Initialize");
    return status;
}

void SqliteDataModule::Close()
{
    m_cDataQuery.reset();
    m_cFirstQuery.reset();
    m_cLastQuery.reset();
    m_cExistsQuery.reset();
    m_cCategoryQuery.reset();
    m_db.reset();
    m_cResolutions.Clear();
}

bool SqliteDataModule::EnsureOpen(const QString& source, qint32& status)
{
    if (!m_db) {
        if (m_sDatabase.isEmpty())
            m_sDatabase = ConfiguredDatabase();
        status = Open(source);
    }
    return m_db != nullptr;
}

qint32 SqliteDataModule::Fail(int rc, const QString& title, const QString& what, const QString& source)
{
    qint32 status = QueryFailed;
    switch (rc & 0xff) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        status = Locked;
        break;
    case SQLITE_NOTADB:
    case SQLITE_CORRUPT:
        status = Corrupt;
        break;
    case SQLITE_CANTOPEN:
    case SQLITE_READONLY:
    case SQLITE_IOERR:
    case SQLITE_PERM:
    case SQLITE_AUTH:
        status = CannotOpen;
        break;
    default:
        break;
    }
    QString reason = QString::fromUtf8(m_db ? sqlite3_errmsg(m_db.get()) : sqlite3_errstr(rc));
    if (rc == SQLITE_READONLY_ROLLBACK)
        reason += "; a write to the file was interrupted and only a writer can undo it";
    m_sFailure = LowerFirst(what) + " failed: " + reason + " (" + QDir::toNativeSeparators(m_sDatabase) + ")";
    Log(title,
        what + " of module " + m_registration.name + " (" + m_sDatabase + ") failed: " + reason + " ("
            + QString::number(rc) + ").",
        source, 3);
    return status;
}

qint32 SqliteDataModule::Open(const QString& source)
{
    Close();
    if (m_sDatabase.isEmpty())
        AskForDatabase();
    if (m_sDatabase.isEmpty()) {
        m_sFailure = "no database file is configured for module " + m_registration.name;
        Log(OpenTitle, "No database file is configured for module " + m_registration.name + ".", source, 3);
        return NoDatabase;
    }
    const QFileInfo file(m_sDatabase);
    if (!file.exists() || !file.isFile()) {
        m_sFailure = "the database file does not exist or is no file (" + QDir::toNativeSeparators(m_sDatabase) + ")";
        Log(OpenTitle,
            "The database file " + m_sDatabase + " of module " + m_registration.name + " does not exist or is no file.",
            source, 3);
        return FileMissing;
    }

    sqlite3* raw = nullptr;
    const int rc = sqlite3_open_v2(QFile::encodeName(m_sDatabase).constData(), &raw, SQLITE_OPEN_READONLY, nullptr);
    SqliteConnection db(raw);
    if (rc != SQLITE_OK)
        return Fail(rc, OpenTitle, "Opening the database", source);
    m_db = std::move(db);
    sqlite3_extended_result_codes(m_db.get(), 1);

    RegistryKey key;
    QString timeout = key.ReadValue(Hive::CurrentUser, SettingsKey(), BusyTimeoutValue);
    if (timeout.trimmed().isEmpty())
        timeout = key.ReadValue(Hive::LocalMachine, SettingsKey(), BusyTimeoutValue);
    bool ok = false;
    const int ms = timeout.trimmed().toInt(&ok);
    sqlite3_busy_timeout(m_db.get(), ok && ms >= 0 ? ms : DefaultBusyTimeoutMs);
    // Pages are read, never mapped: a file that another program cuts short while it is read
    // then gives an error and not a signal.
    sqlite3_exec(m_db.get(), "PRAGMA mmap_size = 0", nullptr, nullptr, nullptr);
    // Ten channels of a year of quarter hours span some thousand pages: kept between refreshes.
    sqlite3_exec(m_db.get(), "PRAGMA cache_size = -65536", nullptr, nullptr, nullptr);

    qint32 status = CheckSchema(source);
    if (status == 1)
        status = LoadInfo(source);
    if (status == 1)
        status = PrepareQueries(source);
    if (status != 1)
        Close();
    return status;
}

qint32 SqliteDataModule::CheckSchema(const QString& source)
{
    int rc = SQLITE_OK;
    SqliteStatement columns = PrepareStatement(m_db.get(), "SELECT name FROM pragma_table_info(?1)", rc);
    if (!columns)
        return Fail(rc, OpenTitle, "Reading the schema", source);
    for (const SqliteSchema::Table& table : SqliteSchema::RequiredTables) {
        sqlite3_reset(columns.get());
        sqlite3_bind_text(columns.get(), 1, table.name.data(), static_cast<int>(table.name.size()), SQLITE_STATIC);
        QSet<QString> present;
        while ((rc = sqlite3_step(columns.get())) == SQLITE_ROW)
            present.insert(ColumnText(columns.get(), 0).toLower());
        if (rc != SQLITE_DONE)
            return Fail(rc, OpenTitle, "Reading the schema", source);
        for (std::string_view column : table.columns) {
            if (column.empty() || present.contains(ToQString(column)))
                continue;
            const QString problem = present.isEmpty()
                ? "table " + ToQString(table.name) + " is missing"
                : "table " + ToQString(table.name) + " has no column " + ToQString(column);
            m_sFailure
                = "the file is no logger database: " + problem + " (" + QDir::toNativeSeparators(m_sDatabase) + ")";
            Log(OpenTitle,
                "The file " + m_sDatabase + " of module " + m_registration.name + " is no logger database: " + problem
                    + ".",
                source, 3);
            return ForeignSchema;
        }
    }
    return 1;
}

qint32 SqliteDataModule::LoadInfo(const QString& source)
{
    int rc = SQLITE_OK;
    SqliteStatement exists
        = PrepareStatement(m_db.get(), "SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = 'info'", rc);
    if (!exists)
        return Fail(rc, OpenTitle, "Reading the schema", source);
    rc = sqlite3_step(exists.get());
    if (rc == SQLITE_DONE)
        return 1; // no info table: resolutions unknown
    if (rc != SQLITE_ROW)
        return Fail(rc, OpenTitle, "Reading the schema", source);

    SqliteStatement info = PrepareStatement(
        m_db.get(), "SELECT key, value FROM info WHERE key = ?1 OR substr(key, 1, length(?2)) = ?2", rc);
    if (!info)
        return Fail(rc, OpenTitle, "Reading the info table", source);
    sqlite3_bind_text(info.get(), 1, SqliteSchema::KeyResolution.data(),
        static_cast<int>(SqliteSchema::KeyResolution.size()), SQLITE_STATIC);
    sqlite3_bind_text(info.get(), 2, SqliteSchema::KeyChannelResolutionPrefix.data(),
        static_cast<int>(SqliteSchema::KeyChannelResolutionPrefix.size()), SQLITE_STATIC);
    while ((rc = sqlite3_step(info.get())) == SQLITE_ROW) {
        const QString key = ColumnText(info.get(), 0);
        if (!m_cResolutions.Take(key, ColumnText(info.get(), 1)))
            Log("invalid resolution",
                "The resolution " + key + " in " + m_sDatabase + " is no positive number; it counts as unknown.",
                source, 2);
    }
    if (rc != SQLITE_DONE)
        return Fail(rc, OpenTitle, "Reading the info table", source);
    return 1;
}

qint32 SqliteDataModule::PrepareQueries(const QString& source)
{
    int rc = SQLITE_OK;
    for (auto [statement, sql] : { std::pair { &m_cDataQuery, DataSql }, std::pair { &m_cFirstQuery, FirstSql },
             std::pair { &m_cLastQuery, LastSql }, std::pair { &m_cExistsQuery, ExistsSql },
             std::pair { &m_cCategoryQuery, CategorySql } }) {
        *statement = PrepareStatement(m_db.get(), sql, rc);
        if (!*statement)
            return Fail(rc, OpenTitle, "Preparing the queries", source);
    }
    return 1;
}

bool SqliteDataModule::ResolveChannel(const QString& channelId, qint64& id, int& rc, Numbering& numbering)
{
    rc = SQLITE_OK;
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
        std::vector<std::pair<qint64, qint64>> rows;
        sqlite3_stmt* query = m_cCategoryQuery.get();
        sqlite3_reset(query);
        sqlite3_bind_int64(query, 1, parsed.category);
        while ((rc = sqlite3_step(query)) == SQLITE_ROW)
            rows.emplace_back(sqlite3_column_int64(query, 0), sqlite3_column_int64(query, 1));
        sqlite3_reset(query);
        if (rc != SQLITE_DONE)
            return false;
        rc = SQLITE_OK;
        category = numbering.insert(parsed.category, LoggerCatalog::NumberMap(parsed.category, rows));
    }
    const auto found = category->constFind(parsed.number);
    if (found == category->constEnd())
        return false;
    id = *found;
    return true;
}

bool SqliteDataModule::ReadBoundary(sqlite3_stmt* statement, qint64 id, double& date, const QString& source)
{
    sqlite3_reset(statement);
    sqlite3_bind_int64(statement, 1, id);
    const int rc = sqlite3_step(statement);
    if (rc == SQLITE_ROW && sqlite3_column_type(statement, 0) != SQLITE_NULL)
        date = sqlite3_column_double(statement, 0);
    sqlite3_reset(statement);
    if (rc != SQLITE_ROW && rc != SQLITE_DONE) {
        Fail(rc, ReadTitle, "Reading the period of channel " + QString::number(id), source);
        return false;
    }
    return true;
}

void SqliteDataModule::GetFirstDate(const QString& channelId, double& date)
{
    const QString source = QStringLiteral("SqliteDataModule.GetFirstDate");
    qint32 status = 1;
    if (!EnsureOpen(source, status))
        return;
    qint64 id = 0;
    int rc = SQLITE_OK;
    Numbering numbering;
    if (ResolveChannel(channelId, id, rc, numbering))
        ReadBoundary(m_cFirstQuery.get(), id, date, source);
    else if (rc != SQLITE_OK)
        Fail(rc, ReadTitle, "Reading the channels of channel " + channelId.trimmed(), source);
}

void SqliteDataModule::GetLastDate(const QString& channelId, double& date)
{
    const QString source = QStringLiteral("SqliteDataModule.GetLastDate");
    qint32 status = 1;
    if (!EnsureOpen(source, status))
        return;
    qint64 id = 0;
    int rc = SQLITE_OK;
    Numbering numbering;
    if (ResolveChannel(channelId, id, rc, numbering))
        ReadBoundary(m_cLastQuery.get(), id, date, source);
    else if (rc != SQLITE_OK)
        Fail(rc, ReadTitle, "Reading the channels of channel " + channelId.trimmed(), source);
}

qint32 SqliteDataModule::GetChannelOverview(ChannelCollection& channels, qint32& status)
{
    const QString source = QStringLiteral("SqliteDataModule.GetChannelOverview");
    channels.Clear();
    status = 1;
    if (!EnsureOpen(source, status))
        return status;
    int rc = SQLITE_OK;
    SqliteStatement query = PrepareStatement(m_db.get(), OverviewSql, rc);
    if (!query)
        return status = Fail(rc, ReadTitle, "Reading the channels", source);
    std::vector<LoggerCatalog::ChannelRow> rows;
    while ((rc = sqlite3_step(query.get())) == SQLITE_ROW)
        rows.push_back({ sqlite3_column_int64(query.get(), 0), ColumnText(query.get(), 1), ColumnText(query.get(), 2),
            sqlite3_column_int(query.get(), 3), sqlite3_column_int64(query.get(), 4), 0,
            sqlite3_column_int64(query.get(), 5) });
    if (rc != SQLITE_DONE)
        return status = Fail(rc, ReadTitle, "Reading the channels", source);
    LoggerCatalog::FillOverview(rows, m_registration.address.toInt(), channels);
    return status;
}

qint32 SqliteDataModule::GetChannelStructure(QStringList& categories, QStringList& channels, qint32& status)
{
    const QString source = QStringLiteral("SqliteDataModule.GetChannelStructure");
    categories.clear();
    channels.clear();
    status = 1;
    if (!EnsureOpen(source, status))
        return status;

    // The rows are read as they stand and put in order afterwards, not by a recursive query: what
    // a damaged file holds (an id twice, cycles of parents) can make such a query run forever.
    std::vector<LoggerCatalog::CategoryRow> categoryRows;
    int rc = SQLITE_OK;
    SqliteStatement query = PrepareStatement(m_db.get(), CategoriesSql, rc);
    if (!query)
        return status = Fail(rc, ReadTitle, "Reading the categories", source);
    while ((rc = sqlite3_step(query.get())) == SQLITE_ROW)
        categoryRows.push_back({ sqlite3_column_int64(query.get(), 0), ColumnText(query.get(), 1),
            ColumnText(query.get(), 2), sqlite3_column_int64(query.get(), 3), ColumnText(query.get(), 4) });
    if (rc != SQLITE_DONE)
        return status = Fail(rc, ReadTitle, "Reading the categories", source);

    std::vector<LoggerCatalog::ChannelRow> channelRows;
    query = PrepareStatement(m_db.get(), ChannelsSql, rc);
    if (!query)
        return status = Fail(rc, ReadTitle, "Reading the channels", source);
    while ((rc = sqlite3_step(query.get())) == SQLITE_ROW)
        channelRows.push_back({ sqlite3_column_int64(query.get(), 0), ColumnText(query.get(), 1), QString(), 0,
            sqlite3_column_int64(query.get(), 2), sqlite3_column_int64(query.get(), 3),
            sqlite3_column_int64(query.get(), 4) });
    if (rc != SQLITE_DONE)
        return status = Fail(rc, ReadTitle, "Reading the channels", source);

    LoggerCatalog::Structure structure = LoggerCatalog::BuildStructure(
        categoryRows, channelRows, "module " + m_registration.name + " (" + m_sDatabase + ")");
    for (const QString& problem : std::as_const(structure.problems))
        Log(ReadTitle, problem, source, 3);
    categories = std::move(structure.categories);
    channels = std::move(structure.channels);
    return status;
}

qint32 SqliteDataModule::GetData(
    const QString& channelList, ChannelCollection& channels, double from, double to, qint32& status)
{
    const QString source = QStringLiteral("SqliteDataModule.GetData");
    status = 1;
    bool readable = EnsureOpen(source, status);
    // Why samples could not be read: the first failure of the call. A channel that was not read
    // gets no block, so that it can't be taken for one without samples in the window.
    QString failure = readable ? QString() : m_sFailure;
    double resolution = 0.0;
    Numbering numbering;
    // One log line for the call, not one per channel. Damaged pages may hold the rows of some
    // channels only, so the others are still read; a lock or a failing device would only make
    // every further channel wait and fail alike.
    const auto readFailed = [&](int rc, const QString& what) {
        if (failure.isEmpty()) {
            status = Fail(rc, ReadTitle, what, source);
            failure = m_sFailure;
        }
        const int primary = rc & 0xff;
        if (primary != SQLITE_CORRUPT && primary != SQLITE_NOTADB)
            readable = false;
    };

    for (const QString& entry : channelList.split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
        const QString key = entry.trimmed();
        const DataMatrixPtr channel = channels.Channel(key);
        if (!channel)
            continue;
        // Every listed channel gets a fresh block or none, so that no data of an earlier window
        // stays behind.
        channel->SetDataBlock(nullptr);
        if (!readable)
            continue;
        // The block lands in the caller's object under the id it asked for, in either form.
        qint64 id = 0;
        int rc = SQLITE_OK;
        if (!ResolveChannel(key, id, rc, numbering)) {
            if (rc != SQLITE_OK)
                readFailed(rc, "Reading the channels of channel " + key);
            else
                channel->SetDataBlock(MatrixBlock::Create(0, 2)); // no such channel: nothing to read
            continue;
        }

        sqlite3_stmt* query = m_cDataQuery.get();
        sqlite3_reset(query);
        sqlite3_bind_int64(query, 1, id);
        sqlite3_bind_double(query, 2, from - Calendar::HalfMillisecond);
        sqlite3_bind_double(query, 3, to + Calendar::HalfMillisecond);
        m_cTimes.clear();
        m_cValues.clear();
        while ((rc = sqlite3_step(query)) == SQLITE_ROW) {
            m_cTimes.push_back(sqlite3_column_double(query, 0));
            const int type = sqlite3_column_type(query, 1);
            m_cValues.push_back(type == SQLITE_FLOAT || type == SQLITE_INTEGER ? sqlite3_column_double(query, 1)
                                                                               : MatrixBlock::DefaultNoValue);
        }
        sqlite3_reset(query);
        if (rc != SQLITE_DONE) {
            readFailed(rc, "Reading the samples of channel " + key);
            continue;
        }

        const size_t rows = m_cTimes.size();
        // Column by column, as the block stores its cells.
        std::vector<double> cells;
        cells.reserve(2 * rows);
        cells.insert(cells.end(), m_cTimes.begin(), m_cTimes.end());
        cells.insert(cells.end(), m_cValues.begin(), m_cValues.end());
        auto block = MatrixBlock::Create(0, 2);
        block->SetArray(static_cast<qsizetype>(rows), 2, std::move(cells));
        channel->SetDataBlock(block);

        sqlite3_stmt* exists = m_cExistsQuery.get();
        sqlite3_reset(exists);
        sqlite3_bind_int64(exists, 1, id);
        if (sqlite3_step(exists) == SQLITE_ROW) {
            // Channels of different loggers may be mixed: the finest resolution serves them all.
            const double seconds = m_cResolutions.Of(id);
            if (seconds > 0.0 && (resolution == 0.0 || seconds < resolution))
                resolution = seconds;
        }
        sqlite3_reset(exists);
    }

    channels.AddText(LoggerCatalog::DataText(QStringLiteral("SQLITE"), resolution, failure));
    return status;
}

void SqliteDataModule::ShowConfig()
{
    // The question's dialog is open: its event loop is where this call came from.
    if (m_bAsking)
        return;
    QString shown = m_sDatabase.isEmpty() ? ConfiguredDatabase() : m_sDatabase;
    if (shown.isEmpty())
        shown = SuggestedDatabase();
    frm_SqliteConfig dialog(shown, UseEnglish());
    if (dialog.ShowMe())
        ApplyDatabase(dialog.Database());
}

void SqliteDataModule::SetDatabaseQuestion(DatabaseQuestion question)
{
    m_cDatabaseQuestion = std::move(question);
}

QString SqliteDataModule::SuggestedDatabase()
{
    const QString demo = SqliteSettings::UserDemoDatabase();
    return QFileInfo(demo).isFile() ? QDir::toNativeSeparators(demo) : QString();
}

QString SqliteDataModule::AskWithDialog(const QString& suggestion) const
{
    if (!InteractiveSession())
        return QString();
    frm_SqliteConfig dialog(suggestion, UseEnglish());
    return dialog.ShowMe() ? dialog.Database() : QString();
}

bool SqliteDataModule::AskForDatabase()
{
    // Once per module object: the program calls a module many times per refresh, and a user who
    // declined can still choose a file in the module's configuration.
    if (m_bAskedForDatabase || m_bAsking)
        return false;
    m_bAskedForDatabase = true;
    m_bAsking = true;
    QString chosen;
    try {
        const QString suggestion = SuggestedDatabase();
        chosen = m_cDatabaseQuestion ? m_cDatabaseQuestion(suggestion) : AskWithDialog(suggestion);
    } catch (...) {
        m_bAsking = false;
        throw;
    }
    m_bAsking = false;
    chosen = chosen.trimmed();
    if (chosen.isEmpty())
        return false;
    ApplyDatabase(chosen);
    return !m_sDatabase.isEmpty();
}

void SqliteDataModule::ApplyDatabase(const QString& path)
{
    const QString before = m_sDatabase.isEmpty() ? ConfiguredDatabase() : m_sDatabase;
    if (!SqliteSettings::StoreUserDatabase(m_registration.name, path))
        Log("error storing settings",
            "The database file of module " + m_registration.name + " could not be stored in the user's settings.",
            "SqliteDataModule.ApplyDatabase", 3);
    // An empty entry hands the choice back to the machine-wide setting.
    const QString after = path.trimmed().isEmpty() ? ConfiguredDatabase() : path.trimmed();
    if (SamePath(before, after))
        return;
    Close();
    m_sDatabase = after;
    if (m_pMessageHandler) {
        qint32 status = 0;
        m_pMessageHandler->SendMessage("CHANNELS_CHANGED", m_registration.address, status);
    }
}
