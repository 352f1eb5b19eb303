// std: has running processes close their files for a suspend-to-disk image, and open them again.
#include <algorithm>
#include <string>
#include <vector>

#include <fmt/core.h>

#include "common/ListenerNames.h"
#include "Names.h"
#include "RootUse.h"
#include "Session.h"
#include "ui/Output.h"
#include "ui/Signals.h"
#include "verbs/Verb.h"

namespace td::dmctl {

namespace {

constexpr int TAKEN_MILLISECONDS = 2000;

/// A listener takes one of these posts and then waits for another semaphore, so each post reaches another process.
int tellListeners(Semaphore& semaphore, std::size_t most) {
    int taken = 0;
    while (taken < static_cast<int>(std::max<std::size_t>(1, most)) && semaphore.postTaken(TAKEN_MILLISECONDS))
        ++taken;
    return taken;
}

} // namespace

int runStd(const Options& options, const Words& words) {
    const std::vector<std::string> requests{"release", "reload"};
    if (words.size() != 1)
        throw UsageError("say release or reload");
    if (std::find(requests.begin(), requests.end(), words.front()) == requests.end())
        throw UsageError(unknownWord("request", words.front(), requests, "there are"));
    const bool releases = words.front() == "release";

    const Session session(options);
    Semaphore semaphore(releases ? names::RELEASE_SEMAPHORE : names::RELOAD_SEMAPHORE);
    if (!semaphore.isOpen())
        throw Failure(!semaphore.reason().empty() ? semaphore.reason()
                      : releases                  ? "nobody listens: no process waits for a suspend image"
                                                  : "nobody listens: no process has released its files");
    const int taken = tellListeners(semaphore, rootUsers().size());
    if (taken == 0)
        throw Failure("nobody took the message, so it was taken back");
    if (options.json)
        printJson({{"request", words.front()}, {"taken", taken}});
    else
        fmt::print("{} process{} {} {} files.\n", taken, taken == 1 ? "" : "es", releases ? "releases" : "reloads",
                   taken == 1 ? "its" : "their");
    return EXIT_FINE;
}

} // namespace td::dmctl
