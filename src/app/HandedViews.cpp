// SPDX-License-Identifier: GPL-3.0-or-later
#include "HandedViews.h"

#include "Globals.h"
#include "Logging.h"
#include "Project.h"
#include "frm_Main.h"

#include <QApplication>
#include <QWidget>

#include <utility>

void HandedViews::Run()
{
    QWidget* window = g_cProject ? g_cProject->MainWindow() : nullptr;
    if (!m_ready || !window || m_running || !window->isVisible())
        return;
    m_running = true;
    if (std::exchange(m_raise, false)) {
        if (window->isMinimized())
            window->setWindowState((window->windowState() & ~Qt::WindowMinimized) | Qt::WindowActive);
        window->raise();
        window->activateWindow();
    }
    while (!m_waiting.isEmpty()) {
        // A view opened meanwhile may refresh and let events through: each file asks again.
        if (QApplication::activeModalWidget() || !g_cProject->Idle() || !window->isVisible()) {
            m_retry.start();
            break;
        }
        const QString file = m_waiting.takeFirst();
        const bool opened = g_cProject->OpenMeasuring(file, false) != nullptr;
        WriteLog(QStringLiteral("open from another start"),
            (opened ? QStringLiteral("Opened %1.") : QStringLiteral("Could not open %1.")).arg(file),
            QStringLiteral("Sub Main"), LogLevel::Info);
    }
    m_running = false;
}
