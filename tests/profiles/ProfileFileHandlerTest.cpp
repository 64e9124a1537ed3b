// SPDX-License-Identifier: GPL-3.0-or-later
// The profile file: what is written, what reading makes of every element, and files that
// are missing, damaged, foreign or cannot be written.
#include "ProfileFileHandler.h"
#include "LogCapture.h"
#include "QtPrinters.h"
#include "TempSettings.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>
#include <tuple>
#include <vector>

namespace {

QByteArray Read(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
}

ProfilePtr MakeProfile(const QString& name, qint32 dataSource = 0)
{
    auto profile = std::make_shared<Profile>();
    profile->Name = name;
    profile->DataSourceID = dataSource;
    return profile;
}

// What the file keeps of a profile: name, data module, entry level, chart, then each channel
// with its look, if it has one.
std::string Stored(const Profile& p)
{
    const GraphProperties& g = p.GraphProperties;
    QStringList parts { p.Name, QString::number(p.DataSourceID), QString::number(p.EntryLevel),
        QString::asprintf("graph %d %d %d %d %d", g.Gallery, g.Legend, g.View3D, g.ShowYGrid1, g.ShowYGrid2) };
    for (qint32 i = 1; i <= p.ChannelCount(); ++i) {
        const SeriesProperties* s = p.SeriesProperties(i);
        parts << p.ChannelName(i)
                + (s ? QString::asprintf(" %d %d %d %d %d", s->Gallery, s->Color, s->LineWidth, s->LineStyle, s->Marker)
                     : QString());
    }
    return parts.join(u'|').toStdString();
}

class ProfileFileHandlerTest : public ::testing::Test
{
protected:
    ProfileFileHandlerTest() { handler.SetProfiles(&profiles); }
    QString Path(const QString& name) const { return dir.filePath(name); }
    void Write(const QString& path, const QByteArray& content)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    }
    QStringList LoadLog() const { return log.From("ProfileFileHandler.Load"); }

    TempSettings roots;
    LogCapture log { roots };
    QTemporaryDir dir;
    ProfileCollection profiles;
    ProfileFileHandler handler;
};

TEST_F(ProfileFileHandlerTest, EveryStoredMemberSurvivesSaveAndLoad)
{
    ProfilePtr full = MakeProfile("Trafo <1> & \"Süd\"", 12);
    full->EntryLevel = 2;
    GraphProperties& graph = full->GraphProperties;
    graph.View3D = graph.Legend = graph.ShowYGrid2 = true;
    graph.ShowYGrid1 = false;
    graph.Gallery = 8;
    full->SetChannelName(1, "Wirkleistung L1");
    full->SetSeriesProperties(1, SeriesProperties { CurveColors::Rgb(0, 128, 255), 3, 0, true, 2 });
    full->SetChannelName(2, "ohne Aussehen");
    full->SetChannelName(3, "Zähler");
    full->SetSeriesProperties(3, SeriesProperties { -1, 0, 0, false, 1 });
    full->SetChannelName(4, "gestrichelt");
    full->SetSeriesProperties(4, SeriesProperties { 0, 1, 1, false, 4 });
    profiles.Add(full);
    profiles.Add(MakeProfile("leer", -7));
    profiles.Add(MakeProfile(""));

    const QString path = Path("Profiles.dat");
    ASSERT_EQ(handler.Save(path), 0);
    const QByteArray bytes = Read(path);
    EXPECT_TRUE(bytes.contains("<channels />")) << "a profile without channels";
    // Line styles are written as words, and chart types other than 1, 2 and 8 as no word.
    EXPECT_TRUE(bytes.contains("<line-style>dash</line-style>") && bytes.contains("<gallery></gallery>"))
        << bytes.data();

    ProfileCollection loaded;
    ProfileFileHandler reader;
    reader.SetProfiles(&loaded);
    EXPECT_EQ(reader.Load(QString(path).replace('/', '\\')), 0) << "stored paths may use either separator";
    // Both come back as 0: words are not read as line styles.
    full->SetSeriesProperties(4, SeriesProperties { 0, 1, 0, false, 0 });
    ASSERT_EQ(loaded.Count(), profiles.Count());
    for (qsizetype i = 0; i < profiles.Count(); ++i) {
        EXPECT_EQ(loaded.KeyAt(i), profiles.At(i)->Name);
        EXPECT_EQ(Stored(*loaded.At(i)), Stored(*profiles.At(i)));
    }
    EXPECT_EQ(LoadLog(), QStringList());
}

