#include "Verb.h"

namespace td::dmctl {

const std::vector<Verb>& verbs() {
    static const std::vector<Verb> table{
        {"init", "", "Make a new root: directories and all settings files",
         "Makes what is missing under --root DIR, which may itself be missing: the directories and, for every\n"
         "category, the current, the backup and the factory copy. A category without any file gets its default\n"
         "values. A missing current copy is made from the backup or factory copy, a missing backup from the\n"
         "current copy, a missing factory copy from the default values. Files that exist are left alone.",
         "dmctl --root /tmp/tv init\n"
         "dmctl --root / init            on a television: this machine's own files",
         runInit, Takes::Other, true},
        {"categories", "[NAME...]", "Show categories: file, version, dimensions, fields",
         "Without names: a table of all categories. With names, or with --json: their dimensions with all values,\n"
         "and their fields with the default values. No root is needed.",
         "dmctl categories\n"
         "dmctl categories picture_mode\n"
         "dmctl categories --json",
         runCategories, Takes::Categories},
        {"get", "CATEGORY [INDEX...] [FIELD...]", "Print fields of records",
         "Prints what the current file holds once it is loaded as a start of the television loads it. A FIELD may\n"
         "have * and ? in it; without one all fields are printed.",
         "dmctl get PICTURE_MODE HDMI1 MOVIE SDR_UHD Contrast\n"
         "dmctl get picture_mode 'hdmi*' movie,game sdr_uhd 'Color*' Hue\n"
         "dmctl get PICTURE_GLOBAL 'HDMI?_DR' --json",
         runGet, Takes::Fields},
        {"set", "CATEGORY [INDEX...] FIELD=VALUE...", "Change fields of records",
         "Everything is checked before anything is changed. When set returns, the values are in the current file,\n"
         "its checksum is right and the records were read again from there. A category may have a flag that makes\n"
         "a change go to all sources; set says so, and to which others it went.",
         "dmctl set PICTURE_MODE HDMI1 MOVIE SDR_UHD Contrast=55 Hue=-7\n"
         "dmctl set PICTURE_MODE 'HDMI*' MOVIE all Contrast=55\n"
         "dmctl set PICTURE_GLOBAL ApplyModeToSource=1",
         runSet, Takes::Assignments, true},
        {"restore",
         "CATEGORY [INDEX...]",
         "Take records back from the factory copy",
         "The current file holds the values of the factory copy when restore returns; that is checked as for set.\n"
         "With --from current the records are read again from the current file instead, as a program of the\n"
         "television does to drop what it has not stored.",
         "dmctl restore PICTURE_MODE HDMI1 MOVIE SDR_UHD\n"
         "dmctl restore PICTURE_WB_2_POINT HDMI1 MOVIE --all-sources\n"
         "dmctl restore PICTURE_MODE --all",
         runRestore,
         Takes::Record,
         true,
         {{"--from", "factory|current", "the copy to take the values from; factory if not given"},
          {"--all-sources", nullptr, "the records for every source; not every category offers it"},
          {"--all", nullptr, "the whole category, by one new file; give no INDEX"}}},
        {"apply",
         "CATEGORY [INDEX...]",
         "Copy a record to all sources or all modes",
         "One of --all-sources and --all-modes says where to. Not every category offers both: dmctl categories\n"
         "CATEGORY tells.",
         "dmctl apply PICTURE_MODE HDMI1 MOVIE SDR_UHD --all-sources\n"
         "dmctl apply PICTURE_WB_2_POINT HDMI1 MOVIE --all-modes",
         runApply,
         Takes::Record,
         true,
         {{"--all-sources", nullptr, "copy it to the other sources"},
          {"--all-modes", nullptr, "copy it to the other picture modes"}}},
        {"factory-reset",
         "",
         "Take all categories back to the factory copies",
         "Every current and backup copy is removed and made anew from the factory copy. Asks first. Refuses, and\n"
         "changes nothing, while a factory copy is missing or damaged, for then nothing could take its place.",
         "dmctl --root /tmp/tv factory-reset --yes",
         runFactoryReset,
         Takes::Other,
         true,
         {{"--yes", nullptr, "do not ask; needed where nobody can be asked"}}},
        {"first-boot", "", "Do what a television does at its first start",
         "Takes the factory directory from the model's configuration. When there is no current copy at all, makes\n"
         "the current and backup copies from the factory copies. Then loads all categories, which replaces damaged\n"
         "copies and updates those of another version, and says from which copy each was loaded.",
         "dmctl --root /tmp/tv first-boot", runFirstBoot, Takes::Other, true},
        {"verify", "[CATEGORY...]", "Check every copy of every file, changing nothing",
         "Checks comment block, summary, version, checksum and every section and key line of the current, backup\n"
         "and factory copies, of all categories if none is named, and says what is wrong at which line and byte.\n"
         "A backup copy may be missing, as the library makes it when it is idle; the other two may not.",
         "dmctl --root /tmp/tv verify\n"
         "dmctl --root /tmp/tv verify PICTURE_MODE --json",
         runVerify, Takes::Categories},
        {"document", "[CATEGORY...]", "Print the categories as a Markdown page",
         "The page docs/categories.md of the sources, made from the declarations. No root is needed. With --json\n"
         "the same as dmctl categories --json.",
         "dmctl document >docs/categories.md", runDocument, Takes::Categories},
        {"completion", "bash", "Print the completion script for the shell",
         "It completes verbs, options, categories, the values of each dimension and fields. With --json the script\n"
         "is a text in a document.",
         "source <(dmctl completion bash)\n"
         "dmctl completion bash >/usr/share/bash-completion/completions/dmctl",
         runCompletion},
        {"man", "", "Print the manual page", "For man(1), in its own format. With --json it is a text in a document.",
         "dmctl man >dmctl.1 && man ./dmctl.1", runMan},
    };
    return table;
}

const Verb* verbNamed(const std::string& name) {
    for (const Verb& verb : verbs()) {
        if (name == verb.name)
            return &verb;
    }
    return nullptr;
}

const std::vector<VerbOption>& commonOptions() {
    static const std::vector<VerbOption> table{
        {"--root", "DIR", "the directory that stands for the television's \"/\"; this machine's own without it"},
        {"--json", nullptr, "answer as JSON; an error is the last line of standard error, as JSON too"},
        {"--color", nullptr, "use colours, even where the output is no terminal"},
        {"--no-color", nullptr, "use none, even on a terminal"},
        {"--verbose", nullptr, "show the library's log on standard error, progress included"},
        {"--help", nullptr, "this help, or the verb's"},
        {"--version", nullptr, "print the version"},
    };
    return table;
}

std::vector<VerbOption> optionsOf(const Verb& verb) {
    std::vector<VerbOption> options = verb.options;
    if (verb.writes)
        options.push_back({"--force", nullptr, "write even while a running program of the television uses the files"});
    return options;
}

const std::vector<ExitCode>& exitCodes() {
    static const std::vector<ExitCode> table{
        {EXIT_FINE, "all is well"},
        {EXIT_WRONG, "something wrong was found, or the request failed"},
        {EXIT_USAGE, "the command line is wrong; nothing was done"},
        {EXIT_IN_USE, "a running program uses the files; nothing was done"},
    };
    return table;
}

} // namespace td::dmctl
