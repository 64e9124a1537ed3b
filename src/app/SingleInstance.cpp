// SPDX-License-Identifier: GPL-3.0-or-later
// The local socket between the user's window and later starts. A start sends one message,
// "magic, version, count, paths" in a data stream, and the window confirms with its own magic
// before it opens anything, so that the sender can end at once.
#include "SingleInstance.h"

#include <QDataStream>
#include <QEventLoop>
#include <QLocalServer>
#include <QLocalSocket>
#include <QRegularExpression>
#include <QTimer>

#ifdef Q_OS_UNIX
#include <sys/socket.h>
#include <unistd.h>
#endif

namespace {

constexpr quint32 Magic = 0x536F724E; // "SorN"
constexpr quint32 Confirmed = 0x536F724B; // "SorK"
constexpr quint16 Version = 1;
constexpr QDataStream::Version StreamVersion = QDataStream::Qt_6_0;
// Bounds of one message: more is no start's command line.
constexpr quint32 MostFiles = 10'000;
constexpr qint64 MostBytes = 16 * 1024 * 1024;
// A connection that has not sent its message by then is dropped.
constexpr int ReadMs = 10'000;

// The process at the other end of the socket runs as this user. A socket left in the shared
// temporary folder by someone else gets neither our paths nor a say over our window.
bool SameUser([[maybe_unused]] qintptr descriptor)
{
#if defined(Q_OS_LINUX)
    ucred peer {};
    socklen_t size = sizeof peer;
    if (::getsockopt(int(descriptor), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0)
        return false;
    return peer.uid == ::geteuid();
#else
    return true;
#endif
}

} // namespace

QString SingleInstance::DefaultName()
{
#ifdef Q_OS_UNIX
    QString name = QStringLiteral("sorano-") + QString::number(::getuid());
#else
    QString name = QStringLiteral("sorano-") + qEnvironmentVariable("USERNAME");
#endif
    QString group = qEnvironmentVariable("SORANO_INSTANCE");
    if (!group.isEmpty()) {
        // One file name, whatever the variable holds.
        static const QRegularExpression other(QStringLiteral("[^A-Za-z0-9_.-]"));
        name += QLatin1Char('-') + group.replace(other, QStringLiteral("_"));
    }
    return name;
}

SingleInstance::SingleInstance(const QString& name, QObject* parent)
    : QObject(parent)
    , m_name(name)
{ }

SingleInstance::~SingleInstance()
{
    if (m_server)
        m_server->close();
}

bool SingleInstance::Listening() const
{
    return m_server && m_server->isListening();
}

bool SingleInstance::Listen()
{
    if (Listening())
        return true;
    auto* server = new QLocalServer(this);
    // Fails while the socket file exists, whether its process lives or not.
    if (!server->listen(m_name)) {
        delete server;
        return false;
    }
    m_server = server;
    connect(m_server, &QLocalServer::newConnection, this, &SingleInstance::Accept);
    return true;
}

SingleInstance::Role SingleInstance::Start(const QStringList& files, bool separate, int connectMs, int answerMs)
{
    if (Listen())
        return Role::First;
    if (separate)
        return Role::Alone;
    switch (Send(m_name, files, connectMs, answerMs)) {
    case Handover::Delivered:
        return Role::HandedOver;
    case Handover::NoAnswer:
        return Role::Alone;
    case Handover::NoServer:
        break;
    }
    // The file of a process that ended without closing its socket.
    QLocalServer::removeServer(m_name);
    return Listen() ? Role::First : Role::Alone;
}

void SingleInstance::Accept()
{
    while (QLocalSocket* socket = m_server->nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        if (!SameUser(socket->socketDescriptor())) {
            socket->abort();
            socket->deleteLater();
            continue;
        }
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] { Read(socket); });
        QTimer::singleShot(ReadMs, socket, [socket] {
            socket->abort();
            socket->deleteLater();
        });
        Read(socket);
    }
}

void SingleInstance::Read(QLocalSocket* socket)
{
    if (socket->state() != QLocalSocket::ConnectedState)
        return;
    const auto drop = [socket] {
        socket->abort();
        socket->deleteLater();
    };
    if (socket->bytesAvailable() > MostBytes)
        return drop();
    QDataStream in(socket);
    in.setVersion(StreamVersion);
    in.startTransaction();
    quint32 magic = 0;
    quint16 version = 0;
    quint32 count = 0;
    in >> magic >> version >> count;
    // Another program, another version of this one, or a count no command line has.
    if (in.status() == QDataStream::Ok && (magic != Magic || version != Version || count > MostFiles)) {
        in.abortTransaction();
        return drop();
    }
    QStringList files;
    for (quint32 i = 0; i < count && in.status() == QDataStream::Ok; ++i) {
        QString file;
        in >> file;
        files << file;
    }
    if (!in.commitTransaction())
        return; // the rest is still on its way
    disconnect(socket, &QLocalSocket::readyRead, this, nullptr);
    QDataStream out(socket);
    out.setVersion(StreamVersion);
    out << Confirmed;
    socket->flush();
    socket->disconnectFromServer();
    // The sender has its answer before the files open, however long that takes.
    QMetaObject::invokeMethod(
        this, [this, files] { emit FilesReceived(files); }, Qt::QueuedConnection);
}

SingleInstance::Handover SingleInstance::Send(
    const QString& name, const QStringList& files, int connectMs, int answerMs)
{
    QLocalSocket socket;
    QEventLoop loop;
    QTimer deadline;
    deadline.setSingleShot(true);
    deadline.setTimerType(Qt::PreciseTimer);
    QObject::connect(&deadline, &QTimer::timeout, &loop, &QEventLoop::quit);
    QObject::connect(&socket, &QLocalSocket::stateChanged, &loop, &QEventLoop::quit);
    QObject::connect(&socket, &QLocalSocket::readyRead, &loop, &QEventLoop::quit);
    QObject::connect(&socket, &QLocalSocket::errorOccurred, &loop, &QEventLoop::quit);

    // A refused connection or a missing file fails at once, without the event loop.
    socket.connectToServer(name);
    deadline.start(connectMs);
    while (socket.state() == QLocalSocket::ConnectingState && deadline.isActive())
        loop.exec();
    if (socket.state() != QLocalSocket::ConnectedState) {
        const QLocalSocket::LocalSocketError error = socket.error();
        socket.abort();
        return error == QLocalSocket::ConnectionRefusedError || error == QLocalSocket::ServerNotFoundError
            ? Handover::NoServer
            : Handover::NoAnswer;
    }
    if (!SameUser(socket.socketDescriptor()))
        return Handover::NoAnswer;

    QByteArray message;
    QDataStream out(&message, QIODevice::WriteOnly);
    out.setVersion(StreamVersion);
    out << Magic << Version << quint32(files.size());
    for (const QString& file : files)
        out << file;
    socket.write(message);
    socket.flush();

    deadline.start(answerMs);
    QByteArray answer;
    while (deadline.isActive()) {
        answer += socket.readAll();
        if (answer.size() >= qsizetype(sizeof(Confirmed)) || socket.state() == QLocalSocket::UnconnectedState)
            break;
        loop.exec();
    }
    answer += socket.readAll();
    socket.abort();
    QDataStream in(answer);
    in.setVersion(StreamVersion);
    quint32 confirmed = 0;
    in >> confirmed;
    return in.status() == QDataStream::Ok && confirmed == Confirmed ? Handover::Delivered : Handover::NoAnswer;
}
