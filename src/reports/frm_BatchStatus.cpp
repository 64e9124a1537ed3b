// SPDX-License-Identifier: GPL-3.0-or-later
// The progress window of a batch run.
#include "frm_BatchStatus.h"

#include "Globals.h"

#include <QCoreApplication>
#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>

#include <algorithm>

frm_BatchStatus::frm_BatchStatus(QWidget* parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("frm_BatchStatus"));
    setWindowTitle(QString::fromUtf8(g_lLangOffset >= 1000 ? "Report batches" : "Reportstapel"));
    setModal(false);
    m_lblMessage = new QLabel(this);
    m_lblMessage->setObjectName(QStringLiteral("lblMessage"));
    m_lblMessage->setWordWrap(true);
    m_progBar = new QProgressBar(this);
    m_progBar->setObjectName(QStringLiteral("ProgBar"));
    m_progBar->setRange(0, 100);
    m_progBar->setValue(0);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_lblMessage);
    layout->addWidget(m_progBar);
    resize(sizeHint().expandedTo(QSize(360, 0)));
}

void frm_BatchStatus::StatusMessage(const QString& message)
{
    m_lblMessage->setText(message);
}

void frm_BatchStatus::UpdateStatus()
{
    m_dValue = std::clamp(m_dValue + static_cast<double>(m_fStep), 0.0, 100.0);
    m_progBar->setValue(static_cast<int>(m_dValue));
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

int frm_BatchStatus::Value() const
{
    return m_progBar->value();
}
