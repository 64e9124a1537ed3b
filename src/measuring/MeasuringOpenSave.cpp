// SPDX-License-Identifier: GPL-3.0-or-later
// The view as its file holds it, and opening and saving it.

#include "Measuring.h"

#include "Calendar.h"
#include "ChannelTree.h"
#include "ChartAdapter.h"
#include "ChartAnnotation.h"
#include "CurveColors.h"
#include "Formatter.h"
#include "Logging.h"
#include "MeasuringHost.h"
#include "Numeric.h"
#include "ResStrings.h"
#include "Settings.h"
#include "SoranoFileHandler.h"
#include "TimeValueTransformator.h"
#include "ViewPeriods.h"
#include "ctl_DynamicGrid.h"
#include "ctl_NavBar.h"
#include "ctl_VertNavBar.h"
#include "frm_GraphicView.h"

#include <QCoreApplication>
#include <QTreeWidget>

#include <algorithm>
#include <cmath>

// --- file

MeasuringFile Measuring::ToFile() const
{
    MeasuringFile file;
    file.name = m_sName;
    file.remark = m_sRemark;
    file.autoScale = m_bAutoScale;
    file.intervalUnit = m_sIntervalUnit;
    file.intervalCount = m_lIntervalCount;
    file.showStatistics = ShowStatistics();
    file.viewMode = ViewMode();
    file.zoomHistory = m_sZoomHistory;
    file.startDate = StartDate();
    file.endDate = EndDate();
    file.annotationVisible = ShowAnnotation();
    file.annotationPosition = AnnotationPosition();
    for (const ModuleBoxPtr& box : m_cDataModules)
        file.modules << box->Address();
    file.graph = m_cGraphProperties;
    file.address = m_cAddress;
    file.hasCurves = true;
    for (const auto& curve : m_cCurves) {
        MeasuringFile::Curve entry;
        entry.name = curve->Name();
        entry.unit = curve->Unit();
        entry.visible = curve->Visible();
        entry.yAxis = curve->YAxis();
        for (const CurveChannel& channel : curve->Channels())
            entry.channels << channel.key;
        const SeriesProperties& look = curve->Properties();
        entry.series = MeasuringFile::Series { look.Gallery, look.Color, look.LineWidth, look.LineStyle, look.Marker };
        for (const auto& statistic : curve->Statistics())
            if (statistic->Used())
                entry.statistics.append({ statistic->ID(), statistic->Visible() });
        for (const auto& cursor : curve->Cursors())
            entry.cursors.append({ cursor->DateTime(), cursor->CustomText(), cursor->BoxPosition(),
                cursor->CursorStatistic().Visible() });
        file.curves.append(entry);
    }
    return file;
}

void Measuring::FromFile(const MeasuringFile& file)
{
    SetName(file.name);
    SetRemark(file.remark);
    m_bAutoScale = file.autoScale;
    SetIntervalUnit(file.intervalUnit);
    SetIntervalCount(file.intervalCount);
    SetShowStatistics(file.showStatistics);
    SetViewMode(file.viewMode);
    m_sZoomHistory = file.zoomHistory;
    SetStartDate(file.startDate);
    SetEndDate(file.endDate);
    SetAnnotationPosition(file.annotationPosition);
    SetShowAnnotation(file.annotationVisible);
    for (const QString& address : file.modules) {
        if (address.isEmpty())
            continue;
        const ModuleBoxPtr box = m_cHost.DataModules().Item(address);
        if (!box)
            continue;
        if (box->GetChannelList(nullptr) == 1) {
            m_cDataModules.Add(box);
        } else {
            WriteLog(QStringLiteral("module-init fault"),
                QStringLiteral("Could not initialize channel-liste for the module ") + box->Name()
                    + QStringLiteral(" (") + box->Address()
                    + QStringLiteral("). The module will not be available for the measuring ") + m_sName
                    + QLatin1Char('.'),
                QStringLiteral("SoranoFileHandler.AddModule"), LogLevel::Error);
        }
    }
    m_cGraphProperties = file.graph;
    m_cAddress = file.address;
    for (const MeasuringFile::Curve& entry : file.curves) {
        if (entry.channels.isEmpty())
            continue;
        Curve* curve = nullptr;
        for (const QString& written : entry.channels) {
            const QString key
                = SoranoFileHandler::ConvertOldChannelKey(written, [this] { return m_cHost.GetNewMeasuringID(); });
            if (key != written)
                m_bChangedID = true;
            // The first channel makes the curve; the others join it as parts of its sum.
            const bool added = curve ? AddChannel(*curve, key)
                                     : (curve = AddCurve(key, false, QString(), QString(), nullptr)) != nullptr;
            if (!added)
                WriteLog(QStringLiteral("invalid channel in file"),
                    QStringLiteral("The channel ") + key + QStringLiteral(" could not be added to the measuring ")
                        + m_sName + QLatin1Char('.'),
                    QStringLiteral("SoranoFileHandler.AddChannel"), LogLevel::Error);
        }
        if (!curve)
            continue;
        if (entry.name)
            curve->SetName(*entry.name);
        if (entry.unit)
            curve->SetUnit(*entry.unit);
        curve->SetVisible(entry.visible);
        if (entry.yAxis)
            curve->SetYAxis(static_cast<qint16>(*entry.yAxis));
        if (entry.series) {
            SeriesProperties look = curve->Properties();
            look.Gallery = entry.series->gallery;
            look.Color = entry.series->color.value_or(look.Color);
            look.LineWidth = entry.series->lineWidth.value_or(look.LineWidth);
            look.LineStyle = entry.series->lineStyle;
            look.Marker = entry.series->marker;
            curve->SetProperties(look);
        }
        for (const MeasuringFile::Statistic& statistic : entry.statistics)
            if (Statistic* found = curve->FindStatistic(statistic.id)) {
                found->SetUsed(true);
                found->SetVisible(statistic.visible);
            }
        for (const MeasuringFile::Cursor& stored : entry.cursors) {
            Cursor* cursor = AddCursor(stored.dateTime, *curve);
            cursor->SetCustomText(stored.customText);
            cursor->SetBoxPosition(stored.position);
            cursor->CursorStatistic().SetVisible(stored.visible);
        }
    }
    for (const MeasuringFile::Unreadable& value : file.unreadable)
        WriteLog(QStringLiteral("unreadable value in file"),
            QStringLiteral("The element ") + value.element + QStringLiteral(" of the measuring ") + m_sName
                + QStringLiteral(" holds \"") + value.text
                + QStringLiteral("\", which can't be read; its default is used."),
            QStringLiteral("SoranoFileHandler.Load"), LogLevel::Error);
}

