/// Which copy a load tries next: what became of the one before decides, and nothing else.
#pragma once

#include <cerrno>

#include <dataModule/IFileOperator.h>

namespace td {

/// What became of one copy.
enum class Verdict {
    Good,         ///< it is in the table
    Missing,      ///< there is none, or something that is no file
    Damaged,      ///< it does not verify, or its contents cannot be taken
    OtherVersion, ///< it is to be merged by key
    Unreadable,   ///< it cannot be read now and may be as good as ever
    GivenUp,      ///< the medium itself cannot read it any more
    Fatal         ///< no other copy may take its place
};

/// The same with the cause: errno where it could not be read, else 0.
struct CopyState {
    Verdict verdict = Verdict::Good;
    int error = 0;

    bool isGood() const { return verdict == Verdict::Good; }
    bool isUnreadable() const { return verdict == Verdict::Unreadable || verdict == Verdict::GivenUp; }
    /// Reading it failed with this errno.
    static CopyState unreadable(int error) {
        if (error == 0)
            error = EIO;
        return {error == EIO ? Verdict::GivenUp : Verdict::Unreadable, error};
    }
};

/// One try of a load.
struct TriedCopy {
    _LOAD_FILE_MODE copy = NORMAL_LOAD;
    Verdict verdict = Verdict::Good;
    bool wasTriedBefore = false; ///< the same copy, just before
    bool wasMended = false;      ///< it verifies by now, as another process has seen to it
    bool lockWasGivenUp = false; ///< another process keeps the lock for longer than this one waits
    bool awaitsWrite = false;    ///< with the write that is pending it would be whole
};

enum class NextCopy { Done, SameAgain, Backup, Factory, WithoutLock, None };

constexpr NextCopy nextCopy(const TriedCopy& tried) {
    const bool isCurrent = tried.copy == NORMAL_LOAD;
    if (tried.verdict == Verdict::Good)
        return NextCopy::Done;
    if (tried.verdict == Verdict::Fatal)
        return NextCopy::None;
    const bool isUnreadable = tried.verdict == Verdict::Unreadable || tried.verdict == Verdict::GivenUp;
    if (isUnreadable && !tried.wasTriedBefore)
        return NextCopy::SameAgain;
    // Nothing takes the place of what may be as good as ever.
    if (tried.verdict == Verdict::Unreadable)
        return NextCopy::None;
    if (isCurrent && tried.wasMended)
        return NextCopy::SameAgain;
    if (tried.lockWasGivenUp)
        return NextCopy::WithoutLock;
    if (isCurrent && tried.awaitsWrite)
        return NextCopy::None;
    if (isCurrent)
        return tried.verdict == Verdict::OtherVersion ? NextCopy::Factory : NextCopy::Backup;
    return tried.copy == BACKUP_LOAD ? NextCopy::Factory : NextCopy::None;
}

} // namespace td
