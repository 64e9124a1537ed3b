// SPDX-License-Identifier: GPL-3.0-or-later
// The batch window: a dock beside the views with the list of batches on top and the templates
// of the chosen batch below, whose names are edited in place.
#pragma once

#include <QDockWidget>
#include <QIcon>
#include <QString>

#include <functional>

class QComboBox;
class QListWidget;
class QListWidgetItem;

class frm_Batch : public QDockWidget
{
    Q_OBJECT
public:
    explicit frm_Batch(QWidget* parent = nullptr);

    QComboBox* cbo_Batches() const { return m_cboBatches; }
    QListWidget* lvw_Reports() const { return m_lvwReports; }

    // Where the templates' icon comes from; the theme's document icon without it.
    void SetIconSource(std::function<QIcon(const QString&)> source);
    // Empties the list of templates.
    void ClearReports();
    // Appends a template with its key and shown name; the new item.
    QListWidgetItem* AddReport(const QString& key, const QString& name);
    // Shows the template of that key under the name, as an edit in the list would.
    void SetReportName(const QString& key, const QString& name);
    // The key of the selected template; empty with none.
    QString SelectedKey() const;

signals:
    // A batch was chosen in the list of batches; -1 when it became empty.
    void BatchChosen(int index);
    // A template's name was edited; an empty name is refused and the old one kept.
    void ReportRenamed(const QString& key, const QString& newName);
    // A template was double-clicked.
    void ReportOpened(const QString& key);
    // The right mouse button was pressed on the window.
    void MenuRequested();
    // The selected template changed.
    void ReportSelectionChanged();

private:
    void OnItemChanged(QListWidgetItem* item);
    QIcon ReportIcon() const;

    QComboBox* m_cboBatches = nullptr;
    QListWidget* m_lvwReports = nullptr;
    std::function<QIcon(const QString&)> m_iconSource;
};
