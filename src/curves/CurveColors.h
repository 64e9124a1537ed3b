// SPDX-License-Identifier: GPL-3.0-or-later
// Colours as views and files store them (0x00BBGGRR), and the colour tables of new curves.
#pragma once

#include <QColor>
#include <QList>
#include <QtGlobal>

#include <optional>

namespace CurveColors {

QColor ToColor(qint32 bgr);
qint32 FromColor(const QColor& color);
constexpr qint32 Rgb(int red, int green, int blue)
{
    return (red & 0xFF) | ((green & 0xFF) << 8) | ((blue & 0xFF) << 16);
}

// The palette new curves choose from.
int PaletteSize();
qint32 PaletteColor(int position);
// The palette colour used by the fewest of the given colours, the first one on a tie.
qint32 LeastUsed(const QList<qint32>& usedColors);

// The colour a curve takes back when colours are reset, by its series index; nothing for
// an index outside the table, which keeps the curve's colour.
std::optional<qint32> ResetColor(qint32 seriesID);

} // namespace CurveColors
