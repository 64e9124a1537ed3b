// SPDX-License-Identifier: GPL-3.0-or-later
// Fixture of the curve tests: private settings and log, a script engine, the C locale, and
// channels of 15-minute samples as a data module delivers them.
#pragma once

#include "Calendar.h"
#include "DataMatrix.h"
#include "LogCapture.h"
#include "MatrixScriptEngine.h"
#include "QtPrinters.h"
#include "TempSettings.h"
#include "TimeValueTransformator.h"

#include <QLocale>

#include <gtest/gtest.h>

#include <vector>

class CurveFixture : public ::testing::Test
{
protected:
    static constexpr double NoValue = MatrixBlock::DefaultNoValue;
    static constexpr double Quarter = 15.0 / 1440.0;

    void SetUp() override
    {
        QLocale::setDefault(QLocale::c());
        g_cScriptEngine = &engine;
    }
    void TearDown() override { g_cScriptEngine = nullptr; }

    // 2009-02-03 00:00, the first sample of every channel.
    static double Start() { return Calendar::FromParts(2009, 2, 3); }

    // A raw channel: one sample per quarter hour from Start().
    static DataMatrixPtr Channel(qint32 address, const QString& id, const QString& name, const QString& unit,
        const std::vector<double>& values, qint32 type = 3)
    {
        auto matrix = std::make_shared<DataMatrix>();
        matrix->SetModuleAddress(address);
        matrix->SetChannelID(id);
        matrix->SetChannelName(name);
        matrix->SetUnit(unit);
        matrix->SetDataType(type);
        auto block = MatrixBlock::Create(static_cast<qsizetype>(values.size()), 2);
        for (size_t i = 0; i < values.size(); ++i) {
            block->At(static_cast<qsizetype>(i), 0) = Start() + static_cast<double>(i) * Quarter;
            block->At(static_cast<qsizetype>(i), 1) = values[i];
        }
        matrix->SetDataBlock(block);
        return matrix;
    }

    // A quarter-hour grid of that many rows from Start().
    void InitGrid(int rows) { grid.Init(Start(), Start() + rows * Quarter, QStringLiteral("n"), 15, true); }

    TempSettings roots;
    LogCapture log { roots };
    MatrixScriptEngine engine;
    TimeValueTransformator grid;
};
