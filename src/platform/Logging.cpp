// SPDX-License-Identifier: GPL-3.0-or-later
#include "Logging.h"

#include "AppPaths.h"
#include "Calendar.h"
#include "Formatter.h"
#include "Numeric.h"
#include "Settings.h"

#include <QFile>
#include <QFileInfo>

Logging* g_cLogging = nullptr;

namespace {

QString WithSeparator(QString folder)
{
    folder.replace('\\', '/'); // stored paths may use either separator
    if (!folder.endsWith('/'))
        folder += '/';
    return folder;
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
        m_fileName = folder + QLatin1String("Sorano-")
                     + Formatter().FormatDate(Calendar::Now(), u"yyyymmdd") + QLatin1String(".log");
    else
        m_fileName = folder + QLatin1String("Sorano.log");

    const QString mode = Settings::Value(Id::LogMode);
    m_level = IsNumeric(mode) ? ClampToInt(LeadingNumber(mode)) : 3;

    if (Settings::Value(Id::LogAppend) == QLatin1String("0"))
        QFile::remove(m_fileName);
}

Logging::~Logging()
{
    WriteLog(QStringLiteral("app stop "), QStringLiteral("Sorano terminated."),
             QStringLiteral("Logging.Class_Terminate"), LogLevel::Always);
    WriteLog(QStringLiteral("---------"), QStringLiteral("----------------"), QStringLiteral("--------"),
             LogLevel::Always);
}

void Logging::WriteLog(const QString& title, const QString& message, const QString& source, int level)
{
    if (level < m_level && level != LogLevel::Always)
        return;
    const QString line = Formatter().GeneralDate(Calendar::Now()) + QLatin1Char(' ') + source
                         + QLatin1String(": ") + title + QLatin1String(" - ") + message + QLatin1Char('\n');
    QFile file(m_fileName);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append))
        return;
    file.write(line.toUtf8());
}

void WriteLog(const QString& title, const QString& message, const QString& source, int level)
{
    if (g_cLogging)
        g_cLogging->WriteLog(title, message, source, level);
}
