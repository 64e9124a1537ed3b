// SPDX-License-Identifier: GPL-3.0-or-later
// The dialog that manages a view's curves: which channels of its modules they show and sum,
// and their order.
#pragma once

#include "CurveListEdit.h"

#include <QDialog>
#include <QHash>
#include <QStringList>

class Measuring;
class QMenu;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

class frm_Curves : public QDialog
{
    Q_OBJECT
public:
    explicit frm_Curves(QWidget* parent = nullptr);

    // Shows the view's curves and the channels of every offered module modally. OK brings the view in line with the
    // list and refreshes it once: 1 when that changed something, else 0; Cancel changes nothing.
    qint32 ShowMe(Measuring& measuring);

    // The channel keys chosen in the channel tree, in the order they were chosen.
    const QStringList& Chosen() const { return m_chosen; }

private:
    void Load(Measuring& measuring);
    void FillCurves(qsizetype selectEntry, qsizetype selectPart = -1);
    QString Name(const QString& key) const;
    // Chooses the channel of the node, or takes the choice back; other nodes stay as they are.
    void SetChosen(QTreeWidgetItem* item, bool chosen);
    void SetChosenBelow(QTreeWidgetItem* item, bool chosen);
    void ToggleChosen(QTreeWidgetItem* item);
    void ClearChosen();
    void ShowChannelMenu(const QPoint& position);
    // The selected curve (the parent of a selected part) and part (-1 for the curve itself).
    qsizetype SelectedEntry() const;
    qsizetype SelectedPart() const;
    void UpdateButtons();
    void OnAdd();
    void OnRemove();
    void OnMove(qsizetype delta);
    void OnJoin();
    void OnSplit();

    CurveListEdit m_edit;
    QStringList m_chosen;
    QHash<QString, QString> m_names; // channel names by channel key, naming the curves
    QHash<QString, QString> m_places; // the path of module and categories above each channel
    QTreeWidget* m_curves = nullptr;
    QTreeWidget* m_channels = nullptr;
    QMenu* m_menu = nullptr;
    QTreeWidgetItem* m_menuItem = nullptr;
    QPushButton* m_add = nullptr;
    QPushButton* m_remove = nullptr;
    QPushButton* m_up = nullptr;
    QPushButton* m_down = nullptr;
    QPushButton* m_join = nullptr;
    QPushButton* m_split = nullptr;
};
