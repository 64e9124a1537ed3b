// SPDX-License-Identifier: GPL-3.0-or-later
#include "CsvFileIndex.h"

#include "Calendar.h"
#include "FreshMemory.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>

namespace {

// The header is looked for in the first bytes only.
constexpr qint64 HeaderBytes = 64 * 1024;
constexpr qint64 CheckpointEvery = 4096;
// Lines reserved ahead at most (64 MB of index), so that a short first line in a huge file
// doesn't reserve gigabytes.
constexpr std::size_t MaxReserved = std::size_t(1) << 22;

qint64 ModificationTime(const QFileInfo& info)
{
    return info.fileTime(QFileDevice::FileModificationTime).toMSecsSinceEpoch();
}

} // namespace

CsvFileIndex::CsvFileIndex(const QString& path)
    : m_sPath(path)
{ }

CsvFileIndex::~CsvFileIndex() = default;

void CsvFileIndex::Reset()
{
    m_reader.Close();
    m_bValid = false;
    m_sError.clear();
    m_layout = Csv::Layout();
    m_offsets.clear();
    m_times.clear();
    m_checkpoints.clear();
    m_dResolution = 0.0;
    m_iReported = 0;
    m_lBadLines = 0;
    m_bCapNoticed = false;
    m_reportedOffsets.clear();
}

bool CsvFileIndex::IsCurrent() const
{
    const QFileInfo info(m_sPath);
    // A file that is still missing needs no second attempt (and no second log line).
    if (!info.exists())
        return !m_bExisted;
    return m_bExisted && info.size() == m_lSize && ModificationTime(info) == m_lModified;
}

void CsvFileIndex::Report(qint64 line, const QString& text, const LogSink& log)
{
    ++m_lBadLines;
    if (m_iReported < MaxReportedLines) {
        ++m_iReported;
        log(2, QStringLiteral("%1, line %2: %3").arg(QDir::toNativeSeparators(m_sPath)).arg(line).arg(text));
    } else if (!m_bCapNoticed) {
        m_bCapNoticed = true;
        log(2,
            QStringLiteral("%1: more than %2 bad lines; further ones are skipped without a log line")
                .arg(QDir::toNativeSeparators(m_sPath))
                .arg(MaxReportedLines));
    }
}

