// SPDX-License-Identifier: GPL-3.0-or-later
// The string table: German texts 200-492, English twins 1200-1492, chosen by g_lLangOffset.
#pragma once

#include <QLocale>
#include <QString>

// The text of id + g_lLangOffset; a missing text gives the id as a decimal number.
QString GetResString(int id);

// A text the table has no id for, in the program's language: English with the English table.
QString LocalText(const char* german, const char* english);

// The locale of the table in use, for what Qt itself names: months and days in a calendar.
QLocale LanguageLocale();

// Direct access to the table without the offset, for tests and tools: null when missing.
QString ResStringRaw(int id);
int ResStringCount();
