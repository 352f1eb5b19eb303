/// How the program was called; main() sets it before the tests run.
#pragma once

#include <cstdint>

namespace td::test {

struct Options {
    bool isFull = false;      ///< --full: all that the tests know instead of a sample
    std::uint64_t seed = 1;   ///< --seed=NUMBER of the random parts
    int onlyNumber = 0;       ///< --only=NUMBER: of the failures only that one; with --full as a report names it
    int kills = 0;            ///< --kills=NUMBER of processes
    bool runsAwaited = false; ///< --awaited: also the tests that cannot pass yet
    bool showsLog = false;    ///< --log: the library's log lines
};

Options& options();

} // namespace td::test
