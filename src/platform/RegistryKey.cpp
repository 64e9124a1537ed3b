// SPDX-License-Identifier: GPL-3.0-or-later
#include "RegistryKey.h"

#include <QSettings>

namespace {

QSettings::Scope ScopeOf(Hive hive)
{
    return hive == Hive::LocalMachine ? QSettings::SystemScope : QSettings::UserScope;
}

std::unique_ptr<QSettings> OpenRoot(Hive hive)
{
    auto root = std::make_unique<QSettings>(QSettings::IniFormat, ScopeOf(hive), "HARVOLD", "Sorano");
    // Each root answers for itself; the callers decide when to fall back.
    root->setFallbacksEnabled(false);
    return root;
}

// Key paths are written with "\" as in the rest of the system; the store groups by "/".
QString GroupOf(const QString& path)
{
    QString group = path;
    group.replace('\\', '/');
    while (group.startsWith('/'))
        group.remove(0, 1);
    while (group.endsWith('/'))
        group.chop(1);
    return group;
}

bool GroupExists(QSettings& root, const QString& group)
{
    if (group.isEmpty())
        return true;
    root.beginGroup(group);
    const bool exists = !root.childKeys().isEmpty() || !root.childGroups().isEmpty();
    root.endGroup();
    return exists;
}

} // namespace

RegistryKey::RegistryKey() = default;

RegistryKey::~RegistryKey()
{
    CloseKey();
}

RegistryKey::RegistryKey(RegistryKey&& other) noexcept = default;
RegistryKey& RegistryKey::operator=(RegistryKey&& other) noexcept = default;

void RegistryKey::SetRoots(const QString& machineDir, const QString& userDir)
{
    QSettings::setPath(QSettings::IniFormat, QSettings::SystemScope, machineDir);
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, userDir);
}

void RegistryKey::SetPath(const QString& path)
{
    CloseKey();
    m_path = path;
}

QString RegistryKey::Value(const QString& name) const
{
    if (!m_settings || name.contains('/'))
        return QString();
    const QVariant value = m_settings->value(name);
    switch (value.typeId()) {
    case QMetaType::QString:
        return value.toString();
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return QString::number(value.toLongLong());
    default:
        return QString(); // lists, byte arrays and other types read as empty
    }
}

void RegistryKey::SetValue(const QString& name, const QString& data)
{
    if (!m_settings || name.isEmpty() || name.contains('/'))
        return;
    m_settings->setValue(name, data);
    m_settings->sync();
}

qint16 RegistryKey::Open(Hive hive, quint32 access, const QString& path, bool create)
{
    if (m_settings)
        return RegistryStatus::AlreadyOpen;
    const QString usedPath = path.isEmpty() ? m_path : path;
    if (usedPath.isEmpty())
        return RegistryStatus::NoPath;
    if (create)
        m_path = usedPath;

    auto root = OpenRoot(hive);
    const QString group = GroupOf(usedPath);
    const bool wantsWrite = (access & 0x0006) != 0;
    if (wantsWrite && !root->isWritable())
        return RegistryStatus::AccessDenied;
    // A key of the store exists while it holds values or sub-keys; creating one that stays
    // empty leaves nothing behind.
    if (!create && !GroupExists(*root, group))
        return RegistryStatus::FileNotFound;

    root->beginGroup(group);
    m_settings = std::move(root);
    m_path = usedPath;
    m_keyIndex = 0;
    m_valueIndex = 0;
    return RegistryStatus::Ok;
}

qint16 RegistryKey::CreateKey(Hive hive, quint32 access, const QString& path)
{
    return Open(hive, access, path, true);
}

qint16 RegistryKey::OpenKey(Hive hive, quint32 access, const QString& path)
{
    return Open(hive, access, path, false);
}

qint16 RegistryKey::CloseKey()
{
    if (m_settings) {
        m_settings->sync();
        m_settings.reset();
    }
    return RegistryStatus::Ok;
}

qint16 RegistryKey::DeleteKey(Hive hive, const QString& path)
{
    CloseKey();
    const QString usedPath = path.isEmpty() ? m_path : path;
    if (usedPath.isEmpty())
        return RegistryStatus::NoPath;
    auto root = OpenRoot(hive);
    if (!root->isWritable())
        return RegistryStatus::AccessDenied;
    const QString group = GroupOf(usedPath);
    if (!GroupExists(*root, group))
        return RegistryStatus::FileNotFound;
    root->remove(group);
    root->sync();
    return root->status() == QSettings::NoError ? RegistryStatus::Ok : RegistryStatus::AccessDenied;
}

RegistryKey RegistryKey::KeyAt(int index)
{
    RegistryKey key;
    if (!m_settings)
        return key;
    const QStringList groups = m_settings->childGroups();
    if (index >= 0 && index < groups.size())
        key.m_path = m_path + '\\' + groups.at(index);
    return key;
}

RegistryKey RegistryKey::GetFirstKey()
{
    m_keyIndex = 0;
    return KeyAt(m_keyIndex);
}

RegistryKey RegistryKey::GetNextKey()
{
    return KeyAt(++m_keyIndex);
}

QString RegistryKey::ValueAt(int index)
{
    if (!m_settings)
        return QString();
    const QStringList names = m_settings->childKeys();
    return index >= 0 && index < names.size() ? names.at(index) : QString();
}

QString RegistryKey::GetFirstValue()
{
    m_valueIndex = 0;
    return ValueAt(m_valueIndex);
}

QString RegistryKey::GetNextValue()
{
    return ValueAt(++m_valueIndex);
}

QString RegistryKey::ReadValue(Hive hive, const QString& path, const QString& name)
{
    CloseKey();
    if (OpenKey(hive, KeyRead, path) != RegistryStatus::Ok)
        return QString();
    return Value(name);
}

qint16 RegistryKey::WriteValue(Hive hive, const QString& path, const QString& name, const QString& data,
                               bool asNumber)
{
    CloseKey();
    const qint16 status = CreateKey(hive, KeyWrite, path);
    if (status != RegistryStatus::Ok)
        return status;
    if (name.isEmpty() || name.contains('/'))
        return RegistryStatus::InvalidData;
    if (asNumber) {
        bool ok = false;
        const qint32 number = data.trimmed().toInt(&ok);
        if (!ok)
            return RegistryStatus::InvalidData;
        m_settings->setValue(name, number);
    } else {
        m_settings->setValue(name, data);
    }
    m_settings->sync();
    return m_settings->status() == QSettings::NoError ? RegistryStatus::Ok : RegistryStatus::AccessDenied;
}
