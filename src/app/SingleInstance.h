// SPDX-License-Identifier: GPL-3.0-or-later
// One window per user: the first interactive start listens on a local socket, and a later
// start hands its view files to it and ends instead of opening a second window.
#pragma once

#include <QObject>
#include <QStringList>

class QLocalServer;
class QLocalSocket;

class SingleInstance : public QObject
{
    Q_OBJECT
public:
    enum class Role {
        First, ///< listens: later starts hand their files to this process
        HandedOver, ///< another process took the files; this one ends
        Alone, ///< runs on its own, without listening (the name is held by another process)
    };
    enum class Handover {
        Delivered, ///< the running process confirmed the files
        NoServer, ///< nobody listens under the name (none there, or a socket left by a crash)
        NoAnswer, ///< a process listens but did not confirm in time, or runs as another user
    };

    // The socket name of this user's window: "sorano-<user id>", and "-<SORANO_INSTANCE>" when
    // that variable is set, so that tests and scripts can keep a group of starts of their own.
    // Relative, so it lies where the toolkit puts local sockets (the temporary folder).
    static QString DefaultName();

    explicit SingleInstance(const QString& name, QObject* parent = nullptr);
    ~SingleInstance() override;

    // Decides how this start runs. The name free: listens (First). Held by a process that
    // answers: hands it the files (absolute paths; an empty list asks it to come to the front)
    // and returns HandedOver. Held by a socket nobody answers on: takes the name over. With
    // separate, or when the holder is alive but does not answer in time: Alone, and the name
    // stays with its holder. Every wait is bounded by the timeouts.
    Role Start(const QStringList& files, bool separate = false, int connectMs = 500, int answerMs = 5000);

    bool Listening() const;

    // Sends the files to the process listening under the name and waits for its confirmation,
    // running the event loop meanwhile; never longer than connectMs and answerMs together.
    static Handover Send(const QString& name, const QStringList& files, int connectMs = 500, int answerMs = 5000);

signals:
    // Another start handed these files over (in its order); empty: it only asks for the window.
    // Emitted after the sender has its confirmation, from the event loop.
    void FilesReceived(const QStringList& files);

private:
    bool Listen();
    void Accept();
    void Read(QLocalSocket* socket);

    QString m_name;
    QLocalServer* m_server = nullptr;
};
