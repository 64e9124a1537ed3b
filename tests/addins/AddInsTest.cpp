// SPDX-License-Identifier: GPL-3.0-or-later
// The add-ins: created from the names the machine-wide settings list, through the plug-ins of
// the add-in folders; kept only when they start; every click reaches each of them in turn.
#include "AddIns.h"
#include "AppPaths.h"
#include "LogCapture.h"
#include "Settings.h"
#include "TempSettings.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

struct Tool
{
    QString band, name;
    int type = 0;
    QString caption, category, shortcut, icon, band2;
    int index = 0;
};

class RecordingHost : public AddInHost
{
public:
    void AddBand(const QString& name, int type) override { bands << name + ':' + QString::number(type); }
    void AddTool(const QString& band, const QString& name, int type, const QString& caption, const QString& category,
        const QString& shortcut, const QString& icon, const QString& band2, int index) override
    {
        tools.push_back(Tool { band, name, type, caption, category, shortcut, icon, band2, index });
    }
    QString ApplicationName() const override { return QStringLiteral("Sorano"); }
    bool English() const override { return english; }

    QStringList bands;
    std::vector<Tool> tools;
    bool english = false;
};

// An add-in of the test's own: writes what it is told into a shared journal, and throws
// from the calls it is set to fail in.
class ScriptedAddIn : public AddInInterface
{
public:
    enum Fault { None, StdError, Anything };
    ScriptedAddIn(QString name, QStringList& journal, Fault fault = None)
        : m_name(std::move(name))
        , m_journal(journal)
        , m_fault(fault)
    { }
    qint32 Init(AddInHost&) override { return 0; }
    void ToolClick(const QString& tool) override { Note("click " + tool); }
    void ToolComboClose(const QString& tool) override { Note("combo " + tool); }
    void Terminate() override { Note("terminate"); }

private:
    void Note(const QString& what)
    {
        m_journal << m_name + ' ' + what;
        if (m_fault == StdError)
            throw std::runtime_error("add-in failure");
        if (m_fault == Anything)
            throw 42;
    }
    QString m_name;
    QStringList& m_journal;
    Fault m_fault;
};

class AddInsTest : public ::testing::Test
{
protected:
    void Register(const QString& value, const QString& name)
    {
        roots.SetMachine(QLatin1String(Settings::KeyAddIns), value, name);
    }
    static QStringList Folders() { return { QStringLiteral(SORANO_ADDIN_DIR), QStringLiteral(SORANO_TEST_ADDIN_DIR) }; }

    TempSettings roots;
    RecordingHost host;
};

TEST_F(AddInsTest, TheShippedAddInPutsItsToolIntoTheViewMenuInTheProgramsLanguage)
{
    Register("RemoveGaps", "Sorano.RemoveGaps");
    AddIns german(Folders());
    EXPECT_EQ(german.Load(host), 0);
    EXPECT_EQ(german.Count(), 1);
    ASSERT_EQ(host.tools.size(), 1u);
    const Tool& tool = host.tools.front();
    EXPECT_EQ(tool.band, "mnuView");
    EXPECT_EQ(tool.name, "mnuViewRemoveGaps");
    EXPECT_EQ(tool.type, 0);
    EXPECT_EQ(tool.caption, QString::fromUtf8("Lücken entfernen"));
    EXPECT_EQ(tool.category, "Grafikansicht");
    EXPECT_TRUE(tool.shortcut.isEmpty());
    EXPECT_TRUE(tool.icon.isEmpty());
    EXPECT_EQ(tool.band2, "tlbGraphic");
    EXPECT_EQ(tool.index, -1);
    EXPECT_TRUE(host.bands.isEmpty());

    RecordingHost english;
    english.english = true;
    AddIns other(Folders());
    EXPECT_EQ(other.Load(english), 0);
    ASSERT_EQ(english.tools.size(), 1u);
    EXPECT_EQ(english.tools.front().caption, "Remove gaps");
    EXPECT_EQ(english.tools.front().category, "Chart view");
}

