// SPDX-License-Identifier: GPL-3.0-or-later
#include "Settings.h"
#include "AppPaths.h"
#include "RegistryKey.h"
#include "TempSettings.h"

#include <gtest/gtest.h>

namespace {

using Settings::Id;

const QString KeySettings = QStringLiteral("Software\\HARVOLD\\Sorano\\Settings");

class SettingsTest : public ::testing::Test
{
protected:
    TempSettings roots;
    RegistryKey key;
};

TEST_F(SettingsTest, FallbackReadsUserThenMachineThenDefaultAndSingleReadsLookAtTheirOwnRootOnly)
{
    EXPECT_EQ(Settings::Value(Id::ShowStartupWindow), "0");
    roots.SetMachine(KeySettings, "ShowStartupWindow", "1");
    EXPECT_EQ(Settings::Value(Id::ShowStartupWindow), "1");
    roots.SetUser(KeySettings, "ShowStartupWindow", "0");
    EXPECT_EQ(Settings::Value(Id::ShowStartupWindow), "0");
    roots.SetUser(KeySettings, "ShowStartupWindow", ""); // an empty per-user value counts as missing
    EXPECT_EQ(Settings::Value(Id::ShowStartupWindow), "1");
    EXPECT_EQ(Settings::Value(Id::CompanyName), ""); // no default

    roots.SetMachine(KeySettings, "ZoomArea", "1");
    EXPECT_EQ(Settings::Value(Id::ZoomArea), "0") << "a per-user setting never takes the machine's value";
    roots.SetUser(KeySettings, "LogMode", "1");
    EXPECT_EQ(Settings::Value(Id::LogMode), "3") << "an installation setting never takes the user's value";
}

TEST_F(SettingsTest, DialogValuesAreWrittenPerUserAndInstallationValuesMachineWide)
{
    Settings::Write(Id::CompanyName, "Stadtwerke Nord");
    EXPECT_EQ(key.ReadValue(Hive::CurrentUser, KeySettings, "CompanyName"), "Stadtwerke Nord");
    EXPECT_EQ(key.ReadValue(Hive::LocalMachine, KeySettings, "CompanyName"), "");
    Settings::Write(Id::PreviewZoom, "75");
    EXPECT_EQ(key.ReadValue(Hive::LocalMachine, "Software\\HARVOLD\\Sorano\\MainWin", "prevzoom"), "75");
    Settings::Write(Id::RecentFile, "/daten/a.sor", "3");
    EXPECT_EQ(key.ReadValue(Hive::CurrentUser, "Software\\HARVOLD\\Sorano\\RecentList", "File_3"), "/daten/a.sor");
}

TEST_F(SettingsTest, MissingValuesThatAreWrittenBack)
{
    // The profile file defaults to the user's folder, which is no value for every user.
    EXPECT_EQ(Settings::Value(Id::Profiles), AppPaths::DataFolder() + "/Profiles.dat");
    EXPECT_EQ(key.ReadValue(Hive::LocalMachine, KeySettings, "Profiles"), "");
    roots.SetUser(KeySettings, "TableFontSize", "0");
    EXPECT_TRUE(Settings::Value(Id::TableFontSize) == "10"
        && key.ReadValue(Hive::CurrentUser, KeySettings, "TableFontSize") == "10");
    roots.SetUser(KeySettings, "TableFontSize", "12");
    EXPECT_EQ(Settings::Value(Id::TableFontSize), "12");
}

TEST_F(SettingsTest, BooleansAndNumbersUseTheLeadingNumber)
{
    roots.SetMachine(KeySettings, "ShowSplashScreen", "1000abc");
    EXPECT_TRUE(Settings::IsTrue(Id::ShowSplashScreen));
    roots.SetUser(KeySettings, "ShowSplashScreen", "ja");
    EXPECT_FALSE(Settings::IsTrue(Id::ShowSplashScreen));
    roots.SetUser(KeySettings, "NavSmallStep", "15n");
    EXPECT_EQ(Settings::Number(Id::NavSmallStep), 15.0);
}

} // namespace
