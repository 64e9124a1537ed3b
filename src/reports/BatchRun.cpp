// SPDX-License-Identifier: GPL-3.0-or-later
#include "BatchRun.h"

#include "BatchHost.h"
#include "Calendar.h"
#include "ChartAdapter.h"
#include "Curve.h"
#include "Measuring.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <cmath>

WindowlessTemplates::WindowlessTemplates(MeasuringHost& host)
    : m_cHost(host)
{ }

WindowlessTemplates::~WindowlessTemplates() = default;

Measuring* WindowlessTemplates::OpenTemplate(const QString& path)
{
    if (!QFileInfo(path).isFile())
        return nullptr;
    auto view = std::make_unique<Measuring>(m_cHost);
    if (view->Init() != 0)
        return nullptr;
    view->SetTemporary(true);
    if (view->OpenFile(path, true) != 0)
        return nullptr;
    return m_cViews.emplace_back(std::move(view)).get();
}

void WindowlessTemplates::CloseTemplate(Measuring& measuring)
{
    std::erase_if(m_cViews, [&](const auto& view) { return view.get() == &measuring; });
}

namespace BatchRun {

namespace {

void Step(BatchProgress* progress)
{
    if (progress)
        progress->UpdateStatus();
}

void SetStep(BatchProgress* progress, double step)
{
    if (progress)
        progress->SetStep(static_cast<float>(step));
}

void SetAddress(Measuring& view, const std::array<QString, 5>& customer)
{
    MeasuringFile::Address& address = view.CustomerAddress();
    address.Name = customer[0];
    address.FirstName = customer[1];
    address.Street = customer[2];
    address.Place = customer[3];
    address.Memo = customer[4];
}

void SetPeriod(Measuring& view, double start, double end, const BatchRunSettings& settings)
{
    view.SetStartDate(start);
    view.SetEndDate(end);
    view.SetIntervalUnit(settings.intervalUnit);
    view.SetIntervalCount(settings.intervalUnit.isEmpty() ? 1 : settings.intervalCount);
}

// "<unit> (<name>)" of a curve, as the serial pages title their axes.
QString AxisTitle(const Curve& curve)
{
    return curve.Unit() + QStringLiteral(" (") + curve.Name() + QLatin1Char(')');
}

// The serial report's channels: the first three, each of the logger of the first.
QStringList SerialChannels(const QStringList& channels)
{
    QStringList keys;
    const QString logger = LoggerOf(channels.value(0));
    for (const QString& key : channels.mid(0, 3))
        keys << WithLogger(key, logger);
    return keys;
}

// Binds the template's curves to the channels in order; false when one is not offered.
bool BindSerial(Measuring& view, const QStringList& keys)
{
    if (qsizetype(view.Curves().size()) < keys.size())
        return false;
    for (qsizetype i = 0; i < keys.size(); ++i)
        if (!view.BindCurve(*view.Curves()[size_t(i)], keys[i]))
            return false;
    // Curves beyond the channels have nothing to show on this page.
    while (qsizetype(view.Curves().size()) > keys.size())
        view.RemoveCurve(view.Curves().back()->ID());
    return true;
}

} // namespace

QString LoggerOf(const QString& channelKey)
{
    const QString id = channelKey.section(QLatin1Char('$'), 1);
    return id.contains(QLatin1Char('#')) ? id.section(QLatin1Char('#'), 0, 0) : QString();
}

QString WithLogger(const QString& channelKey, const QString& logger)
{
    const QString address = channelKey.section(QLatin1Char('$'), 0, 0);
    const QString id = channelKey.section(QLatin1Char('$'), 1);
    return address + QLatin1Char('$') + logger + QLatin1Char('#') + id.section(QLatin1Char('#'), 1);
}

std::vector<Measuring*> PrepareBatch(BatchRunHost& host, const std::vector<BatchTemplate>& templates,
    const BatchRunSettings& settings, BatchProgress* progress)
{
    std::vector<Measuring*> views;
    if (settings.channels.isEmpty() || templates.empty())
        return views;
    const QString logger = LoggerOf(settings.channels.front());
    SetStep(progress, std::trunc(100.0 / (2.0 * double(templates.size()))));

    for (const BatchTemplate& entry : templates) {
        Step(progress);
        Measuring* view = host.OpenTemplate(entry.path);
        if (!view)
            continue;
        view->SetTemporary(true);
        view->SetName(entry.name);
        views.push_back(view);
    }
    // A template left out moves the bar on as its view would have.
    for (size_t missing = views.size(); missing < templates.size(); ++missing)
        Step(progress);
    for (Measuring* view : views) {
        Step(progress);
        view->RemoveCursors(true);
        if (!logger.isEmpty())
            view->ExchangeLogger(logger);
        SetPeriod(*view, settings.start, settings.end, settings);
        // Before the refresh, so that a title naming the customer shows the new one.
        SetAddress(*view, settings.customer);
        view->Refresh(true);
        // What opening a view does once its data is there.
        view->UpdateAxisTitles();
        view->AdjustAxis(ChartAxis::Y1);
        view->AdjustAxis(ChartAxis::Y2);
        view->MarkExtremes(settings.minCursor, settings.maxCursor);
    }
    return views;
}

qint32 SerialPageCount(
    const BatchRunSettings& settings, const SerialSettings& serial, const QString& unit, qint32 count)
{
    const double start = settings.start;
    const double end = std::max(settings.end, settings.start);
    if (serial.perDay) {
        // Every day the period touches; a period within one day is one page.
        const double days = std::ceil(end) - std::floor(start);
        return static_cast<qint32>(std::clamp(days, 1.0, double(Calendar::MaxDays)));
    }
    const std::optional<Calendar::Unit> parsed = Calendar::ParseUnit(unit);
    if (!parsed || serial.valuesPerPage <= 0)
        return 1;
    const double steps = double(Calendar::Diff(*parsed, start, end)) / double(std::max(count, 1));
    const double pages = std::ceil(steps / double(serial.valuesPerPage));
    return static_cast<qint32>(std::clamp(pages, 1.0, double(Calendar::MaxDays)));
}

std::vector<Measuring*> PrepareSerial(BatchRunHost& host, const QString& templatePath, const BatchRunSettings& settings,
    const SerialSettings& serial, BatchProgress* progress)
{
    std::vector<Measuring*> views;
    const QStringList keys = SerialChannels(settings.channels);
    if (keys.isEmpty())
        return views;

    // The unit and count the grid takes for the channels, when pages hold a number of values.
    QString unit = settings.intervalUnit;
    qint32 count = settings.intervalUnit.isEmpty() ? 1 : settings.intervalCount;
    if (!serial.perDay) {
        Measuring* scratch = host.OpenTemplate(templatePath);
        if (!scratch)
            return views;
        scratch->SetTemporary(true);
        scratch->SetName(settings.name);
        if (BindSerial(*scratch, keys)) {
            SetPeriod(*scratch, settings.start, settings.end, settings);
            scratch->Refresh(true);
            unit = scratch->IntervalUnit();
            count = scratch->IntervalCount();
        }
        host.CloseTemplate(*scratch);
    }
    const std::optional<Calendar::Unit> pageUnit = Calendar::ParseUnit(unit);
    if (!serial.perDay && !pageUnit)
        return views;
    const qint32 pages = SerialPageCount(settings, serial, unit, count);
    SetStep(progress, 100.0 / double(pages) / 2.0);

    for (qint32 page = 0; page < pages; ++page) {
        Step(progress);
        Measuring* view = host.OpenTemplate(templatePath);
        if (!view)
            continue;
        view->SetTemporary(true);
        view->SetName(settings.name);
        view->SetShowFixedLine(serial.showFixedLine);
        view->SetFixedLineValue(serial.fixedLineValue);
        views.push_back(view);
    }

    const double periodEnd = std::max(settings.end, settings.start);
    // Day pages start at midnight of the first day; pages of values at the period's start.
    double running = serial.perDay ? std::floor(settings.start) : settings.start;
    std::vector<Measuring*> bound;
    for (Measuring* view : views) {
        Step(progress);
        view->RemoveCursors(true);
        const double pageStart = running;
        const double pageEnd = serial.perDay
            ? Calendar::Add(Calendar::Unit::Day, 1, pageStart)
            : Calendar::Add(*pageUnit, std::int64_t(count) * serial.valuesPerPage, pageStart);
        running = pageEnd;
        if (!BindSerial(*view, keys)) {
            host.CloseTemplate(*view);
            continue;
        }
        bound.push_back(view);

        const auto& curves = view->Curves();
        view->SetStartDate(pageStart);
        view->SetEndDate(pageEnd);
        view->SetIntervalUnit(settings.intervalUnit);
        view->SetIntervalCount(count);
        if (serial.gallery > 0)
            view->Graph().Gallery = serial.gallery;
        SetAddress(*view, settings.customer);
        if (serial.manualAxes)
            view->SetAutoScale(false);
        view->Refresh(true);
        // Curve 1 on the left; a further curve joins it when it has its unit and one axis is
        // wanted, else goes right. Power factors keep the axis the view gives them.
        if (!view->CosPhiView(0) && !view->CosPhiView(1)) {
            const QString firstUnit = curves.front()->Unit();
            for (size_t i = 1; i < curves.size(); ++i)
                curves[i]->SetYAxis(serial.twoAxes || curves[i]->Unit() != firstUnit ? 1 : 0);
        }
        view->UpdateAxisTitles();
        if (!serial.manualAxes) {
            view->AdjustAxis(ChartAxis::Y1);
            view->AdjustAxis(ChartAxis::Y2);
        }
        const bool rightAxis
            = std::any_of(curves.begin(), curves.end(), [](const auto& curve) { return curve->YAxis() == 1; });

        // The first page may start before the period, the last end after it.
        const double from = std::max(pageStart, settings.start);
        const double to = std::min(pageEnd, periodEnd);
        if (from > pageStart || to < pageEnd)
            view->CutToPeriod(from, to);

        if (ChartAdapter* chart = view->Chart()) {
            if (serial.manualAxes) {
                chart->SetAxisRange(ChartAxis::Y1, serial.borders[0], serial.borders[1]);
                if (rightAxis)
                    chart->SetAxisRange(ChartAxis::Y2, serial.borders[2], serial.borders[3]);
            }
            // Each axis is titled after the first curve that stands on it: a power factor
            // takes the left axis whatever its place in the list.
            QString titles[2];
            for (const auto& curve : curves) {
                const int axis = curve->YAxis() == 1 ? 1 : 0;
                if (titles[axis].isEmpty())
                    titles[axis] = AxisTitle(*curve);
            }
            chart->SetAxisTitle(ChartAxis::Y1, titles[0]);
            chart->SetAxisTitle(ChartAxis::Y2, titles[1]);
        }
        view->MarkExtremes(settings.minCursor, settings.maxCursor);
    }
    return bound;
}

QString SerialTemplate(const QString& batchFolder, qsizetype channels)
{
    const QString file = QStringLiteral("LGA_%1.mtb").arg(std::clamp<qsizetype>(channels, 1, 3));
    for (const QString& folder :
        { batchFolder, QCoreApplication::applicationDirPath() + QStringLiteral("/../share/sorano/batch") }) {
        const QFileInfo candidate(QDir(folder).filePath(file));
        if (!folder.isEmpty() && candidate.isFile())
            return candidate.absoluteFilePath();
    }
    return QString();
}

void Close(BatchRunHost& host, std::vector<Measuring*>& views)
{
    for (Measuring* view : views) {
        view->RemoveCursors(true);
        host.CloseTemplate(*view);
    }
    views.clear();
}

} // namespace BatchRun
