// SPDX-License-Identifier: GPL-3.0-or-later
// The recent-file list: taking names apart, shortening them for the menu, the queue of the last
// five files, and its way through the per-user settings.
#include "RecentList.h"
#include "RegistryKey.h"
#include "TempSettings.h"

#include <QDir>
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

// Files that exist in a temporary folder.
class RealFiles
{
public:
    QString Make(const QString& name)
    {
        const QString full = dir.path() + '/' + name;
        QFile file(full);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        return full;
    }
    QTemporaryDir dir;
};

TEST(RecentFileTest, SetFileSplitsAtTheLastSeparatorAndRefusesNamesWithoutDotOrFolder)
{
    const struct
    {
        const char* input;
        bool accepted; // Name and Path were taken
        const char* name;
        const char* path;
    } cases[] = {
        { "  /daten/juni/a.sor  ", true, "a.sor", "/daten/juni/" },
        { "C:\\Daten\\Juni\\b.sor", true, "b.sor", "C:\\Daten\\Juni\\" },
        { "C:\\Daten/mixed\\c.sor", true, "c.sor", "C:\\Daten/mixed\\" },
        { "/daten/ohne_punkt", false, "", "" },
        { "nur.sor", false, "", "" },
        { "   ", false, "", "" },
    };
    for (const auto& c : cases) {
        RecentFile file = FileOf("/vorher/alt.sor");
        EXPECT_FALSE(file.SetFile(c.input, false)) << c.input;
        EXPECT_EQ(file.Name(), c.accepted ? c.name : "alt.sor") << c.input;
        EXPECT_EQ(file.Path(), c.accepted ? c.path : "/vorher/") << c.input;
        if (c.accepted) {
            EXPECT_EQ(file.FullName(), QString(c.input).trimmed());
        }
    }
}

TEST(RecentFileTest, CheckedSetFileTellsWhetherTheFileExists)
{
    RealFiles files;
    const QString there = files.Make("da.sor");
    RecentFile file;
    EXPECT_TRUE(file.SetFile(there, true));
    EXPECT_FALSE(file.SetFile(files.dir.path() + "/weg.sor", true));
    EXPECT_EQ(file.Name(), "weg.sor");
    // A stored name with "\" separators finds the file as well.
    EXPECT_TRUE(file.SetFile(QString(there).replace('/', '\\'), true));
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
        { "/d/kurz.sor", 30, "/d/kurz.sor" },
        // The whole file name of up to maxLength - 6 characters stays.
        { longPath + "abcdefghijklmnopqrst.sor", 30, "/pp...abcdefghijklmnopqrst.sor" },
        { longPath + "a.sor", 30, "/" + QString(21, 'p') + "...a.sor" },
        // A longer file name is cut to its first maxLength - 6 characters.
        { longPath + QString(40, 'n') + ".sor", 30, "/pp..." + QString(24, 'n') },
        // Below 15 counts as 15.
        { longPath + "a.sor", 3, "/" + QString(6, 'p') + "...a.sor" },
        { "/d/genau15z.sor", 15, "/d/genau15z.sor" },
    };
    for (const auto& c : cases) {
        const QString shortName = FileOf(c.full).GetShortName(c.maxLength);
        EXPECT_EQ(shortName, c.expected) << c.full.right(40).toStdString() << " " << c.maxLength;
        EXPECT_LE(shortName.size(), std::max(c.maxLength, 15));
    }
    EXPECT_EQ(RecentFile().GetShortName(30), "");
}

TEST(RecentListTest, AddFileKeepsTheLastFiveWithoutDuplicatesNewestLast)
{
    RecentList list;
    for (const char* name : { "/d/1.sor", "/d/2.sor", "/d/3.sor", "/d/4.sor", "/d/5.sor" })
        list.AddFile(FileOf(name), -1, 5);
    list.AddFile(FileOf("/d/6.sor"), -1, 5);
    EXPECT_EQ(FullNames(list), QStringList({ "/d/2.sor", "/d/3.sor", "/d/4.sor", "/d/5.sor", "/d/6.sor" }));

    list.AddFile(FileOf("/d/3.sor"), -1, 5);
    EXPECT_EQ(FullNames(list), QStringList({ "/d/2.sor", "/d/4.sor", "/d/5.sor", "/d/6.sor", "/d/3.sor" }));

    ASSERT_NE(list.Item(1), nullptr);
    EXPECT_EQ(list.Item(1)->Name(), "2.sor");
    ASSERT_NE(list.Item("/d/5.sor"), nullptr);
    EXPECT_EQ(list.Item("/d/5.sor")->Path(), "/d/");
    EXPECT_EQ(list.Item(0), nullptr);
    EXPECT_EQ(list.Item(6), nullptr);
    EXPECT_EQ(list.Item("/d/1.sor"), nullptr);

    list.Remove(7);
    list.Remove("/d/1.sor");
    EXPECT_EQ(list.Count(), 5);
    list.Remove(1);
    list.Remove("/d/3.sor");
    EXPECT_EQ(FullNames(list), QStringList({ "/d/4.sor", "/d/5.sor", "/d/6.sor" }));
}

