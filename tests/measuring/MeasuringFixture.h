// SPDX-License-Identifier: GPL-3.0-or-later
// Shared by the view tests: a generated logger module, a recording host, a view of 1000 x 600 pixels.
#pragma once

#include "Calendar.h"
#include "ChartAdapter.h"
#include "DataModuleInterface.h"
#include "MatrixScriptEngine.h"
#include "Measuring.h"
#include "MeasuringHost.h"
#include "QtPrinters.h"
#include "TempSettings.h"
#include "ctl_NavBar.h"
#include "frm_GraphicView.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <tuple>
#include <utility>

namespace measuring_fixture {

inline double D(int year, int month, int day, int hour = 0, int minute = 0, int second = 0)
{
    return Calendar::FromParts(year, month, day, hour, minute, second);
}

// A logger with a power channel "L#1" (kW, the sample's hour of day), a power factor "L#2"
// (0.9, delivered unfolded) and a reserve feed "L#3" (100 kW), one sample per `resolution`
// seconds through February 2009. With a failure text set, reads fail with that reason.
class GeneratedModule : public QObject, public DataModuleInterface
{
    Q_OBJECT
    Q_INTERFACES(DataModuleInterface)

public:
    explicit GeneratedModule(double resolution)
        : seconds(resolution)
    { }
    void SetMessageHandler(MessageHandlerInterface*) override { }
    bool HasConfig() override { return false; }
    void GetFirstDate(const QString&, double& date) override { date = D(2009, 2, 1); }
    void GetLastDate(const QString&, double& date) override { date = D(2009, 3, 1); }
    qint32 SelfCheck(qint32& status) override { return status = 1; }
    qint32 Initialize(const QString&, qint32& status) override { return status = 1; }
    qint32 GetChannelOverview(ChannelCollection& channels, qint32& status) override
    {
        for (const auto& [id, name, unit, type] : { std::tuple("L#1", "Power", "kW", 3),
                 std::tuple("L#2", "Power factor", "cos phi", 8), std::tuple("L#3", "Reserve", "kW", 3) }) {
            auto channel = std::make_shared<DataMatrix>();
            channel->SetChannelID(id);
            channel->SetChannelName(name);
            channel->SetUnit(unit);
            channel->SetDataType(type);
            channels.Add(channel, id);
        }
        return status = 1;
    }
    qint32 GetChannelStructure(QStringList&, QStringList&, qint32& status) override { return status = 0; }
    qint32 GetData(const QString& list, ChannelCollection& channels, double from, double to, qint32& status) override
    {
        ++fetches;
        if (!failure.isEmpty()) {
            for (const QString& id : list.split(';', Qt::SkipEmptyParts))
                channels.Channel(id)->SetDataBlock(nullptr);
            channels.AddText("GEN;" + QString::number(seconds) + ";" + failure);
            return status = 0;
        }
        const double step = seconds / 86400.0;
        const double start = std::max(from, D(2009, 2, 1));
        const double end = std::min(to, D(2009, 3, 1));
        const qsizetype rows = end > start ? qsizetype(std::floor((end - start) / step + 1e-9)) : 0;
        for (const QString& id : list.split(';', Qt::SkipEmptyParts)) {
            auto block = MatrixBlock::Create(rows, 2);
            for (qsizetype i = 0; i < rows; ++i) {
                block->At(i, 0) = start + double(i) * step;
                block->At(i, 1) = id == "L#1" ? Calendar::Split(block->At(i, 0)).hour : id == "L#2" ? 0.9 : 100.0;
            }
            channels.Channel(id)->SetDataBlock(block);
        }
        channels.AddText("GEN;" + QString::number(seconds)); // the time base in seconds
        return status = 1;
    }
    void ShowConfig() override { }
    int fetches = 0;
    double seconds;
    QString failure;
};

class Host : public MeasuringHost
{
public:
    ModuleBoxes& DataModules() override { return modules; }
    void SendMessage(const QString& name, const QString& params) override
    {
        messages << name + ":" + params;
        if (!commands)
            ++messagesWhileBusy;
        if (onMessage)
            onMessage(name);
    }
    void CallMenu(const QString& menu) override { menus << menu; }
    void ShowError(const QString& text) override { errors << text; }
    bool SetCommandsEnabled(bool enabled) override { return std::exchange(commands, enabled); }
    ModuleBoxes modules;
    QStringList messages;
    QStringList menus;
    QStringList errors;
    bool commands = true;
    int messagesWhileBusy = 0;
    std::function<void(const QString&)> onMessage; // what a user does while the events run
};

class MeasuringFixture : public ::testing::Test
{
protected:
    void SetUp() override { g_cScriptEngine = &engine; }
    void TearDown() override
    {
        measuring.reset();
        g_cScriptEngine = nullptr;
    }
    void Open(double resolution)
    {
        auto box = std::make_shared<ModuleBox>();
        box->SetName("Logger");
        box->SetAddress("3");
        auto module = std::make_unique<GeneratedModule>(resolution);
        generated = module.get();
        box->SetDataModule(std::move(module));
        ASSERT_EQ(box->GetChannelList(nullptr), 1);
        host.modules.Add(box);
        measuring = std::make_unique<Measuring>(host);
        ASSERT_EQ(measuring->Init(), 0);
        measuring->DataModules().Add(box);
        measuring->Window()->resize(1000, 600);
        measuring->Window()->AlignControls();
    }
    Curve* Add(const char* channel, const char* used = "")
    {
        return measuring->AddCurve(channel, false, used, used, nullptr);
    }
    ctl_NavBar& Bar() { return *measuring->Window()->nav_Navigate(); }
    ChartAdapter& Chart() { return *measuring->Chart(); }
    std::pair<double, double> Span() { return { Bar().DateFrom(), Bar().DateTo() }; }
    void Window(double from, double to)
    {
        Bar().SetDateFrom(from);
        Bar().SetDateTo(to);
    }
    // Shows 10 February 2009 fetched anew.
    void Day()
    {
        Window(D(2009, 2, 10), D(2009, 2, 11));
        measuring->Refresh(true);
        Chart().Replot();
    }

    TempSettings roots;
    MatrixScriptEngine engine;
    Host host;
    GeneratedModule* generated = nullptr;
    std::unique_ptr<Measuring> measuring;
};

} // namespace measuring_fixture
