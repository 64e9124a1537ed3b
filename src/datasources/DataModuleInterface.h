// SPDX-License-Identifier: GPL-3.0-or-later
// The plug-in boundary to data modules: everything the program ever asks of a module.
//
// A data module is a Qt plug-in whose root object implements DataModuleFactory and whose
// metadata names the ProgIDs it can create, for instance
//     { "ProgIDs": [ "Sorano.SQLite" ] }
// The program registers a module in the settings as "ProgID:address" and creates one module
// object per registration through the factory. Every call comes from the GUI thread.
// Status results: 1 is success, anything else failure.
//
// This header, MessageHandlerInterface and the matrix headers (MatrixBlock.h, DataMatrix.h)
// are all a module needs; they are header-only.
#pragma once

#include "DataMatrix.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QtPlugin>

#include <variant>

// What the program offers a module: named messages to the shell ("CHANNELS_CHANGED" with the
// module's address makes the program forget the module's channels) and lines in its log.
class MessageHandlerInterface
{
public:
    virtual ~MessageHandlerInterface() = default;

    // Sends a named message with one text parameter; status is 1 when it was delivered.
    virtual void SendMessage(const QString& name, const QString& params, qint32& status) = 0;
    // Writes a line into the program's log; level 1 (detail) to 4 (always).
    virtual void WriteLog(const QString& title, const QString& text, const QString& source, qint16 level) = 0;
};

// An ordered collection of channel objects, each under a text key (the channel id), that may
// end in text items: GetData appends one text "...;<resolution in seconds>[;...]".
class ChannelCollection
{
public:
    qsizetype Count() const { return m_items.size(); }

    void Add(DataMatrixPtr channel, const QString& key = QString()) { m_items.append({key, std::move(channel)}); }
    void AddText(const QString& text) { m_items.append({QString(), text}); }

    // The channel at the index, or nothing for a text item or an index out of range.
    DataMatrixPtr Channel(qsizetype index) const
    {
        if (index < 0 || index >= m_items.size())
            return nullptr;
        const DataMatrixPtr* channel = std::get_if<DataMatrixPtr>(&m_items[index].value);
        return channel ? *channel : nullptr;
    }
    // The first channel under the key, or nothing.
    DataMatrixPtr Channel(const QString& key) const
    {
        for (const Item& item : m_items)
            if (item.key == key)
                if (const DataMatrixPtr* channel = std::get_if<DataMatrixPtr>(&item.value))
                    return *channel;
        return nullptr;
    }
    bool IsText(qsizetype index) const
    {
        return index >= 0 && index < m_items.size() && std::holds_alternative<QString>(m_items[index].value);
    }
    // The text item at the index, or "" for a channel or an index out of range.
    QString Text(qsizetype index) const
    {
        if (!IsText(index))
            return QString();
        return std::get<QString>(m_items[index].value);
    }
    QString Key(qsizetype index) const { return index >= 0 && index < m_items.size() ? m_items[index].key : QString(); }

    void Clear() { m_items.clear(); }

private:
    struct Item
    {
        QString key;
        std::variant<DataMatrixPtr, QString> value;
    };
    QList<Item> m_items;
};

class DataModuleInterface
{
public:
    virtual ~DataModuleInterface() = default;

