// SPDX-License-Identifier: GPL-3.0-or-later
// The demo data generator, run as built, and its database read back through the module.
#include "Calendar.h"
#include "LoggerDatabase.h"
#include "SqliteDataModule.h"
#include "TempSettings.h"

#include <QFile>
#include <QHash>
#include <QProcess>
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

class DemoDataTest : public ::testing::Test
{
protected:
    // Reads the database through the module and checks what a user would see of it. days is
    // the --days given (0: the full periods of two years and of three months).
    void CheckSite(const QString& path, int days)
    {
        SqliteDataModule module(DataModuleRegistration { "Demo", "1" });
        RecordingHandler handler;
        module.SetMessageHandler(&handler);
        qint32 status = 0;
        ASSERT_EQ(module.Initialize(path, status), 1);

        ChannelCollection overview;
        ASSERT_EQ(module.GetChannelOverview(overview, status), 1);
        ASSERT_EQ(overview.Count(), 25);
        QStringList categories, channelStrings;
        ASSERT_EQ(module.GetChannelStructure(categories, channelStrings, status), 1);
        ASSERT_EQ(categories.size(), 8);
        ASSERT_EQ(channelStrings.size(), 25);

        // The loggers' names and their five channels by unit, under the logger's id.
        QHash<QString, QString> names;
        QHash<QString, QHash<QString, DataMatrixPtr>> loggers;
        int folders = 0;
        for (const QString& category : categories) {
            const QStringList f = category.split('$');
            ASSERT_EQ(f.size(), 5) << category.toStdString();
            folders += f[4] == "FOLDER" ? 1 : 0;
            if (f[4] == "MEASURING")
                names[f[0]] = f[1];
        }
        EXPECT_EQ(folders, 3);
        ASSERT_EQ(names.size(), 5);
        for (const QString& line : channelStrings) {
            const QStringList f = line.split('$');
            ASSERT_EQ(f.size(), 6);
            ASSERT_TRUE(names.contains(f[3])) << line.toStdString();
            const DataMatrixPtr channel = overview.Channel(f[0]);
            ASSERT_TRUE(channel);
            loggers[f[3]].insert(channel->Unit(), channel);
        }

        bool missingRows = false;
        bool nullValues = false;
        for (auto it = loggers.cbegin(); it != loggers.cend(); ++it) {
            const QHash<QString, DataMatrixPtr>& byUnit = it.value();
            SCOPED_TRACE(names[it.key()].toStdString());
            ASSERT_EQ(byUnit.size(), 5);
            ASSERT_EQ(byUnit.value("")->DataType(), 8);

            ChannelCollection data;
            QStringList ids;
            for (const DataMatrixPtr& channel : byUnit) {
                data.Add(channel, channel->ChannelID());
                ids << channel->ChannelID();
            }
            double first = 0;
            module.GetFirstDate(byUnit.value("kW")->ChannelID(), first);
            module.GetData(ids.join(';'), data, first, first + 800, status);
            ASSERT_EQ(status, 1);
            const double resolution = data.Text(data.Count() - 1).split(';').value(1).toDouble();
            const bool minuteLogger = resolution == 60;
            ASSERT_TRUE(minuteLogger || resolution == 900) << data.Text(data.Count() - 1).toStdString();
            EXPECT_EQ(first, minuteLogger ? Calendar::FromParts(2025, 10, 1) : Calendar::FromParts(2024, 1, 1));
            if (days == 0) {
                double last = 0;
                module.GetLastDate(byUnit.value("kW")->ChannelID(), last);
                const int lastMinute = 60 - static_cast<int>(resolution) / 60;
                EXPECT_EQ(Calendar::WholeSeconds(last),
                    Calendar::WholeSeconds(Calendar::FromParts(2025, 12, 31, 23, lastMinute)));
            }
            const int fullDays = minuteLogger ? 92 : 731;
            const qsizetype nominal = (days > 0 ? std::min(days, fullDays) : fullDays) * 86400 / qsizetype(resolution);

            const MatrixBlock& power = *byUnit.value("kW")->DataBlock();
            const MatrixBlock& reactive = *byUnit.value("kvar")->DataBlock();
            const MatrixBlock& cosPhi = *byUnit.value("")->DataBlock();
            const MatrixBlock& energy = *byUnit.value("kWh")->DataBlock();
            const MatrixBlock& temperature = *byUnit.value("°C")->DataBlock();
            const qsizetype rows = power.Rows();
            for (const MatrixBlock* block : { &reactive, &cosPhi, &energy, &temperature })
                ASSERT_EQ(block->Rows(), rows);
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
                const double p = power.At(r, 1), q = reactive.At(r, 1);
                ASSERT_GE(p, 0.0);
                const double c = cosPhi.At(r, 1);
                ASSERT_LE(std::fabs(c), 1.0);
                if (p > 1.0) {
                    ASSERT_NEAR(std::fabs(c), p / std::hypot(p, q), 2e-4) << "row " << r;
                }
                // At unity the sign says nothing.
                if (std::fabs(q) >= 0.05 && std::fabs(c) < 0.999) {
                    ASSERT_EQ(c > 0, q > 0) << "row " << r;
                }
                ASSERT_NEAR(energy.At(r, 1), p * resolution / 3600.0, 6e-4) << "row " << r;
                const double t = temperature.At(r, 1);
                if (t == -1e300)
                    nullValues = true;
                else
                    ASSERT_TRUE(t > -30.0 && t < 45.0) << "row " << r << ": " << t;
            }
        }
        EXPECT_TRUE(missingRows);
        EXPECT_TRUE(nullValues);
        EXPECT_EQ(handler.lines.size(), 0u);
    }

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
        ChannelCollection x = Request({ id }), y = Request({ id });
        double from = 0;
        shortRun.GetFirstDate(id, from);
        // Two days without the first sample of the third.
        const double to = from + 2 - 1e-6;
        shortRun.GetData(id, x, from, to, status);
        longRun.GetData(id, y, from, to, status);
        ASSERT_GT(x.Channel(0)->DataBlock()->Rows(), 0);
        EXPECT_EQ(x.Channel(0)->DataBlock()->ToRowArray(), y.Channel(0)->DataBlock()->ToRowArray());
    }
}

TEST_F(DemoDataTest, AnExistingFileIsOnlyReplacedWithForce)
{
    const QString path = dir.filePath("demo.sqlite");
    const struct
    {
        const char* name;
        QStringList arguments;
        bool succeeds;
    } cases[] = {
        { "no --force", { "--days", "1", path }, false },
        { "bad --days", { "--force", "--days", "0", path }, false },
        { "no output", { "--days", "1" }, false },
        { "--force", { "--force", "--days", "1", path }, true },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        {
            QFile file(path);
            ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
            file.write("keep me");
        }
        QString error;
        EXPECT_EQ(Generate(c.arguments, &error) == 0, c.succeeds) << error.toStdString();
        if (c.succeeds) {
            EXPECT_TRUE(FileBytes(path).startsWith("SQLite format 3"));
            EXPECT_FALSE(QFile::exists(path + ".part"));
        } else {
            EXPECT_FALSE(error.isEmpty());
            EXPECT_EQ(FileBytes(path), "keep me");
        }
    }
}

} // namespace
