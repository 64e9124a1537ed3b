// SPDX-License-Identifier: GPL-3.0-or-later
#include "Globals.h"

qint32 g_lLangOffset = 0;
QString g_sWhoAmI;
