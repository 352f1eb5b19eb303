#include "Names.h"

#include <algorithm>
#include <cctype>

#include <fnmatch.h>

#include <fmt/core.h>

#include "fileOperator/OperatorFactory.h"

namespace td::dmctl {

namespace {

/// What of a name is compared: without case, and with '_' for blanks, which shells would split at.
std::string folded(const std::string& text) {
    std::string result;
    for (const char c : text)
        result += c == ' ' ? '_' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return result;
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

/// The candidates that are likely meant, the nearest first. Of those that a pattern may mean the begin counts.
std::vector<std::string> near(const std::string& word, const std::vector<std::string>& candidates) {
    constexpr std::size_t MOST = 5;
    std::string wanted = folded(word);
    wanted.erase(std::remove_if(wanted.begin(), wanted.end(), [](char c) { return c == '*' || c == '?'; }),
                 wanted.end());
    const std::size_t limit = std::max<std::size_t>(1, wanted.size() / 3);
    std::vector<std::pair<std::size_t, std::string>> found;
    for (const std::string& candidate : candidates) {
        const std::string name = folded(candidate).substr(0, isPattern(word) ? wanted.size() : std::string::npos);
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

} // namespace

bool sameName(const std::string& one, const std::string& other) {
    return folded(one) == folded(other);
}

bool isPattern(const std::string& word) {
    return word.find_first_of("*?") != std::string::npos;
}

bool matches(const std::string& pattern, const std::string& name) {
    return fnmatch(folded(pattern).c_str(), folded(name).c_str(), FNM_NOESCAPE) == 0;
}

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
    return td::categoryName(layout.category);
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
    const auto add = [&](const CategoryLayout* layout) {
        if (std::find(layouts.begin(), layouts.end(), layout) == layouts.end())
            layouts.push_back(layout);
    };
    for (const std::string& word : words) {
        if (!isPattern(word)) {
            add(&categoryNamed(word));
            continue;
        }
        bool found = false;
        for (const CategoryLayout* layout : allLayouts()) {
            if (!matches(word, categoryName(*layout)))
                continue;
            add(layout);
            found = true;
        }
        if (!found)
            categoryNamed(word); // which says what there is
    }
    return layouts;
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

std::string valueName(const Dimension& dimension, int index) {
    return index < dimension.valueNames.count ? dimension.valueNames.texts[index] : std::to_string(index);
}

std::string recordText(const CategoryLayout& layout, const std::vector<int>& indices) {
    std::vector<std::string> names;
    for (std::size_t d = 0; d < indices.size(); ++d)
        names.push_back(valueName(layout.dimensions[d], indices[d]));
    return joined(names);
}

std::vector<int> indicesOf(const CategoryLayout& layout, int record) {
    std::vector<int> indices(layout.dimensions.size());
    layout.indicesOf(record, indices.data());
    return indices;
}

std::string recordLabel(const CategoryLayout& layout, int record) {
    return layout.dimensions.empty() ? categoryName(layout) : recordText(layout, indicesOf(layout, record));
}

bool offersRestoreForAllSources(const CategoryLayout& layout) {
    const BulkRestore::Kind kind = layout.restoreForAllSources.kind;
    return kind == BulkRestore::Kind::PostChanged || kind == BulkRestore::Kind::PostEach;
}

void refuseField(const CategoryLayout& layout, const std::string& word) {
    throw UsageError(
        unknownWord(fmt::format("field of {}", categoryName(layout)), word, fieldNames(layout), "its fields are"));
}

const Field& fieldNamed(const CategoryLayout& layout, const std::string& word) {
    if (const Field* exact = layout.fieldByArgument(word.c_str()))
        return *exact;
    for (const Field& field : layout.fields) {
        if (sameName(field.argumentName(), word))
            return field;
    }
    refuseField(layout, word);
}

} // namespace td::dmctl
