// dmctl: reads, changes and checks the settings files from a shell.
#include <exception>
#include <string>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include "Names.h"
#include "Verb.h"

namespace td::dmctl {
namespace {

constexpr const char* OPTIONS_HELP =
    "Options, before or behind the verb:\n"
    "  --root DIR   the directory that stands for the television's \"/\"; this machine's own without it\n"
    "  --json       answer as JSON\n"
    "  --verbose    show the library's log on standard error, progress included\n"
    "  --help       this help, or the verb's\n"
    "  --version    print the version\n";

constexpr const char* EXIT_HELP = "Exit codes:\n"
                                  "  0  all is well\n"
                                  "  1  something wrong was found, or the request failed\n"
                                  "  2  the command line is wrong\n";

std::string indented(const std::string& lines) {
    std::string result = "  ";
    for (const char c : lines) {
        result += c;
        if (c == '\n')
            result += "  ";
    }
    return result + '\n';
}

std::string usageOf(const Verb& verb) {
    const char* const separator = verb.arguments[0] == '\0' ? "" : " ";
    return fmt::format("dmctl [OPTIONS] {}{}{}", verb.name, separator, verb.arguments);
}

std::string helpOf(const Verb& verb) {
    return fmt::format("{}.\n\nUsage: {}\n\n{}\n\n{}\nExamples:\n{}\n{}", verb.purpose, usageOf(verb), verb.details,
                       OPTIONS_HELP, indented(verb.examples), EXIT_HELP);
}

std::string help() {
    std::string text = "Reads, changes and checks the settings files of a television.\n\n"
                       "Usage: dmctl [OPTIONS] VERB [ARGUMENTS]\n\nVerbs (dmctl VERB --help tells more):\n";
    for (const Verb& verb : verbs())
        text += fmt::format("  {:<12} {}\n", verb.name, verb.purpose);
    return text + "\n" + OPTIONS_HELP +
           "\nExamples:\n"
           "  dmctl --root /tmp/tv init\n"
           "  dmctl --root /tmp/tv get PICTURE_MODE HDMI1 MOVIE SDR_UHD Contrast\n"
           "  dmctl --root /tmp/tv set PICTURE_MODE HDMI1 MOVIE SDR_UHD Contrast=55\n"
           "  dmctl --root /tmp/tv verify\n\n" +
           EXIT_HELP;
}

const Verb* verbNamed(const std::string& name) {
    for (const Verb& verb : verbs()) {
        if (name == verb.name)
            return &verb;
    }
    return nullptr;
}

std::string helpFor(const CLI::App* app, const std::string&, CLI::AppFormatMode) {
    const Verb* const verb = verbNamed(app->get_name());
    return verb != nullptr ? helpOf(*verb) : help();
}

/// What the parser could not place: an unknown verb or option.
[[noreturn]] void refuseWord(const std::string& word) {
    if (word.front() == '-')
        throw UsageError(
            unknownWord("option", word, {"--root", "--json", "--verbose", "--help", "--version"}, "the options are"));
    std::vector<std::string> names;
    for (const Verb& verb : verbs())
        names.emplace_back(verb.name);
    throw UsageError(unknownWord("verb", word, names, "the verbs are"));
}

int runVerb(CLI::App& app, const Options& options, const Words& words) {
    if (!app.remaining().empty())
        refuseWord(app.remaining().front());
    const auto chosen = app.get_subcommands();
    if (chosen.empty()) {
        fmt::print(stderr, "{}", help());
        return EXIT_USAGE;
    }
    const Verb* const verb = verbNamed(chosen.front()->get_name());
    try {
        return verb->run(options, words);
    } catch (const UsageError& error) {
        fmt::print(stderr, "dmctl {}: {}\nusage: {}\n", verb->name, error.what(), usageOf(*verb));
        return EXIT_USAGE;
    } catch (const std::exception& error) {
        fmt::print(stderr, "dmctl {}: {}\n", verb->name, error.what());
        return EXIT_WRONG;
    }
}

int run(int argc, char** argv) {
    CLI::App app;
    Options options;
    Words words;
    app.formatter_fn(helpFor);
    app.set_version_flag("--version", "dmctl " DMCTL_VERSION);
    const CLI::Option* const root = app.add_option("--root", options.root)->type_name("DIR");
    app.add_flag("--json", options.json);
    app.add_flag("--verbose", options.verbose);
    // Words that name no verb and unknown options are kept, for an answer that says what would be right.
    app.allow_extras();
    app.require_subcommand(0, 1);
    for (const Verb& verb : verbs()) {
        CLI::App* const command = app.add_subcommand(verb.name, verb.purpose);
        command->fallthrough();
        command->add_option("words", words);
    }
    try {
        app.parse(argc, argv);
        options.rootGiven = root->count() > 0;
        return runVerb(app, options, words);
    } catch (const CLI::Success& asked) {
        return app.exit(asked); // --help or --version
    } catch (const CLI::ParseError& error) {
        fmt::print(stderr, "dmctl: {}\nTry dmctl --help.\n", error.what());
    } catch (const UsageError& error) {
        fmt::print(stderr, "dmctl: {}\nTry dmctl --help.\n", error.what());
    }
    return EXIT_USAGE;
}

} // namespace
} // namespace td::dmctl

int main(int argc, char** argv) {
    try {
        return td::dmctl::run(argc, argv);
    } catch (const std::exception& error) {
        fmt::print(stderr, "dmctl: {}\n", error.what());
        return td::dmctl::EXIT_WRONG;
    }
}
