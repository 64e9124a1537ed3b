// SPDX-License-Identifier: GPL-3.0-or-later
// Printing: the built-in reports, the print dialog, the preview and the page setup.
#include "Help.h"
#include "Measuring.h"
#include "Project.h"
#include "ReportDocument.h"
#include "ReportRun.h"
#include "frm_Main.h"
#include "frm_PageSetup.h"
#include "frm_Preview.h"
#include "frm_PrintReport.h"

#include <QApplication>
#include <QScopeGuard>
#include <QTimer>

qint32 Project::LoadReports()
{
    m_colReports.Clear();
    ::LoadReports(m_colReports);
    return 0;
}

frm_Preview* Project::PreviewWindow()
{
    if (!m_cPreview) {
        m_cPreview = std::make_unique<frm_Preview>();
        m_cPreview->SetHelpHandler([this](int context) { ::ShowHelp(context, m_cPreview.get()); });
        connect(m_cPreview.get(), &frm_Preview::ReportReleased, this, &Project::UpdateToolStates);
        // First shown over the middle of the main window; later where the user left it.
        if (m_mainWindow) {
            QRect frame = m_cPreview->frameGeometry();
            frame.moveCenter(m_mainWindow->frameGeometry().center());
            m_cPreview->move(frame.topLeft());
        }
    }
    return m_cPreview.get();
}

void Project::PrintMeasuring(
    Measuring* measuring, const ReportPtr& report, const std::vector<Measuring*>& measurings, bool batchMode)
{
    if (!measuring)
        measuring = GetActiveMeasuring();
    if (!measuring && !batchMode)
        return;

    std::vector<ReportPtr> reports;
    std::vector<qint32> orientations;
    bool allOpen = false;
    if (report) {
        reports.push_back(report);
    } else {
        frm_PrintReport dialog(m_mainWindow.get());
        dialog.SetHelpHandler([&dialog](int context) { ::ShowHelp(context, &dialog); });
        if (!dialog.ShowMe(batchMode, m_colReports, reports, orientations, allOpen))
            return;
    }
    if (reports.empty())
        return;
    if (allOpen || batchMode) {
        BatchPrintMeasuring(reports, measurings, orientations);
        return;
    }
    RunIntoPreview(reports, orientations, { measuring }, false);
}

void Project::BatchPrintMeasuring(
    std::vector<ReportPtr>& reports, const std::vector<Measuring*>& measurings, const std::vector<qint32>& orientations)
{
    std::vector<Measuring*> views = measurings;
    if (views.empty())
        for (const auto& open : m_colMeasurings)
            views.push_back(open.get());
    RunIntoPreview(reports, orientations, views, true);
}

void Project::RunIntoPreview(std::vector<ReportPtr>& reports, const std::vector<qint32>& orientations,
    const std::vector<Measuring*>& measurings, bool batch)
{
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const bool enabled = SetCommandsEnabled(false);
    m_bPrinting = true;
    const auto restore = qScopeGuard([this, enabled] {
        m_bPrinting = false;
        SetCommandsEnabled(enabled);
        QApplication::restoreOverrideCursor();
        // Views closed and an end asked for while the reports ran.
        QTimer::singleShot(0, this, &Project::RunWaitingCloses);
    });
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);

    auto document = std::make_shared<ReportDocument>();
    RunReports(*document, reports, orientations, measurings, batch);

    frm_Preview* preview = PreviewWindow();
    preview->SetReport(document);
    if (preview->isMinimized())
        preview->showNormal();
    preview->show();
    preview->raise();
    preview->activateWindow();
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

bool Project::ShowPageSetup()
{
    frm_PageSetup dialog(m_mainWindow.get());
    dialog.SetHelpHandler([&dialog](int context) { ::ShowHelp(context, &dialog); });
    return dialog.ShowMe();
}
