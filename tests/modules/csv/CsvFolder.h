// SPDX-License-Identifier: GPL-3.0-or-later
// Fixtures of the CSV module tests: a folder tree, a recording message handler, short reads.
#pragma once

#include "Calendar.h"
#include "CsvDataModule.h"
#include "QtPrinters.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <algorithm>
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
    // Log lines whose text holds every one of the parts.
    int Count(const QStringList& parts) const
    {
        return static_cast<int>(std::count_if(lines.begin(), lines.end(), [&](const Line& line) {
            return std::all_of(
                parts.begin(), parts.end(), [&](const QString& part) { return line.text.contains(part); });
        }));
    }
    // Every text, one per line, for failure messages.
    std::string All() const
    {
        QString all;
        for (const Line& line : lines)
            all += QString::number(line.level) + " " + line.text + "\n";
        return all.toStdString();
    }

    std::vector<Line> lines;
    std::vector<std::pair<QString, QString>> messages;
};

class CsvFolder
{
public:
    QString Root() const { return m_dir.path(); }
    QString Path(const QString& relative) const { return m_dir.filePath(relative); }
    // Writes the file, making its folders; returns its path.
    QString Write(const QString& relative, const QByteArray& content) const
    {
        QDir().mkpath(QFileInfo(Path(relative)).absolutePath());
        QFile file(Path(relative));
        const bool written
            = file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(content) == content.size();
        return written ? Path(relative) : QString();
    }

private:
    QTemporaryDir m_dir;
};

// A module reading a folder (given as Initialize's param), with its handler.
struct ModuleOn
{
    explicit ModuleOn(const QString& root)
    {
        module.SetMessageHandler(&log);
        module.Initialize(root, status);
    }
    // The id of the channel of that name in the file of that name (without ".csv").
    QString Id(const QString& file, const QString& channel)
    {
        QStringList categories, channels;
        qint32 structureStatus = 0;
        module.GetChannelStructure(categories, channels, structureStatus);
        const QString fileId = categories.filter("$" + file + "$").value(0).section('$', 0, 0);
        for (const QString& entry : channels)
            if (entry.section('$', 3, 3) == fileId && entry.section('$', 1, 1) == channel)
                return entry.section('$', 0, 0);
        return QString();
    }

    RecordingHandler log;
    CsvDataModule module { DataModuleRegistration { "Logger", "7" } };
    qint32 status = 0;
};

using Samples = std::vector<std::pair<double, double>>;

// GetData for the ids; the collection holds the channels in order and then the text item.
inline ChannelCollection Read(
    DataModuleInterface& module, const QStringList& ids, double from, double to, qint32* statusOut = nullptr)
{
    ChannelCollection channels;
    for (const QString& id : ids) {
        auto channel = std::make_shared<DataMatrix>();
        channel->SetChannelID(id);
        channels.Add(channel, id);
    }
    qint32 status = 0;
    module.GetData(ids.join(';'), channels, from, to, status);
    if (statusOut)
        *statusOut = status;
    return channels;
}

inline Samples SamplesOf(const ChannelCollection& channels, qsizetype index)
{
    Samples samples;
    const DataMatrixPtr channel = channels.Channel(index);
    const MatrixBlockPtr block = channel ? channel->DataBlock() : MatrixBlockPtr();
    for (qsizetype r = 0; block && r < block->Rows(); ++r)
        samples.emplace_back(block->Item(r, 0), block->Item(r, 1));
    return samples;
}

inline double D(int year, int month, int day, int hour = 0, int minute = 0, double second = 0.0)
{
    return Calendar::FromParts(year, month, day, hour, minute, second);
}
