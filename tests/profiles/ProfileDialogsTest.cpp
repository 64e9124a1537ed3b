// SPDX-License-Identifier: GPL-3.0-or-later
#include "SiteModule.h"

#include "ChannelTree.h"
#include "ResStrings.h"
#include "SeriesPropertiesEditor.h"
#include "TempSettings.h"
#include "frm_GraphProperties.h"
#include "frm_ProfileProperties.h"
#include "frm_Profiles.h"
#include "frm_SeriesProperties.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include <functional>

namespace {

// Runs the steps on the next modal dialog of type T once it is shown; one the steps leave
// open is rejected. A dialog that never comes fails the test instead of hanging it, unless
// none should come: then the steps are what to do should one come after all.
template<typename T> void OnModal(std::function<void(T&)> steps, bool comes = true)
{
    auto* timer = new QTimer(QCoreApplication::instance());
    auto tries = std::make_shared<int>(0);
    QObject::connect(timer, &QTimer::timeout, [timer, tries, steps, comes] {
        auto* dialog = qobject_cast<T*>(QApplication::activeModalWidget());
        if (!dialog && ++*tries < 200)
            return;
        timer->stop();
        timer->deleteLater();
        if (!dialog) {
            if (!comes)
                return;
            ADD_FAILURE() << "no dialog " << T::staticMetaObject.className();
            if (QWidget* other = QApplication::activeModalWidget())
                other->close();
            return;
        }
        steps(*dialog);
        if (dialog->isVisible())
            dialog->reject();
    });
    timer->start(5);
}

void ClickButton(QMessageBox& box, QMessageBox::StandardButton which)
{
    ASSERT_NE(box.button(which), nullptr);
    box.button(which)->click();
}

bool Checked(const QTreeWidgetItem* item)
{
    return item && ChannelTree::Image(item) == QLatin1String(ChannelTree::ImageChecked);
}

QStringList Names(const Profile& profile)
{
    QStringList names;
    for (qint32 i = 1; i <= profile.ChannelCount(); ++i)
        names << profile.ChannelName(i);
    return names;
}

QStringList Shown(const QListWidget* list)
{
    QStringList texts;
    for (int i = 0; i < list->count(); ++i)
        texts << list->item(i)->text();
    return texts;
}

// The keys of the collection, in order; the list shows them alike.
QStringList Keys(const ProfileCollection& profiles, const QListWidget* list)
{
    QStringList keys;
    for (qsizetype i = 0; i < profiles.Count(); ++i)
        keys << profiles.KeyAt(i);
    EXPECT_EQ(Shown(list), keys);
    return keys;
}

class ProfileDialogsTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        modules.Add(MakeSiteBox("North", "5", &north));
        modules.Add(MakeSiteBox("South", "6", &south));
    }

    // A profile of South at the hall level with "Power" in blue and a legend.
    ProfilePtr Stored(const QString& name)
    {
        auto profile = std::make_shared<Profile>();
        profile->Name = name;
        profile->DataSourceID = 6;
        profile->EntryLevel = 1;
        profile->GraphProperties.Legend = true;
        profile->SetChannelName(1, "Power");
        SeriesProperties series;
        series.Color = 0xFF0000;
        profile->SetSeriesProperties(1, series);
        profiles.Add(profile);
        return profile;
    }

    // Runs the profile list; the steps act on it while it is shown.
    bool Run(frm_Profiles& list, const std::function<void()>& steps)
    {
        list.SetProfiles(&profiles);
        list.SetDataModules(modules);
        QTimer::singleShot(0, &list, [&] {
            steps();
            list.accept();
        });
        return list.ShowMe();
    }

    // Runs the wizard alone on the profile.
    bool Wizard(Profile& profile, const std::function<void(frm_ProfileProperties&)>& steps)
    {
        frm_ProfileProperties wizard;
        wizard.SetDataModules(modules);
        OnModal<frm_ProfileProperties>(steps);
        return wizard.ShowMe(profile);
    }

    TempSettings settings;
    ModuleBoxes modules;
    ProfileCollection profiles;
    SiteModule* north = nullptr;
    SiteModule* south = nullptr;
};

TEST(ProfileDefaultColorTest, SixColoursThenRed)
{
    const std::pair<int, qint32> table[] = { { 0, 0x0000FF }, { 1, 0x0000FF }, { 2, 0x00FF00 }, { 3, 0xFF0000 },
        { 4, 0x00FFFF }, { 5, 0xFF00FF }, { 6, 0xFFFF00 }, { 7, 0x000000 }, { 8, 0x0000FF }, { 20, 0x0000FF } };
    for (const auto& [index, color] : table)
        EXPECT_EQ(ProfileDefaultColor(index), color) << index;
}

