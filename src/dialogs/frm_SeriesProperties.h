// SPDX-License-Identifier: GPL-3.0-or-later
// The dialog that edits the look of one curve on a properties object it is given.
#pragma once

#include <QDialog>

class SeriesProperties;
class SeriesPropertiesEditor;

class frm_SeriesProperties : public QDialog
{
    Q_OBJECT
public:
    explicit frm_SeriesProperties(QWidget* parent = nullptr);

    // Shows the properties modally. OK writes the changed fields and gives true; Cancel
    // leaves the object as it was and gives false.
    bool ShowMe(SeriesProperties& properties);

    SeriesPropertiesEditor* Editor() const { return m_editor; }

private:
    SeriesPropertiesEditor* m_editor = nullptr;
};
