// SPDX-License-Identifier: GPL-3.0-or-later
// The folder tree below the module's root: folders and CSV files as categories with ids that
// depend on nothing but their path below the root.
//
// Id scheme. A category's id is the FNV-1a hash (32 bits, cut to 31, never 0) of its path below
// the root, "/"-separated, with the file name and its extension ("Hall 1/Logger 7.csv"). The
// tree is walked in a fixed order (folders before files, each sorted by name); should two paths
// hash alike, the later one takes the next free number. So the same tree gives the same ids in
// every run, and adding or removing other files leaves them alone. A channel's id is
// "<file id>#<n>", n being its value column in the file counted from 1. Path ids are positions
// among the entries of the parent, counted from 1; a channel's path id is its column number.
#pragma once

#include "CsvLineReader.h"

#include <QHash>
#include <QSet>
#include <QString>

#include <functional>
#include <optional>
#include <vector>

struct CsvTreeEntry
{
    qint32 id = 0;
    qint32 parentId = 0; // 0 at the top
    qint32 pathId = 0; // position among the parent's entries, from 1
    bool isFile = false;
    QString name; // the folder name, or the file name without ".csv"
    QString relativePath; // "/"-separated below the root
    QString absolutePath;
    std::optional<Csv::Layout> layout; // a file whose header could be read
};

class CsvTree
{
public:
    // Receives one line per file that can't be read or has no usable header.
    using LogSink = std::function<void(const QString& path, const QString& text)>;

    // Folders deeper than this below the root are not walked.
    static constexpr int MaxDepth = 32;

    // Walks the tree below root. Folders without a CSV file anywhere below are left out;
    // links to folders are not followed, so a loop of links can't trap the walk.
    void Scan(const QString& root, const LogSink& log);

    const QString& Root() const { return m_sRoot; }
    bool IsScanned() const { return m_bScanned; }
    // Parents before their children.
    const std::vector<CsvTreeEntry>& Entries() const { return m_entries; }
    const CsvTreeEntry* Find(qint32 id) const;

    // The hash of a path below the root, before collisions are settled.
    static qint32 HashOf(const QString& relativePath);

private:
    bool ScanFolder(const QString& folder, const QString& relative, qint32 parentId, int depth, const LogSink& log);
    qint32 TakeId(const QString& relativePath);

    QString m_sRoot;
    bool m_bScanned = false;
    std::vector<CsvTreeEntry> m_entries;
    QHash<qint32, std::size_t> m_byId;
    QSet<qint32> m_usedIds;
};
