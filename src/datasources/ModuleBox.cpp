// SPDX-License-Identifier: GPL-3.0-or-later
#include "ModuleBox.h"

#include "ChannelTree.h"
#include "DataModuleLoader.h"
#include "Logging.h"
#include "Numeric.h"

#include <QMetaObject>
#include <QSet>
#include <QTreeWidget>
#include <QTreeWidgetItem>

#include <algorithm>
#include <cmath>
#include <exception>
#include <limits>
#include <optional>

namespace {

const QString SourceBind = QStringLiteral("ModuleBox.BindDMI");
const QString SourceInit = QStringLiteral("ModuleBox.Init");
const QString SourceList = QStringLiteral("ModuleBox.GetChannelList");
const QString SourceStructure = QStringLiteral("ModuleBox.InitializeStructure");
const QString SourceConfig = QStringLiteral("ModuleBox.ShowConfig");

const QString TagCategory = QStringLiteral("category");
const QString TagChannel = QStringLiteral("channel");
const QString AttrId = QStringLiteral("id");
const QString AttrPathId = QStringLiteral("path-id");
const QString AttrRemark = QStringLiteral("remark");

// Error number given for a C++ exception, which carries none.
constexpr int RaisedNumber = -1;

QString Describe(const std::exception_ptr& raised)
{
    try {
        std::rethrow_exception(raised);
    } catch (const std::exception& error) {
        return QString::fromLocal8Bit(error.what());
    } catch (...) {
        return QStringLiteral("unknown error");
    }
}

// Numbers in tree strings are read leniently: the leading number, 0 without one.
qint32 LenientWhole(const QString& text)
{
    return ClampToInt(LeadingNumber(text));
}

// Numbers of the structure document must be numbers: a word is an error. An empty field
// counts as 0, like a missing one.
std::optional<qint32> StrictWhole(const QString& text)
{
    if (text.trimmed().isEmpty())
        return 0;
    if (!IsNumeric(text))
        return std::nullopt;
    const double value = std::nearbyint(LeadingNumber(text));
    if (!std::isfinite(value) || value < std::numeric_limits<qint32>::min()
        || value > std::numeric_limits<qint32>::max())
        return std::nullopt;
    return static_cast<qint32>(value);
}

QString CategoryImage(const QStringList& fields)
{
    if (fields.size() > 4) {
        if (fields.at(4).compare(QLatin1String("FOLDER"), Qt::CaseInsensitive) == 0)
            return QLatin1String(ChannelTree::ImageFolder);
        if (fields.at(4).compare(QLatin1String("MEASURING"), Qt::CaseInsensitive) == 0)
            return QLatin1String(ChannelTree::ImageMeasuring);
    }
    return QLatin1String(ChannelTree::ImageCategorie);
}

int Levels(const QTreeWidgetItem* item)
{
    return static_cast<int>(ChannelTree::FullPath(item).count(QLatin1Char('\\'))) + 1;
}

// Nodes of the structure document by id, so that building stays linear. An id seen twice is
// searched in the document instead, because there the first node in document order counts.
class NodeIndex
{
public:
    NodeIndex(XmlNode root, QString tag)
        : m_root(root)
        , m_tag(std::move(tag))
    { }

    void Insert(qint32 id, XmlNode node)
    {
        if (m_nodes.contains(id))
            m_ambiguous.insert(id);
        else
            m_nodes.insert(id, node);
    }
    XmlNode Find(qint32 id) const
    {
        if (m_ambiguous.contains(id))
            return m_root.FindDescendant(m_tag, AttrId, QString::number(id));
        return m_nodes.value(id);
    }

private:
    XmlNode m_root;
    QString m_tag;
    QHash<qint32, XmlNode> m_nodes;
    QSet<qint32> m_ambiguous;
};

// A number field that holds a word; ends the building of the structure document.
struct BadNumber
{
    QString text;
    QString line;
};

qint32 NumberOrThrow(const QString& text, const QString& line)
{
    const std::optional<qint32> value = StrictWhole(text);
    if (!value)
        throw BadNumber { text, line };
    return *value;
}

// Calls a module operation that returns a status; a module that throws counts as one that
// returned 0.
template<typename Call> qint32 TrappedStatus(Call&& call)
{
    try {
        qint32 out = 0;
        return call(out);
    } catch (...) {
        return 0;
    }
}

} // namespace

ModuleBox::ModuleBox() = default;

ModuleBox::~ModuleBox()
{
    m_channels.clear();
    m_channelIndex.clear();
    m_structure.reset();
    m_module = nullptr;
    m_moduleObject.reset();
}

