// SPDX-License-Identifier: GPL-3.0-or-later
// The curve dialog on a view of a generated logger: choosing channels, building sums, removing
// and reordering curves, and what OK and Cancel leave in the view.
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

class CurvesDialogTest : public MeasuringFixture
{
protected:
    // Runs ShowMe with the actions done on the open dialog, and gives its status.
    qint32 Show(const std::function<void(frm_Curves&)>& actions)
    {
        frm_Curves dialog;
        bool ran = false;
        QTimer::singleShot(0, &dialog, [&] {
            ran = true;
            actions(dialog);
            if (dialog.isVisible())
                dialog.reject();
        });
        const qint32 status = dialog.ShowMe(*measuring);
        EXPECT_TRUE(ran);
        return status;
    }
    static QTreeWidget* Curves(frm_Curves& dialog) { return dialog.findChild<QTreeWidget*>("trv_Curves"); }
    static QTreeWidget* Channels(frm_Curves& dialog) { return dialog.findChild<QTreeWidget*>("trv_Channels"); }
    static void Click(frm_Curves& dialog, const char* button)
    {
        auto* found = dialog.findChild<QPushButton*>(button);
        ASSERT_NE(found, nullptr) << button;
        ASSERT_TRUE(found->isEnabled()) << button;
        QTest::mouseClick(found, Qt::LeftButton);
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
    static void SelectCurve(frm_Curves& dialog, int index, int part = -1)
    {
        QTreeWidgetItem* node = Curves(dialog)->topLevelItem(index);
        ASSERT_NE(node, nullptr);
        if (part > 0)
            node = node->child(part - 1);
        ASSERT_NE(node, nullptr);
        Curves(dialog)->setCurrentItem(node);
    }
    // A second logger at address 5 that the application offers but the view does not use.
    GeneratedModule* OfferSecondModule()
    {
        auto box = std::make_shared<ModuleBox>();
        box->SetName("Second logger");
        box->SetAddress("5");
        auto module = std::make_unique<GeneratedModule>(3600);
        GeneratedModule* second = module.get();
        box->SetDataModule(std::move(module));
        EXPECT_TRUE(host.modules.Add(box));
        return second;
    }
    QStringList CurveIds() const
    {
        QStringList ids;
        for (const auto& curve : measuring->Curves())
            ids << curve->ID();
        return ids;
    }
};

TEST_F(CurvesDialogTest, CancelLeavesTheViewAsItWasAndBringsInNoOfferedModule)
{
    Open(3600);
    Curve* curve = Add("3$L#1");
    Add("3$L#2");
    GeneratedModule* second = OfferSecondModule();
    Day();
    const int before = generated->fetches;

    const qint32 status = Show([&](frm_Curves& dialog) {
        QTreeWidgetItem* node = ChannelNode(dialog, "3$L#3");
        ASSERT_NE(node, nullptr);
        const QPoint at = Channels(dialog)->visualItemRect(node).center();
        // The view takes a double click as one on the item it was pressed on.
        QTest::mouseClick(Channels(dialog)->viewport(), Qt::LeftButton, {}, at);
        QTest::mouseDClick(Channels(dialog)->viewport(), Qt::LeftButton, {}, at);
        EXPECT_EQ(dialog.Chosen(), QStringList("3$L#3")) << "a double click chooses";
        Click(dialog, "cmd_Add");
        SelectCurve(dialog, 0);
        Choose(dialog, "3$L#2");
        Click(dialog, "cmd_Join");
        SelectCurve(dialog, 1);
        Click(dialog, "cmd_Remove");
        Choose(dialog, "5$L#1");
        Click(dialog, "cmd_Add");
        Click(dialog, "cmd_Cancel");
    });

    EXPECT_EQ(status, 0);
    EXPECT_EQ(CurveIds(), QStringList({ "3$L#1", "3$L#2" }));
    EXPECT_EQ(curve->Channels().size(), 1u);
    EXPECT_EQ(generated->fetches, before) << "no refresh";
    EXPECT_FALSE(measuring->DataModules().Contains("5"));
    EXPECT_EQ(second->fetches, 0);
}

TEST_F(CurvesDialogTest, OkWithoutAChangeGivesZeroAndDoesNotRefresh)
{
    Open(3600);
    Add("3$L#1");
    Day();
    const int before = generated->fetches;

    const qint32 status = Show([&](frm_Curves& dialog) {
        SelectCurve(dialog, 0);
        EXPECT_FALSE(dialog.findChild<QPushButton*>("cmd_Down")->isEnabled()) << "a single curve cannot move";
        EXPECT_FALSE(dialog.findChild<QPushButton*>("cmd_Up")->isEnabled());
        EXPECT_FALSE(dialog.findChild<QPushButton*>("cmd_Split")->isEnabled()) << "no part to take out";
        EXPECT_FALSE(dialog.findChild<QPushButton*>("cmd_Add")->isEnabled()) << "no channel chosen";
        Choose(dialog, "3$L#1");
        Click(dialog, "cmd_Add");
        EXPECT_EQ(Curves(dialog)->topLevelItemCount(), 1) << "the channel is a curve already";
        Click(dialog, "cmd_OK");
    });
    EXPECT_EQ(status, 0);
    EXPECT_EQ(generated->fetches, before);
}

TEST_F(CurvesDialogTest, ChannelsChosenFromThePopUpBecomeNewCurvesInTheirOrder)
{
    Open(3600);
    Add("3$L#1");
    Day();

    const qint32 status = Show([&](frm_Curves& dialog) {
        QTreeWidget* channels = Channels(dialog);
        ASSERT_GT(channels->topLevelItemCount(), 0);
        QTreeWidgetItem* module = channels->topLevelItem(0);
        auto* menu = dialog.findChild<QMenu*>("mnu_Channels");
        ASSERT_NE(menu, nullptr);
        ASSERT_EQ(menu->actions().size(), 4);
        emit channels->customContextMenuRequested(channels->visualItemRect(module).center());
        menu->actions().at(2)->trigger(); // every channel below
        menu->hide();
        EXPECT_EQ(dialog.Chosen().size(), 3);
        emit channels->customContextMenuRequested(channels->visualItemRect(ChannelNode(dialog, "3$L#2")).center());
        menu->actions().at(1)->trigger(); // not this one
        menu->hide();
        EXPECT_EQ(dialog.Chosen(), QStringList({ "3$L#1", "3$L#3" }));
        Click(dialog, "cmd_Add");
        EXPECT_EQ(Curves(dialog)->topLevelItemCount(), 2) << "the channel of the existing curve is not added twice";
        Click(dialog, "cmd_OK");
    });

    EXPECT_EQ(status, 1);
    EXPECT_EQ(CurveIds(), QStringList({ "3$L#1", "3$L#3" }));
    ASSERT_TRUE(measuring->Curves().back()->Result());
    EXPECT_EQ(measuring->Curves().back()->Result()->DataBlock()->At(3, 1), 100.0);
}

TEST_F(CurvesDialogTest, SplittingAndMovingKeepTheLookAndRemovingTakesACurveOutOfTheView)
{
    Open(3600);
    Curve* first = Add("3$L#1");
    Curve* second = Add("3$L#3");
    ASSERT_TRUE(measuring->AddChannel(*second, "3$L#2"));
    Day();
    const qint32 color = second->Properties().Color;
    const qint32 removedSeries = first->SeriesID();
    QTreeWidget* tree = measuring->Window()->trv_Statistics();
    ASSERT_NE(ChannelTree::FindItem(tree, "S_3$L#1"), nullptr);
    ASSERT_TRUE(Chart().SeriesVisible(removedSeries));

    const qint32 status = Show([&](frm_Curves& dialog) {
        SelectCurve(dialog, 1, 1);
        Click(dialog, "cmd_Split");
        EXPECT_EQ(Curves(dialog)->topLevelItem(1)->childCount(), 0);
        SelectCurve(dialog, 1);
        Click(dialog, "cmd_Up");
        EXPECT_EQ(Curves(dialog)->topLevelItem(0)->text(0), "Reserve");
        EXPECT_EQ(Curves(dialog)->topLevelItem(0)->text(1), "Logger") << "where the channel sits";
        SelectCurve(dialog, 1);
        Click(dialog, "cmd_Remove");
        Click(dialog, "cmd_OK");
    });

    EXPECT_EQ(status, 1);
    ASSERT_EQ(CurveIds(), QStringList("3$L#3"));
    const Curve& moved = *measuring->Curves().front();
    ASSERT_EQ(moved.Channels().size(), 1u);
    EXPECT_EQ(moved.Channels().front().key, "3$L#3");
    EXPECT_EQ(moved.Properties().Color, color);
    ASSERT_TRUE(moved.Result());
    EXPECT_EQ(moved.Result()->DataBlock()->At(3, 1), 100.0) << "the rest refreshed";
    EXPECT_EQ(ChannelTree::FindItem(tree, "S_3$L#1"), nullptr) << "the removed curve's statistic node went";
    EXPECT_NE(ChannelTree::FindItem(tree, "S_3$L#3"), nullptr);
    EXPECT_FALSE(Chart().SeriesVisible(removedSeries)) << "its line is no longer drawn";
}

TEST_F(CurvesDialogTest, ChannelsOfAModuleTheViewDoesNotUseYetBringItInOnOk)
{
    Open(3600);
    Curve* curve = Add("3$L#1");
    GeneratedModule* second = OfferSecondModule();
    Day();
    const int before = generated->fetches;

    const qint32 status = Show([&](frm_Curves& dialog) {
        EXPECT_EQ(Channels(dialog)->topLevelItemCount(), 2) << "every module of the application is offered";
        SelectCurve(dialog, 0);
        Choose(dialog, "5$L#3");
        Click(dialog, "cmd_Join");
        EXPECT_TRUE(dialog.Chosen().isEmpty()) << "the choice is used up";
        EXPECT_EQ(Curves(dialog)->topLevelItem(0)->childCount(), 1) << "the part beneath its curve";
        Choose(dialog, "5$L#1");
        Click(dialog, "cmd_Add");
        ASSERT_EQ(Curves(dialog)->topLevelItemCount(), 2);
        EXPECT_FALSE(measuring->DataModules().Contains("5")) << "nothing reaches the view before OK";
        Click(dialog, "cmd_OK");
    });

    EXPECT_EQ(status, 1);
    EXPECT_TRUE(measuring->DataModules().Contains("5"));
    EXPECT_EQ(CurveIds(), QStringList({ "3$L#1", "5$L#1" }));
    ASSERT_EQ(curve->Channels().size(), 2u);
    EXPECT_EQ(generated->fetches - before, 1) << "one refresh fetches once";
    EXPECT_GT(second->fetches, 0) << "the new module is read on the refresh";
    ASSERT_TRUE(curve->Result() && curve->Result()->DataBlock());
    EXPECT_EQ(curve->Result()->DataBlock()->At(7, 1), 107.0) << "the sum across the two modules";
    const Curve* added = measuring->FindCurve("5$L#1");
    ASSERT_TRUE(added && added->Result() && added->Result()->DataBlock());
    EXPECT_EQ(added->Result()->DataBlock()->At(7, 1), 7.0);
}

} // namespace
