// SPDX-License-Identifier: GPL-3.0-or-later
#include "LoggerCatalog.h"

#include "sqlite/SqliteSchema.h"

#include <cmath>

namespace LoggerCatalog {

namespace {

// At most this many ids are named in one line.
constexpr std::size_t NamedIds = 10;

QString IdList(const std::vector<qint64>& ids)
{
    QStringList named;
    for (std::size_t i = 0; i < ids.size() && i < NamedIds; ++i)
        named << QString::number(ids[i]);
    QString text = named.join(QStringLiteral(", "));
    if (ids.size() > NamedIds)
        text += QStringLiteral(" and %1 more").arg(ids.size() - NamedIds);
    return text;
}

// rows is "categories" or "channels".
void AddProblems(const QString& rows, const QString& store, const LoggerTree::Result& result, QStringList& problems)
{
    const QString where = rows + " of " + store;
    const QString capitalised = where.at(0).toUpper() + where.mid(1);
    if (!result.duplicates.empty())
        problems << "Rows of the " + where
                + " repeat the id of an earlier row and are left out: " + IdList(result.duplicates) + ".";
    if (!result.cyclic.empty())
        problems << capitalised + " that are their own parents or lie in or below a cycle of parents are left out: "
                + IdList(result.cyclic) + ".";
    if (!result.tooDeep.empty())
        problems << capitalised + " more than " + QString::number(LoggerTree::MaxDepth)
                + " levels deep are left out: " + IdList(result.tooDeep) + ".";
}

} // namespace

Structure BuildStructure(
    const std::vector<CategoryRow>& categories, const std::vector<ChannelRow>& channels, const QString& store)
{
    Structure structure;
    std::vector<LoggerTree::Row> tree;
    tree.reserve(categories.size());
    for (const CategoryRow& c : categories)
        tree.push_back({ c.id, c.parent, 0 });
    LoggerTree::Result order = LoggerTree::Order(tree);
    AddProblems(QStringLiteral("categories"), store, order, structure.problems);
    for (const std::size_t i : order.order) {
        const CategoryRow& c = categories[i];
        const QString kind = c.kind.trimmed();
        // A category without a kind is a plain one: four fields.
        structure.categories.append(QString::number(c.id) + '$' + Field(c.name) + '$' + Field(c.remark) + '$'
            + QString::number(c.parent) + (kind.isEmpty() ? QString() : '$' + Field(kind)));
    }

    std::vector<LoggerChannelIds::Row> idRows; // the first row of each id
    std::vector<std::size_t> idRowOf; // for each channel row its entry in idRows
    QHash<qint64, std::size_t> firstOfId;
    tree.clear();
    for (const ChannelRow& c : channels) {
        const auto first = firstOfId.constFind(c.id);
        if (first == firstOfId.constEnd()) {
            firstOfId.insert(c.id, idRows.size());
            idRowOf.push_back(idRows.size());
            idRows.push_back({ c.id, c.category, c.pathId });
        } else {
            idRowOf.push_back(*first); // left out by the tree below
        }
        tree.push_back({ c.id, c.parent, c.category });
    }
    const std::vector<qint64> numbers = LoggerChannelIds::Numbers(idRows);
    const auto idOf
        = [&](std::size_t idRow) { return LoggerChannelIds::Format(idRows[idRow].category, numbers[idRow]); };
    order = LoggerTree::Order(tree);
    AddProblems(QStringLiteral("channels"), store, order, structure.problems);
    for (const std::size_t i : order.order) {
        const ChannelRow& c = channels[i];
        const LoggerChannelIds::Row& row = idRows[idRowOf[i]];
        // The parent as a channel id; a parent that is no channel counts as none, as in the tree.
        const auto parent = c.parent >= 1 ? firstOfId.constFind(c.parent) : firstOfId.constEnd();
        // Channels have no remark: field 2 stays empty.
        structure.channels.append(idOf(idRowOf[i]) + '$' + Field(c.name) + "$$" + QString::number(row.category) + '$'
            + (parent == firstOfId.constEnd() ? QStringLiteral("0") : idOf(*parent)) + '$' + QString::number(c.pathId));
    }
    return structure;
}

void FillOverview(const std::vector<ChannelRow>& rows, qint32 moduleAddress, ChannelCollection& channels)
{
    std::vector<const ChannelRow*> kept;
    std::vector<LoggerChannelIds::Row> idRows;
    for (const ChannelRow& row : rows) {
        if (!kept.empty() && kept.back()->id == row.id) // a damaged store may repeat an id
            continue;
        kept.push_back(&row);
        idRows.push_back({ row.id, row.category, row.pathId });
    }
    const std::vector<qint64> numbers = LoggerChannelIds::Numbers(idRows);
    const auto add = [&](const ChannelRow& row, const QString& id) {
        auto channel = std::make_shared<DataMatrix>();
        channel->SetChannelID(id);
        channel->SetChannelName(row.name);
        channel->SetUnit(row.unit);
        channel->SetDataType(row.dataType);
        channel->SetModuleAddress(moduleAddress);
        channels.Add(channel, id);
    };
    for (std::size_t i = 0; i < kept.size(); ++i)
        add(*kept[i], LoggerChannelIds::Format(kept[i]->category, numbers[i]));
    for (const ChannelRow* row : kept)
        add(*row, QString::number(row->id));
}

QHash<qint64, qint64> NumberMap(qint64 category, const std::vector<std::pair<qint64, qint64>>& rows)
{
    std::vector<LoggerChannelIds::Row> idRows;
    for (const auto& [id, pathId] : rows)
        if (idRows.empty() || idRows.back().id != id) // a damaged store may repeat an id
            idRows.push_back({ id, category, pathId });
    const std::vector<qint64> numbers = LoggerChannelIds::Numbers(idRows);
    QHash<qint64, qint64> byNumber;
    for (std::size_t i = 0; i < idRows.size(); ++i)
        byNumber.insert(numbers[i], idRows[i].id);
    return byNumber;
}

bool Resolutions::Take(const QString& key, const QString& value)
{
    const QString all = QString::fromUtf8(SqliteSchema::KeyResolution.data(), SqliteSchema::KeyResolution.size());
    const QString prefix = QString::fromUtf8(
        SqliteSchema::KeyChannelResolutionPrefix.data(), SqliteSchema::KeyChannelResolutionPrefix.size());
    if (key != all && !key.startsWith(prefix))
        return true;
    bool ok = false;
    const double seconds = value.trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(seconds) || seconds <= 0.0)
        return false;
    if (key == all) {
        m_default = seconds;
    } else if (const qint64 channel = key.mid(prefix.size()).toLongLong(&ok); ok) {
        m_channels.insert(channel, seconds);
    }
    return true;
}

void Resolutions::Clear()
{
    m_default = 0.0;
    m_channels.clear();
}

double StepValue(qint32 dataType, double largest, double smallest, double sum, qint64 count)
{
    if (count <= 0)
        return MatrixBlock::DefaultNoValue;
    switch (dataType) {
    case 1:
    case 7:
        return largest;
    case 6:
        return smallest;
    case 2:
    case 4:
        return sum;
    default:
        return sum / static_cast<double>(count);
    }
}

QString DataText(const QString& tag, double resolution, const QString& failure)
{
    QString text = tag + ';' + QString::number(resolution, 'g', 15);
    if (!failure.isEmpty())
        text += ';' + failure;
    return text;
}

} // namespace LoggerCatalog
