// SPDX-License-Identifier: GPL-3.0-or-later
// The script engine: runs one assignment "NAME = expression" on named blocks.
#pragma once

#include "MatrixVariables.h"

#include <QHash>
#include <QString>

#include <memory>

namespace MatrixScript {
struct Program;
}

// Description of the last failure of the engine.
class EngineError
{
public:
    const QString& Description() const { return m_sDescription; }
    void SetDescription(const QString& description) { m_sDescription = description; }

private:
    QString m_sDescription;
};

// One engine serves the whole program, strictly in turn: each user clears the variables, adds
// its own, sets the script, executes and reads the result before anything else uses it.
class MatrixScriptEngine
{
public:
    MatrixScriptEngine();
    ~MatrixScriptEngine();
    MatrixScriptEngine(const MatrixScriptEngine&) = delete;
    MatrixScriptEngine& operator=(const MatrixScriptEngine&) = delete;

    const QString& Script() const { return m_sScript; }
    void SetScript(const QString& script) { m_sScript = script; }

    MatrixVariables& Variables() { return m_cVariables; }

    // The last failure; a later success leaves it as it is.
    const EngineError& LastError() const { return m_cLastError; }

    // Runs the script: 0 on success, otherwise a status of MatrixScript::Status with the
    // description in LastError. Never throws.
    qint32 Execute();

private:
    std::shared_ptr<const MatrixScript::Program> Compiled();

    QString m_sScript;
    MatrixVariables m_cVariables;
    EngineError m_cLastError;
    // Parsed scripts by their text: the program runs the same few scripts over and over.
    QHash<QString, std::shared_ptr<const MatrixScript::Program>> m_cPrograms;
};

// The one engine of the process; empty when it could not be created at start-up.
extern MatrixScriptEngine* g_cScriptEngine;
