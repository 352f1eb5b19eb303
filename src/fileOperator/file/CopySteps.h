/// One copy of a category taking the place of another, with what that means for the rest of its state. The caller holds
/// the category's lock.
#pragma once

namespace td {

class FileUtil;
struct CategoryState;

/// Puts the backup or factory copy that was just read in the place of the current one.
bool recoverCurrent(CategoryState& state);
/// Puts the current copy over the backup when they differ; with `alsoFactory` over the factory copy too.
bool backUp(CategoryState& state, bool alsoFactory);
/// Puts the factory copy over the current one, if it is good and of the operator's version. What was stored since the
/// table was refreshed from it goes on.
void resetFromFactory(CategoryState& state);
/// The checksum that the summary of `opened` states, if there is a file at `path`; unverified.
bool readStoredChecksum(FileUtil& opened, const char* path, unsigned int& crc);

} // namespace td
