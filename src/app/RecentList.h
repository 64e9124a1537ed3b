// SPDX-License-Identifier: GPL-3.0-or-later
// The list of recently used files, as the file menu shows it and the per-user settings keep it.
#pragma once

#include <QList>
#include <QString>

// One file of the list: its folder (with the trailing separator) and its name.
class RecentFile
{
public:
    QString Name() const { return m_name; }
    QString Path() const { return m_path; }
    QString FullName() const { return m_path + m_name; }

    // Takes the full name apart at its last "\" or "/". A name without "." or without a folder
    // is refused and changes nothing. With check, the result tells whether the file exists;
    // without, it is always false.
    bool SetFile(const QString& fullName, bool check);

    // The full name, shortened for a menu to at most maxLength (at least 15) characters: the
    // start of the folder, "..." and the file name, which is cut only when very long.
    QString GetShortName(int maxLength) const;

private:
    QString m_name;
    QString m_path;
};

// The recent files, oldest first, newest last, keyed by their full names.
class RecentList
{
public:
    using const_iterator = QList<RecentFile>::const_iterator;

    int Count() const { return int(m_files.size()); }
    // The entry at index 1..Count, or nullptr.
    const RecentFile* Item(int index) const;
    // The entry with this full name, or nullptr.
    const RecentFile* Item(const QString& key) const;

    // Removing what is not there does nothing.
    void Remove(int index);
    void Remove(const QString& key);

    // Puts the file into the list; an entry of the same full name goes first. A level of 0 or
    // more places the file before the first entry added with a higher level, a negative level
    // at the end. The oldest entries then go until at most maximum remain.
    void AddFile(const RecentFile& file, int level, int maximum);

    // Writes the list into the per-user settings; entries of an earlier, longer list are
    // removed. False when the settings could not be written.
    bool Save() const;
    // Reads the list back: with a stored count of 1 or more the list is replaced by the stored
    // files that still exist. Returns the number of entries.
    int Load();

    const_iterator begin() const { return m_files.cbegin(); }
    const_iterator end() const { return m_files.cend(); }

private:
    int IndexOf(const QString& key) const;

    QList<RecentFile> m_files;
    QList<int> m_levels; // the level each entry was added with, parallel to m_files
};
