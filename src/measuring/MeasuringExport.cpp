// SPDX-License-Identifier: GPL-3.0-or-later
// Export of a view to files and the clipboard, and the chart picture for the reports.
#include "MeasuringExport.h"

#include "ChartAdapter.h"
#include "Logging.h"
#include "Measuring.h"
#include "ResStrings.h"
#include "SafeSave.h"
#include "Settings.h"
#include "ctl_DynamicGrid.h"
#include "frm_GraphicView.h"

#include <QBuffer>
#include <QClipboard>
#include <QCoreApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMessageBox>
#include <QMimeData>
#include <QPageLayout>
#include <QPainter>
#include <QPdfWriter>
#include <QPicture>
#include <QSvgGenerator>

#include <array>

namespace MeasuringExport {

namespace {

struct ChartFormat
{
    const char* filter;
    const char* extension;
    Format format;
};

constexpr std::array<ChartFormat, ChartFilterCount> ChartFormats { {
    { "SVG (*.svg)", "svg", Format::Svg },
    { "Windows Bitmap (*.bmp)", "bmp", Format::Bmp },
    { "PNG (*.png)", "png", Format::Png },
    { "PDF (*.pdf)", "pdf", Format::Pdf },
} };

const ChartFormat* ChartFormatAt(int filterIndex)
{
    if (filterIndex < 1 || filterIndex > ChartFilterCount)
        return nullptr;
    return &ChartFormats[size_t(filterIndex - 1)];
}

} // namespace

QString ChartFilter(int filterIndex)
{
    const ChartFormat* format = ChartFormatAt(filterIndex);
    return format ? QString::fromLatin1(format->filter) : QString();
}

QString ChartExtension(int filterIndex)
{
    const ChartFormat* format = ChartFormatAt(filterIndex);
    return format ? QString::fromLatin1(format->extension) : QString();
}

QString WithChartExtension(const QString& fileName, int filterIndex)
{
    const QString extension = ChartExtension(filterIndex);
    if (extension.isEmpty() || fileName.right(extension.size()) == extension)
        return fileName;
    return fileName + QLatin1Char('.') + extension;
}

Format FormatOf(const QString& fileName)
{
    const QString suffix = QFileInfo(fileName).suffix().toLower();
    if (suffix == QLatin1String("csv"))
        return Format::Csv;
    for (const ChartFormat& format : ChartFormats)
        if (suffix == QLatin1String(format.extension))
            return format.format;
    return Format::None;
}

} // namespace MeasuringExport

namespace {

using MeasuringExport::Format;

// A chart that is or was on screen is pictured in its own size; one that was never shown
// only has the size of an unshown widget, which says nothing about the view.
QSize PictureSize(const frm_GraphicView& view, const ChartAdapter& chart)
{
    const bool shown = view.isVisible() || view.testAttribute(Qt::WA_WState_ExplicitShowHide);
    if (shown && chart.width() > 0 && chart.height() > 0)
        return chart.size();
    return MeasuringExport::OffscreenChartSize;
}

QByteArray SvgBytes(ChartAdapter& chart, const QSize& size)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QSvgGenerator generator;
    generator.setOutputDevice(&buffer);
    generator.setSize(size);
    generator.setViewBox(QRect(QPoint(0, 0), size));
    QPainter painter;
    if (!painter.begin(&generator))
        return {};
    chart.Draw(painter, size.width(), size.height());
    painter.end();
    return buffer.data();
}

// Pictures are made in memory and written in one piece: their writers may seek, and a pipe
// or a device is written in place.
bool WriteBytes(const QString& fileName, const QByteArray& bytes)
{
    SafeSave file(fileName);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit())
        return true;
    WriteLog(QStringLiteral("export"),
        QStringLiteral("Cannot write ") + fileName + QStringLiteral(": ") + file.errorString(),
        QStringLiteral("Measuring.ExportFile"), LogLevel::Error);
    return false;
}

// The writer maps quality 0..100 onto compression levels 9..0; 80 is level 1.
constexpr int FastPngQuality = 80;

bool WriteImage(ChartAdapter& chart, const QSize& size, const QString& fileName, const char* format)
{
    const QImage image = chart.ToImage(size.width(), size.height());
    if (image.isNull())
        return false;
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    // A chart is mostly flat areas and thin lines: the fastest compression of a PNG is
    // nearly as small as the default one and takes a fraction of its time.
    const int quality = qstrcmp(format, "PNG") == 0 ? FastPngQuality : -1;
    return image.save(&buffer, format, quality) && WriteBytes(fileName, buffer.data());
}