TEST_F(ProfileDialogsTest, NewProfileWalksTheFourPagesIntoTheCollection)
{
    Stored("Existing");
    frm_Profiles list;
    const bool changed = Run(list, [&] {
        EXPECT_EQ(list.lst_Profiles()->currentRow(), 0);
        OnModal<frm_ProfileProperties>([&](frm_ProfileProperties& wizard) {
            EXPECT_EQ(wizard.txt_Name()->text(), GetResString(430));
            EXPECT_FALSE(wizard.cmd_Back()->isEnabled());
            EXPECT_FALSE(wizard.cmd_Help()->isEnabled());
            wizard.txt_Name()->clear();
            EXPECT_FALSE(wizard.cmd_Forward()->isEnabled());
            wizard.txt_Name()->setText("Hallen");
            EXPECT_TRUE(wizard.lbl_Caption()->text().contains("'Hallen'"));
            wizard.Forward();

            ASSERT_EQ(wizard.CurrentPage(), frm_ProfileProperties::PageModule);
            QListWidget* modulesList = wizard.lvw_Modules();
            ASSERT_EQ(modulesList->count(), 2);
            EXPECT_FALSE(wizard.cmd_Forward()->isEnabled()) << "no module chosen yet";
            modulesList->item(0)->setCheckState(Qt::Checked);
            modulesList->item(1)->setCheckState(Qt::Checked);
            EXPECT_EQ(modulesList->item(0)->checkState(), Qt::Unchecked) << "a single choice";
            wizard.Forward();

            ASSERT_EQ(wizard.CurrentPage(), frm_ProfileProperties::PageLevel);
            EXPECT_EQ(wizard.SourceAddress(), "6");
            EXPECT_EQ(wizard.trv_Categories()->currentItem()->text(0), "Site") << "entry level 0";
            EXPECT_EQ(Node(wizard.trv_Categories(), "Power"), nullptr) << "categories only";
            wizard.trv_Categories()->setCurrentItem(Node(wizard.trv_Categories(), "Hall B"));
            wizard.Forward();

            ASSERT_EQ(wizard.CurrentPage(), frm_ProfileProperties::PageChannels);
            EXPECT_EQ(wizard.EntryLevel(), 1);
            QTreeWidget* tree = wizard.trv_Channels();
            ASSERT_EQ(tree->topLevelItemCount(), 2) << "the first hall and its following sibling";
            EXPECT_EQ(tree->topLevelItem(0)->text(0), "Hall A");
            EXPECT_TRUE(wizard.cmd_ChartProps()->isEnabled());
            // Checked and unchecked again: its look goes with it.
            QTreeWidgetItem* powerA = Node(tree, "Power", 0);
            emit tree->itemDoubleClicked(powerA, 0);
            EXPECT_TRUE(Checked(powerA));
            emit tree->itemDoubleClicked(powerA, 0);
            EXPECT_FALSE(Checked(powerA));
            EXPECT_EQ(wizard.WorkingSeries("Power"), nullptr);
            emit tree->itemDoubleClicked(tree->topLevelItem(0), 0);
            EXPECT_FALSE(Checked(tree->topLevelItem(0))) << "a category is no channel";
            emit tree->itemDoubleClicked(Node(tree, "Power factor"), 0);
            tree->setCurrentItem(Node(tree, "Power", 1));
            EXPECT_FALSE(wizard.cmd_CurvProps()->isEnabled());
            QTest::keyClick(tree, Qt::Key_Space);
            EXPECT_TRUE(Checked(Node(tree, "Power", 1)));
            EXPECT_TRUE(wizard.cmd_CurvProps()->isEnabled());
            wizard.Forward();
        });
        list.cmd_New()->click();
    });
    EXPECT_TRUE(changed);
    EXPECT_EQ(Keys(profiles, list.lst_Profiles()), QStringList({ "Existing", "Hallen" }));
    const ProfilePtr made = profiles.Item("Hallen");
    ASSERT_TRUE(made);
    EXPECT_EQ(made->DataSourceID, 6);
    EXPECT_EQ(made->EntryLevel, 1);
    EXPECT_EQ(Names(*made), QStringList({ "Power factor", "Power" }));
    ASSERT_NE(made->SeriesProperties(1), nullptr);
    ASSERT_NE(made->SeriesProperties(2), nullptr);
    EXPECT_EQ(made->SeriesProperties(1)->Color, 0x0000FF);
    EXPECT_EQ(made->SeriesProperties(2)->Color, 0x00FF00);
}

