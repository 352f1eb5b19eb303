// first-boot: what a television does at its first start.
#include <algorithm>
#include <string>
#include <vector>

#include <fmt/core.h>

#include "fileOperator/OperatorFactory.h"
#include "inspect/FileInspection.h"
#include "Names.h"
#include "Session.h"
#include "ui/Output.h"
#include "verbs/Verb.h"

namespace td::dmctl {

namespace {

/// A category before and after the load.
struct Load {
    const CategoryLayout* layout = nullptr;
    std::string before[std::size(COPIES)]; ///< the bytes of the copies; empty: there is none
    bool loaded = false;
    std::string source;
};

std::string bytesOf(const Session& session, const CategoryLayout& layout, Copy copy) {
    std::string bytes;
    std::string reason;
    return readFile(session.path(layout, copy), bytes, reason) ? bytes : "";
}

bool hasAnyCurrentCopy(const Session& session) {
    const std::vector<const CategoryLayout*> layouts = allLayouts();
    return std::any_of(layouts.begin(), layouts.end(),
                       [&](const CategoryLayout* layout) { return session.exists(*layout, Copy::Current); });
}

std::vector<Load> readCopies(const Session& session) {
    std::vector<Load> loads;
    Progress progress("reading", static_cast<int>(allLayouts().size()));
    for (const CategoryLayout* layout : allLayouts()) {
        Load& load = loads.emplace_back();
        load.layout = layout;
        for (const Copy copy : COPIES)
            load.before[static_cast<int>(copy)] = bytesOf(session, *layout, copy);
        progress.step();
    }
    return loads;
}

/// A load leaves a current copy alone, replaces it by another copy, or merges one of another version.
std::string sourceOf(const Session& session, const Load& load) {
    const std::string after = bytesOf(session, *load.layout, Copy::Current);
    const std::string version = inspectFile(*load.layout, load.before[0]).version;
    if (after != load.before[0] && !version.empty() && version != load.layout->version)
        return fmt::format("current, updated from {}", version);
    for (const Copy copy : COPIES) {
        if (after == load.before[static_cast<int>(copy)])
            return copyName(copy);
    }
    return "several copies";
}

void loadAll(Session& session, std::vector<Load>& loads) {
    session.start();
    session.adoptTvType(*layoutOf(PICTURE_GLOBAL));
    session.manager().loadAllData();
    for (Load& load : loads) {
        const CategoryLayout& layout = *load.layout;
        std::vector<_Argument_t> first{{layout.fields.front().argumentName(), 0}};
        load.loaded = session.manager().loadData(layout.category, std::vector<int>(layout.dimensions.size()), first);
    }
    session.close();
    for (Load& load : loads)
        load.source = load.loaded ? sourceOf(session, load) : "";
}

void print(const Session& session, const std::vector<Load>& loads, bool copied) {
    if (copied)
        fmt::print("No current copies yet: made them, and the backups, from {}.\n", session.directory(Copy::Factory));
    Rows rows{headings({"NAME", "FILE", "LOADED FROM"})};
    for (const Load& load : loads)
        rows.push_back({categoryName(*load.layout), load.layout->file,
                        load.loaded ? Cell(load.source) : Cell("NOT LOADED", Style::Bad)});
    printColumns(rows);
}

Json asJson(const Session& session, const std::vector<Load>& loads, bool copied) {
    Json list = Json::array();
    for (const Load& load : loads)
        list.push_back({{"category", categoryName(*load.layout)},
                        {"file", load.layout->file},
                        {"loadedFrom", load.loaded ? Json(load.source) : Json()}});
    return {{"factory", session.directory(Copy::Factory)}, {"copiedFromFactory", copied}, {"categories", list}};
}

} // namespace

int runFirstBoot(const Options& options, const Words& words) {
    if (!words.empty())
        throw UsageError(fmt::format("it loads all categories, so \"{}\" is not understood", words.front()));
    Session session(options);
    session.makeDirectories({Copy::Current, Copy::Backup});
    const bool copied = !hasAnyCurrentCopy(session);
    if (copied && !session.manager().initCurrentFromManufactory())
        throw Failure(fmt::format("the factory files in {} could not be copied", session.directory(Copy::Factory)));
    std::vector<Load> loads = readCopies(session);
    loadAll(session, loads);
    if (options.json)
        printJson(asJson(session, loads, copied));
    else
        print(session, loads, copied);
    const auto failed = std::count_if(loads.begin(), loads.end(), [](const Load& load) { return !load.loaded; });
    if (failed > 0)
        throw Failure(fmt::format("{} could not be loaded; run `dmctl {}verify` to see what is wrong",
                                  counted(static_cast<std::size_t>(failed), "file"), session.rootOption()));
    return EXIT_FINE;
}

} // namespace td::dmctl
