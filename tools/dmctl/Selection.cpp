#include "Selection.h"

#include <algorithm>
#include <charconv>
#include <string>

#include <fmt/core.h>

#include "Names.h"

namespace td::dmctl {

namespace {

/// Which values of a dimension are selected.
using Mask = std::vector<bool>;

/// The dimensions with their values: what a request has to choose from.
std::string choicesText(const CategoryLayout& layout) {
    std::string text;
    for (const Dimension& dimension : layout.dimensions)
        text += fmt::format("\n  {}: {}", dimension.name, joined(valueNames(dimension)));
    return text;
}

[[noreturn]] void refuseCount(const CategoryLayout& layout, std::size_t given) {
    throw UsageError(fmt::format("{} has {} dimension{}, but {} value{} given; one of each is needed:{}",
                                 categoryName(layout), layout.dimensionCount(), layout.dimensionCount() == 1 ? "" : "s",
                                 given, given == 1 ? " is" : "s are", choicesText(layout)));
}

bool isNumber(const std::string& word, int& number) {
    const char* const end = word.data() + word.size();
    const auto parsed = std::from_chars(word.data(), end, number);
    if (word.empty() || parsed.ptr != end)
        return false;
    if (parsed.ec != std::errc())
        number = -1; // beyond every dimension
    return true;
}

/// The indices that a word may stand for; a number stands for itself even where names are numbers.
std::vector<int> valuesNamed(const Dimension& dimension, const std::string& word) {
    int number = 0;
    if (isNumber(word, number))
        return number >= 0 && number < dimension.count ? std::vector<int>{number} : std::vector<int>{};
    std::vector<int> found;
    for (int i = 0; i < dimension.count; ++i) {
        if (sameName(valueName(dimension, i), word))
            found.push_back(i);
    }
    return found;
}

[[noreturn]] void refuseValue(const Dimension& dimension, const std::string& word) {
    throw UsageError(unknownWord(fmt::format("value of dimension {}", dimension.name), word, valueNames(dimension),
                                 "its values are"));
}

int valueNamed(const Dimension& dimension, const std::string& word) {
    const std::vector<int> found = valuesNamed(dimension, word);
    if (found.size() == 1)
        return found.front();
    if (found.size() > 1)
        throw UsageError(fmt::format("{} stands for {} and {} of dimension {}; give the number", word, found[0],
                                     found[1], dimension.name));
    int number = 0;
    if (isNumber(word, number))
        throw UsageError(fmt::format("{} is no value of dimension {}; its values are 0 to {}: {}", word, dimension.name,
                                     dimension.count - 1, joined(valueNames(dimension))));
    refuseValue(dimension, word);
}

void selectRange(const Dimension& dimension, const std::string& word, std::size_t dots, Mask& mask) {
    const int first = valueNamed(dimension, word.substr(0, dots));
    const int last = valueNamed(dimension, word.substr(dots + 2));
    if (first > last)
        throw UsageError(fmt::format("the range {} of dimension {} runs backwards, from {} to {}", word, dimension.name,
                                     first, last));
    std::fill(mask.begin() + first, mask.begin() + last + 1, true);
}

void selectLike(const Dimension& dimension, const std::string& pattern, Mask& mask) {
    bool found = false;
    for (int i = 0; i < dimension.count; ++i) {
        if (!matches(pattern, valueName(dimension, i)))
            continue;
        mask[static_cast<std::size_t>(i)] = true;
        found = true;
    }
    if (!found)
        refuseValue(dimension, pattern);
}

void select(const Dimension& dimension, const std::string& word, Mask& mask) {
    const std::size_t dots = word.find("..");
    // A name that is written out means itself, whatever characters it has.
    if (!valuesNamed(dimension, word).empty())
        mask[static_cast<std::size_t>(valueNamed(dimension, word))] = true;
    else if (sameName(word, "all"))
        mask.assign(mask.size(), true);
    else if (dots != std::string::npos)
        selectRange(dimension, word, dots, mask);
    else if (isPattern(word))
        selectLike(dimension, word, mask);
    else
        valueNamed(dimension, word); // which says why it is none
}

Mask valuesSelected(const Dimension& dimension, const std::string& word) {
    Mask mask(static_cast<std::size_t>(dimension.count));
    for (std::size_t start = 0; start <= word.size();) {
        const std::size_t end = std::min(word.find(',', start), word.size());
        if (end == start)
            throw UsageError(
                fmt::format("\"{}\" has an empty place where a value of dimension {} should be", word, dimension.name));
        select(dimension, word.substr(start, end - start), mask);
        start = end + 1;
    }
    return mask;
}

/// A field's name, or an assignment, where a value should be means that values are missing before it.
bool isBehindValues(const CategoryLayout& layout, const Dimension& dimension, const std::string& word) {
    if (!valuesNamed(dimension, word).empty())
        return false;
    const std::vector<std::string> names = fieldNames(layout);
    return word.find('=') != std::string::npos ||
           std::any_of(names.begin(), names.end(), [&](const std::string& name) { return sameName(name, word); });
}

bool selected(const std::vector<Mask>& masks, const Record& record) {
    for (std::size_t d = 0; d < masks.size(); ++d) {
        if (!masks[d][static_cast<std::size_t>(record[d])])
            return false;
    }
    return true;
}

} // namespace

std::vector<Record> recordsNamed(const CategoryLayout& layout, const Words& words, Words& rest) {
    std::vector<Mask> masks;
    for (std::size_t d = 0; d < layout.dimensions.size(); ++d) {
        const Dimension& dimension = layout.dimensions[d];
        if (d >= words.size() || isBehindValues(layout, dimension, words[d]))
            refuseCount(layout, d);
        masks.push_back(valuesSelected(dimension, words[d]));
    }
    rest.assign(words.begin() + static_cast<std::ptrdiff_t>(masks.size()), words.end());
    std::vector<Record> records;
    Record record(masks.size());
    for (int i = 0; i < layout.recordCount(); ++i) {
        layout.indicesOf(i, record.data());
        if (selected(masks, record))
            records.push_back(record);
    }
    return records;
}

std::vector<Record> recordsNamed(const CategoryLayout& layout, const Words& words) {
    if (layout.dimensions.empty() && !words.empty())
        throw UsageError(
            fmt::format("{} has no dimensions, so \"{}\" addresses nothing", categoryName(layout), words.front()));
    Words rest;
    std::vector<Record> records = recordsNamed(layout, words, rest);
    if (!rest.empty())
        refuseCount(layout, words.size());
    return records;
}

std::vector<const Field*> fieldsNamed(const CategoryLayout& layout, const Words& words) {
    std::vector<const Field*> fields;
    const auto add = [&](const Field& field) {
        if (std::find(fields.begin(), fields.end(), &field) == fields.end())
            fields.push_back(&field);
    };
    for (const std::string& word : words) {
        if (!isPattern(word)) {
            add(fieldNamed(layout, word));
            continue;
        }
        bool found = false;
        for (const Field& field : layout.fields) {
            if (matches(word, field.argumentName())) {
                add(field);
                found = true;
            }
        }
        if (!found)
            refuseField(layout, word);
    }
    if (words.empty()) {
        for (const Field& field : layout.fields)
            fields.push_back(&field);
    }
    return fields;
}

} // namespace td::dmctl
