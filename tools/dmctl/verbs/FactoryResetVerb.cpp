// factory-reset: all current and backup copies anew from the factory copies.
#include <iostream>
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

/// The categories whose factory copy could not stand in for the others.
std::vector<std::string> unusableFactoryCopies(const Session& session) {
    std::vector<std::string> names;
    Progress progress("checking", static_cast<int>(allLayouts().size()));
    for (const CategoryLayout* layout : allLayouts()) {
        std::string bytes;
        std::string reason;
        if (!readFile(session.path(*layout, Copy::Factory), bytes, reason) || !inspectFile(*layout, bytes).isGood())
            names.push_back(categoryName(*layout));
        progress.step();
    }
    return names;
}

bool sameBytes(const Session& session, const CategoryLayout& layout, Copy one, Copy other) {
    std::string bytes;
    std::string otherBytes;
    std::string reason;
    return readFile(session.path(layout, one), bytes, reason) &&
           readFile(session.path(layout, other), otherBytes, reason) && bytes == otherBytes;
}

void ask(const Options& options, const Session& session) {
    if (options.has("--yes"))
        return;
    if (!terminal::canAsk())
        throw UsageError("it asks before it resets, and nobody can be asked here; --yes resets without asking");
    fmt::print(stderr, "All settings in {} go back to the factory's. Reset? [y/N] ", session.directory(Copy::Current));
    std::string answer;
    std::getline(std::cin, answer);
    if (!sameName(answer, "y") && !sameName(answer, "yes"))
        throw Failure("nothing was changed");
}

std::vector<const CategoryLayout*> changedCategories(const Session& session) {
    std::vector<const CategoryLayout*> changed;
    for (const CategoryLayout* layout : allLayouts()) {
        if (!sameBytes(session, *layout, Copy::Current, Copy::Factory))
            changed.push_back(layout);
    }
    return changed;
}

void prove(const Session& session) {
    Progress progress("comparing", static_cast<int>(allLayouts().size()));
    for (const CategoryLayout* layout : allLayouts()) {
        for (const Copy copy : {Copy::Current, Copy::Backup}) {
            if (!sameBytes(session, *layout, copy, Copy::Factory))
                throw Failure(
                    fmt::format("the {} copy {} is not the factory's", copyName(copy), session.path(*layout, copy)));
        }
        progress.step();
    }
}

} // namespace

int runFactoryReset(const Options& options, const Words& words) {
    if (!words.empty())
        throw UsageError(fmt::format("it takes all categories back, so \"{}\" is not understood; restore {} --all "
                                     "takes back one",
                                     words.front(), words.front()));
    Session session(options);
    const std::vector<std::string> unusable = unusableFactoryCopies(session);
    if (!unusable.empty())
        throw Failure(fmt::format("nothing was changed: missing or damaged is the factory copy in {} of {}",
                                  session.directory(Copy::Factory), joined(unusable)));
    ask(options, session);
    const std::vector<const CategoryLayout*> changed = changedCategories(session);
    if (!session.manager().initCurrentFromManufactory())
        throw Failure(fmt::format("the files in {} could not be copied", session.directory(Copy::Factory)));
    session.close();
    prove(session);

    std::vector<std::string> names;
    for (const CategoryLayout* layout : changed)
        names.push_back(categoryName(*layout));
    if (options.json)
        printJson({{"categories", allLayouts().size()}, {"changed", names}});
    else
        fmt::print("{} reset; {} of them had other values{}{}.\n", counted(allLayouts().size(), "file"), names.size(),
                   names.empty() ? "" : ": ", joined(names));
    return EXIT_FINE;
}

} // namespace td::dmctl
