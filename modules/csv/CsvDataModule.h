// SPDX-License-Identifier: GPL-3.0-or-later
// The CSV data module: a folder tree of CSV files as loggers export them. Folders are
// categories, a file is a measuring point, its value columns are its channels (ids in
// CsvTree.h). Files are indexed once per version, so that a refresh reads and parses only the
// lines of its time window.
#pragma once

#include "CsvFileIndex.h"
#include "CsvTree.h"
#include "DataModuleInterface.h"

#include <QHash>
#include <QObject>
#include <QSet>
#include <QString>

#include <memory>
#include <unordered_map>

class CsvDataModule : public QObject, public DataModuleInterface
{
    Q_OBJECT
    Q_INTERFACES(DataModuleInterface)

public:
    static constexpr auto ProgID = "Sorano.CSV";

    // Status codes besides 1 (success).
    enum Status : qint32 {
        NoFolder = -1, ///< no folder configured
        FolderMissing = -2, ///< the configured folder does not exist or is no folder
        ReadFailed = -3 ///< GetData: a file vanished or could not be read
    };

    // Indexed files kept open at once; the least recently used one goes first.
    static constexpr int MaxOpenFiles = 32;

    explicit CsvDataModule(const DataModuleRegistration& registration, QObject* parent = nullptr);
    ~CsvDataModule() override;

    void SetMessageHandler(MessageHandlerInterface* handler) override;
    bool HasConfig() override { return true; }
    // The first and last time of the channel's file.
    void GetFirstDate(const QString& channelId, double& date) override;
    void GetLastDate(const QString& channelId, double& date) override;
    qint32 SelfCheck(qint32& status) override;
    // A non-empty param names the root folder and takes precedence over the settings.
    qint32 Initialize(const QString& param, qint32& status) override;
    // Reads the tree anew, so that files added since show up.
    qint32 GetChannelOverview(ChannelCollection& channels, qint32& status) override;
    // Categories "id$name$relative path$parent$FOLDER" and "...$MEASURING" for files; channels
    // "<file id>#<n>$name$unit$<file id>$0$<n>". A "$" in a name becomes "_".
    qint32 GetChannelStructure(QStringList& categories, QStringList& channels, qint32& status) override;
    // Appends "CSV;<resolution in seconds>", the finest resolution among the files read. A
    // channel whose file is gone or can't be read (or whose folder is) gets no block; the status
    // is then not 1 and the text "CSV;<resolution>;<reason>" says what failed, naming the file.
    // An unknown channel gets an empty block.
    qint32 GetData(
        const QString& channelList, ChannelCollection& channels, double from, double to, qint32& status) override;
    Q_INVOKABLE void ShowConfig() override;

    // "Software\HARVOLD\ModuleSettings\<registration name>".
    QString SettingsKey() const;
    // The root folder of the settings: the user's value "Folder", else the machine-wide one.
    QString ConfiguredFolder() const;
    // The folder the module reads: Initialize's param, else the settings.
    QString Folder() const;
    // Stores the folder as the user's setting (empty hands the choice back to the machine-wide
    // value). When the folder in use changes, the tree is read anew at the next call and
    // "CHANNELS_CHANGED" with the module's address goes out. True when it changed.
    bool ApplyFolder(const QString& folder);
    // The configuration dialog speaks English when the machine-wide language offset is 1000.
    static bool UseEnglish();

private:
    void Log(const QString& title, const QString& text, const QString& source, qint16 level) const;
    // Reads the tree when asked to, when it was never read or when the folder changed. Returns
    // 1 or a Status, with a log line.
    qint32 EnsureTree(bool rescan, const QString& source);
    // The current index of a file, built when missing or out of date; nothing for an unknown id.
    CsvFileIndex* IndexFor(qint32 fileId, const QString& source);
    CsvFileIndex* IndexForChannel(const QString& channelId, int& number, const QString& source);

    DataModuleRegistration m_registration;
    MessageHandlerInterface* m_pMessageHandler = nullptr;
    QString m_sParamFolder;
    // Why the last EnsureTree failed, as one line; empty after it succeeded.
    QString m_sTreeFailure;
    CsvTree m_cTree;
    struct CachedIndex
    {
        std::unique_ptr<CsvFileIndex> index;
        quint64 lastUse = 0;
    };
    std::unordered_map<QString, CachedIndex> m_cIndexes;
    quint64 m_lUseCounter = 0;
    // Header problems already logged, by file version, so that a rescan doesn't repeat them.
    QSet<QString> m_cReported;
};

// "<file id>#<n>" into its parts; false for any other text.
bool ParseCsvChannelId(const QString& id, qint32& fileId, int& number);
