// SPDX-License-Identifier: GPL-3.0-or-later
#include "RecentList.h"

#include "Numeric.h"
#include "RegistryKey.h"
#include "Settings.h"

#include <QFileInfo>

#include <algorithm>

namespace {

// The most files the list keeps after a load.
constexpr int LoadMaximum = 5;

int LastSeparator(const QString& text)
{
    return std::max(text.lastIndexOf(QLatin1Char('\\')), text.lastIndexOf(QLatin1Char('/')));
}

// The highest n of the stored "File_n" values, so that a damaged count cannot make the load
// read millions of missing values.
int HighestStoredNumber()
{
    const Settings::Definition& def = Settings::DefinitionOf(Settings::Id::RecentFile);
    const QString pattern = QString::fromLatin1(def.name);
    const QString prefix = pattern.left(pattern.indexOf(QLatin1String("%1")));
    RegistryKey key;
    if (key.OpenKey(Hive::CurrentUser, KeyRead, QString::fromLatin1(def.key)) != RegistryStatus::Ok)
        return 0;
    int highest = 0;
    for (QString name = key.GetFirstValue(); !name.isEmpty(); name = key.GetNextValue()) {
        if (!name.startsWith(prefix, Qt::CaseInsensitive))
            continue;
        bool ok = false;
        const int n = name.mid(prefix.size()).toInt(&ok);
        if (ok)
            highest = std::max(highest, n);
    }
    return highest;
}

} // namespace

bool RecentFile::SetFile(const QString& fullName, bool check)
{
    const QString name = fullName.trimmed();
    if (name.isEmpty() || !name.contains(QLatin1Char('.')))
        return false;
    const int separator = LastSeparator(name);
    if (separator < 0)
        return false;
    m_path = name.left(separator + 1);
    m_name = name.mid(separator + 1);
    if (!check)
        return false;
    // Stored names may use "\" as well; the file system here knows only "/".
    QString local = FullName();
    local.replace(QLatin1Char('\\'), QLatin1Char('/'));
    return QFileInfo::exists(local);
}

QString RecentFile::GetShortName(int maxLength) const
{
    if (m_name.isEmpty() || m_path.isEmpty())
        return QString();
    maxLength = std::max(maxLength, 15);
    const QString full = FullName();
    if (full.size() <= maxLength)
        return full;
    const QString name = m_name.left(maxLength - 6);
    return m_path.left(maxLength - int(name.size()) - 3) + QLatin1String("...") + name;
}

const RecentFile* RecentList::Item(int index) const
{
    return index >= 1 && index <= Count() ? &m_files.at(index - 1) : nullptr;
}

const RecentFile* RecentList::Item(const QString& key) const
{
    const int index = IndexOf(key);
    return index >= 0 ? &m_files.at(index) : nullptr;
}

int RecentList::IndexOf(const QString& key) const
{
    const auto found
        = std::find_if(m_files.cbegin(), m_files.cend(), [&key](const RecentFile& f) { return f.FullName() == key; });
    return found == m_files.cend() ? -1 : int(found - m_files.cbegin());
}

void RecentList::Remove(int index)
{
    if (index < 1 || index > Count())
        return;
    m_files.removeAt(index - 1);
    m_levels.removeAt(index - 1);
}

void RecentList::Remove(const QString& key)
{
    Remove(IndexOf(key) + 1);
}

void RecentList::AddFile(const RecentFile& file, int level, int maximum)
{
    Remove(file.FullName());
    qsizetype at = m_files.size();
    if (level >= 0) {
        const auto higher = std::find_if(m_levels.cbegin(), m_levels.cend(), [level](int l) { return l > level; });
        at = higher - m_levels.cbegin();
    }
    m_files.insert(at, file);
    m_levels.insert(at, level);
    while (Count() > maximum && Count() > 0)
        Remove(1);
}

bool RecentList::Save() const
{
    using Settings::Id;
    // The key holds the list alone: dropping it first leaves no entry of a longer earlier list.
    const Settings::Definition& count = Settings::DefinitionOf(Id::RecentCount);
    RegistryKey key;
    key.DeleteKey(count.writeHive, QString::fromLatin1(count.key));
    if (key.WriteValue(
            count.writeHive, QString::fromLatin1(count.key), QString::fromLatin1(count.name), QString::number(Count()))
        != RegistryStatus::Ok)
        return false;
    int n = 0;
    for (const RecentFile& file : m_files)
        Settings::Write(Id::RecentFile, file.FullName(), QString::number(++n));
    return true;
}

int RecentList::Load()
{
    using Settings::Id;
    const int count = ClampToInt(Settings::Number(Id::RecentCount));
    if (count < 1)
        return Count();
    m_files.clear();
    m_levels.clear();
    const int last = std::min(count, HighestStoredNumber());
    for (int n = 1; n <= last; ++n) {
        const QString entry = Settings::StoredValue(Id::RecentFile, QString::number(n));
        if (entry.isEmpty())
            continue;
        RecentFile file;
        if (file.SetFile(entry, true))
            AddFile(file, -1, LoadMaximum);
    }
    return Count();
}
