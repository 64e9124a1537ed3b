// SPDX-License-Identifier: GPL-3.0-or-later
// Printing a year of 15-minute demo data as the table report into PDF (two curves in
// portrait, ten in landscape), beside a plain PDF loop that draws the same texts and lines at
// the same places; and one preview page drawn on screen.
#include "AllocationCounter.h"
#include "DemoHost.h"
#include "Measuring.h"
#include "ReportDocument.h"
#include "ReportInterface.h"
#include "ReportPageBuilder.h"
#include "SoranoFileHandler.h"
#include "ctl_NavBar.h"
#include "frm_GraphicView.h"

#include <QBuffer>
#include <QImage>
#include <QPainter>
#include <QPdfWriter>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <memory>

namespace {

struct Demo
{
    Demo() { LoadReports(reports); }

    // The main meter's view over the whole of 2025; with ten curves, the active and reactive
    // power and energy of four loggers instead of its own two.
    std::unique_ptr<Measuring> Open(bool tenCurves)
    {
        MeasuringFile file;
        SoranoFileHandler::Load(QStringLiteral(SORANO_EXAMPLES "/Hauptzaehler.sor"), file);
        file.startDate = 45658.0; // 2025-01-01
        file.endDate = 46023.0; // 2026-01-01
        file.intervalUnit = QStringLiteral("n");
        file.intervalCount = 15;
        if (tenCurves) {
            file.curves.clear();
            for (const int channel : { 111, 112, 114, 121, 122, 124, 131, 132, 141, 142 }) {
                MeasuringFile::Curve curve;
                curve.channels = { QStringLiteral("1$%1#%2").arg(channel / 10).arg(channel % 10) };
                file.curves.append(curve);
            }
        }
        auto view = std::make_unique<Measuring>(host);
        view->Init();
        view->FromFile(file);
        view->ReloadSettings();
        ctl_NavBar& bar = *view->Window()->nav_Navigate();
        bar.SetDateFirst(view->FirstDataDate());
        bar.SetDateLast(view->LastDataDate());
        view->Refresh(true);
        return view;
    }

    DemoHost host;
    ReportCollection reports;
};

Demo& TheDemo()
{
    static Demo demo;
    return demo;
}

std::unique_ptr<ReportDocument> TableReport(Measuring& view, qint32 orientation)
{
    auto document = std::make_unique<ReportDocument>();
    ReportInterface& report = *TheDemo().reports.Item(QStringLiteral("REP_1"));
    report.Init();
    report.SetOrientation(orientation);
    qint32 status = 0;
    report.Execute(&view, document.get(), status);
    ReportPageBuilder::NumberPages(*document);
    return document;
}

// The whole print: the report lays out and records its pages, then they go into a PDF.
void BM_TableReportToPdf(benchmark::State& state)
{
    const bool ten = state.range(0) == 10;
    const std::unique_ptr<Measuring> view = TheDemo().Open(ten);
    const QString path = TheDemo().host.dir.filePath("table.pdf");
    qsizetype pages = 0;
    for (auto _ : state) {
        const std::unique_ptr<ReportDocument> document = TableReport(*view, ten ? 2 : 1);
        document->SavePdf(path);
        pages = document->PageCount();
    }
    state.counters["pages"] = double(pages);
    state.counters["rows"] = double(view->Curves().front()->Result()->DataBlock()->Rows());
    state.counters["peak_MB"] = PeakMegabytes();
}
BENCHMARK(BM_TableReportToPdf)->Arg(2)->Arg(10)->Unit(benchmark::kMillisecond)->Iterations(3);

// The same texts and lines at the same places, drawn straight into a PDF writer: no
// measuring, no layout, no recording.
void BM_PlainPdfLoop(benchmark::State& state)
{
    const bool ten = state.range(0) == 10;
    const std::unique_ptr<Measuring> view = TheDemo().Open(ten);
    const std::unique_ptr<ReportDocument> document = TableReport(*view, ten ? 2 : 1);
    for (auto _ : state) {
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        QPdfWriter writer(&buffer);
        writer.setResolution(1440);
        writer.setPageSize(QPageSize(QPageSize::A4));
        writer.setPageOrientation(ten ? QPageLayout::Landscape : QPageLayout::Portrait);
        writer.setPageMargins(QMarginsF(0, 0, 0, 0));
        QPainter painter(&writer);
        for (qsizetype i = 0; i < document->PageCount(); ++i) {
            if (i > 0)
                writer.newPage();
            const ReportPage& page = document->Page(i);
            int font = -1;
            for (const ReportPage::Operation& operation : page.Operations()) {
                if (operation.kind == ReportPage::Operation::Text) {
                    if (operation.state.font != font) {
                        font = operation.state.font;
                        painter.setFont(page.FontAt(font));
                    }
                    const int align = operation.state.align == ReportPage::AlignRight ? Qt::AlignRight
                        : operation.state.align == ReportPage::AlignCenter            ? Qt::AlignHCenter
                                                                                      : Qt::AlignLeft;
                    painter.drawText(operation.rect, align | Qt::AlignTop, operation.text);
                } else if (operation.kind == ReportPage::Operation::Line) {
                    painter.drawLine(operation.rect.topLeft(), operation.rect.bottomRight());
                } else if (operation.kind == ReportPage::Operation::Rect) {
                    painter.drawRect(operation.rect);
                }
            }
        }
        painter.end();
        benchmark::DoNotOptimize(buffer.data().size());
    }
    state.counters["pages"] = double(document->PageCount());
}
BENCHMARK(BM_PlainPdfLoop)->Arg(2)->Arg(10)->Unit(benchmark::kMillisecond)->Iterations(3);

// One page of the table as the preview draws it at a page width of 1000 pixels.
void BM_PreviewPage(benchmark::State& state)
{
    const std::unique_ptr<Measuring> view = TheDemo().Open(false);
    const std::unique_ptr<ReportDocument> document = TableReport(*view, 1);
    QImage image(1000, 1415, QImage::Format_ARGB32_Premultiplied);
    qsizetype page = 0;
    for (auto _ : state) {
        image.fill(Qt::white);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setRenderHint(QPainter::TextAntialiasing);
        painter.scale(1000.0 / A4ShortTwips, 1000.0 / A4ShortTwips);
        document->Page(page).Render(painter);
        page = (page + 37) % document->PageCount();
    }
}
BENCHMARK(BM_PreviewPage)->Unit(benchmark::kMillisecond);

} // namespace
