// SPDX-License-Identifier: GPL-3.0-or-later
// The view operation of the shipped add-in: the chart's rows without any value go, the points
// after them keep their X labels and cursors, and a refresh shows the gaps again.
#include "Formatter.h"
#include "MeasuringFixture.h"

#include <QHash>

#include <cmath>
#include <functional>

namespace {

using measuring_fixture::D;

// The generated logger with holes: a channel given a hole reports its rows there as not
// measured. Values of "L#1" are the minute of the day of their row, so that each point tells
// the time it belongs to.
class HoledModule : public measuring_fixture::GeneratedModule
{
public:
    using GeneratedModule::GeneratedModule;
    qint32 GetData(const QString& list, ChannelCollection& channels, double from, double to, qint32& status) override
    {
        GeneratedModule::GetData(list, channels, from, to, status);
        for (const QString& id : list.split(';', Qt::SkipEmptyParts)) {
            const MatrixBlockPtr block = channels.Channel(id)->DataBlock();
            if (!block)
                continue;
            const auto [holeFrom, holeTo] = holes.value(id, { 0.0, 0.0 });
            for (qsizetype row = 0; row < block->Rows(); ++row) {
                const double time = block->At(row, 0);
                const auto parts = Calendar::Split(time);
                if (time >= holeFrom && time < holeTo)
                    block->At(row, 1) = MatrixBlock::DefaultNoValue;
                else if (id == "L#1")
                    block->At(row, 1) = parts.hour * 60.0 + parts.minute;
            }
        }
        return status;
    }
    QHash<QString, std::pair<double, double>> holes;
};

class RemoveGapsTest : public measuring_fixture::MeasuringFixture
{
protected:
    // 10 February 2009 in quarter hours: "L#1" has no rows from 06:00 to 08:00, "L#3" none
    // from 06:00 to 09:00; so the points of 06:00 to 07:45 are the only ones without a value.
    void SetUp() override
    {
        MeasuringFixture::SetUp();
        auto box = std::make_shared<ModuleBox>();
        box->SetName("Logger");
        box->SetAddress("3");
        auto module = std::make_unique<HoledModule>(900);
        module->holes.insert("L#1", { D(2009, 2, 10, 6), D(2009, 2, 10, 8) });
        module->holes.insert("L#3", { D(2009, 2, 10, 6), D(2009, 2, 10, 9) });
        box->SetDataModule(std::move(module));
        ASSERT_EQ(box->GetChannelList(nullptr), 1);
        host.modules.Add(box);
        measuring = std::make_unique<Measuring>(host);
        ASSERT_EQ(measuring->Init(), 0);
        measuring->DataModules().Add(box);
        measuring->Window()->resize(1000, 600);
        measuring->Window()->AlignControls();
        minutes = Add("3$L#1");
        reserve = Add("3$L#3");
        ASSERT_TRUE(minutes && reserve);
        measuring->SetIntervalUnit("n");
        measuring->SetIntervalCount(15);
        Day();
        ASSERT_EQ(Chart().PointCount(), 96);
    }

    double Minutes(qsizetype point) { return Chart().Value(minutes->SeriesID(), point); }
    double Reserve(qsizetype point) { return Chart().Value(reserve->SeriesID(), point); }
    std::vector<double> AllValues()
    {
        std::vector<double> values;
        for (qsizetype point = 0; point < Chart().PointCount(); ++point)
            values.insert(values.end(), { Minutes(point), Reserve(point) });
        return values;
    }

