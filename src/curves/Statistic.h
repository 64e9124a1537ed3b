// SPDX-License-Identifier: GPL-3.0-or-later
// One characteristic value of a curve: a scripted scalar, the time it occurs, its format.
#pragma once

#include "MatrixBlock.h"
#include "RegistryKey.h"

#include <QString>

namespace StatisticStatus {
constexpr qint32 Ok = 0;
constexpr qint32 NoData = -1;
constexpr qint32 NoScript = -2;
constexpr qint32 ScriptFailed = -3;
} // namespace StatisticStatus

class Statistic
{
public:
    // How the statistic shows: text only, a check box and a constant line, or a cursor's value.
    enum DisplayKind { DisplayText = 0, DisplayLine = 1, DisplayCursor = 2 };

    const QString& ID() const { return m_sID; }
    void SetID(const QString& id) { m_sID = id; }
    bool Visible() const { return m_bVisible; }
    void SetVisible(bool visible) { m_bVisible = visible; }
    bool Used() const { return m_bUsed; }
    void SetUsed(bool used) { m_bUsed = used; }
    qint32 DisplayType() const { return m_lDisplayType; }
    void SetDisplayType(qint32 type) { m_lDisplayType = type; }
    // True when the value is one of the curve's own values (maximum "1", mean "2", minimum
    // "3", a cursor's), so that it is shown in the curve's measure; scatter, sum and count
    // are not.
    bool IsValueStatistic() const
    {
        return m_lDisplayType == DisplayCursor || m_sID == QLatin1String("1") || m_sID == QLatin1String("2")
            || m_sID == QLatin1String("3");
    }
    const QString& Name() const { return m_sName; }
    void SetName(const QString& name) { m_sName = name; }
    const QString& Icon() const { return m_sIcon; }
    void SetIcon(const QString& icon) { m_sIcon = icon; }
    double Value() const { return m_dValue; }
    void SetValue(double value) { m_dValue = value; }
    // 0 when no time is attached.
    double ValueTime() const { return m_dValueTime; }
    void SetValueTime(double time) { m_dValueTime = time; }
    qint32 ValueRow() const { return m_lValueRow; }
    void SetValueRow(qint32 row) { m_lValueRow = row; }

    // The value in the number format with every "X" replaced by the quoted unit, and the time
    // behind it when a date format is set. A value of 0 stands for the stored Value.
    QString FormatedValue(const QString& unit, double value = 0.0);

    const QString& FormulaValue() const { return m_sFormulaValue; }
    void SetFormulaValue(const QString& script) { m_sFormulaValue = script; }
    // Empty when the statistic has no time.
    const QString& FormulaTime() const { return m_sFormulaTime; }
    void SetFormulaTime(const QString& script) { m_sFormulaTime = script; }
    // Index of the statistic's constant line in the chart, -1 for none yet.
    qint32 ConstantLine() const { return m_lConstantLine; }
    void SetConstantLine(qint32 index) { m_lConstantLine = index; }

    // Runs the value script, then the time script, over data (column 0 time, column 1 values)
    // on the shared script engine. Returns a StatisticStatus.
    qint32 Update(const MatrixBlockPtr& data);
    // The data changed and Update hasn't run on it yet.
    bool Stale() const { return m_bStale; }
    void MarkStale() { m_bStale = true; }

    // Reads FormatNumber, UseDate and FormatDate from the key.
    void ReadFromRegistry(Hive hive, const QString& key, const QString& defaultFormat);

    const QString& NumberFormat() const { return m_sFormatNumber; }
    void SetNumberFormat(const QString& format) { m_sFormatNumber = format; }
    // Empty when no date is shown.
    const QString& DateFormat() const { return m_sFormatDate; }
    void SetDateFormat(const QString& format) { m_sFormatDate = format; }

private:
    bool m_bStale = false;
    bool RunScript(
        const QString& script, const MatrixBlockPtr& result, const MatrixBlockPtr& data, const QString& title);

    QString m_sID;
    bool m_bVisible = false;
    bool m_bUsed = false;
    qint32 m_lDisplayType = DisplayText;
    QString m_sName;
    QString m_sIcon;
    double m_dValue = 0.0;
    double m_dValueTime = 0.0;
    qint32 m_lValueRow = 0;
    QString m_sFormulaValue;
    QString m_sFormulaTime;
    qint32 m_lConstantLine = -1;
    QString m_sFormatNumber;
    QString m_sFormatDate;
};
