// SPDX-License-Identifier: GPL-3.0-or-later
#include "CurveListEdit.h"

#include "Measuring.h"

#include <algorithm>

CurveListEdit::CurveListEdit(std::vector<Entry> entries)
    : m_original(entries)
    , m_entries(std::move(entries))
{ }

CurveListEdit CurveListEdit::FromView(const Measuring& measuring)
{
    std::vector<Entry> entries;
    for (const auto& curve : measuring.Curves()) {
        Entry entry { curve->ID(), {} };
        for (const CurveChannel& channel : curve->Channels())
            entry.keys << channel.key;
        if (entry.keys.isEmpty())
            entry.keys << curve->ID();
        entries.push_back(std::move(entry));
    }
    return CurveListEdit(std::move(entries));
}

qsizetype CurveListEdit::IndexOf(const QString& key) const
{
    for (qsizetype i = 0; i < Count(); ++i)
        if (m_entries[size_t(i)].keys.value(0) == key)
            return i;
    return -1;
}

qsizetype CurveListEdit::Add(const QString& key)
{
    if (key.isEmpty() || IndexOf(key) >= 0)
        return -1;
    m_entries.push_back(Entry { QString(), { key } });
    return Count() - 1;
}

bool CurveListEdit::Remove(qsizetype index)
{
    if (index < 0 || index >= Count())
        return false;
    m_entries.erase(m_entries.begin() + index);
    return true;
}

bool CurveListEdit::Move(qsizetype index, qsizetype delta)
{
    const qsizetype target = index + delta;
    if (index < 0 || index >= Count() || target < 0 || target >= Count() || delta == 0)
        return false;
    Entry moving = std::move(m_entries[size_t(index)]);
    m_entries.erase(m_entries.begin() + index);
    m_entries.insert(m_entries.begin() + target, std::move(moving));
    return true;
}

bool CurveListEdit::Join(qsizetype index, const QString& key)
{
    if (index < 0 || index >= Count() || key.isEmpty() || m_entries[size_t(index)].keys.contains(key))
        return false;
    m_entries[size_t(index)].keys << key;
    return true;
}

bool CurveListEdit::Split(qsizetype index, qsizetype part)
{
    if (index < 0 || index >= Count())
        return false;
    QStringList& keys = m_entries[size_t(index)].keys;
    if (part < 1 || part >= keys.size())
        return false;
    keys.removeAt(part);
    return true;
}

namespace {

// Makes the module of the channel "<address>$<id>" one of the view's, when it is not yet and
// the application offers it: its channel list is read first, as opening a view file does.
void UseModuleOf(Measuring& measuring, const QString& key)
{
    const QString address = key.section(QLatin1Char('$'), 0, 0);
    if (address.isEmpty() || measuring.DataModules().Contains(address))
        return;
    const ModuleBoxPtr box = measuring.OfferedModules().Item(address);
    if (box && box->GetChannelList(nullptr) == 1)
        measuring.DataModules().Add(box);
}

} // namespace

bool CurveListEdit::ApplyTo(Measuring& measuring) const
{
    if (!Changed())
        return false;

    // A curve the list no longer holds leaves the view.
    for (const Entry& old : m_original)
        if (std::none_of(m_entries.begin(), m_entries.end(), [&](const Entry& e) { return e.origin == old.origin; }))
            measuring.RemoveCurve(old.origin);

    for (const Entry& entry : m_entries)
        for (const QString& key : entry.keys)
            UseModuleOf(measuring, key);

    // Kept curves change their channels, new ones are appended; then all take their places.
    std::vector<QString> order;
    for (const Entry& entry : m_entries) {
        Curve* curve = entry.origin.isEmpty() ? nullptr : measuring.FindCurve(entry.origin);
        if (curve) {
            // Channels the sum no longer holds go first, so that a channel may come back.
            std::vector<QString> gone;
            for (const CurveChannel& channel : curve->Channels())
                if (!entry.keys.contains(channel.key))
                    gone.push_back(channel.key);
            for (const QString& key : gone)
                curve->RemoveMatrix(key);
        } else {
            curve = measuring.AddCurve(entry.keys.value(0), false, QString(), QString(), nullptr);
        }
        if (!curve)
            continue;
        for (const QString& key : entry.keys)
            if (!curve->Channel(key))
                measuring.AddChannel(*curve, key);
        order.push_back(curve->ID());
    }
    for (size_t i = 0; i < order.size(); ++i)
        measuring.MoveCurve(order[i], qsizetype(i));
    measuring.Refresh(true);
    return true;
}