TEST(RecentListTest, LevelsPlaceFilesBeforeTheFirstOfAHigherLevel)
{
    RecentList list;
    list.AddFile(FileOf("/d/a.sor"), 1, 10);
    list.AddFile(FileOf("/d/b.sor"), 3, 10);
    list.AddFile(FileOf("/d/c.sor"), 2, 10);
    list.AddFile(FileOf("/d/d.sor"), -1, 10);
    list.AddFile(FileOf("/d/e.sor"), 0, 10);
    list.AddFile(FileOf("/d/f.sor"), 2, 10);
    EXPECT_EQ(FullNames(list), QStringList({ "/d/e.sor", "/d/a.sor", "/d/c.sor", "/d/f.sor", "/d/b.sor", "/d/d.sor" }));
    list.AddFile(FileOf("/d/g.sor"), -1, 3);
    EXPECT_EQ(FullNames(list), QStringList({ "/d/b.sor", "/d/d.sor", "/d/g.sor" }));
}

class RecentListStoreTest : public ::testing::Test
{
protected:
    QString Stored(const QString& name)
    {
        RegistryKey key;
        return key.ReadValue(Hive::CurrentUser, KeyRecentList, name);
    }

    TempSettings roots;
    RealFiles files;
};

TEST_F(RecentListStoreTest, LoadDropsFilesThatAreGoneAndKeepsTheOrder)
{
    QStringList names;
    for (const char* name : { "a.sor", "b.sor", "c.sor", "d.sor", "e.sor" })
        names << files.Make(name);
    roots.SetUser(KeyRecentList, "Count", "5");
    for (int n = 1; n <= 5; ++n)
        roots.SetUser(KeyRecentList, QString("File_%1").arg(n), names[n - 1]);
    QFile::remove(names[1]);
    QFile::remove(names[3]);

    RecentList list;
    list.AddFile(FileOf("/d/vorher.sor"), -1, 5);
    EXPECT_EQ(list.Load(), 3);
    EXPECT_EQ(FullNames(list), QStringList({ names[0], names[2], names[4] }));
}

TEST_F(RecentListStoreTest, LoadReadsUpToCountSkipsEmptyEntriesAndNeedsACount)
{
    const QString a = files.Make("a.sor");
    const QString c = files.Make("c.sor");
    roots.SetUser(KeyRecentList, "File_1", a);
    roots.SetUser(KeyRecentList, "File_2", "");
    roots.SetUser(KeyRecentList, "File_3", c);
    const QStringList before { "/d/vorher.sor" };
    const struct
    {
        const char* count;
        QStringList loaded;
    } cases[] = {
        { "", before },
        { "0", before },
        { "abc", before },
        { "2", { a } },
        { "3", { a, c } },
        { "99", { a, c } },
    };
    for (const auto& cs : cases) {
        roots.SetUser(KeyRecentList, "Count", cs.count);
        RecentList list;
        list.AddFile(FileOf(before[0]), -1, 5);
        EXPECT_EQ(list.Load(), cs.loaded.size()) << cs.count;
        EXPECT_EQ(FullNames(list), cs.loaded) << cs.count;
    }
}

TEST_F(RecentListStoreTest, SaveThenLoadGivesTheSameListAndNoStaleEntries)
{
    RecentList longer;
    QStringList names;
    for (const char* name : { "1.sor", "2.sor", "3.sor", "4.sor", "5.sor" }) {
        names << files.Make(name);
        longer.AddFile(FileOf(names.last()), -1, 5);
    }
    ASSERT_TRUE(longer.Save());
    EXPECT_EQ(Stored("Count"), "5");
    EXPECT_EQ(Stored("File_5"), names[4]);

    RecentList shorter;
    shorter.AddFile(FileOf(names[3]), -1, 5);
    shorter.AddFile(FileOf(names[0]), -1, 5);
    ASSERT_TRUE(shorter.Save());
    EXPECT_EQ(Stored("Count"), "2");
    EXPECT_EQ(Stored("File_3"), "");
    EXPECT_EQ(Stored("File_5"), "");

    RecentList loaded;
    EXPECT_EQ(loaded.Load(), 2);
    EXPECT_EQ(FullNames(loaded), FullNames(shorter));
}

} // namespace
