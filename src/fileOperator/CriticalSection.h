/// An operator's critical section: a mutex between threads and, from the first step inside that asks for it until the
/// section is left, a lock between processes on the category's lock file. So everything that one section does to the
/// files is one piece for other processes: they see a section and its checksum both old or both new.
///
/// The lock between processes comes right after the mutex in the lock order; a process holds those of several
/// categories at once only for a factory reset, which takes them in the order of the categories. Where no lock file can
/// be had the steps go on without.
#pragma once

#include <string>

#include <dataModule/common/FileLock.h>
#include <dataModule/common/Mutex.h>

namespace td {

/// Not recursive.
class TD_CAPABILITY("mutex") CriticalSection {
public:
    void lock() TD_ACQUIRE() { m_mutex.lock(); }
    void unlock() TD_RELEASE() {
        if (!m_kept)
            m_files.unlock();
        m_mutex.unlock();
    }
    bool tryLock() TD_TRY_ACQUIRE(true) { return m_mutex.tryLock(); }

    /// Nobody else writes the category's files from now on. Does nothing, and returns false, when the lock is held
    /// already, of either kind.
    bool shareFiles(const std::string& lockFile) TD_REQUIRES(this) {
        if (m_files.isHeld())
            return false;
        m_files.lock(lockFile, FileLock::Kind::Shared);
        return true;
    }
    /// When the lock that is held now was taken. After sharing: the shared lock was given up for it, and what was read
    /// under that may have changed since.
    enum class Taken { Before, Now, AfterSharing };
    /// Nobody else reads or writes them from now on.
    Taken takeFiles(const std::string& lockFile) TD_REQUIRES(this) {
        if (m_files.isHeld() && m_files.kind() == FileLock::Kind::Exclusive)
            return Taken::Before;
        const bool wasShared = m_files.isHeld();
        m_files.lock(lockFile, FileLock::Kind::Exclusive);
        return wasShared ? Taken::AfterSharing : Taken::Now;
    }
    /// The same for a section that holds no such lock, without waiting: false when another process is at work there.
    bool tryTakeFiles(const std::string& lockFile) TD_REQUIRES(this) {
        return m_kept || m_files.tryLock(lockFile, FileLock::Kind::Exclusive) != FileLock::Attempt::Busy;
    }
    /// Whether leaving the section keeps the lock between processes, for a thread that enters it next.
    void keepFiles(bool keep) TD_REQUIRES(this) { m_kept = keep; }

private:
    Mutex m_mutex;
    FileLock m_files;    ///< belongs to whoever holds the mutex
    bool m_kept = false; ///< the same
};

/// Holds a critical section for the length of a block.
class TD_SCOPED_CAPABILITY SectionLock {
public:
    explicit SectionLock(CriticalSection& section) TD_ACQUIRE(section) : m_section(section) { m_section.lock(); }
    ~SectionLock() TD_RELEASE() { m_section.unlock(); }
    SectionLock(const SectionLock&) = delete;
    SectionLock& operator=(const SectionLock&) = delete;

private:
    CriticalSection& m_section;
};

} // namespace td
