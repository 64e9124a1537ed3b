// SPDX-License-Identifier: GPL-3.0-or-later
// The view file: writing, lenient reading, the enumeration words and old channel keys.
#include "SoranoFileHandler.h"
#include "Calendar.h"
#include "Globals.h"
#include "QtPrinters.h"
#include "Settings.h"
#include "TempSettings.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>

using namespace SoranoFileHandler;

namespace {

constexpr char Example[] = R"(<sorano-measuring>
  <name>Hauptzaehler</name> <remark></remark> <autoscale>true</autoscale> <intervall-unit>n</intervall-unit>
  <intervall-count>15</intervall-count> <showstatistics>true</showstatistics> <viewmode>chart</viewmode>
  <zoomhistory></zoomhistory> <startdate>2009-02-18 00:00:00</startdate> <enddate>2009-02-19 00:00:00</enddate>
  <annotation> <visible>false</visible> <position></position> </annotation> <modules> <module>3</module> </modules>
  <graph-properties> <gallery>lines</gallery> <legend>false</legend> <display-3d>false</display-3d>
    <grid1>true</grid1> <grid2>false</grid2> <title>Lastgang</title> </graph-properties>
  <customer-address> <name></name> <contact></contact> <street></street> <zipcity></zipcity> <remark></remark>
  </customer-address>
  <curves> <curve> <name>Wirkleistung</name> <unit>kW</unit> <visible>true</visible> <y-axis>0</y-axis>
    <channels> <channel>3$4711#002</channel> </channels>
    <series-properties> <gallery>lines</gallery> <color>255</color> <line-width>1</line-width>
      <line-style>solid</line-style> <marker>false</marker> </series-properties>
    <statistics> <statistic> <id>max</id> <visible>true</visible> </statistic> </statistics>
    <cursors> <cursor> <datetime>2009-02-18 11:15:00</datetime> <customtext></customtext> <position></position>
      <visible>true</visible> </cursor> </cursors>
  </curve> </curves>
</sorano-measuring>)";

// The document without declaration and without whitespace between tags.
QString Compact(const QByteArray& xml)
{
    QString text = QString::fromUtf8(xml);
    text.remove(QRegularExpression(R"(^<\?xml[^>]*\?>)"));
    return text.replace(QRegularExpression(R"(>\s+<)"), "><").trimmed();
}

MeasuringFile ExampleFile()
{
    MeasuringFile file;
    file.name = "Hauptzaehler";
    file.intervalUnit = "n";
    file.intervalCount = 15;
    file.startDate = Calendar::FromParts(2009, 2, 18);
    file.endDate = Calendar::FromParts(2009, 2, 19);
    file.modules = { "3" };
    file.graph.Title = "Lastgang";
    file.hasCurves = true;
    file.curves = { { "Wirkleistung", "kW", true, 0, { "3$4711#002" }, MeasuringFile::Series { 1, 255, 1, 0, false },
        { { "max", true } }, { { Calendar::FromParts(2009, 2, 18, 11, 15), "", "", true } } } };
    return file;
}

// Reads the document over what a view already holds.
MeasuringFile Read(const QString& xml, MeasuringFile file = {})
{
    EXPECT_TRUE(LoadFromBytes(xml.toUtf8(), file)) << xml.toStdString();
    return file;
}

bool IsNow(double date)
{
    return std::abs(date - Calendar::Now()) < 5.0 / 86400;
}

} // namespace

TEST(SoranoFileHandlerTest, ExampleFileIsWrittenAndReadBothWays)
{
    EXPECT_EQ(Compact(SaveToBytes(ExampleFile())), Compact(Example));
    EXPECT_TRUE(Read(Example) == ExampleFile()) << SaveToBytes(Read(Example)).toStdString();
}

