// SPDX-License-Identifier: GPL-3.0-or-later
// Preparing large fresh buffers for being filled.
//
// A refresh fills tens of megabytes of new memory (samples, grid columns, curve results, chart
// points), which the system otherwise hands out page by page on first touch; on virtual
// machines those faults cost more than the work done on the values. The helpers only advise
// the system about whole pages inside a buffer and leave its contents alone; where the system
// can't follow the advice, nothing happens.
#pragma once

#include <cstddef>
#include <cstdint>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace FreshMemory {

namespace Detail {

// Below this a buffer is left alone.
constexpr std::size_t MinAdvisedBytes = std::size_t(1) << 20;

inline void Advise(const void* data, std::size_t bytes, std::uintptr_t alignment, int advice)
{
#if defined(__linux__)
    const auto begin = reinterpret_cast<std::uintptr_t>(data);
    const std::uintptr_t first = (begin + alignment - 1) & ~(alignment - 1);
    const std::uintptr_t last = (begin + bytes) & ~(alignment - 1);
    if (last > first)
        madvise(reinterpret_cast<void*>(first), last - first, advice);
#else
    (void)data;
    (void)bytes;
    (void)alignment;
    (void)advice;
#endif
}

} // namespace Detail

// Huge pages for a buffer that may stay partly unused: memory is still taken only on touch.
inline void AskForHugePages(const void* data, std::size_t bytes)
{
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    if (bytes >= Detail::MinAdvisedBytes)
        Detail::Advise(data, bytes, std::uintptr_t(1) << 21, MADV_HUGEPAGE);
#else
    (void)data;
    (void)bytes;
#endif
}

// Huge pages, and all pages mapped at once, for a buffer that is about to be filled completely.
inline void PrepareForWriting(const void* data, std::size_t bytes)
{
    AskForHugePages(data, bytes);
#if defined(__linux__)
#if defined(MADV_POPULATE_WRITE)
    constexpr int PopulateWrite = MADV_POPULATE_WRITE;
#else
    constexpr int PopulateWrite = 23; // Linux 5.14; older kernels refuse it
#endif
    if (bytes >= Detail::MinAdvisedBytes)
        Detail::Advise(data, bytes, 4096, PopulateWrite);
#endif
}

// A vector of `count` zeros in memory prepared as above: the zeroing then runs at memory speed.
template <typename Vector>
Vector Zeros(std::size_t count)
{
    Vector vector;
    vector.reserve(count);
    PrepareForWriting(vector.data(), count * sizeof(typename Vector::value_type));
    vector.resize(count);
    return vector;
}

} // namespace FreshMemory
