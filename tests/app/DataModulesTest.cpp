// SPDX-License-Identifier: GPL-3.0-or-later
#include "Globals.h"
#include "LogCapture.h"
#include "Project.h"
#include "QtPrinters.h"
#include "RegistryKey.h"
#include "TestModuleScript.h"
#include "frm_DataModules.h"
#include "frm_Main.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QTimer>

#include <utility>

#include <gtest/gtest.h>

namespace {

namespace S = TestModuleScript;

const QString KeyDataModules = QStringLiteral("Software\\HARVOLD\\DataModules");
const QString Source = QStringLiteral("Project.LoadDataModules");

class ProjectDataModulesTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        qputenv("SORANO_MODULE_PATH", SORANO_TEST_MODULE_DIR);
        m_savedWhoAmI = std::exchange(g_sWhoAmI, QString());
    }
    void TearDown() override { g_sWhoAmI = m_savedWhoAmI; }

    void Register(const QString& name, const QString& data, const QVariantMap& script = {})
    {
        S::SetScript(name, script);
        roots.SetMachine(KeyDataModules, name, data);
    }

    static QStringList Addresses(const Project& project)
    {
        QStringList addresses;
        for (const ModuleBoxPtr& box : project.DataModules())
            addresses << box->Address() + "=" + box->Name();
        return addresses;
    }

    // Runs the command and tells whether it showed the data-modules dialog, which is closed.
    static bool ShowsDialog(const std::function<void()>& command)
    {
        bool shown = false;
        QTimer probe;
        probe.setInterval(10);
        QObject::connect(&probe, &QTimer::timeout, [&] {
            if (auto* dialog = qobject_cast<frm_DataModules*>(QApplication::activeModalWidget())) {
                shown = true;
                dialog->reject();
            }
        });
        probe.start();
        command();
        return shown;
    }

    TempSettings roots;

private:
    QString m_savedWhoAmI;
};

TEST_F(ProjectDataModulesTest, RegistrationsAreBoundInOrderAndMalformedOrDuplicateOnesSkipped)
{
    Register("Alpha", "Sorano.TestModule:1");
    Register("Beta", "A:1:2");
    Register("Delta", "Sorano.TestModule:1");
    Register("Eps", "Sorano.TestModule:2");
    Register("Gamma", "Sorano.TestModule");
    Register("Kappa", "Sorano.TestModule:4", {{S::SelfCheck, 0}});
    Register("Zeta", "No.Such.Module:5");
    LogCapture log(roots);
    Project project;
    EXPECT_EQ(project.LoadDataModules(), 0);

    EXPECT_EQ(Addresses(project), (QStringList{"1=Alpha", "2=Eps"}));
    EXPECT_EQ(log.From(Source), (QStringList{
                                    "read data-module entry - Configuration for data-module Alpha = "
                                    "Sorano.TestModule:1 read.",
                                    "read data-module entry - Configuration for data-module Beta = A:1:2 read.",
                                    "invalid module-registration - Invalid Module Registration Beta = A:1:2.",
                                    "read data-module entry - Configuration for data-module Delta = "
                                    "Sorano.TestModule:1 read.",
                                    "duplicate module-address - Data-module Delta = Sorano.TestModule:1 skipped: "
                                    "address 1 is already used by Alpha.",
                                    "read data-module entry - Configuration for data-module Eps = "
                                    "Sorano.TestModule:2 read.",
                                    "read data-module entry - Configuration for data-module Gamma = "
                                    "Sorano.TestModule read.",
                                    "invalid module-registration - Invalid Module Registration Gamma = "
                                    "Sorano.TestModule.",
                                    "read data-module entry - Configuration for data-module Kappa = "
                                    "Sorano.TestModule:4 read.",
                                    "read data-module entry - Configuration for data-module Zeta = "
                                    "No.Such.Module:5 read.",
                                }))
        << log.Dump();
    // Only bound modules get the handler; the duplicate is never created.
    EXPECT_EQ(S::Calls("Alpha", "SetMessageHandler"), 1);
    EXPECT_EQ(S::Calls("Eps", "SetMessageHandler"), 1);
    EXPECT_EQ(S::Calls("Kappa", "SetMessageHandler"), 0);
    EXPECT_EQ(S::Calls("Delta", "Create"), 0);
    EXPECT_EQ(log.From("ModuleBox.BindDMI").size(), 2) << log.Dump();
}

TEST_F(ProjectDataModulesTest, MissingKeyIsLoggedAndLeavesNoModules)
{
    LogCapture log(roots);
    Project project;
    EXPECT_EQ(project.LoadDataModules(), -1);
    EXPECT_EQ(project.DataModules().Count(), 0);
    EXPECT_EQ(log.From(Source), QStringList{"error loading data-modules - Error opening registry key "
                                            "Software\\HARVOLD\\DataModules."});
}

TEST_F(ProjectDataModulesTest, InitLoadsTheModulesAndTerminateReleasesThem)
{
    Register("Meter", "Sorano.TestModule:7", {{S::Throws, QStringList{"SetMessageHandler"}}});
    Project project;
    ASSERT_EQ(project.Init(), 0);
    ASSERT_EQ(project.DataModules().Count(), 1);
    const ModuleBoxPtr box = project.DataModules().Item("7");
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->Name(), "Meter");
    const QPointer<QObject> module = box->DataModuleObject();

    EXPECT_TRUE(project.Terminate(false));
    EXPECT_EQ(project.DataModules().Count(), 0);
    EXPECT_FALSE(module.isNull()); // a document may still hold the box
    EXPECT_EQ(box.use_count(), 1);
}

