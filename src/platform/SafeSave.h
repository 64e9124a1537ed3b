// SPDX-License-Identifier: GPL-3.0-or-later
// The one way the program saves a file: whole or not at all, and never over a link or a device.
#pragma once

#include <QIODevice>
#include <QString>

#include <memory>

class QSaveFile;

// A regular file, or one that does not exist yet, is written to a temporary file in its folder
// and renamed over it by commit(), so that a failed or cancelled save leaves the old content.
// A symbolic link is followed to the file it names, which is replaced in its own folder while
// the link stays. A device or a named pipe is written directly: it is opened without creating
// anything, and a pipe that nobody reads fails at once instead of waiting for a reader.
// Any write error, a full disk above all, makes commit() fail with the reason in errorString().
// The device is sequential: writers that seek (pictures, PDF) render into memory first.
class SafeSave final : public QIODevice
{
public:
    explicit SafeSave(const QString& fileName, QObject* parent = nullptr);
    // Discards what was written unless it was committed.
    ~SafeSave() override;

    SafeSave(const SafeSave&) = delete;
    SafeSave& operator=(const SafeSave&) = delete;

    QString fileName() const { return m_fileName; }
    // Known once opened: the file that is replaced, the name with its symbolic links followed;
    // for a device or a pipe, written in place, the name as given.
    QString targetName() const { return m_target; }

    // Only WriteOnly (with Truncate or Unbuffered) is accepted.
    bool open(OpenMode mode) override;
    // Ends the save: renames the temporary file over the target or closes the device.
    // False when anything went wrong since open; the old file is then left as it was.
    bool commit();
    // Ends the save without touching the target.
    void cancelWriting();
    // Closing without commit discards the save.
    void close() override;
    bool isSequential() const override { return true; }

#ifdef Q_OS_UNIX
    // Writes all bytes to an open descriptor, going on after partial writes and interruptions;
    // 0 or the errno value of the failure. A pipe whose reader has gone gives EPIPE, never the
    // signal that would end the program.
    static int WriteDescriptor(int fd, const char* data, qint64 size);
#endif

protected:
    qint64 readData(char* data, qint64 maxSize) override;
    qint64 writeData(const char* data, qint64 size) override;

private:
    bool Fail(const QString& reason);
    void Discard();

    QString m_fileName;
    QString m_target;
    std::unique_ptr<QSaveFile> m_atomic;
    int m_fd = -1;
    bool m_failed = false;
};
