/// When a category is loaded, again, and what becomes of its stores then; the load itself is the Loader's. The caller
/// holds the category's lock.
#pragma once

#include "fileOperator/file/CategoryState.h"

namespace td {

/// What loadFile() does once it may.
bool loadFromFiles(CategoryState& state);
/// Loads the file at `path`, whichever it is, without any fallback.
bool loadForeign(CategoryState& state, const char* path);
/// Loads again if the load before had to do without the files. Whether the values are those of the files now.
bool makeUpForLoad(CategoryState& state);
/// Tries again what could not be written, or had to be loaded without the files, unless somebody is at work on the
/// category. Never waits. Takes the lock itself.
void tryAgain(CategoryState& state);
/// Whether there is something of that kind. Any thread, without the lock.
bool hasFailed(const CategoryState& state);
/// Loads again what was found loaded when it was released and nobody has loaded since. True when there is nothing to
/// do. Takes the lock itself.
bool loadIfReleased(CategoryState& state);
/// Gives up what was stored and is not on the disk: no load keeps it, and nothing of it is written any more. Takes the
/// lock itself.
void dropStores(CategoryState& state);

/// `read` fills the values, to which a failure does nothing.
template <typename Read>
bool loadContentsBy(CategoryState& state, Contents::Loaded success, Read read) {
    state.contents->beginLoad();
    try {
        const bool loaded = read();
        state.contents->endLoad(loaded ? success : Contents::Loaded::Failed);
        return loaded;
    } catch (...) {
        state.contents->endLoad(Contents::Loaded::Failed);
        throw;
    }
}

// --- the file that a merge of versions makes ---

/// Called last by the load: the thread starts writing when the lock is given back.
void startMergeThread(CategoryState& state);
/// Writes the merged values as the new current copy.
bool writeMergedFile(CategoryState& state);
/// Whether another process has merged the file since, and may have stored in it: then nothing is left to write.
bool wasMergedByOther(CategoryState& state);
/// Waits until a merged file, if any, has been written. Takes the lock itself.
void waitForMerge(CategoryState& state);

} // namespace td
