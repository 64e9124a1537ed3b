// SPDX-License-Identifier: GPL-3.0-or-later
// Readable failure messages for Qt texts in test expectations.
#pragma once

#include <QString>
#include <QStringList>

#include <ostream>

inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}

inline void PrintTo(const QStringList& texts, std::ostream* out)
{
    *out << "{ ";
    for (const QString& text : texts)
        *out << '"' << text.toStdString() << "\" ";
    *out << '}';
}
