// log: the switch of the library's detail log in running processes.
#include <algorithm>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include <fmt/core.h>

#include "common/ListenerNames.h"
#include "Names.h"
#include "Session.h"
#include "ui/Output.h"
#include "ui/Signals.h"
#include "verbs/Verb.h"

namespace td::dmctl {

namespace {

constexpr int LOG_TAKEN_MILLISECONDS = 5000;
/// A listener that has taken a post needs a moment until it waits again; then the next post goes to another one.
constexpr auto BETWEEN_POSTS = std::chrono::milliseconds(100);

struct Result {
    bool hasWord = false;
    bool on = false;
    int listeners = 0;
    int told = 0; ///< posts that were taken
};

/// Every listener has to be woken, and a post wakes one.
int tellListeners(Semaphore& semaphore, int listeners) {
    int taken = 0;
    for (int i = 0; i < std::max(1, listeners); ++i) {
        if (i > 0)
            std::this_thread::sleep_for(BETWEEN_POSTS);
        if (!semaphore.postTaken(LOG_TAKEN_MILLISECONDS))
            break;
        ++taken;
    }
    return taken;
}

void change(LogWord& word, bool on, Result& result) {
    Semaphore semaphore(names::LOG_SEMAPHORE);
    if (!semaphore.isOpen())
        throw Failure(semaphore.reason().empty() ? "nobody listens: no process of the library waits for the switch"
                                                 : semaphore.reason());
    word.write(on ? 1 : 0);
    result.on = on;
    result.told = tellListeners(semaphore, result.listeners);
}

void print(const Result& result, bool asked) {
    const std::string processes =
        fmt::format("{} process{}", result.listeners, result.listeners == 1 ? " listens" : "es listen");
    if (asked)
        fmt::print("The detail log is {}; {}.\n", result.on ? "on" : "off",
                   result.listeners == 0 ? "nobody listens" : processes);
    else
        fmt::print("The detail log is {} now; {}, {} took the message.\n", result.on ? "on" : "off", processes,
                   result.told);
}

} // namespace

int runLog(const Options& options, const Words& words) {
    const std::vector<std::string> requests{"on", "off", "status"};
    if (words.size() != 1)
        throw UsageError("say on, off or status");
    if (std::find(requests.begin(), requests.end(), words.front()) == requests.end())
        throw UsageError(unknownWord("request", words.front(), requests, "there are"));
    const bool asks = words.front() == "status";

    const Session session(options);
    LogWord word;
    if (!word.isAttached() && !word.reason().empty())
        throw Failure(word.reason());
    if (!word.isAttached() && !asks)
        throw Failure("nobody listens: no process of the library has made the switch");
    Result result;
    result.hasWord = word.isAttached();
    result.on = word.isAttached() && word.value() != 0;
    result.listeners = word.listeners();
    if (!asks)
        change(word, words.front() == "on", result);
    if (options.json)
        printJson({{"switch", result.hasWord ? Json(result.on ? "on" : "off") : Json()},
                   {"listeners", result.listeners},
                   {"told", asks ? Json() : Json(result.told)}});
    else
        print(result, asks);
    if (asks || result.told >= std::max(1, result.listeners))
        return EXIT_FINE;
    throw Failure(result.told == 0 ? "nobody took the message" : "not every listener took the message");
}

} // namespace td::dmctl
