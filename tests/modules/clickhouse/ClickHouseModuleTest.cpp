// SPDX-License-Identifier: GPL-3.0-or-later
// The ClickHouse module against a real server: the site copied by the loader and read back
// (overview, structure, windows, GetData), aggregation on the server against the program's grid,
// and servers that are down, refuse the user, never answer or hold tables of another shape.
#include "../sqlite/LoggerDatabase.h"
#include "ClickHouseDataModule.h"
#include "ClickHouseLoad.h"
#include "RegistryKey.h"
#include "SqliteDataModule.h"
#include "TempSettings.h"
#include "TestServer.h"
#include "TimeValueTransformator.h"
#include "frm_ClickHouseConfig.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QPluginLoader>
#include <QProcess>
#include <QTemporaryDir>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <thread>
#include <tuple>

namespace {

using namespace SiteFixture;

const QString Registration = QStringLiteral("Werk");
const QString ModuleKey = QStringLiteral("Software\\HARVOLD\\ModuleSettings\\Werk");

// A socket on a free loopback port that listens; connections to it are made by the system.
struct LoopbackSocket
{
    LoopbackSocket()
    {
        fd = socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        if (fd >= 0 && bind(fd, reinterpret_cast<sockaddr*>(&address), length) == 0 && listen(fd, 8) == 0
            && getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) == 0)
            port = QString::number(ntohs(address.sin_port));
    }
    ~LoopbackSocket()
    {
        if (fd >= 0)
            close(fd);
    }
    QString Url() const { return "http://127.0.0.1:" + port + "/"; }
    int fd = -1;
    QString port;
};

class ClickHouseModuleTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        QString error;
        server = TestServer::Shared(TestServer::Kind::ClickHouse, &error);
        ASSERT_TRUE(server) << error.toStdString();
    }

    // Copies the file into a fresh database of the server and points the settings at it.
    QString Load(const QString& file, TestServer& target)
    {
        const QString database = target.FreshNamespace("chmod");
        QString error;
        EXPECT_TRUE(ClickHouseLoad::CopyFromSqlite(file, target.Url(), database, "default", error))
            << error.toStdString();
        Configure(target.Url(), database);
        return database;
    }

    void Configure(const QString& url, const QString& database, const QString& timeout = "3")
    {
        settings.SetUser(ModuleKey, "URL", url);
        settings.SetUser(ModuleKey, "Database", database);
        settings.SetUser(ModuleKey, "Timeout", timeout);
    }

    std::unique_ptr<ClickHouseDataModule> Open(qint32 expected = 1)
    {
        auto module = std::make_unique<ClickHouseDataModule>(DataModuleRegistration { Registration, "4" });
        module->SetMessageHandler(&handler);
        qint32 status = 0;
        EXPECT_EQ(module->Initialize(QString(), status), expected);
        return module;
    }

    std::unique_ptr<ClickHouseDataModule> OpenSite()
    {
        Load(Write(dir.filePath("site.sqlite")), *server);
        return Open();
    }

    TempSettings settings;
    QTemporaryDir dir;
    RecordingHandler handler;
    TestServer* server = nullptr;
};

