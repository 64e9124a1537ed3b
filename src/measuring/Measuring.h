// SPDX-License-Identifier: GPL-3.0-or-later
// The document of one view: its modules, curves, window, resolution and look, its window on
// screen, and the refresh that fetches, grids, sums and draws at every change of the window.
#pragma once

#include "Curve.h"
#include "GraphProperties.h"
#include "MeasuringFile.h"
#include "ModuleBoxes.h"
#include "TimeValueTransformator.h"

#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class ChartAdapter;
class ChartAnnotation;
class MeasuringHost;
class Measuring;
class frm_GraphicView;
class QPicture;
class QTreeWidgetItem;

// What the new-view wizard decided: the view is built from it.
struct NewMeasuringChoice
{
    QString name;
    QString remark;
    std::vector<ModuleBoxPtr> modules; ///< the modules the view draws on
    QStringList channels; ///< "<address>$<id>", one curve each, in this order
    double start = 0.0; ///< the period the wizard showed, as first and last data date
    double end = 0.0;
    std::optional<GraphProperties> graph; ///< a profile's chart look
    std::vector<std::pair<QString, SeriesProperties>> looks; ///< a profile's look by curve name
    QString indizes; ///< statistics in use, "|1|2|"
    bool indizesInChart = false; ///< statistic lines shown in the chart
};

// The dialogs that edit a view live above this library; the application hands them in. Each
// returns its ShowMe status: non-zero when it changed the view (it refreshes the view itself).
struct MeasuringDialogs
{
    std::function<qint32(Measuring&)> properties; ///< frm_MeasuringProperties
    std::function<qint32(Measuring&)> curves; ///< frm_Curves
    std::function<qint32(Measuring&, Curve&)> curveProperties; ///< frm_CurveProperties
    /// frm_NewMeasuring: nothing when the user cancelled; -1 status when there is no wizard
    std::function<std::optional<NewMeasuringChoice>(Measuring&)> newMeasuring;
};

class Measuring : public QObject
{
    Q_OBJECT

public:
    explicit Measuring(MeasuringHost& host, QObject* parent = nullptr);
    ~Measuring() override;

    // Creates and wires the window, unshown. 0 good, -1 failed (logged).
    qint32 Init();
    void Terminate();

    // --- properties
    bool ShowFixedLine() const { return m_bShowFixedLine; }
    void SetShowFixedLine(bool show) { m_bShowFixedLine = show; }
    double FixedLineValue() const { return m_dFixedLineValue; }
    void SetFixedLineValue(double value) { m_dFixedLineValue = value; }
    bool ChangedID() const { return m_bChangedID; }
    void SetChangedID(bool changed) { m_bChangedID = changed; }
    bool Temporary() const { return m_bTemporary; }
    void SetTemporary(bool temporary) { m_bTemporary = temporary; }
    const QString& ID() const { return m_sID; }
    void SetID(const QString& id) { m_sID = id; }
    bool Changed() const { return m_bChanged; }
    void SetChanged(bool changed); // rewrites the caption
    const QString& Name() const { return m_sName; }
    void SetName(const QString& name);
    const QString& FileName() const { return m_sFileName; }
    const QString& DefaultPath() const { return m_sDefaultPath; }
    void SetDefaultPath(const QString& path) { m_sDefaultPath = path; }
    double StartDate() const;
    void SetStartDate(double date);
    double EndDate() const;
    void SetEndDate(double date);
    const QString& Remark() const { return m_sRemark; }
    void SetRemark(const QString& remark);
    bool ZoomEnabled() const { return m_bZoomEnabled; }
    void SetZoomEnabled(bool enabled) { m_bZoomEnabled = enabled; }
    bool CursorEnabled() const { return m_bCursorEnabled; }
    void SetCursorEnabled(bool enabled) { m_bCursorEnabled = enabled; }
    const QString& IntervalUnit() const { return m_sIntervalUnit; }
    void SetIntervalUnit(const QString& unit);
    qint32 IntervalCount() const { return m_lIntervalCount; }
    void SetIntervalCount(qint32 count);
    bool ZoomBackPossible() const { return !m_sZoomHistory.isEmpty(); }
    const QString& ZoomHistory() const { return m_sZoomHistory; }
    void SetZoomHistory(const QString& history) { m_sZoomHistory = history; }
    GraphProperties& Graph() { return m_cGraphProperties; }
    MeasuringFile::Address& CustomerAddress() { return m_cAddress; }
    bool AutoScale() const { return m_bAutoScale; }
    void SetAutoScale(bool on) { m_bAutoScale = on; }
    ModuleBoxes& DataModules() { return m_cDataModules; }
    // The application around the view: messages, progress and tool states go there.
    MeasuringHost& Host() const { return m_cHost; }
    // Every module of the application, which a curve may be taken from; the view's own
    // modules are among them.
    ModuleBoxes& OfferedModules();
    const std::vector<std::unique_ptr<Curve>>& Curves() const { return m_cCurves; }
    Curve* FindCurve(const QString& id) const;
    Curve* CurrentCurve() const { return m_cCurrentCurve; }
    void SetCurrentCurve(Curve* curve);
    bool ShowStatistics() const;
    void SetShowStatistics(bool show);
    qint32 ViewMode() const;
    void SetViewMode(qint32 mode);
    // True for Y axis 0 or 1 when a curve of folded power factors stands on it.
    bool CosPhiView(int axis) const;

