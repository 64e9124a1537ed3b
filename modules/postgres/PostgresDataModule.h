// SPDX-License-Identifier: GPL-3.0-or-later
// Data module of logger tables on a PostgreSQL server: the tables of the logger database (info,
// categories, channels, samples) in one schema, read through libpq with a timeout on every call.
#pragma once

#include "DataModuleInterface.h"
#include "LoggerCatalog.h"
#include "LoggerChannelIds.h"
#include "PostgresConnection.h"

#include <QHash>
#include <QObject>
#include <QString>

#include <optional>
#include <vector>

class PostgresDataModule : public QObject, public DataModuleInterface, public DataAggregationInterface
{
    Q_OBJECT
    Q_INTERFACES(DataModuleInterface DataAggregationInterface)

public:
    static constexpr auto ProgID = "Sorano.PostgreSQL";

    // Status codes besides 1 (success).
    enum Status : qint32 {
        NotConfigured = -1, ///< no connection string, or one that can't be read
        Unreachable = -2, ///< no server answered, or the connection broke
        LoginRefused = -3, ///< the server refused the login
        TimedOut = -4, ///< the server did not answer within the timeout
        ForeignSchema = -6, ///< the schema lacks a logger table or column
        QueryFailed = -7 ///< any other failure of a statement
    };

    static constexpr int DefaultTimeoutSeconds = 10;

    // What the module connects to and how it reads.
    struct Settings
    {
        QString connection; // libpq connection string, without a password
        QString schema = QStringLiteral("public");
        int timeoutSeconds = DefaultTimeoutSeconds;
        bool aggregate = true;
        bool operator==(const Settings&) const = default;
    };

    explicit PostgresDataModule(const DataModuleRegistration& registration, QObject* parent = nullptr);
    ~PostgresDataModule() override;

    void SetMessageHandler(MessageHandlerInterface* handler) override;
    bool HasConfig() override { return true; }
    void GetFirstDate(const QString& channelId, double& date) override;
    void GetLastDate(const QString& channelId, double& date) override;
    qint32 SelfCheck(qint32& status) override;
    // A non-empty param is a connection string that takes precedence over the settings.
    qint32 Initialize(const QString& param, qint32& status) override;
    qint32 GetChannelOverview(ChannelCollection& channels, qint32& status) override;
    qint32 GetChannelStructure(QStringList& categories, QStringList& channels, qint32& status) override;
    // Appends "POSTGRES;<resolution in seconds>[;<reason>]"; the rules of the SQLite module.
    qint32 GetData(
        const QString& channelList, ChannelCollection& channels, double from, double to, qint32& status) override;
    // Aggregates on the server unless the setting "Aggregate" is "0".
    qint32 GetAggregatedData(const QString& channelList, ChannelCollection& channels, double from, double to,
        double gridStart, qint64 stepSeconds, qint32& status) override;
    Q_INVOKABLE void ShowConfig() override;

    // The settings of the registration: the user's values over the machine-wide ones.
    Settings ConfiguredSettings() const;
    // Reads with these settings from now on instead of the registration's (the dialog's preview).
    void UseSettings(const Settings& settings);
    Settings CurrentSettings() const { return m_settings; }
    // Stores the settings as the user's. A change of connection or schema drops the connection
    // and sends "CHANNELS_CHANGED" with the module's address.
    void ApplySettings(const Settings& settings);
    // Connects with the settings and asks for the server's version: the version or the error.
    static QString ServerVersion(const Settings& settings, bool* ok = nullptr);

private:
    enum class Query { Data, Aggregate, First, Last, Exists, Category, Count };
    using Numbering = QHash<qint64, QHash<qint64, qint64>>;

    qint32 Open(const QString& source);
    void Close();
    bool EnsureOpen(const QString& source, qint32& status);
    qint32 CheckSchema(const QString& source);
    qint32 LoadInfo(const QString& source);
    qint32 PrepareQueries(const QString& source);
    // Logs the failure of the connection or a statement, keeps it as the reason of the next
    // GetData text and drops a connection that broke. Returns the status.
    qint32 Fail(PgConnection::Outcome outcome, const QString& title, const QString& what, const QString& source);
    void Log(const QString& title, const QString& text, const QString& source, qint16 level) const;
    QByteArray Table(const char* name) const;
    // Runs a prepared statement with the channel and further parameters.
    PgConnection::Outcome Run(Query query, const std::vector<QByteArray>& parameters, PgResult& result);
    bool ResolveChannel(const QString& channelId, qint64& id, PgConnection::Outcome& outcome, Numbering& numbering);
    void ReadBoundary(Query query, const QString& channelId, double& date, const QString& source);
    qint32 Read(const QString& channelList, ChannelCollection& channels, double from, double to,
        std::optional<std::pair<double, qint64>> grid, const QString& source);
    MatrixBlockPtr RawBlock(const PGresult* result);
    MatrixBlockPtr AggregatedBlock(const PGresult* result, qint32 dataType, qint64 gridStartMs, qint64 stepMs);

    DataModuleRegistration m_registration;
    MessageHandlerInterface* m_pMessageHandler = nullptr;
    Settings m_settings;
    bool m_bOwnSettings = false; // set by UseSettings or a param: the registration's are not read
    bool m_bSettingsRead = false;
    QString m_sFailure;

    PgConnection m_connection;
    bool m_bReady = false; // connected, schema checked, statements prepared
    QByteArray m_cSchema; // the schema as an escaped identifier
    bool m_bHasInfo = false; // the schema has an info table

    // Native resolutions from the info table.
    LoggerCatalog::Resolutions m_cResolutions;

    std::vector<double> m_cTimes;
    std::vector<double> m_cValues;
};
