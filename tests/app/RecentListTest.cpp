// SPDX-License-Identifier: GPL-3.0-or-later
// The recent-file list: names taken apart and shortened for the menu, the queue of the last five
// files, and its way through the per-user settings.
#include "RecentList.h"
#include "RegistryKey.h"
#include "TempSettings.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

const QString KeyRecentList = QStringLiteral("Software\\HARVOLD\\Sorano\\RecentList");

RecentFile FileOf(const QString& fullName)
{
    RecentFile file;
    file.SetFile(fullName, false);
    return file;
}

QStringList FullNames(const RecentList& list)
{
    QStringList names;
    for (const RecentFile& file : list)
        names << file.FullName();
    return names;
}

bool Touch(const QString& name)
{
    return QFile(name).open(QIODevice::WriteOnly);
}

TEST(RecentFileTest, SetFileSplitsAtTheLastSeparatorRefusesNamesWithoutDotOrFolderAndChecksExistence)
{
    const struct
    {
        const char* input;
        const char* name; // nullptr: refused, the earlier file stays
        const char* path;
    } cases[] = {
        { "  /daten/juni/a.sor  ", "a.sor", "/daten/juni/" },
        { "C:\\Daten/gemischt\\b.sor", "b.sor", "C:\\Daten/gemischt\\" },
        { "/daten/ohne_punkt", nullptr, nullptr },
        { "nur.sor", nullptr, nullptr },
    };
    for (const auto& c : cases) {
        RecentFile file = FileOf("/vorher/alt.sor");
        EXPECT_FALSE(file.SetFile(c.input, false)) << c.input;
        EXPECT_EQ(file.FullName(), c.name ? QString(c.path) + c.name : "/vorher/alt.sor") << c.input;
        EXPECT_EQ(file.Name(), c.name ? c.name : "alt.sor") << c.input;
    }

    QTemporaryDir dir;
    const QString there = dir.path() + "/da.sor";
    ASSERT_TRUE(Touch(there));
    RecentFile file;
    EXPECT_TRUE(file.SetFile(there, true));
    EXPECT_TRUE(file.SetFile(QString(there).replace('/', '\\'), true));
    EXPECT_FALSE(file.SetFile(dir.path() + "/weg.sor", true));
}

TEST(RecentFileTest, ShortNameKeepsTheFileNameAndCutsTheFolder)
{
    const QString longPath = '/' + QString(199, 'p') + '/';
    const struct
    {
        QString full;
        int maxLength;
        QString expected;
    } cases[] = {
        { "/d/genau15z.sor", 15, "/d/genau15z.sor" },
        { longPath + "abcdefghijklmnopqrst.sor", 30, "/pp...abcdefghijklmnopqrst.sor" },
        { longPath + QString(40, 'n') + ".sor", 30, "/pp..." + QString(24, 'n') }, // name cut to 30 - 6
        { longPath + "a.sor", 3, '/' + QString(6, 'p') + "...a.sor" }, // below 15 counts as 15
        { "", 30, "" },
    };
    for (const auto& c : cases)
        EXPECT_EQ(FileOf(c.full).GetShortName(c.maxLength), c.expected) << c.full.right(30).toStdString();
}

TEST(RecentListTest, AddFileQueuesTheLastFilesWithoutDuplicatesOrByLevel)
{
    RecentList list;
    for (const char* name : { "/d/1.sor", "/d/2.sor", "/d/3.sor", "/d/4.sor", "/d/5.sor", "/d/6.sor", "/d/3.sor" })
        list.AddFile(FileOf(name), -1, 5);
    EXPECT_EQ(FullNames(list), QStringList({ "/d/2.sor", "/d/4.sor", "/d/5.sor", "/d/6.sor", "/d/3.sor" }));
    EXPECT_EQ(list.Item(1)->Name(), "2.sor");
    EXPECT_EQ(list.Item("/d/5.sor")->Path(), "/d/");
    EXPECT_EQ(list.Item(6), nullptr);
    list.Remove("/d/1.sor");
    list.Remove(1);
    EXPECT_EQ(list.Count(), 4);

    RecentList levels;
    for (const auto& [name, level] : { std::pair { "/d/a.sor", 1 }, { "/d/b.sor", 3 }, { "/d/c.sor", 2 },
             { "/d/d.sor", -1 }, { "/d/e.sor", 0 }, { "/d/f.sor", 2 } })
        levels.AddFile(FileOf(name), level, 10);
    EXPECT_EQ(
        FullNames(levels), QStringList({ "/d/e.sor", "/d/a.sor", "/d/c.sor", "/d/f.sor", "/d/b.sor", "/d/d.sor" }));
}

TEST(RecentListTest, LoadKeepsFilesThatStillExistAndSaveLeavesNoStaleEntries)
{
    TempSettings roots;
    QTemporaryDir dir;
    QStringList names;
    for (int n = 1; n <= 5; ++n) {
        names << dir.path() + QString("/%1.sor").arg(n);
        ASSERT_TRUE(Touch(names.last()));
        roots.SetUser(KeyRecentList, QString("File_%1").arg(n), names.last());
    }
    QFile::remove(names[1]);
    QFile::remove(names[3]);
    RecentList list;
    list.AddFile(FileOf("/d/vorher.sor"), -1, 5);
    for (const char* count : { "", "abc", "0" }) { // no count: the list stays
        roots.SetUser(KeyRecentList, "Count", count);
        EXPECT_EQ(list.Load(), 1) << count;
    }
    roots.SetUser(KeyRecentList, "Count", "5");
    EXPECT_EQ(list.Load(), 3);
    EXPECT_EQ(FullNames(list), QStringList({ names[0], names[2], names[4] }));

    list.Remove(2);
    ASSERT_TRUE(list.Save());
    RegistryKey key;
    EXPECT_EQ(key.ReadValue(Hive::CurrentUser, KeyRecentList, "Count"), "2");
    EXPECT_EQ(key.ReadValue(Hive::CurrentUser, KeyRecentList, "File_3"), "");
    ASSERT_TRUE(Touch(names[1])); // back again, but no longer listed
    RecentList loaded;
    EXPECT_EQ(loaded.Load(), 2);
    EXPECT_EQ(FullNames(loaded), QStringList({ names[0], names[4] }));
}

} // namespace
