// SPDX-License-Identifier: GPL-3.0-or-later
#include "XmlTree.h"

#include "SafeSave.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>

namespace {

// Only the predefined entities and character references are replaced; a DOCTYPE is skipped
// unread, so no entity declared in it is ever expanded and no external file is ever opened.
// Comments, processing instructions and the declaration are dropped on reading; whitespace-
// only text between elements is not kept (the writer indents anew).
constexpr unsigned int ParseOptions
    = (pugi::parse_cdata | pugi::parse_escapes | pugi::parse_wconv_attribute | pugi::parse_eol)
    & ~(pugi::parse_doctype | pugi::parse_declaration | pugi::parse_pi | pugi::parse_comments);

// Indentation costs one tab per level on every line, so deeply nested input would be
// written quadratically large; such trees are written without line breaks instead.
constexpr int MaxIndentedDepth = 64;

constexpr char Declaration[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

const QString DefaultRootTag = QStringLiteral("root");

QString FromUtf8(const char* text)
{
    return QString::fromUtf8(text);
}

bool IsElement(pugi::xml_node node)
{
    return node.type() == pugi::node_element;
}

bool HasName(pugi::xml_node node, const QByteArray& name)
{
    return IsElement(node) && std::strcmp(node.name(), name.constData()) == 0;
}

// The text with every byte sequence that is not UTF-8 replaced by U+FFFD; nothing when the
// text is valid already (the usual case, checked without allocating for ASCII).
std::optional<QByteArray> RepairedUtf8(const char* text)
{
    const char* p = text;
    while (*p && static_cast<unsigned char>(*p) < 0x80)
        ++p;
    if (!*p)
        return std::nullopt;
    QStringDecoder decoder(
        QStringDecoder::Utf8, QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    const QString decoded = decoder.decode(QByteArrayView(text));
    if (!decoder.hasError())
        return std::nullopt;
    return decoded.toUtf8();
}

// Brings a freshly parsed tree into the form it has when written and read again:
// - Text runs that were split by a skipped comment or processing instruction are joined, so
//   that Content gives the whole text, now and after the next save.
// - Every name and text is made valid UTF-8. Otherwise a text read as a QString (with
//   U+FFFD in it) would no longer match its node when searched for, and the document would
//   be written back as invalid UTF-8.
void Normalise(pugi::xml_node top)
{
    pugi::xml_node node = top;
    while (node) {
        if (node.type() == pugi::node_pcdata) {
            std::string joined;
            for (pugi::xml_node next = node.next_sibling(); next.type() == pugi::node_pcdata;
                 next = node.next_sibling()) {
                if (joined.empty())
                    joined = node.value();
                joined += next.value();
                node.parent().remove_child(next);
            }
            if (!joined.empty())
                node.set_value(joined.c_str());
        }
        if (const auto name = RepairedUtf8(node.name()))
            node.set_name(name->constData());
        if (const auto value = RepairedUtf8(node.value()))
            node.set_value(value->constData());
        for (pugi::xml_attribute attribute = node.first_attribute(); attribute;
             attribute = attribute.next_attribute()) {
            if (const auto name = RepairedUtf8(attribute.name()))
                attribute.set_name(name->constData());
            if (const auto value = RepairedUtf8(attribute.value()))
                attribute.set_value(value->constData());
        }

        if (node.first_child()) {
            node = node.first_child();
            continue;
        }
        while (node != top && !node.next_sibling())
            node = node.parent();
        node = node == top ? pugi::xml_node() : node.next_sibling();
    }
}

int Depth(pugi::xml_node top)
{
    int depth = 0;
    int deepest = 0;
    pugi::xml_node node = top;
    while (node) {
        deepest = std::max(deepest, depth);
        if (node.first_child()) {
            node = node.first_child();
            ++depth;
            continue;
        }
        while (node != top && !node.next_sibling()) {
            node = node.parent();
            --depth;
        }
        node = node == top ? pugi::xml_node() : node.next_sibling();
    }
    return deepest;
}

class ByteArrayWriter : public pugi::xml_writer
{
public:
    explicit ByteArrayWriter(QByteArray& out)
        : m_out(out)
    { }
    void write(const void* data, size_t size) override
    {
        m_out.append(static_cast<const char*>(data), static_cast<qsizetype>(size));
    }

private:
    QByteArray& m_out;
};

QString DescribeFile(const QString& path)
{
    return QStringLiteral("XML file \"%1\"").arg(QDir::toNativeSeparators(path));
}

} // namespace

// ---------------------------------------------------------------------------------------
// XmlNode

QString XmlNode::Tag() const
{
    return FromUtf8(m_node.name());
}

void XmlNode::SetTag(const QString& tag)
{
    if (IsElement(m_node))
        m_node.set_name(tag.toUtf8().constData());
}

QString XmlNode::Content() const
{
    return FromUtf8(m_node.text().get());
}

void XmlNode::SetContent(const QString& text)
{
    // Only elements: on any other node pugixml would add a text node at document level.
    if (IsElement(m_node))
        m_node.text().set(text.toUtf8().constData());
}

XmlNode XmlNode::NewChild(const QString& tag, const QString& text)
{
    if (!IsElement(m_node))
        return XmlNode();
    XmlNode child(m_node.append_child(tag.toUtf8().constData()));
    if (!text.isEmpty())
        child.SetContent(text);
    return child;
}

QString XmlNode::ChildContent(const QString& tag, const QString& defaultText) const
{
    const XmlNode child = ChildByTag(tag);
    return child ? child.Content() : defaultText;
}

XmlNode XmlNode::ChildByTag(const QString& tag) const
{
    return NthChild(tag, 0);
}

int XmlNode::ChildCount(const QString& tag) const
{
    const QByteArray name = tag.toUtf8();
    int count = 0;
    for (pugi::xml_node child = m_node.first_child(); child; child = child.next_sibling()) {
        if (HasName(child, name))
            ++count;
    }
    return count;
}

int XmlNode::ChildCount() const
{
    int count = 0;
    for (pugi::xml_node child = m_node.first_child(); child; child = child.next_sibling()) {
        if (IsElement(child))
            ++count;
    }
    return count;
}

XmlNode XmlNode::NthChild(const QString& tag, int index) const
{
    if (index < 0)
        return XmlNode();
    const QByteArray name = tag.toUtf8();
    for (pugi::xml_node child = m_node.first_child(); child; child = child.next_sibling()) {
        if (HasName(child, name) && index-- == 0)
            return XmlNode(child);
    }
    return XmlNode();
}

XmlNode XmlNode::NthChild(int index) const
{
    if (index < 0)
        return XmlNode();
    for (pugi::xml_node child = m_node.first_child(); child; child = child.next_sibling()) {
        if (IsElement(child) && index-- == 0)
            return XmlNode(child);
    }
    return XmlNode();
}

XmlNode XmlNode::Parent() const
{
    const pugi::xml_node parent = m_node.parent();
    return IsElement(parent) ? XmlNode(parent) : XmlNode();
}

QString XmlNode::Attribute(const QString& name, const QString& defaultText) const
{
    const pugi::xml_attribute attribute = m_node.attribute(name.toUtf8().constData());
    return attribute ? FromUtf8(attribute.value()) : defaultText;
}

void XmlNode::SetAttribute(const QString& name, const QString& value)
{
    if (!IsElement(m_node))
        return;
    const QByteArray key = name.toUtf8();
    pugi::xml_attribute attribute = m_node.attribute(key.constData());
    if (!attribute)
        attribute = m_node.append_attribute(key.constData());
    attribute.set_value(value.toUtf8().constData());
}

XmlNode XmlNode::FindDescendant(const QString& tag, const QString& attribute, const QString& value) const
{
    const QByteArray name = tag.toUtf8();
    const QByteArray key = attribute.toUtf8();
    const QByteArray wanted = value.toUtf8();

    // Iterative pre-order walk, so that deeply nested input cannot exhaust the stack.
    pugi::xml_node node = m_node.first_child();
    while (node) {
        if (HasName(node, name)) {
            const pugi::xml_attribute found = node.attribute(key.constData());
            if (found && std::strcmp(found.value(), wanted.constData()) == 0)
                return XmlNode(node);
        }
        if (node.first_child()) {
            node = node.first_child();
            continue;
        }
        while (node != m_node && !node.next_sibling())
            node = node.parent();
        node = node == m_node ? pugi::xml_node() : node.next_sibling();
    }
    return XmlNode();
}

void XmlNode::Remove()
{
    pugi::xml_node parent = m_node.parent();
    if (parent)
        parent.remove_child(m_node);
    m_node = pugi::xml_node();
}

// ---------------------------------------------------------------------------------------
// XmlDocument

XmlNode XmlDocument::RootNode()
{
    pugi::xml_node root = m_doc.document_element();
    if (!root) {
        const QString& tag = m_rootTag.isEmpty() ? DefaultRootTag : m_rootTag;
        root = m_doc.append_child(tag.toUtf8().constData());
    }
    return XmlNode(root);
}

XmlNode XmlDocument::CreateRoot(const QString& tag)
{
    m_doc.reset();
    m_rootTag = tag;
    return XmlNode(m_doc.append_child(tag.toUtf8().constData()));
}

bool XmlDocument::LoadFile(const QString& path)
{
    const QString source = DescribeFile(path);
    auto fail = [this, &source](const QString& reason) {
        m_doc.reset();
        m_lastError = QStringLiteral("Cannot read %1: %2").arg(source, reason);
        return false;
    };

    if (path.isEmpty())
        return fail(QStringLiteral("no file name given"));
    if (QFileInfo(path).isDir())
        return fail(QStringLiteral("it is a folder"));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return fail(file.errorString());
    const QByteArray data = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return fail(file.errorString());
    return Parse(data, source);
}

bool XmlDocument::LoadString(const QByteArray& text)
{
    return Parse(text, QStringLiteral("XML text"));
}

bool XmlDocument::Parse(const QByteArray& text, const QString& source)
{
    m_doc.reset();
    if (text.isEmpty()) {
        m_lastError = QStringLiteral("Cannot read %1: it is empty").arg(source);
        return false;
    }

    const pugi::xml_parse_result result
        = m_doc.load_buffer(text.constData(), static_cast<size_t>(text.size()), ParseOptions, pugi::encoding_auto);
    if (!result || !m_doc.document_element()) {
        m_doc.reset();
        if (!result && result.status != pugi::status_no_document_element) {
            // The offset counts in the parsed buffer; it gives a line number only when that
            // buffer is the file's own UTF-8 bytes.
            const qsizetype offset = static_cast<qsizetype>(result.offset);
            QString where = QStringLiteral("byte %1").arg(offset);
            if (result.encoding == pugi::encoding_utf8 && offset >= 0 && offset <= text.size())
                where = QStringLiteral("line %1, %2").arg(text.left(offset).count('\n') + 1).arg(where);
            m_lastError = QStringLiteral("Cannot read %1: %2 at %3").arg(source, FromUtf8(result.description()), where);
        } else {
            m_lastError = QStringLiteral("Cannot read %1: it has no root element").arg(source);
        }
        return false;
    }
    Normalise(m_doc);
    m_lastError.clear();
    return true;
}

bool XmlDocument::SaveFile(const QString& path) const
{
    const QString target = DescribeFile(path);
    if (!m_doc.document_element()) {
        m_lastError = QStringLiteral("Cannot write %1: the document has no root element").arg(target);
        return false;
    }

    SafeSave file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        m_lastError = QStringLiteral("Cannot write %1: %2").arg(target, file.errorString());
        return false;
    }
    const QByteArray data = ToString();
    if (file.write(data) != data.size()) {
        m_lastError = QStringLiteral("Cannot write %1: %2").arg(target, file.errorString());
        file.cancelWriting();
        return false;
    }
    if (!file.commit()) {
        m_lastError = QStringLiteral("Cannot write %1: %2").arg(target, file.errorString());
        return false;
    }
    m_lastError.clear();
    return true;
}

QByteArray XmlDocument::ToString() const
{
    QByteArray out;
    if (!m_doc.document_element())
        return out;
    out = Declaration;
    ByteArrayWriter writer(out);
    const unsigned int layout = Depth(m_doc) <= MaxIndentedDepth ? pugi::format_indent : pugi::format_raw;
    m_doc.save(writer, "\t", layout | pugi::format_no_declaration, pugi::encoding_utf8);
    return out;
}
