// SPDX-License-Identifier: GPL-3.0-or-later
#include "AddIns.h"

#include "AppPaths.h"
#include "Logging.h"
#include "RegistryKey.h"
#include "Settings.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QLibrary>
#include <QPluginLoader>
#include <QSet>

#include <algorithm>
#include <exception>
#include <utility>

namespace {

const QString LoadSource = QStringLiteral("AddIns.Load");

QString Reason(const std::exception& error)
{
    return QString::fromLocal8Bit(error.what());
}

// Runs one call into an add-in; whatever it throws stops here, with a log line.
template<typename Call> void Guarded(const QString& source, const QString& tool, Call&& call)
{
    try {
        call();
    } catch (const std::exception& error) {
        WriteLog(QStringLiteral("add-in error"), QStringLiteral("An add-in failed on %1: %2.").arg(tool, Reason(error)),
            source, LogLevel::Skipped);
    } catch (...) {
        WriteLog(QStringLiteral("add-in error"), QStringLiteral("An add-in failed on %1.").arg(tool), source,
            LogLevel::Skipped);
    }
}

} // namespace

AddIns::AddIns()
    : AddIns(DefaultFolders())
{ }

AddIns::AddIns(QStringList folders)
    : m_folders(std::move(folders))
{ }

// The loaders go without unload(): the libraries and their root objects stay for the
// process's life.
AddIns::~AddIns() = default;

QStringList AddIns::DefaultFolders()
{
    return AppPaths::PluginFolders("SORANO_ADDIN_PATH", QStringLiteral("addins"));
}

void AddIns::Scan()
{
    m_bScanned = true;
    for (const QString& path : AppPaths::PluginFiles(m_folders)) {
        auto loader = std::make_unique<QPluginLoader>(path);
        const QJsonObject metaData = loader->metaData();
        if (metaData.value(QLatin1String("IID")).toString() != QLatin1String(SoranoAddInInterface_iid))
            continue;
        const QJsonArray names
            = metaData.value(QLatin1String("MetaData")).toObject().value(QLatin1String("ProgIDs")).toArray();
        bool used = false;
        for (const auto& value : names) {
            const QString key = value.toString().trimmed().toLower();
            // The first folder that provides a name wins, as for the data modules.
            if (key.isEmpty() || m_byName.contains(key))
                continue;
            m_byName.insert(key, loader.get());
            used = true;
        }
        if (used)
            m_loaders.push_back(std::move(loader));
    }
}

bool AddIns::Holds(const AddInInterface* addIn) const
{
    return std::any_of(m_addIns.begin(), m_addIns.end(), [addIn](const Entry& held) { return held.addIn == addIn; });
}

AddInInterface* AddIns::Create(const QString& name)
{
    if (!m_bScanned)
        Scan();
    const auto found = m_byName.constFind(name.trimmed().toLower());
    if (found == m_byName.constEnd()) {
        WriteLog(QStringLiteral("error creating add-in"), QStringLiteral("No add-in plug-in provides %1.").arg(name),
            LoadSource, LogLevel::Skipped);
        return nullptr;
    }
    QPluginLoader* loader = *found;
    QObject* root = nullptr;
    try {
        root = loader->instance();
    } catch (...) {
        root = nullptr;
    }
    auto* addIn = qobject_cast<AddInInterface*>(root);
    if (!addIn) {
        WriteLog(QStringLiteral("error creating add-in"),
            QStringLiteral("Add-in %1 can't be created from %2: %3.")
                .arg(name, loader->fileName(), root ? QStringLiteral("no add-in") : loader->errorString()),
            LoadSource, LogLevel::Skipped);
        return nullptr;
    }
    // A plug-in has one root object: a name listed twice gives the add-in once.
    if (Holds(addIn)) {
        WriteLog(QStringLiteral("error creating add-in"), QStringLiteral("Add-in %1 is loaded already.").arg(name),
            LoadSource, LogLevel::Skipped);
        return nullptr;
    }
    return addIn;
}

qint32 AddIns::Load(AddInHost& host)
{
    RegistryKey key;
    if (key.OpenKey(Hive::LocalMachine, KeyRead, QLatin1String(Settings::KeyAddIns)) != RegistryStatus::Ok) {
        WriteLog(QStringLiteral("no add-ins"),
            QStringLiteral("Registry key Software\\HARVOLD\\Sorano\\AddIns not found."), LoadSource, LogLevel::Info);
        return -1;
    }
    qint32 result = 0;
    for (QString value = key.GetFirstValue(); !value.isEmpty(); value = key.GetNextValue()) {
        const QString name = key.Value(value);
        AddInInterface* addIn = Create(name);
        if (!addIn)
            continue;
        try {
            result = addIn->Init(host);
        } catch (const std::exception& error) {
            WriteLog(QStringLiteral("error initialising add-in"),
                QStringLiteral("Add-in %1 failed to start: %2.").arg(name, Reason(error)), LoadSource,
                LogLevel::Skipped);
            continue;
        } catch (...) {
            WriteLog(QStringLiteral("error initialising add-in"),
                QStringLiteral("Add-in %1 failed to start.").arg(name), LoadSource, LogLevel::Skipped);
            continue;
        }
        if (result != 0) {
            WriteLog(QStringLiteral("add-in declined"),
                QStringLiteral("Add-in %1 returned %2 from Init and is not used.").arg(name).arg(result), LoadSource,
                LogLevel::Info);
            continue;
        }
        WriteLog(
            QStringLiteral("add-in loaded"), QStringLiteral("Add-in %1 loaded.").arg(name), LoadSource, LogLevel::Info);
        m_addIns.push_back(Entry { addIn, nullptr });
    }
    key.CloseKey();
    return result;
}

void AddIns::Add(std::unique_ptr<AddInInterface> addIn)
{
    if (addIn && !Holds(addIn.get())) {
        AddInInterface* held = addIn.get();
        m_addIns.push_back(Entry { held, std::move(addIn) });
    }
}

void AddIns::ToolClick(const QString& tool)
{
    // The size is read at each turn: an add-in may let events run, and the program may end
    // its add-ins meanwhile.
    for (std::size_t i = 0; i < m_addIns.size(); ++i)
        Guarded(QStringLiteral("AddIns.ToolClick"), tool, [&] { m_addIns[i].addIn->ToolClick(tool); });
}

void AddIns::ToolComboClose(const QString& tool)
{
    for (std::size_t i = 0; i < m_addIns.size(); ++i)
        Guarded(QStringLiteral("AddIns.ToolComboClose"), tool, [&] { m_addIns[i].addIn->ToolComboClose(tool); });
}

void AddIns::Terminate()
{
    const std::vector<Entry> ending = std::exchange(m_addIns, {});
    for (const Entry& entry : ending)
        Guarded(QStringLiteral("AddIns.Terminate"), QStringLiteral("Terminate"), [&] { entry.addIn->Terminate(); });
}