bool CsvFileIndex::Build(const LogSink& log)
{
    Reset();
    const QString name = QDir::toNativeSeparators(m_sPath);
    const QFileInfo info(m_sPath);
    m_bExisted = info.exists();
    m_lSize = info.size();
    m_lModified = ModificationTime(info);
    // Opened only when regular: a pipe or device named like a CSV file would block or never end.
    if (!m_reader.Open(m_sPath)) {
        m_sError = m_reader.Error();
        log(3, QStringLiteral("%1: %2").arg(name, m_sError));
        return false;
    }
    m_lSize = m_reader.Size();
    if (m_lSize == 0) {
        log(2, QStringLiteral("%1: the file is empty").arg(name));
        return false;
    }
    // The file is read once from start to end: large reads, each line found in the buffer.
    m_reader.SetReadAhead(m_lSize);
    const std::string_view start = m_reader.Bytes(0, static_cast<std::size_t>(HeaderBytes));
    if (!m_reader.Error().isEmpty()) {
        m_sError = m_reader.Error();
        log(3, QStringLiteral("%1: %2").arg(name, m_sError));
        m_reader.Release();
        return false;
    }
    const Csv::HeaderResult header = Csv::ReadHeader(start, m_reader.End() <= HeaderBytes);
    if (!header.layout) {
        log(2, QStringLiteral("%1: %2; the file is not read").arg(name, header.problem));
        m_reader.Release();
        return false;
    }
    m_layout = *header.layout;

    auto pos = static_cast<qint64>(m_layout.dataOffset);
    qint64 lineNumber = m_layout.dataLine;
    qint64 firstUnordered = 0;
    bool reserved = false;
    while (pos < m_reader.End()) {
        if (lineNumber % CheckpointEvery == 0)
            m_checkpoints.emplace_back(pos, lineNumber);
        const std::string_view text = m_reader.Line(pos, Csv::MaxLineLength);
        if (text.empty())
            break; // the file ended early
        const bool newline = text.back() == '\n';
        const bool tooLong = !newline && text.size() > Csv::MaxLineLength;
        // A line cut off by a file that got shorter is not what the logger wrote: left out.
        if (!newline && !tooLong && pos + static_cast<qint64>(text.size()) < m_lSize)
            break;
        // A damaged or pre-allocated file: zeros where the logger never wrote. Searching them
        // for a line end would read every page of what may be gigabytes of nothing.
        const auto* zero = text.front() == '\0' || tooLong
            ? static_cast<const char*>(std::memchr(text.data(), '\0', text.size()))
            : nullptr;
        if (zero) {
            log(2,
                QStringLiteral("%1, line %2: binary zeros from byte %3 on; the rest of the file is not read")
                    .arg(name)
                    .arg(lineNumber)
                    .arg(pos + static_cast<qint64>(zero - text.data())));
            break;
        }
        if (tooLong) {
            Report(lineNumber, Csv::DescribeProblem(Csv::LineCheck::TooLong, {}, m_layout), log);
            // On to the line behind it, however long this one is.
            pos += static_cast<qint64>(text.size());
            for (std::string_view more = m_reader.Line(pos, Csv::MaxLineLength); !more.empty();
                 more = m_reader.Line(pos, Csv::MaxLineLength)) {
                pos += static_cast<qint64>(more.size());
                if (more.back() == '\n')
                    break;
            }
            ++lineNumber;
            continue;
        }
        std::size_t length = text.size() - (newline ? 1 : 0);
        const qint64 next = pos + static_cast<qint64>(text.size());
        if (length > 0 && text[length - 1] == '\r')
            --length;
        const std::string_view line = text.substr(0, length);
        double time = 0.0;
        const Csv::LineCheck check = Csv::CheckLine(line, m_layout, time);
        if (check == Csv::LineCheck::Ok) {
            if (!reserved) {
                // Room for as many lines as the first one suggests, so the vectors rarely grow.
                const auto lines = static_cast<std::size_t>(m_lSize - pos) / (length + 1);
                const std::size_t estimate = std::min<std::size_t>(lines + lines / 8 + 16, MaxReserved);
                m_offsets.reserve(estimate);
                m_times.reserve(estimate);
                FreshMemory::AskForHugePages(m_offsets.data(), estimate * sizeof(qint64));
                FreshMemory::AskForHugePages(m_times.data(), estimate * sizeof(double));
                reserved = true;
            }
            if (!m_times.empty() && time < m_times.back() && firstUnordered == 0)
                firstUnordered = lineNumber;
            m_offsets.push_back(pos);
            m_times.push_back(time);
        } else if (check != Csv::LineCheck::Blank) {
            Report(lineNumber, Csv::DescribeProblem(check, line, m_layout), log);
        }
        pos = next;
        ++lineNumber;
    }
    m_reader.Release();
    if (!m_reader.Error().isEmpty()) {
        m_sError = m_reader.Error();
        log(3, QStringLiteral("%1: %2").arg(name, m_sError));
        m_offsets.clear();
        m_times.clear();
        return false;
    }
    if (m_reader.Shrank())
        log(3,
            QStringLiteral("%1: the file got shorter while it was read (%2 bytes instead of %3); its lines up to "
                           "there are read")
                .arg(name)
                .arg(m_reader.End())
                .arg(m_lSize));
    if (m_lBadLines > MaxReportedLines)
        log(2, QStringLiteral("%1: %2 bad lines skipped in all").arg(name).arg(m_lBadLines));
    if (m_times.empty())
        log(2, QStringLiteral("%1: the file has no data lines").arg(name));
    if (firstUnordered != 0)
        SortByTime(firstUnordered, log);
    EstimateResolution();
    m_bValid = true;
    return true;
}

void CsvFileIndex::SortByTime(qint64 firstUnorderedLine, const LogSink& log)
{
    log(2,
        QStringLiteral("%1, line %2: the times are not in ascending order; the lines are read sorted by time")
            .arg(QDir::toNativeSeparators(m_sPath))
            .arg(firstUnorderedLine));
    std::vector<std::size_t> order(m_times.size());
    std::iota(order.begin(), order.end(), std::size_t(0));
    std::stable_sort(
        order.begin(), order.end(), [this](std::size_t a, std::size_t b) { return m_times[a] < m_times[b]; });
    std::vector<qint64> offsets(order.size());
    std::vector<double> times(order.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        offsets[i] = m_offsets[order[i]];
        times[i] = m_times[order[i]];
    }
    m_offsets = std::move(offsets);
    m_times = std::move(times);
}

