// SPDX-License-Identifier: GPL-3.0-or-later
// The table report: the values of all curves of a view, one row per time and one column per
// curve, on as many pages as it takes.
#pragma once

#include "ReportInterface.h"

class TableReport : public ReportInterface
{
public:
    TableReport();
    void Execute(Measuring* measuring, ReportDocument* document, qint32& status) override;
};
