// SPDX-License-Identifier: GPL-3.0-or-later
#include "Settings.h"
#include "TempSettings.h"
#include "frm_Main.h"

#include <QGuiApplication>
#include <QScreen>

#include <gtest/gtest.h>

namespace {

const QString KeyMainWin = QStringLiteral("Software\\HARVOLD\\Sorano\\MainWin");

class MainWindowTest : public ::testing::Test
{
protected:
    TempSettings roots;
};

TEST_F(MainWindowTest, FirstStartTakesThreeQuartersOfTheScreenCentred)
{
    const QSize screen = QGuiApplication::primaryScreen()->size();
    frm_Main window;
    EXPECT_EQ(window.size(), QSize(screen.width() / 4 * 3, screen.height() / 4 * 3));
    EXPECT_EQ(window.pos(), QPoint(screen.width() / 8, screen.height() / 8));
}

TEST_F(MainWindowTest, StoredPlacementIsAppliedAndMinimisedIsNotRestored)
{
    roots.SetUser(KeyMainWin, "WindowState", "1");
    roots.SetUser(KeyMainWin, "Left", "40");
    roots.SetUser(KeyMainWin, "Top", "30");
    roots.SetUser(KeyMainWin, "Width", "500");
    roots.SetUser(KeyMainWin, "Height", "oops");
    frm_Main window;
    EXPECT_EQ(window.pos(), QPoint(40, 30));
    EXPECT_EQ(window.width(), 500);
    window.ShowMe();
    EXPECT_FALSE(window.isMinimized());
    EXPECT_FALSE(window.isMaximized());
    window.Unload();
}

TEST_F(MainWindowTest, MaximisedStateComesBack)
{
    roots.SetUser(KeyMainWin, "WindowState", "2");
    frm_Main window;
    window.ShowMe();
    EXPECT_TRUE(window.isMaximized());
    window.Unload();
    EXPECT_EQ(Settings::Value(Settings::Id::WindowState), "2");
    // Placement values are only written while the window is in its normal state.
    EXPECT_EQ(Settings::Value(Settings::Id::WindowLeft), "");
}

TEST_F(MainWindowTest, ClosingWritesPlacementAndAsksTheCloseHandler)
{
    frm_Main window;
    int asked = 0;
    bool allow = false;
    window.SetCloseRequestHandler([&] {
        ++asked;
        return allow;
    });
    window.ShowMe();
    window.move(60, 70);
    window.resize(410, 320);
    EXPECT_FALSE(window.close());
    EXPECT_EQ(asked, 1);
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(Settings::Value(Settings::Id::WindowState), "0");
    EXPECT_EQ(Settings::Value(Settings::Id::WindowWidth), "410");
    EXPECT_EQ(Settings::Value(Settings::Id::WindowHeight), "320");

    allow = true;
    EXPECT_TRUE(window.close());
    EXPECT_EQ(asked, 2);

    // The program's own unload asks nobody.
    window.ShowMe();
    window.Unload();
    EXPECT_EQ(asked, 2);
    EXPECT_FALSE(window.isVisible());

    frm_Main reopened;
    EXPECT_EQ(reopened.size(), QSize(410, 320));
}

} // namespace
