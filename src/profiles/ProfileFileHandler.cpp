// SPDX-License-Identifier: GPL-3.0-or-later
#include "ProfileFileHandler.h"

#include "Logging.h"
#include "Numeric.h"
#include "SoranoFileHandler.h"

#include <QFileInfo>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <type_traits>
#include <utility>

namespace {

const QString RootTag = QStringLiteral("profiles");
const QString LoadSource = QStringLiteral("ProfileFileHandler.Load");

// Stored paths may use either separator.
QString LocalPath(const QString& path)
{
    return QString(path).replace(u'\\', u'/');
}

// The shortest text that reads back as the same number.
template<typename Number> QString NumberText(Number value)
{
    char buffer[64];
    const std::to_chars_result end = std::to_chars(buffer, buffer + sizeof buffer, value);
    return QString::fromLatin1(buffer, end.ptr - buffer).replace(u',', u'.');
}

// The text as a whole 32-bit number, rounded half to even; nothing when it is no number or
// does not fit, and the target then keeps its value.
std::optional<qint32> WholeNumber(const QString& text)
{
    if (!IsNumeric(text))
        return std::nullopt;
    const double value = std::nearbyint(LeadingNumber(text));
    if (!(value >= std::numeric_limits<qint32>::min() && value <= std::numeric_limits<qint32>::max()))
        return std::nullopt;
    return static_cast<qint32>(value);
}

// A text as it reads again after the next save, so that a name that is unique now stays unique:
// the XML tree writes a carriage return as it is, which reading makes a line feed, and it
// drops a text of blanks alone.
QString TextOf(const XmlNode& node, const QString& tag)
{
    QString text = node.ChildContent(tag);
    text.replace(QLatin1String("\r\n"), QLatin1String("\n")).replace(u'\r', u'\n');
    const bool blank
        = std::all_of(text.cbegin(), text.cend(), [](QChar c) { return c == u' ' || c == u'\t' || c == u'\n'; });
    return blank ? QString() : text;
}

// The numeric value of the leading number of the text, 0 for none.
qint32 NumberOf(const XmlNode& node, const QString& tag)
{
    return ClampToInt(LeadingNumber(node.ChildContent(tag)));
}

// Only the exact text "true" is true.
bool BoolOf(const XmlNode& node, const QString& tag, bool missing)
{
    return node.ChildContent(tag, missing ? QStringLiteral("true") : QStringLiteral("false")) == QLatin1String("true");
}

// Visits the children of that name in order, walking the siblings once: counting and then
// indexing them would take quadratic time on a file with a long list.
template<typename Visit> void ForEachChild(const XmlNode& parent, const char* tag, Visit visit)
{
    for (pugi::xml_node child = parent.Raw().child(tag); child; child = child.next_sibling(tag))
        visit(XmlNode(child));
}

// Line styles are read as plain numbers, not as the words they are written as: a word
// reads as 0, solid. Files of earlier versions depend on this, so it is kept.
SeriesProperties ReadSeries(const XmlNode& node)
{
    SeriesProperties series;
    series.Gallery = SoranoFileHandler::GalleryFromWord(node.ChildContent("gallery"));
    series.Color = NumberOf(node, "color");
    series.LineWidth = NumberOf(node, "line-width");
    series.LineStyle = NumberOf(node, "line-style");
    series.Marker = BoolOf(node, "marker", false);
    return series;
}

void ReadGraph(const XmlNode& node, GraphProperties& graph)
{
    graph.Gallery = SoranoFileHandler::GalleryFromWord(node.ChildContent("gallery"));
    graph.Legend = BoolOf(node, "legend", false);
    graph.View3D = BoolOf(node, "display-3d", false);
    graph.ShowYGrid1 = BoolOf(node, "grid1", true);
    graph.ShowYGrid2 = BoolOf(node, "grid2", true);
}

} // namespace

XmlNode ProfileFileHandler::AddValueNode(XmlNode parent, const QString& name, const Value& value)
{
    XmlNode child = parent.NewChild(name);
    std::visit(
        [&child, &name](const auto& v) {
            using T = std::decay_t<decltype(v)>;
            if constexpr (std::is_same_v<T, bool>) {
                child.SetContent(v ? QStringLiteral("true") : QStringLiteral("false"));
            } else if constexpr (std::is_same_v<T, qint16>) {
                child.SetContent(QString::number(v));
            } else if constexpr (std::is_same_v<T, qint32>) {
                if (name == QLatin1String("gallery"))
                    child.SetContent(SoranoFileHandler::GalleryWord(v));
                else if (name == QLatin1String("line-style"))
                    child.SetContent(SoranoFileHandler::LineStyleWord(v));
                else
                    child.SetContent(QString::number(v));
            } else if constexpr (std::is_same_v<T, float> || std::is_same_v<T, double>) {
                child.SetContent(NumberText(v));
            } else if constexpr (std::is_same_v<T, QString>) {
                child.SetContent(v);
            }
        },
        value);
    return child;
}

