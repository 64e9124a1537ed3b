// SPDX-License-Identifier: GPL-3.0-or-later
#include "DecliningAddIn.h"

qint32 DecliningAddIn::Init(AddInHost& host)
{
    m_host = &host;
    host.AddBand(QStringLiteral("tlbDeclining"), 0);
    return 3;
}

void DecliningAddIn::ToolClick(const QString& tool)
{
    if (m_host)
        m_host->AddBand(tool, -1);
}

void DecliningAddIn::ToolComboClose(const QString& tool)
{
    ToolClick(tool);
}

void DecliningAddIn::Terminate()
{
    m_host = nullptr;
}
