// SPDX-License-Identifier: GPL-3.0-or-later
// Reads and writes view files (.sor): XML with the root "sorano-measuring", values as
// element texts only. Parsing and writing alone; the measuring document applies the result.
#pragma once

#include "MeasuringFile.h"

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <functional>

namespace SoranoFileHandler {

namespace SaveResult {
constexpr qint32 Ok = 0;
constexpr qint32 NoPath = -2; // the tree was built and dropped
constexpr qint32 WriteFailed = -3; // the old file, if any, is left whole
} // namespace SaveResult

// Writes the file atomically (a temporary file renamed over the old one), as UTF-8.
qint32 Save(const QString& path, const MeasuringFile& file);
// The file's bytes as Save writes them.
QByteArray SaveToBytes(const MeasuringFile& file);

// Always 0: a file that is missing, can't be parsed or has another root leaves `file` as it
// was, and the caller goes on with an empty view. Otherwise `file` takes what the file holds:
// on entry it holds the view's own values, which stand where the file lacks a group or an
// element without reading default. `isViewFile` tells the two apart.
qint32 Load(const QString& path, MeasuringFile& file, bool* isViewFile = nullptr);
// The same on bytes in memory; true when they are a view file and `file` was replaced.
bool LoadFromBytes(const QByteArray& bytes, MeasuringFile& file);

// Chart types: 1 "lines", 2 "bar", 8 "step"; any other number writes an empty text.
// Reading ignores case and gives 0 for any other word.
QString GalleryWord(qint32 gallery);
qint32 GalleryFromWord(const QString& word);

// Line styles: 0 "solid", 1 "dash", 2 "dot", 3 "dashdot", 4 "dashdotdot", -1 "none".
// Any other number writes "solid"; any other word reads as 0.
QString LineStyleWord(qint32 style);
qint32 LineStyleFromWord(const QString& word);

// 1 is "chart", anything else "grid"; reading gives 2 for "grid" (any case), else 1.
QString ViewModeWord(qint32 mode);
qint32 ViewModeFromWord(const QString& word);

// Channel keys of files written by the "talven" edition before module addresses were part
// of them: "<a>$<logger><nnn>" without a "#". In that edition such a key becomes
// "<a>$<logger id>#<n>", the logger id read from the machine-wide Quandel keys under the
// logger's name (newMeasuringId() when that is empty) and n the last three characters as a
// plain number ("007" gives 7). Every other key, and every key in other editions, is
// returned as it is.
QString ConvertOldChannelKey(const QString& key, const std::function<QString()>& newMeasuringId);

} // namespace SoranoFileHandler
