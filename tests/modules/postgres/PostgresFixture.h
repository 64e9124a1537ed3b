// SPDX-License-Identifier: GPL-3.0-or-later
// Fixtures of the PostgreSQL module tests: logger databases loaded into fresh schemas of the test
// server, and modules reading them through their settings.
#pragma once

#include "../sqlite/LoggerDatabase.h"
#include "PostgresDataModule.h"
#include "PostgresLoad.h"
#include "TempSettings.h"
#include "TestServer.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

const QString PostgresKey = QStringLiteral("Software\\HARVOLD\\ModuleSettings\\Werk");

class PostgresTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        QString error;
        server = TestServer::Shared(TestServer::Kind::Postgres, &error);
        ASSERT_NE(server, nullptr) << error.toStdString();
    }

    // Loads the logger database the sql writes (the site without) into a fresh schema of the
    // server; returns the schema.
    QString Load(const QString& hint, const QString& sql = SiteFixture::Sql(), const TestServer* target = nullptr)
    {
        target = target ? target : server;
        const QString schema = target->FreshNamespace(hint);
        EXPECT_FALSE(schema.isEmpty());
        const QString file = dir.filePath(schema + ".sqlite");
        WriteDatabase(file, sql);
        QString error;
        EXPECT_TRUE(PostgresLoad::CopyFromSqlite(file, target->ConnInfo(), schema, error)) << error.toStdString();
        return schema;
    }

    // A module of the registration "Werk" (address 4) whose settings name the connection.
    std::unique_ptr<PostgresDataModule> MakeModule(
        const QString& connection, const QString& schema, const QString& timeout = "3")
    {
        settings.SetUser(PostgresKey, "Connection", connection);
        settings.SetUser(PostgresKey, "Schema", schema);
        settings.SetUser(PostgresKey, "Timeout", timeout);
        auto module = std::make_unique<PostgresDataModule>(DataModuleRegistration { "Werk", "4" });
        module->SetMessageHandler(&handler);
        return module;
    }

    TestServer* server = nullptr;
    TempSettings settings;
    QTemporaryDir dir;
    RecordingHandler handler;
};
