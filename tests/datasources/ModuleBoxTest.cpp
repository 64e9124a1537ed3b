// SPDX-License-Identifier: GPL-3.0-or-later
#include "ModuleBox.h"
#include "ChannelTree.h"
#include "LogCapture.h"
#include "QtPrinters.h"
#include "TestModuleScript.h"

#include <QPointer>
#include <QTreeWidget>
#include <QTreeWidgetItem>

#include <gtest/gtest.h>

#include <tuple>

namespace {

namespace S = TestModuleScript;

class ModuleBoxTest : public ::testing::Test
{
protected:
    void SetUp() override { qputenv("SORANO_MODULE_PATH", SORANO_TEST_MODULE_DIR); }

    // A box with address 3 for the object, whose test module follows the script under its name.
    static std::unique_ptr<ModuleBox> Box(
        const QString& name, const QVariantMap& script = {}, const QString& object = "Sorano.TestModule")
    {
        S::SetScript(name, script);
        auto box = std::make_unique<ModuleBox>();
        box->SetName(name);
        box->SetObject(object);
        box->SetAddress("3");
        return box;
    }
    static std::unique_ptr<ModuleBox> Bound(const QString& name, const QVariantMap& script = {})
    {
        auto box = Box(name, script);
        EXPECT_EQ(box->BindDMI(), 0) << name.toStdString();
        return box;
    }

    // The keys of the tree in pre-order, indented by two blanks per level.
    static QStringList Nodes(QTreeWidget& tree)
    {
        QStringList nodes;
        for (QTreeWidgetItemIterator it(&tree); *it; ++it) {
            int depth = 0;
            for (const QTreeWidgetItem* up = (*it)->parent(); up; up = up->parent())
                ++depth;
            nodes << QString(depth * 2, ' ') + ChannelTree::Key(*it);
        }
        return nodes;
    }
    // The module's root node, as the channel dialogs make it.
    static void AddModuleRoot(QTreeWidget& tree, const ModuleBox& box)
    {
        auto* root = new QTreeWidgetItem(&tree, QStringList { "Modul" });
        ChannelTree::SetKey(root, box.GetModuleKey());
    }

