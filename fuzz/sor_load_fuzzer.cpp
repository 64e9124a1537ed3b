// SPDX-License-Identifier: GPL-3.0-or-later
// Reads arbitrary bytes as a view file, writes what was read and reads that back: the
// structure and every number and flag must survive, and a second round must change nothing.
#include "SoranoFileHandler.h"

#include <cstddef>
#include <cstdint>

namespace {

void Check(bool condition)
{
    if (!condition)
        __builtin_trap();
}

// Texts may change on the first round (line ends, whitespace-only texts, dates in another
// form), and the curves group is always written; everything else must stay.
bool SameShape(const MeasuringFile& a, const MeasuringFile& b)
{
    if (a.autoScale != b.autoScale || a.intervalCount != b.intervalCount || a.showStatistics != b.showStatistics
        || a.viewMode != b.viewMode || a.annotationVisible != b.annotationVisible
        || a.modules.size() != b.modules.size() || a.graph.Gallery != b.graph.Gallery
        || a.graph.Legend != b.graph.Legend || a.graph.View3D != b.graph.View3D
        || a.graph.ShowYGrid1 != b.graph.ShowYGrid1 || a.graph.ShowYGrid2 != b.graph.ShowYGrid2 || !b.hasCurves
        || a.curves.size() != b.curves.size())
        return false;
    for (qsizetype i = 0; i < a.curves.size(); ++i) {
        const MeasuringFile::Curve& c = a.curves[i];
        const MeasuringFile::Curve& d = b.curves[i];
        // A missing axis is written as axis 0.
        if (c.visible != d.visible || c.yAxis.value_or(0) != d.yAxis.value_or(0)
            || c.channels.size() != d.channels.size() || c.series != d.series
            || c.statistics.size() != d.statistics.size() || c.cursors.size() != d.cursors.size())
            return false;
        for (qsizetype s = 0; s < c.statistics.size(); ++s) {
            if (c.statistics[s].visible != d.statistics[s].visible)
                return false;
        }
        for (qsizetype s = 0; s < c.cursors.size(); ++s) {
            if (c.cursors[s].visible != d.cursors[s].visible)
                return false;
        }
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray input(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    MeasuringFile first;
    if (!SoranoFileHandler::LoadFromBytes(input, first)) {
        Check(first == MeasuringFile());
        return 0;
    }

    MeasuringFile second;
    Check(SoranoFileHandler::LoadFromBytes(SoranoFileHandler::SaveToBytes(first), second));
    Check(SameShape(first, second));

    MeasuringFile third;
    Check(SoranoFileHandler::LoadFromBytes(SoranoFileHandler::SaveToBytes(second), third));
    Check(third == second);
    return 0;
}