    // Every X label that is shown names the time of its point, which "L#1" tells; the count
    // of labels checked, so that a test sees they were there.
    int CheckLabels()
    {
        Chart().Replot();
        const std::vector<double> ticks = Chart().AxisTickValues(ChartAxis::X);
        const QStringList labels = Chart().AxisTickLabels(ChartAxis::X);
        EXPECT_EQ(ticks.size(), size_t(labels.size()));
        int checked = 0;
        for (size_t i = 0; i < ticks.size() && i < size_t(labels.size()); ++i) {
            const auto point = qsizetype(std::llround(ticks[i])) - 1;
            const double value = Minutes(point);
            if (labels[qsizetype(i)].isEmpty() || value == ChartAdapter::HiddenPoint)
                continue;
            const QString expected
                = Formatter().FormatDate(D(2009, 2, 10) + value / 1440.0, measuring->GetDateFormat(true));
            EXPECT_EQ(labels[qsizetype(i)], expected) << "point " << point;
            ++checked;
        }
        return checked;
    }

    Curve* minutes = nullptr;
    Curve* reserve = nullptr;
};

TEST_F(RemoveGapsTest, PointsWithoutAnyValueGoAndTheRestMoveDownWithTheirLabels)
{
    // A series out of sight still has its values: the points it alone has stay.
    Chart().SetSeriesVisible(reserve->SeriesID(), false);

    measuring->RemoveGaps();
    EXPECT_EQ(Chart().PointCount(), 88);
    EXPECT_EQ(Minutes(23), 345.0) << "05:45 stays";
    EXPECT_EQ(Minutes(24), 480.0) << "08:00 follows it";
    EXPECT_EQ(Reserve(24), ChartAdapter::HiddenPoint);
    EXPECT_EQ(Reserve(28), 100.0) << "09:00";
    EXPECT_EQ(Minutes(87), 1425.0) << "23:45 is the last";
    EXPECT_EQ(Chart().AxisMax(ChartAxis::X), 88.5) << "the X axis ends at the last point";
    EXPECT_FALSE(measuring->Refreshing());
    EXPECT_TRUE(host.commands) << "the commands are given back";
    // Labels after the gap: the ticks fall on the points now standing there.
    const int labels = CheckLabels();
    EXPECT_GT(labels, 3);
    const std::vector<double> ticks = Chart().AxisTickValues(ChartAxis::X);
    EXPECT_TRUE(std::any_of(ticks.begin(), ticks.end(), [](double tick) { return tick > 30; }));

    // Once closed, the gaps stay closed.
    const std::vector<double> before = AllValues();
    measuring->RemoveGaps();
    EXPECT_EQ(AllValues(), before);
    EXPECT_EQ(CheckLabels(), labels);
}

TEST_F(RemoveGapsTest, ARefreshShowsTheGapsAgain)
{
    Cursor* cursor = measuring->AddCursor(D(2009, 2, 10, 10), *minutes);
    ASSERT_TRUE(cursor);
    ASSERT_EQ(cursor->Index(), 40);

    // Redrawn from what the curves hold, fetched anew, and one curve fetched alone: each time
    // every row shows again, the other curve's too.
    const std::pair<const char*, std::function<void()>> refreshes[] = {
        { "redrawn", [&] { measuring->Refresh(false); } },
        { "fetched", [&] { measuring->Refresh(true); } },
        { "one curve", [&] { measuring->RefreshData(measuring->StartDate(), measuring->EndDate(), reserve, false); } },
    };
    for (const auto& [how, refresh] : refreshes) {
        SCOPED_TRACE(how);
        measuring->RemoveGaps();
        ASSERT_EQ(Chart().PointCount(), 88);
        EXPECT_EQ(cursor->Index(), 32) << "the cursor stays on 10:00";
        refresh();
        EXPECT_EQ(Chart().PointCount(), 96);
        EXPECT_EQ(Minutes(24), ChartAdapter::HiddenPoint);
        EXPECT_EQ(Minutes(32), 480.0);
        EXPECT_EQ(Reserve(32), ChartAdapter::HiddenPoint);
        EXPECT_EQ(Reserve(36), 100.0);
        EXPECT_EQ(cursor->Index(), 40);
        EXPECT_EQ(Chart().AxisMax(ChartAxis::X), 96.5);
        EXPECT_GT(CheckLabels(), 3);
    }
}

} // namespace
