// SPDX-License-Identifier: GPL-3.0-or-later
// One connection to a PostgreSQL server through libpq's asynchronous calls: every connect and
// every query ends within the connection's timeout, and says how it failed.
#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>
#include <cstring>
#include <memory>
#include <vector>

#include <libpq-fe.h>

struct PgResultDeleter
{
    void operator()(PGresult* result) const { PQclear(result); }
};
using PgResult = std::unique_ptr<PGresult, PgResultDeleter>;

class PgConnection
{
public:
    enum class Outcome {
        Ok,
        Invalid, ///< the connection string can't be parsed
        Unreachable, ///< no server answered
        LoginRefused, ///< the server answered and refused the login
        TimedOut, ///< no answer within the timeout
        Lost, ///< the connection broke
        Failed ///< the server refused a statement
    };

    PgConnection() = default;
    ~PgConnection() { Close(); }
    PgConnection(const PgConnection&) = delete;
    PgConnection& operator=(const PgConnection&) = delete;

    // Connects with the options of the connection string ("key=value ..." or a URI), a password
    // in it left out: passwords come from the password file or the service file only.
    // passwordRemoved tells whether the string held one.
    Outcome Connect(const QString& connection, int timeoutSeconds, bool* passwordRemoved = nullptr);
    void Close();
    bool IsOpen() const { return m_conn != nullptr; }
    // Whether an idle connection is still up; reads what the server sent meanwhile (a server
    // that went down has closed the socket).
    bool StillUp();

    // "host:port" of the server as far as known, the host of the string or the service file.
    QString Server() const { return m_sServer; }
    // The last failure as one line, without libpq's line breaks.
    QString Error() const { return m_sError; }
    // SQLSTATE of the last failed statement.
    QByteArray SqlState() const { return m_cSqlState; }
    PGconn* Handle() const { return m_conn; }

    // Prepares a statement under a name.
    Outcome Prepare(const char* name, const QByteArray& sql, int parameters);
    // Runs a prepared statement (prepared) or a text with parameters, each parameter as text;
    // binary asks for binary results. The last result in result.
    Outcome Run(
        const char* statement, bool prepared, const std::vector<QByteArray>& parameters, bool binary, PgResult& result);
    // Runs statements without parameters and results of interest.
    Outcome Execute(const QByteArray& sql);

private:
    using Clock = std::chrono::steady_clock;
    // Waits until the socket can be read (or written); false at the deadline or on an error.
    bool WaitFor(bool write, Clock::time_point deadline);
    Outcome Collect(Clock::time_point deadline, PgResult& result);
    Outcome TimeOut();
    Outcome Broken(const char* fallback);
    void TakeError(const char* message);

    PGconn* m_conn = nullptr;
    std::chrono::milliseconds m_timeout { 10000 };
    QString m_sServer;
    QString m_sError;
    QByteArray m_cSqlState;
};

// Big-endian binary fields of a result.
inline double PgDouble(const char* field)
{
    quint64 bits = 0;
    for (int i = 0; i < 8; ++i)
        bits = (bits << 8) | static_cast<unsigned char>(field[i]);
    double value;
    static_assert(sizeof value == sizeof bits);
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

inline qint64 PgInt64(const char* field)
{
    quint64 bits = 0;
    for (int i = 0; i < 8; ++i)
        bits = (bits << 8) | static_cast<unsigned char>(field[i]);
    return static_cast<qint64>(bits);
}
