// SPDX-License-Identifier: GPL-3.0-or-later
// Conversions of setting and file texts to numbers, and the cos phi fold.
#pragma once

#include <QStringView>

// True when the whole text (blanks around allowed) is one number: sign, digits, one
// decimal point ("." or the locale's separator), optional exponent.
bool IsNumeric(QStringView text);

// The value of the text's leading number, 0 when it has none: "12abc" is 12, "abc" is 0.
// Blanks are skipped, "." is the decimal point, an exponent is read.
double LeadingNumber(QStringView text);

// Folded storage of cos phi: |x| > 1 gives 1.1, x > 0 gives 1 - x, else -1 - x.
// Within -1 to 1 the fold is its own inverse.
double FoldCosPhi(double x);

// A stored (folded) power factor as measured, for display: FoldCosPhi, except that a stored 0,
// a power factor of exactly 1, shows as 1 and not as -1.
double MeasuredCosPhi(double stored);

// Whole part of x as an int, limited to the int range; NaN gives 0. For numbers read from
// settings and messages, which may hold anything.
int ClampToInt(double x);
