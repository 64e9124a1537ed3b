// SPDX-License-Identifier: GPL-3.0-or-later
// The chart of a view: series by point number on two Y axes, constant lines, titles, legend,
// an annotation layer, pixel conversions, hit tests and pictures, over one plotting widget.
#pragma once

#include <QColor>
#include <QImage>
#include <QString>
#include <QStringList>
#include <QWidget>

#include <functional>
#include <memory>
#include <span>
#include <vector>

class QCustomPlot;
class QPainter;
class ChartAnnotations;
struct ChartPrivate;

// Axis indexes as the views use them.
namespace ChartAxis {
constexpr int Y1 = 0; ///< first (left) Y axis
constexpr int Y2 = 1; ///< second (right) Y axis
constexpr int X = 2; ///< the X axis, in point numbers
} // namespace ChartAxis

// Chart types, per series or chart-wide.
namespace ChartGallery {
constexpr int Lines = 1; ///< a polyline through the points
constexpr int Bar = 2; ///< one filled bar per point, from 0 to the value
constexpr int Marker = 4; ///< markers only, no line
constexpr int Step = 8; ///< the value holds until the next point
} // namespace ChartGallery

// Line styles of series, constant lines and grids.
namespace ChartLineStyle {
constexpr int Solid = 0;
constexpr int Dash = 1;
constexpr int Dot = 2;
constexpr int DashDot = 3;
constexpr int DashDotDot = 4;
} // namespace ChartLineStyle

// What lies under a pixel of the chart.
struct ChartHit
{
    enum Kind {
        None = 0, ///< outside the plot area
        Point = 4, ///< a drawn point of a visible series
        PlotArea = 14 ///< the plot area away from any point
    };
    int kind = None;
    int series = -1; ///< with Point: the series index
    qsizetype point = -1; ///< with Point: the point, from 0 (its X coordinate is point + 1)
};

// Points are numbered from 1 on the X axis: buffer index i is drawn at x = i + 1. A hidden
// point is written as HiddenPoint and leaves a gap in the line. Every index out of range is
// ignored by setters and gives a neutral value (0, false, empty) from getters.
class ChartAdapter : public QWidget
{
    Q_OBJECT

public:
    static constexpr double HiddenPoint = 1e308;

    explicit ChartAdapter(QWidget* parent = nullptr);
    ~ChartAdapter() override;

    // --- series and their values
    int SeriesCount() const;
    qsizetype PointCount() const;
    // Opens the value buffer for that many series and points: series are added or dropped at
    // the end, and every series gets that many points (new ones hidden). Drawing waits for
    // CloseData.
    void OpenData(int seriesCount, qsizetype points);
    // Closes the value buffer and repaints.
    void CloseData();
    void SetValue(int series, qsizetype point, double value);
    double Value(int series, qsizetype point) const;
    // Smallest and largest shown value of all series on the Y axis; false when there is none.
    bool ValueRange(int axis, double& min, double& max) const;
    // Writes values from point 0 on, as many as the span holds (up to PointCount).
    void SetValues(int series, std::span<const double> values);

    int SeriesAxis(int series) const;
    void SetSeriesAxis(int series, int axis); // Y1 or Y2; shows the axis it lands on
    bool SeriesVisible(int series) const;
    void SetSeriesVisible(int series, bool visible);
    QString SeriesLegend(int series) const;
    void SetSeriesLegend(int series, const QString& text);
    int SeriesGallery(int series) const;
    void SetSeriesGallery(int series, int gallery);
    QColor SeriesColor(int series) const;
    void SetSeriesColor(int series, const QColor& color); // line and marker
    int SeriesLineWidth(int series) const;
    void SetSeriesLineWidth(int series, int width);
    int SeriesLineStyle(int series) const;
    void SetSeriesLineStyle(int series, int style);
    // Marker shape: 0 none, any other a filled shape; marker-only series draw a dot with 0.
    int SeriesMarkerShape(int series) const;
    void SetSeriesMarkerShape(int series, int shape);
    int SeriesMarkerSize(int series) const;
    void SetSeriesMarkerSize(int series, int size);

