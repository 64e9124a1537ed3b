// SPDX-License-Identifier: GPL-3.0-or-later
// The order in which the structure lists the rows of a table whose rows name a parent row
// (categories, channels): parents before children, level by level. Safe against what a damaged
// or hostile file may hold: an id on two rows, a row that is its own parent, a cycle of parents,
// a chain of parents without end.
#pragma once

#include <QtGlobal>

#include <cstddef>
#include <vector>

class LoggerTree
{
public:
    // Levels listed at most; rows further down are left out.
    static constexpr int MaxDepth = 64;

    struct Row
    {
        qint64 id = 0;
        qint64 parent = 0; // below 1, or no row's id: the row is at the top
        qint64 group = 0; // sorts the rows of a level before their id does (a channel's category)
    };

    struct Result
    {
        std::vector<std::size_t> order; // indexes of the rows listed, parents first
        std::vector<qint64> duplicates; // ids of rows left out because an earlier row has their id
        std::vector<qint64> cyclic; // ids of rows in a cycle of parents, or below one
        std::vector<qint64> tooDeep; // ids of rows more than MaxDepth levels down
    };

    // Level by level from the top; within a level by group, then id.
    static Result Order(const std::vector<Row>& rows);
};
