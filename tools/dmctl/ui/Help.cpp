#include "ui/Help.h"

#include <algorithm>

#include <fmt/core.h>

namespace td::dmctl {

const char* const PURPOSE = "Reads, changes and checks the settings files of a television.";

const char* const INDEX_HELP =
    "One INDEX for each dimension of the category: the name or number of a value, case ignored, with '_' for a\n"
    "blank. An INDEX may stand for several values: all, HDMI* (quote it), HDMI1..HDMI4, 0..3, MOVIE,GAME.";

const char* const EXAMPLES = "dmctl --root /tmp/tv init\n"
                             "dmctl --root /tmp/tv get PICTURE_MODE HDMI1 MOVIE SDR_UHD Contrast\n"
                             "dmctl --root /tmp/tv set PICTURE_MODE 'HDMI*' MOVIE all Contrast=55\n"
                             "dmctl --root /tmp/tv verify";

namespace {

std::string indented(const std::string& lines) {
    std::string result = "  ";
    for (const char c : lines) {
        result += c;
        if (c == '\n')
            result += "  ";
    }
    return result + '\n';
}

std::string optionLines(const std::vector<VerbOption>& options) {
    std::size_t width = 22;
    for (const VerbOption& option : options)
        width = std::max(width, optionText(option).size());
    std::string text;
    for (const VerbOption& option : options)
        text += fmt::format("  {:<{}} {}\n", optionText(option), width, option.help);
    return text;
}

std::string commonHelp() {
    return "Options, before or behind the verb:\n" + optionLines(commonOptions());
}

std::string exitHelp() {
    std::string text = "Exit codes:\n";
    for (const ExitCode& exit : exitCodes())
        text += fmt::format("  {}  {}\n", exit.code, exit.meaning);
    return text;
}

} // namespace

std::string optionText(const VerbOption& option) {
    return option.value == nullptr ? option.name : fmt::format("{} {}", option.name, option.value);
}

bool addressesRecords(const Verb& verb) {
    return verb.takes == Takes::Record || verb.takes == Takes::Fields || verb.takes == Takes::Assignments;
}

std::string usageOf(const Verb& verb) {
    const char* const separator = verb.arguments[0] == '\0' ? "" : " ";
    return fmt::format("dmctl [OPTIONS] {}{}{}", verb.name, separator, verb.arguments);
}

std::string helpOf(const Verb& verb) {
    std::string text = fmt::format("{}.\n\nUsage: {}\n\n{}\n\n", verb.purpose, usageOf(verb), verb.details);
    if (addressesRecords(verb))
        text += fmt::format("{}\n\n", INDEX_HELP);
    const std::string own = optionLines(optionsOf(verb));
    if (!own.empty())
        text += fmt::format("Options of {}:\n{}\n", verb.name, own);
    return text + fmt::format("{}\nExamples:\n{}\n{}", commonHelp(), indented(verb.examples), exitHelp());
}

std::string help() {
    std::string text = fmt::format(
        "{}\n\nUsage: dmctl [OPTIONS] VERB [ARGUMENTS]\n\nVerbs (dmctl VERB --help tells more):\n", PURPOSE);
    for (const Verb& verb : verbs())
        text += fmt::format("  {:<14} {}\n", verb.name, verb.purpose);
    return text + fmt::format("\n{}\nExamples:\n{}\n{}", commonHelp(), indented(EXAMPLES), exitHelp());
}

} // namespace td::dmctl
