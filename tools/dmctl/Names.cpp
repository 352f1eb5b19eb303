#include "Names.h"

#include <algorithm>
#include <cctype>
#include <charconv>

#include <fmt/core.h>

#include <dataModule/fileOperator/OperatorFactory.h>

namespace td::dmctl {

namespace {

/// Category names by value.
constexpr const char* CATEGORY_NAMES[] = {
#define DMCTL_NAME(value, name, operatorClass) #name,
    DATAMODULE_CATEGORY_LIST(DMCTL_NAME)
#undef DMCTL_NAME
};

/// What of a name is compared: without case, and with '_' for blanks, which shells would split at.
std::string folded(const std::string& text) {
    std::string result;
    for (const char c : text)
        result += c == ' ' ? '_' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return result;
}

bool sameName(const std::string& one, const std::string& other) {
    return folded(one) == folded(other);
}

/// Characters to insert, remove, replace or swap with the next until one text is the other.
std::size_t editDistance(const std::string& one, const std::string& other) {
    std::vector<std::vector<std::size_t>> distance(one.size() + 1, std::vector<std::size_t>(other.size() + 1));
    for (std::size_t i = 0; i <= one.size(); ++i) {
        for (std::size_t j = 0; j <= other.size(); ++j) {
            if (i == 0 || j == 0) {
                distance[i][j] = i + j;
                continue;
            }
            const std::size_t replaced = distance[i - 1][j - 1] + (one[i - 1] == other[j - 1] ? 0 : 1);
            distance[i][j] = std::min({distance[i - 1][j] + 1, distance[i][j - 1] + 1, replaced});
            if (i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1])
                distance[i][j] = std::min(distance[i][j], distance[i - 2][j - 2] + 1);
        }
    }
    return distance[one.size()][other.size()];
}

/// The candidates that are likely meant, the nearest first.
std::vector<std::string> near(const std::string& word, const std::vector<std::string>& candidates) {
    constexpr std::size_t MOST = 5;
    const std::string wanted = folded(word);
    const std::size_t limit = std::max<std::size_t>(1, wanted.size() / 3);
    std::vector<std::pair<std::size_t, std::string>> found;
    for (const std::string& candidate : candidates) {
        const std::string name = folded(candidate);
        const bool part = wanted.size() > 2 && name.find(wanted) != std::string::npos;
        const std::size_t distance = editDistance(wanted, name);
        if (part || distance <= limit)
            found.emplace_back(distance, candidate);
    }
    std::stable_sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<std::string> result;
    for (std::size_t i = 0; i < std::min(found.size(), MOST); ++i)
        result.push_back(found[i].second);
    return result;
}

std::vector<std::string> fieldNames(const CategoryLayout& layout) {
    std::vector<std::string> names;
    for (const Field& field : layout.fields)
        names.emplace_back(field.argumentName());
    return names;
}

std::vector<std::string> valueNames(const Dimension& dimension) {
    std::vector<std::string> names;
    names.reserve(static_cast<std::size_t>(dimension.count));
    for (int i = 0; i < dimension.count; ++i)
        names.push_back(valueName(dimension, i));
    return names;
}

bool isField(const CategoryLayout& layout, const std::string& word) {
    const std::vector<std::string> names = fieldNames(layout);
    return std::any_of(names.begin(), names.end(), [&](const std::string& name) { return sameName(name, word); });
}

/// The dimensions with their values: what a request has to choose from.
std::string dimensionsText(const CategoryLayout& layout) {
    std::string text;
    for (const Dimension& dimension : layout.dimensions)
        text += fmt::format("\n  {}: {}", dimension.name, joined(valueNames(dimension)));
    return text;
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
    throw UsageError(unknownWord(fmt::format("value of dimension {}", dimension.name), word, valueNames(dimension),
                                 "its values are"));
}

[[noreturn]] void refuseCount(const CategoryLayout& layout, std::size_t given) {
    throw UsageError(fmt::format("{} has {} dimension{}, but {} value{} given; one of each is needed:{}",
                                 categoryName(layout), layout.dimensionCount(), layout.dimensionCount() == 1 ? "" : "s",
                                 given, given == 1 ? " is" : "s are", dimensionsText(layout)));
}

} // namespace

std::string joined(const std::vector<std::string>& texts) {
    std::string result;
    for (const std::string& text : texts)
        result += (result.empty() ? "" : ", ") + text;
    return result;
}

std::string unknownWord(const std::string& kind, const std::string& word, const std::vector<std::string>& candidates,
                        const std::string& all) {
    const std::vector<std::string> likely = near(word, candidates);
    if (likely.empty())
        return fmt::format("unknown {} \"{}\"; {}: {}", kind, word, all, joined(candidates));
    return fmt::format("unknown {} \"{}\"; did you mean {}?", kind, word, joined(likely));
}

std::string categoryName(const CategoryLayout& layout) {
    return CATEGORY_NAMES[layout.category];
}

const CategoryLayout& categoryNamed(const std::string& word) {
    std::vector<std::string> names;
    for (const CategoryLayout* layout : allLayouts()) {
        if (sameName(categoryName(*layout), word))
            return *layout;
        names.push_back(categoryName(*layout));
    }
    if (word.empty())
        throw UsageError("name a category: " + joined(names));
    throw UsageError(unknownWord("category", word, names, "there are"));
}

std::vector<const CategoryLayout*> categoriesNamed(const Words& words) {
    if (words.empty())
        return allLayouts();
    std::vector<const CategoryLayout*> layouts;
    for (const std::string& word : words) {
        const CategoryLayout* const layout = &categoryNamed(word);
        if (std::find(layouts.begin(), layouts.end(), layout) == layouts.end())
            layouts.push_back(layout);
    }
    return layouts;
}

std::string valueName(const Dimension& dimension, int index) {
    return index < dimension.valueNames.count ? dimension.valueNames.texts[index] : std::to_string(index);
}

std::vector<int> recordNamed(const CategoryLayout& layout, const Words& words) {
    const std::size_t count = layout.dimensions.size();
    if (count == 0 && !words.empty())
        throw UsageError(
            fmt::format("{} has no dimensions, so \"{}\" addresses nothing", categoryName(layout), words.front()));
    std::vector<int> indices;
    for (std::size_t d = 0; d < count; ++d) {
        const Dimension& dimension = layout.dimensions[d];
        // A field's name here means that values are missing before it.
        if (d >= words.size() || (isField(layout, words[d]) && valuesNamed(dimension, words[d]).empty()))
            refuseCount(layout, d);
        indices.push_back(valueNamed(dimension, words[d]));
    }
    if (words.size() > count)
        refuseCount(layout, words.size());
    return indices;
}

std::string recordText(const CategoryLayout& layout, const std::vector<int>& indices) {
    std::vector<std::string> names;
    for (std::size_t d = 0; d < indices.size(); ++d)
        names.push_back(valueName(layout.dimensions[d], indices[d]));
    return joined(names);
}

const Field& fieldNamed(const CategoryLayout& layout, const std::string& word) {
    if (const Field* exact = layout.fieldByArgument(word.c_str()))
        return *exact;
    for (const Field& field : layout.fields) {
        if (sameName(field.argumentName(), word))
            return field;
    }
    throw UsageError(
        unknownWord(fmt::format("field of {}", categoryName(layout)), word, fieldNames(layout), "its fields are"));
}

} // namespace td::dmctl
