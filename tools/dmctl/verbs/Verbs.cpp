#include "verbs/Verb.h"

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
        {"repair",
         "[CATEGORY...]",
         "Make damaged copies good again",
         "Repairs the current copies, or those that --copy names, of all categories if none is named. A copy that is\n"
         "good is never touched, nor one of another version, which the library takes over when it loads.\n"
         "Without --crc and --salvage the newest other copy that is good takes the place of the damaged one; --from\n"
         "names that copy instead. A damaged factory copy needs --from, since the others hold the user's values.\n"
         "--crc rewrites the checksum of a copy in which nothing else is wrong. --salvage reads every value that\n"
         "still stands whole in the damaged copy, takes the rest from the backup, then the factory copy (for a "
         "factory\n"
         "copy neither), then the default values, and says for each section what came from where: in full with\n"
         "--verbose or --json. The damaged file is kept in /var/local/dataModule/damaged. What was repaired is\n"
         "verified again.",
         "dmctl --root /tmp/tv repair --dry-run\n"
         "dmctl --root /tmp/tv repair PICTURE_MODE\n"
         "dmctl --root /tmp/tv repair PICTURE_MODE --salvage --verbose\n"
         "dmctl --root /tmp/tv repair PICTURE_MODE --copy backup --crc",
         runRepair,
         Takes::Categories,
         true,
         {{"--crc", nullptr, "rewrite the checksum, if nothing else is wrong"},
          {"--salvage", nullptr, "save what is still readable"},
          {"--copy", "current|backup|factory", "the copy to repair; the current one without it"},
          {"--from", "current|backup|factory", "the copy to take instead of the newest"},
          {"--dry-run", nullptr, "change nothing, say what would be done"}}},
        {"diff",
         "[CATEGORY...]",
         "Show what differs between two copies, roots or exports",
         "Compares the current copies, or those that --copy names, with the factory copies or with what --against\n"
         "names: current, backup or factory; defaults, the values of new files; a directory, which is another root\n"
         "or holds the files themselves; or an exported file, of which only the values it has are compared. Prints\n"
         "what differs and nothing else. The exit code is 1 when something differs or could not be compared.",
         "dmctl --root /tmp/tv diff\n"
         "dmctl --root /tmp/tv diff PICTURE_MODE --against backup\n"
         "dmctl --root /tmp/tv diff --against /mnt/other_set\n"
         "dmctl --root /tmp/tv diff --against settings.json --json",
         runDiff,
         Takes::Categories,
         false,
         {{"--against", "WHAT", "current, backup, factory, defaults, a directory or an exported file"},
          {"--copy", "current|backup|factory", "the copy to compare; the current one without it"}}},
        {"export",
         "[CATEGORY...] [FILE]",
         "Write settings as JSON or CSV",
         "Writes all values of the current copies, or those that --copy names, to FILE or standard output. FILE is\n"
         "a last word with a dot or a slash in it. The format is JSON unless --format says otherwise or FILE ends in\n"
         ".csv. JSON has one line per record, CSV one per value:\n"
         "  category,index1,index2,index3,index4,index5,field,value\n"
         "Indices are value names, and empty beyond the category's dimensions.",
         "dmctl --root /tmp/tv export settings.json\n"
         "dmctl --root /tmp/tv export PICTURE_MODE SOUND_MODE modes.csv\n"
         "dmctl --root /tmp/tv export PICTURE_GLOBAL --copy factory",
         runExport,
         Takes::Export,
         false,
         {{"--format", "json|csv", "the format"},
          {"--copy", "current|backup|factory", "the copy to export; the current one without it"}}},
        {"import",
         "FILE",
         "Store the values of an export",
         "Takes what export writes, in either format, or any part of it: other categories, records and fields stay\n"
         "as they are. \"-\" is standard input. Everything is checked before anything is changed, and all faults are\n"
         "told with their lines (CSV) or JSON pointers. A flag that makes a change go to all sources has no effect\n"
         "here. When import returns, the files hold the values and were read again from the disk.",
         "dmctl --root /tmp/tv import settings.json\n"
         "dmctl --root /tmp/tv import modes.csv --dry-run --verbose",
         runImport,
         Takes::Files,
         true,
         {{"--dry-run", nullptr, "check, and say what would be changed"}}},
        {"info", "[CATEGORY...]", "Show directories, copies, scopes and who uses them",
         "Prints where the copies are, which processes of the library use them, whether the detail log is on, and\n"
         "per category its version, the scopes that load it, and size, state and age of its copies: \"differs\" are\n"
         "good backup and factory copies with other values than the current one.",
         "dmctl --root /tmp/tv info\n"
         "dmctl info PICTURE_MODE --json",
         runInfo, Takes::Categories},
        {"watch",
         "[CATEGORY...]",
         "Print changes of fields as they reach the files",
         "Prints every change of a value in the current copies, of all categories if none is named, with its time,\n"
         "until Ctrl-C or --count changes. With --json one object per line.",
         "dmctl watch\n"
         "dmctl --root /tmp/tv watch PICTURE_MODE --json --count 1",
         runWatch,
         Takes::Categories,
         false,
         {{"--count", "N", "end after N changes"}}},
        {"log", "on|off|status", "Switch the detail log of running processes",
         "Writes the switch, which all processes of this machine share, and wakes every one that listens; they log\n"
         "the records that they read and store from then on, also at the level with which their log starts. Fails\n"
         "when nobody listens.",
         "dmctl log on\n"
         "dmctl log status",
         runLog, Takes::Choice},
        {"std", "release|reload", "Play the suspend-to-disk procedure",
         "release has the processes that wait for it close their settings files, reload has them open the files\n"
         "again. A message that nobody takes within two seconds is taken back.",
         "dmctl std release\n"
         "dmctl std reload",
         runStd, Takes::Choice},
        {"document", "[CATEGORY...]", "Print the categories as a Markdown page",
         "The page docs/categories.md of the sources, made from the declarations. No root is needed. With --json\n"
         "the same as dmctl categories --json.",
         "dmctl document >docs/categories.md", runDocument, Takes::Categories},
        {"completion", "bash", "Print the completion script for the shell",
         "It completes verbs, options, categories, the values of each dimension and fields. With --json the script\n"
         "is a text in a document.",
         "source <(dmctl completion bash)\n"
         "dmctl completion bash >/usr/share/bash-completion/completions/dmctl",
         runCompletion, Takes::Choice},
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
