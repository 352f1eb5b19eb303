/// An operator's critical section: a mutex between threads and, from the first step inside that asks for it until the
/// section is left, a lock between processes on the category's lock file. So everything that one section does to the
/// files is one piece for other processes: they see a section and its checksum both old or both new.
///
/// The lock between processes comes right after the mutex in the lock order; a process holds those of several
/// categories at once only for a factory reset, which takes them in the order of the categories. Where no lock file can
/// be had the steps go on without; where it cannot be had for now, nothing is written, and nothing read is trusted.
#pragma once

#include <atomic>
#include <string>

#include <pthread.h>
#include <sched.h>

#include <dataModule/common/FileLock.h>
#include <dataModule/common/Mutex.h>

namespace td {

/// Not recursive.
class TD_CAPABILITY("mutex") CriticalSection {
public:
    void lock() TD_ACQUIRE() {
        lockOrder::willWait(LockRank::Section);
        if (!m_mutex.tryLock()) {
            ++m_waiting;
            m_mutex.lock();
            --m_waiting;
        }
        pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_cancelState);
    }
    void unlock() TD_RELEASE() {
        const int cancelState = m_cancelState;
        if (!m_kept) {
            m_files.unlock();
            m_claim = Claim::None;
        }
        m_mutex.unlock();
        pthread_setcancelstate(cancelState, nullptr);
    }
    bool tryLock() TD_TRY_ACQUIRE(true) {
        if (!m_mutex.tryLock())
            return false;
        pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_cancelState);
        return true;
    }
    /// For a thread that left the section and is about to enter it again: lets those enter first that wait for it.
    /// Awake, it would overtake them time and again.
    void giveWay() const TD_EXCLUDES(this) {
        constexpr int PATIENCE = 1000;
        for (int i = 0; i < PATIENCE && m_waiting > 0; ++i)
            sched_yield();
    }

    /// Nobody else writes the category's files from now on. Does nothing, and returns false, after any of these three
    /// in the same section.
    bool shareFiles(const std::string& lockFile) TD_REQUIRES(this) {
        if (m_claim != Claim::None)
            return false;
        m_claim = Claim::Shared;
        m_files.lock(lockFile, FileLock::Kind::Shared);
        return true;
    }
    /// When the files were taken. After sharing: the shared lock was given up for it, and what was read under that may
    /// have changed since.
    enum class Taken { Before, Now, AfterSharing };
    /// Nobody else reads or writes them from now on.
    Taken takeFiles(const std::string& lockFile) TD_REQUIRES(this) {
        if (m_claim == Claim::Exclusive)
            return Taken::Before;
        const bool wasShared = m_claim == Claim::Shared;
        m_claim = Claim::Exclusive;
        m_files.lock(lockFile, FileLock::Kind::Exclusive);
        return wasShared ? Taken::AfterSharing : Taken::Now;
    }
    /// The same for a section that has neither shared nor taken them, without waiting: false when another process is at
    /// work there.
    bool tryTakeFiles(const std::string& lockFile) TD_REQUIRES(this) {
        if (m_kept)
            return true;
        if (m_files.tryLock(lockFile, FileLock::Kind::Exclusive) == FileLock::Attempt::Busy || filesUnsure())
            return false;
        m_claim = Claim::Exclusive;
        return true;
    }
    /// Whether the lock that was asked for cannot be had for now.
    bool filesUnsure() const TD_REQUIRES(this) { return m_files.failedForNow(); }
    /// Whether leaving the section keeps the lock between processes, for a thread that enters it next.
    void keepFiles(bool keep) TD_REQUIRES(this) { m_kept = keep; }

private:
    /// What the section asked for, whether there was a lock file to be had or not: it is asked once.
    enum class Claim { None, Shared, Exclusive };

    std::atomic<int> m_waiting{0};
    Mutex m_mutex{LockRank::Section};
    // These belong to whoever holds the mutex.
    int m_cancelState = PTHREAD_CANCEL_ENABLE; ///< of the thread, before it entered; inside it is not cancelled
    FileLock m_files;
    Claim m_claim = Claim::None;
    bool m_kept = false;
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
