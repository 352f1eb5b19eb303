/// What is said about repairs.
#pragma once

#include <vector>

#include "repair/Repair.h"
#include "ui/Output.h"

namespace td::dmctl {

void printRepairs(const std::vector<RepairOutcome>& outcomes, const RepairRequest& request, bool verbose);
Json repairsJson(const std::vector<RepairOutcome>& outcomes, const RepairRequest& request);

} // namespace td::dmctl
