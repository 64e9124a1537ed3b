// SPDX-License-Identifier: GPL-3.0-or-later
// The edited curve list's rules, and the curve dialog on a view of a generated logger: choosing
// channels, building sums, removing and reordering curves, and what OK and Cancel leave in the view.
#include "frm_Curves.h"
#include "ChannelTree.h"
#include "CurveListEdit.h"
#include "MeasuringFixture.h"

#include <QAction>
#include <QMenu>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>

#include <functional>

namespace {

using namespace measuring_fixture;
using Entry = CurveListEdit::Entry;

// Every curve of the list as its channel keys joined by "+".
QStringList Sums(const CurveListEdit& edit)
{
    QStringList sums;
    for (const Entry& entry : edit.Entries())
        sums << entry.keys.join('+');
    return sums;
}

// The dialog tests drive adding, joining, splitting, moving and removing; its buttons keep
// most of what the list refuses out of reach.
TEST(CurveListEdit, RefusesWhatLeavesTheListOrRepeatsAChannelAndKnowsWhenItIsBackWhereItStarted)
{
    CurveListEdit edit({ Entry { "a$1", { "a$1" } }, Entry { "a$2", { "a$2", "a$9" } }, Entry { "a$3", { "a$3" } } });
    EXPECT_FALSE(edit.Remove(-1) || edit.Remove(3));
    EXPECT_FALSE(edit.Move(0, -1) || edit.Move(2, 1) || edit.Move(1, 0) || edit.Move(5, -1));
    EXPECT_FALSE(edit.Join(0, "a$1") || edit.Join(1, "a$9") || edit.Join(3, "a$5") || edit.Join(0, ""));
    EXPECT_FALSE(edit.Split(1, 0) || edit.Split(1, 2) || edit.Split(0, 1)) << "the first channel names the curve";
    EXPECT_EQ(edit.Add(""), -1);
    EXPECT_EQ(edit.IndexOf("a$9"), -1) << "a part of a sum names no curve";
    EXPECT_FALSE(edit.Changed());

    EXPECT_TRUE(edit.Move(1, -1));
    EXPECT_EQ(Sums(edit), QStringList({ "a$2+a$9", "a$1", "a$3" })) << "a sum moves with its parts";
    EXPECT_TRUE(edit.Move(0, 1) && edit.Join(0, "a$3") && edit.Split(0, 1));
    EXPECT_FALSE(edit.Changed()) << "moved, joined and split back to where it was";

    EXPECT_TRUE(edit.Join(0, "a$3")) << "a channel naming another curve may still be part of a sum";
    EXPECT_TRUE(edit.Remove(1));
    EXPECT_EQ(edit.Add("a$2"), 2) << "a removed channel may come back as a new curve";
    EXPECT_EQ(edit.Entries().back().origin, QString()) << "that stands for no curve of the view";
    EXPECT_EQ(Sums(edit), QStringList({ "a$1+a$3", "a$3", "a$2" }));
    EXPECT_TRUE(edit.Changed());
}

// A view of the first channel of the logger at address 3; a second logger at address 5 is
// offered by the application but not used by the view.
class CurvesDialogTest : public MeasuringFixture
{
protected:
    void SetUp() override
    {
        MeasuringFixture::SetUp();
        Open(3600);
        power = Add("3$L#1");
        auto box = std::make_shared<ModuleBox>();
        box->SetName("Second logger");
        box->SetAddress("5");
        auto module = std::make_unique<GeneratedModule>(3600);
        second = module.get();
        box->SetDataModule(std::move(module));
        ASSERT_TRUE(host.modules.Add(box));
    }
    // Runs ShowMe with the actions done on the open dialog, and gives its status.
    qint32 Show(const std::function<void(frm_Curves&)>& actions)
    {
        frm_Curves dialog;
        QTimer::singleShot(0, &dialog, [&] {
            actions(dialog);
            if (dialog.isVisible())
                dialog.reject();
        });
        return dialog.ShowMe(*measuring);
    }
    static QTreeWidget* Curves(frm_Curves& dialog) { return dialog.findChild<QTreeWidget*>("trv_Curves"); }
    static QTreeWidget* Channels(frm_Curves& dialog) { return dialog.findChild<QTreeWidget*>("trv_Channels"); }
    static bool Enabled(frm_Curves& dialog, const char* button)
    {
        return dialog.findChild<QPushButton*>(button)->isEnabled();
    }
    static void Click(frm_Curves& dialog, const char* button)
    {
        ASSERT_TRUE(Enabled(dialog, button)) << button;
        QTest::mouseClick(dialog.findChild<QPushButton*>(button), Qt::LeftButton);
    }
    // The channel node of the tag "<address>$<id>".
    static QTreeWidgetItem* ChannelNode(frm_Curves& dialog, const QString& tag)
    {
        for (QTreeWidgetItem* item : ChannelTree::KeyIndex(Channels(dialog)))
            if (ChannelTree::ChannelTagFromKey(ChannelTree::Key(item)) == tag)
                return item;
        return nullptr;
    }
    // Chooses the channel with the space key.
    static void Choose(frm_Curves& dialog, const QString& tag)
    {
        QTreeWidgetItem* node = ChannelNode(dialog, tag);
        ASSERT_NE(node, nullptr) << tag.toStdString();
        Channels(dialog)->setCurrentItem(node);
        QTest::keyClick(Channels(dialog), Qt::Key_Space);
    }
    // Selects a curve, or with part from 1 one of the further channels of its sum.
    static void Select(frm_Curves& dialog, int index, int part = 0)
    {
        QTreeWidgetItem* node = Curves(dialog)->topLevelItem(index);
        ASSERT_TRUE(node && (part == 0 || node->child(part - 1)));
        Curves(dialog)->setCurrentItem(part == 0 ? node : node->child(part - 1));
    }
    QStringList CurveIds() const
    {
        QStringList ids;
        for (const auto& curve : measuring->Curves())
            ids << curve->ID();
        return ids;
    }
    static double Value(const Curve* curve, qsizetype row)
    {
        return curve && curve->Result() && curve->Result()->DataBlock() ? curve->Result()->DataBlock()->At(row, 1) : -1;
    }

