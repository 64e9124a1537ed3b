// SPDX-License-Identifier: GPL-3.0-or-later
// The add-ins of the program: created at start from the names the machine-wide settings list,
// told of every tool click and closed combo box, and ended before the program ends.
#pragma once

#include "AddInInterface.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

class QPluginLoader;

// Holds the add-ins in the order they came. Add-in plug-ins are found in a fixed list of
// folders by the names their metadata lists under "ProgIDs"; a plug-in's root object is the
// add-in, one per process, which the plug-in loader keeps: it is loaded at the first add-in
// created from it and never unloaded. Nothing an add-in throws leaves this class.
class AddIns
{
public:
    AddIns();
    explicit AddIns(QStringList folders);
    // Drops the add-ins still held without calling their Terminate.
    ~AddIns();

    AddIns(const AddIns&) = delete;
    AddIns& operator=(const AddIns&) = delete;

    // Each folder of SORANO_ADDIN_PATH (separated as PATH is on the platform), then "addins"
    // beside the program, then "../lib/sorano/addins" from the program's folder.
    static QStringList DefaultFolders();
    const QStringList& Folders() const { return m_folders; }

    // Creates the add-ins the values of "Software\HARVOLD\Sorano\AddIns" (machine-wide) name
    // in their data; the value names mean nothing. Each one created is kept when its Init
    // gives 0. A name no plug-in provides, a plug-in that can't be loaded and an Init that
    // throws are skipped (logged). -1 when the key can't be opened, else the result of the
    // last Init called (0 when none was).
    qint32 Load(AddInHost& host);

    // Takes an add-in of the program's own, already initialised, after those held.
    void Add(std::unique_ptr<AddInInterface> addIn);

    // Tells each add-in in turn; one that throws doesn't keep the next from hearing it.
    void ToolClick(const QString& tool);
    void ToolComboClose(const QString& tool);
    // Calls Terminate of each add-in and drops them all.
    void Terminate();

    int Count() const { return static_cast<int>(m_addIns.size()); }

private:
    void Scan();
    // The root object of the plug-in that provides the name, or nothing (logged).
    AddInInterface* Create(const QString& name);
    bool Holds(const AddInInterface* addIn) const;

    struct Entry
    {
        AddInInterface* addIn = nullptr;
        std::unique_ptr<AddInInterface> owned; // set for the program's own add-ins
    };

    QStringList m_folders;
    bool m_bScanned = false;
    std::vector<std::unique_ptr<QPluginLoader>> m_loaders;
    QHash<QString, QPluginLoader*> m_byName; // by name in lower case
    std::vector<Entry> m_addIns;
};
