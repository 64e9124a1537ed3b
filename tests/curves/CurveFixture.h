// SPDX-License-Identifier: GPL-3.0-or-later
// Fixture of the curve tests: private settings and log, a script engine, the C locale, and
// channels of 15-minute samples from 2009-02-03 00:00 as a data module delivers them.
#pragma once

#include "Calendar.h"
#include "Curve.h"
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

    static double Start() { return Calendar::FromParts(2009, 2, 3); }
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

    // Puts the curve on a quarter-hour grid of that many rows.
    qint32 Compute(Curve& curve, int rows)
    {
        grid.Init(Start(), Start() + rows * Quarter, QStringLiteral("n"), 15, true);
        return curve.UpdateData(Start(), Start() + 1, grid);
    }

    TempSettings roots;
    LogCapture log { roots };
    MatrixScriptEngine engine;
    TimeValueTransformator grid;
};
