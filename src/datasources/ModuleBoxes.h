// SPDX-License-Identifier: GPL-3.0-or-later
// An ordered collection of module boxes, each under its address; an address is taken once.
#pragma once

#include "ModuleBox.h"

#include <QList>
#include <QString>

class ModuleBoxes
{
public:
    qsizetype Count() const { return m_boxes.size(); }
    bool IsEmpty() const { return m_boxes.isEmpty(); }

    // Adds the box under its address; false, leaving the collection as it was, when the
    // address is taken or there is no box.
    bool Add(ModuleBoxPtr box)
    {
        if (!box || Contains(box->Address()))
            return false;
        m_boxes.append(std::move(box));
        return true;
    }
    bool Contains(const QString& address) const { return Item(address) != nullptr; }
    // The box under the address, or nothing. Addresses are numbers: "01" finds the box of "1".
    ModuleBoxPtr Item(const QString& address) const
    {
        for (const ModuleBoxPtr& box : m_boxes)
            if (SameAddress(box->Address(), address))
                return box;
        return nullptr;
    }
    static bool SameAddress(const QString& a, const QString& b)
    {
        if (a == b)
            return true;
        bool numberA = false;
        bool numberB = false;
        const qint64 x = a.trimmed().toLongLong(&numberA);
        const qint64 y = b.trimmed().toLongLong(&numberB);
        return numberA && numberB && x == y;
    }
    // The box at the position, from 0; nothing out of range.
    ModuleBoxPtr At(qsizetype index) const
    {
        return index >= 0 && index < m_boxes.size() ? m_boxes.at(index) : nullptr;
    }
    void Remove(const QString& address)
    {
        m_boxes.removeIf([&address](const ModuleBoxPtr& box) { return SameAddress(box->Address(), address); });
    }
    void Clear() { m_boxes.clear(); }

    auto begin() const { return m_boxes.cbegin(); }
    auto end() const { return m_boxes.cend(); }

private:
    QList<ModuleBoxPtr> m_boxes;
};
