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
         runInit},
        {"categories", "[NAME...]", "Show categories: file, version, dimensions, fields",
         "Without names: a table of all categories. With names, or with --json: their dimensions with all values,\n"
         "and their fields with the default values. No root is needed.",
         "dmctl categories\n"
         "dmctl categories picture_mode\n"
         "dmctl categories --json",
         runCategories},
        {"get", "CATEGORY [INDEX...] [FIELD...]", "Print fields of one record",
         "One INDEX for each dimension of the category, as a value name or a decimal number. Names are matched\n"
         "without case, and '_' stands for a blank. Without a FIELD the whole record is printed.",
         "dmctl get PICTURE_MODE HDMI1 MOVIE SDR_UHD Contrast\n"
         "dmctl get picture_mode 4 energy_saving sdr_uhd\n"
         "dmctl get PICTURE_GLOBAL HDMI1_DR HDMI2_DR --json",
         runGet},
        {"set", "CATEGORY [INDEX...] FIELD=VALUE...", "Change fields of one record",
         "INDEX as for get. Everything is checked before anything is changed. When set returns, the values are in\n"
         "the current file, its checksum is right and the record was read again from there. A category may have a\n"
         "flag that makes a change go to all sources; set says to how many others it went.",
         "dmctl set PICTURE_MODE HDMI1 MOVIE SDR_UHD Contrast=55 Hue=-7\n"
         "dmctl set PICTURE_GLOBAL ApplyModeToSource=1",
         runSet},
        {"verify", "[CATEGORY...]", "Check every copy of every file, changing nothing",
         "Checks comment block, summary, version, checksum and every section and key line of the current, backup\n"
         "and factory copies, of all categories if none is named, and says what is wrong at which line and byte.\n"
         "A backup copy may be missing, as the library makes it when it is idle; the other two may not.",
         "dmctl --root /tmp/tv verify\n"
         "dmctl --root /tmp/tv verify PICTURE_MODE --json",
         runVerify},
        {"document", "[CATEGORY...]", "Print the categories as a Markdown page",
         "The page docs/categories.md of the sources, made from the declarations. No root is needed.",
         "dmctl document >docs/categories.md", runDocument},
    };
    return table;
}

} // namespace td::dmctl
