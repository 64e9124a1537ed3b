// SPDX-License-Identifier: GPL-3.0-or-later
#include "QtTranslations.h"

#include "Logging.h"

#include <QCoreApplication>
#include <QDir>
#include <QLibraryInfo>
#include <QPointer>
#include <QTranslator>

namespace QtTranslations {

namespace {
// Owned by the application object, so it goes with it.
QPointer<QTranslator> g_installed;
} // namespace

QString DefaultFolder()
{
    return QLibraryInfo::path(QLibraryInfo::TranslationsPath);
}

bool Install(bool german, const QString& folder)
{
    if (g_installed) {
        QCoreApplication::removeTranslator(g_installed);
        delete g_installed;
    }
    if (!german)
        return true;
    auto* translator = new QTranslator(QCoreApplication::instance());
    if (!translator->load(QStringLiteral("qtbase_de"), folder) || !QCoreApplication::installTranslator(translator)) {
        delete translator;
        WriteLog(QStringLiteral("qt translation"),
            QStringLiteral("The toolkit's German texts (qtbase_de.qm) were not found in %1; its dialogs stay English.")
                .arg(QDir::toNativeSeparators(folder)),
            QStringLiteral("Sub Main"), LogLevel::Error);
        return false;
    }
    g_installed = translator;
    return true;
}

} // namespace QtTranslations
