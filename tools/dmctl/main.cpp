// dmctl: reads, changes and checks the settings files from a shell.
#include <algorithm>
#include <cstring>
#include <exception>
#include <map>
#include <string>

#include <CLI/CLI.hpp>
#include <fmt/core.h>

#include "Names.h"
#include "ui/Help.h"
#include "ui/Output.h"
#include "ui/Terminal.h"
#include "verbs/Verb.h"

namespace td::dmctl {
namespace {

std::string helpFor(const CLI::App* app, const std::string&, CLI::AppFormatMode) {
    const Verb* const verb = verbNamed(app->get_name());
    return verb != nullptr ? helpOf(*verb) : help();
}

/// Tells what went wrong: in words, or with --json as one line that names code and verb.
int fail(int code, const Verb* verb, const std::string& message, bool json) {
    const std::string name = verb != nullptr ? fmt::format("dmctl {}", verb->name) : "dmctl";
    if (json) {
        const Json document{{"error", message}, {"verb", verb != nullptr ? Json(verb->name) : Json()}, {"exit", code}};
        fmt::print(stderr, "{}\n", jsonText(document, -1));
        return code;
    }
    fmt::print(stderr, "{}: {}\n", name, message);
    if (code == EXIT_USAGE)
        fmt::print(stderr, "{}\n", verb != nullptr ? "usage: " + usageOf(*verb) : "Try dmctl --help.");
    return code;
}

/// What the parser could not place: an unknown verb or option.
std::string unplacedWord(const std::string& word, const Verb* verb) {
    std::vector<std::string> names;
    if (word.front() == '-') {
        std::vector<VerbOption> options = verb != nullptr ? optionsOf(*verb) : std::vector<VerbOption>();
        options.insert(options.end(), commonOptions().begin(), commonOptions().end());
        for (const VerbOption& option : options)
            names.emplace_back(option.name);
        return unknownWord("option", word, names, "the options are");
    }
    for (const Verb& other : verbs())
        names.emplace_back(other.name);
    return unknownWord("verb", word, names, "the verbs are");
}

/// An option that takes one of several words has to have one of them.
void checkChoice(const VerbOption& option, const Options& options) {
    if (option.value == nullptr || std::strchr(option.value, '|') == nullptr || !options.has(option.name))
        return;
    const std::vector<std::string> choices = CLI::detail::split(option.value, '|');
    const std::string value = options.value(option.name);
    if (std::find(choices.begin(), choices.end(), value) == choices.end())
        throw UsageError(unknownWord(fmt::format("value of {}", option.name), value, choices, "it takes"));
}

int runVerb(const Verb& verb, Options& options, const Words& words) {
    options.writes = verb.writes;
    options.force = options.has("--force");
    try {
        for (const VerbOption& option : optionsOf(verb))
            checkChoice(option, options);
        return verb.run(options, words);
    } catch (const UsageError& error) {
        return fail(EXIT_USAGE, &verb, error.what(), options.json);
    } catch (const RootInUse& error) {
        return fail(EXIT_IN_USE, &verb, error.what(), options.json);
    } catch (const std::exception& error) {
        return fail(EXIT_WRONG, &verb, error.what(), options.json);
    }
}

class CommandLine {
public:
    CommandLine() {
        m_app.formatter_fn(helpFor);
        m_app.set_version_flag("--version", "dmctl " DMCTL_VERSION);
        for (const VerbOption& option : commonOptions()) {
            if (std::strcmp(option.name, "--help") != 0 && std::strcmp(option.name, "--version") != 0)
                add(m_app, option);
        }
        // Words that name no verb and unknown options are kept, for an answer that says what would be right.
        m_app.allow_extras();
        m_app.require_subcommand(0, 1);
        for (const Verb& verb : verbs()) {
            CLI::App* const command = m_app.add_subcommand(verb.name, verb.purpose);
            command->fallthrough();
            command->add_option("words", m_words);
            for (const VerbOption& option : optionsOf(verb))
                add(*command, option);
        }
    }

    int run(int argc, char** argv) {
        const auto isJson = [](const char* word) { return std::strcmp(word, "--json") == 0; };
        m_options.json = std::any_of(argv + 1, argv + argc, isJson);
        try {
            m_app.parse(argc, argv);
        } catch (const CLI::Success& asked) {
            return m_app.exit(asked); // --help or --version
        } catch (const CLI::ParseError& error) {
            return fail(EXIT_USAGE, nullptr, error.what(), m_options.json);
        }
        const auto chosen = m_app.get_subcommands();
        const Verb* const verb = chosen.empty() ? nullptr : verbNamed(chosen.front()->get_name());
        if (!m_app.remaining(true).empty())
            return fail(EXIT_USAGE, verb, unplacedWord(m_app.remaining(true).front(), verb), m_options.json);
        if (verb == nullptr && m_options.json)
            return fail(EXIT_USAGE, verb, "name a verb", true);
        if (verb == nullptr) {
            fmt::print(stderr, "{}", help());
            return EXIT_USAGE;
        }
        m_options.rootGiven = m_options.has("--root");
        m_options.root = m_options.value("--root");
        m_options.verbose = m_options.has("--verbose");
        terminal::chooseColours(m_options.has("--color"), m_options.has("--no-color"));
        return runVerb(*verb, m_options, m_words);
    }

private:
    void add(CLI::App& app, const VerbOption& option) {
        const std::string name = option.name;
        if (option.value == nullptr) {
            app.add_flag_callback(name, [this, name] { m_options.given[name].clear(); });
            return;
        }
        app.add_option_function<std::string>(name, [this, name](const std::string& v) { m_options.given[name] = v; })
            ->type_name(option.value);
    }

    CLI::App m_app;
    Options m_options;
    Words m_words;
};

} // namespace
} // namespace td::dmctl

int main(int argc, char** argv) {
    try {
        return td::dmctl::CommandLine().run(argc, argv);
    } catch (const std::exception& error) {
        fmt::print(stderr, "dmctl: {}\n", error.what());
        return td::dmctl::EXIT_WRONG;
    }
}
