// SPDX-License-Identifier: GPL-3.0-or-later
// A view opened from its file: what the file lacks keeps the new view's values, sum curves,
// the first window, the selected curve, and the statistic tree's check boxes.
#include "ChannelTree.h"
#include "CurveColors.h"
#include "MeasuringFixture.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTreeWidget>

namespace {

using ViewFileTest = measuring_fixture::MeasuringFixture;
using measuring_fixture::D;

const QString KeySettings = QStringLiteral("Software\\HARVOLD\\Sorano\\Settings");

class ViewFile : public ViewFileTest
{
protected:
    // Writes a view file on module 3 with the given curves and opens it in a fresh view.
    Measuring& OpenXml(const QString& curves,
        const QString& window = "<startdate>2009-02-10 00:00:00</startdate>"
                                "<enddate>2009-02-11 00:00:00</enddate>",
        const QString& extra = QString())
    {
        Open(900);
        const QString path = dir.filePath("view.sor");
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(("<sorano-measuring><name>Halle</name><intervall-unit>n</intervall-unit>"
                    "<intervall-count>15</intervall-count>"
            + window + "<modules><module>3</module></modules>" + extra + "<curves>" + curves
            + "</curves></sorano-measuring>")
                       .toUtf8());
        file.close();
        opened = std::make_unique<Measuring>(host);
        EXPECT_EQ(opened->Init(), 0);
        opened->Window()->resize(1000, 600);
        EXPECT_EQ(opened->OpenFile(path, true), 0);
        return *opened;
    }
    void TearDown() override
    {
        opened.reset();
        ViewFileTest::TearDown();
    }
    static QString Curve(const QString& inner) { return "<curve>" + inner + "</curve>"; }
    static QString Channels(std::initializer_list<const char*> keys)
    {
        return "<channels><channel>" + QStringList(keys.begin(), keys.end()).join("</channel><channel>")
            + "</channel></channels>";
    }
    QTreeWidgetItem* Node(const QString& key) { return ChannelTree::FindItem(opened->Window()->trv_Statistics(), key); }

