// SPDX-License-Identifier: GPL-3.0-or-later
#include "Calendar.h"
#include "DynamicGridModel.h"
#include "QtPrinters.h"
#include "ctl_DynamicGrid.h"

#include <QApplication>
#include <QBuffer>
#include <QClipboard>
#include <QFile>
#include <QHeaderView>
#include <QLocale>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <random>
#include <vector>

namespace {

constexpr double NoValue = MatrixBlock::DefaultNoValue;

QByteArray ReadFile(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

// A matrix named "Wert" of (time, value) rows.
DataMatrixPtr Rows(const std::vector<std::pair<double, double>>& rows)
{
    auto block = MatrixBlock::Create(static_cast<qsizetype>(rows.size()), 2);
    for (size_t i = 0; i < rows.size(); ++i) {
        block->At(static_cast<qsizetype>(i), 0) = rows[i].first;
        block->At(static_cast<qsizetype>(i), 1) = rows[i].second;
    }
    auto matrix = std::make_shared<DataMatrix>();
    matrix->SetChannelName("Wert");
    matrix->SetDataBlock(block);
    return matrix;
}

// Samples every quarter hour from 2009-02-03 14:00.
DataMatrixPtr Channel(const QString& name, const QString& unit, const std::vector<double>& values, qint32 type = 3)
{
    std::vector<std::pair<double, double>> rows;
    for (size_t i = 0; i < values.size(); ++i)
        rows.emplace_back(Calendar::FromParts(2009, 2, 3, 14, static_cast<int>(i) * 15), values[i]);
    auto matrix = Rows(rows);
    matrix->SetChannelName(name);
    matrix->SetUnit(unit);
    matrix->SetDataType(type);
    return matrix;
}

DataMatrixPtr CosPhi(const std::vector<double>& values)
{
    return Channel("cos phi", "", values, DataMatrix::CosPhiType);
}

class DynamicGridTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        grid = std::make_unique<ctl_DynamicGrid>();
        grid->SetDateFormat(QStringLiteral("dd.mm.yyyy hh:nn"));
        grid->resize(700, 400);
        grid->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(grid.get()));
    }
    void TearDown() override
    {
        grid.reset();
        QLocale::setDefault(QLocale::c());
    }

    // The example of the fixture files: a voltage with a gap, and a shorter cos phi without unit.
    void AddExample()
    {
        grid->AddMatrix(Channel("Spannung", "V", { 230.5, 1234.5, NoValue, 231.25 }), "u");
        grid->AddMatrix(CosPhi({ 0.05, -0.1, 0.2 }), "pf");
    }

    QString Cell(int row, int column) const { return grid->View()->model()->index(row, column).data().toString(); }
    QString Header(int column) const { return grid->View()->model()->headerData(column, Qt::Horizontal).toString(); }
    int Columns() const { return grid->View()->model()->columnCount(); }
    static QString Clipboard() { return QGuiApplication::clipboard()->text(); }

    std::unique_ptr<ctl_DynamicGrid> grid;
};

TEST_F(DynamicGridTest, ShowsTimesFormattedValuesAndMissingCells)
{
    AddExample();
    QAbstractItemModel* model = grid->View()->model();
    ASSERT_EQ(model->rowCount(), 4);
    ASSERT_EQ(Columns(), 3);
    EXPECT_FALSE(grid->VScroll()->isEnabled());
    EXPECT_EQ(Header(1), "Spannung (V)");
    EXPECT_EQ(Header(2), "cos phi");

    const QStringList expected[]
        = { { "03.02.2009 14:00", "230,50", "0,95" }, { "03.02.2009 14:15", "1.234,50", "-0,90" },
              { "03.02.2009 14:30", "FEHLT", "0,80" }, { "03.02.2009 14:45", "231,25", "FEHLT" } };
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 3; ++c)
            EXPECT_EQ(Cell(r, c), expected[r][c]) << r << "," << c;
    grid->AddMatrix(CosPhi({ 0.0 }), "one");
    EXPECT_EQ(Cell(0, 3), "1,00") << "a stored 0 is a power factor of exactly 1, not -1";
}

