/// Mutex, scoped lock and monotonic condition variable with thread-safety annotations.
///
/// The lock order of the library, outermost first; nobody waits for a lock while holding one that comes after it:
///   1. Thread's life mutex   (start and stop; held while the worker is joined)
///   2. Thread's statistics mutex   (held while an event is handled)
///   3. an operator's critical section   (table and file; one operator's at a time), and inside it the lock between
///      processes on the category's lock file
///   4. Thread's queue mutex   (held across the idle backup, which takes critical sections by try only)
///   5. CRC32Util's file mutex
///   6. the leaves: Thread's exit mutex, an operator's backup-request mutex, EventIdGenerator's mutex, the log's
#pragma once

#include <ctime>

#include <pthread.h>

#include <dataModule/common/ThreadAnnotations.h>

namespace td {

/// Not recursive.
class TD_CAPABILITY("mutex") Mutex {
public:
    Mutex() = default;
    ~Mutex() { pthread_mutex_destroy(&m_mutex); }
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void lock() TD_ACQUIRE() { pthread_mutex_lock(&m_mutex); }
    void unlock() TD_RELEASE() { pthread_mutex_unlock(&m_mutex); }
    bool tryLock() TD_TRY_ACQUIRE(true) { return pthread_mutex_trylock(&m_mutex) == 0; }

private:
    friend class Condition;
    pthread_mutex_t m_mutex = PTHREAD_MUTEX_INITIALIZER;
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
        return pthread_cond_timedwait(&m_condition, &mutex.m_mutex, &deadline);
    }

private:
    pthread_cond_t m_condition;
};

} // namespace td
