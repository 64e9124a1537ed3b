// SPDX-License-Identifier: GPL-3.0-or-later
// The binding of one registered data module to the program: creation and self-check, lazy
// initialisation, the channel cache, channel trees and the structure document of path ids.
#pragma once

#include "DataModuleInterface.h"
#include "XmlTree.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QString>

#include <memory>

class QTreeWidget;

class ModuleBox
{
public:
    ModuleBox();
    // Releases the channel cache, the structure document and the module, in that order.
    ~ModuleBox();

    ModuleBox(const ModuleBox&) = delete;
    ModuleBox& operator=(const ModuleBox&) = delete;

    // The registration's name, shown to the user.
    const QString& Name() const { return m_sName; }
    void SetName(const QString& name) { m_sName = name; }
    // The ProgID the module is created from.
    const QString& Object() const { return m_sObject; }
    void SetObject(const QString& object) { m_sObject = object; }
    // Decimal text of the module's number: key of the box, ModuleAddress of its channels and
    // tag of its tree nodes.
    const QString& Address() const { return m_sAddress; }
    void SetAddress(const QString& address) { m_sAddress = address; }
    // Passed to Initialize.
    const QString& Param() const { return m_sParam; }
    void SetParam(const QString& param) { m_sParam = param; }

    // Nothing until BindDMI succeeded.
    DataModuleInterface* DataModule() const { return m_module; }
    QObject* DataModuleObject() const { return m_moduleObject.get(); }
    // Takes over a module object; one that is no data module leaves the box without one.
    void SetDataModule(std::unique_ptr<QObject> object);

    // The cached channel under the key, the first one for an empty key; nothing when the cache
    // is empty or has no such key.
    DataMatrixPtr Channel(const QString& key = QString()) const;
    // The cached channels in the order the module delivered them.
    const QList<DataMatrixPtr>& Channels() const { return m_channels; }

    bool IsInit() const { return m_bIsInit; }

    // Creates the module from Object and runs its self-check: 0 bound, -1 no Object, -2 not
    // creatable, -3 self-check failed (the module is released again).
    qint32 BindDMI();
    // Initialises the module with Param: 1 done, 0 without a module, else the module's status.
    qint32 Init();

    // Fills the channel cache and, with a tree, adds the module's categories and channels
    // under parentKey (or at the root level). maxDepth -1 is no limit. 1 success, -1 no
    // usable module, -2 overview failed, -3 structure failed.
    qint32 GetChannelList(QTreeWidget* tree, const QString& parentKey = QString(), bool withChannels = true,
        int maxDepth = -1, bool foldersOnly = false);
    // Forgets the channels and the structure document; the next GetChannelList asks again.
    void ResetChannelList();

    // Builds the structure document: 1 built, -1 no channels, -2 structure failed, -3 a
    // number field of the structure is no number.
    qint32 InitializeStructure();
    // The document's root "module-box", or a null node while there is none.
    XmlNode StructureRoot() const;

    // The path ids from the top category down to the channel, as "4\12\7"; "" when the
    // channel is unknown or the structure cannot be built.
    QString GetPathFromID(qint32 channelId);
    // The channel id at the path below the category: 0 path not found, -1 no structure, -2 no
    // such category, -3 the path ends on a category.
    qint32 GetIDFromPath(qint32 categoryId, const QString& path);

    QString GetModuleKey() const;
    QString GetCategorieKey(qint32 id) const;
    QString GetChannelKey(const QString& id) const;

    // Opens the module's configuration dialog, calling ShowConfig by name. False when there
    // is no module, it has no invokable ShowConfig, or it failed.
    bool ShowConfig();
    // Whether the module says it has a configuration dialog; false on any failure.
    bool HasConfig();

    // The module's data calls with its failures trapped: a module that throws fetches nothing
    // and knows no dates (0).
    qint32 GetData(const QString& channelList, ChannelCollection& channels, double from, double to);
    // Whether the module aggregates samples where they are stored (DataAggregationInterface).
    bool CanAggregate() const;
    // GetAggregatedData of the module; -1 when it has no such call or throws.
    qint32 GetAggregatedData(const QString& channelList, ChannelCollection& channels, double from, double to,
        double gridStart, qint64 stepSeconds);
    double GetFirstDate(const QString& channelId);
    double GetLastDate(const QString& channelId);

private:
    qint32 BuildStructure(const QStringList& categories, const QStringList& channels);

    QString m_sName;
    QString m_sObject;
    QString m_sAddress;
    QString m_sParam;
    std::unique_ptr<QObject> m_moduleObject;
    DataModuleInterface* m_module = nullptr;
    bool m_bIsInit = false;
    QList<DataMatrixPtr> m_channels;
    QHash<QString, qsizetype> m_channelIndex;
    std::unique_ptr<XmlDocument> m_structure;
};

using ModuleBoxPtr = std::shared_ptr<ModuleBox>;

// Reading what GetData returned: the channels come first, and a text item
// "...;<resolution in seconds>[;...]" ends the collection.
// The resolution in seconds from the last item's second ";"-field; 0 when the last item is no
// text, has no second field, or that field does not start with a number.
double GetDataResolution(const ChannelCollection& channels);
// Why the module could not read some of the channels: everything after the second ";" of the
// last item (it may hold ";" itself); "" when the last item is no text or has no third field.
QString GetDataError(const ChannelCollection& channels);
// The number of channel items: all items but the last, which is the resolution text.
qsizetype GetDataChannelCount(const ChannelCollection& channels);
