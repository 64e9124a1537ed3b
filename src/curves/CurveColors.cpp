// SPDX-License-Identifier: GPL-3.0-or-later
#include "CurveColors.h"

#include <array>

namespace CurveColors {

namespace {

constexpr std::array<qint32, 9> Palette = {
    Rgb(255, 0, 0),
    Rgb(0, 255, 0),
    Rgb(0, 0, 255),
    Rgb(128, 0, 0),
    Rgb(0, 128, 0),
    Rgb(0, 0, 128),
    Rgb(255, 128, 128),
    Rgb(128, 255, 128),
    Rgb(128, 128, 255),
};

// red, green, blue, magenta, cyan, black, yellow
constexpr std::array<qint32, 7> ResetColors
    = { 0x000000FF, 0x0000FF00, 0x00FF0000, 0x00FF00FF, 0x00FFFF00, 0x00000000, 0x0000FFFF };

} // namespace

QColor ToColor(qint32 bgr)
{
    return QColor(bgr & 0xFF, (bgr >> 8) & 0xFF, (bgr >> 16) & 0xFF);
}

qint32 FromColor(const QColor& color)
{
    return Rgb(color.red(), color.green(), color.blue());
}

int PaletteSize()
{
    return static_cast<int>(Palette.size());
}

qint32 PaletteColor(int position)
{
    return position >= 0 && position < PaletteSize() ? Palette[static_cast<size_t>(position)] : Palette[0];
}

qint32 LeastUsed(const QList<qint32>& usedColors)
{
    qint32 best = Palette[0];
    qsizetype bestCount = -1;
    for (const qint32 color : Palette) {
        const qsizetype count = usedColors.count(color);
        if (bestCount < 0 || count < bestCount) {
            best = color;
            bestCount = count;
        }
    }
    return best;
}

std::optional<qint32> ResetColor(qint32 seriesID)
{
    if (seriesID < 0 || seriesID >= static_cast<qint32>(ResetColors.size()))
        return std::nullopt;
    return ResetColors[static_cast<size_t>(seriesID)];
}

} // namespace CurveColors
