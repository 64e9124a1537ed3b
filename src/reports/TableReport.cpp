// SPDX-License-Identifier: GPL-3.0-or-later
// The table report: a table per page with the curves as columns and their units as the first
// row, each page repeating the last two time rows of the page before.
#include "TableReport.h"

#include "BuiltInReports.h"
#include "Curve.h"
#include "DataMatrix.h"
#include "Formatter.h"
#include "MatrixBlock.h"
#include "Measuring.h"
#include "MeasuringHost.h"
#include "Numeric.h"
#include "PrintResizeTable.h"
#include "ReportDocument.h"
#include "ReportPageBuilder.h"
#include "ResStrings.h"

#include <algorithm>
#include <limits>

TableReport::TableReport()
    : ReportInterface(GetResString(461), 1)
{ }

void TableReport::Execute(Measuring* measuring, ReportDocument* document, qint32& status)
{
    BuiltInReports::Start run;
    if (!BuiltInReports::Begin(measuring, document, status, run))
        return;
    ReportPageBuilder& builder = run.builder;
    const QString& fontName = run.fontName;
    const double fontSize = run.fontSize;

    const QString title = BuiltInReports::PeriodTitle(*measuring);
    document->SetTitle(title);
    const MeasuringFile::Address& address = measuring->CustomerAddress();
    QString customer;
    if (!address.Name.isEmpty()) {
        customer = GetResString(454) + QLatin1Char(' ') + address.Name;
        if (!address.Place.isEmpty())
            customer += QStringLiteral(", ") + address.Place;
    }
    const QString foot = BuiltInReports::CompanyLine();

    MeasuringHost& host = measuring->Host();
    const QString progress = QStringLiteral("TR1");
    host.SendMessage(QStringLiteral("LOG"), GetResString(288));
    host.SendMessage(QStringLiteral("PROGRESS_START"), progress);

    const auto& curves = measuring->Curves();
    MatrixBlockPtr times;
    if (!curves.empty() && curves.front()->Result())
        times = curves.front()->Result()->DataBlock();
    const qint64 rowCount = times && times->Columns() > 0 ? times->Rows() : 0;
    const Formatter formatter;

    // A table of n rows holds the unit row and n - 1 time rows, its last one below its frame.
    // The offset moves on by n - 3, so that each page starts with the last two time rows of
    // the page before. Drawing the table fits its rows once more and takes two off, so it is
    // offered three rows beyond those left: the last page shows them all.
    qint64 offset = 0;
    while (offset < rowCount) {
        host.SendMessage(QStringLiteral("PROGRESS_UPDATE"),
            progress + QLatin1Char(';') + QString::number(double(offset + 1) / double(rowCount)));
        ReportPage* page = builder.AddPage(Orientation(), title, QString(), customer, foot, QString(), QString());
        if (!page) {
            // Another turn would ask for the same page again.
            status = -2;
            break;
        }

        PrintResizeTable table;
        table.Page = page;
        table.FontName = fontName;
        table.FontSize = fontSize;
        table.Left = float(builder.Left() * TwipsPerMm);
        table.Top = float((builder.Top() + builder.HeadHeight()) * TwipsPerMm);
        table.Width = float(builder.PageWidth() - (builder.Left() + builder.Right()) * TwipsPerMm);
        table.Height = float(builder.PageHeight() - (builder.Top() + builder.Bottom()) * TwipsPerMm
            - (builder.HeadHeight() + builder.FootHeight()) * TwipsPerMm);
        table.LabelRows = 2;
        table.LabelCols = 1;
        table.Cols = static_cast<qint32>(curves.size());
        // The table takes what fits.
        table.SetRows(static_cast<qint32>(std::min<qint64>(rowCount - offset + 3, std::numeric_limits<qint32>::max())));

        qint32 col = 1;
        for (const auto& curve : curves) {
            table.AddColLabel(curve->Name(), col);
            table.AddValue(curve->Unit(), col, 1, 1, false, false);
            ++col;
        }
        for (qint32 row = 2; row <= table.Rows(); ++row) {
            const qint64 index = offset + row - 2;
            if (index >= rowCount)
                break;
            table.AddRowLabel(formatter.GeneralDate(times->At(index, 0)), row);
            col = 0;
            for (const auto& curve : curves) {
                ++col;
                const DataMatrix* result = curve->Result().get();
                const MatrixBlock* block = result ? result->DataBlock().get() : nullptr;
                if (!block || index >= block->Rows() || block->Columns() < 2)
                    continue;
                const double value = block->At(index, 1);
                QString text;
                if (value == block->NoValue())
                    text = GetResString(369);
                else if (result->DataType() == DataMatrix::CosPhiType)
                    text = formatter.FormatNumber(FoldCosPhi(value), u"#,##0.00");
                else
                    text = formatter.FormatNumber(value, u"#,##0.00");
                table.AddValue(text, col, row, 0, false, false);
            }
        }
        table.CreateTable();
        const qint64 shown = table.Rows() - 1;
        if (shown < 1) {
            // Margins that leave no room for a single row: there is nothing to go on with.
            status = -2;
            break;
        }
        if (offset + shown >= rowCount)
            break;
        offset += std::max<qint64>(shown - 2, 1);
    }

    host.SendMessage(QStringLiteral("LOG"), QString());
    host.SendMessage(QStringLiteral("PROGRESS_END"), progress);
}
