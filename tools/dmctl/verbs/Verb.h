/// The verbs of dmctl as one table: dispatch, help, man page and completion are made from it. To add a verb: write its
/// run function in a file of its own, declare it here and add its row in Verbs.cpp.
#pragma once

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace td::dmctl {

/// The options of one call.
struct Options {
    std::string root; ///< as given; empty: this machine's own "/"
    bool rootGiven = false;
    bool json = false;
    bool verbose = false;
    bool writes = false;                      ///< the verb changes files, so a root in use is refused
    bool force = false;                       ///< it is not
    std::map<std::string, std::string> given; ///< by name, with value; empty for a flag

    bool has(const char* option) const { return given.count(option) != 0; }
    /// The value of an option, or `otherwise` where it was not given.
    std::string value(const char* option, const std::string& otherwise = {}) const {
        const auto entry = given.find(option);
        return entry == given.end() ? otherwise : entry->second;
    }
};

/// The words behind the verb, options taken out.
using Words = std::vector<std::string>;

// Exit codes; exitCodes() documents them.
constexpr int EXIT_FINE = 0;
constexpr int EXIT_WRONG = 1;
constexpr int EXIT_USAGE = 2;
constexpr int EXIT_IN_USE = 3;

struct ExitCode {
    int code;
    const char* meaning;
};
const std::vector<ExitCode>& exitCodes();

/// The command line is wrong, whatever the files hold. Ends dmctl with EXIT_USAGE.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};
/// The request could not be done with these files. Ends dmctl with EXIT_WRONG.
struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};
/// A running process of the library holds the root. Nothing was changed. Ends dmctl with EXIT_IN_USE.
struct RootInUse : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct VerbOption {
    const char* name;  ///< with its dashes
    const char* value; ///< what it takes, as the help shows it; "a|b": one of these; null: it is a flag
    const char* help;  ///< one line
};

/// What the words behind a verb are.
enum class Takes {
    Other,       ///< nothing that could be completed
    Categories,  ///< any number of categories
    Record,      ///< a category and an INDEX for each of its dimensions
    Fields,      ///< the same, then fields
    Assignments, ///< the same, then FIELD=VALUE
    Export,      ///< any number of categories, then a file
    Files,       ///< files
    Choice,      ///< one of the words that the usage line shows with '|' between
};

struct Verb {
    const char* name;
    const char* arguments; ///< as the usage line shows them
    const char* purpose;   ///< one line
    const char* details;   ///< lines without indentation
    const char* examples;  ///< the same
    /// Does it and returns the exit code. Throws UsageError, Failure and RootInUse.
    int (*run)(const Options& options, const Words& words);
    Takes takes = Takes::Other;
    bool writes = false;                  ///< it changes files: a root in use is refused, and it has the option --force
    std::vector<VerbOption> options = {}; ///< its own
};

/// All verbs, in the order in which the help lists them.
const std::vector<Verb>& verbs();
/// The verb of that name, or null.
const Verb* verbNamed(const std::string& name);
/// The options that every verb takes.
const std::vector<VerbOption>& commonOptions();
/// The options that only this verb takes, --force included.
std::vector<VerbOption> optionsOf(const Verb& verb);

int runInit(const Options& options, const Words& words);
int runCategories(const Options& options, const Words& words);
int runGet(const Options& options, const Words& words);
int runSet(const Options& options, const Words& words);
int runRestore(const Options& options, const Words& words);
int runApply(const Options& options, const Words& words);
int runFactoryReset(const Options& options, const Words& words);
int runFirstBoot(const Options& options, const Words& words);
int runVerify(const Options& options, const Words& words);
int runRepair(const Options& options, const Words& words);
int runDiff(const Options& options, const Words& words);
int runExport(const Options& options, const Words& words);
int runImport(const Options& options, const Words& words);
int runInfo(const Options& options, const Words& words);
int runWatch(const Options& options, const Words& words);
int runLog(const Options& options, const Words& words);
int runStd(const Options& options, const Words& words);
int runDocument(const Options& options, const Words& words);
int runCompletion(const Options& options, const Words& words);
int runMan(const Options& options, const Words& words);

} // namespace td::dmctl
