/// The command line of a test program that has options of its own besides GoogleTest's.
#pragma once

#include <cstdio>
#include <functional>
#include <string>

#include <gtest/gtest.h>

namespace td::test {

/// Hands "--name=value" and "--name" (with an empty value) to `take`, which says whether it knows the name, and the
/// rest to GoogleTest. False, with a line on stderr, when nobody knows an option.
inline bool readCommandLine(int argc, char** argv,
                            const std::function<bool(const std::string& name, const char* value)>& take) {
    // First, as they decide which tests there are.
    int left = 1;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        const std::size_t equals = argument.find('=');
        if (!take(argument.substr(0, equals), equals == std::string::npos ? "" : argv[i] + equals + 1))
            argv[left++] = argv[i];
    }
    argv[left] = nullptr;
    testing::InitGoogleTest(&left, argv);
    if (left == 1)
        return true;
    std::fprintf(stderr, "unknown option %s\n", argv[1]);
    return false;
}

} // namespace td::test
