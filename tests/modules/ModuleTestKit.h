// SPDX-License-Identifier: GPL-3.0-or-later
// Shared by the data module tests: a recording message handler and GetData as the program calls it.
#pragma once

#include "DataModuleInterface.h"
#include "QtPrinters.h"

#include <algorithm>
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
