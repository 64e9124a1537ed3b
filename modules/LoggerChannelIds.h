// SPDX-License-Identifier: GPL-3.0-or-later
// Channel ids of a logger store as the program sees them: "<category id>#<channel number>",
// the number being stable and unique within the category, and the plain row ids of old views.
#pragma once

#include <QString>
#include <QtGlobal>

#include <vector>

namespace LoggerChannelIds {

// One row of the channels table, as far as its id goes.
struct Row
{
    qint64 id = 0;
    qint64 category = 0;
    qint64 pathId = 0;
};

// The number of each row within its category, in the order of the rows: its path id when that
// is at least 1, no other row of the category has it and it is not the number of a row that goes
// by its own id; otherwise the row's own id. Rows must have distinct ids.
std::vector<qint64> Numbers(const std::vector<Row>& rows);

QString Format(qint64 category, qint64 number);

// What a channel id names.
struct Parsed
{
    enum class Form { Invalid, RowId, Numbered } form = Form::Invalid;
    qint64 id = 0; // RowId: the row's id
    qint64 category = 0; // Numbered: the category and the number within it
    qint64 number = 0;
};

// "<category>#<number>" or a plain row id (the form of views written before ids named their
// logger); blanks around the whole id or its parts are ignored. Anything else is Invalid.
Parsed Parse(const QString& channelId);

} // namespace LoggerChannelIds
