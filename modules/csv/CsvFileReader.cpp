// SPDX-License-Identifier: GPL-3.0-or-later
#include "CsvFileReader.h"

#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace {

// A refill reads at most this much ahead: few reads, and the bytes are still in the processor's
// cache when they are parsed.
constexpr qint64 MaxReadAhead = 1024 * 1024;
// Searching a line end that is not buffered yet reads at least this much more.
constexpr qint64 MinLineFill = 4096;

} // namespace

bool CsvFileReader::Open(const QString& path)
{
    Close();
#ifdef Q_OS_UNIX
    const QByteArray name = QFile::encodeName(path);
    struct stat info = {};
    if (::stat(name.constData(), &info) != 0) {
        m_sError = errno == ENOENT || errno == ENOTDIR
            ? QStringLiteral("the file does not exist")
            : QStringLiteral("the file can't be opened (%1)").arg(qt_error_string(errno));
        return false;
    }
    if (!S_ISREG(info.st_mode)) {
        m_sError = QStringLiteral("the file is no regular file");
        return false;
    }
    // Should the name have been pointed at a pipe since the check, opening it must not wait for
    // a writer; for a regular file the flag means nothing.
    const int fd = ::open(name.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0) {
        m_sError = QStringLiteral("the file can't be opened (%1)").arg(qt_error_string(errno));
        return false;
    }
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        ::close(fd);
        m_sError = QStringLiteral("the file is no regular file");
        return false;
    }
    const int flags = ::fcntl(fd, F_GETFL);
    if (flags != -1)
        ::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK);
    if (!m_file.open(fd, QIODevice::ReadOnly | QIODevice::Unbuffered, QFileDevice::AutoCloseHandle)) {
        ::close(fd);
        m_sError = QStringLiteral("the file can't be opened (%1)").arg(m_file.errorString());
        return false;
    }
    m_lSize = static_cast<qint64>(info.st_size);
#else
    const QFileInfo info(path);
    if (!info.exists()) {
        m_sError = QStringLiteral("the file does not exist");
        return false;
    }
    if (!info.isFile()) {
        m_sError = QStringLiteral("the file is no regular file");
        return false;
    }
    m_file.setFileName(path);
    if (!m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        m_sError = QStringLiteral("the file can't be opened (%1)").arg(m_file.errorString());
        return false;
    }
    m_lSize = m_file.size();
#endif
    m_lEnd = m_lSize;
    return true;
}

void CsvFileReader::Close()
{
    m_file.close();
    Release();
    m_lSize = 0;
    m_lEnd = 0;
    m_bShrank = false;
    m_sError.clear();
    m_lReadAhead = DefaultReadAhead;
}

void CsvFileReader::Release()
{
    m_pBuffer.reset();
    m_lCapacity = 0;
    m_lStart = 0;
    m_lFilled = 0;
}

void CsvFileReader::SetReadAhead(qint64 bytes)
{
    m_lReadAhead = std::clamp(bytes, DefaultReadAhead, MaxReadAhead);
}

std::string_view CsvFileReader::Buffered(qint64 offset) const
{
    if (offset < m_lStart || offset >= m_lStart + m_lFilled)
        return {};
    return { m_pBuffer.get() + (offset - m_lStart), static_cast<std::size_t>(m_lStart + m_lFilled - offset) };
}

void CsvFileReader::Fill(qint64 offset, qint64 need)
{
    const qint64 want = std::min(m_lEnd - offset, std::max(need, m_lReadAhead));
    if (want <= 0)
        return;
    // What the buffer holds from offset on stays and moves to the front.
    const qint64 keep = std::min(static_cast<qint64>(Buffered(offset).size()), want);
    if (want > m_lCapacity) {
        auto buffer = std::make_unique_for_overwrite<char[]>(static_cast<std::size_t>(want));
        if (keep > 0)
            std::memcpy(buffer.get(), m_pBuffer.get() + (offset - m_lStart), static_cast<std::size_t>(keep));
        m_pBuffer = std::move(buffer);
        m_lCapacity = want;
    } else if (keep > 0 && offset != m_lStart) {
        std::memmove(m_pBuffer.get(), m_pBuffer.get() + (offset - m_lStart), static_cast<std::size_t>(keep));
    }
    m_lStart = offset;
    m_lFilled = keep;
    if (!m_file.isOpen() || !m_file.seek(offset + m_lFilled)) {
        m_lEnd = offset + m_lFilled;
        m_sError = QStringLiteral("reading the file failed (%1)")
                       .arg(m_file.isOpen() ? m_file.errorString() : QStringLiteral("not open"));
        return;
    }
    while (m_lFilled < want) {
        const qint64 got = m_file.read(m_pBuffer.get() + m_lFilled, want - m_lFilled);
        if (got <= 0) {
            // The file ends before the size it had when opened: another program cut it short,
            // or the device failed. Nothing behind this point is read any more.
            m_lEnd = offset + m_lFilled;
            if (got < 0)
                m_sError = QStringLiteral("reading the file failed (%1)").arg(m_file.errorString());
            else
                m_bShrank = true;
            return;
        }
        m_lFilled += got;
    }
}

std::string_view CsvFileReader::Bytes(qint64 offset, std::size_t length)
{
    if (offset < 0 || offset >= m_lEnd || length == 0)
        return {};
    const qint64 need = std::min(
        static_cast<qint64>(std::min<std::size_t>(length, std::numeric_limits<qint64>::max())), m_lEnd - offset);
    std::string_view view = Buffered(offset);
    if (static_cast<qint64>(view.size()) < need) {
        Fill(offset, need);
        view = Buffered(offset);
    }
    return view.substr(0, std::min(view.size(), static_cast<std::size_t>(need)));
}

std::string_view CsvFileReader::Line(qint64 offset, std::size_t maxLength)
{
    if (offset < 0 || offset >= m_lEnd)
        return {};
    const std::size_t limit = maxLength + 1;
    std::size_t searched = 0;
    std::string_view view = Buffered(offset);
    for (;;) {
        const std::size_t span = std::min(view.size(), limit);
        if (span > searched)
            if (const auto* newline
                = static_cast<const char*>(std::memchr(view.data() + searched, '\n', span - searched)))
                return view.substr(0, static_cast<std::size_t>(newline - view.data()) + 1);
        if (span >= limit || offset + static_cast<qint64>(span) >= m_lEnd)
            return view.substr(0, span);
        searched = span;
        Fill(offset, std::min(static_cast<qint64>(limit), std::max(2 * static_cast<qint64>(span), MinLineFill)));
        view = Buffered(offset);
        if (view.size() <= searched)
            return view.substr(0, std::min(view.size(), limit)); // the file ended early
    }
}
