/// Opens a copy of a category and says what it is worth: its summary, its version, its checksum. The caller holds the
/// category's lock.
#pragma once

#include "fileOperator/file/NextCopy.h"

namespace td {

struct CategoryState;
struct Summary;
enum class SummaryState;

class CopyCheck {
public:
    /// Whether a copy of another version is refused.
    enum class Versions { OwnOnly, Any };

    explicit CopyCheck(CategoryState& state) : m_state(state) {}

    /// Opens and verifies that copy; a good one stays open, behind its summary.
    CopyState verify(_LOAD_FILE_MODE mode, Versions versions = Versions::OwnOnly);
    /// The same for any file.
    CopyState verify(const char* path);
    /// The same for the current or the factory copy, which becomes the one in use.
    CopyState switchToCurrent(Versions versions = Versions::OwnOnly);
    CopyState switchToFactory();
    /// Whether there is a file to open.
    static CopyState lookFor(const char* path);

private:
    CopyState switchTo(_LOAD_FILE_MODE mode, Versions versions, const char* name);
    CopyState openCopy(_LOAD_FILE_MODE mode);
    /// `mode`: the copy that it is, if it is one.
    CopyState verifyOpen(const _LOAD_FILE_MODE* mode, Versions versions, int size);
    CopyState checkLines(SummaryState lines, const _LOAD_FILE_MODE* mode, Versions versions);
    CopyState otherVersion(_LOAD_FILE_MODE mode);
    CopyState checkChecksum(const _LOAD_FILE_MODE* mode);

    CategoryState& m_state;
};

} // namespace td
