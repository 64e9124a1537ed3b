// SPDX-License-Identifier: GPL-3.0-or-later
#include "RegistryKey.h"
#include "TempSettings.h"

#include <QFile>
#include <QSettings>

#include <gtest/gtest.h>

namespace {

const QString Key = QStringLiteral("Software\\HARVOLD\\Sorano\\Settings");

class RegistryKeyTest : public ::testing::Test
{
protected:
    TempSettings roots;
};

TEST_F(RegistryKeyTest, WrittenValueReadsBackFromItsOwnRootOnly)
{
    RegistryKey key;
    EXPECT_EQ(key.WriteValue(Hive::CurrentUser, Key, "CompanyName", "Stadtwerke Nord"), 0);
    EXPECT_EQ(key.ReadValue(Hive::CurrentUser, Key, "CompanyName"), "Stadtwerke Nord");
    EXPECT_EQ(key.ReadValue(Hive::LocalMachine, Key, "CompanyName"), "");
    EXPECT_TRUE(QFile::exists(roots.UserDir() + "/HARVOLD/Sorano.ini"));
    EXPECT_FALSE(QFile::exists(roots.MachineDir() + "/HARVOLD/Sorano.ini"));
}

TEST_F(RegistryKeyTest, ValuesWithBlanksCommasAndBackslashesSurviveTheStore)
{
    RegistryKey key;
    const QString path = QStringLiteral("C:\\Daten\\Logger, Halle 3\\Profiles.dat");
    key.WriteValue(Hive::LocalMachine, Key, "Profiles", path);
    key.WriteValue(Hive::CurrentUser, "Identities\\", "Last Username", "Anna Schmidt");
    RegistryKey other;
    EXPECT_EQ(other.ReadValue(Hive::LocalMachine, Key, "Profiles"), path);
    EXPECT_EQ(other.ReadValue(Hive::CurrentUser, "Identities\\", "Last Username"), "Anna Schmidt");
}

TEST_F(RegistryKeyTest, NumberValueIsStoredAsNumberAndReadAsDecimalText)
{
    RegistryKey key;
    EXPECT_EQ(key.WriteValue(Hive::LocalMachine, "Software\\HARVOLD\\Sorano\\MainWin", "prevzoom", " 150", true), 0);
    EXPECT_EQ(key.ReadValue(Hive::LocalMachine, "Software\\HARVOLD\\Sorano\\MainWin", "prevzoom"), "150");
    EXPECT_NE(key.WriteValue(Hive::LocalMachine, "Software\\HARVOLD\\Sorano\\MainWin", "prevzoom", "groß", true), 0);
    EXPECT_EQ(key.ReadValue(Hive::LocalMachine, "Software\\HARVOLD\\Sorano\\MainWin", "prevzoom"), "150");
}

TEST_F(RegistryKeyTest, ValueOfAnotherTypeReadsAsEmpty)
{
    {
        QSettings raw(QSettings::IniFormat, QSettings::UserScope, "HARVOLD", "Sorano");
        raw.setValue("Software/HARVOLD/Sorano/Settings/ZoomArea", QStringList{"1", "2"});
        raw.setValue("Software/HARVOLD/Sorano/Settings/ToolTips", QByteArray("\x01\x02", 2));
    }
    RegistryKey key;
    EXPECT_EQ(key.ReadValue(Hive::CurrentUser, Key, "ZoomArea"), "");
    EXPECT_EQ(key.ReadValue(Hive::CurrentUser, Key, "ToolTips"), "");
}

TEST_F(RegistryKeyTest, OpenKeyStatusResults)
{
    RegistryKey key;
    EXPECT_EQ(key.OpenKey(Hive::CurrentUser, KeyRead), RegistryStatus::NoPath);
    EXPECT_EQ(key.OpenKey(Hive::CurrentUser, KeyRead, Key), RegistryStatus::FileNotFound);
    EXPECT_FALSE(key.IsOpen());

    roots.SetUser(Key, "ToolTips", "0");
    EXPECT_EQ(key.OpenKey(Hive::CurrentUser, KeyRead, Key), 0);
    EXPECT_EQ(key.Path(), Key);
    // A second open is refused and the first key stays open.
    EXPECT_EQ(key.OpenKey(Hive::LocalMachine, KeyRead, "Software\\HARVOLD"), RegistryStatus::AlreadyOpen);
    EXPECT_TRUE(key.IsOpen());
    EXPECT_EQ(key.Value("ToolTips"), "0");
    EXPECT_EQ(key.CloseKey(), 0);
    EXPECT_EQ(key.CloseKey(), 0);
    EXPECT_EQ(key.Value("ToolTips"), "");
}

TEST_F(RegistryKeyTest, CreateKeyUsesStoredPathAndSetValueWritesIntoIt)
{
    RegistryKey key;
    key.SetPath("Software\\HARVOLD\\Sorano\\RecentList");
    ASSERT_EQ(key.CreateKey(Hive::CurrentUser, KeyWrite), 0);
    key.SetValue("Count", "1");
    key.SetValue("File_1", "/home/anna/Halle 3.sor");
    key.CloseKey();
    key.SetValue("File_2", "lost"); // no key open: nothing happens
    RegistryKey reader;
    EXPECT_EQ(reader.ReadValue(Hive::CurrentUser, "Software\\HARVOLD\\Sorano\\RecentList", "File_1"),
              "/home/anna/Halle 3.sor");
    EXPECT_EQ(reader.ReadValue(Hive::CurrentUser, "Software\\HARVOLD\\Sorano\\RecentList", "File_2"), "");
}

TEST_F(RegistryKeyTest, ReadValueClosesAnOpenKeyFirst)
{
    roots.SetUser(Key, "ToolTips", "0");
    roots.SetMachine("Software\\HARVOLD\\Sorano", "ApplicationName", "Lastgang");
    RegistryKey key;
    ASSERT_EQ(key.OpenKey(Hive::CurrentUser, KeyRead, Key), 0);
    EXPECT_EQ(key.ReadValue(Hive::LocalMachine, "Software\\HARVOLD\\Sorano", "ApplicationName"), "Lastgang");
    EXPECT_EQ(key.Path(), "Software\\HARVOLD\\Sorano");
}

TEST_F(RegistryKeyTest, EnumeratesValuesAndSubKeys)
{
    roots.SetMachine("Software\\HARVOLD\\DataModules", "CSV", "sorano.csv:CSV1");
    roots.SetMachine("Software\\HARVOLD\\DataModules", "SQLite", "sorano.sqlite:DEMO");
    roots.SetMachine("Software\\HARVOLD\\Sorano\\Settings", "LogMode", "1");
    roots.SetMachine("Software\\HARVOLD\\Sorano\\MainWin", "prevzoom", "100");

    RegistryKey modules;
    ASSERT_EQ(modules.OpenKey(Hive::LocalMachine, KeyRead, "Software\\HARVOLD\\DataModules"), 0);
    QStringList names;
    for (QString name = modules.GetFirstValue(); !name.isEmpty(); name = modules.GetNextValue())
        names << name + "=" + modules.Value(name);
    EXPECT_EQ(names, (QStringList{"CSV=sorano.csv:CSV1", "SQLite=sorano.sqlite:DEMO"}));

    RegistryKey sorano;
    ASSERT_EQ(sorano.OpenKey(Hive::LocalMachine, KeyRead, "Software\\HARVOLD\\Sorano"), 0);
    QStringList paths;
    for (RegistryKey sub = sorano.GetFirstKey(); !sub.Path().isEmpty(); sub = sorano.GetNextKey())
        paths << sub.Path();
    EXPECT_EQ(paths, (QStringList{"Software\\HARVOLD\\Sorano\\MainWin", "Software\\HARVOLD\\Sorano\\Settings"}));
    EXPECT_TRUE(sorano.GetNextKey().Path().isEmpty());

    RegistryKey closed;
    EXPECT_TRUE(closed.GetFirstKey().Path().isEmpty());
    EXPECT_EQ(closed.GetFirstValue(), "");
}

TEST_F(RegistryKeyTest, DeleteKeyRemovesKeyWithItsValuesAndSubKeys)
{
    roots.SetUser("Software\\HARVOLD\\Sorano\\Indizes\\Maximum", "Show", "0");
    roots.SetUser("Software\\HARVOLD\\Sorano\\Indizes\\Count", "Show", "1");
    RegistryKey key;
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
    RegistryKey key;
    EXPECT_EQ(key.WriteValue(Hive::LocalMachine, Key, "Profiles", "/tmp/p.dat"), RegistryStatus::AccessDenied);
    EXPECT_EQ(key.ReadValue(Hive::LocalMachine, Key, "Profiles"), "");
    EXPECT_EQ(key.WriteValue(Hive::CurrentUser, Key, "ZoomArea", "1"), 0);
}

} // namespace
