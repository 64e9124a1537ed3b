// SPDX-License-Identifier: GPL-3.0-or-later
// The contract between the program and its add-ins: Qt plug-ins listed in the machine-wide
// settings under "Software\HARVOLD\Sorano\AddIns", created at start after the menus exist.
#pragma once

#include <QString>
#include <QtPlugin>

// What the program offers an add-in: it may put bands and tools of its own into the menus and
// toolbars. Band types: 0 toolbar, 1 menu bar, 2 pop-up menu, 3 status bar. Tool types: 0
// button or menu entry, 2 combo box, 4 label, 5 separator. A one-character shortcut means
// Ctrl with that character; icon is a key of the program's image list ("ICO_...").
class AddInHost
{
public:
    virtual ~AddInHost() = default;
    virtual void AddBand(const QString& name, int type) = 0;
    virtual void AddTool(const QString& band, const QString& name, int type, const QString& caption,
        const QString& category, const QString& shortcut, const QString& icon, const QString& band2, int index)
        = 0;
    virtual QString ApplicationName() const = 0;
    // True when the program speaks English, false for German: the add-in captions its tools
    // in the program's language (it has no access to the program's own string table).
    virtual bool English() const = 0;
};

// An add-in sees every tool click and every closed combo box before the program acts on it.
// Errors it raises are swallowed by the program.
class AddInInterface
{
public:
    virtual ~AddInInterface() = default;
    // 0 keeps the add-in; anything else drops it.
    virtual qint32 Init(AddInHost& host) = 0;
    virtual void ToolClick(const QString& tool) = 0;
    virtual void ToolComboClose(const QString& tool) = 0;
    virtual void Terminate() = 0;
};

#define SoranoAddInInterface_iid "org.sorano.AddInInterface/1"
Q_DECLARE_INTERFACE(AddInInterface, SoranoAddInInterface_iid)
