// SPDX-License-Identifier: GPL-3.0-or-later
#include "IconList.h"

#include <QFile>
#include <QHash>

namespace IconList {

namespace {

// Keys of standard actions and their names in the freedesktop icon naming scheme.
const QHash<QString, QString>& ThemeNames()
{
    static const QHash<QString, QString> names {
        { QStringLiteral("ICO_NEW"), QStringLiteral("document-new") },
        { QStringLiteral("ICO_OPEN"), QStringLiteral("document-open") },
        { QStringLiteral("ICO_SAVE"), QStringLiteral("document-save") },
        { QStringLiteral("ICO_PRINT"), QStringLiteral("document-print") },
        { QStringLiteral("ICO_CUT"), QStringLiteral("edit-cut") },
        { QStringLiteral("ICO_COPY"), QStringLiteral("edit-copy") },
        { QStringLiteral("ICO_PASTE"), QStringLiteral("edit-paste") },
        { QStringLiteral("ICO_PROPERTIES"), QStringLiteral("document-properties") },
        // The report batches.
        { QStringLiteral("ICO_SHOWBATCH"), QStringLiteral("folder-open") },
        { QStringLiteral("ICO_NEWBATCH"), QStringLiteral("folder-new") },
        { QStringLiteral("ICO_BATCHPROPS"), QStringLiteral("document-properties") },
        { QStringLiteral("ICO_DELETE"), QStringLiteral("edit-delete") },
        { QStringLiteral("ICO_PRINTBATCH"), QStringLiteral("document-print") },
        { QStringLiteral("ICO_NEWDOC"), QStringLiteral("list-add") },
        { QStringLiteral("ICO_DELETEDOC"), QStringLiteral("list-remove") },
        { QStringLiteral("ICO_REPORT"), QStringLiteral("x-office-document") },
    };
    return names;
}

QIcon Lookup(const QString& key)
{
    const QString resource = QStringLiteral(":/icons/") + key + QStringLiteral(".svg");
    if (QFile::exists(resource))
        return QIcon(resource);
    const QString theme = ThemeNames().value(key);
    return theme.isEmpty() ? QIcon() : QIcon::fromTheme(theme);
}

} // namespace

void Init()
{
    if (QIcon::fallbackThemeName().isEmpty() || QIcon::fallbackThemeName() == QLatin1String("hicolor"))
        QIcon::setFallbackThemeName(QStringLiteral("Tango"));
}

QIcon Icon(const QString& key)
{
    if (key.isEmpty())
        return QIcon();
    const QIcon old = Lookup(QStringLiteral("OLD") + key);
    return old.isNull() ? Lookup(key) : old;
}

} // namespace IconList
