/// The lock of a category's values in memory. Held for as long as copying records takes and never over a call of the
/// system, so that a reader waits for no write; but for a critical section that a client entered
/// (IFileOperator::enterCriticalSection()), which holds it from its beginning to its end.
#pragma once

#include <atomic>

#include <pthread.h>

#include "common/Mutex.h"

namespace td {

class TD_CAPABILITY("mutex") TableMutex {
public:
    void lock() TD_ACQUIRE() TD_NO_THREAD_SAFETY_ANALYSIS {
        if (!isEnteredHere())
            m_mutex.lock();
    }
    void unlock() TD_RELEASE() TD_NO_THREAD_SAFETY_ANALYSIS {
        if (!isEnteredHere())
            m_mutex.unlock();
    }
    /// Until leave() the calling thread has it; what it locks in between changes nothing.
    void enter() TD_NO_THREAD_SAFETY_ANALYSIS {
        m_mutex.lock(LockRank::EnteredTable);
        m_enteredBy = pthread_self();
    }
    /// Does nothing when the thread has not entered.
    void leave() TD_NO_THREAD_SAFETY_ANALYSIS {
        if (!isEnteredHere())
            return;
        m_enteredBy = NOBODY;
        m_mutex.unlock();
    }

private:
    static constexpr pthread_t NOBODY = 0;

    bool isEnteredHere() const {
        const pthread_t owner = m_enteredBy.load(std::memory_order_relaxed);
        return owner != NOBODY && pthread_equal(owner, pthread_self()) != 0;
    }

    Mutex m_mutex{LockRank::Table};
    std::atomic<pthread_t> m_enteredBy{NOBODY};
};

/// Holds a table's lock for the length of a block.
class TD_SCOPED_CAPABILITY TableLock {
public:
    explicit TableLock(TableMutex& mutex) TD_ACQUIRE(mutex) : m_mutex(mutex) { m_mutex.lock(); }
    ~TableLock() TD_RELEASE() { m_mutex.unlock(); }
    TableLock(const TableLock&) = delete;
    TableLock& operator=(const TableLock&) = delete;

private:
    TableMutex& m_mutex;
};

} // namespace td