TEST_F(ProfileFileHandlerTest, ValuesAreWrittenByTheirType)
{
    XmlDocument doc;
    XmlNode root = doc.CreateRoot("values");
    // The words of the chart types and line styles are those of the view file.
    const std::vector<std::tuple<const char*, ProfileFileHandler::Value, const char*>> rows = {
        { "marker", true, "true" },
        { "marker", false, "false" },
        { "level", qint16(-5), "-5" },
        { "color", qint32(16744448), "16744448" },
        { "gallery", qint32(2), "bar" },
        { "gallery", qint32(4), "" },
        { "gallery", qint16(2), "2" },
        { "line-style", qint32(1), "dash" },
        { "line-style", qint32(-1), "none" },
        { "line-style", qint32(7), "solid" },
        { "width", 1.0f / 3, "0.33333334" },
        { "width", -1.0 / 3, "-0.3333333333333333" },
        { "name", QString("a<b"), "a<b" },
        { "name", QString(), "" },
    };
    for (const auto& [name, value, text] : rows) {
        const XmlNode node = ProfileFileHandler::AddValueNode(root, name, value);
        EXPECT_EQ(node.Tag(), name);
        EXPECT_EQ(node.Content(), text) << name << " " << text;
        EXPECT_FALSE(node.Raw().first_child().empty()) << name << " " << text << ": every value has a text";
    }
    EXPECT_TRUE(ProfileFileHandler::AddValueNode(root, "channels").Raw().first_child().empty()) << "no value, no text";
}

TEST_F(ProfileFileHandlerTest, EachElementIsReadAsItsTextSaysOrByItsDefault)
{
    const auto look = [](const QString& xml) {
        return "<channels><channel><series-properties>" + xml + "</series-properties></channel></channels>";
    };
    const std::string plain = "|0|0|graph 1 0 0 1 0"; // a new profile
    const std::vector<std::pair<QString, std::string>> rows = {
        { "", plain },
        { "<graph-properties/><channels><channel/><channel><series-properties/></channel></channels>",
            "|0|0|graph 0 0 0 1 1|| 0 0 0 0 0" },
        { "<name>A</name><datasource>12</datasource><entrylevel>3x</entrylevel>", "A|12|3|graph 1 0 0 1 0" },
        // Names read as they will read after the next save: line ends as line feeds, blanks alone as nothing.
        { "<name>a&#13;b&#13;&#10;</name>", "a\nb\n" + plain },
        { "<name>&#32;&#9;</name>", plain },
        { "<datasource> 2.5 </datasource>", "|2|0|graph 1 0 0 1 0" }, // whole numbers, half to even
        { "<datasource>3.5</datasource>", "|4|0|graph 1 0 0 1 0" },
        { "<datasource>12abc</datasource>", plain }, // no number: left as it was
        { "<datasource>99999999999</datasource>", plain },
        { "<graph-properties><gallery>LINES</gallery><legend>true</legend><display-3d>TRUE</display-3d>"
          "<grid1>yes</grid1><grid2></grid2></graph-properties>",
            "|0|0|graph 1 1 0 0 0" },
        // Chart types are compared in lower case, truth only exactly.
        { look("<gallery>BAR</gallery><marker>TRUE</marker>"), plain + "| 2 0 0 0 0" },
        { look("<gallery>Step</gallery><marker>true</marker><line-style>dash</line-style>"), plain + "| 8 0 0 0 1" },
        { look("<gallery>4</gallery><line-style>-1</line-style><color>255abc</color><line-width>2.9</line-width>"),
            plain + "| 0 255 2 -1 0" },
    };
    for (const auto& [body, stored] : rows) {
        profiles.Clear();
        EXPECT_EQ(handler.LoadFromBytes(("<profiles><profile>" + body + "</profile></profiles>").toUtf8()), 0);
        ASSERT_EQ(profiles.Count(), 1) << body.toStdString();
        EXPECT_EQ(Stored(*profiles.At(0)), stored) << body.toStdString();
    }
}

