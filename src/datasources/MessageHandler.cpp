// SPDX-License-Identifier: GPL-3.0-or-later
#include "MessageHandler.h"

#include "Logging.h"

void MessageHandler::WriteLog(const QString& title, const QString& text, const QString& source, qint16 level)
{
    ::WriteLog(title, text, source, level);
}
