// SPDX-License-Identifier: GPL-3.0-or-later
#include "CsvFolder.h"

#include "Calendar.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

int RecordingHandler::Count(const QStringList& parts) const
{
    int count = 0;
    for (const Line& line : lines)
        if (std::all_of(parts.begin(), parts.end(), [&](const QString& part) { return line.text.contains(part); }))
            ++count;
    return count;
}

QString RecordingHandler::All() const
{
    QString all;
    for (const Line& line : lines)
        all += QString::number(line.level) + " " + line.text + "\n";
    return all;
}

QString CsvFolder::Write(const QString& relative, const QByteArray& content) const
{
    const QString path = Path(relative);
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    const bool written = file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(content) == content.size();
    return written ? path : QString();
}

ModuleOn::ModuleOn(const QString& root)
{
    module.SetMessageHandler(&log);
    module.Initialize(root, status);
}

QString ModuleOn::Id(const QString& file, const QString& channel)
{
    QStringList categories, channels;
    qint32 structureStatus = 0;
    module.GetChannelStructure(categories, channels, structureStatus);
    QString fileId;
    for (const QString& category : categories)
        if (category.section('$', 1, 1) == file)
            fileId = category.section('$', 0, 0);
    for (const QString& entry : channels)
        if (entry.section('$', 3, 3) == fileId && entry.section('$', 1, 1) == channel)
            return entry.section('$', 0, 0);
    return QString();
}

ChannelCollection Read(DataModuleInterface& module, const QStringList& ids, double from, double to)
{
    ChannelCollection channels;
    for (const QString& id : ids) {
        auto channel = std::make_shared<DataMatrix>();
        channel->SetChannelID(id);
        channels.Add(channel, id);
    }
    qint32 status = 0;
    module.GetData(ids.join(';'), channels, from, to, status);
    return channels;
}

Samples SamplesOf(const ChannelCollection& channels, qsizetype index)
{
    Samples samples;
    const DataMatrixPtr channel = channels.Channel(index);
    const MatrixBlockPtr block = channel ? channel->DataBlock() : MatrixBlockPtr();
    for (qsizetype r = 0; block && r < block->Rows(); ++r)
        samples.emplace_back(block->Item(r, 0), block->Item(r, 1));
    return samples;
}

double D(int year, int month, int day, int hour, int minute, double second)
{
    return Calendar::FromParts(year, month, day, hour, minute, second);
}