void ModuleBox::SetDataModule(std::unique_ptr<QObject> object)
{
    m_module = nullptr;
    m_moduleObject = std::move(object);
    if (m_moduleObject) {
        m_module = qobject_cast<DataModuleInterface*>(m_moduleObject.get());
        if (!m_module)
            m_moduleObject.reset();
    }
}

DataMatrixPtr ModuleBox::Channel(const QString& key) const
{
    if (m_channels.isEmpty())
        return nullptr;
    if (key.isEmpty())
        return m_channels.first();
    const auto found = m_channelIndex.constFind(key);
    return found == m_channelIndex.constEnd() ? nullptr : m_channels.at(*found);
}

qint32 ModuleBox::BindDMI()
{
    if (m_sObject.isEmpty())
        return -1;
    SetDataModule(nullptr);

    DataModuleLoader::Result created
        = DataModuleLoader::Instance().Create(m_sObject, DataModuleRegistration { m_sName, m_sAddress });
    if (!created) {
        WriteLog(QStringLiteral("error binding datamodule"),
            QStringLiteral("Error %1 (%2) when binding dmi %3 (%4).")
                .arg(created.reason, QString::number(static_cast<int>(created.failure)), m_sObject, m_sName),
            SourceBind, LogLevel::Error);
        return -2;
    }
    m_moduleObject = std::move(created.object);
    m_module = created.module;

    qint32 status = 0;
    try {
        qint32 out = 0;
        status = m_module->SelfCheck(out);
    } catch (...) {
        // The missing blank after "dmi" is part of the line as readers of old logs know it.
        WriteLog(QStringLiteral("error checking datamodule"),
            QStringLiteral("Error %1 (%2) when checking dmi%3 (%4).")
                .arg(Describe(std::current_exception()), QString::number(RaisedNumber), m_sObject, m_sName),
            SourceBind, LogLevel::Error);
        status = -3;
    }
    if (status != 1) {
        WriteLog(QStringLiteral("error checking datamodule"),
            QStringLiteral("Object %1 returned %2 when executing self-check.").arg(m_sObject, QString::number(status)),
            SourceBind, LogLevel::Error);
        SetDataModule(nullptr);
        return -3;
    }
    return 0;
}

qint32 ModuleBox::Init()
{
    const QString title = QStringLiteral("error initialising datamodule");
    if (!m_module) {
        WriteLog(title,
            QStringLiteral("There is no data-module for the object %1 (%2) to be initialized.").arg(m_sName, m_sObject),
            SourceInit, LogLevel::Error);
        m_bIsInit = false;
        return 0;
    }
    const qint32 status = TrappedStatus([&](qint32& out) { return m_module->Initialize(m_sParam, out); });
    if (status == 1) {
        m_bIsInit = true;
        return 1;
    }
    WriteLog(title,
        QStringLiteral("Data-module %1 (%2) returned %3 when initialising.")
            .arg(m_sName, m_sObject, QString::number(status)),
        SourceInit, LogLevel::Error);
    m_bIsInit = false;
    return status;
}

