// SPDX-License-Identifier: GPL-3.0-or-later
// The SQLite module on files it cannot use: every failure is a status and a log line, and the
// module never writes to the database.
#include "LoggerDatabase.h"
#include "SqliteDataModule.h"
#include "TempSettings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <sqlite3.h>

#include <gtest/gtest.h>

#include <functional>
#include <random>

namespace {

using namespace SiteFixture;

const QString ModuleKey = QStringLiteral("Software\\HARVOLD\\ModuleSettings\\Werk");

class SqliteFailureTest : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(dir.isValid()); }

    std::unique_ptr<SqliteDataModule> MakeModule(const QString& database)
    {
        settings.SetUser(ModuleKey, "Database", database);
        auto module = std::make_unique<SqliteDataModule>(DataModuleRegistration { "Werk", "4" });
        module->SetMessageHandler(&handler);
        return module;
    }

    QString WriteSite(const QString& name, int extraSamples = 0)
    {
        const QString path = dir.filePath(name);
        LoggerDatabase db(path);
        Write(db);
        if (extraSamples > 0) {
            db.Exec("BEGIN");
            db.Exec(QString("WITH RECURSIVE k(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM k WHERE n < %1) "
                            "INSERT INTO samples SELECT 305, %2 + n / 1440.0, n * 0.5 FROM k")
                        .arg(extraSamples)
                        .arg(Day + 1));
            db.Exec("COMMIT");
        }
        return path;
    }

    static void WriteFile(const QString& path, const QByteArray& bytes)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bytes);
    }

    // After a failed Initialize every other operation fails quietly too, and GetData still
    // hands back empty blocks and its closing text.
    void ExpectNoUsefulAnswers(SqliteDataModule& module)
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

        ChannelCollection data;
        data.Add(std::make_shared<DataMatrix>(), "301");
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
    const struct
    {
        const char* name;
        std::function<QString()> make; // returns the configured database
        qint32 expected;
    } cases[] = {
        { "nothing configured", [] { return QString(); }, SqliteDataModule::NoDatabase },
        { "missing file", [&] { return dir.filePath("nowhere.sqlite"); }, SqliteDataModule::FileMissing },
        { "a folder", [&] { return dir.path(); }, SqliteDataModule::FileMissing },
        { "random bytes",
            [&] {
                std::mt19937_64 random(7);
                QByteArray bytes(64 * 1024, Qt::Uninitialized);
                for (char& b : bytes)
                    b = static_cast<char>(random());
                WriteFile(dir.filePath("random.sqlite"), bytes);
                return dir.filePath("random.sqlite");
            },
            SqliteDataModule::Corrupt },
        { "a CSV file",
            [&] {
                WriteFile(dir.filePath("export.sqlite"), "Zeit;Leistung [kW]\n01.01.2025 00:15;12,5\n");
                return dir.filePath("export.sqlite");
            },
            SqliteDataModule::Corrupt },
        { "truncated database",
            [&] {
                const QString whole = WriteSite("whole.sqlite", 20000);
                const QByteArray bytes = FileBytes(whole);
                WriteFile(dir.filePath("truncated.sqlite"), bytes.left(bytes.size() / 3));
                return dir.filePath("truncated.sqlite");
            },
            SqliteDataModule::Corrupt },
        { "empty file",
            [&] {
                WriteFile(dir.filePath("empty.sqlite"), QByteArray());
                return dir.filePath("empty.sqlite");
            },
            SqliteDataModule::ForeignSchema },
        { "another application's database",
            [&] {
                LoggerDatabase db(dir.filePath("crm.sqlite"), false);
                db.Exec("CREATE TABLE customers (id INTEGER PRIMARY KEY, name TEXT)");
                return dir.filePath("crm.sqlite");
            },
            SqliteDataModule::ForeignSchema },
        { "samples without values",
            [&] {
                LoggerDatabase db(dir.filePath("old.sqlite"), false);
                db.Exec("CREATE TABLE categories (id, name, remark, parent, kind, path_id);"
                        "CREATE TABLE channels (id, name, unit, data_type, category, parent_channel, path_id);"
                        "CREATE TABLE samples (channel, time)");
                return dir.filePath("old.sqlite");
            },
            SqliteDataModule::ForeignSchema },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        handler.lines.clear();
        const QString database = c.make();
        const QByteArray before = FileBytes(database);
        auto module = MakeModule(database);
        qint32 status = 0;
        EXPECT_EQ(module->Initialize(QString(), status), c.expected);
        EXPECT_EQ(status, c.expected);
        ASSERT_GE(handler.CountAtLeast(3), 1);
        EXPECT_EQ(handler.lines.front().source, "SqliteDataModule.Initialize");
        EXPECT_EQ(handler.lines.front().level, 3);
        if (!database.isEmpty()) {
            EXPECT_TRUE(handler.lines.front().text.contains(database)) << handler.lines.front().text.toStdString();
        }
        ExpectNoUsefulAnswers(*module);
        EXPECT_EQ(FileBytes(database), before);
    }
}

