// SPDX-License-Identifier: GPL-3.0-or-later
// A small XML tree on pugixml with the operations the file handlers use.
#pragma once

#include <QByteArray>
#include <QString>

#include <pugixml.hpp>

// A handle to one element of an XmlDocument. It does not own the element: it stays valid
// while the element is in its document and the document is neither reloaded, replaced by
// CreateRoot nor destroyed. Every operation on a null handle is safe: readers return an
// empty text, the default, 0 or a null handle, writers do nothing.
//
// Texts are QStrings and stored as UTF-8. Tags and attribute names are written as given:
// the caller must pass valid XML names (no blanks, no leading digit, not empty), otherwise
// the file written cannot be read back.
class XmlNode
{
public:
    XmlNode() = default;
    explicit XmlNode(pugi::xml_node node) : m_node(node) {}

    bool IsNull() const { return !m_node; }
    explicit operator bool() const { return !IsNull(); }

    QString Tag() const;
    void SetTag(const QString& tag);

    QString Content() const;               // text of the element: its first text or CDATA child
    void SetContent(const QString& text);  // replaces that text, or adds one

    XmlNode NewChild(const QString& tag, const QString& text = QString()); // appended at the end
    // Text of the first child of that name; the default only when there is no such child.
    QString ChildContent(const QString& tag, const QString& defaultText = QString()) const;
    XmlNode ChildByTag(const QString& tag) const; // first child of that name, null when absent
    int ChildCount(const QString& tag) const;     // direct element children of that name
    int ChildCount() const;                       // all direct element children
    // The index-th child of that name, counting only children of that name, from 0; null
    // when out of range.
    XmlNode NthChild(const QString& tag, int index) const;
    XmlNode NthChild(int index) const; // the index-th element child of any name
    XmlNode Parent() const; // the parent element; null above the document's root element

    // The attribute's value; the default when the element has no such attribute.
    QString Attribute(const QString& name, const QString& defaultText = QString()) const;
    void SetAttribute(const QString& name, const QString& value);

    // First element below this node, not the node itself (depth first, document order), with
    // that tag whose attribute exists and has that value.
    XmlNode FindDescendant(const QString& tag, const QString& attribute, const QString& value) const;

    // Removes this node and everything below it from its parent; the handle is null
    // afterwards. Other handles into the removed part must not be used any more.
    void Remove();

    pugi::xml_node Raw() const { return m_node; }

private:
    pugi::xml_node m_node;
};

// An XML document kept in memory, read from and written to UTF-8 files.
class XmlDocument
{
public:
    XmlDocument() = default;

    // The document's root element. When the document has none (new, failed to load, root
    // removed) one is created, named after the tag last given to CreateRoot, or "root" when
    // CreateRoot was never called. The file handlers then name it with SetTag.
    XmlNode RootNode();
    XmlNode CreateRoot(const QString& tag); // replaces the whole document

    // Loading never resolves entities other than the five predefined ones and character
    // references, skips any DOCTYPE and never reads another file. A malformed, truncated or
    // empty input, one without a root element, a missing file or a folder fails: the
    // document is then empty and LastError names the file and the fault.
    // The input is UTF-8 unless a byte order mark or the declaration names another encoding;
    // byte sequences that are not valid UTF-8 are read as U+FFFD, so that every text of a
    // loaded tree reads back and is written again unchanged.
    bool LoadFile(const QString& path);
    bool LoadString(const QByteArray& text);

    // Writes the document with a UTF-8 declaration, indented (unless it nests deeper than
    // real documents do; then on one line, to keep the size linear). Saved through SafeSave: a
    // failed save leaves the old file whole, a link stays a link, a pipe or device is written
    // in place. A document without a root element is not written (it could not be read back).
    bool SaveFile(const QString& path) const;
    QByteArray ToString() const;

    // The reason of the last failed load or save; empty after a successful one.
    QString LastError() const { return m_lastError; }

private:
    bool Parse(const QByteArray& text, const QString& source);

    pugi::xml_document m_doc;
    QString m_rootTag;
    mutable QString m_lastError;
};
