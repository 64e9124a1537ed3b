// SPDX-License-Identifier: GPL-3.0-or-later
#include "SoranoFileHandler.h"

#include "Calendar.h"
#include "Globals.h"
#include "Numeric.h"
#include "RegistryKey.h"
#include "Settings.h"
#include "XmlTree.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace SoranoFileHandler {

namespace {

const QString RootTag = QStringLiteral("sorano-measuring");

struct Word
{
    qint32 value;
    const char* text;
};

constexpr std::array<Word, 3> Galleries { { { 1, "lines" }, { 2, "bar" }, { 8, "step" } } };
constexpr std::array<Word, 6> LineStyles { { { 0, "solid" }, { 1, "dash" }, { 2, "dot" }, { 3, "dashdot" },
    { 4, "dashdotdot" }, { -1, "none" } } };

template<size_t N> std::optional<QString> WordOf(const std::array<Word, N>& words, qint32 value)
{
    for (const Word& word : words) {
        if (word.value == value)
            return QString::fromLatin1(word.text);
    }
    return std::nullopt;
}

template<size_t N> std::optional<qint32> ValueOf(const std::array<Word, N>& words, const QString& text)
{
    const QString lower = text.toLower();
    for (const Word& word : words) {
        if (lower == QLatin1String(word.text))
            return word.value;
    }
    return std::nullopt;
}

// ---------------------------------------------------------------------------------------
// Writing. Every value element gets a text, an empty one too, so that it is written as
// "<tag></tag>"; groups get children only.

void WriteText(XmlNode& parent, const QString& tag, const QString& text)
{
    XmlNode child = parent.NewChild(tag);
    child.SetContent(text);
}

void WriteBool(XmlNode& parent, const QString& tag, bool value)
{
    WriteText(parent, tag, value ? QStringLiteral("true") : QStringLiteral("false"));
}

void WriteNumber(XmlNode& parent, const QString& tag, qint32 value)
{
    WriteText(parent, tag, QString::number(value));
}

// "yyyy-mm-dd hh:nn:ss". The form has four digits for the year, so a date outside the years
// 0 to 9999 is written as the nearest date it can hold: every date written reads back.
void WriteDate(XmlNode& parent, const QString& tag, double date)
{
    static const double first = Calendar::FromParts(0, 1, 1);
    static const double last = Calendar::FromParts(9999, 12, 31, 23, 59, 59);
    const Calendar::DateParts d = Calendar::Split(std::clamp(date, first, last));
    WriteText(parent, tag,
        QString::asprintf("%04d-%02d-%02d %02d:%02d:%02d", d.year, d.month, d.day, d.hour, d.minute, d.second));
}

void WriteCurve(XmlNode curves, const MeasuringFile::Curve& curve)
{
    XmlNode node = curves.NewChild("curve");
    WriteText(node, "name", curve.name.value_or(QString()));
    WriteText(node, "unit", curve.unit.value_or(QString()));
    WriteBool(node, "visible", curve.visible);
    WriteNumber(node, "y-axis", curve.yAxis.value_or(0));

    XmlNode channels = node.NewChild("channels");
    for (const QString& channel : curve.channels)
        WriteText(channels, "channel", channel);

    if (curve.series) {
        const MeasuringFile::Series& look = *curve.series;
        XmlNode series = node.NewChild("series-properties");
        WriteText(series, "gallery", GalleryWord(look.gallery));
        if (look.color)
            WriteNumber(series, "color", *look.color);
        if (look.lineWidth)
            WriteNumber(series, "line-width", *look.lineWidth);
        WriteText(series, "line-style", LineStyleWord(look.lineStyle));
        WriteBool(series, "marker", look.marker);
    }

    XmlNode statistics = node.NewChild("statistics");
    for (const MeasuringFile::Statistic& statistic : curve.statistics) {
        XmlNode item = statistics.NewChild("statistic");
        WriteText(item, "id", statistic.id);
        WriteBool(item, "visible", statistic.visible);
    }

    XmlNode cursors = node.NewChild("cursors");
    for (const MeasuringFile::Cursor& cursor : curve.cursors) {
        XmlNode item = cursors.NewChild("cursor");
        WriteDate(item, "datetime", cursor.dateTime);
        WriteText(item, "customtext", cursor.customText);
        WriteText(item, "position", cursor.position);
        WriteBool(item, "visible", cursor.visible);
    }
}

void WriteDocument(XmlNode root, const MeasuringFile& file)
{
    WriteText(root, "name", file.name);
    WriteText(root, "remark", file.remark);
    WriteBool(root, "autoscale", file.autoScale);
    WriteText(root, "intervall-unit", file.intervalUnit);
    WriteNumber(root, "intervall-count", file.intervalCount);
    WriteBool(root, "showstatistics", file.showStatistics);
    WriteText(root, "viewmode", ViewModeWord(file.viewMode));
    WriteText(root, "zoomhistory", file.zoomHistory);
    WriteDate(root, "startdate", file.startDate);
    WriteDate(root, "enddate", file.endDate);

    XmlNode annotation = root.NewChild("annotation");
    WriteBool(annotation, "visible", file.annotationVisible);
    WriteText(annotation, "position", file.annotationPosition);

    XmlNode modules = root.NewChild("modules");
    for (const QString& address : file.modules)
        WriteText(modules, "module", address);

    XmlNode graph = root.NewChild("graph-properties");
    WriteText(graph, "gallery", GalleryWord(file.graph.Gallery));
    WriteBool(graph, "legend", file.graph.Legend);
    WriteBool(graph, "display-3d", file.graph.View3D);
    WriteBool(graph, "grid1", file.graph.ShowYGrid1);
    WriteBool(graph, "grid2", file.graph.ShowYGrid2);
    WriteText(graph, "title", file.graph.Title);

    XmlNode address = root.NewChild("customer-address");
    WriteText(address, "name", file.address.Name);
    WriteText(address, "contact", file.address.FirstName);
    WriteText(address, "street", file.address.Street);
    WriteText(address, "zipcity", file.address.Place);
    WriteText(address, "remark", file.address.Memo);

    XmlNode curves = root.NewChild("curves");
    for (const MeasuringFile::Curve& curve : file.curves)
        WriteCurve(curves, curve);
}

// ---------------------------------------------------------------------------------------
// Reading. Elements are looked up by name, so their order is free. A missing group is
// skipped whole; a missing element of a present group takes its reading default where it
// has one, and otherwise keeps what the target holds.

void ReadText(const XmlNode& node, const QString& tag, QString& target)
{
    if (const XmlNode child = node.ChildByTag(tag))
        target = child.Content();
}

std::optional<QString> OptionalText(const XmlNode& node, const QString& tag)
{
    if (const XmlNode child = node.ChildByTag(tag))
        return child.Content();
    return std::nullopt;
}

// Only the exact text "true" is true.
bool ReadBool(const XmlNode& node, const QString& tag, bool missing)
{
    const XmlNode child = node.ChildByTag(tag);
    return child ? child.Content() == QLatin1String("true") : missing;
}

std::optional<qint32> OptionalNumber(const XmlNode& node, const QString& tag)
{
    if (const XmlNode child = node.ChildByTag(tag))
        return ClampToInt(LeadingNumber(child.Content()));
    return std::nullopt;
}

void ReadNumber(const XmlNode& node, const QString& tag, qint32& target)
{
    if (const std::optional<qint32> value = OptionalNumber(node, tag))
        target = *value;
}

std::optional<double> ReadDate(const XmlNode& node, const QString& tag)
{
    const XmlNode child = node.ChildByTag(tag);
    return child ? Calendar::ParseDate(child.Content()) : std::nullopt;
}

// A missing date or one that is no date reads as the present moment; the second is noted.
double ReadDateOrNow(const XmlNode& node, const QString& tag, QList<MeasuringFile::Unreadable>& unreadable)
{
    const XmlNode child = node.ChildByTag(tag);
    if (!child)
        return Calendar::Now();
    if (const std::optional<double> date = Calendar::ParseDate(child.Content()))
        return *date;
    unreadable.append({ tag, child.Content() });
    return Calendar::Now();
}

// Visits the children of that name in order, walking the siblings once: counting and then
// indexing them would take quadratic time on a file with a long list.
template<typename Visit> void ForEachChild(const XmlNode& parent, const char* tag, Visit visit)
{
    for (pugi::xml_node child = parent.Raw().child(tag); child; child = child.next_sibling(tag))
        visit(XmlNode(child));
}

MeasuringFile::Curve ReadCurve(const XmlNode& node)
{
    MeasuringFile::Curve curve;
    curve.name = OptionalText(node, "name");
    curve.unit = OptionalText(node, "unit");
    curve.visible = ReadBool(node, "visible", true);
    curve.yAxis = OptionalNumber(node, "y-axis");

    ForEachChild(node.ChildByTag("channels"), "channel", [&curve](const XmlNode& item) {
        const QString key = item.Content();
        if (!key.isEmpty())
            curve.channels << key;
    });

    if (const XmlNode series = node.ChildByTag("series-properties")) {
        MeasuringFile::Series look;
        look.gallery = GalleryFromWord(series.ChildContent("gallery"));
        look.color = OptionalNumber(series, "color");
        look.lineWidth = OptionalNumber(series, "line-width");
        look.lineStyle = LineStyleFromWord(series.ChildContent("line-style", "solid"));
        look.marker = ReadBool(series, "marker", false);
        curve.series = look;
    }

    ForEachChild(node.ChildByTag("statistics"), "statistic", [&curve](const XmlNode& item) {
        curve.statistics.append({ item.ChildContent("id"), ReadBool(item, "visible", false) });
    });

    ForEachChild(node.ChildByTag("cursors"), "cursor", [&curve](const XmlNode& item) {
        const std::optional<double> date = ReadDate(item, "datetime");
        if (!date)
            return;
        MeasuringFile::Cursor cursor;
        cursor.dateTime = *date;
        ReadText(item, "customtext", cursor.customText);
        ReadText(item, "position", cursor.position);
        cursor.visible = ReadBool(item, "visible", true);
        curve.cursors.append(std::move(cursor));
    });
    return curve;
}

// False, with `target` untouched, unless the document loaded and its root is a view file's.
bool ReadDocument(bool loaded, XmlDocument& doc, MeasuringFile& target)
{
    if (!loaded) // RootNode would make a root for the empty document
        return false;
    const XmlNode root = doc.RootNode();
    if (root.Tag() != RootTag)
        return false;

    MeasuringFile file = target;
    file.modules.clear();
    file.hasCurves = false;
    file.curves.clear();
    file.unreadable.clear();
    ReadText(root, "name", file.name);
    ReadText(root, "remark", file.remark);
    file.autoScale = ReadBool(root, "autoscale", true);
    ReadText(root, "intervall-unit", file.intervalUnit);
    if (!file.intervalUnit.isEmpty() && !Calendar::ParseUnit(file.intervalUnit))
        file.unreadable.append({ QStringLiteral("intervall-unit"), file.intervalUnit });
    ReadNumber(root, "intervall-count", file.intervalCount);
    file.showStatistics = ReadBool(root, "showstatistics", true);
    file.viewMode = ViewModeFromWord(root.ChildContent("viewmode", "chart"));
    ReadText(root, "zoomhistory", file.zoomHistory);
    file.startDate = ReadDateOrNow(root, "startdate", file.unreadable);
    file.endDate = ReadDateOrNow(root, "enddate", file.unreadable);

    if (const XmlNode annotation = root.ChildByTag("annotation")) {
        file.annotationVisible = ReadBool(annotation, "visible", false);
        ReadText(annotation, "position", file.annotationPosition);
    }

    ForEachChild(
        root.ChildByTag("modules"), "module", [&file](const XmlNode& item) { file.modules << item.Content(); });

    if (const XmlNode graph = root.ChildByTag("graph-properties")) {
        file.graph.Gallery = GalleryFromWord(graph.ChildContent("gallery", "bar"));
        file.graph.Legend = ReadBool(graph, "legend", false);
        file.graph.View3D = ReadBool(graph, "display-3d", false);
        file.graph.ShowYGrid1 = ReadBool(graph, "grid1", true);
        file.graph.ShowYGrid2 = ReadBool(graph, "grid2", false);
        ReadText(graph, "title", file.graph.Title);
    }

    const XmlNode address = root.ChildByTag("customer-address");
    ReadText(address, "name", file.address.Name);
    ReadText(address, "contact", file.address.FirstName);
    ReadText(address, "street", file.address.Street);
    ReadText(address, "zipcity", file.address.Place);
    ReadText(address, "remark", file.address.Memo);

    const XmlNode curves = root.ChildByTag("curves");
    file.hasCurves = !curves.IsNull();
    ForEachChild(curves, "curve", [&file](const XmlNode& item) { file.curves.append(ReadCurve(item)); });

    target = std::move(file);
    return true;
}

} // namespace

