// SPDX-License-Identifier: GPL-3.0-or-later
// Loads arbitrary bytes as XML, walks the tree through XmlNode, writes it and reads it back.
#include "XmlTree.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace {

void Check(bool condition)
{
    if (!condition)
        __builtin_trap();
}

struct WalkResult
{
    int elements = 0;
    qsizetype textLength = 0;
};

// Visits every element without recursion (the input may nest deeply) and checks that the
// ways to reach a child agree with each other.
WalkResult Walk(XmlNode root)
{
    WalkResult result;
    int searches = 0;
    std::vector<XmlNode> pending{root};
    while (!pending.empty()) {
        const XmlNode node = pending.back();
        pending.pop_back();
        ++result.elements;

        const QString tag = node.Tag();
        result.textLength += node.Content().size();

        const pugi::xml_attribute first = node.Raw().first_attribute();
        if (first) {
            const QString name = QString::fromUtf8(first.name());
            const QString value = node.Attribute(name, QStringLiteral("\x01missing"));
            Check(value != QStringLiteral("\x01missing"));
            // Some element with that tag and value exists below the root (maybe an earlier one).
            if (node.Raw() != root.Raw() && searches++ < 64)
                Check(!root.FindDescendant(tag, name, value).IsNull());
        }

        const int count = node.ChildCount();
        int tagged = 0;
        for (int i = 0; i < count; ++i) {
            const XmlNode child = node.NthChild(i);
            Check(!child.IsNull());
            Check(child.Parent().Raw() == node.Raw());
            if (i == 0) {
                const QString childTag = child.Tag();
                tagged = node.ChildCount(childTag);
                Check(tagged >= 1);
                Check(node.ChildByTag(childTag).Raw() == child.Raw());
                Check(node.NthChild(childTag, 0).Raw() == child.Raw());
                Check(node.NthChild(childTag, tagged).IsNull());
                Check(node.ChildContent(childTag, QStringLiteral("-")) == child.Content());
            }
            pending.push_back(child);
        }
        Check(node.NthChild(count).IsNull());
        Check(node.ChildCount(tag) <= count);
    }
    return result;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray input(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    XmlDocument doc;
    if (!doc.LoadString(input)) {
        Check(!doc.LastError().isEmpty());
        Check(doc.ToString().isEmpty());
        return 0;
    }
    Check(doc.LastError().isEmpty());

    const WalkResult walked = Walk(doc.RootNode());
    const QByteArray written = doc.ToString();

    XmlDocument reloaded;
    Check(reloaded.LoadString(written));
    const WalkResult rewalked = Walk(reloaded.RootNode());
    Check(rewalked.elements == walked.elements);
    Check(rewalked.textLength == walked.textLength);
    Check(reloaded.RootNode().Tag() == doc.RootNode().Tag());
    Check(reloaded.ToString() == written);
    return 0;
}
