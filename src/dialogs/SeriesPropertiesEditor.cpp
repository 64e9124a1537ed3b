// SPDX-License-Identifier: GPL-3.0-or-later
#include "SeriesPropertiesEditor.h"

#include "ChartAdapter.h"
#include "CurveColors.h"
#include "ResStrings.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QFormLayout>
#include <QPainter>
#include <QPixmap>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QToolButton>

namespace {

// A sample of a pen style, since the styles have no names of their own; none stays blank.
QIcon LineStyleIcon(int style)
{
    QPixmap picture(48, 12);
    picture.fill(Qt::transparent);
    static const Qt::PenStyle pens[]
        = { Qt::SolidLine, Qt::DashLine, Qt::DotLine, Qt::DashDotLine, Qt::DashDotDotLine };
    if (style >= 0 && style < 5) {
        QPainter painter(&picture);
        painter.setPen(QPen(Qt::black, 2, pens[style]));
        painter.drawLine(2, 6, 46, 6);
    }
    return QIcon(picture);
}

QIcon ColorIcon(const QColor& color)
{
    QPixmap picture(32, 14);
    picture.fill(color);
    return QIcon(picture);
}

// Selects the entry with the value; no entry for a value the list doesn't offer, so that
// saving keeps it.
void SelectData(QComboBox* box, int value)
{
    box->setCurrentIndex(box->findData(value));
}

} // namespace

SeriesPropertiesEditor::SeriesPropertiesEditor(QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("SeriesPropertiesEditor"));
    m_gallery = new QComboBox(this);
    m_gallery->setObjectName(QStringLiteral("cbo_Gallery"));
    m_gallery->addItem(GetResString(402), 0); // the chart's own type
    m_gallery->addItem(GetResString(403), ChartGallery::Lines);
    m_gallery->addItem(GetResString(404), ChartGallery::Bar);
    m_gallery->addItem(GetResString(405), ChartGallery::Step);

    m_colorButton = new QToolButton(this);
    m_colorButton->setObjectName(QStringLiteral("cmd_Color"));
    m_colorButton->setIconSize(QSize(32, 14));

    m_lineStyle = new QComboBox(this);
    m_lineStyle->setObjectName(QStringLiteral("cbo_LineStyle"));
    m_lineStyle->setIconSize(QSize(48, 12));
    for (int style : { 0, 1, 2, 3, 4, -1 })
        m_lineStyle->addItem(LineStyleIcon(style), QString(), style);

    m_lineWidth = new QSpinBox(this);
    m_lineWidth->setObjectName(QStringLiteral("spn_LineWidth"));
    m_lineWidth->setRange(MinLineWidth, MaxLineWidth);
    m_lineWidth->setCorrectionMode(QAbstractSpinBox::CorrectToPreviousValue); // a cleared field takes back its width

    m_marker = new QCheckBox(GetResString(421), this);
    m_marker->setObjectName(QStringLiteral("chk_Marker"));

    auto* layout = new QFormLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addRow(GetResString(414), m_gallery);
    layout->addRow(GetResString(415), m_colorButton);
    layout->addRow(GetResString(419), m_lineStyle);
    layout->addRow(GetResString(420), m_lineWidth);
    layout->addRow(QString(), m_marker);

    connect(m_gallery, &QComboBox::currentIndexChanged, this, [this] {
        m_galleryEdited = true;
        emit Changed();
    });
    connect(m_lineStyle, &QComboBox::currentIndexChanged, this, [this] {
        m_styleEdited = true;
        emit Changed();
    });
    connect(m_lineWidth, &QSpinBox::valueChanged, this, [this] {
        m_widthEdited = true;
        emit Changed();
    });
    connect(m_marker, &QCheckBox::toggled, this, [this] {
        m_markerEdited = true;
        emit Changed();
    });
    connect(m_colorButton, &QToolButton::clicked, this, &SeriesPropertiesEditor::ChooseColor);
    Load(SeriesProperties());
}

void SeriesPropertiesEditor::Load(const SeriesProperties& properties)
{
    m_loaded = properties;
    {
        const QSignalBlocker b1(m_gallery), b2(m_lineStyle), b3(m_lineWidth), b4(m_marker);
        SelectData(m_gallery, properties.Gallery);
        SelectData(m_lineStyle, properties.LineStyle);
        m_lineWidth->setValue(properties.LineWidth);
        m_marker->setChecked(properties.Marker);
    }
    m_color = CurveColors::ToColor(properties.Color);
    ShowColor();
    m_galleryEdited = m_colorEdited = m_styleEdited = m_widthEdited = m_markerEdited = false;
}

SeriesProperties SeriesPropertiesEditor::Values() const
{
    SeriesProperties values = m_loaded;
    Save(values);
    return values;
}

void SeriesPropertiesEditor::Save(SeriesProperties& target) const
{
    if (m_galleryEdited && m_gallery->currentIndex() >= 0)
        target.Gallery = m_gallery->currentData().toInt();
    if (m_colorEdited)
        target.Color = CurveColors::FromColor(m_color);
    if (m_styleEdited && m_lineStyle->currentIndex() >= 0)
        target.LineStyle = m_lineStyle->currentData().toInt();
    if (m_widthEdited)
        target.LineWidth = m_lineWidth->value();
    if (m_markerEdited)
        target.Marker = m_marker->isChecked();
}

bool SeriesPropertiesEditor::Edited() const
{
    const SeriesProperties values = Values();
    return values.Gallery != m_loaded.Gallery || values.Color != m_loaded.Color
        || values.LineStyle != m_loaded.LineStyle || values.LineWidth != m_loaded.LineWidth
        || values.Marker != m_loaded.Marker;
}

void SeriesPropertiesEditor::SetColor(const QColor& color)
{
    if (!color.isValid())
        return;
    m_color = color;
    m_colorEdited = true;
    ShowColor();
    emit Changed();
}

void SeriesPropertiesEditor::ChooseColor()
{
    const QColor chosen = QColorDialog::getColor(
        m_color, this, GetResString(415).remove(QLatin1Char(':')), QColorDialog::DontUseNativeDialog);
    SetColor(chosen); // an invalid colour means Cancel
}

void SeriesPropertiesEditor::ShowColor()
{
    m_colorButton->setIcon(ColorIcon(m_color));
}