qint32 ModuleBox::GetChannelList(
    QTreeWidget* tree, const QString& parentKey, bool withChannels, int maxDepth, bool foldersOnly)
{
    qint32 code = 0;
    if (!m_bIsInit && Init() != 1)
        code = -1;
    if (!m_module)
        return -1;

    if (m_channels.isEmpty()) {
        ChannelCollection delivered;
        const qint32 status = TrappedStatus([&](qint32& out) { return m_module->GetChannelOverview(delivered, out); });
        if (status == 1) {
            const qint32 address = LenientWhole(m_sAddress);
            for (qsizetype i = 0; i < delivered.Count(); ++i) {
                DataMatrixPtr channel = delivered.Channel(i);
                if (!channel)
                    continue;
                channel->SetModuleAddress(address);
                const QString key = channel->ChannelID();
                if (m_channelIndex.contains(key)) {
                    WriteLog(QStringLiteral("duplicate channel"),
                        QStringLiteral("Channel %1 delivered twice by module %2 (%3); the second is skipped.")
                            .arg(key, m_sName, m_sObject),
                        SourceList, LogLevel::Error);
                    continue;
                }
                m_channelIndex.insert(key, m_channels.size());
                m_channels.append(std::move(channel));
            }
            code = 1;
        } else {
            WriteLog(QStringLiteral("error getting overview"),
                QStringLiteral("Error %1 when getting channeloverview from module %2 (%3).")
                    .arg(QString::number(status), m_sName, m_sObject),
                SourceList, LogLevel::Error);
            code = -2;
        }
    } else {
        code = 1;
    }

    if (!tree || m_channels.isEmpty())
        return code;

    QStringList categories;
    QStringList channels;
    const qint32 status
        = TrappedStatus([&](qint32& out) { return m_module->GetChannelStructure(categories, channels, out); });
    if (status != 1) {
        WriteLog(QStringLiteral("error getting structure"),
            QStringLiteral("Error %1 when getting channelstructure from module %2 (%3).")
                .arg(QString::number(status), m_sName, m_sObject),
            SourceList, LogLevel::Error);
        return -3;
    }

    // Keys are unique per tree: a node whose key is taken, or whose parent is not (yet) in the
    // tree, is left out, and with it every node below it.
    QHash<QString, QTreeWidgetItem*> index = ChannelTree::KeyIndex(tree);
    auto addNode = [&](QTreeWidgetItem* parent, const QString& key, const QString& text,
                       const QString& image) -> QTreeWidgetItem* {
        if (index.contains(key))
            return nullptr;
        auto* item = parent ? new QTreeWidgetItem(parent) : new QTreeWidgetItem(tree);
        item->setText(0, text);
        ChannelTree::SetKey(item, key);
        ChannelTree::SetImage(item, image);
        index.insert(key, item);
        return item;
    };

    for (const QString& line : std::as_const(categories)) {
        const QStringList fields = line.split(QLatin1Char('$'));
        if (fields.size() < 4) {
            WriteLog(QStringLiteral("Invalid categorie-string"),
                QStringLiteral("Invalid categorie string %1 from module %2 (%3).").arg(line, m_sName, m_sObject),
                SourceList, LogLevel::Skipped);
            continue;
        }
        const QString image = CategoryImage(fields);
        if (foldersOnly && fields.size() == 5 && image != QLatin1String(ChannelTree::ImageFolder))
            continue;

        const qint32 parent = LenientWhole(fields.at(3));
        QTreeWidgetItem* parentItem = nullptr;
        if (parent >= 1)
            parentItem = index.value(GetCategorieKey(parent));
        else if (!parentKey.isEmpty())
            parentItem = index.value(parentKey);
        if (!parentItem && (parent >= 1 || !parentKey.isEmpty()))
            continue;

        const QString key = GetCategorieKey(LenientWhole(fields.at(0)));
        QTreeWidgetItem* item = addNode(parentItem, key, fields.at(1), image);
        if (!item)
            continue;
        ChannelTree::SetTag(item, m_sAddress);
        if (maxDepth != -1 && Levels(item) > maxDepth) {
            index.remove(key);
            delete item;
        }
    }

    if (withChannels) {
        for (const QString& line : std::as_const(channels)) {
            const QStringList fields = line.split(QLatin1Char('$'));
            if (fields.size() < 5) {
                WriteLog(QStringLiteral("Invalid channel-string"),
                    QStringLiteral("Invalid channel string %1 from module %2 (%3).").arg(line, m_sName, m_sObject),
                    SourceList, LogLevel::Skipped);
                continue;
            }
            // The parent channel: 0 (or nothing) for the category itself, else the parent's id,
            // a number or a text such as "<logger>#<channel>".
            const QString parentField = fields.at(4).trimmed();
            const bool numeric = parentField.isEmpty() || IsNumeric(parentField);
            const qint32 parentChannel = numeric ? LenientWhole(parentField) : 1;
            const QString parentNodeKey = parentChannel < 1
                ? GetCategorieKey(LenientWhole(fields.at(3)))
                : GetChannelKey(numeric ? QString::number(parentChannel) : parentField);
            QTreeWidgetItem* parentItem = index.value(parentNodeKey);
            if (!parentItem)
                continue;
            const QString id = fields.at(0);
            QTreeWidgetItem* item
                = addNode(parentItem, GetChannelKey(id), fields.at(1), QLatin1String(ChannelTree::ImageChannel));
            if (item)
                ChannelTree::SetTag(item, m_sAddress + QLatin1Char('$') + id);
        }
    }
    return code;
}

void ModuleBox::ResetChannelList()
{
    m_channels.clear();
    m_channelIndex.clear();
    m_structure.reset();
}

