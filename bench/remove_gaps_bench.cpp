// SPDX-License-Identifier: GPL-3.0-or-later
// Closing the gaps of a view of two channels over a million one-second rows, a tenth of them
// not measured in either channel, in runs of 100.
#include "ChartAdapter.h"
#include "Measuring.h"
#include "MeasuringHost.h"
#include "RegistryKey.h"
#include "ctl_NavBar.h"
#include "frm_GraphicView.h"

#include <QCoreApplication>
#include <QObject>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>

namespace {

constexpr qsizetype Rows = 1'000'000;
constexpr double Start = 45292.0; // 2024-01-01
constexpr double Second = 1.0 / 86400.0;

// Rows every second from Start; the runs of rows 0-99, 1000-1099, ... were not measured.
class SecondsModule : public QObject, public DataModuleInterface
{
    Q_OBJECT
    Q_INTERFACES(DataModuleInterface)

public:
    void SetMessageHandler(MessageHandlerInterface*) override { }
    bool HasConfig() override { return false; }
    void GetFirstDate(const QString&, double& date) override { date = Start; }
    void GetLastDate(const QString&, double& date) override { date = Start + double(Rows) * Second; }
    qint32 SelfCheck(qint32& status) override { return status = 1; }
    qint32 Initialize(const QString&, qint32& status) override { return status = 1; }
    qint32 GetChannelOverview(ChannelCollection& channels, qint32& status) override
    {
        for (const char* id : { "A", "B" }) {
            auto channel = std::make_shared<DataMatrix>();
            channel->SetChannelID(id);
            channel->SetChannelName(id);
            channel->SetUnit("kW");
            channel->SetDataType(3);
            channels.Add(channel, id);
        }
        return status = 1;
    }
    qint32 GetChannelStructure(QStringList&, QStringList&, qint32& status) override { return status = 0; }
    qint32 GetData(const QString& list, ChannelCollection& channels, double, double, qint32& status) override
    {
        for (const QString& id : list.split(';', Qt::SkipEmptyParts)) {
            auto block = MatrixBlock::Create(Rows, 2);
            for (qsizetype row = 0; row < Rows; ++row) {
                block->At(row, 0) = Start + double(row) * Second;
                block->At(row, 1) = row % 1000 < 100 ? MatrixBlock::DefaultNoValue : double(row % 500);
            }
            channels.Channel(id)->SetDataBlock(block);
        }
        channels.AddText("SEC;1");
        return status = 1;
    }
    void ShowConfig() override { }
};

class Host : public MeasuringHost
{
public:
    ModuleBoxes& DataModules() override { return modules; }
    void SendMessage(const QString&, const QString&) override { }
    ModuleBoxes modules;
};

void BM_RemoveGaps(benchmark::State& state)
{
    QTemporaryDir dir;
    RegistryKey::SetRoots(dir.filePath("machine"), dir.filePath("user"));
    Host host;
    auto box = std::make_shared<ModuleBox>();
    box->SetName(QStringLiteral("Seconds"));
    box->SetAddress(QStringLiteral("1"));
    box->SetDataModule(std::make_unique<SecondsModule>());
    box->GetChannelList(nullptr);
    host.modules.Add(box);
    Measuring view(host);
    view.Init();
    view.DataModules().Add(box);
    view.Window()->resize(1000, 600);
    view.SetIntervalUnit(QStringLiteral("s"));
    view.SetIntervalCount(1);
    view.AddCurve(QStringLiteral("1$A"), false, QString(), QString(), nullptr);
    view.AddCurve(QStringLiteral("1$B"), false, QString(), QString(), nullptr);
    ctl_NavBar& bar = *view.Window()->nav_Navigate();
    bar.SetDateFrom(Start);
    bar.SetDateTo(Start + double(Rows) * Second);
    view.Refresh(true);
    ChartAdapter& chart = *view.Chart();
    const qsizetype points = chart.PointCount();
    if (points < Rows || chart.SeriesCount() != 2) {
        state.SkipWithError("the view does not show the rows");
        return;
    }

    for (auto _ : state) {
        state.PauseTiming();
        view.Refresh(false); // the gaps back
        QCoreApplication::processEvents();
        state.ResumeTiming();
        view.RemoveGaps();
    }
    state.counters["points"] = double(points);
    state.counters["left"] = double(chart.PointCount());
    state.SetItemsProcessed(state.iterations() * points);
}
BENCHMARK(BM_RemoveGaps)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

#include "remove_gaps_bench.moc"
