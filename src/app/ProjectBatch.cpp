// SPDX-License-Identifier: GPL-3.0-or-later
// The report batches in the program: the batch object's host, made with the menus.
#include "BatchHost.h"
#include "BatchReport.h"
#include "IconList.h"
#include "Measuring.h"
#include "Project.h"
#include "ToolRegistry.h"
#include "frm_Batch.h"
#include "frm_Main.h"

namespace {

// What the batch object reaches of the application.
class ProjectBatchHost : public BatchHost
{
public:
    explicit ProjectBatchHost(Project& project)
        : m_project(project)
    { }

    Measuring* OpenTemplate(const QString& path) override { return m_project.OpenMeasuring(path, true); }
    void CloseTemplate(Measuring& measuring) override { m_project.CloseMeasuring(measuring, true); }
    ToolRegistry& Bar() override { return *m_project.ActiveBar(); }
    QMainWindow* MainWindow() override { return m_project.MainWindow(); }
    MeasuringHost& ViewHost() override { return m_project; }
    const ModuleBoxes& Modules() const override { return std::as_const(m_project).DataModules(); }
    Measuring* ActiveMeasuring() override { return m_project.GetActiveMeasuring(); }
    void OpenMeasuring(const QString& path) override { m_project.OpenMeasuring(path, false); }
    void PrintMeasurings(const std::vector<Measuring*>& measurings) override
    {
        // A batch with no view would print every open one.
        if (!measurings.empty())
            m_project.PrintMeasuring(nullptr, nullptr, measurings, true);
    }
    void ShowHelp(int contextId) override { m_project.ShowHelp(contextId); }
    void UpdateToolStates() override { m_project.UpdateToolStates(); }

private:
    Project& m_project;
};

} // namespace

void Project::InitBatch()
{
    if (!m_cBatch) {
        m_cBatchHost = std::make_unique<ProjectBatchHost>(*this);
        m_cBatch = std::make_unique<BatchReport>(*m_cBatchHost);
    }
    m_cBatch->Init();
    if (frm_Batch* window = m_cBatch->Window())
        window->SetIconSource(&IconList::Icon);
}

void Project::TerminateBatch()
{
    if (!m_cBatch)
        return;
    m_cBatch->Terminate();
    m_cBatch.reset();
    m_cBatchHost.reset();
}
