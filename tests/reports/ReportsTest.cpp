// SPDX-License-Identifier: GPL-3.0-or-later
// The built-in reports on a generated logger, measured with fixed font metrics: the table
// report's pages and cells, the chart report's layout in both orientations, the full-page
// chart, and the list of reports.
#include "ChartReport.h"
#include "Curve.h"
#include "CurveColors.h"
#include "DataMatrix.h"
#include "Formatter.h"
#include "FullPageChartReport.h"
#include "Globals.h"
#include "MeasuringFixture.h"
#include "ReportDocument.h"
#include "ReportInterface.h"
#include "ResStrings.h"
#include "Settings.h"
#include "TableReport.h"

#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <map>

namespace {

using Operation = ReportPage::Operation;

// Every character of a line is 100 twips wide (150 in bold), every line `lineHeight` high.
class FixedMetrics : public TextMetrics
{
public:
    explicit FixedMetrics(int lineHeight)
        : m_iLineHeight(lineHeight)
    { }
    void Measure(const QFont& font, const QString& text, int& width, int& height) const override
    {
        const QStringList lines = text.split(QLatin1Char('\n'));
        qsizetype longest = 0;
        for (const QString& line : lines)
            longest = std::max(longest, line.size());
        width = int(longest) * (font.bold() ? 150 : 100);
        height = int(lines.size()) * m_iLineHeight;
    }

private:
    int m_iLineHeight;
};

// The first operation of the page of the kind, and with the text or pen width when given.
const Operation* Find(const ReportPage& page, Operation::Kind kind, const QString& text = {}, int penWidth = 0)
{
    for (const Operation& operation : page.Operations())
        if (operation.kind == kind && (text.isEmpty() || operation.text == text)
            && (!penWidth || operation.state.penWidth == penWidth))
            return &operation;
    return nullptr;
}

const Operation* FindText(const ReportPage& page, const QString& text)
{
    return Find(page, Operation::Text, text);
}

class ReportsTest : public measuring_fixture::MeasuringFixture
{
protected:
    // A day of 15-minute rows with power, power factor and reserve, shown as a chart.
    void OpenDay()
    {
        Open(900);
        ASSERT_TRUE(Add("3$L#1", "|1|"));
        ASSERT_TRUE(Add("3$L#2", "|1|"));
        ASSERT_TRUE(Add("3$L#3", "|1|"));
        Day();
        measuring->SetName("Anlage");
        measuring->SetViewMode(frm_GraphicView::ChartMode);
    }
    MatrixBlock& Block(std::size_t curve) { return *measuring->Curves()[curve]->Result()->DataBlock(); }
    // Keeps the first rows of every curve.
    void KeepRows(qsizetype rows)
    {
        for (std::size_t c = 0; c < measuring->Curves().size(); ++c) {
            ASSERT_GE(Block(c).Rows(), rows);
            Block(c).SetRows(rows);
        }
    }
    // Margins that give whole twips: left 1134, right 567, head bottom 1701, foot top page - 1134.
    static void WholeMargins()
    {
        Settings::Write(Settings::Id::ReportLeft, "20");
        Settings::Write(Settings::Id::ReportRight, "10");
        Settings::Write(Settings::Id::ReportTop, "10");
        Settings::Write(Settings::Id::ReportHeadHeight, "20");
        Settings::Write(Settings::Id::ReportBottom, "10");
        Settings::Write(Settings::Id::ReportFootHeight, "10");
    }
    qint32 Run(ReportInterface& report, ReportDocument& document, qint32 orientation)
    {
        report.SetOrientation(orientation);
        qint32 status = 99;
        report.Execute(measuring.get(), &document, status);
        return status;
    }
};

// --- table report

// The row labels of each page, as row indices of the data, in the order they were drawn.
std::vector<std::vector<qsizetype>> RowsPerPage(const ReportDocument& document, const MatrixBlock& times)
{
    const Formatter formatter;
    std::map<QString, qsizetype> indexOf;
    for (qsizetype r = 0; r < times.Rows(); ++r)
        indexOf[formatter.GeneralDate(times.At(r, 0))] = r;
    std::vector<std::vector<qsizetype>> pages;
    for (qsizetype p = 0; p < document.PageCount(); ++p) {
        pages.emplace_back();
        for (const Operation& operation : document.Page(p).Operations())
            if (operation.kind == Operation::Text && indexOf.count(operation.text))
                pages.back().push_back(indexOf[operation.text]);
    }
    return pages;
}

TEST_F(ReportsTest, TablePagesRepeatTwoRowsAndStopByTheRowCount)
{
    OpenDay();
    // Lines of 1000 twips: the default table of 14003 twips has room for 13 rows below its
    // head. Offered more, it takes 12, and drawing fits them again to 10: the unit row and
    // 9 times, and the next page starts 7 rows on. Ten times or fewer fit on one last page.
    const FixedMetrics metrics(1000);
    struct Case
    {
        qsizetype rows;
        qsizetype pages;
        std::vector<qsizetype> timesPerPage;
    };
    for (const Case& c : { Case { 96, 14, {} }, Case { 31, 4, { 9, 9, 9, 10 } }, Case { 22, 3, { 9, 9, 8 } },
             Case { 13, 2, { 9, 6 } }, Case { 10, 1, { 10 } }, Case { 0, 0, {} } }) {
        SCOPED_TRACE(c.rows);
        KeepRows(c.rows);
        host.messages.clear();
        ReportDocument document(metrics);
        TableReport report;
        EXPECT_EQ(Run(report, document, 1), 0);
        ASSERT_EQ(document.PageCount(), c.pages);
        EXPECT_EQ(host.messages.filter(QRegularExpression("^PROGRESS_UPDATE:TR1;")).size(), c.pages);
        EXPECT_EQ(host.messages.first(), "LOG:" + GetResString(288));
        EXPECT_EQ(host.messages.last(), "PROGRESS_END:TR1");

        const auto pages = RowsPerPage(document, Block(0));
        for (std::size_t p = 0; p < pages.size(); ++p) {
            ASSERT_GE(pages[p].size(), 1u) << p;
            for (std::size_t i = 1; i < pages[p].size(); ++i)
                EXPECT_EQ(pages[p][i], pages[p][i - 1] + 1) << p;
            if (!c.timesPerPage.empty()) {
                EXPECT_EQ(pages[p].size(), std::size_t(c.timesPerPage[p])) << p;
            }
            // Each page starts with the last two times of the page before.
            EXPECT_EQ(pages[p].front(), p == 0 ? 0 : pages[p - 1][pages[p - 1].size() - 2]) << p;
        }
        // Every time row is printed, the last one on the last page.
        EXPECT_EQ(pages.empty() ? -1 : pages.back().back(), c.rows - 1);
    }
}

TEST_F(ReportsTest, TableCellsHeadAndFoot)
{
    OpenDay();
    KeepRows(8);
    // The power factor arrives folded; a missing power sample in the second row.
    ASSERT_NEAR(Block(1).At(0, 1), 0.1, 1e-9);
    ASSERT_EQ(measuring->Curves()[1]->Result()->DataType(), DataMatrix::CosPhiType);
    Block(0).At(1, 1) = Block(0).NoValue();
    Settings::Write(Settings::Id::TableFontSize, "0");
    Settings::Write(Settings::Id::CompanyName, "Firma");
    Settings::Write(Settings::Id::CompanyAddress, "Weg 1\r\nOrt");
    measuring->CustomerAddress().Name = "Muster";
    measuring->CustomerAddress().Place = "Ort";

    const FixedMetrics metrics(200);
    ReportDocument document(metrics);
    TableReport report;
    ASSERT_EQ(Run(report, document, 2), 0);
    ASSERT_EQ(document.PageCount(), 1);
    const ReportPage& page = document.Page(0);
    EXPECT_TRUE(page.Landscape());
    EXPECT_EQ(document.Title(), "Anlage (10.02.2009 - 11.02.2009)");

    // Eight rows make a table of eight times: power is the hour, 0 but the missing one and 1
    // from 01:00; the power factor as measured.
    const Formatter formatter;
    const auto count = [&](const QString& text) {
        return std::count_if(page.Operations().begin(), page.Operations().end(),
            [&](const Operation& operation) { return operation.kind == Operation::Text && operation.text == text; });
    };
    EXPECT_EQ(count(GetResString(369)), 1);
    EXPECT_EQ(count(formatter.FormatNumber(0.0, u"#,##0.00")), 3);
    EXPECT_EQ(count(formatter.FormatNumber(1.0, u"#,##0.00")), 4);
    EXPECT_EQ(count(formatter.FormatNumber(0.9, u"#,##0.00")), 8);
    EXPECT_EQ(count(formatter.FormatNumber(100.0, u"#,##0.00")), 8);
    const Operation* missing = FindText(page, GetResString(369));
    ASSERT_TRUE(missing);
    EXPECT_FALSE(page.FontAt(missing->state.font).bold());
    const Operation* unit = FindText(page, "cos phi");
    ASSERT_TRUE(unit);
    EXPECT_EQ(unit->state.align, ReportPage::AlignRight);

    // The stored font size 0 gives way to 10 points of the default font, which are stored.
    EXPECT_EQ(page.FontAt(missing->state.font).family(), "Arial");
    EXPECT_EQ(page.FontAt(missing->state.font).pixelSize(), 200);
    EXPECT_EQ(Settings::StoredValue(Settings::Id::TableFontSize), "10");
    EXPECT_EQ(Settings::StoredValue(Settings::Id::TableFontName), "Arial");

    // Head: title and customer; foot: the company on one line, and no page number.
    EXPECT_TRUE(FindText(page, document.Title()));
    EXPECT_TRUE(FindText(page, "Firma \u00B7 Weg 1 \u00B7 Ort"));
    EXPECT_TRUE(FindText(page, GetResString(454) + " Muster, Ort"));
    for (const Operation& operation : page.Operations())
        EXPECT_FALSE(operation.text.contains("%PAGE%"));

    // The customer line needs a name; the place is only added to it.
    const auto customerLine = [&]() -> QString {
        ReportDocument again(metrics);
        TableReport table;
        Run(table, again, 1);
        for (const Operation& operation : again.Page(0).Operations())
            if (operation.text.startsWith(GetResString(454)))
                return operation.text;
        return QString();
    };
    measuring->CustomerAddress().Place.clear();
    EXPECT_EQ(customerLine(), GetResString(454) + " Muster");
    measuring->CustomerAddress().Name.clear();
    measuring->CustomerAddress().Place = "Ort";
    EXPECT_EQ(customerLine(), QString());
}

// --- chart reports

TEST_F(ReportsTest, ChartReportsLayOutTextPictureAndLegendAndRefuseMissingInput)
{
    OpenDay();
    WholeMargins();
    measuring->Curves()[0]->Properties().Color = CurveColors::Rgb(0, 0, 255);
    MeasuringFile::Address& customer = measuring->CustomerAddress();
    customer.Name = "Muster";
    customer.FirstName = "Max";
    customer.Street = "Weg 1";
    customer.Place = "Ort";
    const Formatter formatter;
    const QString start = formatter.GeneralDate(measuring->StartDate());
    const QString end = formatter.GeneralDate(measuring->EndDate());

    // Lines of 200 twips. The widest label, "Darstellungszeitraum:", is 2100 twips in
    // normal weight: values start at 1134 + 2100.
    const FixedMetrics metrics(200);
    const int x0 = 1134;
    const int x1 = 3234;
    const int top = 1701;
    for (const qint32 orientation : { 1, 2 }) {
        SCOPED_TRACE(orientation);
        ReportDocument document(metrics);
        ChartReport report;
        ASSERT_EQ(Run(report, document, orientation), 0);
        ASSERT_EQ(document.PageCount(), 1);
        const ReportPage& page = document.Page(0);
        EXPECT_EQ(page.Landscape(), orientation == 2);
        EXPECT_EQ(document.Title(), GetResString(453) + " Anlage (10.02.2009 - 11.02.2009)");
        const int width = page.Width() - x0 - 567;

        const auto at = [&](const QString& text, double x, double y, bool bold) {
            SCOPED_TRACE(text.toStdString());
            const Operation* operation = FindText(page, text);
            ASSERT_TRUE(operation);
            EXPECT_EQ(operation->rect.left(), x);
            EXPECT_EQ(operation->rect.top(), y);
            EXPECT_EQ(page.FontAt(operation->state.font).bold(), bold);
        };
        at(GetResString(464), x0, top, true);
        at("Anlage", x1, top, false);
        at(GetResString(454), x0, top + 200, true);
        at("Muster", x1, top + 200, false);
        // Three address lines and the empty one after the last break, then an empty line.
        at("Max\nWeg 1\nOrt\n", x1, top + 400, false);
        const int period = top + 400 + 800 + 200;
        at(GetResString(466), x0, period, true);
        int legend = period;
        if (orientation == 1) {
            at(start + " - " + end, x1, period, false);
            legend += 2 * 200;
        } else {
            at(start, x1, period, false);
            at("- " + end, x1, period + 200, false);
            legend += 200 + 2 * 200;
        }

        // The picture keeps its aspect: full width under the text in portrait, the right two
        // thirds from the top of the text block in landscape.
        const Operation* picture = Find(page, Operation::Picture);
        ASSERT_TRUE(picture);
        const QSizeF size = picture->picture->boundingRect().size();
        ASSERT_FALSE(size.isEmpty());
        const QRectF expected = orientation == 1
            ? QRectF(x0, legend, width, std::nearbyint(width * size.height() / size.width()))
            : QRectF(std::round(x0 + width / 3.0), top, std::round(2.0 * width / 3.0),
                std::nearbyint(std::round(2.0 * width / 3.0) * size.height() / size.width()));
        EXPECT_EQ(picture->rect, expected);
        if (orientation == 1)
            legend += int(expected.height());

        at(GetResString(465), x0, legend, true);
        at("Power [kW]", x1 + 175, legend, false);
        at("Power factor [cos phi]", x1 + 175, legend + 200, false);
        at("Reserve [kW]", x1 + 175, legend + 400, false);
        const Operation* mark = Find(page, Operation::Line, {}, 3);
        ASSERT_TRUE(mark);
        EXPECT_EQ(mark->rect, QRectF(QPointF(x1, legend + 100), QPointF(x1 + 125, legend + 100)));
        EXPECT_EQ(QColor::fromRgb(mark->state.penColor), QColor(0, 0, 255));

        // The full-page chart fills the room between head and foot under a one-line title.
        ReportDocument full(metrics);
        FullPageChartReport fullReport;
        ASSERT_EQ(Run(fullReport, full, orientation), 0);
        ASSERT_EQ(full.PageCount(), 1);
        const Operation* fullPicture = Find(full.Page(0), Operation::Picture);
        ASSERT_TRUE(fullPicture);
        EXPECT_EQ(fullPicture->rect, QRectF(x0, top, width, page.Height() - 50 * TwipsPerMm));
        EXPECT_TRUE(FindText(full.Page(0), GetResString(464) + " Anlage " + start + " - " + end));
    }

    // Nothing to report on, or nowhere to draw: -1 and no page.
    ReportDocument document(metrics);
    for (ReportPtr report : { ReportPtr(std::make_shared<ChartReport>()), ReportPtr(std::make_shared<TableReport>()),
             ReportPtr(std::make_shared<FullPageChartReport>()) }) {
        qint32 status = 0;
        report->Execute(nullptr, &document, status);
        EXPECT_EQ(status, -1);
        status = 0;
        report->Execute(measuring.get(), nullptr, status);
        EXPECT_EQ(status, -1);
    }
    EXPECT_EQ(document.PageCount(), 0);

    // A customer with only a name: the "Kunde:" line, then one line for the empty address
    // and the empty line.
    customer = {};
    customer.Name = "Muster";
    ChartReport report;
    ASSERT_EQ(Run(report, document, 1), 0);
    const ReportPage& page = document.Page(0);
    const Operation* name = FindText(page, "Muster");
    const Operation* period = FindText(page, GetResString(466));
    ASSERT_TRUE(name && period);
    EXPECT_EQ(period->rect.top(), name->rect.top() + 3 * 200);

    // Without a chart the page keeps only its head and foot.
    measuring->SetViewMode(frm_GraphicView::GridMode);
    ReportDocument grid(metrics);
    EXPECT_EQ(Run(report, grid, 1), 0);
    ASSERT_EQ(grid.PageCount(), 1);
    EXPECT_FALSE(FindText(grid.Page(0), GetResString(464)));
}

// --- the list

TEST(LoadReportsTest, NumbersTheReportsAfterThoseAlreadyListed)
{
    const qint32 language = g_lLangOffset;
    for (const qint32 offset : { 0, 1000 }) {
        g_lLangOffset = offset;
        ReportCollection reports;
        LoadReports(reports);
        ASSERT_EQ(reports.Count(), 3);
        const QString names[]
            = { GetResString(460), GetResString(461), offset ? "Full-page chart report" : "Diagrammreport ganzseitig" };
        const qint32 orientations[] = { 1, 1, 2 };
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(reports.At(i)->ID(), "REP_" + QString::number(i));
            EXPECT_EQ(reports.At(i)->Name(), names[i]);
            EXPECT_EQ(reports.At(i)->Orientation(), orientations[i]);
            EXPECT_FALSE(reports.At(i)->Configurable());
        }
        EXPECT_TRUE(std::dynamic_pointer_cast<TableReport>(reports.Item("REP_1")));

        // A second load counts on from what is there.
        LoadReports(reports);
        ASSERT_EQ(reports.Count(), 6);
        EXPECT_TRUE(std::dynamic_pointer_cast<ChartReport>(reports.Item("REP_3")));
        EXPECT_TRUE(std::dynamic_pointer_cast<FullPageChartReport>(reports.Item("REP_5")));
    }
    g_lLangOffset = language;
}

} // namespace
