// SPDX-License-Identifier: GPL-3.0-or-later
// "Datei > Neu" end to end on the demo database: the wizard driven with keys and clicks makes a
// shown view that exports like a view file written by hand, a cancelled wizard leaves neither a
// view nor changed wizard settings, and a profile gives its channels and looks.
#include "DateEdit.h"
#include "DemoFixture.h"
#include "Measuring.h"
#include "MessageHandler.h"
#include "ResStrings.h"
#include "Settings.h"
#include "ToolRegistry.h"
#include "frm_GraphicView.h"
#include "frm_Main.h"
#include "frm_NewMeasuring.h"

#include <QAction>
#include <QCheckBox>
#include <QListWidget>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QTreeWidget>

namespace {

using Settings::Id;

QStringList CurveNames(const Measuring& view)
{
    QStringList names;
    for (const auto& curve : view.Curves())
        names << curve->Name();
    return names;
}

class NewViewTest : public DemoFixture
{
protected:
    void SetUp() override
    {
        DemoFixture::SetUp();
        roots.SetUser(KeySettings, "OnCloseMeasuring", "1");
        // No profiles unless a test names the shipped file.
        roots.SetMachine(KeySettings, "Profiles", out.filePath("none.dat"));
    }
    // The main window without a view, as the program starts it.
    void Start(Project& project)
    {
        ASSERT_EQ(project.Init(), 0);
        project.MainWindow()->resize(1200, 800);
        QObject::connect(project.MsgHandler(), &MessageHandler::Message,
            [this](const QString& name, const QString& params) { messages << name + ":" + params; });
    }

    // Triggers "mnuFileNew", by its key Ctrl+N in the main window when `byKey`, and hands the
    // wizard to `drive` once it is up; the new view or none.
    Measuring* RunWizard(Project& project, const std::function<void(frm_NewMeasuring&)>& drive, bool byKey = false)
    {
        Answer({ [&](QWidget* modal) {
            auto* wizard = qobject_cast<frm_NewMeasuring*>(modal);
            ASSERT_TRUE(wizard);
            // Typed text is taken when the focus leaves a box: the wizard has to be the active window.
            wizard->activateWindow();
            if (QTest::qWaitForWindowActive(wizard))
                drive(*wizard);
            else
                ADD_FAILURE() << "the wizard did not become the active window";
            if (wizard->isVisible()) {
                ADD_FAILURE() << "the wizard was left open on page " << wizard->CurrentPage();
                wizard->Cancel();
            }
        } });
        const size_t before = project.Measurings().size();
        QAction* tool = project.ActiveBar()->Tool(QStringLiteral("mnuFileNew"));
        EXPECT_TRUE(tool && tool->isEnabled());
        if (tool && byKey) {
            project.MainWindow()->activateWindow();
            EXPECT_TRUE(QTest::qWaitForWindowActive(project.MainWindow()));
            QTest::keyClick(project.MainWindow(), Qt::Key_N, Qt::ControlModifier);
        } else if (tool) {
            tool->trigger();
        }
        EXPECT_TRUE(pending.empty()) << "the wizard came up";
        Settle();
        return project.Measurings().size() > before ? project.Measurings().back().get() : nullptr;
    }

