// SPDX-License-Identifier: GPL-3.0-or-later
// Printing the example view on the demo database: the headless PDF with its reports, pages and
// orientations, its bad input, and "Datei > Drucken ..." through the print dialog into the preview.
#include "DemoFixture.h"
#include "Measuring.h"
#include "QtPrinters.h"
#include "ReportDocument.h"
#include "ToolRegistry.h"
#include "frm_Preview.h"

#include <QAbstractButton>
#include <QAction>
#include <QPrinter>
#include <QRegularExpression>

namespace {

const QString MainView = QStringLiteral(SORANO_EXAMPLES_DIR "/Hauptzaehler.sor");

// The size of every page of a PDF in points, in page order.
std::vector<QSizeF> PdfPages(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QString text = QString::fromLatin1(file.readAll());
    static const QRegularExpression page(
        QStringLiteral(R"(/Type\s*/Page\b(?!s)[^>]*?/MediaBox\s*\[\s*0\s+0\s+([\d.]+)\s+([\d.]+)\s*\])"),
        QRegularExpression::DotMatchesEverythingOption);
    std::vector<QSizeF> pages;
    for (QRegularExpressionMatchIterator it = page.globalMatch(text); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        pages.emplace_back(match.captured(1).toDouble(), match.captured(2).toDouble());
    }
    return pages;
}

bool Portrait(const QSizeF& page)
{
    // A4 is 595 x 842 points.
    return std::abs(page.width() - 595.3) < 1 && std::abs(page.height() - 841.9) < 1;
}

bool Landscape(const QSizeF& page)
{
    return Portrait(page.transposed());
}

using PrintTest = DemoFixture;

TEST_F(PrintTest, HeadlessPdfRunsEachReportOverEachViewInItsOrientation)
{
    const QString pdf = out.filePath("day.pdf");
    const QStringList day { "--from", "2025-03-10", "--to", "2025-03-11", "--resolution", "1h" };
    QString error;
    // A day in hours is one table page; the full-page chart is landscape by its nature.
    ASSERT_EQ(Headless(QStringList { "--print-pdf", pdf, "--report", "REP_0,REP_1,REP_2" } + day
                      + QStringList { MainView, MainView },
                  error),
        ExitCode::Ok)
        << error.toStdString();
    std::vector<QSizeF> pages = PdfPages(pdf);
    ASSERT_EQ(pages.size(), 6u);
    for (std::size_t view = 0; view < 2; ++view) {
        EXPECT_TRUE(Portrait(pages[view * 3]) && Portrait(pages[view * 3 + 1]));
        EXPECT_TRUE(Landscape(pages[view * 3 + 2]));
    }

    // One orientation for all, and the chart report alone without --report.
    ASSERT_EQ(
        Headless(
            QStringList { "--print-pdf", pdf, "--orientation", "landscape" } + day + QStringList { MainView }, error),
        ExitCode::Ok);
    pages = PdfPages(pdf);
    ASSERT_EQ(pages.size(), 1u);
    EXPECT_TRUE(Landscape(pages[0]));

    // A week in 15 minutes (672 rows) takes more table pages than a day.
    ASSERT_EQ(Headless({ "--print-pdf", pdf, "--report", "REP_1", MainView }, error), ExitCode::Ok);
    EXPECT_GT(PdfPages(pdf).size(), 5u);
}

TEST_F(PrintTest, BadInputEndsWithAMessageAndAnExitCode)
{
    const QString pdf = out.filePath("x.pdf");
    QFile main(MainView);
    ASSERT_TRUE(main.open(QIODevice::ReadOnly));
    const QString empty = out.filePath("empty.sor");
    QFile emptyView(empty);
    ASSERT_TRUE(emptyView.open(QIODevice::WriteOnly));
    emptyView.write(
        QString::fromUtf8(main.readAll())
            .replace(QRegularExpression("<curves>.*</curves>", QRegularExpression::DotMatchesEverythingOption),
                "<curves></curves>")
            .toUtf8());
    emptyView.close();
    const struct
    {
        QStringList arguments;
        int exitCode;
        QString message;
    } cases[] = {
        { { "--print-pdf", pdf, "--report", "REP_9", MainView }, ExitCode::Usage, "there is no report REP_9" },
        { { "--print-pdf", pdf, "--orientation", "sideways", MainView }, ExitCode::Usage, "sideways" },
        { { "--report", "REP_1", "--export-csv", out.filePath("x.csv"), MainView }, ExitCode::Usage,
            "need --print-pdf" },
        { { "--print-pdf", out.filePath("x.txt"), MainView }, ExitCode::Usage, ".pdf" },
        { { "--print-pdf", pdf }, ExitCode::Usage, "no view file" },
        { { "--print-pdf", pdf, MainView, "notes.txt" }, ExitCode::Usage, "notes.txt" },
        { { "--print-pdf", pdf, out.filePath("missing.sor") }, ExitCode::View, "does not exist" },
        // A view without curves has no table row to print.
        { { "--print-pdf", pdf, "--report", "REP_1", empty }, ExitCode::View, "no page" },
        { { "--print-pdf", out.filePath("none/x.pdf"), MainView }, ExitCode::Write, "could not write" },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments.join(' ').toStdString());
        QString error;
        EXPECT_EQ(Headless(c.arguments, error), c.exitCode);
        EXPECT_TRUE(error.contains(c.message)) << error.toStdString();
    }
    EXPECT_FALSE(QFile::exists(pdf));

