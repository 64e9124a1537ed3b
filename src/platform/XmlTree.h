// SPDX-License-Identifier: GPL-3.0-or-later
// A small XML tree on pugixml with the operations the file handlers use.
#pragma once

#include <QString>

#include <pugixml.hpp>

class XmlNode
{
public:
    XmlNode() = default;
    explicit XmlNode(pugi::xml_node node) : m_node(node) {}

    bool IsNull() const { return !m_node; }
    explicit operator bool() const { return !IsNull(); }

    QString Tag() const;
    void SetTag(const QString& tag);

    QString Content() const;               // text of the element
    void SetContent(const QString& text);

    XmlNode NewChild(const QString& tag, const QString& text = QString()); // appended at the end
    QString ChildContent(const QString& tag, const QString& defaultText = QString()) const;
    XmlNode ChildByTag(const QString& tag) const; // first child of that name, null when absent
    int ChildCount(const QString& tag) const;     // direct element children of that name
    int ChildCount() const;                       // all direct element children
    XmlNode NthChild(const QString& tag, int index) const; // index from 0, null when out of range
    XmlNode NthChild(int index) const;                     // any element child
    XmlNode Parent() const;

    QString Attribute(const QString& name, const QString& defaultText = QString()) const;
    void SetAttribute(const QString& name, const QString& value);

    // First element below this node (depth first, document order) with that tag whose
    // attribute has that value.
    XmlNode FindDescendant(const QString& tag, const QString& attribute, const QString& value) const;

    // Removes this node from its parent; the handle is null afterwards.
    void Remove();

    pugi::xml_node Raw() const { return m_node; }

private:
    pugi::xml_node m_node;
};

class XmlDocument
{
public:
    XmlDocument() = default;

    // The root element; created with the given tag when the document has none.
    XmlNode RootNode();
    XmlNode CreateRoot(const QString& tag); // replaces the whole document

    // Loading never resolves external entities and never crashes: a malformed, truncated
    // or empty file fails, leaves an empty document and sets LastError.
    bool LoadFile(const QString& path);
    bool LoadString(const QByteArray& text);

    // Writes atomically: a temporary file is renamed over the old one, so that a failed
    // save leaves the old file whole.
    bool SaveFile(const QString& path) const;
    QByteArray ToString() const;

    QString LastError() const { return m_lastError; }

private:
    pugi::xml_document m_doc;
    QString m_lastError;
};