TEST(SoranoFileHandlerTest, MissingGroupsKeepTheViewsValuesAndMissingElementsTakeTheirDefaults)
{
    // What the view holds before reading: none of it is a reading default.
    MeasuringFile view;
    view.name = "Neu";
    view.remark = "Notiz";
    view.intervalUnit = "h";
    view.intervalCount = 2;
    view.annotationVisible = true;
    view.annotationPosition = "1;2;3;4";
    view.graph.Legend = true;
    view.graph.ShowYGrid1 = false;
    view.graph.Title = "Titel";
    view.address.Name = "Stadtwerke";

    // An empty document keeps all of it, the note box and the chart type (not bars) among it.
    MeasuringFile empty = Read("<sorano-measuring/>", view);
    EXPECT_TRUE(empty.autoScale && empty.showStatistics && !empty.hasCurves);
    EXPECT_EQ(empty.viewMode, 1);
    EXPECT_TRUE(IsNow(empty.startDate) && IsNow(empty.endDate));
    EXPECT_TRUE(empty.unreadable.isEmpty());
    empty.startDate = view.startDate;
    empty.endDate = view.endDate;
    empty.autoScale = view.autoScale;
    empty.showStatistics = view.showStatistics;
    empty.viewMode = view.viewMode;
    EXPECT_TRUE(empty == view) << SaveToBytes(empty).toStdString();

    // Present but empty groups: each element takes its reading default, or keeps the view's.
    const MeasuringFile groups
        = Read("<sorano-measuring><annotation/><graph-properties/><customer-address/></sorano-measuring>", view);
    EXPECT_FALSE(groups.annotationVisible);
    EXPECT_EQ(groups.annotationPosition, "1;2;3;4");
    EXPECT_EQ(groups.graph.Gallery, 2) << "a graph group without gallery shows bars";
    EXPECT_TRUE(!groups.graph.Legend && groups.graph.ShowYGrid1 && !groups.graph.ShowYGrid2 && !groups.graph.View3D);
    EXPECT_TRUE(groups.graph.Title == "Titel" && groups.address.Name == "Stadtwerke");

    const MeasuringFile sparse = Read("<sorano-measuring><curves><curve><statistics><statistic><id>9</id>"
                                      "</statistic></statistics><cursors><cursor><datetime>2020-01-02</datetime>"
                                      "</cursor></cursors></curve><curve><series-properties/></curve></curves>"
                                      "</sorano-measuring>");
    ASSERT_EQ(sparse.curves.size(), 2);
    const MeasuringFile::Curve& curve = sparse.curves[0];
    EXPECT_TRUE(curve.visible && curve.channels.isEmpty());
    EXPECT_FALSE(curve.name || curve.unit || curve.yAxis) << "the curve keeps its channel's name, unit and axis";
    EXPECT_FALSE(curve.series) << "no series group: the curve keeps its palette colour and look";
    EXPECT_TRUE(curve.statistics == QList<MeasuringFile::Statistic>({ { "9", false } }));
    ASSERT_EQ(curve.cursors.size(), 1);
    EXPECT_TRUE(curve.cursors[0].visible);
    ASSERT_TRUE(sparse.curves[1].series);
    EXPECT_TRUE(*sparse.curves[1].series == (MeasuringFile::Series { 0, std::nullopt, std::nullopt, 0, false }))
        << "gallery, style and marker take their defaults; colour and width have none";
}

// The words a save writes come back through the round trips; these are the readings of other
// words, in any case, unknown ones taking their defaults; then what else reading forgives.
TEST(SoranoFileHandlerTest, LenientReading)
{
    EXPECT_EQ(GalleryFromWord("STEP"), 8);
    EXPECT_EQ(LineStyleFromWord("DashDot"), 3);
    EXPECT_EQ(GalleryFromWord("area"), 0);
    EXPECT_EQ(LineStyleWord(7), "solid");
    EXPECT_EQ(Read("<sorano-measuring><viewmode>table</viewmode></sorano-measuring>").viewMode, 1);
    EXPECT_EQ(Read("<sorano-measuring><viewmode>Grid</viewmode></sorano-measuring>").viewMode, 2);
    MeasuringFile file;
    file.graph.Gallery = 0;
    EXPECT_TRUE(Compact(SaveToBytes(file)).contains("<graph-properties><gallery></gallery><legend>"));

    file = Read("<sorano-measuring><autoscale>TRUE</autoscale><startdate>gestern</startdate>"
                "<enddate>2020-01-01</enddate><intervall-unit>q</intervall-unit>"
                "<intervall-count>12abc</intervall-count><curves><curve><channels><channel>3$1#001</channel>"
                "<channel>3$1#002</channel></channels><statistics><statistic><id>unbekannt</id><visible>true</visible>"
                "</statistic></statistics><cursors><cursor><datetime></datetime></cursor><cursor><datetime>31.02.2020"
                "</datetime></cursor><cursor><datetime>2020-02-29 23:59:58</datetime><customtext>A</customtext>"
                "</cursor></cursors></curve></curves></sorano-measuring>");
    EXPECT_FALSE(file.autoScale);
    EXPECT_TRUE(IsNow(file.startDate));
    EXPECT_EQ(file.intervalCount, 12);
    ASSERT_EQ(file.curves.size(), 1);
    EXPECT_EQ(file.curves[0].channels, QStringList({ "3$1#001", "3$1#002" })) << "a sum curve keeps every channel";
    EXPECT_TRUE(
        file.unreadable == QList<MeasuringFile::Unreadable>({ { "intervall-unit", "q" }, { "startdate", "gestern" } }));
    EXPECT_TRUE(file.curves[0].statistics == QList<MeasuringFile::Statistic>({ { "unbekannt", true } }));
    ASSERT_EQ(file.curves[0].cursors.size(), 1);
    EXPECT_EQ(file.curves[0].cursors[0].customText, "A");
    EXPECT_EQ(file.curves[0].cursors[0].dateTime, Calendar::FromParts(2020, 2, 29, 23, 59, 58));
}

