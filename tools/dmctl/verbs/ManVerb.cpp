// man: the manual page, made from the same tables as the help.
#include <string>

#include <fmt/core.h>

#include "ui/Help.h"
#include "ui/Output.h"
#include "verbs/Verb.h"

namespace td::dmctl {

namespace {

/// Text as troff shows it as it is: no dash becomes a hyphen, no line a request.
std::string plain(const std::string& text) {
    std::string result;
    for (const char c : text) {
        const bool atStart = result.empty() || result.back() == '\n';
        if (atStart && (c == '.' || c == '\''))
            result += "\\&";
        if (c == '\\')
            result += "\\e";
        else if (c == '-')
            result += "\\-";
        else if (c == '\'')
            result += "\\(aq";
        else
            result += c;
    }
    return result;
}

std::string paragraph(const std::string& text) {
    return plain(text) + "\n";
}

std::string literal(const std::string& text) {
    return ".PP\n.nf\n.RS\n" + plain(text) + "\n.RE\n.fi\n";
}

std::string optionList(const std::vector<VerbOption>& options) {
    std::string text;
    for (const VerbOption& option : options) {
        text += fmt::format(".TP\n\\fB{}\\fR", plain(option.name));
        if (option.value != nullptr)
            text += fmt::format(" \\fI{}\\fR", plain(option.value));
        text += '\n';
        text += paragraph(std::string(option.help) + ".");
    }
    return text;
}

std::string verbSection(const Verb& verb) {
    std::string text = fmt::format(".SS \"{} {}\"\n", plain(verb.name), plain(verb.arguments));
    text += paragraph(fmt::format("{}.", verb.purpose));
    text += ".PP\n" + paragraph(verb.details);
    text += optionList(optionsOf(verb));
    return text + literal(verb.examples);
}

std::string page() {
    std::string text = ".TH DMCTL 1 \"\" \"dmctl " DMCTL_VERSION "\" \"User Commands\"\n"
                       ".SH NAME\ndmctl \\- " +
                       plain(PURPOSE) +
                       "\n.SH SYNOPSIS\n\\fBdmctl\\fR [\\fIOPTIONS\\fR] \\fIVERB\\fR [\\fIARGUMENTS\\fR]\n";
    text += ".SH OPTIONS\nThey may stand before or behind the verb.\n" + optionList(commonOptions());
    text += ".SH RECORDS\n" + paragraph(INDEX_HELP);
    text += ".SH VERBS\n";
    for (const Verb& verb : verbs())
        text += verbSection(verb);
    text += ".SH EXIT STATUS\n";
    for (const ExitCode& exit : exitCodes())
        text += fmt::format(".TP\n\\fB{}\\fR\n{}", exit.code, paragraph(std::string(exit.meaning) + "."));
    return text + ".SH EXAMPLES\n" + literal(EXAMPLES);
}

} // namespace

int runMan(const Options& options, const Words& words) {
    if (!words.empty())
        throw UsageError(fmt::format("it takes no arguments, so \"{}\" is not understood", words.front()));
    if (options.json)
        printJson({{"page", page()}});
    else
        fmt::print("{}", page());
    return EXIT_FINE;
}

} // namespace td::dmctl
