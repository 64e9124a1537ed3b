// SPDX-License-Identifier: GPL-3.0-or-later
// What a view asks of the application around it: the installed data modules, the message
// line and progress bar, tool states and the commands it hands on.
#pragma once

#include <QString>

class Measuring;
class ModuleBoxes;

class MeasuringHost
{
public:
    virtual ~MeasuringHost() = default;
    virtual ModuleBoxes& DataModules() = 0;
    // "LOG", "PROGRESS_START", "PROGRESS_UPDATE", "PROGRESS_END" with their texts.
    virtual void SendMessage(const QString& name, const QString& params) = 0;
    virtual void UpdateToolStates() { }
    // The application's command bar, disabled by a view while it refreshes; returns the
    // state it had, so that the caller can give it back.
    virtual bool SetCommandsEnabled(bool enabled)
    {
        Q_UNUSED(enabled);
        return true;
    }
    virtual QString GetNewMeasuringID() { return QString(); }
    // A message the user has to act on, shown once the work at hand has ended.
    virtual void ShowError(const QString& text) { Q_UNUSED(text); }
    virtual void CallMenu(const QString& menu) { Q_UNUSED(menu); }
    virtual void ShowHelp(int contextId) { Q_UNUSED(contextId); }
    // False keeps the view open.
    virtual bool CloseMeasuring(Measuring& measuring, bool force)
    {
        Q_UNUSED(measuring);
        Q_UNUSED(force);
        return true;
    }
};
