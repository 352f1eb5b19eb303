#include "exchange/Collector.h"

#include <charconv>
#include <climits>
#include <utility>

#include <fmt/core.h>

#include "fileOperator/text/TextLayout.h"
#include "ui/Output.h"

namespace td::dmctl {

namespace {

/// Longer words are names of nothing and are not looked up.
constexpr std::size_t LONGEST_NAME = 64;
/// At most so much of a text of the export stands in a fault.
constexpr std::size_t SHOWN = 200;

/// Without bytes that a terminal would obey.
std::string escaped(const std::string& text) {
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        result += byte >= 0x20 && byte < 0x7F ? std::string(1, c) : fmt::format("\\x{:02x}", byte);
    }
    return result;
}

std::string shortened(const std::string& text) {
    return escaped(text.substr(0, SHOWN)) + (text.size() > SHOWN ? "..." : "");
}

/// The first line of what is to be said.
std::string shown(const std::string& text) {
    return shortened(text.substr(0, text.find('\n')));
}

void checkLength(const std::string& word) {
    if (word.size() > LONGEST_NAME)
        throw UsageError(fmt::format("\"{}...\" is too long for a name", word.substr(0, 20)));
}

/// What stands for an index: the value's name, or its number where the name would not be read as this value.
std::string indexText(const Dimension& dimension, int index) {
    std::string name = valueName(dimension, index);
    try {
        if (indexNamed(dimension, name) == index)
            return name;
    } catch (const UsageError&) {
        // Ambiguous, so the number it is.
    }
    return std::to_string(index);
}

} // namespace

int indexNamed(const Dimension& dimension, const std::string& word) {
    int number = 0;
    const char* const end = word.data() + word.size();
    const auto parsed = std::from_chars(word.data(), end, number);
    if (!word.empty() && parsed.ptr == end) {
        if (parsed.ec != std::errc() || number < 0 || number >= dimension.count)
            throw UsageError(fmt::format("{} is no value of dimension {}; its values are 0 to {}", word, dimension.name,
                                         dimension.count - 1));
        return number;
    }
    std::vector<int> found;
    for (int i = 0; i < dimension.count; ++i) {
        if (sameName(valueName(dimension, i), word))
            found.push_back(i);
    }
    if (found.size() == 1)
        return found.front();
    if (found.size() > 1)
        throw UsageError(fmt::format("{} stands for {} and {} of dimension {}; give the number", word, found[0],
                                     found[1], dimension.name));
    throw UsageError(unknownWord(fmt::format("value of dimension {}", dimension.name), word, valueNames(dimension),
                                 "its values are"));
}

IndexTexts indexTextsOf(const CategoryLayout& layout) {
    IndexTexts texts(layout.dimensions.size());
    for (std::size_t d = 0; d < texts.size(); ++d) {
        for (int i = 0; i < layout.dimensions[d].count; ++i)
            texts[d].push_back(indexText(layout.dimensions[d], i));
    }
    return texts;
}

void Collector::fault(const std::string& place, const std::string& text) {
    if (m_result.faults.size() < Exchange::MAX_FAULTS)
        m_result.faults.push_back({shortened(place), shown(text)});
    else
        m_result.cutShort = true;
}

Collector::Known& Collector::category(const std::string& word) {
    const auto entry = m_byWord.find(word);
    if (entry != m_byWord.end())
        return *entry->second;
    checkLength(word);
    const CategoryLayout& layout = categoryNamed(word);
    Known* const known = knownOf(layout);
    m_byWord.emplace(word, known);
    return *known;
}

int Collector::record(Known& known, const Words& indices) {
    std::string key;
    for (const std::string& index : indices)
        key += index + '\n';
    const auto entry = known.records.find(key);
    if (entry != known.records.end())
        return entry->second;
    if (indices.size() != known.layout->dimensions.size())
        throw UsageError(fmt::format("{} has {}, not {}", categoryName(*known.layout),
                                     counted(known.layout->dimensions.size(), "dimension"), indices.size()));
    for (const std::string& index : indices)
        checkLength(index);
    std::vector<int> numbers;
    for (std::size_t d = 0; d < indices.size(); ++d)
        numbers.push_back(indexNamed(known.layout->dimensions[d], indices[d]));
    const int record = known.layout->recordIndex(numbers.data());
    known.records.emplace(std::move(key), record);
    return record;
}

const Field& Collector::field(Known& known, const std::string& word) {
    const auto entry = known.fields.find(word);
    if (entry != known.fields.end())
        return *entry->second;
    checkLength(word);
    const Field& field = fieldNamed(*known.layout, word);
    known.fields.emplace(word, &field);
    return field;
}

void Collector::put(const Known& known, int record, const Field& field, long long value) {
    const CategoryLayout& layout = *known.layout;
    if (value < INT_MIN || value > INT_MAX || !text::fitsColumns(layout.keyLine, static_cast<int>(value)))
        throw UsageError(fmt::format("{} is out of range for {}; its place in the file does not hold it", value,
                                     field.argumentName()));
    ExchangeCategory& category = m_result.categories[known.place];
    const std::size_t cell = cellOf(layout, record, field);
    if (category.given[cell])
        throw UsageError(fmt::format("{} of {} is given twice", field.argumentName(), recordLabel(layout, record)));
    category.given[cell] = true;
    category.values[cell] = static_cast<int>(value);
    ++category.count;
}

Collector::Known* Collector::knownOf(const CategoryLayout& layout) {
    for (const auto& known : m_known) {
        if (known->layout == &layout)
            return known.get();
    }
    m_known.push_back(std::make_unique<Known>());
    m_known.back()->place = m_result.categories.size();
    m_known.back()->layout = &layout;
    m_result.categories.emplace_back(layout);
    return m_known.back().get();
}

} // namespace td::dmctl
