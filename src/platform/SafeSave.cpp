// SPDX-License-Identifier: GPL-3.0-or-later
// Saving a file whole or not at all; devices and pipes are written in place.
#include "SafeSave.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace {

// As many links in a row as the system itself follows before it gives up.
constexpr int MaxLinkHops = 40;

// The name with every symbolic link followed, also to a file that does not exist yet;
// empty when the links go round in a circle.
QString FollowLinks(const QString& fileName)
{
    QString path = QFileInfo(fileName).absoluteFilePath();
    for (int hop = 0; hop < MaxLinkHops; ++hop) {
        const QFileInfo info(path);
        if (!info.isSymLink())
            return path;
        path = info.symLinkTarget();
        if (path.isEmpty())
            return {};
    }
    return {};
}

#ifdef Q_OS_UNIX
QString SystemError(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}
#endif

} // namespace

SafeSave::SafeSave(const QString& fileName, QObject* parent)
    : QIODevice(parent)
    , m_fileName(fileName)
{ }

SafeSave::~SafeSave()
{
    Discard();
}

bool SafeSave::open(OpenMode mode)
{
    if (isOpen()) {
        setErrorString(QStringLiteral("The file is already open"));
        return false;
    }
    m_failed = false;
    const OpenMode allowed = WriteOnly | Truncate | Unbuffered;
    if (!(mode & WriteOnly) || (mode & ReadOnly) || (mode & ~allowed)) {
        setErrorString(QStringLiteral("A save is opened for writing only"));
        return false;
    }
    if (m_fileName.isEmpty()) {
        setErrorString(QStringLiteral("No file name"));
        return false;
    }
#ifdef Q_OS_UNIX
    // stat() follows every link, also those of the system that name no file in a folder, such
    // as /dev/stdout onto a pipe: whatever is not a regular file or a folder is written in place.
    struct stat status
    {
    };
    const QByteArray name = QFile::encodeName(m_fileName);
    if (::stat(name.constData(), &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) {
        m_target = QFileInfo(m_fileName).absoluteFilePath();
        // Opened without O_CREAT, so nothing is ever made in its place, and without waiting,
        // so that a pipe without a reader fails here instead of blocking the program.
        const int fd = ::open(name.constData(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
        if (fd < 0) {
            const int error = errno;
            setErrorString(error == ENXIO && S_ISFIFO(status.st_mode) ? QStringLiteral("No program reads from the pipe")
                                                                      : SystemError(error));
            return false;
        }
        // Once a reader is there, writes may wait for it to catch up.
        const int flags = ::fcntl(fd, F_GETFL);
        if (flags >= 0)
            ::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK);
        m_fd = fd;
        return QIODevice::open(WriteOnly | Unbuffered);
    }
#endif

    // A regular file is replaced in the folder of the file its links lead to.
    m_target = FollowLinks(m_fileName);
    if (m_target.isEmpty()) {
        setErrorString(QStringLiteral("Too many levels of symbolic links"));
        return false;
    }
    if (QFileInfo(m_target).isDir()) {
        setErrorString(QStringLiteral("The name belongs to a folder"));
        return false;
    }
    m_atomic = std::make_unique<QSaveFile>(m_target);
    if (!m_atomic->open(WriteOnly)) {
        setErrorString(m_atomic->errorString());
        m_atomic.reset();
        return false;
    }
    return QIODevice::open(WriteOnly | Unbuffered);
}

#ifdef Q_OS_UNIX
int SafeSave::WriteDescriptor(int fd, const char* data, qint64 size)
{
    // SIGPIPE is held back while writing and a signal raised here is taken, so it does not
    // arrive once unblocked; the write reports EPIPE instead.
    sigset_t pipeSignal;
    sigset_t previous;
    sigemptyset(&pipeSignal);
    sigaddset(&pipeSignal, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipeSignal, &previous);
    int error = 0;
    qint64 done = 0;
    while (done < size) {
        const ssize_t written = ::write(fd, data + done, static_cast<size_t>(size - done));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0) {
            error = written < 0 ? errno : EIO;
            break;
        }
        done += written;
    }
    if (error == EPIPE && !sigismember(&previous, SIGPIPE)) {
        const timespec noWait {};
        while (sigtimedwait(&pipeSignal, nullptr, &noWait) < 0 && errno == EINTR) { }
    }
    pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    return error;
}
#endif

qint64 SafeSave::readData(char*, qint64)
{
    return -1;
}

qint64 SafeSave::writeData(const char* data, qint64 size)
{
    if (m_failed)
        return -1;
    if (m_atomic) {
        const qint64 written = m_atomic->write(data, size);
        if (written != size) {
            Fail(m_atomic->errorString());
            return -1;
        }
        return size;
    }
#ifdef Q_OS_UNIX
    if (m_fd >= 0) {
        const int error = WriteDescriptor(m_fd, data, size);
        if (error == 0)
            return size;
        Fail(error == EPIPE ? QStringLiteral("The program reading from the pipe has stopped") : SystemError(error));
        return -1;
    }
#endif
    Fail(QStringLiteral("The file is not open"));
    return -1;
}

bool SafeSave::commit()
{
    if (!isOpen()) {
        setErrorString(QStringLiteral("The file is not open"));
        return false;
    }
    bool ok = !m_failed;
    if (m_atomic) {
        if (ok && !m_atomic->commit())
            ok = Fail(m_atomic->errorString());
        m_atomic.reset(); // without a commit its temporary file goes with it
    }
#ifdef Q_OS_UNIX
    if (m_fd >= 0) {
        if (::close(m_fd) != 0 && ok)
            ok = Fail(SystemError(errno));
        m_fd = -1;
    }
#endif
    QIODevice::close();
    return ok;
}

void SafeSave::cancelWriting()
{
    Discard();
}

void SafeSave::close()
{
    Discard();
}

bool SafeSave::Fail(const QString& reason)
{
    if (!m_failed) // the first error is the one that tells what happened
        setErrorString(reason);
    m_failed = true;
    return false;
}

void SafeSave::Discard()
{
    m_atomic.reset();
#ifdef Q_OS_UNIX
    if (m_fd >= 0) {
        ::close(m_fd);
        m_fd = -1;
    }
#endif
    if (isOpen())
        QIODevice::close();
}
