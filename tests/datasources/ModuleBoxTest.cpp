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
    const struct
    {
        const char* object;
        QVariantMap script;
        qint32 result;
        QStringList lines;
    } cases[] = {
        { "", {}, -1, {} },
        { "No.Such.Module", {}, -2,
            { "error binding datamodule - Error No module plug-in provides No.Such.Module (1) when binding dmi "
              "No.Such.Module (Bind)." } },
        { "Sorano.TestModule.Plain", {}, -2,
            { "error binding datamodule - Error Object Sorano.TestModule.Plain is no data module (6) when binding dmi "
              "Sorano.TestModule.Plain (Bind)." } },
        { "Sorano.TestModule", { { S::SelfCheck, 7 } }, -3, { check.arg(7) } },
        { "Sorano.TestModule", { { S::Throws, QStringList { "SelfCheck" } } }, -3,
            { "error checking datamodule - Error SelfCheck failed (-1) when checking dmiSorano.TestModule (Bind).",
                check.arg(-3) } },
        { "Sorano.TestModule", {}, 0, {} },
    };
    for (const auto& c : cases) {
        LogCapture log(roots);
        auto box = Box("Bind", c.script, c.object);
        EXPECT_EQ(box->BindDMI(), c.result) << c.object;
        EXPECT_EQ(box->DataModule() != nullptr, c.result == 0) << c.object;
        EXPECT_EQ(box->DataModuleObject() != nullptr, c.result == 0) << c.object;
        EXPECT_EQ(log.From("ModuleBox.BindDMI"), c.lines) << log.Dump();
    }
}

TEST_F(ModuleBoxTest, EachLineIsWrittenAtItsLevel)
{
    const QVariantMap badCategory { { S::Categories, QStringList { "1$x$0" } } };
    const QVariantMap badChannel { { S::Channels, QStringList { "1$x$$1" } } };
    const struct
    {
        const char* object;
        QVariantMap script;
        int level;
        const char* source;
        const char* title;
    } cases[] = {
        { "No.Such.Module", {}, 3, "BindDMI", "error binding datamodule" },
        { "Sorano.TestModule", { { S::SelfCheck, 2 } }, 3, "BindDMI", "error checking datamodule" },
        { "Sorano.TestModule", { { S::InitFailures, 1 } }, 3, "Init", "error initialising datamodule" },
        { "Sorano.TestModule", { { S::OverviewStatus, 0 } }, 3, "GetChannelList", "error getting overview" },
        { "Sorano.TestModule", { { S::StructureStatus, 0 } }, 3, "GetChannelList", "error getting structure" },
        { "Sorano.TestModule", badCategory, 2, "GetChannelList", "Invalid categorie-string" },
        { "Sorano.TestModule", badChannel, 2, "GetChannelList", "Invalid channel-string" },
        { "Sorano.TestModule", badCategory, 2, "InitializeStructure", "Invalid categorie-string" },
        { "Sorano.TestModule", badChannel, 2, "InitializeStructure", "Invalid channel-string" },
    };
    for (const auto& c : cases) {
        for (const int lowest : { c.level, c.level + 1 }) {
            LogCapture log(roots, lowest);
            auto box = Box("Levels", c.script, c.object);
            box->BindDMI();
            QTreeWidget tree;
            box->GetChannelList(&tree);
            box->InitializeStructure();
            const QStringList lines = log.From(QStringLiteral("ModuleBox.") + c.source);
            const bool written = std::any_of(
                lines.cbegin(), lines.cend(), [&](const QString& line) { return line.startsWith(c.title); });
            EXPECT_EQ(written, lowest == c.level) << c.title << " with lowest level " << lowest;
        }
    }
}

TEST_F(ModuleBoxTest, InitIsLazyRepeatedAtEachListUntilTheModuleAgreesAndFailsWithoutModule)
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
    EXPECT_TRUE(log.Has("ModuleBox.Init", "error initialising datamodule",
        "There is no data-module for the object Unbound (No.Such.Module) to be initialized."));
    QTreeWidget tree;
    EXPECT_EQ(unbound->GetChannelList(&tree), -1);
    EXPECT_EQ(tree.topLevelItemCount(), 0);
    EXPECT_EQ(unbound->Channel(""), nullptr);

    auto throws = Bound("InitThrows", { { S::Throws, QStringList { "Initialize" } } });
    EXPECT_EQ(throws->Init(), 0);
    EXPECT_FALSE(throws->IsInit());
    EXPECT_TRUE(log.Has("ModuleBox.Init", "error initialising datamodule",
        "Data-module InitThrows (Sorano.TestModule) returned 0 when initialising."));
}

