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

// The statistic IDs of a curve that pass the test, as the view's "|1|2|" lists.
template<typename Test> QString StatisticList(const Curve& curve, Test test)
{
    QString list = QStringLiteral("|");
    for (const auto& statistic : curve.Statistics())
        if (test(*statistic))
            list += statistic->ID() + QLatin1Char('|');
    return list;
}

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

    // The view can only append curves, so from the first curve out of its place on, the kept
    // curves are made anew behind the ones before, with their look and statistics.
    std::vector<QString> kept;
    for (const auto& curve : measuring.Curves())
        kept.push_back(curve->ID());
    size_t inPlace = 0;
    while (inPlace < kept.size() && inPlace < m_entries.size() && m_entries[inPlace].origin == kept[inPlace])
        ++inPlace;
    struct Look
    {
        SeriesProperties properties;
        QString used;
        QString visible;
    };
    std::vector<std::pair<QString, Look>> remade;
    for (size_t i = inPlace; i < kept.size(); ++i) {
        const Curve* curve = measuring.FindCurve(kept[i]);
        remade.push_back({ kept[i],
            Look { curve->Properties(), StatisticList(*curve, [](const Statistic& s) { return s.Used(); }),
                StatisticList(*curve, [](const Statistic& s) { return s.Used() && s.Visible(); }) } });
        measuring.RemoveCurve(kept[i]);
    }

    for (const Entry& entry : m_entries)
        for (const QString& key : entry.keys)
            UseModuleOf(measuring, key);

    for (size_t i = 0; i < m_entries.size(); ++i) {
        const Entry& entry = m_entries[i];
        Curve* curve = nullptr;
        if (i < inPlace) {
            curve = measuring.FindCurve(entry.origin);
            // Channels the sum no longer holds go first, so that a channel may come back.
            std::vector<QString> gone;
            for (const CurveChannel& channel : curve->Channels())
                if (!entry.keys.contains(channel.key))
                    gone.push_back(channel.key);
            for (const QString& key : gone)
                curve->RemoveMatrix(key);
        } else {
            const auto look
                = std::find_if(remade.begin(), remade.end(), [&](const auto& r) { return r.first == entry.origin; });
            if (look != remade.end())
                curve = measuring.AddCurve(
                    entry.keys.value(0), false, look->second.used, look->second.visible, &look->second.properties);
            else
                curve = measuring.AddCurve(entry.keys.value(0), false, QString(), QString(), nullptr);
        }
        if (!curve)
            continue;
        for (const QString& key : entry.keys)
            if (!curve->Channel(key))
                measuring.AddChannel(*curve, key);
    }
    measuring.Refresh(true);
    return true;
}