qint32 ModuleBox::InitializeStructure()
{
    if (m_channels.isEmpty())
        GetChannelList(nullptr, QString(), true, -1, false);
    if (m_channels.isEmpty())
        return -1;
    if (!m_module)
        return -2;

    QStringList categories;
    QStringList channels;
    const qint32 status
        = TrappedStatus([&](qint32& out) { return m_module->GetChannelStructure(categories, channels, out); });
    if (status != 1)
        return -2;
    return BuildStructure(categories, channels);
}

qint32 ModuleBox::BuildStructure(const QStringList& categories, const QStringList& channels)
{
    auto document = std::make_unique<XmlDocument>();
    XmlNode root = document->CreateRoot(QStringLiteral("module-box"));
    NodeIndex categoryNodes(root, TagCategory);
    NodeIndex channelNodes(root, TagChannel);

    // The id fields are numbers here: a module that writes a word (a kind in field 4 of a
    // category) cannot answer path ids, and the document is not built.
    try {
        for (const QString& line : categories) {
            const QStringList fields = line.split(QLatin1Char('$'));
            if (fields.size() < 4) {
                WriteLog(QStringLiteral("Invalid categorie-string"),
                    QStringLiteral("Invalid categorie string %1 from module %2 (%3).").arg(line, m_sName, m_sObject),
                    SourceStructure, LogLevel::Skipped);
                continue;
            }
            const qint32 id = NumberOrThrow(fields.at(0), line);
            const qint32 parent = NumberOrThrow(fields.at(3), line);
            const qint32 pathId = fields.size() > 4 ? NumberOrThrow(fields.at(4), line) : 0;
            XmlNode parentNode = parent >= 1 ? categoryNodes.Find(parent) : XmlNode();
            if (!parentNode)
                parentNode = root;
            XmlNode node = parentNode.NewChild(TagCategory, fields.at(1));
            node.SetAttribute(AttrId, QString::number(id));
            node.SetAttribute(AttrPathId, QString::number(pathId));
            node.SetAttribute(AttrRemark, fields.at(2));
            categoryNodes.Insert(id, node);
        }
        for (const QString& line : channels) {
            const QStringList fields = line.split(QLatin1Char('$'));
            if (fields.size() < 5) {
                WriteLog(QStringLiteral("Invalid channel-string"),
                    QStringLiteral("Invalid channel string %1 from module %2 (%3).").arg(line, m_sName, m_sObject),
                    SourceStructure, LogLevel::Skipped);
                continue;
            }
            const qint32 id = NumberOrThrow(fields.at(0), line);
            const qint32 category = NumberOrThrow(fields.at(3), line);
            const qint32 parentChannel = NumberOrThrow(fields.at(4), line);
            const qint32 pathId = fields.size() > 5 ? NumberOrThrow(fields.at(5), line) : 0;
            XmlNode parentNode = parentChannel < 1 ? categoryNodes.Find(category) : channelNodes.Find(parentChannel);
            if (!parentNode)
                continue;
            XmlNode node = parentNode.NewChild(TagChannel, fields.at(1));
            node.SetAttribute(AttrId, QString::number(id));
            node.SetAttribute(AttrPathId, QString::number(pathId));
            channelNodes.Insert(id, node);
        }
    } catch (const BadNumber& bad) {
        WriteLog(QStringLiteral("error building structure"),
            QStringLiteral("Field %1 of structure string %2 from module %3 (%4) is no number.")
                .arg(bad.text, bad.line, m_sName, m_sObject),
            SourceStructure, LogLevel::Error);
        m_structure.reset();
        return -3;
    }
    m_structure = std::move(document);
    return 1;
}

XmlNode ModuleBox::StructureRoot() const
{
    return m_structure ? m_structure->RootNode() : XmlNode();
}

QString ModuleBox::GetPathFromID(qint32 channelId)
{
    if (!m_structure && InitializeStructure() != 1)
        return QString();
    XmlNode node = m_structure->RootNode().FindDescendant(TagChannel, AttrId, QString::number(channelId));
    QStringList pathIds;
    for (; node; node = node.Parent()) {
        const qint32 pathId = LenientWhole(node.Attribute(AttrPathId));
        if (pathId < 1)
            break;
        pathIds.prepend(QString::number(pathId));
    }
    return pathIds.join(QLatin1Char('\\'));
}

