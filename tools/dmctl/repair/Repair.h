/// Makes a damaged copy good again, and keeps the damaged one.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "FileTable.h"
#include "Session.h"

namespace td::dmctl {

/// How a copy is made good: by the newest good one, by a new checksum, or by all that can still be read.
enum class RepairMode { Newest, Checksum, Salvage };

struct RepairRequest {
    RepairMode mode = RepairMode::Newest;
    Copy copy = Copy::Current;
    std::optional<Copy> from; ///< the copy to take, whichever is newest
    bool dryRun = false;
};

/// Where the values of a salvaged file come from: copies by number, then the defaults.
constexpr std::size_t DEFAULTS = std::size(COPIES);
using FieldCounts = std::array<int, DEFAULTS + 1>;

struct Salvage {
    std::vector<int> values;
    std::vector<FieldCounts> records; ///< fields of each record by where they come from
    bool proven = false;              ///< what comes from the damaged copy is what was written
};

/// What was found and done about one copy.
struct RepairOutcome {
    const CategoryLayout* layout = nullptr;
    std::string path;
    FileTable before;
    std::string action;  ///< what was done, in words; empty: nothing
    std::string failure; ///< why the copy is still not good; empty: it is
    std::string kept;    ///< where the damaged copy is now
    std::optional<Salvage> salvage;
    bool leftAlone = false; ///< not good, but nothing that a repair should touch
};

/// Repairs one copy of one category, or says what would be done.
RepairOutcome repairCopy(const Session& session, const RepairRequest& request, const CategoryLayout& layout);

} // namespace td::dmctl
