// SPDX-License-Identifier: GPL-3.0-or-later
// Counts heap allocations: the benchmarks replace the global operator new, and the counter
// "allocs" reports the allocations per iteration, which must not grow with the data. Also the
// program's peak memory, for benchmarks that report it.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>

#include <sys/resource.h>

// Allocations through operator new since the start of the program.
std::int64_t AllocationCount();

// Reports the allocations made during its lifetime, per iteration, as the counter "allocs".
class AllocationCounter
{
public:
    explicit AllocationCounter(benchmark::State& state)
        : m_state(state)
        , m_start(AllocationCount())
    { }
    ~AllocationCounter()
    {
        m_state.counters["allocs"]
            = benchmark::Counter(static_cast<double>(AllocationCount() - m_start), benchmark::Counter::kAvgIterations);
    }

private:
    benchmark::State& m_state;
    std::int64_t m_start;
};

// The most memory the program has held so far, in MB.
inline double PeakMegabytes()
{
    rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_maxrss) / 1024.0;
}