// With one module its page is passed by both ways, and the profile belongs to it; a profile
// without channels can be finished.
TEST_F(ProfileDialogsTest, ASingleModuleIsTakenWithoutItsPage)
{
    modules.Remove("6");
    Profile profile;
    profile.Name = "Eins";
    EXPECT_TRUE(Wizard(profile, [](frm_ProfileProperties& wizard) {
        wizard.Forward();
        EXPECT_EQ(wizard.CurrentPage(), frm_ProfileProperties::PageLevel);
        wizard.Back();
        EXPECT_EQ(wizard.CurrentPage(), frm_ProfileProperties::PageName);
        for (int page = 0; page < 3; ++page)
            wizard.Forward();
    }));
    EXPECT_EQ(profile.DataSourceID, 5);
    EXPECT_EQ(profile.ChannelCount(), 0);
}

// The pages and the property buttons edit copies: every way out but Finish leaves the
// profile as it was; Finish, the last way taken, keeps all of it.
TEST_F(ProfileDialogsTest, EditingWorksOnCopiesUntilFinish)
{
    const ProfilePtr stored = Stored("Hallen");
    const std::function<void(frm_ProfileProperties&)> ends[] = {
        [](frm_ProfileProperties& wizard) { wizard.cmd_Cancel()->click(); },
        [](frm_ProfileProperties& wizard) { wizard.close(); },
        [](frm_ProfileProperties& wizard) { QTest::keyClick(&wizard, Qt::Key_Escape); },
        [](frm_ProfileProperties& wizard) { wizard.Forward(); },
    };
    for (const auto& end : ends) {
        const bool finished = &end == &ends[3];
        const auto steps = [&](frm_ProfileProperties& wizard) {
            wizard.txt_Name()->setText("Anders");
            wizard.Forward();
            ASSERT_EQ(wizard.CurrentPage(), frm_ProfileProperties::PageModule);
            EXPECT_EQ(wizard.lvw_Modules()->item(1)->checkState(), Qt::Checked) << "the profile's module";
            wizard.Forward();
            EXPECT_EQ(wizard.trv_Categories()->currentItem()->text(0), "Hall A") << "entry level 1";
            wizard.Forward();
            QTreeWidget* tree = wizard.trv_Channels();
            ASSERT_TRUE(Checked(Node(tree, "Power", 0)));
            EXPECT_EQ(tree->currentItem(), Node(tree, "Power", 0)) << "the first chosen channel";
            emit tree->itemDoubleClicked(Node(tree, "Power factor"), 0);
            // The look goes by the channel's name, which Hall B's power shares.
            tree->setCurrentItem(Node(tree, "Power", 1));
            OnModal<frm_SeriesProperties>([](frm_SeriesProperties& dialog) {
                EXPECT_EQ(CurveColors::FromColor(dialog.Editor()->Color()), 0xFF0000) << "the stored look";
                dialog.Editor()->SetColor(CurveColors::ToColor(0x00FFFF));
                dialog.accept();
            });
            wizard.cmd_CurvProps()->click();
            OnModal<frm_GraphProperties>([](frm_GraphProperties& dialog) {
                dialog.findChild<QCheckBox*>("chk_Legend")->setChecked(false);
                dialog.findChild<QLineEdit*>("txt_Title")->setText("Titel");
                dialog.accept();
            });
            wizard.cmd_ChartProps()->click();
            EXPECT_FALSE(wizard.WorkingGraph().Legend);
            EXPECT_TRUE(stored->GraphProperties.Legend) << "a copy, until Finish";
            end(wizard);
        };
        EXPECT_EQ(Wizard(*stored, steps), finished);
        EXPECT_EQ(stored->Name, finished ? "Anders" : "Hallen");
        const QStringList names = Names(*stored);
        EXPECT_TRUE(
            finished ? names.startsWith("Power") && names.contains("Power factor") : names == QStringList("Power"))
            << names.join('|').toStdString();
        EXPECT_EQ(stored->GraphProperties.Legend, !finished);
        EXPECT_EQ(stored->GraphProperties.Title, finished ? "Titel" : "");
        ASSERT_NE(stored->SeriesProperties(1), nullptr);
        EXPECT_EQ(stored->SeriesProperties(1)->Color, finished ? 0x00FFFF : 0xFF0000);
    }
}

