// SPDX-License-Identifier: GPL-3.0-or-later
// The batch files: names with blanks and '~', the selection, the templates of a batch, copying
// and deleting batches, and damaged files that must not cost any other batch.
#include "BatchStore.h"
#include "LogCapture.h"
#include "TempSettings.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace {

class BatchStoreTest : public ::testing::Test
{
protected:
    QString Path(const QString& name) const { return dir.filePath(name); }
    void Write(const QString& name, const QByteArray& content) const
    {
        QFile file(Path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size()) << name.toStdString();
    }
    QByteArray Read(const QString& name) const
    {
        QFile file(Path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
    }
    bool Exists(const QString& name) const { return QFile::exists(Path(name)); }
    // A fresh store on the folder, as at the next start.
    BatchStore Reloaded() const
    {
        BatchStore store(dir.path());
        store.Load();
        return store;
    }
    static QStringList Names(const BatchStore& store)
    {
        QStringList names;
        for (qsizetype i = 0; i < store.Count(); ++i)
            names << store.Name(i) + '|' + store.Memo(i);
        return names;
    }
    static QStringList Files(BatchStore& store, qsizetype index)
    {
        QStringList files;
        for (const BatchStore::Template& t : store.Templates(index))
            files << t.id + '|' + t.name + '|' + t.file;
        return files;
    }
    // A batch with one template file per name, each holding its own name.
    void AddBatch(const QString& name, const QStringList& templates)
    {
        const qsizetype index = store.Add(name, "Memo " + name);
        ASSERT_GE(index, 0) << name.toStdString();
        for (const QString& file : templates) {
            Write(file, file.toUtf8());
            EXPECT_TRUE(store.AddTemplate(index, { file, "Vorlage " + file, file })) << file.toStdString();
        }
    }

    TempSettings roots;
    LogCapture log { roots };
    QTemporaryDir dir;
    BatchStore store { dir.path() };
};

TEST_F(BatchStoreTest, BlanksAreStoredAsTildeAndNamesThatDifferOnlyByThemAreOneBatch)
{
    EXPECT_EQ(store.Add("Monat Süd", "erster"), 0);
    EXPECT_EQ(store.Add("Last~Gang", "zweiter"), 1);
    EXPECT_TRUE(Read("Batches.def").contains("<Monat~Süd>erster</Monat~Süd>")) << Read("Batches.def").toStdString();
    EXPECT_TRUE(Exists("Monat~Süd.btc"));
    EXPECT_EQ(Names(Reloaded()), (QStringList { "Monat Süd|erster", "Last Gang|zweiter" }));

    // One batch however it is spelt; no file is replaced.
    const QByteArray def = Read("Batches.def");
    for (const QString same : { "Monat~Süd", "monat süd", "Last Gang" }) {
        EXPECT_EQ(store.IndexOf(same), same.startsWith("Last") ? 1 : 0) << same.toStdString();
        EXPECT_EQ(store.Add(same, "dritter"), -1) << same.toStdString();
    }
    EXPECT_FALSE(store.SetProperties(1, "MONAT~süd", "x"));
    EXPECT_EQ(Read("Batches.def"), def);

    // Names whose file could not be read back are refused before any file is made.
    for (const QString bad : { "", "1. Quartal", " Vorn", "A/B", "A\\B", "A:B", "A<B>", "Tab\tu", "Kessel & Co" })
        EXPECT_EQ(store.Add(bad, "m"), -1) << bad.toStdString();
    EXPECT_EQ(store.Count(), 2);
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files).size(), 3);

    // Renaming moves the .btc with its templates.
    Write("Last_0.mtb", "x");
    ASSERT_TRUE(store.AddTemplate(1, { "Last_0.mtb", "Last", "Last_0.mtb" }));
    ASSERT_TRUE(store.SetProperties(1, "Last Gang 2", "neu"));
    EXPECT_FALSE(Exists("Last~Gang.btc"));
    BatchStore again = Reloaded();
    EXPECT_EQ(Names(again), (QStringList { "Monat Süd|erster", "Last Gang 2|neu" }));
    EXPECT_EQ(Files(again, 1), QStringList { "Last_0.mtb|Last|Last_0.mtb" });
}