TEST(SoranoFileHandlerTest, SaveRoundTripFailuresAndOtherFiles)
{
    MeasuringFile file = ExampleFile();
    file.name = "Halle Süd <Nord> & \"Ost\"";
    file.autoScale = false;
    file.intervalCount = -4;
    file.viewMode = 2;
    file.zoomHistory = "45000.25\t45001.5|45000\t45002|";
    file.startDate = Calendar::FromParts(812, 12, 25, 6);
    file.endDate = Calendar::FromParts(2024, 12, 31, 23, 59, 59);
    file.annotationVisible = true;
    file.annotationPosition = "10;20";
    file.modules = { "3", "12" };
    file.graph = { .View3D = true, .Legend = true, .ShowYGrid1 = false, .ShowYGrid2 = true, .Title = {}, .Gallery = 8 };
    file.address.FirstName = "Frau Bauer";
    file.address.Name = "Stadtwerke";
    file.address.Street = "Ringstr. 4";
    file.address.Place = "12345 Neustadt";
    file.address.Memo = "Zeile 1\nZeile 2";
    file.curves.append({ "Blindleistung", "kvar", false, 1, { "12$L1#5", "12$L1#6" },
        MeasuringFile::Series { 2, 0xC08040, 3, -1, true }, { { "1", false }, { "6", true } },
        { file.curves[0].cursors[0], { Calendar::FromParts(2009, 2, 18, 23, 59, 59), "Spitze", "200;40", false } } });

    QTemporaryDir dir;
    const QString path = dir.filePath("view.sor");
    ASSERT_EQ(Save(path, file), 0);
    MeasuringFile back;
    bool isViewFile = false;
    EXPECT_EQ(Load(path, back, &isViewFile), 0);
    EXPECT_TRUE(isViewFile);
    EXPECT_TRUE(back == file) << SaveToBytes(back).toStdString();

    EXPECT_EQ(Save(QString(), file), -2);
    EXPECT_LT(Save(dir.path(), file), 0) << "a folder is not overwritten";
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList { "view.sor" });

    // Other files leave the struct alone, and loading still succeeds.
    QFile foreign(dir.filePath("foreign.sor"));
    ASSERT_TRUE(foreign.open(QIODevice::WriteOnly) && foreign.write("<other><name>X</name></other>") > 0);
    foreign.close();
    for (const QString& other : { foreign.fileName(), dir.filePath("missing.sor") }) {
        MeasuringFile same = file;
        EXPECT_EQ(Load(other, same, &isViewFile), 0);
        EXPECT_FALSE(isViewFile) << other.toStdString();
        EXPECT_TRUE(same == file) << other.toStdString();
    }
}

TEST(SoranoFileHandlerTest, OldChannelKeysAreRewrittenOnlyInTheirEdition)
{
    TempSettings roots;
    roots.SetMachine(Settings::KeyQuandelKeys, "Logger1", "4711");
    int newIds = 0;
    const auto newId = [&newIds] { return QString::number(100 + ++newIds); };
    const QString whoAmI = g_sWhoAmI;

    g_sWhoAmI = "talven";
    EXPECT_EQ(ConvertOldChannelKey("3$Logger1007", newId), "3$4711#7");
    EXPECT_EQ(newIds, 0);
    EXPECT_EQ(ConvertOldChannelKey("3$Logger2012", newId), "3$101#12");
    EXPECT_EQ(ConvertOldChannelKey("3$4711#002", newId), "3$4711#002");
    g_sWhoAmI = "sorano";
    EXPECT_EQ(ConvertOldChannelKey("3$Logger1007", newId), "3$Logger1007");
    g_sWhoAmI = whoAmI;
}