TEST_F(AddInsTest, TheFoldersAreTheVariablesThenThoseOfTheProgram)
{
    QTemporaryDir empty;
    qputenv("SORANO_ADDIN_PATH", (empty.path() + QDir::listSeparator() + SORANO_ADDIN_DIR).toLocal8Bit());
    const QStringList folders = AddIns::DefaultFolders();
    const QString program = AppPaths::ProgramFolder();
    EXPECT_EQ(folders,
        QStringList({ QDir::cleanPath(empty.path()), QDir::cleanPath(SORANO_ADDIN_DIR), program + "/addins",
            QDir::cleanPath(program + "/../lib/sorano/addins") }));

    // The program's own folders, found through the variable.
    Register("1", "Sorano.RemoveGaps");
    AddIns addIns;
    qunsetenv("SORANO_ADDIN_PATH");
    EXPECT_EQ(addIns.Load(host), 0);
    EXPECT_EQ(addIns.Count(), 1);
    EXPECT_EQ(host.tools.size(), 1u);
}

TEST_F(AddInsTest, NamesNoPlugInProvidesAreSkippedWithALogLineAndTheOthersStillLoad)
{
    LogCapture log(roots, LogLevel::Skipped);
    Register("1", "Sorano.NoSuchAddIn");
    Register("2", "Sorano.RemoveGaps");
    Register("3", "");
    AddIns addIns(Folders());
    EXPECT_EQ(addIns.Load(host), 0);
    EXPECT_EQ(addIns.Count(), 1);
    EXPECT_EQ(host.tools.size(), 1u);
    const QStringList lines = log.From("AddIns.Load");
    ASSERT_EQ(lines.size(), 2) << lines.join('\n').toStdString();
    EXPECT_TRUE(lines.front().contains("Sorano.NoSuchAddIn"));
}

TEST_F(AddInsTest, WithoutTheSettingsKeyThereAreNoAddIns)
{
    AddIns addIns(Folders());
    EXPECT_EQ(addIns.Load(host), -1);
    EXPECT_EQ(addIns.Count(), 0);
    EXPECT_TRUE(host.tools.empty());
}

TEST_F(AddInsTest, AnAddInWhoseInitGivesOtherThanZeroIsDroppedAndItsResultReturned)
{
    Register("1", "Sorano.RemoveGaps");
    Register("2", "Test.Declining");
    AddIns addIns(Folders());
    EXPECT_EQ(addIns.Load(host), 3) << "the result of the last Init";
    EXPECT_EQ(host.bands, QStringList { "tlbDeclining:0" }) << "it was started";
    EXPECT_EQ(addIns.Count(), 1);
    addIns.ToolClick("mnuFileOpen");
    addIns.ToolComboClose("mnuViewResolution");
    EXPECT_EQ(host.bands, QStringList { "tlbDeclining:0" }) << "a dropped add-in hears no clicks";
}

TEST_F(AddInsTest, AnAddInThatThrowsDoesNotKeepTheNextFromHearingTheCall)
{
    QStringList journal;
    AddIns addIns(QStringList {});
    addIns.Add(std::make_unique<ScriptedAddIn>("A", journal, ScriptedAddIn::StdError));
    addIns.Add(std::make_unique<ScriptedAddIn>("B", journal, ScriptedAddIn::Anything));
    addIns.Add(std::make_unique<ScriptedAddIn>("C", journal));
    ASSERT_EQ(addIns.Count(), 3);

    addIns.ToolClick("mnuViewRemoveGaps");
    addIns.ToolComboClose("mnuViewResolution");
    EXPECT_EQ(journal,
        QStringList({ "A click mnuViewRemoveGaps", "B click mnuViewRemoveGaps", "C click mnuViewRemoveGaps",
            "A combo mnuViewResolution", "B combo mnuViewResolution", "C combo mnuViewResolution" }));

    journal.clear();
    addIns.Terminate();
    EXPECT_EQ(journal, QStringList({ "A terminate", "B terminate", "C terminate" }));
    EXPECT_EQ(addIns.Count(), 0);
    addIns.ToolClick("mnuFileOpen");
    EXPECT_EQ(journal.size(), 3) << "ended add-ins hear nothing more";
}

} // namespace
