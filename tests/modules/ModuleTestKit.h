// SPDX-License-Identifier: GPL-3.0-or-later
// Shared by the data module tests: a recording message handler, the interface's calls as the program
// makes them, and the contracts every data module keeps (windows, periods, unusable sources).
#pragma once

#include "DataModuleInterface.h"
#include "QtPrinters.h"

#include <QApplication>
#include <QDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <utility>
#include <vector>

class RecordingHandler : public MessageHandlerInterface
{
public:
    struct Line
    {
        QString text;
        qint16 level;
    };

    void SendMessage(const QString& name, const QString& params, qint32& status) override
    {
        messages.emplace_back(name, params);
        status = 1;
    }
    void WriteLog(const QString&, const QString& text, const QString&, qint16 level) override
    {
        lines.push_back({ text, level });
    }
    // Log lines at minLevel or above whose text holds every one of the parts.
    int Count(const QStringList& parts, qint16 minLevel = 0) const
    {
        return static_cast<int>(std::count_if(lines.begin(), lines.end(), [&](const Line& line) {
            return line.level >= minLevel && std::all_of(parts.begin(), parts.end(), [&](const QString& part) {
                return line.text.contains(part);
            });
        }));
    }
    // Every line with its level, for failure messages.
    std::string All() const
    {
        std::string all;
        for (const Line& line : lines)
            all += std::to_string(line.level) + " " + line.text.toStdString() + "\n";
        return all;
    }

    std::vector<Line> lines;
    std::vector<std::pair<QString, QString>> messages;
};

// A collection as the program passes it: one channel object per id, keyed by the id.
inline ChannelCollection Request(const QStringList& ids)
{
    ChannelCollection channels;
    for (const QString& id : ids) {
        auto channel = std::make_shared<DataMatrix>();
        channel->SetChannelID(id);
        channels.Add(channel, id);
    }
    return channels;
}

// GetData for the ids joined by ";": the channels in order, then the text item.
inline ChannelCollection Read(
    DataModuleInterface& module, const QStringList& ids, double from, double to, qint32* statusOut = nullptr)
{
    ChannelCollection channels = Request(ids);
    qint32 status = 0;
    module.GetData(ids.join(';'), channels, from, to, status);
    if (statusOut)
        *statusOut = status;
    return channels;
}

using Samples = std::vector<std::pair<double, double>>;

inline Samples SamplesOf(const ChannelCollection& channels, qsizetype index)
{
    Samples samples;
    const DataMatrixPtr channel = channels.Channel(index);
    const MatrixBlockPtr block = channel ? channel->DataBlock() : MatrixBlockPtr();
    for (qsizetype r = 0; block && r < block->Rows(); ++r)
        samples.emplace_back(block->Item(r, 0), block->Item(r, 1));
    return samples;
}

// The rows of every channel's block, -1 for a channel without one (its samples could not be read).
inline std::vector<qsizetype> BlockRows(const ChannelCollection& channels)
{
    std::vector<qsizetype> rows;
    for (qsizetype i = 0; i < channels.Count(); ++i)
        if (const DataMatrixPtr channel = channels.Channel(i))
            rows.push_back(channel->DataBlock() ? channel->DataBlock()->Rows() : -1);
    return rows;
}

// The overview as "id name [unit] type", one line a channel.
inline QStringList Overview(DataModuleInterface& module, qint32* result = nullptr)
{
    ChannelCollection overview;
    qint32 status = 0;
    const qint32 answer = module.GetChannelOverview(overview, status);
    if (result)
        *result = answer;
    QStringList lines;
    for (qsizetype i = 0; i < overview.Count(); ++i)
        if (const DataMatrixPtr channel = overview.Channel(i))
            lines << QString("%1 %2 [%3] %4")
                         .arg(channel->ChannelID(), channel->ChannelName(), channel->Unit())
                         .arg(channel->DataType());
    return lines;
}

// GetFirstDate and GetLastDate of the channel, each starting from untouched.
inline std::pair<double, double> Period(DataModuleInterface& module, const QString& id, double untouched = -7.0)
{
    std::pair<double, double> period { untouched, untouched };
    module.GetFirstDate(id, period.first);
    module.GetLastDate(id, period.second);
    return period;
}

