// SPDX-License-Identifier: GPL-3.0-or-later
// The time navigation bar under a chart: the full period as a track, the visible window as a
// draggable marker on it, the window's two dates as text and six buttons that move the window.
// The bar only holds dates and raises events; the owner does the loading.
#pragma once

#include "Formatter.h"

#include <QRect>
#include <QString>
#include <QWidget>

#include <array>
#include <cstdint>

class QFontMetrics;
class QLabel;
class QToolButton;
class ctl_NavBarTrack;

class ctl_NavBar : public QWidget
{
    Q_OBJECT
public:
    explicit ctl_NavBar(QWidget* parent = nullptr);

    double DateFirst() const { return m_dateFirst; }
    void SetDateFirst(double date);
    double DateLast() const { return m_dateLast; }
    void SetDateLast(double date);
    double DateFrom() const { return m_dateFrom; }
    void SetDateFrom(double date);
    double DateTo() const { return m_dateTo; }
    void SetDateTo(double date);

    // False ignores mouse work on the marker and the buttons (the owner sets it during a refresh).
    bool Enabled() const { return m_enabled; }
    void SetEnabled(bool enabled);

    // Step texts such as "1h", "15n", "2ww": a count and a date-part unit.
    QString SmallStep() const { return m_steps[3]; }
    void SetSmallStep(const QString& step);
    QString MediumStep() const { return m_steps[4]; }
    void SetMediumStep(const QString& step);
    QString BigStep() const { return m_steps[5]; }
    void SetBigStep(const QString& step);

    struct Step
    {
        double count = 0;
        QString unit;
    };
    // Scans from the end to the last digit: what follows it is the unit, what leads up to it the
    // count (leniently converted). Without a digit the count is 0 and the unit empty.
    static Step ParseStep(const QString& text);
    // "Minute(n)" for "n" and so on; empty for an unknown unit.
    static QString UnitName(const QString& unit);
    // The tool tip of a step button, e.g. "Um 15 Minute(n) vorwärts gehen".
    static QString StepToolTip(const QString& step, bool forward);
    // The first of the label masks whose text fits the width, else an empty text.
    static QString FitDateText(double date, int width, const QFontMetrics& metrics, const Formatter& formatter);

    // The track maps seconds since DateFirst to pixels. The scale is the full period, capped at
    // MaxScaleSeconds; its origin lies one pixel to the right of the track's left edge.
    static constexpr double MaxScaleSeconds = 500000.0;
    static constexpr int MinMarkerPixels = 10;
    struct Scale
    {
        bool visible = false; // false when the full period or the window is empty
        double width = 0; // scale width in seconds
        double pixel = 0; // one track pixel in seconds
        double markerLeft = 0; // seconds from DateFirst to DateFrom
        double markerWidth = 0; // the window plus two pixels, at least MinMarkerPixels

        // Track pixel of a scale position.
        double ToPixel(double seconds) const { return pixel > 0 ? seconds / pixel - 1.0 : 0.0; }
        // The marker in track pixels, over the whole track height.
        QRectF MarkerPixels(int trackHeight) const;
        // The farthest the marker's left may be dragged.
        double DragLimit() const { return width - markerWidth + 2.0 * pixel; }
        // The marker's new left, in seconds, when the mouse has moved dx pixels since a drag
        // started with the marker at left0: whole seconds, not below 0, not past DragLimit.
        double DragLeft(double left0, double dxPixels) const;
    };
    static Scale ComputeScale(double first, double last, double from, double to, int trackPixels);

    // Child positions for a control size; the left buttons stay where they are, the labels
    // share the space between the two button groups, the track sits over the labels' middle.
    struct Layout
    {
        std::array<int, 2> labelLeft {};
        int labelWidth = 0;
        std::array<int, 6> buttonLeft {};
        bool trackVisible = false;
        QRect track;
    };
    static Layout ComputeLayout(int width, int height, int buttonWidth);

    // Children, for the window's keyboard handling and for tests.
    QToolButton* Button(int index) const { return m_buttons.at(static_cast<std::size_t>(index)); }
    QLabel* Label(int index) const { return m_labels.at(static_cast<std::size_t>(index)); }
    QWidget* Track() const;
    QString LabelText(int index) const;
    // The track in control coordinates, empty while it is hidden.
    QRect TrackRect() const;
    // The marker in track coordinates, null while it is hidden.
    QRect MarkerRect() const;
    Scale CurrentScale() const;
    bool Dragging() const { return m_dragging; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void Navigate(int index); // button 1 to 4, or -1 after a marker drag
    void NavigateToFirst();
    void NavigateToLast();
    void DblClick(int where); // -1 start label, 1 end label, 0 elsewhere

protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    friend class ctl_NavBarTrack;

    void ButtonPressed(int index);
    void ApplyLayout();
    void UpdateLabels();
    void UpdateIcons();
    void UpdateMarker();
    void StartDrag(double x);
    void MoveDrag(double x);
    void EndDrag();
    void CancelDrag();

    double m_dateFirst = 0;
    double m_dateLast = 0;
    double m_dateFrom = 0;
    double m_dateTo = 0;
    bool m_enabled = true;
    // Index 0 to 2 the negative forms of big, medium and small step, 3 to 5 the steps themselves.
    std::array<QString, 6> m_steps;

    bool m_dragging = false;
    double m_grabX = 0; // track x at the start of a drag
    double m_grabLeft = 0; // marker left in seconds at the start of a drag
    double m_savedFrom = 0;
    double m_savedTo = 0;

    std::array<QToolButton*, 6> m_buttons {};
    std::array<QLabel*, 2> m_labels {};
    ctl_NavBarTrack* m_track = nullptr;
    int m_labelWidth = 5;
    Formatter m_formatter;
};
