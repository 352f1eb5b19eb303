/// The pairs of an operation and a shape that tests go through, and what a cut may cost in them.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Operations.h"
#include "PowerCutMatrix.h"

namespace td::test {

struct Cell {
    const Operation* operation;
    const Shape* shape;
};
std::ostream& operator<<(std::ostream& stream, const Cell& cell);

std::vector<Cell> allCells();
/// Those that take failures: every operation on the smallest shape that has it.
std::vector<Cell> failureCells();
/// For the names of tests.
std::string nameOfCell(const testing::TestParamInfo<Cell>& info);

/// What the library has yet to learn before a test can pass, by the test's name and the operation; null for all that it
/// knows. Such a test is skipped, unless --awaited asks for it.
const char* awaitedFor(const std::string& test, const Operation& operation);

/// The worst that a cut while the operation runs may cost.
Loss allowedDuring(const Operation& operation);

} // namespace td::test