TEST_F(ClickHouseModuleTest, TheLoadedSiteGivesOverviewStructureWindowsAndBlocksAsTheFileDoes)
{
    auto module = OpenSite();
    EXPECT_EQ(Overview(*module),
        QStringList({ "30#1 Leistung [kW] 3", "30#2 cos phi [] 8", "30#3 Phase L1 [kW] 3", "30#4 Leer [kWh] 2",
            "301 Leistung [kW] 3", "302 cos phi [] 8", "303 Phase L1 [kW] 3", "304 Leer [kWh] 2" }));
    QStringList categories, channels;
    qint32 status = 0;
    EXPECT_EQ(module->GetChannelStructure(categories, channels, status), 1);
    EXPECT_EQ(categories,
        QStringList({ "10$Werk$$0$FOLDER", "40$Sonstiges$$0", "20$Halle _1$Nord$10$FOLDER",
            "30$Logger 7$Keller$20$MEASURING" }));
    EXPECT_EQ(channels,
        QStringList(
            { "30#1$Leistung$$30$0$1", "30#2$cos phi$$30$0$2", "30#4$Leer$$30$0$4", "30#3$Phase L1$$30$30#1$3" }));

    CheckWindows(*module, "301", Day, Quarter, PowerSamples, [](int k) { return k == NullSample ? -1e300 : 1.5 * k; });
    EXPECT_EQ(Period(*module, "30#1"), Period(*module, "301"));
    EXPECT_EQ(Period(*module, " 30 # 2 "), std::make_pair(Day, Day + (CosPhiSamples - 1) * Minute));
    for (const QString id : { "304", "Leistung", "30#9", "x#1", "30#1#1" })
        EXPECT_EQ(Period(*module, id), std::make_pair(-7.0, -7.0)) << id.toStdString();

    const std::tuple<QStringList, std::vector<qsizetype>, QString> cases[] = {
        { { "301" }, { PowerSamples }, "CLICKHOUSE;900" },
        { { "302", "301", "303", "304" }, { CosPhiSamples, PowerSamples, 0, 0 }, "CLICKHOUSE;60" },
        { { "999", "abc", "#", "x#1", "30#", "30#1#1", "30#9", "31#1" }, { 0, 0, 0, 0, 0, 0, 0, 0 }, "CLICKHOUSE;0" },
        { { "30#1", "301", "30#2", "302" }, { PowerSamples, PowerSamples, CosPhiSamples, CosPhiSamples },
            "CLICKHOUSE;60" },
    };
    for (const auto& [ids, rows, text] : cases) {
        SCOPED_TRACE(ids.join(';').toStdString());
        const ChannelCollection data = Read(*module, ids, Day - 1, Day + 1, &status);
        EXPECT_EQ(status, 1);
        EXPECT_EQ(BlockRows(data), rows);
        EXPECT_EQ(data.Text(ids.size()), text);
    }
    // Power factors come as stored, signed; both forms of an id give the same samples.
    const ChannelCollection twice = Read(*module, { "30#2", "302" }, Day, Day + 1);
    EXPECT_EQ(SamplesOf(twice, 0), SamplesOf(twice, 1));
    for (int k = 0; k < CosPhiSamples; ++k)
        EXPECT_EQ(SamplesOf(twice, 0)[k], std::make_pair(Day + k * Minute, 0.05 - 0.02 * k));
    // 302 is listed but not in the collection.
    ChannelCollection one = Request({ "301" });
    module->GetData("302;301", one, Day + 1, Day + 2, status);
    EXPECT_EQ(BlockRows(one), std::vector<qsizetype> { 0 });
    EXPECT_EQ(one.Text(1), "CLICKHOUSE;900");
    EXPECT_EQ(handler.lines.size(), 0u) << handler.All();
}

TEST_F(ClickHouseModuleTest, SamplesWrittenInSeveralPartsOutOfOrderAreReadInOrderOfTime)
{
    // Each INSERT makes a part of its own: later samples written first, and the two channels'
    // samples alternating, as a logger that sends old data late would leave them.
    const QString database = Load(Write(dir.filePath("site.sqlite")), *server);
    auto module = Open();
    constexpr double Later = Day + 3;
    for (const int k : { 7, 5, 6, 1, 3, 0, 2, 4 }) {
        for (const int channel : { 301, 302 }) {
            QString error;
            ASSERT_TRUE(server->Execute(QStringLiteral("INSERT INTO %1.samples VALUES (%2, %3, %4)")
                                            .arg(database)
                                            .arg(channel)
                                            .arg(Later + k * Minute, 0, 'g', 17)
                                            .arg(channel * 100 + k),
                nullptr, &error))
                << error.toStdString();
        }
    }
    qint32 status = 0;
    const ChannelCollection data = Read(*module, { "302", "301" }, Later, Later + 1, &status);
    EXPECT_EQ(status, 1);
    // The server parses the times from the statement's text: compared to a nanosecond.
    for (const int index : { 0, 1 }) {
        const int channel = index == 0 ? 302 : 301;
        const auto samples = SamplesOf(data, index);
        ASSERT_EQ(samples.size(), 8u) << channel;
        for (int k = 0; k < 8; ++k) {
            EXPECT_NEAR(samples[size_t(k)].first, Later + k * Minute, 1e-14) << channel << " " << k;
            EXPECT_EQ(samples[size_t(k)].second, channel * 100 + k) << channel << " " << k;
        }
    }
}

