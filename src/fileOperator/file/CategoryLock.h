/// The lock of a category's files: a mutex between threads and, from the first step inside that asks for it until it is
/// given back, a lock between processes on the category's lock file. So everything that is done to the files under it
/// is one piece for other processes: they see a section and its checksum both old or both new. The values in memory
/// have a lock of their own (table/TableLock.h).
///
/// The lock between processes comes right after the mutex in the lock order; a process holds those of several
/// categories at once only for a factory reset, which takes them in the order of the categories. Where no lock file can
/// be had the steps go on without; where it cannot be had for now, or the wait for it was given up, nothing is written,
/// and nothing read is trusted.
///
/// Which steps hold it is said in words and checked at run time: where it is taken and where it is needed lie on both
/// sides of virtual calls, which the compiler's analysis does not follow.
///
/// It knows the thread that is inside, so that a step of the lifecycle can be called from inside (SectionStep joins)
/// and from outside (SectionStep takes it for its own length).
#pragma once

#include <atomic>
#include <optional>
#include <string>

#include <pthread.h>
#include <sched.h>

#include "common/FileLock.h"
#include "common/Mutex.h"

namespace td {

/// Not recursive.
class CategoryLock {
public:
    void lock() TD_NO_THREAD_SAFETY_ANALYSIS {
        enter();
        entered();
    }
    void unlock() TD_NO_THREAD_SAFETY_ANALYSIS {
        const int cancelState = m_cancelState;
        m_owner = NOBODY;
        leaveFiles();
        m_patience.deadline.reset();
        m_mutex.unlock();
        pthread_setcancelstate(cancelState, nullptr);
    }
    bool tryLock() TD_NO_THREAD_SAFETY_ANALYSIS {
        if (!m_mutex.tryLock())
            return false;
        entered();
        return true;
    }
    /// Whether the calling thread is inside.
    bool isMine() const { return pthread_equal(m_owner, pthread_self()) != 0; }
    /// For a thread that left the section and is about to enter it again: lets those enter first that wait for it.
    /// Awake, it would overtake them time and again.
    void giveWay() const {
        constexpr int PATIENCE = 1000;
        for (int i = 0; i < PATIENCE && m_waiting > 0; ++i)
            sched_yield();
    }

    /// Nobody else writes the category's files from now on. Does nothing, and returns false, after any of these three
    /// in the same section.
    bool shareFiles(const std::string& lockFile) {
        if (m_claim != Claim::None)
            return false;
        claim(Claim::Shared, lockFile);
        return true;
    }
    /// Nobody else reads or writes them from now on, unless filesUnsure(). False when it had them already. A shared
    /// lock is given up for it, so that what was read under that may have changed since.
    bool takeFiles(const std::string& lockFile) {
        if (m_claim == Claim::Exclusive)
            return false;
        claim(Claim::Exclusive, lockFile);
        return true;
    }
    /// The same for a section that has neither shared nor taken them, without waiting: false when another process is at
    /// work there.
    bool tryTakeFiles(const std::string& lockFile) {
        if (m_kept)
            return true;
        note(lockFile);
        if (m_files.tryLock(lockFile, FileLock::Kind::Exclusive) == FileLock::Attempt::Busy || m_files.failedForNow())
            return false;
        m_claim = Claim::Exclusive;
        return true;
    }
    /// Whether the lock that was asked for cannot be had for now, or was not waited for any longer.
    bool filesUnsure() const { return m_wasGivenUp || m_files.failedForNow(); }
    /// Whether another process had the lock for longer than this one waits.
    bool gaveUpWaiting() const { return m_wasGivenUp; }
    /// Until the section is left no lock between processes is waited for beyond this point in time.
    void limitWaits(const timespec& deadline) {
        lockOrder::shouldHold(&m_mutex);
        m_patience.deadline = deadline;
    }
    /// From any thread: whoever waits for the lock between processes, now or later, gives up. For good.
    void abandonWaits() { m_abandoned = true; }
    /// Whether leaving the section keeps the lock between processes, for a thread that enters it next.
    void keepFiles(bool keep) { m_kept = keep; }

    /// The section that the calling thread is in and that has shared or taken the files of this lock file, or null.
    static CategoryLock* claimedHere(const std::string& lockFile);

private:
    /// What the section asked for, whether there was a lock file to be had or not: it is asked once.
    enum class Claim { None, Shared, Exclusive };
    static constexpr pthread_t NOBODY = 0;

    void enter() TD_NO_THREAD_SAFETY_ANALYSIS {
        lockOrder::willWait(LockRank::Category);
        if (m_mutex.tryLock())
            return;
        ++m_waiting;
        m_mutex.lock();
        --m_waiting;
    }
    void entered() {
        m_owner = pthread_self();
        pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_cancelState);
    }
    void claim(Claim kind, const std::string& lockFile);
    void note(const std::string& lockFile);
    void leaveFiles();

    std::atomic<int> m_waiting{0};
    std::atomic<pthread_t> m_owner{NOBODY};
    std::atomic<bool> m_abandoned{false};
    Mutex m_mutex{LockRank::Category};
    // These belong to whoever holds the mutex.
    int m_cancelState = PTHREAD_CANCEL_ENABLE; ///< of the thread, before it entered; inside it is not cancelled
    FileLock m_files;
    FileLock::Patience m_patience{std::nullopt, &m_abandoned};
    std::string m_lockFile;          ///< that was last asked for
    CategoryLock* m_outer = nullptr; ///< that the same thread had claimed before
    Claim m_claim = Claim::None;
    bool m_isNoted = false; ///< among those that the thread inside has claimed
    bool m_kept = false;
    bool m_wasGivenUp = false;
};

/// Holds a critical section for the length of a block.
class SectionLock {
public:
    explicit SectionLock(CategoryLock& section) : m_section(section) { m_section.lock(); }
    ~SectionLock() { m_section.unlock(); }
    SectionLock(const SectionLock&) = delete;
    SectionLock& operator=(const SectionLock&) = delete;

private:
    CategoryLock& m_section;
};

/// For a step of the lifecycle, which clients may call from inside an entered section or from outside: holds the
/// section for the length of the step unless the thread is inside already.
class SectionStep {
public:
    explicit SectionStep(CategoryLock& section) : m_section(section.isMine() ? nullptr : &section) {
        if (m_section != nullptr)
            m_section->lock();
    }
    ~SectionStep() {
        if (m_section != nullptr)
            m_section->unlock();
    }
    SectionStep(const SectionStep&) = delete;
    SectionStep& operator=(const SectionStep&) = delete;

private:
    CategoryLock* const m_section;
};

} // namespace td
