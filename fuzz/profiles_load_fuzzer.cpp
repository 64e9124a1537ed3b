// SPDX-License-Identifier: GPL-3.0-or-later
// Reads arbitrary bytes as a profile file, writes what was read and reads that back: every
// profile, channel and value must survive, except the line styles, which are written as words
// and read as numbers; a second round must change nothing.
#include "ProfileFileHandler.h"

#include <cstddef>
#include <cstdint>

namespace {

void Check(bool condition)
{
    if (!condition)
        __builtin_trap();
}

bool SameLook(const SeriesProperties* a, const SeriesProperties* b, bool sameStyle)
{
    if (!a || !b)
        return !a && !b;
    return a->Gallery == b->Gallery && a->Color == b->Color && a->LineWidth == b->LineWidth && a->Marker == b->Marker
        && (sameStyle ? a->LineStyle == b->LineStyle : b->LineStyle == 0);
}

bool Same(const ProfileCollection& a, const ProfileCollection& b, bool sameStyle)
{
    if (a.Count() != b.Count())
        return false;
    for (qsizetype i = 0; i < a.Count(); ++i) {
        const Profile& p = *a.At(i);
        const Profile& q = *b.At(i);
        const GraphProperties& g = p.GraphProperties;
        const GraphProperties& h = q.GraphProperties;
        if (a.KeyAt(i) != b.KeyAt(i) || p.Name != q.Name || p.DataSourceID != q.DataSourceID
            || p.EntryLevel != q.EntryLevel || p.ChannelCount() != q.ChannelCount() || g.Gallery != h.Gallery
            || g.Legend != h.Legend || g.View3D != h.View3D || g.ShowYGrid1 != h.ShowYGrid1
            || g.ShowYGrid2 != h.ShowYGrid2)
            return false;
        for (qint32 c = 1; c <= p.ChannelCount(); ++c) {
            if (p.ChannelName(c) != q.ChannelName(c)
                || !SameLook(p.SeriesProperties(c), q.SeriesProperties(c), sameStyle))
                return false;
        }
    }
    return true;
}

ProfileCollection Reread(const ProfileCollection& profiles)
{
    ProfileCollection copy = profiles;
    ProfileFileHandler writer;
    writer.SetProfiles(&copy);
    const QByteArray bytes = writer.SaveToBytes();

    ProfileCollection back;
    ProfileFileHandler reader;
    reader.SetProfiles(&back);
    Check(reader.LoadFromBytes(bytes) == 0);
    return back;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray input(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    ProfileCollection first;
    ProfileFileHandler handler;
    handler.SetProfiles(&first);
    Check(handler.LoadFromBytes(input) == 0);

    const ProfileCollection second = Reread(first);
    Check(Same(first, second, false));
    Check(Same(second, Reread(second), true));
    return 0;
}
