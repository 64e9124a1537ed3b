// SPDX-License-Identifier: GPL-3.0-or-later
// The chart report: one page with the facts of a view, its chart and a legend of its curves.
#pragma once

#include "ReportInterface.h"

class ChartReport : public ReportInterface
{
public:
    ChartReport();
    void Execute(Measuring* measuring, ReportDocument* document, qint32& status) override;
};
