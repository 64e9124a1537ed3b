// SPDX-License-Identifier: GPL-3.0-or-later
// The evaluator built for processors with AVX2; chosen at run time by Evaluate.
#define SORANO_EVALUATOR_AVX2
#include "ScriptEvaluator.cpp"
