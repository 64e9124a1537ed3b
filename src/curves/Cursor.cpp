// SPDX-License-Identifier: GPL-3.0-or-later
#include "Cursor.h"

#include "Calendar.h"
#include "ChartAdapter.h"
#include "ChartAnnotation.h"
#include "CurveColors.h"
#include "Formatter.h"
#include "ResStrings.h"
#include "Settings.h"

#include <QStringList>

#include <cmath>
#include <cstdlib>

namespace {

constexpr double Parked = -1000.0;
constexpr qint32 BoxBackColor = 0x00CFFFFF;
constexpr qint32 MarkColor = 0x00505050;
constexpr qint32 LineColor = 0x00606060;
constexpr int AttachFree = 5;
constexpr int AttachFixed = 0;

void Close(ChartAnnotation* object, bool colourIt)
{
    if (!object)
        return;
    object->SetAttachMode(AttachFixed);
    if (colourIt)
        object->SetColor(CurveColors::ToColor(MarkColor));
    object->SetChanging(false);
}

} // namespace

Cursor::Cursor()
{
    m_cStatistic.SetID(QStringLiteral("HP"));
    m_cStatistic.SetDisplayType(Statistic::DisplayCursor);
    m_cStatistic.SetVisible(true);
}

Cursor::~Cursor()
{
    if (!m_cAnnotations)
        return;
    for (ChartAnnotation* object : { m_cHorizontal.data(), m_cVertical.data(), m_cConnector.data(), m_cBox.data() })
        if (object)
            m_cAnnotations->Remove(object);
    if (m_cChart && m_lConstantLine >= 0) {
        m_cChart->SetConstantLineHidden(m_lConstantLine, true);
        m_cChart->Repaint();
    }
}

double Cursor::Left() const
{
    return m_cHorizontal ? m_cHorizontal->Left() : 0.0;
}

void Cursor::SetLeft(double left)
{
    if (!m_cHorizontal)
        return;
    const double shift = left - m_cHorizontal->Left();
    m_cHorizontal->SetLeft(left);
    if (m_cVertical)
        m_cVertical->SetLeft(m_cVertical->Left() + shift);
}

double Cursor::Top() const
{
    return m_cHorizontal ? m_cHorizontal->Top() : 0.0;
}

double Cursor::Height() const
{
    return m_cHorizontal ? m_cHorizontal->Height() : 0.0;
}

double Cursor::Width() const
{
    return m_cHorizontal ? m_cHorizontal->Width() : 0.0;
}

void Cursor::Initialize(ChartAdapter* chart, ChartAnnotations* annotations)
{
    m_cChart = chart;
    m_cAnnotations = annotations;
    if (!annotations)
        return;
    m_cHorizontal = annotations->AddLine();
    m_cHorizontal->SetGeometry(Parked, Parked, 16, 0);
    m_cHorizontal->SetLineWidth(2);
    m_cVertical = annotations->AddLine();
    m_cVertical->SetGeometry(Parked, Parked, 0, 16);
    m_cVertical->SetLineWidth(2);
    m_cConnector = annotations->AddLine();
    m_cConnector->SetGeometry(Parked, Parked, 0, 0);
    m_cConnector->SetDashPattern(QStringLiteral("1,1"));
    m_cBox = annotations->AddText();
    m_cBox->SetGeometry(m_cVertical->Left() - 40, m_cVertical->Top() - 25, 80, 20);
    m_cBox->SetBorder(false);
    m_cBox->SetWordWrap(false);
    m_cBox->SetBackColor(CurveColors::ToColor(BoxBackColor));
    m_cBox->SetText(QString());
    SetTag(m_lTag);
}

void Cursor::ReadFormat()
{
    m_cStatistic.ReadFromRegistry(Hive::CurrentUser,
        QString::fromLatin1(Settings::KeyIndizes) + QStringLiteral("\\Selection"), QStringLiteral("0.00 X"));
}

void Cursor::OpenForChange(ChartAnnotation* object)
{
    if (!object)
        return;
    object->SetAttachMode(AttachFree);
    object->SetChanging(true);
}

void Cursor::SetPoint(double x, double y, qint16 series, qint16 axis, double dateTime, double displayValue)
{
    Q_UNUSED(series);
    m_cStatistic.SetName(GetResString(355));
    m_cStatistic.SetValue(y);
    m_cStatistic.SetValueTime(dateTime);
    ReadFormat();
    const QString text = m_cStatistic.FormatedValue(m_sUnit, displayValue);

    for (ChartAnnotation* object : { m_cHorizontal.data(), m_cVertical.data(), m_cConnector.data(), m_cBox.data() })
        OpenForChange(object);
    if (m_cBox)
        m_cBox->SetText(m_sCustomText.isEmpty() ? text : m_sCustomText);

    m_iAxis = axis;
    if (m_lMode & ModeMark)
        PlaceMark(x, y);
    if (m_lMode & ModeLine)
        PlaceConstantLine(x);

    m_lIndex = static_cast<qint32>(std::lround(x));
    m_dValue = y;
    m_dDateTime = dateTime;
}