    // --- axes (ChartAxis indexes)
    double AxisMin(int axis) const;
    double AxisMax(int axis) const;
    void SetAxisMin(int axis, double value);
    void SetAxisMax(int axis, double value);
    void SetAxisRange(int axis, double min, double max);
    QString AxisTitle(int axis) const;
    void SetAxisTitle(int axis, const QString& title);
    bool AxisVisible(int axis) const;
    void SetAxisVisible(int axis, bool visible);
    bool AxisTicks(int axis) const;
    void SetAxisTicks(int axis, bool on);
    bool AxisGrid(int axis) const;
    void SetAxisGrid(int axis, bool on);
    QColor AxisGridColor(int axis) const;
    void SetAxisGridColor(int axis, const QColor& color);
    int AxisGridStyle(int axis) const;
    void SetAxisGridStyle(int axis, int style);
    int AxisGridWidth(int axis) const;
    void SetAxisGridWidth(int axis, int width);
    // Text of every tick label: handler(axis, value at the tick, the chart's own text). On the
    // X axis the value is the point number. Without a handler the chart's own text shows.
    using LabelHandler = std::function<QString(int axis, double value, const QString& text)>;
    void SetLabelHandler(LabelHandler handler);
    // Where the X axis puts its ticks: handler(lowest, highest point shown, at most this many
    // ticks) gives the point numbers in ascending order. Without a handler, or when it gives
    // none, the ticks fall on evenly spaced whole point numbers.
    using TickHandler = std::function<std::vector<double>(double lower, double upper, int most)>;
    void SetXTickHandler(TickHandler handler);
    // The ticks of an axis as last laid out (in the widget or a picture): their values (point
    // numbers on the X axis) and label texts, in ascending order.
    std::vector<double> AxisTickValues(int axis) const;
    QStringList AxisTickLabels(int axis) const;

    // --- constant lines: horizontal on a Y axis, vertical on the X axis
    int ConstantLineCount() const;
    int AddConstantLine(); // hidden, black, width 1; returns its index
    double ConstantLineValue(int line) const;
    void SetConstantLineValue(int line, double value);
    int ConstantLineAxis(int line) const;
    void SetConstantLineAxis(int line, int axis);
    QColor ConstantLineColor(int line) const;
    void SetConstantLineColor(int line, const QColor& color);
    int ConstantLineWidth(int line) const;
    void SetConstantLineWidth(int line, int width);
    int ConstantLineStyle(int line) const;
    void SetConstantLineStyle(int line, int style);
    bool ConstantLineHidden(int line) const;
    void SetConstantLineHidden(int line, bool hidden);

    // --- chart-wide
    int Gallery() const;
    void SetGallery(int gallery); // series with gallery 0 follow it
    bool View3D() const;
    void SetView3D(bool on); // a depth effect behind the plot area
    bool Legend() const;
    void SetLegend(bool on);
    // Titles by position: 0 left, 1 right, 2 top, 3 bottom. Flags are kept for the caller;
    // bit 0x100 shows the title.
    QString Title(int position) const;
    void SetTitle(int position, const QString& text);
    qint32 TitleFlags(int position) const;
    void SetTitleFlags(int position, qint32 flags);
    // Replots now; Repaint asks for a replot at the next event-loop turn, which a Replot before
    // then takes the place of. A change of an axis range asks for one by itself.
    void Replot();
    void Repaint();

    ChartAnnotations& Annotations();

    // --- conversions, in widget pixels
    QRect PlotArea() const;
    // The pixel of (x, y), x in point numbers, y on the Y axis given.
    QPointF PointToPixel(double x, double y, int axis) const;
    // The values at a pixel; false when the pixel lies outside the plot area.
    bool PixelToValue(const QPointF& pixel, int axis, double& x, double& y) const;
    // The nearest drawn point of a visible series within 4 pixels, else the plot area.
    ChartHit HitTest(const QPointF& pixel) const;

    // --- mouse aids
    bool CrossHairs() const;
    void SetCrossHairs(bool on); // lines through the mouse position while on
    bool ToolTips() const;
    void SetToolTips(bool on); // on: ToolTipRequested is sent when the mouse rests
    // Shows the tip for the request being answered; empty hides it.
    void ShowToolTip(const QString& text);

    // --- pictures
    QImage ToImage(int width, int height);
    bool SaveSvg(const QString& fileName, int width, int height);
    // Draws the chart at the painter's origin in the size given, as vectors where it can.
    void Draw(QPainter& painter, int width, int height);

    // The plotting widget, for the chart's own sources and tests.
    QCustomPlot* Plot() const;

signals:
    void MousePressed(Qt::MouseButton button, const QPointF& pixel);
    void MouseMoved(Qt::MouseButtons buttons, const QPointF& pixel);
    void MouseReleased(Qt::MouseButton button, const QPointF& pixel);
    void DoubleClicked(const QPointF& pixel);
    void KeyPressed(int key);
    void ToolTipRequested(const ChartHit& hit, const QPointF& pixel);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    std::unique_ptr<ChartPrivate> d;
};
