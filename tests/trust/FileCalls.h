/// The file calls of the C library as this program and the library under test make them: a test may watch all calls
/// that concern files below one directory, and have any of them fail.
///
/// FileCalls.cpp defines open, write, rename and the rest, and the dynamic linker prefers a program's own definitions;
/// the library as shipped knows nothing of it. Calls are passed on to the C library, one at a time and in the order in
/// which the watcher learns of them. Streams go past it; the library changes no file through one.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace td::test {

enum class FileCall {
    Open,
    Read,
    Write,
    Truncate,
    Seek,
    Sync,
    Close,
    Rename,
    Remove,
    MakeDirectory,
    List,   ///< of a directory
    Status, ///< stat and access
    Change, ///< mode, owner, times, descriptor flags
    Lock,
};

/// The call's name in messages.
const char* nameOf(FileCall call);

/// What becomes of a call.
struct Verdict {
    int error = 0;          ///< the call fails with it and does nothing; but a descriptor is closed all the same
    bool isPartial = false; ///< a write writes half of its bytes
};

/// Learns of the calls. Paths are relative to the watched directory, without a slash at the end. All functions are
/// called under one lock, on the calling thread.
class FileWatcher {
public:
    virtual ~FileWatcher() = default;

    /// Before a call is made.
    virtual Verdict asked(FileCall, const std::string&) { return {}; }

    // After a call that succeeded.
    virtual void opened(int, const std::string&, bool /*created*/, bool /*emptied*/) {}
    virtual void wrote(int, std::int64_t /*offset*/, std::string_view) {}
    virtual void truncated(int, std::int64_t /*size*/) {}
    virtual void synced(int) {}
    virtual void closed(int) {}
    virtual void renamed(const std::string& /*from*/, const std::string& /*to*/) {}
    virtual void removed(const std::string&) {}
    virtual void madeDirectory(const std::string&) {}
    virtual void removedDirectory(const std::string&) {}
};

/// Has the calls below `root` watched while it lives; one at a time. Files that were open before are not watched, files
/// that are still open afterwards no longer are.
class WatchedFiles {
public:
    WatchedFiles(const std::string& root, FileWatcher& watcher);
    ~WatchedFiles();
    WatchedFiles(const WatchedFiles&) = delete;
    WatchedFiles& operator=(const WatchedFiles&) = delete;
};

/// While it lives, nothing that the calling thread does is watched or fails.
class Unwatched {
public:
    Unwatched();
    ~Unwatched();
    Unwatched(const Unwatched&) = delete;
    Unwatched& operator=(const Unwatched&) = delete;

    /// Whether the calling thread is in such a block.
    static bool isActive();
};

} // namespace td::test
