/// The table of the worst losses in docs/reliability.md, which the tests of cuts of power make and hold true.
#pragma once

#include <map>
#include <string>
#include <utility>

#include "Cells.h"
#include "PowerCutMatrix.h"

namespace td::test {

/// The texts of the table by the names of operation and shape.
using LossTable = std::map<std::pair<std::string, std::string>, std::string>;

/// The table of the page that belongs to the sources; empty when there is none.
LossTable readLossTable();
/// What the table says about a cell that has no such operation.
constexpr const char* NOT_OFFERED = "–";

/// Keeps a result for writeLossTable().
void noteResult(const Cell& cell, const CellResult& result);
/// Puts the results that were kept in the place of the table in the file at `path`. False, and nothing is written, when
/// there is not one for every cell, or no table.
bool writeLossTable(const std::string& path);

} // namespace td::test
