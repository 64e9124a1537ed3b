// SPDX-License-Identifier: GPL-3.0-or-later
// The PostgreSQL module on a loaded site (overview, structure, periods, GetData) and on servers it
// cannot use: down, refusing the login, never answering, stopped between reads, a foreign schema.
#include "PostgresFixture.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonObject>
#include <QPluginLoader>

#include <tuple>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using namespace SiteFixture;

// A loopback socket on a free port, listening or not; closed with the object.
struct LoopbackSocket
{
    explicit LoopbackSocket(bool listening)
    {
        sockaddr_in address {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        if (fd >= 0 && bind(fd, reinterpret_cast<sockaddr*>(&address), length) == 0
            && getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) == 0
            && (!listening || listen(fd, 8) == 0))
            port = QString::number(ntohs(address.sin_port));
    }
    ~LoopbackSocket() { close(fd); }
    int fd = socket(AF_INET, SOCK_STREAM, 0);
    QString port;
};

class PostgresSiteTest : public PostgresTest
{
protected:
    void SetUp() override
    {
        PostgresTest::SetUp();
        ASSERT_NE(server, nullptr);
        schema = Load("site");
        module = MakeModule(server->ConnInfo(), schema);
        qint32 status = 0;
        ASSERT_EQ(module->Initialize(QString(), status), 1) << handler.All();
    }

    QString schema;
    std::unique_ptr<PostgresDataModule> module;
};

TEST_F(PostgresSiteTest, OverviewAndStructureListTheChannelsInTheirFormats)
{
    ChannelCollection overview;
    qint32 status = 0;
    EXPECT_EQ(module->GetChannelOverview(overview, status), 1);
    for (qsizetype i = 0; i < overview.Count(); ++i) {
        ASSERT_TRUE(overview.Channel(i));
        EXPECT_EQ(overview.Channel(i)->ModuleAddress(), 4);
    }
    EXPECT_EQ(Overview(*module),
        QStringList({ "30#1 Leistung [kW] 3", "30#2 cos phi [] 8", "30#3 Phase L1 [kW] 3", "30#4 Leer [kWh] 2",
            "301 Leistung [kW] 3", "302 cos phi [] 8", "303 Phase L1 [kW] 3", "304 Leer [kWh] 2" }));
    QStringList categories, channels;
    EXPECT_EQ(module->GetChannelStructure(categories, channels, status), 1);
    EXPECT_EQ(categories,
        QStringList({ "10$Werk$$0$FOLDER", "40$Sonstiges$$0", "20$Halle _1$Nord$10$FOLDER",
            "30$Logger 7$Keller$20$MEASURING" }));
    EXPECT_EQ(channels,
        QStringList(
            { "30#1$Leistung$$30$0$1", "30#2$cos phi$$30$0$2", "30#4$Leer$$30$0$4", "30#3$Phase L1$$30$30#1$3" }));
}

TEST_F(PostgresSiteTest, WindowsPeriodsAndBlocksAreThoseOfTheSqliteModule)
{
    CheckWindows(*module, "301", Day, Quarter, PowerSamples, [](int k) { return k == NullSample ? -1e300 : 1.5 * k; });
    EXPECT_EQ(Period(*module, "30#1"), Period(*module, "301"));
    EXPECT_EQ(Period(*module, " 30 # 2 "), std::make_pair(Day, Day + (CosPhiSamples - 1) * Minute));
    for (const QString id : { "304", "30#4", "Leistung", "30#9", "x#1" })
        EXPECT_EQ(Period(*module, id), std::make_pair(-7.0, -7.0)) << id.toStdString();

    const std::tuple<QStringList, std::vector<qsizetype>, QString> cases[] = {
        { { "301" }, { PowerSamples }, "POSTGRES;900" },
        { { "302", "301", "303", "304" }, { CosPhiSamples, PowerSamples, 0, 0 }, "POSTGRES;60" },
        { { "999", "abc", "#", "30#", "30#9", "31#1" }, { 0, 0, 0, 0, 0, 0 }, "POSTGRES;0" },
        { { "30#1", "301", "30#2", "302" }, { PowerSamples, PowerSamples, CosPhiSamples, CosPhiSamples },
            "POSTGRES;60" },
    };
    for (const auto& [ids, rows, text] : cases) {
        SCOPED_TRACE(ids.join(';').toStdString());
        qint32 status = 0;
        const ChannelCollection data = Read(*module, ids, Day - 1, Day + 1, &status);
        EXPECT_EQ(status, 1);
        EXPECT_EQ(BlockRows(data), rows);
        EXPECT_EQ(data.Text(ids.size()), text);
    }
    // Power factors come as stored, signed.
    Samples cosPhi;
    for (int k = 0; k < CosPhiSamples; ++k)
        cosPhi.emplace_back(Day + k * Minute, 0.05 - 0.02 * k);
    EXPECT_EQ(SamplesOf(Read(*module, { "30#2" }, Day, Day + 1), 0), cosPhi);
    EXPECT_EQ(handler.lines.size(), 0u) << handler.All();
}