TEST_F(ProfileFileHandlerTest, ASecondProfileOfOneNameIsDroppedAndLogged)
{
    profiles.Add(MakeProfile("B", 5));
    EXPECT_EQ(handler.LoadFromBytes("<profiles><profile><name>A</name><datasource>1</datasource></profile>"
                                    "<profile><name>A</name><datasource>2</datasource></profile>"
                                    "<profile><name>B</name><datasource>3</datasource></profile>"
                                    "<profile><name>C</name></profile></profiles>"),
        0);
    QStringList kept;
    for (const ProfilePtr& profile : profiles)
        kept << profile->Name + QString::number(profile->DataSourceID);
    EXPECT_EQ(kept, QStringList({ "B5", "A1", "C0" }));
    ASSERT_EQ(LoadLog().size(), 2) << log.Dump();
    EXPECT_TRUE(LoadLog()[0].startsWith("duplicate profile - A profile named \"A\" exists already")) << log.Dump();
}

TEST_F(ProfileFileHandlerTest, OtherFilesAddNothingAndAreLoggedUnlessMissing)
{
    const std::vector<std::pair<const char*, QByteArray>> rows = {
        { "missing", {} },
        { "empty", "" },
        { "damaged", "<profiles><profile><name>X</name><channels><chan" },
        { "foreign", "<sorano-measuring><profile><name>X</name></profile></sorano-measuring>" },
        { "binary", QByteArray("\x00\xff\xfe<\x01", 5) },
    };
    profiles.Add(MakeProfile("alt"));
    for (const auto& [what, content] : rows) {
        const bool missing = QByteArray(what) == "missing";
        if (!missing)
            Write(Path(what), content);
        const qsizetype lines = LoadLog().size();
        EXPECT_EQ(handler.Load(Path(what)), 0);
        EXPECT_EQ(profiles.Count(), 1) << what;
        EXPECT_EQ(LoadLog().size() - lines, missing ? 0 : 1) << what << "\n" << log.Dump();
    }

    ProfileFileHandler unset;
    EXPECT_EQ(unset.Load(Path("empty")), -1);
    EXPECT_EQ(unset.Save(Path("new.dat")), -1);
    EXPECT_EQ(handler.Save(QString()), -2);
    EXPECT_FALSE(QFile::exists(Path("new.dat")));
}

TEST_F(ProfileFileHandlerTest, FailedSaveLeavesTheOldFileWholeAndIsLogged)
{
    const QString path = Path("Profiles.dat");
    Write(path, "old");
    ProfilePtr big = MakeProfile("gross");
    for (qint32 i = 1; i <= 2000; ++i)
        big->SetChannelName(i, QString("Kanal %1").arg(i));
    profiles.Add(big);

    // A file size limit makes every write past 4 KB fail, as a full disk would.
    rlimit saved {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &saved), 0);
    const auto previousHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit small = saved;
    small.rlim_cur = 4096;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    const qint32 status = handler.Save(path);
    ::setrlimit(RLIMIT_FSIZE, &saved);
    std::signal(SIGXFSZ, previousHandler);

    EXPECT_EQ(status, ProfileFileHandler::WriteFailed);
    EXPECT_EQ(Read(path), "old");
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList { "Profiles.dat" });
    EXPECT_EQ(log.From("ProfileFileHandler.Save").size(), 1) << log.Dump();
}

} // namespace
