// SPDX-License-Identifier: GPL-3.0-or-later
#include "MatrixScriptEngine.h"

#include "ScriptEvaluator.h"
#include "ScriptParser.h"

#include <new>

MatrixScriptEngine* g_cScriptEngine = nullptr;

namespace {
// Enough for every script of the open views; beyond it the cache starts afresh.
constexpr qsizetype MaxCachedPrograms = 256;
} // namespace

MatrixScriptEngine::MatrixScriptEngine() = default;
MatrixScriptEngine::~MatrixScriptEngine() = default;

std::shared_ptr<const MatrixScript::Program> MatrixScriptEngine::Compiled()
{
    if (auto program = m_cPrograms.value(m_sScript))
        return program;
    std::shared_ptr<const MatrixScript::Program> program = MatrixScript::Parse(m_sScript);
    if (m_cPrograms.size() >= MaxCachedPrograms)
        m_cPrograms.clear();
    m_cPrograms.insert(m_sScript, program);
    return program;
}

qint32 MatrixScriptEngine::Execute()
{
    using MatrixScript::Status;
    try {
        MatrixScript::Evaluate(*Compiled(), m_cVariables);
        return static_cast<qint32>(Status::Success);
    } catch (const MatrixScript::ScriptError& error) {
        m_cLastError.SetDescription(error.position() > 0
                                        ? QStringLiteral("%1 at position %2").arg(error.message()).arg(error.position())
                                        : error.message());
        return static_cast<qint32>(error.status());
    } catch (const std::bad_alloc&) {
        m_cLastError.SetDescription(QStringLiteral("not enough memory to evaluate the script"));
    } catch (const std::exception& error) {
        m_cLastError.SetDescription(QString::fromStdString(error.what()));
    } catch (...) {
        m_cLastError.SetDescription(QStringLiteral("the script failed"));
    }
    return static_cast<qint32>(Status::Resources);
}