    Curve* power = nullptr;
    GeneratedModule* second = nullptr;
};

TEST_F(CurvesDialogTest, OkWithoutAChangeAndCancelAfterChangesLeaveTheViewAndBringInNoOfferedModule)
{
    Add("3$L#2");
    Day();
    const int before = generated->fetches;

    const qint32 unchanged = Show([&](frm_Curves& dialog) {
        Select(dialog, 0);
        EXPECT_FALSE(Enabled(dialog, "cmd_Up") || Enabled(dialog, "cmd_Split") || Enabled(dialog, "cmd_Add"));
        Select(dialog, 1);
        EXPECT_FALSE(Enabled(dialog, "cmd_Down"));
        Choose(dialog, "3$L#1");
        Click(dialog, "cmd_Add");
        EXPECT_EQ(Curves(dialog)->topLevelItemCount(), 2) << "the channel is a curve already";
        Click(dialog, "cmd_OK");
    });
    EXPECT_EQ(unchanged, 0);

    const qint32 status = Show([&](frm_Curves& dialog) {
        QTreeWidgetItem* node = ChannelNode(dialog, "3$L#3");
        ASSERT_NE(node, nullptr);
        const QPoint at = Channels(dialog)->visualItemRect(node).center();
        // The view takes a double click as one on the item it was pressed on.
        QTest::mouseClick(Channels(dialog)->viewport(), Qt::LeftButton, {}, at);
        QTest::mouseDClick(Channels(dialog)->viewport(), Qt::LeftButton, {}, at);
        EXPECT_EQ(dialog.Chosen(), QStringList("3$L#3")) << "a double click chooses";
        Click(dialog, "cmd_Add");
        Select(dialog, 0);
        Choose(dialog, "3$L#2");
        Click(dialog, "cmd_Join");
        Select(dialog, 1);
        Click(dialog, "cmd_Remove");
        Choose(dialog, "5$L#1");
        Click(dialog, "cmd_Add");
        Click(dialog, "cmd_Cancel");
    });
    EXPECT_EQ(status, 0);
    EXPECT_EQ(CurveIds(), QStringList({ "3$L#1", "3$L#2" }));
    EXPECT_EQ(power->Channels().size(), 1u);
    EXPECT_EQ(generated->fetches, before) << "no refresh";
    EXPECT_FALSE(measuring->DataModules().Contains("5"));
    EXPECT_EQ(second->fetches, 0);
}

TEST_F(CurvesDialogTest, SplittingAndMovingKeepTheLookAndRemovingTakesACurveOutOfTheView)
{
    Curve* reserve = Add("3$L#3");
    ASSERT_TRUE(measuring->AddChannel(*reserve, "3$L#2"));
    Day();
    const qint32 color = reserve->Properties().Color;
    const qint32 removedSeries = power->SeriesID();
    QTreeWidget* tree = measuring->Window()->trv_Statistics();
    ASSERT_NE(ChannelTree::FindItem(tree, "S_3$L#1"), nullptr);
    ASSERT_TRUE(Chart().SeriesVisible(removedSeries));

    const qint32 status = Show([&](frm_Curves& dialog) {
        Select(dialog, 1, 1);
        Click(dialog, "cmd_Split");
        EXPECT_EQ(Curves(dialog)->topLevelItem(1)->childCount(), 0);
        Select(dialog, 1);
        Click(dialog, "cmd_Up");
        EXPECT_EQ(Curves(dialog)->topLevelItem(0)->text(0), "Reserve");
        EXPECT_EQ(Curves(dialog)->topLevelItem(0)->text(1), "Logger") << "where the channel sits";
        Select(dialog, 1);
        Click(dialog, "cmd_Remove");
        Click(dialog, "cmd_OK");
    });
    EXPECT_EQ(status, 1);
    ASSERT_EQ(CurveIds(), QStringList("3$L#3"));
    const Curve& moved = *measuring->Curves().front();
    ASSERT_EQ(moved.Channels().size(), 1u);
    EXPECT_EQ(moved.Channels().front().key, "3$L#3");
    EXPECT_EQ(moved.Properties().Color, color);
    EXPECT_EQ(Value(&moved, 3), 100.0) << "the rest refreshed";
    EXPECT_EQ(ChannelTree::FindItem(tree, "S_3$L#1"), nullptr) << "the removed curve's statistic node went";
    EXPECT_NE(ChannelTree::FindItem(tree, "S_3$L#3"), nullptr);
    EXPECT_FALSE(Chart().SeriesVisible(removedSeries)) << "its line is no longer drawn";
}

// Channels are chosen from the pop-up and by key, from the view's module and from one the
// application offers that the view does not use yet.
TEST_F(CurvesDialogTest, ChosenChannelsBecomeNewCurvesAndSumPartsInTheirOrderAndBringAnOfferedModuleInOnOk)
{
    Day();
    const int before = generated->fetches;

    const qint32 status = Show([&](frm_Curves& dialog) {
        QTreeWidget* channels = Channels(dialog);
        auto* menu = dialog.findChild<QMenu*>("mnu_Channels");
        ASSERT_TRUE(menu && menu->actions().size() == 4);
        ASSERT_EQ(channels->topLevelItemCount(), 2) << "every module of the application is offered";
        // Every channel below the first module, then not this one.
        for (const auto& [node, action] :
            { std::pair(channels->topLevelItem(0), 2), std::pair(ChannelNode(dialog, "3$L#2"), 1) }) {
            emit channels->customContextMenuRequested(channels->visualItemRect(node).center());
            menu->actions().at(action)->trigger();
            menu->hide();
        }
        EXPECT_EQ(dialog.Chosen(), QStringList({ "3$L#1", "3$L#3" }));
        Click(dialog, "cmd_Add");
        EXPECT_EQ(Curves(dialog)->topLevelItemCount(), 2) << "the channel of the existing curve is not added twice";
        Select(dialog, 0);
        Choose(dialog, "5$L#3");
        Click(dialog, "cmd_Join");
        EXPECT_TRUE(dialog.Chosen().isEmpty()) << "the choice is used up";
        EXPECT_EQ(Curves(dialog)->topLevelItem(0)->childCount(), 1) << "the part beneath its curve";
        Choose(dialog, "5$L#1");
        Click(dialog, "cmd_Add");
        EXPECT_FALSE(measuring->DataModules().Contains("5")) << "nothing reaches the view before OK";
        Click(dialog, "cmd_OK");
    });
    EXPECT_EQ(status, 1);
    EXPECT_TRUE(measuring->DataModules().Contains("5"));
    EXPECT_EQ(CurveIds(), QStringList({ "3$L#1", "3$L#3", "5$L#1" }));
    ASSERT_EQ(power->Channels().size(), 2u);
    EXPECT_EQ(generated->fetches - before, 1) << "one refresh fetches once";
    EXPECT_GT(second->fetches, 0) << "the new module is read on the refresh";
    EXPECT_EQ(Value(power, 7), 107.0) << "the sum across the two modules";
    EXPECT_EQ(Value(measuring->FindCurve("3$L#3"), 7), 100.0);
    EXPECT_EQ(Value(measuring->FindCurve("5$L#1"), 7), 7.0);
}

} // namespace