    ChartAdapter* Chart() const;
    frm_GraphicView* Window() const { return m_cGraph.get(); }
    const MatrixBlockPtr& FirstBlock() const { return m_cFirstBlock; }

    // --- operations
    // Makes a curve of the channel "<address>$<id>" of one of this view's modules. The two
    // statistic lists read "|1|2|". Nothing when the module or channel is unknown.
    Curve* AddCurve(const QString& channelKey, bool loadData, const QString& usedStatistics,
        const QString& visibleStatistics, const SeriesProperties* properties);
    // Adds a further channel "<address>$<id>" to a curve, which then shows their sum; false
    // when the module or channel is unknown or the curve has it already.
    bool AddChannel(Curve& curve, const QString& channelKey);
    // Takes the curve out of the view: its tree nodes, table column and cursors go, its chart
    // series is hidden. False when there is no such curve.
    bool RemoveCurve(const QString& id);
    // Puts the curve at position index (clamped to the list): the chart's series, the legend,
    // the tree and the table follow; the curve keeps its cursors, look and statistics. False
    // when there is no such curve.
    bool MoveCurve(const QString& id, qsizetype index);
    qint32 NextFreeColor() const;
    double FirstDataDate() const;
    double LastDataDate() const;
    bool HasFirstLastInfo() const;
    void ReloadSettings();
    void RemoveCursors(bool allCurves);
    // The view's dialogs: the status of their ShowMe, -1 when there is none; a non-zero
    // status marks the view changed. The curve dialog edits the current curve.
    qint32 EditProperties();
    qint32 ManageCurves();
    qint32 EditCurveProperties();
    static void SetDialogs(MeasuringDialogs dialogs);
    // Selects the curve of a statistic tree node, as a click on it does.
    void NodeClick(const QString& tag);
    // Treats the statistic tree's selected node as clicked, selecting the first when none is.
    void SelectedNodeClick();

    // True while a refresh runs: it lets window events through, and the view must stay.
    bool Refreshing() const { return m_bRefreshing; }
    // Why the last refresh showed no data for some channels (a module's read failed) or for
    // the whole window (too many rows); empty when it got everything.
    const QString& FetchError() const { return m_sFetchError; }

    // Redraws from what the curves hold, or fetches the current window anew.
    void Refresh(bool fetch);
    void RefreshData(double dateFrom, double dateTo, Curve* curve, bool adjustAxes);

    void ShowPeriod(const QString& unit, qint32 count);
    void MoveToFirst();
    void MoveToLast();
    // Zooms to a rectangle in chart pixels; the window before goes onto the history.
    void ZoomTo(int x1, int y1, int x2, int y2);
    void ZoomBack();
    void AdjustAxis(int axis);
    // Closes the chart's gaps: points without any value go, later ones move down with their X labels.
    void RemoveGaps();
    QString GetDateFormat(bool forAxis) const;
    void UpdateAxisTitles();
    void RedrawCursors();

