/// How the program was called; main() sets it before the tests run.
#pragma once

#include <cstdint>

namespace td::test {

struct Options {
    int seconds = 5;        ///< --seconds=NUMBER
    std::uint64_t seed = 1; ///< --seed=NUMBER
};

Options& options();

} // namespace td::test