void Measuring::ChooseFirstWindow(bool fromCreate)
{
    ctl_NavBar& bar = *m_cGraph->nav_Navigate();
    const double first = FirstDataDate();
    const double last = LastDataDate();
    if (first == 0.0 || last == 0.0) {
        bar.SetDateFrom(Calendar::Now());
        ShowPeriod(QStringLiteral("d"), 1);
        return;
    }
    // An empty setting shows the whole data of a new view, but the first day of a view
    // opened from a file.
    QString setting = Settings::StoredValue(Settings::Id::OnNewMeasuring);
    if (setting.isEmpty() && fromCreate)
        setting = QStringLiteral("2");
    const double choice = LeadingNumber(setting);
    if (choice == 2) {
        ShowPeriod(QString(), 0);
        return;
    }
    bar.SetDateFrom(std::floor(choice == 1 ? last : first));
    ShowPeriod(QStringLiteral("d"), 1);
}

qint32 Measuring::OpenFile(const QString& path, bool hidden)
{
    if (path.isEmpty())
        return CreateFile();
    if (!m_cGraph)
        return -1;
    m_sFileName = path;
    m_cDataModules.Clear();
    m_cCurrentCurve = nullptr;
    m_cCurves.clear();
    m_cGraphProperties = GraphProperties();
    // What the file lacks keeps the values of the new view.
    MeasuringFile file = ToFile();
    bool isViewFile = false;
    if (SoranoFileHandler::Load(path, file, &isViewFile) != 0)
        return -1;
    // Another kind of file opens as an empty view.
    if (isViewFile)
        FromFile(file);
    ReloadSettings();
    ctl_NavBar& bar = *m_cGraph->nav_Navigate();
    bar.SetDateFirst(FirstDataDate());
    bar.SetDateLast(LastDataDate());
    // A temporary view gets its window from the batch run that opened it, which fetches and
    // titles its axes then.
    if (!m_bTemporary) {
        if (bar.DateFrom() != 0.0 && bar.DateTo() != 0.0)
            RefreshData(bar.DateFrom(), bar.DateTo(), nullptr, true);
        else
            ChooseFirstWindow(false);
        UpdateAxisTitles();
        AdjustAxis(ChartAxis::Y1);
        AdjustAxis(ChartAxis::Y2);
    }
    if (!hidden)
        m_cGraph->show();
    RedrawCursors();
    for (const auto& curve : m_cCurves)
        curve->UpdateStatistic(m_cGraph->trv_Statistics());
    SelectedNodeClick();
    if (m_bChangedID)
        SaveFile(QString(), false);
    SetChanged(false);
    return 0;
}

qint32 Measuring::SaveFile(const QString& path, bool keepName)
{
    qint32 result = 0;
    if (path.isEmpty()) {
        if (m_sFileName.isEmpty())
            return -1;
        result = SoranoFileHandler::Save(m_sFileName, ToFile());
    } else {
        if (path != m_sFileName && !keepName) {
            QString name = path;
            if (const qsizetype dot = name.lastIndexOf(QLatin1Char('.')); dot >= 0)
                name = name.left(dot);
            const qsizetype slash = std::max(name.lastIndexOf(QLatin1Char('\\')), name.lastIndexOf(QLatin1Char('/')));
            name = slash >= 0 ? name.mid(slash + 1) : name.mid(name.lastIndexOf(QLatin1Char(':')) + 1);
            m_sName = name;
        }
        result = SoranoFileHandler::Save(path, ToFile());
    }
    if (result == 0) {
        if (!path.isEmpty())
            m_sFileName = path;
        SetChanged(false);
    }
    return result;
}