TEST_F(ClickHouseModuleTest, ChannelNumbersAreUniqueWithinALoggerAndExchangingTheLoggerGivesItsChannel)
{
    const QString path = dir.filePath("numbers.sqlite");
    WriteDatabase(path,
        "INSERT INTO categories VALUES (1, 'A', '', 0, 'MEASURING', 1), (2, 'B', '', 0, 'MEASURING', 2),"
        " (3, 'Rest', '', 0, '', 0);"
        "INSERT INTO channels VALUES (11, 'P', 'kW', 3, 1, 0, 1), (12, 'Q', 'kvar', 3, 1, 0, 2),"
        " (21, 'P', 'kW', 3, 2, 0, 1), (22, 'Q', 'kvar', 3, 2, 0, 2), (31, 'a', '', 0, 3, 0, 0),"
        " (32, 'b', '', 0, 3, 0, 5), (33, 'c', '', 0, 3, 0, 5), (36, 'f', '', 0, 3, 0, 7);"
        "INSERT INTO samples VALUES (11, 1.0, 10), (12, 1.0, 11), (21, 1.0, 20), (22, 1.0, 21), (33, 1.0, 30),"
        " (36, 1.0, 31)");
    Load(path, *server);
    auto module = Open();
    const auto valueOf = [&](const QString& id) {
        const Samples samples = SamplesOf(Read(*module, { id }, 0.0, 2.0), 0);
        return samples.size() == 1 ? samples.front().second : -1.0;
    };
    for (const QString id : { "1#1", "1#2" })
        EXPECT_EQ(valueOf("2#" + id.section('#', 1)), valueOf(id) + 10) << id.toStdString();
    EXPECT_EQ(valueOf("3#33"), 30);
    EXPECT_EQ(valueOf("3#7"), 31);
}

// Channels 501 (largest), 502 (sum), 503 (mean) and 506 (smallest) hold the same irregular
// samples: times off the second, values whose sum depends on the order, NULLs, a gap of hours and
// a stored value equal to NoValue. 508 (power factor) holds them too and is read raw.
QString AggregationSql()
{
    QString sql = "INSERT INTO categories VALUES (50, 'Logger', '', 0, 'MEASURING', 1);"
                  "INSERT INTO channels VALUES (501, 'max', '', 1, 50, 0, 1), (502, 'sum', '', 2, 50, 0, 2),"
                  " (503, 'mean', '', 3, 50, 0, 3), (506, 'min', '', 6, 50, 0, 6), (508, 'pf', '', 8, 50, 0, 8);"
                  "INSERT INTO info VALUES ('resolution', '37');";
    for (int k = 0; k < 4000; ++k) {
        if (k >= 1500 && k < 1800)
            continue; // a gap of three hours
        const double time = Day + (k * 37.0 + (k % 7) * 0.0123) / 86400.0;
        const QString value = k % 13 == 0 ? "NULL"
            : k == 77                     ? "-1e300"
                                          : QString::number((k * 7919 % 1000) / 7.0 - 50.0 + 1e-9 * k, 'g', 17);
        sql += QString("INSERT INTO samples VALUES (501, %1, %2);").arg(time, 0, 'g', 17).arg(value);
    }
    sql += "INSERT INTO samples SELECT c.id, s.time, s.value FROM samples s,"
           " (SELECT 502 AS id UNION ALL SELECT 503 UNION ALL SELECT 506 UNION ALL SELECT 508) c WHERE s.channel = 501";
    return sql;
}

