// SPDX-License-Identifier: GPL-3.0-or-later
// The example views exported without a window carry the ticks and labels that the window shows
// in the same size.
#include "ChartAdapter.h"
#include "CommandLine.h"
#include "DemoFixture.h"
#include "Globals.h"
#include "MatrixScriptEngine.h"
#include "Measuring.h"
#include "MeasuringExport.h"
#include "Project.h"
#include "TempSettings.h"
#include "frm_GraphicView.h"

#include <QCoreApplication>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

namespace {

// Columns crossed by a vertical grid line: grey (neither white nor black) over a good part of
// the height, which no curve and no horizontal line gives.
std::vector<int> GridColumns(const QImage& image)
{
    std::vector<int> columns;
    for (int x = 0; x < image.width(); ++x) {
        int grey = 0;
        for (int y = 0; y < image.height(); ++y) {
            const QColor pixel = image.pixelColor(x, y);
            grey += pixel.red() == pixel.green() && pixel.green() == pixel.blue() && pixel.red() > 0
                && pixel.red() < 255;
        }
        if (grey > image.height() / 4)
            columns.push_back(x);
    }
    return columns;
}

// The first and last columns of each text in a strip: columns with a dark pixel, joined where
// they are only a few columns apart (letters and words of one label). Text is smoothed differently on
// screen and in pictures, so the spans are compared, not the pixels.
std::vector<QPair<int, int>> TextSpans(const QImage& strip)
{
    std::vector<QPair<int, int>> spans;
    for (int x = 0; x < strip.width(); ++x) {
        bool ink = false;
        for (int y = 0; y < strip.height() && !ink; ++y)
            ink = qGray(strip.pixel(x, y)) < 128;
        if (!ink)
            continue;
        if (!spans.empty() && x - spans.back().second <= 12)
            spans.back().second = x;
        else
            spans.emplace_back(x, x);
    }
    return spans;
}

using HeadlessTicksTest = DemoFixture;

TEST_F(HeadlessTicksTest, ExportedChartsHaveTheTicksOfTheWindowInTheirSize)
{
    for (const QString name : { "Hauptzaehler.sor", "Gebaeudevergleich.sor", "Rechenzentrum-Tag.sor" }) {
        SCOPED_TRACE(name.toStdString());
        const QString view = Examples + '/' + name;
        const QString png = out.filePath(name + ".png");
        Project project;
        project.LoadDataModules();
        QString error;
        ASSERT_EQ(RunExport(ParseCommandLine({ "--export-png", png, view }).job, project, error), ExitCode::Ok)
            << error.toStdString();
        const QImage headless = QImage(png).convertToFormat(QImage::Format_RGB32);
        ASSERT_EQ(headless.size(), MeasuringExport::OffscreenChartSize);

        // The same view in a window, sized so that its chart has the picture's size.
        Measuring window(project);
        ASSERT_EQ(window.Init(), 0);
        ASSERT_EQ(window.OpenFile(view, true), 0);
        window.SetShowStatistics(false);
        frm_GraphicView& frame = *window.Window();
        ChartAdapter& chart = *window.Chart();
        frame.show();
        for (int turn = 0; turn < 3 && chart.size() != headless.size(); ++turn) {
            frame.resize(frame.size() + headless.size() - chart.size());
            QCoreApplication::processEvents();
        }
        ASSERT_EQ(chart.size(), headless.size());
        const QImage shown = chart.grab().toImage().convertToFormat(QImage::Format_RGB32);

        // Grid lines at the same columns, and those are the window's ticks.
        const std::vector<int> columns = GridColumns(shown);
        EXPECT_EQ(GridColumns(headless), columns);
        std::vector<int> ticks;
        for (const double tick : chart.AxisTickValues(ChartAxis::X))
            ticks.push_back(qRound(chart.PointToPixel(tick, 0, ChartAxis::Y1).x()));
        EXPECT_EQ(ticks, columns);
        EXPECT_GE(ticks.size(), 4u);
        // At round times, and labelled alike: the texts under the plot area lie at the same places.
        for (const QString& label : chart.AxisTickLabels(ChartAxis::X))
            EXPECT_TRUE(label.endsWith(":00")) << label.toStdString();
        const QRect labels(
            0, chart.PlotArea().bottom() + 2, shown.width(), shown.height() - chart.PlotArea().bottom() - 2);
        const std::vector<QPair<int, int>> texts = TextSpans(shown.copy(labels));
        const std::vector<QPair<int, int>> exported = TextSpans(headless.copy(labels));
        ASSERT_EQ(exported.size(), texts.size());
        EXPECT_EQ(texts.size(), ticks.size());
        for (size_t i = 0; i < texts.size(); ++i)
            EXPECT_TRUE(std::abs(exported[i].first - texts[i].first) <= 1
                && std::abs(exported[i].second - texts[i].second) <= 1)
                << "label " << i << " from " << exported[i].first << " to " << exported[i].second
                << ", in the window from " << texts[i].first << " to " << texts[i].second;
    }
}

} // namespace
