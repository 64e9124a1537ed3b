// SPDX-License-Identifier: GPL-3.0-or-later
// Blocks of doubles: resizing, range errors, bulk transfer, copies and the variable set.
#include "MatrixBlock.h"
#include "MatrixVariables.h"

#include <gtest/gtest.h>

namespace {

MatrixBlockPtr Numbered(qsizetype rows, qsizetype columns)
{
    auto block = MatrixBlock::Create(rows, columns);
    for (qsizetype r = 0; r < rows; ++r)
        for (qsizetype c = 0; c < columns; ++c)
            block->SetItem(r, c, r * 10 + c);
    return block;
}

} // namespace

TEST(MatrixBlock, ResizingKeepsTheCellsInsideAndFillsNewCellsWithZero)
{
    struct Case
    {
        qsizetype rows, columns;
    };
    for (const Case target :
        { Case { 5, 3 }, Case { 2, 3 }, Case { 3, 5 }, Case { 3, 1 }, Case { 1, 6 }, Case { 0, 3 } }) {
        auto block = Numbered(3, 3);
        block->Resize(target.rows, target.columns);
        ASSERT_EQ(block->Rows(), target.rows);
        ASSERT_EQ(block->Columns(), target.columns);
        for (qsizetype r = 0; r < target.rows; ++r)
            for (qsizetype c = 0; c < target.columns; ++c)
                EXPECT_EQ(block->Item(r, c), r < 3 && c < 3 ? r * 10 + c : 0.0)
                    << target.rows << "x" << target.columns << " at " << r << "," << c;
    }
    auto block = Numbered(2, 2);
    block->SetRows(-4);
    EXPECT_EQ(block->Rows(), 0);
}

TEST(MatrixBlock, ItemAccessOutsideTheBlockRaisesARangeError)
{
    auto block = Numbered(3, 2);
    for (auto [row, column] : { std::pair<qsizetype, qsizetype> { -1, 0 }, { 3, 0 }, { 0, 2 }, { 0, -1 } }) {
        EXPECT_THROW((void)block->Item(row, column), MatrixRangeError) << row << "," << column;
        EXPECT_THROW(block->SetItem(row, column, 1.0), MatrixRangeError) << row << "," << column;
    }
    EXPECT_THROW((void)block->Column(2), MatrixRangeError);
    EXPECT_THROW((void)MatrixBlock().Item(0, 0), MatrixRangeError);
}

TEST(MatrixBlock, RowArraysArePaddedWithZeroAndCloneIsIndependent)
{
    MatrixBlock block;
    block.FromRowArray({ { 1, 2 }, { 3 }, { 5, 6, 7 } });
    EXPECT_THROW(block.SetArray(2, 2, { 1, 2, 3 }), std::invalid_argument);
    block.SetName(QStringLiteral("DATA"));
    block.SetNoValue(-999.0);
    auto copy = block.Clone();
    block.SetItem(1, 1, 42.0);
    block.SetRows(5);
    EXPECT_EQ(copy->ToRowArray(), (std::vector<std::vector<double>> { { 1, 2, 0 }, { 3, 0, 0 }, { 5, 6, 7 } }));
    EXPECT_TRUE(copy->Name() == QStringLiteral("DATA") && copy->NoValue() == -999.0);
}

TEST(MatrixVariables, NamesComeFromTheCallOrTheBlockAndClearingKeepsTheBlocks)
{
    MatrixVariables variables;
    auto named = Numbered(1, 1);
    named->SetName(QStringLiteral("OWN"));
    EXPECT_TRUE(variables.Add(named) == 0 && variables.Add(named, QStringLiteral("OTHER")) == 0);
    EXPECT_TRUE(variables.Find(QStringLiteral("OWN")) == named && variables.Find(QStringLiteral("OTHER")) == named);
    EXPECT_EQ(named->Name(), QStringLiteral("OWN"));
    EXPECT_TRUE(variables.Add(Numbered(1, 1)) == -1 && variables.Add(nullptr, QStringLiteral("X")) == -1); // no name
    EXPECT_EQ(variables.Count(), 2);
    variables.Clear();
    EXPECT_TRUE(variables.Find(QStringLiteral("OTHER")) == nullptr && named->Rows() == 1);
}
