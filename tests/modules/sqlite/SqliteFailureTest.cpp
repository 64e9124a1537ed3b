// SPDX-License-Identifier: GPL-3.0-or-later
// The SQLite module on files it cannot use: every failure is a status and a log line, and the
// module never writes to the database.
#include "LoggerDatabase.h"
#include "SqliteDataModule.h"
#include "TempSettings.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <sqlite3.h>

#include <gtest/gtest.h>

#include <random>

namespace {

using namespace SiteFixture;

const QString ModuleKey = QStringLiteral("Software\\HARVOLD\\ModuleSettings\\Werk");

class SqliteFailureTest : public ::testing::Test
{
protected:
    std::unique_ptr<SqliteDataModule> MakeModule(const QString& database)
    {
        settings.SetUser(ModuleKey, "Database", database);
        auto module = std::make_unique<SqliteDataModule>(DataModuleRegistration { "Werk", "4" });
        module->SetMessageHandler(&handler);
        return module;
    }

    // The site with 20000 more samples, so that the file spans many pages.
    QString WriteBigSite(const QString& name)
    {
        const QString path = dir.filePath(name);
        WriteDatabase(path,
            Sql()
                + QString("WITH RECURSIVE k(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM k WHERE n < 20000) "
                          "INSERT INTO samples SELECT 305, %1 + n / 1440.0, n * 0.5 FROM k")
                      .arg(Day + 1));
        return path;
    }

    QString WriteFile(const QString& name, const QByteArray& bytes)
    {
        QFile file(dir.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bytes);
        return file.fileName();
    }

    // After a failed Initialize every other operation fails quietly too, and GetData still
    // hands back empty blocks and its closing text.
    static void ExpectNoUsefulAnswers(SqliteDataModule& module)
    {
        qint32 status = 1;
        ChannelCollection overview;
        module.GetChannelOverview(overview, status);
        EXPECT_NE(status, 1);
        EXPECT_EQ(overview.Count(), 0);

        QStringList categories, channels;
        module.GetChannelStructure(categories, channels, status);
        EXPECT_NE(status, 1);
        EXPECT_TRUE(categories.isEmpty());

        ChannelCollection data = Request({ "301" });
        module.GetData("301", data, Day - 1, Day + 1, status);
        EXPECT_NE(status, 1);
        ASSERT_EQ(data.Count(), 2);
        ASSERT_TRUE(data.Channel(0)->DataBlock());
        EXPECT_EQ(data.Channel(0)->DataBlock()->Rows(), 0);
        EXPECT_EQ(data.Text(1), "SQLITE;0");

        double date = -3.0;
        module.GetFirstDate("301", date);
        module.GetLastDate("301", date);
        EXPECT_EQ(date, -3.0);
    }

