// SPDX-License-Identifier: GPL-3.0-or-later
#include "ClickHouseHttp.h"

#include <QUrlQuery>

#include <curl/curl.h>

#include <mutex>

namespace ClickHouse {

namespace {

CURL* Handle(void* curl)
{
    return static_cast<CURL*>(curl);
}

// The server's error codes of an unknown user, a wrong or missing password and a failed login.
bool IsLoginError(const QString& text)
{
    for (const char* code : { "Code: 192,", "Code: 193,", "Code: 194,", "Code: 516," })
        if (text.startsWith(QLatin1String(code)))
            return true;
    return false;
}

void AddArgument(QByteArray& query, const QByteArray& name, const QByteArray& value)
{
    if (!query.isEmpty())
        query += '&';
    query += QUrl::toPercentEncoding(QString::fromUtf8(name)) + '=' + QUrl::toPercentEncoding(QString::fromUtf8(value));
}

} // namespace

Connection::Connection()
{
    static std::once_flag global;
    std::call_once(global, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
    m_curl = curl_easy_init();
}

Connection::~Connection()
{
    curl_mime_free(static_cast<curl_mime*>(m_form));
    if (m_curl)
        curl_easy_cleanup(Handle(m_curl));
}

bool Connection::Available()
{
    const curl_version_info_data* info = curl_version_info(CURLVERSION_NOW);
    if (!info || !info->protocols)
        return false;
    for (const char* const* protocol = info->protocols; *protocol; ++protocol)
        if (std::string_view(*protocol) == "http")
            return true;
    return false;
}

void Connection::Configure(const QUrl& url, const QString& database, const QString& user, int timeoutMs)
{
    m_url = url;
    m_database = database;
    m_user = user;
    m_timeoutMs = timeoutMs;
}

QString Connection::Server() const
{
    return m_url.toDisplayString(QUrl::RemoveUserInfo);
}

size_t Connection::Receive(char* data, size_t size, size_t count, void* self)
{
    auto& body = static_cast<Connection*>(self)->m_body;
    body.insert(body.end(), data, data + size * count);
    return size * count;
}

Outcome Connection::Run(std::string_view query, const std::vector<ExternalTable>& tables, std::string_view body)
{
    if (!Begin(query, tables, body))
        return Outcome::Unreachable;
    return Finish(curl_easy_perform(Handle(m_curl)));
}

std::vector<Outcome> Connection::RunTogether(const std::vector<Request>& requests)
{
    std::vector<Outcome> outcomes(requests.size(), Outcome::Unreachable);
    CURLM* multi = curl_multi_init();
    std::vector<bool> running(requests.size(), false);
    for (size_t i = 0; i < requests.size(); ++i) {
        const Request& request = requests[i];
        if (!request.connection->Begin(request.query, request.tables, {}))
            continue;
        if (!multi || curl_multi_add_handle(multi, Handle(request.connection->m_curl)) != CURLM_OK) {
            // Without the multi interface the request runs on its own.
            outcomes[i] = request.connection->Finish(curl_easy_perform(Handle(request.connection->m_curl)));
            continue;
        }
        running[i] = true;
    }
    // Each handle ends by its own timeout; the loop ends when all have ended.
    int active = 0;
    do {
        if (!multi || curl_multi_perform(multi, &active) != CURLM_OK)
            break;
        if (active > 0 && curl_multi_poll(multi, nullptr, 0, 100, nullptr) != CURLM_OK)
            break;
    } while (active > 0);
    std::vector<CURLcode> results(requests.size(), CURLE_RECV_ERROR);
    int left = 0;
    while (CURLMsg* message = multi ? curl_multi_info_read(multi, &left) : nullptr)
        if (message->msg == CURLMSG_DONE)
            for (size_t i = 0; i < requests.size(); ++i)
                if (running[i] && Handle(requests[i].connection->m_curl) == message->easy_handle)
                    results[i] = message->data.result;
    for (size_t i = 0; i < requests.size(); ++i) {
        if (!running[i])
            continue;
        curl_multi_remove_handle(multi, Handle(requests[i].connection->m_curl));
        outcomes[i] = requests[i].connection->Finish(results[i]);
    }
    if (multi)
        curl_multi_cleanup(multi);
    return outcomes;
}

bool Connection::Begin(std::string_view query, const std::vector<ExternalTable>& tables, std::string_view body)
{
    m_body.clear();
    m_error.clear();
    CURL* curl = Handle(m_curl);
    if (!curl) {
        m_error = QStringLiteral("the HTTP library could not be initialised");
        return false;
    }

    // The arguments of the URL as entered stay; ours follow.
    QUrl target = m_url;
    QByteArray arguments = target.query(QUrl::FullyEncoded).toUtf8();
    target.setQuery(QString());
    target.setUserName(QString());
    target.setPassword(QString());
    if (!m_database.isEmpty())
        AddArgument(arguments, "database", m_database.toUtf8());
    // The answer is complete before the first byte goes out, so that a failure half-way through
    // a query comes as an error status and not as text appended to the rows.
    AddArgument(arguments, "wait_end_of_query", "1");
    AddArgument(arguments, "buffer_size", "67108864");
    AddArgument(arguments, "query", QByteArray(query.data(), static_cast<qsizetype>(query.size())));
    for (const ExternalTable& table : tables) {
        AddArgument(arguments, table.name + "_structure", table.structure);
        AddArgument(arguments, table.name + "_format", "RowBinary");
    }
    const QByteArray address = target.toEncoded() + '?' + arguments;

    curl_easy_reset(curl);
    curl_easy_setopt(curl, CURLOPT_URL, address.constData());
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_TIMEOUT_MS, static_cast<long>(m_timeoutMs));
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(m_timeoutMs));
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, &Connection::Receive);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "http,https");
    // The user goes as the login; a password only from the user's .netrc.
    const QByteArray user = (m_user.isEmpty() ? QStringLiteral("default") : m_user).toUtf8();
    curl_easy_setopt(curl, CURLOPT_USERNAME, user.constData());
    curl_easy_setopt(curl, CURLOPT_NETRC, static_cast<long>(CURL_NETRC_OPTIONAL));
    curl_easy_setopt(curl, CURLOPT_HTTPAUTH, static_cast<long>(CURLAUTH_BASIC));

    if (!tables.empty()) {
        // The form copies the tables' rows.
        m_form = curl_mime_init(curl);
        for (const ExternalTable& table : tables) {
            curl_mimepart* part = curl_mime_addpart(static_cast<curl_mime*>(m_form));
            curl_mime_name(part, table.name.constData());
            curl_mime_filename(part, table.name.constData());
            curl_mime_data(part, table.rows.data(), table.rows.size());
        }
        curl_easy_setopt(curl, CURLOPT_MIMEPOST, static_cast<curl_mime*>(m_form));
    } else {
        // The body is not copied: it must outlive the request, as Run's argument does.
        curl_easy_setopt(curl, CURLOPT_POST, 1L);
        curl_easy_setopt(curl, CURLOPT_POSTFIELDS, body.data());
        curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
    }
    return true;
}

