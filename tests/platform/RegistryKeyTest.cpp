// SPDX-License-Identifier: GPL-3.0-or-later
#include "RegistryKey.h"
#include "TempSettings.h"

#include <QFile>
#include <QSettings>

#include <gtest/gtest.h>

namespace {

const QString Key = QStringLiteral("Software\\HARVOLD\\Sorano\\Settings");
const QString MainWin = QStringLiteral("Software\\HARVOLD\\Sorano\\MainWin");

class RegistryKeyTest : public ::testing::Test
{
protected:
    TempSettings roots;
    RegistryKey key;
};

TEST_F(RegistryKeyTest, ValuesReadBackFromTheirOwnRootWithBlanksCommasAndBackslashes)
{
    const QString path = QStringLiteral("C:\\Daten\\Logger, Halle 3\\Profiles.dat");
    EXPECT_EQ(key.WriteValue(Hive::CurrentUser, Key, "CompanyName", "Stadtwerke Nord"), 0);
    key.WriteValue(Hive::LocalMachine, Key, "Profiles", path);
    key.WriteValue(Hive::CurrentUser, "Identities\\", "Last Username", "Anna Schmidt");
    RegistryKey other;
    EXPECT_EQ(other.ReadValue(Hive::CurrentUser, Key, "CompanyName"), "Stadtwerke Nord");
    EXPECT_EQ(other.ReadValue(Hive::LocalMachine, Key, "CompanyName"), "");
    EXPECT_EQ(other.ReadValue(Hive::LocalMachine, Key, "Profiles"), path);
    EXPECT_EQ(other.ReadValue(Hive::CurrentUser, "Identities\\", "Last Username"), "Anna Schmidt");
    EXPECT_TRUE(QFile::exists(roots.UserDir() + "/HARVOLD/Sorano.ini"));
    EXPECT_TRUE(QFile::exists(roots.MachineDir() + "/HARVOLD/Sorano.ini"));
}

TEST_F(RegistryKeyTest, NumbersAreStoredAsNumbersAndOtherTypesReadAsEmpty)
{
    EXPECT_EQ(key.WriteValue(Hive::LocalMachine, MainWin, "prevzoom", " 150", true), 0);
    EXPECT_EQ(key.ReadValue(Hive::LocalMachine, MainWin, "prevzoom"), "150");
    EXPECT_EQ(key.WriteValue(Hive::LocalMachine, MainWin, "prevzoom", "groß", true), RegistryStatus::InvalidData);
    EXPECT_EQ(key.ReadValue(Hive::LocalMachine, MainWin, "prevzoom"), "150");
    {
        QSettings raw(QSettings::IniFormat, QSettings::UserScope, "HARVOLD", "Sorano");
        raw.setValue("Software/HARVOLD/Sorano/Settings/ZoomArea", QStringList{"1", "2"});
        raw.setValue("Software/HARVOLD/Sorano/Settings/ToolTips", QByteArray("\x01\x02", 2));
    }
    EXPECT_EQ(key.ReadValue(Hive::CurrentUser, Key, "ZoomArea"), "");
    EXPECT_EQ(key.ReadValue(Hive::CurrentUser, Key, "ToolTips"), "");
}

TEST_F(RegistryKeyTest, OpenCreateAndCloseGiveTheirStatusAndKeepOneKeyOpen)
{
    EXPECT_EQ(key.OpenKey(Hive::CurrentUser, KeyRead), RegistryStatus::NoPath);
    EXPECT_EQ(key.OpenKey(Hive::CurrentUser, KeyRead, Key), RegistryStatus::FileNotFound);
    EXPECT_FALSE(key.IsOpen());
    roots.SetUser(Key, "ToolTips", "0");
    roots.SetMachine("Software\\HARVOLD\\Sorano", "ApplicationName", "Lastgang");
    EXPECT_EQ(key.OpenKey(Hive::CurrentUser, KeyRead, Key), 0);
    // A second open is refused and the first key stays open.
    EXPECT_EQ(key.OpenKey(Hive::LocalMachine, KeyRead, "Software\\HARVOLD"), RegistryStatus::AlreadyOpen);
    EXPECT_EQ(key.Value("ToolTips"), "0");
    EXPECT_EQ(key.CloseKey(), 0);
    EXPECT_EQ(key.CloseKey(), 0);
    EXPECT_EQ(key.Value("ToolTips"), "");
    // The one-shot read closes an open key first.
    ASSERT_EQ(key.OpenKey(Hive::CurrentUser, KeyRead, Key), 0);
    EXPECT_EQ(key.ReadValue(Hive::LocalMachine, "Software\\HARVOLD\\Sorano", "ApplicationName"), "Lastgang");
    EXPECT_EQ(key.Path(), "Software\\HARVOLD\\Sorano");

    // CreateKey takes the stored path; SetValue writes only while the key is open.
    key.SetPath("Software\\HARVOLD\\Sorano\\RecentList");
    ASSERT_EQ(key.CreateKey(Hive::CurrentUser, KeyWrite), 0);
    key.SetValue("File_1", "/home/anna/Halle 3.sor");
    key.CloseKey();
    key.SetValue("File_2", "lost");
    RegistryKey reader;
    EXPECT_EQ(reader.ReadValue(Hive::CurrentUser, "Software\\HARVOLD\\Sorano\\RecentList", "File_1"),
              "/home/anna/Halle 3.sor");
    EXPECT_EQ(reader.ReadValue(Hive::CurrentUser, "Software\\HARVOLD\\Sorano\\RecentList", "File_2"), "");
}

TEST_F(RegistryKeyTest, EnumeratesValuesAndSubKeys)
{
    roots.SetMachine("Software\\HARVOLD\\DataModules", "CSV", "sorano.csv:CSV1");
    roots.SetMachine("Software\\HARVOLD\\DataModules", "SQLite", "sorano.sqlite:DEMO");
    roots.SetMachine("Software\\HARVOLD\\Sorano\\Settings", "LogMode", "1");
    roots.SetMachine(MainWin, "prevzoom", "100");
    ASSERT_EQ(key.OpenKey(Hive::LocalMachine, KeyRead, "Software\\HARVOLD\\DataModules"), 0);
    QStringList names;
    for (QString name = key.GetFirstValue(); !name.isEmpty(); name = key.GetNextValue())
        names << name + "=" + key.Value(name);
    EXPECT_EQ(names, (QStringList{"CSV=sorano.csv:CSV1", "SQLite=sorano.sqlite:DEMO"}));

    RegistryKey sorano;
    ASSERT_EQ(sorano.OpenKey(Hive::LocalMachine, KeyRead, "Software\\HARVOLD\\Sorano"), 0);
    QStringList paths;
    for (RegistryKey sub = sorano.GetFirstKey(); !sub.Path().isEmpty(); sub = sorano.GetNextKey())
        paths << sub.Path();
    EXPECT_EQ(paths, (QStringList{MainWin, "Software\\HARVOLD\\Sorano\\Settings"}));
    EXPECT_TRUE(sorano.GetNextKey().Path().isEmpty());
    RegistryKey closed;
    EXPECT_TRUE(closed.GetFirstKey().Path().isEmpty());
    EXPECT_EQ(closed.GetFirstValue(), "");
}

TEST_F(RegistryKeyTest, DeleteKeyRemovesKeyWithItsValuesAndSubKeys)
{
    roots.SetUser("Software\\HARVOLD\\Sorano\\Indizes\\Maximum", "Show", "0");
    roots.SetUser("Software\\HARVOLD\\Sorano\\Indizes\\Count", "Show", "1");
    EXPECT_EQ(key.DeleteKey(Hive::CurrentUser), RegistryStatus::NoPath);
    EXPECT_EQ(key.DeleteKey(Hive::CurrentUser, "Software\\HARVOLD\\Sorano\\Indizes\\Maximum"), 0);
    EXPECT_EQ(key.ReadValue(Hive::CurrentUser, "Software\\HARVOLD\\Sorano\\Indizes\\Maximum", "Show"), "");
    EXPECT_EQ(key.ReadValue(Hive::CurrentUser, "Software\\HARVOLD\\Sorano\\Indizes\\Count", "Show"), "1");
    EXPECT_EQ(key.DeleteKey(Hive::CurrentUser, "Software\\HARVOLD\\Sorano\\Indizes"), 0);
    EXPECT_EQ(key.ReadValue(Hive::CurrentUser, "Software\\HARVOLD\\Sorano\\Indizes\\Count", "Show"), "");
}

TEST_F(RegistryKeyTest, UnwritableRootRefusesWritesWithAccessDenied)
{
    // A machine-wide root below a plain file can never be created.
    QFile blocker(roots.Path() + "/blocker");
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    RegistryKey::SetRoots(roots.Path() + "/blocker/machine", roots.UserDir());
    EXPECT_EQ(key.WriteValue(Hive::LocalMachine, Key, "Profiles", "/tmp/p.dat"), RegistryStatus::AccessDenied);
    EXPECT_EQ(key.ReadValue(Hive::LocalMachine, Key, "Profiles"), "");
    EXPECT_EQ(key.WriteValue(Hive::CurrentUser, Key, "ZoomArea", "1"), 0);
}

} // namespace
