// SPDX-License-Identifier: GPL-3.0-or-later
// The dialog that edits one curve of a view: name, unit, visibility, statistics, look, Y axis.
#pragma once

#include "CurvePropertiesEdit.h"

#include <QDialog>

class Curve;
class Measuring;
class QCheckBox;
class QComboBox;
class QLineEdit;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;
class SeriesPropertiesEditor;

class frm_CurveProperties : public QDialog
{
    Q_OBJECT
public:
    // Columns of the statistic list.
    enum Column { ColumnUsed = 0, ColumnShown = 1 };

    frm_CurveProperties(Measuring& measuring, Curve& curve, QWidget* parent = nullptr);

    // Shows the curve modally. OK writes the changes into the curve and redraws the view;
    // gives 1 when something changed, 0 on Cancel or when nothing did.
    qint32 ShowMe();

    // What OK would write, as the fields stand.
    CurvePropertiesEdit Edit() const;
    // Writes the fields into the curve and redraws the view; 1 when something changed.
    qint32 Commit();

private:
    void Load();
    void OnStatisticChanged(QTreeWidgetItem* item, int column);
    void ShowStatistics();
    void ShowValidity();

    Measuring& m_measuring;
    Curve& m_curve;
    CurvePropertiesEdit m_edit;
    QLineEdit* m_name = nullptr;
    QLineEdit* m_unit = nullptr;
    QCheckBox* m_visible = nullptr;
    QTreeWidget* m_statistics = nullptr;
    SeriesPropertiesEditor* m_look = nullptr;
    QComboBox* m_yAxis = nullptr;
    QPushButton* m_ok = nullptr;
};
