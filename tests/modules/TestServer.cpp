// SPDX-License-Identifier: GPL-3.0-or-later
// Starts, stops and queries the throwaway test servers through scripts/server.sh, psql and
// clickhouse-client.
#include "TestServer.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <atomic>
#include <mutex>

#include <unistd.h>

namespace {

constexpr int kScriptTimeoutMs = 150 * 1000; // the script itself gives up after about 60 s
constexpr int kClientTimeoutMs = 300 * 1000;

QString KindName(TestServer::Kind kind)
{
    return kind == TestServer::Kind::Postgres ? QStringLiteral("postgres") : QStringLiteral("clickhouse");
}

// Runs a program to its end; stdin from input. False with a message when it cannot start, times
// out or exits with an error.
bool RunProgram(const QString& program, const QStringList& args, const QByteArray& input, int timeoutMs,
    QByteArray* output, QString* error)
{
    QProcess p;
    p.start(program, args);
    if (!p.waitForStarted(30 * 1000)) {
        *error = QStringLiteral("%1: %2").arg(program, p.errorString());
        return false;
    }
    if (!input.isEmpty())
        p.write(input);
    p.closeWriteChannel();
    if (!p.waitForFinished(timeoutMs)) {
        p.kill();
        p.waitForFinished(5000);
        *error = QStringLiteral("%1 did not finish within %2 s").arg(program).arg(timeoutMs / 1000);
        return false;
    }
    const QByteArray out = p.readAllStandardOutput();
    const QByteArray err = p.readAllStandardError();
    if (output)
        *output = out;
    if (p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0) {
        *error = QStringLiteral("%1 failed (exit %2): %3")
                     .arg(program)
                     .arg(p.exitCode())
                     .arg(QString::fromUtf8(err.isEmpty() ? out : err).trimmed());
        return false;
    }
    return true;
}

struct SharedSlot
{
    std::unique_ptr<TestServer> server;
    QString error; // set once a start failed: not tried again
};

std::mutex sharedMutex;
SharedSlot sharedSlots[2];

// Stops the shared servers started here. Runs while the application object still exists when there
// is one, else at static destruction.
void StopSharedServers()
{
    std::lock_guard lock(sharedMutex);
    for (auto& slot : sharedSlots)
        slot.server.reset();
}

struct SharedCleanup
{
    ~SharedCleanup() { StopSharedServers(); }
} sharedCleanup;

} // namespace

QString TestServer::ScriptPath()
{
    return QStringLiteral(SORANO_SOURCE_DIR "/scripts/server.sh");
}

TestServer::TestServer(Kind kind, QString dir, bool owned)
    : kind_(kind)
    , dir_(std::move(dir))
    , owned_(owned)
{ }

TestServer::~TestServer()
{
    if (owned_)
        Stop();
}

bool TestServer::RunScript(const QString& action, QString* error) const
{
    QByteArray out;
    return RunProgram(
        QStringLiteral("bash"), { ScriptPath(), action, KindName(kind_), dir_ }, {}, kScriptTimeoutMs, &out, error);
}

bool TestServer::ReadPorts(QString* error)
{
    QFile f(dir_ + QStringLiteral("/port"));
    if (!f.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("no port file in %1").arg(dir_);
        return false;
    }
    const QStringList lines = QString::fromUtf8(f.readAll()).split(u'\n', Qt::SkipEmptyParts);
    bool ok1 = !lines.isEmpty();
    bool ok2 = true;
    port_ = ok1 ? lines[0].trimmed().toUShort(&ok1) : 0;
    tcpPort_ = 0;
    if (kind_ == Kind::ClickHouse)
        tcpPort_ = lines.size() > 1 ? lines[1].trimmed().toUShort(&ok2) : 0;
    if (!ok1 || !ok2 || port_ == 0 || (kind_ == Kind::ClickHouse && tcpPort_ == 0)) {
        *error = QStringLiteral("bad port file in %1").arg(dir_);
        return false;
    }
    return true;
}

bool TestServer::Start()
{
    lastError_.clear();
    if (!RunScript(QStringLiteral("start"), &lastError_))
        return false;
    return ReadPorts(&lastError_);
}

bool TestServer::Stop()
{
    lastError_.clear();
    return RunScript(QStringLiteral("stop"), &lastError_);
}

// A process that outlives a crashed or killed test program stops the server and removes its folder,
// so that no server stays behind. After a normal end the folder is gone and it has nothing to do.
void TestServer::WatchForCrash() const
{
    QProcess p;
    p.setProgram(QStringLiteral("bash"));
    p.setArguments({ QStringLiteral("-c"),
        QStringLiteral("while kill -0 \"$0\" 2>/dev/null; do sleep 1; done; "
                       "[ -d \"$3\" ] || exit 0; bash \"$1\" stop \"$2\" \"$3\"; rm -rf \"$3\""),
        QString::number(::getpid()), ScriptPath(), KindName(kind_), dir_ });
    p.setStandardInputFile(QProcess::nullDevice());
    p.setStandardOutputFile(QProcess::nullDevice());
    p.setStandardErrorFile(QProcess::nullDevice());
    p.startDetached();
}

