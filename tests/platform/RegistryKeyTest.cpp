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
    EXPECT_EQ(key.WriteValue(Hive::LocalMachine, Key, "Profiles", path), 0);
    key.WriteValue(Hive::CurrentUser, "Identities\\", "Last Username", "Anna Schmidt");
    RegistryKey other;
    EXPECT_EQ(other.ReadValue(Hive::LocalMachine, Key, "Profiles"), path);
    EXPECT_EQ(other.ReadValue(Hive::CurrentUser, Key, "Profiles"), "");
    EXPECT_EQ(other.ReadValue(Hive::CurrentUser, "Identities\\", "Last Username"), "Anna Schmidt");
    EXPECT_TRUE(QFile::exists(roots.UserDir() + "/HARVOLD/Sorano.ini")
                && QFile::exists(roots.MachineDir() + "/HARVOLD/Sorano.ini"));
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
    EXPECT_TRUE(key.ReadValue(Hive::CurrentUser, Key, "ZoomArea").isEmpty()
                && key.ReadValue(Hive::CurrentUser, Key, "ToolTips").isEmpty());
}

TEST_F(RegistryKeyTest, AnOpenKeyReadsUntilClosedRefusesASecondOpenAndOneShotReadsCloseItFirst)
{
    EXPECT_EQ(key.OpenKey(Hive::CurrentUser, KeyRead, Key), RegistryStatus::FileNotFound);
    roots.SetUser(Key, "ToolTips", "0");
    roots.SetMachine("Software\\HARVOLD\\Sorano", "ApplicationName", "Lastgang");
    ASSERT_EQ(key.OpenKey(Hive::CurrentUser, KeyRead, Key), 0);
    EXPECT_EQ(key.OpenKey(Hive::LocalMachine, KeyRead, "Software\\HARVOLD"), RegistryStatus::AlreadyOpen);
    EXPECT_EQ(key.Value("ToolTips"), "0") << "the first key stays open";
    EXPECT_EQ(key.ReadValue(Hive::LocalMachine, "Software\\HARVOLD\\Sorano", "ApplicationName"), "Lastgang");
    EXPECT_TRUE(key.CloseKey() == 0 && key.Value("ApplicationName").isEmpty());
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
