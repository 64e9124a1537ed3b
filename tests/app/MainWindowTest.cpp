// SPDX-License-Identifier: GPL-3.0-or-later
#include "Settings.h"
#include "TempSettings.h"
#include "frm_Main.h"

#include <gtest/gtest.h>

namespace {

const QString KeyMainWin = QStringLiteral("Software\\HARVOLD\\Sorano\\MainWin");

TEST(MainWindowTest, StoredPlacementIsAppliedButNotMinimised)
{
    TempSettings roots;
    for (const auto& [name, value] : { std::pair { "WindowState", "1" }, { "Left", "40" }, { "Top", "30" },
             { "Width", "500" }, { "Height", "oops" } })
        roots.SetUser(KeyMainWin, name, value);
    frm_Main window;
    EXPECT_EQ(window.pos(), QPoint(40, 30));
    EXPECT_EQ(window.width(), 500);
    window.ShowMe();
    EXPECT_FALSE(window.isMinimized() || window.isMaximized());
    window.Unload();

    roots.SetUser(KeyMainWin, "WindowState", "2");
    roots.SetUser(KeyMainWin, "Left", "");
    frm_Main maximised;
    maximised.ShowMe();
    EXPECT_TRUE(maximised.isMaximized());
    maximised.Unload();
    EXPECT_EQ(Settings::Value(Settings::Id::WindowState), "2");
    // Placement values are only written while the window is in its normal state.
    EXPECT_EQ(Settings::Value(Settings::Id::WindowLeft), "");
}

TEST(MainWindowTest, ClosingWritesPlacementAndAsksTheCloseHandlerButUnloadAsksNobody)
{
    TempSettings roots;
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
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(Settings::Value(Settings::Id::WindowState), "0");
    allow = true;
    EXPECT_TRUE(window.close());
    EXPECT_EQ(asked, 2);

    window.ShowMe();
    window.Unload();
    EXPECT_EQ(asked, 2);
    EXPECT_FALSE(window.isVisible());
    EXPECT_EQ(frm_Main().size(), QSize(410, 320));
}

} // namespace