    QTemporaryDir dir;
    std::unique_ptr<Measuring> opened;
};

TEST_F(ViewFile, MissingGroupsKeepTheNewViewsLookAndSumCurvesKeepEveryChannel)
{
    Measuring& view
        = OpenXml(Curve(Channels({ "3$L#1" })) + Curve(Channels({ "3$L#3", "3$L#1" }) + "<name>Summe</name>")
            + Curve(Channels({ "3$L#2" }) + "<series-properties><line-style>dash</line-style></series-properties>"));
    ASSERT_EQ(view.Curves().size(), 3u);
    EXPECT_EQ(view.Graph().Gallery, 1) << "no chart group: lines, as a new view draws them";
    const auto& curves = view.Curves();
    for (size_t i = 0; i < curves.size(); ++i)
        EXPECT_EQ(curves[i]->Properties().Color, CurveColors::PaletteColor(int(i)))
            << "curve " << i << " keeps the palette colour it was given";
    EXPECT_EQ(curves[2]->Properties().LineStyle, 1);
    EXPECT_EQ(curves[0]->Name(), "Power") << "no name element: the channel's name";

    const ::Curve& sum = *curves[1];
    ASSERT_EQ(sum.Channels().size(), 2u);
    EXPECT_EQ(sum.Name(), "Summe");
    ASSERT_TRUE(sum.Result());
    EXPECT_EQ(sum.Result()->DataBlock()->At(40, 1), 10.0 + 100.0) << "10:00 is hour 10, plus the reserve feed";
}

TEST_F(ViewFile, AnEmptyStartSettingOpensTheFirstDayAndTheFirstCurveIsCurrent)
{
    // A file without a window of its own: dates at day 0.
    const QString noWindow = "<startdate>1899-12-30 00:00:00</startdate><enddate>1899-12-30 00:00:00</enddate>";
    Measuring& first = OpenXml(Curve(Channels({ "3$L#1" })), noWindow);
    EXPECT_EQ(first.StartDate(), D(2009, 2, 1)) << "an empty setting opens the first day, not all of it";
    EXPECT_EQ(first.EndDate(), D(2009, 2, 2));
    EXPECT_EQ(first.CurrentCurve(), first.Curves().front().get()) << "the selected node counts as clicked";

    roots.SetUser(KeySettings, "OnNewMeasuring", "2");
    Measuring& whole = OpenXml(Curve(Channels({ "3$L#1" })), noWindow);
    EXPECT_EQ(whole.StartDate(), D(2009, 2, 1));
    EXPECT_EQ(whole.EndDate(), D(2009, 3, 1)) << "2 shows the whole measuring";
}

TEST_F(ViewFile, TreeCheckBoxesHideCurvesAndLinesAndAreSaved)
{
    Measuring& view = OpenXml(Curve(
        Channels({ "3$L#1" }) + "<statistics><statistic><id>1</id><visible>true</visible></statistic></statistics>"));
    ::Curve& curve = *view.Curves().front();
    ChartAdapter& chart = *view.Chart();
    const Statistic& maximum = *curve.FindStatistic("1");
    ASSERT_GE(maximum.ConstantLine(), 0);
    EXPECT_FALSE(chart.ConstantLineHidden(maximum.ConstantLine()));

    QTreeWidgetItem* line = Node("S_3$L#1_1");
    ASSERT_TRUE(line);
    line->setCheckState(0, Qt::Unchecked);
    EXPECT_FALSE(maximum.Visible());
    EXPECT_TRUE(chart.ConstantLineHidden(maximum.ConstantLine()));
    EXPECT_TRUE(view.Changed());

    QTreeWidgetItem* node = Node("S_3$L#1");
    ASSERT_TRUE(node);
    node->setCheckState(0, Qt::Unchecked);
    EXPECT_FALSE(curve.Visible());
    EXPECT_FALSE(chart.SeriesVisible(curve.SeriesID()));

    view.Refresh(true);
    EXPECT_EQ(Node("S_3$L#1")->checkState(0), Qt::Unchecked) << "a refresh keeps what the user chose";
    EXPECT_FALSE(chart.SeriesVisible(curve.SeriesID()));
    EXPECT_FALSE(view.ToFile().curves[0].visible || view.ToFile().curves[0].statistics[0].visible);

    node->setCheckState(0, Qt::Checked);
    EXPECT_TRUE(curve.Visible() && chart.SeriesVisible(curve.SeriesID()));

    // A hidden cursor goes at the next refresh; the one behind it keeps what the user chose,
    // though its node is the one the first had.
    curve.SetCursor(10, &chart, &chart.Annotations(), 0);
    curve.SetCursor(60, &chart, &chart.Annotations(), 0);
    ASSERT_EQ(curve.Cursors().size(), 2u);
    Node("S_3$L#1_HP1")->setCheckState(0, Qt::Unchecked);
    EXPECT_FALSE(curve.Cursors()[0]->CursorStatistic().Visible());
    view.Refresh(true);
    ASSERT_EQ(curve.Cursors().size(), 1u);
    EXPECT_EQ(curve.Cursors()[0]->Index(), 60);
    EXPECT_TRUE(curve.Cursors()[0]->CursorStatistic().Visible()) << "the tree's own update is no click";
    EXPECT_EQ(Node("S_3$L#1_HP1")->checkState(0), Qt::Checked);
}

TEST_F(ViewFileTest, TheTimeBarsDoubleClickOpensThePropertiesAndOnlyAnAcceptedEditMarksTheViewChanged)
{
    Open(900);
    qint32 answer = 0;
    Measuring::SetDialogs({ [&](Measuring&) { return answer; }, nullptr, nullptr, nullptr });
    measuring->SetChanged(false);
    emit Bar().DblClick(0);
    EXPECT_FALSE(measuring->Changed()) << "cancelled";
    answer = 1;
    emit Bar().DblClick(1);
    EXPECT_TRUE(measuring->Changed());
    EXPECT_EQ(measuring->EditCurveProperties(), 0) << "no current curve";
    Measuring::SetDialogs({});
}

} // namespace
