#include <cstdio>
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "Options.h"

namespace td::test {

Options& options() {
    static Options all;
    return all;
}

namespace {

bool takeOption(const std::string& argument) {
    const std::size_t value = argument.find('=') + 1;
    if (argument.rfind("--seconds=", 0) == 0)
        options().seconds = std::atoi(argument.c_str() + value);
    else if (argument.rfind("--seed=", 0) == 0)
        options().seed = std::strtoull(argument.c_str() + value, nullptr, 10);
    else
        return false;
    return true;
}

} // namespace

} // namespace td::test

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    for (int i = 1; i < argc; ++i) {
        if (!td::test::takeOption(argv[i])) {
            std::fprintf(stderr, "unknown option %s; there are --seconds=NUMBER and --seed=NUMBER\n", argv[i]);
            return EXIT_FAILURE;
        }
    }
    return RUN_ALL_TESTS();
}