TEST_F(PostgresSiteTest, ChannelNumbersAreUniqueWithinALoggerAndExchangingTheLoggerGivesItsChannel)
{
    const QString numbers = Load("numbers",
        "INSERT INTO categories VALUES (1, 'A', '', 0, 'MEASURING', 1), (2, 'B', '', 0, 'MEASURING', 2),"
        " (3, 'Rest', '', 0, '', 0);"
        "INSERT INTO channels VALUES (11, 'P', 'kW', 3, 1, 0, 1), (12, 'Q', 'kvar', 3, 1, 0, 2),"
        " (21, 'P', 'kW', 3, 2, 0, 1), (22, 'Q', 'kvar', 3, 2, 0, 2), (32, 'b', '', 0, 3, 0, 5),"
        " (33, 'c', '', 0, 3, 0, 5), (36, 'f', '', 0, 3, 0, 7);"
        "INSERT INTO samples VALUES (11, 1.0, 10), (12, 1.0, 11), (21, 1.0, 20), (22, 1.0, 21), (33, 1.0, 30),"
        " (36, 1.0, 31)");
    module = MakeModule(server->ConnInfo(), numbers);
    const auto valueOf = [&](const QString& id) {
        const Samples samples = SamplesOf(Read(*module, { id }, 0.0, 2.0), 0);
        return samples.size() == 1 ? samples.front().second : -1.0;
    };
    for (const QString id : { "1#1", "1#2" })
        EXPECT_EQ(valueOf("2#" + id.section('#', 1)), valueOf(id) + 10) << id.toStdString();
    EXPECT_EQ(valueOf("3#33"), 30);
    EXPECT_EQ(valueOf("3#7"), 31);
}

TEST_F(PostgresSiteTest, APasswordInTheConnectionStringIsLeftOutAndSaid)
{
    module = MakeModule(server->ConnInfo() + " password=geheim", schema);
    qint32 status = 0;
    EXPECT_EQ(module->Initialize(QString(), status), 1);
    EXPECT_EQ(handler.Count({ "password" }, 2), 1) << handler.All();
    EXPECT_EQ(handler.Count({ "geheim" }), 0);
}

class PostgresFailureTest : public PostgresTest
{
};

TEST_F(PostgresFailureTest, UnusableServersAndSchemasGiveAStatusAndOneLogLineNamingTheServer)
{
    const QString site = Load("site");
    const QString broken = Load("broken");
    ASSERT_TRUE(server->Execute("ALTER TABLE " + broken + ".samples DROP COLUMN value"));
    // A port bound without listening: connections are refused.
    LoopbackSocket closed(false);
    const QString closedPort = closed.port;
    ASSERT_FALSE(closedPort.isEmpty());
    const QString address = "127.0.0.1:" + QString::number(server->Port());
    // Connection, schema, status, the start of GetData's reason, and what the log line names.
    const std::tuple<QString, QString, qint32, QString, QString> cases[] = {
        { "", site, PostgresDataModule::NotConfigured, "no database server is configured", "Werk" },
        { "host=127.0.0.1 port=" + closedPort, site, PostgresDataModule::Unreachable,
            "connecting to the server failed: ", "127.0.0.1:" + closedPort },
        { server->ConnInfo().replace("user=sorano", "user=niemand"), site, PostgresDataModule::LoginRefused,
            "connecting to the server failed: ", address },
        { server->ConnInfo(), "fehlt", PostgresDataModule::ForeignSchema,
            "the schema fehlt holds no logger tables: table categories is missing", address },
        { server->ConnInfo(), broken, PostgresDataModule::ForeignSchema,
            "the schema " + broken + " holds no logger tables: table samples has no column value", address },
        { "host=127.0.0.1 schluessel=1", site, PostgresDataModule::NotConfigured,
            "connecting to the server failed: invalid connection option", "Werk" },
    };
    for (const auto& [connection, schema, expected, reason, named] : cases) {
        SCOPED_TRACE(connection.toStdString() + " " + schema.toStdString());
        handler.lines.clear();
        auto module = MakeModule(connection, schema);
        qint32 status = 0;
        EXPECT_EQ(module->SelfCheck(status), 1);
        EXPECT_EQ(module->Initialize(QString(), status), expected);
        EXPECT_EQ(handler.Count({}, 3), 1) << handler.All();
        EXPECT_EQ(handler.Count({ named }, 3), 1) << handler.All();
        CheckUnusable(*module, expected, "POSTGRES", reason);
    }
}

