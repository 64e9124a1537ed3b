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
    virtual QString GetNewMeasuringID() { return QString(); }
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
