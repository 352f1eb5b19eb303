#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "Options.h"
#include "ProgramOptions.h"

namespace td::test {

Options& options() {
    static Options all;
    return all;
}

namespace {

bool takeOption(const std::string& name, const char* value) {
    if (name == "--seconds")
        options().seconds = std::atoi(value);
    else if (name == "--seed")
        options().seed = std::strtoull(value, nullptr, 10);
    else
        return false;
    return true;
}

} // namespace

} // namespace td::test

int main(int argc, char** argv) {
    return td::test::readCommandLine(argc, argv, td::test::takeOption) ? RUN_ALL_TESTS() : EXIT_FAILURE;
}
