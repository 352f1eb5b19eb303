/// How the program was called; main() sets it before the tests run.
#pragma once

#include <cstdint>
#include <string>

namespace td::test {

struct Options {
    bool isFull = false;     ///< --full: all that the tests know instead of a sample
    std::uint64_t seed = 1;  ///< --seed=NUMBER of the random parts
    std::string pageToWrite; ///< --write-page=FILE: the page of losses is made, and no test is run
    std::string storingRoot; ///< --store-in=ROOT: stores there until killed; for the test that kills
};

Options& options();

} // namespace td::test