TEST_F(SqliteFailureTest, SelfCheckDoesNotNeedTheDatabase)
{
    auto module = MakeModule(dir.filePath("nowhere.sqlite"));
    qint32 status = 0;
    EXPECT_EQ(module->SelfCheck(status), 1);
    EXPECT_EQ(status, 1);
    EXPECT_TRUE(handler.lines.empty());
}

TEST_F(SqliteFailureTest, ALockedDatabaseFailsWithinTheBusyTimeoutAndRecovers)
{
    const QString path = WriteSite("site.sqlite");
    settings.SetUser(ModuleKey, "BusyTimeout", "50");
    auto module = MakeModule(path);

    sqlite3* writer = nullptr;
    ASSERT_EQ(sqlite3_open_v2(QFile::encodeName(path).constData(), &writer, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK);
    const auto exec = [&](const char* sql) { return sqlite3_exec(writer, sql, nullptr, nullptr, nullptr); };

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
    ChannelCollection data;
    data.Add(std::make_shared<DataMatrix>(), "301");
    data.Add(std::make_shared<DataMatrix>(), "302");
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
    sqlite3_close(writer);
}

TEST_F(SqliteFailureTest, ReadingLeavesTheFileAndItsFolderAsTheyWere)
{
    const QString path = WriteSite("site.sqlite");
    const QByteArray before = FileBytes(path);
    const QDateTime modified = QFileInfo(path).lastModified();
    {
        auto module = MakeModule(path);
        qint32 status = 0;
        ASSERT_EQ(module->Initialize(QString(), status), 1);
        ChannelCollection overview;
        module->GetChannelOverview(overview, status);
        QStringList categories, channels;
        module->GetChannelStructure(categories, channels, status);
        ChannelCollection data;
        data.Add(std::make_shared<DataMatrix>(), "301");
        module->GetData("301", data, Day - 1, Day + 1, status);
        double date = 0;
        module->GetFirstDate("301", date);
        EXPECT_EQ(data.Channel(0)->DataBlock()->Rows(), PowerSamples);
    }
    EXPECT_EQ(FileBytes(path), before);
    EXPECT_EQ(QFileInfo(path).lastModified(), modified);
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList({ "site.sqlite" }));
}

TEST_F(SqliteFailureTest, AnInterruptedWriteIsLeftForTheWriterToUndo)
{
    // A logger that crashed inside a transaction leaves a hot journal. Rolling it back means
    // writing the database, which a reader must not do: it refuses the file instead.
    const QString original = WriteSite("site.sqlite", 20000);
    sqlite3* writer = nullptr;
    ASSERT_EQ(
        sqlite3_open_v2(QFile::encodeName(original).constData(), &writer, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(writer, "PRAGMA cache_size = 10; BEGIN; UPDATE samples SET value = -value;", nullptr,
                  nullptr, nullptr),
        SQLITE_OK);
    ASSERT_TRUE(QFile::exists(original + "-journal"));
    QDir(dir.path()).mkdir("crashed");
    const QString path = dir.filePath("crashed/site.sqlite");
    ASSERT_TRUE(QFile::copy(original + "-journal", path + "-journal"));
    ASSERT_TRUE(QFile::copy(original, path));
    sqlite3_exec(writer, "ROLLBACK", nullptr, nullptr, nullptr);
    sqlite3_close(writer);

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
