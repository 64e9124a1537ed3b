// SPDX-License-Identifier: GPL-3.0-or-later
// The chart report: one page with the facts of a view, its chart and a legend of its curves.
#pragma once

#include "ReportInterface.h"

#include <QString>

class Measuring;

class ChartReport : public ReportInterface
{
public:
    ChartReport();
    void Execute(Measuring* measuring, ReportDocument* document, qint32& status) override;
};

// What the built-in reports share.
namespace BuiltInReports {

// The view's name and its period as "Name (dd.mm.yyyy - dd.mm.yyyy)".
QString PeriodTitle(const Measuring& measuring);
// The company's name and address on one line, their lines joined by " · ".
QString CompanyLine();
// The table font of the settings; an empty name or a size of 0 is replaced by the default
// and stored.
void TableFont(QString& name, double& size);
// A length rounded to whole twips, halves to the even neighbour.
int WholeTwips(double value);

} // namespace BuiltInReports