// One page of the chart's size, so that the vectors keep the proportions of the screen.
bool WritePdf(ChartAdapter& chart, const QSize& size, const QString& fileName)
{
    constexpr int Resolution = 96;
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    bool drawn = false;
    {
        QPdfWriter writer(&buffer);
        writer.setResolution(Resolution);
        writer.setCreator(Settings::Value(Settings::Id::ApplicationName));
        const QSizeF points = QSizeF(size) * 72.0 / Resolution;
        writer.setPageLayout(QPageLayout(
            QPageSize(points, QPageSize::Point, QString(), QPageSize::ExactMatch), QPageLayout::Portrait, QMarginsF()));
        QPainter painter;
        if (painter.begin(&writer)) {
            chart.Draw(painter, size.width(), size.height());
            drawn = painter.end();
        }
    }
    return drawn && WriteBytes(fileName, buffer.data());
}

qint32 ExportChart(frm_GraphicView& view, Format format, const QString& fileName)
{
    ChartAdapter& chart = *view.chart_View();
    const QSize size = PictureSize(view, chart);
    bool written = false;
    switch (format) {
    case Format::Svg:
        written = chart.SaveSvg(fileName, size.width(), size.height());
        break;
    case Format::Bmp:
        written = WriteImage(chart, size, fileName, "BMP");
        break;
    case Format::Png:
        written = WriteImage(chart, size, fileName, "PNG");
        break;
    case Format::Pdf:
        written = WritePdf(chart, size, fileName);
        break;
    default:
        return -3;
    }
    return written ? 0 : -2;
}

// The grid holds the curves' results only where the table was shown or refreshed: it is
// filled from the curves again, so that the table can be exported from the chart view too.
void FillTable(const Measuring& measuring)
{
    ctl_DynamicGrid& grid = *measuring.Window()->grid_View();
    const bool autoUpdate = grid.AutoUpdate();
    grid.SetAutoUpdate(false);
    grid.Clear();
    for (const auto& curve : measuring.Curves())
        curve->UpdateGrid(&grid);
    grid.SetAutoUpdate(autoUpdate);
    grid.Update(true);
}

} // namespace

