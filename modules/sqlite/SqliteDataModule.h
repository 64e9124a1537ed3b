// SPDX-License-Identifier: GPL-3.0-or-later
// The embedded default data module: channels and samples of a logger database in one SQLite file,
// read through a read-only connection.
#pragma once

#include "DataModuleInterface.h"
#include "LoggerCatalog.h"
#include "LoggerChannelIds.h"
#include "SqliteHandles.h"

#include <QHash>
#include <QObject>
#include <QString>

#include <functional>
#include <vector>

class SqliteDataModule : public QObject, public DataModuleInterface
{
    Q_OBJECT
    Q_INTERFACES(DataModuleInterface)

public:
    static constexpr auto ProgID = "Sorano.SQLite";

    // Status codes besides 1 (success).
    enum Status : qint32 {
        NoDatabase = -1, ///< no database file configured
        FileMissing = -2, ///< the configured file does not exist or is no file
        CannotOpen = -3, ///< the library refused to open or read the file
        Locked = -4, ///< another connection holds a lock longer than the busy timeout
        Corrupt = -5, ///< not a database, or a damaged one
        ForeignSchema = -6, ///< a database without the logger tables
        QueryFailed = -7 ///< any other failure of a query
    };

    // Busy timeout when the settings name none.
    static constexpr int DefaultBusyTimeoutMs = 2000;

    explicit SqliteDataModule(const DataModuleRegistration& registration, QObject* parent = nullptr);
    ~SqliteDataModule() override;

    void SetMessageHandler(MessageHandlerInterface* handler) override;
    bool HasConfig() override { return true; }
    void GetFirstDate(const QString& channelId, double& date) override;
    void GetLastDate(const QString& channelId, double& date) override;
    qint32 SelfCheck(qint32& status) override;
    // A non-empty param names the database file and takes precedence over the settings.
    qint32 Initialize(const QString& param, qint32& status) override;
    qint32 GetChannelOverview(ChannelCollection& channels, qint32& status) override;
    // Parents before children. Rows that can't be placed in a tree (an id on a second row, a
    // cycle of parents, more than LoggerTree::MaxDepth levels) are left out with a log line.
    qint32 GetChannelStructure(QStringList& categories, QStringList& channels, qint32& status) override;
    // Appends "SQLITE;<resolution in seconds>". A channel whose samples could not be read (the
    // file can't be opened, is locked or damaged) gets no block; the status is then not 1 and
    // the text "SQLITE;<resolution>;<reason>" says what failed, naming the file. A channel the
    // database does not know gets an empty block.
    qint32 GetData(
        const QString& channelList, ChannelCollection& channels, double from, double to, qint32& status) override;
    // Shows the configuration dialog. While the module is asking for a file (see
    // SetDatabaseQuestion) it shows no second one.
    Q_INVOKABLE void ShowConfig() override;

    // "Software\HARVOLD\ModuleSettings\<registration name>".
    QString SettingsKey() const;
    // The database file of the settings: the user's value, else the machine-wide one.
    QString ConfiguredDatabase() const;
    // The file the module reads (or will read at the next call).
    QString Database() const { return m_sDatabase; }
    // Stores the file as the user's setting. When it differs from the file in use, the
    // connection is dropped (the next call opens the new file) and "CHANNELS_CHANGED" with
    // the module's address goes to the message handler.
    void ApplyDatabase(const QString& path);

    // The step that asks the user for a database file when the first call that needs one finds
    // none configured. It gets the suggested file ("" when there is none) and returns the
    // chosen one, "" when the user declined. It is asked once per module object: a call that
    // arrives while it runs, and every call after a declined question, fails with NoDatabase.
    // A chosen file is stored as by ApplyDatabase and the call goes on with it.
    using DatabaseQuestion = std::function<QString(const QString& suggestion)>;
    // Replaces the question; the default shows the configuration dialog in an interactive
    // session (a widget application on a real screen, on its own thread) and declines otherwise.
    void SetDatabaseQuestion(DatabaseQuestion question);
    // The file the question suggests: the user's demo database when that file exists.
    static QString SuggestedDatabase();

private:
    qint32 Open(const QString& source);
    void Close();
    bool EnsureOpen(const QString& source, qint32& status);
    qint32 CheckSchema(const QString& source);
    qint32 LoadInfo(const QString& source);
    qint32 PrepareQueries(const QString& source);
    // Logs the failure of a library call and keeps it as the reason of the next GetData text.
    qint32 Fail(int rc, const QString& title, const QString& what, const QString& source);
    void Log(const QString& title, const QString& text, const QString& source, qint16 level) const;
    // Channel number -> row id, per category, as far as one call has needed them.
    using Numbering = QHash<qint64, QHash<qint64, qint64>>;
    // The row id of a channel id of either form ("<category>#<number>" or a plain row id). False
    // for an id that names no channel; rc then says whether reading the channels failed.
    bool ResolveChannel(const QString& channelId, qint64& id, int& rc, Numbering& numbering);
    bool ReadBoundary(sqlite3_stmt* statement, qint64 id, double& date, const QString& source);
    bool UseEnglish() const;
    // Asks for a database file when none is configured and the question has not been asked yet;
    // true when a file was chosen and stored (m_sDatabase then names it).
    bool AskForDatabase();
    // The default question: the configuration dialog, only in an interactive session.
    QString AskWithDialog(const QString& suggestion) const;

    DataModuleRegistration m_registration;
    MessageHandlerInterface* m_pMessageHandler = nullptr;
    QString m_sDatabase;
    // The last failure to open or read, as one line naming the file.
    QString m_sFailure;
    DatabaseQuestion m_cDatabaseQuestion;
    // The question was asked (it is asked once); it is running now (a modal dialog runs an
    // event loop, in which other calls may arrive).
    bool m_bAskedForDatabase = false;
    bool m_bAsking = false;

    SqliteConnection m_db;
    SqliteStatement m_cDataQuery;
    SqliteStatement m_cFirstQuery;
    SqliteStatement m_cLastQuery;
    SqliteStatement m_cExistsQuery;
    SqliteStatement m_cCategoryQuery;

    // Native resolutions from the info table.
    LoggerCatalog::Resolutions m_cResolutions;

    // Work buffers of GetData, kept between calls so that reading allocates only the blocks.
    std::vector<double> m_cTimes;
    std::vector<double> m_cValues;
};