QString GalleryWord(qint32 gallery)
{
    return WordOf(Galleries, gallery).value_or(QString());
}

qint32 GalleryFromWord(const QString& word)
{
    return ValueOf(Galleries, word).value_or(0);
}

QString LineStyleWord(qint32 style)
{
    return WordOf(LineStyles, style).value_or(QStringLiteral("solid"));
}

qint32 LineStyleFromWord(const QString& word)
{
    return ValueOf(LineStyles, word).value_or(0);
}

QString ViewModeWord(qint32 mode)
{
    return mode == 1 ? QStringLiteral("chart") : QStringLiteral("grid");
}

qint32 ViewModeFromWord(const QString& word)
{
    return word.toLower() == QLatin1String("grid") ? 2 : 1;
}

QByteArray SaveToBytes(const MeasuringFile& file)
{
    XmlDocument doc;
    WriteDocument(doc.CreateRoot(RootTag), file);
    return doc.ToString();
}

qint32 Save(const QString& path, const MeasuringFile& file)
{
    XmlDocument doc;
    WriteDocument(doc.CreateRoot(RootTag), file);
    if (path.isEmpty())
        return SaveResult::NoPath;
    return doc.SaveFile(path) ? SaveResult::Ok : SaveResult::WriteFailed;
}

qint32 Load(const QString& path, MeasuringFile& file, bool* isViewFile)
{
    XmlDocument doc;
    const bool read = ReadDocument(doc.LoadFile(path), doc, file);
    if (isViewFile)
        *isViewFile = read;
    return 0;
}

bool LoadFromBytes(const QByteArray& bytes, MeasuringFile& file)
{
    XmlDocument doc;
    return ReadDocument(doc.LoadString(bytes), doc, file);
}

QString ConvertOldChannelKey(const QString& key, const std::function<QString()>& newMeasuringId)
{
    if (g_sWhoAmI != QLatin1String("talven") || key.contains(u'#') || !key.contains(u'$'))
        return key;

    const QString module = key.section(u'$', 0, 0);
    const QString logged = key.section(u'$', 1, 1); // logger name and three digits
    const QString logger = logged.left(std::max<qsizetype>(0, logged.size() - 3));
    const int channel = ClampToInt(LeadingNumber(logged.right(3)));

    QString id = RegistryKey().ReadValue(Hive::LocalMachine, Settings::KeyQuandelKeys, logger);
    if (id.isEmpty() && newMeasuringId)
        id = newMeasuringId();
    return module + u'$' + id + u'#' + QString::number(channel);
}

} // namespace SoranoFileHandler
