// SPDX-License-Identifier: GPL-3.0-or-later
// Aggregation on the server gives, through the program's grid, exactly what the grid makes of the
// raw samples: every step width, windows cut inside steps, gaps, missing values, each data type.
#include "PostgresFixture.h"
#include "TimeValueTransformator.h"

#include <cmath>
#include <tuple>

namespace {

constexpr double Day = SiteFixture::Day;

// Channels of the data types 1, 2, 3, 6 and 8 over three days: a sample every 7 minutes and some
// seconds and milliseconds, values of very different size (so that the order of adding shows),
// missing values, and a gap of five hours without rows.
QString Samples()
{
    QString sql = "INSERT INTO categories VALUES (1, 'Logger', '', 0, 'MEASURING', 1);"
                  "INSERT INTO channels VALUES (1, 'Max', '', 1, 1, 0, 1), (2, 'Summe', '', 2, 1, 0, 2),"
                  " (3, 'Mittel', '', 3, 1, 0, 3), (6, 'Min', '', 6, 1, 0, 6), (8, 'cos phi', '', 8, 1, 0, 8);";
    for (const int channel : { 1, 2, 3, 6, 8 }) {
        QStringList rows;
        for (int k = 0; k < 600; ++k) {
            const double seconds = k * 427.0 + (k * 13 % 59) + 0.001 * (k * 37 % 1000);
            if (seconds > 30 * 3600 && seconds < 35 * 3600)
                continue;
            const double value
                = (k % 11 == 5) ? NAN : std::ldexp(1.0 + 0.1 * (k % 17), (k * 7 % 61) - 30) * (k % 3 ? 1 : -1);
            rows << QString("(%1, %2, %3)")
                        .arg(channel)
                        .arg(Day + seconds / 86400.0, 0, 'g', 17)
                        .arg(std::isnan(value) ? QString("NULL") : QString::number(value, 'g', 17));
        }
        sql += "INSERT INTO samples VALUES " + rows.join(',') + ';';
    }
    return sql;
}

class PostgresAggregationTest : public PostgresTest
{
protected:
    void SetUp() override
    {
        PostgresTest::SetUp();
        ASSERT_NE(server, nullptr);
        module = MakeModule(server->ConnInfo(), Load("aggregation", Samples()));
    }

    // The channel read raw or aggregated for the grid, placed on the grid.
    MatrixBlockPtr Grid(
        int channel, double from, double to, const QString& unit, int count, bool aggregated, qsizetype* rows = nullptr)
    {
        TimeValueTransformator grid;
        grid.Init(from, to, unit, count, true);
        const auto steps = TimeValueTransformator::FixedStepsOf(from, unit, count);
        EXPECT_TRUE(steps);
        ChannelCollection channels = Request({ QString::number(channel) });
        channels.Channel(0)->SetDataType(channel);
        qint32 status = 0;
        if (aggregated)
            module->GetAggregatedData(
                QString::number(channel), channels, from, to, steps->start, steps->seconds, status);
        else
            module->GetData(QString::number(channel), channels, from, to, status);
        EXPECT_EQ(status, 1) << handler.All();
        const MatrixBlockPtr block = channels.Channel(0)->DataBlock();
        if (!block)
            return nullptr;
        if (rows)
            *rows = block->Rows();
        grid.Add(*block, "x", channel);
        return grid.Data("x");
    }

    std::unique_ptr<PostgresDataModule> module;
};

TEST_F(PostgresAggregationTest, TheGridOfAggregatesIsTheGridOfTheRawSamplesBitForBit)
{
    const double second = 1.0 / 86400.0;
    // Windows starting before the first sample and cut inside steps.
    const std::pair<double, double> windows[] = {
        { Day - 0.5, Day + 3.0 },
        { Day + 0.3 + 17 * second, Day + 2.61 + 0.25 * second },
    };
    const std::tuple<QString, int> grids[] = { { "n", 1 }, { "n", 15 }, { "h", 1 }, { "d", 1 } };
    for (const auto& [from, to] : windows)
        for (const auto& [unit, count] : grids)
            for (const int channel : { 1, 2, 3, 6, 8 }) {
                SCOPED_TRACE(QString("%1 %2 %3 channel %4").arg(from).arg(unit).arg(count).arg(channel).toStdString());
                qsizetype rawRows = 0, aggregatedRows = 0;
                const MatrixBlockPtr raw = Grid(channel, from, to, unit, count, false, &rawRows);
                const MatrixBlockPtr aggregated = Grid(channel, from, to, unit, count, true, &aggregatedRows);
                ASSERT_TRUE(raw && aggregated);
                ASSERT_EQ(raw->Rows(), aggregated->Rows());
                ASSERT_GT(raw->Rows(), 0);
                for (qsizetype r = 0; r < raw->Rows(); ++r)
                    for (qsizetype c = 0; c < 2; ++c)
                        ASSERT_EQ(raw->Item(r, c), aggregated->Item(r, c)) << "row " << r << " column " << c;
                // The server did aggregate (power factors excepted), and a step gives at most one row.
                if (channel == 8 || (unit == "n" && count == 1))
                    EXPECT_EQ(aggregatedRows, rawRows);
                else
                    EXPECT_LT(aggregatedRows, rawRows);
            }
}

TEST_F(PostgresAggregationTest, AggregateZeroReadsTheRawSamples)
{
    settings.SetUser(PostgresKey, "Aggregate", "0");
    ChannelCollection raw = Request({ "3" }), unaggregated = Request({ "3" });
    raw.Channel(0)->SetDataType(3);
    unaggregated.Channel(0)->SetDataType(3);
    qint32 status = 0;
    module->GetData("3", raw, Day, Day + 2, status);
    module->GetAggregatedData("3", unaggregated, Day, Day + 2, Day, 3600, status);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(SamplesOf(unaggregated, 0), SamplesOf(raw, 0));
    EXPECT_GT(SamplesOf(raw, 0).size(), 100u);
    EXPECT_EQ(unaggregated.Text(1), "POSTGRES;0");
}

} // namespace
