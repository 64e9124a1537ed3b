// SPDX-License-Identifier: GPL-3.0-or-later
// The test servers: the shared ones answer, namespaces are fresh, a private one stops and starts again.
#include "TestServer.h"

#include <gtest/gtest.h>

#include <ostream>

// Names the kind in test names and messages.
void PrintTo(TestServer::Kind kind, std::ostream* os)
{
    *os << (kind == TestServer::Kind::Postgres ? "Postgres" : "ClickHouse");
}

namespace {

class TestServerTest : public ::testing::TestWithParam<TestServer::Kind>
{
protected:
    bool IsPostgres() const { return GetParam() == TestServer::Kind::Postgres; }

    // Whether the namespace exists, asked of the server's catalogue.
    static bool NamespaceExists(const TestServer& server, const QString& name)
    {
        const QString sql = server.GetKind() == TestServer::Kind::Postgres
            ? QStringLiteral("SELECT count(*) FROM pg_namespace WHERE nspname = '%1'").arg(name)
            : QStringLiteral("SELECT count() FROM system.databases WHERE name = '%1'").arg(name);
        QString out, error;
        EXPECT_TRUE(server.Execute(sql, &out, &error)) << error.toStdString();
        return out == QStringLiteral("1");
    }
};

TEST_P(TestServerTest, SharedServerAnswersAndReportsErrors)
{
    QString error;
    TestServer* server = TestServer::Shared(GetParam(), &error);
    ASSERT_NE(server, nullptr) << error.toStdString();
    EXPECT_EQ(TestServer::Shared(GetParam()), server);
    ASSERT_NE(server->Port(), 0);
    if (IsPostgres())
        EXPECT_EQ(
            server->ConnInfo(), QStringLiteral("host=127.0.0.1 port=%1 dbname=sorano user=sorano").arg(server->Port()));
    else
        EXPECT_EQ(server->Url(), QStringLiteral("http://127.0.0.1:%1/").arg(server->Port()));

    QString out;
    ASSERT_TRUE(server->Execute(QStringLiteral("SELECT 6 * 7;\nSELECT 'zwei';"), &out, &error)) << error.toStdString();
    EXPECT_EQ(out, QStringLiteral("42\nzwei"));

    // A failing statement stops the batch and is reported.
    error.clear();
    EXPECT_FALSE(server->Execute(QStringLiteral("SELECT 1; SELECT * FROM no_such_table; SELECT 2;"), &out, &error));
    EXPECT_TRUE(error.contains(QStringLiteral("no_such_table"))) << error.toStdString();
}

TEST_P(TestServerTest, FreshNamespacesDifferAndExist)
{
    QString error;
    TestServer* server = TestServer::Shared(GetParam(), &error);
    ASSERT_NE(server, nullptr) << error.toStdString();

    const QString a = server->FreshNamespace(QStringLiteral("Kanal-Test"));
    const QString b = server->FreshNamespace(QStringLiteral("Kanal-Test"));
    ASSERT_FALSE(a.isEmpty());
    ASSERT_FALSE(b.isEmpty());
    EXPECT_NE(a, b);
    EXPECT_TRUE(a.startsWith(QStringLiteral("kanal_test_"))) << a.toStdString();
    EXPECT_TRUE(NamespaceExists(*server, a));
    EXPECT_TRUE(NamespaceExists(*server, b));
    EXPECT_FALSE(NamespaceExists(*server, a + QStringLiteral("_x")));

    // Usable for tables of their own.
    const QString table = a + QStringLiteral(".t");
    const QString create = IsPostgres() ? QStringLiteral("CREATE TABLE %1 (v integer);").arg(table)
                                        : QStringLiteral("CREATE TABLE %1 (v Int32) ENGINE = Memory;").arg(table);
    QString out;
    ASSERT_TRUE(server->Execute(create + QStringLiteral("INSERT INTO %1 VALUES (5);").arg(table), nullptr, &error))
        << error.toStdString();
    ASSERT_TRUE(server->Execute(QStringLiteral("SELECT sum(v) FROM %1").arg(table), &out, &error))
        << error.toStdString();
    EXPECT_EQ(out, QStringLiteral("5"));
}

TEST_P(TestServerTest, PrivateServerStopsAndStartsAgain)
{
    QString error;
    std::unique_ptr<TestServer> server = TestServer::StartPrivate(GetParam(), &error);
    ASSERT_NE(server, nullptr) << error.toStdString();
    QString out;
    ASSERT_TRUE(server->Execute(QStringLiteral("SELECT 1"), &out, &error)) << error.toStdString();
    const QString ns = server->FreshNamespace(QStringLiteral("keep"));
    ASSERT_FALSE(ns.isEmpty());

    ASSERT_TRUE(server->Stop()) << server->LastError().toStdString();
    EXPECT_FALSE(server->Execute(QStringLiteral("SELECT 1"), &out, &error));
    EXPECT_FALSE(error.isEmpty());

    ASSERT_TRUE(server->Start()) << server->LastError().toStdString();
    ASSERT_TRUE(server->Execute(QStringLiteral("SELECT 1"), &out, &error)) << error.toStdString();
    EXPECT_EQ(out, QStringLiteral("1"));
    // The data folder is kept.
    EXPECT_TRUE(NamespaceExists(*server, ns));
}

INSTANTIATE_TEST_SUITE_P(Servers, TestServerTest,
    ::testing::Values(TestServer::Kind::Postgres, TestServer::Kind::ClickHouse),
    [](const auto& info) { return info.param == TestServer::Kind::Postgres ? "Postgres" : "ClickHouse"; });

} // namespace
