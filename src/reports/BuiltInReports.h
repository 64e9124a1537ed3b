// SPDX-License-Identifier: GPL-3.0-or-later
// What the built-in reports share: the start of a run, the texts of head and foot, the frame.
#pragma once

#include "ReportPageBuilder.h"

#include <QString>

class Measuring;
class ReportDocument;
class ReportPage;

namespace BuiltInReports {

// The page layout and table font a run works with.
struct Start
{
    ReportPageBuilder builder;
    QString fontName;
    double fontSize = 0;
};
// Sets the status to -1 and returns false without a view or a document; else status 0, the
// layout read and given the document, and the table font of the settings.
bool Begin(Measuring* measuring, ReportDocument* document, qint32& status, Start& start);

// The view's name and its period as "Name (dd.mm.yyyy - dd.mm.yyyy)".
QString PeriodTitle(const Measuring& measuring);
// The company's name and address on one line, their lines joined by " · ".
QString CompanyLine();
// A length rounded to whole twips, halves to the even neighbour.
int WholeTwips(double value);
// Four thin solid lines around the rectangle.
void Frame(ReportPage& page, double left, double top, double width, double height);

} // namespace BuiltInReports