TEST_F(ModuleBoxTest, ChannelCacheIsFilledOnceKeyedByChannelIdAndResetOnDemand)
{
    LogCapture log(roots);
    auto box = Bound("Cache", { { S::Overview, QStringList { "1001", "5#2", "1001", "77" } } });
    EXPECT_EQ(box->Channel(""), nullptr);
    EXPECT_EQ(box->GetChannelList(nullptr), 1);

    ASSERT_EQ(box->Channels().size(), 3);
    EXPECT_EQ(box->Channel("")->ChannelID(), "1001");
    ASSERT_NE(box->Channel("5#2"), nullptr);
    EXPECT_EQ(box->Channel("5#2")->ChannelName(), "Channel 5#2");
    for (const DataMatrixPtr& channel : box->Channels())
        EXPECT_EQ(channel->ModuleAddress(), 3);
    EXPECT_EQ(box->Channel("78"), nullptr);
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
}

TEST_F(ModuleBoxTest, ListResultCodesFollowTheFailingStep)
{
    const QString overview = "error getting overview - Error %1 when getting channeloverview from module %2 "
                             "(Sorano.TestModule).";
    const QString structure = "error getting structure - Error %1 when getting channelstructure from module %2 "
                              "(Sorano.TestModule).";
    const struct
    {
        const char* name;
        QVariantMap script;
        bool withTree;
        qint32 code;
        int structureCalls;
        QStringList lines;
    } cases[] = {
        { "OverviewFails", { { S::OverviewStatus, 5 } }, true, -2, 0, { overview.arg(5).arg("OverviewFails") } },
        { "OverviewThrows", { { S::Throws, QStringList { "GetChannelOverview" } } }, true, -2, 0,
            { overview.arg(0).arg("OverviewThrows") } },
        { "StructureFails", { { S::StructureStatus, 4 } }, true, -3, 1, { structure.arg(4).arg("StructureFails") } },
        { "StructureThrows", { { S::Throws, QStringList { "GetChannelStructure" } } }, true, -3, 1,
            { structure.arg(0).arg("StructureThrows") } },
        { "NoTree", { { S::StructureStatus, 4 } }, false, 1, 0, {} },
        { "NoChannels", { { S::Overview, QStringList {} } }, true, 1, 0, {} },
        { "NoCategories", { { S::Categories, QStringList {} } }, true, 1, 1, {} },
    };
    for (const auto& c : cases) {
        LogCapture log(roots);
        auto box = Bound(c.name, c.script);
        QTreeWidget tree;
        EXPECT_EQ(box->GetChannelList(c.withTree ? &tree : nullptr), c.code) << c.name;
        EXPECT_EQ(tree.topLevelItemCount(), 0) << c.name;
        EXPECT_EQ(S::Calls(c.name, "GetChannelStructure"), c.structureCalls) << c.name;
        EXPECT_EQ(log.From("ModuleBox.GetChannelList"), c.lines) << log.Dump();
    }
}