    // --- views of report batches (MeasuringBatch.cpp)
    // Binds every channel to the same channel of another logger of its module: "<logger>#"
    // and what stood behind the "#" of its id. A curve still named after its channel takes the
    // new one's name and unit. A channel that logger lacks is taken out (logged), and a curve
    // left without channels goes. The number of channels bound.
    qsizetype ExchangeLogger(const QString& logger);
    // Binds the curve to the one channel "<address>$<id>" of the application's modules and
    // names it after it; false when no module offers it.
    bool BindCurve(Curve& curve, const QString& channelKey);
    // Makes every value outside [from, to) a gap, and redraws.
    void CutToPeriod(double from, double to);
    // Puts cursors on the greatest and on the smallest value of all shown curves.
    void MarkExtremes(bool minimum, bool maximum);

    // --- chart interaction (MeasuringInteraction.cpp)
    // Places a cursor of the current curve, or the nearest curve's within 50 pixels, at a chart
    // pixel; kind 1 or 2 is the cursor number a click asks for.
    void SetCursor(int x, int y, bool onCurve, qint32 kind);
    // A cursor at a known time, as the file reader restores it.
    Cursor* AddCursor(double dateTime, Curve& curve);
    bool ShowAnnotation() const;
    void SetShowAnnotation(bool show);
    QString AnnotationPosition() const;
    void SetAnnotationPosition(const QString& position);

    // --- export (MeasuringExport.cpp)
    // Asks for a file and writes the chart as a picture or the table as CSV; 0 when written,
    // -1 when the user cancelled (nothing is written), -2 or -3 (after a message) when the file
    // could not be written.
    qint32 ExportFile();
    // Writes the view to a file chosen by the caller: SVG, BMP, PNG or PDF for the chart by the
    // file's extension, CSV for the table.
    qint32 ExportTo(const QString& fileName);
    void ExportClipboard(bool asText);
    // A picture of the chart for the reports: 0, -1 without a chart view, -2 on failure.
    qint32 GetDiagrammAsPicture(QPicture& picture, qint32 mode);

