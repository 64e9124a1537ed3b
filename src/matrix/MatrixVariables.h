// SPDX-License-Identifier: GPL-3.0-or-later
// The named blocks that a script sees.
#pragma once

#include "MatrixBlock.h"

#include <QHash>
#include <QString>

class MatrixVariables
{
public:
    // Makes the block visible under name; an empty name means the block's own name. A name
    // already in use now refers to this block. Returns 0, or -1 for no block or no name.
    qint32 Add(const MatrixBlockPtr& block, const QString& name = QString());

    // Removes all variables; the blocks themselves stay alive with their contents.
    void Clear() { m_cBlocks.clear(); }

    MatrixBlockPtr Find(const QString& name) const { return m_cBlocks.value(name); }
    qsizetype Count() const { return m_cBlocks.size(); }

private:
    QHash<QString, MatrixBlockPtr> m_cBlocks;
};
