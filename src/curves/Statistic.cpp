// SPDX-License-Identifier: GPL-3.0-or-later
#include "Statistic.h"

#include "Formatter.h"
#include "Logging.h"
#include "MatrixScriptEngine.h"
#include "Numeric.h"

#include <bit>
#include <cmath>
#include <cstdint>

namespace {

const QString Source = QStringLiteral("Statistic.Update");

// The chart's value of a hidden point; a statistic never shows it.
bool IsHiddenPoint(double value)
{
    return std::bit_cast<std::uint64_t>(value) == 0x7FE1CCF385EBC8A0ull;
}

} // namespace

QString Statistic::FormatedValue(const QString& unit, double value)
{
    QString mask = m_sFormatNumber;
    mask.replace(QLatin1Char('X'), QLatin1Char('"') + unit + QLatin1Char('"'));
    if (value == 0.0) {
        if (m_dValue == MatrixBlock::DefaultNoValue || IsHiddenPoint(m_dValue))
            m_dValue = 0.0;
        value = m_dValue;
    }
    const Formatter formatter;
    QString text = formatter.FormatNumber(value, mask);
    if (!m_sFormatDate.isEmpty() && m_dValueTime != 0.0)
        text += QLatin1Char(' ') + formatter.FormatDate(m_dValueTime, m_sFormatDate);
    return text;
}

bool Statistic::RunScript(
    const QString& script, const MatrixBlockPtr& result, const MatrixBlockPtr& data, const QString& title)
{
    MatrixScriptEngine* engine = g_cScriptEngine;
    QString error = QStringLiteral("no script engine");
    if (engine) {
        engine->SetScript(script);
        engine->Variables().Clear();
        engine->Variables().Add(result);
        engine->Variables().Add(data);
        if (engine->Execute() == 0)
            return true;
        error = engine->LastError().Description();
    }
    WriteLog(title,
        QStringLiteral("There was an error ") + error + QStringLiteral(" when executing the script '") + script
            + QStringLiteral("'."),
        Source, LogLevel::Error);
    return false;
}

qint32 Statistic::Update(const MatrixBlockPtr& data)
{
    if (!data) {
        WriteLog(QStringLiteral("invalid data-matrix"),
            QStringLiteral("There was an invalid reference to a data-matrix."), Source, LogLevel::Error);
        return StatisticStatus::NoData;
    }
    qint32 status = StatisticStatus::Ok;
    m_bStale = false;
    const MatrixBlockPtr result = MatrixBlock::Create(0, 0, QStringLiteral("RESULT"));
    data->SetName(QStringLiteral("DATA"));

    if (m_sFormulaValue.isEmpty()) {
        status = StatisticStatus::NoScript;
        m_dValue = 0.0;
    } else if (!RunScript(m_sFormulaValue, result, data, QStringLiteral("Error executing statistic script (value)."))) {
        status = StatisticStatus::ScriptFailed;
    } else {
        const double value = result->Rows() > 0 && result->Columns() > 0 ? result->At(0, 0) : result->NoValue();
        m_dValue = value == result->NoValue() ? 0.0 : value;
    }

    if (m_sFormulaTime.isEmpty()) {
        m_dValueTime = 0.0;
        return status;
    }
    if (!RunScript(m_sFormulaTime, result, data, QStringLiteral("Error executing statistic script (time).")))
        return StatisticStatus::ScriptFailed;
    const double row = result->Rows() > 0 && result->Columns() > 0 ? result->At(0, 0) : result->NoValue();
    if (row == result->NoValue()) {
        m_dValueTime = 0.0;
        return status;
    }
    m_lValueRow = ClampToInt(std::round(row));
    try {
        m_dValueTime = data->Item(m_lValueRow, 0);
    } catch (const MatrixRangeError&) {
        // A row outside the data keeps the time it had.
    }
    return status;
}

void Statistic::ReadFromRegistry(Hive hive, const QString& key, const QString& defaultFormat)
{
    RegistryKey registry;
    const QString number = registry.ReadValue(hive, key, QStringLiteral("FormatNumber"));
    m_sFormatNumber = number.isEmpty() ? defaultFormat : number;
    const QString useDate = registry.ReadValue(hive, key, QStringLiteral("UseDate"));
    if (!useDate.isEmpty() && LeadingNumber(useDate) == 0.0) {
        m_sFormatDate.clear();
        return;
    }
    const QString date = registry.ReadValue(hive, key, QStringLiteral("FormatDate"));
    m_sFormatDate = date.isEmpty() ? QStringLiteral("(dd.mm.yyyy hh:nn)") : date;
}