void ProfileFileHandler::WriteDocument(XmlDocument& doc) const
{
    XmlNode root = doc.CreateRoot(RootTag);
    for (const ProfilePtr& profile : *m_colProfiles) {
        XmlNode node = AddValueNode(root, "profile");
        AddValueNode(node, "name", profile->Name);
        AddValueNode(node, "datasource", profile->DataSourceID);
        AddValueNode(node, "entrylevel", profile->EntryLevel);

        XmlNode channels = AddValueNode(node, "channels");
        for (qint32 i = 1; i <= profile->ChannelCount(); ++i) {
            XmlNode channel = AddValueNode(channels, "channel");
            AddValueNode(channel, "name", profile->ChannelName(i));
            // A channel without a look of its own is written without one, and so read back.
            if (const SeriesProperties* look = profile->SeriesProperties(i)) {
                XmlNode series = AddValueNode(channel, "series-properties");
                AddValueNode(series, "gallery", look->Gallery);
                AddValueNode(series, "color", look->Color);
                AddValueNode(series, "line-width", look->LineWidth);
                AddValueNode(series, "line-style", look->LineStyle);
                AddValueNode(series, "marker", look->Marker);
            }
        }

        const ::GraphProperties& look = profile->GraphProperties;
        XmlNode graph = AddValueNode(node, "graph-properties");
        AddValueNode(graph, "gallery", look.Gallery);
        AddValueNode(graph, "legend", look.Legend);
        AddValueNode(graph, "display-3d", look.View3D);
        AddValueNode(graph, "grid1", look.ShowYGrid1);
        AddValueNode(graph, "grid2", look.ShowYGrid2);
    }
}

QByteArray ProfileFileHandler::SaveToBytes() const
{
    if (!m_colProfiles)
        return {};
    XmlDocument doc;
    WriteDocument(doc);
    return doc.ToString();
}

qint32 ProfileFileHandler::Save(const QString& path) const
{
    if (!m_colProfiles)
        return NoProfiles;
    XmlDocument doc;
    WriteDocument(doc);
    if (path.isEmpty())
        return NoPath;
    if (doc.SaveFile(LocalPath(path)))
        return Ok;
    WriteLog(QStringLiteral("profiles not saved"),
        doc.LastError() + QStringLiteral("; the file keeps the profiles it had."),
        QStringLiteral("ProfileFileHandler.Save"), LogLevel::Error);
    return WriteFailed;
}

void ProfileFileHandler::ReadDocument(XmlDocument& doc, bool loaded, const QString& source)
{
    if (!loaded) { // RootNode would make a root for the empty document
        WriteLog(QStringLiteral("profile file unreadable"),
            doc.LastError() + QStringLiteral("; no profiles were loaded from it."), LoadSource, LogLevel::Error);
        return;
    }
    const XmlNode root = doc.RootNode();
    if (root.Tag() != RootTag) {
        WriteLog(QStringLiteral("no profile file"),
            source + QStringLiteral(" has the root element <") + root.Tag()
                + QStringLiteral(">, not <profiles>; no profiles were loaded from it."),
            LoadSource, LogLevel::Error);
        return;
    }

    ForEachChild(root, "profile", [this, &source](const XmlNode& node) {
        auto profile = std::make_shared<Profile>();
        profile->Name = TextOf(node, "name");
        if (const std::optional<qint32> address = WholeNumber(node.ChildContent("datasource")))
            profile->DataSourceID = *address;
        profile->EntryLevel = NumberOf(node, "entrylevel");
        if (!m_colProfiles->Add(profile)) {
            WriteLog(QStringLiteral("duplicate profile"),
                QStringLiteral("A profile named \"") + profile->Name + QStringLiteral("\" exists already; the one in ")
                    + source + QStringLiteral(" is skipped."),
                LoadSource, LogLevel::Error);
            return;
        }

        qint32 index = 0;
        ForEachChild(node.ChildByTag("channels"), "channel", [&profile, &index](const XmlNode& channel) {
            ++index;
            profile->SetChannelName(index, TextOf(channel, "name"));
            if (const XmlNode series = channel.ChildByTag("series-properties"))
                profile->SetSeriesProperties(index, ReadSeries(series));
        });
        if (const XmlNode graph = node.ChildByTag("graph-properties"))
            ReadGraph(graph, profile->GraphProperties);
    });
}

qint32 ProfileFileHandler::Load(const QString& path)
{
    if (!m_colProfiles)
        return NoProfiles;
    const QString file = LocalPath(path);
    XmlDocument doc;
    const bool loaded = doc.LoadFile(file);
    // No file is the usual first start: nothing to say.
    if (loaded || QFileInfo::exists(file))
        ReadDocument(doc, loaded, file);
    return Ok;
}

qint32 ProfileFileHandler::LoadFromBytes(const QByteArray& bytes)
{
    if (!m_colProfiles)
        return NoProfiles;
    XmlDocument doc;
    const bool loaded = doc.LoadString(bytes);
    ReadDocument(doc, loaded, QStringLiteral("the profile text"));
    return Ok;
}
