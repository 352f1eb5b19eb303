// init: makes what a root lacks and leaves alone what it has.
#include <cstdio>
#include <string>
#include <vector>

#include <fmt/core.h>

#include <dataModule/common/FileUtil.h>

#include "fileOperator/OperatorFactory.h"
#include "FileTable.h"
#include "inspect/FileInspection.h"
#include "Names.h"
#include "Session.h"
#include "ui/Output.h"
#include "verbs/Verb.h"

namespace td::dmctl {

namespace {

/// What became of one category.
struct Outcome {
    const CategoryLayout* layout = nullptr;
    std::vector<std::string> created;
    std::vector<std::string> present;
    std::vector<std::string> failed;
};

/// Only a copy without faults is taken over.
bool copyCurrentToBackup(const Session& session, const CategoryLayout& layout) {
    const std::string current = session.path(layout, Copy::Current);
    std::string bytes;
    std::string reason;
    return readFile(current, bytes, reason) && inspectFile(layout, bytes).isGood() &&
           FileUtil::replaceFile(current.c_str(), session.path(layout, Copy::Backup).c_str());
}

bool writeDefaults(const Session& session, const CategoryLayout& layout, Copy copy) {
    const std::string path = session.path(layout, copy);
    return putFile(path, wholeFile(layout, session.tvTypeOf(layout), defaultTable(layout)));
}

void make(Session& session, const CategoryLayout& layout, Copy copy) {
    switch (copy) {
    case Copy::Current:
        session.manager().loadData(layout.category); // takes the backup or factory copy
        break;
    case Copy::Backup:
        copyCurrentToBackup(session, layout);
        break;
    case Copy::Factory:
        writeDefaults(session, layout, copy);
        break;
    }
}

Outcome complete(Session& session, const CategoryLayout& layout) {
    Outcome outcome;
    outcome.layout = &layout;
    bool there[3] = {};
    for (const Copy copy : COPIES)
        there[static_cast<int>(copy)] = session.exists(layout, copy);
    if (!there[0] && !there[1] && !there[2])
        session.manager().initData(layout.category);
    for (const Copy copy : COPIES) {
        if (there[static_cast<int>(copy)]) {
            outcome.present.emplace_back(copyName(copy));
            continue;
        }
        if (!session.exists(layout, copy))
            make(session, layout, copy);
        (session.exists(layout, copy) ? outcome.created : outcome.failed).emplace_back(copyName(copy));
    }
    return outcome;
}

std::string describe(const Outcome& outcome) {
    std::vector<std::string> parts;
    if (!outcome.created.empty())
        parts.push_back("created " + joined(outcome.created));
    if (!outcome.present.empty())
        parts.push_back("already there: " + joined(outcome.present));
    if (!outcome.failed.empty())
        parts.push_back("NOT made: " + joined(outcome.failed));
    std::string text;
    for (const std::string& part : parts)
        text += (text.empty() ? "" : "; ") + part;
    return text;
}

void printOutcomes(const std::vector<std::string>& directories, const std::vector<Outcome>& outcomes) {
    for (const std::string& directory : directories)
        fmt::print("made {}\n", directory);
    std::vector<std::vector<std::string>> rows;
    rows.reserve(outcomes.size());
    for (const Outcome& outcome : outcomes)
        rows.push_back({categoryName(*outcome.layout), outcome.layout->file, describe(outcome)});
    printColumns(rows);
}

Json outcomesJson(const std::vector<std::string>& directories, const std::vector<Outcome>& outcomes) {
    Json categories = Json::array();
    for (const Outcome& outcome : outcomes)
        categories.push_back({{"category", categoryName(*outcome.layout)},
                              {"file", outcome.layout->file},
                              {"created", outcome.created},
                              {"present", outcome.present},
                              {"failed", outcome.failed}});
    return {{"directories", directories}, {"categories", categories}};
}

} // namespace

int runInit(const Options& options, const Words& words) {
    if (!words.empty())
        throw UsageError(fmt::format("it takes no arguments, so \"{}\" is not understood; the place is given by "
                                     "--root DIR",
                                     words.front()));
    if (!options.rootGiven)
        throw UsageError("it needs --root DIR; --root / is this machine's own");
    Session session(options, Session::Root::IsMade);
    const std::vector<std::string> directories = session.makeDirectories({Copy::Current, Copy::Backup, Copy::Factory});
    session.start();
    std::vector<Outcome> outcomes;
    bool created = !directories.empty();
    bool failed = false;
    for (Progress progress("making", static_cast<int>(allLayouts().size()));
         const CategoryLayout* layout : allLayouts()) {
        outcomes.push_back(complete(session, *layout));
        created = created || !outcomes.back().created.empty();
        failed = failed || !outcomes.back().failed.empty();
        progress.step();
    }
    session.close();

    if (options.json)
        printJson(outcomesJson(directories, outcomes));
    else
        printOutcomes(directories, outcomes);
    if (failed)
        throw Failure(fmt::format("not all files could be made; run `dmctl {}verify` to see what is wrong",
                                  session.rootOption()));
    if (!options.json)
        fmt::print("{}\n", created ? "The root is complete now." : "Nothing to do: the root is complete.");
    return EXIT_FINE;
}

} // namespace td::dmctl
