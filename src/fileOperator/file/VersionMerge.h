/// The merge of a copy of another version: where it stands, and the thread that writes its end. The load reads what is
/// merged (Loader).
#pragma once

#include <atomic>

#include <dataModule/platform/OsalThreads.h>

namespace td {

/// Changed inside the critical section; the state may be asked for from anywhere.
class VersionMerge {
    enum class State { None, UnderWay, Unwritten, Done };

public:
    /// A copy of another version was found: it is read by key, and a thread is to write the table as the new file.
    void begin() { m_state = State::UnderWay; }
    /// The new file is there.
    void written() { m_state = m_state == State::UnderWay || m_state == State::Done ? State::Done : State::None; }
    /// It could not be written, so the merged values are in the table alone.
    void failed() { m_state = State::Unwritten; }
    /// Another process has written it.
    void wasWrittenElsewhere() { m_state = State::None; }
    /// Versions do not matter any more, as a copy was read by key.
    void acceptAnyVersion() {
        if (m_state == State::None)
            m_state = State::Done;
    }

    bool isUnderWay() const { return m_state == State::UnderWay; }
    bool isUnwritten() const { return m_state == State::Unwritten; }
    /// Once a merge is done the version of a copy is not compared any more.
    bool comparesVersions() const { return m_state != State::Done; }

    /// A load that finds another version and does not come to its end, whatever ended it, leaves the state as it was.
    class Attempt {
    public:
        explicit Attempt(VersionMerge& merge) : m_merge(merge), m_before(merge.m_state) {}
        ~Attempt() {
            if (!m_goesOn)
                giveUp();
        }
        Attempt(const Attempt&) = delete;
        Attempt& operator=(const Attempt&) = delete;

        void goesOn() { m_goesOn = true; }
        void giveUp() {
            if (m_merge.isUnderWay())
                m_merge.m_state = m_before;
        }

    private:
        VersionMerge& m_merge;
        const State m_before;
        bool m_goesOn = false;
    };

    /// Starts the thread. An earlier one has long ended, as no load begins while a merge is under way.
    bool startThread(OsalThreads::Entry entry, void* argument);
    /// The thread's handle, for whoever joins it; it is nobody else's then.
    OsalThreads::Handle takeThread();

private:
    std::atomic<State> m_state{State::None};
    OsalThreads::Handle m_thread = OsalThreads::INVALID_HANDLE;
};

} // namespace td
