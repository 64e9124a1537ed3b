// SPDX-License-Identifier: GPL-3.0-or-later
#include "PostgresConnection.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <thread>

namespace {

bool IsKey(const char* keyword, const char* name)
{
    return std::strcmp(keyword, name) == 0;
}

} // namespace

void PgConnection::TakeError(const char* message)
{
    // libpq's messages end in a line break and may span lines ("FATAL: ...\nDETAIL: ...").
    m_sError = QString::fromUtf8(message ? message : "").simplified();
    if (m_sError.isEmpty())
        m_sError = QStringLiteral("unknown error");
}

PgConnection::Outcome PgConnection::Connect(const QString& connection, int timeoutSeconds, bool* passwordRemoved)
{
    Close();
    m_sError.clear();
    m_cSqlState.clear();
    m_timeout = std::chrono::seconds(std::max(timeoutSeconds, 1));
    if (passwordRemoved)
        *passwordRemoved = false;

    char* parseError = nullptr;
    PQconninfoOption* options = PQconninfoParse(connection.toUtf8().constData(), &parseError);
    if (!options) {
        TakeError(parseError ? parseError : "the connection string can't be read");
        PQfreemem(parseError);
        m_sServer = QStringLiteral("?");
        return Outcome::Invalid;
    }
    std::vector<QByteArray> keys, values;
    QString host, port;
    for (const PQconninfoOption* option = options; option->keyword; ++option) {
        if (!option->val)
            continue;
        if (IsKey(option->keyword, "password")) {
            if (passwordRemoved)
                *passwordRemoved = true;
            continue;
        }
        if (IsKey(option->keyword, "connect_timeout") || IsKey(option->keyword, "application_name"))
            continue;
        if (IsKey(option->keyword, "host") || IsKey(option->keyword, "hostaddr"))
            host = QString::fromUtf8(option->val);
        if (IsKey(option->keyword, "port"))
            port = QString::fromUtf8(option->val);
        keys.emplace_back(option->keyword);
        values.emplace_back(option->val);
    }
    PQconninfoFree(options);
    // libpq enforces connect_timeout only for blocking connects; the loop below keeps the
    // deadline itself, the option serves the steps libpq takes on its own.
    keys.emplace_back("connect_timeout");
    values.emplace_back(QByteArray::number(std::max(timeoutSeconds, 2)));
    keys.emplace_back("application_name");
    values.emplace_back("Sorano");
    std::vector<const char*> keyPointers, valuePointers;
    for (size_t i = 0; i < keys.size(); ++i) {
        keyPointers.push_back(keys[i].constData());
        valuePointers.push_back(values[i].constData());
    }
    keyPointers.push_back(nullptr);
    valuePointers.push_back(nullptr);
    m_sServer = (host.isEmpty() ? QStringLiteral("localhost") : host) + ':'
        + (port.isEmpty() ? QStringLiteral("5432") : port);

    const Clock::time_point deadline = Clock::now() + m_timeout;
    m_conn = PQconnectStartParams(keyPointers.data(), valuePointers.data(), 0);
    if (!m_conn) {
        m_sError = QStringLiteral("out of memory");
        return Outcome::Unreachable;
    }
    PostgresPollingStatusType polling
        = PQstatus(m_conn) == CONNECTION_BAD ? PGRES_POLLING_FAILED : PGRES_POLLING_WRITING;
    while (polling != PGRES_POLLING_OK && polling != PGRES_POLLING_FAILED) {
        if (!WaitFor(polling == PGRES_POLLING_WRITING, deadline)) {
            m_sError = QStringLiteral("no answer within %1 s").arg(m_timeout.count() / 1000);
            Close();
            return Outcome::TimedOut;
        }
        polling = PQconnectPoll(m_conn);
    }
    if (const char* connected = PQhost(m_conn); connected && *connected)
        m_sServer = QString::fromUtf8(connected) + ':' + QString::fromUtf8(PQport(m_conn));
    if (polling == PGRES_POLLING_OK && PQstatus(m_conn) == CONNECTION_OK)
        return Outcome::Ok;

    TakeError(PQerrorMessage(m_conn));
    // A server that answered with an error refused the login (unknown user or database, wrong or
    // missing password, no entry for the client); otherwise none could be reached.
    const bool answered = PQconnectionNeedsPassword(m_conn) || m_sError.contains(QLatin1String("FATAL"))
        || m_sError.contains(QLatin1String("authentication"));
    Close();
    return answered ? Outcome::LoginRefused : Outcome::Unreachable;
}

void PgConnection::Close()
{
    if (m_conn)
        PQfinish(m_conn);
    m_conn = nullptr;
}

bool PgConnection::WaitFor(bool write, Clock::time_point deadline)
{
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0)
            return false;
        pollfd descriptor { PQsocket(m_conn), static_cast<short>(write ? POLLOUT : POLLIN), 0 };
        if (descriptor.fd < 0)
            return true; // libpq reports the broken connection itself
        const int ready = poll(&descriptor, 1, static_cast<int>(std::min<long long>(left, 1'000'000)));
        if (ready > 0)
            return true;
        if (ready < 0 && errno != EINTR)
            return true;
    }
}

