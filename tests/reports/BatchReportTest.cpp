// SPDX-License-Identifier: GPL-3.0-or-later
// The batch commands in a main window: the menu and its tool states, batches made, copied and
// deleted through their dialogs, the active view added as a template and renamed in the list,
// and the batch window shown and hidden.
#include "BatchReport.h"
#include "BatchHost.h"
#include "MeasuringFixture.h"
#include "Settings.h"
#include "ToolRegistry.h"
#include "frm_Batch.h"
#include "frm_BatchProps.h"
#include "frm_BatchStatus.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QListWidget>
#include <QMainWindow>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>

#include <deque>
#include <functional>
#include <vector>

namespace {

const QStringList BatchTools { "mnuShowBatch", "mnuPrintLGA", "mnuNewBatch", "mnuCopyBatch", "mnuBatchProps",
    "mnuDeleteBatch", "mnuPrintBatch", "mnuNewDoc", "mnuDeleteDoc", "mnuOpenDoc" };

class FakeHost : public BatchHost
{
public:
    FakeHost(QMainWindow& main, MeasuringHost& views)
        : window(main)
        , bar(main)
        , viewHost(views)
    { }
    Measuring* OpenTemplate(const QString&) override { return nullptr; }
    void CloseTemplate(Measuring&) override { }
    ToolRegistry& Bar() override { return bar; }
    QMainWindow* MainWindow() override { return &window; }
    MeasuringHost& ViewHost() override { return viewHost; }
    const ModuleBoxes& Modules() const override { return modules; }
    Measuring* ActiveMeasuring() override { return active; }
    void OpenMeasuring(const QString& path) override { opened << path; }
    void PrintMeasurings(const std::vector<Measuring*>&) override { }
    void ShowHelp(int) override { }
    void UpdateToolStates() override { }

    QMainWindow& window;
    ToolRegistry bar;
    MeasuringHost& viewHost;
    ModuleBoxes modules;
    Measuring* active = nullptr;
    QStringList opened;
};

class BatchReportTest : public measuring_fixture::MeasuringFixture
{
protected:
    void SetUp() override
    {
        MeasuringFixture::SetUp();
        BatchReport::SetQuestionHandler([this](const QString& title, const QString& text) {
            questions << title + '|' + text;
            const bool yes = !answers.empty() && answers.front();
            if (!answers.empty())
                answers.pop_front();
            return yes;
        });
        BatchReport::SetMessageHandler(
            [this](const QString& title, const QString&) { messages << title + '|' + PropsName(); });
        batchHost.bar.AddBand("mnuMain", ToolRegistry::MenuBar);
        batchHost.bar.AddBand("mnuView", ToolRegistry::Popup, "Ansicht", "mnuMain");
        report = std::make_unique<BatchReport>(batchHost, dir.path());
        report->Init();
        batchHost.bar.AddBand("mnuExtras", ToolRegistry::Popup, "Verwaltung", "mnuMain");
    }
    void TearDown() override
    {
        report.reset();
        BatchReport::SetQuestionHandler({});
        BatchReport::SetMessageHandler({});
        MeasuringFixture::TearDown();
    }

    static frm_BatchProps* Props() { return qobject_cast<frm_BatchProps*>(QApplication::activeModalWidget()); }
    static QString PropsName() { return Props() ? Props()->txt_Name()->text() : QString(); }

