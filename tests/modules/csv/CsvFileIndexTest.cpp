// SPDX-License-Identifier: GPL-3.0-or-later
// The CSV file index: lines longer than a read, and files cut short while or after being indexed
// (run in a child process, so that a crash fails only its test).
#include "CsvFileIndex.h"
#include "../ChildProcess.h"
#include "CsvFolder.h"

#include <QFile>

#include <gtest/gtest.h>

namespace {

// A header, the bad line if any, then count lines "2023-01-01 00:00;<i>", all at one time.
QByteArray SameTimeLines(int count, const QByteArray& badLine = QByteArray())
{
    QByteArray text = "timestamp;P\n" + badLine;
    text.reserve(text.size() + count * 24);
    for (int i = 0; i < count; ++i)
        text += "2023-01-01 00:00;" + QByteArray::number(i) + '\n';
    return text;
}

// (that time, 0), (that time, 1), ... one per whole data line in the first bytes of the text.
Samples WholeLines(const QByteArray& text, qsizetype bytes, int linesBeforeData)
{
    Samples samples(static_cast<std::size_t>(text.left(bytes).count('\n') - linesBeforeData));
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = { D(2023, 1, 1), static_cast<double>(i) };
    return samples;
}

CsvFileIndex::LogSink SinkTo(RecordingHandler& log)
{
    return [&log](qint16 level, const QString& text) { log.WriteLog({}, text, {}, level); };
}

// The samples of channel 1 within the window.
Samples ReadChannel1(CsvFileIndex& index, double from, double to, RecordingHandler& log)
{
    const int channels[] = { 1 };
    const MatrixBlockPtr block = MatrixBlock::Create();
    MatrixBlock* const blocks[] = { block.get() };
    EXPECT_TRUE(index.Read(channels, from, to, blocks, SinkTo(log)));
    Samples samples;
    for (qsizetype r = 0; r < block->Rows(); ++r)
        samples.emplace_back(block->At(r, 0), block->At(r, 1));
    return samples;
}

} // namespace

TEST(CsvFileIndexCutShort, AFileCutWhileItIsIndexedGivesItsWholeLinesAndALogLine)
{
    CsvFolder folder;
    // Megabytes, so the cut (at the first bad line, mid-line) comes while most is still unread.
    const QByteArray text = SameTimeLines(600'000, "kaputt;1\n");
    const QString path = folder.Write("L.csv", text);
    const qsizetype cut = text.size() / 2 + 7;
    ASSERT_NE(text.at(cut - 1), '\n');
    EXPECT_TRUE(RunsInChild([&] {
        CsvFileIndex index(path);
        RecordingHandler log;
        index.Build([&](qint16 level, const QString& line) {
            if (log.lines.empty())
                QFile(path).resize(cut);
            log.WriteLog({}, line, {}, level);
        });
        ASSERT_TRUE(index.IsValid());
        const Samples expected = WholeLines(text, cut, 2);
        // The line cut in two is not taken for a shorter number.
        EXPECT_EQ(index.Rows(), static_cast<qsizetype>(expected.size()));
        EXPECT_EQ(log.Count({ "got shorter while it was read" }, 3), 1);
        EXPECT_EQ(ReadChannel1(index, D(2023, 1, 1), D(2023, 1, 1), log), expected);
        EXPECT_EQ(log.lines.size(), 2u) << log.All();
    }));
}

TEST(CsvFileIndexCutShort, AFileCutBetweenIndexAndReadGivesTheLinesItStillHolds)
{
    CsvFolder folder;
    const QByteArray text = SameTimeLines(100'000);
    const QString path = folder.Write("L.csv", text);
    const qsizetype cut = text.size() / 3 + 5;
    ASSERT_NE(text.at(cut - 1), '\n');
    EXPECT_TRUE(RunsInChild([&] {
        CsvFileIndex index(path);
        RecordingHandler log;
        ASSERT_TRUE(index.Build(SinkTo(log)));
        ASSERT_EQ(index.Rows(), 100'000);
        ASSERT_TRUE(QFile(path).resize(cut));
        EXPECT_EQ(ReadChannel1(index, D(2023, 1, 1), D(2023, 1, 1), log), WholeLines(text, cut, 1));
        EXPECT_EQ(log.Count({ "got shorter since it was indexed" }, 3), 1);
        EXPECT_EQ(log.lines.size(), 1u) << log.All();
        // The module builds a new index at its next read.
        EXPECT_FALSE(index.IsCurrent());
    }));
}

TEST(CsvFileIndex, LinesOfAnyLengthAreFoundAndNamedWhereverTheReadsOfTheFileEnd)
{
    // Lines longer than a read: one too long, one just short enough, a bad value behind both
    // (its line number counted across them), and a last line without a line end.
    CsvFolder folder;
    const QByteArray longest = "2023-01-01 00:03;3";
    const QString path = folder.Write("L.csv",
        "timestamp;P\n"
        "2023-01-01 00:00;1\n"
        "2023-01-01 00:01;"
            + QByteArray(3 * 1024 * 1024, '9') + "\n" // 3
            + "2023-01-01 00:02;2\n" + longest
            + QByteArray(static_cast<qsizetype>(Csv::MaxLineLength) - longest.size(), ' ') + "\n" // 5
            + "2023-01-01 00:04;x\n" // 6
            + "2023-01-01 00:05;5");
    CsvFileIndex index(path);
    RecordingHandler log;
    ASSERT_TRUE(index.Build(SinkTo(log)));
    EXPECT_EQ(index.Rows(), 5);
    EXPECT_EQ(ReadChannel1(index, D(2023, 1, 1), D(2023, 1, 2), log),
        (Samples { { D(2023, 1, 1), 1 }, { D(2023, 1, 1, 0, 2), 2 }, { D(2023, 1, 1, 0, 3), 3 },
            { D(2023, 1, 1, 0, 5), 5 } }));
    EXPECT_EQ(log.Count({ "line 3: the line is longer than" }), 1);
    EXPECT_EQ(log.Count({ "line 6: no number for \"P\"" }), 1);
    EXPECT_EQ(log.lines.size(), 2u) << log.All();
    EXPECT_TRUE(index.Error().isEmpty());
}
