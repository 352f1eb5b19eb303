#include <dataModule/common/Thread.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <deque>

#include <dataModule/common/Event.h>
#include <dataModule/IDataSeparateManagerInner.h>
#include <dataModule/IFileOperator.h>
#include <dataModule/platform/OsalThreads.h>

#include "common/Deadline.h"
#include "common/Log.h"
#include "common/Mutex.h"

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
        if (event.op() == nullptr)
            return event.handle();
        // Without memory of its own: an event that gets lost here would be waited for.
        Event* const events[] = {&event};
        bool handled = false;
        event.op()->handleEvents(events, &handled, 1);
        return handled;
    } catch (...) {
        return false;
    }
}

void* runWorker(void* self) {
    auto* const thread = static_cast<Thread*>(self);
    t_current = thread;
    thread->run();
    return nullptr;
}

/// The events that wait for the worker, and how many came and went.
class EventQueue {
public:
    /// False once closed: the caller still owns the event.
    bool push(Event* event) TD_EXCLUDES(m_mutex);
    /// Wakes the worker; nothing is taken in from then on, and no idle work begins.
    void close() TD_EXCLUDES(m_mutex);
    bool isClosed() const { return m_closed; }

    enum class Work { Event, Idle, End };
    /// Waits for the next event, which may be null, or until there has been none for so long.
    Work next(Event*& event, int idleSeconds) TD_EXCLUDES(m_mutex);
    /// What next() gave has been handled and deleted.
    void noteHandled() TD_EXCLUDES(m_mutex);
    /// Does the idle work under the mutex, unless there is something to do again.
    template <typename Action>
    void whenIdle(Action action) TD_EXCLUDES(m_mutex);
    /// Deletes what waits.
    void drop() TD_EXCLUDES(m_mutex);

    bool waitHandled(int milliseconds) TD_EXCLUDES(m_mutex);
    /// Events that were left at the last next(); 0 after idle work.
    std::uint32_t left() const { return m_left; }

private:
    Mutex m_mutex{LockRank::Queue};
    Condition m_filled;
    Condition m_handled;
    std::deque<Event*> m_events TD_GUARDED_BY(m_mutex);
    std::uint64_t m_postedCount TD_GUARDED_BY(m_mutex) = 0; ///< events ever queued
    std::uint64_t m_doneCount TD_GUARDED_BY(m_mutex) = 0;   ///< events ever handled or dropped
    std::atomic<std::uint32_t> m_left{0};                   ///< changes under the mutex, read freely
    std::atomic<bool> m_closed{false};                      ///< the same
};

bool EventQueue::push(Event* event) {
    if (m_closed)
        return false;
    {
        const MutexLock lock(m_mutex);
        // Again: the queue may have been emptied for the last time since.
        if (m_closed)
            return false;
        m_events.push_back(event);
        ++m_postedCount;
    }
    // Not under the mutex, which the worker would wake up only to wait for.
    m_filled.signal();
    return true;
}

void EventQueue::close() {
    const MutexLock lock(m_mutex);
    m_closed = true;
    m_filled.broadcast();
}

EventQueue::Work EventQueue::next(Event*& event, int idleSeconds) {
    const MutexLock lock(m_mutex);
    const timespec deadline = idleDeadline(idleSeconds);
    while (m_events.empty()) {
        if (m_closed)
            return Work::End;
        const int result = m_filled.waitUntil(m_mutex, deadline);
        if (m_closed)
            return Work::End;
        if (result == ETIMEDOUT && m_events.empty())
            return Work::Idle;
    }
    event = m_events.front();
    m_events.pop_front();
    m_left = static_cast<std::uint32_t>(m_events.size());
    return Work::Event;
}

void EventQueue::noteHandled() {
    const MutexLock lock(m_mutex);
    ++m_doneCount;
    m_handled.broadcast();
}

template <typename Action>
void EventQueue::whenIdle(Action action) {
    const MutexLock lock(m_mutex);
    if (!m_events.empty() || m_closed)
        return;
    m_left = 0;
    action();
}

void EventQueue::drop() {
    std::deque<Event*> dropped;
    {
        const MutexLock lock(m_mutex);
        dropped.swap(m_events);
        m_doneCount = m_postedCount;
        m_handled.broadcast();
    }
    for (const Event* event : dropped)
        delete event;
}

bool EventQueue::waitHandled(int milliseconds) {
    const timespec deadline = deadlineIn(milliseconds > 0 ? milliseconds : 0);
    const MutexLock lock(m_mutex);
    const std::uint64_t target = m_postedCount;
    while (m_doneCount < target) {
        if (m_handled.waitUntil(m_mutex, deadline) == ETIMEDOUT)
            return m_doneCount >= target;
    }
    return true;
}

} // namespace