// The channel holds count samples, step apart from t0, of valueAt(k). Both bounds of a window are
// inclusive, and a window without samples gives an empty block; the period runs from the first
// sample to the last.
inline void CheckWindows(DataModuleInterface& module, const QString& id, double t0, double step, int count,
    const std::function<double(int)>& valueAt)
{
    const double second = 1.0 / 86400.0, last = count - 1;
    const struct
    {
        const char* name;
        double from, to;
        int first, rows;
    } cases[] = {
        { "bounds on samples", t0 + step, t0 + 6 * step, 1, 6 },
        { "bounds a second inside", t0 + step + second, t0 + 6 * step - second, 2, 4 },
        // Times count to the millisecond: bounds microseconds off the samples still take them.
        { "bounds microseconds inside", t0 + step + 1e-10, t0 + 6 * step - 1e-10, 1, 6 },
        { "one sample", t0 + last * step, t0 + last * step, count - 1, 1 },
        { "between samples", t0 + 2.25 * step, t0 + 2.75 * step, 0, 0 },
        { "from after to", t0 + 6 * step, t0 + step, 0, 0 },
        { "after the data", t0 + count * step, t0 + 30, 0, 0 },
        { "not a number", std::nan(""), t0 + 1, 0, 0 },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        qint32 status = 0;
        const ChannelCollection data = Read(module, { id }, c.from, c.to, &status);
        EXPECT_EQ(status, 1);
        const MatrixBlockPtr block = data.Channel(0)->DataBlock();
        ASSERT_TRUE(block);
        EXPECT_EQ(block->Columns(), 2);
        EXPECT_EQ(block->NoValue(), -1e300);
        const Samples got = SamplesOf(data, 0);
        ASSERT_EQ(got.size(), static_cast<size_t>(c.rows));
        for (int i = 0; i < c.rows; ++i) {
            EXPECT_NEAR(got[i].first, t0 + (c.first + i) * step, 1e-9) << i;
            EXPECT_EQ(got[i].second, valueAt(c.first + i)) << i;
        }
    }
    const auto [first, lastDate] = Period(module, id);
    EXPECT_NEAR(first, t0, 1e-9);
    EXPECT_NEAR(lastDate, t0 + last * step, 1e-9);
}

// A module whose source can't be used: every call gives the status, no channels, no block but a
// text starting with the reason after the resolution, and leaves the dates untouched.
inline void CheckUnusable(DataModuleInterface& module, qint32 expected, const QString& kind, const QString& reason)
{
    qint32 overviewStatus = 1, structureStatus = 1, dataStatus = 1;
    QStringList categories, channels;
    const QStringList overview = Overview(module, &overviewStatus);
    module.GetChannelStructure(categories, channels, structureStatus);
    const ChannelCollection data = Read(module, { "1#1" }, 0, 1e6, &dataStatus);
    EXPECT_EQ(QList<qint32>({ overviewStatus, structureStatus, dataStatus }), QList<qint32>(3, expected));
    EXPECT_EQ(overview.size() + categories.size() + channels.size(), 0);
    EXPECT_EQ(BlockRows(data), std::vector<qsizetype> { -1 });
    EXPECT_TRUE(data.Text(1).startsWith(kind + ";0;" + reason)) << data.Text(1).toStdString();
    EXPECT_EQ(Period(module, "1#1", -3.0), std::make_pair(-3.0, -3.0));
}

// Opens the module's configuration dialog by name, as the program does, enters the text in its
// path field and clicks the button; returns what the field showed first.
inline QString RunConfig(QObject& module, const char* field, const QString& entry, const char* button)
{
    QString shown = "(no dialog)";
    QTimer::singleShot(0, [&] {
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        auto* edit = dialog ? dialog->findChild<QLineEdit*>(field) : nullptr;
        auto* click = dialog ? dialog->findChild<QPushButton*>(button) : nullptr;
        if (edit && click) {
            shown = edit->text();
            edit->setText(entry);
            click->click();
        } else if (dialog) {
            dialog->reject();
        }
    });
    QMetaObject::invokeMethod(&module, "ShowConfig");
    return shown;
}
