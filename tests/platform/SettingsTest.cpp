// SPDX-License-Identifier: GPL-3.0-or-later
#include "AppPaths.h"
#include "Globals.h"
#include "RegistryKey.h"
#include "Settings.h"
#include "TempSettings.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace {

using Settings::Id;

const QString KeySettings = QStringLiteral("Software\\HARVOLD\\Sorano\\Settings");

class SettingsTest : public ::testing::Test
{
protected:
    void TearDown() override { g_lLangOffset = 0; }
    TempSettings roots;
};

TEST_F(SettingsTest, EveryFixedDefaultIsReadFromAnEmptyStore)
{
    const std::vector<std::pair<Id, QString>> expected = {
        {Id::ShowBatchWindow, "0"},
        {Id::LangOffset, "0"},
        {Id::WhoAmI, ""},
        {Id::LogDaily, ""},
        {Id::LogMode, "3"},
        {Id::LogAppend, ""},
        {Id::CompanyName, ""},
        {Id::CompanyAddress, ""},
        {Id::ShowSplashScreen, "0"},
        {Id::SplashScreenTime, "0"},
        {Id::ShowStartupWindow, "0"},
        {Id::ExtendedChannelSelection, "0"},
        {Id::OnCloseMeasuring, "2"},
        {Id::OnNewMeasuring, "2"},
        {Id::ZoomArea, "0"},
        {Id::CursorCrossHairs, "1"},
        {Id::CursorLine, "1"},
        {Id::CrossHairs, "1"},
        {Id::ToolTips, "1"},
        {Id::ClosePreviewAfterPrint, "1"},
        {Id::NavSmallStep, "1h"},
        {Id::NavMediumStep, "1d"},
        {Id::NavBigStep, "1m"},
        {Id::TableFontName, "Arial"},
        {Id::TableFontSize, "10"},
        {Id::WindowState, ""},
        {Id::WindowLeft, ""},
        {Id::PreviewZoom, ""},
        {Id::BatchMode, ""},
        {Id::RecentCount, ""},
        {Id::ReportLeft, ""},
        {Id::ReportDrawLine, ""},
        {Id::ReportSelection, "0;0;0;0;0;0;0;0;0;0;0;0;0;0;0;0;0;0;0;0;"},
        {Id::NewShowIndizes, "0"},
        {Id::NewDataModules, ""},
        {Id::NewFixedLine, ""},
        {Id::LastUsername, "DEFAULT"},
        {Id::SplashPicture, ""},
        {Id::VendorURL, ""},
    };
    for (const auto& [id, value] : expected)
        EXPECT_EQ(Settings::Value(id), value) << Settings::DefinitionOf(id).name;
}

TEST_F(SettingsTest, StatisticDefaultsDependOnTheStatistic)
{
    for (const QString statistic : {"Maximum", "Average", "Minimum", "Sum", "Selection"}) {
        EXPECT_EQ(Settings::Value(Id::IndizesFormatNumber, statistic), "0.00 X") << statistic.toStdString();
        EXPECT_EQ(Settings::Value(Id::IndizesShow, statistic), "1");
        EXPECT_EQ(Settings::Value(Id::IndizesUseDate, statistic), "1");
        EXPECT_EQ(Settings::Value(Id::IndizesFormatDate, statistic), "(dd.mm.yyyy hh:nn)");
    }
    EXPECT_EQ(Settings::Value(Id::IndizesFormatNumber, "Streuung"), "0.00 X²");
    EXPECT_EQ(Settings::Value(Id::IndizesFormatNumber, "Count"), "0 \"Werte\"");
    g_lLangOffset = 1000;
    EXPECT_EQ(Settings::Value(Id::IndizesFormatNumber, "Count"), "0 \"Values\"");

    roots.SetUser("Software\\HARVOLD\\Sorano\\Indizes\\Count", "FormatNumber", "0 \"Stück\"");
    EXPECT_EQ(Settings::Value(Id::IndizesFormatNumber, "Count"), "0 \"Stück\"");
    EXPECT_EQ(Settings::Value(Id::IndizesFormatNumber, "Sum"), "0.00 X");
}

TEST_F(SettingsTest, ProgramDependentDefaults)
{
    EXPECT_EQ(Settings::Value(Id::ApplicationName), "SoRaNo");
    EXPECT_EQ(Settings::Value(Id::LogPath), AppPaths::DataFolder());
}

TEST_F(SettingsTest, FallbackReadsUserThenMachineThenDefault)
{
    EXPECT_EQ(Settings::Value(Id::ShowStartupWindow), "0");
    roots.SetMachine(KeySettings, "ShowStartupWindow", "1");
    EXPECT_EQ(Settings::Value(Id::ShowStartupWindow), "1");
    roots.SetUser(KeySettings, "ShowStartupWindow", "0");
    EXPECT_EQ(Settings::Value(Id::ShowStartupWindow), "0");
    // An empty per-user value counts as missing.
    roots.SetUser(KeySettings, "ShowStartupWindow", "");
    EXPECT_EQ(Settings::Value(Id::ShowStartupWindow), "1");

    roots.SetMachine("Software\\HARVOLD\\Sorano\\Reports", "Left", "25");
    EXPECT_EQ(Settings::Value(Id::ReportLeft), "25");
}

