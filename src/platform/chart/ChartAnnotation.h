// SPDX-License-Identifier: GPL-3.0-or-later
// The annotation layer of a chart: lines and text boxes placed in widget pixels, above the curves.
#pragma once

#include <QColor>
#include <QFont>
#include <QObject>
#include <QPointF>
#include <QPointer>
#include <QString>

#include <vector>

class ChartAdapter;
class ChartAnnotations;
class AnnotationItem; // the drawing side, private to the chart sources

// One object of the annotation layer. Geometry is in widget pixels: a line runs from
// (Left, Top) to (Left + Width, Top + Height), so a negative extent flips it; a text box
// fills that rectangle. Objects are owned by their list; hold them in a QPointer, since the
// user can delete a text box.
class ChartAnnotation : public QObject
{
    Q_OBJECT

public:
    enum class Kind {
        Line, ///< a straight line
        Text ///< a text box, movable by the user
    };

    Kind ObjectKind() const { return m_eKind; }

    double Left() const { return m_dLeft; }
    double Top() const { return m_dTop; }
    double Width() const { return m_dWidth; }
    double Height() const { return m_dHeight; }
    void SetLeft(double left);
    void SetTop(double top);
    void SetWidth(double width);
    void SetHeight(double height);
    void SetGeometry(double left, double top, double width, double height);

    // Line colour of a line, text and border colour of a text box.
    QColor Color() const { return m_cColor; }
    void SetColor(const QColor& color);
    int LineWidth() const { return m_lLineWidth; }
    void SetLineWidth(int width);
    // Dash pattern as "on,off[,on,off...]" in line widths; empty for a solid line.
    QString DashPattern() const { return m_sDashPattern; }
    void SetDashPattern(const QString& pattern);

    QColor BackColor() const { return m_cBackColor; }
    void SetBackColor(const QColor& color);
    bool Border() const { return m_bBorder; }
    void SetBorder(bool border);
    bool WordWrap() const { return m_bWordWrap; }
    void SetWordWrap(bool wrap);
    QString Text() const { return m_sText; }
    void SetText(const QString& text);
    QFont Font() const { return m_cFont; }
    void SetFont(const QFont& font);
    // Sizes a text box to its text plus a small margin, keeping the top left corner.
    void SizeToFit();

    // How the object is tied to the chart; 5 while a caller rewrites it, 0 when settled.
    int AttachMode() const { return m_lAttachMode; }
    void SetAttachMode(int mode) { m_lAttachMode = mode; }
    // True while the caller changes the object; setting it False repaints the layer.
    bool Changing() const { return m_bChanging; }
    void SetChanging(bool changing);

    qint32 Tag() const { return m_lTag; }
    void SetTag(qint32 tag) { m_lTag = tag; }

    bool Selected() const;
    // Out of the visible area (parked at -1000).
    bool Parked() const { return m_dLeft <= -1000.0; }

private:
    friend class ChartAnnotations;
    ChartAnnotation(ChartAnnotations* list, Kind kind);
    void Changed();

    ChartAnnotations* m_cList = nullptr;
    Kind m_eKind;
    double m_dLeft = -1000.0;
    double m_dTop = -1000.0;
    double m_dWidth = 0.0;
    double m_dHeight = 0.0;
    QColor m_cColor = Qt::black;
    int m_lLineWidth = 1;
    QString m_sDashPattern;
    QColor m_cBackColor = Qt::white;
    bool m_bBorder = false;
    bool m_bWordWrap = false;
    QString m_sText;
    QFont m_cFont;
    int m_lAttachMode = 0;
    bool m_bChanging = false;
    qint32 m_lTag = 0;
    AnnotationItem* m_cItem = nullptr; // drawn by this item of the plot
};

// The annotation list of one chart. Text boxes can be dragged with the left button; a
// double click, the Delete key on a selected box and a change of selection are reported.
class ChartAnnotations : public QObject
{
    Q_OBJECT

public:
    explicit ChartAnnotations(ChartAdapter* chart);
    ~ChartAnnotations() override;

    ChartAnnotation* AddLine();
    ChartAnnotation* AddText();
    // Removes and deletes the object; nothing for null or a foreign object. Only a box the
    // user deletes is reported through ObjectDeleted.
    void Remove(ChartAnnotation* object);
    int Count() const { return static_cast<int>(m_cObjects.size()); }
    ChartAnnotation* Item(int index) const;

    // The topmost text box under a widget pixel, or nothing.
    ChartAnnotation* TextAt(const QPointF& pixel) const;
    ChartAnnotation* Selected() const { return m_cSelected; }
    void Select(ChartAnnotation* object);

    ChartAdapter* Chart() const { return m_cChart; }

signals:
    void EndMoving(ChartAnnotation* object);
    void DoubleClicked(ChartAnnotation* object);
    // Sent before the object goes; its pointer is still valid during the signal.
    void ObjectDeleted(ChartAnnotation* object);
    void SelectionChanged(ChartAnnotation* object);

private:
    friend class ChartAnnotation;
    friend class ChartAdapter;
    ChartAnnotation* Add(ChartAnnotation::Kind kind);
    void Repaint();
    // Mouse and key handling, called by the chart before its own.
    bool MousePress(const QPointF& pixel, Qt::MouseButton button);
    bool MouseMove(const QPointF& pixel);
    bool MouseRelease(const QPointF& pixel);
    bool MouseDoubleClick(const QPointF& pixel);
    bool KeyPress(int key);

    ChartAdapter* m_cChart;
    std::vector<ChartAnnotation*> m_cObjects; // drawing order
    QPointer<ChartAnnotation> m_cSelected;
    QPointer<ChartAnnotation> m_cDragged;
    QPointF m_cDragOffset;
    bool m_bMoved = false;
};