TEST_F(BatchStoreTest, StoredSelectionFallsBackToTheFirstBatch)
{
    const std::vector<std::pair<QByteArray, qsizetype>> rows = {
        { "<Selected>1<Eins>a</Eins><Zwei~Wörter>b</Zwei~Wörter></Selected>", 1 },
        { "<selected>1<Eins/><Zwei/></selected>", 1 },
        { "<Selected>2<Eins/><Zwei/></Selected>", 0 },
        { "<Selected>-1<Eins/><Zwei/></Selected>", 0 },
        { "<Selected>eins<Eins/><Zwei/></Selected>", 0 },
        { "<Selected>1</Selected>", -1 },
    };
    for (const auto& [content, selected] : rows) {
        Write("Batches.def", content);
        store.Load();
        EXPECT_EQ(store.StoredSelection(), selected) << content.toStdString();
    }
    Write("Batches.def", rows[0].first);
    store.Load();
    EXPECT_EQ(Names(store), (QStringList { "Eins|a", "Zwei Wörter|b" }));

    ASSERT_TRUE(store.SetSelected(0));
    EXPECT_EQ(Reloaded().StoredSelection(), 0);
    EXPECT_EQ(store.Add("Drei", ""), 2);
    EXPECT_EQ(Reloaded().StoredSelection(), 2);
    EXPECT_FALSE(store.SetSelected(3));
    // Deleting the selected batch selects its neighbour.
    ASSERT_TRUE(store.Remove(2));
    EXPECT_EQ(Reloaded().StoredSelection(), 1);
    ASSERT_TRUE(store.SetSelected(0));
    ASSERT_TRUE(store.Remove(0));
    EXPECT_EQ(Reloaded().StoredSelection(), 0);
    EXPECT_EQ(Names(Reloaded()), QStringList { "Zwei Wörter|b" });
}

TEST_F(BatchStoreTest, TemplatesOfOldBatchesAreCutToFileNamesAndMissingOnesDropped)
{
    Write("Batches.def", "<Selected>0<Alt/></Selected>");
    Write("Alt.btc",
        "<Stapelreportdefinition><reports>"
        "<report><id>C:\\Sorano\\batch\\Last_0.mtb</id><name>Last</name>"
        "<file>C:\\Sorano\\batch\\Last_0.mtb</file></report>"
        "<report><id>Weg_1.mtb</id><name>Weg</name><file>Weg_1.mtb</file></report>"
        "<report><id>t</id><name>Tag</name><file>/home/ich/batch/Tag_2.mtb</file></report>"
        "</reports></Stapelreportdefinition>");
    Write("Last_0.mtb", "1");
    Write("Tag_2.mtb", "2");
    store.Load();
    const QStringList expected { "Last_0.mtb|Last|Last_0.mtb", "Tag_2.mtb|Tag|Tag_2.mtb" };
    EXPECT_EQ(Files(store, 0), expected);
    // The .btc was rewritten without the missing entry and the paths, and reads the same.
    const QByteArray rewritten = Read("Alt.btc");
    EXPECT_FALSE(rewritten.contains("Weg") || rewritten.contains("\\") || rewritten.contains("/home"));
    BatchStore again = Reloaded();
    EXPECT_EQ(Files(again, 0), expected);
    EXPECT_EQ(store.TemplatePath(store.Templates(0)[1]), Path("Tag_2.mtb"));

    // New files are numbered from the template count on, past files that exist.
    EXPECT_EQ(store.NewTemplateFile(0, "Last Nord"), "Last Nord_2.mtb");
    Write("Last Nord_2.mtb", "3");
    Write("Last Nord_3.mtb", "old");
    EXPECT_EQ(store.NewTemplateFile(0, "a/b\\c"), "a_b_c_2.mtb");
    ASSERT_TRUE(store.AddTemplate(0, { "Last Nord_2.mtb", "Last Nord", "Last Nord_2.mtb" }));
    EXPECT_EQ(store.NewTemplateFile(0, "Last Nord"), "Last Nord_4.mtb");
    EXPECT_FALSE(store.AddTemplate(0, { "Last Nord_2.mtb", "zweimal", "Last Nord_3.mtb" }));
    EXPECT_FALSE(store.AddTemplate(0, { "x", "Pfad", "../x.mtb" }));

    // Editing by key, then removing deletes the file.
    EXPECT_TRUE(store.RenameTemplate(0, "Tag_2.mtb", "Tageswerte"));
    EXPECT_TRUE(store.SetTemplateFile(0, "Last Nord_2.mtb", "Last Nord_3.mtb"));
    EXPECT_FALSE(store.RenameTemplate(0, "unbekannt", "x"));
    EXPECT_TRUE(store.RemoveTemplate(0, "Last_0.mtb"));
    EXPECT_FALSE(Exists("Last_0.mtb"));
    EXPECT_EQ(Files(store, 0),
        (QStringList { "Tag_2.mtb|Tageswerte|Tag_2.mtb", "Last Nord_2.mtb|Last Nord|Last Nord_3.mtb" }));
}

