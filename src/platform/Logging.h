// SPDX-License-Identifier: GPL-3.0-or-later
// The log writer: one plain text line per call, appended to one file.
#pragma once

#include <QString>

// Levels as callers use them; 4 is always written.
namespace LogLevel {
constexpr int Info = 1;
constexpr int Skipped = 2;
constexpr int Error = 3;
constexpr int Always = 4;
} // namespace LogLevel

class Logging
{
public:
    // Reads "LogPath", "LogDaily", "LogMode" and "LogAppend" and fixes the file name.
    Logging();
    // Writes the stop line and the closing separator.
    ~Logging();

    Logging(const Logging&) = delete;
    Logging& operator=(const Logging&) = delete;

    // "<date time> <source>: <title> - <message>"; the file is opened for this line only,
    // and any failure loses the line and nothing else. Control characters other than tab
    // are written as "\0" and "\xHH", so that a line stays one line of text. Writing never
    // waits: a file that would make it wait (a pipe nobody reads or one that is full) is
    // skipped from then on. The first failure is said once on stderr.
    void WriteLog(const QString& title, const QString& message, const QString& source, int level);

    QString FileName() const { return m_fileName; }
    int Level() const { return m_level; }

private:
    void Warn(const QString& what, const QString& reason);

    QString m_fileName;
    int m_level = 3;
    bool m_skipped = false; // the file would make the program wait
    bool m_warned = false;
};

// The one log of the process; created first by the entry routine, null before and after.
extern Logging* g_cLogging;

// Writes through g_cLogging when it exists; the form for code that may run without a log.
void WriteLog(const QString& title, const QString& message, const QString& source, int level);
