// SPDX-License-Identifier: GPL-3.0-or-later
// Access to the settings tree: named keys with named text values in two roots.
#pragma once

#include <QString>
#include <QStringList>
#include <QtGlobal>

#include <memory>

class QSettings;

// The two roots of the settings tree: machine-wide values set by the installation,
// per-user values set by the dialogs.
enum class Hive {
    LocalMachine, ///< machine-wide (QSettings::SystemScope)
    CurrentUser   ///< per user (QSettings::UserScope)
};

// Status results: 0 success, a positive number is a system error code, negative numbers
// are the key's own refusals.
namespace RegistryStatus {
constexpr qint16 Ok = 0;
constexpr qint16 FileNotFound = 2;  ///< the key does not exist
constexpr qint16 AccessDenied = 5;  ///< the root cannot be written
constexpr qint16 InvalidData = 13;  ///< a number value that is no number
constexpr qint16 AlreadyOpen = -1;
constexpr qint16 NoPath = -2;
}

// Access masks as the callers pass them.
constexpr quint32 KeyRead = 0x20019;
constexpr quint32 KeyWrite = 0x20006;

class RegistryKey
{
public:
    RegistryKey();
    ~RegistryKey();
    RegistryKey(RegistryKey&& other) noexcept;
    RegistryKey& operator=(RegistryKey&& other) noexcept;

    QString Path() const { return m_path; }
    void SetPath(const QString& path); // closes an open key first

    // Reads a value of the open key as text; missing, of another type, or no key open: "".
    QString Value(const QString& name) const;
    // Writes a text value into the open key; does nothing with no key open.
    void SetValue(const QString& name, const QString& data);

    qint16 CreateKey(Hive hive, quint32 access, const QString& path = QString());
    qint16 OpenKey(Hive hive, quint32 access, const QString& path = QString());
    qint16 CloseKey();
    qint16 DeleteKey(Hive hive, const QString& path = QString());
    bool IsOpen() const { return m_settings != nullptr; }

    // Sub-key enumeration: a new object whose Path is this path, "\" and the sub-key's
    // name, with no key open; its Path is empty when there is no further sub-key.
    RegistryKey GetFirstKey();
    RegistryKey GetNextKey();

    // Value enumeration: the name of the first / next value, "" at the end.
    QString GetFirstValue();
    QString GetNextValue();

    // One-shot helpers: close any open key, open the path, read or write one value.
    QString ReadValue(Hive hive, const QString& path, const QString& name);
    qint16 WriteValue(Hive hive, const QString& path, const QString& name, const QString& data,
                      bool asNumber = false);

    // Points both roots at folders (tests, and a build tree that carries its own
    // machine-wide file).
    static void SetRoots(const QString& machineDir, const QString& userDir);

private:
    qint16 Open(Hive hive, quint32 access, const QString& path, bool create);
    RegistryKey KeyAt(int index);
    QString ValueAt(int index);

    std::unique_ptr<QSettings> m_settings; // the open key, positioned in its group
    QString m_path;
    int m_keyIndex = 0;
    int m_valueIndex = 0;
};
