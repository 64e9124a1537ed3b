// SPDX-License-Identifier: GPL-3.0-or-later
#include "LoggerChannelIds.h"

#include <QHash>
#include <QSet>

namespace LoggerChannelIds {

std::vector<qint64> Numbers(const std::vector<Row>& rows)
{
    QHash<qint64, std::vector<std::size_t>> byCategory;
    for (std::size_t i = 0; i < rows.size(); ++i)
        byCategory[rows[i].category].push_back(i);

    std::vector<qint64> numbers(rows.size(), 0);
    std::vector<bool> byPath(rows.size(), false);
    for (const std::vector<std::size_t>& members : std::as_const(byCategory)) {
        QHash<qint64, int> pathCount;
        for (const std::size_t i : members)
            if (rows[i].pathId >= 1)
                ++pathCount[rows[i].pathId];
        QSet<qint64> ownIds; // numbers of the rows that go by their own id
        for (const std::size_t i : members) {
            byPath[i] = rows[i].pathId >= 1 && pathCount.value(rows[i].pathId) == 1;
            if (!byPath[i])
                ownIds.insert(rows[i].id);
        }
        // A path id that equals the own id of a row without one gives way; that row's own id may
        // in turn clash with another path id, so repeat until nothing changes (rarely even once).
        for (bool changed = true; changed;) {
            changed = false;
            for (const std::size_t i : members)
                if (byPath[i] && ownIds.contains(rows[i].pathId)) {
                    byPath[i] = false;
                    ownIds.insert(rows[i].id);
                    changed = true;
                }
        }
        for (const std::size_t i : members)
            numbers[i] = byPath[i] ? rows[i].pathId : rows[i].id;
    }
    return numbers;
}

QString Format(qint64 category, qint64 number)
{
    return QString::number(category) + QLatin1Char('#') + QString::number(number);
}

namespace {

bool Whole(QStringView text, qint64& value)
{
    text = text.trimmed();
    if (text.isEmpty())
        return false;
    bool ok = false;
    value = text.toLongLong(&ok);
    return ok;
}

} // namespace

Parsed Parse(const QString& channelId)
{
    Parsed parsed;
    const QStringView id(channelId);
    const qsizetype hash = id.indexOf(QLatin1Char('#'));
    if (hash < 0) {
        if (Whole(id, parsed.id))
            parsed.form = Parsed::Form::RowId;
    } else if (Whole(id.left(hash), parsed.category) && Whole(id.mid(hash + 1), parsed.number)) {
        parsed.form = Parsed::Form::Numbered;
    }
    return parsed;
}

} // namespace LoggerChannelIds
