// SPDX-License-Identifier: GPL-3.0-or-later
// The demo data generator, run as built, and its database read back through the module.
#include "Calendar.h"
#include "LoggerDatabase.h"
#include "SqliteDataModule.h"
#include "TempSettings.h"

#include <QFile>
#include <QHash>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>

namespace {

// Runs the generator; the exit code, -1 when it crashed or hung.
int Generate(const QStringList& arguments, QString* error = nullptr)
{
    QProcess process;
    process.start(SORANO_DEMODATA, arguments);
    if (!process.waitForFinished(120'000) || process.exitStatus() != QProcess::NormalExit)
        return -1;
    if (error)
        *error = QString::fromLocal8Bit(process.readAllStandardError());
    return process.exitCode();
}

// Reads the database through the module: one site, two buildings, five loggers of five channels
// each, consistent values, outages and sensor failures. days is the --days given (0: the full
// periods of two years and of three months).
void CheckSite(const QString& path, int days)
{
    SqliteDataModule module(DataModuleRegistration { "Demo", "1" });
    RecordingHandler handler;
    module.SetMessageHandler(&handler);
    qint32 status = 0;
    ASSERT_EQ(module.Initialize(path, status), 1);
    ChannelCollection overview;
    QStringList categories, channels;
    ASSERT_EQ(module.GetChannelOverview(overview, status), 1);
    ASSERT_EQ(module.GetChannelStructure(categories, channels, status), 1);
    ASSERT_EQ(categories.size(), 8);
    EXPECT_EQ(categories.filter(QRegularExpression("\\$FOLDER$")).size(), 3);
    EXPECT_EQ(categories.filter(QRegularExpression("\\$MEASURING$")).size(), 5);
    ASSERT_EQ(overview.Count(), 2 * 25) << "each channel under its id and under its row id";
    // The channels by unit, under the id of their logger.
    QHash<QString, QHash<QString, DataMatrixPtr>> loggers;
    for (const QString& line : channels)
        loggers[line.section('$', 3, 3)].insert(
            overview.Channel(line.section('$', 0, 0))->Unit(), overview.Channel(line.section('$', 0, 0)));
    ASSERT_EQ(loggers.size(), 5);

    bool missingRows = false, nullValues = false;
    for (auto it = loggers.cbegin(); it != loggers.cend(); ++it) {
        const QHash<QString, DataMatrixPtr>& byUnit = it.value();
        SCOPED_TRACE(it.key().toStdString());
        ASSERT_EQ(byUnit.size(), 5);
        ASSERT_EQ(byUnit.value("")->DataType(), 8);
        ChannelCollection data;
        QStringList ids;
        for (const DataMatrixPtr& channel : byUnit) {
            data.Add(channel, channel->ChannelID());
            ids << channel->ChannelID();
        }
        double first = 0, last = 0;
        module.GetFirstDate(byUnit.value("kW")->ChannelID(), first);
        module.GetLastDate(byUnit.value("kW")->ChannelID(), last);
        module.GetData(ids.join(';'), data, first, first + 800, status);
        ASSERT_EQ(status, 1);
        const double resolution = data.Text(data.Count() - 1).section(';', 1).toDouble();
        const bool minuteLogger = resolution == 60;
        ASSERT_TRUE(minuteLogger || resolution == 900) << data.Text(data.Count() - 1).toStdString();
        EXPECT_EQ(first, minuteLogger ? Calendar::FromParts(2025, 10, 1) : Calendar::FromParts(2024, 1, 1));
        if (days == 0) {
            EXPECT_EQ(Calendar::WholeSeconds(last),
                Calendar::WholeSeconds(Calendar::FromParts(2025, 12, 31, 23, minuteLogger ? 59 : 45)));
        }
        const int fullDays = minuteLogger ? 92 : 731;
        const qsizetype nominal = (days > 0 ? std::min(days, fullDays) : fullDays) * 86400 / qsizetype(resolution);

        const MatrixBlock& power = *byUnit.value("kW")->DataBlock();
        const qsizetype rows = power.Rows();
        for (const DataMatrixPtr& channel : byUnit)
            ASSERT_EQ(channel->DataBlock()->Rows(), rows);
        const auto value = [&](const char* unit, qsizetype r) { return byUnit.value(unit)->DataBlock()->At(r, 1); };
        EXPECT_LE(rows, nominal);
        EXPECT_GE(rows, nominal * 9 / 10);
        missingRows = missingRows || rows < nominal;

        const double step = resolution / 86400.0;
        for (qsizetype r = 0; r < rows; ++r) {
            if (r > 0) {
                const double steps = (power.At(r, 0) - power.At(r - 1, 0)) / step;
                ASSERT_GE(steps, 0.999) << "row " << r;
                ASSERT_NEAR(steps, std::round(steps), 1e-3) << "row " << r;
            }
            const double p = value("kW", r), q = value("kvar", r), c = value("", r), t = value("°C", r);
            ASSERT_GE(p, 0.0);
            ASSERT_LE(std::fabs(c), 1.0);
            if (p > 1.0) {
                ASSERT_NEAR(std::fabs(c), p / std::hypot(p, q), 2e-4) << "row " << r;
            }
            // At unity the sign says nothing.
            if (std::fabs(q) >= 0.05 && std::fabs(c) < 0.999) {
                ASSERT_EQ(c > 0, q > 0) << "row " << r;
            }
            ASSERT_NEAR(value("kWh", r), p * resolution / 3600.0, 6e-4) << "row " << r;
            nullValues = nullValues || t == -1e300;
            ASSERT_TRUE(t == -1e300 || (t > -30.0 && t < 45.0)) << "row " << r << ": " << t;
        }
    }
    EXPECT_TRUE(missingRows);
    EXPECT_TRUE(nullValues);
    EXPECT_EQ(handler.lines.size(), 0u);
}

class DemoDataTest : public ::testing::Test
{
protected:
    TempSettings settings;
    QTemporaryDir dir;
};

TEST_F(DemoDataTest, TheFullRunCoversTwoYearsAndThreeMonths)
{
    const QString path = dir.filePath("demo.sqlite");
    QString error;
    ASSERT_EQ(Generate({ path }, &error), 0) << error.toStdString();
    CheckSite(path, 0);
}

TEST_F(DemoDataTest, EveryRunWritesTheSameDataAndShortRunsAreItsBeginning)
{
    const QString a = dir.filePath("a.sqlite"), b = dir.filePath("b.sqlite"), c = dir.filePath("c.sqlite");
    ASSERT_EQ(Generate({ "--days", "2", a }), 0);
    ASSERT_EQ(Generate({ "--days", "2", b }), 0);
    ASSERT_EQ(Generate({ "--days", "4", c }), 0);
    EXPECT_EQ(FileBytes(a), FileBytes(b));
    CheckSite(c, 4);

    SqliteDataModule shortRun(DataModuleRegistration { "A", "1" }), longRun(DataModuleRegistration { "C", "2" });
    qint32 status = 0;
    ASSERT_EQ(shortRun.Initialize(a, status), 1);
    ASSERT_EQ(longRun.Initialize(c, status), 1);
    for (const QString id : { "111", "113", "155" }) {
        SCOPED_TRACE(id.toStdString());
        double from = 0;
        shortRun.GetFirstDate(id, from);
        // Two days without the first sample of the third.
        const Samples samples = SamplesOf(Read(shortRun, { id }, from, from + 2 - 1e-6), 0);
        ASSERT_FALSE(samples.empty());
        EXPECT_EQ(samples, SamplesOf(Read(longRun, { id }, from, from + 2 - 1e-6), 0));
    }
}

TEST_F(DemoDataTest, AnExistingFileIsOnlyReplacedWithForce)
{
    const QString path = dir.filePath("demo.sqlite");
    const std::pair<QStringList, bool> cases[] = {
        { { "--days", "1", path }, false },
        { { "--force", "--days", "0", path }, false },
        { { "--force", "--days", "1", path }, true },
    };
    for (const auto& [arguments, succeeds] : cases) {
        SCOPED_TRACE(arguments.join(' ').toStdString());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write("keep me") == 7);
        file.close();
        QString error;
        EXPECT_EQ(Generate(arguments, &error) == 0, succeeds) << error.toStdString();
        EXPECT_EQ(FileBytes(path).startsWith("SQLite format 3"), succeeds);
        EXPECT_EQ(FileBytes(path) == "keep me", !succeeds);
        EXPECT_TRUE(succeeds || !error.isEmpty());
        EXPECT_FALSE(QFile::exists(path + ".part"));
    }
}

} // namespace
