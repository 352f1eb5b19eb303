/// The texts of help, made from the table of verbs.
#pragma once

#include <string>

#include "verbs/Verb.h"

namespace td::dmctl {

/// How INDEX words address records; lines without indentation.
extern const char* const INDEX_HELP;
/// Examples of the whole program, a line each.
extern const char* const EXAMPLES;
/// What dmctl is, one sentence.
extern const char* const PURPOSE;

std::string usageOf(const Verb& verb);
/// The name of an option with what it takes.
std::string optionText(const VerbOption& option);
/// Whether the verb's words address records.
bool addressesRecords(const Verb& verb);
/// What --help prints.
std::string help();
std::string helpOf(const Verb& verb);

} // namespace td::dmctl
