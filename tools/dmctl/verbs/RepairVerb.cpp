#include <algorithm>
#include <vector>

#include "Names.h"
#include "repair/Repair.h"
#include "repair/RepairReport.h"
#include "Session.h"
#include "ui/Output.h"
#include "verbs/Verb.h"

namespace td::dmctl {

namespace {

RepairRequest requestOf(const Options& options) {
    RepairRequest request;
    if (options.has("--crc") && options.has("--salvage"))
        throw UsageError("--crc and --salvage are two ways; choose one");
    request.mode = options.has("--crc")       ? RepairMode::Checksum
                   : options.has("--salvage") ? RepairMode::Salvage
                                              : RepairMode::Newest;
    request.copy = copyNamed(options.value("--copy", copyName(Copy::Current)));
    request.dryRun = options.has("--dry-run");
    if (!options.has("--from"))
        return request;
    if (request.mode != RepairMode::Newest)
        throw UsageError("--from names the copy to take, which neither --crc nor --salvage does");
    request.from = copyNamed(options.value("--from"));
    if (request.from == request.copy)
        throw UsageError("a copy cannot be repaired from itself");
    return request;
}

std::vector<RepairOutcome> repairAll(const Session& session, const RepairRequest& request,
                                     const std::vector<const CategoryLayout*>& layouts) {
    std::vector<RepairOutcome> outcomes;
    outcomes.reserve(layouts.size());
    Progress progress("repairing", static_cast<int>(layouts.size()));
    for (const CategoryLayout* layout : layouts) {
        outcomes.push_back(repairCopy(session, request, *layout));
        progress.step();
    }
    return outcomes;
}

} // namespace

int runRepair(const Options& options, const Words& words) {
    const std::vector<const CategoryLayout*> layouts = categoriesNamed(words);
    const RepairRequest request = requestOf(options);
    Options access = options;
    access.writes = !request.dryRun;
    const Session session(access);
    const std::vector<RepairOutcome> outcomes = repairAll(session, request, layouts);
    if (options.json)
        printJson(repairsJson(outcomes, request));
    else
        printRepairs(outcomes, request, options.verbose);
    const bool fine = std::all_of(outcomes.begin(), outcomes.end(),
                                  [](const RepairOutcome& outcome) { return outcome.failure.empty(); });
    return fine ? EXIT_FINE : EXIT_WRONG;
}

} // namespace td::dmctl
