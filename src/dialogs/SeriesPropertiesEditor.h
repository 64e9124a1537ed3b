// SPDX-License-Identifier: GPL-3.0-or-later
// The fields of a curve's look: chart type, colour, line style and width, markers.
#pragma once

#include "SeriesProperties.h"

#include <QColor>
#include <QWidget>

class QCheckBox;
class QComboBox;
class QSpinBox;
class QToolButton;

class SeriesPropertiesEditor : public QWidget
{
    Q_OBJECT
public:
    // Line widths the editor offers; keys that lead outside are refused.
    static constexpr int MinLineWidth = 1;
    static constexpr int MaxLineWidth = 20;

    explicit SeriesPropertiesEditor(QWidget* parent = nullptr);

    // Shows the properties; the fields count as unedited afterwards.
    void Load(const SeriesProperties& properties);
    // The loaded properties with the fields the user changed since Load.
    SeriesProperties Values() const;
    // Writes only the fields the user changed since Load into target.
    void Save(SeriesProperties& target) const;
    // True when any field was changed since Load.
    bool Edited() const;

    QColor Color() const { return m_color; }
    // Takes a colour as if chosen with the colour button.
    void SetColor(const QColor& color);

signals:
    void Changed();

private:
    void ChooseColor();
    void ShowColor();

    SeriesProperties m_loaded;
    QColor m_color;
    bool m_galleryEdited = false;
    bool m_colorEdited = false;
    bool m_styleEdited = false;
    bool m_widthEdited = false;
    bool m_markerEdited = false;
    QComboBox* m_gallery = nullptr;
    QToolButton* m_colorButton = nullptr;
    QComboBox* m_lineStyle = nullptr;
    QSpinBox* m_lineWidth = nullptr;
    QCheckBox* m_marker = nullptr;
};
