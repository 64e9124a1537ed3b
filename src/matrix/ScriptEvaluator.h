// SPDX-License-Identifier: GPL-3.0-or-later
// Evaluates a parsed script on named blocks, streaming the rows in small chunks.
#pragma once

#include "MatrixVariables.h"
#include "ScriptParser.h"

namespace MatrixScript {

// Evaluates the expression and writes the result into the target variable: an existing block
// is overwritten in place, otherwise a new block is added under the target name.
// Throws ScriptError.
void Evaluate(const Program& program, MatrixVariables& variables);

} // namespace MatrixScript