TEST_F(ProjectDataModulesTest, ChannelsChangedResetsTheCacheOfThatModuleOnly)
{
    Register("Announcer", "Sorano.TestModule:1", {{S::AnnounceOnConfig, true}});
    Register("Other", "Sorano.TestModule:2");
    Project project;
    ASSERT_EQ(project.LoadDataModules(), 0);
    const ModuleBoxPtr announcer = project.DataModules().Item("1");
    const ModuleBoxPtr other = project.DataModules().Item("2");
    ASSERT_TRUE(announcer && other);
    announcer->GetChannelList(nullptr);
    other->GetChannelList(nullptr);

    for (const QString address : {"9", "", "01"})
        project.MsgHandler()->Send("CHANNELS_CHANGED", address);
    EXPECT_NE(announcer->Channel(""), nullptr);
    EXPECT_NE(other->Channel(""), nullptr);

    project.MsgHandler()->Send("CHANNELS_CHANGED", "2");
    EXPECT_NE(announcer->Channel(""), nullptr);
    EXPECT_EQ(other->Channel(""), nullptr);

    // The module announces through the handler it was given.
    announcer->ShowConfig();
    EXPECT_EQ(announcer->Channel(""), nullptr);
    announcer->GetChannelList(nullptr);
    EXPECT_EQ(S::Calls("Announcer", "GetChannelOverview"), 2);
}

TEST_F(ProjectDataModulesTest, NewMeasuringIdIsTheLoggerOfTheFirstChannelAndKept)
{
    {
        Project none;
        ASSERT_EQ(none.LoadDataModules(), -1);
        EXPECT_EQ(none.GetNewMeasuringID(), "") << "no module, nothing to ask";
    }
    Register("First", "Sorano.TestModule:1", {{S::Overview, QStringList{"4711#3", "4711#4"}}});
    Register("Second", "Sorano.TestModule:2", {{S::Overview, QStringList{"815#1"}}});
    {
        Project project;
        ASSERT_EQ(project.LoadDataModules(), 0);
        EXPECT_EQ(project.GetNewMeasuringID(), "4711");
        S::SetScript("First", {{S::Overview, QStringList{"9#9"}}});
        EXPECT_EQ(project.GetNewMeasuringID(), "4711") << "found once, kept";
        EXPECT_EQ(S::Calls("First", "GetChannelOverview"), 0);
        EXPECT_EQ(S::Calls("Second", "GetChannelOverview"), 0) << "only the first module is asked";
    }
    S::SetScript("First", {{S::Overview, QStringList{}}});
    Project empty;
    ASSERT_EQ(empty.LoadDataModules(), 0);
    EXPECT_EQ(empty.GetNewMeasuringID(), "000");
    S::SetScript("First", {{S::Overview, QStringList{"12#1"}}});
    EXPECT_EQ(empty.GetNewMeasuringID(), "000") << "kept until the program ends";
}

TEST_F(ProjectDataModulesTest, EditionDecidesHowModulesAreConfigured)
{
    const struct
    {
        const char* whoAmI;
        QStringList names;
        bool dialog;
        QList<int> showConfigCalls; // per name
    } cases[] = {
        {"sorano", {"Solo"}, false, {1}},
        {"sorano", {"QUANDEL", "Other"}, true, {0, 0}},
        {"talven", {"Solo"}, false, {0}},
        {"talven", {"QUANDEL", "Other"}, false, {1, 0}},
        {"", {"Solo"}, false, {0}},
        {"", {"QUANDEL", "Other"}, false, {0, 0}},
    };
    for (const auto& c : cases) {
        RegistryKey().DeleteKey(Hive::LocalMachine, KeyDataModules);
        for (int i = 0; i < c.names.size(); ++i)
            Register(c.names[i], "Sorano.TestModule:" + QString::number(i + 1));
        g_sWhoAmI = c.whoAmI;
        Project project;
        ASSERT_EQ(project.LoadDataModules(), 0);
        ASSERT_EQ(project.DataModules().Count(), c.names.size());

        EXPECT_EQ(ShowsDialog([&] { project.ConfigureDataModules(); }), c.dialog) << c.whoAmI;
        for (int i = 0; i < c.names.size(); ++i)
            EXPECT_EQ(S::Calls(c.names[i], "ShowConfig"), c.showConfigCalls[i])
                << c.whoAmI << " " << c.names[i].toStdString();
    }
}

TEST_F(ProjectDataModulesTest, ExtrasMenuConfiguresTheModules)
{
    Register("Solo", "Sorano.TestModule:1");
    g_sWhoAmI = "sorano";
    Project project;
    ASSERT_EQ(project.Init(), 0);
    QMenuBar* bar = project.MainWindow()->menuBar();
    auto* extras = bar->findChild<QMenu*>("mnuExtras");
    ASSERT_NE(extras, nullptr);
    auto* config = project.MainWindow()->findChild<QAction*>("mnuExtrasConfig");
    ASSERT_NE(config, nullptr);
    EXPECT_TRUE(extras->actions().contains(config));
    config->trigger();
    EXPECT_EQ(S::Calls("Solo", "ShowConfig"), 1);
}

} // namespace
