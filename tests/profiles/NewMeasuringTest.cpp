// SPDX-License-Identifier: GPL-3.0-or-later
#include "SiteModule.h"

#include "Calendar.h"
#include "ChannelTree.h"
#include "DateEdit.h"
#include "MatrixScriptEngine.h"
#include "MeasuringHost.h"
#include "ResStrings.h"
#include "Settings.h"
#include "TempSettings.h"
#include "frm_NewMeasuring.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include <functional>

using Settings::Id;

namespace {

class Host : public MeasuringHost
{
public:
    ModuleBoxes& DataModules() override { return modules; }
    void SendMessage(const QString&, const QString&) override { }
    ModuleBoxes modules;
};

class NewMeasuringTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        g_cScriptEngine = &engine;
        modules.Add(MakeSiteBox("North", "5", &north));
        modules.Add(MakeSiteBox("South", "6", &south));
    }
    void TearDown() override { g_cScriptEngine = nullptr; }

    // A wizard in the mode on all modules, with North already in use unless told otherwise.
    frm_NewMeasuring& Make(qint16 mode, bool northUsed = true)
    {
        wizard = std::make_unique<frm_NewMeasuring>(host);
        wizard->SetMode(mode);
        wizard->SetDataModules(modules);
        wizard->SetProfiles(&profiles);
        wizard->SetMeasuringName("Messungsansicht");
        if (northUsed)
            wizard->UsedModules().Add(modules.At(0));
        return *wizard;
    }
    // Runs the wizard; the steps act on it while it is shown, and one they leave open is
    // cancelled. Returns what ShowMe returned.
    bool Run(const std::function<void()>& steps)
    {
        QTimer::singleShot(0, wizard.get(), [&] {
            steps();
            if (wizard->isVisible())
                wizard->Cancel();
        });
        return wizard->ShowMe();
    }
    // From the name page past the modules and profiles; the page reached.
    int ToChannels()
    {
        wizard->Forward();
        wizard->Forward();
        return wizard->CurrentPage();
    }
    void Choose(const QString& text)
    {
        QTreeWidgetItem* node = Node(wizard->trv_Channels(), text);
        ASSERT_NE(node, nullptr) << text.toStdString();
        wizard->trv_Channels()->setCurrentItem(node);
        emit wizard->trv_Channels()->itemDoubleClicked(node, 0);
    }

    TempSettings settings;
    MatrixScriptEngine engine;
    Host host;
    ModuleBoxes modules;
    ProfileCollection profiles;
    SiteModule* north = nullptr;
    SiteModule* south = nullptr;
    std::unique_ptr<frm_NewMeasuring> wizard;
};