    static void Click(QAbstractButton* button)
    {
        ASSERT_NE(button, nullptr);
        ASSERT_TRUE(button->isEnabled()) << button->objectName().toStdString();
        QTest::mouseClick(button, Qt::LeftButton);
    }
    // Types a date and leaves the box with Tab, which takes the text.
    static void TypeDate(DateEdit* box, const QString& text)
    {
        ASSERT_NE(box, nullptr);
        Type(box->Editor(), text);
        QTest::keyClick(box->Editor(), Qt::Key_Tab);
    }
    // The node `name` below the node `parent` (anywhere in the tree), made visible.
    static QTreeWidgetItem* Node(QTreeWidget* tree, const QString& parent, const QString& name)
    {
        for (QTreeWidgetItem* above : tree->findItems(parent, Qt::MatchExactly | Qt::MatchRecursive))
            for (int i = 0; i < above->childCount(); ++i)
                if (above->child(i)->text(0) == name) {
                    tree->scrollToItem(above->child(i));
                    return above->child(i);
                }
        return nullptr;
    }
    static QPoint Centre(QTreeWidget* tree, QTreeWidgetItem* item) { return tree->visualItemRect(item).center(); }
    // A double click as the window system sends it: press and release, then the double click.
    static void DoubleClick(QTreeWidget* tree, QTreeWidgetItem* item)
    {
        const QPoint at = Centre(tree, item);
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, at);
        QTest::mouseDClick(tree->viewport(), Qt::LeftButton, {}, at);
        QTest::mouseRelease(tree->viewport(), Qt::LeftButton, {}, at);
    }
    // Page 0: the name, then forward.
    static void NameView(frm_NewMeasuring& wizard, const QString& name)
    {
        Type(wizard.txt_MeasuringName(), name);
        Click(wizard.cmd_Forward());
    }
    // Page 4: the first two statistics and the chart box; their ids.
    static QStringList ChooseStatistics(frm_NewMeasuring& wizard)
    {
        QListWidget* list = wizard.lst_Indizes();
        QStringList ids;
        for (int row = 0; row < 2 && row < list->count(); ++row) {
            QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(row)).center());
            ids << list->item(row)->data(Qt::UserRole).toString();
        }
        wizard.chk_ShowIndizes()->setFocus();
        QTest::keyClick(wizard.chk_ShowIndizes(), Qt::Key_Space);
        return ids;
    }

    QStringList messages;
};

