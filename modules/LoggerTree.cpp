// SPDX-License-Identifier: GPL-3.0-or-later
#include "LoggerTree.h"

#include <QHash>

#include <algorithm>
#include <tuple>

LoggerTree::Result LoggerTree::Order(const std::vector<Row>& rows)
{
    Result result;
    // The first row of an id stands for it; with one row per id every row has one parent, so
    // that a walk down from the top reaches each row once and never enters a cycle.
    QHash<qint64, std::size_t> byId;
    byId.reserve(static_cast<qsizetype>(rows.size()));
    std::vector<bool> kept(rows.size(), false);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (byId.contains(rows[i].id)) {
            result.duplicates.push_back(rows[i].id);
            continue;
        }
        byId.insert(rows[i].id, i);
        kept[i] = true;
    }

    QHash<qint64, std::vector<std::size_t>> children;
    std::vector<std::size_t> level;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (!kept[i])
            continue;
        if (rows[i].parent < 1 || !byId.contains(rows[i].parent))
            level.push_back(i);
        else
            children[rows[i].parent].push_back(i);
    }

    const auto byGroupAndId = [&rows](std::size_t a, std::size_t b) {
        return std::tie(rows[a].group, rows[a].id) < std::tie(rows[b].group, rows[b].id);
    };
    std::vector<bool> placed(rows.size(), false);
    std::vector<std::size_t> next;
    for (int depth = 0; !level.empty(); ++depth) {
        std::sort(level.begin(), level.end(), byGroupAndId);
        next.clear();
        for (const std::size_t i : level) {
            placed[i] = true;
            if (depth < MaxDepth)
                result.order.push_back(i);
            else
                result.tooDeep.push_back(rows[i].id);
            const auto it = children.constFind(rows[i].id);
            if (it != children.constEnd())
                for (const std::size_t child : *it)
                    if (!placed[child])
                        next.push_back(child);
        }
        level.swap(next);
    }
    // What the walk did not reach hangs on a parent that never leads to the top.
    for (std::size_t i = 0; i < rows.size(); ++i)
        if (kept[i] && !placed[i])
            result.cyclic.push_back(rows[i].id);
    return result;
}
