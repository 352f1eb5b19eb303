// A cut of power at any instant of any operation: what the next start finds (invariants 2 and 7 of
// AbstractFileOperator.h).

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "Cells.h"
#include "Options.h"
#include "PowerCutMatrix.h"
#include "ReliabilityPage.h"

namespace td::test {
namespace {

/// Distinct states after one cut: as many as take about as long in every shape.
std::size_t sampleOf(const Shape& shape, int bytes, int least, int most) {
    return static_cast<std::size_t>(std::clamp(bytes / shape.layout().contentLength(), least, most));
}

CellEffort effortFor(const Cell& cell) {
    const bool isLarge = cell.shape->isLarge();
    const Trouble trouble = cell.operation->trouble();
    CellEffort effort;
    effort.first.seed = effort.second.seed = options().seed;
    if (options().isFull) {
        effort.first.exhaustive = 8;
        // All states of a first cut; what is chosen among the others, another seed chooses otherwise.
        effort.first.mostStates = cell.shape->isSmall() ? 0 : sampleOf(*cell.shape, 40000000, 20, 300);
        effort.second.mostStates = 4;
        effort.secondEvery = isLarge ? 6 : 1;
    } else {
        effort.first.mostStates = sampleOf(*cell.shape, 1600000, 3, 16);
        effort.second.mostStates = isLarge ? 2 : 8;
        effort.secondEvery = 8;
    }
    // For each of the calls that trouble is met at.
    if (trouble == Trouble::Killed || trouble == Trouble::FailedSync)
        effort.first.mostStates = options().isFull ? 100 : 5;
    return effort;
}

class PowerCutTest : public testing::TestWithParam<Cell> {};

TEST_P(PowerCutTest, LeavesEveryRecordOldOrNew) {
    const CellResult result = runCell(*GetParam().operation, *GetParam().shape, effortFor(GetParam()));
    noteResult(GetParam(), result);
    const unsigned long long seed = options().seed;
    for (const std::string& fault : result.faults)
        ADD_FAILURE() << fault << "\nwith --seed=" << seed << (options().isFull ? " --full" : "");
    std::printf("%zu states, %zu after a second cut, with --seed=%llu; during: %s, later: %s, after: %s\n",
                result.states, result.secondStates, seed, textOf(result.during.loss), textOf(result.later.loss),
                textOf(result.after.loss));
    EXPECT_LE(result.later.loss, Loss::LastStore) << result.later;
    EXPECT_EQ(result.after.loss, Loss::Nothing) << result.after;
    if (!options().tablePage.empty())
        return;
    const LossTable table = readLossTable();
    const auto documented = table.find({GetParam().operation->name, GetParam().shape->name});
    ASSERT_NE(documented, table.end()) << "docs/reliability.md does not have this cell";
    // A sample may miss the worst.
    const Loss worst = lossOf(documented->second);
    EXPECT_LE(result.during.loss, worst) << "docs/reliability.md says less: " << result.during;
    if (options().isFull && GetParam().shape->isSmall()) {
        EXPECT_EQ(result.during.loss, worst) << "docs/reliability.md says more: " << result.during;
    }
}

INSTANTIATE_TEST_SUITE_P(Cells, PowerCutTest, testing::ValuesIn(allCells()), nameOfCell);

TEST(ReliabilityPageTest, HasEveryCellAndNoOther) {
    LossTable expected;
    for (const Operation& operation : operations()) {
        for (const Shape& shape : shapes())
            expected[{operation.name, shape.name}] = NOT_OFFERED;
    }
    LossTable table = readLossTable();
    for (const Cell& cell : allCells()) {
        const std::pair<std::string, std::string> names{cell.operation->name, cell.shape->name};
        EXPECT_NE(table[names], NOT_OFFERED) << names.first << ", " << names.second;
        expected[names] = table[names];
    }
    EXPECT_EQ(table, expected);
}

} // namespace
} // namespace td::test
