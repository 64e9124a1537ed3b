// SPDX-License-Identifier: GPL-3.0-or-later
// Reads and writes the profile file (Profiles.dat): XML with the root "profiles", one
// "profile" element per profile, values as element texts only.
#pragma once

#include "Profile.h"
#include "XmlTree.h"

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <variant>

class ProfileFileHandler
{
public:
    static constexpr qint32 Ok = 0;
    static constexpr qint32 NoProfiles = -1; // no collection set
    static constexpr qint32 NoPath = -2; // the tree was built and dropped
    static constexpr qint32 WriteFailed = -3; // logged; the old file, if any, is left whole

    // The collection Save writes and Load adds to; not owned, none at first.
    ProfileCollection* Profiles() const { return m_colProfiles; }
    void SetProfiles(ProfileCollection* profiles) { m_colProfiles = profiles; }

    // Writes every profile of the collection in its order, atomically (a temporary file renamed
    // over the old one). The path may use "\" or "/".
    qint32 Save(const QString& path) const;
    // The file's bytes as Save writes them; empty without a collection.
    QByteArray SaveToBytes() const;

    // Adds the file's profiles to the collection; NoProfiles without one, else Ok, whatever the
    // file holds. A profile whose name is a key of the collection already is dropped (logged).
    // A missing file adds nothing; an unreadable, damaged or foreign one adds nothing and is
    // logged. The path may use "\" or "/".
    qint32 Load(const QString& path);
    // The same on bytes in memory.
    qint32 LoadFromBytes(const QByteArray& bytes);

    // A value as the writer sees it; its type decides the text (the names in brackets are
    // the value types of the file's description):
    // bool (Boolean): "true" or "false". qint16 (Integer): the decimal number. qint32 (Long):
    // the chart type word in an element "gallery", the line style word in an element
    // "line-style", the decimal number elsewhere. float (Single), double (Double): the number
    // with "." as decimal point. QString (String): the text. No value: no text, for groups.
    using Value = std::variant<std::monostate, bool, qint16, qint32, float, double, QString>;
    // Appends the element with the value's text to the parent and returns it.
    static XmlNode AddValueNode(XmlNode parent, const QString& name, const Value& value = {});

private:
    void WriteDocument(XmlDocument& doc) const;
    void ReadDocument(XmlDocument& doc, bool loaded, const QString& source);

    ProfileCollection* m_colProfiles = nullptr;
};