TEST_F(DynamicGridTest, ClipboardAndExportWriteTheHandWrittenFilesAndTheSelection)
{
    AddExample();
    grid->CopyToClipboard(true);
    const QString fixtures = QStringLiteral(SORANO_CONTROLS_FIXTURES "/");
    EXPECT_EQ(Clipboard().toUtf8(), ReadFile(fixtures + "grid_datatext.txt"));
    QTemporaryDir dir;
    ASSERT_EQ(grid->Export(dir.filePath("export.csv")), 0);
    EXPECT_EQ(ReadFile(dir.filePath("export.csv")), ReadFile(fixtures + "grid_export.csv"));
    EXPECT_EQ(grid->Export(QString()), -1);
    EXPECT_EQ(grid->Export(dir.filePath("missing/export.csv")), -2);

    // Selected cells as shown; a click in the header row copies the whole screen with the header.
    QTableView* view = grid->View();
    view->selectionModel()->select(
        QItemSelection(view->model()->index(0, 1), view->model()->index(1, 2)), QItemSelectionModel::ClearAndSelect);
    grid->CopyToClipboard(false);
    EXPECT_EQ(Clipboard(), "230,50\t0,95\r\n1.234,50\t-0,90");
    QHeaderView* header = view->horizontalHeader();
    QTest::mouseClick(
        header->viewport(), Qt::LeftButton, {}, QPoint(header->sectionViewportPosition(1) + 5, header->height() / 2));
    grid->CopyToClipboard(false);
    EXPECT_TRUE(Clipboard().startsWith("\tSpannung (V)\tcos phi\r\n03.02.2009 14:00\t230,50\t0,95\r\n"))
        << Clipboard().toStdString();
    EXPECT_EQ(Clipboard().count("\r\n"), 4);
    EXPECT_EQ(view->selectionModel()->selectedIndexes(), QModelIndexList { view->model()->index(0, 0) });

    view->clearSelection();
    QGuiApplication::clipboard()->setText("kept");
    grid->CopyToClipboard(false);
    EXPECT_EQ(Clipboard(), "kept");
}

TEST_F(DynamicGridTest, MatrixListChangesShowAsTheyArriveOrAtUpdate)
{
    AddExample();
    grid->AddMatrix(Channel("Strom", "A", { 1, 2, 3, 4 }), "u"); // a key shown again moves to the end
    ASSERT_EQ(Columns(), 3);
    EXPECT_EQ(Header(1), "cos phi");
    EXPECT_EQ(Header(2), "Strom (A)");
    grid->AddMatrix(nullptr, "x");
    grid->AddMatrix(Channel("Leer", "", {}), "y");
    EXPECT_EQ(Columns(), 3);
    grid->RemoveMatrix("u");
    EXPECT_EQ(Columns(), 2);
    EXPECT_EQ(Header(1), "cos phi");

    // Without auto update a change waits; an update without force only for other rows or columns.
    grid->SetAutoUpdate(false);
    grid->AddMatrix(CosPhi({ 0.3, 0.3, 0.3 }), "pf");
    EXPECT_EQ(Cell(0, 1), "0,95");
    grid->Update(false);
    EXPECT_EQ(Cell(0, 1), "0,95");
    grid->Update(true);
    EXPECT_EQ(Cell(0, 1), "0,70");
    grid->AddMatrix(Channel("Strom", "A", { 1, 2 }), "i");
    EXPECT_EQ(Columns(), 2);
    grid->Update(false);
    EXPECT_EQ(Columns(), 3);

    // Clear keeps the cells on the screen until matrices arrive.
    grid->SetAutoUpdate(true);
    grid->Clear();
    EXPECT_EQ(Columns(), 3);
    EXPECT_EQ(Cell(0, 1), "0,70");
    EXPECT_TRUE(grid->DataText().isEmpty());
    grid->AddMatrix(Channel("Strom", "A", { 7, 8 }), "i");
    EXPECT_EQ(Columns(), 2);
    EXPECT_EQ(grid->View()->model()->rowCount(), 2);
    EXPECT_EQ(Cell(1, 1), "8,00");
}

