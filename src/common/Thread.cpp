#include <dataModule/common/Thread.h>

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <memory>
#include <utility>

#include <dataModule/common/Deadline.h>
#include <dataModule/common/Event.h>
#include <dataModule/common/Log.h>
#include <dataModule/IDataSeparateManagerInner.h>

namespace td {

namespace {

/// The worker that the calling thread is, if any.
thread_local const Thread* t_current = nullptr;

timespec idleDeadline(int seconds) {
    return deadlineIn(std::int64_t{seconds} * 1000);
}

/// Nothing an operator throws may end the worker.
bool handledWell(Event& event) {
    try {
        return event.handle();
    } catch (...) {
        return false;
    }
}

} // namespace

Thread::Thread(const char* name, int idleSeconds) : m_idleSeconds(idleSeconds) {
    std::snprintf(m_name, sizeof m_name, "%s", name == nullptr ? "" : name);
}

Thread::~Thread() {
    Thread::stop();
}

bool Thread::start() {
    const MutexLock lock(m_lifeMutex);
    if (m_running)
        return true;
    if (isExit() || !OsalThreads::create(m_name, mainProc, this, m_handle)) {
        TD_ERROR("Create pthread [%s] failed.\n", m_name);
        return false;
    }
    m_running = true;
    TD_INFO("Create pthread [%s] success ,id = %d \n", m_name, static_cast<int>(m_handle));
    return true;
}

bool Thread::stop() {
    const NoCancel noCancel;
    // Held to the end, so that a second stop() too returns only when the worker has ended.
    const MutexLock life(m_lifeMutex);
    {
        // Under the queue mutex, which an idle backup needs to begin.
        const MutexLock queue(m_queueMutex);
        const MutexLock exit(m_exitMutex);
        m_exit = true;
        m_queueCondition.broadcast();
    }
    if (m_running) {
        OsalThreads::join(m_handle);
        m_handle = OsalThreads::INVALID_HANDLE;
    }
    dropQueue();
    m_running = false;
    return true;
}

bool Thread::post(Event* event) {
    if (m_exit)
        return false;
    {
        const MutexLock lock(m_queueMutex);
        // Again: stop() may have emptied the queue for the last time since.
        if (m_exit)
            return false;
        m_queue.push_back(event);
        ++m_postedCount;
    }
    // Not under the mutex, which the worker would wake up only to wait for.
    m_queueCondition.signal();
    return true;
}

void Thread::run() {
    timespec nextTry = idleDeadline(m_idleSeconds);
    while (!isExit()) {
        Event* next = nullptr;
        const Work work = waitForWork(next);
        if (work == Work::End)
            return;
        std::unique_ptr<Event> event(next);
        if (event)
            handleEvent(*event);
        event.reset();
        if (work == Work::Event)
            noteHandled();
        // On a worker that is never idle as well.
        if (work == Work::Idle || hasPassed(nextTry)) {
            askToTryAgain();
            nextTry = idleDeadline(m_idleSeconds);
        }
        if (work == Work::Idle)
            askForBackup();
    }
}

bool Thread::isExit() const {
    const MutexLock lock(m_exitMutex);
    return m_exit;
}

void Thread::getStaticsInfo(_ThreadStaticInfo_t& info) {
    const MutexLock lock(m_statisticsMutex);
    info = m_statistics;
    info.queued = m_queuedCount;
}

void Thread::setOwner(IDataSeparateManagerInner* owner) {
    m_owner = owner;
}

bool Thread::isCurrent() const {
    return t_current == this;
}

bool Thread::waitHandled(int milliseconds) {
    if (!m_running || isCurrent())
        return true;
    const timespec deadline = deadlineIn(milliseconds > 0 ? milliseconds : 0);
    const MutexLock lock(m_queueMutex);
    const std::uint64_t target = m_postedCount;
    while (m_doneCount < target) {
        if (m_handledCondition.waitUntil(m_queueMutex, deadline) == ETIMEDOUT)
            return m_doneCount >= target;
    }
    return true;
}

void* Thread::mainProc(void* self) {
    auto* const thread = static_cast<Thread*>(self);
    t_current = thread;
    thread->run();
    return nullptr;
}

Thread::Work Thread::waitForWork(Event*& event) {
    const MutexLock lock(m_queueMutex);
    const timespec deadline = idleDeadline(m_idleSeconds);
    while (m_queue.empty()) {
        if (isExit())
            return Work::End;
        const int result = m_queueCondition.waitUntil(m_queueMutex, deadline);
        if (isExit())
            return Work::End;
        if (result == ETIMEDOUT && m_queue.empty())
            return Work::Idle;
    }
    event = m_queue.front();
    m_queue.pop_front();
    m_queuedCount = static_cast<std::uint32_t>(m_queue.size());
    return Work::Event;
}

void Thread::askForBackup() {
    const MutexLock lock(m_queueMutex);
    if (!m_queue.empty() || isExit())
        return;
    m_queuedCount = 0;
    if (m_owner == nullptr)
        return;
    try {
        m_owner->backupData();
    } catch (...) {
        TD_ERROR("backup of [%s] ended by an exception\n", m_name);
    }
}

void Thread::askToTryAgain() {
    if (m_owner == nullptr)
        return;
    try {
        m_owner->retryFailedStores();
    } catch (...) {
        TD_ERROR("retry of [%s] ended by an exception\n", m_name);
    }
}

void Thread::handleEvent(Event& event) {
    const MutexLock lock(m_statisticsMutex);
    if (handledWell(event)) {
        ++m_statistics.succeeded;
    } else {
        TD_WARNING("work thread handle event (id = %d) failed! \n", event.id());
        ++m_statistics.failed;
    }
    ++m_statistics.handled;
}

void Thread::noteHandled() {
    const MutexLock lock(m_queueMutex);
    ++m_doneCount;
    m_handledCondition.broadcast();
}

void Thread::dropQueue() {
    std::deque<Event*> dropped;
    {
        const MutexLock lock(m_queueMutex);
        dropped.swap(m_queue);
        m_doneCount = m_postedCount;
        m_handledCondition.broadcast();
    }
    for (const Event* event : dropped)
        delete event;
}

} // namespace td
