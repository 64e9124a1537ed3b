// SPDX-License-Identifier: GPL-3.0-or-later
// The view window: pane and splitter, in-place editing, and the chart under mouse and keyboard.
#include "ChartAnnotation.h"
#include "Formatter.h"
#include "MeasuringFixture.h"
#include "ctl_DynamicGrid.h"
#include "ctl_VertNavBar.h"
#include "frm_Transparent.h"

#include <QApplication>
#include <QLabel>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>
#include <QToolTip>
#include <QTreeWidget>

namespace {

using measuring_fixture::D;

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

TEST_F(GraphicViewTest, PaneSplitterShowButtonAndFoldedBarsLeaveTheChartItsRoom)
{
    view.SetStatisticVisible(false);
    EXPECT_EQ(view.pic_Chart()->geometry(), QRect(0, 0, 1005, 600)) << "without the pane the view takes all";
    view.SetStatisticVisible(true);

    // Dragging the splitter moves the share, but never to 1 or more.
    QWidget* splitter = view.pic_Splitter();
    const auto move = [splitter](int x) {
        QMouseEvent event(QEvent::MouseMove, QPointF(x, 100), splitter->mapToGlobal(QPointF(x, 100)), Qt::NoButton,
            Qt::LeftButton, {});
        QCoreApplication::sendEvent(splitter, &event);
    };
    QTest::mousePress(splitter, Qt::LeftButton, {}, QPoint(2, 100));
    move(102);
    EXPECT_EQ(view.trv_Statistics()->width(), 400);
    move(900);
    EXPECT_DOUBLE_EQ(view.LeftShare(), 0.4) << "a share of 1 or more is not taken";
    QTest::mouseRelease(splitter, Qt::LeftButton, {}, QPoint(2, 100));

    // Hidden, the pane leaves its show button, which covers neither bar nor chart.
    ChartAdapter& chart = *view.chart_View();
    chart.SetAxisVisible(ChartAxis::Y2, true);
    view.SetStatisticVisible(false);
    const auto inView = [&](const QWidget* widget) { return QRect(widget->mapTo(&view, QPoint()), widget->size()); };
    ctl_VertNavBar& left = *view.nav_Vertical();
    const QRect show = inView(view.ShowStatisticsButton());
    ASSERT_TRUE(view.ShowStatisticsButton()->isVisible());
    const std::vector<const QWidget*> others = { left.Pin(0), left.Button(0), &chart, view.nav_Navigate() };
    for (const QWidget* other : others)
        EXPECT_FALSE(show.intersects(inView(other))) << other->objectName().toStdString();
    EXPECT_EQ(chart.geometry(), QRect(20, 0, 1005 - 40, 580));

    // Folded, a bar keeps its pin over the chart, which takes the bar's width.
    left.SetMinimized(true);
    EXPECT_EQ(chart.geometry(), QRect(0, 0, 1005 - 20, 580));
    ASSERT_TRUE(left.Pin(1)->isVisible());
    EXPECT_FALSE(show.intersects(inView(left.Pin(1))));
    QTest::mouseClick(left.Pin(1), Qt::LeftButton);
    EXPECT_EQ(chart.geometry(), QRect(20, 0, 1005 - 40, 580));
}

TEST_F(GraphicViewTest, InPlaceEditorEndsOnEnterAndEscape)
{
    QSignalSpy finished(&view, &frm_GraphicView::EditFinished);
    view.StartTextEdit(10, 0, 300, 20, 0x00FFFFFF, "Title", "-1001", nullptr, 2);
    finished.clear();
    QTest::keyClick(view.txt_Edit(), Qt::Key_End);
    QTest::keyClick(view.txt_Edit(), Qt::Key_Return, Qt::ShiftModifier);
    QTest::keyClicks(view.txt_Edit(), "2");
    EXPECT_TRUE(view.Editing()) << "Shift+Enter breaks the line";
    QTest::keyClick(view.txt_Edit(), Qt::Key_Return);
    ASSERT_EQ(finished.count(), 1);
    EXPECT_EQ(finished.first(), QList<QVariant>({ "-1001", "Title\n2", false }));
    EXPECT_FALSE(view.Editing());

    // The title's font at the title strip's height: the editor grows until a line fits, a
    // taller box keeps its height.
    QFont title(QStringLiteral("Arial"), 12);
    title.setBold(true);
    view.StartTextEdit(0, 0, 300, 20, 0x00FFFFFF, "Title", "-1001", &title, 2);
    QPlainTextEdit& edit = *view.txt_Edit();
    const QRect line = edit.cursorRect(QTextCursor(edit.document()));
    EXPECT_TRUE(edit.viewport()->rect().contains(line))
        << "line " << line.top() << " to " << line.bottom() << " in " << edit.viewport()->height();
    view.StartTextEdit(0, 0, 100, 60, 0, "note", "-1000", &title, 0);
    EXPECT_EQ(edit.height(), 60);
    view.StartTextEdit(0, 0, 100, 20, 0, "C7_1", "C7_1", nullptr, 0);
    EXPECT_EQ(finished.at(3), QList<QVariant>({ "-1000", "note", false })) << "an open edit is not lost";
    QTest::keyClick(view.txt_Edit(), Qt::Key_Escape);
    EXPECT_EQ(finished.last(), QList<QVariant>({ "C7_1", "", true }));
}

// A view of one day in 96 points; events go to the plotting widget, the chart's focus proxy.
class ChartInteractionTest : public measuring_fixture::MeasuringFixture
{
protected:
    Curve* OpenDay()
    {
        Open(900);
        Curve* curve = Add("3$L#1");
        Day();
        return curve;
    }
    QWidget* Plot() { return Chart().focusProxy(); }
    void Mouse(QEvent::Type type, Qt::MouseButton button, QPoint at)
    {
        if (type == QEvent::MouseButtonPress || type == QEvent::MouseButtonDblClick)
            held = button;
        QMouseEvent event(type, QPointF(at), QPointF(Plot()->mapToGlobal(at)),
            type == QEvent::MouseMove ? Qt::NoButton : button,
            type == QEvent::MouseButtonRelease ? Qt::MouseButtons() : Qt::MouseButtons(held), Qt::NoModifier);
        QApplication::sendEvent(Plot(), &event);
        if (type == QEvent::MouseButtonRelease)
            held = Qt::NoButton;
    }
    void Drag(QPoint from, QPoint to)
    {
        Mouse(QEvent::MouseButtonPress, Qt::LeftButton, from);
        Mouse(QEvent::MouseMove, Qt::LeftButton, to);
        Mouse(QEvent::MouseButtonRelease, Qt::LeftButton, to);
    }
    void Click(Qt::MouseButton button, QPoint at, QEvent::Type press = QEvent::MouseButtonPress)
    {
        Mouse(press, button, at);
        Mouse(QEvent::MouseButtonRelease, button, at);
    }
    void DoubleClick(QPoint at) { Click(Qt::LeftButton, at, QEvent::MouseButtonDblClick); }
    void Key(int key)
    {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
        QApplication::sendEvent(Plot(), &event);
    }
    QPoint PixelOf(int series, qsizetype point)
    {
        return Chart()
            .PointToPixel(double(point + 1), Chart().Value(series, point), Chart().SeriesAxis(series))
            .toPoint();
    }
    QString TipAt(QPoint at)
    {
        QHelpEvent event(QEvent::ToolTip, at, Plot()->mapToGlobal(at));
        QApplication::sendEvent(Plot(), &event);
        return QToolTip::text();
    }
    void Finish(const QString& text)
    {
        measuring->Window()->txt_Edit()->setPlainText(text);
        measuring->Window()->EndTextEdit(false);
    }
    frm_Transparent* Rectangle() { return measuring->Window()->findChild<frm_Transparent*>(); }

