// SPDX-License-Identifier: GPL-3.0-or-later
// Running reports over views into one document.
#include "ReportRun.h"

#include "ReportDocument.h"
#include "ReportPageBuilder.h"

int RunReports(ReportDocument& document, std::vector<ReportPtr>& reports, const std::vector<qint32>& orientations,
    const std::vector<Measuring*>& measurings, bool setOnce)
{
    int failed = 0;
    const auto run = [&](ReportInterface& report, std::size_t position, Measuring* measuring) {
        report.Init();
        if (position < orientations.size())
            report.SetOrientation(orientations[position]);
        qint32 status = 0;
        report.Execute(measuring, &document, status);
        if (status != 0)
            ++failed;
    };
    if (setOnce && !measurings.empty()) {
        for (const char* name : { "Messungs-Protokoll", "Extremwert-Protokoll", "Grenzwertverletzungen" }) {
            for (std::size_t i = 0; i < reports.size(); ++i) {
                if (reports[i]->Name() != QLatin1String(name))
                    continue;
                const ReportPtr report = reports[i];
                reports.erase(reports.begin() + static_cast<std::ptrdiff_t>(i));
                report->Init();
                qint32 status = 0;
                report->Execute(measurings.front(), &document, status);
                if (status != 0)
                    ++failed;
                break;
            }
        }
    }
    for (Measuring* measuring : measurings)
        for (std::size_t i = 0; i < reports.size(); ++i)
            run(*reports[i], i, measuring);
    ReportPageBuilder::NumberPages(document);
    return failed;
}
