/// From words to the records and fields that they select.
///
/// One word stands for each dimension: a value's name or number, "all", a pattern ("HDMI*"), a range ("HDMI1..HDMI4",
/// "0..3") or a list of these with commas between. What fits nothing is a UsageError that says what would fit.
#pragma once

#include <vector>

#include "fileOperator/CategoryLayout.h"
#include "verbs/Verb.h"

namespace td::dmctl {

/// The indices of a record, one per dimension.
using Record = std::vector<int>;

/// The records that the first words address, in the order of the file; `rest` gets the words behind them.
std::vector<Record> recordsNamed(const CategoryLayout& layout, const Words& words, Words& rest);
/// The same where no words may follow.
std::vector<Record> recordsNamed(const CategoryLayout& layout, const Words& words);
/// The fields that the words name, in their order, each once; a word may be a pattern. Without words all of them.
std::vector<const Field*> fieldsNamed(const CategoryLayout& layout, const Words& words);

} // namespace td::dmctl