TEST_F(SettingsTest, SingleReadLooksAtItsOwnRootOnly)
{
    roots.SetMachine(KeySettings, "ZoomArea", "1");
    EXPECT_EQ(Settings::Value(Id::ZoomArea), "0");
    roots.SetUser(KeySettings, "LogMode", "1");
    EXPECT_EQ(Settings::Value(Id::LogMode), "3");
    roots.SetUser("Software\\HARVOLD\\Sorano", "ApplicationName", "Anders");
    EXPECT_EQ(Settings::Value(Id::ApplicationName), "SoRaNo");
    roots.SetMachine("Software\\HARVOLD\\Sorano", "ApplicationName", "Lastgang Pro");
    EXPECT_EQ(Settings::Value(Id::ApplicationName), "Lastgang Pro");
}

TEST_F(SettingsTest, DialogValuesAreWrittenPerUserAndInstallationValuesMachineWide)
{
    Settings::Write(Id::CompanyName, "Stadtwerke Nord");
    RegistryKey key;
    EXPECT_EQ(key.ReadValue(Hive::CurrentUser, KeySettings, "CompanyName"), "Stadtwerke Nord");
    EXPECT_EQ(key.ReadValue(Hive::LocalMachine, KeySettings, "CompanyName"), "");

    Settings::Write(Id::PreviewZoom, "75");
    EXPECT_EQ(key.ReadValue(Hive::LocalMachine, "Software\\HARVOLD\\Sorano\\MainWin", "prevzoom"), "75");

    Settings::Write(Id::RecentFile, "/daten/a.sor", "3");
    EXPECT_EQ(key.ReadValue(Hive::CurrentUser, "Software\\HARVOLD\\Sorano\\RecentList", "File_3"), "/daten/a.sor");
    EXPECT_EQ(Settings::Value(Id::RecentFile, "3"), "/daten/a.sor");
    Settings::Write(Id::NewCustomer, "Halle 3", "4");
    EXPECT_EQ(Settings::Value(Id::NewCustomer, "4"), "Halle 3");
}

TEST_F(SettingsTest, MissingValuesThatAreWrittenBack)
{
    RegistryKey key;
    EXPECT_EQ(Settings::Value(Id::Profiles), AppPaths::DataFolder() + "/Profiles.dat");
    EXPECT_EQ(key.ReadValue(Hive::LocalMachine, KeySettings, "Profiles"), AppPaths::DataFolder() + "/Profiles.dat");

    EXPECT_EQ(Settings::Value(Id::TableFontName), "Arial");
    EXPECT_EQ(key.ReadValue(Hive::CurrentUser, KeySettings, "TableFontName"), "Arial");

    roots.SetUser(KeySettings, "TableFontSize", "0");
    EXPECT_EQ(Settings::Value(Id::TableFontSize), "10");
    EXPECT_EQ(key.ReadValue(Hive::CurrentUser, KeySettings, "TableFontSize"), "10");
    roots.SetUser(KeySettings, "TableFontSize", "12");
    EXPECT_EQ(Settings::Value(Id::TableFontSize), "12");
}

TEST_F(SettingsTest, BooleansUseTheLeadingNumberButTheOffsetMustBeNumeric)
{
    roots.SetMachine(KeySettings, "LangOffset", "1000abc");
    roots.SetMachine(KeySettings, "ShowSplashScreen", "1000abc");
    EXPECT_FALSE(Settings::StrictNumber(Id::LangOffset).has_value());
    EXPECT_TRUE(Settings::IsTrue(Id::ShowSplashScreen));

    roots.SetMachine(KeySettings, "LangOffset", " 1000 ");
    ASSERT_TRUE(Settings::StrictNumber(Id::LangOffset).has_value());
    EXPECT_EQ(*Settings::StrictNumber(Id::LangOffset), 1000.0);

    roots.SetUser(KeySettings, "ShowSplashScreen", "ja");
    EXPECT_FALSE(Settings::IsTrue(Id::ShowSplashScreen));
    roots.SetUser(KeySettings, "ToolTips", "0");
    EXPECT_FALSE(Settings::IsTrue(Id::ToolTips));
    EXPECT_TRUE(Settings::IsTrue(Id::CrossHairs));
    roots.SetUser(KeySettings, "NavSmallStep", "15n");
    EXPECT_EQ(Settings::Number(Id::NavSmallStep), 15.0);
}

} // namespace
