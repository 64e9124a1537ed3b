// SPDX-License-Identifier: GPL-3.0-or-later
// The progress of a batch run: a message and a bar from 0 to 100, shown over the main window
// while the run keeps the user's input out.
#pragma once

#include "BatchRun.h"

#include <QDialog>

class QLabel;
class QProgressBar;

class frm_BatchStatus : public QDialog, public BatchProgress
{
    Q_OBJECT
public:
    explicit frm_BatchStatus(QWidget* parent = nullptr);

    void StatusMessage(const QString& message);
    void SetStep(float step) override { m_fStep = step; }
    float Step() const { return m_fStep; }
    // Moves the bar on by the step, to 100 at most, and repaints while user input waits.
    void UpdateStatus() override;
    int Value() const;

    QLabel* lblMessage() const { return m_lblMessage; }
    QProgressBar* ProgBar() const { return m_progBar; }

private:
    QLabel* m_lblMessage = nullptr;
    QProgressBar* m_progBar = nullptr;
    float m_fStep = 0.0F;
    double m_dValue = 0.0; // the sum of the steps, of which the bar shows the whole part
};
