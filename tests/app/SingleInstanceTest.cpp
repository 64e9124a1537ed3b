// SPDX-License-Identifier: GPL-3.0-or-later
// The hand-over between a running window and a later start, both in this process: the
// listening side and the sending side share the event loop, as they would share none.
#include "SingleInstance.h"

#include <QCoreApplication>
#include <QDataStream>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLocalServer>
#include <QLocalSocket>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

// A name of this test alone, so that test processes running side by side stay apart.
QString FreshName()
{
    static int count = 0;
    return QStringLiteral("sorano-test-%1-%2").arg(QCoreApplication::applicationPid()).arg(++count);
}

QString SocketPath(const QString& name)
{
    return QDir::cleanPath(QDir::tempPath()) + '/' + name;
}

// A socket file as a process that crashed leaves it: bound, then closed without removing it.
bool LeaveStaleSocket(const QString& name)
{
    const QByteArray path = QFile::encodeName(SocketPath(name));
    sockaddr_un address {};
    address.sun_family = AF_UNIX;
    if (size_t(path.size()) >= sizeof address.sun_path)
        return false;
    std::copy(path.begin(), path.end(), address.sun_path);
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    const bool bound = fd >= 0 && ::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    if (fd >= 0)
        ::close(fd);
    return bound && QFile::exists(SocketPath(name));
}

// The spy has seen the count of signals, within two seconds of event-loop turns.
bool Arrived(QSignalSpy& spy, int count)
{
    QElapsedTimer clock;
    clock.start();
    while (spy.size() < count && clock.elapsed() < 2000)
        QTest::qWait(10);
    return spy.size() >= count;
}

class SingleInstanceTest : public ::testing::Test
{
protected:
    void TearDown() override { QLocalServer::removeServer(name); }
    const QString name = FreshName();
};

TEST_F(SingleInstanceTest, LaterStartsHandTheirFilesInOrderAndAnEmptyListOnlyAsksForTheWindow)
{
    SingleInstance first(name);
    ASSERT_EQ(first.Start({}), SingleInstance::Role::First);
    EXPECT_TRUE(first.Listening());
    QSignalSpy received(&first, &SingleInstance::FilesReceived);

    const QStringList files { "/daten/Hauptzähler.sor", "/daten/mit Leerzeichen/B.sor", "/daten/a.sor" };
    SingleInstance second(name);
    EXPECT_EQ(second.Start(files), SingleInstance::Role::HandedOver);
    EXPECT_FALSE(second.Listening());
    // The files arrive after the confirmation, from the event loop.
    ASSERT_TRUE(Arrived(received, 1));
    ASSERT_EQ(received.size(), 1);
    EXPECT_EQ(received[0][0].toStringList(), files);

    EXPECT_EQ(SingleInstance::Send(name, {}), SingleInstance::Handover::Delivered);
    ASSERT_TRUE(Arrived(received, 2));
    ASSERT_EQ(received.size(), 2);
    EXPECT_EQ(received[1][0].toStringList(), QStringList());

    // A start of its own neither hands over nor takes the name.
    SingleInstance separate(name);
    EXPECT_EQ(separate.Start(files, true), SingleInstance::Role::Alone);
    EXPECT_FALSE(separate.Listening());
    QTest::qWait(50);
    EXPECT_EQ(received.size(), 2);
    EXPECT_EQ(SingleInstance::Send(name, { "/c.sor" }), SingleInstance::Handover::Delivered);
    ASSERT_TRUE(Arrived(received, 3));
    EXPECT_EQ(received[2][0].toStringList(), QStringList({ "/c.sor" }));
}

TEST_F(SingleInstanceTest, ASocketLeftByACrashIsTakenOverAndWhenTheWindowEndsTheNextStartListens)
{
    ASSERT_TRUE(LeaveStaleSocket(name));
    EXPECT_EQ(SingleInstance::Send(name, { "/a.sor" }), SingleInstance::Handover::NoServer);

    QElapsedTimer clock;
    clock.start();
    auto first = std::make_unique<SingleInstance>(name);
    ASSERT_EQ(first->Start({ "/a.sor" }), SingleInstance::Role::First);
    EXPECT_LT(clock.elapsed(), 500);
    QSignalSpy received(first.get(), &SingleInstance::FilesReceived);
    EXPECT_EQ(SingleInstance::Send(name, { "/b.sor" }), SingleInstance::Handover::Delivered);
    ASSERT_TRUE(Arrived(received, 1));
    EXPECT_EQ(received[0][0].toStringList(), QStringList({ "/b.sor" }));

    // Ended in order, the window leaves no socket behind.
    first.reset();
    EXPECT_FALSE(QFile::exists(SocketPath(name)));
    EXPECT_EQ(SingleInstance::Send(name, {}), SingleInstance::Handover::NoServer);
    SingleInstance next(name);
    EXPECT_EQ(next.Start({}), SingleInstance::Role::First);
}