TEST_F(NewMeasuringTest, NewViewTakesTheCheckedChannelsAndRemembersItsChoices)
{
    settings.SetUser(Settings::KeyNewMeasuring, "DataModules", "DM_6|");
    frm_NewMeasuring& wizard = Make(0, false);
    const bool cancelled = Run([&] {
        EXPECT_TRUE(wizard.cmd_Forward()->isEnabled()) << "the proposed name";
        wizard.txt_MeasuringName()->setText("  ");
        EXPECT_FALSE(wizard.cmd_Forward()->isEnabled());
        wizard.txt_MeasuringName()->setText("Halle Nord");
        wizard.Forward();
        ASSERT_EQ(wizard.CurrentPage(), 1);
        // The remembered module is checked, the other not.
        EXPECT_EQ(wizard.lvw_DataModules()->item(0)->checkState(), Qt::Unchecked);
        EXPECT_EQ(wizard.lvw_DataModules()->item(1)->checkState(), Qt::Checked);
        wizard.Forward(); // no profiles: straight to the channels
        ASSERT_EQ(wizard.CurrentPage(), 3);
        EXPECT_EQ(wizard.trv_Channels()->topLevelItemCount(), 1);
        wizard.trv_Channels()->setCurrentItem(Node(wizard.trv_Channels(), "Hall A"));
        EXPECT_FALSE(wizard.cmd_Forward()->isEnabled()) << "a category is no channel";
        Choose("Power factor");
        wizard.trv_Channels()->setCurrentItem(Node(wizard.trv_Channels(), "Hall B"));
        Choose("Power");
        Choose("Power"); // a second double click takes the choice back
        EXPECT_TRUE(wizard.cmd_Forward()->isEnabled());
        wizard.Forward();
        ASSERT_EQ(wizard.CurrentPage(), 4);
        EXPECT_EQ(wizard.Channels(), QStringList { "6$L#2" });
        wizard.lst_Indizes()->item(0)->setSelected(true);
        wizard.lst_Indizes()->item(2)->setSelected(true);
        wizard.chk_ShowIndizes()->setChecked(true);
        wizard.Forward();
        ASSERT_EQ(wizard.CurrentPage(), 6);
        EXPECT_EQ(wizard.cmd_Forward()->text(), GetResString(271));
        EXPECT_DOUBLE_EQ(wizard.dat_Start()->Value(), Calendar::FromParts(2009, 2, 1));
        EXPECT_DOUBLE_EQ(wizard.dat_End()->Value(), Calendar::FromParts(2009, 3, 1));
        // The period stays within the data.
        wizard.dat_Start()->SetValue(Calendar::FromParts(2009, 1, 1));
        wizard.dat_End()->SetValue(Calendar::FromParts(2009, 4, 1));
        EXPECT_DOUBLE_EQ(wizard.dat_Start()->Value(), Calendar::FromParts(2009, 2, 1));
        EXPECT_DOUBLE_EQ(wizard.dat_End()->Value(), Calendar::FromParts(2009, 3, 1));
        wizard.Forward();
    });
    EXPECT_FALSE(cancelled);
    EXPECT_EQ(wizard.MeasuringName(), "Halle Nord");
    const QString first = wizard.lst_Indizes()->item(0)->data(Qt::UserRole).toString();
    const QString third = wizard.lst_Indizes()->item(2)->data(Qt::UserRole).toString();
    EXPECT_EQ(wizard.Indizes(), "|" + first + "|" + third + "|");
    EXPECT_TRUE(wizard.IndizesInChart());
    EXPECT_EQ(wizard.UsedModules().Count(), 1);
    EXPECT_EQ(Settings::StoredValue(Id::NewDataModules), "DM_6|");
    EXPECT_EQ(Settings::StoredValue(Id::NewIndizes), wizard.Indizes());
    EXPECT_EQ(Settings::StoredValue(Id::NewShowIndizes), "1");
}

TEST_F(NewMeasuringTest, ASelectedUncheckedChannelIsTakenAlone)
{
    frm_NewMeasuring& wizard = Make(0);
    Run([&] {
        ASSERT_EQ(ToChannels(), 3);
        wizard.trv_Channels()->setCurrentItem(Node(wizard.trv_Channels(), "Power factor"));
        EXPECT_TRUE(wizard.cmd_Forward()->isEnabled());
        wizard.Forward();
        EXPECT_EQ(wizard.Channels(), QStringList { "5$L#2" });
        // Back on the channels, the harvested one shows checked.
        wizard.Back();
        ASSERT_EQ(wizard.CurrentPage(), 3);
        EXPECT_EQ(ChannelTree::Image(Node(wizard.trv_Channels(), "Power factor")), ChannelTree::ImageChecked);
        EXPECT_EQ(ChannelTree::Image(Node(wizard.trv_Channels(), "Power")), ChannelTree::ImageChannel);
        wizard.Forward();
        EXPECT_EQ(wizard.Channels(), QStringList { "5$L#2" });
        // An empty statistic list is stored as a single bar.
        wizard.Forward();
        EXPECT_EQ(wizard.Indizes(), "|");
    });
}

