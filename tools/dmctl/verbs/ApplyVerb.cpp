// apply: copies records to the other sources or picture modes.
#include <string>
#include <vector>

#include <fmt/core.h>

#include "Change.h"
#include "Names.h"
#include "Selection.h"
#include "Session.h"
#include "verbs/Verb.h"

namespace td::dmctl {

namespace {

/// One of several records that are copied to each other would win by chance.
void checkApart(const CategoryLayout& layout, const std::vector<Record>& records, const BulkCopy& copy) {
    std::vector<bool> reached(static_cast<std::size_t>(layout.recordCount()));
    for (const Record& record : records) {
        for (AxisSweep sweep(layout, record.data(), copy.axes); !sweep.done(); sweep.next()) {
            const auto number = static_cast<std::size_t>(layout.recordIndex(sweep.indices()));
            if (reached[number])
                throw UsageError("several of the records would go to the same places; name one of them");
            reached[number] = true;
        }
    }
}

} // namespace

int runApply(const Options& options, const Words& words) {
    const CategoryLayout& layout = categoryNamed(words.empty() ? "" : words.front());
    const bool modes = options.has("--all-modes");
    if (modes == options.has("--all-sources"))
        throw UsageError("say where to: one of --all-sources and --all-modes");
    const BulkCopy& copy = modes ? layout.applyToAllModes : layout.applyToAllSources;
    const std::vector<Record> records = recordsNamed(layout, Words(words.begin() + 1, words.end()));
    if (copy.axes == 0)
        throw Failure(fmt::format("{} does not offer to copy a record to all {}; nothing was changed",
                                  categoryName(layout), modes ? "modes" : "sources"));
    checkApart(layout, records, copy);

    Session session(options);
    session.start();
    Change change(session, layout);
    for (const Record& record : records)
        change.copyTo(record, copy, true);
    for (const Record& record : records) {
        const bool copied = modes ? session.manager().applySettingForAllMode(layout.category, record)
                                  : session.manager().applySettingForAllSources(layout.category, record);
        if (!copied)
            throw Failure("the library refused to copy the record");
    }
    change.prove();
    change.report(options);
    return EXIT_FINE;
}

} // namespace td::dmctl
