// SPDX-License-Identifier: GPL-3.0-or-later
// The edited list of a view's curves: which channels each sums, in which order, and how the
// view is brought in line with it.
#pragma once

#include <QString>
#include <QStringList>

#include <vector>

class Measuring;

class CurveListEdit
{
public:
    // One curve of the list: the channel keys "<address>$<id>" it sums, the first naming it,
    // and the ID of the view's curve it stands for (empty for a curve added in the list).
    struct Entry
    {
        QString origin;
        QStringList keys;
        bool operator==(const Entry&) const = default;
    };

    CurveListEdit() = default;
    explicit CurveListEdit(std::vector<Entry> entries);
    // The view's curves in their order, each standing for itself.
    static CurveListEdit FromView(const Measuring& measuring);

    const std::vector<Entry>& Entries() const { return m_entries; }
    qsizetype Count() const { return qsizetype(m_entries.size()); }
    // The curve whose first channel is the key, or -1.
    qsizetype IndexOf(const QString& key) const;

    // Appends a curve of the channel; -1 (nothing changes) when the key is empty or already a
    // curve's first channel, else the new curve's index.
    qsizetype Add(const QString& key);
    bool Remove(qsizetype index);
    // Moves a curve by delta places; false when it would leave the list.
    bool Move(qsizetype index, qsizetype delta);
    // Adds the channel to the curve, which then shows their sum; false when the curve has it.
    bool Join(qsizetype index, const QString& key);
    // Takes a further channel (part from 1) out of a sum. The first channel names the curve and
    // only goes with the curve itself.
    bool Split(qsizetype index, qsizetype part);

    // True when the list differs from the one it started from.
    bool Changed() const { return m_entries != m_original; }

    // Brings the view in line with the list: curves removed, channels taken out and added,
    // new curves added, the order as in the list; then one refresh with fetching. A channel of
    // a module the view does not use yet brings that module in from the offered ones. False
    // when nothing had to change (the view is left alone).
    bool ApplyTo(Measuring& measuring) const;

private:
    std::vector<Entry> m_original;
    std::vector<Entry> m_entries;
};
