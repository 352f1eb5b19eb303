/// What the fuzzers know before they begin, made from the declarations of the categories: words of the formats, for
/// their dictionaries, and inputs of every shape to start from.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace td::fuzz {

/// The words that a target's inputs are made of.
std::vector<std::string> wordsOf(std::string_view target);
/// Inputs that bring a target to all its formats and categories.
std::vector<std::string> seedsOf(std::string_view target);
/// The words as a dictionary in libFuzzer's form; those that are too long for it are left out.
std::string dictionaryText(const std::vector<std::string>& words);

} // namespace td::fuzz