    // The content of the view as its file holds it, and back.
    MeasuringFile ToFile() const;
    void FromFile(const MeasuringFile& file);
    // An empty path makes a new view through the wizard (CreateFile).
    qint32 OpenFile(const QString& path, bool hidden);
    // Runs the new-view wizard and builds the view from its choice: 0 created, 1 cancelled,
    // -1 when there is no wizard.
    qint32 CreateFile();
    qint32 SaveFile(const QString& path, bool keepName);

signals:
    // A refresh has ended; queued connections run after the code that asked for it.
    void RefreshEnded();

private:
    // The channel object of "<address>$<id>" in one of this view's modules, with the logger
    // exchanged for a temporary view; nothing when there is none.
    DataMatrixPtr ResolveChannel(const QString& channelKey) const;
    // Wires the chart's mouse, key, tool tip and annotation events and the editor's end.
    void ConnectInteraction();
    void OnMousePressed(Qt::MouseButton button, const QPointF& pixel);
    void OnMouseMoved(const QPointF& pixel);
    void OnMouseReleased(Qt::MouseButton button, const QPointF& pixel);
    void OnDoubleClicked(const QPointF& pixel);
    void OnKeyPressed(int key);
    void OnEditFinished(const QString& id, const QString& text, bool cancelled);
    void OnAnnotationMoved(ChartAnnotation* object);
    void OnAnnotationDoubleClicked(ChartAnnotation* object);
    void OnAnnotationDeleted(ChartAnnotation* object);
    void OnAnnotationSelected(ChartAnnotation* object);
    // Cross hairs and tips while a button is held; placing: the release sets a cursor.
    void BeginPointing(bool placing);
    void EndPointing();
    void CloseZoomRectangle();
    QString ToolTipText(const ChartHit& hit, const QPointF& pixel) const;
    // The date of a chart X coordinate (point numbers from 1).
    double DateOfPoint(double point) const;
    Curve* CurveOfSeries(qint32 series) const;
    // The cursor whose annotation objects carry this tag, with its curve and position from 1.
    Cursor* CursorOfTag(qint32 tag, Curve** curve, qint32* position) const;
    void SelectCurveNode(const Curve& curve);
    void RebuildNoteBox(bool show);
    void Log(int stringId, const QString& argument = QString());
    void PutCursorsBack(const TimeValueTransformator& grid);
    void ApplyCosPhiAxes(Curve* single);
    class RefreshScope;
    // Runs work as a refresh runs: hourglass, commands and navigation off, the view kept open,
    // the chart drawn at the end. False, without running it, while a refresh runs.
    bool RunAsRefresh(const std::function<void()>& work);
    // The navigation bar learns the first and last dates of the channels now bound.
    void ChannelsChanged();
    // After RemoveGaps: the grid's times label the points again and the cursors go back to their
    // rows; the caller has the curves write all their rows. True when gaps had been removed.
    bool ShowAllRows();
    // One GetData for the module's channels of the refresh (of one curve, or of all); with fixed
    // grid steps, a module that aggregates where it stores the samples sends one row per step.
    void Fetch(ModuleBox& box, Curve* curve, double dateFrom, double dateTo,
        const std::optional<TimeValueTransformator::FixedSteps>& steps);
    // The module's time base decides an empty resolution, once.
    void SettleResolution(const ChannelCollection& collection);
    // The grid blocks a refresh of one curve, or of all, keeps at once.
    std::size_t GridBlocks(const Curve* curve) const;
    // False, with a message, when rows times grid blocks exceed what one grid may hold.
    bool WithinGridBudget(std::int64_t rows, std::size_t curves);
    void ChooseFirstWindow(bool fromCreate);
    QString AxisLabel(int axis, double value, const QString& text) const;
    // Point numbers for the X ticks: the rows at round times of the first channel.
    std::vector<double> XTicks(double lower, double upper, int most) const;
    void UpdateCaption();
    void OnNavigate(int index);
    // A check box of the statistic tree: shows or hides the curve, line or cursor it stands for.
    void OnNodeChanged(QTreeWidgetItem* item);
    void OnVerticalMove(int axis, bool upper, bool lower, int direction);
    double PointCount() const;

    MeasuringHost& m_cHost;
    bool m_bShowFixedLine = false;
    double m_dFixedLineValue = 0.0;
    int m_lFixedLine = -1; // the chart's constant line for pictures with the fixed line, once made
    bool m_bChangedID = false;
    // A new view's first and last data date come from the wizard's period.
    bool m_bWizardPeriod = false;
    double m_dWizardFirst = 0.0;
    double m_dWizardLast = 0.0;
    bool m_bTemporary = false;
    QString m_sID;
    bool m_bChanged = false;
    QString m_sName;
    QString m_sFileName;
    QString m_sDefaultPath;
    QString m_sRemark;
    bool m_bZoomEnabled = false;
    bool m_bCursorEnabled = false;
    QString m_sIntervalUnit;
    qint32 m_lIntervalCount = 0;
    QString m_sZoomHistory;
    GraphProperties m_cGraphProperties;
    MeasuringFile::Address m_cAddress;
    bool m_bAutoScale = true;
    ModuleBoxes m_cDataModules;
    std::vector<std::unique_ptr<Curve>> m_cCurves;
    Curve* m_cCurrentCurve = nullptr;
    bool m_bCrossHairs = true;
    bool m_bCursorCrossHairs = true;
    bool m_bToolTips = true;
    MatrixBlockPtr m_cFirstBlock;
    // The grid's times while m_cFirstBlock holds those of the points left by RemoveGaps.
    std::optional<MatrixBlockPtr> m_cGridTimes;
    std::unique_ptr<frm_GraphicView> m_cGraph;
    bool m_bRefreshing = false;
    QString m_sFetchError;
    // Mouse gestures on the chart.
    int m_iDownX = 0;
    int m_iDownY = 0;
    bool m_bDragZoom = false;
    bool m_bPlacing = false;
    QPointer<QWidget> m_cTransparent; // the zoom rectangle, a frm_Transparent while open
    QPointer<ChartAnnotation> m_cNoteBox;
    QString m_sAnnotationPosition;
};
