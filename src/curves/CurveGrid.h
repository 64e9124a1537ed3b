// SPDX-License-Identifier: GPL-3.0-or-later
// The table that shows curve results, as a curve sees it.
#pragma once

#include "DataMatrix.h"

#include <QString>

class CurveGrid
{
public:
    virtual ~CurveGrid() = default;
    // Shows the matrix as a column under the key; a key already shown takes the new matrix.
    virtual void AddMatrix(const DataMatrixPtr& matrix, const QString& key) = 0;
    virtual void RemoveMatrix(const QString& key) = 0;
    virtual void Update() = 0;
};
