// SPDX-License-Identifier: GPL-3.0-or-later
// The full-page chart report: only the chart, stretched over the page between head and foot.
#pragma once

#include "ReportInterface.h"

class FullPageChartReport : public ReportInterface
{
public:
    FullPageChartReport();
    void Execute(Measuring* measuring, ReportDocument* document, qint32& status) override;
};
