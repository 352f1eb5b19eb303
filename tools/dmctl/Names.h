/// From the words of a command line to categories, records and fields, and back. A word that fits nothing is a
/// UsageError that says what would fit.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "fileOperator/CategoryLayout.h"
#include "verbs/Verb.h"

namespace td::dmctl {

/// The category's name in requests.
std::string categoryName(const CategoryLayout& layout);
/// The category of that name, case ignored. An empty word stands for none given.
const CategoryLayout& categoryNamed(const std::string& word);
/// The categories of the words, which may be patterns; all of them when there are none.
std::vector<const CategoryLayout*> categoriesNamed(const Words& words);

/// The name of a dimension's value, or its number where it has no name.
std::string valueName(const Dimension& dimension, int index);
std::vector<std::string> valueNames(const Dimension& dimension);
/// What addresses the record, for people: value names with commas between; empty without dimensions.
std::string recordText(const CategoryLayout& layout, const std::vector<int>& indices);
/// What addresses a record, for people; its category's name where that has one record only.
std::string recordLabel(const CategoryLayout& layout, int record);
/// The indices of a record.
std::vector<int> indicesOf(const CategoryLayout& layout, int record);
/// The place of a field's value in a table that is row-major by record and position.
inline std::size_t cellOf(const CategoryLayout& layout, int record, const Field& field) {
    return static_cast<std::size_t>(record) * layout.fields.size() + static_cast<std::size_t>(field.position);
}
/// The field of that name in requests, case ignored if none is written exactly so.
const Field& fieldNamed(const CategoryLayout& layout, const std::string& word);
/// Says that the word names no field, and which would.
[[noreturn]] void refuseField(const CategoryLayout& layout, const std::string& word);
std::vector<std::string> fieldNames(const CategoryLayout& layout);

/// Whether the category takes records back for all sources at once.
bool offersRestoreForAllSources(const CategoryLayout& layout);

/// Names are compared without case, and with '_' for blanks, which shells would split at.
bool sameName(const std::string& one, const std::string& other);
/// Whether a word has '*' or '?' in it.
bool isPattern(const std::string& word);
/// Whether a name is like a pattern.
bool matches(const std::string& pattern, const std::string& name);

/// "unknown KIND "WORD"" with the near candidates or, introduced by `all`, every one.
std::string unknownWord(const std::string& kind, const std::string& word, const std::vector<std::string>& candidates,
                        const std::string& all);
std::string joined(const std::vector<std::string>& texts);

} // namespace td::dmctl
