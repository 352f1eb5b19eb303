/// The worker: handles posted events one by one, in the order of posting, on one thread. Its owner is asked for backups
/// whenever the queue has stayed empty for 10 s, and about as often, busy or not, to try again what could not be
/// written.
#pragma once

#include <cstdint>
#include <memory>

#include <dataModule/Export.h>

namespace td {

class Event;
class IDataSeparateManagerInner;

/// What the worker has done so far.
struct _ThreadStaticInfo_t {
    std::uint32_t handled;   ///< events handled
    std::uint32_t succeeded; ///< of these, handled with success
    std::uint32_t failed;    ///< of these, failed
    std::uint32_t queued;    ///< events still queued at the last dequeue; 0 after an idle wake-up
};

class DATAMODULE_API Thread {
public:
    /// Seconds without events after which the owner is asked for backups, and between two tries of failed writes.
    static constexpr int IDLE_SECONDS = 10;

    /// Nothing runs yet. At most 31 characters of the name are kept.
    explicit Thread(const char* name, int idleSeconds = IDLE_SECONDS);
    /// Stops. A derived class that overrides run() stops in its own destructor.
    virtual ~Thread();
    /// Starts the thread; true without effect when it runs. False after stop() or when the platform has no thread to
    /// give.
    virtual bool start();
    /// Ends the thread after the event in hand and deletes the queued ones unhandled; no backup begins from then on.
    /// Works also when start() failed or never ran, and twice. From any thread but the worker itself, and without an
    /// operator's critical section, which the event in hand may need.
    virtual bool stop();
    /// Queues an event and owns it from then on. False after stop(): the caller still owns the event.
    virtual bool post(Event* event);
    /// The loop; runs on the thread.
    virtual void run();

    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    /// Whether stop() was called.
    bool isExit() const;
    /// Copies the counters; waits for the event in hand.
    void getStaticsInfo(_ThreadStaticInfo_t& info);
    /// Who is asked for backups; set before start().
    void setOwner(IDataSeparateManagerInner* owner);
    /// Waits, at most `milliseconds`, until every event queued on entry has been handled or dropped, whatever became of
    /// it; false when the time ran out. True at once when no thread runs and on the worker's own thread. Hold no
    /// operator's critical section.
    bool waitHandled(int milliseconds);

    /// Whether the calling thread is this worker.
    bool isCurrent() const;

private:
    struct State;
    const std::unique_ptr<State> m_state;
};

} // namespace td