qint32 ModuleBox::GetIDFromPath(qint32 categoryId, const QString& path)
{
    if (!m_structure && InitializeStructure() != 1)
        return -1;
    XmlNode current = m_structure->RootNode().FindDescendant(TagCategory, AttrId, QString::number(categoryId));
    if (!current)
        return -2;
    const QStringList elements = path.isEmpty() ? QStringList() : path.split(QLatin1Char('\\'));
    for (const QString& element : elements) {
        // Path ids are written as plain decimals; " 07" in a file still means 7.
        const std::optional<qint32> number = StrictWhole(element);
        const QString wanted = number && !element.trimmed().isEmpty() ? QString::number(*number) : element;
        XmlNode next = current.FindDescendant(TagCategory, AttrPathId, wanted);
        if (!next)
            next = current.FindDescendant(TagChannel, AttrPathId, wanted);
        current = next;
        if (!current)
            return 0;
    }
    if (current.Tag() == TagChannel)
        return LenientWhole(current.Attribute(AttrId));
    return -3;
}

QString ModuleBox::GetModuleKey() const
{
    return QLatin1String("DM_") + m_sAddress;
}

QString ModuleBox::GetCategorieKey(qint32 id) const
{
    return GetModuleKey() + QLatin1Char('_') + QString::number(id);
}

QString ModuleBox::GetChannelKey(const QString& id) const
{
    return GetModuleKey() + QLatin1String("_CHAN_") + id;
}

bool ModuleBox::ShowConfig()
{
    QObject* object = m_moduleObject.get();
    if (!object)
        return false;
    if (object->metaObject()->indexOfMethod("ShowConfig()") < 0) {
        WriteLog(QStringLiteral("error configuring datamodule"),
            QStringLiteral("Data-module %1 (%2) offers no ShowConfig.").arg(m_sName, m_sObject), SourceConfig,
            LogLevel::Skipped);
        return false;
    }
    try {
        return QMetaObject::invokeMethod(object, "ShowConfig", Qt::DirectConnection);
    } catch (...) {
        WriteLog(QStringLiteral("error configuring datamodule"),
            QStringLiteral("Error %1 when showing the configuration of %2 (%3).")
                .arg(Describe(std::current_exception()), m_sName, m_sObject),
            SourceConfig, LogLevel::Error);
        return false;
    }
}

bool ModuleBox::HasConfig()
{
    if (!m_module)
        return false;
    try {
        return m_module->HasConfig();
    } catch (...) {
        return false;
    }
}

double GetDataResolution(const ChannelCollection& channels)
{
    const qsizetype last = channels.Count() - 1;
    if (!channels.IsText(last))
        return 0;
    const QStringList fields = channels.Text(last).split(QLatin1Char(';'));
    if (fields.size() < 2)
        return 0;
    const double seconds = LeadingNumber(fields.at(1));
    return std::isfinite(seconds) ? seconds : 0;
}

QString GetDataError(const ChannelCollection& channels)
{
    const qsizetype last = channels.Count() - 1;
    if (!channels.IsText(last))
        return QString();
    const QString text = channels.Text(last);
    const qsizetype first = text.indexOf(QLatin1Char(';'));
    const qsizetype second = first < 0 ? -1 : text.indexOf(QLatin1Char(';'), first + 1);
    return second < 0 ? QString() : text.mid(second + 1);
}

qsizetype GetDataChannelCount(const ChannelCollection& channels)
{
    return std::max<qsizetype>(0, channels.Count() - 1);
}

qint32 ModuleBox::GetData(const QString& channelList, ChannelCollection& channels, double from, double to)
{
    if (!m_module)
        return -1;
    try {
        qint32 status = 0;
        return m_module->GetData(channelList, channels, from, to, status);
    } catch (...) {
        return -1;
    }
}

bool ModuleBox::CanAggregate() const
{
    return m_module && qobject_cast<DataAggregationInterface*>(m_moduleObject.get());
}

qint32 ModuleBox::GetAggregatedData(const QString& channelList, ChannelCollection& channels, double from, double to,
    double gridStart, qint64 stepSeconds)
{
    auto* aggregation = m_module ? qobject_cast<DataAggregationInterface*>(m_moduleObject.get()) : nullptr;
    if (!aggregation)
        return -1;
    try {
        qint32 status = 0;
        return aggregation->GetAggregatedData(channelList, channels, from, to, gridStart, stepSeconds, status);
    } catch (...) {
        return -1;
    }
}

double ModuleBox::GetFirstDate(const QString& channelId)
{
    double date = 0.0;
    try {
        if (m_module)
            m_module->GetFirstDate(channelId, date);
    } catch (...) {
        date = 0.0;
    }
    return date;
}

double ModuleBox::GetLastDate(const QString& channelId)
{
    double date = 0.0;
    try {
        if (m_module)
            m_module->GetLastDate(channelId, date);
    } catch (...) {
        date = 0.0;
    }
    return date;
}