qint32 Measuring::ExportFile()
{
    if (!m_cGraph)
        return -2;
    const bool chart = ViewMode() == frm_GraphicView::ChartMode;
    QFileDialog dialog(
        m_cGraph->window(), Settings::Value(Settings::Id::ApplicationName) + QStringLiteral("-Messung exportieren"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    // The view's folder, else the folder the user chose last.
    const QString lastFolder = Settings::Value(Settings::Id::LastFolder);
    if (!m_sDefaultPath.isEmpty())
        dialog.setDirectory(m_sDefaultPath);
    else if (!lastFolder.isEmpty() && QFileInfo(lastFolder).isDir())
        dialog.setDirectory(lastFolder);
    QStringList filters;
    if (chart) {
        // The chosen filter decides the format; the extension is added below, not by the dialog.
        for (int index = 1; index <= MeasuringExport::ChartFilterCount; ++index)
            filters << MeasuringExport::ChartFilter(index);
    } else {
        filters << GetResString(305);
        dialog.setDefaultSuffix(QStringLiteral("csv"));
    }
    dialog.setNameFilters(filters);
    // The picture format chosen last is proposed again.
    const qsizetype lastFilter = qsizetype(Settings::Number(Settings::Id::ExportFilter));
    if (chart && lastFilter >= 1 && lastFilter <= filters.size())
        dialog.selectNameFilter(filters[lastFilter - 1]);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return -1;
    QString fileName = dialog.selectedFiles().front();
    Settings::Write(Settings::Id::LastFolder, QFileInfo(fileName).absolutePath());
    if (chart)
        Settings::Write(
            Settings::Id::ExportFilter, QString::number(filters.indexOf(dialog.selectedNameFilter()) + 1));
    qint32 result = 0;
    if (!chart) {
        FillTable(*this);
        result = m_cGraph->grid_View()->Export(fileName);
    } else {
        const int filterIndex = static_cast<int>(filters.indexOf(dialog.selectedNameFilter())) + 1;
        fileName = MeasuringExport::WithChartExtension(fileName, filterIndex);
        result = ExportChart(*m_cGraph, MeasuringExport::FormatOf(fileName), fileName);
    }
    if (result != 0)
        QMessageBox::warning(m_cGraph->window(), Settings::Value(Settings::Id::ApplicationName),
            GetResString(493).replace(QStringLiteral("%s"), QDir::toNativeSeparators(fileName)));
    return result;
}

qint32 Measuring::ExportTo(const QString& fileName)
{
    if (!m_cGraph)
        return -2;
    const Format format = MeasuringExport::FormatOf(fileName);
    if (format == Format::None) {
        WriteLog(QStringLiteral("export"),
            QStringLiteral("The file name ") + fileName
                + QStringLiteral(" names no export format (svg, bmp, png, pdf or csv)."),
            QStringLiteral("Measuring.ExportTo"), LogLevel::Error);
        return -3;
    }
    if (format == Format::Csv) {
        FillTable(*this);
        return m_cGraph->grid_View()->Export(fileName);
    }
    return ExportChart(*m_cGraph, format, fileName);
}

void Measuring::ExportClipboard(bool asText)
{
    if (!m_cGraph)
        return;
    ctl_DynamicGrid& grid = *m_cGraph->grid_View();
    if (asText) {
        FillTable(*this);
        grid.CopyToClipboard(true);
        return;
    }
    if (ViewMode() != frm_GraphicView::ChartMode) {
        grid.CopyToClipboard(false);
        return;
    }
    // A bitmap and the vectors together: the receiving program takes what it can use.
    ChartAdapter& chart = *Chart();
    const QSize size = PictureSize(*m_cGraph, chart);
    auto* data = new QMimeData;
    data->setImageData(chart.ToImage(size.width(), size.height()));
    data->setData(QStringLiteral("image/svg+xml"), SvgBytes(chart, size));
    QClipboard* clipboard = QGuiApplication::clipboard();
    clipboard->clear();
    clipboard->setMimeData(data);
}

qint32 Measuring::GetDiagrammAsPicture(QPicture& picture, qint32 mode)
{
    if (!m_cGraph)
        return -2;
    if (ViewMode() != frm_GraphicView::ChartMode)
        return -1;
    ChartAdapter& chart = *Chart();
    frm_GraphicView& view = *m_cGraph;
    const bool batch = mode > 0 && Settings::Value(Settings::Id::BatchMode) == QLatin1String("true");
    const QSize savedSize = chart.size();
    qint32 status = 0;
    try {
        if (m_bShowFixedLine) {
            if (m_lFixedLine < 0 || m_lFixedLine >= chart.ConstantLineCount())
                m_lFixedLine = chart.AddConstantLine();
            chart.SetConstantLineAxis(m_lFixedLine, ChartAxis::Y1);
            chart.SetConstantLineColor(m_lFixedLine, QColor(255, 0, 0));
            chart.SetConstantLineValue(m_lFixedLine, m_dFixedLineValue);
            chart.SetConstantLineHidden(m_lFixedLine, false);
        }
        if (mode > 0) {
            // A batch renders out of the user's sight; a view inside the main window stays put.
            if (batch && view.isWindow()) {
                view.setGeometry(static_cast<int>(Settings::Number(Settings::Id::HiderLeft)),
                    static_cast<int>(Settings::Number(Settings::Id::HiderTop)) - 1000, 1000, 1000);
                view.show();
            }
            chart.resize(mode == 1 ? QSize(700, 987) : QSize(987, 700));
            QCoreApplication::processEvents();
        }
        const QSize size = mode > 0 ? chart.size() : PictureSize(view, chart);
        picture = QPicture();
        QPainter painter;
        if (painter.begin(&picture)) {
            chart.Draw(painter, size.width(), size.height());
            painter.end();
        }
        if (picture.isNull())
            status = -2;
    } catch (...) {
        status = -2;
    }
    if (m_bShowFixedLine && m_lFixedLine >= 0)
        chart.SetConstantLineHidden(m_lFixedLine, true);
    if (mode > 0) {
        chart.resize(savedSize);
        QCoreApplication::processEvents();
        if (batch && view.isWindow())
            view.hide();
    }
    return status;
}
