// SPDX-License-Identifier: GPL-3.0-or-later
// Fixtures of the CSV module tests: a folder tree in a temporary directory, a message handler
// that records what a module sends, and short ways to ask a module for data.
#pragma once

#include "CsvDataModule.h"
#include "QtPrinters.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

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
    int Count(const QStringList& parts) const;
    QString All() const; // every text, one per line, for failure messages

    std::vector<Line> lines;
    std::vector<std::pair<QString, QString>> messages;
};

class CsvFolder
{
public:
    QString Root() const { return m_dir.path(); }
    QString Path(const QString& relative) const { return m_dir.filePath(relative); }
    // Writes the file, making its folders; returns its path.
    QString Write(const QString& relative, const QByteArray& content) const;

private:
    QTemporaryDir m_dir;
};

// A module reading a folder (given as Initialize's param), with its handler.
struct ModuleOn
{
    explicit ModuleOn(const QString& root);
    // The id of the channel of that name in the file of that name (without ".csv").
    QString Id(const QString& file, const QString& channel);

    RecordingHandler log;
    CsvDataModule module { DataModuleRegistration { "Logger", "7" } };
    qint32 status = 0;
};

using Samples = std::vector<std::pair<double, double>>;

// GetData for the ids; the collection holds the channels in order and then the text item.
ChannelCollection Read(DataModuleInterface& module, const QStringList& ids, double from, double to);
Samples SamplesOf(const ChannelCollection& channels, qsizetype index);

double D(int year, int month, int day, int hour = 0, int minute = 0, double second = 0.0);
