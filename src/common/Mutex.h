/// Mutex, scoped lock and monotonic condition variable with thread-safety annotations.
///
/// The lock order of the library, outermost first; nobody waits for a lock while holding one that comes after it, or
/// another of the same place:
///   1. a manager's loading mutex   (held while all files are loaded or reset)
///   2. Thread's life mutex   (start and stop; held while the worker is joined)
///   3. Thread's statistics mutex   (held while an event is handled)
///   4. the lock of a category's files   (one category's at a time), and inside it
///   5. its table's lock, where a client entered the critical section: held for as long as the section is
///   6. the lock between processes on the category's lock file
///   7. a table's lock   (held for as long as copying records takes, and never over a call of the system)
///   8. Thread's queue mutex   (held across the idle backup, which takes the locks of files by try only)
///   9. CRC32Util's file mutex
///  10. the leaves: what is pending in a category, a manager's TV types, the list of open lock files, the log's
///
/// A build with DATAMODULE_CHECK_LOCKS ends the program where this does not hold (LockOrder.cpp).
#pragma once

#include <ctime>

#include <pthread.h>

#include "common/LockOrder.h"
#include "common/NoCancel.h"
#include "common/ThreadAnnotations.h"

namespace td {

/// Not recursive.
class TD_CAPABILITY("mutex") Mutex {
public:
    explicit Mutex(LockRank rank = LockRank::Leaf) : m_rank(rank) {}
    ~Mutex() { pthread_mutex_destroy(&m_mutex); }
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void lock() TD_ACQUIRE() { lock(m_rank); }
    /// At another place in the order.
    void lock(LockRank rank) TD_ACQUIRE() {
        lockOrder::willWait(rank);
        pthread_mutex_lock(&m_mutex);
        lockOrder::wasTaken(this, rank);
    }
    void unlock() TD_RELEASE() {
        lockOrder::willBeReleased(this);
        pthread_mutex_unlock(&m_mutex);
    }
    bool tryLock() TD_TRY_ACQUIRE(true) {
        if (pthread_mutex_trylock(&m_mutex) != 0)
            return false;
        lockOrder::wasTaken(this, m_rank);
        return true;
    }

    /// In a child made by fork(): free again, whoever held it. Each one that belongs to no manager needs this, or to be
    /// held across the fork.
    void renew() { pthread_mutex_init(&m_mutex, nullptr); }

private:
    friend class Condition;
    pthread_mutex_t m_mutex = PTHREAD_MUTEX_INITIALIZER;
    const LockRank m_rank;
};

/// Holds a mutex for the length of a block.
class TD_SCOPED_CAPABILITY MutexLock {
public:
    explicit MutexLock(Mutex& mutex) TD_ACQUIRE(mutex) : m_mutex(mutex) { m_mutex.lock(); }
    ~MutexLock() TD_RELEASE() { m_mutex.unlock(); }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

private:
    Mutex& m_mutex;
};

/// A condition variable whose deadlines are on the monotonic clock, so a set clock neither delays nor hurries a wait.
class Condition {
public:
    Condition() {
        pthread_condattr_t attributes;
        pthread_condattr_init(&attributes);
        pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
        pthread_cond_init(&m_condition, &attributes);
        pthread_condattr_destroy(&attributes);
    }
    ~Condition() { pthread_cond_destroy(&m_condition); }
    Condition(const Condition&) = delete;
    Condition& operator=(const Condition&) = delete;

    void signal() { pthread_cond_signal(&m_condition); }
    void broadcast() { pthread_cond_broadcast(&m_condition); }
    /// Waits until signalled or until `deadline` (CLOCK_MONOTONIC). 0 or ETIMEDOUT; may wake without a reason.
    int waitUntil(Mutex& mutex, const timespec& deadline) TD_REQUIRES(mutex) {
        const NoCancel noCancel;
        lockOrder::willBeReleased(&mutex);
        lockOrder::willWait(mutex.m_rank);
        const int result = pthread_cond_timedwait(&m_condition, &mutex.m_mutex, &deadline);
        lockOrder::wasTaken(&mutex, mutex.m_rank);
        return result;
    }

private:
    pthread_cond_t m_condition;
};

} // namespace td
