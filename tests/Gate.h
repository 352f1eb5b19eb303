/// A place where threads of a test wait for each other; no test sleeps.
#pragma once

#include <atomic>

namespace td::test {

class Gate {
public:
    void open() {
        m_open = true;
        m_open.notify_all();
    }
    /// Waits until the gate is open; it stays open.
    void pass() const { m_open.wait(false); }

private:
    std::atomic<bool> m_open{false};
};

} // namespace td::test
