// SPDX-License-Identifier: GPL-3.0-or-later
#include "MatrixVariables.h"

qint32 MatrixVariables::Add(const MatrixBlockPtr& block, const QString& name)
{
    if (!block)
        return -1;
    const QString key = name.isEmpty() ? block->Name() : name;
    if (key.isEmpty())
        return -1;
    m_cBlocks.insert(key, block);
    return 0;
}
