// SPDX-License-Identifier: GPL-3.0-or-later
// Running reports over views into one document: what printing, the preview and the headless
// PDF share.
#pragma once

#include "ReportInterface.h"

#include <vector>

class Measuring;
class ReportDocument;

// Runs every report in order over every view in order into the document; an orientation of
// the parallel list, where there is one, is set on its report first. With setOnce, the add-in
// reports that describe a whole set of views run once, over the first view, and are taken out
// of the list. Numbers the pages at the end.
void RunReports(ReportDocument& document, std::vector<ReportPtr>& reports, const std::vector<qint32>& orientations,
    const std::vector<Measuring*>& measurings, bool setOnce);