TEST_F(PostgresFailureTest, AServerThatNeverAnswersFailsWithinTheTimeout)
{
    // Accepts connections (the system does, without accept()) and never says a word.
    LoopbackSocket silent(true);
    ASSERT_FALSE(silent.port.isEmpty());
    auto module = MakeModule("host=127.0.0.1 port=" + silent.port, "public", "2");
    QElapsedTimer clock;
    clock.start();
    qint32 status = 0;
    const ChannelCollection data = Read(*module, { "30#1" }, Day, Day + 1, &status);
    EXPECT_LT(clock.elapsed(), 7000); // a hang check, not a speed test
    EXPECT_EQ(status, PostgresDataModule::TimedOut);
    EXPECT_EQ(BlockRows(data), std::vector<qsizetype> { -1 });
    EXPECT_TRUE(data.Text(1).startsWith("POSTGRES;0;connecting to the server failed: no answer within 2 s"))
        << data.Text(1).toStdString();
    EXPECT_EQ(handler.Count({ "127.0.0.1:" + silent.port }, 3), 1) << handler.All();
}

TEST_F(PostgresFailureTest, AServerStoppedBetweenReadsFailsOnceAndIsReadAgainWhenBack)
{
    QString error;
    std::unique_ptr<TestServer> own = TestServer::StartPrivate(TestServer::Kind::Postgres, &error);
    ASSERT_TRUE(own) << error.toStdString();
    const QString schema = Load("own", SiteFixture::Sql(), own.get());
    auto module = MakeModule(own->ConnInfo(), schema);
    qint32 status = 0;
    EXPECT_EQ(BlockRows(Read(*module, { "30#1", "30#2" }, Day - 1, Day + 1, &status)),
        (std::vector<qsizetype> { PowerSamples, CosPhiSamples }));

    ASSERT_TRUE(own->Stop()) << own->LastError().toStdString();
    const QString address = "127.0.0.1:" + QString::number(own->Port());
    ChannelCollection data = Read(*module, { "30#1", "30#2" }, Day - 1, Day + 1, &status);
    EXPECT_EQ(status, PostgresDataModule::Unreachable);
    EXPECT_EQ(BlockRows(data), (std::vector<qsizetype> { -1, -1 }));
    EXPECT_TRUE(data.Text(2).contains(address)) << data.Text(2).toStdString();
    EXPECT_EQ(handler.Count({}, 3), 1) << handler.All();
    EXPECT_EQ(handler.Count({ address }, 3), 1) << handler.All();

    // Back, perhaps on another port: the next read connects again.
    ASSERT_TRUE(own->Start()) << own->LastError().toStdString();
    settings.SetUser(PostgresKey, "Connection", own->ConnInfo());
    data = Read(*module, { "30#1", "30#2" }, Day - 1, Day + 1, &status);
    EXPECT_EQ(status, 1) << handler.All();
    EXPECT_EQ(BlockRows(data), (std::vector<qsizetype> { PowerSamples, CosPhiSamples }));

    // Restarted between two reads: the dropped connection is noticed and replaced, without a failure.
    ASSERT_TRUE(own->Stop());
    ASSERT_TRUE(own->Start());
    settings.SetUser(PostgresKey, "Connection", own->ConnInfo());
    data = Read(*module, { "30#1" }, Day - 1, Day + 1, &status);
    EXPECT_EQ(status, 1) << handler.All();
    EXPECT_EQ(BlockRows(data), std::vector<qsizetype> { PowerSamples });
    EXPECT_EQ(handler.Count({}, 3), 1) << handler.All();
}

TEST(PostgresPlugin, LoadsFromTheModuleFolderAndCreatesTheModuleForItsProgId)
{
    QPluginLoader loader(SORANO_POSTGRES_PLUGIN);
    EXPECT_EQ(
        loader.metaData().value("MetaData").toObject().value("ProgIDs").toArray(), QJsonArray({ "Sorano.PostgreSQL" }));
    auto* factory = qobject_cast<DataModuleFactory*>(loader.instance());
    ASSERT_TRUE(factory) << loader.errorString().toStdString();
    EXPECT_EQ(factory->CreateModule("Sorano.SQLite", { "Werk", "4" }), nullptr);
    std::unique_ptr<QObject> object(factory->CreateModule("sorano.postgresql", { "Werk", "4" }));
    ASSERT_TRUE(object);
    EXPECT_TRUE(qobject_cast<DataModuleInterface*>(object.get()));
    EXPECT_TRUE(qobject_cast<DataAggregationInterface*>(object.get()));
}

} // namespace
