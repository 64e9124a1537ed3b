// SPDX-License-Identifier: GPL-3.0-or-later
// The log writer: settings, the line layout, and appending without ever waiting.
#include "Logging.h"

#include "AppPaths.h"
#include "Calendar.h"
#include "Formatter.h"
#include "Numeric.h"
#include "SafeSave.h"
#include "Settings.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cstdio>

#ifdef Q_OS_UNIX
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#endif

Logging* g_cLogging = nullptr;

namespace {

QString WithSeparator(QString folder)
{
    folder.replace('\\', '/'); // stored paths may use either separator
    if (!folder.endsWith('/'))
        folder += '/';
    return folder;
}

bool IsControl(char16_t c)
{
    return (c < 0x20 && c != u'\t') || (c >= 0x7F && c <= 0x9F);
}

// Texts from data files may carry NUL bytes and other control characters; written as they
// are they would break the line or make the log a binary file.
QString Escaped(const QString& text)
{
    if (std::none_of(text.cbegin(), text.cend(), [](QChar c) { return IsControl(c.unicode()); }))
        return text;
    constexpr char Hex[] = "0123456789ABCDEF";
    QString out;
    out.reserve(text.size() + 16);
    for (const QChar c : text) {
        const char16_t code = c.unicode();
        if (!IsControl(code)) {
            out += c;
        } else if (code == 0) {
            out += QLatin1String("\\0");
        } else {
            out += QLatin1String("\\x");
            out += QLatin1Char(Hex[code >> 4]);
            out += QLatin1Char(Hex[code & 0xF]);
        }
    }
    return out;
}

} // namespace

Logging::Logging()
{
    using Settings::Id;
    // The stored folder is taken only when it exists; the default is the data folder.
    QString folder = Settings::Value(Id::LogPath);
    QString normalized = folder;
    normalized.replace('\\', '/');
    if (folder.isEmpty() || !QFileInfo(normalized).isDir())
        folder = AppPaths::DataFolder();
    folder = WithSeparator(folder);

    // Only the exact text "1" selects daily files; the name is fixed for the process's life.
    if (Settings::Value(Id::LogDaily) == QLatin1String("1"))
        m_fileName = folder + QLatin1String("Sorano-") + Formatter().FormatDate(Calendar::Now(), u"yyyymmdd")
            + QLatin1String(".log");
    else
        m_fileName = folder + QLatin1String("Sorano.log");

    const QString mode = Settings::Value(Id::LogMode);
    m_level = IsNumeric(mode) ? ClampToInt(LeadingNumber(mode)) : 3;

    // A fresh log empties the file; a link stays a link and a pipe or a device stays what it is.
    if (Settings::Value(Id::LogAppend) == QLatin1String("0")) {
        const QFileInfo info(m_fileName);
        if (info.isSymLink()) {
            if (info.isFile())
                QFile(m_fileName).resize(0);
        } else if (info.isFile()) {
            QFile::remove(m_fileName);
        }
    }
}

Logging::~Logging()
{
    WriteLog(QStringLiteral("app stop "), QStringLiteral("Sorano terminated."),
        QStringLiteral("Logging.Class_Terminate"), LogLevel::Always);
    WriteLog(
        QStringLiteral("---------"), QStringLiteral("----------------"), QStringLiteral("--------"), LogLevel::Always);
}

void Logging::WriteLog(const QString& title, const QString& message, const QString& source, int level)
{
    if ((level < m_level && level != LogLevel::Always) || m_skipped)
        return;
    const QByteArray line = (Formatter().GeneralDate(Calendar::Now()) + QLatin1Char(' ') + Escaped(source)
        + QLatin1String(": ") + Escaped(title) + QLatin1String(" - ") + Escaped(message) + QLatin1Char('\n'))
                                .toUtf8();
#ifdef Q_OS_UNIX
    // Opened without waiting: a pipe that nobody reads fails here (ENXIO) instead of blocking,
    // and a full pipe fails the write (EAGAIN).
    const int fd = ::open(QFile::encodeName(m_fileName).constData(),
        O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0666);
    const int error = fd < 0 ? errno : SafeSave::WriteDescriptor(fd, line.constData(), line.size());
    if (fd >= 0)
        ::close(fd);
    if (error == 0)
        return;
    m_skipped = error == ENXIO || error == EAGAIN || error == EWOULDBLOCK || error == EPIPE;
    const QString reason = error == ENXIO         ? QStringLiteral("no program reads from the pipe")
        : error == EPIPE                          ? QStringLiteral("the program reading from the pipe has stopped")
        : error == EAGAIN || error == EWOULDBLOCK ? QStringLiteral("the pipe is full")
                                                  : QString::fromLocal8Bit(std::strerror(error));
    Warn(m_skipped ? QStringLiteral("is skipped") : QStringLiteral("cannot be written"), reason);
#else
    QFile file(m_fileName);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append) || file.write(line) != line.size())
        Warn(QStringLiteral("cannot be written"), file.errorString());
#endif
}

void Logging::Warn(const QString& what, const QString& reason)
{
    if (m_warned)
        return;
    m_warned = true;
    const QByteArray text
        = QStringLiteral("Sorano: the log file %1 %2: %3\n").arg(m_fileName, what, reason).toLocal8Bit();
    std::fputs(text.constData(), stderr);
}

void WriteLog(const QString& title, const QString& message, const QString& source, int level)
{
    if (g_cLogging)
        g_cLogging->WriteLog(title, message, source, level);
}
