// SPDX-License-Identifier: GPL-3.0-or-later
// Running reports over views into one document.
#include "ReportRun.h"

#include "ReportDocument.h"
#include "ReportPageBuilder.h"

#include <algorithm>

void RunReports(ReportDocument& document, std::vector<ReportPtr>& reports, const std::vector<qint32>& orientations,
    const std::vector<Measuring*>& measurings, bool setOnce)
{
    // A report that fails leaves its pages out; the others go on.
    const auto run = [&document](ReportInterface& report, const qint32* orientation, Measuring* measuring) {
        report.Init();
        if (orientation)
            report.SetOrientation(*orientation);
        qint32 status = 0;
        report.Execute(measuring, &document, status);
    };
    if (setOnce && !measurings.empty()) {
        for (const char* name : { "Messungs-Protokoll", "Extremwert-Protokoll", "Grenzwertverletzungen" }) {
            const auto found = std::find_if(reports.begin(), reports.end(),
                [name](const ReportPtr& report) { return report->Name() == QLatin1String(name); });
            if (found == reports.end())
                continue;
            const ReportPtr report = *found;
            reports.erase(found);
            run(*report, nullptr, measurings.front());
        }
    }
    for (Measuring* measuring : measurings)
        for (std::size_t i = 0; i < reports.size(); ++i)
            run(*reports[i], i < orientations.size() ? &orientations[i] : nullptr, measuring);
    ReportPageBuilder::NumberPages(document);
}
