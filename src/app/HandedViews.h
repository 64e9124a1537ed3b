// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>
#include <QTimer>

// Views that later starts handed over open as the command line's views do, once the window
// is up and neither a dialog nor a refresh or report run is in the way; every hand-over
// brings the window to the front at once.
class HandedViews
{
public:
    HandedViews()
    {
        m_retry.setSingleShot(true);
        m_retry.setInterval(200);
        QObject::connect(&m_retry, &QTimer::timeout, [this] { Run(); });
    }
    void Add(const QStringList& files)
    {
        m_waiting << files;
        m_raise = true;
        Run();
    }
    void SetReady(bool ready)
    {
        m_ready = ready;
        if (ready)
            Run();
        else
            m_retry.stop();
    }

private:
    void Run();

    QStringList m_waiting;
    QTimer m_retry;
    bool m_raise = false;
    bool m_ready = false;
    bool m_running = false;
};
