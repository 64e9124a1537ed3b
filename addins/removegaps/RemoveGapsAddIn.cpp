// SPDX-License-Identifier: GPL-3.0-or-later
#include "RemoveGapsAddIn.h"

qint32 RemoveGapsAddIn::Init(AddInHost& host)
{
    const bool english = host.English();
    // The category is the program's own name for the chart tools (its string 230).
    host.AddTool(QStringLiteral("mnuView"), QLatin1String(Tool), 0,
        english ? QStringLiteral("Remove gaps") : QStringLiteral("Lücken entfernen"),
        english ? QStringLiteral("Chart view") : QStringLiteral("Grafikansicht"), QString(), QString(),
        QStringLiteral("tlbGraphic"), -1);
    return 0;
}

void RemoveGapsAddIn::ToolClick(const QString& tool)
{
    Q_UNUSED(tool);
}

void RemoveGapsAddIn::ToolComboClose(const QString& tool)
{
    Q_UNUSED(tool);
}

void RemoveGapsAddIn::Terminate() { }
