#include <cstdio>
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include <dataModule/platform/DebugOutput.h>

#include "Options.h"

namespace td::test {

Options& options() {
    static Options all;
    return all;
}

namespace {

bool takeOption(const std::string& argument) {
    const auto valueOf = [&](const std::string& name, std::string& value) {
        if (argument.compare(0, name.size(), name) != 0)
            return false;
        value = argument.substr(name.size());
        return true;
    };
    std::string number;
    if (argument == "--full") {
        options().isFull = true;
        return true;
    }
    if (valueOf("--seed=", number)) {
        options().seed = std::strtoull(number.c_str(), nullptr, 10);
        return true;
    }
    return false;
}

} // namespace

} // namespace td::test

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    for (int i = 1; i < argc; ++i) {
        if (!td::test::takeOption(argv[i])) {
            std::fprintf(stderr, "unknown option %s\n", argv[i]);
            return EXIT_FAILURE;
        }
    }
    // Thousands of damaged files are warned of.
    td::DebugOutput::setSink([](td::DebugOutput::Level, const char*) {});
    return RUN_ALL_TESTS();
}