TEST_F(ModuleBoxTest, CategoryKindChoosesTheImageAndNodesCarryKeyTextAndTag)
{
    const std::pair<const char*, const char*> cases[]
        = { { "7$Hall$$0", "ICO_CATEGORIE" }, { "7$Hall$$0$folder", "ICO_FOLDER" },
              { "7$Hall$$0$FOLDER$x", "ICO_FOLDER" }, { "7$Hall$$0$Measuring", "ICO_MEASURING" },
              { "7$Hall$$0$folders", "ICO_CATEGORIE" }, { "7$Hall$$0$", "ICO_CATEGORIE" } };
    using namespace ChannelTree;
    for (const auto& [line, image] : cases) {
        auto box = Bound("Images",
            { { S::Categories, QStringList { line } }, { S::Channels, QStringList { "1001$Power$note$7$0" } } });
        QTreeWidget tree;
        ASSERT_EQ(box->GetChannelList(&tree), 1) << line;
        ASSERT_EQ(tree.topLevelItemCount(), 1) << line;
        const QTreeWidgetItem* category = tree.topLevelItem(0);
        EXPECT_EQ(QStringList({ Key(category), category->text(0), Image(category), Tag(category) }),
            QStringList({ "DM_3_7", "Hall", image, "3" }));
        ASSERT_EQ(category->childCount(), 1) << line;
        const QTreeWidgetItem* channel = category->child(0);
        EXPECT_EQ(QStringList({ Key(channel), channel->text(0), Image(channel), Tag(channel) }),
            QStringList({ "DM_3_CHAN_1001", "Power", "ICO_CHANNEL", "3$1001" }));
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
                    "1005$NoParent$$2$999", "1006$Room power$$3$0" } } });
    QTreeWidget tree;
    AddModuleRoot(tree, *box);
    EXPECT_EQ(box->GetChannelList(&tree, box->GetModuleKey()), 1);
    EXPECT_EQ(Nodes(tree),
        QStringList({ "DM_3", "  DM_3_1", "    DM_3_2", "      DM_3_3", "        DM_3_CHAN_1006",
            "      DM_3_CHAN_1001", "        DM_3_CHAN_1002", "    DM_3_7" }));
    EXPECT_EQ(log.From("ModuleBox.GetChannelList"),
        QStringList({ "Invalid categorie-string - Invalid categorie string 5$Bad from module Shape "
                      "(Sorano.TestModule).",
            "Invalid channel-string - Invalid channel string 1004$Short$$2 from module Shape (Sorano.TestModule)." }));

    // Asked again, the structure is fetched again; no key is added twice, but a node whose
    // parent came later the first time now finds it.
    EXPECT_EQ(box->GetChannelList(&tree, box->GetModuleKey()), 1);
    EXPECT_EQ(Nodes(tree),
        QStringList({ "DM_3", "  DM_3_1", "    DM_3_2", "      DM_3_3", "        DM_3_CHAN_1006", "        DM_3_4",
            "          DM_3_CHAN_1003", "      DM_3_CHAN_1001", "        DM_3_CHAN_1002", "    DM_3_7" }));
    EXPECT_EQ(S::Calls("Shape", "GetChannelStructure"), 2);
    EXPECT_EQ(S::Calls("Shape", "GetChannelOverview"), 1);

    // Without a parent key the top categories go to the root level; under an unknown key nowhere.
    QTreeWidget rootLevel;
    EXPECT_EQ(box->GetChannelList(&rootLevel, QString(), false), 1);
    EXPECT_EQ(Nodes(rootLevel), QStringList({ "DM_3_1", "  DM_3_2", "    DM_3_3", "  DM_3_7" }));
    QTreeWidget elsewhere;
    EXPECT_EQ(box->GetChannelList(&elsewhere, "DM_9"), 1);
    EXPECT_EQ(elsewhere.topLevelItemCount(), 0);
}

TEST_F(ModuleBoxTest, FoldersOnlyDropsFiveFieldCategoriesThatAreNoFolders)
{
    const QVariantMap script { { S::Categories,
                                   QStringList { "1$Folder$$0$folder", "2$Measuring$$0$measuring", "3$PathId$$0$2",
                                       "4$Plain$$0", "5$Six$$0$2$x", "6$Loud$$0$FOLDER", "7$Below$$1$2",
                                       "8$Sub$$1$Folder" } },
        { S::Channels, QStringList { "1001$Power$$1$0", "1002$Gone$$7$0" } } };
    const struct
    {
        bool foldersOnly;
        bool withChannels;
        QStringList nodes;
    } cases[] = {
        { true, true, { "DM_3_1", "  DM_3_8", "  DM_3_CHAN_1001", "DM_3_4", "DM_3_5", "DM_3_6" } },
        { true, false, { "DM_3_1", "  DM_3_8", "DM_3_4", "DM_3_5", "DM_3_6" } },
        { false, true,
            { "DM_3_1", "  DM_3_7", "    DM_3_CHAN_1002", "  DM_3_8", "  DM_3_CHAN_1001", "DM_3_2", "DM_3_3", "DM_3_4",
                "DM_3_5", "DM_3_6" } },
    };
    for (const auto& c : cases) {
        auto box = Bound("Folders", script);
        QTreeWidget tree;
        EXPECT_EQ(box->GetChannelList(&tree, QString(), c.withChannels, -1, c.foldersOnly), 1);
        EXPECT_EQ(Nodes(tree), c.nodes) << "foldersOnly " << c.foldersOnly << " withChannels " << c.withChannels;
    }
}

