// SPDX-License-Identifier: GPL-3.0-or-later
#include "XmlTree.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QUrl>

#include <gtest/gtest.h>

namespace {

const QByteArray Sample = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Messung>\n\t<Kanal id=\"1\">W</Kanal>\n"
                          "\t<Gruppe><Kanal id=\"3\">Spannung L1</Kanal></Gruppe>\n</Messung>\n";

struct XmlTreeFiles : ::testing::Test
{
    QString PathOf(const QString& name) const { return dir.filePath(name); }
    QByteArray Read(const QString& path) const
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    bool Write(const QString& name, const QByteArray& data) const
    {
        QFile file(PathOf(name));
        return file.open(QIODevice::WriteOnly) && file.write(data) == data.size();
    }
    QTemporaryDir dir;
};

TEST(XmlTree, ChildrenAreReachedByTagIndexAndCountAndRemovedWithTheirSubtree)
{
    XmlDocument doc;
    ASSERT_TRUE(doc.LoadString("<r><report>a</report><memo/><report>b</report><group><report/></group><empty/></r>"));
    XmlNode root = doc.RootNode();
    EXPECT_TRUE(root.ChildCount("report") == 2 && root.ChildCount() == 5) << "grandchildren are not counted";
    EXPECT_EQ(root.NthChild("report", 1).Content(), "b");
    EXPECT_TRUE(root.NthChild("report", 2).IsNull() && root.NthChild("report", -1).IsNull());
    EXPECT_TRUE(root.NthChild(3).Tag() == "group" && root.NthChild(5).IsNull());
    EXPECT_EQ(
        root.ChildContent("report", "x") + root.ChildContent("empty", "x") + root.ChildContent("absent", "x"), "ax")
        << "an empty child is no missing child";
    for (const char* value : { "1", "2" }) {
        root.SetContent(value);
        root.SetAttribute("id", value);
    }
    EXPECT_TRUE(root.Content() == "2" && root.ChildCount() == 5) << "setting the text keeps the child elements";
    EXPECT_EQ(doc.ToString().count("id="), 1);
    XmlNode group = root.NthChild(3);
    group.Remove();
    EXPECT_TRUE(group.IsNull() && root.ChildCount() == 4);
    EXPECT_EQ(doc.ToString().count("<report"), 2);
}

TEST(XmlTree, FindDescendantSearchesBelowTheNodeForAnExistingAttributeAndANullNodeIsHarmless)
{
    XmlDocument doc;
    ASSERT_TRUE(doc.LoadString(R"(<r k="x"><a><n k="x" v="deep"/></a><n k="x" v="later"/><n v="none"/></r>)"));
    XmlNode root = doc.RootNode();
    EXPECT_EQ(root.FindDescendant("n", "k", "x").Attribute("v"), "deep") << "depth first, in document order";
    EXPECT_TRUE(root.FindDescendant("n", "k", "").IsNull()) << "a missing attribute is no empty value";
    EXPECT_TRUE(root.FindDescendant("r", "k", "x").IsNull()) << "the node itself is not searched";
    EXPECT_TRUE(root.NthChild("n", 0).FindDescendant("n", "k", "x").IsNull()) << "siblings are not below";

    // Every operation on a null node is harmless.
    XmlNode node = root.FindDescendant("r", "k", "x");
    node.SetContent("c");
    node.SetAttribute("a", "v");
    node.Remove();
    EXPECT_EQ(node.Tag() + node.Content() + node.ChildContent("c", "d") + node.Attribute("a", "d"), "dd");
    EXPECT_TRUE(node.NewChild("c", "t").IsNull() && node.Parent().IsNull() && node.NthChild("c", 0).IsNull()
        && node.FindDescendant("c", "a", "v").IsNull() && node.ChildCount() == 0);
}

TEST(XmlTree, LoadingJoinsTextSplitByACommentRepairsInvalidUtf8AndTakesDeepNesting)
{
    XmlDocument doc;
    ASSERT_TRUE(doc.LoadString("<r><memo>vor<!-- Notiz -->nach<?pi x?> Ende</memo>"
                               "<n\377 key=\"a\303b\">\344</n\377></r>"));
    EXPECT_EQ(doc.RootNode().ChildContent("memo"), "vornach Ende");
    const XmlNode broken = doc.RootNode().NthChild(1);
    EXPECT_EQ(broken.Tag() + broken.Content(), QStringLiteral("n\uFFFD\uFFFD"));
    EXPECT_EQ(doc.RootNode().FindDescendant(broken.Tag(), "key", QStringLiteral("a\uFFFDb")).Raw(), broken.Raw());
    const QByteArray written = doc.ToString();
    EXPECT_EQ(QString::fromUtf8(written).toUtf8(), written) << "the document is written as valid UTF-8";
    XmlDocument reloaded;
    ASSERT_TRUE(reloaded.LoadString(written));
    EXPECT_EQ(reloaded.ToString(), written);

    // Deep nesting loads and is saved in linear size.
    const QByteArray deep = QByteArray("<a>").repeated(20000) + QByteArray("</a>").repeated(20000);
    ASSERT_TRUE(doc.LoadString(deep)) << doc.LastError().toStdString();
    EXPECT_LT(doc.ToString().size(), 2 * deep.size());
}

TEST_F(XmlTreeFiles, ExternalAndInternalEntitiesAreNeverResolved)
{
    ASSERT_TRUE(Write("secret.txt", "GEHEIM-4711"));
    const QByteArray url = QUrl::fromLocalFile(PathOf("secret.txt")).toEncoded();
    ASSERT_TRUE(Write("doctype.xml",
        "<!DOCTYPE r [<!ENTITY xxe SYSTEM \"" + url
            + "\"><!ENTITY lol \"lol\">"
              "<!ENTITY lol2 \"&lol;&lol;\">]><r a=\"&xxe;\"><x>&xxe;</x><y>&lol2;</y></r>"));
    XmlDocument doc;
    ASSERT_TRUE(doc.LoadFile(PathOf("doctype.xml"))) << doc.LastError().toStdString();
    EXPECT_EQ(doc.RootNode().ChildContent("x"), "&xxe;");
    EXPECT_EQ(doc.RootNode().Attribute("a"), "&xxe;");
    EXPECT_FALSE(doc.ToString().contains("GEHEIM") || doc.ToString().contains("lollol"));
}

TEST_F(XmlTreeFiles, BrokenOrTruncatedInputFailsNamesTheFileAndLeavesAnEmptyDocument)
{
    ASSERT_TRUE(QDir(dir.path()).mkdir("folder.xml"));
    const std::pair<QString, QByteArray> cases[] = { // a null content writes no file
        { "folder.xml", QByteArray() }, { "declaration-only.xml", "<?xml version=\"1.0\"?>\n<!-- nichts -->" },
        { "mismatch.xml", "<a><b></a></b>" }, { "truncated.xml", Sample.left(Sample.indexOf("</Messung>") + 9) },
        { "garbage.bin", QByteArray("\x00\xff\xfe\x01\x89PNG\r\n\x1a\n", 10) }
    };
    for (const auto& [name, content] : cases) {
        SCOPED_TRACE(name.toStdString());
        ASSERT_TRUE(content.isNull() || Write(name, content));
        XmlDocument doc;
        ASSERT_TRUE(doc.LoadString(Sample));
        EXPECT_FALSE(doc.LoadFile(PathOf(name)));
        EXPECT_TRUE(doc.LastError().contains(name)) << doc.LastError().toStdString();
        EXPECT_TRUE(doc.ToString().isEmpty()) << "the earlier tree is dropped";
        EXPECT_TRUE(doc.LoadString(Sample) && doc.LastError().isEmpty()) << "a successful load clears the error";
    }
}

TEST_F(XmlTreeFiles, SavingIsAtomicKeepsSpecialCharactersAndSkipsADocumentWithoutRoot)
{
    const QString path = PathOf("alt.xml");
    const QString text = QStringLiteral("Größe € & <tag> \"zitiert\" 'einfach'\n  ");
    const QString attribute = QStringLiteral("a\"b'c<d>&f ü\tg");
    ASSERT_TRUE(Write("alt.xml", Sample));
    XmlDocument doc;
    doc.CreateRoot("neu").NewChild("text", text).SetAttribute("wert", attribute);
    EXPECT_FALSE(doc.SaveFile(path + "/datei.xml")) << "the parent is a regular file";
    EXPECT_TRUE(doc.LastError().contains("datei.xml")) << doc.LastError().toStdString();
    EXPECT_EQ(Read(path), Sample);
    ASSERT_TRUE(doc.SaveFile(path)) << doc.LastError().toStdString();
    EXPECT_TRUE(Read(path).startsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<neu>"));
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files).size(), 1) << "no temporary file is left behind";
    XmlDocument loaded;
    ASSERT_TRUE(loaded.LoadFile(path)) << loaded.LastError().toStdString();
    EXPECT_EQ(loaded.RootNode().ChildContent("text"), text);
    EXPECT_EQ(loaded.RootNode().ChildByTag("text").Attribute("wert"), attribute);
    doc.RootNode().Remove();
    EXPECT_FALSE(doc.SaveFile(PathOf("leer.xml")));
    EXPECT_FALSE(QFile::exists(PathOf("leer.xml")));
}

} // namespace