bool PgConnection::StillUp()
{
    if (!m_conn || PQstatus(m_conn) != CONNECTION_OK)
        return false;
    pollfd descriptor { PQsocket(m_conn), POLLIN, 0 };
    if (descriptor.fd < 0)
        return false;
    // Something came while idle: a notice, or a server that says it ends the connection and then
    // ends it. The end shows only when read after the message, so everything waiting is read.
    for (int reads = 0; reads < 16 && poll(&descriptor, 1, 0) > 0; ++reads) {
        if (!PQconsumeInput(m_conn) || PQstatus(m_conn) != CONNECTION_OK) {
            TakeError(PQerrorMessage(m_conn));
            return false;
        }
    }
    return true;
}

PgConnection::Outcome PgConnection::Broken(const char* fallback)
{
    const char* message = m_conn ? PQerrorMessage(m_conn) : nullptr;
    TakeError(message && *message ? message : fallback);
    Close();
    return Outcome::Lost;
}

PgConnection::Outcome PgConnection::TimeOut()
{
    // The server may still work on the statement: a cancel request stops it. The request waits
    // for the server's answer, however long, so it runs apart from the caller.
    if (PGcancel* cancel = PQgetCancel(m_conn)) {
        std::thread([cancel] {
            char error[256];
            PQcancel(cancel, error, sizeof error);
            PQfreeCancel(cancel);
        }).detach();
    }
    m_sError = QStringLiteral("no answer within %1 s").arg(m_timeout.count() / 1000);
    Close();
    return Outcome::TimedOut;
}

PgConnection::Outcome PgConnection::Collect(Clock::time_point deadline, PgResult& result)
{
    result.reset();
    int flushed = 0;
    while ((flushed = PQflush(m_conn)) == 1) {
        if (!WaitFor(true, deadline))
            return TimeOut();
        if (!PQconsumeInput(m_conn))
            return Broken("the connection broke");
    }
    if (flushed < 0)
        return Broken("the connection broke");

    Outcome outcome = Outcome::Ok;
    for (;;) {
        while (PQisBusy(m_conn)) {
            if (!WaitFor(false, deadline))
                return TimeOut();
            if (!PQconsumeInput(m_conn))
                return Broken("the connection broke");
        }
        PgResult next(PQgetResult(m_conn));
        if (!next)
            break;
        const ExecStatusType status = PQresultStatus(next.get());
        if (status == PGRES_FATAL_ERROR || status == PGRES_BAD_RESPONSE || status == PGRES_NONFATAL_ERROR) {
            if (outcome == Outcome::Ok) {
                TakeError(PQresultErrorMessage(next.get()));
                const char* state = PQresultErrorField(next.get(), PG_DIAG_SQLSTATE);
                m_cSqlState = state ? QByteArray(state) : QByteArray();
            }
            outcome = Outcome::Failed;
        } else {
            result = std::move(next);
        }
    }
    if (PQstatus(m_conn) != CONNECTION_OK)
        return Broken("the connection broke");
    if (outcome != Outcome::Ok)
        result.reset();
    return outcome;
}

PgConnection::Outcome PgConnection::Prepare(const char* name, const QByteArray& sql, int parameters)
{
    if (!m_conn)
        return Broken("not connected");
    const Clock::time_point deadline = Clock::now() + m_timeout;
    if (!PQsendPrepare(m_conn, name, sql.constData(), parameters, nullptr))
        return PQstatus(m_conn) == CONNECTION_OK ? (TakeError(PQerrorMessage(m_conn)), Outcome::Failed)
                                                 : Broken("the connection broke");
    PgResult result;
    return Collect(deadline, result);
}

PgConnection::Outcome PgConnection::Run(
    const char* statement, bool prepared, const std::vector<QByteArray>& parameters, bool binary, PgResult& result)
{
    result.reset();
    if (!m_conn)
        return Broken("not connected");
    m_cSqlState.clear();
    const Clock::time_point deadline = Clock::now() + m_timeout;
    std::vector<const char*> values;
    values.reserve(parameters.size());
    for (const QByteArray& parameter : parameters)
        values.push_back(parameter.constData());
    const int count = static_cast<int>(values.size());
    const int sent = prepared
        ? PQsendQueryPrepared(m_conn, statement, count, values.data(), nullptr, nullptr, binary ? 1 : 0)
        : PQsendQueryParams(m_conn, statement, count, nullptr, values.data(), nullptr, nullptr, binary ? 1 : 0);
    if (!sent)
        return PQstatus(m_conn) == CONNECTION_OK ? (TakeError(PQerrorMessage(m_conn)), Outcome::Failed)
                                                 : Broken("the connection broke");
    return Collect(deadline, result);
}

PgConnection::Outcome PgConnection::Execute(const QByteArray& sql)
{
    if (!m_conn)
        return Broken("not connected");
    m_cSqlState.clear();
    const Clock::time_point deadline = Clock::now() + m_timeout;
    if (!PQsendQuery(m_conn, sql.constData()))
        return PQstatus(m_conn) == CONNECTION_OK ? (TakeError(PQerrorMessage(m_conn)), Outcome::Failed)
                                                 : Broken("the connection broke");
    PgResult result;
    return Collect(deadline, result);
}