TEST_F(ModuleBoxTest, MaxDepthCountsTheLevelsOfTheNodesFullPath)
{
    const QVariantMap script { { S::Categories, QStringList { "1$A$$0", "2$B$$1", "3$C$$2", "4$X\\Y$$0" } },
        { S::Channels, QStringList { "1001$Deep$$3$0", "1002$Top$$1$0" } } };
    const struct
    {
        int maxDepth;
        QStringList nodes;
    } cases[] = {
        { -1,
            { "DM_3", "  DM_3_1", "    DM_3_2", "      DM_3_3", "        DM_3_CHAN_1001", "    DM_3_CHAN_1002",
                "  DM_3_4" } },
        { 3, { "DM_3", "  DM_3_1", "    DM_3_2", "    DM_3_CHAN_1002", "  DM_3_4" } },
        { 2, { "DM_3", "  DM_3_1", "    DM_3_CHAN_1002" } }, // "X\Y" counts one level more
        { 1, { "DM_3" } },
    };
    for (const auto& c : cases) {
        auto box = Bound("Depth", script);
        QTreeWidget tree;
        AddModuleRoot(tree, *box);
        EXPECT_EQ(box->GetChannelList(&tree, box->GetModuleKey(), true, c.maxDepth), 1);
        EXPECT_EQ(Nodes(tree), c.nodes) << "maxDepth " << c.maxDepth;
    }
}

const QVariantMap StructureScript { { S::Categories,
                                        QStringList { "1$Site$main gate$0$4", "2$Hall$$1$12", "3$Orphan$$99$5",
                                            "4$Late$$5$6", "5$Parent$$0$8", "6$NoPath$$1" } },
    { S::Channels,
        QStringList { "7$Power$$2$0$7", "8$Phase$$0$7$3", "9$Homeless$$42$0$1", "10$Plain$$1$0", "11$Lost$$2$99$2",
            "12$Twin$$6$0$7" } } };

TEST_F(ModuleBoxTest, StructureDocumentNestsCategoriesAndChannelsWithTheirAttributes)
{
    auto box = Bound("Structure", StructureScript);
    EXPECT_TRUE(box->StructureRoot().IsNull());
    ASSERT_EQ(box->InitializeStructure(), 1);
    const XmlNode root = box->StructureRoot();
    EXPECT_EQ(root.Tag(), "module-box");
    const auto category = [&](const char* id) { return root.FindDescendant("category", "id", id); };
    const auto channel = [&](const char* id) { return root.FindDescendant("channel", "id", id); };

    const XmlNode site = category("1");
    EXPECT_EQ(site.Parent().Tag(), "module-box");
    EXPECT_EQ(site.Content(), "Site");
    EXPECT_EQ(site.Attribute("path-id"), "4");
    EXPECT_EQ(site.Attribute("remark"), "main gate");
    EXPECT_EQ(category("2").Parent().Attribute("id"), "1");
    EXPECT_EQ(category("6").Attribute("path-id"), "0");
    // A missing parent puts the category at the top, also one listed before its parent.
    EXPECT_EQ(category("3").Parent().Tag(), "module-box");
    EXPECT_EQ(category("4").Parent().Tag(), "module-box");

    const XmlNode phase = channel("8");
    EXPECT_EQ(phase.Content(), "Phase");
    EXPECT_EQ(phase.Attribute("path-id"), "3");
    EXPECT_EQ(phase.Parent().Attribute("id"), "7");
    EXPECT_EQ(channel("10").Attribute("path-id"), "0");
    // A channel whose category or parent channel is missing is left out.
    EXPECT_TRUE(channel("9").IsNull());
    EXPECT_TRUE(channel("11").IsNull());

    box->ResetChannelList();
    EXPECT_TRUE(box->StructureRoot().IsNull());
}

TEST_F(ModuleBoxTest, PathIdsLeadFromChannelToPathAndBack)
{
    auto box = Bound("Paths", StructureScript);
    const std::pair<qint32, const char*> paths[]
        = { { 7, "4\\12\\7" }, { 8, "4\\12\\7\\3" }, { 10, "" }, { 12, "7" }, { 99, "" } };
    for (const auto& [channelId, path] : paths)
        EXPECT_EQ(box->GetPathFromID(channelId), path) << channelId;
    EXPECT_EQ(S::Calls("Paths", "GetChannelStructure"), 1);

    const struct
    {
        qint32 categoryId;
        const char* path;
        qint32 id;
    } ids[] = { { 1, "12\\7", 7 }, { 1, "12\\7\\3", 8 }, { 1, "7", 7 }, { 2, "7\\3", 8 }, { 1, "12", -3 },
        { 1, "", -3 }, { 1, "12\\99", 0 }, { 1, "5", 0 }, { 77, "12", -2 }, { 6, "7", 12 }, { 1, "12\\07", 7 } };
    for (const auto& i : ids)
        EXPECT_EQ(box->GetIDFromPath(i.categoryId, i.path), i.id) << i.categoryId << " " << i.path;
}