    // Answers the next batch dialog: records its proposal, enters each name in turn with OK and
    // records whether the dialog stayed open; cancels when it is still open after the last.
    void AnswerProps(const QStringList& names, const QString& memo = {})
    {
        QTimer::singleShot(0, [this, names, memo] {
            frm_BatchProps* dialog = Props();
            if (!dialog)
                return;
            proposals << dialog->txt_Name()->text() + '|' + dialog->txt_Memo()->toPlainText();
            for (const QString& name : names) {
                dialog->txt_Name()->setText(name);
                dialog->txt_Memo()->setPlainText(memo);
                dialog->cmd_OK()->click();
                stayedOpen << dialog->isVisible();
            }
            if (dialog->isVisible())
                dialog->cmd_Cancel()->click();
        });
    }
    void NewBatch(const QString& name)
    {
        AnswerProps({ name }, "Memo " + name);
        ASSERT_TRUE(report->ToolClick("mnuNewBatch"));
    }
    QStringList Enabled() const
    {
        QStringList enabled;
        for (const QString& tool : BatchTools)
            if (batchHost.bar.Tool(tool)->isEnabled())
                enabled << tool;
        return enabled;
    }
    QComboBox& Combo() const { return *report->Window()->cbo_Batches(); }
    QListWidget& List() const { return *report->Window()->lvw_Reports(); }
    QStringList Batches() const
    {
        QStringList names;
        for (int i = 0; i < Combo().count(); ++i)
            names << Combo().itemText(i);
        return names;
    }
    QStringList Items() const
    {
        QStringList items;
        for (int i = 0; i < List().count(); ++i)
            items << List().item(i)->text();
        return items;
    }
    void OpenView(const QString& name)
    {
        Open(3600);
        measuring->SetName(name);
        batchHost.active = measuring.get();
    }