TEST_F(ClickHouseModuleTest, AggregatesOfTheServerPutOnTheGridEqualTheRawSamplesPutOnIt)
{
    const QString path = dir.filePath("steps.sqlite");
    WriteDatabase(path, AggregationSql());
    const QString database = Load(path, *server);
    auto module = Open();
    const QStringList ids = { "501", "502", "503", "506", "508" };
    const QList<qint32> types = { 1, 2, 3, 6, 8 };
    const auto request = [&] {
        ChannelCollection channels = Request(ids);
        for (qsizetype i = 0; i < ids.size(); ++i)
            channels.Channel(i)->SetDataType(types[i]);
        return channels;
    };
    const double last = Day + 4000 * 37.0 / 86400.0;
    // Unit and count of the grid, window.
    const std::tuple<const char*, qint32, double, double> grids[] = {
        { "n", 1, Day - 0.3, last + 0.1 }, // the grid starts before the first sample
        { "n", 15, Day + 0.40031, Day + 1.2 }, // the window is cut inside a step
        { "h", 1, Day - 0.3, last + 0.1 },
        { "h", 1, Day + 0.40031, Day + 1.2 },
        { "d", 1, Day - 0.3, last + 0.1 },
        { "s", 60, Day + 0.40031, Day + 1.2 },
    };
    // The loader leaves one part. Written again in three parts, the later stretches of every
    // 1000 s first, most steps have samples in several parts, which the server reads part by part.
    const QString scramble[] = {
        "RENAME TABLE %1.samples TO %1.loaded",
        "CREATE TABLE %1.samples AS %1.loaded",
        "SYSTEM STOP MERGES %1.samples",
        "INSERT INTO %1.samples SELECT * FROM %1.loaded WHERE intDiv(toInt64(time * 86400), 1000) % 3 = 2",
        "INSERT INTO %1.samples SELECT * FROM %1.loaded WHERE intDiv(toInt64(time * 86400), 1000) % 3 = 1",
        "INSERT INTO %1.samples SELECT * FROM %1.loaded WHERE intDiv(toInt64(time * 86400), 1000) % 3 = 0",
    };
    for (const bool parts : { false, true }) {
        SCOPED_TRACE(parts ? "three parts" : "one part");
        for (const QString& sql : scramble) {
            if (!parts)
                break;
            QString error;
            ASSERT_TRUE(server->Execute(sql.arg(database), nullptr, &error)) << error.toStdString();
        }
        for (const auto& [unit, count, from, to] : grids) {
            SCOPED_TRACE(QString("%1 %2 %3").arg(unit).arg(count).arg(from, 0, 'g', 17).toStdString());
            const auto steps = TimeValueTransformator::FixedStepsOf(from, unit, count);
            ASSERT_TRUE(steps);
            TimeValueTransformator rawGrid, serverGrid;
            rawGrid.Init(from, to, unit, count, true);
            serverGrid.Init(from, to, unit, count, true);

            ChannelCollection raw = request(), aggregated = request();
            qint32 status = 0;
            module->GetData(ids.join(';'), raw, from, to, status);
            ASSERT_EQ(status, 1);
            module->GetAggregatedData(ids.join(';'), aggregated, from, to, steps->start, steps->seconds, status);
            ASSERT_EQ(status, 1);
            EXPECT_EQ(aggregated.Text(ids.size()), "CLICKHOUSE;37");
            for (qsizetype i = 0; i < ids.size(); ++i) {
                SCOPED_TRACE(ids[i].toStdString());
                const MatrixBlockPtr rawBlock = raw.Channel(i)->DataBlock();
                const MatrixBlockPtr serverBlock = aggregated.Channel(i)->DataBlock();
                ASSERT_TRUE(rawBlock && serverBlock);
                // The server sends a row per step, or the raw samples of a power factor.
                if (types[i] == 8)
                    EXPECT_EQ(serverBlock->Rows(), rawBlock->Rows());
                else
                    EXPECT_LT(serverBlock->Rows(), rawBlock->Rows());
                rawGrid.Add(*rawBlock, ids[i], types[i]);
                serverGrid.Add(*serverBlock, ids[i], types[i]);
                const MatrixBlockPtr expected = rawGrid.Data(ids[i]), got = serverGrid.Data(ids[i]);
                ASSERT_TRUE(expected && got);
                ASSERT_EQ(got->Rows(), expected->Rows());
                int differences = 0;
                for (qsizetype r = 0; r < expected->Rows(); ++r)
                    for (qsizetype c = 0; c < 2; ++c)
                        if (!(got->Item(r, c) == expected->Item(r, c)) && differences++ < 5)
                            ADD_FAILURE() << "row " << r << " column " << c << ": " << got->Item(r, c)
                                          << " != " << expected->Item(r, c);
                EXPECT_EQ(differences, 0);
            }
        }
    }

    // The channels' steps go as two queries side by side: a table that went away fails the
    // call once, with the server's reason, and no channel gets a block.
    QString error;
    ASSERT_TRUE(server->Execute(QString("RENAME TABLE %1.samples TO %1.gone").arg(database), nullptr, &error))
        << error.toStdString();
    handler.lines.clear();
    const QStringList summed = ids.mid(0, 4); // no power factor: every channel by steps
    ChannelCollection failed = Request(summed);
    for (qsizetype i = 0; i < summed.size(); ++i)
        failed.Channel(i)->SetDataType(types[i]);
    qint32 failure = 0;
    module->GetAggregatedData(summed.join(';'), failed, Day, Day + 1, Day, 3600, failure);
    EXPECT_EQ(failure, ClickHouseDataModule::QueryFailed);
    EXPECT_EQ(handler.Count({ "aggregated samples", "samples doesn't exist" }, 3), 1) << handler.All();
    EXPECT_EQ(handler.lines.size(), 1u) << handler.All();
    EXPECT_EQ(BlockRows(failed), (std::vector<qsizetype> { -1, -1, -1, -1 }));
    ASSERT_TRUE(server->Execute(QString("RENAME TABLE %1.gone TO %1.samples").arg(database), nullptr, &error))
        << error.toStdString();

    // Switched off, the server sends the raw samples.
    settings.SetUser(ModuleKey, "Aggregate", "0");
    module = Open();
    ChannelCollection raw = request(), aggregated = request();
    qint32 status = 0;
    module->GetData(ids.join(';'), raw, Day, Day + 1, status);
    module->GetAggregatedData(ids.join(';'), aggregated, Day, Day + 1, Day, 3600, status);
    EXPECT_EQ(BlockRows(aggregated), BlockRows(raw));
    EXPECT_EQ(SamplesOf(aggregated, 2), SamplesOf(raw, 2));
}