TEST_F(DynamicGridTest, ScrollingReachesEveryRow)
{
    constexpr qsizetype Count = 100000;
    std::vector<std::pair<double, double>> rows;
    for (qsizetype i = 0; i < Count; ++i)
        rows.emplace_back(40000.0 + static_cast<double>(i) / 1440.0, static_cast<double>(i));
    const DataMatrixPtr matrix = Rows(rows);
    grid->AddMatrix(matrix, "n");
    for (int i = 0; i < 12; ++i)
        grid->AddMatrix(Channel(QStringLiteral("Kanal %1").arg(i), "kW", { 1.0 }), QString::number(i));

    QTableView* view = grid->View();
    const int visible = view->model()->rowCount();
    ASSERT_GT(visible, 5);
    EXPECT_LT(visible, 100);
    EXPECT_TRUE(grid->VScroll()->isEnabled());
    EXPECT_EQ(grid->VScroll()->maximum(), Count - visible);

    grid->ScrollToRow(static_cast<qint32>(Count));
    EXPECT_EQ(grid->FirstRow(), Count - visible);
    EXPECT_EQ(Cell(visible - 1, 1), "99.999,00");

    // Moving below the last row on the screen moves the data, not the cursor.
    view->setFocus();
    view->setCurrentIndex(view->model()->index(visible - 1, 1));
    grid->ScrollToRow(500);
    QTest::keyClick(view, Qt::Key_Down);
    EXPECT_EQ(grid->FirstRow(), 501);
    EXPECT_EQ(view->currentIndex().row(), visible - 1);
    EXPECT_EQ(view->currentIndex().data().toString(), QStringLiteral("%1,00").arg(500 + visible));
    QTest::keyClick(view, Qt::Key_Home, Qt::ControlModifier);
    EXPECT_EQ(grid->FirstRow(), 0);

    QSignalSpy mouseUp(grid.get(), &ctl_DynamicGrid::MouseUp);
    QTest::mouseClick(view->viewport(), Qt::RightButton, Qt::ShiftModifier, QPoint(150, 20));
    ASSERT_EQ(mouseUp.size(), 1);
    EXPECT_EQ(mouseUp[0][2].toPoint(), view->viewport()->mapTo(grid.get(), QPoint(150, 20)));

    // Horizontally the time column stays while the matrices pass beneath it.
    EXPECT_EQ(grid->FirstColumn(), 0);
    view->horizontalScrollBar()->setValue(view->columnViewportPosition(4) - view->columnWidth(0));
    EXPECT_EQ(grid->FirstColumn(), 3);
    const QWidget* timeColumn = view->findChild<QTableView*>("TimeColumn");
    ASSERT_NE(timeColumn, nullptr);
    EXPECT_TRUE(timeColumn->isVisible());
    EXPECT_EQ(timeColumn->width(), view->columnWidth(0));
}

// The CSV lines after the header, each split into its fields.
std::vector<QStringList> CsvRows(const QList<DataMatrixPtr>& matrices)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(DynamicGridModel().WriteCsv(buffer, matrices));
    QStringList lines = QString::fromUtf8(buffer.data()).split("\r\n");
    EXPECT_EQ(lines.takeLast(), QString()) << "every line ends with CR LF";
    std::vector<QStringList> rows;
    for (qsizetype i = 1; i < lines.size(); ++i)
        rows.push_back(lines[i].split(','));
    return rows;
}

TEST(CsvExport, NumbersHaveAtMostFifteenDigitsInTheTablesGeneralForm)
{
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany)); // the point stays a point
    const double t = Calendar::FromParts(2024, 5, 6, 7, 8, 9);
    // Halfway cases round to even.
    const struct
    {
        double value;
        const char* text;
    } cases[] = { { 0.1 + 0.2, "0.3" }, { 2.0 / 3, "0.666666666666667" }, { 1e-7, "1E-07" }, { 1e20, "1E+20" },
        { NoValue, "-1E+300" }, { 1.5e-300, "1.5E-300" }, { 0.0001, "0.0001" }, { 0.00001234, "1.234E-05" },
        { -0.0, "0" }, { 999999999999999, "999999999999999" }, { 999999999999999.9, "1E+15" },
        { 123456789012345678.0, "1.23456789012346E+17" }, { 9.9999999999999995e-5, "0.0001" },
        { 100000000000000.5, "100000000000000" }, { 100000000000001.5, "100000000000002" },
        { 5e-324, "4.94065645841247E-324" }, { -1.7976931348623157e308, "-1.79769313486232E+308" },
        { std::nan(""), "nan" }, { -HUGE_VAL, "-inf" } };
    std::vector<std::pair<double, double>> rows;
    for (const auto& c : cases)
        rows.emplace_back(t, c.value);
    const std::vector<QStringList> written = CsvRows({ Rows(rows) });
    ASSERT_EQ(written.size(), std::size(cases));
    for (size_t i = 0; i < written.size(); ++i)
        EXPECT_EQ(written[i], QStringList({ "2024-05-06 07:08:09", cases[i].text })) << "row " << i;
    QLocale::setDefault(QLocale::c());
}

