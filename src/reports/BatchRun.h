// SPDX-License-Identifier: GPL-3.0-or-later
// Running a report batch or a serial report: template views opened for one logger and one
// period, given the customer's address and cursors at their extremes, ready to be printed.
// What the menu and the command line share, so that both make the same pages.
#pragma once

#include "BatchHost.h"

#include <QString>
#include <QStringList>

#include <array>
#include <memory>
#include <vector>

class Measuring;
class MeasuringHost;

// What the wizard (or the command line) decided for a run.
struct BatchRunSettings
{
    QString name; // of the run, shown in its status window
    // "<address>$<logger>#<channel>" keys; a batch takes the logger of the first, a serial
    // report up to three channels.
    QStringList channels;
    double start = 0.0; // days since 1899-12-30
    double end = 0.0;
    // The grid step as a unit code ("s", "n", "h", "d", "ww", "m", "yyyy") and its count; an
    // empty unit shows every view at the time base of its channels.
    QString intervalUnit;
    qint32 intervalCount = 1;
    // Company, contact, street, place, remark.
    std::array<QString, 5> customer;
    bool minCursor = false;
    bool maxCursor = false;
};

// The serial report's page settings.
struct SerialSettings
{
    bool perDay = true; // else valuesPerPage values of the grid per page
    qint32 valuesPerPage = 0;
    bool manualAxes = false; // borders: minimum and maximum of the left, then of the right axis
    std::array<double, 4> borders {};
    bool twoAxes = false; // false: channels of one unit share the left axis
    bool showFixedLine = false;
    double fixedLineValue = 0.0;
    qint32 gallery = 0; // chart type; 0 keeps the template's
};

// Where a run reports its steps; the status window, or nothing.
class BatchProgress
{
public:
    virtual ~BatchProgress() = default;
    virtual void SetStep(float step) = 0;
    // Moves on by one step and lets events through.
    virtual void UpdateStatus() = 0;
};

// Template views of a run without the program's window (the command line, benchmarks, tests):
// made with the host's modules, opened hidden and temporary, and owned here until closed.
class WindowlessTemplates : public BatchRunHost
{
public:
    explicit WindowlessTemplates(MeasuringHost& host);
    ~WindowlessTemplates() override;
    // Nothing for a file that is missing or no view.
    Measuring* OpenTemplate(const QString& path) override;
    void CloseTemplate(Measuring& measuring) override;

private:
    MeasuringHost& m_cHost;
    std::vector<std::unique_ptr<Measuring>> m_cViews;
};

// A template of a batch: its file and the name its view takes.
struct BatchTemplate
{
    QString path;
    QString name;
};

namespace BatchRun {

// The logger part of a channel key "<address>$<logger>#<channel>", empty when it has none.
QString LoggerOf(const QString& channelKey);
// The key with its logger exchanged: "<address>$<logger>#<what stood behind the #>".
QString WithLogger(const QString& channelKey, const QString& logger);

// Opens every template hidden, binds its channels to the logger of the first channel of the
// settings, sets the period, resolution and address, refreshes it and places the cursors.
// Templates that won't open are left out. The views in template order; nothing without channels.
std::vector<Measuring*> PrepareBatch(BatchRunHost& host, const std::vector<BatchTemplate>& templates,
    const BatchRunSettings& settings, BatchProgress* progress);

// The number of pages of a serial report: days from start to end (a day started counts), or
// the period in grid steps of the given unit and count over the values per page, rounded up.
qint32 SerialPageCount(
    const BatchRunSettings& settings, const SerialSettings& serial, const QString& unit, qint32 count);

// Opens the serial template once per page, binds its curves to the settings' channels (the
// first three), and shows one day or a fixed number of values on each page, with the axes, the
// fixed line, the chart type, the address and the cursors of the settings. Values past the
// period's end are cut from the last page. Nothing when the template won't open.
std::vector<Measuring*> PrepareSerial(BatchRunHost& host, const QString& templatePath, const BatchRunSettings& settings,
    const SerialSettings& serial, BatchProgress* progress);

// The serial template for that many channels: "LGA_<n>.mtb" in the batch folder, else the one
// shipped with the program; empty when there is none.
QString SerialTemplate(const QString& batchFolder, qsizetype channels);

// Takes the cursors off the views and closes them.
void Close(BatchRunHost& host, std::vector<Measuring*>& views);

} // namespace BatchRun
