// SPDX-License-Identifier: GPL-3.0-or-later
// The multi-document main window: menu, document area, status line and progress bar.
#pragma once

#include <QLabel>
#include <QMainWindow>
#include <QPointer>

#include <functional>

class QAction;
class QMdiArea;
class QProgressBar;

class frm_Main : public QMainWindow
{
    Q_OBJECT
public:
    explicit frm_Main(QWidget* parent = nullptr);

    // Asked when the user closes the window; returning false keeps it open.
    void SetCloseRequestHandler(std::function<bool()> handler) { m_closeRequest = std::move(handler); }

    // Shows the window in the state the stored placement asked for.
    void ShowMe();

    // The program's own unload: the placement is written, nobody is asked.
    void Unload();

    QMdiArea* MdiArea() const { return m_mdiArea; }
    QLabel* StatusLabel() const { return m_lblStatus; }
    QProgressBar* ProgressBar() const { return m_prgState; }
    // The status band's label, once the tool registry has made it.
    void SetStatusLabel(QLabel* label);
    // A tool by its name ("mnuFileOpen", "mnuFileSave", ...); nothing when unknown.
    QAction* Tool(const QString& name) const;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void LoadPlacement();
    void SavePlacement();

    QMdiArea* m_mdiArea = nullptr;
    QPointer<QLabel> m_lblStatus;
    QProgressBar* m_prgState = nullptr;
    Qt::WindowStates m_initialState = Qt::WindowNoState;
    bool m_bUnloading = false;
    std::function<bool()> m_closeRequest;
};