TEST(CsvExport, EveryNumberIsTheFifteenDigitRoundingOfItsValue)
{
    // Random values over the whole range and random fractions near halfway between two
    // 15-digit numbers, the cases an inexact scaling gets wrong.
    std::mt19937_64 random(20240506);
    std::vector<double> values;
    for (int i = 0; i < 100000; ++i) {
        const double mantissa = std::uniform_real_distribution<double>(1.0, 10.0)(random);
        const int exponent = i % 4 == 0 ? int(random() % 600) - 300 : int(random() % 40) - 10;
        const double value = mantissa * std::pow(10.0, exponent);
        values.push_back(i % 2 ? -value : value);
    }
    for (int i = 0; i < 20000; ++i) {
        const double whole = double(random() % 900000000000000ULL + 100000000000000ULL);
        values.push_back((whole + 0.5) * std::pow(10.0, int(random() % 30) - 20));
        values.push_back(std::nextafter(values.back(), i % 2 ? HUGE_VAL : 0.0));
    }
    std::vector<std::pair<double, double>> rows;
    for (double value : values)
        rows.emplace_back(0.0, value);
    const std::vector<QStringList> written = CsvRows({ Rows(rows) });
    ASSERT_EQ(written.size(), values.size());
    int wrong = 0;
    for (size_t i = 0; i < values.size() && wrong < 10; ++i) {
        const std::string field = written[i].value(1).toStdString();
        // The value rounded to 15 digits by the library, and its decimal exponent.
        char reference[32];
        *std::to_chars(reference, reference + 31, values[i], std::chars_format::scientific, 14).ptr = 0;
        const int exponent = std::atoi(std::strchr(reference, 'e') + 1);
        const bool plain = exponent >= -4 && exponent < 15;
        size_t digits = 0;
        for (char c : field.substr(0, field.find('E')))
            digits += c >= '0' && c <= '9';
        const bool ok = std::strtod(field.c_str(), nullptr) == std::strtod(reference, nullptr)
            && (field.find('E') == std::string::npos) == plain
            && digits <= (plain && exponent < 0 ? 15u - exponent : 15u) && field.back() != '.'
            && (field.find('.') == std::string::npos || field.substr(0, field.find('E')).back() != '0');
        if (!ok) {
            ++wrong;
            ADD_FAILURE() << field << " for " << reference;
        }
    }
}

TEST(CsvExport, TimesHaveFourDigitYearsAndShortColumnsEmptyFields)
{
    const DataMatrixPtr first
        = Rows({ { Calendar::FromParts(999, 1, 1), 1 }, { Calendar::FromParts(12, 3, 4, 5, 6, 7), 2 },
            { Calendar::FromParts(2024, 12, 31, 23, 59, 59) + 0.4 / 86400, 3 } });
    const DataMatrixPtr shorter = Rows({ { 0, 0.5 } });
    shorter->SetChannelName("Kurz");
    shorter->SetUnit("kW");
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    ASSERT_TRUE(DynamicGridModel().WriteCsv(buffer, { first, shorter }));
    EXPECT_EQ(buffer.data(),
        "\"Zeitstempel\",\"Wert\",\"Kurz (kW)\"\r\n"
        "0999-01-01 00:00:00,1,0.5\r\n"
        "0012-03-04 05:06:07,2,\r\n"
        "2024-12-31 23:59:59,3,\r\n");
}

} // namespace
