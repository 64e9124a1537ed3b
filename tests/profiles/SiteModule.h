// SPDX-License-Identifier: GPL-3.0-or-later
// A small site for the wizard tests: "Site" with the halls "Hall A" (channels L#1 "Power",
// L#2 "Power factor") and "Hall B" (channel M#1 "Power"), samples from 1 Feb to 1 Mar 2009.
// A module made to fail lists no channels, as one whose database file is gone.
#pragma once

#include "Calendar.h"
#include "DataModuleInterface.h"
#include "ModuleBox.h"

#include <QObject>
#include <QTreeWidget>

#include <memory>

class SiteModule : public QObject, public DataModuleInterface
{
    Q_OBJECT
    Q_INTERFACES(DataModuleInterface)

public:
    void SetMessageHandler(MessageHandlerInterface*) override { }
    bool HasConfig() override { return false; }
    void GetFirstDate(const QString&, double& date) override { date = Calendar::FromParts(2009, 2, 1); }
    void GetLastDate(const QString&, double& date) override { date = Calendar::FromParts(2009, 3, 1); }
    qint32 SelfCheck(qint32& status) override { return status = 1; }
    qint32 Initialize(const QString&, qint32& status) override { return status = failing ? 7 : 1; }
    qint32 GetChannelOverview(ChannelCollection& channels, qint32& status) override
    {
        if (failing)
            return status = 7;
        for (const char* id : { "L#1", "L#2", "M#1" }) {
            auto channel = std::make_shared<DataMatrix>();
            channel->SetChannelID(id);
            channel->SetChannelName(id);
            channel->SetDataType(3);
            channels.Add(channel, id);
        }
        return status = 1;
    }
    qint32 GetChannelStructure(QStringList& categories, QStringList& channels, qint32& status) override
    {
        categories = QStringList { "1$Site$$0", "2$Hall A$$1", "3$Hall B$$1" };
        channels = QStringList { "L#1$Power$$2$0", "L#2$Power factor$$2$0", "M#1$Power$$3$0" };
        return status = 1;
    }
    qint32 GetData(const QString&, ChannelCollection& channels, double, double, qint32& status) override
    {
        channels.AddText("SITE;900");
        return status = 1;
    }
    void ShowConfig() override { }
    bool failing = false;
};

// A box with a site module under the address.
inline ModuleBoxPtr MakeSiteBox(const QString& name, const QString& address, SiteModule** module = nullptr)
{
    auto box = std::make_shared<ModuleBox>();
    box->SetName(name);
    box->SetAddress(address);
    auto site = std::make_unique<SiteModule>();
    if (module)
        *module = site.get();
    box->SetDataModule(std::move(site));
    return box;
}

// The node with the text in the tree, or its further occurrences.
inline QTreeWidgetItem* Node(QTreeWidget* tree, const QString& text, int occurrence = 0)
{
    const QList<QTreeWidgetItem*> found = tree->findItems(text, Qt::MatchExactly | Qt::MatchRecursive);
    return found.size() > occurrence ? found.at(occurrence) : nullptr;
}
