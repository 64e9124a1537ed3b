// SPDX-License-Identifier: GPL-3.0-or-later
// What the report batches ask of the application: template views opened and closed, the
// reports run over them, and, in the window, the command bar, the main window and the views.
#pragma once

#include <QString>

#include <vector>

class Measuring;
class MeasuringHost;
class ModuleBoxes;
class QMainWindow;
class ToolRegistry;

// Enough for a run without a window.
class BatchRunHost
{
public:
    virtual ~BatchRunHost() = default;
    // The view file opened hidden and temporary: bound to whatever logger its modules offer.
    // Nothing when it can't be opened.
    virtual Measuring* OpenTemplate(const QString& path) = 0;
    virtual void CloseTemplate(Measuring& measuring) = 0;
};

// The program around the batch window and its commands.
class BatchHost : public BatchRunHost
{
public:
    virtual ToolRegistry& Bar() = 0;
    virtual QMainWindow* MainWindow() = 0;
    // The application as the views and the wizard know it.
    virtual MeasuringHost& ViewHost() = 0;
    virtual const ModuleBoxes& Modules() const = 0;
    // The view of the active window; nothing when there is none.
    virtual Measuring* ActiveMeasuring() = 0;
    // Opens a view file in a window, as File > Open does.
    virtual void OpenMeasuring(const QString& path) = 0;
    // The print dialog for a set of views, then the reports over all of them into the preview.
    virtual void PrintMeasurings(const std::vector<Measuring*>& measurings) = 0;
    virtual void ShowHelp(int contextId) = 0;
    // Sets every tool of the program, the batch tools among them.
    virtual void UpdateToolStates() = 0;
};
