// SPDX-License-Identifier: GPL-3.0-or-later
// Process-wide values written once by the entry routine and read everywhere.
#pragma once

#include <QString>
#include <QtGlobal>

// Added to every string table id: 0 German, 1000 English.
extern qint32 g_lLangOffset;

// Edition tag: "sorano", "talven" or empty.
extern QString g_sWhoAmI;
