// SPDX-License-Identifier: GPL-3.0-or-later
// The toolkit's own texts (dialog buttons, the file, colour and print dialogs) in the language
// the program speaks.
#pragma once

#include <QString>

namespace QtTranslations {

// Where the toolkit's translations are installed.
QString DefaultFolder();

// For German, loads qtbase_de from the folder into a translator installed on the application;
// English needs none. A translator an earlier call installed is taken off first, so a change
// of language leaves only the new one. True when the language's texts are in place; a German
// translation that can't be loaded leaves the English texts and writes one line to the log.
bool Install(bool german, const QString& folder = DefaultFolder());

} // namespace QtTranslations
