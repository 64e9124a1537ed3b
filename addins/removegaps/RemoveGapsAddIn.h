// SPDX-License-Identifier: GPL-3.0-or-later
// The add-in "Sorano.RemoveGaps": the tool that closes the gaps of the active view's chart.
#pragma once

#include "AddInInterface.h"

#include <QObject>

class RemoveGapsAddIn : public QObject, public AddInInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID SoranoAddInInterface_iid FILE "removegaps.json")
    Q_INTERFACES(AddInInterface)

public:
    static constexpr char Tool[] = "mnuViewRemoveGaps";

    // Adds the tool to the view menu and the chart toolbar.
    qint32 Init(AddInHost& host) override;
    // The program itself removes the gaps when the tool is clicked.
    void ToolClick(const QString& tool) override;
    void ToolComboClose(const QString& tool) override;
    void Terminate() override;
};