    Qt::MouseButton held = Qt::NoButton;
};

TEST_F(ChartInteractionTest, ZoomNeedsMoreThanFivePixelsEachWayAndEscapeGivesUp)
{
    OpenDay();
    measuring->SetZoomEnabled(true);
    const QPoint start = Chart().PlotArea().center();
    const double from = Bar().DateFrom();
    Drag(start, start + QPoint(5, 40));
    Drag(start, start + QPoint(40, 5));
    Mouse(QEvent::MouseButtonPress, Qt::LeftButton, start);
    Mouse(QEvent::MouseMove, Qt::LeftButton, start + QPoint(100, 80));
    ASSERT_TRUE(Rectangle());
    Key(Qt::Key_Escape);
    EXPECT_FALSE(Rectangle());
    Mouse(QEvent::MouseButtonRelease, Qt::LeftButton, start + QPoint(100, 80));
    EXPECT_FALSE(measuring->ZoomBackPossible());
    EXPECT_EQ(Bar().DateFrom(), from);

    // Up and to the left: the rectangle's corner moves to the mouse.
    Mouse(QEvent::MouseButtonPress, Qt::LeftButton, start);
    Mouse(QEvent::MouseMove, Qt::LeftButton, start + QPoint(-30, -40));
    frm_Transparent* rectangle = Rectangle();
    ASSERT_TRUE(rectangle);
    EXPECT_EQ(rectangle->geometry(), QRect(Chart().mapToGlobal(start + QPoint(-30, -40)), QSize(30, 40)));
    double point = 0, top = 0;
    ASSERT_TRUE(Chart().PixelToValue(start + QPoint(-30, -40), ChartAxis::Y1, point, top));
    EXPECT_TRUE(rectangle->lbl_XY1()->text().endsWith("\n" + Formatter().FormatNumber(top, u"0.00")))
        << rectangle->lbl_XY1()->text().toStdString();
    Mouse(QEvent::MouseButtonRelease, Qt::LeftButton, start + QPoint(-6, -6));
    EXPECT_FALSE(Rectangle()) << "the release closes the rectangle";
    EXPECT_TRUE(measuring->ZoomBackPossible()) << "six pixels each way zoom";
    EXPECT_GT(Bar().DateFrom(), from);
}

TEST_F(ChartInteractionTest, ClicksPlaceCursorsOnlyNearPoints)
{
    Curve* curve = OpenDay();
    const QRect area = Chart().PlotArea();

    // Neither mode: cross hairs while the button is held.
    Mouse(QEvent::MouseButtonPress, Qt::LeftButton, PixelOf(0, 40));
    EXPECT_TRUE(Chart().CrossHairs());
    Mouse(QEvent::MouseButtonRelease, Qt::LeftButton, PixelOf(0, 40));
    EXPECT_FALSE(Chart().CrossHairs());
    Click(Qt::RightButton, PixelOf(0, 40));
    EXPECT_EQ(host.menus, QStringList { "mnuView" });

    measuring->SetCursorEnabled(true);
    // Early in the day the values stay low, far below the top of the plot.
    const QPoint far(PixelOf(0, 8).x(), std::max(area.top() + 5, 25));
    double nearest = 1e300;
    for (qsizetype point = 0; point < Chart().PointCount(); ++point)
        nearest = std::min(nearest, std::hypot(PixelOf(0, point).x() - far.x(), PixelOf(0, point).y() - far.y()));
    ASSERT_GE(nearest, 50.0);
    Click(Qt::LeftButton, far);
    EXPECT_TRUE(curve->Cursors().empty());

    Click(Qt::LeftButton, PixelOf(0, 40) + QPoint(2, 3));
    ASSERT_EQ(curve->Cursors().size(), 1u);
    EXPECT_EQ(curve->Cursors()[0]->Index(), 40);
    EXPECT_EQ(measuring->CurrentCurve(), curve) << "the curve of the cursor becomes the current one";
    Click(Qt::RightButton, PixelOf(0, 60) + QPoint(-2, 2));
    ASSERT_EQ(curve->Cursors().size(), 2u);
    EXPECT_EQ(curve->Cursors()[1]->Index(), 60);
    EXPECT_EQ(host.menus.size(), 1) << "placing a cursor opens no menu";
}

TEST_F(ChartInteractionTest, TitleCursorAndNoteTextsAreEditedInPlace)
{
    Curve* curve = OpenDay();
    frm_GraphicView& view = *measuring->Window();
    DoubleClick(QPoint(200, 10));
    ASSERT_EQ(view.EditId(), "-1001");
    Finish("Meter 7");
    EXPECT_EQ(measuring->Graph().Title, "Meter 7");
    EXPECT_EQ(Chart().Title(2), "Meter 7");

    curve->SetCursor(10, &Chart(), &Chart().Annotations(), 1);
    curve->SetCursor(30, &Chart(), &Chart().Annotations(), 2);
    measuring->SetChanged(false);
    view.StartTextEdit(0, 0, 100, 20, 0xFFFFFF, QString(), "C3$L#1_9", nullptr, 0);
    Finish("lost");
    EXPECT_EQ(curve->Cursors()[0]->CustomText() + curve->Cursors()[1]->CustomText(), "");
    EXPECT_FALSE(measuring->Changed());
    view.StartTextEdit(0, 0, 100, 20, 0xFFFFFF, QString(), "C3$L#1_1", nullptr, 0);
    Finish("start");
    EXPECT_EQ(curve->Cursors()[0]->CustomText(), "start");
    EXPECT_TRUE(measuring->Changed());
    ChartAnnotation* box = curve->Cursors()[1]->Box();
    DoubleClick(QPoint(box->Left() + 3, box->Top() + 3));
    EXPECT_EQ(view.EditId(), "C3$L#1_2");
    EXPECT_EQ(view.txt_Edit()->toPlainText(), box->Text());
    view.EndTextEdit(true);

    // The note box: emptied it keeps a blank, hidden it keeps its place.
    measuring->SetShowAnnotation(true);
    measuring->SetAnnotationPosition("10;30;110;80");
    measuring->SetRemark("Meter swapped");
    DoubleClick(QPoint(50, 50));
    ASSERT_EQ(view.EditId(), "-1000");
    Finish("");
    EXPECT_EQ(measuring->Remark(), "");
    EXPECT_EQ(Chart().Annotations().TextAt(QPointF(50, 50))->Text(), " ");
    measuring->SetShowAnnotation(false);
    EXPECT_FALSE(Chart().Annotations().TextAt(QPointF(50, 50)));
    EXPECT_EQ(measuring->AnnotationPosition(), "10;30;110;80");
}

TEST_F(ChartInteractionTest, CursorBoxesAreDraggedAndDeleted)
{
    Curve* curve = OpenDay();
    curve->SetCursor(10, &Chart(), &Chart().Annotations(), 1);
    curve->SetCursor(30, &Chart(), &Chart().Annotations(), 2);
    ChartAnnotation* box = curve->Cursors()[0]->Box();
    const QPoint grip(box->Left() + 3, box->Top() + 3);
    Drag(grip, grip + QPoint(40, 60));
    const QPointF dropped(box->Left(), box->Top());
    measuring->RedrawCursors();
    EXPECT_EQ(QPointF(box->Left(), box->Top()), dropped) << "the box stays where it was dropped";

    // The user deletes the selected box: its cursor goes, the other one becomes cursor 1.
    Click(Qt::LeftButton, grip + QPoint(40, 60));
    ASSERT_EQ(Chart().Annotations().Selected(), box);
    Key(Qt::Key_Delete);
    ASSERT_EQ(curve->Cursors().size(), 1u);
    EXPECT_EQ(curve->Cursors()[0]->Index(), 30);
}

TEST_F(ChartInteractionTest, TipsTellValuesAndTimes)
{
    Curve* power = OpenDay();
    const Formatter format;
    const QString time = format.FormatDate(D(2009, 2, 10, 10), measuring->GetDateFormat(false));
    EXPECT_EQ(TipAt(PixelOf(power->SeriesID(), 40)), "Power\n" + format.FormatNumber(10, u"0.00") + " kW\n" + time);

    // Over the plot area: the values of both axes, told apart only when both show.
    const auto areaValues = [&](QPoint at) {
        double point = 0, left = 0, right = 0;
        Chart().PixelToValue(at, ChartAxis::Y1, point, left);
        Chart().PixelToValue(at, ChartAxis::Y2, point, right);
        return QStringList { format.FormatNumber(left, u"0.00"), format.FormatNumber(right, u"0.00") };
    };
    ASSERT_FALSE(Chart().AxisVisible(ChartAxis::Y2));
    const QPoint corner = Chart().PlotArea().topLeft() + QPoint(5, 5);
    EXPECT_EQ(TipAt(corner).split('\n').mid(0, 2), areaValues(corner));

    Curve* factor = Add("3$L#2");
    factor->SetName("Factor");
    measuring->Refresh(true);
    Chart().Replot();
    ASSERT_TRUE(Chart().AxisVisible(ChartAxis::Y2));
    EXPECT_EQ(
        TipAt(PixelOf(factor->SeriesID(), 40)), "Factor\n" + format.FormatNumber(0.9, u"0.00") + " cos phi\n" + time)
        << "the folded power factor shows as what was measured";
    const QPoint newCorner = Chart().PlotArea().topLeft() + QPoint(5, 5);
    const QStringList both = areaValues(newCorner);
    EXPECT_EQ(TipAt(newCorner).split('\n').mid(0, 2), QStringList({ "L: " + both[0], "R: " + both[1] }));
}

TEST_F(ChartInteractionTest, TheBarsFitButtonFitsItsAxisToTheValues)
{
    OpenDay();
    frm_GraphicView& view = *measuring->Window();
    view.show();
    QCoreApplication::processEvents();
    Chart().SetAxisRange(ChartAxis::Y1, 0, 1000);
    Chart().Replot();
    QTest::mouseClick(view.nav_Vertical()->AdjustButton(), Qt::LeftButton);
    EXPECT_EQ(Chart().AxisMax(ChartAxis::Y1), 23) << "the hours of the day";
}

} // namespace
