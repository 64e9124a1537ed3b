// SPDX-License-Identifier: GPL-3.0-or-later
#include "frm_SeriesProperties.h"

#include "DialogFrame.h"
#include "SeriesPropertiesEditor.h"

frm_SeriesProperties::frm_SeriesProperties(QWidget* parent)
    : QDialog(parent)
{
    m_editor = new SeriesPropertiesEditor(this);
    DialogFrame::Build(*this, QStringLiteral("frm_SeriesProperties"), 451, 452, m_editor);
}

bool frm_SeriesProperties::ShowMe(SeriesProperties& properties)
{
    m_editor->Load(properties);
    if (exec() != QDialog::Accepted)
        return false;
    m_editor->Save(properties);
    return true;
}
