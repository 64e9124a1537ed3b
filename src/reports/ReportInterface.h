// SPDX-License-Identifier: GPL-3.0-or-later
// What every report is: something that draws pages of a view into the report document.
#pragma once

#include <QString>

#include <memory>
#include <vector>

class Measuring;
class ReportDocument;

class ReportInterface
{
public:
    virtual ~ReportInterface() = default;

    const QString& ID() const { return m_sID; }
    void SetID(const QString& id) { m_sID = id; }
    const QString& Name() const { return m_sName; }
    void SetName(const QString& name) { m_sName = name; }
    // 1 portrait, 2 landscape.
    qint32 Orientation() const { return m_lOrientation; }
    void SetOrientation(qint32 orientation) { m_lOrientation = orientation; }
    virtual bool Configurable() const { return false; }
    virtual QString Configuration() const { return QString(); }
    virtual void SetConfiguration(const QString& configuration) { Q_UNUSED(configuration); }

    // Called before each run.
    virtual bool Init() { return true; }
    // Draws the report's pages. Status 0 on success, -1 without a view or document, -2 when
    // no page could be made.
    virtual void Execute(Measuring* measuring, ReportDocument* document, qint32& status) = 0;
    virtual qint32 EditConfig() { return 0; }

protected:
    ReportInterface(const QString& name, qint32 orientation)
        : m_sName(name)
        , m_lOrientation(orientation)
    { }

private:
    QString m_sID;
    QString m_sName;
    qint32 m_lOrientation;
};

using ReportPtr = std::shared_ptr<ReportInterface>;

// The reports the program offers, in the order they were added, keyed by their ID.
class ReportCollection
{
public:
    void Add(const ReportPtr& report) { m_cItems.push_back(report); }
    void Clear() { m_cItems.clear(); }
    qsizetype Count() const { return static_cast<qsizetype>(m_cItems.size()); }
    // From 0.
    const ReportPtr& At(qsizetype index) const { return m_cItems[static_cast<std::size_t>(index)]; }
    ReportPtr Item(const QString& id) const
    {
        for (const ReportPtr& report : m_cItems)
            if (report->ID() == id)
                return report;
        return nullptr;
    }
    auto begin() const { return m_cItems.begin(); }
    auto end() const { return m_cItems.end(); }

private:
    std::vector<ReportPtr> m_cItems;
};

// The built-in reports: the chart report "REP_0", the table report "REP_1" and the full-page
// chart report "REP_2", each ID being "REP_" and the number of reports before it.
void LoadReports(ReportCollection& reports);
