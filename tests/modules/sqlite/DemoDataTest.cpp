// SPDX-License-Identifier: GPL-3.0-or-later
// The demo data generator, run as built, and its database read back through the module.
#include "Calendar.h"
#include "LoggerDatabase.h"
#include "RegistryKey.h"
#include "SqliteDataModule.h"
#include "TempSettings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>

namespace {

// Runs the generator; the exit code, -1 when it crashed or hung.
int Generate(const QStringList& arguments, QString* error = nullptr, const QProcessEnvironment* environment = nullptr,
    QString* output = nullptr)
{
    QProcess process;
    if (environment)
        process.setProcessEnvironment(*environment);
    process.start(SORANO_DEMODATA, arguments);
    if (!process.waitForFinished(120'000) || process.exitStatus() != QProcess::NormalExit)
        return -1;
    if (error)
        *error = QString::fromLocal8Bit(process.readAllStandardError());
    if (output)
        *output = QString::fromLocal8Bit(process.readAllStandardOutput());
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

// Without an output file the generator writes into the user's data folder of the program and
// registers the file for the data source Demo. The generator runs with a home, data and settings
// folder of its own; its settings are read back here from the same folder.
class DemoDataUserTest : public ::testing::Test
{
protected:
    DemoDataUserTest()
    {
        environment.insert("HOME", home.path());
        environment.insert("XDG_DATA_HOME", home.filePath("data"));
        environment.insert("XDG_CONFIG_HOME", settings.UserDir());
    }

    int Run(const QStringList& arguments)
    {
        error.clear();
        output.clear();
        return Generate(arguments, &error, &environment, &output);
    }

    // The user's database of Demo, as the module reads it (the machine-wide settings are empty).
    QString DemoDatabase() const { return RegistryKey().ReadValue(Hive::CurrentUser, DemoKey, "Database"); }

    const QString DemoKey = QStringLiteral("Software\\HARVOLD\\ModuleSettings\\Demo");
    TempSettings settings;
    QTemporaryDir home;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    QString file = home.filePath("data/HARVOLD/Sorano/sorano-demo.sqlite");
    QString error, output;
};

TEST_F(DemoDataUserTest, WritesIntoTheDataFolderAndBecomesTheDatabaseOfDemo)
{
    ASSERT_EQ(Run({ "--days", "2" }), 0) << error.toStdString();
    ASSERT_TRUE(QFileInfo(file).isFile());
    EXPECT_EQ(DemoDatabase(), QDir::toNativeSeparators(file));
    EXPECT_TRUE(output.contains("registered as the database of data source Demo")) << output.toStdString();
    // The module of Demo reads it without a further setting.
    SqliteDataModule module(DataModuleRegistration { "Demo", "1" });
    int asked = 0;
    module.SetDatabaseQuestion([&](const QString&) {
        ++asked;
        return QString();
    });
    EXPECT_EQ(Overview(module).size(), 2 * 25);
    EXPECT_EQ(asked, 0);
    EXPECT_EQ(module.Database(), QDir::toNativeSeparators(file));

    // A second run keeps the file unless forced; the setting stays.
    const QByteArray written = FileBytes(file);
    EXPECT_EQ(Run({ "--days", "1" }), 2);
    EXPECT_TRUE(error.contains("--force")) << error.toStdString();
    EXPECT_EQ(FileBytes(file), written);
    EXPECT_EQ(Run({ "--force", "--days", "1" }), 0) << error.toStdString();
    EXPECT_NE(FileBytes(file), written);
    EXPECT_TRUE(output.contains("already the database of data source Demo")) << output.toStdString();
    EXPECT_EQ(DemoDatabase(), QDir::toNativeSeparators(file));
    EXPECT_FALSE(QFile::exists(file + ".part"));
}

TEST_F(DemoDataUserTest, TheUsersOwnDatabaseOfDemoIsKept)
{
    settings.SetUser(DemoKey, "Database", "/srv/logger/werk.sqlite");
    settings.SetUser("Software\\HARVOLD\\ModuleSettings\\Werk", "Database", "/srv/logger/other.sqlite");
    ASSERT_EQ(Run({ "--days", "2" }), 0) << error.toStdString();
    EXPECT_TRUE(QFileInfo(file).isFile());
    EXPECT_EQ(DemoDatabase(), "/srv/logger/werk.sqlite");
    EXPECT_TRUE(output.contains("kept your setting")) << output.toStdString();
    EXPECT_TRUE(output.contains("/srv/logger/werk.sqlite")) << output.toStdString();
}

TEST_F(DemoDataUserTest, AnOutputFileIsWrittenAsGivenAndNotRegistered)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("demo.sqlite");
    ASSERT_EQ(Run({ "--days", "1", path }), 0) << error.toStdString();
    EXPECT_TRUE(QFileInfo(path).isFile());
    EXPECT_FALSE(QFileInfo::exists(file));
    EXPECT_EQ(DemoDatabase(), "");
    EXPECT_FALSE(output.contains("data source")) << output.toStdString();
    EXPECT_EQ(Run({ "--days", "1", path, dir.filePath("second.sqlite") }), 1);
    EXPECT_FALSE(QFileInfo::exists(dir.filePath("second.sqlite")));
}

} // namespace
