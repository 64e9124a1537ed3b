// SPDX-License-Identifier: GPL-3.0-or-later
#include "NewMeasuringPages.h"

#include <gtest/gtest.h>

#include <ostream>
#include <vector>

using namespace NewMeasuringPages;

namespace {

struct Case
{
    int mode;
    qsizetype modules;
    bool profiles;
    std::vector<int> forward; // pages shown by Forward from page 0 to the finish page
    std::vector<int> back; // pages shown by Back from the finish page to page 0
};

void PrintTo(const Case& c, std::ostream* out)
{
    *out << "mode " << c.mode << ", " << c.modules << " module(s), " << (c.profiles ? "with" : "without")
         << " profiles";
}

class PageSequence : public ::testing::TestWithParam<Case>
{
};

TEST_P(PageSequence, ForwardAndBackShowThePagesOfTheMode)
{
    const Case& c = GetParam();
    const Situation situation { c.mode, c.modules, c.profiles };
    std::vector<int> forward { 0 };
    for (int page = 0; page < FinishPage(c.mode);) {
        const Move move = Skip(situation, page, page + 1);
        // Only a single module is taken over, and only when its page is the target.
        EXPECT_EQ(move.fillUsedModules, c.modules == 1 && page == 0) << "forward from " << page;
        page = move.target;
        forward.push_back(page);
    }
    EXPECT_EQ(forward, c.forward);

    std::vector<int> back { FinishPage(c.mode) };
    for (int page = FinishPage(c.mode); page > 0;) {
        page = Skip(situation, page, page - 1).target;
        back.push_back(page);
    }
    EXPECT_EQ(back, c.back);
}

INSTANTIATE_TEST_SUITE_P(Modes, PageSequence,
    ::testing::Values(Case { 0, 3, true, { 0, 1, 2, 3, 4, 6 }, { 6, 4, 3, 2, 1, 0 } },
        Case { 0, 3, false, { 0, 1, 3, 4, 6 }, { 6, 4, 3, 1, 0 } },
        Case { 0, 1, true, { 0, 2, 3, 4, 6 }, { 6, 4, 3, 2, 1, 0 } },
        // Back from the channels of a single module lands on its page, not on the name.
        Case { 0, 1, false, { 0, 3, 4, 6 }, { 6, 4, 3, 1, 0 } },
        Case { 1, 3, true, { 0, 1, 3, 5, 6 }, { 6, 5, 3, 1, 0 } },
        Case { 1, 1, false, { 0, 3, 5, 6 }, { 6, 5, 3, 1, 0 } },
        // Mode 2 shows a single module's page, and goes back to the profiles it skipped.
        Case { 2, 1, true, { 0, 1, 3, 5, 6, 7 }, { 7, 6, 5, 3, 2, 1, 0 } },
        Case { 2, 3, false, { 0, 1, 3, 5, 6, 7 }, { 7, 6, 5, 3, 1, 0 } }));

TEST(PageRules, BackToASingleModulesPageTakesItOver)
{
    EXPECT_TRUE(Skip({ 0, 1, false }, 3, 2).fillUsedModules);
    EXPECT_FALSE(Skip({ 0, 2, false }, 3, 2).fillUsedModules);
}

TEST(PageRules, IndizesStringHasABarFirstAndAfterEveryId)
{
    EXPECT_EQ(IndizesString({}), "|");
    EXPECT_EQ(IndizesString({ "1", "12" }), "|1|12|");
    EXPECT_TRUE(IndizesContains("|1|12|", "12"));
    EXPECT_FALSE(IndizesContains("|12|", "1"));
    EXPECT_FALSE(IndizesContains("", "1"));
}

} // namespace
