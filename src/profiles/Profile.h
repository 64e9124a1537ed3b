// SPDX-License-Identifier: GPL-3.0-or-later
// A stored recipe for a standard view: the data module it belongs to, the tree level at which
// the user picks the entry point, the channels below that point by name with their look, and
// the chart's look. Profiles of the installation are kept in a ProfileCollection.
#pragma once

#include "GraphProperties.h"
#include "SeriesProperties.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <QtGlobal>

#include <memory>
#include <optional>
#include <vector>

class Profile
{
public:
    // An empty profile, as after Init.
    Profile();

    QString Name; ///< unique among the profiles; their key in the collection
    qint32 DataSourceID = 0; ///< the address of the data module the profile belongs to
    qint32 EntryLevel = 0; ///< depth of the entry point in the module's tree; 0 is a root node
    ::GraphProperties GraphProperties;

    // The channel names and their series looks are two parallel lists indexed from 1; index 0
    // exists and holds nothing. The count is the upper bound of the name list.
    qint32 ChannelCount() const;
    // Empty outside 1..ChannelCount.
    QString ChannelName(qint32 index) const;
    // An index above the count enlarges the list to it; an index below 1 is ignored.
    void SetChannelName(qint32 index, const QString& name);

    // None outside the list, and for a channel that has no look of its own.
    const ::SeriesProperties* SeriesProperties(qint32 index) const;
    ::SeriesProperties* SeriesProperties(qint32 index);
    // An index above the upper bound of the look list enlarges it; an index below 1 is ignored.
    // std::nullopt takes the look away.
    void SetSeriesProperties(qint32 index, std::optional<::SeriesProperties> properties);

    // Empties the channel lists and gives the profile new chart properties; name, data module
    // and entry level stay.
    void Init();

private:
    QStringList m_colChannelNames; // [0] unused
    std::vector<std::optional<::SeriesProperties>> m_colSeriesProperties; // [0] unused
};

using ProfilePtr = std::shared_ptr<Profile>;

// The profiles in the order they were added, each under a key of its own: the name it had
// when it was added. A key is taken once, and keys are compared exactly.
class ProfileCollection
{
public:
    qsizetype Count() const { return m_colProfiles.size(); }
    bool IsEmpty() const { return m_colProfiles.isEmpty(); }

    // False, leaving the collection as it was, when the key is taken or there is no profile.
    bool Add(ProfilePtr profile, const QString& key);
    bool Add(ProfilePtr profile); // under its name
    bool Contains(const QString& key) const { return m_byKey.contains(key); }
    // Nothing for a key that isn't there.
    ProfilePtr Item(const QString& key) const;
    // From 0; nothing or an empty key out of range.
    ProfilePtr At(qsizetype index) const;
    QString KeyAt(qsizetype index) const;
    // False when the key isn't there.
    bool Remove(const QString& key);
    void Clear();

    auto begin() const { return m_colProfiles.cbegin(); }
    auto end() const { return m_colProfiles.cend(); }

private:
    QList<ProfilePtr> m_colProfiles;
    QStringList m_colKeys; // parallel to m_colProfiles
    QHash<QString, ProfilePtr> m_byKey; // a file may hold many profiles: no linear look-ups
};
