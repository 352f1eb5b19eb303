/// One load of one category: which copies it tries, what it does with the first good one, and how a copy of another
/// version is read by key. Its caller holds the category's lock from its making to its end.
#pragma once

#include "fileOperator/file/NextCopy.h"
#include "fileOperator/file/VersionMerge.h"

struct stat;

namespace td {

struct CategoryState;

/// The copy that a load tries after this one, or INVALID_LOAD; with log lines.
_LOAD_FILE_MODE copyAfter(_LOAD_FILE_MODE mode, bool merges);

class Loader {
public:
    /// `merge`: what becomes of a merge that this load begins.
    Loader(CategoryState& state, VersionMerge::Attempt& merge) : m_state(state), m_merge(merge) {}
    Loader(const Loader&) = delete;
    Loader& operator=(const Loader&) = delete;

    /// Fills the table from the first good copy, which becomes the current one. False when there is none, or none that
    /// may be taken.
    bool load();
    /// Merges the current copy, of whatever version, by key into the table.
    CopyState mergeCurrent();

private:
    /// Which copy is next after `tried`, which was found as `found`.
    NextCopy after(TriedCopy tried, const struct stat& found);
    /// Whether another process may have found the same damage, or the same old version, and be done with it. A pending
    /// write that could not be ended a moment ago may end now.
    bool currentWasMended(const struct stat& found);
    CopyState tryCopy(_LOAD_FILE_MODE mode);
    /// What a failure to read from the open file says of it.
    CopyState contentsFailed() const;
    /// The copy that was read takes the place of the current one.
    CopyState recover(_LOAD_FILE_MODE mode);
    CopyState readForMerge();
    /// The current copy could not be merged, perhaps not to its end: the table starts from the factory values again.
    CopyState mergeBackup();
    bool readFactoryTable();
    /// Reads the first good copy without the lock between processes; nothing is recovered, merged or written meanwhile.
    bool serveFromMemory();
    CopyState twiceIfUnreadable(CopyState (Loader::*read)());
    /// By key, from the open file.
    CopyState readByKey();
    void logWhyNone(_LOAD_FILE_MODE copy, const CopyState& state) const;
    void logStays(int error) const;

    CategoryState& m_state;
    VersionMerge::Attempt& m_merge;
};

} // namespace td