    // Once, right after the module passed its self-check. The handler outlives the module.
    virtual void SetMessageHandler(MessageHandlerInterface* handler) = 0;
    // Whether ShowConfig has a dialog to show.
    virtual bool HasConfig() = 0;
    // Never called; kept so that the slot order stays that of the original interface.
    virtual void Reserved1() {}
    // Earliest and latest sample of one channel as a date (days since 1899-12-30); leaves the
    // date alone when the channel has no samples.
    virtual void GetFirstDate(const QString& channelId, double& date) = 0;
    virtual void GetLastDate(const QString& channelId, double& date) = 0;
    // Anything but 1 makes the module unusable.
    virtual qint32 SelfCheck(qint32& status) = 0;
    // At the first channel request; may be repeated after a failure.
    virtual qint32 Initialize(const QString& param, qint32& status) = 0;
    // One DataMatrix per channel, keyed by its channel id, with ChannelID, ChannelName, Unit
    // and DataType filled and no DataBlock.
    virtual qint32 GetChannelOverview(ChannelCollection& channels, qint32& status) = 0;
    // Category strings "id$name$remark$parent[$kind or path id]" and channel strings
    // "id$name$remark$category$parent channel[$path id]", parents before children.
    virtual qint32 GetChannelStructure(QStringList& categories, QStringList& channels, qint32& status) = 0;
    // Never called; kept so that the slot order stays that of the original interface.
    virtual void Reserved2() {}
    // Fills DataBlock of each channel in the collection (column 0 the time, column 1 the value,
    // a missing sample the block's NoValue) for [from, to], then appends one text item
    // "<module tag>;<native resolution in seconds>". channelList holds the wanted channel ids
    // joined by ";".
    // A channel that was read and has no samples in the window gets an empty block (0 rows,
    // 2 columns). A channel whose samples could not be read (a file that is missing, damaged,
    // locked or unreadable) gets no block at all (SetDataBlock(nullptr)), so that a failure is
    // never taken for a window without samples; the call then returns a status other than 1,
    // and the text item is "<module tag>;<resolution>;<reason>": one human-readable line saying
    // what failed and why, naming the file. The reason may itself hold ";": it is everything
    // after the second ";". Without a failure the text has no third field.
    virtual qint32 GetData(const QString& channelList, ChannelCollection& channels, double from, double to,
                           qint32& status) = 0;
    // The module's configuration dialog. Also declared Q_INVOKABLE by modules: the program
    // calls it by name.
    virtual void ShowConfig() = 0;
};

// Optional: a module that can aggregate samples where they are stored implements this interface
// besides DataModuleInterface (the program finds it with qobject_cast). The program calls it
// instead of GetData when its time grid has steps of a fixed number of whole seconds.
class DataAggregationInterface
{
public:
    virtual ~DataAggregationInterface() = default;

    // As GetData for [from, to], except that the samples of each channel whose DataType is 1 to 7
    // are grouped into steps of stepSeconds seconds, counted from gridStart (a date on a whole
    // second, at or after day 0); a sample belongs to step k when its time, rounded to the
    // millisecond as Calendar::ToMilliseconds does, lies in [gridStart + k * step, gridStart +
    // (k + 1) * step). Samples before gridStart are left out. Each step holding at least one
    // sample (with or without value) gives one row: the step's start and the aggregate of the
    // step's non-missing values by the DataType of the caller's channel object: 1 and 7 the
    // largest, 6 the smallest, 2 and 4 their sum added in order of time, 3 and 5 that sum
    // divided by their count; NoValue when the step holds only missing values. Channels of any
    // other DataType get their samples as GetData gives them. The text item, the resolution (the
    // native one, not the step) and the failure rules are those of GetData.
    virtual qint32 GetAggregatedData(const QString& channelList, ChannelCollection& channels, double from, double to,
                                     double gridStart, qint64 stepSeconds, qint32& status) = 0;
};

// What a registration tells the module it is created for.
struct DataModuleRegistration
{
    QString name;    // the registration's name, as the user sees it
    QString address; // decimal text, unique within the installation
};

// The root object of a module plug-in.
class DataModuleFactory
{
public:
    virtual ~DataModuleFactory() = default;

    // A new module object implementing DataModuleInterface for one of the ProgIDs in the
    // plug-in's metadata, or nothing. The caller owns it.
    virtual QObject* CreateModule(const QString& progId, const DataModuleRegistration& registration) = 0;
};

#define SoranoDataModuleInterface_iid "org.sorano.DataModuleInterface/1.0"
#define SoranoDataModuleFactory_iid "org.sorano.DataModuleFactory/1.0"
#define SoranoDataAggregationInterface_iid "org.sorano.DataAggregationInterface/1.0"
Q_DECLARE_INTERFACE(DataModuleInterface, SoranoDataModuleInterface_iid)
Q_DECLARE_INTERFACE(DataModuleFactory, SoranoDataModuleFactory_iid)
Q_DECLARE_INTERFACE(DataAggregationInterface, SoranoDataAggregationInterface_iid)
