// SPDX-License-Identifier: GPL-3.0-or-later
// The view window: layout of pane, splitter and view, the splitter drag, in-place editing.
#include "Calendar.h"
#include "ChartAdapter.h"
#include "Curve.h"
#include "MatrixScriptEngine.h"
#include "QtPrinters.h"
#include "TimeValueTransformator.h"
#include "ctl_DynamicGrid.h"
#include "ctl_NavBar.h"
#include "ctl_VertNavBar.h"
#include "frm_GraphicView.h"

#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QTableView>
#include <QTest>
#include <QToolButton>
#include <QTreeWidget>

#include <cmath>
#include <memory>

#include <gtest/gtest.h>

namespace {

class GraphicViewTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        view.resize(1005, 600);
        view.show();
        QCoreApplication::processEvents();
    }

    frm_GraphicView view;
};

TEST_F(GraphicViewTest, PaneAndViewShareTheWidth)
{
    EXPECT_EQ(view.trv_Statistics()->width(), 300);
    EXPECT_EQ(view.pic_Splitter()->x(), 300);
    EXPECT_EQ(view.pic_Chart()->geometry(), QRect(305, 0, 700, 600));
    EXPECT_EQ(view.grid_View()->geometry(), view.pic_Chart()->geometry());
    EXPECT_FALSE(view.nav_Vertical2()->isVisible()) << "the second bar follows the second axis";

    view.chart_View()->SetAxisVisible(ChartAxis::Y2, true);
    view.AlignControls();
    EXPECT_TRUE(view.nav_Vertical2()->isVisible());
    EXPECT_EQ(view.chart_View()->geometry().right(), view.nav_Vertical2()->x() - 1);

    QSignalSpy shown(&view, &frm_GraphicView::ShowStatistics);
    QSignalSpy closed(&view, &frm_GraphicView::CloseStatistics);
    view.HideStatisticsButton()->click();
    EXPECT_EQ(closed.count(), 1);
    view.SetStatisticVisible(false);
    EXPECT_EQ(view.pic_Chart()->geometry(), QRect(0, 0, 1005, 600));
    EXPECT_FALSE(view.pic_Splitter()->isVisible());
    view.ShowStatisticsButton()->click();
    EXPECT_EQ(shown.count(), 1);
}

TEST_F(GraphicViewTest, ViewModeSwitchesChartAndTable)
{
    view.SetViewMode(frm_GraphicView::GridMode);
    EXPECT_TRUE(view.grid_View()->isVisible());
    EXPECT_FALSE(view.pic_Chart()->isVisible());
    view.SetViewMode(3);
    EXPECT_EQ(view.ViewMode(), 3);
    EXPECT_TRUE(view.grid_View()->isVisible()) << "an unknown mode changes nothing";
    view.SetViewMode(frm_GraphicView::ChartMode);
    EXPECT_TRUE(view.pic_Chart()->isVisible());
    EXPECT_FALSE(view.grid_View()->isVisible());
}

TEST_F(GraphicViewTest, SplitterDragMovesTheShareWithinBounds)
{
    QWidget* splitter = view.pic_Splitter();
    QTest::mousePress(splitter, Qt::LeftButton, {}, QPoint(2, 100));
    EXPECT_TRUE(view.Dragging());
    EXPECT_FALSE(view.pic_Chart()->isVisible()) << "the chart hides during the drag";
    QMouseEvent move(QEvent::MouseMove, QPointF(102, 100), splitter->mapToGlobal(QPointF(102, 100)), Qt::NoButton,
        Qt::LeftButton, {});
    QCoreApplication::sendEvent(splitter, &move);
    EXPECT_DOUBLE_EQ(view.LeftShare(), 400.0 / 1000.0);
    EXPECT_DOUBLE_EQ(view.LeftShare() + view.RightShare(), 1.0);
    EXPECT_EQ(view.trv_Statistics()->width(), 400);

    QMouseEvent far(QEvent::MouseMove, QPointF(900, 100), splitter->mapToGlobal(QPointF(900, 100)), Qt::NoButton,
        Qt::LeftButton, {});
    QCoreApplication::sendEvent(splitter, &far);
    EXPECT_DOUBLE_EQ(view.LeftShare(), 0.4) << "a share of 1 or more is not taken";
    QTest::mouseRelease(splitter, Qt::LeftButton, {}, QPoint(2, 100));
    EXPECT_FALSE(view.Dragging());
    EXPECT_TRUE(view.pic_Chart()->isVisible());
}