TEST_F(ClickHouseModuleTest, TablesOfAnotherShapeAndUnknownUsersAreRefusedWithTheirReason)
{
    const QString database = server->FreshNamespace("chshape");
    QString error;
    ASSERT_TRUE(server->Execute(
        QString("CREATE TABLE %1.categories (id Int64, name String, remark String, parent Int64, kind String,"
                " path_id Int64) ENGINE = MergeTree ORDER BY id;"
                "CREATE TABLE %1.channels (id Int64, name String, unit String, data_type Int32, category Int64,"
                " parent_channel Int64, path_id Int64) ENGINE = MergeTree ORDER BY id;"
                "CREATE TABLE %1.samples (channel Int64, time Float64) ENGINE = MergeTree ORDER BY (channel, time)")
            .arg(database),
        nullptr, &error))
        << error.toStdString();

    // Database, user, status, start of the reason.
    const std::tuple<QString, QString, qint32, QString> cases[] = {
        { database, "default", ClickHouseDataModule::ForeignSchema,
            "the database " + database + " holds no logger tables: table samples has no column value" },
        { "nirgends_" + database, "default", ClickHouseDataModule::ForeignSchema,
            "reading the schema failed: the database nirgends_" + database + " does not exist" },
        { database, "niemand", ClickHouseDataModule::LoginRefused,
            "reading the schema failed: the server refused the login: Code: 192" },
    };
    for (const auto& [name, user, expected, reason] : cases) {
        SCOPED_TRACE(reason.toStdString());
        handler.lines.clear();
        Configure(server->Url(), name);
        settings.SetUser(ModuleKey, "User", user);
        auto module = Open(expected);
        EXPECT_EQ(handler.Count({ "127.0.0.1:" + QString::number(server->Port()) }, 3), 1) << handler.All();
        CheckUnusable(*module, expected, "CLICKHOUSE", reason);
    }
    EXPECT_FALSE(ClickHouseLoad::CopyFromSqlite(
        Write(dir.filePath("site.sqlite")), server->Url(), "x`; DROP DATABASE system", "default", error));
    EXPECT_TRUE(error.contains("not allowed")) << error.toStdString();
}