TEST_F(BatchStoreTest, CopyGivesEveryTemplateAFileOfItsOwnAndDeleteRemovesNothingOfTheOthers)
{
    AddBatch("Werk A", { "Werk A_0.mtb", "Trafo_1.mtb" });
    AddBatch("Zwei", { "Zwei_0.mtb" });
    EXPECT_EQ(BatchStore::CopyName("Werk A"), "Kopie von Werk A");
    ASSERT_EQ(store.Copy(0, "Kopie von Werk A", "Kopie"), 2);
    EXPECT_EQ(Reloaded().StoredSelection(), 2);
    EXPECT_EQ(Files(store, 2),
        (QStringList { "Kopie von Werk A_0.mtb|Vorlage Werk A_0.mtb|Kopie von Werk A_0.mtb",
            "Trafo_2.mtb|Vorlage Trafo_1.mtb|Trafo_2.mtb" }));
    EXPECT_EQ(Read("Kopie von Werk A_0.mtb"), "Werk A_0.mtb");
    EXPECT_EQ(Read("Trafo_2.mtb"), "Trafo_1.mtb");
    EXPECT_EQ(Files(store, 0).size(), 2);
    EXPECT_EQ(store.Copy(0, "Werk A", "m"), -1);
    EXPECT_EQ(store.Copy(5, "Neu", "m"), -1);

    // Copies of old batches share template files, and a .btc may name any file of the folder.
    ASSERT_TRUE(store.AddTemplate(0, { "Zwei_0.mtb", "geteilt", "Zwei_0.mtb" }));
    ASSERT_TRUE(store.AddTemplate(0, { "Zwei.btc", "fremd", "Zwei.btc" }));
    ASSERT_TRUE(store.AddTemplate(0, { "def", "fremd", "Batches.def" }));
    ASSERT_TRUE(store.Remove(0));
    EXPECT_FALSE(Exists("Werk A_0.mtb") || Exists("Trafo_1.mtb") || Exists("Werk~A.btc"));
    EXPECT_TRUE(Exists("Zwei_0.mtb") && Exists("Zwei.btc") && Exists("Trafo_2.mtb"));
    BatchStore again = Reloaded();
    EXPECT_EQ(Names(again), (QStringList { "Zwei|Memo Zwei", "Kopie von Werk A|Kopie" }));
    EXPECT_EQ(Files(again, 0), QStringList { "Zwei_0.mtb|Vorlage Zwei_0.mtb|Zwei_0.mtb" });

    // Removing a template keeps a file that another template still names.
    ASSERT_TRUE(again.AddTemplate(1, { "z", "geteilt", "Zwei_0.mtb" }));
    ASSERT_TRUE(again.RemoveTemplate(1, "z"));
    EXPECT_TRUE(Exists("Zwei_0.mtb"));
    EXPECT_FALSE(again.Remove(2));
}

TEST_F(BatchStoreTest, DamagedFilesLoseNoOtherBatch)
{
    const std::vector<std::pair<const char*, QByteArray>> rows = {
        { "truncated", "<Selected>0<Eins>a</Eins><Zw" },
        { "binary", QByteArray("\x00\xff<\x01~", 5) },
        { "foreign", "<profiles><profile><name>X</name></profile></profiles>" },
    };
    for (const auto& [what, content] : rows) {
        Write("Batches.def", content);
        const qsizetype lines = log.From("BatchStore.Load").size();
        store.Load();
        EXPECT_EQ(store.Count(), 0) << what;
        EXPECT_EQ(log.From("BatchStore.Load").size(), lines + 1) << what << "\n" << log.Dump();
        EXPECT_EQ(Read("Batches.def"), content) << what;
    }
    // The first save keeps the damaged list beside the new one.
    ASSERT_EQ(store.Add("Neu", "m"), 0);
    EXPECT_EQ(Read("Batches.def.damaged"), rows[2].second);
    EXPECT_EQ(Names(Reloaded()), QStringList { "Neu|m" });

    // Entries that are no batch, and a second one of a name, stay in the file but are not listed.
    Write("Batches.def", "<Selected>0<Eins>a</Eins><eins>b</eins><a:b/><Zwei>c</Zwei></Selected>");
    store.Load();
    EXPECT_EQ(Names(store), (QStringList { "Eins|a", "a b|", "Zwei|c" }));
    ASSERT_EQ(store.Add("Drei", "d"), 3);
    EXPECT_TRUE(Read("Batches.def").contains("<eins>b</eins>"));

    // A damaged .btc shows no templates, takes none and is kept; its neighbours are untouched.
    Write("Zwei_0.mtb", "v");
    ASSERT_TRUE(store.AddTemplate(2, { "Zwei_0.mtb", "Vorlage", "Zwei_0.mtb" }));
    for (const QByteArray& bad : { QByteArray("<Stapelreportdefinition><reports><rep"), QByteArray("<Selected/>") }) {
        Write("Eins.btc", bad);
        EXPECT_TRUE(store.Templates(0).empty());
        EXPECT_FALSE(store.AddTemplate(0, { "Zwei_0.mtb", "x", "Zwei_0.mtb" }));
        EXPECT_EQ(store.Copy(0, "Eins Kopie", "m"), -1);
        EXPECT_EQ(Read("Eins.btc"), bad);
    }
    EXPECT_EQ(Files(store, 2), QStringList { "Zwei_0.mtb|Vorlage|Zwei_0.mtb" });

    // A list that cannot be written takes no batch and leaves no file behind.
    QFile::remove(Path("Batches.def"));
    QDir().mkpath(Path("Batches.def"));
    store.Load();
    EXPECT_EQ(store.Add("Vier", "m"), -1);
    EXPECT_EQ(store.Count(), 0);
    EXPECT_FALSE(Exists("Vier.btc"));
}

} // namespace
