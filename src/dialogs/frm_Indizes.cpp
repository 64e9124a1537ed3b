// SPDX-License-Identifier: GPL-3.0-or-later
#include "frm_Indizes.h"

#include "DialogFrame.h"
#include "IndizesEditor.h"

frm_Indizes::frm_Indizes(QWidget* parent)
    : QDialog(parent)
{
    m_editor = new IndizesEditor(this);
    DialogFrame::Build(*this, QStringLiteral("frm_Indizes"), 348, 349, m_editor);
}

bool frm_Indizes::ShowMe()
{
    m_editor->Load();
    if (exec() != QDialog::Accepted)
        return false;
    m_editor->Save();
    return true;
}