TEST_F(ClickHouseModuleTest, AnswersThatNeverComeOrAreCutShortAreFailures)
{
    // Listens, so connections are made, and never answers.
    const LoopbackSocket silent;
    ASSERT_FALSE(silent.port.isEmpty());
    Configure(silent.Url(), "default", "2");
    QElapsedTimer timer;
    timer.start();
    auto module = Open(ClickHouseDataModule::TimedOut);
    EXPECT_LT(timer.elapsed(), 7000);
    EXPECT_EQ(handler.Count({ "127.0.0.1:" + silent.port, "no answer within 2 s" }, 3), 1) << handler.All();
    timer.restart();
    EXPECT_EQ(BlockRows(Read(*module, { "301" }, Day, Day + 1)), std::vector<qsizetype> { -1 });
    EXPECT_LT(timer.elapsed(), 7000);

    // Announces more bytes than it sends, then closes the connection.
    const LoopbackSocket dropping;
    std::thread answer([&] {
        const int connection = accept(dropping.fd, nullptr, nullptr);
        char request[4096];
        [[maybe_unused]] const auto got = recv(connection, request, sizeof request, 0);
        const char reply[] = "HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n\x0a"
                             "categories\x02id";
        [[maybe_unused]] const auto sent = send(connection, reply, sizeof reply - 1, 0);
        close(connection);
    });
    handler.lines.clear();
    Configure(dropping.Url(), "default", "3");
    Open(ClickHouseDataModule::Unreachable);
    answer.join();
    EXPECT_EQ(handler.Count({ "127.0.0.1:" + dropping.port, "the connection dropped" }, 3), 1) << handler.All();

    // A row cut short in an answer that is whole as far as HTTP goes.
    std::string rows;
    ClickHouse::Put(rows, std::int64_t { 301 });
    ClickHouse::Put(rows, Day);
    ClickHouse::PutNullable(rows, true, 1.5);
    ClickHouse::Reader whole(rows.data(), rows.size()), cut(rows.data(), rows.size() - 3);
    for (ClickHouse::Reader* reader : { &whole, &cut }) {
        reader->Int64();
        reader->Float64();
        double value = 0.0;
        EXPECT_EQ(reader->NullableFloat64(value) && !reader->Failed(), reader == &whole);
        EXPECT_EQ(reader->Failed(), reader == &cut);
    }
}