void CsvFileIndex::EstimateResolution()
{
    // The most common step among a few thousand steps taken at spread-out places of the file.
    constexpr std::size_t Run = 512;
    constexpr std::size_t Runs = 8;
    const std::size_t steps = m_times.size() < 2 ? 0 : m_times.size() - 1;
    std::vector<qint64> sample;
    const auto take = [&](std::size_t first, std::size_t count) {
        for (std::size_t i = first; i < first + count; ++i) {
            const qint64 ms = std::llround((m_times[i + 1] - m_times[i]) * 86'400'000.0);
            if (ms > 0)
                sample.push_back(ms);
        }
    };
    if (steps <= Run * Runs) {
        take(0, steps);
    } else {
        for (std::size_t k = 0; k < Runs; ++k)
            take((steps - Run) * k / (Runs - 1), Run);
    }
    std::sort(sample.begin(), sample.end());
    qint64 best = 0;
    std::size_t bestCount = 0;
    for (std::size_t i = 0; i < sample.size();) {
        std::size_t j = i;
        while (j < sample.size() && sample[j] == sample[i])
            ++j;
        if (j - i > bestCount) {
            bestCount = j - i;
            best = sample[i];
        }
        i = j;
    }
    m_dResolution = static_cast<double>(best) / 1000.0;
}

std::pair<qsizetype, qsizetype> CsvFileIndex::Window(double from, double to) const
{
    if (!(from <= to))
        return { 0, 0 };
    const auto first = std::lower_bound(m_times.begin(), m_times.end(), from - Calendar::HalfMillisecond);
    const auto last = std::upper_bound(first, m_times.end(), to + Calendar::HalfMillisecond);
    return { first - m_times.begin(), last - m_times.begin() };
}

qint64 CsvFileIndex::LineNumberAt(qint64 offset)
{
    qint64 start = static_cast<qint64>(m_layout.dataOffset);
    qint64 line = m_layout.dataLine;
    const auto checkpoint = std::upper_bound(m_checkpoints.begin(), m_checkpoints.end(), offset,
        [](qint64 value, const auto& c) { return value < c.first; });
    if (checkpoint != m_checkpoints.begin()) {
        start = std::prev(checkpoint)->first;
        line = std::prev(checkpoint)->second;
    }
    while (start < offset) {
        const std::string_view bytes = m_reader.Bytes(start, static_cast<std::size_t>(offset - start));
        if (bytes.empty())
            break;
        line += std::count(bytes.begin(), bytes.end(), '\n');
        start += static_cast<qint64>(bytes.size());
    }
    return line;
}

