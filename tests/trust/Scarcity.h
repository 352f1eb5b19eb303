/// Memory and threads run out: operator new and pthread_create of this program, and with it of the library, fail when a
/// test says so. What happens within an Unwatched block does not fail and is not counted.
#pragma once

#include <atomic>

namespace td::test {

/// Counts uses of something and says which of them fail. One test sets it, any thread asks.
class Shortage {
public:
    /// From now on the use with this number, counted from 1, fails; with `forEver` all after it as well.
    void begin(int number, bool forEver);
    /// No use fails any more. Whether one did.
    bool end();
    /// Notes one use. Whether it fails.
    bool strikes();
    /// Since begin().
    int uses() const { return m_uses; }

private:
    std::atomic<bool> m_active{false};
    std::atomic<int> m_uses{0};
    std::atomic<int> m_failing{0};
    std::atomic<bool> m_forEver{false};
    std::atomic<bool> m_struck{false};
};

Shortage& memoryShortage();
Shortage& threadShortage();

} // namespace td::test