TEST_F(ClickHouseModuleTest, AStoppedServerFailsTheReadAndTheNextReadAfterItsStartWorks)
{
    QString error;
    std::unique_ptr<TestServer> own = TestServer::StartPrivate(TestServer::Kind::ClickHouse, &error);
    ASSERT_TRUE(own) << error.toStdString();
    const QString database = Load(Write(dir.filePath("site.sqlite")), *own);
    auto module = Open();
    EXPECT_EQ(BlockRows(Read(*module, { "301", "302" }, Day - 1, Day + 1)),
        (std::vector<qsizetype> { PowerSamples, CosPhiSamples }));

    ASSERT_TRUE(own->Stop()) << own->LastError().toStdString();
    const QString where = "127.0.0.1:" + QString::number(own->Port());
    qint32 status = 0;
    ChannelCollection data = Read(*module, { "301", "302" }, Day - 1, Day + 1, &status);
    EXPECT_EQ(status, ClickHouseDataModule::Unreachable);
    EXPECT_EQ(BlockRows(data), (std::vector<qsizetype> { -1, -1 }));
    EXPECT_TRUE(data.Text(2).startsWith("CLICKHOUSE;0;reading the channels failed: ")) << data.Text(2).toStdString();
    EXPECT_TRUE(data.Text(2).contains(where));
    EXPECT_EQ(handler.Count({ where }, 3), 1) << handler.All();

    ASSERT_TRUE(own->Start()) << own->LastError().toStdString();
    if (own->Url() != server->Url())
        Configure(own->Url(), database);
    ClickHouseDataModule::Settings moved = module->ConfiguredSettings();
    module->UseSettings(moved);
    data = Read(*module, { "301", "302" }, Day - 1, Day + 1, &status);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(BlockRows(data), (std::vector<qsizetype> { PowerSamples, CosPhiSamples }));
    EXPECT_EQ(data.Text(2), "CLICKHOUSE;60");
}

TEST_F(ClickHouseModuleTest, TheDialogTestsTheEnteredServerPreviewsItsTreeAndStoresTheValues)
{
    const QString database = Load(Write(dir.filePath("site.sqlite")), *server);
    ClickHouseDataModule::Settings entered;
    entered.url = server->Url();
    entered.database = database;
    entered.timeoutSeconds = 4;
    {
        frm_ClickHouseConfig dialog(entered, true);
        dialog.TestAndPreview();
        QString version;
        ASSERT_TRUE(server->Execute("SELECT version()", &version));
        EXPECT_EQ(dialog.findChild<QLabel*>("lbl_Answer")->text(), "Connected: ClickHouse " + version);
        const QTreeWidget* tree = dialog.findChild<QTreeWidget*>("trv_Channels");
        ASSERT_EQ(tree->topLevelItemCount(), 2);
        EXPECT_EQ(tree->topLevelItem(0)->text(0), "Werk");
        entered.database = "nirgends";
        frm_ClickHouseConfig missing(entered, false);
        missing.TestAndPreview();
        EXPECT_EQ(missing.findChild<QTreeWidget*>("trv_Channels")->topLevelItemCount(), 0);
        EXPECT_TRUE(missing.findChild<QLabel*>("lbl_Preview")->text().startsWith("Keine Vorschau: "));
    }

    // OK stores the entered values as the user's and tells the program; Cancel changes nothing.
    settings.SetUser(ModuleKey, "Database", "anders");
    auto module = Open(ClickHouseDataModule::ForeignSchema);
    EXPECT_EQ(RunConfig(*module, "txt_Url", server->Url(), "cmd_Cancel"), server->Url());
    EXPECT_EQ(handler.messages.size(), 0u);
    QTimer::singleShot(0, [&] {
        auto* dialog = QApplication::activeModalWidget();
        if (!dialog)
            return;
        dialog->findChild<QLineEdit*>("txt_Database")->setText(database);
        dialog->findChild<QPushButton*>("cmd_OK")->click();
    });
    module->ShowConfig();
    EXPECT_EQ(RegistryKey().ReadValue(Hive::CurrentUser, ModuleKey, "Database"), database);
    ASSERT_EQ(handler.messages.size(), 1u);
    EXPECT_EQ(handler.messages.front(), std::make_pair(QString("CHANNELS_CHANGED"), QString("4")));
    EXPECT_EQ(BlockRows(Read(*module, { "301" }, Day - 1, Day + 1)), std::vector<qsizetype> { PowerSamples });
}