std::unique_ptr<TestServer> TestServer::StartOwn(Kind kind, const QString& folderPrefix, QString* error)
{
    auto tempDir = std::make_unique<QTemporaryDir>(
        QDir::tempPath() + QStringLiteral("/sorano-%1-%2-XXXXXX").arg(folderPrefix, KindName(kind)));
    QString message;
    if (!tempDir->isValid()) {
        message = QStringLiteral("cannot create a temporary folder: %1").arg(tempDir->errorString());
    } else {
        std::unique_ptr<TestServer> server(new TestServer(kind, tempDir->path(), true));
        server->tempDir_ = std::move(tempDir);
        server->WatchForCrash();
        if (server->Start())
            return server;
        message = server->LastError();
        server->Stop(); // a half-started server must not stay behind
    }
    if (error)
        *error = message;
    return nullptr;
}

TestServer* TestServer::Shared(Kind kind, QString* error)
{
    std::lock_guard lock(sharedMutex);
    SharedSlot& slot = sharedSlots[kind == Kind::Postgres ? 0 : 1];
    if (slot.server)
        return slot.server.get();
    if (slot.error.isEmpty()) {
        const QString dir
            = qEnvironmentVariable(kind == Kind::Postgres ? "SORANO_TEST_POSTGRES_DIR" : "SORANO_TEST_CLICKHOUSE_DIR");
        if (!dir.isEmpty()) {
            std::unique_ptr<TestServer> server(new TestServer(kind, QDir(dir).absolutePath(), false));
            QString ignored;
            if (server->RunScript(QStringLiteral("status"), &ignored) && server->ReadPorts(&ignored))
                slot.server = std::move(server);
        }
        if (!slot.server) {
            static std::once_flag postRoutine;
            if (QCoreApplication::instance())
                std::call_once(postRoutine, [] { qAddPostRoutine(StopSharedServers); });
            slot.server = StartOwn(kind, QStringLiteral("shared"), &slot.error);
            if (!slot.server && slot.error.isEmpty())
                slot.error = QStringLiteral("the %1 server did not start").arg(KindName(kind));
        }
    }
    if (!slot.server && error)
        *error = slot.error;
    return slot.server.get();
}

std::unique_ptr<TestServer> TestServer::StartPrivate(Kind kind, QString* error)
{
    return StartOwn(kind, QStringLiteral("private"), error);
}

QString TestServer::ConnInfo() const
{
    return QStringLiteral("host=127.0.0.1 port=%1 dbname=sorano user=sorano").arg(port_);
}

QString TestServer::Url() const
{
    return QStringLiteral("http://127.0.0.1:%1/").arg(port_);
}

bool TestServer::Execute(const QString& sql, QString* output, QString* error) const
{
    QString program;
    QStringList args;
    if (kind_ == Kind::Postgres) {
        program = QStringLiteral("psql");
        args = { QStringLiteral("-X"), QStringLiteral("-q"), QStringLiteral("-A"), QStringLiteral("-t"),
            QStringLiteral("-v"), QStringLiteral("ON_ERROR_STOP=1"), QStringLiteral("-h"), QStringLiteral("127.0.0.1"),
            QStringLiteral("-p"), QString::number(port_), QStringLiteral("-U"), QStringLiteral("sorano"),
            QStringLiteral("-d"), QStringLiteral("sorano") };
    } else {
        program = QStringLiteral("clickhouse-client");
        args = { QStringLiteral("--host"), QStringLiteral("127.0.0.1"), QStringLiteral("--port"),
            QString::number(tcpPort_), QStringLiteral("--multiquery") };
    }
    QByteArray out;
    QString message;
    if (!RunProgram(program, args, sql.toUtf8(), kClientTimeoutMs, &out, &message)) {
        if (error)
            *error = message;
        return false;
    }
    if (output) {
        *output = QString::fromUtf8(out);
        while (output->endsWith(u'\n'))
            output->chop(1);
    }
    return true;
}

QString TestServer::FreshNamespace(const QString& hint) const
{
    static std::atomic<int> counter { 0 };
    QString base = hint.toLower();
    base.replace(QRegularExpression(QStringLiteral("[^a-z0-9_]")), QStringLiteral("_"));
    base.truncate(32);
    if (base.isEmpty() || !base.at(0).isLetter())
        base.prepend(QStringLiteral("ns_"));
    // A pid can come again in a later program on the same server: then the next number is tried.
    for (int attempt = 0; attempt < 5; ++attempt) {
        const QString name = QStringLiteral("%1_%2_%3").arg(base).arg(::getpid()).arg(++counter);
        const QString sql = kind_ == Kind::Postgres ? QStringLiteral("CREATE SCHEMA %1").arg(name)
                                                    : QStringLiteral("CREATE DATABASE %1").arg(name);
        QString error;
        if (Execute(sql, nullptr, &error))
            return name;
        if (!error.contains(QStringLiteral("exists"), Qt::CaseInsensitive))
            return {};
    }
    return {};
}
