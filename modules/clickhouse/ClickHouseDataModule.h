// SPDX-License-Identifier: GPL-3.0-or-later
// The ClickHouse data module: channels and samples of a logger database on a ClickHouse server, read
// over its HTTP interface; grids of fixed steps may be aggregated on the server.
#pragma once

#include "ClickHouseHttp.h"
#include "DataModuleInterface.h"
#include "LoggerCatalog.h"

#include <QHash>
#include <QObject>
#include <QString>

#include <chrono>
#include <cstdint>
#include <vector>

class ClickHouseDataModule : public QObject, public DataModuleInterface, public DataAggregationInterface
{
    Q_OBJECT
    Q_INTERFACES(DataModuleInterface DataAggregationInterface)

public:
    static constexpr auto ProgID = "Sorano.ClickHouse";

    // Status codes besides 1 (success).
    enum Status : qint32 {
        NotConfigured = -1, ///< no usable URL or database name in the settings
        Unreachable = -2, ///< no connection, or it dropped during a read
        LoginRefused = -3, ///< the server refused the user or the password
        TimedOut = -4, ///< no complete answer within the timeout
        ForeignSchema = -6, ///< a table or column of the logger tables is missing
        QueryFailed = -7 ///< any other error the server reported, or an answer that can't be read
    };

    // Settings: values of the registration's key, the user's over the machine's.
    struct Settings
    {
        QString url = QStringLiteral("http://127.0.0.1:8123/");
        QString database = QStringLiteral("default");
        QString user = QStringLiteral("default");
        int timeoutSeconds = 10;
        bool aggregate = true;
    };

    explicit ClickHouseDataModule(const DataModuleRegistration& registration, QObject* parent = nullptr);
    ~ClickHouseDataModule() override;

    void SetMessageHandler(MessageHandlerInterface* handler) override;
    bool HasConfig() override { return true; }
    void GetFirstDate(const QString& channelId, double& date) override;
    void GetLastDate(const QString& channelId, double& date) override;
    // Checks that the HTTP library works; the server is not asked.
    qint32 SelfCheck(qint32& status) override;
    // A non-empty param is the URL and takes precedence over the settings.
    qint32 Initialize(const QString& param, qint32& status) override;
    qint32 GetChannelOverview(ChannelCollection& channels, qint32& status) override;
    qint32 GetChannelStructure(QStringList& categories, QStringList& channels, qint32& status) override;
    // Appends "CLICKHOUSE;<resolution>[;<reason>]"; the rules of the SQLite module, one query for
    // all channels.
    qint32 GetData(
        const QString& channelList, ChannelCollection& channels, double from, double to, qint32& status) override;
    qint32 GetAggregatedData(const QString& channelList, ChannelCollection& channels, double from, double to,
        double gridStart, qint64 stepSeconds, qint32& status) override;
    Q_INVOKABLE void ShowConfig() override;

    // The settings of the registration as stored; defaults for values not set.
    Settings ConfiguredSettings() const;
    // Stores the values as the user's settings. When they differ from those in use, the next call
    // connects anew and "CHANNELS_CHANGED" with the module's address goes to the message handler.
    void ApplySettings(const Settings& settings);
    // Uses these values instead of the stored settings from the next call on.
    void UseSettings(const Settings& settings);
    // Why the last call failed: one line naming the server.
    QString LastFailure() const { return m_sFailure; }
    // The server as log lines and reasons name it (the URL without user information).
    QString Server() const { return m_http.Server(); }

    // The version the server reports, or its error; used by the configuration dialog.
    static bool ServerVersion(const Settings& settings, QString& answer);

private:
    struct ChannelKey
    {
        qint64 id = 0;
        qint64 category = 0;
        qint64 pathId = 0;
    };
    using Numbering = QHash<qint64, QHash<qint64, qint64>>;

    bool EnsureReady(const QString& source, qint32& status);
    qint32 CheckSchema(const QString& source);
    qint32 LoadInfo(const QString& source);
    // Runs a query; on failure logs one line, keeps the reason and returns the status.
    // The status of a request's outcome, failures logged with what was done and the reason.
    qint32 Status(
        ClickHouse::Outcome outcome, const ClickHouse::Connection& http, const QString& what, const QString& source);
    qint32 Query(std::string_view sql, const std::vector<ClickHouse::ExternalTable>& tables, const QString& what,
        const QString& source);
    qint32 Fail(qint32 status, const QString& what, const QString& reason, const QString& source);
    void Log(const QString& title, const QString& text, const QString& source, qint16 level) const;
    // The catalog of channels (id, category, path id) for resolving ids within one call.
    qint32 ReadChannelKeys(const QString& source);
    bool ResolveChannel(const QString& channelId, qint64& id, Numbering& numbering) const;
    qint32 ReadBoundary(const QString& channelId, bool last, double& date, const QString& source);
    // The common part of GetData and GetAggregatedData: samples of the listed channels, raw for
    // every channel unless aggregating gives it steps.
    qint32 Read(const QString& channelList, ChannelCollection& channels, double from, double to, bool aggregate,
        double gridStart, qint64 stepSeconds, const QString& source);
    qint32 ReadRaw(const std::vector<qint64>& ids, double from, double to, const QString& source);
    qint32 ReadSteps(const std::vector<qint64>& ids, double from, double to, qint64 gridStartMs, qint64 stepMs,
        const QString& source);

    DataModuleRegistration m_registration;
    MessageHandlerInterface* m_pMessageHandler = nullptr;
    Settings m_settings;
    bool m_bConfigured = false;
    bool m_bReady = false; // schema checked and info read since the last connection failure
    bool m_bHasInfo = false;
    QString m_sFailure;
    ClickHouse::Connection m_http;
    ClickHouse::Connection m_httpSide; // the second of two queries run side by side

    // The number of samples and the first and last time of channels, as read at `read`.
    struct Period
    {
        std::uint64_t count = 0;
        double first = 0.0, last = 0.0;
        std::chrono::steady_clock::time_point read;
    };
    QHash<qint64, Period> m_cPeriods;

    // Native resolutions from the info table.
    LoggerCatalog::Resolutions m_cResolutions;
    std::vector<ChannelKey> m_cChannelKeys;

    // Work buffers: rows of the last samples query, kept between calls.
    struct Rows
    {
        std::vector<qint64> channels;
        std::vector<double> times;
        std::vector<double> values;
        void clear()
        {
            channels.clear();
            times.clear();
            values.clear();
        }
        // Puts the rows in order of channel and time, keeping the order of equal keys; rows
        // already in order (the usual case) cost one pass.
        void SortByChannelAndTime();
    };
    Rows m_cRaw;
    // One step of one channel as the server aggregated it.
    struct StepRow
    {
        qint64 channel = 0;
        qint64 step = 0;
        std::uint64_t count = 0; // values that are not missing
        double largest = 0.0, smallest = 0.0, sum = 0.0;
    };
    std::vector<StepRow> m_cSteps;
};
