// SPDX-License-Identifier: GPL-3.0-or-later
// The statistics whose display formats the user edits, their defaults, storage and sample text.
#pragma once

#include "Formatter.h"

#include <QString>

#include <array>

// One statistic as the format editor lists it.
struct IndizesEntry
{
    const char* key; ///< its name under the Indizes key of the settings
    int nameId; ///< string id of its text in the list
};

// The display settings of one statistic.
struct IndizesFormat
{
    bool show = true; ///< the statistic is offered for curves
    QString formatNumber; ///< number mask; every "X" stands for the curve's unit
    bool useDate = true; ///< the time stamp follows the number
    QString formatDate; ///< date mask of the time stamp

    bool operator==(const IndizesFormat&) const = default;
};

class IndizesRules
{
public:
    static constexpr int EntryCount = 7;

    // The statistics in list order.
    static const std::array<IndizesEntry, EntryCount>& Entries();

    // The number mask a statistic has while none is stored.
    static QString DefaultNumberFormat(const QString& key);
    static QString DefaultDateFormat();

    // The statistic's settings as a view reads them: stored values or their defaults.
    static IndizesFormat Read(const QString& key);
    // Writes all four values of the statistic to the per-user settings.
    static void Write(const QString& key, const IndizesFormat& format);

    // The sample: a fixed value in a fixed unit, with a fixed time stamp.
    static constexpr double SampleValue = 1234.5678;
    static QString SampleUnit();
    static double SampleDate();

    // The sample formatted as a statistic with these settings shows its value: the number
    // mask with every "X" replaced by the quoted unit, then a blank and the time stamp when
    // it is used. An empty mask shows as the statistic's default one, since that is what a
    // view reading the stored empty mask takes.
    static QString Sample(const QString& key, const IndizesFormat& format, const Formatter& formatter = Formatter());
};