    QTemporaryDir dir;
    QMainWindow window;
    FakeHost batchHost { window, host };
    std::unique_ptr<BatchReport> report;
    std::deque<bool> answers;
    QStringList questions;
    QStringList messages; // title|the name the dialog held
    QStringList proposals; // name|memo the dialog showed
    QList<bool> stayedOpen;
};

TEST_F(BatchReportTest, MenuStandsBeforeTheAdministrationAndToolsFollowTheState)
{
    QStringList menus;
    for (QAction* action : window.menuBar()->actions())
        menus << action->text();
    EXPECT_EQ(menus, (QStringList { "Ansicht", "&Reportstapel", "Verwaltung" }));
    const QStringList order { "mnuShowBatch", "DB01", "mnuPrintLGA", "DB04", "mnuNewBatch", "mnuCopyBatch",
        "mnuBatchProps", "mnuDeleteBatch", "DB02", "mnuPrintBatch", "DB03", "mnuNewDoc", "mnuDeleteDoc", "mnuOpenDoc" };
    EXPECT_EQ(batchHost.bar.ToolsOf("mnuBatch"), order);
    EXPECT_EQ(batchHost.bar.ToolsOf("tlbBatch"), order);
    EXPECT_FALSE(report->WindowVisible());

    const QStringList always { "mnuShowBatch", "mnuPrintLGA" };
    const QStringList batch = always + QStringList { "mnuNewBatch", "mnuCopyBatch", "mnuBatchProps", "mnuDeleteBatch" };
    const struct
    {
        const char* step;
        std::function<void()> act;
        QStringList enabled;
    } steps[] = {
        { "no batch, window hidden", [] {}, always },
        { "an active view without a batch", [this] { OpenView("Lastgang"); }, always },
        { "window shown", [this] { report->ShowWindow(true); }, always + QStringList { "mnuNewBatch" } },
        { "a batch", [this] { NewBatch("Monat"); }, batch + QStringList { "mnuNewDoc" } },
        { "no active view", [this] { batchHost.active = nullptr; }, batch },
        { "a template, selected",
            [this] {
                batchHost.active = measuring.get();
                report->ToolClick("mnuNewDoc");
            },
            batch + QStringList { "mnuPrintBatch", "mnuNewDoc", "mnuDeleteDoc", "mnuOpenDoc" } },
        { "no template selected", [this] { List().clearSelection(); },
            batch + QStringList { "mnuPrintBatch", "mnuNewDoc" } },
        { "window hidden", [this] { report->ShowWindow(false); },
            always + QStringList { "mnuCopyBatch", "mnuBatchProps", "mnuDeleteBatch", "mnuPrintBatch", "mnuNewDoc" } },
    };
    for (const auto& step : steps) {
        step.act();
        report->UpdateTools();
        QStringList expected;
        for (const QString& tool : BatchTools)
            if (step.enabled.contains(tool))
                expected << tool;
        EXPECT_EQ(Enabled(), expected) << step.step;
    }
}

TEST_F(BatchReportTest, NewBatchesKeepBlanksAsTildeAndRefuseBadOrTakenNames)
{
    NewBatch("Monat Süd");
    AnswerProps({ "1 Monat", "monat~süd", "Last~Gang" }, "zweiter");
    report->ToolClick("mnuNewBatch");

    EXPECT_EQ(proposals, (QStringList { "|", "|" }));
    EXPECT_EQ(stayedOpen, (QList<bool> { false, true, true, false }));
    EXPECT_EQ(messages, (QStringList { "Reportstapel Eigenschaften|1 Monat", "Reportstapel Eigenschaften|monat~süd" }));
    EXPECT_EQ(Batches(), (QStringList { "Monat Süd", "Last Gang" }));
    EXPECT_EQ(Combo().currentIndex(), 1);

    // Properties may keep the batch's own name and rename it; a cancelled dialog changes nothing.
    AnswerProps({ "Last Gang Nord" }, "dritter");
    report->ToolClick("mnuBatchProps");
    AnswerProps({});
    report->ToolClick("mnuBatchProps");
    EXPECT_EQ(proposals.mid(2), (QStringList { "Last Gang|zweiter", "Last Gang Nord|dritter" }));
    EXPECT_EQ(Batches(), (QStringList { "Monat Süd", "Last Gang Nord" }));

    BatchReport again(batchHost, dir.path());
    again.Init();
    EXPECT_EQ(again.Selected(), 1);
    EXPECT_EQ(again.Window()->cbo_Batches()->currentText(), "Last Gang Nord");
}

TEST_F(BatchReportTest, CopyProposesTheNameAndDeleteAsksAndSelectsTheNeighbour)
{
    OpenView("Lastgang");
    for (const char* name : { "Eins", "Zwei" }) {
        NewBatch(name);
        report->ToolClick("mnuNewDoc");
    }
    AnswerProps({ "Kopie von Zwei" }, "kopiert");
    report->ToolClick("mnuCopyBatch");
    EXPECT_EQ(proposals.last(), "Kopie von Zwei|Memo Zwei");
    EXPECT_EQ(Batches(), (QStringList { "Eins", "Zwei", "Kopie von Zwei" }));
    EXPECT_EQ(report->Selected(), 2);
    EXPECT_EQ(Items(), QStringList { "Lastgang" });

    Combo().setCurrentIndex(1); // as the user chooses it
    answers = { false };
    report->ToolClick("mnuDeleteBatch");
    EXPECT_EQ(questions,
        QStringList { "Löschen bestätigen|Wollen Sie den Reportstapel tatsächlich löschen?\n"
                      "Dieser Vorgang kann nicht mehr rückgängig gemacht werden!" });
    EXPECT_EQ(Batches(), (QStringList { "Eins", "Zwei", "Kopie von Zwei" }));

    answers = { true };
    report->ToolClick("mnuDeleteBatch");
    EXPECT_EQ(Batches(), (QStringList { "Eins", "Kopie von Zwei" }));
    EXPECT_EQ(Combo().currentText(), "Kopie von Zwei");
    EXPECT_EQ(report->Selected(), 1);
    EXPECT_EQ(Items(), QStringList { "Lastgang" }) << "the copy keeps its template";

    // The last one's neighbour is the one before it.
    answers = { true };
    report->ToolClick("mnuDeleteBatch");
    EXPECT_EQ(Batches(), QStringList { "Eins" });
    EXPECT_EQ(report->Selected(), 0);
}

TEST_F(BatchReportTest, TheActiveViewBecomesATemplateThatIsRenamedOpenedAndDeleted)
{
    OpenView("Lastgang");
    measuring->SetChanged(true);
    NewBatch("Monat");
    report->ToolClick("mnuNewDoc");
    ASSERT_EQ(Items(), QStringList { "Lastgang" });
    ASSERT_NE(List().currentItem(), nullptr);
    const QString file = List().currentItem()->data(Qt::UserRole).toString();
    EXPECT_TRUE(file.endsWith(".mtb"));
    EXPECT_TRUE(QFile::exists(dir.filePath(file)));
    // The open view keeps its own file and state.
    EXPECT_EQ(measuring->FileName(), QString());
    EXPECT_TRUE(measuring->Changed());
    EXPECT_EQ(measuring->Name(), "Lastgang");

    List().currentItem()->setText("Lastgang Süd"); // as the editor leaves it
    List().currentItem()->setText("  "); // refused
    EXPECT_EQ(Items(), QStringList { "Lastgang Süd" });
    BatchStore reloaded(dir.path());
    reloaded.Load();
    ASSERT_EQ(reloaded.Templates(0).size(), 1U);
    EXPECT_EQ(reloaded.Templates(0)[0].name, "Lastgang Süd");

    report->ToolClick("mnuOpenDoc");
    EXPECT_EQ(batchHost.opened, QStringList { report->Store().TemplatePath(file) });

    // A view saved under another name in the batch folder takes the template along; elsewhere not.
    QFile::copy(dir.filePath(file), dir.filePath("Neu.mtb"));
    report->FileChanged(dir.filePath(file), QDir::tempPath() + "/Neu.mtb");
    EXPECT_EQ(report->Store().Templates(0)[0].file, file);
    report->FileChanged(dir.filePath(file), dir.filePath("Neu.mtb"));
    EXPECT_EQ(report->Store().Templates(0)[0].file, "Neu.mtb");

    answers = { false, true };
    report->ToolClick("mnuDeleteDoc");
    EXPECT_EQ(Items(), QStringList { "Lastgang Süd" });
    report->ToolClick("mnuDeleteDoc");
    EXPECT_EQ(questions.last(), "Vorlage löschen|Wollen Sie die ausgewählte Vorlage wirklich löschen?");
    EXPECT_EQ(Items(), QStringList());
    EXPECT_TRUE(report->Store().Templates(0).empty());
}

TEST_F(BatchReportTest, ShowCaptionFollowsTheWindowAndTheSettingKeepsIt)
{
    window.show();
    QAction* show = batchHost.bar.Tool("mnuShowBatch");
    EXPECT_EQ(show->text(), "Reportstapel anzeigen");
    report->ToolClick("mnuShowBatch");
    EXPECT_TRUE(report->WindowVisible());
    EXPECT_EQ(show->text(), "Reportstapel ausblenden");
    report->Window()->close(); // the dock's own close button
    EXPECT_EQ(show->text(), "Reportstapel anzeigen");
    report->ToolClick("mnuShowBatch");

    report->Terminate();
    EXPECT_FALSE(report->WindowVisible());
    EXPECT_EQ(Settings::StoredValue(Settings::Id::ShowBatchWindow), "1");
    BatchReport shown(batchHost, dir.path());
    shown.Init();
    EXPECT_TRUE(shown.WindowVisible());
    EXPECT_EQ(show->text(), "Reportstapel ausblenden");
    shown.ShowWindow(false);
    shown.Terminate();
    EXPECT_EQ(Settings::StoredValue(Settings::Id::ShowBatchWindow), "0");
}

TEST(BatchStatusTest, StepsAddUpToAFullBarAndNoFurther)
{
    frm_BatchStatus status;
    status.SetStep(12.5F);
    QList<int> values;
    for (int i = 0; i < 9; ++i) {
        status.UpdateStatus();
        values << status.Value();
    }
    EXPECT_EQ(values, (QList<int> { 12, 25, 37, 50, 62, 75, 87, 100, 100 }));
    EXPECT_EQ(status.ProgBar()->value(), 100);
}

} // namespace
