// SPDX-License-Identifier: GPL-3.0-or-later
// The dialog that manages the display formats of the statistics for all views.
#pragma once

#include <QDialog>

class IndizesEditor;

class frm_Indizes : public QDialog
{
    Q_OBJECT
public:
    explicit frm_Indizes(QWidget* parent = nullptr);

    // Shows the statistics as stored, modally. OK writes all of them and gives true;
    // Cancel writes nothing and gives false.
    bool ShowMe();

private:
    IndizesEditor* m_editor = nullptr;
};
