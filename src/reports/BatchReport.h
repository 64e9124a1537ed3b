// SPDX-License-Identifier: GPL-3.0-or-later
// The report batches in the program: the menu "Reportstapel" and its toolbar, the batch
// window, the commands that make, copy, edit and delete batches and their templates, and the
// runs of a batch and of the serial report.
#pragma once

#include "BatchStore.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>

class BatchHost;
class frm_Batch;

class BatchReport : public QObject
{
    Q_OBJECT
public:
    // The batches live in folder, made when missing.
    explicit BatchReport(BatchHost& host, const QString& folder = BatchStore::DefaultFolder());
    ~BatchReport() override;

    // Adds the menu "mnuBatch" to the menu bar and the toolbar "tlbBatch", makes the batch
    // window, loads the batches and selects the stored one; shows the window when the setting
    // "ShowBatchWindow" is 1.
    void Init();
    // Reads the batches again and selects the stored one.
    void Reload();
    // Shows the templates of the batch at that index (none for -1) and updates the tools.
    void BatchSelected(qsizetype index);
    // A tool was clicked; true when it was one of the batch tools and has been acted on.
    bool ToolClick(const QString& tool);
    // The template with that key was renamed in the list.
    void ReportNameChanged(const QString& key, const QString& newName);
    // A view was saved from oldPath to newPath: a template of the selected batch that was
    // oldPath follows when newPath lies in the batch folder.
    void FileChanged(const QString& oldPath, const QString& newPath);
    // Enables the batch tools by the rules of the batch window and the active view.
    void UpdateTools();
    // Closes the window and remembers whether it was shown.
    void Terminate();

    BatchStore& Store() { return m_cStore; }
    frm_Batch* Window() const { return m_cWindow; }
    // The selected batch; -1 with none.
    qsizetype Selected() const;
    bool WindowVisible() const;
    void ShowWindow(bool show);

    // Where the batch commands ask the user: a question answered Yes or No, and a message.
    // Without a handler (the default) a message box over the main window asks.
    using QuestionHandler = std::function<bool(const QString& title, const QString& text)>;
    using MessageHandler = std::function<void(const QString& title, const QString& text)>;
    static void SetQuestionHandler(QuestionHandler handler);
    static void SetMessageHandler(MessageHandler handler);

private:
    // New, copy and properties: one routine.
    void EditBatch(bool isNew, bool copy);
    void DeleteBatch();
    void NewDocument();
    void DeleteDocument();
    void OpenDocument();
    // The wizard in mode 1, then the templates of the batch for the chosen logger and period.
    void PrintBatch();
    // The wizard in mode 2, then one page per day or per number of values.
    void PrintSerial();
    void FillReportList();
    void AddTools();
    void MakeWindow();
    // The batches' names into cbo_Batches, the index selected, without a selection event.
    void FillBatchList(qsizetype selected);
    // A batch chosen in the window: remembered, then shown.
    void OnBatchChosen(qsizetype index);
    bool Ask(const QString& title, const QString& text) const;
    void Tell(const QString& title, const QString& text) const;
    // Why a name can't be taken for a new batch, a copy, or the batch at except; empty when it can.
    QString NameFault(const QString& name, qsizetype except) const;

    BatchHost& m_cHost;
    BatchStore m_cStore;
    frm_Batch* m_cWindow = nullptr; // a dock of the main window, which owns it
    qsizetype m_iSelected = -1;
    bool m_bInitDone = false;
};
