// SPDX-License-Identifier: GPL-3.0-or-later
// A data module for the tests: answers as the script of its registration name says.
//   Sorano.TestModule          a scripted data module
//   Sorano.TestModule.Plain    an object that is no data module
//   Sorano.TestModule.Nothing  no object at all
#include "DataModuleInterface.h"
#include "TestModuleScript.h"

#include <QObject>

#include <stdexcept>

namespace {

namespace S = TestModuleScript;

class TestDataModule : public QObject, public DataModuleInterface
{
    Q_OBJECT
    Q_INTERFACES(DataModuleInterface)
public:
    explicit TestDataModule(const DataModuleRegistration& registration) : m_registration(registration) {}

    void SetMessageHandler(MessageHandlerInterface* handler) override
    {
        Enter("SetMessageHandler");
        m_handler = handler;
    }
    bool HasConfig() override
    {
        Enter("HasConfig");
        return Script().value(S::HasConfig, true).toBool();
    }
    void GetFirstDate(const QString&, double& date) override { date = 45000; }
    void GetLastDate(const QString&, double& date) override { date = 45001; }
    qint32 SelfCheck(qint32& status) override
    {
        Enter("SelfCheck");
        return status = Script().value(S::SelfCheck, 1).toInt();
    }
    qint32 Initialize(const QString&, qint32& status) override
    {
        Enter("Initialize");
        return status = ++m_initCalls <= Script().value(S::InitFailures, 0).toInt() ? -7 : 1;
    }
    qint32 GetChannelOverview(ChannelCollection& channels, qint32& status) override
    {
        Enter("GetChannelOverview");
        for (const QString& id : Script().value(S::Overview, QStringList{"1001", "1002"}).toStringList()) {
            auto channel = std::make_shared<DataMatrix>();
            channel->SetChannelID(id);
            channel->SetChannelName("Channel " + id);
            channels.Add(channel, id);
        }
        return status = 1;
    }
    qint32 GetChannelStructure(QStringList& categories, QStringList& channels, qint32& status) override
    {
        Enter("GetChannelStructure");
        const QVariantMap script = Script();
        categories = script.value(S::Categories, QStringList{"1$Site$$0"}).toStringList();
        channels = script.value(S::Channels, QStringList{"1001$Power$$1$0", "1002$Energy$$1$0"}).toStringList();
        return status = script.value(S::StructureStatus, 1).toInt();
    }
    qint32 GetData(const QString&, ChannelCollection& channels, double, double, qint32& status) override
    {
        channels.AddText("data;900");
        return status = 1;
    }
    Q_INVOKABLE void ShowConfig() override
    {
        Enter("ShowConfig");
        if (Script().value(S::AnnounceOnConfig, false).toBool() && m_handler) {
            qint32 status = 0;
            m_handler->SendMessage("CHANNELS_CHANGED", m_registration.address, status);
        }
    }

private:
    QVariantMap Script() const { return S::Script(m_registration.name); }
    void Enter(const char* operation)
    {
        S::CountCall(m_registration.name, operation);
        if (Script().value(S::Throws).toStringList().contains(operation))
            throw std::runtime_error(std::string(operation) + " failed");
    }

    DataModuleRegistration m_registration;
    MessageHandlerInterface* m_handler = nullptr;
    int m_initCalls = 0;
};

class TestModuleFactory : public QObject, public DataModuleFactory
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID SoranoDataModuleFactory_iid FILE "testmodule.json")
    Q_INTERFACES(DataModuleFactory)
public:
    QObject* CreateModule(const QString& progId, const DataModuleRegistration& registration) override
    {
        S::CountCall(registration.name, "Create");
        if (S::Script(registration.name).value(S::Throws).toStringList().contains("Create"))
            throw std::runtime_error("Create failed");
        if (progId == "Sorano.TestModule")
            return new TestDataModule(registration);
        if (progId == "Sorano.TestModule.Plain")
            return new QObject;
        return nullptr;
    }
};

} // namespace

#include "TestModule.moc"
