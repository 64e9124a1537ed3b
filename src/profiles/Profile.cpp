// SPDX-License-Identifier: GPL-3.0-or-later
#include "Profile.h"

#include <utility>

Profile::Profile()
{
    Init();
}

void Profile::Init()
{
    GraphProperties = ::GraphProperties();
    m_colChannelNames = QStringList { QString() };
    m_colSeriesProperties.assign(1, std::nullopt);
}

qint32 Profile::ChannelCount() const
{
    return static_cast<qint32>(m_colChannelNames.size() - 1);
}

QString Profile::ChannelName(qint32 index) const
{
    return index >= 1 && index < m_colChannelNames.size() ? m_colChannelNames.at(index) : QString();
}

void Profile::SetChannelName(qint32 index, const QString& name)
{
    if (index < 1)
        return;
    if (index >= m_colChannelNames.size())
        m_colChannelNames.resize(qsizetype(index) + 1);
    m_colChannelNames[index] = name;
}

const ::SeriesProperties* Profile::SeriesProperties(qint32 index) const
{
    if (index < 1 || size_t(index) >= m_colSeriesProperties.size() || !m_colSeriesProperties[size_t(index)])
        return nullptr;
    return &*m_colSeriesProperties[size_t(index)];
}

::SeriesProperties* Profile::SeriesProperties(qint32 index)
{
    return const_cast<::SeriesProperties*>(std::as_const(*this).SeriesProperties(index));
}

void Profile::SetSeriesProperties(qint32 index, std::optional<::SeriesProperties> properties)
{
    if (index < 1)
        return;
    if (size_t(index) >= m_colSeriesProperties.size())
        m_colSeriesProperties.resize(size_t(index) + 1);
    m_colSeriesProperties[size_t(index)] = std::move(properties);
}

bool ProfileCollection::Add(ProfilePtr profile, const QString& key)
{
    if (!profile || Contains(key))
        return false;
    m_byKey.insert(key, profile);
    m_colProfiles.append(std::move(profile));
    m_colKeys.append(key);
    return true;
}

bool ProfileCollection::Add(ProfilePtr profile)
{
    const QString key = profile ? profile->Name : QString();
    return Add(std::move(profile), key);
}

ProfilePtr ProfileCollection::Item(const QString& key) const
{
    return m_byKey.value(key);
}

ProfilePtr ProfileCollection::At(qsizetype index) const
{
    return index >= 0 && index < m_colProfiles.size() ? m_colProfiles.at(index) : nullptr;
}

QString ProfileCollection::KeyAt(qsizetype index) const
{
    return index >= 0 && index < m_colKeys.size() ? m_colKeys.at(index) : QString();
}

bool ProfileCollection::Remove(const QString& key)
{
    if (!m_byKey.remove(key))
        return false;
    const qsizetype index = m_colKeys.indexOf(key);
    m_colProfiles.removeAt(index);
    m_colKeys.removeAt(index);
    return true;
}

void ProfileCollection::Clear()
{
    m_colProfiles.clear();
    m_colKeys.clear();
    m_byKey.clear();
}