    TempSettings settings;
    QTemporaryDir dir;
    RecordingHandler handler;
};

TEST_F(SqliteFailureTest, UnusableFilesGiveAStatusAndALogLine)
{
    std::mt19937_64 random(7);
    QByteArray noise(64 * 1024, Qt::Uninitialized);
    for (char& b : noise)
        b = static_cast<char>(random());
    const QByteArray whole = FileBytes(WriteBigSite("whole.sqlite"));
    WriteDatabase(dir.filePath("crm.sqlite"), "CREATE TABLE customers (id INTEGER PRIMARY KEY, name TEXT)", false);
    WriteDatabase(dir.filePath("old.sqlite"),
        "CREATE TABLE categories (id, name, remark, parent, kind, path_id);"
        "CREATE TABLE channels (id, name, unit, data_type, category, parent_channel, path_id);"
        "CREATE TABLE samples (channel, time)",
        false);
    const struct
    {
        const char* name;
        QString database;
        qint32 expected;
    } cases[] = {
        { "nothing configured", QString(), SqliteDataModule::NoDatabase },
        { "missing file", dir.filePath("nowhere.sqlite"), SqliteDataModule::FileMissing },
        { "a folder", dir.path(), SqliteDataModule::FileMissing },
        { "random bytes", WriteFile("random.sqlite", noise), SqliteDataModule::Corrupt },
        { "a CSV file", WriteFile("export.sqlite", "Zeit;Leistung [kW]\n01.01.2025 00:15;12,5\n"),
            SqliteDataModule::Corrupt },
        { "truncated database", WriteFile("truncated.sqlite", whole.left(whole.size() / 3)),
            SqliteDataModule::Corrupt },
        { "empty file", WriteFile("empty.sqlite", QByteArray()), SqliteDataModule::ForeignSchema },
        { "another application's database", dir.filePath("crm.sqlite"), SqliteDataModule::ForeignSchema },
        { "samples without values", dir.filePath("old.sqlite"), SqliteDataModule::ForeignSchema },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        handler.lines.clear();
        const QByteArray before = FileBytes(c.database);
        auto module = MakeModule(c.database);
        qint32 status = 0;
        // The self-check does not need the database.
        EXPECT_EQ(module->SelfCheck(status), 1);
        EXPECT_TRUE(handler.lines.empty());
        EXPECT_EQ(module->Initialize(QString(), status), c.expected);
        EXPECT_EQ(status, c.expected);
        ASSERT_GE(handler.CountAtLeast(3), 1);
        EXPECT_EQ(handler.lines.front().source, "SqliteDataModule.Initialize");
        EXPECT_EQ(handler.lines.front().level, 3);
        EXPECT_TRUE(handler.lines.front().text.contains(c.database)) << handler.lines.front().text.toStdString();
        ExpectNoUsefulAnswers(*module);
        EXPECT_EQ(FileBytes(c.database), before);
    }
}

TEST_F(SqliteFailureTest, ALockedDatabaseFailsWithinTheBusyTimeoutAndRecovers)
{
    const QString path = Write(dir.filePath("site.sqlite"));
    settings.SetUser(ModuleKey, "BusyTimeout", "50");
    auto module = MakeModule(path);

    const SqliteConnection writer = OpenWriter(path);
    const auto exec = [&](const char* sql) { return sqlite3_exec(writer.get(), sql, nullptr, nullptr, nullptr); };

    // Locked while the module opens the file.
    ASSERT_EQ(exec("BEGIN EXCLUSIVE"), SQLITE_OK);
    qint32 status = 0;
    EXPECT_EQ(module->Initialize(QString(), status), SqliteDataModule::Locked);
    ASSERT_EQ(handler.CountAtLeast(3), 1);
    EXPECT_TRUE(handler.lines.back().text.contains("locked")) << handler.lines.back().text.toStdString();
    ASSERT_EQ(exec("ROLLBACK"), SQLITE_OK);
    EXPECT_EQ(module->Initialize(QString(), status), 1);

    // Between calls the module holds no lock, so the writer gets its lock at once; reading
    // during the writer's transaction fails, and the channels are left empty.
    ASSERT_EQ(exec("BEGIN EXCLUSIVE"), SQLITE_OK);
    ChannelCollection data = Request({ "301", "302" });
    module->GetData("301;302", data, Day - 1, Day + 1, status);
    EXPECT_EQ(status, SqliteDataModule::Locked);
    EXPECT_EQ(data.Channel(0)->DataBlock()->Rows(), 0);
    EXPECT_EQ(data.Channel(1)->DataBlock()->Rows(), 0);
    EXPECT_TRUE(data.IsText(2));
    EXPECT_EQ(handler.CountAtLeast(3), 2); // one line for the call, not one per channel
    EXPECT_EQ(handler.lines.back().source, "SqliteDataModule.GetData");
    ASSERT_EQ(exec("ROLLBACK"), SQLITE_OK);

    module->GetData("301;302", data, Day - 1, Day + 1, status);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(data.Channel(0)->DataBlock()->Rows(), PowerSamples);
}

TEST_F(SqliteFailureTest, AnInterruptedWriteIsLeftForTheWriterToUndo)
{
    // A logger that crashed inside a transaction leaves a hot journal. Rolling it back means
    // writing the database, which a reader must not do: it refuses the file instead.
    const QString original = WriteBigSite("site.sqlite");
    SqliteConnection writer = OpenWriter(original);
    ASSERT_EQ(sqlite3_exec(writer.get(), "PRAGMA cache_size = 10; BEGIN; UPDATE samples SET value = -value;", nullptr,
                  nullptr, nullptr),
        SQLITE_OK);
    ASSERT_TRUE(QFile::exists(original + "-journal"));
    QDir(dir.path()).mkdir("crashed");
    const QString path = dir.filePath("crashed/site.sqlite");
    ASSERT_TRUE(QFile::copy(original + "-journal", path + "-journal"));
    ASSERT_TRUE(QFile::copy(original, path));
    sqlite3_exec(writer.get(), "ROLLBACK", nullptr, nullptr, nullptr);
    writer.reset();

    const QByteArray database = FileBytes(path);
    const QByteArray journal = FileBytes(path + "-journal");
    auto module = MakeModule(path);
    qint32 status = 0;
    EXPECT_EQ(module->Initialize(QString(), status), SqliteDataModule::CannotOpen);
    ASSERT_EQ(handler.CountAtLeast(3), 1);
    EXPECT_TRUE(handler.lines.back().text.contains("interrupted")) << handler.lines.back().text.toStdString();
    EXPECT_EQ(FileBytes(path), database);
    EXPECT_EQ(FileBytes(path + "-journal"), journal);
}

} // namespace
