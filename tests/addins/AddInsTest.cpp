// SPDX-License-Identifier: GPL-3.0-or-later
// The add-ins: created from the names the machine-wide settings list, through the plug-ins of
// the add-in folders; kept only when they start; every click reaches each of them in turn.
#include "AddIns.h"
#include "AppPaths.h"
#include "LogCapture.h"
#include "Settings.h"
#include "TempSettings.h"

#include <QDir>

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

// Notes the bands as "name:type" and the tools as "band/name caption (category) toolbar".
class RecordingHost : public AddInHost
{
public:
    void AddBand(const QString& name, int type) override { bands << name + ':' + QString::number(type); }
    void AddTool(const QString& band, const QString& name, int, const QString& caption, const QString& category,
        const QString&, const QString&, const QString& band2, int) override
    {
        tools << band + '/' + name + ' ' + caption + " (" + category + ") " + band2;
    }
    QString ApplicationName() const override { return QStringLiteral("Sorano"); }
    bool English() const override { return english; }

    QStringList bands;
    QStringList tools;
    bool english = false;
};

// An add-in of the test's own: writes what it is told into a shared journal, and throws
// from every call when it is set to fail (1: a std::exception, 2: anything else).
struct ScriptedAddIn : AddInInterface
{
    ScriptedAddIn(QString name, QStringList& journal, int fault = 0)
        : name(std::move(name))
        , journal(journal)
        , fault(fault)
    { }
    qint32 Init(AddInHost&) override { return 0; }
    void ToolClick(const QString& tool) override { Note("click " + tool); }
    void ToolComboClose(const QString& tool) override { Note("combo " + tool); }
    void Terminate() override { Note("terminate"); }
    void Note(const QString& what)
    {
        journal << name + ' ' + what;
        if (fault == 1)
            throw std::runtime_error("add-in failure");
        if (fault == 2)
            throw 42;
    }
    QString name;
    QStringList& journal;
    int fault;
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
    // The folders are those of the variable, then those of the program.
    qputenv("SORANO_ADDIN_PATH", SORANO_ADDIN_DIR);
    const QString program = AppPaths::ProgramFolder();
    EXPECT_EQ(AddIns::DefaultFolders(),
        QStringList({ QDir::cleanPath(SORANO_ADDIN_DIR), program + "/addins",
            QDir::cleanPath(program + "/../lib/sorano/addins") }));
    Register("RemoveGaps", "Sorano.RemoveGaps");
    AddIns german; // takes the folders as they are now
    qunsetenv("SORANO_ADDIN_PATH");
    EXPECT_EQ(german.Load(host), 0);
    EXPECT_EQ(german.Count(), 1);
    EXPECT_EQ(host.tools,
        QStringList(QString::fromUtf8("mnuView/mnuViewRemoveGaps Lücken entfernen (Grafikansicht) tlbGraphic")));
    EXPECT_TRUE(host.bands.isEmpty());

    RecordingHost english;
    english.english = true;
    AddIns other(Folders());
    EXPECT_EQ(other.Load(english), 0);
    EXPECT_EQ(english.tools, QStringList("mnuView/mnuViewRemoveGaps Remove gaps (Chart view) tlbGraphic"));
}

TEST_F(AddInsTest, UnknownNamesAreLoggedAndAnAddInWhoseInitGivesOtherThanZeroIsDropped)
{
    AddIns addIns(Folders());
    EXPECT_EQ(addIns.Load(host), -1) << "no settings key, no add-ins";
    EXPECT_EQ(addIns.Count(), 0);

    LogCapture log(roots, LogLevel::Skipped);
    Register("1", "Sorano.NoSuchAddIn");
    Register("2", "Sorano.RemoveGaps");
    Register("3", "");
    Register("4", "Test.Declining");
    EXPECT_EQ(addIns.Load(host), 3) << "the result of the last Init";
    EXPECT_EQ(addIns.Count(), 1);
    const QStringList lines = log.From("AddIns.Load");
    ASSERT_EQ(lines.size(), 2) << lines.join('\n').toStdString();
    EXPECT_TRUE(lines.front().contains("Sorano.NoSuchAddIn"));
    EXPECT_EQ(host.bands, QStringList { "tlbDeclining:0" }) << "it was started";
    addIns.ToolClick("mnuFileOpen");
    addIns.ToolComboClose("mnuViewResolution");
    EXPECT_EQ(host.bands, QStringList { "tlbDeclining:0" }) << "a dropped add-in hears no clicks";
}

TEST_F(AddInsTest, AnAddInThatThrowsDoesNotKeepTheNextFromHearingTheCall)
{
    QStringList journal;
    AddIns addIns(QStringList {});
    addIns.Add(std::make_unique<ScriptedAddIn>("A", journal, 1));
    addIns.Add(std::make_unique<ScriptedAddIn>("B", journal, 2));
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
