// SPDX-License-Identifier: GPL-3.0-or-later
// Fixture helper: both settings roots in a fresh temporary folder for the life of the object.
#pragma once

#include <QString>
#include <QTemporaryDir>

class TempSettings
{
public:
    TempSettings();
    ~TempSettings();

    QString MachineDir() const { return m_dir.path() + "/machine"; }
    QString UserDir() const { return m_dir.path() + "/user"; }
    QString Path() const { return m_dir.path(); }

    // Writes a value straight into one root, as an installer or a user's earlier run would.
    void SetMachine(const QString& key, const QString& name, const QString& value);
    void SetUser(const QString& key, const QString& name, const QString& value);

private:
    QTemporaryDir m_dir;
};
