// A cut of power at any instant of any operation: what the next start finds.

#include <cstdio>
#include <string>

#include <gtest/gtest.h>

#include "Cells.h"
#include "Options.h"

namespace td::test {
namespace {

CellEffort effortFor(const Shape& shape) {
    CellEffort effort;
    effort.first.seed = effort.second.seed = options().seed;
    if (options().isFull) {
        effort.first.mostStates = shape.isLarge() ? 400 : 0;
        effort.second.mostStates = shape.isLarge() ? 10 : 0;
        effort.secondEvery = shape.isLarge() ? 10 : 1;
    } else {
        effort.first.mostStates = shape.isLarge() ? 4 : 40;
        effort.second.mostStates = shape.isLarge() ? 2 : 8;
        effort.secondEvery = 8;
    }
    return effort;
}

class PowerCutTest : public testing::TestWithParam<Cell> {};

TEST_P(PowerCutTest, LeavesEveryRecordOldOrNew) {
    if (const char* const why = awaitedFor("Cut", *GetParam().operation))
        GTEST_SKIP() << why;
    const CellResult result = runCell(*GetParam().operation, *GetParam().shape, effortFor(*GetParam().shape));
    for (const std::string& fault : result.faults)
        ADD_FAILURE() << fault;
    std::printf("%zu states, %zu after a second cut; during: %s, after: %s\n", result.states, result.secondStates,
                textOf(result.during), textOf(result.after));
    EXPECT_LE(result.during, allowedDuring(*GetParam().operation)) << textOf(result.during);
    EXPECT_LE(result.after, Loss::Nothing) << textOf(result.after);
}

INSTANTIATE_TEST_SUITE_P(Cells, PowerCutTest, testing::ValuesIn(allCells()), nameOfCell);

} // namespace
} // namespace td::test