bool CsvFileIndex::Read(
    std::span<const int> channels, double from, double to, std::span<MatrixBlock* const> blocks, const LogSink& log)
{
    const std::size_t count = std::min(channels.size(), blocks.size());
    const auto [first, last] = m_bValid ? Window(from, to) : std::pair<qsizetype, qsizetype>(0, 0);
    const auto rows = static_cast<std::size_t>(last - first);
    const int channelCount = static_cast<int>(m_layout.channels.size());
    const auto wanted = [&](std::size_t i) { return blocks[i] && channels[i] >= 1 && channels[i] <= channelCount; };

    // One target per distinct wanted cell, in cell order, which is the order a line is walked in.
    std::vector<int> cells;
    for (std::size_t i = 0; i < count; ++i)
        if (wanted(i))
            cells.push_back(m_layout.timeCells + channels[i] - 1);
    std::sort(cells.begin(), cells.end());
    cells.erase(std::unique(cells.begin(), cells.end()), cells.end());

    // Each target is built column by column, as a block keeps its cells: first the times of
    // the window, then one value per row. A row without a number for it is noted and its time
    // dropped at the end.
    struct Target
    {
        std::vector<double> cells;
        std::vector<std::size_t> skipped;
    };
    std::vector<Target> targets(cells.size());
    for (Target& target : targets) {
        target.cells.reserve(2 * rows);
        FreshMemory::PrepareForWriting(target.cells.data(), 2 * rows * sizeof(double));
        target.cells.insert(target.cells.end(), m_times.begin() + first, m_times.begin() + last);
    }

    std::vector<double> values(cells.size());
    std::vector<Csv::CellValue> kinds(cells.size());
    if (!cells.empty() && rows > 0) {
        // A refill reads the window's lines at once where they stand together in the file.
        const auto [low, high] = std::minmax_element(m_offsets.begin() + first, m_offsets.begin() + last);
        m_reader.SetReadAhead(*high - *low + CsvFileReader::DefaultReadAhead);
    }
    qint64 lostRows = 0;
    for (qsizetype row = first; row < last && !cells.empty(); ++row) {
        const qint64 offset = m_offsets[row];
        // Lines don't overlap: any later line start lies behind this line's end, so the bytes up
        // to the next row's line hold all of it, and its end needn't be searched first.
        const qint64 next = row + 1 < Rows() ? m_offsets[row + 1] : 0;
        std::string_view text;
        bool whole = false;
        if (next > offset && next - offset <= static_cast<qint64>(Csv::MaxLineLength)) {
            text = m_reader.Bytes(offset, static_cast<std::size_t>(next - offset));
            whole = static_cast<qint64>(text.size()) == next - offset || text.find('\n') != std::string_view::npos;
        } else {
            text = m_reader.Line(offset, Csv::MaxLineLength);
            whole = !text.empty() && (text.back() == '\n' || offset + static_cast<qint64>(text.size()) == m_lSize);
        }
        // A line that is gone, or cut off, because the file got shorter since it was indexed.
        if (!whole) {
            if (!m_reader.Error().isEmpty())
                break;
            ++lostRows;
            for (Target& target : targets)
                target.skipped.push_back(static_cast<std::size_t>(row - first));
            continue;
        }
        const std::size_t found = Csv::ReadValues(text, m_layout, cells, values, kinds);
        int badCell = -1;
        for (std::size_t t = 0; t < targets.size(); ++t) {
            const Csv::CellValue kind = t < found ? kinds[t] : Csv::CellValue::Bad;
            if (kind == Csv::CellValue::Number) {
                targets[t].cells.push_back(values[t]);
            } else if (kind == Csv::CellValue::Empty) {
                targets[t].cells.push_back(Csv::NoValue);
            } else {
                targets[t].skipped.push_back(static_cast<std::size_t>(row - first));
                if (badCell < 0)
                    badCell = cells[t];
            }
        }
        if (badCell >= 0 && (m_iReported < MaxReportedLines || !m_bCapNoticed)
            && std::find(m_reportedOffsets.begin(), m_reportedOffsets.end(), m_offsets[row])
                == m_reportedOffsets.end()) {
            // Each line once, however often a window covers it.
            if (m_iReported < MaxReportedLines)
                m_reportedOffsets.push_back(m_offsets[row]);
            const std::string_view line = text.substr(0, text.find('\n'));
            const Csv::ChannelHeader& channel = m_layout.channels[badCell - m_layout.timeCells];
            // The text first: counting the line number reads elsewhere in the file.
            const QString problem = QStringLiteral("no number for \"%1\" in %2; the sample is skipped")
                                        .arg(channel.name, Csv::QuoteCell(line, m_layout.separator, badCell));
            Report(LineNumberAt(offset), problem, log);
        }
    }
    m_reader.Release();
    const QString name = QDir::toNativeSeparators(m_sPath);
    if (!m_reader.Error().isEmpty()) {
        m_sError = m_reader.Error();
        log(3, QStringLiteral("%1: %2").arg(name, m_sError));
        return false;
    }
    if (lostRows > 0)
        log(3,
            QStringLiteral("%1: the file got shorter since it was indexed (%2 bytes instead of %3); %4 lines of the "
                           "window are gone")
                .arg(name)
                .arg(m_reader.End())
                .arg(m_lSize)
                .arg(lostRows));

    std::vector<MatrixBlock*> owners(targets.size(), nullptr);
    for (std::size_t i = 0; i < count; ++i) {
        if (!blocks[i])
            continue;
        if (!wanted(i)) {
            blocks[i]->Reshape(0, 2);
            continue;
        }
        const auto t = static_cast<std::size_t>(
            std::lower_bound(cells.begin(), cells.end(), m_layout.timeCells + channels[i] - 1) - cells.begin());
        if (owners[t]) {
            // A channel asked for twice gets a copy.
            const double* source = owners[t]->Column(0).data();
            blocks[i]->SetArray(owners[t]->Rows(), 2, std::vector<double>(source, source + 2 * owners[t]->Rows()));
            continue;
        }
        Target& target = targets[t];
        std::size_t kept = rows;
        if (!target.skipped.empty()) {
            // Drop the times of the skipped rows and move the values up behind the rest.
            std::size_t write = 0;
            std::size_t next = 0;
            for (std::size_t r = 0; r < rows; ++r) {
                if (next < target.skipped.size() && target.skipped[next] == r)
                    ++next;
                else
                    target.cells[write++] = target.cells[r];
            }
            kept = write;
            std::copy(target.cells.begin() + static_cast<std::ptrdiff_t>(rows), target.cells.end(),
                target.cells.begin() + static_cast<std::ptrdiff_t>(kept));
            target.cells.resize(2 * kept);
        }
        blocks[i]->SetArray(static_cast<qsizetype>(kept), 2, std::move(target.cells));
        owners[t] = blocks[i];
    }
    return true;
}
