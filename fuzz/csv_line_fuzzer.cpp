// SPDX-License-Identifier: GPL-3.0-or-later
// Feeds arbitrary bytes to the CSV line reader, as a header with its lines and as single
// cells, and then as a whole file to the file index, and checks that whatever
// they accept is consistent: cell counts, times, values and the index order.
#include "CsvFileIndex.h"
#include "CsvLineReader.h"

#include "Calendar.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

namespace {

void Check(bool condition)
{
    if (!condition)
        __builtin_trap();
}

void CheckTime(double time)
{
    Check(std::isfinite(time));
    const Calendar::DateParts parts = Calendar::Split(time);
    // Four-digit years, one day more for 24:00 on the last day.
    Check(parts.year >= 0 && parts.year <= 10000);
}

void CheckCells(std::string_view line, char separator)
{
    Csv::CellReader reader(line, separator);
    std::string_view cell;
    int count = 0;
    while (reader.Next(cell)) {
        Check(cell.data() >= line.data() && cell.data() + cell.size() <= line.data() + line.size());
        ++count;
        if (const auto time = Csv::ParseTimestamp(cell))
            CheckTime(*time);
        double value = 0.0;
        if (Csv::ParseNumber(cell, true, value) == Csv::CellValue::Number)
            Check(std::isfinite(value));
    }
    Check(count == Csv::CountCells(line, separator));
    Check(count >= 1);
}

void CheckLines(std::string_view text, const Csv::Layout& layout)
{
    std::vector<int> cells;
    for (int i = 0; i < static_cast<int>(layout.channels.size()); ++i)
        cells.push_back(layout.timeCells + i);
    std::vector<double> values(cells.size());
    std::vector<Csv::CellValue> kinds(cells.size());

    std::size_t pos = layout.dataOffset;
    std::string_view line;
    for (int lines = 0; lines < 200 && Csv::NextLine(text, pos, line); ++lines) {
        CheckCells(line, layout.separator);
        double time = 0.0;
        const Csv::LineCheck check = Csv::CheckLine(line, layout, time);
        if (check == Csv::LineCheck::Ok) {
            CheckTime(time);
            Check(Csv::CountCells(line, layout.separator) >= layout.cellCount);
        } else if (check != Csv::LineCheck::Blank) {
            Check(!Csv::DescribeProblem(check, line, layout).isEmpty());
        }
        // The value reader runs on behind the line; it must stop at its end all the same.
        const std::string_view rest = text.substr(static_cast<std::size_t>(line.data() - text.data()));
        const std::size_t found = Csv::ReadValues(rest, layout, cells, values, kinds);
        Check(found <= cells.size());
        if (check == Csv::LineCheck::Ok)
            Check(found == cells.size());
        for (std::size_t i = 0; i < found; ++i)
            if (kinds[i] == Csv::CellValue::Number)
                Check(std::isfinite(values[i]));
        // It reads what the cell reader splits off, number for number.
        Csv::CellReader reader(line, layout.separator);
        std::string_view cell;
        for (std::size_t i = 0; reader.Next(cell); ++i) {
            if (i < static_cast<std::size_t>(layout.timeCells) || i - layout.timeCells >= found)
                continue;
            const std::size_t k = i - layout.timeCells;
            double value = 0.0;
            const Csv::CellValue kind = Csv::ParseNumber(cell, layout.commaDecimal || reader.WasQuoted(), value);
            Check(kind == kinds[k]);
            Check(kind != Csv::CellValue::Number || value == values[k]);
        }
    }
}

// In memory where there is such a folder.
const QString& ScratchFile()
{
    static const QString path = [] {
        const QString file
            = QDir(QDir("/dev/shm").exists() ? QStringLiteral("/dev/shm") : QDir::tempPath())
                  .filePath(QStringLiteral("csv_line_fuzzer_%1.csv").arg(QCoreApplication::applicationPid()));
        std::atexit([] { QFile::remove(ScratchFile()); });
        return file;
    }();
    return path;
}

void CheckIndex(const QByteArray& bytes)
{
    // A new file each time: rewriting a truncated one makes some file systems flush it on close.
    const QString& path = ScratchFile();
    QFile::remove(path);
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size())
            return;
    }
    CsvFileIndex index(path);
    int logLines = 0;
    const auto log = [&logLines](qint16 level, const QString& text) {
        Check(level >= 1 && level <= 4 && !text.isEmpty());
        ++logLines;
    };
    const bool valid = index.Build(log);
    Check(valid == index.IsValid());
    const std::span<const double> times = index.Times();
    Check(std::is_sorted(times.begin(), times.end()));
    Check(index.Resolution() >= 0.0);
    // Bad lines are logged one by one up to the limit, then once more, then once in all.
    Check(logLines <= CsvFileIndex::MaxReportedLines + 4);
    if (!valid || times.empty())
        return;

    const int channels = static_cast<int>(index.Layout().channels.size());
    std::vector<int> numbers = { 1, channels, channels + 1, 0, 1 };
    std::vector<MatrixBlockPtr> blocks;
    std::vector<MatrixBlock*> targets;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        blocks.push_back(MatrixBlock::Create());
        targets.push_back(blocks.back().get());
    }
    const double from = times[times.size() / 3];
    const double to = times.back();
    const auto [first, last] = index.Window(from, to);
    Check(first <= last && last <= index.Rows());
    // Nobody changes the file meanwhile: the read succeeds.
    Check(index.Read(numbers, from, to, targets, log));
    Check(index.Error().isEmpty());
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const MatrixBlock& block = *blocks[i];
        Check(block.Columns() == 2);
        Check(block.Rows() <= last - first);
        if (numbers[i] < 1 || numbers[i] > channels)
            Check(block.Rows() == 0);
        for (qsizetype r = 0; r < block.Rows(); ++r) {
            Check(block.At(r, 0) >= from && block.At(r, 0) <= to);
            Check(r == 0 || block.At(r, 0) >= block.At(r - 1, 0));
            Check(block.At(r, 1) == Csv::NoValue || std::isfinite(block.At(r, 1)));
        }
    }
    Check(blocks[0]->Rows() == blocks[4]->Rows());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    for (const bool complete : { true, false }) {
        const Csv::HeaderResult header = Csv::ReadHeader(text, complete);
        Check(header.layout.has_value() == header.problem.isEmpty());
        if (header.layout) {
            const Csv::Layout& layout = *header.layout;
            Check(!layout.channels.empty());
            Check(layout.timeCells == 1 || layout.timeCells == 2);
            Check(layout.cellCount == layout.timeCells + static_cast<int>(layout.channels.size()));
            Check(layout.dataOffset <= text.size());
            CheckLines(text, layout);
        }
    }
    const char separators[] = { ';', ',', '\t' };
    CheckCells(text.substr(0, std::min<std::size_t>(text.size(), 4096)), separators[size % 3]);
    CheckIndex(QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
    return 0;
}
