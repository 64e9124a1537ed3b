// SPDX-License-Identifier: GPL-3.0-or-later
// What every logger store (an SQLite file, a PostgreSQL or ClickHouse database) offers the program
// from its categories and channels tables, built from the rows as a store read them: the channel
// structure, the channel overview and the numbers of the channels within their logger.
#pragma once

#include "DataModuleInterface.h"
#include "LoggerChannelIds.h"
#include "LoggerTree.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <vector>

namespace LoggerCatalog {

struct CategoryRow
{
    qint64 id = 0;
    QString name, remark;
    qint64 parent = 0;
    QString kind;
};

struct ChannelRow
{
    qint64 id = 0;
    QString name, unit;
    qint32 dataType = 0;
    qint64 category = 0;
    qint64 parent = 0;
    qint64 pathId = 0;
};

struct Structure
{
    QStringList categories; // "id$name$remark$parent[$kind]", parents first
    QStringList channels; // "<category>#<number>$name$$category$parent id$path id", parents first
    // One English line for each kind of row left out (an id twice, a cycle, too deep).
    QStringList problems;
};

// The structure of the rows in any order. Rows that can't be placed in a tree (an id on a second
// row, a cycle of parents, more than LoggerTree::MaxDepth levels) are left out and named in
// problems; store names the store there, as "module <name> (<source>)".
Structure BuildStructure(
    const std::vector<CategoryRow>& categories, const std::vector<ChannelRow>& channels, const QString& store);

// One channel object per row, the rows in order of id (a repeated id counts once): first every
// channel under "<category>#<number>", then each once more under its plain row id, the id of
// views written before ids named their logger. The trees list only the first form.
void FillOverview(const std::vector<ChannelRow>& rows, qint32 moduleAddress, ChannelCollection& channels);

// Number within the category -> row id, for the rows (id, path id) of one category in order of id.
QHash<qint64, qint64> NumberMap(qint64 category, const std::vector<std::pair<qint64, qint64>>& rows);

// Native resolutions of a store's channels, from its info table: "resolution" for every channel
// without a key of its own, "resolution.<channel id>" for one.
class Resolutions
{
public:
    // Takes one row of the info table; false when the value is no positive number (the key then
    // counts as unknown). Rows of other keys are ignored.
    bool Take(const QString& key, const QString& value);
    // Seconds of the channel's native resolution; 0 when unknown.
    double Of(qint64 channel) const { return m_channels.value(channel, m_default); }
    void Clear();

private:
    double m_default = 0.0;
    QHash<qint64, double> m_channels;
};

// The aggregate of one grid step by the data type, as the time grid makes it from the step's
// samples: 1 and 7 the largest, 6 the smallest, 2 and 4 the sum, others the mean; NoValue when the
// step holds no value (count 0).
double StepValue(qint32 dataType, double largest, double smallest, double sum, qint64 count);

// The text item GetData appends: "<tag>;<resolution in seconds>[;<failure>]".
QString DataText(const QString& tag, double resolution, const QString& failure);

// A text as a field of the structure strings, where "$" separates the fields.
inline QString Field(QString text)
{
    text.replace(QLatin1Char('$'), QLatin1Char('_'));
    return text;
}

} // namespace LoggerCatalog
