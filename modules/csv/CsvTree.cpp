// SPDX-License-Identifier: GPL-3.0-or-later
#include "CsvTree.h"

#include "CsvFileReader.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace {

constexpr qint64 HeaderBytes = 64 * 1024;

bool ByName(const QFileInfo& a, const QFileInfo& b)
{
    return a.fileName().compare(b.fileName()) < 0;
}

} // namespace

qint32 CsvTree::HashOf(const QString& relativePath)
{
    quint32 hash = 2166136261u;
    for (const char byte : relativePath.toUtf8()) {
        hash ^= static_cast<unsigned char>(byte);
        hash *= 16777619u;
    }
    const auto id = static_cast<qint32>(hash & 0x7FFFFFFFu);
    return id == 0 ? 1 : id;
}

qint32 CsvTree::TakeId(const QString& relativePath)
{
    qint32 id = HashOf(relativePath);
    while (m_usedIds.contains(id))
        id = id == 0x7FFFFFFF ? 1 : id + 1;
    m_usedIds.insert(id);
    return id;
}

const CsvTreeEntry* CsvTree::Find(qint32 id) const
{
    const auto it = m_byId.constFind(id);
    return it == m_byId.constEnd() ? nullptr : &m_entries[*it];
}

void CsvTree::Scan(const QString& root, const LogSink& log)
{
    m_sRoot = root;
    m_entries.clear();
    m_byId.clear();
    m_usedIds.clear();
    m_bScanned = true;
    if (!root.isEmpty() && QFileInfo(root).isDir())
        ScanFolder(QDir(root).absolutePath(), QString(), 0, 0, log);
    for (std::size_t i = 0; i < m_entries.size(); ++i)
        m_byId.insert(m_entries[i].id, i);
}

bool CsvTree::ScanFolder(const QString& folder, const QString& relative, qint32 parentId, int depth, const LogSink& log)
{
    const QDir dir(folder);
    QFileInfoList folders = dir.entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::Readable, QDir::NoSort);
    QFileInfoList files = dir.entryInfoList({ QStringLiteral("*.csv") }, QDir::Files, QDir::NoSort);
    std::sort(folders.begin(), folders.end(), ByName);
    std::sort(files.begin(), files.end(), ByName);

    qint32 position = 0;
    if (depth < MaxDepth) {
        for (const QFileInfo& info : folders) {
            if (info.isSymLink())
                continue;
            const QString path = relative.isEmpty() ? info.fileName() : relative + '/' + info.fileName();
            const std::size_t at = m_entries.size();
            CsvTreeEntry entry;
            entry.id = TakeId(path);
            entry.parentId = parentId;
            entry.name = info.fileName();
            entry.relativePath = path;
            entry.absolutePath = info.absoluteFilePath();
            m_entries.push_back(entry);
            if (ScanFolder(entry.absolutePath, path, entry.id, depth + 1, log)) {
                m_entries[at].pathId = ++position;
            } else {
                for (std::size_t i = at; i < m_entries.size(); ++i)
                    m_usedIds.remove(m_entries[i].id);
                m_entries.resize(at);
            }
        }
    }
    for (const QFileInfo& info : files) {
        // Only regular files are read: a pipe, device or socket named "*.csv" (or a link to
        // one) would block the scan or never end.
        CsvFileReader reader;
        if (!reader.Open(info.absoluteFilePath()) && info.exists() && !info.isFile()) {
            log(info.absoluteFilePath(), QStringLiteral("the entry is no regular file and is not read"));
            continue;
        }
        CsvTreeEntry entry;
        entry.relativePath = relative.isEmpty() ? info.fileName() : relative + '/' + info.fileName();
        entry.id = TakeId(entry.relativePath);
        entry.parentId = parentId;
        entry.pathId = ++position;
        entry.isFile = true;
        entry.name = info.completeBaseName();
        entry.absolutePath = info.absoluteFilePath();

        if (!reader.IsOpen()) {
            log(entry.absolutePath, reader.Error());
        } else {
            const std::string_view start = reader.Bytes(0, static_cast<std::size_t>(HeaderBytes));
            const Csv::HeaderResult header = Csv::ReadHeader(start, reader.End() <= HeaderBytes);
            if (!reader.Error().isEmpty())
                log(entry.absolutePath, reader.Error());
            else if (header.layout)
                entry.layout = header.layout;
            else
                log(entry.absolutePath, header.problem + QStringLiteral("; the file shows no channels"));
        }
        m_entries.push_back(std::move(entry));
    }
    return position > 0;
}
