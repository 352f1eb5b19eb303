// restore: takes records back from the factory copy, or reads them again from the current one.
#include <string>
#include <vector>

#include <fmt/core.h>

#include "Change.h"
#include "FileTable.h"
#include "Names.h"
#include "Selection.h"
#include "Session.h"
#include "ui/Output.h"
#include "verbs/Verb.h"

namespace td::dmctl {

namespace {

struct RestoreRequest {
    const CategoryLayout* layout = nullptr;
    bool whole = false; ///< --all
    std::vector<Record> records;
};

/// The records for every source of those given, each once.
std::vector<Record> forAllSources(const CategoryLayout& layout, const std::vector<Record>& given) {
    std::vector<bool> reached(static_cast<std::size_t>(layout.recordCount()));
    std::vector<Record> records;
    for (const Record& record : given) {
        for (AxisSweep sweep(layout, record.data(), layout.restoreForAllSources.axes); !sweep.done(); sweep.next()) {
            const auto number = static_cast<std::size_t>(layout.recordIndex(sweep.indices()));
            if (!reached[number])
                records.emplace_back(sweep.indices(), sweep.indices() + layout.dimensionCount());
            reached[number] = true;
        }
    }
    return records;
}

RestoreRequest parse(const Options& options, const Words& words) {
    RestoreRequest request;
    request.layout = &categoryNamed(words.empty() ? "" : words.front());
    const CategoryLayout& layout = *request.layout;
    request.whole = options.has("--all");
    const Words values(words.begin() + 1, words.end());
    if (request.whole && (!values.empty() || options.has("--all-sources")))
        throw UsageError("--all means the whole category, so no INDEX and no --all-sources goes with it");
    request.records = recordsNamed(layout, request.whole ? Words(layout.dimensions.size(), "all") : values);
    if (!options.has("--all-sources"))
        return request;
    if (options.value("--from") == "current")
        throw UsageError("--all-sources takes values from the factory copy only");
    if (!offersRestoreForAllSources(layout))
        throw Failure(fmt::format("{} offers no restore for all sources; nothing was changed. Name the records: all "
                                  "stands for every source",
                                  categoryName(layout)));
    request.records = forAllSources(layout, request.records);
    return request;
}

/// Up to the first failure.
template <typename Action>
bool forEach(const std::vector<Record>& records, Action action) {
    Progress progress("restoring", static_cast<int>(records.size()));
    for (const Record& record : records) {
        if (!action(record))
            return false;
        progress.step();
    }
    return true;
}

void restoreFromFactory(Session& session, const Options& options, const RestoreRequest& request) {
    const CategoryLayout& layout = *request.layout;
    Change change(session, layout);
    const FileTable factory = goodTable(session, layout, Copy::Factory);
    for (const Record& record : request.records)
        change.put(record, factory);
    FileDataSeparateManager& manager = session.manager();
    const bool taken = request.whole ? manager.refreshDataFromManufactory(layout.category)
                                     : forEach(request.records, [&](const Record& record) {
                                           return manager.restoreSetting(layout.category, record);
                                       });
    if (!taken)
        throw Failure("the library could not take the values from the factory copy");
    change.prove();
    change.report(options);
}

/// What the library has in memory, which has to be what the file holds.
void compareMemory(Session& session, const CategoryLayout& layout, const std::vector<Record>& records) {
    const FileTable table = goodTable(session, layout, Copy::Current);
    const std::vector<std::vector<int>> rows = readRecords(session, layout, records);
    for (std::size_t i = 0; i < records.size(); ++i) {
        for (std::size_t f = 0; f < layout.fields.size(); ++f) {
            if (rows[i][f] != table.value(records[i], layout.fields[f]))
                throw Failure(fmt::format("{} of {} was not read as the file holds it", layout.fields[f].argumentName(),
                                          records[i].empty() ? categoryName(layout) : recordText(layout, records[i])));
        }
    }
}

void restoreFromCurrent(Session& session, const Options& options, const RestoreRequest& request) {
    const CategoryLayout& layout = *request.layout;
    if (!request.whole && !layout.restoresFromCurrent)
        throw Failure(fmt::format("{} does not offer to read records again from the current copy; nothing was done. "
                                  "The whole category can be: --all",
                                  categoryName(layout)));
    session.load(layout);
    FileDataSeparateManager& manager = session.manager();
    const bool taken = request.whole ? manager.refreshDataFromCurrent(layout.category)
                                     : forEach(request.records, [&](const Record& record) {
                                           return manager.restoreSettingFromCurrent(layout.category, record);
                                       });
    if (!taken)
        throw Failure("the library could not read the values from the current copy");
    // Without that offer a category may keep only a part of its records in memory.
    if (layout.restoresFromCurrent)
        compareMemory(session, layout, request.records);
    if (options.json)
        printJson({{"category", categoryName(layout)}, {"read", request.records.size()}});
    else
        fmt::print("{} read again from {}; the file is as it was.\n", counted(request.records.size(), "record"),
                   layout.file);
}

} // namespace

int runRestore(const Options& options, const Words& words) {
    const RestoreRequest request = parse(options, words);
    const bool fromCurrent = options.value("--from") == "current";
    Session session(options);
    session.start();
    if (fromCurrent)
        restoreFromCurrent(session, options, request);
    else
        restoreFromFactory(session, options, request);
    return EXIT_FINE;
}

} // namespace td::dmctl
