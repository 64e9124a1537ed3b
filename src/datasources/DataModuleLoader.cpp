// SPDX-License-Identifier: GPL-3.0-or-later
#include "DataModuleLoader.h"

#include "AppPaths.h"
#include "Logging.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QLibrary>
#include <QPluginLoader>
#include <QSet>

#include <exception>

namespace {

const QString ScanSource = QStringLiteral("DataModuleLoader.Scan");
const QString CreateSource = QStringLiteral("DataModuleLoader.Create");

} // namespace

DataModuleLoader::DataModuleLoader(QStringList folders) : m_folders(std::move(folders)) {}

// The loaders are dropped without unload(): the libraries stay mapped for the process's life.
DataModuleLoader::~DataModuleLoader() = default;

DataModuleLoader& DataModuleLoader::Instance()
{
    static DataModuleLoader loader(DefaultFolders());
    return loader;
}

QStringList DataModuleLoader::DefaultFolders()
{
    return AppPaths::PluginFolders("SORANO_MODULE_PATH", QStringLiteral("modules"));
}

void DataModuleLoader::Scan()
{
    m_bScanned = true;
    for (const QString& path : AppPaths::PluginFiles(m_folders)) {
        auto loader = std::make_unique<QPluginLoader>(path);
        const QJsonObject metaData = loader->metaData();
        if (metaData.isEmpty()) {
            WriteLog(QStringLiteral("error reading module file"),
                     QStringLiteral("File %1 can't be read as a plug-in: %2.").arg(path, loader->errorString()),
                     ScanSource, LogLevel::Skipped);
            continue;
        }
        const QString iid = metaData.value(QLatin1String("IID")).toString();
        if (iid != QLatin1String(SoranoDataModuleFactory_iid)) {
            WriteLog(QStringLiteral("skipped module file"),
                     QStringLiteral("File %1 is a plug-in of another kind (%2).").arg(path, iid), ScanSource,
                     LogLevel::Info);
            continue;
        }
        const QJsonArray progIds =
            metaData.value(QLatin1String("MetaData")).toObject().value(QLatin1String("ProgIDs")).toArray();
        bool used = false;
        for (const auto& value : progIds) {
            const QString progId = value.toString().trimmed();
            if (progId.isEmpty())
                continue;
            const QString key = progId.toLower();
            if (const auto found = m_entries.constFind(key); found != m_entries.constEnd()) {
                WriteLog(QStringLiteral("skipped module file"),
                         QStringLiteral("ProgID %1 of file %2 is already provided by %3.")
                             .arg(progId, path, found->loader->fileName()),
                         ScanSource, LogLevel::Skipped);
                continue;
            }
            m_entries.insert(key, Entry{progId, loader.get()});
            used = true;
        }
        if (!used) {
            WriteLog(QStringLiteral("skipped module file"),
                     QStringLiteral("File %1 provides no ProgID.").arg(path), ScanSource, LogLevel::Skipped);
            continue;
        }
        m_loaders.push_back(std::move(loader));
    }
}

QStringList DataModuleLoader::ProgIDs()
{
    if (!m_bScanned)
        Scan();
    QStringList ids;
    for (const Entry& entry : std::as_const(m_entries))
        ids << entry.progId;
    ids.sort(Qt::CaseInsensitive);
    return ids;
}

QString DataModuleLoader::PluginFile(const QString& progId)
{
    if (!m_bScanned)
        Scan();
    const auto found = m_entries.constFind(progId.toLower());
    return found == m_entries.constEnd() ? QString() : found->loader->fileName();
}

DataModuleLoader::Result DataModuleLoader::Create(const QString& progId, const DataModuleRegistration& registration)
{
    Result result;
    auto fail = [&result](Failure failure, const QString& reason) {
        result.object.reset();
        result.module = nullptr;
        result.failure = failure;
        result.reason = reason;
        return std::move(result);
    };

    if (!m_bScanned)
        Scan();
    const auto found = m_entries.constFind(progId.toLower());
    if (found == m_entries.constEnd())
        return fail(Failure::UnknownProgId, QStringLiteral("No module plug-in provides %1").arg(progId));

    QPluginLoader* loader = found->loader;
    QObject* root = loader->instance();
    if (!root) {
        const QString reason =
            QStringLiteral("Plug-in %1 can't be loaded: %2").arg(loader->fileName(), loader->errorString());
        WriteLog(QStringLiteral("error loading module file"), reason + QLatin1Char('.'), CreateSource,
                 LogLevel::Skipped);
        return fail(Failure::PluginNotLoaded, reason);
    }
    auto* factory = qobject_cast<DataModuleFactory*>(root);
    if (!factory)
        return fail(Failure::NoFactory, QStringLiteral("Plug-in %1 is no module factory").arg(loader->fileName()));

    QObject* created = nullptr;
    try {
        created = factory->CreateModule(found->progId, registration);
    } catch (const std::exception& error) {
        return fail(Failure::FactoryRaised, QStringLiteral("Creating %1 failed: %2")
                                                .arg(found->progId, QString::fromLocal8Bit(error.what())));
    } catch (...) {
        return fail(Failure::FactoryRaised, QStringLiteral("Creating %1 failed").arg(found->progId));
    }
    if (!created)
        return fail(Failure::NoObject, QStringLiteral("Plug-in %1 created no object for %2")
                                           .arg(loader->fileName(), found->progId));
    result.object.reset(created);
    result.module = qobject_cast<DataModuleInterface*>(created);
    if (!result.module)
        return fail(Failure::NoInterface, QStringLiteral("Object %1 is no data module").arg(found->progId));
    return result;
}
