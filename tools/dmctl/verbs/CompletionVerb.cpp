// completion: the script that completes dmctl's words in a shell, made from the tables of verbs and categories.
#include <algorithm>
#include <string>
#include <vector>

#include <fmt/core.h>

#include "fileOperator/OperatorFactory.h"
#include "Names.h"
#include "ui/Output.h"
#include "verbs/Verb.h"

namespace td::dmctl {

namespace {

/// What the script does with the tables that stand before it. Words are compared without case, as dmctl does.
constexpr const char* FUNCTIONS = R"(
# Offers those words behind $2 that go on from $1, case ignored, each behind the prefix $_dmctl_prefix.
_dmctl_offer() {
    local begun=${1,,} word
    shift
    for word; do
        [[ ${word,,} == "$begun"* ]] && COMPREPLY+=("$_dmctl_prefix$word")
    done
}

# The last part of a value list or range is completed, the rest stays.
_dmctl_offer_values() {
    local part=${1##*[,.]}
    _dmctl_prefix=${1%"$part"} _dmctl_offer "$part" $2 all
}

_dmctl() {
    local current=${COMP_WORDS[COMP_CWORD]} verb= category= position=0 i word _dmctl_prefix=
    local -a given=()
    COMPREPLY=()
    for ((i = 1; i < COMP_CWORD; ++i)); do
        word=${COMP_WORDS[i]}
        case $word in
        -*) [[ -n ${_dmctl_valued[$verb$word]-} ]] && ((++i)) ;;
        *) if [[ -z $verb ]]; then verb=$word; else given+=("$word"); fi ;;
        esac
    done
    # An option that takes a value and has none yet.
    if ((i > COMP_CWORD)); then
        word=${_dmctl_valued[$verb${COMP_WORDS[COMP_CWORD - 1]}]}
        if [[ $word == *'|'* ]]; then
            _dmctl_offer "$current" ${word//|/ }
        else
            mapfile -t COMPREPLY < <(compgen -f -- "$current")
        fi
        return
    fi
    if [[ $current == -* ]]; then
        _dmctl_offer "$current" ${_dmctl_options[common]} ${_dmctl_options[$verb]-}
        return
    fi
    if [[ -z $verb ]]; then
        _dmctl_offer "$current" ${!_dmctl_takes[@]}
        return
    fi
    category=${given[0]-}
    category=${category^^}
    position=${#given[@]}
    local -a dimensions=()
    [[ -n $category ]] && dimensions=(${_dmctl_dimensions[$category]-})
    case ${_dmctl_takes[$verb]-} in
    categories) _dmctl_offer "$current" ${!_dmctl_fields[@]} ;;
    files) mapfile -t COMPREPLY < <(compgen -f -- "$current") ;;
    export)
        _dmctl_offer "$current" ${!_dmctl_fields[@]}
        ((${#COMPREPLY[@]})) || mapfile -t COMPREPLY < <(compgen -f -- "$current")
        ;;
    *'|'*) ((position == 0)) && _dmctl_offer "$current" ${_dmctl_takes[$verb]//|/ } ;;
    record | fields | assignments)
        if ((position == 0)); then
            _dmctl_offer "$current" ${!_dmctl_fields[@]}
        elif ((position <= ${#dimensions[@]})); then
            _dmctl_offer_values "$current" "${_dmctl_values[${dimensions[position - 1]}]}"
        elif [[ ${_dmctl_takes[$verb]} == fields ]]; then
            _dmctl_offer "$current" ${_dmctl_fields[$category]-}
        elif [[ ${_dmctl_takes[$verb]} == assignments && ${COMP_WORDS[COMP_CWORD - 1]} != '=' && $current != '=' ]]; then
            _dmctl_offer "$current" ${_dmctl_fields[$category]-}
            COMPREPLY=("${COMPREPLY[@]/%/=}")
            compopt -o nospace 2>/dev/null
        fi
        ;;
    esac
}

complete -F _dmctl dmctl
)";

std::string takesName(const Verb& verb) {
    constexpr const char* NAMES[] = {"other", "categories", "record", "fields", "assignments", "export", "files"};
    // A choice is told by its bar, also where there is but one.
    return verb.takes == Takes::Choice ? std::string(verb.arguments) + '|' : NAMES[static_cast<int>(verb.takes)];
}

/// Words with blanks between; a blank in a word becomes '_', as people type it.
std::string wordList(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += text.empty() ? "" : " ";
        for (const char c : word)
            text += c == ' ' ? '_' : c;
    }
    return text;
}

std::string entry(const std::string& key, const std::string& value) {
    return fmt::format("    [{}]='{}'\n", key, value);
}

std::string optionNames(const std::vector<VerbOption>& options) {
    std::vector<std::string> names;
    for (const VerbOption& option : options)
        names.emplace_back(option.name);
    return wordList(names);
}

/// What options take behind a verb: verbs may have options of the same name that take other words.
std::string valuedOptions(const std::string& verb, const std::vector<VerbOption>& options) {
    std::string entries;
    for (const VerbOption& option : options) {
        if (option.value != nullptr)
            entries += entry(verb + option.name, option.value);
    }
    return entries;
}

std::string verbTables() {
    std::string takes = "declare -A _dmctl_takes=(\n";
    std::string options = "declare -A _dmctl_options=(\n" + entry("common", optionNames(commonOptions()));
    std::string valued = "declare -A _dmctl_valued=(\n";
    valued += valuedOptions("", commonOptions());
    for (const Verb& verb : verbs()) {
        takes += entry(verb.name, takesName(verb));
        options += entry(verb.name, optionNames(optionsOf(verb)));
        valued += valuedOptions(verb.name, commonOptions()) + valuedOptions(verb.name, verb.options);
    }
    return takes + ")\n" + options + ")\n" + valued + ")\n";
}

/// Many dimensions have the same values; each list stands in the script once.
std::string categoryTables() {
    std::vector<std::string> lists;
    std::string dimensions = "declare -A _dmctl_dimensions=(\n";
    std::string fields = "declare -A _dmctl_fields=(\n";
    for (const CategoryLayout* layout : allLayouts()) {
        std::vector<std::string> numbers;
        for (const Dimension& dimension : layout->dimensions) {
            const std::string list = wordList(valueNames(dimension));
            const auto known = std::find(lists.begin(), lists.end(), list);
            numbers.push_back(std::to_string(known - lists.begin()));
            if (known == lists.end())
                lists.push_back(list);
        }
        dimensions += entry(categoryName(*layout), wordList(numbers));
        fields += entry(categoryName(*layout), wordList(fieldNames(*layout)));
    }
    std::string values = "declare -a _dmctl_values=(\n";
    for (std::size_t i = 0; i < lists.size(); ++i)
        values += entry(std::to_string(i), lists[i]);
    return values + ")\n" + dimensions + ")\n" + fields + ")\n";
}

std::string script() {
    return "# Completion of dmctl for bash, printed by: dmctl completion bash\n" + verbTables() + categoryTables() +
           FUNCTIONS;
}

} // namespace

int runCompletion(const Options& options, const Words& words) {
    if (words != Words{"bash"})
        throw UsageError("name the shell: bash");
    if (options.json)
        printJson({{"bash", script()}});
    else
        fmt::print("{}", script());
    return EXIT_FINE;
}

} // namespace td::dmctl
