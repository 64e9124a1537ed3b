// SPDX-License-Identifier: GPL-3.0-or-later
// A regular file read by position through a buffer: opened without ever blocking on a pipe or
// device, and safe against another program cutting the file short while it is read.
#pragma once

#include <QFile>
#include <QString>

#include <cstddef>
#include <memory>
#include <string_view>

class CsvFileReader
{
public:
    // What a buffer refill reads at least beyond what a call needs, unless told otherwise.
    static constexpr qint64 DefaultReadAhead = 64 * 1024;

    CsvFileReader() = default;
    CsvFileReader(const CsvFileReader&) = delete;
    CsvFileReader& operator=(const CsvFileReader&) = delete;

    // Opens the file when it is a regular one (links followed). A pipe, device or socket is
    // refused without being opened for reading in a way that could wait. False with the reason
    // in Error() ("the file does not exist", "... is no regular file", ...).
    bool Open(const QString& path);
    void Close();
    bool IsOpen() const { return m_file.isOpen(); }

    // The size of the file when it was opened; nothing behind it is read.
    qint64 Size() const { return m_lSize; }
    // Where the file ends as far as the reads know: Size(), or less once a read found it
    // shorter or failed.
    qint64 End() const { return m_lEnd; }
    // Whether a read found the file shorter than it was when opened.
    bool Shrank() const { return m_bShrank; }
    // Why the file could not be opened or read; empty while all is well.
    const QString& Error() const { return m_sError; }

    // How much a refill reads beyond what a call needs: the whole file for a walk through it,
    // the span of a window for a read of one.
    void SetReadAhead(qint64 bytes);

    // Up to length bytes from offset on, fewer at the end. Valid until the next call.
    std::string_view Bytes(qint64 offset, std::size_t length);
    // The bytes from offset up to and including the next "\n", at most maxLength + 1 of them,
    // fewer at the end of the file. Valid until the next call.
    std::string_view Line(qint64 offset, std::size_t maxLength);

    // Gives the buffer back; the file stays open.
    void Release();

private:
    // Makes the buffer hold [offset, offset + need) or up to the end, plus read-ahead.
    void Fill(qint64 offset, qint64 need);
    std::string_view Buffered(qint64 offset) const;

    QFile m_file;
    qint64 m_lSize = 0;
    qint64 m_lEnd = 0;
    bool m_bShrank = false;
    QString m_sError;

    std::unique_ptr<char[]> m_pBuffer;
    qint64 m_lCapacity = 0;
    qint64 m_lStart = 0; // file offset of the buffer's first byte
    qint64 m_lFilled = 0; // bytes of the buffer that hold file content
    qint64 m_lReadAhead = DefaultReadAhead;
};
