/// Makes a settings file anew: of the defaults or of the table, under a name of its own until it is whole.
#pragma once

#include <string>

namespace td {

struct CategoryState;

/// Puts it in the place of the current copy, and makes the backup. With `defaults` only where there is no file yet. The
/// caller holds the category's lock.
bool makeNewFile(CategoryState& state, bool defaults);
/// Rewrites the summary lines of the open file, whose lengths are known, with the checksum of its contents.
bool rewriteSummary(CategoryState& state);

/// Looks for the line `id` in the open file from its start on. The comment block on the way becomes the known one.
enum class Found { Yes, EndOfFile, Failed };
Found scanFor(CategoryState& state, const char* id);

} // namespace td
