// SPDX-License-Identifier: GPL-3.0-or-later
// The window of a view: the statistic pane, a splitter, and the chart with its navigation bars
// or the table. It lays out, edits texts in place and reports to its owner.
#pragma once

#include <QFont>
#include <QPointer>
#include <QWidget>

#include <functional>

class ChartAdapter;
class ctl_DynamicGrid;
class ctl_NavBar;
class ctl_VertNavBar;
class QPlainTextEdit;
class QToolButton;
class QTreeWidget;

class frm_GraphicView : public QWidget
{
    Q_OBJECT

public:
    enum Mode { ChartMode = 1, GridMode = 2 };
    // Width of the splitter and height of the time bar and the corners.
    static constexpr int SplitterWidth = 5;
    static constexpr int BarHeight = 20;

    explicit frm_GraphicView(QWidget* parent = nullptr);
    ~frm_GraphicView() override;

    qint32 ViewMode() const { return m_lViewMode; }
    void SetViewMode(qint32 mode);
    bool StatisticVisible() const { return m_bStatisticVisible; }
    void SetStatisticVisible(bool visible);
    double LeftShare() const { return m_dLeftShare; }
    double RightShare() const { return m_dRightShare; }
    bool Dragging() const { return m_bDragging; }

    // Lays out pane, splitter and view from the shares; keeps the last layout when a width
    // comes out negative.
    void AlignControls();
    // Opens the editor over the chart at (x, y); an edit still open is finished first.
    // alignment: 0 left, 1 right, 2 centred. Without a font the editor takes a plain 8 point one.
    void StartTextEdit(int x, int y, int width, int height, qint32 backColor, const QString& text, const QString& id,
        const QFont* font, int alignment);
    void EndTextEdit(bool cancelled);
    bool Editing() const;
    QString EditId() const { return m_sEditId; }

    // Asked when the user closes the window; false keeps it open. Closing through
    // CloseFromCode never asks.
    void SetCloseHandler(std::function<bool()> handler) { m_fCloseHandler = std::move(handler); }
    void CloseFromCode();
    int HelpId() const { return m_lHelpId; }
    void SetHelpId(int id) { m_lHelpId = id; }

    QTreeWidget* trv_Statistics() const { return m_cTree; }
    QWidget* pic_Statistics() const { return m_cStrip; }
    QWidget* pic_Splitter() const { return m_cSplitter; }
    QWidget* pic_Chart() const { return m_cChartBox; }
    ChartAdapter* chart_View() const { return m_cChart; }
    ctl_NavBar* nav_Navigate() const { return m_cNavigate; }
    ctl_VertNavBar* nav_Vertical() const { return m_cVertical; }
    ctl_VertNavBar* nav_Vertical2() const { return m_cVertical2; }
    ctl_DynamicGrid* grid_View() const { return m_cGrid; }
    QPlainTextEdit* txt_Edit() const { return m_cEdit; }
    QToolButton* HideStatisticsButton() const { return m_cHideButton; }
    QToolButton* ShowStatisticsButton() const { return m_cShowButton; }

signals:
    void ShowStatistics();
    void CloseStatistics();
    void KeyPressed(int key);
    void EditFinished(const QString& id, const QString& text, bool cancelled);
    void Activated();
    void HelpRequested(int helpId);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void AlignChart();
    void FinishEdit(const QString& text, bool cancelled);
    bool SplitterEvent(QEvent* event);
    QWidget* ActiveView() const;

    QTreeWidget* m_cTree;
    QWidget* m_cStrip;
    QToolButton* m_cHideButton;
    QToolButton* m_cShowButton;
    QWidget* m_cSplitter;
    QWidget* m_cChartBox;
    ChartAdapter* m_cChart;
    ctl_NavBar* m_cNavigate;
    ctl_VertNavBar* m_cVertical;
    ctl_VertNavBar* m_cVertical2;
    QWidget* m_cCorner;
    QWidget* m_cCorner2;
    ctl_DynamicGrid* m_cGrid;
    QPlainTextEdit* m_cEdit;

    qint32 m_lViewMode = ChartMode;
    bool m_bStatisticVisible = true;
    double m_dLeftShare = 0.3;
    double m_dRightShare = 0.7;
    bool m_bDragging = false;
    int m_lDragStart = 0;
    QString m_sEditId;
    bool m_bClosingFromCode = false;
    int m_lHelpId = 0;
    std::function<bool()> m_fCloseHandler;
};
