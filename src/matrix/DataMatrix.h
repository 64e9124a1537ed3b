// SPDX-License-Identifier: GPL-3.0-or-later
// One channel as a data module delivers it, or one curve's result, with its metadata.
#pragma once

#include "MatrixBlock.h"

#include <QString>

#include <memory>

class DataMatrix
{
public:
    // The one kind of channel the program tells apart: a power factor, stored folded.
    static constexpr qint32 CosPhiType = 8;

    // Width of the channel's grid column as decimal text; written by the table, never read back.
    const QString& DisplayWidth() const { return m_sDisplayWidth; }
    void SetDisplayWidth(const QString& width) { m_sDisplayWidth = width; }

    qint32 DataType() const { return m_lDataType; }
    void SetDataType(qint32 type) { m_lDataType = type; }

    // Numeric address of the owning module; 0 on a curve result.
    qint32 ModuleAddress() const { return m_lModuleAddress; }
    void SetModuleAddress(qint32 address) { m_lModuleAddress = address; }

    // May hold a "#": the logger before it, the channel number behind it.
    const QString& ChannelID() const { return m_sChannelID; }
    void SetChannelID(const QString& id) { m_sChannelID = id; }

    const QString& ChannelName() const { return m_sChannelName; }
    void SetChannelName(const QString& name) { m_sChannelName = name; }

    const QString& Unit() const { return m_sUnit; }
    void SetUnit(const QString& unit) { m_sUnit = unit; }

    // Nothing until data arrived.
    const MatrixBlockPtr& DataBlock() const { return m_cDataBlock; }
    void SetDataBlock(MatrixBlockPtr block) { m_cDataBlock = std::move(block); }

private:
    QString m_sDisplayWidth;
    qint32 m_lDataType = 0;
    qint32 m_lModuleAddress = 0;
    QString m_sChannelID;
    QString m_sChannelName;
    QString m_sUnit;
    MatrixBlockPtr m_cDataBlock;
};

using DataMatrixPtr = std::shared_ptr<DataMatrix>;
