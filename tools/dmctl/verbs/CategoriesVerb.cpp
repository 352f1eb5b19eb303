// categories: what there is to read and change.
#include <string>
#include <vector>

#include <fmt/core.h>

#include "Names.h"
#include "ui/Output.h"
#include "verbs/Verb.h"

namespace td::dmctl {

namespace {

std::string countedOf(int count, const char* what) {
    return counted(static_cast<std::size_t>(count), what);
}

std::string dimensionsText(const CategoryLayout& layout) {
    std::string text;
    for (const Dimension& dimension : layout.dimensions)
        text += fmt::format("{}{}({})", text.empty() ? "" : " x ", dimension.name, dimension.count);
    return text.empty() ? "none" : text;
}

void printTable(const std::vector<const CategoryLayout*>& layouts) {
    Rows rows{headings({"NAME", "FILE", "VERSION", "DIMENSIONS", "FIELDS"})};
    for (const CategoryLayout* layout : layouts)
        rows.push_back({categoryName(*layout), layout->file, layout->version, dimensionsText(*layout),
                        std::to_string(layout->fieldCount())});
    printColumns(rows);
}

/// The requests for many records that the category offers, as they are written.
std::vector<std::string> offers(const CategoryLayout& layout) {
    std::vector<std::string> texts;
    if (layout.applyToAllSources.axes != 0)
        texts.emplace_back("apply --all-sources");
    if (layout.applyToAllModes.axes != 0)
        texts.emplace_back("apply --all-modes");
    if (offersRestoreForAllSources(layout))
        texts.emplace_back("restore --all-sources");
    if (layout.restoresFromCurrent)
        texts.emplace_back("restore --from current");
    return texts;
}

void printDetails(const CategoryLayout& layout) {
    fmt::print("{}  {}  {}\n", categoryName(layout), layout.file, layout.version);
    fmt::print("  {}\n", layout.purpose);
    fmt::print("  {}, {}\n", countedOf(layout.recordCount(), "record"), countedOf(layout.fieldCount(), "field"));
    if (layout.applyFlag != nullptr)
        fmt::print("  flag that makes a change go to all sources: {}\n", layout.applyFlag);
    if (!offers(layout).empty())
        fmt::print("  offers {}\n", joined(offers(layout)));
    for (const Dimension& dimension : layout.dimensions) {
        fmt::print("\n  {}: {}\n", dimension.name, countedOf(dimension.count, "value"));
        for (int i = 0; i < dimension.count; ++i)
            fmt::print("    {:>2}  {}\n", i, valueName(dimension, i));
    }
    fmt::print("\n  fields, with their defaults\n");
    std::vector<std::vector<std::string>> rows;
    for (const Field& field : layout.fields)
        rows.push_back({field.argumentName(), std::to_string(field.defaultValue)});
    printColumns(rows, 4);
}

Json detailsJson(const CategoryLayout& layout) {
    Json dimensions = Json::array();
    for (const Dimension& dimension : layout.dimensions) {
        Json values = Json::array();
        for (int i = 0; i < dimension.count; ++i)
            values.push_back({{"number", i}, {"name", valueName(dimension, i)}});
        dimensions.push_back({{"name", dimension.name}, {"count", dimension.count}, {"values", values}});
    }
    Json fields = Json::array();
    for (const Field& field : layout.fields)
        fields.push_back({{"name", field.argumentName()}, {"key", field.key}, {"default", field.defaultValue}});
    return {{"category", categoryName(layout)},
            {"number", static_cast<int>(layout.category)},
            {"file", layout.file},
            {"version", layout.version},
            {"purpose", layout.purpose},
            {"records", layout.recordCount()},
            {"applyFlag", layout.applyFlag != nullptr ? Json(layout.applyFlag) : Json()},
            {"offers", offers(layout)},
            {"dimensions", dimensions},
            {"fields", fields}};
}

} // namespace

int runCategories(const Options& options, const Words& words) {
    const std::vector<const CategoryLayout*> layouts = categoriesNamed(words);
    if (options.json) {
        Json document = Json::array();
        for (const CategoryLayout* layout : layouts)
            document.push_back(detailsJson(*layout));
        printJson(document);
        return EXIT_FINE;
    }
    if (words.empty()) {
        printTable(layouts);
        return EXIT_FINE;
    }
    const char* separator = "";
    for (const CategoryLayout* layout : layouts) {
        fmt::print("{}", separator);
        printDetails(*layout);
        separator = "\n";
    }
    return EXIT_FINE;
}

} // namespace td::dmctl