TEST_F(ModuleBoxTest, StructureThatCannotBeBuiltGivesNoPathsButTheTreeStillFills)
{
    LogCapture log(roots);
    const struct
    {
        const char* name;
        QVariantMap script;
        qint32 structure;
        bool treeFills;
    } cases[] = {
        { "KindWord",
            { { S::Categories, QStringList { "1$Site$$0$folder" } }, { S::Channels, QStringList { "7$P$$1$0$7" } } },
            -3, true },
        { "ChannelWord",
            { { S::Categories, QStringList { "1$Site$$0$4" } }, { S::Channels, QStringList { "x7$P$$1$0$7" } } }, -3,
            true },
        { "StructureFails", { { S::StructureStatus, 9 } }, -2, false },
        { "NoChannels", { { S::Overview, QStringList {} } }, -1, false },
    };
    for (const auto& c : cases) {
        auto box = Bound(c.name, c.script);
        EXPECT_EQ(box->InitializeStructure(), c.structure) << c.name;
        EXPECT_TRUE(box->StructureRoot().IsNull()) << c.name;
        EXPECT_EQ(box->GetPathFromID(7), "") << c.name;
        EXPECT_EQ(box->GetIDFromPath(1, "7"), -1) << c.name;
        QTreeWidget tree;
        box->GetChannelList(&tree);
        EXPECT_EQ(tree.topLevelItemCount() > 0, c.treeFills) << c.name;
    }
    EXPECT_TRUE(log.Has("ModuleBox.InitializeStructure", "error building structure",
        "Field folder of structure string 1$Site$$0$folder from module KindWord (Sorano.TestModule) is no number."))
        << log.Dump();
}

TEST_F(ModuleBoxTest, ConfigurationCallsAreTrapped)
{
    LogCapture log(roots);
    auto box = Bound("Config");
    EXPECT_TRUE(box->HasConfig());
    EXPECT_TRUE(box->ShowConfig());
    EXPECT_EQ(S::Calls("Config", "ShowConfig"), 1);

    S::SetScript("Config", { { S::HasConfig, false } });
    EXPECT_FALSE(box->HasConfig());
    S::SetScript("Config", { { S::Throws, QStringList { "ShowConfig", "HasConfig" } } });
    EXPECT_FALSE(box->HasConfig());
    EXPECT_FALSE(box->ShowConfig());
    EXPECT_EQ(S::Calls("Config", "ShowConfig"), 1);
    EXPECT_TRUE(log.Has("ModuleBox.ShowConfig", "error configuring datamodule",
        "Error ShowConfig failed when showing the configuration of Config (Sorano.TestModule)."))
        << log.Dump();

    ModuleBox unbound;
    EXPECT_FALSE(unbound.HasConfig());
    EXPECT_FALSE(unbound.ShowConfig());
}

TEST_F(ModuleBoxTest, DestroyingTheBoxReleasesTheModule)
{
    auto box = Bound("Release");
    box->GetChannelList(nullptr);
    const QPointer<QObject> module = box->DataModuleObject();
    const std::weak_ptr<DataMatrix> channel = box->Channel("");
    ASSERT_FALSE(module.isNull());
    ASSERT_FALSE(channel.expired());
    box.reset();
    EXPECT_TRUE(module.isNull());
    EXPECT_TRUE(channel.expired());
}

TEST(GetDataResult, ResolutionComesFromTheSecondFieldOfTheLastItem)
{
    const auto channel = std::make_shared<DataMatrix>();
    const struct
    {
        int channels;
        const char* text; // nullptr: no text item
        double resolution;
        qsizetype count;
    } cases[] = { { 2, "data;900", 900, 2 }, { 1, "data;15.5;extra", 15.5, 1 }, { 1, "data;60s", 60, 1 },
        { 1, "data;abc", 0, 1 }, { 1, "data", 0, 1 }, { 1, ";", 0, 1 }, { 2, nullptr, 0, 1 }, { 0, nullptr, 0, 0 },
        { 0, "x;3600", 3600, 0 } };
    for (const auto& c : cases) {
        ChannelCollection collection;
        for (int i = 0; i < c.channels; ++i)
            collection.Add(channel, QString::number(i));
        if (c.text)
            collection.AddText(c.text);
        EXPECT_DOUBLE_EQ(GetDataResolution(collection), c.resolution) << (c.text ? c.text : "(none)");
        EXPECT_EQ(GetDataChannelCount(collection), c.count) << (c.text ? c.text : "(none)");
    }
}

} // namespace
