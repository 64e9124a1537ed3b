// SPDX-License-Identifier: GPL-3.0-or-later
// A synchronous client of the ClickHouse HTTP interface over one reused libcurl handle: queries with
// values sent as external data tables, and RowBinary encoding and decoding.
#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace ClickHouse {

// A table sent along with a query (the server's "external data"): the query reads it as name,
// with columns as structure declares them ("ch Int64, lo Float64"), rows in RowBinary.
struct ExternalTable
{
    QByteArray name;
    QByteArray structure;
    std::string rows;
};

// How a request ended.
enum class Outcome {
    Ok, ///< status 200 and the whole body
    Unreachable, ///< no connection, or the connection dropped before the body was complete
    TimedOut, ///< no complete answer within the timeout
    LoginRefused, ///< the server does not know the user or refused the password
    ServerError ///< any other answer than 200: the server's error text is the reason
};

class Connection
{
public:
    Connection();
    ~Connection();
    Connection(const Connection&) = delete;
    // Whether the HTTP library works and speaks HTTP.
    static bool Available();
    Connection& operator=(const Connection&) = delete;

    // Where and as whom the next requests go. The password, if the server wants one, comes from the
    // user's ~/.netrc entry for the server's host. Changing any of them keeps the handle.
    void Configure(const QUrl& url, const QString& database, const QString& user, int timeoutMs);
    QString Database() const { return m_database; }
    // The server as the log names it: the URL without user and password.
    QString Server() const;

    // Runs the query; with external tables as a multipart form, else with body as the request's
    // data (an INSERT's rows). The answer lands in Body(), replacing the last one.
    Outcome Run(std::string_view query, const std::vector<ExternalTable>& tables = {}, std::string_view body = {});
    // Queries of several connections at the same time, each with its own timeout: a server
    // works on each with threads of its own. The answers land in each connection's Body().
    struct Request
    {
        Connection* connection = nullptr;
        std::string_view query;
        std::vector<ExternalTable> tables;
    };
    static std::vector<Outcome> RunTogether(const std::vector<Request>& requests);
    // The answer of the last request, reused between requests.
    const std::vector<char>& Body() const { return m_body; }
    // One line saying why the last request failed: the server's first error line or libcurl's text.
    QString Error() const { return m_error; }

private:
    static size_t Receive(char* data, size_t size, size_t count, void* self);
    // Sets the handle up for the query; false when there is no handle.
    bool Begin(std::string_view query, const std::vector<ExternalTable>& tables, std::string_view body);
    // How the request that the handle performed ended (code: libcurl's result).
    Outcome Finish(int code);

    void* m_curl = nullptr;
    void* m_form = nullptr; // the multipart form of the running request
    QUrl m_url;
    QString m_database;
    QString m_user;
    int m_timeoutMs = 10000;
    std::vector<char> m_body;
    QString m_error;
};

// Appends values in RowBinary: little-endian numbers, a flag byte before a Nullable value, a
// length in LEB128 before the bytes of a String.
inline void Put(std::string& out, std::int64_t value)
{
    char bytes[8];
    std::memcpy(bytes, &value, 8);
    out.append(bytes, 8);
}
inline void Put(std::string& out, double value)
{
    char bytes[8];
    std::memcpy(bytes, &value, 8);
    out.append(bytes, 8);
}
inline void Put(std::string& out, std::int32_t value)
{
    char bytes[4];
    std::memcpy(bytes, &value, 4);
    out.append(bytes, 4);
}
inline void PutNullable(std::string& out, bool present, double value)
{
    out.push_back(present ? '\0' : '\1');
    if (present)
        Put(out, value);
}
inline void Put(std::string& out, std::string_view text)
{
    std::uint64_t length = text.size();
    do {
        const auto byte = static_cast<unsigned char>(length & 0x7f);
        length >>= 7;
        out.push_back(static_cast<char>(length ? byte | 0x80 : byte));
    } while (length);
    out.append(text);
}

// Reads RowBinary values from an answer. Every read checks the length; a reader that ran out of
// bytes stays failed, so an answer cut inside a row is never taken as data.
class Reader
{
public:
    Reader(const char* data, size_t size)
        : m_pos(data)
        , m_end(data + size)
    { }
    explicit Reader(const std::vector<char>& body)
        : Reader(body.data(), body.size())
    { }

    bool AtEnd() const { return m_pos == m_end; }
    bool Failed() const { return m_failed; }

    template<typename T> T Fixed()
    {
        T value {};
        if (!Take(sizeof(T)))
            return value;
        std::memcpy(&value, m_pos - sizeof(T), sizeof(T));
        return value;
    }
    std::int64_t Int64() { return Fixed<std::int64_t>(); }
    double Float64() { return Fixed<double>(); }
    // False for NULL; value is then left alone.
    bool NullableFloat64(double& value)
    {
        const auto null = Fixed<std::uint8_t>();
        if (null != 0)
            return false;
        value = Float64();
        return true;
    }
    QString String()
    {
        std::uint64_t length = 0;
        for (int shift = 0; shift < 64; shift += 7) {
            const auto byte = Fixed<std::uint8_t>();
            length |= static_cast<std::uint64_t>(byte & 0x7f) << shift;
            if (!(byte & 0x80))
                break;
        }
        if (m_failed || length > static_cast<std::uint64_t>(m_end - m_pos)) {
            m_failed = true;
            return QString();
        }
        m_pos += length;
        return QString::fromUtf8(m_pos - length, static_cast<qsizetype>(length));
    }

private:
    bool Take(size_t bytes)
    {
        if (m_failed || static_cast<size_t>(m_end - m_pos) < bytes) {
            m_failed = true;
            return false;
        }
        m_pos += bytes;
        return true;
    }

    const char* m_pos;
    const char* m_end;
    bool m_failed = false;
};

} // namespace ClickHouse
