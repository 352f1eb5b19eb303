/// What dmctl prints on standard output.
#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include <dataModule/fileOperator/CategoryLayout.h>

namespace td::dmctl {

/// JSON objects keep the order in which their members were added.
using Json = nlohmann::ordered_json;

/// Prints a JSON document; bytes that are no text are replaced.
void printJson(const Json& document);
/// Prints rows in columns of their own widths, two blanks between, each line behind `margin` blanks.
void printColumns(const std::vector<std::vector<std::string>>& rows, int margin = 0);
/// A text from a file between quotes, without bytes that a terminal would obey.
std::string quotedText(const std::string& text);
/// The record's indices by dimension name, each with number and name.
Json recordJson(const CategoryLayout& layout, const std::vector<int>& indices);

} // namespace td::dmctl
