/// How the program was called; main() sets it before the tests run.
#pragma once

#include <cstdint>
#include <string>

namespace td::test {

struct Options {
    bool isFull = false;    ///< --full: all that the tests know instead of a sample
    std::uint64_t seed = 1; ///< --seed=NUMBER of the random parts
    int onlyNumber = 0;     ///< --only=NUMBER: of the failures only that one; with --full as a report names it
    int kills = 0;          ///< --kills=NUMBER of processes
    bool showsLog = false;  ///< --log: the library's log lines
    std::string tablePage;  ///< --write-table=FILE: the page whose table of losses is to be made anew
};

Options& options();

} // namespace td::test
