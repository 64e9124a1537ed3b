// SPDX-License-Identifier: GPL-3.0-or-later
// The dialog that edits the chart-wide look of a view on a properties object it is given.
#pragma once

#include "GraphProperties.h"

#include <QDialog>

class QCheckBox;
class QComboBox;
class QLineEdit;

class frm_GraphProperties : public QDialog
{
    Q_OBJECT
public:
    explicit frm_GraphProperties(QWidget* parent = nullptr);

    // Shows the properties modally. OK writes the changed fields and gives true; Cancel
    // leaves the object as it was and gives false.
    bool ShowMe(GraphProperties& properties);

    // The fields as shown, written over the given properties: what OK writes.
    void Save(GraphProperties& target) const;
    void Load(const GraphProperties& properties);

private:
    QComboBox* m_gallery = nullptr;
    QCheckBox* m_legend = nullptr;
    QCheckBox* m_view3D = nullptr;
    QCheckBox* m_grid1 = nullptr;
    QCheckBox* m_grid2 = nullptr;
    QLineEdit* m_title = nullptr;
};