TEST_F(NewMeasuringTest, AProfileTakesItsNamedChannelsBelowTheChosenEntry)
{
    auto profile = std::make_shared<Profile>();
    profile->Name = "Hall power";
    profile->DataSourceID = 5;
    profile->EntryLevel = 1;
    profile->SetChannelName(1, "Power");
    profiles.Add(profile);
    frm_NewMeasuring& wizard = Make(0);
    Run([&] {
        ASSERT_EQ(ToChannels(), 2);
        ASSERT_EQ(wizard.lvw_Profiles()->count(), 2);
        wizard.lvw_Profiles()->setCurrentRow(1);
        EXPECT_EQ(wizard.Profile(), profile);
        wizard.Forward();
        ASSERT_EQ(wizard.CurrentPage(), 3);
        // Down to the entry level, without channels; a click does not choose.
        EXPECT_EQ(Node(wizard.trv_Channels(), "Power"), nullptr);
        EXPECT_FALSE(wizard.cmd_Forward()->isEnabled()) << "the site has halls below it";
        wizard.trv_Channels()->setCurrentItem(Node(wizard.trv_Channels(), "Hall A"));
        EXPECT_TRUE(wizard.cmd_Forward()->isEnabled());
        wizard.Forward();
        EXPECT_EQ(wizard.Channels(), QStringList { "5$L#1" });
    });
}

TEST_F(NewMeasuringTest, ABatchDocumentTakesEveryChannelOfTheFirstMeasuringPoint)
{
    settings.SetUser(Settings::KeyNewMeasuring, "Indizes", "|1|");
    frm_NewMeasuring& wizard = Make(1);
    Run([&] {
        ASSERT_EQ(ToChannels(), 3);
        ASSERT_NE(wizard.trv_Channels()->currentItem(), nullptr);
        EXPECT_EQ(wizard.trv_Channels()->currentItem()->text(0), "Hall A");
        wizard.Forward();
        EXPECT_EQ(wizard.CurrentPage(), 5);
        EXPECT_EQ(wizard.Channels(), (QStringList { "5$L#1", "5$L#2" }));
        wizard.txt_Customer(0)->setText("Stadtwerke");
        wizard.Forward(); // leaving the customer page stores it at once
    });
    // Cancelled: the customer stays stored, the choices of modules and statistics do not.
    EXPECT_EQ(Settings::StoredValue(Id::NewCustomer, "0"), "Stadtwerke");
    EXPECT_EQ(Settings::StoredValue(Id::NewIndizes), "|1|");
    EXPECT_TRUE(Settings::StoredValue(Id::NewDataModules).isEmpty());
}

TEST_F(NewMeasuringTest, AModuleThatFailsIsNamedAndTheUserCanGoBack)
{
    north->failing = true;
    frm_NewMeasuring& wizard = Make(0);
    wizard.UsedModules().Add(modules.At(1));
    Run([&] {
        ASSERT_EQ(ToChannels(), 3);
        const QLabel* failure = wizard.findChild<QLabel*>("lbl_Failure");
        ASSERT_TRUE(failure && failure->text().contains("North") && !failure->text().contains("South"));
        EXPECT_EQ(wizard.trv_Channels()->topLevelItemCount(), 1); // the good module's tree
        EXPECT_TRUE(wizard.cmd_Back()->isEnabled());
        wizard.Back();
        EXPECT_EQ(wizard.CurrentPage(), 1);
        wizard.lvw_DataModules()->item(1)->setCheckState(Qt::Unchecked);
        wizard.Forward();
        EXPECT_EQ(wizard.trv_Channels()->topLevelItemCount(), 0);
        EXPECT_FALSE(wizard.cmd_Forward()->isEnabled());
    });
}

TEST_F(NewMeasuringTest, SelectMenuChoosesALeafOrAWholeBranch)
{
    frm_NewMeasuring& wizard = Make(0);
    Run([&] {
        ASSERT_EQ(ToChannels(), 3);
        auto tool = [&](const char* name) { return wizard.SelectMenu()->findChild<QAction*>(name); };
        QTreeWidget* tree = wizard.trv_Channels();
        tree->setCurrentItem(Node(tree, "Site"));
        emit tree->customContextMenuRequested(QPoint(1, 1));
        EXPECT_FALSE(tool("mnuSelectCurve")->isEnabled());
        EXPECT_TRUE(tool("mnuSelectAll")->isEnabled());
        wizard.SelectMenu()->close();
        tool("mnuSelectAll")->trigger();
        EXPECT_TRUE(wizard.cmd_Forward()->isEnabled());
        tree->setCurrentItem(Node(tree, "Power factor"));
        emit tree->customContextMenuRequested(QPoint(1, 1));
        EXPECT_TRUE(tool("mnuDeSelectCurve")->isEnabled());
        EXPECT_FALSE(tool("mnuDeSelectAll")->isEnabled());
        wizard.SelectMenu()->close();
        tool("mnuDeSelectCurve")->trigger();
        wizard.Forward();
        EXPECT_EQ(wizard.Channels(), (QStringList { "5$L#1", "5$M#1" }));
    });
}