void Cursor::PlaceMark(double x, double y)
{
    if (!m_cChart || !m_cHorizontal || !m_cVertical || !m_cConnector)
        return;
    const QPointF pixel = m_cChart->PointToPixel(x + 1, y, m_iAxis);
    const double px = pixel.x();
    const double py = pixel.y();
    m_cHorizontal->SetGeometry(px - 8, py, 16, 0);
    m_cVertical->SetGeometry(px, py - 8, 0, 16);

    if (m_cBox) {
        const QStringList fields = m_sBoxPosition.split(QLatin1Char(';'));
        if (fields.size() == 4) {
            m_cBox->SetGeometry(px + fields[0].trimmed().toInt(), py + fields[1].trimmed().toInt(),
                fields[2].trimmed().toInt(), fields[3].trimmed().toInt());
        } else {
            m_cBox->SizeToFit();
            double top = py - 25;
            if (top < 10)
                top = 50; // keeps the box inside the chart
            m_cBox->SetGeometry(px - m_cBox->Width() / 2, top, m_cBox->Width(), m_cBox->Height());
        }
    }

    if (!Settings::IsTrue(Settings::Id::CursorLine) || !m_cBox) {
        m_cConnector->SetGeometry(px, py, 0, 0);
    } else {
        const double centreX = m_cBox->Left() + m_cBox->Width() / 2;
        const double centreY = m_cBox->Top() + m_cBox->Height() / 2;
        m_cConnector->SetGeometry(px, py, centreX - px, centreY - py);
    }

    Close(m_cHorizontal, true);
    Close(m_cVertical, true);
    Close(m_cConnector, true);
    Close(m_cBox, false);
}

void Cursor::PlaceConstantLine(double x)
{
    if (!m_cChart)
        return;
    if (m_lConstantLine < 0)
        m_lConstantLine = m_cChart->AddConstantLine();
    m_cChart->SetConstantLineAxis(m_lConstantLine, ChartAxis::X);
    m_cChart->SetConstantLineHidden(m_lConstantLine, false);
    m_cChart->SetConstantLineColor(m_lConstantLine, CurveColors::ToColor(LineColor));
    m_cChart->SetConstantLineWidth(m_lConstantLine, 1);
    m_cChart->SetConstantLineValue(m_lConstantLine, x + 1);
}

void Cursor::Hide()
{
    for (ChartAnnotation* object : { m_cHorizontal.data(), m_cVertical.data(), m_cConnector.data(), m_cBox.data() }) {
        if (!object)
            continue;
        OpenForChange(object);
        object->SetLeft(Parked);
    }
    if (!m_cChart)
        return;
    if (m_lConstantLine >= 0)
        m_cChart->SetConstantLineHidden(m_lConstantLine, true);
    m_cChart->Repaint();
}

void Cursor::DeleteBox()
{
    m_cBox = nullptr;
}

void Cursor::UpdateFormat()
{
    if (!m_sCustomText.isEmpty())
        return;
    ReadFormat();
    if (!m_cBox)
        return;
    OpenForChange(m_cBox);
    m_cBox->SetText(m_cStatistic.FormatedValue(m_sUnit, 0));
    m_cBox->SizeToFit();
    if (m_cVertical) {
        m_cBox->SetTop(m_cVertical->Top() - 25);
        m_cBox->SetLeft(std::round(m_cVertical->Left() + m_cVertical->Width() / 2 - m_cBox->Width() / 2));
    }
    Close(m_cBox, false);
}

qint32 Cursor::Tag() const
{
    return m_cBox ? m_cBox->Tag() : m_lTag;
}

void Cursor::SetTag(qint32 tag)
{
    m_lTag = tag;
    for (ChartAnnotation* object : { m_cHorizontal.data(), m_cVertical.data(), m_cConnector.data(), m_cBox.data() })
        if (object)
            object->SetTag(tag);
}

QString Cursor::Text() const
{
    return m_cBox ? m_cBox->Text() : QString();
}

void Cursor::SetCustomText(const QString& text)
{
    m_sCustomText = text;
    if (m_cBox)
        m_cBox->SetText(text.isEmpty() ? QStringLiteral(" ") : text);
}

void Cursor::SaveBoxPosition()
{
    if (!m_cHorizontal || !m_cBox)
        return;
    const long centreX = std::lround(m_cHorizontal->Left() + m_cHorizontal->Width() / 2);
    const long markY = std::lround(m_cHorizontal->Top());
    m_sBoxPosition = QStringLiteral("%1;%2;%3;%4")
                         .arg(std::lround(m_cBox->Left()) - centreX)
                         .arg(std::lround(m_cBox->Top()) - markY)
                         .arg(std::lround(m_cBox->Width()))
                         .arg(std::lround(m_cBox->Height()));
}

QString Cursor::BuildDifference(const Cursor& other) const
{
    const double difference = std::abs(other.m_dValue - m_dValue);
    std::int64_t seconds = std::llabs(Calendar::WholeSeconds(other.m_dDateTime) - Calendar::WholeSeconds(m_dDateTime));
    const Formatter formatter;
    QString time;
    if (seconds < 31536000) {
        // Parts are built from the top; a part that is zero in the middle is left out.
        if (seconds >= 86400) {
            time += formatter.FormatNumber(double(seconds / 86400), u"00\\d ");
            seconds %= 86400;
        }
        if (seconds >= 3600) {
            time += formatter.FormatNumber(double(seconds / 3600), u"00\\h ");
            seconds %= 3600;
        }
        if (seconds >= 60) {
            time += formatter.FormatNumber(double(seconds / 60), u"00\\m ");
            seconds %= 60;
        }
    }
    time += formatter.FormatNumber(double(seconds), u"00\\s");
    return formatter.FormatNumber(difference, u"0.00") + QLatin1Char(' ') + m_sUnit + QStringLiteral("  (") + time
        + QLatin1Char(')');
}

ChartAnnotation* Cursor::Box() const
{
    return m_cBox;
}

ChartAnnotation* Cursor::Connector() const
{
    return m_cConnector;
}

ChartAnnotation* Cursor::HorizontalBar() const
{
    return m_cHorizontal;
}

ChartAnnotation* Cursor::VerticalBar() const
{
    return m_cVertical;
}
