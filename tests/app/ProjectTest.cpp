// SPDX-License-Identifier: GPL-3.0-or-later
#include "Globals.h"
#include "Project.h"
#include "ResStrings.h"
#include "TempSettings.h"
#include "frm_Main.h"

#include <QLabel>
#include <QLocale>
#include <QProgressBar>

#include <gtest/gtest.h>

namespace {

class ProjectTest : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_EQ(project.Init(), 0); }
    void TearDown() override { QLocale::setDefault(QLocale::c()); }

    QProgressBar* Bar() { return project.MainWindow()->ProgressBar(); }
    QString Status() { return project.MainWindow()->StatusLabel()->text(); }
    void Send(const QString& name, const QString& params) { project.MsgHandler()->Send(name, params); }

    TempSettings roots;
    Project project;
};

TEST_F(ProjectTest, CaptionIsTheConfiguredNameOrTheProgramTitle)
{
    EXPECT_EQ(project.MainWindow()->windowTitle(), "SoRaNo");
    EXPECT_TRUE(project.MainWindow()->isVisible());

    roots.SetMachine("Software\\HARVOLD\\Sorano", "ApplicationName", "Lastgang Viewer");
    Project branded;
    branded.Init();
    EXPECT_EQ(branded.MainWindow()->windowTitle(), "Lastgang Viewer");
    EXPECT_TRUE(branded.HelpFile().endsWith("/Lastgang Viewer.chm"));
}

TEST_F(ProjectTest, LogMessageSetsStatusTextAndEmptyTextShowsTheNotice)
{
    Send("LOG", "Daten abholen");
    EXPECT_EQ(Status(), "Daten abholen");
    Send("LOG", "");
    EXPECT_EQ(Status(), GetResString(492));
    Send("", "ignored");
    EXPECT_EQ(Status(), GetResString(492));
}

TEST_F(ProjectTest, ProgressFollowsStartUpdateAndEnd)
{
    Send("PROGRESS_START", "UM1");
    EXPECT_TRUE(Bar()->isVisibleTo(project.MainWindow()));
    EXPECT_EQ(Bar()->value(), 0);

    Send("PROGRESS_UPDATE", "UM1;0.25");
    EXPECT_EQ(Bar()->value(), 25);
    Send("PROGRESS_UPDATE", "UM1;1.7");
    EXPECT_EQ(Bar()->value(), 100);
    Send("PROGRESS_UPDATE", "UM1;-0.5");
    EXPECT_EQ(Bar()->value(), 0);
    Send("PROGRESS_UPDATE", "UM1;0.5");
    Send("PROGRESS_UPDATE", "0.9");            // one part only: nothing moves
    Send("PROGRESS_UPDATE", "UM1;0.9;extra"); // three parts: nothing moves
    EXPECT_EQ(Bar()->value(), 50);

    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    Send("PROGRESS_UPDATE", "TR1;0,75");
    EXPECT_EQ(Bar()->value(), 75);

    Send("PROGRESS_END", "TR1");
    EXPECT_EQ(Bar()->value(), 0);
    EXPECT_FALSE(Bar()->isVisibleTo(project.MainWindow()));
}

TEST_F(ProjectTest, TerminateUnloadsTheMainWindowOnce)
{
    EXPECT_TRUE(project.Terminate(false));
    EXPECT_FALSE(project.MainWindow()->isVisible());
    EXPECT_TRUE(project.Terminate(true));
}

} // namespace
