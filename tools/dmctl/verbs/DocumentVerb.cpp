// document: all categories as a Markdown page, for docs/categories.md.
#include <string>
#include <vector>

#include <fmt/core.h>

#include "Names.h"
#include "verbs/Verb.h"

namespace td::dmctl {

namespace {

const char* keyLineText(KeyLineForm form) {
    switch (form) {
    case KeyLineForm::Decimal5:
        return "`%-23s = %05d`";
    case KeyLineForm::Hexadecimal5:
        return "`%-24s = 0x%5x`";
    case KeyLineForm::Decimal4:
        break;
    }
    return "`%-24s = %04d`";
}

std::string sectionText(const CategoryLayout& layout) {
    std::string text = "[";
    if (layout.dimensions.empty())
        text += GLOBAL_SECTION;
    for (const Dimension& dimension : layout.dimensions)
        text += dimension.digits == DigitForm::Hexadecimal ? "%1x" : "%1c";
    return text + "]";
}

std::string restoreText(const BulkRestore& restore) {
    switch (restore.kind) {
    case BulkRestore::Kind::PostChanged:
    case BulkRestore::Kind::PostEach:
        return restore.axes == 0 ? "restores the one record" : "restores every value of the swept dimensions";
    case BulkRestore::Kind::SilentlyTrue:
    case BulkRestore::Kind::NotOffered:
        break;
    }
    return "does nothing";
}

void printOperations(const CategoryLayout& layout) {
    const auto copies = [](const BulkCopy& copy) { return copy.axes != 0 ? "copies" : "does nothing"; };
    fmt::print("`applySettingForAllSources` {}, `applySettingForAllMode` {}, `restoreSettingForAllSource` {}, "
               "`restoreSettingFromCurrent` {}.\n\n",
               copies(layout.applyToAllSources), copies(layout.applyToAllModes),
               restoreText(layout.restoreForAllSources),
               layout.restoresFromCurrent ? "re-reads the record" : "does nothing");
}

void printCategory(const CategoryLayout& layout) {
    fmt::print("## {} {}\n\n", static_cast<int>(layout.category), categoryName(layout));
    fmt::print("`{}`, version `{}`, section `{}`, key lines {}, {} records of {} fields, {} bytes of contents.\n\n",
               layout.file, layout.version, sectionText(layout), keyLineText(layout.keyLine), layout.recordCount(),
               layout.fieldCount(), layout.contentLength());
    for (const Dimension& dimension : layout.dimensions) {
        fmt::print("- {}:", dimension.name);
        for (int i = 0; i < dimension.count; ++i)
            fmt::print("{} {} {}", i == 0 ? "" : ",", i, valueName(dimension, i));
        fmt::print("\n");
    }
    fmt::print("{}| field | default |\n|---|---|\n", layout.dimensions.empty() ? "" : "\n");
    for (const Field& field : layout.fields) {
        const std::string key = field.argument != nullptr ? fmt::format(" (`{}` in the file)", field.key) : "";
        fmt::print("| `{}`{} | {} |\n", field.argumentName(), key, field.defaultValue);
    }
    fmt::print("\n");
    printOperations(layout);
}

} // namespace

int runDocument(const Options& options, const Words& words) {
    if (options.json)
        return runCategories(options, words);
    fmt::print(
        "# The categories\n\nMade from the declarations in `src/fileOperator/` by `dmctl document`; a test keeps "
        "it current.\n\n");
    for (const CategoryLayout* layout : categoriesNamed(words))
        printCategory(*layout);
    return EXIT_FINE;
}

} // namespace td::dmctl