Outcome Connection::Finish(int code)
{
    CURL* curl = Handle(m_curl);
    const auto rc = static_cast<CURLcode>(code);
    long status = 0;
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &status);
    curl_easy_setopt(curl, CURLOPT_MIMEPOST, nullptr);
    curl_mime_free(static_cast<curl_mime*>(m_form));
    m_form = nullptr;

    if (rc != CURLE_OK) {
        m_error = QString::fromUtf8(curl_easy_strerror(rc));
        if (rc == CURLE_OPERATION_TIMEDOUT)
            return Outcome::TimedOut;
        if (rc == CURLE_PARTIAL_FILE || rc == CURLE_RECV_ERROR || rc == CURLE_GOT_NOTHING)
            m_error = QStringLiteral("the connection dropped before the answer was complete (%1)").arg(m_error);
        return Outcome::Unreachable;
    }
    if (status != 200) {
        const std::string_view text(m_body.data(), m_body.size());
        m_error = QString::fromUtf8(text.substr(0, text.find('\n'))).trimmed();
        if (m_error.isEmpty())
            m_error = QStringLiteral("HTTP status %1").arg(status);
        if (status == 401 || status == 403 || IsLoginError(m_error))
            return Outcome::LoginRefused;
        return Outcome::ServerError;
    }
    return Outcome::Ok;
}

} // namespace ClickHouse