    TempSettings roots;
};

TEST_F(ModuleBoxTest, BindDMIGivesItsCodeAndExactlyTheLinesOfEachFailure)
{
    const QString check = "error checking datamodule - Object Sorano.TestModule returned %1 when executing self-check.";
    const std::tuple<const char*, QVariantMap, qint32, QStringList> cases[] = {
        { "", {}, -1, {} },
        { "No.Such.Module", {}, -2,
            { "error binding datamodule - Error No module plug-in provides No.Such.Module (1) when binding dmi "
              "No.Such.Module (Bind)." } },
        { "Sorano.TestModule", { { S::SelfCheck, 7 } }, -3, { check.arg(7) } },
        { "Sorano.TestModule", { { S::Throws, QStringList { "SelfCheck" } } }, -3,
            { "error checking datamodule - Error SelfCheck failed (-1) when checking dmiSorano.TestModule (Bind).",
                check.arg(-3) } },
        { "Sorano.TestModule", {}, 0, {} },
    };
    for (const auto& [object, script, result, lines] : cases) {
        LogCapture log(roots);
        auto box = Box("Bind", script, object);
        EXPECT_EQ(box->BindDMI(), result) << object;
        EXPECT_EQ(box->DataModule() != nullptr, result == 0) << object;
        EXPECT_EQ(log.From("ModuleBox.BindDMI"), lines) << log.Dump();
    }
}

TEST_F(ModuleBoxTest, InitIsLazyRepeatedUntilTheModuleAgreesAndFailuresAreTrapped)
{
    LogCapture log(roots);
    auto box = Bound("Lazy", { { S::InitFailures, 2 } });
    EXPECT_EQ(S::Calls("Lazy", "Initialize"), 0);
    // The overview answers although the initialisation failed, so the list succeeds.
    for (const bool init : { false, false, true }) {
        EXPECT_EQ(box->GetChannelList(nullptr), 1);
        EXPECT_EQ(box->IsInit(), init);
    }
    box->ResetChannelList();
    EXPECT_EQ(box->GetChannelList(nullptr), 1);
    EXPECT_TRUE(box->IsInit());
    EXPECT_EQ(S::Calls("Lazy", "Initialize"), 3);
    EXPECT_EQ(log.Count("ModuleBox.Init", "error initialising datamodule",
                  "Data-module Lazy (Sorano.TestModule) returned -7 when initialising."),
        2)
        << log.Dump();

    auto unbound = Box("Unbound", {}, "No.Such.Module");
    EXPECT_EQ(unbound->Init(), 0);
    EXPECT_FALSE(unbound->IsInit());
    EXPECT_EQ(unbound->GetChannelList(nullptr), -1);
    EXPECT_FALSE(unbound->HasConfig());
    EXPECT_FALSE(unbound->ShowConfig());

    auto throws = Bound("Throws", { { S::Throws, QStringList { "Initialize", "ShowConfig" } } });
    EXPECT_FALSE(throws->Init() || throws->IsInit());
    EXPECT_FALSE(throws->ShowConfig());
    EXPECT_TRUE(log.Has("ModuleBox.ShowConfig", "error configuring datamodule",
        "Error ShowConfig failed when showing the configuration of Throws (Sorano.TestModule)."));
}

TEST_F(ModuleBoxTest, ChannelCacheIsFilledOnceKeyedByChannelIdResetOnDemandAndReleasedWithTheBox)
{
    LogCapture log(roots);
    auto box = Bound("Cache", { { S::Overview, QStringList { "1001", "5#2", "1001", "77" } } });
    EXPECT_EQ(box->Channel(""), nullptr);
    EXPECT_EQ(box->GetChannelList(nullptr), 1);

    ASSERT_EQ(box->Channels().size(), 3);
    EXPECT_EQ(box->Channel("")->ChannelID(), "1001");
    EXPECT_NE(box->Channel("5#2"), nullptr);
    for (const DataMatrixPtr& channel : box->Channels())
        EXPECT_EQ(channel->ModuleAddress(), 3);
    EXPECT_EQ(box->Channel("5"), nullptr);
    EXPECT_TRUE(log.Has("ModuleBox.GetChannelList", "duplicate channel",
        "Channel 1001 delivered twice by module Cache (Sorano.TestModule); the second is skipped."));

    EXPECT_EQ(box->GetChannelList(nullptr), 1);
    EXPECT_EQ(S::Calls("Cache", "GetChannelOverview"), 1);
    box->ResetChannelList();
    EXPECT_EQ(box->Channel(""), nullptr);
    EXPECT_EQ(box->GetChannelList(nullptr), 1);
    EXPECT_EQ(S::Calls("Cache", "GetChannelOverview"), 2);
    EXPECT_EQ(S::Calls("Cache", "Initialize"), 1);

    // Destroying the box releases the module and its channels.
    const QPointer<QObject> module = box->DataModuleObject();
    const std::weak_ptr<DataMatrix> channel = box->Channel("");
    ASSERT_FALSE(module.isNull() || channel.expired());
    box.reset();
    EXPECT_TRUE(module.isNull());
    EXPECT_TRUE(channel.expired());
}

TEST_F(ModuleBoxTest, ListResultCodesFollowTheFailingStep)
{
    const QString overview = "error getting overview - Error %1 when getting channeloverview from module %2 "
                             "(Sorano.TestModule).";
    const QString structure = "error getting structure - Error %1 when getting channelstructure from module %2 "
                              "(Sorano.TestModule).";
    // Name, script, whether a tree is given, result, calls of GetChannelStructure, log lines.
    const std::tuple<const char*, QVariantMap, bool, qint32, int, QStringList> cases[] = {
        { "OverviewThrows", { { S::Throws, QStringList { "GetChannelOverview" } } }, true, -2, 0,
            { overview.arg(0).arg("OverviewThrows") } },
        { "StructureFails", { { S::StructureStatus, 4 } }, true, -3, 1, { structure.arg(4).arg("StructureFails") } },
        { "NoTree", { { S::StructureStatus, 4 } }, false, 1, 0, {} },
        { "NoChannels", { { S::Overview, QStringList {} } }, true, 1, 0, {} },
        { "NoCategories", { { S::Categories, QStringList {} } }, true, 1, 1, {} },
    };
    for (const auto& [name, script, withTree, code, structureCalls, lines] : cases) {
        LogCapture log(roots);
        auto box = Bound(name, script);
        QTreeWidget tree;
        EXPECT_EQ(box->GetChannelList(withTree ? &tree : nullptr), code) << name;
        EXPECT_EQ(tree.topLevelItemCount(), 0) << name;
        EXPECT_EQ(S::Calls(name, "GetChannelStructure"), structureCalls) << name;
        EXPECT_EQ(log.From("ModuleBox.GetChannelList"), lines) << log.Dump();
    }
}

TEST_F(ModuleBoxTest, TreeFollowsTheParentsAndDropsWhatHasNoneYet)
{
    LogCapture log(roots, 2);
    auto box = Bound("Shape",
        { { S::Categories,
              QStringList { "1$Site$$0", "2$Hall$$1$folder", "4$Late$$3", "3$Room$$2", "5$Bad", "6$Orphan$$99",
                  "07$Padded$$1" } },
            { S::Channels,
                QStringList { "1001$Power$$2$0", "1002$Phase$$2$1001", "1003$Lost$$4$0", "1004$Short$$2",
                    "1005$NoParent$$2$999", "1006$Room power$$3$0", "2#1$Feed$$2$0", "2#2$Feed phase$$2$2#1" } } });
    QTreeWidget tree;
    AddModuleRoot(tree, *box);
    EXPECT_EQ(box->GetChannelList(&tree, box->GetModuleKey()), 1);
    EXPECT_EQ(Nodes(tree),
        QStringList(
            { "DM_3", "  DM_3_1", "    DM_3_2", "      DM_3_3", "        DM_3_CHAN_1006", "      DM_3_CHAN_1001",
                "        DM_3_CHAN_1002", "      DM_3_CHAN_2#1", "        DM_3_CHAN_2#2", "    DM_3_7" }));
    EXPECT_EQ(log.From("ModuleBox.GetChannelList"),
        QStringList({ "Invalid categorie-string - Invalid categorie string 5$Bad from module Shape "
                      "(Sorano.TestModule).",
            "Invalid channel-string - Invalid channel string 1004$Short$$2 from module Shape (Sorano.TestModule)." }));
    const QTreeWidgetItem* hall = ChannelTree::FindItem(&tree, "DM_3_2");
    const QTreeWidgetItem* power = ChannelTree::FindItem(&tree, "DM_3_CHAN_1006");
    ASSERT_TRUE(hall && power);
    EXPECT_EQ(QStringList({ hall->text(0), ChannelTree::Tag(hall), ChannelTree::Image(hall), power->text(0),
                  ChannelTree::Tag(power) }),
        QStringList({ "Hall", "3", "ICO_FOLDER", "Room power", "3$1006" }));

    // Asked again: the structure is fetched anew, no key twice, a late parent is found now.
    EXPECT_EQ(box->GetChannelList(&tree, box->GetModuleKey()), 1);
    EXPECT_EQ(Nodes(tree),
        QStringList({ "DM_3", "  DM_3_1", "    DM_3_2", "      DM_3_3", "        DM_3_CHAN_1006", "        DM_3_4",
            "          DM_3_CHAN_1003", "      DM_3_CHAN_1001", "        DM_3_CHAN_1002", "      DM_3_CHAN_2#1",
            "        DM_3_CHAN_2#2", "    DM_3_7" }));
    EXPECT_EQ(S::Calls("Shape", "GetChannelStructure"), 2);
    EXPECT_EQ(S::Calls("Shape", "GetChannelOverview"), 1);

    // Under an unknown parent key nothing is added.
    QTreeWidget elsewhere;
    EXPECT_EQ(box->GetChannelList(&elsewhere, "DM_9"), 1);
    EXPECT_EQ(elsewhere.topLevelItemCount(), 0);
}

// Five-field categories that are no folders go when only folders are asked for; "X\\Y" is two levels.
TEST_F(ModuleBoxTest, FoldersOnlyAndMaxDepthLeaveNodesOut)
{
    const QVariantMap folders { { S::Categories,
                                    QStringList { "1$Folder$$0$folder", "2$Measuring$$0$measuring", "3$PathId$$0$2",
                                        "4$Plain$$0", "5$Six$$0$2$x", "6$Loud$$0$FOLDER", "7$Below$$1$2",
                                        "8$Sub$$1$Folder" } },
        { S::Channels, QStringList { "1001$Power$$1$0", "1002$Gone$$7$0" } } };
    const QVariantMap depth { { S::Categories, QStringList { "1$A$$0", "2$B$$1", "3$C$$2", "4$X\\Y$$0" } },
        { S::Channels, QStringList { "1001$Deep$$3$0", "1002$Top$$1$0" } } };
    const std::tuple<const QVariantMap&, bool, int, QStringList> cases[] = {
        { folders, true, -1,
            { "DM_3", "  DM_3_1", "    DM_3_8", "    DM_3_CHAN_1001", "  DM_3_4", "  DM_3_5", "  DM_3_6" } },
        { folders, false, -1,
            { "DM_3", "  DM_3_1", "    DM_3_7", "      DM_3_CHAN_1002", "    DM_3_8", "    DM_3_CHAN_1001", "  DM_3_2",
                "  DM_3_3", "  DM_3_4", "  DM_3_5", "  DM_3_6" } },
        { depth, false, 2, { "DM_3", "  DM_3_1", "    DM_3_CHAN_1002" } },
        { depth, false, 1, { "DM_3" } },
    };
    for (const auto& [script, foldersOnly, maxDepth, nodes] : cases) {
        auto box = Bound("Options", script);
        QTreeWidget tree;
        AddModuleRoot(tree, *box);
        EXPECT_EQ(box->GetChannelList(&tree, box->GetModuleKey(), true, maxDepth, foldersOnly), 1);
        EXPECT_EQ(Nodes(tree), nodes) << "foldersOnly " << foldersOnly << " maxDepth " << maxDepth;
    }
}

TEST_F(ModuleBoxTest, PathIdsLeadFromChannelsToPathsAndBackWhenTheStructureCanBeBuilt)
{
    auto box = Bound("Structure",
        { { S::Categories,
              QStringList { "1$Site$main gate$0$4", "2$Hall$$1$12", "3$Orphan$$99$5", "4$Late$$5$6", "5$Parent$$0$8",
                  "6$NoPath$$1" } },
            { S::Channels,
                QStringList { "7$Power$$2$0$7", "8$Phase$$0$7$3", "9$Homeless$$42$0$1", "10$Plain$$1$0",
                    "11$Lost$$2$99$2", "12$Twin$$6$0$7" } } });
    EXPECT_TRUE(box->StructureRoot().IsNull());
    const std::pair<qint32, const char*> paths[]
        = { { 7, "4\\12\\7" }, { 8, "4\\12\\7\\3" }, { 10, "" }, { 12, "7" }, { 99, "" } };
    for (const auto& [channelId, path] : paths)
        EXPECT_EQ(box->GetPathFromID(channelId), path) << channelId;
    const std::tuple<qint32, const char*, qint32> ids[]
        = { { 1, "12\\7", 7 }, { 1, "12\\7\\3", 8 }, { 1, "7", 7 }, { 2, "7\\3", 8 }, { 1, "12", -3 }, { 1, "", -3 },
              { 1, "12\\99", 0 }, { 77, "12", -2 }, { 6, "7", 12 }, { 1, "12\\07", 7 } };
    for (const auto& [categoryId, path, id] : ids)
        EXPECT_EQ(box->GetIDFromPath(categoryId, path), id) << categoryId << " " << path;
    EXPECT_EQ(S::Calls("Structure", "GetChannelStructure"), 1) << "built once, on the first question";

    EXPECT_FALSE(box->StructureRoot().IsNull());
    box->ResetChannelList();
    EXPECT_TRUE(box->StructureRoot().IsNull());

    // A structure that can't be built gives no paths; the tree, which needs no numbers, still fills.
    auto word = Bound("KindWord",
        { { S::Categories, QStringList { "1$Site$$0$folder" } }, { S::Channels, QStringList { "7$P$$1$0$7" } } });
    EXPECT_EQ(word->InitializeStructure(), -3);
    EXPECT_EQ(word->GetPathFromID(7), "");
    QTreeWidget tree;
    EXPECT_EQ(word->GetChannelList(&tree), 1);
    EXPECT_EQ(tree.topLevelItemCount(), 1);
    EXPECT_EQ(Bound("StructureFails", { { S::StructureStatus, 9 } })->InitializeStructure(), -2);
    EXPECT_EQ(Bound("NoChannels", { { S::Overview, QStringList {} } })->InitializeStructure(), -1);
}

TEST(GetDataText, GivesTheResolutionAndTheReasonOfAFailureWhichMayHoldSemicolons)
{
    const std::tuple<const char*, double, QString> cases[]
        = { { "CSV;900", 900, "" }, { "X;0;a;b; c", 0, "a;b; c" }, { "X;15;", 15, "" }, { "X", 0, "" } };
    for (const auto& [text, resolution, error] : cases) {
        ChannelCollection channels;
        channels.Add(std::make_shared<DataMatrix>(), "1");
        channels.AddText(text);
        EXPECT_EQ(GetDataResolution(channels), resolution) << text;
        EXPECT_EQ(GetDataError(channels), error) << text;
    }
    // Only the last item counts, and only when it is a text.
    ChannelCollection channels;
    EXPECT_EQ(GetDataError(channels), "");
    channels.AddText("X;1;gone");
    channels.Add(std::make_shared<DataMatrix>(), "1");
    EXPECT_EQ(GetDataError(channels), "");
}

} // namespace