TEST_F(NewMeasuringTest, ExtendedSelectionTogglesOnAClickAndSpreadsOnADoubleClick)
{
    settings.SetUser(Settings::KeySettings, "ExtendedChannelSelection", "1");
    frm_NewMeasuring& wizard = Make(0);
    Run([&] {
        ASSERT_EQ(ToChannels(), 3);
        QTreeWidget* tree = wizard.trv_Channels();
        QTreeWidgetItem* power = Node(tree, "Power");
        QTreeWidgetItem* factor = Node(tree, "Power factor");
        tree->setCurrentItem(power);
        emit tree->itemClicked(power, 0);
        EXPECT_EQ(ChannelTree::Image(power), ChannelTree::ImageChecked);
        emit tree->itemDoubleClicked(power, 0);
        EXPECT_EQ(ChannelTree::Image(factor), ChannelTree::ImageChecked);
        // The space key toggles the current channel alone.
        QKeyEvent space(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier, " ");
        QApplication::sendEvent(tree, &space);
        EXPECT_EQ(ChannelTree::Image(power), ChannelTree::ImageChannel);
        EXPECT_EQ(ChannelTree::Image(factor), ChannelTree::ImageChecked);
    });
}

TEST_F(NewMeasuringTest, SerialReportRestoresItsRememberedSettings)
{
    for (const auto& [name, value] : { std::pair("opt_Resolution", "1"), { "Resolution_Count", "15" },
             { "Resolution_Unit", "9" }, { "lga_gallery", "3" }, { "chkfixedline", "1" }, { "fixedline", "42.5" } })
        settings.SetUser(Settings::KeyNewMeasuring, name, value);
    ModuleBoxes one;
    one.Add(modules.At(0));
    frm_NewMeasuring& wizard = Make(2, false);
    wizard.SetDataModules(one);
    const bool cancelled = Run([&] {
        wizard.Forward();
        ASSERT_EQ(wizard.CurrentPage(), 1) << "a single module's page shows in this mode";
        wizard.Forward();
        Choose("Power factor");
        wizard.Forward();
        ASSERT_EQ(wizard.CurrentPage(), 5);
        wizard.Forward();
        ASSERT_EQ(wizard.CurrentPage(), 6);
        EXPECT_TRUE(wizard.opt_Resolution(1)->isChecked());
        EXPECT_EQ(wizard.txt_Count()->text(), "15");
        EXPECT_EQ(wizard.cbo_Unit()->currentIndex(), 1) << "a unit outside the list is not taken";
        wizard.Forward();
        ASSERT_EQ(wizard.CurrentPage(), 7);
        EXPECT_EQ(wizard.cboGallery()->currentIndex(), 0);
        EXPECT_TRUE(wizard.txt_FixedLine()->isEnabled());
        wizard.opt_LGA_Axis(1)->click();
        EXPECT_EQ(Settings::StoredValue(Id::NewAxisBorders), "1");
        // An axis border takes a number only, with "," typed as ".".
        for (const char* typed : { "-", "1", ",", "5", "x" }) {
            QKeyEvent key(QEvent::KeyPress, 0, Qt::NoModifier, typed);
            QApplication::sendEvent(wizard.txt_Border(0), &key);
        }
        EXPECT_EQ(wizard.txt_Border(0)->text(), "-1.5");
        EXPECT_EQ(Settings::StoredValue(Id::NewAxisBorder, "0"), "-1.5");
        wizard.Forward();
    });
    EXPECT_FALSE(cancelled);
    EXPECT_TRUE(wizard.ShowFixedLine());
    EXPECT_DOUBLE_EQ(wizard.FixedLineValue(), 42.5);
    EXPECT_EQ(Settings::StoredValue(Id::NewResolutionCount), "15");
    EXPECT_EQ(Settings::StoredValue(Id::NewDataModules), "DM_5|");
}

} // namespace
