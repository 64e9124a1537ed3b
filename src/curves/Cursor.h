// SPDX-License-Identifier: GPL-3.0-or-later
// A cursor on one sample of a curve: a cross at the point, a text box with value and time,
// and a dotted connector between them, all on the chart's annotation layer.
#pragma once

#include "Statistic.h"

#include <QPointer>
#include <QString>

class ChartAdapter;
class ChartAnnotation;
class ChartAnnotations;

class Cursor
{
public:
    // What SetPoint draws: the cross and the box, and a vertical constant line.
    static constexpr qint32 ModeMark = 4;
    static constexpr qint32 ModeLine = 2;

    Cursor();
    ~Cursor();
    Cursor(const Cursor&) = delete;
    Cursor& operator=(const Cursor&) = delete;

    // Geometry of the horizontal bar; setting Left moves both bars.
    double Left() const;
    void SetLeft(double left);
    double Top() const;
    double Height() const;
    double Width() const;

    // Adds the four objects to the annotation list, out of view.
    void Initialize(ChartAdapter* chart, ChartAnnotations* annotations);
    // Puts the cursor on point x (a grid row) at value y. A display value other than 0 is what
    // the box shows in place of y (the unfolded power factor).
    void SetPoint(double x, double y, qint16 series, qint16 axis, double dateTime, double displayValue);
    // Parks the objects out of view; they stay allocated.
    void Hide();
    // Forgets the text box after the user deleted it.
    void DeleteBox();
    // Re-reads the format and rewrites the box text, unless the user replaced it.
    void UpdateFormat();

    Statistic& CursorStatistic() { return m_cStatistic; }
    const Statistic& CursorStatistic() const { return m_cStatistic; }
    qint32 Color() const { return m_lColor; }
    void SetColor(qint32 color) { m_lColor = color; }
    // Position in the curve's cursors * 100 + the curve's series; carried by all four objects.
    qint32 Tag() const;
    void SetTag(qint32 tag);
    double DateTime() const { return m_dDateTime; }
    void SetDateTime(double dateTime) { m_dDateTime = dateTime; }
    double Value() const { return m_dValue; }
    qint16 Axis() const { return m_iAxis; }
    void SetAxis(qint16 axis) { m_iAxis = axis; }
    qint32 Index() const { return m_lIndex; }
    void SetIndex(qint32 index) { m_lIndex = index; }
    const QString& Unit() const { return m_sUnit; }
    void SetUnit(const QString& unit) { m_sUnit = unit; }
    qint32 Mode() const { return m_lMode; }
    void SetMode(qint32 mode) { m_lMode = mode; }
    // The box text; empty without a box.
    QString Text() const;
    const QString& CustomText() const { return m_sCustomText; }
    void SetCustomText(const QString& text);
    // "dx;dy;width;height" of the box relative to the mark; empty for the default place.
    const QString& BoxPosition() const { return m_sBoxPosition; }
    void SetBoxPosition(const QString& position) { m_sBoxPosition = position; }
    // Stores where the user left the box.
    void SaveBoxPosition();
    // "<|difference|> <unit>  (<time apart>)".
    QString BuildDifference(const Cursor& other) const;

    ChartAnnotation* Box() const;
    ChartAnnotation* Connector() const;
    ChartAnnotation* HorizontalBar() const;
    ChartAnnotation* VerticalBar() const;
    qint32 ConstantLine() const { return m_lConstantLine; }

private:
    void ReadFormat();
    void OpenForChange(ChartAnnotation* object);
    void PlaceMark(double x, double y);
    void PlaceConstantLine(double x);

    QPointer<ChartAnnotation> m_cHorizontal;
    QPointer<ChartAnnotation> m_cVertical;
    QPointer<ChartAnnotation> m_cBox;
    QPointer<ChartAnnotation> m_cConnector;
    QPointer<ChartAnnotations> m_cAnnotations;
    QPointer<ChartAdapter> m_cChart;
    qint32 m_lColor = 0;
    qint32 m_lMode = ModeMark;
    qint32 m_lConstantLine = -1;
    Statistic m_cStatistic;
    QString m_sUnit;
    qint32 m_lIndex = -1;
    double m_dValue = 0.0;
    double m_dDateTime = 0.0;
    qint16 m_iAxis = 0;
    qint32 m_lTag = 0;
    QString m_sBoxPosition;
    QString m_sCustomText;
};