TEST_F(NewViewTest, AViewMadeWithTheWizardIsShownAnnouncedAndExportsLikeTheSameViewWrittenByHand)
{
    const QString saved = out.filePath("wizard.sor");
    QStringList statistics;
    {
        Project project;
        Start(project);
        ASSERT_TRUE(project.Measurings().empty());
        Measuring* view = RunWizard(project, [&](frm_NewMeasuring& wizard) {
            EXPECT_EQ(wizard.CurrentPage(), 0);
            NameView(wizard, "Halle A Juni");
            // One data module and no profiles: straight to the channels.
            ASSERT_EQ(wizard.CurrentPage(), 3);
            QTreeWidget* tree = wizard.trv_Channels();
            EXPECT_FALSE(wizard.cmd_Forward()->isEnabled()) << "no channel chosen yet";
            QTreeWidgetItem* power = Node(tree, "Einspeisung Halle A", "Wirkleistung");
            QTreeWidgetItem* factor = Node(tree, "Einspeisung Halle A", "cos phi");
            ASSERT_TRUE(power && factor);
            DoubleClick(tree, power);
            QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, Centre(tree, factor));
            ASSERT_EQ(tree->currentItem(), factor);
            QTest::keyClick(tree, Qt::Key_Space);
            Click(wizard.cmd_Forward());

            ASSERT_EQ(wizard.CurrentPage(), 4);
            statistics = ChooseStatistics(wizard);
            Click(wizard.cmd_Forward());

            ASSERT_EQ(wizard.CurrentPage(), 6) << "no customer page for a view";
            EXPECT_EQ(wizard.cmd_Forward()->text(), GetResString(271));
            TypeDate(wizard.dat_Start(), "02.06.2025 00:00");
            TypeDate(wizard.dat_End(), "05.06.2025 00:00");
            EXPECT_EQ(wizard.dat_Start()->Editor()->text(), "02.06.2025 00:00");
            EXPECT_EQ(wizard.dat_End()->Editor()->text(), "05.06.2025 00:00");
            Click(wizard.cmd_Forward());
        });
        ASSERT_NE(view, nullptr);
        EXPECT_EQ(view->Name(), "Halle A Juni");
        EXPECT_EQ(CurveNames(*view), QStringList({ "Wirkleistung", "cos phi" }));
        ASSERT_EQ(statistics.size(), 2);
        // Statistic lines are shown in the chart, as chosen.
        for (const auto& curve : view->Curves())
            for (const auto& statistic : curve->Statistics()) {
                EXPECT_EQ(statistic->Used(), statistics.contains(statistic->ID()))
                    << curve->Name().toStdString() << " statistic " << statistic->ID().toStdString();
                EXPECT_TRUE(statistic->DisplayType() != Statistic::DisplayLine || statistic->Visible());
            }
        EXPECT_EQ(Settings::StoredValue(Id::NewIndizes), "|" + statistics.join('|') + "|");
        EXPECT_EQ(Settings::StoredValue(Id::NewShowIndizes), "1");

        const QList<QMdiSubWindow*> documents = project.MainWindow()->MdiArea()->subWindowList();
        ASSERT_EQ(documents.size(), 1);
        EXPECT_EQ(documents.front()->widget(), view->Window());
        EXPECT_TRUE(documents.front()->isVisible());
        EXPECT_EQ(project.GetActiveMeasuring(), view);
        EXPECT_TRUE(messages.contains("SORANO_MEASURING_NEW:" + view->ID())) << messages.join(' ').toStdString();

        ASSERT_EQ(view->SaveFile(saved, false), 0);

        // Forward to the statistics and change them, then back to the name and cancel there:
        // no view and the remembered choices as they were.
        const auto remembered = [] {
            return QStringList { Settings::StoredValue(Id::NewIndizes), Settings::StoredValue(Id::NewShowIndizes),
                Settings::StoredValue(Id::NewDataModules) };
        };
        const QStringList before = remembered();
        EXPECT_EQ(RunWizard(project,
                      [&](frm_NewMeasuring& wizard) {
                          NameView(wizard, "Verworfen");
                          ASSERT_EQ(wizard.CurrentPage(), 3);
                          QTreeWidget* tree = wizard.trv_Channels();
                          QTreeWidgetItem* power = Node(tree, "Einspeisung Halle A", "Wirkleistung");
                          ASSERT_NE(power, nullptr);
                          DoubleClick(tree, power);
                          Click(wizard.cmd_Forward());
                          ASSERT_EQ(wizard.CurrentPage(), 4);
                          ChooseStatistics(wizard);
                          Click(wizard.cmd_Back());
                          Click(wizard.cmd_Back());
                          EXPECT_EQ(wizard.CurrentPage(), 1) << "the single module's page is shown going back";
                          Click(wizard.cmd_Back());
                          ASSERT_EQ(wizard.CurrentPage(), 0);
                          Click(wizard.findChild<QPushButton*>("cmd_Cancel"));
                      }),
            nullptr);
        EXPECT_EQ(project.Measurings().size(), 1u);
        EXPECT_EQ(project.MainWindow()->MdiArea()->subWindowList().size(), 1);
        EXPECT_EQ(messages.filter("SORANO_MEASURING_NEW").size(), 1);
        EXPECT_EQ(remembered(), before);
        project.Terminate(true);
    }

    // The same channels, period and the loggers' 15 minutes, written by hand.
    const QString hand = out.filePath("hand.sor");
    {
        QFile file(hand);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(R"(<?xml version="1.0"?>
<sorano-measuring>
  <name>Von Hand</name>
  <intervall-unit>n</intervall-unit>
  <intervall-count>15</intervall-count>
  <startdate>2025-06-02 00:00:00</startdate>
  <enddate>2025-06-05 00:00:00</enddate>
  <modules><module>1</module></modules>
  <curves>
    <curve><name>Wirkleistung</name><unit>kW</unit><channels><channel>1$111</channel></channels></curve>
    <curve><name>cos phi</name><channels><channel>1$113</channel></channels></curve>
  </curves>
</sorano-measuring>
)");
    }
    ExportCsv({ saved }, out.filePath("wizard.csv"));
    ExportCsv({ hand }, out.filePath("hand.csv"));
    const QByteArray made = ReadAll(out.filePath("wizard.csv"));
    const QByteArray written = ReadAll(out.filePath("hand.csv"));
    EXPECT_TRUE(made.startsWith("\"Zeitstempel\",\"Wirkleistung (kW)\",\"cos phi\"\r\n2025-06-02 00:00:00,"))
        << made.left(200).toStdString();
    EXPECT_EQ(made.count("\r\n"), 1 + 3 * 96) << "three days of quarter hours";
    EXPECT_EQ(made, written);
}

