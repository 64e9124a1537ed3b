// SPDX-License-Identifier: GPL-3.0-or-later
// One CSV file with an index of its data lines: the byte offset and the time of every good
// line, ascending in time. Built once per file version (size and modification time); reads of
// a time window binary-search the index and read and parse only the lines and cells they need.
// A file cut short while it is read gives what it still holds and a log line.
#pragma once

#include "CsvFileReader.h"
#include "CsvLineReader.h"
#include "MatrixBlock.h"

#include <QString>

#include <functional>
#include <span>
#include <utility>
#include <vector>

class CsvFileIndex
{
public:
    // Receives the index's log lines: level (2 for bad content, 3 for an unreadable file) and text.
    using LogSink = std::function<void(qint16 level, const QString& text)>;

    // Bad lines logged one by one per file version; beyond that one line says that more follow.
    static constexpr int MaxReportedLines = 20;

    explicit CsvFileIndex(const QString& path);
    ~CsvFileIndex();
    CsvFileIndex(const CsvFileIndex&) = delete;
    CsvFileIndex& operator=(const CsvFileIndex&) = delete;

    // Opens the file, reads its header and indexes its lines. False (and a log line) when the
    // file can't be read or has no usable header; the index then has no rows. A file that gets
    // shorter meanwhile is indexed up to its last whole line, with a log line at level 3.
    bool Build(const LogSink& log);
    bool IsValid() const { return m_bValid; }
    // Why the file could not be read (it does not exist, is no regular file, can't be opened,
    // a read failed); empty when it could, also when its content is of no use.
    const QString& Error() const { return m_sError; }
    // Whether the file still has the size and modification time that the index was built from.
    bool IsCurrent() const;

    const QString& Path() const { return m_sPath; }
    const Csv::Layout& Layout() const { return m_layout; }
    qsizetype Rows() const { return static_cast<qsizetype>(m_times.size()); }
    std::span<const double> Times() const { return m_times; }
    // The most common step between consecutive times, in seconds; 0 when unknown.
    double Resolution() const { return m_dResolution; }
    // Index rows [first, last) whose time lies within [from, to], both bounds included.
    std::pair<qsizetype, qsizetype> Window(double from, double to) const;

    // Fills blocks[i] with the samples of channel number channels[i] (from 1) within [from, to]:
    // column 0 the time, column 1 the value, an empty cell as NoValue. A cell that holds no
    // number drops that sample from its block, with a log line. A number outside the header
    // gives an empty block. Lines that are gone because the file got shorter are left out, with
    // a log line at level 3. False, with Error() set and the blocks left alone, when reading the
    // file failed.
    bool Read(std::span<const int> channels, double from, double to, std::span<MatrixBlock* const> blocks,
        const LogSink& log);

private:
    void Reset();
    void Report(qint64 line, const QString& text, const LogSink& log);
    qint64 LineNumberAt(qint64 offset);
    void SortByTime(qint64 firstUnorderedLine, const LogSink& log);
    void EstimateResolution();

    QString m_sPath;
    CsvFileReader m_reader;
    qint64 m_lSize = -1;
    qint64 m_lModified = 0;
    bool m_bExisted = false;
    bool m_bValid = false;
    QString m_sError;
    Csv::Layout m_layout;

    std::vector<qint64> m_offsets; // line starts, in the order of m_times
    std::vector<double> m_times; // ascending
    // Every 4096th line: its start and number, to name lines in messages of later reads.
    std::vector<std::pair<qint64, qint64>> m_checkpoints;
    double m_dResolution = 0.0;

    int m_iReported = 0;
    qint64 m_lBadLines = 0;
    bool m_bCapNoticed = false;
    std::vector<qint64> m_reportedOffsets; // lines whose bad values were logged already
};
