// SPDX-License-Identifier: GPL-3.0-or-later
// Real PostgreSQL and ClickHouse servers for tests and benchmarks, started through scripts/server.sh
// in folders of their own on free loopback ports.
#pragma once

#include <QString>
#include <QtGlobal>

#include <memory>

class QTemporaryDir;

class TestServer
{
public:
    enum class Kind { Postgres, ClickHouse };

    // The server the whole test run shares: if the environment variable SORANO_TEST_POSTGRES_DIR /
    // SORANO_TEST_CLICKHOUSE_DIR names a folder with a running server (started by a CTest fixture),
    // that one; otherwise one started here on first use in a folder of its own and stopped when the
    // process exits. nullptr (and *error set) when no server can be had; a failed start is not retried.
    static TestServer* Shared(Kind kind, QString* error = nullptr);
    // A server of the caller's own, for tests that stop and start it.
    static std::unique_ptr<TestServer> StartPrivate(Kind kind, QString* error = nullptr);

    ~TestServer(); // stops a server this object started
    TestServer(const TestServer&) = delete;
    TestServer& operator=(const TestServer&) = delete;

    bool Stop(); // stop the server (keeps the folder)
    bool Start(); // start it again in the same folder (a new port is fine; Port() tells)
    // Why the last Stop() or Start() failed.
    QString LastError() const { return lastError_; }

    Kind GetKind() const { return kind_; }
    QString Dir() const { return dir_; }
    quint16 Port() const { return port_; } // PostgreSQL port / ClickHouse HTTP port
    quint16 NativePort() const { return tcpPort_; } // ClickHouse native TCP port, 0 for PostgreSQL
    QString ConnInfo() const; // PostgreSQL: "host=127.0.0.1 port=P dbname=sorano user=sorano"
    QString Url() const; // ClickHouse: "http://127.0.0.1:P/"

    // Runs SQL: PostgreSQL through psql (-X -q -A -t -v ON_ERROR_STOP=1, several statements allowed),
    // ClickHouse through clickhouse-client --multiquery on the native port. The output, without its
    // final line break, in *output; false and *error on failure.
    bool Execute(const QString& sql, QString* output = nullptr, QString* error = nullptr) const;

    // A new, empty namespace unique in the whole run (PostgreSQL: a schema; ClickHouse: a database),
    // named from hint (reduced to [a-z0-9_]) plus pid and a counter, created on the server; empty on
    // failure.
    QString FreshNamespace(const QString& hint) const;

    // Path of scripts/server.sh in the source tree.
    static QString ScriptPath();

private:
    TestServer(Kind kind, QString dir, bool owned);
    bool RunScript(const QString& action, QString* error) const;
    bool ReadPorts(QString* error);
    void WatchForCrash() const;
    static std::unique_ptr<TestServer> StartOwn(Kind kind, const QString& folderPrefix, QString* error);

    Kind kind_;
    QString dir_;
    bool owned_; // started here: stopped on destruction
    std::unique_ptr<QTemporaryDir> tempDir_;
    quint16 port_ = 0;
    quint16 tcpPort_ = 0;
    QString lastError_;
};
