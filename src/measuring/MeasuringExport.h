// SPDX-License-Identifier: GPL-3.0-or-later
// The picture formats a view's chart is exported to, and the file-name rule of the export
// dialog. The export itself is part of Measuring (MeasuringExport.cpp).
#pragma once

#include <QSize>
#include <QString>

namespace MeasuringExport {

enum class Format { None, Svg, Bmp, Png, Pdf, Csv };

// Filters of the chart's export dialog, in this order; FilterIndex counts from 1.
inline constexpr int ChartFilterCount = 4;
QString ChartFilter(int filterIndex);
// "svg", "bmp", "png", "pdf" for filter 1 to 4; empty for any other index.
QString ChartExtension(int filterIndex);

// The chosen name with ".<extension>" appended unless its last three characters are the
// filter's extension exactly: "bild" gives "bild.svg", and so does "bild.svg", but
// "BILD.SVG" gets the extension again. An index without an extension leaves the name.
QString WithChartExtension(const QString& fileName, int filterIndex);

// The format a file name asks for, by its extension in any case.
Format FormatOf(const QString& fileName);

// The size a chart that was never on screen is pictured in.
inline constexpr QSize OffscreenChartSize { 1600, 900 };

} // namespace MeasuringExport