TEST_F(ProfileDialogsTest, DeleteAsksAndRemovesOnYesOnly)
{
    for (const char* name : { "A", "B", "C" })
        Stored(name);
    frm_Profiles list;
    const bool changed = Run(list, [&] {
        list.lst_Profiles()->setCurrentRow(1);
        OnModal<QMessageBox>([](QMessageBox& box) {
            EXPECT_TRUE(box.text().contains("'B'"));
            ClickButton(box, QMessageBox::No);
        });
        list.cmd_Delete()->click();
        EXPECT_EQ(Keys(profiles, list.lst_Profiles()), QStringList({ "A", "B", "C" }));
        EXPECT_FALSE(list.Changed());

        for (const QStringList& left : { QStringList { "A", "C" }, QStringList { "A" }, QStringList {} }) {
            OnModal<QMessageBox>([](QMessageBox& box) { ClickButton(box, QMessageBox::Yes); });
            list.cmd_Delete()->click();
            EXPECT_EQ(Keys(profiles, list.lst_Profiles()), left);
            EXPECT_EQ(list.cmd_Delete()->isEnabled(), !left.isEmpty()) << "the neighbour is selected";
            EXPECT_EQ(list.cmd_Edit()->isEnabled(), !left.isEmpty());
        }
    });
    EXPECT_TRUE(changed);
}

TEST_F(ProfileDialogsTest, ANameOfAnotherProfileIsRefused)
{
    Stored("A");
    Stored("B");
    frm_Profiles list;
    const bool changed = Run(list, [&] {
        auto refuseThenName = [](const QString& taken, const QString& free) {
            return [taken, free](frm_ProfileProperties& wizard) {
                wizard.txt_Name()->setText(taken);
                OnModal<QMessageBox>([taken](QMessageBox& box) {
                    EXPECT_TRUE(box.text().contains("'" + taken + "'"));
                    box.accept();
                });
                wizard.Forward();
                EXPECT_EQ(wizard.CurrentPage(), frm_ProfileProperties::PageName);
                wizard.txt_Name()->setText(free);
                for (int page = 0; page < 4; ++page) {
                    if (wizard.CurrentPage() == frm_ProfileProperties::PageModule)
                        wizard.lvw_Modules()->item(1)->setCheckState(Qt::Checked);
                    wizard.Forward();
                }
            };
        };
        OnModal<frm_ProfileProperties>(refuseThenName("B", "A2"));
        list.cmd_Edit()->click();
        OnModal<frm_ProfileProperties>(refuseThenName("A2", "C"));
        list.cmd_New()->click();
        // Its own name is no other profile's.
        list.lst_Profiles()->setCurrentRow(1);
        OnModal<frm_ProfileProperties>([](frm_ProfileProperties& wizard) {
            OnModal<QMessageBox>(
                [](QMessageBox& box) { ADD_FAILURE() << "unexpected message: " << box.text().toStdString(); }, false);
            for (int page = 0; page < 4; ++page)
                wizard.Forward();
        });
        list.cmd_Edit()->click();
    });
    EXPECT_TRUE(changed);
    EXPECT_EQ(Shown(list.lst_Profiles()), QStringList({ "A2", "B", "C" }));
    EXPECT_EQ(profiles.Count(), 3);
    for (const char* name : { "A2", "B", "C" })
        ASSERT_TRUE(profiles.Item(name)) << name;
    EXPECT_EQ(profiles.Item("A2")->Name, "A2");
}

TEST_F(ProfileDialogsTest, AFailingModuleIsNamedAndTheUserCanGoBack)
{
    north->failing = true;
    Profile profile;
    profile.Name = "Nord";
    EXPECT_TRUE(Wizard(profile, [](frm_ProfileProperties& wizard) {
        wizard.Forward();
        ASSERT_EQ(wizard.lvw_Modules()->count(), 2);
        wizard.lvw_Modules()->item(0)->setCheckState(Qt::Checked);
        wizard.Forward();
        EXPECT_EQ(wizard.CurrentPage(), frm_ProfileProperties::PageLevel);
        EXPECT_TRUE(wizard.lbl_Failure()->isVisibleTo(&wizard));
        EXPECT_TRUE(wizard.lbl_Failure()->text().contains("North"));
        EXPECT_FALSE(wizard.cmd_Forward()->isEnabled());
        EXPECT_TRUE(wizard.cmd_Back()->isEnabled());
        wizard.Back();
        wizard.lvw_Modules()->item(1)->setCheckState(Qt::Checked);
        wizard.Forward();
        EXPECT_FALSE(wizard.lbl_Failure()->isVisibleTo(&wizard));
        EXPECT_TRUE(wizard.cmd_Forward()->isEnabled());
        wizard.Forward();
        wizard.Forward();
    }));
    EXPECT_EQ(profile.DataSourceID, 6);
}

} // namespace