// A process that holds the name but does not answer (hung, or another program) costs a start
// no more than its timeouts, and keeps its name.
TEST_F(SingleInstanceTest, AHolderThatDoesNotAnswerCostsNoMoreThanTheTimeoutAndKeepsItsName)
{
    QLocalServer mute;
    ASSERT_TRUE(mute.listen(name));

    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(SingleInstance::Send(name, { "/a.sor" }, 300, 400), SingleInstance::Handover::NoAnswer);
    const qint64 sent = clock.elapsed();
    EXPECT_GE(sent, 350);
    EXPECT_LT(sent, 1500);

    clock.restart();
    SingleInstance later(name);
    EXPECT_EQ(later.Start({ "/a.sor" }, false, 300, 400), SingleInstance::Role::Alone);
    EXPECT_LT(clock.elapsed(), 1500);
    EXPECT_FALSE(later.Listening());
    EXPECT_TRUE(mute.isListening());
    EXPECT_TRUE(QFile::exists(SocketPath(name)));

    // One that reads and hangs up without the confirmation is no hand-over either.
    QObject::connect(&mute, &QLocalServer::newConnection, [&mute] {
        while (QLocalSocket* socket = mute.nextPendingConnection())
            socket->disconnectFromServer();
    });
    clock.restart();
    EXPECT_EQ(SingleInstance::Send(name, { "/a.sor" }, 300, 3000), SingleInstance::Handover::NoAnswer);
    EXPECT_LT(clock.elapsed(), 2000);
}

// The window takes only this program's message: anything else is dropped unanswered, and a
// message that comes in pieces is read once it is whole.
TEST_F(SingleInstanceTest, TheWindowAnswersOnlyAWholeMessageOfItsOwnKind)
{
    SingleInstance first(name);
    ASSERT_EQ(first.Start({}), SingleInstance::Role::First);
    QSignalSpy received(&first, &SingleInstance::FilesReceived);

    const auto answerTo = [this](const QList<QByteArray>& pieces) {
        QLocalSocket socket;
        socket.connectToServer(name);
        if (!socket.waitForConnected(1000))
            return QByteArray("no connection");
        for (const QByteArray& piece : pieces) {
            socket.write(piece);
            socket.flush();
            QTest::qWait(30);
        }
        QByteArray answer;
        for (int turn = 0; turn < 20 && socket.state() == QLocalSocket::ConnectedState && answer.size() < 4; ++turn) {
            QTest::qWait(20);
            answer += socket.readAll();
        }
        return answer + socket.readAll();
    };

    EXPECT_EQ(answerTo({ QByteArray("GET / HTTP/1.0\r\n\r\n") }), QByteArray());
    QByteArray message;
    {
        QDataStream out(&message, QIODevice::WriteOnly);
        out.setVersion(QDataStream::Qt_6_0);
        out << quint32(0x536F724E) << quint16(1) << quint32(2) << QString("/x/1.sor") << QString("/x/2.sor");
    }
    QByteArray otherVersion = message;
    otherVersion[5] = 9;
    EXPECT_EQ(answerTo({ otherVersion }), QByteArray());
    QTest::qWait(50);
    EXPECT_EQ(received.size(), 0);

    const QByteArray answer = answerTo({ message.left(7), message.mid(7, 10), message.mid(17) });
    EXPECT_EQ(answer.size(), 4) << answer.toHex().toStdString();
    ASSERT_TRUE(Arrived(received, 1));
    EXPECT_EQ(received[0][0].toStringList(), QStringList({ "/x/1.sor", "/x/2.sor" }));
}

TEST(SingleInstanceNameTest, TheNameIsTheUsersAndAGroupOfStartsCanHaveOneOfItsOwn)
{
    const QByteArray saved = qgetenv("SORANO_INSTANCE");
    qunsetenv("SORANO_INSTANCE");
    const QString user = "sorano-" + QString::number(::getuid());
    EXPECT_EQ(SingleInstance::DefaultName(), user);
    qputenv("SORANO_INSTANCE", "tests/run 1");
    EXPECT_EQ(SingleInstance::DefaultName(), user + "-tests_run_1");
    if (saved.isNull())
        qunsetenv("SORANO_INSTANCE");
    else
        qputenv("SORANO_INSTANCE", saved);
}

} // namespace
