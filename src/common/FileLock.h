/// Keeps processes apart that work on the same settings files: an advisory lock (flock) on a lock file of its own,
/// which no settings file is. A process that dies gives its locks back; a child made by fork() has none of its
/// parent's.
///
/// An object belongs to one thread at a time. Locks of two objects exclude each other, in one process too.
#pragma once

#include <atomic>
#include <ctime>
#include <optional>
#include <string>

namespace td {

class FileLock {
public:
    enum class Kind { Shared, Exclusive };
    enum class Attempt { Locked, Busy, NotAvailable };
    /// When a wait for a lock is given up, as its holder may be stopped and never give it back.
    struct Patience {
        std::optional<timespec> deadline;             ///< on the monotonic clock
        const std::atomic<bool>* abandoned = nullptr; ///< set by somebody who cannot wait for the one that waits
    };

    FileLock() = default;
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    /// Waits for the lock at `path`; the file, and its directory in a directory that exists, are made if missing. Gives
    /// back what the object held before. False, holding nothing, when there is no lock file to be had (a directory that
    /// cannot be written to, no descriptor left): then there is nobody to be kept apart, or no way to.
    bool lock(const std::string& path, Kind kind);
    /// The same; Busy when it was given up.
    Attempt lock(const std::string& path, Kind kind, const Patience& patience);
    /// The same without waiting.
    Attempt tryLock(const std::string& path, Kind kind);
    /// Gives the lock back, if one is held.
    void unlock();
    bool isHeld() const;
    /// Whether the last attempt failed for want of something that may be there again soon, as descriptors or memory:
    /// others may well hold the lock.
    bool failedForNow() const { return m_failedForNow; }
    /// Of the lock that is held.
    Kind kind() const { return m_kind; }

private:
    /// Waits without end when there is no patience given.
    Attempt take(const std::string& path, Kind kind, bool wait, const Patience* patience);

    int m_descriptor = -1;
    unsigned int m_generation = 0; ///< of forks, when it was locked
    Kind m_kind = Kind::Shared;
    bool m_failedForNow = false;
};

} // namespace td
