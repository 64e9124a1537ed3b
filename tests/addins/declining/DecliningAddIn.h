// SPDX-License-Identifier: GPL-3.0-or-later
// A test add-in that adds a band when it starts and then declines to be used (Init gives 3).
// Were it kept anyway, each tool click would reach the host as a band named after the tool.
#pragma once

#include "AddInInterface.h"

#include <QObject>

class DecliningAddIn : public QObject, public AddInInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID SoranoAddInInterface_iid FILE "declining.json")
    Q_INTERFACES(AddInInterface)

public:
    qint32 Init(AddInHost& host) override;
    void ToolClick(const QString& tool) override;
    void ToolComboClose(const QString& tool) override;
    void Terminate() override;

private:
    AddInHost* m_host = nullptr;
};