TEST_F(NewViewTest, AProfileChosenInTheWizardGivesItsChannelsOfTheChosenLoggerWithItsLooks)
{
    roots.SetMachine(KeySettings, "Profiles", Examples + "/Profiles.dat");
    Project project;
    Start(project);
    ASSERT_EQ(project.Profiles().Count(), 2);
    ProfilePtr profile;
    for (const ProfilePtr& each : project.Profiles())
        if (each->Name == "Einspeisung")
            profile = each;
    ASSERT_TRUE(profile);

    Measuring* view = RunWizard(
        project,
        [&](frm_NewMeasuring& wizard) {
            NameView(wizard, "Mit Profil");
            ASSERT_EQ(wizard.CurrentPage(), 2) << "the profiles of the one module are offered";
            QListWidget* profiles = wizard.lvw_Profiles();
            ASSERT_EQ(profiles->count(), 3) << "no profile, and the two of the demo site";
            const QList<QListWidgetItem*> found = profiles->findItems("Einspeisung", Qt::MatchExactly);
            ASSERT_EQ(found.size(), 1);
            QTest::mouseClick(
                profiles->viewport(), Qt::LeftButton, {}, profiles->visualItemRect(found.front()).center());
            Click(wizard.cmd_Forward());

            // The tree reaches down to the loggers; a logger is the entry point, its channels are not shown.
            ASSERT_EQ(wizard.CurrentPage(), 3);
            QTreeWidget* tree = wizard.trv_Channels();
            EXPECT_TRUE(Node(tree, "Einspeisung Halle A", "Wirkleistung") == nullptr);
            QTreeWidgetItem* logger = Node(tree, "Halle A", "Druckluftstation");
            ASSERT_NE(logger, nullptr);
            QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, Centre(tree, logger));
            ASSERT_EQ(tree->currentItem(), logger);
            Click(wizard.cmd_Forward());
            ASSERT_EQ(wizard.CurrentPage(), 4);
            Click(wizard.cmd_Forward());
            ASSERT_EQ(wizard.CurrentPage(), 6);
            Click(wizard.cmd_Forward());
        },
        true);
    ASSERT_NE(view, nullptr);
    ASSERT_EQ(CurveNames(*view), QStringList({ "Wirkleistung", "cos phi" }));
    EXPECT_TRUE(view->FindCurve("1$12#1") && view->FindCurve("1$12#3")) << "the chosen logger's channels";
    for (const auto& curve : view->Curves()) {
        const SeriesProperties* look = nullptr;
        for (qint32 j = 1; j <= profile->ChannelCount(); ++j)
            if (profile->ChannelName(j) == curve->Name())
                look = profile->SeriesProperties(j);
        ASSERT_NE(look, nullptr);
        EXPECT_EQ(curve->Properties().Color, look->Color) << curve->Name().toStdString();
        EXPECT_EQ(curve->Properties().LineWidth, look->LineWidth) << curve->Name().toStdString();
    }
    EXPECT_EQ(view->Curves().front()->Properties().LineWidth, 2) << "the profile's broad power line";
    EXPECT_EQ(view->Graph().Gallery, profile->GraphProperties.Gallery);
    EXPECT_TRUE(view->Graph().Legend) << "the profile's chart shows its legend";
    EXPECT_EQ(project.MainWindow()->MdiArea()->subWindowList().size(), 1);

    // Both shipped profiles name channels of the demo loggers.
    QStringList demoChannels;
    ASSERT_EQ(project.DataModules().At(0)->GetChannelList(nullptr), 1);
    for (const DataMatrixPtr& channel : project.DataModules().At(0)->Channels())
        demoChannels << channel->ChannelName();
    for (const ProfilePtr& each : project.Profiles()) {
        EXPECT_EQ(each->DataSourceID, 1) << each->Name.toStdString();
        for (qint32 j = 1; j <= each->ChannelCount(); ++j)
            EXPECT_TRUE(demoChannels.contains(each->ChannelName(j))) << each->ChannelName(j).toStdString();
    }
    project.Terminate(true);
}

} // namespace