TEST_F(GraphicViewTest, InPlaceEditorEndsOnEnterAndEscape)
{
    QSignalSpy finished(&view, &frm_GraphicView::EditFinished);
    view.StartTextEdit(10, 0, 300, 20, 0x00FFFFFF, "Title", "-1001", nullptr, 2);
    ASSERT_EQ(finished.count(), 1);
    EXPECT_EQ(finished.takeFirst().at(0).toString(), "") << "nothing was open before";
    EXPECT_TRUE(view.Editing());
    EXPECT_EQ(view.txt_Edit()->x(), view.chart_View()->mapTo(&view, QPoint(10, 0)).x());

    QTest::keyClick(view.txt_Edit(), Qt::Key_End);
    QTest::keyClick(view.txt_Edit(), Qt::Key_Return, Qt::ShiftModifier);
    QTest::keyClicks(view.txt_Edit(), "2");
    EXPECT_TRUE(view.Editing()) << "Shift+Enter breaks the line";
    QTest::keyClick(view.txt_Edit(), Qt::Key_Return);
    ASSERT_EQ(finished.count(), 1);
    EXPECT_EQ(finished.first(), QList<QVariant>({ "-1001", "Title\n2", false }));
    EXPECT_FALSE(view.Editing());

    view.StartTextEdit(0, 0, 100, 20, 0, "note", "-1000", nullptr, 0);
    view.StartTextEdit(0, 0, 100, 20, 0, "C7_1", "C7_1", nullptr, 0);
    EXPECT_EQ(finished.at(2), QList<QVariant>({ "-1000", "note", false })) << "an open edit is not lost";
    QTest::keyClick(view.txt_Edit(), Qt::Key_Escape);
    EXPECT_EQ(finished.last(), QList<QVariant>({ "C7_1", "", true }));
}

TEST_F(GraphicViewTest, CloseAsksTheOwnerUnlessClosedByCode)
{
    int asked = 0;
    view.SetCloseHandler([&] {
        ++asked;
        return false;
    });
    EXPECT_FALSE(view.close());
    EXPECT_EQ(asked, 1);
    view.CloseFromCode();
    EXPECT_FALSE(view.isVisible());
    EXPECT_EQ(asked, 1);
}

// A view as a user sees it: two curves with statistics and cursors, then the same as a table.
TEST_F(GraphicViewTest, PictureOfChartAndTable)
{
    MatrixScriptEngine engine;
    g_cScriptEngine = &engine;
    const double start = Calendar::FromParts(2009, 2, 3);
    TimeValueTransformator grid;
    grid.Init(start, start + 1, "n", 15, true);
    std::vector<std::unique_ptr<Curve>> curves;
    const struct
    {
        const char* name;
        const char* unit;
        qint32 type;
        qint16 axis;
    } channels[] = { { "Main meter", "kW", 3, 0 }, { "Power factor", "cos phi", 3, 1 } };
    for (const auto& c : channels) {
        auto block = MatrixBlock::Create(96, 2);
        for (int i = 0; i < 96; ++i) {
            block->At(i, 0) = start + i / 96.0;
            block->At(i, 1)
                = c.axis == 0 ? 80 + 50 * std::sin((i - 30) / 15.3) + (i % 7) : 0.9 + 0.06 * std::cos(i / 9.0);
        }
        auto matrix = std::make_shared<DataMatrix>();
        matrix->SetModuleAddress(1);
        matrix->SetChannelID(c.name);
        matrix->SetChannelName(c.name);
        matrix->SetUnit(c.unit);
        matrix->SetDataType(c.type);
        matrix->SetDataBlock(block);
        auto curve = std::make_unique<Curve>();
        curve->AddMatrix(matrix);
        curve->SetID(QString::number(curves.size() + 1));
        curve->SetYAxis(c.axis);
        curve->SetFixedAxis(true);
        curve->Properties().Color = CurveColors::PaletteColor(static_cast<int>(curves.size()) * 2);
        for (const char* id : { "1", "2", "3" })
            curve->FindStatistic(id)->SetUsed(true);
        ASSERT_EQ(curve->UpdateData(start, start + 1, grid), 0);
        curves.push_back(std::move(curve));
    }
    ChartAdapter& chart = *view.chart_View();
    chart.SetAxisRange(ChartAxis::X, 1, 96);
    chart.SetAxisRange(ChartAxis::Y1, 0, 150);
    chart.SetAxisRange(ChartAxis::Y2, 0.8, 1.0);
    for (const auto& curve : curves) {
        curve->UpdateChart(&chart, false);
        curve->UpdateStatistic(view.trv_Statistics());
        curve->UpdateGrid(view.grid_View());
    }
    view.nav_Navigate()->SetDateFirst(start - 2);
    view.nav_Navigate()->SetDateLast(start + 3);
    view.nav_Navigate()->SetDateFrom(start);
    view.nav_Navigate()->SetDateTo(start + 1);
    view.AlignControls();
    chart.Replot();
    curves[0]->SetCursor(30, &chart, &chart.Annotations(), 0);
    curves[0]->SetCursor(70, &chart, &chart.Annotations(), 0);
    view.trv_Statistics()->expandAll();
    QCoreApplication::processEvents();

    EXPECT_TRUE(view.nav_Vertical()->isVisible());
    EXPECT_TRUE(view.nav_Vertical2()->isVisible());
    EXPECT_EQ(view.trv_Statistics()->topLevelItemCount(), 2);
    const QString folder = qEnvironmentVariable("SORANO_TEST_PICTURES");
    if (!folder.isEmpty())
        view.grab().save(folder + "/graphic-view-chart.png");

    view.SetViewMode(frm_GraphicView::GridMode);
    QCoreApplication::processEvents();
    EXPECT_EQ(view.grid_View()->View()->model()->columnCount(), 3);
    if (!folder.isEmpty())
        view.grab().save(folder + "/graphic-view-table.png");
    g_cScriptEngine = nullptr;
}

} // namespace
