// SPDX-License-Identifier: GPL-3.0-or-later
// The project: caption and status messages, binding the registered data modules, and the extras menu.
#include "Project.h"
#include "Globals.h"
#include "LogCapture.h"
#include "QtPrinters.h"
#include "RegistryKey.h"
#include "ResStrings.h"
#include "TestModuleScript.h"
#include "frm_DataModules.h"
#include "frm_Main.h"

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QProgressBar>
#include <QTimer>

#include <gtest/gtest.h>

namespace {

namespace S = TestModuleScript;

const QString KeyDataModules = QStringLiteral("Software\\HARVOLD\\DataModules");

class ProjectTest : public ::testing::Test
{
protected:
    void SetUp() override { qputenv("SORANO_MODULE_PATH", SORANO_TEST_MODULE_DIR); }
    void TearDown() override
    {
        g_sWhoAmI.clear();
        QLocale::setDefault(QLocale::c());
    }
    void Register(const QString& name, const QString& data, const QVariantMap& script = {})
    {
        S::SetScript(name, script);
        roots.SetMachine(KeyDataModules, name, data);
    }

    TempSettings roots;
};

TEST_F(ProjectTest, CaptionIsTheConfiguredNameAndMessagesSetTheStatusTextAndTheProgress)
{
    roots.SetMachine("Software\\HARVOLD\\Sorano", "ApplicationName", "Lastgang Viewer");
    Project project;
    EXPECT_EQ(project.Init(), -1) << "started, but without an add-ins key";
    frm_Main& window = *project.MainWindow();
    EXPECT_EQ(window.windowTitle(), "Lastgang Viewer") << "the configured name is the caption";
    QProgressBar* bar = window.ProgressBar();
    const auto send = [&](const QString& name, const QString& params) { project.MsgHandler()->Send(name, params); };
    send("LOG", "Daten abholen");
    EXPECT_EQ(window.StatusLabel()->text(), "Daten abholen");
    send("LOG", "");
    EXPECT_EQ(window.StatusLabel()->text(), GetResString(492)) << "no text shows the notice";
    EXPECT_TRUE(window.StatusLabel()->isVisibleTo(&window)) << "in the status bar";

    send("PROGRESS_START", "UM1");
    EXPECT_TRUE(bar->isVisibleTo(&window));
    // Clamped to 0..100; an update of one or three parts moves nothing.
    const std::pair<const char*, int> updates[]
        = { { "UM1;0.25", 25 }, { "UM1;1.7", 100 }, { "UM1;-0.5", 0 }, { "0.9", 0 }, { "UM1;0.9;extra", 0 } };
    for (const auto& [params, value] : updates) {
        send("PROGRESS_UPDATE", params);
        EXPECT_EQ(bar->value(), value) << params;
    }
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    send("PROGRESS_UPDATE", "UM1;0.375");
    EXPECT_NEAR(bar->value(), 37.5, 1) << "read as written, not as a German 375";
    send("PROGRESS_UPDATE", "TR1;0,75");
    EXPECT_EQ(bar->value(), 75);
    send("PROGRESS_END", "TR1");
    EXPECT_EQ(bar->value(), 0);
    EXPECT_FALSE(bar->isVisibleTo(&window));
}

TEST_F(ProjectTest, RegistrationsAreBoundInOrderAndMalformedOrDuplicateOnesSkipped)
{
    const std::pair<const char*, const char*> registrations[] = { { "Alpha", "Sorano.TestModule:1" },
        { "Beta", "A:1:2" }, { "Delta", "Sorano.TestModule:01" }, { "Eps", "Sorano.TestModule:2" },
        { "Gamma", "Sorano.TestModule" }, { "Kappa", "Sorano.TestModule:4" }, { "Zeta", "Sorano.TestModule:zwei" } };
    for (const auto& [name, data] : registrations)
        Register(name, data, name == QLatin1String("Kappa") ? QVariantMap { { S::SelfCheck, 0 } } : QVariantMap {});
    S::SetScript("Eps", { { S::Throws, QStringList { "SetMessageHandler" } } });
    LogCapture log(roots);
    Project project;
    EXPECT_EQ(project.LoadDataModules(), 0);

    QStringList addresses;
    for (const ModuleBoxPtr& box : project.DataModules())
        addresses << box->Address() + "=" + box->Name();
    EXPECT_EQ(addresses, QStringList({ "1=Alpha", "2=Eps" })) << "a failing handler hand-over binds all the same";
    EXPECT_EQ(project.DataModules().Item("02"), project.DataModules().At(1)) << "addresses are found as numbers";
    const QStringList lines = log.From("Project.LoadDataModules");
    EXPECT_EQ(lines.filter("invalid module-registration").size(), 3) << log.Dump();
    EXPECT_EQ(lines.filter("address 01 is already used by Alpha").size(), 1) << log.Dump();
    // Only bound modules get the handler; the duplicate is never created.
    EXPECT_EQ(S::Calls("Alpha", "SetMessageHandler"), 1);
    EXPECT_EQ(S::Calls("Eps", "SetMessageHandler"), 1);
    EXPECT_EQ(S::Calls("Kappa", "SetMessageHandler"), 0);
    EXPECT_EQ(S::Calls("Delta", "Create"), 0);
}

TEST_F(ProjectTest, ChannelsChangedResetsTheCacheOfThatModuleOnly)
{
    Register("Announcer", "Sorano.TestModule:1", { { S::AnnounceOnConfig, true } });
    Register("Other", "Sorano.TestModule:2");
    Project project;
    ASSERT_EQ(project.LoadDataModules(), 0);
    const ModuleBoxPtr announcer = project.DataModules().Item("1");
    const ModuleBoxPtr other = project.DataModules().Item("2");
    ASSERT_TRUE(announcer && other);
    announcer->GetChannelList(nullptr);
    other->GetChannelList(nullptr);

    for (const QString address : { "9", "", "x" })
        project.MsgHandler()->Send("CHANNELS_CHANGED", address);
    EXPECT_NE(other->Channel(""), nullptr);
    project.MsgHandler()->Send("CHANNELS_CHANGED", "2");
    EXPECT_NE(announcer->Channel(""), nullptr);
    EXPECT_EQ(other->Channel(""), nullptr);
    project.MsgHandler()->Send("CHANNELS_CHANGED", "01");
    EXPECT_EQ(announcer->Channel(""), nullptr) << "addresses are numbers";
    announcer->GetChannelList(nullptr);

    // The module announces through the handler it was given.
    announcer->ShowConfig();
    EXPECT_EQ(announcer->Channel(""), nullptr);
    announcer->GetChannelList(nullptr);
    EXPECT_EQ(S::Calls("Announcer", "GetChannelOverview"), 3);
}

TEST_F(ProjectTest, NewMeasuringIdIsTheLoggerOfTheFirstChannelAndKept)
{
    {
        Project none;
        ASSERT_EQ(none.LoadDataModules(), -1);
        EXPECT_EQ(none.DataModules().Count(), 0);
        EXPECT_EQ(none.GetNewMeasuringID(), "") << "no module, nothing to ask";
    }
    Register("First", "Sorano.TestModule:1", { { S::Overview, QStringList { "4711#3", "4711#4" } } });
    Register("Second", "Sorano.TestModule:2", { { S::Overview, QStringList { "815#1" } } });
    {
        Project project;
        ASSERT_EQ(project.LoadDataModules(), 0);
        EXPECT_EQ(project.GetNewMeasuringID(), "4711");
        S::SetScript("First", { { S::Overview, QStringList { "9#9" } } });
        EXPECT_EQ(project.GetNewMeasuringID(), "4711") << "found once, kept";
        EXPECT_EQ(S::Calls("First", "GetChannelOverview"), 0);
        EXPECT_EQ(S::Calls("Second", "GetChannelOverview"), 0) << "only the first module is asked";
    }
    S::SetScript("First", { { S::Overview, QStringList {} } });
    Project empty;
    ASSERT_EQ(empty.LoadDataModules(), 0);
    EXPECT_EQ(empty.GetNewMeasuringID(), "000");
    S::SetScript("First", { { S::Overview, QStringList { "12#1" } } });
    EXPECT_EQ(empty.GetNewMeasuringID(), "000") << "kept until the program ends";
}

TEST_F(ProjectTest, EditionDecidesHowTheExtrasMenuConfiguresTheModules)
{
    const struct
    {
        const char* whoAmI;
        QStringList names;
        bool dialog;
        QList<int> showConfigCalls; // per name
    } cases[] = { { "sorano", { "Solo" }, false, { 1 } }, { "sorano", { "QUANDEL", "Other" }, true, { 0, 0 } },
        { "talven", { "QUANDEL", "Other" }, false, { 1, 0 } }, { "", { "QUANDEL", "Other" }, false, { 0, 0 } } };
    for (const auto& c : cases) {
        RegistryKey().DeleteKey(Hive::LocalMachine, KeyDataModules);
        for (int i = 0; i < c.names.size(); ++i)
            Register(c.names[i], "Sorano.TestModule:" + QString::number(i + 1));
        g_sWhoAmI = c.whoAmI;
        Project project;
        project.Init();
        ASSERT_EQ(project.DataModules().Count(), c.names.size());
        auto* config = project.MainWindow()->findChild<QAction*>("mnuExtrasConfig");
        ASSERT_TRUE(config);
        bool shown = false; // the data-modules dialog, closed by the probe
        QTimer probe;
        probe.setInterval(10);
        QObject::connect(&probe, &QTimer::timeout, [&] {
            if (auto* dialog = qobject_cast<frm_DataModules*>(QApplication::activeModalWidget())) {
                shown = true;
                dialog->reject();
            }
        });
        probe.start();
        config->trigger();
        EXPECT_EQ(shown, c.dialog) << c.whoAmI;
        for (int i = 0; i < c.names.size(); ++i)
            EXPECT_EQ(S::Calls(c.names[i], "ShowConfig"), c.showConfigCalls[i])
                << c.whoAmI << " " << c.names[i].toStdString();
    }
}

} // namespace