    // The program as built prints without a display.
    QString error;
    EXPECT_EQ(RunProgram({ "--print-pdf", pdf, "--from", "2025-03-10", "--to", "2025-03-11", MainView }, error), 0)
        << error.toStdString();
    EXPECT_EQ(PdfPages(pdf).size(), 1u);
}

// "Datei > Seite einrichten..." and "Datei > Drucken ..." as a user goes through them: the page
// setup's margin reaches the pages, the chosen report fills the preview, and "all open views"
// prints each of them.
TEST_F(PrintTest, PrintCommandRunsTheChosenReportsIntoThePreview)
{
    CopyMainView("main.sor");
    Project project;
    ASSERT_EQ(project.Init(), 0);
    const auto tool = [&](const char* name) { return project.ActiveBar()->Tool(QLatin1String(name)); };
    const auto click = [](QWidget* dialog, const char* name) {
        QAbstractButton* button = dialog->findChild<QAbstractButton*>(QLatin1String(name));
        ASSERT_NE(button, nullptr) << name;
        button->click();
    };
    EXPECT_FALSE(tool("mnuFilePrint")->isEnabled()) << "nothing to print without a view";

    Answer({ [&](QWidget* dialog) {
        EXPECT_EQ(dialog->objectName(), "frm_PageSetup");
        Type(dialog->findChild<QLineEdit*>("txt_Border0"), "30");
        click(dialog, "cmd_OK");
    } });
    tool("mnuFilePageSetup")->trigger();

    ASSERT_NE(project.OpenMeasuring(out.filePath("main.sor"), false), nullptr);
    Settle();
    ASSERT_TRUE(tool("mnuFilePrint")->isEnabled());
    // The table report in portrait, the third row of the list.
    roots.SetUser("Software\\HARVOLD\\Sorano\\Reports", "Selection", "0;0;1;0;0;0;");
    Answer({ [&](QWidget* dialog) {
        EXPECT_EQ(dialog->objectName(), "frm_PrintReport");
        click(dialog, "cmd_OK");
    } });
    tool("mnuFilePrint")->trigger();
    frm_Preview* preview = project.PreviewWindow();
    ASSERT_TRUE(preview->isVisible());
    std::shared_ptr<ReportDocument> document = preview->Report();
    ASSERT_TRUE(document);
    // A week in 15-minute steps is several table pages, numbered in their foot or not at all.
    EXPECT_GT(document->PageCount(), 5);
    const ReportPage& first = document->Page(0);
    EXPECT_FALSE(first.Landscape());
    const auto leftmost = std::min_element(first.Operations().begin(), first.Operations().end(),
        [](const ReportPage::Operation& a, const ReportPage::Operation& b) { return a.rect.left() < b.rect.left(); });
    EXPECT_NEAR(leftmost->rect.left(), 30 * TwipsPerMm, 1) << "the margin of the page setup";

    // The preview's pages on a printer that writes PDF are the pages of the headless print.
    const QString folder = qEnvironmentVariable("SORANO_TEST_PICTURES", out.path());
    QPrinter printer(QPrinter::HighResolution);
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(folder + "/print-printer.pdf");
    printer.setResolution(1440);
    printer.setFullPage(true);
    ASSERT_TRUE(document->PrintTo(printer));
    QString error;
    ASSERT_EQ(Headless({ "--print-pdf", folder + "/print-headless.pdf", "--report", "REP_1", out.filePath("main.sor") },
                  error),
        ExitCode::Ok)
        << error.toStdString();
    const std::vector<QSizeF> printed = PdfPages(folder + "/print-printer.pdf");
    EXPECT_EQ(printed.size(), std::size_t(document->PageCount()));
    EXPECT_EQ(printed, PdfPages(folder + "/print-headless.pdf"));

    // A second view and "all open views": one chart page each.
    CopyMainView("second.sor");
    ASSERT_NE(project.OpenMeasuring(out.filePath("second.sor"), false), nullptr);
    Settle();
    roots.SetUser("Software\\HARVOLD\\Sorano\\Reports", "Selection", "1;0;0;0;0;0;");
    Answer({ [&](QWidget* dialog) {
        click(dialog, "opt_All");
        click(dialog, "cmd_OK");
    } });
    tool("mnuFilePrint")->trigger();
    document = preview->Report();
    ASSERT_TRUE(document);
    EXPECT_EQ(document->PageCount(), 2);

    // A view closed while reports run over it stays until they are over, then closes.
    Measuring* second = project.Measurings().back().get();
    bool closedAtOnce = true;
    QTimer::singleShot(0, [&] { closedAtOnce = project.CloseMeasuring(second); });
    std::vector<ReportPtr> table { project.Reports().Item("REP_1") };
    project.BatchPrintMeasuring(table, {}, {});
    EXPECT_FALSE(closedAtOnce);
    EXPECT_GT(preview->Report()->PageCount(), 10) << "the table pages of both views";
    Settle();
    EXPECT_EQ(project.Measurings().size(), 1u);

    preview->close();
    Settle();
    EXPECT_FALSE(preview->Report()) << "the preview lets go of its pages when it closes";
    project.Terminate(true);
}

} // namespace
