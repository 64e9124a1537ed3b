// SPDX-License-Identifier: GPL-3.0-or-later
// Creates data-module objects from their registered ProgID through the module plug-ins.
#pragma once

#include "DataModuleInterface.h"

#include <QHash>
#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

class QPluginLoader;

// Finds the module plug-ins in a fixed list of folders and maps each ProgID named in a
// plug-in's metadata to that plug-in. The folders are scanned once, at the first request;
// plug-ins are loaded when a module is first created from them and never unloaded, because
// module objects and their code must outlive every box that holds them.
class DataModuleLoader
{
public:
    // Why a module could not be created; the number goes into the log line of the caller.
    enum class Failure {
        None = 0,
        UnknownProgId = 1,   ///< no plug-in in the folders names the ProgID
        PluginNotLoaded = 2, ///< the plug-in file names it but cannot be loaded
        NoFactory = 3,       ///< the plug-in's root object is no module factory
        FactoryRaised = 4,   ///< the factory threw while creating the module
        NoObject = 5,        ///< the factory created nothing
        NoInterface = 6      ///< the object created is no data module
    };

    struct Result
    {
        std::unique_ptr<QObject> object; // owns the module
        DataModuleInterface* module = nullptr;
        Failure failure = Failure::None;
        QString reason; // for the log, empty on success

        explicit operator bool() const { return module != nullptr; }
    };

    explicit DataModuleLoader(QStringList folders);
    ~DataModuleLoader();

    DataModuleLoader(const DataModuleLoader&) = delete;
    DataModuleLoader& operator=(const DataModuleLoader&) = delete;

    // The loader of the process, searching DefaultFolders().
    static DataModuleLoader& Instance();

    // Each folder of SORANO_MODULE_PATH (separated as PATH is on the platform), then
    // "modules" beside the program, then "../lib/sorano/modules" from the program's folder.
    static QStringList DefaultFolders();

    const QStringList& Folders() const { return m_folders; }

    // Every ProgID found, in the spelling of the plug-in's metadata.
    QStringList ProgIDs();
    // The plug-in file that provides the ProgID (compared without regard to case), or "".
    QString PluginFile(const QString& progId);

    // A new module object for the ProgID, or the failure and its reason. Nothing the plug-in
    // throws leaves this call.
    Result Create(const QString& progId, const DataModuleRegistration& registration);

private:
    struct Entry
    {
        QString progId;
        QPluginLoader* loader = nullptr;
    };

    void Scan();

    QStringList m_folders;
    bool m_bScanned = false;
    std::vector<std::unique_ptr<QPluginLoader>> m_loaders;
    QHash<QString, Entry> m_entries; // by ProgID in lower case
};