TEST_F(ClickHouseModuleTest, TheDemoDatabaseReadsAsFromItsFile)
{
    const QString path = dir.filePath("demo.sqlite");
    QProcess generator;
    generator.start(SORANO_DEMODATA, { "--days", "20", path });
    ASSERT_TRUE(generator.waitForFinished(120'000));
    ASSERT_EQ(generator.exitCode(), 0) << generator.readAllStandardError().toStdString();

    const QString database = server->FreshNamespace("chdemo");
    std::vector<int> steps;
    QString error;
    ASSERT_TRUE(ClickHouseLoad::CopyFromSqlite(path, server->Url(), database, "default", error, [&](int percent) {
        steps.push_back(percent);
    })) << error.toStdString();
    EXPECT_TRUE(std::is_sorted(steps.begin(), steps.end()));
    EXPECT_EQ(steps.back(), 100);
    Configure(server->Url(), database);
    auto module = Open();
    SqliteDataModule file(DataModuleRegistration { Registration, "4" });
    qint32 status = 0;
    ASSERT_EQ(file.Initialize(path, status), 1);

    const QStringList overview = Overview(*module);
    EXPECT_EQ(overview, Overview(file));
    QStringList categories[2], channels[2];
    module->GetChannelStructure(categories[0], channels[0], status);
    file.GetChannelStructure(categories[1], channels[1], status);
    EXPECT_EQ(categories[0], categories[1]);
    EXPECT_EQ(channels[0], channels[1]);

    QStringList ids;
    for (const QString& line : overview)
        ids << line.section(' ', 0, 0);
    ASSERT_EQ(ids.size(), 50);
    const auto [first, last] = Period(file, ids.front());
    EXPECT_EQ(Period(*module, ids.front()), std::make_pair(first, last));
    const ChannelCollection fromServer = Read(*module, ids, first - 1, last + 1);
    const ChannelCollection fromFile = Read(file, ids, first - 1, last + 1);
    for (qsizetype i = 0; i < ids.size(); ++i)
        EXPECT_EQ(SamplesOf(fromServer, i), SamplesOf(fromFile, i)) << ids[i].toStdString();
    EXPECT_EQ(fromServer.Text(ids.size()).section(';', 1), fromFile.Text(ids.size()).section(';', 1));
    EXPECT_EQ(handler.lines.size(), 0u) << handler.All();
}

TEST(ClickHousePluginTest, ThePluginCreatesTheModuleForItsProgId)
{
    QPluginLoader loader(SORANO_CLICKHOUSE_PLUGIN);
    auto* factory = qobject_cast<DataModuleFactory*>(loader.instance());
    ASSERT_TRUE(factory) << loader.errorString().toStdString();
    EXPECT_EQ(factory->CreateModule("Sorano.SQLite", { "x", "1" }), nullptr);
    std::unique_ptr<QObject> module(factory->CreateModule("sorano.clickhouse", { "x", "1" }));
    ASSERT_TRUE(module);
    EXPECT_TRUE(qobject_cast<DataModuleInterface*>(module.get()));
    EXPECT_TRUE(qobject_cast<DataAggregationInterface*>(module.get()));
    qint32 status = 0;
    EXPECT_EQ(qobject_cast<DataModuleInterface*>(module.get())->SelfCheck(status), 1);
}

} // namespace
