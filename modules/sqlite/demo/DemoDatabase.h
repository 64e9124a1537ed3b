// SPDX-License-Identifier: GPL-3.0-or-later
// Writes the demo logger database: one site, two buildings, five loggers with power, reactive
// power, cos phi, energy and outside temperature, computed from fixed formulas and a fixed seed.
#pragma once

#include <QString>

#include <cstdint>

struct DemoOptions
{
    // Days per logger from its first day; 0 writes the full periods (two years of 15-minute
    // data, three months of minute data). A shorter run writes the beginning of the full one.
    int days = 0;
};

struct DemoSummary
{
    int channels = 0;
    std::int64_t samples = 0;
};

// Writes the database to path, replacing a file that is there: the data goes into a file beside
// it first, which is renamed over the path only when complete. Returns "" on success, else a
// description of what failed.
QString WriteDemoDatabase(const QString& path, const DemoOptions& options, DemoSummary* summary = nullptr);
