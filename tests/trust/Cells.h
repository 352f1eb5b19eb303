/// The pairs of an operation and a shape that tests go through.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Operations.h"

namespace td::test {

struct Cell {
    const Operation* operation;
    const Shape* shape;
};
std::ostream& operator<<(std::ostream& stream, const Cell& cell);

std::vector<Cell> allCells();
/// Those whose operations meet failures: every operation without trouble of its own on one shape, a small one if it has
/// any; with --full all.
std::vector<Cell> failureCells();
/// For the names of tests.
std::string nameOfCell(const testing::TestParamInfo<Cell>& info);

} // namespace td::test
