/// The verbs of dmctl as one table: dispatch and help are made from it. To add a verb: write its run function in a file
/// of its own, declare it here and add its row in Verbs.cpp.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace td::dmctl {

/// The options that every verb takes.
struct Options {
    std::string root; ///< as given; empty: this machine's own "/"
    bool rootGiven = false;
    bool json = false;
    bool verbose = false;
};

/// The words behind the verb, options taken out.
using Words = std::vector<std::string>;

// Exit codes, documented in the help.
constexpr int EXIT_FINE = 0;
constexpr int EXIT_WRONG = 1;
constexpr int EXIT_USAGE = 2;

/// The command line is wrong, whatever the files hold. Ends dmctl with EXIT_USAGE.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};
/// The request could not be done with these files. Ends dmctl with EXIT_WRONG.
struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct Verb {
    const char* name;
    const char* arguments; ///< as the usage line shows them
    const char* purpose;   ///< one line
    const char* details;   ///< lines without indentation
    const char* examples;  ///< the same
    /// Does it and returns the exit code. Throws UsageError and Failure.
    int (*run)(const Options& options, const Words& words);
};

/// All verbs, in the order in which the help lists them.
const std::vector<Verb>& verbs();

int runInit(const Options& options, const Words& words);
int runCategories(const Options& options, const Words& words);
int runGet(const Options& options, const Words& words);
int runSet(const Options& options, const Words& words);
int runVerify(const Options& options, const Words& words);
int runDocument(const Options& options, const Words& words);

} // namespace td::dmctl