struct Thread::State {
    static constexpr int NAME_SIZE = 32;

    State(const char* text, int seconds) : idleSeconds(seconds) {
        std::snprintf(name, sizeof name, "%s", text == nullptr ? "" : text);
    }

    void handleEvent(Event& event) TD_EXCLUDES(statisticsMutex);
    void askForBackup();
    void askToTryAgain();

    char name[NAME_SIZE] = {};
    const int idleSeconds;
    IDataSeparateManagerInner* owner = nullptr; ///< set before start(); not owned

    Mutex lifeMutex{LockRank::Life}; ///< one start or stop at a time, joining included; the worker never takes it
    OsalThreads::Handle handle TD_GUARDED_BY(lifeMutex) = OsalThreads::INVALID_HANDLE;
    std::atomic<bool> running{false}; ///< from start() until the thread is joined

    EventQueue queue;

    Mutex statisticsMutex{LockRank::Statistics}; ///< held while an event is handled
    /// But for `queued`, which changes with the queue.
    _ThreadStaticInfo_t statistics TD_GUARDED_BY(statisticsMutex) = {};
};

Thread::Thread(const char* name, int idleSeconds) : m_state(std::make_unique<State>(name, idleSeconds)) {}

Thread::~Thread() {
    Thread::stop();
}

bool Thread::start() {
    State& state = *m_state;
    const MutexLock lock(state.lifeMutex);
    if (state.running)
        return true;
    if (isExit() || !OsalThreads::create(state.name, runWorker, this, state.handle)) {
        TD_ERROR("Create pthread [%s] failed.\n", state.name);
        return false;
    }
    state.running = true;
    TD_INFO("Create pthread [%s] success ,id = %d \n", state.name, static_cast<int>(state.handle));
    return true;
}

bool Thread::stop() {
    const NoCancel noCancel;
    State& state = *m_state;
    // Held to the end, so that a second stop() too returns only when the worker has ended.
    const MutexLock life(state.lifeMutex);
    state.queue.close();
    if (state.running) {
        OsalThreads::join(state.handle);
        state.handle = OsalThreads::INVALID_HANDLE;
    }
    state.queue.drop();
    state.running = false;
    return true;
}

bool Thread::post(Event* event) {
    return m_state->queue.push(event);
}

void Thread::run() {
    using Work = EventQueue::Work;
    State& state = *m_state;
    timespec nextTry = idleDeadline(state.idleSeconds);
    while (!isExit()) {
        Event* next = nullptr;
        const Work work = state.queue.next(next, state.idleSeconds);
        if (work == Work::End)
            return;
        std::unique_ptr<Event> event(next);
        if (event)
            state.handleEvent(*event);
        event.reset();
        if (work == Work::Event)
            state.queue.noteHandled();
        // On a worker that is never idle as well.
        if (work == Work::Idle || hasPassed(nextTry)) {
            state.askToTryAgain();
            nextTry = idleDeadline(state.idleSeconds);
        }
        if (work == Work::Idle)
            state.queue.whenIdle([&] { state.askForBackup(); });
    }
}

bool Thread::isExit() const {
    return m_state->queue.isClosed();
}

void Thread::getStaticsInfo(_ThreadStaticInfo_t& info) {
    const MutexLock lock(m_state->statisticsMutex);
    info = m_state->statistics;
    info.queued = m_state->queue.left();
}

void Thread::setOwner(IDataSeparateManagerInner* owner) {
    m_state->owner = owner;
}

bool Thread::isCurrent() const {
    return t_current == this;
}

bool Thread::waitHandled(int milliseconds) {
    return !m_state->running || isCurrent() || m_state->queue.waitHandled(milliseconds);
}

void Thread::State::askForBackup() {
    if (owner == nullptr)
        return;
    try {
        owner->backupData();
    } catch (...) {
        TD_ERROR("backup of [%s] ended by an exception\n", name);
    }
}

void Thread::State::askToTryAgain() {
    if (owner == nullptr)
        return;
    try {
        owner->retryFailedStores();
    } catch (...) {
        TD_ERROR("retry of [%s] ended by an exception\n", name);
    }
}

void Thread::State::handleEvent(Event& event) {
    const MutexLock lock(statisticsMutex);
    if (handledWell(event)) {
        ++statistics.succeeded;
    } else {
        TD_WARNING("work thread handle event (id = %d) failed! \n", event.id());
        ++statistics.failed;
    }
    ++statistics.handled;
}

} // namespace td
